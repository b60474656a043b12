// The statements that steer the run: jumps, blocks and loops. A statement moves nothing itself: it sets or clears
// run_flag::branch_taken, and the loop follows the line's link.
#pragma once

#include <span>

#include "state/statement.h"

namespace orvane {

/// A condition is false within this distance of zero, the border included.
constexpr double condition_zero = 1e-20;
/// True for a value outside the interval; also for one that is not a number.
constexpr bool condition_true(double value) { return !(value >= -condition_zero && value <= condition_zero); }

/// Does `name` equal the running procedure's name as JMPT and JMPF compare it: without regard to case, over at most
/// 41 characters of it?
bool procedure_name_matches(std::string_view running, std::string_view name);

std::span<const HandlerRow> flow_handlers();

}  // namespace orvane
