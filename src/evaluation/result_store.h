// The result store: one record a test, filled step by step.
//
// The evaluation of a test calls r_begin_test() first, which makes the record, and r_uncertainty() once the chain of
// the uncertainty has been worked out; it fills the other fields itself by the functions below. A record that nobody
// fills further is a test that was stopped. Cancel in the dialog of a test withdraws it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "state/run_state.h"

namespace orvane {

/// Makes an empty record, the latest of the list. Null after message 2217 where there is no memory.
ResultRecord* r_alloc_result(RunState& run);

/// The record of a test statement: its FSC, "Nominal" as typed, "UUT Resolution", and the form in which uncertainties
/// are shown (UFMT). False after r_alloc_result()'s report.
///
/// The resolution is what the last digit as typed is worth: 10.00 mV has 0.01 mV. For a source it is that of what the
/// operator read off the unit under test, otherwise that of the nominal. A number without recorded digits (MEM, or
/// more than 15 on one side of the point) has none, and the field stays empty.
[[nodiscard]] bool r_begin_test(RunState& run, const FscRecord& record);

/// A quantity as a statement has it. A number from MEM has no digits.
struct TypedQuantity {
  double value = 0;
  std::uint8_t digits = 0;  // digits byte, see number_digits()
  std::uint8_t prefix = 0, unit = 0;
  bool exponent = false;
  std::string unit_text = {};  // of a comparison: as written, also where it has no code
};
TypedQuantity r_nominal(const RunState& run, const FscRecord& record);

/// Takes the latest record back; the one before becomes the latest. False if there is none.
[[nodiscard]] bool r_withdraw_latest(RunState& run);

/// Fills a number in the display form of the record: form 2 (NOM) in the prefix of "Nominal", form 3 (PREFIX) in the
/// prefix that leaves one to three digits before the point, forms 1 (ENGR) and 4 (SCI) with an exponent. A number
/// without unit code is not scaled. `units` is for a unit that has no code. A field that is filled already is replaced.
void r_add_value(ResultRecord& record, ResultField field, int resolution, double value, std::uint8_t prefix,
                 std::uint8_t units_code, std::string_view units = {});

/// Fills a number as it stands, printed with so many digits in a form of number_forms.h.
void r_set_number(ResultRecord& record, ResultField field, int digits, int form, double value,
                  std::uint8_t prefix, std::uint8_t units_code, std::string_view units = {});

/// The same with `resolution` digits behind the point.
void r_set_value(ResultRecord& record, ResultField field, int resolution, double value, std::uint8_t prefix,
                 std::uint8_t units_code, std::string_view units = {}, bool exponent = false);

void r_set_text(ResultRecord& record, ResultField field, std::string_view text);
void r_set_integer(ResultRecord& record, ResultField field, std::int32_t value);

/// Keeps the printed text of a number that is filled. False, with nothing changed, if it is not, or for a text of more
/// than printed_limit characters.
constexpr std::size_t printed_limit = 255;
[[nodiscard]] bool r_set_printed(ResultRecord& record, ResultField field, std::string_view printed);

/// The text of a field: the printed text of a number or, where none was made, the number in its form, the text, the
/// whole number; empty for a field that is not filled.
std::string r_text(const ResultRecord& record, ResultField field);
/// The unit text of a number, by its code or its own.
std::string_view r_units(const ResultRecord& record, const ResultValue& value);

/// Stores the quantities of the uncertainty that the test has worked out, with its readings. Nothing if it has none, or
/// no system accuracy.
void r_uncertainty(RunState& run);

/// "UUT Resolution" of the latest record as typed: in the unit and prefix of the test.
std::optional<double> r_uut_resolution(const RunState& run);

}  // namespace orvane
