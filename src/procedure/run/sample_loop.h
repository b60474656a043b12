// Repeated readings of a test: the loop's side, which sends the run back to the statement, or to the head of the group
// of lines that leads to a MEMC.
#pragma once

#include "state/run_state.h"

namespace orvane {

struct Procedure;

/// The repetition step of a test's evaluation. `again` is set when the test line has to run once more: the line is
/// placed. When the last reading of a sample run is in, the system accuracy is worked out anew on the mean and the
/// uncertainty behind it. False for a failure, which stops the test.
[[nodiscard]] bool sample_step(RunState& run, Procedure& procedure, bool& again);

/// The test is complete: no samples were asked for, or the last one has been taken.
bool samples_complete(const RunState& run);

}  // namespace orvane
