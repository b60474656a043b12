// The fields of a result: what a test gives each of them, and the text in which it is printed - by the format that FMT
// has set for the field's name, or by the field's own rule.
//
// Both sides of a test are in its result: "UUT Indicated" and "System Actual". One of them is what was measured
// ("Measurement", "Variable Quantity"), the other was set ("Fixed Quantity", "Expected Value"); which, tells
// `measured_by_uut`. The limits are those of the measured side.
#pragma once

#include <string>
#include <string_view>

#include "evaluation/result_log.h"
#include "state/run_state.h"

namespace orvane {

/// Fills the latest record from the test that has just been decided: run.test, run.decision, run.guard and the
/// uncertainty. `reference` is what a relative error refers to, 0 for nothing. A field that fails is reported with its
/// title (2305) and stays empty; the others go on. The count of those that failed.
int field_catalogue(RunState& run, const FscRecord& statement, double reference);

/// Prints a number by the format of `fmt_name`, else in a form of evaluation/number_forms.h. False after 2306 for a text
/// that is longer than a field holds.
[[nodiscard]] bool format_field(const RunState& run, std::string_view fmt_name, double value, int digits,
                                int form, std::string& out);
/// The same in the form that the settings NSD and UFMT give uncertainties.
[[nodiscard]] bool format_uncertainty(RunState& run, std::string_view fmt_name, double value,
                                      std::string& out);

/// "Test Description": TDESC, else the cardinal point and, behind " @ ", the modifier. Empty for a text of 64
/// characters or more.
std::string test_description(RunState& run, const FscRecord& statement, const ResultRecord& record);

/// A filled number with its unit behind a blank, as the operator reads it: "10.00 mV"; empty for an empty field.
std::string quantity_text(const ResultRecord& record, ResultField field);

/// The nine texts of the log's test line, from the latest record.
LogTexts log_texts(RunState& run);

/// Reading `i` (from 0) in the format of MV as it was at the test.
std::string reading_text(const ResultRecord& record, std::size_t i);

}  // namespace orvane
