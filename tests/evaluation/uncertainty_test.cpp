#include "evaluation/uncertainty.h"

#include <cmath>

#include "evaluation/result_store.h"
#include "evaluation/uncertainty_tables.h"
#include "support/accuracy_desk.h"

namespace orvane {
namespace {

using test::look_up;
using Q = Quantity;
namespace u = unit_code;

class Uncertainty : public test::AccuracyTest {
 protected:
  /// Readings of one test, one pass each, then the chain. What the last step answered.
  SampleAnswer take(const FscRecord& record, const std::vector<double>& readings) {
    SampleAnswer answer = SampleAnswer::none;
    static_cast<void>(r_begin_test(run, record));
    for (const double reading : readings) {
      run.test.actual = reading;
      EXPECT_TRUE(unc_step(run, record, answer));
      if (answer != SampleAnswer::again) break;
    }
    if (answer == SampleAnswer::done) {
      static_cast<void>(ur_system_accuracy(run, record));
      finished = unc_finish(run, record);
    }
    return answer;
  }
  double q(Quantity which) const {
    EXPECT_TRUE(run.uncertainty.valid(which)) << unc_name(which);
    return run.uncertainty[which];
  }
  bool valid(Quantity which) const { return run.uncertainty.valid(which); }

  FscRecord meter = instrument(fsc::i3458, 10, u::volt, "1%");
  bool finished = false;
};

TEST_F(Uncertainty, StudentsTable) {
  struct Case {
    double df;
    int confidence;
    double t;
    int message;
  };
  const double inf = infinite_df;
  const Case cases[] = {{1, 3, 12.71, 0},
                        {1.5, 3, 8.505, 0},
                        {1, 6, 235.8, 0},
                        {0.999999, 3, 0, 389},
                        {-1, 3, 0, 389},
                        {test::not_a_number, 3, 0, 389},
                        {5, 0, 0, 388},
                        {5, 7, 0, 388},
                        {20, 4, 2.13, 0},
                        {22.5, 4, 2.12, 0},
                        {600, 1, 1, 0},
                        {600, 5, 2.59, 0},
                        {999.999999, 2, 1.646, 0},
                        {1000, 2, 1.646, 0},
                        {1e199, 2, 1.646, 0},
                        {inf, 2, 1.645, 0},
                        {inf, 4, 2.0, 0},
                        {test::infinity, 6, 3.0, 0}};
  for (const Case& c : cases) {
    EXPECT_NEAR(t_factor(c.df, c.confidence), c.t, 1e-8) << c.df;
    EXPECT_EQ(reported(), c.message) << c.df;
  }
  for (const auto& [n, factor] : std::initializer_list<std::pair<int, double>>{{0, 1e6},
                                                                               {1, 1e6},
                                                                               {2, 6.985},
                                                                               {20, 1.07},
                                                                               {21, 1.065},
                                                                               {25, 1.065},
                                                                               {26, 1.055},
                                                                               {50, 1.03},
                                                                               {51, 1.025},
                                                                               {100, 1.025},
                                                                               {101, 1.0125},
                                                                               {102, 1},
                                                                               {1000, 1}})
    EXPECT_EQ(small_sample_factor(n), factor) << n;
}

TEST_F(Uncertainty, OneReading) {
  set("NMEAS", "1");
  set("USE_ST", "YES");
  look_up.floor = 0.002;
  EXPECT_EQ(take(meter, {10.001}), SampleAnswer::done);
  EXPECT_TRUE(finished);
  EXPECT_EQ(q(Q::sdev), 0);
  EXPECT_EQ(q(Q::s1), 0);
  EXPECT_EQ(q(Q::f), 1e6);
  EXPECT_EQ(q(Q::dfs1), infinite_df);
  EXPECT_NEAR(q(Q::u1), 0.001, 1e-15);
  EXPECT_NEAR(q(Q::exp_unc), 0.002, 1e-15);
  EXPECT_EQ(q(Q::cov_fac), 2);
  EXPECT_TRUE((run.test.test_state & test_bit::uncertainty) != 0);
  EXPECT_EQ(run.test.actual, 10.001);
  // What a statistics statement has handed in stands for the readings, once.
  unc_pool(run, 4, 0.01);
  set("USE_ST", "NO");
  take(meter, {10.001});
  EXPECT_NEAR(q(Q::sdev), 0.02, 1e-15);
  EXPECT_NEAR(q(Q::s1), 0.01, 1e-15);
  EXPECT_EQ(q(Q::dfs1), 3);
  take(meter, {10.001});
  EXPECT_EQ(q(Q::s1), 0);
}

TEST_F(Uncertainty, ReadingsAreThrownAndKept) {
  set("NTHROW", "2");
  set("NMEAS", "4");
  look_up.floor = 0.002;
  for (int pass = 1; pass <= 6; ++pass) {
    unc_prepare(run, meter);
    EXPECT_EQ(run.samples.count, 6);
    EXPECT_EQ(run.samples.pass, pass);
    run.test.actual = pass < 3 ? 77 : 10 + 0.001 * pass;
    SampleAnswer answer = SampleAnswer::none;
    ASSERT_TRUE(unc_step(run, meter, answer));
    EXPECT_EQ(answer, pass < 6 ? SampleAnswer::again : SampleAnswer::done) << pass;
    EXPECT_EQ(run.uncertainty.has(unc_flag::throwing), pass < 3);
  }
  EXPECT_NEAR(run.test.actual, 10.0045, 1e-12);
  EXPECT_TRUE(ur_system_accuracy(run, meter));
  EXPECT_TRUE(unc_finish(run, meter));
  EXPECT_TRUE(unc_is_idle(run));
  EXPECT_EQ(run.samples.count, 0);
  EXPECT_NEAR(q(Q::sdev), 0.001290994448735806, 1e-12);
  EXPECT_NEAR(q(Q::s1), q(Q::sdev) / 2, 1e-15);
  EXPECT_EQ(q(Q::dfs1), 3);
  double value = 0;
  EXPECT_TRUE(unc_read(run, "nthrow", value) && value == 2);
  EXPECT_TRUE(unc_read(run, "nmeas", value) && value == 4);
  EXPECT_TRUE(unc_reading_at(run, 4, value));
  EXPECT_DOUBLE_EQ(value, 10.006);
  EXPECT_TRUE(unc_reading_at(run, 0, value));
  EXPECT_NEAR(value, 10.0045, 1e-12);
  EXPECT_FALSE(unc_reading_at(run, 5, value));
  EXPECT_FALSE(unc_reading_at(run, -1, value));
}

TEST_F(Uncertainty, WhereTheReadingStands) {
  struct Case {
    std::uint16_t code;
    const char* text;
    const char* meas;
    ReadingPlace place;
  };
  using P = ReadingPlace;
  const Case cases[] = {{fsc::memc, "10V", "UI", P::actual},  {fsc::memc, "V", "SA", P::actual},
                        {fsc::memc, "V", "UI", P::indicated}, {fsc::memcx, "10V", "SA", P::indicated},
                        {fsc::memcx, "V", "SA", P::actual},   {fsc::memcx, "V", "UI", P::indicated},
                        {fsc::i3458, "", "UI", P::actual},    {fsc::i33120, "", "SA", P::indicated_text}};
  for (const Case& c : cases) {
    set("MEAS", c.meas);
    const bool memory = c.code == fsc::memc || c.code == fsc::memcx;
    EXPECT_EQ(unc_reading_place(
                  run, memory ? comparison(c.text, "1%", c.code) : instrument(c.code, 10, u::volt, "1%")),
              c.place)
        << c.code << c.text << c.meas;
  }
  // Typed readings: the mean goes before the text.
  set("NMEAS", "3");
  const FscRecord source = instrument(fsc::i33120, 10, u::volt, "1%");
  SampleAnswer answer = SampleAnswer::none;
  for (const char* text : {"10.01", " 9.9", "10.000"}) {
    run.test.indicated_text = text;
    ASSERT_TRUE(unc_step(run, source, answer));
  }
  EXPECT_EQ(answer, SampleAnswer::done);
  EXPECT_EQ(run.test.indicated_text, "9.97");
  EXPECT_NEAR(run.test.indicated, 9.97, 1e-12);
  EXPECT_TRUE((run.test.test_state & test_bit::mean) != 0);
  EXPECT_EQ(run.uncertainty.digits, 0x23);
}

TEST_F(Uncertainty, NoSamples) {
  SampleAnswer answer = SampleAnswer::again;
  const auto answers = [&](const FscRecord& record) {
    unc_reset(run);
    EXPECT_TRUE(unc_step(run, record, answer));
    return answer;
  };
  EXPECT_EQ(answers(meter), SampleAnswer::none);  // NMEAS 0
  set("NMEAS", "2");
  EXPECT_EQ(answers(meter), SampleAnswer::again);
  for (const std::uint16_t code : {fsc::eval, fsc::dose, fsc::pice, fsc::cmp})
    EXPECT_EQ(answers(instrument(code, 10, u::volt, "")), SampleAnswer::none) << code;
  run.test.indicated_text = "10";
  const FscRecord source = instrument(fsc::i33120, 10, u::volt, "1%");
  EXPECT_EQ(answers(source), SampleAnswer::again);
  run.options &= ~ask_option::U;
  EXPECT_EQ(answers(source), SampleAnswer::none);
  EXPECT_EQ(answers(meter), SampleAnswer::again);
  run.set(run_flag::stop_test);
  EXPECT_EQ(answers(meter), SampleAnswer::none);
  run.clear(run_flag::stop_test);
  run.test.test_state |= test_bit::go_no_go;
  EXPECT_EQ(answers(meter), SampleAnswer::none);
}

TEST_F(Uncertainty, TheTwoTermsOfU2) {
  set("NMEAS", "2");
  set("UUT_RES", "0.06");
  set("CS1", "3");
  set("CS2", "2");
  look_up.floor = 0.01;
  take(meter, {9.99, 10.01});
  const double s1 = 0.02 / std::sqrt(2.0) / std::sqrt(2.0), s2 = 0.03 / std::sqrt(3.0);
  EXPECT_NEAR(q(Q::s1), s1, 1e-12);
  EXPECT_NEAR(q(Q::s2), s2, 1e-12);
  EXPECT_NEAR(q(Q::u2), std::hypot(s1, s2), 1e-12);
  EXPECT_NEAR(q(Q::c2), std::sqrt((9 * s1 * s1 + 4 * s2 * s2) / (s1 * s1 + s2 * s2)), 1e-12);
  EXPECT_NEAR(q(Q::df2), std::pow(std::hypot(s1, s2), 4) / std::pow(3 * s1, 4), 1e-9);
  set("U2M", "Single");
  take(meter, {9.99, 10.01});
  EXPECT_NEAR(q(Q::u2), s1, 1e-12);
  EXPECT_EQ(q(Q::c2), 3);
  EXPECT_EQ(q(Q::df2), 1);
  // S1 counts from 1E-14 on.
  for (const auto& [term, takes_s1] : std::initializer_list<std::pair<const char*, bool>>{
           {"1e-14", true}, {"0.999e-14", false}, {"-1e-14", true}, {"0", false}}) {
    set("S1", term);
    take(meter, {10, 10});
    EXPECT_EQ(run.uncertainty.has(unc_flag::u2_is_s1), takes_s1) << term;
    EXPECT_EQ(q(Q::c2), takes_s1 ? 3 : 2);
    EXPECT_EQ(q(Q::df2), takes_s1 ? 1 : infinite_df);
  }
}

TEST_F(Uncertainty, ASetQuantityPrunesTheChain) {
  set("NMEAS", "2");
  set("WS", "YES");
  look_up.floor = 0.01;
  struct Case {
    const char *name, *value;
    Quantity which;
    std::vector<Quantity> unread, read;
  };
  const Case cases[] = {
      {"EXP_UNC", "0.5", Q::exp_unc, {Q::std_unc, Q::cov_fac, Q::rss, Q::u1, Q::df}, {}},
      {"STD_UNC",
       "0.5",
       Q::std_unc,
       {Q::rss, Q::u1, Q::u2, Q::u10, Q::c1, Q::sys_acc, Q::s1},
       {Q::df, Q::cov_fac}},
      {"COV_FAC", "3", Q::cov_fac, {Q::df, Q::df1, Q::dfs1}, {Q::rss, Q::exp_unc}},
      {"U1", "0.5", Q::u1, {Q::sys_acc, Q::conf}, {Q::rss}},
      {"SYS_ACC", "0.5", Q::sys_acc, {}, {Q::conf, Q::u1}},
      {"U2", "0.5", Q::u2, {Q::s1, Q::s2, Q::sdev, Q::uut_res, Q::cs1, Q::dfs1}, {Q::c2, Q::df2}},
      {"S1", "0.5", Q::s1, {Q::sdev, Q::f}, {Q::s2, Q::u2}},
      {"S2", "0.5", Q::s2, {Q::uut_res}, {Q::s1, Q::sdev}},
      {"C2", "0.5", Q::c2, {}, {Q::cs1}},  // the degrees of freedom ask for CS1 as well
      {"DF", "5", Q::df, {Q::df1, Q::df2, Q::dfs1}, {Q::rss}},
      {"DF2", "5", Q::df2, {Q::dfs1, Q::dfs2}, {Q::df}},
      {"DFS1", "5", Q::dfs1, {}, {Q::df2}},
      {"F", "2", Q::f, {}, {Q::sdev, Q::s1}},
      {"CONF", "3", Q::conf, {}, {Q::u1}},
      {"U10", "0.5", Q::u10, {}, {Q::c10, Q::df10}},
      {"C10", "0.5", Q::c10, {}, {Q::u10}},
      {"DF10", "INF", Q::df10, {}, {Q::u10}},
      {"UUT_RES", "0.5", Q::uut_res, {}, {Q::s2}},
      {"CS1", "2", Q::cs1, {}, {Q::c2}},
      {"CS2", "2", Q::cs2, {}, {Q::c2}},
      {"DFS2", "9", Q::dfs2, {}, {Q::df2}},
  };
  const std::vector<VsetEntry> plain = run.vset;
  for (const Case& c : cases) {
    run.vset = plain;
    set(c.name, c.value);
    take(meter, {9.99, 10.01});
    EXPECT_TRUE(finished) << c.name;
    EXPECT_EQ(q(c.which), std::string(c.value) == "INF" ? infinite_df : std::stod(c.value)) << c.name;
    EXPECT_EQ(run.uncertainty.given, std::uint64_t{1} << static_cast<int>(c.which)) << c.name;
    for (const Quantity which : c.unread) {
      double value = 0;
      EXPECT_FALSE(unc_read(run, unc_name(which), value)) << c.name << unc_name(which);
      EXPECT_EQ(reported(), 387);
    }
    for (const Quantity which : c.read) EXPECT_TRUE(valid(which)) << c.name << unc_name(which);
    // kept: U2 bears no CS1, the terms of its degrees of freedom do; a CS1 of 2 leaves a sixteenth of one.
    EXPECT_EQ(reported(), std::string(c.name) == "CS1" ? 389 : 0) << c.name;
  }
  double value = 0;
  for (const char* name : {"u11", "U1", "", "expunc"}) {
    EXPECT_FALSE(unc_read(run, name, value)) << name;
    EXPECT_EQ(reported(), 379);
  }
  // The next test reads nothing of this one.
  run.vset.clear();
  take(meter, {10});
  EXPECT_FALSE(unc_read(run, "u1", value));
}

TEST_F(Uncertainty, DegreesOfFreedomAndCoverage) {
  set("NMEAS", "2");
  set("WS", "YES");
  set("KCONF", "95.00%");
  set("SYS_ACC", "0.0000001");
  set("UUT_RES", "0");
  take(meter, {9.99, 10.01});
  EXPECT_NEAR(q(Q::df), 1, 1e-9);
  EXPECT_NEAR(q(Q::cov_fac), 12.71, 1e-6);
  set("DF2", "INF");
  take(meter, {9.99, 10.01});
  EXPECT_EQ(q(Q::df), infinite_df);
  EXPECT_EQ(q(Q::cov_fac), 1.96);
  // Below one degree of freedom the factor is 2, with a report.
  set("DF", "0.5");
  take(meter, {9.99, 10.01});
  EXPECT_EQ(q(Q::cov_fac), 2);
  EXPECT_EQ(reported(), 389);
  // A coefficient or a component of zero is left out; so is nothing else.
  run.vset.clear();
  for (const auto& [name, text] :
       std::initializer_list<std::pair<const char*, const char*>>{{"NMEAS", "1"},
                                                                  {"U1", "3"},
                                                                  {"U3", "4"},
                                                                  {"C4", "0"},
                                                                  {"U4", "1e308"},
                                                                  {"DF1", "10"},
                                                                  {"DF3", "20"},
                                                                  {"DF4", "1"},
                                                                  {"DF5", "1"},
                                                                  {"UUT_RES", "0"}})
    set(name, text);
  take(meter, {10});
  EXPECT_DOUBLE_EQ(q(Q::rss), 5);
  EXPECT_NEAR(q(Q::df), 625 / (81 / 10.0 + 256 / 20.0), 1e-9);
}

TEST_F(Uncertainty, WithoutSystemAccuracyTheChainIsZero) {
  set("NMEAS", "2");
  look_up.flags = acc_flag::hit | acc_flag::no_gain;
  take(meter, {9.99, 10.01});
  EXPECT_EQ(reported(), 321);
  EXPECT_TRUE(finished && run.uncertainty.has(unc_flag::no_accuracy));
  EXPECT_EQ(q(Q::std_unc), 0);
  EXPECT_EQ(q(Q::cov_fac), 0);
  EXPECT_EQ(q(Q::exp_unc), 0);
  EXPECT_GT(q(Q::s1), 0);
  set("U1", "0.5");
  take(meter, {9.99, 10.01});
  EXPECT_NEAR(q(Q::std_unc), std::hypot(0.5, 0.01), 1e-12);
}

TEST_F(Uncertainty, TheDivisorIsTheConfidenceOfTheFile) {
  set("NMEAS", "1");
  look_up.floor = 0.06;
  look_up.confidence = 3;
  take(meter, {10});
  EXPECT_NEAR(q(Q::u1), 0.02, 1e-15);
  EXPECT_EQ(run.uncertainty.given, 0u);
  look_up.confidence = 0;
  take(meter, {10});
  EXPECT_NEAR(q(Q::u1), 0.03, 1e-15);
  look_up.confidence = 3;
  set("CONF", "1");
  take(meter, {10});
  EXPECT_NEAR(q(Q::u1), 0.06, 1e-15);
  set("CONF", "0");
  take(meter, {10});
  EXPECT_FALSE(finished);
  EXPECT_TRUE((run.stop_reason & stop_reason_bit::floating_point) != 0);
  EXPECT_FALSE(valid(Q::std_unc));
  EXPECT_EQ(run.test.test_state & test_bit::uncertainty, 0);
}

TEST_F(Uncertainty, LevelsAreCombinedAsWhatTheyAreTheLevelOf) {
  // 10 dBm +-0.1 dB: volts at 50 ohm for a meter, watts for a power meter; the same numbers differ.
  set("NMEAS", "2");
  set("UUT_RES", "0");
  look_up.floor = 0.005;
  FscRecord level = instrument(fsc::i3458, 10, u::dbm, "1U");
  level.set(field::mod2_code, 2);
  level.set(field::mod2_value, 50);
  take(level, {9.9, 10.1});
  EXPECT_TRUE(finished && run.uncertainty.has(unc_flag::dbm_volts));
  const auto volts = [](double dbm) { return dbm_to_v(dbm, 50); };
  const double mean = v_to_dbm((volts(9.9) + volts(10.1)) / 2, 50);
  EXPECT_NEAR(run.test.actual, mean, 1e-12);
  EXPECT_GT(run.test.actual, 10);  // not the mean of the decibels
  const double s1 = (volts(10.1) - volts(9.9)) / std::sqrt(2.0) / std::sqrt(2.0);
  EXPECT_NEAR(q(Q::s1), s1, 1e-12);
  const double sys = volts(10 + run.test.sys_tol) - volts(10);
  EXPECT_NEAR(q(Q::sys_acc), sys, 1e-12);
  const double rss = std::hypot(sys / 2, s1);
  EXPECT_NEAR(q(Q::std_unc), mean - v_to_dbm(volts(mean) - rss, 50), 1e-9);
  EXPECT_NEAR(q(Q::exp_unc), mean - v_to_dbm(volts(mean) - 2 * rss, 50), 1e-9);
  const double through_volts = q(Q::std_unc);

  look_up.floor = 1e-4;
  take(instrument(fsc::i437, 10, u::dbm, "1U"), {9.9, 10.1});
  EXPECT_TRUE(finished && run.uncertainty.has(unc_flag::dbm_watts));
  EXPECT_NEAR(run.test.actual, w_to_dbm((dbm_to_w(9.9) + dbm_to_w(10.1)) / 2), 1e-12);
  EXPECT_NE(q(Q::std_unc), through_volts);

  look_up.floor = 0.1;
  take(instrument(fsc::i8560, 60, u::dbuv, "1U"), {59.9, 60.1});
  EXPECT_TRUE(finished && run.uncertainty.has(unc_flag::dbuv));
  EXPECT_NEAR(run.test.actual, v_to_dbuv((dbuv_to_v(59.9) + dbuv_to_v(60.1)) / 2), 1e-12);
  EXPECT_NEAR(q(Q::sys_acc), dbuv_to_v(60.1) - dbuv_to_v(60), 1e-9);

  // An uncertainty as large as the level reaches down to nothing, which no decibels express.
  set("U1", "5");
  take(level, {10, 10});
  EXPECT_FALSE(finished);
  EXPECT_TRUE(run.has(run_flag::stop_test));
}

TEST_F(Uncertainty, ReadingsThatAreNoNumbersStopTheTest) {
  set("NMEAS", "2");
  for (const auto& [first, second] : std::initializer_list<std::pair<double, double>>{
           {test::not_a_number, 1}, {test::infinity, 1}, {1, -test::infinity}, {1.7e308, 1.7e308}}) {
    unc_reset(run);
    SampleAnswer answer = SampleAnswer::none;
    run.test.actual = first;
    bool ok = unc_step(run, meter, answer);
    run.test.actual = second;
    ok = ok && unc_step(run, meter, answer);
    EXPECT_FALSE(ok) << first << ' ' << second;
    EXPECT_TRUE((run.stop_reason & stop_reason_bit::floating_point) != 0);
    reported();
  }
}

}  // namespace
}  // namespace orvane
