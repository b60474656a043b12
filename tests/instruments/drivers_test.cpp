// Every driver over the scripted bus: what it must write, what it takes for an answer, and what it refuses.
#include <cmath>
#include <map>

#include "config/startup_config.h"
#include "instruments/device_list.h"
#include "instruments/drivers/drivers.h"
#include "instruments/drivers/prompts.h"
#include "instruments/drivers/road.h"
#include "instruments/drivers/scpi_common.h"
#include "instruments/instrument_names.h"
#include "procedure/file/field_codes.h"
#include "procedure/file/field_text.h"
#include "state/pump.h"
#include "support/gpib_double.h"

namespace orvane {
namespace {

using test::script;
using Numbers = std::vector<int>;
using Lines = std::vector<std::string>;

// The columns of a statement, as they are written.
struct Columns {
  std::uint16_t code = fsc::i3458;
  const char* nominal = "";
  const char* mod1 = "";
  const char *mod2 = "", *mod3 = "", *mod4 = "", *con = "";
  const char* tolerance = "1%";
};

FscRecord record_of(const Columns& columns) {
  FscRecord record = fsc_record_new();
  record.set(field::code, columns.code);
  record.set(field::line_flags, line_flag::result | line_flag::first | line_flag::last | line_flag::columns);
  FieldFault fault;
  QuantityField nominal;
  ModifierField mod1;
  ToleranceField tolerance;
  EXPECT_TRUE(nominal_from_text(columns.nominal, nominal, fault)) << columns.nominal;
  EXPECT_TRUE(modifier_from_text(columns.mod1, mod1, fault)) << columns.mod1;
  EXPECT_TRUE(tolerance_from_text(columns.tolerance, tolerance, fault)) << columns.tolerance;
  record.set(field::nominal, nominal);
  record.set(field::mod1, mod1);
  record.set(field::tolerance, tolerance);
  if (*columns.mod2 != 0) {
    const auto code = mod2_code(columns.mod2);
    record.set(field::mod2_code, code.value().code);
    record.set(field::mod2_value, code.value().value);
  }
  if (*columns.mod3 != 0) record.set(field::mod3, mod3_code(columns.mod3).value());
  if (*columns.mod4 != 0) record.set(field::mod4, mod4_code_of(columns.mod4).value());
  if (*columns.con != 0) record.set(field::con, con_code(columns.con).value());
  return record;
}

constexpr int bus_address = 22;

class Drivers : public test::BusTest {
 protected:
  Drivers() {
    EXPECT_TRUE(drivers_install(all_drivers()));
    DeviceList list;
    for (const DriverRow& row : all_drivers()) {
      InstrumentRecord device;
      device.code = row.code;
      device.address = test::device(0, bus_address);
      list.instruments.push_back(device);
    }
    set_device_list(list);
    run.set(run_flag::run_active);
    run.options = 0;
    replies = {{"ERR?", "0"},
               {"AUXERR?", "0"},
               {"*ESR?", "+0"},
               {"*OPC?", "1"},
               {":SYST:ERR?", "+0,\"No error\""},
               {"TRIG SGL", "10.001"},
               {"READ?", "+1.00010000E+01\n"}};
    script.answer = [this](const std::string& written) {
      const auto reply = replies.find(written);
      return reply != replies.end() ? reply->second : std::string("!");
    };
    script.status_byte = 0x90;  // data ready, message available
  }

  // Runs a statement; what was sent to the device.
  Lines go(const Columns& columns) {
    const FscRecord record = record_of(columns);
    Statement statement{run, record};
    script.calls.clear();
    desk.shown.clear();
    run.clear(run_flag::stop_test | run_flag::skip_test);
    passed = driver_of_statement(columns.code)->run(statement);
    return sent();
  }
  static Lines sent() {
    constexpr std::string_view head = "send 0,22,2 ";
    Lines texts;
    for (const std::string& call : script.calls) {
      if (call.starts_with(head)) texts.push_back(call.substr(head.size()));
    }
    return texts;
  }
  void modify(std::uint16_t code, const FscRecord& record) {
    Statement statement{run, record};
    EXPECT_TRUE(driver_of(code)->store_modifier(statement));
  }
  FscRecord modifier(std::uint16_t statement, const char* nominal, std::uint16_t word) {
    FscRecord record = fsc_record_new();
    record.set(field::code, statement);
    QuantityField quantity;
    FieldFault fault;
    EXPECT_TRUE(nominal_from_text(nominal, quantity, fault));
    record.set(BlockField<QuantityField>{14}, quantity);
    record.set(Field<std::uint16_t>{12}, word);
    return record;
  }

  std::map<std::string, std::string> replies;
  bool passed = false;
};

constexpr std::string_view tail = "MEM OFF;DELAY -1;NDIG 6;NRDGS 1,AUTO;TARM AUTO;TRIG HOLD";

TEST_F(Drivers, OneMessageSetsAnInstrumentUp) {
  struct Case {
    Columns columns;
    std::string text;
  };
  const auto hp = [](const std::string& middle) { return "RQS 32;END ALWAYS;" + middle + std::string(tail); };
  const Case cases[] = {
      {{.nominal = "10V"}, hp("DCV 10;ARANGE ON;NPLC 100;MATH OFF;AZERO ON;FIXEDZ OFF;")},
      {{.nominal = "-30V", .mod3 = "F"}, hp("DCV -30;ARANGE ON;NPLC 10;MATH OFF;AZERO ON;FIXEDZ OFF;")},
      {{.nominal = "3V", .mod1 = "50kH", .mod3 = "E"},
       hp("ACV 3;ARANGE ON;NPLC 100;MATH OFF;ACBAND 1,2E6;SETACV SYNC;SSRC LEVEL, HOLD;LEVEL 0.001;LFILTER "
          "ON;")},
      {{.nominal = "3V", .mod1 = "75kH", .mod3 = "E"},
       hp("ACV 3;ARANGE ON;NPLC 100;MATH OFF;ACBAND 1,2E6;SETACV SYNC;SSRC LEVEL, HOLD;LEVEL 0.001;LFILTER "
          "OFF;")},
      {{.nominal = "3V", .mod1 = "5MH", .mod3 = "F"},
       hp("ACV 3;ARANGE ON;NPLC 10;MATH OFF;ACBAND 20,10E6;SETACV RNDM;")},
      {{.nominal = "0D", .mod1 = "1kH", .mod2 = "6Z"},
       hp("ACV 0.774597;ARANGE ON;NPLC 100;MATH DBM;ACBAND 10,2E6;SMATH RES 600;SETACV ANA;")},
      {{.nominal = "150uA"}, hp("DCI 0.0002;ARANGE ON;NPLC 100;MATH OFF;AZERO ON;")},
      {{.nominal = "1A", .mod1 = "1kH"}, hp("ACI 1;ARANGE ON;NPLC 100;MATH OFF;ACBAND 1,10E6;")},
      {{.nominal = "10kZ", .con = "4W"},
       hp("OHMF 10000;ARANGE ON;NPLC 100;MATH OFF;AZERO ON;OCOMP ON;FIXEDZ OFF;")},
      {{.nominal = "12kZ"}, hp("OHM 12000;ARANGE ON;NPLC 100;MATH OFF;AZERO ON;OCOMP OFF;FIXEDZ OFF;")},
      {{.nominal = "1kZ", .mod2 = "O"}, hp("OHM 1000;ARANGE ON;NPLC 100;MATH OFF;AZERO ON;FIXEDZ OFF;")},
      {{.nominal = "1kH", .mod1 = "1V"},
       hp("FREQ 2;ARANGE ON;NPLC 100;MATH OFF;ACBAND 1,10E6;FSOURCE ACV;LFILTER ON;")},
      {{.nominal = "1mT", .mod1 = "10mA"},
       hp("PER 0.02;ARANGE ON;NPLC 100;MATH OFF;ACBAND 1,10E6;FSOURCE ACI;")},
      {{.code = fsc::i34401, .nominal = "10V"}, ":CONF:VOLT:DC 10;:VOLT:DC:NPLC 100;:TRIG:SOUR IMM"},
      {{.code = fsc::i34401, .nominal = "1V", .mod1 = "100H"}, ":CONF:VOLT:AC 1;:DET:BAND 20;:TRIG:SOUR IMM"},
      {{.code = fsc::i34420, .nominal = "0V", .mod3 = "F"},
       ":CONF:VOLT:DC 0.001;:VOLT:DC:NPLC 10;:TRIG:SOUR IMM"},
      {{.code = fsc::i2000, .nominal = "-1V"},
       ":CONF:VOLT:DC;:VOLT:DC:RANG 1;:VOLT:DC:NPLC 10;:FORM:ELEM READ;:TRIG:SOUR IMM"},
      {{.code = fsc::i2000, .nominal = "1V", .mod1 = "400H"},
       ":CONF:VOLT:AC;:VOLT:AC:RANG 1;:VOLT:AC:DET:BAND 300;:FORM:ELEM READ;:TRIG:SOUR IMM"},
      {{.code = fsc::i2001, .nominal = "100Z", .con = "4W"},
       ":CONF:FRES;:FRES:RANG 100;:FRES:NPLC 10;:FORM:ELEM READ;:TRIG:SOUR IMM"},
      {{.code = fsc::i2002, .nominal = "1kH"}, ":CONF:FREQ;:FORM:ELEM READ;:TRIG:SOUR IMM"},
      {{.code = fsc::i33120, .nominal = "1V", .mod1 = "1kH", .mod4 = "N"},
       ":VOLT:OFFS 0;:FREQ 1000;:OUTP:LOAD INF;:FUNC:SHAP SIN;:FREQ 1000;:VOLT:UNIT VRMS;:VOLT 1;:VOLT:OFFS "
       "0"},
      {{.code = fsc::i33120, .nominal = "0D", .mod1 = "1mT", .mod2 = "5Z", .mod3 = "SQ", .mod4 = "N"},
       ":VOLT:OFFS 0;:FREQ 1000;:OUTP:LOAD 50;:FUNC:SHAP SQU;:FREQ 1000;:VOLT:UNIT DBM;:VOLT 0;:VOLT:OFFS 0"},
      {{.code = fsc::i33120, .nominal = "-5V", .mod4 = "N"},
       ":VOLT:OFFS 0;:FREQ 1000;:OUTP:LOAD INF;:FUNC:SHAP DC;:VOLT:OFFS -5"},
  };
  for (const Case& c : cases) {
    const Lines texts = go(c.columns);
    ASSERT_FALSE(texts.empty()) << c.text << desk.last_message();
    EXPECT_EQ(texts.front(), c.text);
    EXPECT_TRUE(passed) << c.text << desk.last_message();
  }
}

TEST_F(Drivers, LimitsAreTestedAtTheirEdge) {
  struct Case {
    Columns columns;
    double value;  // in place of the nominal's number; of MOD1's where `of_mod1`
    int message;
    bool of_mod1 = false;
  };
  constexpr double inside = 1 + 0.5e-11, outside = 1 + 2e-11;
  const Columns amps{.nominal = "1A"}, dc{.nominal = "1V"}, ac{.nominal = "1V", .mod1 = "1kH"},
      ohms{.nominal = "1Z"}, fast{.nominal = "1V", .mod1 = "1kH", .mod3 = "F"},
      period{.nominal = "1V", .mod1 = "1mT"}, aci{.nominal = "1A", .mod1 = "1kH"};
  Columns dmm = dc;
  dmm.code = fsc::i34401;
  const Case cases[] = {
      {dc, 1050, 0},
      {dc, -1050 * inside, 0},
      {dc, 1050 * outside, 30952},
      {ac, 700 * inside, 0},
      {ac, 700 * outside, 30952},
      {ac, -1e-9, 30952},
      {amps, 1.2 * inside, 0},
      {amps, -1.2 * outside, 30952},
      {ohms, 1.2e9, 0},
      {ohms, 1.2e9 * outside, 30952},
      {ac, 2e6 * inside, 0, true},
      {ac, 2e6 * outside, 2608, true},
      {ac, 9.99, 2608, true},
      {fast, 1e7, 0, true},
      {fast, 19, 2674, true},
      {period, 0.2, 2609, true},
      {aci, 1.0001e5, 2612, true},
      {{.nominal = "1V", .mod1 = "1kH", .mod3 = "E"}, 0.9, 2676, true},
      {{.nominal = "1V", .mod1 = "1mT", .mod3 = "E"}, 2, 2677, true},
      {{.nominal = "1D", .mod1 = "1kH"}, 1, 30957},
      {{.nominal = "1W"}, 1, 30953},
      {dc, std::nan(""), 30952},
      {dmm, 1000 * inside, 0},
      {dmm, 1000 * outside, 30952},
      {{.code = fsc::i34420, .nominal = "1A"}, 1, 30953},
      {{.code = fsc::i2000, .nominal = "1V", .mod1 = "1kH"}, 3.1e5, 30952, true},
      {{.code = fsc::i33120, .nominal = "1V", .mod1 = "1kH"}, 20 * 0.35355339059327379 * inside, 0},
      {{.code = fsc::i33120, .nominal = "1V", .mod1 = "1kH"}, 20 * 0.35355339059327379 * outside, 30952},
      {{.code = fsc::i33120, .nominal = "1V", .mod1 = "1kH"}, 0, 30952},
      {{.code = fsc::i33120, .nominal = "1V", .mod1 = "1kH", .mod2 = "TI"}, 1.1e5, 30952, true},
      {{.code = fsc::i33120, .nominal = "1V", .mod1 = "1kH", .mod2 = "7Z"}, 1, 30973},
      {{.code = fsc::i33120, .nominal = "1V", .mod1 = "1kH", .mod2 = "_J"}, 1, 30972},
      {{.code = fsc::i33120, .nominal = "1A", .mod1 = "1kH"}, 1, 30953},
      {{.code = fsc::i33120, .nominal = "1V"}, 10 * outside, 30952},
  };
  for (const Case& c : cases) {
    FscRecord record = record_of(c.columns);
    if (c.of_mod1) {
      ModifierField mod1 = record.get(field::mod1);
      mod1.value = c.value;
      mod1.prefix = prefix_code::none;
      record.set(field::mod1, mod1);
    } else {
      QuantityField nominal = record.get(field::nominal);
      nominal.value = c.value;
      record.set(field::nominal, nominal);
    }
    desk.shown.clear();
    EXPECT_EQ(driver_of_statement(c.columns.code)->check(run, record), c.message == 0);
    EXPECT_EQ(desk.message_numbers(), c.message == 0 ? Numbers() : Numbers{c.message})
        << c.columns.nominal << " " << c.columns.mod1 << " " << c.value;
  }
  EXPECT_TRUE(in_range(1.2e-7 + 1e-19, 0, 1.2e-7));
  EXPECT_TRUE(script.calls.empty()) << "a check touches nothing";
}

TEST_F(Drivers, AStatementIsCheckedBeforeARunOnlyIfItsValueIsKnown) {
  const DriverRow& row = *driver_of(1);
  FscRecord mem = record_of({.nominal = "V"}), far = record_of({.nominal = "2000V"});
  run.registers.mem = 2000;
  EXPECT_FALSE(row.check(run, mem));
  EXPECT_FALSE(row.check(run, far));
  run.clear(run_flag::run_active);
  EXPECT_TRUE(row.check(run, mem));
  EXPECT_FALSE(row.check(run, far));
  EXPECT_TRUE(row.check(run, record_of({.nominal = "*"})));
}

TEST_F(Drivers, AReadingLandsInTheTest) {
  go({.nominal = "10V", .tolerance = "1% 0.1U"});
  ASSERT_TRUE(passed) << desk.last_message();
  EXPECT_DOUBLE_EQ(run.registers.mem1(), 10.001);
  EXPECT_DOUBLE_EQ(run.test.actual, 10.001);
  EXPECT_EQ(run.test.indicated, 10);
  EXPECT_DOUBLE_EQ(run.test.pos_tol, 0.2);
  EXPECT_EQ(sent().size(),
            2 + 4 * 2u);  // set-up and errors; one reading thrown away and three, each with its errors

  go({.nominal = "10000mV"});  // the unit and prefix of the nominal
  EXPECT_DOUBLE_EQ(run.test.actual, 10001);
  EXPECT_DOUBLE_EQ(run.test.pos_tol, 100);

  run.test.actual = 0;
  go({.code = fsc::i34401, .nominal = "10V", .mod4 = "N"});
  EXPECT_TRUE(passed);
  EXPECT_DOUBLE_EQ(run.registers.mem, 10.001);
  EXPECT_EQ(run.test.actual, 0);

  run.registers.mem = 9;
  go({.nominal = "10V", .mod4 = "C"});
  EXPECT_EQ(run.test.indicated, 9);
  EXPECT_DOUBLE_EQ(run.test.pos_tol, 0.09);

  run.registers.m[3] = -1;
  go({.nominal = "10V", .tolerance = "M3U"});
  EXPECT_EQ(desk.message_numbers(), Numbers{2723});
}

// The unit under test reads a source: the operator types its reading, or judges it in a window.
TEST_F(Drivers, AUnitThatReadsASourceIsJudgedByTheOperator) {
  using namespace evaluation_answer;
  constexpr std::uint16_t judged = test_bit::go_no_go, wrong = test_bit::go_no_go | test_bit::failed,
                          typed = test_bit::indicated_text;
  struct Case {
    std::uint32_t options;
    std::vector<test::Reply> replies;
    std::size_t buttons;  // of the window of judgement; 0 without one
    const char* limits;
    std::uint16_t state;
    double mem1;
    bool adjusted = false;
  };
  const Case cases[] = {
      {ask_option::K, {{answer::ok, "4.9"}}, 0, "", typed, 4.9},
      {ask_option::G, {{pass, ""}}, 3, "", judged, 1},
      {ask_option::G, {{fail, ""}}, 3, "", wrong, -1},
      {ask_option::B, {{reading, ""}, {answer::ok, "5,1"}}, 4, "", typed, 5.1},
      {ask_option::G | ask_option::N, {{answer::ok, ""}, {pass, ""}}, 3, "from 4.9 V to 5.2 V", judged, 1},
      {ask_option::G | ask_option::N,
       {{answer::ok, ""}, {pass, ""}},
       3,
       "from 4.95 V to 5.1 V",
       judged,
       1,
       true},
      {ask_option::B, {{as_it_stands, ""}}, 4, "", 0, 5},
  };
  for (const Case& c : cases) {
    FscRecord record = record_of({.code = fsc::i33120, .nominal = "5V", .tolerance = "+2% +0.1U -2%"});
    if (c.adjusted)
      record.set(field::line_flags,
                 static_cast<std::uint16_t>(record.line_flags() | line_flag::adjust_follows));
    run.options = c.options;
    run.adjust_threshold = 50;
    run.registers.mem1() = 7;
    run.mess_lines = {"Look at the dial."};
    run.test = TestValues();
    run.test.test_state = test_bit::failed | test_bit::indicated_text;
    desk.replies.assign(c.replies.begin(), c.replies.end());
    if (c.buttons == 0)
      desk.replies.push_front({answer::ok, ""});  // the lines of MESS in the window "Test Setup"
    desk.shown.clear();
    Statement statement{run, record};
    ASSERT_TRUE(driver_of_statement(fsc::i33120)->run(statement)) << desk.last_message();
    EXPECT_EQ(run.test.test_state & (judged | wrong | typed), c.state);
    EXPECT_EQ(run.registers.mem1(), c.mem1);
    EXPECT_EQ(run.test.actual, 5);
    std::string all;
    std::size_t buttons = 0;
    for (const test::Shown& one : desk.shown) {
      if (one.title == "Test Evaluation") {
        buttons = one.buttons.size();
        EXPECT_EQ(one.lines[0], "Look at the dial.");
      }
      for (const std::string& line : one.lines) all += line + "|";
    }
    EXPECT_EQ(buttons, c.buttons);
    EXPECT_NE(all.find(c.limits), std::string::npos) << all;
    EXPECT_TRUE(run.mess_lines.empty());
  }
  // Terminate leaves the statement without a verdict.
  run.options = ask_option::G;
  desk.replies.assign({{answer::terminate, ""}});
  FscRecord record = record_of({.code = fsc::i33120, .nominal = "5V", .tolerance = "1%"});
  run.test = TestValues();
  Statement statement{run, record};
  EXPECT_TRUE(driver_of_statement(fsc::i33120)->run(statement));
  EXPECT_TRUE(run.has(run_flag::skip_test));
  EXPECT_EQ(run.test.test_state, 0);
}

TEST_F(Drivers, WhatGoesWrongWithAReadingHasItsNumber) {
  struct Case {
    std::uint16_t code;
    const char *command, *reply;
    Numbers messages;
  };
  for (const Case& c : std::vector<Case>{{fsc::i3458, "TRIG SGL", "!", {2746, 2664}},
                                         {fsc::i3458, "TRIG SGL", "", {2664}},
                                         {fsc::i3458, "TRIG SGL", "12.x", {30951}},
                                         {fsc::i3458, "TRIG SGL", "1E+38", {2666}},
                                         {fsc::i3458, "ERR?", "!", {2746, 2668}},
                                         {fsc::i3458, "ERR?", "8", {2634}},
                                         {fsc::i3458, "ERR?", "2064", {2635, 2642}},
                                         {fsc::i34401, "READ?", "!", {2746, 3566}},
                                         {fsc::i34401, "READ?", "OVLD", {30951}},
                                         {fsc::i34401, "READ?", "-9.9E+37", {30971}},
                                         {fsc::i34401, "*ESR?", "32", {30956}},
                                         {fsc::i34401, "*ESR?", "junk", {30951}}}) {
    const std::string before = replies[c.command];
    replies[c.command] = c.reply;
    run.test.actual = -7;
    go({.code = c.code, .nominal = "10V"});
    EXPECT_FALSE(passed) << c.command << c.reply;
    EXPECT_EQ(desk.message_numbers(), c.messages) << c.command << c.reply;
    EXPECT_EQ(run.test.actual, -7) << "a failed reading leaves no result";
    replies[c.command] = before;
  }
  replies["ERR?"] = "1";
  replies["AUXERR?"] = "513";
  go({.nominal = "10V"});
  EXPECT_EQ(desk.message_numbers(), (Numbers{2646, 2655}));

  replies["*ESR?"] = "4";
  replies[":SYST:ERR?"] = "-410,\"Query INTERRUPTED\"";
  go({.code = fsc::i2000, .nominal = "10V"});
  EXPECT_EQ(desk.message_numbers(), Numbers(5, 30955)) << "at most five entries of the queue";
}

TEST_F(Drivers, ASilentInstrumentAndAnOperatorsStopEndTheWait) {
  script.status_byte = 0;
  go({.nominal = "10V"});
  EXPECT_EQ(desk.message_numbers(), Numbers{2671});
  EXPECT_NEAR(static_cast<double>(clock.slept), 100000, 200);
  go({.code = fsc::i34401, .nominal = "10V"});
  EXPECT_EQ(desk.message_numbers(), Numbers{30959});

  for (const std::uint16_t code : {fsc::i3458, fsc::i34401}) {
    desk.press_abort_in_wait = true;
    go({.code = code, .nominal = "10V"});
    EXPECT_FALSE(passed);
    EXPECT_TRUE(desk.message_numbers().empty()) << desk.last_message();
    EXPECT_TRUE(abort_requested());
    clear_abort();
  }
}

TEST_F(Drivers, PromptsAppearWithTheirLettersAndTerminateEndsTheStatement) {
  run.mess_lines = {"Short the input"};
  go({.nominal = "10V"});
  EXPECT_EQ(desk.of_kind("lines").size(), 1u);
  EXPECT_EQ(desk.of_kind("lines").front().lines, Lines{"Short the input"});
  go({.nominal = "10V"});
  EXPECT_TRUE(desk.of_kind("lines").empty()) << "the lines are shown once";

  run.options = ask_option::N;
  desk.reply(answer::terminate);
  go({.nominal = "10V"});
  EXPECT_TRUE(passed && run.has(run_flag::skip_test));
  EXPECT_EQ(desk.of_kind("lines").front().title, "Test Setup");
  EXPECT_EQ(sent().size(), 2u) << "set up, not measured";

  run.options = ask_option::W;
  desk.reply(answer::terminate);
  go({.nominal = "10A", .con = "2W"});
  EXPECT_EQ(desk.message_numbers(), Numbers{30952}) << "the check comes before the leads";
  desk.replies.clear();
  desk.reply(answer::terminate);
  go({.nominal = "1A"});
  EXPECT_TRUE(passed && run.has(run_flag::skip_test));
  EXPECT_TRUE(sent().empty());
}

TEST_F(Drivers, TheSampleLoopSetsUpOnceWhenItOnlyMeasures) {
  for (const bool measure_only : {true, false}) {
    int set_up = 0, readings = 0;
    for (int pass = 1; pass <= 5; ++pass) {
      run.samples = {.count = 5, .pass = pass, .measure_only = measure_only};
      for (const std::string& text : go({.nominal = "10V"})) {
        set_up += text.starts_with("RQS") ? 1 : 0;
        readings += text == "TRIG SGL" ? 1 : 0;
      }
    }
    EXPECT_EQ(set_up, measure_only ? 1 : 5);
    EXPECT_EQ(readings, 5);
  }
}

TEST_F(Drivers, LiveValuesStayUntilTheOperatorIsDone) {
  run.uut_settings = {{"Range", "10 V"}};
  desk.live_values = 3;
  go({.nominal = "10V", .mod4 = "S"});
  ASSERT_TRUE(passed) << desk.last_message();
  const test::Shown window = desk.of_kind("live").front();
  EXPECT_EQ(window.title, "UUT Setup");
  EXPECT_EQ(window.lines.front(), "Range : 10 V");
  EXPECT_EQ(window.lines.back(), "10.001 V");
  EXPECT_EQ(window.lines.size(), 2 + 3u);
  EXPECT_DOUBLE_EQ(run.test.actual, 10.001);

  run.test.actual = 0;
  desk.reply(answer::terminate);
  go({.nominal = "10V", .mod4 = "S"});
  EXPECT_TRUE(passed && run.has(run_flag::skip_test));
  EXPECT_EQ(run.test.actual, 0);
}

TEST_F(Drivers, ADemonstrationAsksForTheValueInThePrefixOfTheNominal) {
  run.demo_mode = true;
  set_device_list(std::nullopt);
  desk.reply(answer::ok, "abc");
  desk.reply(answer::ok);
  desk.reply(answer::ok, "9,5");
  go({.nominal = "10mV"});
  EXPECT_TRUE(passed);
  EXPECT_EQ(desk.message_numbers(), (Numbers{10336, 10336}));
  EXPECT_EQ(run.test.actual, 9.5);
  EXPECT_TRUE(script.calls.empty());
  desk.reply(answer::terminate);
  go({.code = fsc::i34401, .nominal = "10V"});
  EXPECT_TRUE(passed && run.has(run_flag::skip_test));
}

TEST_F(Drivers, ASourceAsksWhatTheUnitReads) {
  desk.reply(answer::ok, "0.998");
  go({.code = fsc::i33120, .nominal = "1V", .mod1 = "1kH"});
  EXPECT_TRUE(passed);
  EXPECT_EQ(run.test.indicated, 0.998);
  EXPECT_EQ(run.test.indicated_text, "0.998");
  EXPECT_EQ(run.test.actual, 1);
  EXPECT_TRUE((run.test.test_state & test_bit::indicated_text) != 0);
  go({.code = fsc::i33120, .nominal = "2V", .mod1 = "1kH", .mod4 = "N"});
  EXPECT_EQ(run.registers.mem, 2);
  EXPECT_TRUE(desk.shown.empty());
}

TEST_F(Drivers, AModifierStaysUntilItIsCleared) {
  run.registers.mem = 100;
  modify(1, modifier(fsc::m3458, "V", 1));
  run.registers.mem = 0;
  EXPECT_NE(go({.nominal = "10V"}).front().find("DCV 100;NPLC"), std::string::npos);
  go({.nominal = "130V"});
  EXPECT_EQ(desk.message_numbers(), Numbers{30952}) << "beyond the locked range";
  EXPECT_NE(go({.nominal = "10Z"}).front().find("OHM 10;ARANGE ON"), std::string::npos);
  modify(1, modifier(fsc::m3458, "*", 0));
  EXPECT_NE(go({.nominal = "10V"}).front().find("DCV 10;ARANGE ON"), std::string::npos);

  modify(91, modifier(fsc::m33120, "0.5V", 0));
  EXPECT_TRUE(go({.code = fsc::i33120, .nominal = "1V", .mod1 = "1kH", .mod4 = "N"})
                  .front()
                  .ends_with(":VOLT:OFFS 0.5"));
  modify(91, modifier(fsc::m33120, "9V", 0));
  go({.code = fsc::i33120, .nominal = "1V", .mod1 = "1kH", .mod4 = "N"});
  EXPECT_EQ(desk.message_numbers(), Numbers{30952});
  const FscRecord modulation = modifier(fsc::m33120, "1V", 1);
  Statement statement{run, modulation};
  EXPECT_FALSE(driver_of(91)->store_modifier(statement));
}

TEST_F(Drivers, ResetAndIdentificationOfEveryModel) {
  const std::map<int, std::string> identities = {{35, "KEITHLEY INSTRUMENTS INC.,MODEL 2000,123,A1"},
                                                 {36, "KEITHLEY INSTRUMENTS INC.,MODEL 2001,123,A1"},
                                                 {37, "KEITHLEY INSTRUMENTS INC.,MODEL 2002,123,A1"},
                                                 {38, "HEWLETT-PACKARD,34401A,0,1"},
                                                 {39, "HEWLETT-PACKARD,34420A,0,1"},
                                                 {91, "HEWLETT-PACKARD,33120A,0,1"}};
  const DevAddress address = test::device(0, bus_address);
  for (const DriverRow& row : all_drivers()) {
    const bool hp = row.code == 1;
    const std::string query = hp ? "END ALWAYS;ID?" : "*IDN?";
    replies[query] = hp ? "HP3458A\r\n" : identities.at(row.code);
    DeviceIdentity identity;
    EXPECT_TRUE(dev_identify(run, row.code, address, identity)) << desk.last_message();
    desk.shown.clear();
    for (const char* wrong : {"HP3457A", "HEWLETT-PACKARD,34401A", "X,Y,1,2"}) {
      replies[query] = wrong;
      EXPECT_FALSE(dev_identify(run, row.code, address, identity));
      EXPECT_EQ(desk.message_numbers(), Numbers{30954}) << wrong;
      desk.shown.clear();
    }
    script.calls.clear();
    run.set(run_flag::stop_test);  // also in a run that stops
    EXPECT_TRUE(dev_reset(run, row.code, address)) << row.code << desk.last_message();
    const std::string start = row.code == 91 ? ";:VOLT:OFFS 0;:VOLT:UNIT VPP;:VOLT 0.05" : "";
    EXPECT_EQ(sent().front(),
              hp ? "PRESET NORM;DCV 1000;RQS 32;END ALWAYS;TRIG AUTO" : "*RST;*CLS;*SRE 32;*ESE 60" + start);
    run.clear(run_flag::stop_test);
    go({.code = row.statement, .nominal = "*", .tolerance = "M9U"});
    EXPECT_TRUE(passed && desk.shown.empty());
  }
}

TEST_F(Drivers, AServiceRequestIsReadOutAndReported) {
  const DevAddress address = test::device(0, bus_address);
  replies["ERR?"] = "256";
  EXPECT_TRUE(dev_srq(run, 1, address, 0x60));
  EXPECT_EQ(desk.message_numbers(), Numbers{2639});
  EXPECT_EQ(sent(), (Lines{"ERR?", "PRESET NORM;DCV 1000;RQS 32;END ALWAYS;TRIG HOLD"}));
  desk.shown.clear();
  EXPECT_TRUE(dev_srq(run, 38, address, 0x60));
  EXPECT_EQ(desk.message_numbers(), Numbers{30958});
}

TEST_F(Drivers, OnlyThePortsOfTheWorkstationReachAScpiModel) {
  DeviceList list;
  InstrumentRecord meter;
  meter.code = 35;
  meter.address = test::serial_device(17);
  list.instruments.push_back(meter);
  set_device_list(list);
  go({.code = fsc::i2000, .nominal = "1V"});
  EXPECT_EQ(desk.message_numbers(), Numbers{359});
}

TEST_F(Drivers, TheSerialNumberIsComparedByItsKey) {
  struct Case {
    int key;
    const char *told, *stored;
    int answer;
    bool taken;
    Numbers messages;
    std::size_t questions;
  };
  for (const Case& c : std::vector<Case>{{0, "1", "2", 0, true, {}, 0},
                                         {1, "1", "1", 0, true, {}, 0},
                                         {1, "1", "2", 0, false, {7725}, 0},
                                         {2, "1", "2", answer::yes, true, {}, 1},
                                         {2, "1", "2", answer::no, false, {}, 1},
                                         {1, "1", "", answer::yes, true, {}, 1},
                                         {1, "0", "2", answer::no, false, {}, 1}}) {
    startup_config().SerialNumberCheck = static_cast<std::int16_t>(c.key);
    desk.shown.clear();
    desk.replies.clear();
    desk.reply(c.answer);
    const DeviceIdentity identity{.maker = {}, .model = {}, .serial = c.told, .firmware = {}};
    EXPECT_EQ(serial_number_check(run, 38, identity, c.stored), c.taken);
    EXPECT_EQ(desk.message_numbers(), c.messages);
    EXPECT_EQ(desk.of_kind("lines").size(), c.questions);
  }
}

}  // namespace
}  // namespace orvane
