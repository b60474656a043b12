// Floating-point faults are found by looking at results: an operation that can fault tests its result with
// one comparison and, only when that is not finite, tells from the operands what happened. An operand that is
// not finite itself passes through, as it would with the processor's exceptions enabled.
#pragma once

#include <cmath>

namespace orvane {

/// True if an operation on `a` and `b` that gave `result` was invalid, divided non-zero by zero, or
/// overflowed.
inline bool operation_faulted(double result, double a, double b = 0.0) noexcept {
  if (std::isfinite(result)) [[likely]]
    return false;
  if (std::isnan(result)) return !std::isnan(a) && !std::isnan(b);
  return std::isfinite(a) && std::isfinite(b);
}

}  // namespace orvane
