#include "settings/vset.h"

#include <gtest/gtest.h>

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
  vset("EPSILON = 1E-9");
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{2217});
  vset("ALL = 1");
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{2217, 2734}));
  vset("EPSILON = *");
  EXPECT_EQ(desk.shown.size(), 2u);
  EXPECT_TRUE(run.vset.empty());
}

TEST_F(Settings, BracketsAreReadAnewEachTime) {
  run.registers.m[3] = 1e-6;
  vset("MATH_EPSILON = [M3]");
  EXPECT_EQ(run.vset.at(0).flags, VsetEntry::brackets);
  EXPECT_EQ(vset_math_epsilon(run), 1e-6);
  run.registers.m[3] = 0.5;  // would have been refused
  EXPECT_EQ(vset_math_epsilon(run), 0.5);
  EXPECT_EQ(vset_get(run, "Math_Epsilon"), "0.5");
  vset("MATH_EPSILON = [M999]");
  EXPECT_EQ(desk.message_numbers().back(), 2734);
  EXPECT_EQ(vset_math_epsilon(run), 0.5);
  EXPECT_FALSE(vset_get(run, "NSD").has_value());
}

}  // namespace
}  // namespace orvane
