#include "procedure/pipeline/run_test.h"

#include <algorithm>
#include <map>

#include "config/startup_config.h"
#include "config/user_settings.h"
#include "evaluation/result_log.h"
#include "instruments/ieee488.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "procedure/file/load.h"
#include "procedure/file/memory.h"
#include "procedure/file/proc_dir.h"
#include "procedure/pipeline/run_reset.h"
#include "procedure/run/call.h"
#include "procedure/run/loop.h"
#include "state/buttons.h"
#include "state/pump.h"
#include "state/report.h"
#include "values/math/variables.h"

namespace orvane {
namespace {

constexpr std::string_view settings_section = "Run Time";
constexpr std::uint8_t runnable_kinds = ProcDirEntry::kind_e | ProcDirEntry::kind_h;

// "underway" before a run and "done" behind it, so that the next start knows of a run that died.
void write_marker(const RunState& run, std::string_view marker) {
  if (!run.demo_mode) static_cast<void>(put_user_setting(settings_section, "procedure", marker));
}

class NameRows : public RowSource {
 public:
  explicit NameRows(std::vector<std::string> names) : names_(std::move(names)) {}
  std::size_t count() const override { return names_.size(); }
  std::string row(std::size_t index) const override {
    return index < names_.size() ? names_[index] : std::string();
  }

 private:
  std::vector<std::string> names_;
};

// The operator's choice; empty if it was given up. False if the window or the directory failed.
bool choose_procedure(std::string& name) {
  std::vector<std::string> names;
  if (!procedure_names(names)) return false;
  std::sort(names.begin(), names.end());
  const NameRows rows(std::move(names));
  ChoiceWindow window;
  window.title = msg(30046);
  window.rows = &rows;
  window.buttons = {standard_button(button_row::ok, answer::ok, true),
                    standard_button(button_row::cancel, answer::terminate)};
  std::size_t row = 0;
  const int code = platform().desk != nullptr ? platform().desk->choose(window, row) : answer::failed;
  if (code == answer::ok) name = rows.row(row);
  return code != answer::failed;
}

// Finds the entry of a name in the procedure directory.
bool find_entry(const std::string& directory_path, ProcDirEntry& entry) {
  const int handle = pd_open(directory_path, pd_mode_read);
  if (handle == 0) return false;
  const bool found = pd_find(handle, entry);
  return pd_close(handle) && found;
}

// Takes slot 0 and fills its directory entry. run_result::finished to go on.
int select_procedure(std::string_view wanted, Procedure*& procedure) {
  const std::string directory_path = procedure_directory_file();
  std::string name(wanted);
  procedure = acquire_main_procedure();
  if (name.empty()) {
    if (!choose_procedure(name)) return run_result::failed;
    if (name.empty()) return run_result::given_up;
  }
  procedure->directory = ProcDirEntry();
  procedure->directory.dir_flags = runnable_kinds;
  procedure->directory.name_count = 1;
  procedure->directory.names[0] = name;
  return find_entry(directory_path, procedure->directory) ? run_result::finished : run_result::failed;
}

bool read_threshold(RunState& run, const Procedure& procedure) {
  for (const ProcNode* node = procedure.head; node != nullptr; node = node->next) {
    if (node->record != nullptr && node->record->code() == header_code::adjustment_threshold) {
      run.adjust_threshold = node->record->get(field::adjustment_threshold);
      return true;
    }
  }
  return run_error(run, 111);
}

// Everything of a run's start that may fail. False after a report.
bool initialise_run(RunState& run, const Procedure& procedure) {
  run_reset(run, run.full_initialisation);
  run.full_initialisation = !run.has(run_flag::check_mode);
  run.clear(run_flag::terminate | run_flag::skip_test | run_flag::end_seen | run_flag::branch_taken);
  run.stop_reason = 0;
  run.statements_run = 0;
  run.next_abort = run.abort_at.empty() ? 0 : run.abort_at.front();
  mvar_push_frame(run);
  show_procedure(run, procedure);
  if (!log_open(run)) return false;
  if (!ib_init(run)) {
    run.set(run_flag::stop_test);
    return false;
  }
  return true;
}

void finish_run(RunState& run) {
  ib_end_of_run(run);
  mvar_clear(run);
  log_close(run);
  write_marker(run, "done");
}

void clear_display(RunState& run) {
  run.procedure_name.clear();
  run.run_name.clear();
  set_current_procedure_name("");
  Operator* desk = platform().desk;
  if (desk == nullptr) return;
  for (const int row : {status_row::procedure, status_row::revision, status_row::heading})
    desk->status(row, "");
}

// Steps in front of the run: 0 or 2 if it does not take place, otherwise 1 with the procedure loaded.
int prepare(RunState& run, std::string_view name, Procedure*& procedure) {
  run.clear(run_flag::stop_test);
  if (run.demo_mode && startup_config().rt_demo_prompt != 0) {
    const int code = yesnoph(4339);
    if (code == answer::no) return run_result::given_up;
    if (code != answer::yes) return run_result::failed;
  }
  const int selected = select_procedure(name, procedure);
  if (selected != run_result::finished) return selected;
  if (!load_procedure(*procedure, startup_config().procdir, run.has(run_flag::test_run)))
    return run_result::failed;
  if (!procedure->has(procedure_flag::required)) {
    run_error(run, 2502);
    return run_result::failed;
  }
  return read_threshold(run, *procedure) ? run_result::finished : run_result::failed;
}

}  // namespace

int run_test(RunState& run, std::string_view name) {
  Procedure* procedure = nullptr;
  const int ready = prepare(run, name, procedure);
  if (ready != run_result::finished) return ready;

  run.run_name = procedure->name;
  write_marker(run, "underway");
  if (!initialise_run(run, *procedure)) {
    finish_run(run);
    clear_display(run);
    return run_result::failed;
  }
  run.set(run_flag::run_active);
  run_procedure(run, procedure);
  run.clear(run_flag::run_active);
  finish_run(run);
  clear_display(run);
  return run.has(run_flag::stop_test) ? run_result::failed : run_result::finished;
}

bool procedure_names(std::vector<std::string>& names) {
  const int handle = pd_open(procedure_directory_file(), pd_mode_read);
  if (handle == 0) return false;
  ProcDirEntry entry;
  for (int line = 0;; line = entry.matched_line + 1) {
    entry.dir_flags = runnable_kinds;
    if (!pd_search(handle, "", line, false, entry)) break;
    names.push_back(entry.names[static_cast<std::size_t>(entry.matched_line - entry.first_line)]);
    if (entry.matched_line == 0xFFFF) break;
  }
  const bool whole = (entry.dir_flags & ProcDirEntry::end_reached) != 0 || !names.empty();
  return pd_close(handle) && whole;
}

OverallResult overall_result(const RunState& run) {
  std::map<std::vector<CallLevel>, bool> latest;
  for (const TestOutcome& outcome : run.outcomes) latest[outcome.chain] = outcome.failed;
  OverallResult result;
  result.tests = latest.size();
  for (const auto& [chain, failed] : latest) result.failed += failed ? 1 : 0;
  return result;
}

}  // namespace orvane
