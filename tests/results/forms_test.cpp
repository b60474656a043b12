// The printed texts of numbers: the forms of the fields, and the formats of FMT.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "evaluation/result_store.h"
#include "evaluation/number_forms.h"
#include "settings/fmt.h"
#include "support/desk.h"
#include "values/units.h"

namespace orvane {
namespace {

constexpr double infinite = std::numeric_limits<double>::infinity();

TEST(NumberForms, EachForm) {
  struct Case {
    int form;
    double x;
    int n;
    const char* text;
  };
  const Case cases[] = {
      {1, 1.23456, 4, "1.2346e+000"},
      {1, 12.3456, 4, "12.346e+000"},
      {1, 123.456, 4, "123.46e+000"},
      {1, 0.0123456, 4, "12.346e-003"},
      {1, -1.5e-21, 2, "-1.50e-021"},
      {1, 123.456, 1, "120e+000"},  // n is -1: a multiple of 10
      {1, 163.456, 0, "200e+000"},  // -2: of 100
      {1, 999.97, 3, "1.000e+003"},
      {1, 995, 0, "1e+003"},
      {1, 0, 3, "0.000e+000"},
      {2, 12345, 3, "1.234e+04"},
      {3, 1.0 / 3, 4, "0.3333"},
      {3, 1e22, 8, "10000000000000000000000.00000000"},
      {3, 1e22, 9, "1.000000000e+22"},  // would have 33 characters
      {4, 12345, 2, "12000"},
      {4, 0.0123456, 6, "0.012346"},
      {4, 1.23456789, 6, "1.23457"},
      {4, 12.3456789, 6, "12.34570"},  // rounded to six digits
      {4, -98765.4321, 3, "-98800"},
      {4, 0, 3, "0.000"},
      {5, 10, 3, "10.000"},
      {5, 9.985, 2, "9.985"},
      {5, 1.0 / 3, 2, "0.333333333333"},
      {5, 0.0151, 3, "0.0151"},
      {5, 1e300, 2, "1.00e+300"},
      {6, 12345.678, 6, "12345.7"},
      {9, 12345.678, 3, "1.23e+04"},
      {7, 1.23456, 4, "1.2346"},
      {7, 12.3456, 4, "12.346"},
      {7, 123.456, 1, "120"},
      {7, 1e40, 2, "1.00e+40"},
      {1, infinite, 2, "infe+000"},
      {4, infinite, 2, "inf"},
  };
  for (const Case& c : cases) EXPECT_EQ(format_number(c.x, c.n, c.form), c.text) << c.form << ": " << c.x;
}

TEST(NumberForms, DigitsOfTheResolution) {
  struct Case {
    double resolution;  // NaN: none
    std::uint8_t prefix;
    int step;
    std::uint8_t of;
    int digits;
  };
  namespace p = prefix_code;
  const double none = std::nan("");
  const Case cases[] = {
      {0.01, p::absent, 0, p::none, 2}, {0.01, p::absent, 1, p::absent, 3}, {0.01, p::milli, 0, p::milli, 2},
      {0.001, p::milli, 0, p::none, 6}, {0.05, p::none, 0, p::none, 2},     {1, p::none, 0, p::none, 0},
      {1, p::mega, 0, p::mega, 0},      {0.001, p::mega, 1, p::mega, 4},    {100, p::none, 0, p::none, 0},
      {0, p::none, 0, p::none, 15},     {1e-30, p::none, 1, p::none, 15},   {1e-3, p::none, 2, p::kilo, 8},
      {none, p::none, 3, p::none, 0},   {none, p::none, 0, p::kilo, 3},     {1e-12, p::none, 0, p::pico, 0},
      {0.01, p::none, 0, p::hecto, 2}};
  for (const Case& c : cases) {
    ResultRecord record;
    if (!std::isnan(c.resolution))
      r_set_value(record, ResultField::uut_resolution, 0, c.resolution, c.prefix, unit_code::volt);
    EXPECT_EQ(digits_for(record, c.step, c.of), c.digits) << c.resolution << " " << int{c.of};
  }
}

TEST(Fmt, PrintsOneNumberAndNeverMore) {
  struct Case {
    const char* format;
    double value;
    const char* text;
  };
  const Case cases[] = {
      {"%.3f", 1.23456, "1.235"},
      {"[%8.2f]", -1.5, "[   -1.50]"},
      {"%-8.1e|", 12345, "1.2e+04 |"},
      {"%+G", 1e-10, "+1E-10"},
      {"% g", 2.5, " 2.5"},
      {"%010.3f", -1.5, "-00001.500"},
      {"%a", 1.5, "0x1.8p+0"},
      {"%.2A", 1.5, "0X1.80P+0"},
      {"%10a", -1.5, " -0x1.8p+0"},
      {"%#.0f", 3, "3."},
      {"%#.4g", 1.5, "1.500"},
      {"100%% of %g V", 3, "100% of 3 V"},
      {"%d", -3.99, "-3"},
      {"%05d", 42.7, "00042"},
      {"%ld", 0.5, "0"},
      {"%d", -0.5, "0"},
      {"%x", 255.9, "ff"},
      {"%#X", 255, "0XFF"},
      {"%o", 8, "10"},
      {"%u", 3e9, "3000000000"},
      {"%d", 1e30, "1000000000000000019884624838656"},
      {"%d", infinite, "inf"},
      {"%.3d", 7, "007"},
      {"%s", 1, "%s"},
      {"%n%p", 1, "%n%p"},
      {"%*f", 1, "%*f"},
      {"%f and %f", 1, "1.000000 and %f"},
      {"%s %.1f %d", 2, "%s 2.0 %d"},
      {"%", 1, "%"},
      {"%.", 1, "%."},
      {"text", 1, "text"},
      {"", 1, ""},
      {"%99999999999f", 1, nullptr},  // widths and precisions have a limit
      {"%.99999999999f", 0.5, nullptr},
      {"%5lf", infinite, "  inf"},
  };
  for (const Case& c : cases) {
    const std::string text = fmt_print(c.format, c.value);
    if (c.text != nullptr) {
      EXPECT_EQ(text, c.text) << c.format;
    } else {
      EXPECT_GE(text.size(), 120u) << c.format;
      EXPECT_LE(text.size(), 130u) << c.format;
    }
  }
}

class FmtStatement : public test::EngineTest {
 protected:
  bool fmt(std::string_view text) {
    FscRecord record = fsc_record_new();
    record.set(field::code, fsc::fmt);
    EXPECT_TRUE(record.set_text(field::text_14, text));
    Statement statement{run, record};
    return fmt_handlers().front().handler(statement);
  }
  std::string list() const {
    std::string out;
    for (const FmtEntry& entry : run.formats) out += entry.name + "=" + entry.value + ";";
    return out;
  }
};

TEST_F(FmtStatement, TheListKeepsItsOrder) {
  run.registers.m[3] = 2;
  EXPECT_TRUE(fmt("SA = %.3f"));
  EXPECT_TRUE(fmt("UI=%.[M3]f"));
  EXPECT_TRUE(fmt("sa = %g V"));
  EXPECT_EQ(list(), "SA=%g V;UI=%.2f;");
  EXPECT_TRUE(fmt("NOBODY = *"));
  EXPECT_TRUE(fmt("SA = *"));
  EXPECT_EQ(list(), "UI=%.2f;");
  EXPECT_NE(fmt_find(run, "ui"), nullptr);
  EXPECT_EQ(fmt_find(run, "SA"), nullptr);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>());
  // At the limit, and one beyond it.
  run.registers.mem2.assign(fmt_limit, 'x');
  EXPECT_TRUE(fmt("UI = [MEM2]"));
  run.registers.mem2 += 'x';
  EXPECT_FALSE(fmt("UI = [MEM2]"));
  EXPECT_FALSE(fmt("= %f"));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{2217, 2217}));
  fmt_clear(run);
  EXPECT_EQ(list(), "");
}

}  // namespace
}  // namespace orvane
