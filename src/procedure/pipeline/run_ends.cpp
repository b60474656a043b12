#include "procedure/pipeline/run_ends.h"

#include <ctime>

#include "config/user_settings.h"
#include "config/value_grammar.h"
#include "evaluation/result_log.h"
#include "instruments/bench.h"
#include "instruments/device_list.h"
#include "instruments/instrument_names.h"
#include "platform/local_time.h"
#include "platform/platform.h"
#include "procedure/file/memory.h"
#include "procedure/pipeline/run_reset.h"
#include "procedure/pipeline/run_test.h"
#include "procedure/run/call.h"
#include "reports/trace_file.h"
#include "results/results.h"
#include "state/report.h"
#include "state/run_variables.h"
#include "values/dates.h"
#include "values/math/variables.h"
#include "values/numbers.h"

namespace orvane {
namespace {

constexpr std::string_view settings_section = "Run Time";
constexpr std::string_view underway = "underway", done = "done";
constexpr double ms_per_minute = 60000, minutes_per_hour = 60;

// --- Variables -------------------------------------------------------------------------------------------------

// DATE$, MDY$ and DMY$, with `suffix` between the name and its "$".
void set_dates(RunState& run, std::time_t time, std::string_view suffix) {
  const std::tm at = local_time(time);
  const auto set = [&](std::string_view name, std::string_view format) {
    run_variable_set(run, std::string(name) + std::string(suffix) + "$",
                     format_time(format, at).value_or(""));
  };
  set("DATE", "%F");
  set("MDY", "%m/%d/%Y");
  set("DMY", "%d/%m/%Y");
}

void set_start_variables(RunState& run, const Procedure& procedure) {
  run_variable_set(run, "PROC_NAME$", procedure.name);
  run_variable_set(run, "PROC_REV$", header_text(procedure, header_code::revision));
  set_dates(run, run.pipeline.times.started, "");
  // What nobody was asked for is blank in a report, not its name.
  for (const char* name : {"UUT_CODE$", "SER_NUM$", "OPERATOR_NAME$"}) {
    if (run_variable(run, name) == nullptr) run_variable_set(run, name, "");
  }
  const std::tm at = local_time(run.pipeline.times.started);
  run_variable_set(run, "TIME$", format_time("%T", at).value_or(""));
}

void show_operator(const RunState& run) {
  const std::string* name = run_variable(run, "OPERATOR_NAME$");
  if (name != nullptr && platform().desk != nullptr)
    platform().desk->status(status_row::operator_name, *name);
}

// "1 Hour 12 Minutes"; without the hours below one.
std::string hours_text(double minutes) {
  const int whole = static_cast<int>(minutes);  // ticks count 49 days at most
  const int hours = whole / 60, rest = whole % 60;
  const std::string head = hours > 0 ? formatted("%d Hour%s", hours, hours == 1 ? "" : "s") : std::string();
  return head + formatted("%s%d Minute%s", hours > 0 ? " " : "", rest, rest == 1 ? "" : "s");
}

// NAME$ and NAME_HR$ in words and in hours, NAME_MIN$ in minutes.
void set_duration(RunState& run, const std::string& name, std::uint32_t milliseconds) {
  const double minutes = milliseconds / ms_per_minute;
  run_variable_set(run, name + "$", hours_text(minutes));
  run_variable_set(run, name + "_MIN$", formatted("%.1f", minutes));
  run_variable_set(run, name + "_HR$", formatted("%.1f", minutes / minutes_per_hour));
}

// An unfinished run without a failure has no verdict: it is no PASS.
std::string_view overall_word(const RunState& run, const OverallResult& result) {
  if (result.failed > 0) return "FAIL";
  const bool whole = !run.has(run_flag::stop_test | run_flag::skip_test | run_flag::terminate);
  return whole && result.tests > 0 ? "PASS" : "";
}

void set_end_variables(RunState& run) {
  RunTimes& times = run.pipeline.times;
  const OverallResult result = overall_result(run);
  set_duration(run, "ACT", times.last_ticks - times.first_ticks);
  set_duration(run, "ELAPSED_TIME", platform().clock->ticks() - times.prepared_ticks);
  set_dates(run, platform().clock->now(), "_END");
  run_variable_set(run, "TEST_STATUS$", test_status(run));
  run_variable_set(run, "OVERALL_RESULT$", overall_word(run, result));
  run_variable_set(run, "NUM_ADJ$", std::to_string(run.pipeline.adjustments));
  run_variable_set(run, "NUM_FAILED$", std::to_string(result.failed));
}

// What the run used: standards that STD named, instruments that statements drove, and those that the operator answered
// for. A demonstration drives nothing: what it requires counts.
void note_standards(RunState& run) {
  std::vector<std::string> names = dev_used_names();
  for (const RequiredInstrument& one : run.pipeline.required) {
    using Served = RequiredInstrument::Served;
    const bool counts = run.demo_mode ? one.served != Served::skipped : one.served == Served::by_hand;
    if (counts) names.emplace_back(instrument_name(one.used != 0 ? one.used : one.code));
  }
  std::vector<std::string>& used = run.pipeline.standards_used;
  for (std::string& name : names) {
    if (!trace_used(run, name)) used.push_back(std::move(name));
  }
  if (trace_any_overdue(run)) run.pipeline.standard_overdue = true;
}

}  // namespace

void write_marker(const RunState& run, std::string_view marker) {
  if (!run.demo_mode) static_cast<void>(put_user_setting(settings_section, "procedure", marker));
}

bool recover_died_run(RunState& run) {
  if (run.demo_mode) return true;
  if (!same_word(user_setting(settings_section, "procedure").value_or(""), underway)) return true;
  const BenchReset result = bench_reset(run);
  if (result == BenchReset::failed) return false;
  if (result == BenchReset::done) msgp(30650);
  write_marker(run, done);
  return true;
}

bool initialise_run(RunState& run, const Procedure& procedure) {
  run_reset(run, run.full_initialisation);
  run.full_initialisation = !run.has(run_flag::check_mode);
  run.clear(run_flag::terminate | run_flag::skip_test | run_flag::end_seen | run_flag::branch_taken);
  run.stop_reason = 0;
  run.statements_run = 0;
  run.next_abort = run.abort_at.empty() ? 0 : run.abort_at.front();
  run.pipeline.times.started = platform().clock->now();
  dev_clear_flags(0, device_flag::used);
  mvar_push_frame(run);
  show_procedure(run, procedure);
  set_start_variables(run, procedure);
  show_operator(run);
  if (log_open(run) && bench_begin(run)) return true;
  run.set(run_flag::stop_test);
  return false;
}

void finish_run(RunState& run) {
  note_standards(run);
  bench_end(run);
  mvar_clear(run);
  log_close(run);
  write_marker(run, done);
  set_end_variables(run);
  static_cast<void>(results_finish(run));  // what failed has been told; the results stay
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

std::string_view test_status(const RunState& run) {
  if (run.has(run_flag::terminate)) return "TERMINATED";
  if (run.pipeline.standard_overdue) return "OUT-OF-CAL";
  if (run.has(run_flag::stop_test | run_flag::skip_test)) return "INCOMPLETE";
  return "COMPLETED";
}

}  // namespace orvane
