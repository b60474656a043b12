// Guard bands: decision limits that are moved inwards by what the measurement uncertainty asks for, so that a result
// close to a limit is told apart from a clear pass or fail.
#pragma once

#include <optional>
#include <string>

#include "state/run_state.h"

namespace orvane {

/// A method that moves limits is in force.
bool gb_active(RunState& run);

/// Fills `result` for the tolerances of the test in hand. False if the test has no guard band: no method, no factor,
/// no uncertainty, an overflow that disables it, or a table at fault, which has reported itself.
[[nodiscard]] bool gb_evaluate(RunState& run, const FscRecord& record, double neg_tol, double pos_tol,
                               GuardResult& result);

/// "RDS" and the others; with " *" behind it where the guard band was wider than the tolerance.
std::string gb_method_name(const GuardResult& result);

}  // namespace orvane
