#include "reports/report.h"

#include <algorithm>
#include <map>
#include <memory>

#include "config/startup_config.h"
#include "messages/catalogue.h"
#include "platform/files.h"
#include "reports/column_run.h"
#include "reports/saved_run.h"
#include "reports/template_engine.h"
#include "state/report.h"
#include "state/run_variables.h"

namespace orvane {
namespace {

constexpr std::size_t log_limit = 1024u << 20;
constexpr int end_of_first_page = 4624, end_of_head = 4625;

struct KindRow {
  int command;
  ReportKind kind;
  const char* name;  // RPT_TYPE$
};
constexpr KindRow kinds[] = {{107, ReportKind::certificate, "CERTIFICATE"},
                             {8, ReportKind::results, "RESULTS"},
                             {9, ReportKind::summary, "SUMMARY"},
                             {121, ReportKind::as_found, "AS FOUND"},
                             {122, ReportKind::as_left, "AS LEFT"}};

void set_kind(RunState& run, const KindRow& row) {
  run.report.kind = static_cast<int>(row.kind);
  run.report.due = true;
  run_variable_set(run, "RPT_TYPE$", row.name);
  run_variable_set(run, "RPT_CODE$", std::to_string(run.report.kind));
}

bool has_lines(ReportKind kind) {
  return kind == ReportKind::results || kind == ReportKind::as_found || kind == ReportKind::as_left;
}

// One report on its way: the text so far, and what lasts from part to part.
struct Report {
  RunState& run;
  std::string out;
  TemplateState state;
  ReportSource source;

  // A whole file from its top; `missing` where it cannot be read.
  bool part(const std::string& file, int missing) {
    const std::shared_ptr<const Template> text = template_open(file);
    if (text == nullptr) return errp(missing, file);
    return template_run(run, *text, Section::top, false, state, source, out) || errp(4606, file);
  }
  bool mark(int number) {
    const std::string_view text = catalogue_text(number);
    if (text.empty()) return errp(4619, number);
    (out += text) += '\n';
    return true;
  }
};

bool write_report(const std::string& path, const std::string& text, int number) {
  if (replace_file(path, text)) return true;
  show_error(2529, errno);
  return errp(number, path);
}

// The end of a summary: the column template's own, or the count of the tests that failed.
bool end_of_summary(Report& report) {
  const std::string& file = startup_config().rslt_col_template;
  if (file.empty()) {
    const std::string* failed = run_variable(report.run, "NUM_FAILED$");
    report.out += msg(31245, failed != nullptr ? *failed : std::string("?")) + "\n";
    return true;
  }
  const std::shared_ptr<const Template> text = template_open(file);
  if (text == nullptr) return errp(4636, file);
  return template_run(report.run, *text, Section::end_summary, false, report.state, report.source,
                      report.out) ||
         errp(4606, file);
}

bool build(Report& report, ReportKind kind, std::string_view log) {
  const StartupConfig& config = startup_config();
  const bool certificate = kind == ReportKind::certificate;
  const std::string& first = certificate ? config.cal_cert_template : config.rslt_template;
  if (first.empty()) return errp(certificate ? 4627 : 4628);
  if (!report.part(first, certificate ? 4634 : 4635)) return false;
  if (kind == ReportKind::summary && !end_of_summary(report)) return false;
  if (!report.mark(end_of_first_page)) return false;
  if (has_lines(kind) && (config.rslt_page.empty() || !report.part(config.rslt_page, 4626)))
    return config.rslt_page.empty() ? errp(4626, config.rslt_page) : false;
  if (!report.mark(end_of_head)) return false;
  if (!has_lines(kind)) return true;
  report.out.reserve(report.out.size() + log.size());  // about what the lines come to
  return column_run(report.run, log, config.rslt_col_template, report.state, report.source, report.out) ||
         errp(4618);
}

bool compare(Report& report, const std::vector<LinePair>& pairs) {
  const StartupConfig& config = startup_config();
  report.state.compare = true;
  for (const auto* key :
       {&config.rslt_fl_template, &config.rslt_page_fl_template, &config.rslt_col_fl_template}) {
    if (key->empty()) return errp(4642);
  }
  return report.part(config.rslt_fl_template, 4635) && report.mark(end_of_first_page) &&
         report.part(config.rslt_page_fl_template, 4626) && report.mark(end_of_head) &&
         (column_run_pairs(report.run, pairs, config.rslt_col_fl_template, report.state, report.source,
                           report.out) ||
          errp(4618));
}

// Lines of both runs belong together by number and letter, the first with the first and so on; what only one run has
// keeps its place among its own lines.
std::vector<LinePair> paired(const std::vector<ReportLine>& found, const std::vector<ReportLine>& left) {
  std::multimap<std::pair<std::string, char>, std::size_t> open;
  for (std::size_t i = 0; i < left.size(); ++i) open.emplace(std::pair(left[i].number, left[i].letter), i);
  std::vector<LinePair> pairs;
  std::vector<bool> used(left.size());
  std::size_t next = 0;  // of the lines of `left` that stand in the report already
  const auto alone_until = [&](std::size_t end) {
    for (; next < end; ++next) {
      if (!used[next]) pairs.push_back({nullptr, &left[next]});
    }
  };
  // Which of the left lines have a partner is known first, so that those without one are not held back.
  std::vector<std::size_t> partner(found.size(), left.size());
  for (std::size_t i = 0; i < found.size(); ++i) {
    const auto match = open.find({found[i].number, found[i].letter});
    if (match == open.end()) continue;
    partner[i] = match->second;
    used[match->second] = true;
    open.erase(match);
  }
  for (std::size_t i = 0; i < found.size(); ++i) {
    if (partner[i] < left.size()) alone_until(partner[i]);
    pairs.push_back({&found[i], partner[i] < left.size() ? &left[partner[i]] : nullptr});
    if (partner[i] < left.size()) next = std::max(next, partner[i] + 1);
  }
  alone_until(left.size());
  return pairs;
}

// The variables of the run in hand come back when a report of saved runs is made: it may still be saved itself.
class KeptVariables {
 public:
  explicit KeptVariables(RunState& run) : run_(run), variables_(run_variable_list(run)) {}
  ~KeptVariables() {
    run_variables_restart(run_);
    for (const auto& [name, value] : variables_) run_variable_set(run_, name, value);
  }
  KeptVariables(const KeptVariables&) = delete;
  KeptVariables& operator=(const KeptVariables&) = delete;

 private:
  RunState& run_;
  std::vector<std::pair<std::string, std::string>> variables_;
};

void take_variables(RunState& run, const SavedRun& saved, std::string_view suffix) {
  for (const auto& [name, value] : saved.variables)
    run_variable_set(run, name.substr(0, name.size() - 1) + std::string(suffix) + "$", value);
}

}  // namespace

bool report_set_kind(RunState& run, int command) {
  const auto row = std::find_if(std::begin(kinds), std::end(kinds),
                                [&](const KindRow& one) { return one.command == command; });
  if (row == std::end(kinds)) return errp(4615, command);
  set_kind(run, *row);
  return true;
}

ReportKind report_kind(const RunState& run) { return static_cast<ReportKind>(run.report.kind); }

bool report_build(RunState& run, const std::string& sorted_log, const std::string& out_name) {
  std::string log;
  if (has_lines(report_kind(run)) && read_file(sorted_log, log_limit, log) != ReadResult::ok)
    return errp(4952, sorted_log);
  Report report{.run = run, .out = {}, .state = {}, .source = {}};
  if (!trace_used_records(run, report.source.standards[0])) return false;
  const bool built = build(report, report_kind(run), log);
  run.report.due = false;
  return write_report(out_name, report.out, 4696) && built;
}

bool report_of_saved_run(RunState& run, const std::string& path, const std::string& out_name) {
  SavedRun saved;
  if (!saved_run_read(path, saved)) return false;
  const KeptVariables kept(run);
  run_variables_restart(run);
  take_variables(run, saved, "");
  set_kind(run, kinds[1]);
  Report report{.run = run, .out = {}, .state = {}, .source = {}};
  report.source.standards[0] = std::move(saved.standards);
  const bool built = build(report, ReportKind::results, saved.log);
  return write_report(out_name, report.out, 4696) && built;
}

bool report_compare(RunState& run, const std::string& found, const std::string& left,
                    const std::string& out_name) {
  SavedRun runs[2];
  if (!saved_run_read(found, runs[0]) || !saved_run_read(left, runs[1])) return false;
  const KeptVariables kept(run);
  run_variables_restart(run);
  take_variables(run, runs[1], "");  // what both have alike
  take_variables(run, runs[0], "1");
  take_variables(run, runs[1], "2");
  set_kind(run, kinds[1]);  // from here on it counts as results
  std::vector<ReportLine> lines[2];
  Report report{.run = run, .out = {}, .state = {}, .source = {}};
  for (std::size_t i = 0; i < 2; ++i) {
    if (!report_lines_of(runs[i].log, lines[i])) return false;
    report.source.standards[i] = std::move(runs[i].standards);
  }
  const bool built = compare(report, paired(lines[0], lines[1]));
  return write_report(out_name, report.out, 4697) && built;
}

}  // namespace orvane
