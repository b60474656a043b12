#include "reports/died_run.h"

#include <cerrno>
#include <filesystem>
#include <utility>

#include "config/startup_config.h"
#include "evaluation/result_log.h"
#include "platform/exclusive_file.h"
#include "platform/files.h"
#include "reports/report_actions.h"
#include "reports/saved_run.h"
#include "results/log_sort.h"
#include "state/report.h"
#include "state/run_variables.h"

namespace orvane {
namespace {

constexpr std::size_t log_limit = std::size_t{1} << 31;

std::string facts_file() { return work_file("rslt.var"); }

ExclusiveFile& held_file() {
  static ExclusiveFile file;
  return file;
}

void remove(const std::string& path) {
  std::error_code ignored;
  std::filesystem::remove(path, ignored);
}

// A line of the log begins with a number, a blank, and its letter: "0001.001 M ...".
struct Head {
  std::string_view number;
  char letter = 0;
};
Head head_of(std::string_view line) {
  const std::size_t blank = line.find(' ');
  if (blank == std::string_view::npos || blank + 1 >= line.size()) return {};
  return {line.substr(0, blank), line[blank + 1]};
}

std::string leave_line(std::string_view enter) {
  constexpr std::string_view word = " ENTER ";
  const std::size_t at = enter.find(word);
  const std::string_view name = at != std::string_view::npos ? enter.substr(at + word.size()) : "";
  return std::string(head_of(enter).number) + ' ' + log_letter::leave + formatted("%13sLEAVE %s\n", "", name);
}

std::string variable(const RunState& run, const char* name) {
  const std::string* value = run_variable(run, name);
  return value != nullptr ? *value : std::string();
}

// "rslt-20261123-174118.tmp", from the date and the time of the run; free in the working folder.
std::string name_for_log(const RunState& run) {
  std::string stem = "rslt";
  for (const char* part : {"DATE$", "TIME$"}) {
    std::string digits = variable(run, part);
    std::erase_if(digits, [](char c) { return c < '0' || c > '9'; });
    if (!digits.empty()) stem += '-' + digits;
  }
  std::string name = work_file(stem + ".tmp");
  for (int n = 2; stem == "rslt" || file_exists(name); ++n) {
    name = work_file(stem + '-' + std::to_string(n) + ".tmp");
    if (!file_exists(name)) break;
  }
  return name;
}

void take_facts(RunState& run, const SavedRun& saved) {
  for (const auto& [name, value] : saved.variables) run_variable_set(run, name, value);
  for (const TraceRecord& standard : saved.standards)
    run.pipeline.standards_used.push_back(standard[TraceField::instrument_name]);
}

// The run as it stands, and its results, among the saved ones. What failed has been told; the log is kept anyway.
void save_results(RunState& run, const std::string& log) {
  run_variable_set(run, "TEST_STATUS$", "INCOMPLETE");
  if (!log_sort(run, log, work_file("rsltsort.tmp"))) return;
  const bool failed = variable(run, "NUM_FAILED$") != "0";
  run_variable_set(run, "OVERALL_RESULT$", failed ? "FAIL" : "");
  if (startup_config().rsltdir.empty()) return;
  static_cast<void>(report_save(run, report_command::as_left, report_command::as_left));
  if (!startup_config().rslt_template.empty())
    static_cast<void>(report_save(run, report_command::results, save_kind::report));
}

bool rescue(RunState& run, const std::string& facts) {
  const std::string log = work_file("rslt.tmp");
  std::string text;
  int tests = 0;
  // A demonstration and a run that died before its first test leave nothing.
  if (facts.empty() || read_file(log, log_limit, text) != ReadResult::ok) return true;
  const std::string mended = mended_log(text, tests);
  if (tests == 0) return true;
  SavedRun saved;
  if (saved_run_parse(facts, facts_file(), saved)) take_facts(run, saved);
  const std::string kept = name_for_log(run);
  if (!replace_file(kept, mended)) return errp(31403, log, kept);
  save_results(run, kept);
  msgp(31400, variable(run, "PROC_NAME$"), variable(run, "DATE$"), variable(run, "TIME$"), tests, kept);
  return true;
}

}  // namespace

std::string mended_log(std::string_view log, int& tests) {
  std::vector<std::string> open;
  std::size_t good = 0;
  tests = 0;
  for (std::size_t at = 0, end; (end = log.find('\n', at)) != std::string_view::npos; at = good = end + 1) {
    const std::string_view line = log.substr(at, end - at);
    const Head head = head_of(line);
    if (log_letter::tests.find(head.letter) != std::string_view::npos) {
      const std::size_t second = end + 1;
      end = log.find('\n', second);
      if (end == std::string_view::npos) break;
      const Head other = head_of(log.substr(second, end - second));
      if (other.number != head.number || other.letter != head.letter) break;
      ++tests;
    } else if (head.letter == log_letter::enter) {
      open.push_back(leave_line(line));
    } else if (head.letter == log_letter::leave && !open.empty()) {
      open.pop_back();
    }
  }
  std::string mended(log.substr(0, good));
  for (auto one = open.rbegin(); one != open.rend(); ++one) mended += *one;
  return mended;
}

bool another_run_is_on() {
  ExclusiveFile file;
  return file_exists(facts_file()) && !file.open(facts_file()) && is_sharing_violation(errno);
}

bool died_run_save(RunState& run) {
  const std::string path = facts_file();
  if (!file_exists(path)) return true;
  ExclusiveFile file;
  if (!file.open(path)) return errp(is_sharing_violation(errno) ? 31401 : 31402, path);
  std::string facts;
  if (!file.read(log_limit, facts)) return errp(31402, path);
  run_entries_clear(run);
  run_variables_restart(run);
  run.pipeline.standards_used.clear();
  const bool saved = rescue(run, facts);
  run_variables_restart(run);
  run.pipeline.standards_used.clear();
  if (!saved) return false;
  static_cast<void>(file.close());
  remove(path);
  return true;
}

bool run_files_hold() {
  const std::string path = facts_file();
  return held_file().open(path) || errp(is_sharing_violation(errno) ? 31401 : 31402, path);
}

bool run_files_write(RunState& run, const std::vector<std::string>& standards) {
  if (run.demo_mode) return true;
  std::vector<std::string> names = standards;
  std::string facts;
  std::swap(run.pipeline.standards_used, names);
  const bool told = saved_run_text(run, {}, facts);
  std::swap(run.pipeline.standards_used, names);
  return told && (held_file().write(0, facts) || errp(31402, facts_file()));
}

void run_files_release() {
  static_cast<void>(held_file().close());
  remove(facts_file());
}

}  // namespace orvane
