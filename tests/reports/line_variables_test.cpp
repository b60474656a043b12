#include "reports/line_variables.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>

#include "messages/catalogue.h"

namespace orvane::test {
namespace {

using V = LineVariable;

std::string hex(double value) { return formatted("%016lx", std::bit_cast<std::uint64_t>(value)); }

struct Figures {
  std::string indicated = "10.0000V", actual = "10.0010V", error = "-100     ppm", value = "10.0000V";
  double lower = 9.99, upper = 10.01;
  std::string texts = ":10 V @ 1 kHz:10:10.001:9.99:10.01:*:1E-3:2E-3:2:";
};

// The text of a test line behind number and letter.
std::string test_line(const Figures& f) {
  return formatted("%3d c   %-6s%-15s%-15s%-16s%-13s%-7s", 5, "20", f.indicated, f.actual, "1kHz", f.error,
                   "50") +
         formatted("%-20s", f.value) + hex(f.lower) + hex(f.upper) + "4" + f.texts;
}
const std::string second_line = formatted("%-8s%-23s%-20s%-9s%-13s%-6s", "", "SYSTEM TOL:1V", "TEST TOL:2V",
                                          "TUR: 2.0", "MARGINAL", "PASS");

std::string value(char letter, const std::string& line1, V which) {
  LineVariables variables;
  EXPECT_TRUE(line_to_variables(letter, line1, second_line, "  7-5  ", variables)) << letter;
  return std::string(variables.get(which).value_or("(none)"));
}

TEST(LineVariables, JudgementsAndNotes) {
  const std::string judged = formatted("%-8s%-65s%-7s", "  5", "looks clean: yes", "FAIL");
  const struct {
    char letter;
    V which;
    std::string_view text;
  } cases[] = {
      {'E', V::RM, "looks clean: yes"}, {'E', V::TR, "FAIL"},  {'D', V::ET, "FAIL"}, {'D', V::TR, "PASS"},
      {'G', V::ER, "(none)"},           {'K', V::UI, "(none)"}};
  for (const auto& c : cases)
    EXPECT_EQ(value(c.letter, judged, c.which), c.text) << c.letter << ' ' << line_variable_name(c.which);
  // A note is whole, with its indent and without, however long.
  EXPECT_EQ(value('R', "        " + std::string(200, 'x'), V::RM), std::string(200, 'x'));
  EXPECT_EQ(value('K', "at once", V::RM), "at once");
  LineVariables none;
  EXPECT_FALSE(line_to_variables('?', judged, second_line, "", none));
}

TEST(LineVariables, ToleranceInWords) {
  const struct {
    Figures figures;
    char letter;
    std::string_view all, absolute, relative;
  } cases[] = {
      {{}, 'M', "0.1%", "0.01V", "0.1%"},
      // What was applied may lie as far below what was indicated as that may lie above.
      {{.lower = 9.998, .upper = 10.01}, 'M', "-0.1/+0.02%", "-0.01/+0.002V", "0.1%"},
      {{.lower = 9.999, .upper = 10.001}, 'M', "100ppm", "0.001V", "100ppm"},
      {{.lower = 9.9999, .upper = 10.0001}, 'M', "10ppm", "0.0001V", "10ppm"},
      {{.indicated = "0V", .lower = -0.002, .upper = 0.002}, 'M', "0.002V", "0.002V", "(none)"},
      {{.actual = "0V"}, 'M', "0.01V", "0.01V", "0.1%"},
      {{.lower = -90, .upper = 10.01}, 'M', "-0.1/+>500%", "-0.01/+100V", ">500%"},
      // The printed number is rounded at its ninth digit: this is one tolerance of 1 ppm.
      {{.indicated = "10.0001235V", .lower = 10.00012345 * (1 - 1e-6), .upper = 10.00012345 * (1 + 1e-6)},
       'M',
       "1ppm",
       "0.00001V",
       "1ppm"},
      // Limits are in the unit of the procedure, the printed number of an ACC statement's unit is not.
      {{.indicated = "0.01V", .actual = "0.010001V", .value = "10.000mV", .lower = 9.99, .upper = 10.01},
       'S',
       "0.1%",
       "0.01mV",
       "0.1%"},
  };
  for (const auto& c : cases) {
    const std::string line = test_line(c.figures);
    EXPECT_EQ(value(c.letter, line, V::TOL_C), c.all);
    EXPECT_EQ(value(c.letter, line, V::SH_A), c.absolute);
    EXPECT_EQ(value(c.letter, line, V::SH_R), c.relative);
  }
}

TEST(LineVariables, ErrorInBothWays) {
  const struct {
    std::string_view column, in_ppm, in_percent;
  } cases[] = {{"-100     ppm", "-100         ppm", "-0.01        %"},
               {"0.1234   %", "1234         ppm", "0.1234       %"},
               {">500     %", ">5000000     ppm", ">500         %"},
               {">500", "    >500", ">500"},
               {"0.000012", "0.000012", "0.000012"}};
  for (const auto& c : cases) {
    const std::string line = test_line({.error = std::string(c.column)});
    EXPECT_EQ(value('M', line, V::ERPPM), c.in_ppm) << c.column;
    EXPECT_EQ(value('M', line, V::ERPCT), c.in_percent) << c.column;
  }
}

TEST(LimitText, ADoubleSurvivesAndANumberIsNeverCut) {
  const struct {
    double value;
    int digits;
    std::string_view unit, text;
  } cases[] = {{9.9985, 10, "V", "9.9985V"},
               {9.9985, 3, "V", "10V"},
               {1.0 / 3, 16, "V", "0.3333333333333333"},  // the unit does not fit any more
               {-1.0 / 3, 16, "", "-0.333333333333333"},  // and the number in fewer digits
               {-9.998500000000001e-07, 16, "V", "-9.9985e-07V"},
               {0, 6, "mV", "0mV"}};
  for (const auto& c : cases) {
    const auto text = limit_text(packed_limit(c.value, 4, c.unit), c.digits, 18);
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(*text, c.text);
  }
  for (const char* text : {"", "zzzzzzzzzzzzzzzz81V", "4024", "7ff0000000000000 84V"})
    EXPECT_EQ(limit_text(text, 6, 18), std::nullopt) << text;
  EXPECT_EQ(limit_text(packed_limit(INFINITY, 4, "V"), 6, 18), std::nullopt);
}

}  // namespace
}  // namespace orvane::test
