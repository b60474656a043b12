// How the verdict of a test came about, in words and numbers, for the operator and for an auditor with a pocket
// calculator. Everything is told from the values that the evaluation has used; nothing is worked out a second time.
#pragma once

#include "platform/operator.h"
#include "state/run_state.h"

namespace orvane {

/// The test that has just been decided: its readings, tolerance, accuracy, uncertainty, guard band and verdict.
Explanation explain_test(RunState& run, const FscRecord& record);

}  // namespace orvane
