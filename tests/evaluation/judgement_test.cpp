// Statements that bring their outcome with them, and what the results window shows of each kind of test.
#include "evaluation/judgement.h"

#include "config/startup_config.h"
#include "evaluation/decision.h"
#include "evaluation/result_lines.h"
#include "support/desk.h"
#include "values/units.h"

namespace orvane {
namespace {

class Judgements : public test::EngineTest {
 protected:
  Judgements() {
    startup_config() = StartupConfig();
    startup_config().pass100 = 1;
    startup_config().oot_lim = 200;
    startup_config().ExtendedUnits = 0;
    run.adjust_threshold = 70;
    record.set(field::test_major, 7);
  }
  ~Judgements() override { startup_config() = StartupConfig(); }

  FscRecord record = fsc_record_new();
};

TEST_F(Judgements, WhenTheDialogAppearsAndAdjustmentIsCalledFor) {
  using namespace ask_option;
  struct Case {
    std::uint16_t code;
    bool failed;
    int program;
    double percent;
    bool dialog, adjust;
  };
  const Case cases[] = {
      {fsc::eval, false, 0, 0, false, false},
      {fsc::eval, true, 0, 0, true, true},
      {fsc::pice, false, 0, 0, false, false},
      {fsc::pice, true, 0, 0, true, true},
      {fsc::dose, false, program_status::pass, 0, false, false},
      {fsc::dose, true, program_status::fail, 0, true, true},
      {fsc::dose, false, program_status::none, 0, false, false},
      {fsc::dose, false, program_status::number, 70, false, false},
      {fsc::dose, false, program_status::number, -71, false,
       true},  // called for, though the dialog is for fails
      {fsc::dose, false, program_status::number, 100, false, true},
      {fsc::dose, false, program_status::number, -101, true, true},
      {fsc::dose, false, program_status::number, 300, true, true},
  };
  record.set(field::line_flags, line_flag::result | line_flag::last | line_flag::adjust_follows);
  for (const Case& c : cases) {
    record.set(field::code, c.code);
    run.test = TestValues();
    run.test.test_state = c.failed ? test_bit::failed : 0;
    run.test.program = c.program;
    run.test.program_percent = c.percent;
    const double percent = program_percent(run, record);
    EXPECT_GE(percent, 0);
    run.options = F | J;
    EXPECT_EQ(dialog_appears(run, record, percent), c.dialog) << c.code << " " << c.percent;
    EXPECT_EQ(calls_for_adjustment(run, record, percent), c.adjust) << c.code << " " << c.percent;
    run.options = J;
    EXPECT_FALSE(dialog_appears(run, record, percent));
    run.options = A;
    EXPECT_TRUE(dialog_appears(run, record, percent));
  }
}

TEST_F(Judgements, ARemarkStaysInItsColumns) {
  record.set(field::code, fsc::eval);
  run.test.remark = std::string(80, 'r') + "\tend";
  format_judgement(run, record, 0);
  EXPECT_EQ(run.decision.line1, "  7     " + std::string(52, 'r') + std::string(13, ' ') + "PASS  ");
  EXPECT_EQ(run.decision.remark, run.test.remark) << "whole for the window at the test";
}

TEST_F(Judgements, TheResultsWindowHasEveryColumn) {
  record.set(field::code, fsc::memc);
  ASSERT_TRUE(record.set_text(field::memc_nominal, "10.000V"));
  ASSERT_TRUE(record.set_text(field::memc_modifier, "1kHz"));
  record.set(field::memc_range, RangeField{.flags = 3, .digits = 0, .value = 20});
  struct Case {
    double indicated, actual, percent, shown;
    std::uint16_t state;
    const char* columns;
  };
  const Case cases[] = {
      {10, 10.001, 50, -50, 0, "  7\t20\t10V\t10.001V\t\t1kHz\t-100     ppm\t50"},
      {10, 9.999, 71.4, 71.4, test_bit::corrected, "  7\t20\t10V\t9.999V\tc\t1kHz\t 100     ppm\t71"},
      {10, 11, 501, -500, 0, "  7\t20\t10V\t11V\t\t1kHz\t -10.0   %\t>500"},
  };
  for (const Case& c : cases) {
    run.test = TestValues();
    run.test.indicated = c.indicated;
    run.test.actual = c.actual;
    run.test.test_state = c.state;
    format_result(run, record, c.percent, 10);
    const ResultLine line = board_line(run.decision);
    EXPECT_EQ(line.columns, c.columns);
    EXPECT_EQ(line.percent, c.shown);
  }

  run.test = TestValues();
  run.test.test_state = test_bit::go_no_go | test_bit::failed;
  format_result(run, record, 0, 10);
  ResultLine line = board_line(run.decision);
  EXPECT_EQ(line.columns, "  7\t20\tOPER-EVAL\t0V\t\t1kHz\t\tFAIL");
  EXPECT_FALSE(line.percent.has_value());

  record = fsc_record_new();
  record.set(field::code, fsc::eval);
  record.set(field::test_major, 12);
  run.test = TestValues();
  run.test.remark = "Is\tit on?";
  format_result(run, record, 0, 0);
  line = board_line(run.decision);
  EXPECT_EQ(line.columns, " 12\t\tIs it on?\t\t\t\t\tPASS") << "a tab in a text parts no columns";
  EXPECT_FALSE(line.percent.has_value());
}

}  // namespace
}  // namespace orvane
