// The comparison statements MEMC and MEMCX, and the tolerance of a test as it is settled before the decision.
//
// MEMC compares what the unit under test indicated (the number of the nominal's text, or MEM1 without one) with what
// the system measured or applied (MEM). MEMCX takes the two the other way round.
#pragma once

#include <optional>

#include "state/run_state.h"

namespace orvane {

/// What a percent tolerance refers to: the setting TOL_REF.
enum class ToleranceReference { nominal = 1, system_actual = 2, uut_indicated = 3 };
ToleranceReference tolerance_reference(RunState& run);

/// The number at the start of the nominal's text, without a prefix: "10.0mV" gives 10.
std::optional<double> memc_number(const FscRecord& record);

/// Fills indicated, actual and both tolerances of run.test; the tolerance refers to what was indicated. On failure,
/// which has reported itself, run.test is as it was.
[[nodiscard]] bool memc_values(RunState& run, const FscRecord& record);

/// Computes the tolerance anew where TOL_REF and the statement ask for it, and gives the value to which the error
/// column refers. For statements with fixed columns and for MEMC and MEMCX; others keep what they have, with the
/// reference 0. On failure, which has reported itself, the tolerance is as it was.
[[nodiscard]] bool settle_tolerance(RunState& run, const FscRecord& record, double& reference);

}  // namespace orvane
