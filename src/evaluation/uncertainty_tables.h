// The rounded tables of the uncertainty: Student's t and the factor of small samples. They are this system's own and
// must not be replaced by a computed distribution.
#pragma once

namespace orvane {

/// The factor of a type A term from `n` readings; 1 above 101.
double small_sample_factor(int n);

}  // namespace orvane
