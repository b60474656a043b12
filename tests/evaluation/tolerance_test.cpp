#include "evaluation/tolerance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "config/startup_config.h"
#include "evaluation/decision.h"
#include "evaluation/handlers.h"
#include "evaluation/memc.h"
#include "support/desk.h"

namespace orvane {
namespace {

using Term = ToleranceTerm;
constexpr double infinity = std::numeric_limits<double>::infinity();

class Tolerance : public test::EngineTest {
 protected:
  Tolerance() {
    startup_config() = StartupConfig();
    startup_config().pass100 = 1;
    startup_config().oot_lim = 200;
    run.set(run_flag::run_active);
  }
  ~Tolerance() override {
    startup_config() = StartupConfig();
    set_compare_epsilon(0);
  }

  FscRecord record = fsc_record_new();
  double neg = -1, pos = -1;

  bool compute(const ToleranceField& field, double range, double reference) {
    desk.shown.clear();
    run.clear(run_flag::stop_test);
    run.stop_reason = 0;
    neg = pos = -1;
    return tolerance_from_field(run, record, field, range, reference, neg, pos);
  }
  static ToleranceField field_of(std::string_view text) {
    ToleranceField field;
    EXPECT_TRUE(tolerance_from_text(text, field)) << text;
    return field;
  }
};

TEST_F(Tolerance, TermsAddUp) {
  run.registers.mem = 0.5;
  run.registers.m[0] = 77;  // MEM1, which no term names
  run.registers.m[3] = 2;
  run.registers.l[2] = 3;
  struct Case {
    const char* text;
    double below, above;  // with range 20 and reference -10
  };
  const Case cases[] = {{"", 0, 0},
                        {"1%", 0.1, 0.1},
                        {"1/", 0.2, 0.2},
                        {"100P%", 0.001, 0.001},
                        {"100P/", 0.002, 0.002},
                        {"0.3U", 0.3, 0.3},
                        {"+1% -2U", 2, 0.1},
                        {"1% 1/ 1U", 1.3, 1.3},
                        {"M3U", 2, 2},
                        {"m[3]%", 0.2, 0.2},
                        {"L2U", 3, 3},
                        {"+L[2]u", 0, 3},
                        {"U", 0.5, 0.5},
                        {"MU", 0.5, 0.5},
                        {"M0%", 0.05, 0.05},
                        {"  1e-1U\t2U  ", 2.1, 2.1}};
  for (const Case& c : cases) {
    ASSERT_TRUE(compute(field_of(c.text), 20, -10)) << c.text;
    EXPECT_NEAR(neg, c.below, 1e-15) << c.text;
    EXPECT_NEAR(pos, c.above, 1e-15) << c.text;
  }
}

TEST_F(Tolerance, TextsOfTol) {
  struct Case {
    const char* text;
    int kind, index;
    double value;
  };
  const Case cases[] = {{"2%", 36 + 3, 0x10, 2},
                        {"2/", 20 + 3, 0x10, 2},
                        {"-2.50P%", 40 + 2, 0x12, 2.5},
                        {"+2Px", 24 + 1, 0x10, 2},
                        {"2p/", 24 + 3, 0x10, 2},
                        {"2U", 12 + 3, 0x10, 2},
                        {"1.5e3u", 12 + 3 + 64, 0x11, 1500},
                        {"M12U", 12 + 3 + 128, 12, 0},
                        {"L[32]%", 36 + 3 + 192, 32, 0},
                        {"%", 36 + 3 + 128, 0, 0},
                        {"-U", 12 + 2 + 128, 0, 0}};
  for (const Case& c : cases) {
    const ToleranceField field = field_of(c.text);
    EXPECT_EQ(field.count, 1) << c.text;
    EXPECT_EQ(field.terms[0].kind, c.kind) << c.text;
    EXPECT_EQ(field.terms[0].digits_or_index, c.index) << c.text;
    EXPECT_EQ(field.terms[0].value, c.value) << c.text;
  }
  ToleranceField field{.count = 2};
  for (const char* bad :
       {"2", "M", "1%2%", "1% 2% 3% 4%", "M256U", "M[3U", "--2U", "1e999U", "x", "2 %", "1%,"})
    EXPECT_FALSE(tolerance_from_text(bad, field)) << bad;
  EXPECT_EQ(field.count, 2);  // a refused text leaves the field

  record.set(field::code, fsc::tol);
  ASSERT_TRUE(record.set_text(field::text_14, "1% 2U"));
  Statement statement{.run = run, .record = record};
  EXPECT_TRUE(run_tol(statement));
  EXPECT_EQ(run.latest_tolerance.count, 2);
  ASSERT_TRUE(compute({.count = 1, .flags = ToleranceField::latest_tol}, 0, 100));
  EXPECT_EQ(pos, 3);
  ASSERT_TRUE(record.set_text(field::text_14, "1% 2"));
  EXPECT_FALSE(run_tol(statement));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{30300});
}

TEST_F(Tolerance, Failures) {
  run.registers.mem = -0.5;
  run.registers.m[7] = -1e-300;
  run.registers.l[1] = -2;
  struct Case {
    std::uint8_t kind, index;
    double value;
    int number;  // 0: a floating-point stop without a message
  };
  const Case cases[] = {
      {Term::percent | Term::of_reference, 0, 1, 2722},  // no side
      {Term::both, 0, 1, 2722},                          // no form
      {Term::both | Term::of_range, 0, 1, 2722},
      {Term::both | Term::unit | Term::memory, 7, 1, 2724},
      {Term::both | Term::unit | Term::memory, 0, 1, 2724},
      {Term::upper | Term::unit | Term::location, 1, 1, 2724},
      {Term::both | Term::unit, 0, infinity, 0},
      {Term::both | Term::unit, 0, std::nan(""), 0},
      {Term::both | Term::percent | Term::of_reference, 0, 1e308, 0},
  };
  for (const Case& c : cases) {
    ToleranceField field{.count = 1};
    field.terms[0] = {c.kind, c.index, c.value};
    EXPECT_FALSE(compute(field, 1, 1e10));
    EXPECT_EQ(desk.message_numbers(), c.number == 0 ? std::vector<int>{} : std::vector<int>{c.number});
    EXPECT_TRUE(run.has(run_flag::stop_test));
    EXPECT_EQ(run.stop_reason, c.number == 0 ? stop_reason_bit::floating_point : 0);
    EXPECT_EQ(neg, -1);
    EXPECT_EQ(pos, -1);
  }
  EXPECT_FALSE(compute({.count = 4}, 1, 1));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{2722});
  ToleranceField field = field_of("M7U");
  EXPECT_FALSE(compute(field, 1, 1));
  EXPECT_NE(desk.last_message().find("-1e-300"), std::string::npos);
}

TEST_F(Tolerance, RegistersNeedARun) {
  run.latest_tolerance = field_of("M3U");
  const std::pair<ToleranceField, bool> cases[] = {
      {field_of("1% 2U"), true},
      {field_of("1% U"), false},
      {field_of("L3%"), false},
      {{.count = 0, .flags = ToleranceField::latest_tol}, false}};
  for (const auto& [field, without_run] : cases) {
    run.set(run_flag::run_active);
    EXPECT_TRUE(tolerance_field_usable(run, field));
    run.clear(run_flag::run_active);
    EXPECT_EQ(tolerance_field_usable(run, field), without_run);
  }
}

TestValues values(double indicated, double actual, double neg, double pos) {
  TestValues v;
  v.indicated = indicated;
  v.actual = actual;
  v.neg_tol = neg;
  v.pos_tol = pos;
  return v;
}

TEST_F(Tolerance, PercentOfTolerance) {
  struct Case {
    TestValues test;
    double percent;  // below 0: a fault
  };
  const Case cases[] = {
      {values(10.5, 10, 1, 2), 25},
      {values(9.5, 10, 1, 2), 50},
      {values(10, 10, 1, 2), 0},
      {values(10, 10, 0, 0), 501},
      {values(10, 10, 1, 0), 0},             // no upper tolerance, equal: the lower one counts
      {values(10 + 5e-11, 10, 1, 0), 5e-9},  // equal within the compare epsilon
      {values(10.5, 10, 1, 0), 501},
      {values(9.5, 10, 1, 0), 50},
      {values(9.5, 10, 0, 1), 501},
      {values(11, 10, 9e-21, 9e-21), 501},
      {values(11, 10, 1e-20, 1e-20), 1e22},
      {values(10.5, 10, -1, -1), 50},
      {values(1e308, -1e308, 1, 1), -1},
      {values(infinity, 10, 1, 1), -1},
      {values(infinity, 10, 0, 0), -1},
      {values(std::nan(""), 10, 1, 1), -1},
      {values(10.5, 10, infinity, infinity), -1},
      {values(10.5, 10, 1, std::nan("")), -1},
  };
  for (const Case& c : cases) {
    double percent = -1;
    EXPECT_EQ(percent_of_tolerance(c.test, percent), c.percent >= 0)
        << c.test.indicated << " " << c.test.pos_tol;
    if (c.percent < 0) continue;
    EXPECT_NEAR(percent, c.percent, c.percent * 1e-6 + 1e-12) << c.test.indicated;
  }
  TestValues judged = values(infinity, 10, 0, 0);
  judged.test_state = test_bit::go_no_go;
  double percent = -1;
  EXPECT_TRUE(percent_of_tolerance(judged, percent));
  EXPECT_EQ(percent, 0);
}

// What a person would do with limits drawn on paper: the reading is in tolerance if it lies between the limits.
TEST_F(Tolerance, PercentAgreesWithTheLimits) {
  std::mt19937_64 random(20240229);
  std::uniform_real_distribution<double> number(-5, 5), width(0.001, 3);
  int inside = 0;
  for (int i = 0; i < 100000; ++i) {
    const double actual = number(random), neg_tol = width(random), pos_tol = width(random);
    const double indicated = actual + number(random);
    double percent = -1;
    ASSERT_TRUE(percent_of_tolerance(values(indicated, actual, neg_tol, pos_tol), percent));
    const double low = actual - neg_tol, high = actual + pos_tol;
    if (std::fabs(indicated - low) < 1e-9 || std::fabs(indicated - high) < 1e-9) continue;
    const bool within = indicated > low && indicated < high;
    inside += within;
    ASSERT_EQ(is_fail(percent), !within) << indicated << " " << actual << " " << neg_tol << " " << pos_tol;
    const double share =
        indicated >= actual ? (indicated - actual) / (high - actual) : (actual - indicated) / (actual - low);
    ASSERT_NEAR(percent, share * 100, 1e-6 * percent + 1e-9);
  }
  EXPECT_GT(inside, 10000);
}

TEST_F(Tolerance, TheDecisionAndItsBorders) {
  struct Case {
    double percent;
    int pass100;
    double oot_lim, threshold;
    Outcome outcome;
  };
  const Case cases[] = {
      {0, 1, 200, 70, Outcome::pass},
      {70, 1, 200, 70, Outcome::pass},
      {70.0000001, 1, 200, 70, Outcome::marginal},
      {71, 0, 200, 70, Outcome::marginal},
      {100, 1, 200, 70, Outcome::marginal},
      {100, 1, 200, 100, Outcome::pass},
      {100, 0, 200, 70, Outcome::fail},
      {100 * (1 + 1e-12), 1, 200, 70, Outcome::marginal},  // on the limit within the compare epsilon
      {100 * (1 - 1e-12), 0, 200, 70, Outcome::fail},
      {100.00001, 1, 200, 70, Outcome::fail},
      {99.99999, 0, 200, 70, Outcome::marginal},
      {200, 1, 200, 70, Outcome::fail},
      {200 * (1 + 1e-12), 1, 200, 70, Outcome::fail},
      {200.0001, 1, 200, 70, Outcome::gross_fail},
      {99.95, 1, 99.9, 70, Outcome::gross_fail},  // though it is no fail
      {99.9, 1, 99.9, 70, Outcome::marginal},
      {500, 1, 500, 70, Outcome::fail},
      {500.0000001, 1, 500, 70, Outcome::gross_fail},  // 500 is exact
      {501, 1, 500, 1000, Outcome::gross_fail},
      {infinity, 1, 500, 70, Outcome::gross_fail},
      {std::nan(""), 1, 500, 70, Outcome::gross_fail},
      {std::nan(""), 0, 500, 70, Outcome::gross_fail},
  };
  for (const Case& c : cases) {
    startup_config().pass100 = static_cast<std::int16_t>(c.pass100);
    startup_config().oot_lim = c.oot_lim;
    EXPECT_EQ(decide(c.percent, c.threshold), c.outcome) << c.percent << " " << c.pass100 << " " << c.oot_lim;
  }
  set_compare_epsilon(1e-5);
  startup_config().pass100 = 1;
  startup_config().oot_lim = 500;
  EXPECT_EQ(decide(100.0009, 1000), Outcome::pass);
  EXPECT_EQ(decide(100.0011, 1000), Outcome::fail);
  const std::pair<double, const char*> texts[] = {{0, "  0"},      {0.5, "  0"},          {1.5, "  2"},
                                                  {99.95, "100"},  {500, "500"},          {500.1, ">500"},
                                                  {1e300, ">500"}, {std::nan(""), ">500"}};
  for (const auto& [percent, text] : texts) EXPECT_EQ(percent_text(percent), text);
}

TEST_F(Tolerance, WhenTheOperatorIsAsked) {
  struct Case {
    std::uint32_t options;
    std::uint16_t line_flags, test_state, stop;
    double percent;
    bool dialog, adjustment;
  };
  using namespace ask_option;
  const std::uint16_t follows = line_flag::adjust_follows, judged = test_bit::go_no_go,
                      failed = test_bit::failed;
  const Case cases[] = {
      {A, 0, 0, 0, 10, true, false},
      {0, 0, 0, 0, 400, false, true},
      {0, 0, 0, run_flag::stop_test, 10, true, false},
      {0, 0, 0, run_flag::skip_test, 10, true, false},
      {F, 0, 0, 0, 100, false, true},
      {F, 0, 0, 0, 101, true, true},
      {F, follows, 0, 0, 71, false, true},
      {F | J, follows, 0, 0, 71, true, true},
      {F | J, follows, 0, 0, 70, false, false},
      {F | J, 0, 0, 0, 71, false, true},
      {F, 0, static_cast<std::uint16_t>(judged | failed), 0, 0, true, true},
      {F, 0, judged, 0, 0, false, false},
  };
  run.adjust_threshold = 70;
  for (const Case& c : cases) {
    run.options = c.options;
    run.flags = c.stop;
    run.test.test_state = c.test_state;
    record.set(field::line_flags, c.line_flags);
    record.set(field::code, fsc::i3458);
    EXPECT_EQ(dialog_appears(run, record, c.percent), c.dialog) << &c - cases;
    EXPECT_EQ(calls_for_adjustment(run, record, c.percent), c.adjustment) << &c - cases;
  }
  // A test that failed is shown, however high the threshold of its adjustment lies.
  run.adjust_threshold = 150;
  run.options = F | J;
  run.flags = 0;
  run.test.test_state = 0;
  record.set(field::line_flags, follows);
  EXPECT_TRUE(dialog_appears(run, record, 101));
  EXPECT_FALSE(dialog_appears(run, record, 100));
}

// ---- MEMC and MEMCX ----

class Memc : public Tolerance {
 protected:
  Memc() {
    run.registers.mem = 10.2;
    run.registers.mem1() = 10;
    run.test.indicated = run.test.actual = -1;
    run.test.neg_tol = run.test.pos_tol = -1;
  }
  void make(std::uint16_t code, std::string_view nominal, std::string_view tolerance) {
    record = fsc_record_new();
    record.set(field::code, code);
    record.set(field::memc_range, RangeField{.flags = 3, .digits = 0, .value = 20});
    record.set(field::memc_tolerance, field_of(tolerance));
    EXPECT_TRUE(record.set_text(field::memc_nominal, nominal));
  }
};

TEST_F(Memc, ThePairAndItsTolerance) {
  struct Case {
    std::uint16_t code;
    const char* nominal;
    double indicated, actual, tolerance;  // of "1%"
  };
  const Case cases[] = {{fsc::memc, "10.000V", 10, 10.2, 0.1}, {fsc::memc, "50.0mV", 50, 10.2, 0.5},
                        {fsc::memc, "V", 10, 10.2, 0.1},       {fsc::memc, " 50V", 10, 10.2, 0.1},
                        {fsc::memcx, "50V", 10.2, 50, 0.102},  {fsc::memcx, "", 10.2, 10, 0.102},
                        {fsc::memc, "-5V", -5, 10.2, 0.05}};
  for (const Case& c : cases) {
    make(c.code, c.nominal, "1%");
    Statement statement{.run = run, .record = record};
    ASSERT_TRUE(run_memc(statement));
    EXPECT_EQ(run.test.indicated, c.indicated) << c.nominal;
    EXPECT_EQ(run.test.actual, c.actual) << c.nominal;
    EXPECT_NEAR(run.test.neg_tol, c.tolerance, 1e-15) << c.nominal;
    EXPECT_NEAR(run.test.pos_tol, c.tolerance, 1e-15) << c.nominal;
  }
  make(fsc::memc, "10V", "1/");
  ASSERT_TRUE(memc_values(run, record));
  EXPECT_EQ(run.test.pos_tol, 0.2);
}

TEST_F(Memc, AFailureLeavesTheTest) {
  make(fsc::memc, "10V", "M5U");
  run.registers.m[5] = -1;
  const HandlerRow* row = nullptr;
  for (const HandlerRow& one : evaluation_handlers()) {
    if (one.code == fsc::memc) row = &one;
  }
  ASSERT_NE(row, nullptr);
  Statement statement{.run = run, .record = record};
  EXPECT_FALSE(row->handler(statement));
  EXPECT_EQ(run.test.indicated, -1);
  EXPECT_EQ(run.test.pos_tol, -1);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{2724});
}

TEST_F(Memc, TheToleranceIsSettledByItsReference) {
  constexpr double kept = -1;  // nothing is computed
  struct Case {
    std::uint16_t code;
    const char* nominal;
    int tol_ref;  // key
    bool use_mem;
    double reference, tolerance;  // of "1%", with MEM 10.2, MEM1 10, actual 40
  };
  const Case cases[] = {
      {fsc::memc, "50V", 0, false, 50, kept},  {fsc::memc, "50V", 2, false, 50, kept},
      {fsc::memc, "V", 0, false, 10.2, 0.102}, {fsc::memc, "V", 1, false, 10.2, 0.102},
      {fsc::memc, "V", 2, false, 10.2, 0.4},   {fsc::memc, "V", 3, false, 10, kept},
      {fsc::memcx, "50V", 1, false, 50, 0.5},  {fsc::memcx, "50V", 2, false, 50, 0.4},
      {fsc::memcx, "50V", 3, false, 50, kept}, {fsc::memcx, "V", 1, false, 10, 0.1},
      {fsc::memcx, "V", 1, true, 10.2, 0.102}, {fsc::memcx, "V", 2, false, 40, 0.4},
      {fsc::memcx, "V", 3, true, 10, kept},    {fsc::i3458, "-30", 0, false, -30, 0.3},
      {fsc::i3458, "-30", 2, false, 40, 0.4},  {fsc::i3458, "-30", 3, false, -30, kept},
      {fsc::i3458, "", 1, false, 10.2, 0.102}, {fsc::eval, "", 1, false, 0, kept},
  };
  for (const Case& c : cases) {
    make(c.code, c.nominal, "1%");
    if (c.code == fsc::i3458) {
      record = fsc_record_new();
      record.set(field::code, c.code);
      record.set(field::tolerance, field_of("1%"));
      const bool number = *c.nominal != '\0';
      record.set(field::nominal, QuantityField{.unit = 6,
                                               .prefix = 1,
                                               .flags = number ? std::uint8_t{0} : QuantityField::from_mem,
                                               .digits = 0,
                                               .value = -30});
    }
    startup_config().TOL_REF = static_cast<std::int16_t>(c.tol_ref);
    startup_config().MEMCX_TolRefNom_UseMem = c.use_mem ? 1 : 0;
    run.test.actual = 40;
    run.test.neg_tol = run.test.pos_tol = kept;
    double reference = -99;
    ASSERT_TRUE(settle_tolerance(run, record, reference));
    EXPECT_EQ(reference, c.reference) << &c - cases;
    EXPECT_NEAR(run.test.pos_tol, c.tolerance, 1e-15) << &c - cases;
    EXPECT_NEAR(run.test.neg_tol, c.tolerance, 1e-15) << &c - cases;
  }
}

}  // namespace
}  // namespace orvane
