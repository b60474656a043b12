#include "settings/vset.h"

#include <gtest/gtest.h>

#include "config/startup_config.h"
#include "settings/settings.h"
#include "support/desk.h"

namespace orvane {
namespace {

class Settings : public test::EngineTest {
 protected:
  bool statement(std::uint16_t code, std::string_view text) {
    FscRecord record = fsc_record_new();
    record.set(field::code, code);
    EXPECT_TRUE(record.set_text(field::text_14, text));
    Statement one{.run = run, .record = record};
    for (const HandlerRow& row : settings_handlers()) {
      if (row.code == code) return row.handler(one);
    }
    return false;
  }
  void vset(std::string_view text) { EXPECT_TRUE(statement(fsc::vset, text)) << text; }
  void tset(std::string_view text) { EXPECT_TRUE(statement(fsc::tset, text)) << text; }
};

TEST_F(Settings, TheTestsValueGoesBeforeTheRuns) {
  EXPECT_EQ(vset_math_epsilon(run), 1e-13);
  vset("MATH_EPSILON = 1E-9");
  tset("math_epsilon=0");
  EXPECT_EQ(vset_math_epsilon(run), 0);
  vset("MATH_EPSILON = 2E-9");
  EXPECT_EQ(vset_math_epsilon(run), 0);
  vset_test_done(run);
  EXPECT_EQ(vset_math_epsilon(run), 2e-9);
  tset("MATH_EPSILON = 1E-6");
  tset("MATH_EPSILON = *");
  EXPECT_EQ(vset_math_epsilon(run), 2e-9);
  tset("MATH_EPSILON = 1E-6");
  vset("MATH_EPSILON = *");
  EXPECT_EQ(vset_math_epsilon(run), 1e-6);
  vset_test_done(run);
  EXPECT_EQ(vset_math_epsilon(run), 1e-13);
  EXPECT_TRUE(run.vset.empty());
  vset("MATH_EPSILON = 1E-9");
  tset("ALL = *");
  EXPECT_EQ(vset_math_epsilon(run), 1e-9);
  vset("all = *");
  EXPECT_TRUE(run.vset.empty());
  EXPECT_TRUE(desk.shown.empty());
  EXPECT_FALSE(run.stopped());
}

TEST_F(Settings, ValuesAreChecked) {
  const std::pair<const char*, bool> cases[] = {{"0", true},
                                                {"1E-15", true},
                                                {"1E-5", true},
                                                {"0.00001", true},
                                                {"9.99999999999999E-16", true},
                                                {"1E-16", false},
                                                {"1.1E-5", false},
                                                {"-1E-9", false},
                                                {"", false},
                                                {"1E-9x", false},
                                                {"1E-9 1E-9", false},
                                                {"[M1]", false},
                                                {"*", true}};
  for (const auto& [value, good] : cases) {
    desk.shown.clear();
    vset("MATH_EPSILON = " + std::string(value));
    EXPECT_EQ(desk.shown.empty(), good) << value;
    if (good) continue;
    EXPECT_EQ(desk.last_message(), "W2734: The setting \"MATH_EPSILON\" does not take the value \"" +
                                       std::string(value) + "\" and stays as it is.");
    run.vset.clear();
    run.registers.m[1] = 1;
  }
  desk.shown.clear();
  vset("U3 = [0.011 / 2]");  // brackets take an element, no expression
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{30401, 2734}));
  EXPECT_FALSE(run.has(run_flag::stop_test));
  desk.shown.clear();
  EXPECT_FALSE(statement(fsc::vset, "EPSILON = 1E-9"));  // leads to the stop dialog
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{2217});
  vset("ALL = 1");
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{2217, 2734}));
  EXPECT_FALSE(statement(fsc::tset, "EPSILON = *"));
  EXPECT_EQ(desk.shown.size(), 3u);
  EXPECT_TRUE(run.vset.empty());
}

// What each kind of name takes at its borders, and what it is then worth.
TEST_F(Settings, EachNameTakesItsOwnValues) {
  constexpr double refused = -777;
  const struct {
    const char* text;
    Setting setting;
    double value;
  } cases[] = {
      {"ACCRED = YES", Setting::ACCRED, 1},
      {"ACCRED = 7", Setting::ACCRED, 7},
      {"ACCRED = -1", Setting::ACCRED, refused},
      {"ACCRED = yes", Setting::ACCRED, refused},
      {"CONF = 4", Setting::CONF, 4},
      {"CONF = 4.000001", Setting::CONF, refused},
      {"CONF = 0", Setting::CONF, 0},
      {"CORREQ = EXACT", Setting::CORREQ, 1},
      {"DF3 = INF", Setting::DF3, infinite_df},
      {"DF3 = inf", Setting::DF3, refused},
      {"DF3 = 2.5", Setting::DF3, 2.5},
      {"U10 = -1E-6", Setting::U10, -1e-6},
      {"U1 = 1E999", Setting::U1, refused},
      {"U11 = 1", Setting::U10, refused},
      {"GB = RDS", Setting::GB, 5},
      {"gb = RDS", Setting::GB, 5},
      {"GB = rds", Setting::GB, refused},
      {"GBF = 1000", Setting::GBF, 1000},
      {"GBF = 1001", Setting::GBF, refused},
      {"GBF = -1", Setting::GBF, refused},
      {"KCONF = 95.45%", Setting::KCONF, 4},
      {"KCONF = 95%", Setting::KCONF, refused},
      {"NMEAS = 1000", Setting::NMEAS, 1000},
      {"NMEAS = 1001", Setting::NMEAS, refused},
      {"NMEAS = 2.5", Setting::NMEAS, refused},
      {"NSD = 2", Setting::NSD, 2},
      {"NSD = 1", Setting::NSD, refused},
      {"NTHROW = 100", Setting::NTHROW, 100},
      {"NTHROW = -2", Setting::NTHROW, refused},
      {"USE_ST = 1", Setting::USE_ST, 1},
      {"WS = YES", Setting::WS, 1},
      {"MEAS = SA", Setting::MEAS, 2},
      {"SlewStart = -12", Setting::SlewStart, -12},
      {"SlewStart = 13", Setting::SlewStart, refused},
      {"IMPED = 1E6", Setting::IMPED, 1e6},
      {"IMPED = 1.1E6", Setting::IMPED, refused},
      {"LOGLIN = watts", Setting::LOGLIN, 2},
      {"MFILE_FORMAT = DELIM-STD", Setting::MFILE_FORMAT, 3},
      {"SrqRetry = 101", Setting::SrqRetry, refused},
      {"CPT = 10 mV", Setting::CPT, 0},
      {"CPT = mV", Setting::CPT, refused},
      {"CPT = 10", Setting::CPT, refused},
  };
  for (const auto& one : cases) {
    run.vset.clear();
    static_cast<void>(statement(fsc::vset, one.text));
    if (one.value == refused) {
      EXPECT_TRUE(run.vset.empty()) << one.text;
    } else {
      EXPECT_EQ(setting_set(run, one.setting), one.value) << one.text;
    }
  }
}

TEST_F(Settings, AKeyStandsBehindTheProcedureAndTheFallbackBehindBoth) {
  EXPECT_EQ(setting_value(run, Setting::NSD), 6);
  EXPECT_EQ(setting_value(run, Setting::CONF), std::nullopt);
  EXPECT_EQ(setting_code(run, Setting::GB_RESULT), 4);
  startup_config().nsd = 3;
  startup_config().CONF = 1;
  startup_config().nthrow = 5;
  startup_config().GB_RESULT = 1;
  EXPECT_EQ(setting_value(run, Setting::NSD), 3);
  EXPECT_EQ(setting_value(run, Setting::CONF), 1);
  EXPECT_EQ(setting_set(run, Setting::CONF), std::nullopt);
  EXPECT_EQ(setting_code(run, Setting::GB_RESULT), 1);
  vset("NTHROW = 0");
  EXPECT_EQ(setting_value(run, Setting::NTHROW), 0);
  tset("NTHROW = -1");
  EXPECT_EQ(setting_value(run, Setting::NTHROW), 5);
  startup_config().mfile = "readings.txt";
  EXPECT_EQ(setting_text(run, Setting::MFILE), "readings.txt");
  run.registers.m[2] = 7;
  vset("MFILE = run [M2].txt");
  EXPECT_EQ(setting_text(run, Setting::MFILE), "run 7.txt");
}

TEST_F(Settings, BracketsAreReadAnewEachTime) {
  run.registers.m[3] = 1e-6;
  vset("MATH_EPSILON = [M3]");
  EXPECT_EQ(run.vset.at(0).flags, VsetEntry::brackets);
  EXPECT_EQ(vset_math_epsilon(run), 1e-6);
  run.registers.m[3] = 0.5;  // would have been refused
  EXPECT_EQ(vset_math_epsilon(run), 0.5);
  EXPECT_EQ(vset_get(run, "Math_Epsilon"), "0.5");
  vset("U3 = [S1]");  // nothing in it: no number
  EXPECT_EQ(desk.message_numbers().back(), 2734);
  run.registers.s[1] = "2E-6";
  vset("U3 = [S1]");
  EXPECT_EQ(setting_set(run, Setting::U3), 2e-6);
  run.registers.s[1] = "lost";
  desk.shown.clear();
  EXPECT_EQ(setting_value(run, Setting::U3), 0);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{2734});
  vset("MATH_EPSILON = [M999]");
  EXPECT_EQ(desk.message_numbers().back(), 2734);
  EXPECT_EQ(vset_math_epsilon(run), 0.5);
  EXPECT_FALSE(vset_get(run, "NSD").has_value());
}

}  // namespace
}  // namespace orvane
