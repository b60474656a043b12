// The uncertainty of a test after the manner of the GUM: repeated readings are reduced to their mean, and a chain of
// quantities leads from them and the system accuracy to the expanded uncertainty. A quantity that VSET or TSET sets
// takes the place of the one worked out and of all that would have led to it. The block is run.uncertainty.
#pragma once

#include <optional>
#include <string_view>

#include "state/run_state.h"

namespace orvane {

/// Tells drivers, by run.samples, which pass of how many their statement is in. Called before a test statement of an
/// instrument runs.
void unc_prepare(RunState& run, const FscRecord& record);

enum class SampleAnswer {
  none,   // the statement takes no samples
  again,  // it has to run again
  done    // the last reading is in; the mean stands in run.test
};

/// After a test statement has run: keeps its reading and tells whether another one is needed. False for a floating-
/// point fault, which has set its stop reason.
[[nodiscard]] bool unc_step(RunState& run, const FscRecord& record, SampleAnswer& answer);

/// The chain, after the last reading; run.test then has test_bit::uncertainty. False for a floating-point fault.
[[nodiscard]] bool unc_finish(RunState& run, const FscRecord& record);

/// Ends a sample run, finished or not; readings and quantities of the latest test stay readable.
void unc_reset(RunState& run);

/// No sample run is active.
inline bool unc_is_idle(const RunState& run) { return !run.uncertainty.has(unc_flag::active); }

/// The reading that a test statement has left in run.test, in the unit and prefix of the test; nothing for a judgement
/// without a number. It stands in `actual` or in `indicated`; for a source statement, which has the operator read the
/// unit under test, in the text that was typed.
enum class ReadingPlace { actual, indicated, indicated_text };
ReadingPlace unc_reading_place(RunState& run, const FscRecord& record);
std::optional<double> unc_reading(RunState& run, const FscRecord& record);

/// A quantity by its name in lower case ("exp_unc", "u1", "nmeas"). Fails with 379 for an unknown name and 387 for one
/// that the latest test has not worked out.
[[nodiscard]] bool unc_read(const RunState& run, std::string_view name, double& out);

/// Reading `i` of the latest test, from 1; 0 gives their mean. False if there is none such.
[[nodiscard]] bool unc_reading_at(const RunState& run, int i, double& out);

/// The name of a quantity, and the quantity of a name.
std::string_view unc_name(Quantity which);
std::optional<Quantity> unc_quantity(std::string_view name);

/// Student's t by degrees of freedom and column of confidence (1 to 6). 0 after a report: 388, 389.
double t_factor(double df, int confidence);

/// A statistics statement hands in its count and pooled standard deviation for the next S1.
void unc_pool(RunState& run, int count, double deviation);

}  // namespace orvane
