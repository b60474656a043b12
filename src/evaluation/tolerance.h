// Tolerances: what a tolerance field of a statement amounts to, and how much of it an error takes up.
//
// A tolerance is the sum of up to three terms for each side. A term is a number of the record, a register or a
// location; it stands by itself, or is a fraction (percent, parts per million, or one) of the statement's range or of
// the tolerance reference:   amount = value * |range or reference| / divisor
#pragma once

#include <string>
#include <string_view>

#include "state/run_state.h"
#include "values/numbers.h"

namespace orvane {

/// The error in percent of tolerance where there is no tolerance to divide by.
constexpr double percent_without_tolerance = 501.0;
/// A tolerance below this is none.
constexpr double smallest_tolerance = 1e-20;
/// Percents above this are shown as ">500".
constexpr double percent_cap = 500.0;

// Comparisons of the evaluation; a bound is widened by the compare epsilon times its own size.
inline bool eps_le(double a, double b) { return num_le(a, b); }
inline bool eps_ge(double a, double b) { return num_ge(a, b); }
inline bool eps_gt(double a, double b) { return num_gt(a, b); }
inline bool eps_between(double a, double low, double high) { return num_in(a, low, high); }

/// The tolerance below and above, as positive numbers in the unit of the reference. A field written "TOL" takes the
/// terms of the latest TOL statement. Fails with 2722 on a term without side or form (or with more terms than a
/// field has), with 2724 on a register or location that is negative, and with a floating-point stop when an amount
/// is no finite number; the results are then not touched.
[[nodiscard]] bool tolerance_from_field(RunState& run, const FscRecord& record, const ToleranceField& field,
                                        double range_value, double reference, double& neg, double& pos);

/// True in a run, and without one if no term takes a register or a location.
bool tolerance_field_usable(const RunState& run, const ToleranceField& field);

/// The terms of a TOL statement's text: "2% 0.1U", "+M3U -5P%", "L[2]/". False if the text is no tolerance or has
/// more than three terms.
[[nodiscard]] bool tolerance_from_text(std::string_view text, ToleranceField& field);

/// A term in words for a reader: "+0.1 % of 10". Its value is the one that its register has now.
std::string tolerance_term_text(const RunState& run, const ToleranceTerm& term, double range_value,
                                double reference);

/// The tolerance on the side on which the unit errs: the one below where it indicates less than the actual value.
double side_of_tolerance(const TestValues& values);

/// The error as a share of the tolerance on its side; 0 for a go/no-go test. False if the numbers give no finite
/// percent, which is a floating-point fault of the evaluation.
[[nodiscard]] bool percent_of_tolerance(const TestValues& values, double& percent);

/// True if this percent of tolerance is a fail: above 100 with the key "pass100", from 100 without it.
bool is_fail(double percent);

}  // namespace orvane
