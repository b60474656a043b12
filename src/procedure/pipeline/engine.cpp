#include "procedure/pipeline/engine.h"

#include <algorithm>
#include <cstdlib>

#include "config/profile.h"
#include "config/startup_config.h"
#include "config/user_settings.h"
#include "config/value_grammar.h"
#include "evaluation/correction.h"
#include "evaluation/handlers.h"
#include "evaluation/system_accuracy.h"
#include "functions/functions.h"
#include "instruments/accuracy_choice.h"
#include "instruments/bench.h"
#include "instruments/bench_load.h"
#include "instruments/bus_statements.h"
#include "instruments/connections.h"
#include "instruments/driver_table.h"
#include "instruments/drivers/drivers.h"
#include "instruments/reset_list.h"
#include "instruments/standards.h"
#include "platform/files.h"
#include "procedure/file/memory.h"
#include "procedure/operator/statements.h"
#include "procedure/pipeline/run_ends.h"
#include "procedure/run/dispatch.h"
#include "procedure/run/flow.h"
#include "procedure/run/loop.h"
#include "procedure/run/post_test.h"
#include "reports/died_run.h"
#include "reports/trace_file.h"
#include "settings/fmt.h"
#include "settings/vset.h"
#include "state/debug.h"
#include "state/error_log.h"
#include "state/report.h"
#include "values/math/math.h"
#include "values/numbers.h"
#include "values/registers.h"
#include "values/variable_file.h"

namespace orvane {
namespace {

bool read_configuration(RunState& run, const std::string& path) {
  std::vector<ConfigFault> faults;
  const bool sound = config_load(path, faults);
  config_report(faults);
  if (!sound) return false;
  const StartupConfig& config = startup_config();
  error_log_use(config.error_log);
  set_compare_epsilon(config.epsfactor);
  math_environment().conversion_precision = config.MathConvPrecision;
  if (config.tur_lim >= 0) run.flags2 |= run_flag2::uncertainty;
  return true;
}

bool open_debug_log(const std::string& path) {
  if ((log_flags() & log_bit::open_log) == 0) return true;
  if (!file_exists(path)) return errp(490, path);
  const auto folder = profile_get(path, "startup", "workdir");
  if (!folder && startup_config().workdir.empty()) return errp(491, path);
  return debug_log_open(startup_config().workdir);
}

bool demo_mode(const RunState& run, RunMode mode) {
  switch (mode) {
    case RunMode::demo: return true;
    case RunMode::real: return false;
    case RunMode::from_settings: break;
  }
  const char* section = run.has(run_flag::test_run) ? "Test Run" : "Run Time";
  return user_setting(section, "mode").value_or("demo") != "real";
}

// STD: the standard is one that this run has used.
bool run_std(Statement& s) {
  const std::string name(trim_blanks(s.record.text(field::text)));
  std::vector<std::string>& used = s.run.pipeline.standards_used;
  if (std::find(used.begin(), used.end(), name) == used.end()) used.push_back(name);
  return true;
}

// A standard of the trace file, for STD. An overdue one is told before the run.
StandardState traced_standard(std::string_view name) {
  trace_rewind();
  for (int state = 0; state == 0;) {
    TraceRecord record;
    if (!trace_next(record, state)) return StandardState::unknown;
    if (state != 2 && same_word(record[TraceField::instrument_name], name))
      return trace_is_overdue(record) ? StandardState::overdue : StandardState::known;
  }
  return StandardState::unknown;
}

// A fault in it has been told; the program goes on without it. Without a folder it may come into being later.
void open_trace_file() {
  trace_close();
  const std::string& path = startup_config().trace;
  if (!path.empty() && file_exists(path) && trace_open(path)) standard_source_add(traced_standard);
}

constexpr LoopHookRow loop_rows[] = {{LoopStep::check_instruments, cor_check},
                                     {LoopStep::system_accuracy, ur_system_accuracy}};

bool drivers_sound = false;

constexpr HandlerRow pipeline_rows[] = {{fsc::std, run_std, Pace::quick}};

std::span<const HandlerRow> pipeline_handlers() { return pipeline_rows; }

}  // namespace

std::string default_config_path() {
  if (const char* named = std::getenv("ORVANE_INI"); named != nullptr && *named != '\0') return named;
  const std::string own = user_config_directory() + "/orvane.ini";
  return file_exists(own) ? own : system_config_directory() + "/orvane.ini";
}

void engine_install() {
  drivers_sound = drivers_install(all_drivers());
  for (const auto handlers :
       {flow_handlers(), register_handlers(), math_handlers(), evaluation_handlers(), settings_handlers(),
        operator_handlers(), bus_handlers(), reset_handlers(), connection_handlers(), driver_handlers(),
        accuracy_handlers(), fmt_handlers(), pipeline_handlers()})
    dispatch_install(handlers);
  post_test_install_standby(bench_standby);
  accuracy_install();
  loop_install(loop_rows);
  math_environment().functions = math_function_rows();
  math_environment().epsilon = vset_math_epsilon;
}

bool engine_start(RunState& run, const EngineStart& start) {
  engine_install();
  if (!math_functions_sound() || !drivers_sound) return false;
  const std::string path = start.config_path.empty() ? default_config_path() : start.config_path;
  if (!read_configuration(run, path)) return false;
  use_user_settings(start.settings_path.empty() ? user_config_directory() + "/settings.ini"
                                                : start.settings_path);
  if (!open_debug_log(path)) return false;
  open_trace_file();
  if (!var_open(run, startup_config().varfile, startup_config().ptitle_l)) return false;
  run.demo_mode = demo_mode(run, start.mode);
  if (!start.recover) return true;
  static_cast<void>(dev_reload_if_changed());
  // Instruments that cannot be reset now, and results that cannot be set aside, are as the next run begins, or it does
  // not begin.
  if (!another_run_is_on()) static_cast<void>(recover_died_run(run) && died_run_save(run));
  return true;
}

void engine_make_safe() { bench_end(run_state()); }

void engine_stop() {
  bench_close(run_state());
  static_cast<void>(var_close(run_state()));
  free_all_procedures();
  debug_log_close();
  error_log_use({});
}

}  // namespace orvane
