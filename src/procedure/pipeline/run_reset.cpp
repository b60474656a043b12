#include "procedure/pipeline/run_reset.h"

#include "config/startup_config.h"
#include "functions/functions.h"
#include "instruments/accuracy_choice.h"
#include "instruments/bus_statements.h"
#include "instruments/connections.h"
#include "instruments/reset_list.h"
#include "platform/platform.h"
#include "procedure/run/blocks.h"
#include "procedure/run/capture.h"
#include "settings/fmt.h"
#include "settings/vset.h"
#include "state/pump.h"
#include "state/report.h"
#include "state/run_variables.h"
#include "values/math/math.h"
#include "values/math/variables.h"
#include "values/registers.h"

namespace orvane {
namespace {

constexpr std::int16_t systype_oscilloscope = 2;

std::uint32_t start_options() {
  const StartupConfig& config = startup_config();
  std::uint32_t options = ask_option::start;
  if (config.systype == systype_oscilloscope) options |= ask_option::D;
  if (config.ask_c_default != 0) options |= ask_option::C;
  if (config.ask_x_default != 0) options |= ask_option::X;
  if (config.ask_z_default != 0) options |= ask_option::Z;
  return options;
}

void reset_draw(RunState& run) { run.draw = DrawSettings(); }
void reset_options(RunState& run) { run.options = start_options(); }
void reset_settings_list(RunState& run) { run.uut_settings.clear(); }
void reset_formats(RunState& run) { fmt_clear(run); }
void reset_vset(RunState& run) { run.vset.clear(); }
void reset_messages(RunState&) { queue_clear(); }
void reset_mess(RunState& run) { run.mess_lines.clear(); }
void reset_tolerance(RunState& run) { run.latest_tolerance = ToleranceField(); }
void reset_test(RunState& run) {
  run.test = TestValues();
  run.decision = DecisionBlock();
}
void reset_calls(RunState& run) {
  run.calls.clear();
  run.call_depth = 0;
}
void reset_abort(RunState&) { clear_abort(); }
void reset_modifiers(RunState& run) { run.modifiers.clear(); }
void reset_correction(RunState& run) { run.correction = AppliedCorrection(); }
void reset_samples(RunState& run) {
  run.samples = SampleLoop();
  run.uncertainty = UncertaintyBlock();
}
void reset_accuracy(RunState& run) { run.accuracy = SystemAccuracy(); }
void reset_results(RunState& run) { run.results.clear(); }
void reset_slew(RunState& run) { run.slew = SlewState(); }
void reset_switches(RunState& run) { run.test_switches = 0; }
void reset_notes(RunState& run) { run.log.notes.clear(); }
void reset_adjustments(RunState& run) { run.pipeline.adjustments = 0; }
void reset_standards(RunState& run) { run.pipeline.standards_used.clear(); }
void reset_times(RunState& run) {
  run.pipeline.times.first_ticks = run.pipeline.times.last_ticks = platform().clock->ticks();
}

constexpr RunResetRow rows[] = {
    {"picture frame", reset_draw, ResetWhen::full},
    {"registers", clear_registers, ResetWhen::full},
    {"string registers", math_clear_strings, ResetWhen::full},
    {"places in text files", clear_file_functions, ResetWhen::full},
    {"option letters", reset_options, ResetWhen::full},
    {"settings of the unit under test", reset_settings_list, ResetWhen::full},
    {"report variables", run_variables_restart, ResetWhen::full},
    {"formats of results", reset_formats, ResetWhen::full},
    {"results", reset_results, ResetWhen::full},
    {"run-time variables", reset_vset, ResetWhen::full},
    {"message queue", reset_messages, ResetWhen::full},
    {"message lines", reset_mess, ResetWhen::full},
    {"latest tolerance", reset_tolerance, ResetWhen::full},
    {"test in hand", reset_test, ResetWhen::full},
    {"block stack", block_reset, ResetWhen::always},
    {"call stack", reset_calls, ResetWhen::always},
    {"quantity slots", release_quantities, ResetWhen::always},
    {"MATH variables", mvar_clear, ResetWhen::always},
    {"switches for trying out", reset_switches, ResetWhen::always},
    {"slew dialog", reset_slew, ResetWhen::always},
    {"pending notes", reset_notes, ResetWhen::always},
    {"count of adjustments", reset_adjustments, ResetWhen::always},
    {"standards of the run", reset_standards, ResetWhen::always},
    {"times", reset_times, ResetWhen::always},
    {"bus statements", bus_statements_reset, ResetWhen::always},
    {"RESET lists", reset_clear, ResetWhen::always},
    {"connections", con_clear, ResetWhen::always},
    {"settings of modifier statements", reset_modifiers, ResetWhen::always},
    {"correction", reset_correction, ResetWhen::always},
    {"ACCF", accf_reset, ResetWhen::always},
    {"repeated measurement", reset_samples, ResetWhen::always},
    {"accuracy in force", reset_accuracy, ResetWhen::always},
    {"abort request", reset_abort, ResetWhen::always},
};

}  // namespace

std::span<const RunResetRow> run_reset_rows() { return rows; }

void run_reset(RunState& run, bool full) {
  for (const RunResetRow& row : rows) {
    if (full || row.when == ResetWhen::always) row.reset(run);
  }
}

}  // namespace orvane
