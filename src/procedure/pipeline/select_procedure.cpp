#include "procedure/pipeline/select_procedure.h"

#include <algorithm>

#include "config/startup_config.h"
#include "config/user_settings.h"
#include "config/value_grammar.h"
#include "messages/encoding.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "procedure/file/ascii.h"
#include "procedure/file/proc_dir.h"
#include "procedure/file/proc_dir_line.h"
#include "procedure/pipeline/database.h"
#include "procedure/pipeline/run_test.h"
#include "state/buttons.h"
#include "state/report.h"
#include "state/run_variables.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::size_t workload_file_limit = 4U << 20, workload_rows_limit = 10000;

// The procedure that was chosen last in this program; the next choice begins there.
std::string& chosen_last() {
  static std::string name;
  return name;
}

// A row of columns for a list window, rendered as it is shown.
template <class Row>
class Rows : public RowSource {
 public:
  using Text = std::string (*)(const Row&);
  using Colour = int (*)(const Row&);
  Rows(const std::vector<Row>& rows, Text text, Colour tint) : rows_(rows), text_(text), tint_(tint) {}
  std::size_t count() const override { return rows_.size(); }
  std::string row(std::size_t index) const override {
    return index < rows_.size() ? text_(rows_[index]) : std::string();
  }
  int colour(std::size_t index) const override {
    return tint_ != nullptr && index < rows_.size() ? tint_(rows_[index]) : 0;
  }

 private:
  const std::vector<Row>& rows_;
  Text text_;
  Colour tint_;
};

std::string npd_text(const NpdRow& row) { return row.name + '\t' + row.file + '\t' + row.kind; }
// The kinds differ in colour as well as in their letter.
int npd_colour(const NpdRow& row) { return row.kind == pd::mark_h ? result_colour::comment : 0; }

std::string workload_text(const WorkloadRow& row) {
  return row.procedure + '\t' + row.serial_number + '\t' + row.job;
}

// Shows a list and takes a row. A run_result.
int choose_row(ChoiceWindow& window, std::size_t& row) {
  window.buttons = {standard_button(button_row::ok, answer::ok, true),
                    standard_button(button_row::cancel, answer::terminate)};
  row = window.first_row;
  const int code = platform().desk != nullptr ? platform().desk->choose(window, row) : answer::failed;
  if (code == answer::failed) {
    errp(374);
    return run_result::failed;
  }
  if (code != answer::ok) return run_result::given_up;
  return row < window.rows->count() ? run_result::finished : run_result::given_up;  // a list without rows
}

std::vector<std::string_view> workload_columns(std::string_view line) {
  std::vector<std::string_view> columns;
  for (;;) {
    // The third column is the rest of the line, whatever stands in it.
    const std::size_t end =
        columns.size() < 2 ? std::min(line.find_first_of("\t|"), line.size()) : line.size();
    columns.push_back(trim_blanks(line.substr(0, end)));
    if (end == line.size()) return columns;
    line.remove_prefix(end + 1);
  }
}

bool read_workload(std::vector<WorkloadRow>& rows) {
  const std::string& path = startup_config().workload_data;
  std::string text;
  if (read_file(path, workload_file_limit, text) != ReadResult::ok)
    return errp(30602, path, workload_file_limit >> 20);
  int fault_line = 0;
  return parse_workload(text, rows, fault_line) || errp(30603, path, fault_line, ProcDirEntry::name_limit);
}

// WORK_SELECT: the list of jobs. The chosen one's serial number is entered already.
int choose_work(RunState& run, std::string& name) {
  std::vector<WorkloadRow> jobs;
  if (!read_workload(jobs)) return run_result::failed;
  const Rows<WorkloadRow> rows(jobs, workload_text, nullptr);
  ChoiceWindow window;
  window.title = msg(30604);
  window.headings = msg(30605);
  window.filter = true;
  window.rows = &rows;
  std::size_t row = 0;
  const int result = choose_row(window, row);
  if (result != run_result::finished) return result;
  name = jobs[row].procedure;
  if (!jobs[row].serial_number.empty()) run_entry_set(run, "SER_NUM$", jobs[row].serial_number);
  return run_result::finished;
}

// The asset list of the database. With the key "db_proc" off the asset says nothing about the procedure.
int choose_asset(RunState& run, std::string& name) {
  const DatabaseRoads* roads = database_roads();
  if (roads == nullptr) {
    errp(30606);
    return run_result::failed;
  }
  const int result = roads->choose_asset(run, name);
  if (result != run_result::finished) return result;
  if (startup_config().db_proc == 0) name.clear();
  return name.empty() ? npd_choose(name) : run_result::finished;
}

}  // namespace

RunMethod run_method() {
  const std::string word = user_setting("Run Time", "method").value_or("by_proc");
  if (same_word(word, "by_asset")) return RunMethod::by_asset;
  if (same_word(word, "by_work") && !startup_config().workload_data.empty()) return RunMethod::by_work;
  return RunMethod::by_proc;
}

int select_procedure(RunState& run, std::string& name) {
  switch (run_method()) {
    case RunMethod::by_asset: return choose_asset(run, name);
    case RunMethod::by_work: return choose_work(run, name);
    case RunMethod::by_proc: break;
  }
  return npd_choose(name);
}

bool npd_rows(const std::string& directory_path, std::vector<NpdRow>& rows) {
  const int handle = pd_open(directory_path, pd_mode_read);
  if (handle == 0) return false;
  std::string lines;
  const bool read = pd_read_lines(handle, lines);
  if (!pd_close(handle) || !read) return false;
  std::string_view file;  // of the entry in hand; empty: none has begun
  std::size_t damaged = 0;
  for (std::size_t at = 0; at + pd_line_size <= lines.size(); at += pd_line_size) {
    const std::string_view line = std::string_view(lines).substr(at, pd_line_size);
    if (pd::is_deleted(line)) continue;
    if (pd::is_first(line)) file = pd::file_of(line);
    const std::string_view name = pd::name_of(line);
    if (!line.ends_with("\r\n") || file.empty() || name.empty()) {
      ++damaged;
    } else if (pd::acceptable(line, runnable_kinds)) {
      rows.push_back({std::string(name), std::string(file), line[pd::at_kind]});
    }
    if (pd::is_last(line)) file = {};
  }
  if (damaged > 0) warnp(30652, directory_path, damaged);
  return true;
}

int npd_choose(std::string& name) {
  std::vector<NpdRow> procedures;
  if (!npd_rows(procedure_directory_file(), procedures)) return run_result::failed;
  std::stable_sort(procedures.begin(), procedures.end(),
                   [](const NpdRow& a, const NpdRow& b) { return a.name < b.name; });
  const bool coloured = startup_config().ShowProcSelWinColor != 0;
  const Rows<NpdRow> rows(procedures, npd_text, coloured ? npd_colour : nullptr);
  ChoiceWindow window;
  window.title = msg(30046);
  window.headings = msg(30607);
  window.filter = true;
  window.rows = &rows;
  window.minimised = startup_config().pd_min != 0;
  const auto last = std::find_if(procedures.begin(), procedures.end(),
                                 [](const NpdRow& row) { return row.name == chosen_last(); });
  if (last != procedures.end()) window.first_row = static_cast<std::size_t>(last - procedures.begin());
  std::size_t row = 0;
  const int result = choose_row(window, row);
  if (result == run_result::finished) name = chosen_last() = procedures[row].name;
  return result;
}

bool parse_workload(std::string_view text, std::vector<WorkloadRow>& rows, int& fault_line) {
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  for (int number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size() - 1) + 1;
    const std::string turned = cp1252_from_either(text.substr(0, end));
    text.remove_prefix(end);
    std::string_view line = turned;
    while (line.ends_with('\n') || line.ends_with('\r')) line.remove_suffix(1);
    line = trim_blanks(line);
    if (line.empty() || line.starts_with('#') || line.starts_with(';')) continue;
    const std::vector<std::string_view> columns = workload_columns(line);
    fault_line = number;
    if (columns[0].empty() || columns[0].size() > ProcDirEntry::name_limit) return false;
    if (rows.size() == workload_rows_limit) return false;
    WorkloadRow row{std::string(columns[0]), {}, {}};
    if (columns.size() > 1) row.serial_number = columns[1];
    if (columns.size() > 2) row.job = columns[2];
    rows.push_back(std::move(row));
  }
  return true;
}

}  // namespace orvane
