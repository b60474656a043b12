#include "values/units.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "config/startup_config.h"
#include "support/desk.h"
#include "values/numbers.h"

namespace orvane {
namespace {

class Units : public test::EngineTest {
 protected:
  Units() { startup_config() = StartupConfig(); }
  ~Units() override { startup_config() = StartupConfig(); }
};

std::string shown(CodeText text) { return text ? std::string(*text) : "-"; }

TEST_F(Units, TextsInTheirForms) {
  struct Case {
    UnitCode unit;
    const char *listing, *symbol, *plain, *extended, *long_name;
  };
  const Case cases[] = {{0, "-", "-", "-", "-", "-"},
                        {2, "D", "dBm", "dBm", "dBm", "dBm"},
                        {4, "Z", "Ohms", "Ohm", "Ohm", "ohms"},
                        {8, "degC", "degC", "degC",
                         "\xB0"
                         "C",
                         "degrees Celsius"},
                        {12, "deg", "deg", "deg", "\xB0", "degrees"},
                        {17, "pct", "%", "%", "%", "percent"},
                        {18, "Voff", "V", "V", "V", "volts offset"},
                        {27, "g/cm2", "g/cm2", "g/cm2", "g/cm\xB2", "grams per square centimeter"},
                        {45, "Hy", "Hy", "H", "H", "henries"},
                        {48, "-", "SPD", "SPD", "SPD", "steps per decade"},
                        {50, "-", "-", "-", "-", "-"},
                        {67, "-", "Hz/V", "-", "-", "-"},
                        {71, "dBuV", "dBuV", "dBuV", "dB\xB5V", "dBuV"},
                        {72, "-", "-", "-", "-", "-"},
                        {255, "-", "-", "-", "-", "-"}};
  for (const Case& c : cases) {
    EXPECT_EQ(shown(unit_listing_token(c.unit)), c.listing) << int{c.unit};
    EXPECT_EQ(shown(unit_symbol(c.unit)), c.symbol) << int{c.unit};
    EXPECT_EQ(shown(unit_long_name(c.unit)), c.long_name) << int{c.unit};
    startup_config().ExtendedUnits = 0;
    EXPECT_EQ(shown(unit_display(c.unit)), c.plain) << int{c.unit};
    startup_config().ExtendedUnits = 1;
    EXPECT_EQ(shown(unit_display(c.unit)), c.extended) << int{c.unit};
  }
  EXPECT_EQ(unit_symbol_valued(unit_code::ohm, 1.0), "Ohm");
  EXPECT_EQ(unit_symbol_valued(unit_code::ohm, 1.0000001), "Ohms");
  EXPECT_EQ(unit_symbol_valued(255, 1.0), "");
}

TEST_F(Units, Prefixes) {
  struct Case {
    PrefixCode prefix;
    double multiplier;
    int exponent;
    const char *symbol, *display, *long_name;
  };
  const Case cases[] = {{0, 0.0, 0, "-", "-", "-"},        {1, 1.0, 0, "", "", ""},
                        {2, 1e-12, -12, "p", "p", "pico"}, {4, 1e-6, -6, "u", "\xB5", "micro"},
                        {5, 1e-3, -3, "m", "m", "milli"},  {9, 1e-18, 0, "-", "a", "-"},
                        {10, 0.0, 0, "-", "c", "-"},       {12, 0.0, 0, "-", "-", "-"},
                        {15, 0.0, 0, "-", "h", "-"},       {17, 1e12, 12, "T", "T", "tera"},
                        {21, 1e21, 0, "-", "Z", "-"},      {22, 0.0, 0, "-", "-", "-"}};
  for (const Case& c : cases) {
    EXPECT_EQ(prefix_multiplier(c.prefix), c.multiplier) << int{c.prefix};
    EXPECT_EQ(prefix_exponent(c.prefix), c.exponent) << int{c.prefix};
    EXPECT_EQ(shown(prefix_symbol(c.prefix)), c.symbol) << int{c.prefix};
    EXPECT_EQ(shown(prefix_display(c.prefix)), c.display) << int{c.prefix};
    EXPECT_EQ(shown(prefix_long_name(c.prefix)), c.long_name) << int{c.prefix};
  }
  startup_config().ExtendedUnits = 0;
  EXPECT_EQ(shown(prefix_display(prefix_code::micro)), "u");
  EXPECT_EQ(shown(prefix_long_name_for(prefix_code::mega, "ohms")), "meg");
  EXPECT_EQ(shown(prefix_long_name_for(prefix_code::mega, "volts")), "mega");
  EXPECT_EQ(shown(prefix_long_name_for(prefix_code::milli, "ohms")), "milli");
}

// What can be typed is what prefix_from_letter() knows, and nothing else.
TEST_F(Units, LettersOfPrefixesAndUnits) {
  const std::string letters = "pNnUu\xB5mKkMGgaEfPTyYzZ";
  const PrefixCode codes[] = {2, 3, 3, 4, 4, 4, 5, 6, 6, 7, 8, 8, 9, 13, 14, 16, 17, 18, 19, 20, 21};
  for (int c = 0; c < 256; ++c) {
    const std::size_t at = c == 0 ? std::string::npos : letters.find(static_cast<char>(c));
    EXPECT_EQ(prefix_from_letter(static_cast<char>(c)), at == std::string::npos ? 0 : codes[at]) << c;
  }
  for (const UnitCode unit : std::initializer_list<UnitCode>{3, 4, 11, 24, 36, 37})
    EXPECT_EQ(prefix_from_listing_letter('M', unit), prefix_code::mega) << int{unit};
  for (const UnitCode unit : std::initializer_list<UnitCode>{0, 1, 2, 6, 10, 25, 38})
    EXPECT_EQ(prefix_from_listing_letter('M', unit), prefix_code::milli) << int{unit};
  EXPECT_EQ(prefix_from_listing_letter('m', unit_code::hertz), prefix_code::milli);
  EXPECT_EQ(prefix_from_listing_letter('P', unit_code::farad), prefix_code::pico);
  EXPECT_EQ(prefix_from_listing_letter('t', unit_code::ohm), prefix_code::tera);
  EXPECT_EQ(prefix_from_listing_letter('a', unit_code::ohm), 0);
  EXPECT_EQ(unit_from_letter('y'), unit_code::siemens);
  EXPECT_EQ(unit_from_letter('D'), unit_code::dbm);
  EXPECT_EQ(unit_from_letter('Q'), 0);
  EXPECT_EQ(unit_from_exact_text("Wb"), 255);
  EXPECT_EQ(unit_from_exact_text("dBc/Hz"), 70);
  EXPECT_EQ(unit_from_exact_text("DBM"), 0);
  for (int unit = 0; unit < 256; ++unit)
    EXPECT_EQ(unit_is_pressure(static_cast<UnitCode>(unit)), (unit >= 24 && unit <= 32) || unit == 39)
        << unit;
}

struct Parsed {
  const char* text;
  bool ok;
  int flags;
  double value;
  int digits, prefix, unit;
  const char* unit_text;
  int offset;
};

void expect_parsed(bool (*parse)(std::string_view, DimValue&), std::initializer_list<Parsed> cases) {
  for (const Parsed& c : cases) {
    DimValue got;
    ASSERT_EQ(parse(c.text, got), c.ok) << c.text;
    if (!c.ok) continue;
    EXPECT_EQ(got.flags, c.flags) << c.text;
    EXPECT_EQ(got.value, c.value) << c.text;
    EXPECT_EQ(got.digits, c.digits) << c.text;
    EXPECT_EQ(got.prefix, c.prefix) << c.text;
    EXPECT_EQ(got.unit, c.unit) << c.text;
    EXPECT_EQ(got.unit_text, c.unit_text) << c.text;
    EXPECT_EQ(got.unit_offset, c.offset) << c.text;
  }
}

TEST_F(Units, ListingSpelling) {
  expect_parsed(
      dim_parse_listing,
      {
          {"", false, 0, 0, 0, 0, 0, "", 0},
          {"10mV", true, 1, 10, 0x20, 5, 6, "V", 3},
          {"-1.50E3 V", true, 3, -1500, 0x12, 1, 6, "V", 8},
          {"3 kHz", true, 1, 3, 0x10, 6, 3, "Hz", 3},
          {"10pA", true, 1, 10, 0x20, 2, 1, "A", 3},
          {"10PA", true, 1, 10, 0x20, 1, 24, "Pa", 2},
          {"10pa", true, 1, 10, 0x20, 1, 24, "Pa", 2},
          {"10kpA", true, 1, 10, 0x20, 6, 0, "pA", 3},  // the match is the ampere: two letters before it
          {"5mva", true, 1, 5, 0x10, 5, 36, "VA", 2},
          {"5va", true, 1, 5, 0x10, 1, 36, "VA", 1},
          {"5v/a", true, 1, 5, 0x10, 1, 35, "V/A", 1},
          {"1kz", true, 1, 1, 0x10, 6, 4, "Ohm", 2},
          {"7D", true, 1, 7, 0x10, 1, 2, "dBm", 1},
          {"2T", true, 1, 2, 0x10, 1, 10, "s", 1},
          {"2c", true, 1, 2, 0x10, 1, 47, "c", 1},
          {"20degC", true, 1, 20, 0x20, 1, 8,
           "\xB0"
           "C",
           2},
          {"mV", true, 0, 0, 0, 5, 6, "V", 1},
          {"10", true, 1, 10, 0x20, 1, 0, "", 2},
          {"1OHM", true, 1, 1, 0x10, 1, 0, "OHM", 1},
          {"1mOHM", true, 1, 1, 0x10, 5, 0, "OHM", 2},
          {"3x", true, 1, 3, 0x10, 1, 0, "x", 1},
          {"3m", true, 1, 3, 0x10, 1, 0, "m", 1},  // one character is the unit, never a prefix
          {"3'", true, 1, 3, 0x10, 1, 0, "'", 1},
          {"3k'ticks'", true, 1, 3, 0x10, 6, 0, "ticks", 3},
          {"3'm'", true, 1, 3, 0x10, 1, 0, "m", 2},
          {"1234567890123456V", true, 1, 1234567890123456, 0, 1, 6, "V", 16},
      });
}

TEST_F(Units, ExactSpelling) {
  expect_parsed(dim_parse_exact,
                {
                    {"", false, 0, 0, 0, 0, 0, "", 0},
                    {"10", false, 0, 0, 0, 0, 0, "", 0},
                    {"1Ohm", true, 1, 1, 0x10, 1, 4, "Ohm", 1},
                    {"1 kohms", true, 1, 1, 0x10, 6, 4, "ohms", 3},
                    {"1OHM", false, 0, 0, 0, 0, 0, "", 0},
                    {"10mV", true, 1, 10, 0x20, 5, 6, "V", 3},
                    {"10dBmV", true, 1, 10, 0x20, 1, 53, "dBmV", 2},  // the longest text wins
                    {"10mdBmV", true, 1, 10, 0x20, 5, 53, "dBmV", 3},
                    {"1h", true, 1, 1, 0x10, 1, 45, "h", 1},
                    {"1T", true, 1, 1, 0x10, 1, 66, "T", 1},
                    {"1mT", true, 1, 1, 0x10, 5, 66, "T", 2},
                    {"1Gm", true, 1, 1, 0x10, 8, 61, "m", 2},
                    {"1cm", false, 0, 0, 0, 0, 0, "", 0},  // c can be printed, not entered
                    {"1kmV", false, 0, 0, 0, 0, 0, "", 0},
                    {"%/V", true, 0, 0, 0, 1, 68, "%/V", 0},
                    {"Wb", true, 0, 0, 0, 1, 255, "Wb", 0},
                    {"1 v", false, 0, 0, 0, 0, 0, "", 0},
                });
}

TEST_F(Units, UnitTextsHaveLessThan32Characters) {
  DimValue got;
  const std::string free_text(31, 'x');
  EXPECT_TRUE(dim_parse_listing("1" + free_text, got));
  EXPECT_EQ(got.unit_text, free_text);
  EXPECT_FALSE(dim_parse_listing("1" + free_text + "x", got));
  EXPECT_FALSE(dim_parse_listing("1" + std::string(70000, ' ') + "V", got));
}

// Every unit that a parser knows comes back from its own spelling with each prefix letter.
TEST_F(Units, EverySpellingWithEveryPrefix) {
  for (int unit = 1; unit <= 71; ++unit) {
    const CodeText token = unit_listing_token(static_cast<UnitCode>(unit));
    if (!token || unit >= 53) continue;  // the later ones are no words of the listing
    DimValue got;
    ASSERT_TRUE(dim_parse_listing("1" + std::string(*token), got)) << *token;
    EXPECT_EQ(got.unit, unit) << *token;
    if (unit == 24) continue;
    for (const char letter : std::string("pnumkMGT")) {
      if (letter == 'p' && unit == 1) continue;
      ASSERT_TRUE(dim_parse_listing("1" + (letter + std::string(*token)), got));
      EXPECT_EQ(got.prefix, prefix_from_letter(letter)) << letter << *token;
    }
  }
}

TEST_F(Units, OperandsOfCommands) {
  const std::pair<const char*, bool> cases[] = {
      {"", true},      {"  ", true},     {"10", true},    {" -1.5e3mV", true}, {"V", true},
      {"kohm", true},  {"mem1", true},   {"MEM2V", true}, {"mem", true},       {"memx", true},
      {"memxV", true}, {"m1", true},     {"m255", true},  {"m256", false},     {"m0", false},
      {"M12Hz", true}, {"s32", true},    {"s33", false},  {"s", true},         {"10%%", true},
      {"10%", false},  {"10kkV", false}, {"10 V", false}, {"10radian", true},  {"10rad", false},
      {"1x", false},   {"m", false}};
  for (const auto& [text, good] : cases) EXPECT_EQ(operand_parse(text), good) << text;
}

TEST_F(Units, Levels) {
  EXPECT_NEAR(dbm_to_w(0), 0.001, 1e-18);
  EXPECT_NEAR(dbm_to_v(0, 50), 0.22360679774997896, 1e-15);
  EXPECT_NEAR(dbm_to_dbuv(0, 50), 106.98970004336019, 1e-12);
  EXPECT_NEAR(db_to_pct_v(0), 100, 1e-12);
  EXPECT_EQ(dbm_to_v(-200000, 50), 0.0);
  EXPECT_EQ(dbuv_to_v(-200000), 0.0);
  EXPECT_EQ(dbuv_to_dbm(-200000, 50), 0.0);
  // There and back again.
  for (const double x : {-60.0, -3.0, 0.0, 12.5, 40.0}) {
    EXPECT_NEAR(w_to_dbm(dbm_to_w(x)), x, 1e-12);
    EXPECT_NEAR(v_to_dbm(dbm_to_v(x, 75), 75), x, 1e-12);
    EXPECT_NEAR(vp_to_dbm(dbm_to_vp(x, 600), 600), x, 1e-11);
    EXPECT_NEAR(vpp_to_dbm(dbm_to_vpp(x, 600), 600), x, 1e-11);
    EXPECT_NEAR(v_to_dbuv(dbuv_to_v(x)), x, 1e-12);
    EXPECT_NEAR(dbm_to_dbuv(dbuv_to_dbm(x, 50), 50), x, 1e-11);
    EXPECT_NEAR(pct_to_db_w(db_to_pct_w(x)), x, 1e-12);
    EXPECT_NEAR(pct_to_db_v(db_to_pct_v(x)), x, 1e-12);
  }
}

TEST_F(Units, WaveformsTemperaturesAndAngles) {
  const std::pair<int, double> rms_of_one[] = {{1, 0.2635},
                                               {2, 0.2866666666666671},
                                               {3, 1},
                                               {4, 0.5},
                                               {5, 0.3535533905932725},
                                               {6, 0.5},
                                               {7, 0.44095},
                                               {8, 0.28867513418962576},
                                               {0, 1},
                                               {9, 1},
                                               {-1, 1}};
  for (const auto& [wave, rms] : rms_of_one) {
    EXPECT_EQ(wave_to_rms(1, wave), rms) << wave;
    EXPECT_NEAR(wave_from_rms(wave_to_rms(-3, wave), wave), -3, 1e-7) << wave;
  }
  EXPECT_EQ(rms_to_peak(-2, PeakPair::r2), -4);
  EXPECT_EQ(peak_to_rms(-4, PeakPair::r2), 2);
  EXPECT_EQ(peak_to_pp(-4), 8);
  EXPECT_EQ(pp_to_peak(-8), -4);
  EXPECT_EQ(c_to_k(0), 273.0);
  EXPECT_EQ(c_to_f(100), 212);
  EXPECT_EQ(f_to_c(212), 100);
  EXPECT_NEAR(power_factor_angle(0.5, 1), 60, 1e-12);
  EXPECT_NEAR(power_factor_angle(0.5, 2), -60, 1e-12);
  EXPECT_NEAR(rad_to_deg(deg_to_rad(33)), 33, 1e-12);
}

TEST_F(Units, PressureByReferenceTemperature) {
  struct Case {
    UnitCode unit;
    ReferenceTemperature at;
    double factor;
  };
  const Case cases[] = {{24, {}, 6894.757},
                        {28, {}, 2.036021},
                        {28, {60, true}, 2.041772},
                        {28, {20, false}, 2.036021},
                        {30, {4, false}, 27.6799},
                        {30, {20, false}, 27.72887},
                        {30, {20.0009, false}, 27.72887},
                        {30, {20.0011, false}, 27.6799},
                        {30, {68, true}, 27.72887},
                        {30, {60, true}, 27.707048},
                        {30, {60.0011, true}, 27.6799},
                        {32, {60, true}, 0.7030696},
                        {39, {20, false}, 70.43134}};
  for (const Case& c : cases) {
    EXPECT_NEAR(psi_to_pressure(1, c.unit, c.at).value_or(-1), c.factor, 1e-9)
        << int{c.unit} << " " << c.at.value;
    EXPECT_NEAR(pressure_to_psi(c.factor, c.unit, c.at).value_or(-1), 1, 1e-12) << int{c.unit};
  }
  EXPECT_FALSE(psi_to_pressure(1, unit_code::volt).has_value());
}

}  // namespace
}  // namespace orvane
