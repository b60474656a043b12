// Guard bands: each method by numbers worked out by hand, the table, and which results they make of a reading.
#include "evaluation/guardband.h"

#include <gtest/gtest.h>

#include <cmath>
#include <fstream>

#include "config/startup_config.h"
#include "evaluation/decision.h"
#include "evaluation/guard_table.h"
#include "settings/vset.h"
#include "support/desk.h"

namespace orvane {
namespace {

using Q = Quantity;

class GuardBand : public test::EngineTest {
 protected:
  void set(const char* name, std::string_view value) {
    FscRecord record = fsc_record_new();
    record.set(field::code, fsc::vset);
    EXPECT_TRUE(vset_add(run, record, name, value)) << name << value;
  }

  void quantity(Q which, double value) {
    run.uncertainty.results[static_cast<std::size_t>(which)] = value;
    run.uncertainty.valid1 |= 1U << static_cast<unsigned>(which);
  }

  // A test of 10 +/- tolerance that indicates 10; in mV, so that the uncertainties are a thousandth.
  void begin(double expanded, double standard) {
    run.vset.clear();
    run.uncertainty = UncertaintyBlock();
    run.uncertainty.scale = 1e-3;
    quantity(Q::exp_unc, expanded * 1e-3);
    quantity(Q::std_unc, standard * 1e-3);
    run.test = TestValues();
    run.test.test_state = test_bit::uncertainty | test_bit::tolerances;
    run.test.indicated = 10;
    run.test.actual = 10.5;
  }

  std::string table(std::string_view text) {
    std::ofstream(folder / "guard.txt", std::ios::binary) << text;
    return startup_config().gb_table = (folder / "guard.txt").string();
  }

  bool evaluate(double neg, double pos) {
    desk.shown.clear();
    return gb_evaluate(run, neg, pos, result);
  }
  void expect_limits(double inner_neg, double inner_pos, double outer_neg, double outer_pos) {
    EXPECT_NEAR(result.inner_neg, inner_neg, 1e-12);
    EXPECT_NEAR(result.inner_pos, inner_pos, 1e-12);
    EXPECT_NEAR(result.outer_neg, outer_neg, 1e-12);
    EXPECT_NEAR(result.outer_pos, outer_pos, 1e-12);
  }

  GuardResult result;
};

TEST_F(GuardBand, EachMethodByHand) {
  begin(0.6, 0.3);
  EXPECT_FALSE(gb_active(run));
  EXPECT_FALSE(evaluate(1, 1));  // GB is not set
  set("GB", "OFF");
  EXPECT_FALSE(gb_active(run) || evaluate(1, 1));

  set("GB", "DIRECT");
  EXPECT_TRUE(gb_active(run));
  EXPECT_FALSE(evaluate(1, 1));  // no factor
  set("GBF", "0.8");
  EXPECT_TRUE(evaluate(1, 2));
  expect_limits(0.8, 1.6, 1.2, 2.4);
  EXPECT_EQ(gb_method_name(result), "DIRECT");

  begin(0.6, 0.3);
  set("GB", "MU");
  EXPECT_TRUE(evaluate(1, 2));
  expect_limits(0.4, 1.4, 1.6, 2.6);
  EXPECT_NEAR(result.g1, 50 / 0.4, 1e-9);  // it indicates 0.5 too little
  EXPECT_NEAR(result.g2, 50 / 1.6, 1e-9);
  set("GBF", "0.5");
  EXPECT_TRUE(evaluate(1, 2));
  expect_limits(0.7, 1.7, 1.3, 2.3);

  set("GB", "RDS");
  EXPECT_TRUE(evaluate(1, 0));
  expect_limits(0.8, 0, 1.2, 0);
  EXPECT_FALSE(evaluate(0.6, 1));  // covered by the uncertainty
  EXPECT_TRUE(evaluate(0.6 * (1 + 1e-9), 1));
  EXPECT_FALSE(evaluate(1, 0.6 * (1 - 1e-9)));

  run.test.test_tol = 1.8e-3;
  run.test.tur = 2;
  table("1 0.5\n2 0.6\n3 0.9\n");
  set("GB", "TSR");
  EXPECT_TRUE(evaluate(1, 1));
  expect_limits(0.6, 0.6, 1.4, 1.4);
  set("GB", "TUR");  // 1.8 / 0.6
  EXPECT_TRUE(evaluate(1, 1));
  EXPECT_NEAR(result.table_key, 3, 1e-12);
  set("GB", "NTUR");
  const std::pair<const char*, double> confidences[] = {{"1sigma", 6},        {"90.0%", 6 / 1.645},
                                                        {"95.0%", 6 / 1.96},  {"2sigma", 3},
                                                        {"99.0%", 6 / 2.576}, {"3sigma", 2}};
  for (const auto& [word, ratio] : confidences) {
    set("UCONF", word);
    EXPECT_TRUE(evaluate(1, 1)) << word;
    EXPECT_NEAR(result.table_key, ratio, 1e-12) << word;
  }
  EXPECT_TRUE(desk.shown.empty());
}

TEST_F(GuardBand, MethodsThatNeedAnUncertaintyHaveNoneWithoutIt) {
  for (const char* method : {"MU", "NTUR", "RDS", "TUR"}) {
    table("1 1\n");
    begin(0.1, 0.05);
    set("GB", method);
    run.uncertainty.flags |= unc_flag::no_accuracy;
    EXPECT_FALSE(evaluate(1, 1)) << method;
    run.uncertainty.flags = 0;
    run.test.test_state = 0;
    EXPECT_FALSE(evaluate(1, 1)) << method;
    EXPECT_TRUE(desk.shown.empty());
  }
}

TEST_F(GuardBand, ABandWiderThanTheTolerance) {
  const struct {
    const char* rule;
    bool has_limits;
    std::vector<int> messages;
  } cases[] = {{"DISABLE", false, {}},
               {"DISABLE_W", false, {1467}},
               {"LIMIT", true, {}},
               {"LIMIT_W", true, {1468}},
               {"*", true, {1468}}};
  for (const auto& one : cases) {
    begin(0.6, 0.3);
    set("GB", "MU");
    set("GB_OVERFLOW", one.rule);
    EXPECT_TRUE(evaluate(0.6, 1)) << "a limit of exactly 0 is none";
    EXPECT_EQ(result.flags, 0);
    EXPECT_EQ(evaluate(0.5, 1), one.has_limits) << one.rule;
    EXPECT_EQ(result.flags, GuardResult::overflow);
    EXPECT_EQ(desk.message_numbers(), one.messages) << one.rule;
    EXPECT_EQ(gb_method_name(result), "MU *");
    if (!one.has_limits) continue;
    expect_limits(0, 0.4, 1.1, 1.6);
    EXPECT_EQ(result.g1, 501);  // everything off the nominal is outside
  }
}

TEST_F(GuardBand, TheTableInBothModes) {
  GuardTable read;
  ASSERT_TRUE(gb_table_read(table("# ratio factor\n\n3 0.9\n 1\t0.5 \n; note\n2 7\n2 0.6\n"), read));
  ASSERT_EQ(read.size(), 3u);
  const struct {
    double key, step, straight;
  } cases[] = {{0.5, 0.5, 0.5},   {1, 0.5, 0.5},    {1.5, 0.5, 0.55},
               {2, 0.6, 0.6},     {2.5, 0.6, 0.75}, {3, 0.9, 0.9},
               {1e300, 0.9, 0.9}, {-1, 0.5, 0.5},   {std::nextafter(2, 0), 0.5, 0.6}};
  for (const auto& one : cases) {
    EXPECT_EQ(gb_table_lookup(read, guard_mode::step, one.key), one.step) << one.key;
    EXPECT_EQ(gb_table_lookup(read, guard_mode::unset, one.key), one.step) << one.key;
    EXPECT_NEAR(gb_table_lookup(read, guard_mode::interpolate, one.key).value_or(-1), one.straight, 1e-12);
  }
  const GuardTable single = {{4, 0.7}};
  for (const double key : {1.0, 4.0, 9.0})
    EXPECT_EQ(gb_table_lookup(single, guard_mode::interpolate, key), 0.7);
  EXPECT_FALSE(gb_table_lookup(single, 3, 1) || gb_table_lookup({}, 1, 1));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{7811, 7797}));
}

TEST_F(GuardBand, ADamagedTableIsToldWithItsLine) {
  std::string many;
  for (int i = 0; i < 100; ++i) many += "1 ";
  const struct {
    std::string text;
    int number;
    const char* place;
  } cases[] = {{"1 2\n1 2 3\n", 7805, "guard.txt:2"},
               {"7\n", 7805, "guard.txt:1"},
               {"1 1\r\n\r\n" + many + "\r\n", 7805, "guard.txt:3"},
               {many, 7805, "100 words"},
               {"1 x\n", 7807, "\"x\" (word 2)"},
               {"\n# note\n1,5 1\n", 7807, "guard.txt:3: \"1,5\" (word 1)"},
               {"1 1e999\n", 7807, "1e999"},
               {"nan 1\n", 7807, "nan"},
               {"1 0x10\n", 7807, "0x10"},
               {std::string("1 1\0 2\n", 8), 7805, "guard.txt:1"},
               {"\n#" + std::string(255, 'c') + "\n", 7804, "guard.txt:2"},
               {"", 7797, ""}};
  for (const auto& one : cases) {
    begin(0.1, 0.05);
    set("GB", "TSR");
    run.test.tur = 2;
    table(one.text);
    EXPECT_FALSE(evaluate(1, 1));
    EXPECT_EQ(desk.message_numbers(), std::vector<int>{one.number});
    EXPECT_NE(desk.last_message().find(one.place), std::string::npos) << desk.last_message();
  }
  table("#" + std::string(254, 'c') + "\n1 0.5\n");  // just fits
  EXPECT_TRUE(evaluate(1, 1));
  for (const auto& [path, number] :
       {std::pair(std::string(), 7801), {(folder / "nowhere.txt").string(), 7801}, {folder.string(), 7803}}) {
    startup_config().gb_table = path;
    EXPECT_FALSE(evaluate(1, 1));
    EXPECT_EQ(desk.message_numbers(), std::vector<int>{number}) << path;
    EXPECT_NE(desk.last_message().find(path), std::string::npos) << desk.last_message();
  }
}

// Percents of the inner limits, of the tolerance and of the outer limits; a limit itself is where the verdict turns.
TEST_F(GuardBand, TheVerdictTurnsAtEachLimit) {
  constexpr double inside = 100 * (1 - 1e-9), outside = 100 * (1 + 1e-9);
  const struct {
    double g1, percent, g2;
    Outcome outcome;
  } cases[] = {{inside, 50, 30, Outcome::guard_pass},
               {outside, inside, 80, Outcome::guard_pass_indeterminate},
               {150, outside, inside, Outcome::guard_fail_indeterminate},
               {300, 200, outside, Outcome::guard_fail}};
  startup_config().oot_lim = 200;
  for (const auto& one : cases) {
    GuardResult guard;
    guard.g1 = one.g1;
    guard.g2 = one.g2;
    EXPECT_EQ(decide_guarded(guard, one.percent), one.outcome) << one.percent;
  }
  GuardResult exact;
  exact.g1 = 100;
  startup_config().pass100 = 1;
  EXPECT_EQ(decide_guarded(exact, 60), Outcome::guard_pass);
  startup_config().pass100 = 0;
  EXPECT_EQ(decide_guarded(exact, 60), Outcome::guard_pass_indeterminate);

  const OutcomeRow marginal = guarded_row(Outcome::guard_pass_indeterminate, 90, 70);
  EXPECT_STREQ(marginal.condition, "MARGINAL");
  EXPECT_STREQ(marginal.status_text, "PASS INDETERM");
  EXPECT_EQ(marginal.status_bits, 0x13);
  EXPECT_EQ(marginal.result_flags, 0x1000Au);
  EXPECT_STREQ(guarded_row(Outcome::guard_pass, 70, 70).condition, "");
  const OutcomeRow gross = guarded_row(Outcome::guard_fail, 201, 70);
  EXPECT_STREQ(gross.condition, "NOTIFY USER");
  EXPECT_EQ(gross.status_bits, 0x0C);
  EXPECT_EQ(gross.result_flags, 0x04u);
  EXPECT_STREQ(guarded_row(Outcome::guard_fail_indeterminate, 200, 70).condition, "");
}

TEST_F(GuardBand, WhatCountsInTheOverallResult) {
  constexpr std::uint32_t pass = result_bit::pass, between = result_bit::indeterminate;
  const struct {
    std::uint32_t flags;
    bool by_f, by_p, by_pf;
  } cases[] = {{pass, false, false, false},
               {pass | between, true, false, false},
               {between, true, false, true},
               {0, true, true, true}};
  for (const auto& one : cases) {
    EXPECT_EQ(gb_counts_as_failed(one.flags, guard_counts::fails), one.by_f);
    EXPECT_EQ(gb_counts_as_failed(one.flags, guard_counts::passes), one.by_p);
    EXPECT_EQ(gb_counts_as_failed(one.flags, guard_counts::both), one.by_pf);
  }
}

}  // namespace
}  // namespace orvane
