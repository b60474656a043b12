// The report variables of one line of the sorted log: its columns by name, and what follows from them.
//
// Columns are counted in the printed lines of a result (evaluation/result_lines.h). What costs work is made only when
// it is asked for.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orvane {

enum class LineVariable : std::uint8_t {
  // clang-format off
  TN, RM, ET, CO, TR, UR, UI, SA, MO, ST, TT, TU, ER,              // columns
  FN, FVA, FRE, FLL, FUL, A, MU_STD, MU_EXP, MU_COV,               // texts behind the test line
  LL, UL,                                                          // limits in packed form
  DE, C, TOL_C, ERPPM, ERPCT, NOX, SH_A, SH_R, UI1, UI2, SA1, SA2,  // worked out
  count
  // clang-format on
};
constexpr std::size_t line_variable_count = static_cast<std::size_t>(LineVariable::count);

/// Its name with the "$".
std::string_view line_variable_name(LineVariable variable);
/// The variable of this name, in capitals with its "$".
std::optional<LineVariable> line_variable(std::string_view name);

/// The parts of a line of the log: "0001.001 M text".
struct LogLine {
  int test = 0, step = 0;
  char letter = ' ';
  std::string_view text;  // from column 11 on
};
/// False for a line that is none.
[[nodiscard]] bool parse_log_line(std::string_view line, LogLine& parts);

/// The letter begins two lines.
bool is_two_line_letter(char letter);

class LineVariables {
 public:
  /// The value; the view is good until the next line, or until the variable is set. Nothing if the line has none.
  std::optional<std::string_view> get(LineVariable variable);
  /// What a template makes of a variable.
  void set(LineVariable variable, std::string_view value);
  void clear();

 private:
  friend bool line_to_variables(char letter, std::string_view line1, std::string_view line2,
                                std::string_view number, LineVariables& variables);
  struct Limits {
    double lower = 0, upper = 0;
  };
  std::optional<Limits> limits() const;
  void make(LineVariable variable);
  void put(LineVariable variable, std::string value);

  std::array<std::string_view, line_variable_count> views_{};
  std::array<bool, line_variable_count> filled_{};
  std::array<std::string, line_variable_count> own_;
  std::string number_;
  std::string_view text1_;  // of the test line, with what stands behind its columns
  char letter_ = ' ';
  bool is_test_ = false;
};

/// Cuts the text of a line (from column 11 of the log) and of its second line into variables. `number` takes the place
/// of the line's first columns: the test, and the call that led to it. The lines must live as long as the variables
/// are used. False for a letter that has no variables.
[[nodiscard]] bool line_to_variables(char letter, std::string_view line1, std::string_view line2,
                                     std::string_view number, LineVariables& variables);

/// A limit in packed form: the two halves of the double in hexadecimal, the digits behind the point with 128 added, and
/// the unit in 13 characters.
std::string packed_limit(double value, int resolution, std::string_view unit);
/// Printed with so many digits, at most `width` characters, the unit behind it where it fits. Nothing for a text that
/// is no packed limit.
std::optional<std::string> limit_text(std::string_view packed, int digits, std::size_t width);

/// A relative tolerance in short: ">500%" from 5 on, "  12.3ppm" below 0.001, otherwise percent.
std::string short_relative(double share);

}  // namespace orvane
