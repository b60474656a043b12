#include "evaluation/system_accuracy.h"

#include <cmath>

#include "evaluation/instrument_modes.h"
#include "state/fsc.h"
#include "support/accuracy_desk.h"

namespace orvane {
namespace {

using test::look_up;
namespace u = unit_code;

class SystemAccuracyTest : public test::AccuracyTest {
 protected:
  UrStatus sequence(const FscRecord& record, bool goes_on = true) {
    EXPECT_EQ(ur_system_accuracy(run, record), goes_on);
    return run.accuracy.status;
  }
  bool has(std::uint16_t bit) const { return (run.test.test_state & bit) != 0; }
};

TEST_F(SystemAccuracyTest, AMeterAtTenVolts) {
  // 10 V +-0.1 %, read as 10.002 V; the standard has 0.001 % and 10 uV: 110 uV. TUR 0.01 / 0.00011.
  look_up.gain = 0.001;
  look_up.floor = 1e-5;
  measured(10.002, 10);
  EXPECT_EQ(sequence(instrument(fsc::i3458, 10, u::volt, "0.1%")), UrStatus::tur_computed);
  EXPECT_EQ(look_up.mode, "Volts");
  EXPECT_DOUBLE_EQ(look_up.value, 10);
  EXPECT_FALSE(look_up.modifier);
  EXPECT_EQ(run.test.unit, u::volt);
  EXPECT_NEAR(run.test.test_tol, 0.01, 1e-15);
  EXPECT_NEAR(run.test.sys_tol, 1.1e-4, 1e-15);
  EXPECT_NEAR(run.test.tur, 0.01 / 1.1e-4, 1e-9);
  EXPECT_TRUE(has(test_bit::tolerances));
  EXPECT_FALSE(has(test_bit::tur_low));
  EXPECT_NEAR(run.accuracy.gain_part, 1e-4, 1e-18);
  EXPECT_DOUBLE_EQ(run.accuracy.floor_part, 1e-5);
  // In millivolts everything is a thousandth, and in volts.
  measured(10.002, 10);
  EXPECT_EQ(sequence(instrument(fsc::i3458, 10, u::volt, "0.1%", prefix_code::milli)),
            UrStatus::tur_computed);
  EXPECT_DOUBLE_EQ(look_up.value, 0.01);
  EXPECT_NEAR(run.test.test_tol, 1e-5, 1e-18);
}

TEST_F(SystemAccuracyTest, TheLimitOnTheSideOfTheReadingCounts) {
  struct Case {
    bool judged;
    double actual, indicated;
    const char* tolerance;  // of 10 V
    bool largest;
    double expected;
  };
  const Case cases[] = {
      // Without a judgement the limits stand around the indication, swapped.
      {false, 9.9, 10, "+0.3U -0.1U", true, 0.3},   // below: UI - pos
      {false, 10.1, 10, "+0.3U -0.1U", true, 0.1},  // above: UI + neg
      {false, 10, 10, "+0.3U -0.1U", true, 0.3},    // equal: the larger
      {false, 10, 10, "+0.1U -0.3U", true, 0.3},
      {false, 10, 10, "+0.3U -0.1U", false, 0.1},  // equal, larger not asked for: the upper
      {false, 10, 10, "+0.1U -0.3U", false, 0.3},
      {false, 9.9, 10, "+0.3U -0.1U", false, 0.3},
      // A judgement: the smaller side, or the one that is there.
      {true, 10, 7, "+0.3U -0.1U", true, 0.1},
      {true, 10, 7, "+0.1U -0.3U", true, 0.1},
      {true, 10, 7, "+0.3U", true, 0.3},
      {true, 10, 7, "-0.3U", true, 0.3},
  };
  look_up.floor = 0.01;
  for (const Case& c : cases) {
    startup_config().UI_Eq_SA_LargestTol = c.largest ? 1 : 0;
    measured(c.actual, c.indicated);
    run.test.test_state = c.judged ? test_bit::go_no_go : 0;
    sequence(instrument(fsc::i34401, 10, u::volt, c.tolerance));
    EXPECT_NEAR(run.test.test_tol, c.expected, 1e-12) << c.tolerance << ' ' << c.actual << ' ' << c.judged;
  }
}

TEST_F(SystemAccuracyTest, TheRatioAtItsLimit) {
  // TUR = 4 * (1 + d): low only when below the limit by more than the comparison allows.
  set_compare_epsilon(1e-11);
  measured(1, 1);
  for (const auto& [difference, low] : std::initializer_list<std::pair<double, bool>>{
           {0.0, false}, {-0.5e-11, false}, {0.5e-11, false}, {-4e-11, true}, {4e-11, false}}) {
    look_up.floor = 0.1 / (4 * (1 + difference));
    sequence(instrument(fsc::i3458, 1, u::volt, "0.1U"));
    EXPECT_EQ(has(test_bit::tur_low), low) << difference;
  }
  // At the size of rounding noise there is no ratio; a negative nominal always has one.
  const double noise = std::ldexp(1, -20), hair = std::ldexp(1, -40);  // exact beside 1
  startup_config().RefAccFactor = noise;
  for (const auto& [nominal, floor, status] :
       std::initializer_list<std::tuple<double, double, UrStatus>>{{1, noise, UrStatus::too_small},
                                                                   {1, noise + hair, UrStatus::tur_computed},
                                                                   {1, noise - hair, UrStatus::too_small},
                                                                   {-1, 1e-9, UrStatus::tur_computed}}) {
    look_up.floor = floor;
    measured(nominal, nominal);
    EXPECT_EQ(sequence(instrument(fsc::i3458, nominal, u::volt, "0.1U")), status) << nominal << ' ' << floor;
    EXPECT_TRUE(has(test_bit::tolerances));
  }
  set_compare_epsilon(0);
}

TEST_F(SystemAccuracyTest, EveryEnd) {
  look_up.floor = 0.01;
  measured(1, 1);
  const FscRecord meter = instrument(fsc::i3458, 1, u::volt, "0.1U");

  run.test.test_state = test_bit::tolerances | test_bit::tur_low;
  run.accuracy.pending.flags = PendingAccuracy::valid;
  run.options &= ~ask_option::U;
  EXPECT_EQ(sequence(meter), UrStatus::option_off);
  EXPECT_TRUE(has(test_bit::tolerances) && has(test_bit::tur_low));
  EXPECT_EQ(run.accuracy.pending.flags, 0);
  run.options |= ask_option::U;

  FscRecord record = meter;
  QuantityField nominal = record.get(field::nominal);
  nominal.flags = QuantityField::keep;
  record.set(field::nominal, nominal);
  EXPECT_EQ(sequence(record), UrStatus::no_nominal);
  EXPECT_FALSE(has(test_bit::tolerances));
  EXPECT_EQ(sequence(comparison("1V", "1%")), UrStatus::nothing_pending);
  EXPECT_EQ(sequence(instrument(fsc::eval, 1, u::volt, "1%")), UrStatus::no_accuracy_kind);
  EXPECT_EQ(sequence(instrument(fsc::n5531, 1, u::volt, "1%")), UrStatus::named_early);
  EXPECT_EQ(reported(), 0);

  EXPECT_EQ(sequence(instrument(0x48FA, 1, u::volt, "1%"), false), UrStatus::unknown_code);
  EXPECT_EQ(reported(), 130);
  EXPECT_EQ(sequence(instrument(fsc::i3458, 1, u::joule, "1%")), UrStatus::no_mode);
  EXPECT_EQ(sequence(instrument(fsc::mfc1, 1, u::volt, "1%")), UrStatus::no_mode);

  run.registers.m[5] = -1;
  EXPECT_EQ(sequence(instrument(fsc::i3458, 1, u::volt, "M5U"), false), UrStatus::no_tolerance);
  EXPECT_EQ(reported(), 2724);
  run.clear(run_flag::run_active);
  EXPECT_EQ(sequence(instrument(fsc::i3458, 1, u::volt, "M5U")), UrStatus::no_registers);
  run.set(run_flag::run_active);

  look_up.succeeds = false;
  EXPECT_EQ(sequence(meter), UrStatus::lookup_failed);
  look_up.succeeds = true;
  look_up.flags = 0;
  EXPECT_EQ(sequence(meter, false), UrStatus::no_entry);
  EXPECT_EQ(reported(), 132);
  for (const std::uint16_t missing : {acc_flag::no_gain, acc_flag::no_floor}) {
    look_up.flags = acc_flag::hit | missing;
    EXPECT_EQ(sequence(meter), UrStatus::out_of_range);
    EXPECT_EQ(run.test.test_tol, 0);
    EXPECT_EQ(reported(), 321);
  }
}

TEST_F(SystemAccuracyTest, NothingButANumberBecomesAResult) {
  struct Case {
    double nominal, actual, gain, floor;
  };
  const double inf = test::infinity, nan = test::not_a_number;
  const Case cases[] = {
      {1, nan, 0, 0.1},         {1, inf, 0, 0.1}, {nan, 1, 0, 0.1}, {1e308, 1e308, 1e300, 1},
      {1e308, 1e308, 0, 1e308}, {1, 1, nan, 0},   {1, 1, 0, inf},   {-1, -1, 0, 0}};
  for (const Case& c : cases) {
    look_up.gain = c.gain;
    look_up.floor = c.floor;
    measured(c.actual, 1);
    run.stop_reason = 0;
    EXPECT_EQ(sequence(instrument(fsc::i3458, c.nominal, u::volt, "1U"), false), UrStatus::floating_point)
        << c.nominal << ' ' << c.actual << ' ' << c.gain << ' ' << c.floor;
    EXPECT_FALSE(has(test_bit::tolerances));
    EXPECT_EQ(run.test.test_tol + run.test.sys_tol + run.test.tur, 0);
    EXPECT_TRUE((run.stop_reason & stop_reason_bit::floating_point) != 0 && run.has(run_flag::stop_test));
    EXPECT_EQ(reported(), 133);
  }
  // A level whose accuracy reaches down to no volts at all has none.
  look_up.floor = 1;
  look_up.gain = 0;
  measured(0, 0);
  EXPECT_EQ(sequence(instrument(fsc::i3458, 0, u::dbm, "1U"), false), UrStatus::floating_point);
  EXPECT_EQ(reported(), 133);
}

TEST_F(SystemAccuracyTest, ALevelIsLookedUpInVolts) {
  // 0 dBm at 50 ohm is 0.2236 V; 1 % of it below is 0.0873 dB.
  FscRecord record = instrument(fsc::i3458, 0, u::dbm, "1U");
  record.set(field::mod2_code, 2);
  record.set(field::mod2_value, 50);
  set_mod1(record, 0.001, u::second);
  look_up.gain = 1;
  measured(0.1, 0);
  EXPECT_EQ(sequence(record), UrStatus::tur_computed);
  EXPECT_NEAR(look_up.value, 0.22360679774997896, 1e-12);
  ASSERT_TRUE(look_up.modifier);
  EXPECT_NEAR(*look_up.modifier, 1000, 1e-9);
  EXPECT_NEAR(run.test.sys_tol, -20 * std::log10(0.99), 1e-9);
  EXPECT_EQ(run.test.unit, u::dbm);
  EXPECT_EQ(run.accuracy.impedance, 50);
  EXPECT_EQ(run.accuracy.looked_up_unit, u::volt);
  // A modifier from MEM is what the statement has left; none of zero is a frequency.
  set_mod1(record, 0, u::hertz, ModifierField::from_mem);
  run.test.mod_value = 440;
  sequence(record);
  EXPECT_EQ(look_up.modifier.value_or(0), 440);
  set_mod1(record, 0, u::second);
  EXPECT_EQ(sequence(record, false), UrStatus::floating_point);
}

TEST_F(SystemAccuracyTest, ASetUpLineServesTheComparisonBehindIt) {
  look_up.gain = 1;
  measured(-999, 999);  // of an earlier test
  FscRecord setup = instrument(fsc::i3458, 10, u::volt, "", prefix_code::milli);
  setup.set(field::mod4, mod4_code::n);
  setup.set(field::line_flags, line_flag::first | line_flag::last);
  EXPECT_EQ(sequence(setup), UrStatus::stored_pending);
  EXPECT_FALSE(has(test_bit::tolerances));
  EXPECT_DOUBLE_EQ(run.accuracy.pending.nominal, 0.01);
  EXPECT_NEAR(run.accuracy.pending.sys_tol, 1e-4, 1e-15);

  for (const char* text : {"10.0mV", "10.0"}) {
    measured(10.1, 10);
    EXPECT_EQ(sequence(comparison(text, "0.5U")), UrStatus::tur_computed) << text;
    EXPECT_NEAR(run.test.test_tol, 5e-4, 1e-15);
    EXPECT_NEAR(run.test.tur, 5, 1e-9);
    EXPECT_EQ(run.test.unit, u::volt);
  }
  EXPECT_EQ(look_up.asked, 1);
  // A modifier that was MEM before the line ran stands in the slots; without them it is not known.
  set_mod1(setup, 0, u::hertz, ModifierField::from_mem);
  EXPECT_EQ(sequence(setup), UrStatus::modifier_from_mem);
  run.slots.modifier.flags = QuantitySlot::filled;
  run.slots.modifier.value = 50;
  EXPECT_EQ(sequence(setup), UrStatus::stored_pending);
  EXPECT_EQ(look_up.modifier.value_or(0), 50);
}

TEST_F(SystemAccuracyTest, AnAccStatementIsTheSystemTolerance) {
  set("UUP", "NO");
  run.registers.mem = 10;
  EXPECT_EQ(sequence(comparison("mV", "+1% -0.3U", fsc::acc)), UrStatus::stored_mem);
  EXPECT_DOUBLE_EQ(run.accuracy.statement.tol, 0.3);
  EXPECT_EQ(sequence(comparison("20.0 mV", "1%", fsc::acc)), UrStatus::stored_number);
  EXPECT_DOUBLE_EQ(run.accuracy.statement.tol, 0.2);
  EXPECT_EQ(run.accuracy.statement.units, "mV");
  run.accuracy.pending.flags = PendingAccuracy::valid;  // an ACC in force goes before it
  measured(20.1, 20);
  EXPECT_EQ(sequence(comparison("20.0mV", "1U")), UrStatus::tur_computed);
  EXPECT_TRUE(has(test_bit::acc_units));
  EXPECT_EQ(run.test.tol_units, "mV");
  EXPECT_EQ(run.test.unit, 0);
  EXPECT_DOUBLE_EQ(run.test.tur, 5);
  EXPECT_EQ(look_up.asked, 0);
  // With UUP the unit is known, and the numbers are in it.
  set("UUP", "YES");
  sequence(comparison("20.0 mV", "1%", fsc::acc));
  EXPECT_TRUE(run.accuracy.statement.has(AccStatement::unit_known));
  sequence(comparison("20.0mV", "1U"));
  EXPECT_FALSE(has(test_bit::acc_units));
  EXPECT_EQ(run.test.unit, u::volt);
  EXPECT_NEAR(run.test.sys_tol, 2e-4, 1e-18);
  EXPECT_NEAR(run.test.tur, 5, 1e-12);
}

TEST_F(SystemAccuracyTest, NamedParametersBringTheirOwnReport) {
  static int kind;
  ur_install_named([](RunState&, const FscRecord&, NamedAccuracy& out) {
    out.kind = kind;
    out.accuracy.sys_tol = 0.5;
    return kind != 0;
  });
  const FscRecord record = instrument(fsc::psa, 1, u::volt, "1%");
  struct Case {
    int kind, message;
    UrStatus status;
  };
  for (const Case& c : {Case{0, 0, UrStatus::handler_failed},
                        {1, 0, UrStatus::stored_pending},
                        {2, 321, UrStatus::out_of_range},
                        {3, 132, UrStatus::no_entry},
                        {4, 1619, UrStatus::named_end}}) {
    kind = c.kind;
    EXPECT_EQ(sequence(record, c.kind != 3), c.status) << c.kind;
    EXPECT_EQ(reported(), c.message);
  }
  EXPECT_EQ(run.accuracy.pending.sys_tol, 0.5);
}

TEST_F(SystemAccuracyTest, ModeWords) {
  struct Case {
    std::uint16_t fsc;
    UnitCode unit;
    std::uint16_t mod2;
    std::uint8_t mod3, con;
    const char* words;
  };
  const Case cases[] = {{fsc::i3458, u::volt, 0, 0, 0, "Volts"},
                        {fsc::i3458, u::volt, 0, 1, 0, "Volts E"},
                        {fsc::i3458, u::dbm, 2, 3, 0, "Volts F"},
                        {fsc::i3458, u::amp, 0, 5, 0, "Amps FE"},
                        {fsc::i3458, u::ohm, 0, 0, 0, "Ohms 2W"},
                        {fsc::i3458, u::ohm, 1, 3, 2, "Ohms F O 4W"},
                        {fsc::i2002, u::ohm, 0, 0, 1, "Ohms 2W"},
                        {fsc::i34420, u::amp, 0, 0, 0, ""},
                        {fsc::i33120, u::volt_p, 0, 0, 0, "Vpp"},
                        {fsc::i5335, u::second, 0, 15, 0, "Seconds TI"},
                        {fsc::i53131, u::hertz, 0, 17, 92, "Hertz FA CH2"},
                        {fsc::i5335, u::hertz_ratio, 0, 19, 0, "Hertz FR"},
                        {fsc::i5335, u::degree, 0, 30, 0, "Degrees PR"},
                        {fsc::i4419, u::dbm, 0, 0, 91, "Watts CH1"},
                        {fsc::i8648, u::dbm, 0, 0, 0, "Decibels"},
                        {fsc::hp60, u::amp, 0, 0, 0, "Amps CC"},
                        {fsc::memc, u::volt, 0, 0, 0, ""}};
  for (const Case& c : cases) {
    FscRecord record = instrument(c.fsc, 1, c.unit, "");
    record.set(field::mod2_code, c.mod2);
    record.set(field::mod3, c.mod3);
    record.set(field::con, c.con);
    EXPECT_EQ(ur_mode_string(record), c.words) << c.fsc;
  }
  // Every model of the catalogue that is none of the system's own has words for some unit, each word once.
  const std::uint16_t own[] = {fsc::mfc1, fsc::mfc2, fsc::mfc3, fsc::mfc4, fsc::osc1, fsc::osc2, fsc::osc3,
                               fsc::acm1, fsc::msc1, fsc::dmm1, fsc::dmm2, fsc::dmm3, fsc::resf, fsc::wide};
  for (const FscRow& row : fsc_rows()) {
    constexpr std::uint16_t instrument_test = code_class::instrument | code_class::test;
    if ((row.code & instrument_test) != instrument_test) continue;
    if (std::find(std::begin(own), std::end(own), row.code) != std::end(own)) continue;
    bool any = false;
    for (int unit = 1; unit < 72; ++unit)
      any = any || !ur_mode_string(instrument(row.code, 1, static_cast<UnitCode>(unit), "")).empty();
    EXPECT_TRUE(any) << row.name;
  }
}

TEST_F(SystemAccuracyTest, ConversionsLeadBack) {
  for (const FscRow& row : fsc_rows()) {
    for (int unit = 1; unit < 72; ++unit) {
      std::uint8_t out = 0;
      const auto code = static_cast<UnitCode>(unit);
      const double there = ur_convert(row.code, 3.5, code, 0, 50, UrMode::file, out);
      for (const UrMode mode : {UrMode::from_file, UrMode::from_file_to_report}) {
        EXPECT_NEAR(ur_convert(row.code, there, code, 0, 50, mode, out), 3.5, 1e-12) << row.name << unit;
        EXPECT_EQ(out, unit);
      }
    }
  }
}

}  // namespace
}  // namespace orvane
