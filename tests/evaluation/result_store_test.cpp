#include "evaluation/result_store.h"

#include <cmath>
#include <set>

#include "evaluation/uncertainty.h"
#include "support/accuracy_desk.h"

namespace orvane {
namespace {

using F = ResultField;
namespace u = unit_code;
namespace p = prefix_code;

class ResultStore : public test::AccuracyTest {
 protected:
  ResultRecord& begin(const FscRecord& record) {
    EXPECT_TRUE(r_begin_test(run, record));
    return *run.results.latest;
  }
};

TEST_F(ResultStore, TheResolutionIsWhatTheLastDigitIsWorth) {
  struct Case {
    const char* text;
    double resolution;  // 0: none
    std::uint8_t prefix;
  };
  const Case cases[] = {{"10.00mV", 0.01, p::milli}, {"10V", 1, p::absent},
                        {"0.5", 0.1, p::absent},     {"1.00E-3V", 1e-5, p::absent},
                        {"12.5E3V", 100, p::absent}, {"1E6H", 1e6, p::absent},
                        {"V", 0, p::absent}};
  for (const Case& c : cases) {
    const ResultRecord& record = begin(comparison(c.text, "1%"));
    const ResultValue* value = record.find(F::uut_resolution);
    ASSERT_EQ(value != nullptr, c.resolution > 0) << c.text;
    if (value == nullptr) continue;
    EXPECT_NEAR(value->raw, c.resolution, 1e-12 * c.resolution) << c.text;
    EXPECT_EQ(value->prefix == p::none ? p::absent : value->prefix, c.prefix) << c.text;
  }
  // A source: what the operator read.
  run.test.indicated_text = " 9.987";
  run.test.test_state = test_bit::indicated_text;
  const ResultRecord& source = begin(instrument(fsc::i33120, 10, u::volt, "1%", p::milli));
  ASSERT_NE(source.find(F::uut_resolution), nullptr);
  EXPECT_NEAR(source.find(F::uut_resolution)->raw, 0.001, 1e-15);
  EXPECT_EQ(source.find(F::uut_resolution)->prefix, p::milli);
  EXPECT_EQ(source.fsc, fsc::i33120);
  EXPECT_EQ(begin(instrument(fsc::eval, 1, u::volt, "")).values.size(), 0u);
}

TEST_F(ResultStore, TheListForgetsTheLatest) {
  begin(comparison("1V", "1%"));
  ResultRecord& second = begin(comparison("2V", "1%"));
  EXPECT_EQ(run.results.records.size(), 2u);
  EXPECT_EQ(r_text(second, F::nominal), "2");
  EXPECT_TRUE(r_withdraw_latest(run));
  ASSERT_NE(run.results.latest, nullptr);
  EXPECT_EQ(r_text(*run.results.latest, F::nominal), "1");
  EXPECT_TRUE(r_withdraw_latest(run));
  EXPECT_EQ(run.results.latest, nullptr);
  EXPECT_FALSE(r_withdraw_latest(run));
}

TEST_F(ResultStore, DisplayForms) {
  struct Case {
    const char* form;
    double value;
    std::uint8_t unit;
    const char* text;
    std::uint8_t prefix;
  };
  const Case cases[] = {{"SCI", 0.0123456, u::volt, "1.2346e-02", p::none},
                        {"ENGR", 0.0123456, u::volt, "12.346e-003", p::none},
                        {"NOM", 0.0123456, u::volt, "12.3460", p::milli},
                        {"PREFIX", 0.0123456, u::volt, "12.346", p::milli},
                        {"PREFIX", 1234.56, u::volt, "1.2346", p::kilo},
                        {"PREFIX", -2.5e-7, u::amp, "-250.00", p::nano},
                        {"PREFIX", 0.0123456, u::dbm, "0.0123", p::none},
                        {"PREFIX", 0.0123456, u::none, "0.0123", p::none},
                        {"PREFIX", 0, u::volt, "0.0000", p::none},
                        {"ENGR", 0, u::volt, "0.0000e+000", p::none},
                        {"PREFIX", 1e-20, u::volt, "0.0000", p::pico}};
  for (const Case& c : cases) {
    set("UFMT", c.form);
    ResultRecord& record = begin(comparison("10.0mV", "1%"));
    r_add_value(record, F::expanded_uncertainty, 4, c.value, p::none, c.unit);
    EXPECT_EQ(r_text(record, F::expanded_uncertainty), c.text) << c.form << c.value;
    EXPECT_EQ(record.find(F::expanded_uncertainty)->prefix, c.prefix) << c.form << c.value;
  }
}

TEST_F(ResultStore, EveryFieldHasItsNameAndFitsTheRecord) {
  ResultRecord& record = begin(comparison("10.0mV", "1%"));
  std::set<std::string> names;
  for (std::size_t i = 0; i < result_field_count; ++i) {
    const ResultFieldRow& row = result_field_row(static_cast<F>(i));
    EXPECT_TRUE(names.insert(row.name).second) << row.name;
    const std::string text = "text of " + std::string(row.name);
    switch (row.kind) {
      case ResultKind::text: r_set_text(record, row.field, text); break;
      case ResultKind::integer: r_set_integer(record, row.field, static_cast<std::int32_t>(i)); break;
      case ResultKind::value:
        r_set_value(record, row.field, 3, static_cast<double>(i), p::none, u::none, "unit");
        EXPECT_TRUE(r_set_printed(record, row.field, "-1.234567E-03"));
        break;
    }
  }
  record.lines = std::string(79, '1') + '\n' + std::string(79, '2');
  EXPECT_LE(record.memory(), ResultRecord::size_limit);
  EXPECT_EQ(r_text(record, F::remark), "text of Remark");
  EXPECT_EQ(r_text(record, F::ws), std::to_string(static_cast<int>(F::ws)));
  EXPECT_EQ(r_units(record, *record.find(F::variable_quantity)), "unit");
  EXPECT_EQ(r_text(record, F::variable_quantity), "-1.234567E-03");
  EXPECT_FALSE(r_set_printed(record, F::variable_quantity, std::string(printed_limit + 1, '1')));
  EXPECT_TRUE(r_set_printed(record, F::variable_quantity, "1.5"));
  EXPECT_EQ(
      r_text(record, F::variable_quantity) + std::string(r_units(record, *record.find(F::variable_quantity))),
      "1.5unit");
  r_set_value(record, F::variable_quantity, 1, 2, p::none, u::volt);
  EXPECT_EQ(r_text(record, F::variable_quantity), "2.0");
  // A shorter text takes the room of the one before, a longer one its own.
  r_set_text(record, F::remark, "x");
  EXPECT_EQ(r_text(record, F::remark), "x");
  r_set_text(record, F::remark, std::string(70000, 'y'));
  EXPECT_EQ(r_text(record, F::remark).size(), 65535u);
  EXPECT_EQ(r_text(record, F::sense), "text of Sense");
}

TEST_F(ResultStore, TheChainGoesIntoTheRecord) {
  set("NMEAS", "2");
  set("C10", "3");
  set("CS2", "5");
  test::look_up.floor = 0.01;
  const auto take = [&](const FscRecord& record) {
    ResultRecord& result = begin(record);
    SampleAnswer answer = SampleAnswer::again;
    while (answer == SampleAnswer::again && unc_step(run, record, answer)) run.test.actual += 0.01;
    EXPECT_TRUE(ur_system_accuracy(run, record) && unc_finish(run, record));
    r_uncertainty(run);
    return &result;
  };
  measured(10, 10);
  const ResultRecord* volts = take(instrument(fsc::i3458, 10, u::volt, "1%"));
  EXPECT_DOUBLE_EQ(volts->find(F::standard_uncertainty)->raw, run.uncertainty[Quantity::std_unc]);
  EXPECT_EQ(r_units(*volts, *volts->find(F::expanded_uncertainty)), "V");
  EXPECT_EQ(volts->readings.size(), 2u);
  EXPECT_EQ(r_text(*volts, F::uncertainty_method), "RSS");
  EXPECT_EQ(volts->find(F::sensitivity_coefficient_10)->raw, 5);  // CS2 stands over C10
  EXPECT_EQ(volts->find(F::cs1), nullptr);
  EXPECT_EQ(volts->find(F::cs2), nullptr);
  // Levels: components in volts, the whole in the test's unit.
  FscRecord level = instrument(fsc::i3458, 0, u::dbm, "1U");
  measured(0, 0);
  const ResultRecord* dbm = take(level);
  EXPECT_EQ(dbm->find(F::s1)->units_code, u::volt);
  EXPECT_EQ(dbm->find(F::expanded_uncertainty)->units_code, u::dbm);
  // Without an accuracy nothing is stored.
  test::look_up.flags = acc_flag::hit | acc_flag::no_floor;
  EXPECT_EQ(take(instrument(fsc::i3458, 10, u::volt, "1%"))->find(F::s1), nullptr);
}

}  // namespace
}  // namespace orvane
