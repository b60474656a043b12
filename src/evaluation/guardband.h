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
[[nodiscard]] bool gb_evaluate(RunState& run, double neg_tol, double pos_tol, GuardResult& result);

/// Values of GB_RESULT: which indeterminate results count as failed in the overall result.
namespace guard_counts {
constexpr int fails = 1;   // F: indeterminate passes and fails
constexpr int passes = 3;  // P: neither
constexpr int both = 4;    // PF: indeterminate fails alone
}  // namespace guard_counts

/// Does a guardbanded result with these result_bits count as failed?
bool gb_counts_as_failed(std::uint32_t result_flags, int gb_result);

/// "RDS" and the others; with " *" behind it where the guard band was wider than the tolerance.
std::string gb_method_name(const GuardResult& result);

}  // namespace orvane
