// The run loop: executes one procedure line by line, and everything that happens around a statement in its order.
#pragma once

#include <span>

#include "state/run_state.h"

namespace orvane {

struct Procedure;

/// The steps around a statement that other rooms take, in the loop's order. A step without a row is passed over.
enum class LoopStep {
  note_results,        // before the statement: nominal and modifier for the results
  note_named_values,   // before the statement: the same for named values
  clear_latch,         // before the statement: the latch of the multi-sample functions
  check_instruments,   // after an instrument statement, with option C: the correction check
  system_accuracy,     // after a test statement, with uncertainty on: accuracy of the first sample
  release_parameters,  // after every statement: the scratch block of named parameters
  quantity_memory,     // end of the statement
  parameters_done,     // end of the statement
  count
};

struct LoopHookRow {
  LoopStep step;
  bool (*hook)(RunState& run, const FscRecord& record);  // false sets stop_test
};

/// Adds rows to the hook table; start-up calls it.
void loop_install(std::span<const LoopHookRow> rows);

/// Runs a procedure from its head. A CALL may replace the handle; it is null when the procedure could not be brought
/// back after a CALL. Results are in run.flags.
void run_procedure(RunState& run, Procedure*& procedure);

}  // namespace orvane
