#include "values/numbers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <random>

#include "support/desk.h"

namespace orvane {
namespace {

using Numbers = test::EngineTest;

constexpr double infinity = std::numeric_limits<double>::infinity();

// --- Scanning ------------------------------------------------------------------------------------

TEST(NumbersScan, LengthOfTheNumberAtTheStart) {
  struct Case {
    const char* text;
    std::size_t length, international;
  };
  const Case cases[] = {{"+.5", 3, 3},     {".", 0, 0},      {"-", 0, 0},    {"+", 0, 0},     {"", 0, 0},
                        {"1.e5", 4, 4},    {"1e5", 3, 3},    {"1e", 1, 1},   {"1e+", 1, 1},   {"12e+", 2, 2},
                        {"1.2.3", 3, 3},   {"12.", 3, 3},    {"-.e5", 0, 0}, {"1E-5x", 4, 4}, {"1e5.5", 3, 3},
                        {" 1", 0, 0},      {"--1", 0, 0},    {"1,5", 1, 3},  {",5", 0, 2},    {"1,5.5", 1, 3},
                        {"\xB2", 0, 0},    {"1\xB3", 1, 1},  {"0x10", 1, 1}, {"inf", 0, 0},   {"nan", 0, 0},
                        {"-0.0e-0", 7, 7}, {"+1,e+2V", 2, 6}};
  for (const Case& c : cases) {
    EXPECT_EQ(number_length(c.text), c.length) << c.text;
    EXPECT_EQ(number_length_intl(c.text), c.international) << c.text;
  }
}

// The grammar letter by letter, as slow and obvious as it gets.
std::size_t reference_length(const std::string& text) {
  std::size_t best = 0;
  for (std::size_t n = 1; n <= text.size(); ++n) {
    std::string t = text.substr(0, n);
    const auto digits = [&t] {
      std::size_t count = 0;
      while (!t.empty() && t[0] >= '0' && t[0] <= '9') t.erase(0, 1), ++count;
      return count;
    };
    const auto take = [&t](const char* any) {
      const bool there = !t.empty() && std::strchr(any, t[0]) != nullptr;
      if (there) t.erase(0, 1);
      return there;
    };
    take("+-");
    bool good;
    if (take(".")) {
      good = digits() > 0;
    } else {
      good = digits() > 0;
      if (good && take(".")) digits();
    }
    if (good && take("eE")) {
      take("+-");
      good = digits() > 0;
    }
    if (good && t.empty()) best = n;
  }
  return best;
}

TEST(NumbersScan, RandomTextsAgreeWithTheGrammarAndTheValueWithTheLibrary) {
  std::mt19937 random(1);
  const std::string letters = "0123459..eE+-V";
  for (int i = 0; i < 60000; ++i) {
    std::string text;
    for (std::size_t n = random() % 14; n > 0; --n) text += letters[random() % letters.size()];
    const std::size_t length = reference_length(text);
    ASSERT_EQ(number_length(text), length) << text;
    double value = -77;
    ASSERT_EQ(scan_number(text, value), length) << text;
    const double expected = length == 0 ? -77 : std::strtod(text.substr(0, length).c_str(), nullptr);
    ASSERT_TRUE(value == expected && std::signbit(value) == std::signbit(expected))
        << text << " gave " << value;
  }
}

TEST(NumbersScan, ValuesAreCorrectlyRounded) {
  std::mt19937_64 random(2);
  for (int i = 0; i < 40000; ++i) {
    std::uint64_t bits = random();
    double x;
    std::memcpy(&x, &bits, sizeof x);
    if (!std::isfinite(x)) continue;
    if (i % 2 == 0)
      x = std::ldexp(static_cast<double>(bits >> 11), -53) * std::pow(10.0, static_cast<int>(bits % 60) - 30);
    char text[64];
    std::snprintf(text, sizeof text, "%.*g", 1 + static_cast<int>(random() % 20), x);
    double value = 0;
    ASSERT_EQ(scan_number(text, value), std::strlen(text)) << text;
    ASSERT_EQ(value, std::strtod(text, nullptr)) << text;
  }
  const char* hard[] = {"9007199254740993",
                        "9007199254740992.5e0",
                        "12345678901234567890123",
                        "1e23",
                        "8.5e22",
                        "0.000000000000000000000000000000000001",
                        "123456789012345678901234567890.12345678901234567890",
                        "00000000000000000000000000000001",
                        "2.2250738585072011e-308",
                        "4.9e-324",
                        "1.7976931348623157e308",
                        "18446744073709551616",
                        "99999999999999999999"};
  for (const char* text : hard) {
    double value = 0;
    scan_number(text, value);
    EXPECT_EQ(value, std::strtod(text, nullptr)) << text;
  }
}

TEST(NumbersScan, OutOfRangeIsZeroOrInfinite) {
  struct Case {
    const char* text;
    double value;
  };
  const Case cases[] = {{"1e-400", 0},
                        {"-1e-400", -0.0},
                        {"1e400", infinity},
                        {"-1e400", -infinity},
                        {"+1e400", infinity},
                        {"0e99999999999999999999", 0},
                        {"1e99999999999999999999", infinity},
                        {"1e-99999999999999999999", 0},
                        {"0.0000001e400", infinity},
                        {"10000000000000000000000e-400", 0},
                        {"2e308", infinity},
                        {"1e-324", 0},
                        {"000.0e-400", 0}};
  for (const Case& c : cases) {
    double value = -77;
    EXPECT_EQ(scan_number(c.text, value), std::strlen(c.text)) << c.text;
    EXPECT_EQ(value, c.value) << c.text;
    EXPECT_EQ(std::signbit(value), std::signbit(c.value)) << c.text;
  }
  const std::string many_zeros = "0." + std::string(200000, '0') + "1e200001";
  double value = 0;
  EXPECT_EQ(scan_number(many_zeros, value), many_zeros.size());
  EXPECT_EQ(value, 1.0);
}

TEST(NumbersScan, Integers) {
  struct Case {
    const char* text;
    std::optional<int> value;
  };
  const Case shorts[] = {{"32767", 32767}, {"32768", {}}, {"-32768", -32768}, {"-32769", {}},
                         {"12a", {}},      {"", {}},      {"+1", {}},         {"-", {}},
                         {"007", 7},       {" 1", {}},    {"99999999999", {}}};
  for (const Case& c : shorts) EXPECT_EQ(parse_short(c.text), c.value) << c.text;

  const Case hexes[] = {{"7FFFFFFF", 0x7FFFFFFF},
                        {"80000000", {}},
                        {"-80000000", std::numeric_limits<int>::min()},
                        {"-80000001", {}},
                        {"-ff", -255},
                        {"0x1", {}},
                        {"00000000007fffFFFF", 0x7FFFFFFF},
                        {"0000000001", 1},
                        {"G", {}},
                        {"", {}},
                        {"-", {}},
                        {"-080000000", {}}};
  for (const Case& c : hexes) EXPECT_EQ(parse_hex32(c.text), c.value) << c.text;

  std::string_view cursor = " \t-12 \t34x";
  EXPECT_EQ(read_int(cursor), -12);
  EXPECT_EQ(read_int(cursor), 34);
  EXPECT_EQ(read_int(cursor), 0);
  EXPECT_EQ(cursor, "x");

  const std::pair<std::int64_t, int> digits[] = {{0, 1}, {9, 1}, {10, 2}, {-100, 3}, {999999, 6}};
  for (const auto& [n, count] : digits) EXPECT_EQ(int_digits(n), count) << n;
}

TEST(NumbersScan, DigitsByte) {
  struct Case {
    const char* text;
    int digits;
    bool exponent;
  };
  const Case cases[] = {{"10.00", 0x22, false},
                        {"-1.5E3", 0x11, true},
                        {".25", 0x02, false},
                        {"+12", 0x20, false},
                        {"123456789012345.1", 0xF1, false},
                        {"1234567890123456", 0, false},
                        {"0.1234567890123456", 0, false},
                        {"5.e1", 0x10, true},
                        {"", 0, false}};
  for (const Case& c : cases) {
    std::uint8_t digits = 0xAA;
    EXPECT_EQ(number_digits(c.text, digits), c.exponent) << c.text;
    EXPECT_EQ(digits, c.digits) << c.text;
  }
}

// --- Comparison ----------------------------------------------------------------------------------

struct EpsilonGuard {
  ~EpsilonGuard() { set_compare_epsilon(0); }
};

TEST(NumbersCompare, BoundsAreWidenedByTheirOwnSize) {
  EXPECT_TRUE(num_eq(1.0, 1.000000000001));
  EXPECT_FALSE(num_eq(1.0, 1.0000001));
  EXPECT_FALSE(num_eq(0.0, 1e-300));
  EXPECT_FALSE(num_eq(1e-300, 0.0));
  EXPECT_TRUE(num_ge(9.99999999999, 10));
  EXPECT_FALSE(num_lt(9.99999999999, 10));
  EXPECT_TRUE(num_le(-9.99999999999, -10));  // the bound moves up by its size
  EXPECT_FALSE(num_gt(10.00000000005, 10));
  EXPECT_TRUE(num_gt(10.0000000002, 10));
  // 1e6 is tested against a bound of 0: nothing widens.
  EXPECT_FALSE(num_le(1e-12, 0));
  EXPECT_TRUE(num_in_mirror(-5, 4, 6));
  EXPECT_FALSE(num_in_mirror(-7, 4, 6));
  EXPECT_TRUE(num_in_widened(3.96, 4, 6, 1));
  EXPECT_FALSE(num_in_widened(3.95, 4, 6, 1));
  EXPECT_TRUE(num_in_both(1, 0, 2, 5, 5, 5));
  EXPECT_FALSE(num_in_both(1, 0, 2, 5, 6, 7));
  const double set[] = {1, 2, 4};
  EXPECT_TRUE(num_in_any(4.00000000001, set));
  EXPECT_FALSE(num_in_any(3, set));
  EXPECT_TRUE(num_mantissa_near(-1020, 1, 2));
  EXPECT_FALSE(num_mantissa_near(1030, 1, 2));
  EXPECT_TRUE(num_mantissa_near(5e-310, 5, 1));
  EXPECT_TRUE(num_mantissa_near(0, 0, 2));
  EXPECT_TRUE(num_on_step(15, 0, 20, 5));
  EXPECT_FALSE(num_on_step(16, 0, 20, 5));
  EXPECT_FALSE(num_on_step(25, 0, 20, 5));
  const double nan = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(num_ge(nan, 0) || num_le(nan, 0) || num_eq(nan, nan) || num_in_mirror(nan, -1, 1));
}

TEST(NumbersCompare, EpsilonHasLimits) {
  const EpsilonGuard guard;
  const std::pair<double, double> cases[] = {{1e-16, 1e-16},    {1e-5, 1e-5},         {0.99e-16, 1e-11},
                                             {1.01e-5, 1e-11},  {0.0, 1e-11},         {-1, 1e-11},
                                             {infinity, 1e-11}, {std::nan(""), 1e-11}};
  for (const auto& [given, stored] : cases) {
    set_compare_epsilon(1e-6);
    set_compare_epsilon(given);
    EXPECT_EQ(compare_epsilon(), stored) << given;
  }
}

TEST(NumbersCompare, Digits) {
  EXPECT_TRUE(one_significant_digit(-0.002));
  EXPECT_TRUE(one_significant_digit(1e9));
  EXPECT_FALSE(one_significant_digit(12));
  EXPECT_FALSE(one_significant_digit(0));
  EXPECT_TRUE(same_digits(2.5, 2500));
  EXPECT_TRUE(same_digits(-0.01, 100));
  EXPECT_FALSE(same_digits(1.01, 1.001));
  EXPECT_TRUE(same_digits(1.0, 1.00000000000001));  // beyond the thirteenth digit
}

// --- Rounding ------------------------------------------------------------------------------------

TEST(NumbersRound, Rules) {
  EXPECT_EQ(round_half_up(-0.5), 0);
  EXPECT_EQ(round_half_up(-2.5), -2);
  EXPECT_EQ(round_half_up(2.5), 3);
  EXPECT_EQ(round_sig(123456.0, 2), 120000.0);
  EXPECT_EQ(round_sig(123456.0, 0), 100000.0);
  EXPECT_EQ(round_sig(0.1 + 0.2, 20), 0.3000000000000000);
  EXPECT_EQ(round_sig(1.7976931348623157e308, 1), infinity);
  EXPECT_EQ(round_to_step(7.5, 5), 10);
  EXPECT_EQ(round_to_step(-7.5, 5), -10);
  EXPECT_EQ(round_to_step(7.4, 5), 5);
  EXPECT_EQ(sign_of(-3), -1);
  EXPECT_EQ(sign_of(-0.0), 0);
  struct Case {
    double x, mantissa;
    int exponent;
  };
  const Case cases[] = {{0, 0, 0},
                        {12345, 12.345, 3},
                        {-0.0012, -1.2, -3},
                        {0.00012, 120, -6},
                        {999, 999, 0},
                        {1e-320, 1e-320 * 1e150 / 1e-171, -321},
                        {infinity, infinity, 0}};
  for (const Case& c : cases) {
    EXPECT_DOUBLE_EQ(eng_split(c.x).mantissa, c.mantissa) << c.x;
    EXPECT_EQ(eng_split(c.x).exponent, c.exponent) << c.x;
  }
}

// --- Printing ------------------------------------------------------------------------------------

std::string by_library(const char* format, int precision, double x) {
  char text[512];
  std::snprintf(text, sizeof text, format, precision, x);
  return text;
}

TEST(NumbersPrint, DigitsAreThoseOfTheLibrary) {
  std::mt19937_64 random(3);
  const char* formats[] = {"%.*g", "%.*e", "%.*f", "%.*G", "%.*E"};
  for (int i = 0; i < 30000; ++i) {
    const std::uint64_t bits = random();
    double x;
    std::memcpy(&x, &bits, sizeof x);
    switch (i % 5) {
      case 0: x = static_cast<double>(static_cast<std::int64_t>(bits % 2000001) - 1000000) / 1000.0; break;
      case 1: x = static_cast<double>(static_cast<std::int64_t>(bits) >> (bits % 64)); break;
      case 2: x = std::ldexp(static_cast<double>(bits >> 11), static_cast<int>(bits % 200) - 150); break;
      case 3:
        x = std::pow(10.0, static_cast<int>(bits % 40) - 20) * (bits % 3 == 0 ? 9.9999999999995 : 0.5);
        break;
      default: break;
    }
    const int precision = 1 + static_cast<int>(random() % 17);
    const char* format = formats[random() % 5];
    if (std::isnan(x)) continue;
    ASSERT_EQ(print_number(x, format[3], precision), by_library(format, precision, x)) << format;
    for (const int digits : {precision, 13}) {
      std::array<char, general_limit> out;
      ASSERT_EQ(std::string(out.data(), print_general(x, digits, out.data())), by_library("%.*g", digits, x));
    }
  }
  for (const double x : {0.0, -0.0, 1e15, 9.99999999999995e12, 9999999999999.0, 99999999999999.0, -1e13, 1e-5,
                         0.5, infinity}) {
    std::array<char, general_limit> out;
    EXPECT_EQ(std::string(out.data(), print_general(x, 13, out.data())), by_library("%.*g", 13, x));
  }
}

TEST(NumbersPrint, ByFormat) {
  struct Case {
    const char* format;
    double x;
  };
  const Case cases[] = {{"%g", 0.1},        {"%8.3f", -1.5}, {"%-8.2fx", 1},    {"%08.2f", -3.14159},
                        {"%+.1e", 1234},    {"% 6.1f", 2},   {"%G", 1e-10},     {"%012.3E", -5},
                        {"%08g", infinity}, {"%.0f", 2.5},   {"%-08.1f", 1.25}, {"%3.g", 12}};
  for (const Case& c : cases) {
    char text[100];
    std::snprintf(text, sizeof text, c.format, c.x);
    const auto printed = print_by_format(c.format, c.x);
    if (std::strchr(c.format, 'x') != nullptr) {
      EXPECT_FALSE(printed) << c.format;
    } else {
      ASSERT_TRUE(printed) << c.format;
      EXPECT_EQ(*printed, text) << c.format;
    }
  }
  for (const char* bad : {"", "%", "g", "%d", "%s", "%%", "%1000f", "%.1000f", "%*f", "%lf", "%5.2"}) {
    EXPECT_FALSE(print_by_format(bad, 1)) << bad;
  }
}

TEST(NumbersPrint, ExponentsAndCompactForm) {
  const std::pair<const char*, const char*> exponents[] = {
      {"1.5e+005", "1.5e5"}, {"1e-007", "1e-7"}, {"1e+000", "1e0"}, {"1e000", "1e0"}, {"1E+20", "1E20"},
      {"1e-100", "1e-100"},  {"12.5", "12.5"},   {"inf", "inf"},    {"1e", "1e"}};
  for (const auto& [text, expected] : exponents) EXPECT_EQ(strip_exponent_zeros(text), expected) << text;

  const std::pair<const char*, const char*> compact[] = {{"0.5", ".5"},         {"-0.5", "-.5"},
                                                         {"10.5", "10.5"},      {"1.25E+3", "125E1"},
                                                         {"1.25e1", "1.25e1"},  {"1.25e12", "125e10"},
                                                         {"0.125E+3", "125E0"}, {"1.5e-9", "1.5e-9"},
                                                         {"1.5e-09", "15e-10"}, {"5", "5"},
                                                         {"1e5", "1e5"},        {"  0.25", "  .25"},
                                                         {"00.5", "00.5"}};
  for (const auto& [text, expected] : compact) EXPECT_EQ(compact_number(text), expected) << text;
}

TEST(NumbersPrint, AsRecorded) {
  struct Case {
    double x;
    int digits;
    bool exponent;
    std::size_t width;
    const char* expected;
  };
  const Case cases[] = {{10, 0x22, false, 20, "10.00"},      {5, 0x22, false, 20, "05.00"},
                        {-5, 0x22, false, 20, "-5.00"},      {-5, 0x32, false, 20, "-05.00"},
                        {1234.5, 0x13, true, 20, "1.234e3"}, {0.1, 0, false, 20, "0.1"},
                        {1e-7, 0, false, 20, "1e-7"},        {0.25, 0x12, false, 3, ".25"},
                        {1000, 0x22, false, 20, "1000.00"},  {7, 0x30, false, 20, "007"},
                        {1250, 0x12, true, 5, "125e1"}};
  for (const Case& c : cases) {
    EXPECT_EQ(format_value(c.x, static_cast<std::uint8_t>(c.digits), c.exponent, c.width, "%.9g"), c.expected)
        << c.x;
  }
}

TEST(NumbersPrint, EngineeringForm) {
  struct Case {
    double x;
    int sig, width;
    bool blank;
    const char* prefixed;
    const char* exponent;
  };
  const Case cases[] = {{0.000123456, 4, 8, false, "123.46u", "123.5E-6"},
                        {0.000123456, 4, 6, false, "123.5u", "123E-6"},
                        {0, 4, 8, false, "0", "0"},
                        {0.0015, 4, 10, true, "1.5 m", ".0015"},
                        {12000, 4, 8, false, "12k", "12E3"},
                        {1.5e12, 4, 10, false, "1.5E12", "1.5E12"},
                        {2e-18, 4, 10, false, "2E-18", "2E-18"},
                        {-999.9999, 3, 8, false, "-1k", "-1E3"},
                        {0.5, -1, 12, false, "500m", ".5"},
                        {infinity, 4, 8, false, "inf", "inf"},
                        {4.7e9, 2, 1, true, "5 G", "5E9"}};
  for (const Case& c : cases) {
    EXPECT_EQ(format_eng_prefix(c.x, c.sig, c.width, c.blank), c.prefixed) << c.x;
    EXPECT_EQ(format_eng_exp(c.x, c.sig, c.width), c.exponent) << c.x;
  }
  EXPECT_EQ(format_eng_exp(0.000123456, 4, 9), "123.46E-6");
  EXPECT_EQ(format_eng_exp(0.04, 4, 2), "0");  // no room: never an empty number
}

TEST(NumbersPrint, AlignedColumnsAndErrors) {
  struct Case {
    double x;
    int nint, nfrac, nsig;
    const char* expected;
  };
  const Case cases[] = {{123.456, 3, 3, 2, " 123"},   {123.456, 3, 3, 3, " 123"},
                        {123.456, 3, 3, 4, " 123.4"}, {5.67, 3, 3, 3, "   5.67"},
                        {0, 3, 3, 3, "   0.00"},      {0.0012, 3, 6, 2, "   0.0012"},
                        {-12.5, 3, 3, 9, " -12.500"}, {7, 3, 0, 1, "    7"},
                        {0.0001, 3, 3, 1, "   0"},    {1234567, 3, 2, 3, "1234567"}};
  for (const Case& c : cases)
    EXPECT_EQ(format_aligned(c.x, c.nint, c.nfrac, c.nsig), c.expected) << c.x << " " << c.nsig;
  EXPECT_FALSE(format_aligned(1, 16, 15, 3));
  EXPECT_FALSE(format_aligned(1, -1, 3, 3));
  EXPECT_FALSE(format_aligned(1, 3, 3, -1));
  EXPECT_TRUE(format_aligned(1, 15, 15, 3));

  const std::pair<double, const char*> ratios[] = {{5.1, ">500     %"},
                                                   {-5.1, ">500     %"},
                                                   {0.05, "   5.00  %"},
                                                   {0.0005, " 500     ppm"},
                                                   {5.0, " 500     %"}};
  for (const auto& [ratio, text] : ratios) EXPECT_EQ(format_error_ratio(ratio), text) << ratio;
}

// --- Short texts ---------------------------------------------------------------------------------

TEST(NumbersText, PrefixedNumbers) {
  const std::pair<const char*, double> cases[] = {
      {"10m", 10 * 1e-3}, {"1.5G", 1.5e9}, {" 2k", 2000}, {"3K", 3},
      {"5", 5},           {"x", 0},        {"", 0},       {"-4u", -4 * 1e-6}};
  for (const auto& [text, value] : cases) EXPECT_EQ(value_from_prefixed_text(text), value) << text;
  EXPECT_EQ(exponent_from_letter('f'), -15);
  EXPECT_EQ(exponent_from_letter('K'), 0);
}

TEST_F(Numbers, Splitting) {
  std::string key, value;
  EXPECT_TRUE(key_value_split(" a b \t=\t c = d ", key, 10, value, 10));
  EXPECT_EQ(key, "a b");
  EXPECT_EQ(value, "c = d");
  EXPECT_TRUE(key_value_split("alone", key, 5, value, 5));
  EXPECT_EQ(key, "alone");
  EXPECT_EQ(value, "");
  EXPECT_FALSE(key_value_split("toolong=12", key, 4, value, 5));
  EXPECT_EQ(key, "tool");
  EXPECT_FALSE(key_value_split("k=123456", key, 4, value, 5));
  EXPECT_EQ(value, "12345");

  struct Case {
    const char* text;
    std::vector<std::string> tokens;
  };
  const Case cases[] = {{"", {}},           {"a", {"a"}}, {" a , b ", {"a", "b"}},
                        {"a,", {"a"}},      {",", {""}},  {"a,,b", {"a", "", "b"}},
                        {"a, ", {"a", ""}}, {" ", {""}}};
  for (const Case& c : cases) EXPECT_EQ(split_list(c.text, ','), c.tokens) << c.text;
  for (const char bad : {'\0', ' ', '\t'}) EXPECT_FALSE(split_list("a b", bad));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{104, 104, 104}));

  std::string commas = "1,5,2";
  first_comma_to_point(commas);
  EXPECT_EQ(commas, "1.5,2");
  all_commas_to_points(commas);
  EXPECT_EQ(commas, "1.5.2");
}

TEST(NumbersText, Moments) {
  const double values[] = {2, 4, 4, 4, 5, 5, 7, 9};
  const auto m = moments(values);
  ASSERT_TRUE(m);
  EXPECT_DOUBLE_EQ(m->mean, 5);
  EXPECT_DOUBLE_EQ(m->abs_dev, 1.5);
  EXPECT_DOUBLE_EQ(m->variance, 32.0 / 7);
  EXPECT_DOUBLE_EQ(m->sdev, std::sqrt(32.0 / 7));
  EXPECT_FALSE(moments(std::span(values, 1)));
}

}  // namespace
}  // namespace orvane
