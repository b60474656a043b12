// The numbers of the test in hand, and what its evaluation makes of them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace orvane {

namespace test_bit {
// TestValues::test_state
constexpr std::uint16_t go_no_go = 0x0001;        // an operator's judgement, no number
constexpr std::uint16_t failed = 0x0002;          // the latest test failed
constexpr std::uint16_t tolerances = 0x0004;      // test_tol and sys_tol are valid
constexpr std::uint16_t tur_low = 0x0008;         // tur is valid and below its limit
constexpr std::uint16_t indicated_text = 0x0010;  // indicated_text holds the value as typed
constexpr std::uint16_t corrected = 0x0020;
constexpr std::uint16_t acc_units = 0x0040;  // tol_units names the tolerance unit of an ACC statement
constexpr std::uint16_t corrected_twice = 0x0080;
constexpr std::uint16_t uncertainty = 0x0100;
constexpr std::uint16_t mean = 0x0200;  // indicated is a mean and goes before indicated_text
constexpr std::uint16_t indeterminate = 0x0400;
}  // namespace test_bit

/// What a program that DOSE has run says of the test.
namespace program_status {
constexpr int none = 0, pass = 1, fail = 2, number = 3;
}

struct TestValues {
  std::uint16_t test_state = 0;  // test_bit
  std::uint8_t unit = 0;         // unit of test_tol and sys_tol; 0 none
  double neg_tol = 0;            // tolerance below, positive, in base units
  double pos_tol = 0;            // tolerance above
  double indicated = 0;          // what the unit under test indicated
  std::string indicated_text;    // at most 15 characters
  double actual = 0;             // what the system applied or measured
  double mod_value = 0;          // value of a MOD1 field without a number
  double test_tol = 0;
  double sys_tol = 0;
  double tur = 0;
  std::string tol_units;

  // Of the statements that bring their outcome with them: EVAL, PICE and DOSE.
  std::string remark = {};     // what was judged, or what the program says
  std::string kept_text = {};  // EVAL "-s": for the results, at most 63 characters
  bool by_expression = false;  // EVAL "-e": an expression judged
  int program = program_status::none;
  double program_percent = 0;  // of tolerance, with program_status::number
};

namespace decision_status {
constexpr std::uint16_t pass = 0x01, marginal = 0x02, fail = 0x04, notify_user = 0x08,
                        pass_indeterminate = 0x10, fail_indeterminate = 0x20;
}

/// What the dialog and the results board show of one evaluation; cleared as each evaluation begins.
struct DecisionBlock {
  std::uint16_t code = 0;
  std::uint16_t test_number = 0;
  std::string title;
  std::uint16_t status_bits = 0;  // decision_status
  std::string status_text;

  static constexpr std::uint16_t filled = 0x01, exponent = 0x02;
  std::uint16_t range_flags = 0;
  std::uint8_t range_digits = 0;
  double range_value = 0;
  std::string range_text;

  static constexpr std::uint16_t indicated_typed = 0x01, indicated_word = 0x02, indicated_exponent = 0x04;
  std::uint16_t ind_flags = 0;
  std::uint8_t ind_unit = 0, ind_prefix = 0, ind_digits = 0;
  double ind_value = 0;
  std::string ind_units_text, ind_text;

  static constexpr std::uint16_t actual_corrected = 0x01, actual_corrected_twice = 0x02;
  std::uint16_t act_flags = 0;
  std::uint8_t act_unit = 0, act_prefix = 0;
  double act_value = 0;
  std::string act_units_text, act_text;

  std::uint16_t mod_flags = 0;  // filled, exponent
  std::uint8_t mod_unit = 0, mod_prefix = 0, mod_digits = 0;
  double mod_value = 0;
  std::string mod_text;

  std::uint16_t error_valid = 0;
  std::string error_text;

  static constexpr std::uint16_t percent_capped = 0x01;
  std::uint16_t pct_flags = 0;
  double pct_value = 0;
  std::string pct_text;
  std::optional<double> pct_signed;  // negative where the error is; none where there is no percent

  double test_tol_value = 0;
  std::string test_tol_units, test_tol_text;
  double sys_tol_value = 0;
  std::string sys_tol_units, sys_tol_text;

  static constexpr std::uint16_t tur_calculated = 0x01, tur_numeric = 0x02;
  std::uint16_t tur_flags = 0;
  double tur_value = 0;
  std::string tur_text;

  std::uint16_t unc_flags = 0;  // filled
  double unc_value = 0;
  std::string unc_text;

  std::string remark;

  // The printed lines: 79 columns each, the colour code of the results board, and the flags of the stored result.
  std::string line1, line2;
  int colour = 0;
  std::uint32_t result_flags = 0;
};

}  // namespace orvane
