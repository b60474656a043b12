// What the columns of an instrument statement tell of the signal, and how a measurement came about.
#include "evaluation/result_store.h"
#include "procedure/file/field_codes.h"
#include "results/result_fields.h"
#include "support/accuracy_desk.h"

namespace orvane {
namespace {

using F = ResultField;
namespace u = unit_code;

class SignalFields : public test::AccuracyTest {
 protected:
  // The fields of a test of 10 units, as the catalogue fills them.
  const ResultRecord& filled(const FscRecord& record) {
    EXPECT_TRUE(r_begin_test(run, record));
    run.test.indicated = run.test.actual = 10;
    EXPECT_EQ(field_catalogue(run, record, 10), 0) << desk.last_message();
    return *run.results.latest;
  }
};

TEST_F(SignalFields, ColumnsNameTheSignal) {
  struct Case {
    std::uint16_t code;
    std::uint8_t unit;
    const char *mod2, *mod3, *con;
    F field;
    const char* text;  // "": the field stays empty
  };
  const Case cases[] = {{fsc::i3458, u::celsius, "_K", "", "", F::thermocouple_type, "K"},
                        {fsc::i3458, u::celsius, "_U", "", "", F::thermocouple_type, "U"},
                        {fsc::i3458, u::celsius, "R1", "", "", F::thermocouple_type, ""},
                        {fsc::i8902, u::percent, "", "AM", "", F::am_depth, "10 %"},
                        {fsc::i8902, u::hertz, "", "FM", "", F::fm_deviation, "10 Hz"},
                        {fsc::i8902, u::hertz, "", "FM", "", F::frequency_1, ""},
                        {fsc::i8902, u::radian, "", "PM", "", F::phase_deviation, "10 rad"},
                        {fsc::i33120, u::volt_pp, "SQ", "", "", F::waveform_1, "Square"},
                        {fsc::i33120, u::volt_pp, "", "TI", "", F::waveform_1, "Triangle"},
                        {fsc::i33120, u::volt_pp, "5Z", "", "", F::output_impedance_1, "50 Ohm"},
                        {fsc::i3458, u::volt, "6Z", "", "", F::input_impedance, "600 Ohm"},
                        {fsc::i53131, u::second, "", "TI", "", F::waveform_1, ""},
                        {fsc::i3458, u::ohm, "", "", "4WR", F::sense, "4-wire"},
                        {fsc::i33120, u::hertz, "", "", "", F::frequency_1, "10 Hz"}};
  for (const Case& c : cases) {
    FscRecord record = instrument(c.code, 10, c.unit, "1%");
    if (*c.mod2 != 0) {
      const Mod2 mod2 = mod2_code(c.mod2).value();
      record.set(field::mod2_code, mod2.code);
      record.set(field::mod2_value, mod2.value);
    }
    if (*c.mod3 != 0) record.set(field::mod3, mod3_code(c.mod3).value());
    if (*c.con != 0) record.set(field::con, con_code(c.con).value());
    EXPECT_EQ(quantity_text(filled(record), c.field), c.text) << c.mod2 << c.mod3 << c.con;
  }
}

TEST_F(SignalFields, HowTheMeasurementCameAbout) {
  struct Case {
    std::uint8_t mod4;
    std::uint16_t state;
    const char* type;
    bool fixed;
  };
  const Case cases[] = {
      {0, 0, "Numeric", false},
      {0, test_bit::indicated_text, "FixedRes", true},
      {0, test_bit::indicated_text | test_bit::mean, "Numeric", false},  // of several readings
      {mod4_code::s, 0, "Slew", false},
      {0, test_bit::go_no_go, "Go-NoGo", false}};
  for (const Case& c : cases) {
    FscRecord record = instrument(fsc::i33120, 10, u::volt, "1%");
    record.set(field::mod4, c.mod4);
    run.test.test_state = c.state;
    run.test.indicated_text = "10";
    const ResultRecord& result = filled(record);
    EXPECT_EQ(r_text(result, F::result_type), c.type);
    EXPECT_EQ((result.flags & result_bit::has_fixed_measurement) != 0, c.fixed) << c.type;
  }
}

}  // namespace
}  // namespace orvane
