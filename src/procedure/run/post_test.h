// What follows a statement that yields a result, or one that was stopped: tolerance, decision, result, the operator's
// dialog and the moves that it asks for.
#pragma once

#include "state/run_state.h"

namespace orvane {

struct Procedure;

/// Finishes the test of the statement at procedure->current. False for a failure that ends the step; what the run
/// does then is in run.flags. `reset_samples` asks the loop to begin the samples of the test anew.
[[nodiscard]] bool post_test(RunState& run, Procedure*& procedure, bool& reset_samples);

/// The instruments' part of the step: puts them to standby. `request` is a sum of standby_request bits.
namespace standby_request {
constexpr int all = 3, after_stop = 4, keep_uut = 8;
}
using StandbyHook = bool (*)(RunState& run, int request);
void post_test_install_standby(StandbyHook hook);

}  // namespace orvane
