// What a run keeps of each test: its quantities by name, as the results table of the database and the reports take them.
//
// A record holds filled fields only: a number with its unit, a text, or a whole number, each a row of 24 bytes, and the
// texts one behind the other. A number is kept with the digits and the form in which the test prints it, or, where the
// procedure has asked for a format of its own, with its text: reports show what the test had, whatever the procedure asks
// of later ones.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orvane {

enum class ResultKind : std::uint8_t { value, text, integer };

/// The fields. Those with a number behind their name follow one another.
enum class ResultField : std::uint8_t {
  // clang-format off
  rsm, gb_result, accreditation_flag, am_depth, amplitude_1, amplitude_2, condition, correction_amount,
  correction_flag, coverage_factor, cardinal_point, dc_offset, degrees_of_freedom,
  degrees_of_freedom_1, degrees_of_freedom_2, degrees_of_freedom_3, degrees_of_freedom_4, degrees_of_freedom_5,
  degrees_of_freedom_6, degrees_of_freedom_7, degrees_of_freedom_8, degrees_of_freedom_9, degrees_of_freedom_10,
  degrees_of_freedom_s1, degrees_of_freedom_s2, deviation, displacement_power_factor, dpf_polarity, duty_cycle,
  error, expected_value, expanded_uncertainty, fall_time, cardinal_is_fixed, fixed_quantity, fm_deviation,
  frequency_1, frequency_2, test_status_2, guardbanded_lower_limit, guardbanded_upper_limit, guardbanding_method,
  input_impedance, lower_limit, measurement, measured_by_uut, modulation_source, mod1, nominal, reading_count,
  negative_test_tolerance, nthrow, output_impedance_1, output_impedance_2, period_1, period_2, phase,
  phase_deviation, polarity, power, positive_test_tolerance, pulse_width, relative_error, remark, rise_time, row,
  rtd_nominal_resistance, rtd_type, result_type, sense,
  sensitivity_coefficient_1, sensitivity_coefficient_2, sensitivity_coefficient_3, sensitivity_coefficient_4,
  sensitivity_coefficient_5, sensitivity_coefficient_6, sensitivity_coefficient_7, sensitivity_coefficient_8,
  sensitivity_coefficient_9, sensitivity_coefficient_10, cs1, cs2,
  standard_deviation, standard_uncertainty, students_t_factor, use_st, system_accuracy, system_accuracy_tur,
  system_actual, system_coverage_factor, s1, s2, test_step, test_step_2, test_description, test_status,
  test_tolerance, test_uncertainty_ratio, thermocouple_type, tolerance_error, tolerance_reference, trigger_skew,
  uncertainty_component_1, uncertainty_component_2, uncertainty_component_3, uncertainty_component_4,
  uncertainty_component_5, uncertainty_component_6, uncertainty_component_7, uncertainty_component_8,
  uncertainty_component_9, uncertainty_component_10, uut_indicated, upper_limit, uncertainty_method, uut_range,
  uut_resolution, variable_quantity, video, waveform_1, waveform_2, ws,
  count
  // clang-format on
};
constexpr std::size_t result_field_count = static_cast<std::size_t>(ResultField::count);

/// Field `i` (from 1) of a numbered family that begins with `first`.
constexpr ResultField result_field(ResultField first, int i) {
  return static_cast<ResultField>(static_cast<int>(first) + i - 1);
}

struct ResultFieldRow {
  ResultField field;
  ResultKind kind;
  const char* name;  // as the results table and the dump name it
};
/// All fields in their order.
const ResultFieldRow& result_field_row(ResultField field);

/// One quantity of a result. ResultRecord::texts holds its printed text and, behind it, its text or unit text.
struct ResultValue {
  static constexpr std::uint16_t filled = 0x0001, has_value = 0x0002, exponent_form = 0x0004;
  double raw = 0;
  std::uint32_t text_at = 0;
  std::uint16_t text_size = 0;  // of a text or of a unit text of its own
  std::uint16_t status = 0;
  ResultField field = ResultField::count;
  std::uint8_t resolution = 0;    // digits, as its form takes them
  std::uint8_t prefix = 0;        // prefix code
  std::uint8_t units_code = 0;    // unit code
  std::uint8_t form = 0;          // number_form
  std::uint8_t printed_size = 0;  // of the printed text; 0: none was made
};
static_assert(sizeof(ResultValue) == 24);

namespace result_bit {
// ResultRecord::flags
constexpr std::uint32_t pass = 0x00000002, notify_user = 0x00000004, marginal = 0x00000008,
                        percent_above_500 = 0x00000010, automatic_range = 0x00000020,
                        has_fixed_measurement = 0x00004000, is_evaluated = 0x00008000,
                        indeterminate = 0x00010000, guardbanded = 0x00020000, guard_overflow = 0x00040000;
}  // namespace result_bit

/// Which test a result belongs to: the numbers of the CALLs that led to it, outermost first, then its own, each as
/// test * 65536 + step; behind them 0. Keys compare in the order of the results table.
using ResultKey = std::array<std::uint32_t, 9>;

/// The result of one test.
struct ResultRecord {
  /// With every field filled, readings apart.
  static constexpr std::size_t size_limit = 6144;

  std::uint32_t flags = 0;  // result_bit
  std::uint16_t fsc = 0;
  ResultKey key{};
  std::uint8_t display_form = 0;  // UFMT as the test began: 1 ENGR, 2 NOM, 3 PREFIX, 4 SCI
  std::uint8_t reading_prefix = 0, reading_unit = 0, reading_resolution = 0;
  double percent = 0;
  std::vector<ResultValue> values;  // in the order in which they were filled
  std::string texts;
  std::array<std::uint8_t, result_field_count> places{};  // by field: place in values from 1; 0 is empty
  std::vector<double> readings;
  std::string reading_format;  // of FMT; empty: reading_resolution digits
  std::string lines;           // both printed lines, a line break between them
  std::uint32_t row = 0;       // in the table of the run, from 1; 0 while it runs

  std::uint32_t test_place() const {
    std::uint32_t own = 0;
    for (const std::uint32_t level : key) {
      if (level != 0) own = level;
    }
    return own;
  }
  int test_major() const { return static_cast<int>(test_place() >> 16); }
  int test_minor() const { return static_cast<int>(test_place() & 0xFFFF); }

  const ResultValue* find(ResultField field) const {
    const std::uint8_t place = places[static_cast<std::size_t>(field)];
    return place != 0 ? &values[place - 1U] : nullptr;
  }
  std::string_view text_of(const ResultValue& value) const {
    return std::string_view(texts).substr(value.text_at + value.printed_size, value.text_size);
  }
  std::string_view printed(const ResultValue& value) const {
    return std::string_view(texts).substr(value.text_at, value.printed_size);
  }
  std::size_t memory() const {
    return sizeof *this + values.capacity() * sizeof(ResultValue) + texts.capacity() +
           reading_format.capacity() + lines.capacity();
  }
};

/// The results of a run in the order of running. A record stays where it is until it is withdrawn or the run is reset.
struct ResultList {
  std::vector<std::unique_ptr<ResultRecord>> records;
  ResultRecord* latest = nullptr;

  void clear() {
    records.clear();
    latest = nullptr;
  }
};

}  // namespace orvane
