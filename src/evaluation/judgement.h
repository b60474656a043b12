// Results of the statements that bring their outcome with them: EVAL and PICE, which an operator or an expression has
// judged, and DOSE, whose program has given a word or a percent of tolerance. Their printed lines have the remark in
// the columns of the numbers:
//
//     1     Does the display light up?                                       FAIL
//                                                              NOTIFY USER
#pragma once

#include "state/run_state.h"

namespace orvane {

/// The remark of a judgement that has none of its own.
constexpr const char* operator_evaluation = "Result of Operator Evaluation";

/// EVAL, PICE and DOSE.
bool brings_outcome(const FscRecord& record);

/// The program of this DOSE has returned a percent of tolerance.
bool has_program_percent(const RunState& run, const FscRecord& record);

/// The percent of tolerance of such a test, without a sign; 0 where it has none.
double program_percent(const RunState& run, const FscRecord& record);

/// Fills run.decision and sets or clears test_bit::failed. The failed bit of a judgement goes in.
void format_judgement(RunState& run, const FscRecord& record, double percent);

}  // namespace orvane
