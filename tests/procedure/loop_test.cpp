#include "procedure/run/loop.h"

#include "config/startup_config.h"
#include "messages/catalogue.h"
#include "procedure/pipeline/run_test.h"
#include "state/debug.h"
#include "state/pump.h"
#include "state/run_variables.h"
#include "support/procedures.h"

namespace orvane {
namespace {

using test::RunTest;
using test::Shown;

// The operator's decisions at a test, and the order of what happens around a statement. A comparison statement of
// 10 V within 1 % is passed by MEM of 10.05 (50 %) and failed by 10.2 (200 %).
class Loop : public RunTest {
 protected:
  Loop() {
    startup_config().ask_x_default = 1;
    startup_config().ask_z_default = 1;
  }

  static std::string memc(int test, int step) {
    std::string out = line(test, step, "", "");
    out.resize(9, ' ');
    out += "MEMC";
    out.resize(22, ' ');
    out += "10.00V";
    out.resize(37, ' ');
    return out + "1%";
  }

  void lines(const std::string& name, const std::vector<std::string>& body) {
    std::string text = test::header(name);
    for (const std::string& one : body) text += one + "\n";
    source(text);
  }
};

std::vector<int> codes(const Shown& shown) {
  std::vector<int> out;
  for (const Button& button : shown.buttons) out.push_back(button.code);
  return out;
}

TEST_F(Loop, HeaderLinesOnlyWriteEnterAndLeave) {
  lines("Empty", {});
  EXPECT_EQ(go("Empty"), run_result::finished);
  EXPECT_EQ(contents((folder / "rslt.tmp").string()),
            "0000.000 C           1 ENTER Empty\n"
            "0000.000 L             LEAVE Empty\n");
}

TEST_F(Loop, EveryTestIsShownWithOptionA) {
  lines("Shown", {line(1, 1, "MATH", "MEM=10.05"), memc(1, 2), line(1, 3, "END", "")});
  EXPECT_EQ(go("Shown"), run_result::finished);
  const auto windows = desk.of_kind("test");
  ASSERT_EQ(windows.size(), 1u);
  EXPECT_EQ(windows[0].test.form, "pt_Result");
  EXPECT_EQ(windows[0].test.status_text, "PASS");
  EXPECT_EQ(codes(windows[0]),
            (std::vector<int>{answer::test_continue, answer::test_repeat, answer::test_cancel,
                              answer::test_comment, answer::test_list, answer::test_term}));
  ASSERT_EQ(desk.results.size(), 1u);
  EXPECT_EQ(desk.results[0].status_text, "PASS");
  EXPECT_EQ(desk.results[0].colour, result_colour::pass);
  EXPECT_EQ(overall_result(run).tests, 1u);
  EXPECT_EQ(overall_result(run).failed, 0u);
}

TEST_F(Loop, OnlyFailingTestsAreShownAfterAskMinusF) {
  std::string ask = line(1, 1, "ASK-", "");
  ask.resize(66, ' ');
  lines("Failures", {ask + "F", line(1, 2, "MATH", "MEM=10.05"), memc(1, 3), line(2, 1, "MATH", "MEM=10.15"),
                     memc(2, 2), line(3, 1, "END", "")});
  EXPECT_EQ(go("Failures"), run_result::finished);
  const auto windows = desk.of_kind("test");
  ASSERT_EQ(windows.size(), 1u);
  EXPECT_EQ(windows[0].test.status_text, "FAIL");
  EXPECT_EQ(desk.results.size(), 2u);
  EXPECT_EQ(overall_result(run).tests, 2u);
  EXPECT_EQ(overall_result(run).failed, 1u);
}

TEST_F(Loop, RepeatGoesBackToTheFirstLineOfTheTest) {
  std::string ask = line(1, 1, "ASK-", "");
  ask.resize(37, ' ');
  lines("Repeat",
        {ask + "P", line(2, 1, "MATH", "M[1]=M[1]+1; MEM=10.2-M[1]*0.1"), memc(2, 2), line(3, 1, "END", "")});
  desk.reply(answer::test_repeat);
  EXPECT_EQ(go("Repeat"), run_result::finished);
  EXPECT_EQ(m(1), 2);
  EXPECT_EQ(overall_result(run).tests, 1u);
  EXPECT_EQ(overall_result(run).failed, 0u);  // the last run of a test counts
}

TEST_F(Loop, RepeatWithOptionPRunsTheStatementAlone) {
  lines("Alone", {line(1, 1, "MATH", "M[1]=M[1]+1; MEM=10"), memc(1, 2), line(2, 1, "END", "")});
  desk.reply(answer::test_repeat);
  EXPECT_EQ(go("Alone"), run_result::finished);
  EXPECT_EQ(m(1), 1);
  EXPECT_EQ(desk.results.size(), 2u);
}

TEST_F(Loop, RepeatStopsAtATargetWithP) {
  std::string ask = line(1, 1, "ASK-", "");
  ask.resize(37, ' ');
  lines("Target", {ask + "P", line(2, 1, "MATH", "M[1]=M[1]+1"), line(2, 2, "TARGET", "-p"),
                   line(2, 3, "MATH", "M[2]=M[2]+1; MEM=10"), memc(2, 4), line(3, 1, "END", "")});
  desk.reply(answer::test_repeat);
  EXPECT_EQ(go("Target"), run_result::finished);
  EXPECT_EQ(m(1), 1);
  EXPECT_EQ(m(2), 2);
}

TEST_F(Loop, CancelTakesTheResultBackAndRepeats) {
  lines("Cancel", {line(1, 1, "MATH", "MEM=10.2"), memc(1, 2), line(2, 1, "END", "")});
  desk.reply(answer::test_cancel);
  EXPECT_EQ(go("Cancel"), run_result::finished);
  EXPECT_EQ(desk.results.size(), 2u);
  EXPECT_EQ(run.results.records.size(), 1u);
  EXPECT_NE(contents((folder / "rslt.tmp").string()).find("0001.002 c "), std::string::npos);
}

TEST_F(Loop, ACommentGoesToTheLogAndTheDialogStays) {
  lines("Comment", {line(1, 1, "MATH", "MEM=10"), memc(1, 2), line(2, 1, "END", "")});
  desk.reply(answer::test_comment);
  desk.reply(answer::ok, "leads replaced, and this is too long for it");
  desk.reply(answer::test_continue);
  EXPECT_EQ(go("Comment"), run_result::finished);
  EXPECT_EQ(desk.of_kind("test").size(), 2u);
  EXPECT_NE(
      contents((folder / "rslt.tmp").string()).find("0001.002 K         leads replaced, and this is too \n"),
      std::string::npos);
}

TEST_F(Loop, AChosenLineOfTheListingRunsNext) {
  lines("List", {line(1, 1, "MATH", "MEM=10"), memc(1, 2), line(2, 1, "MATH", "M[1]=1"),
                 line(2, 2, "MATH", "M[2]=1"), line(3, 1, "END", "")});
  desk.reply(answer::test_list);
  desk.reply(answer::terminate);  // leaves the listing, the dialog waits again
  desk.reply(answer::test_list);
  desk.reply(answer::ok, "", 13);
  EXPECT_EQ(go("List"), run_result::finished);
  const auto listings = desk.of_kind("choose");
  ASSERT_EQ(listings.size(), 2u);
  EXPECT_EQ(listings[0].lines[13], line(2, 2, "MATH", "M[2]=1"));
  EXPECT_EQ(m(1), 0);
  EXPECT_EQ(m(2), 1);
}

TEST_F(Loop, TheAdjustmentBlockRunsWhenItIsCalledFor) {
  // An adjustment line stands with its name in the column of the range.
  std::string adjust = line(1, 3, "", "");
  adjust.resize(16, ' ');
  adjust += "MATH";
  adjust.resize(22, ' ');
  adjust += "M[1]=1";
  std::string ask = line(1, 1, "ASK-", "");
  ask.resize(39, ' ');
  struct Case {
    const char* mem;
    bool option_j;
    int code;  // at the dialog
    bool runs;
  };
  const Case cases[] = {
      {"10.05", false, answer::test_continue, false},  // 50 %: below the threshold
      {"10.08", false, answer::test_continue, true},   // 80 %
      {"10.08", true, answer::test_continue, false},   // the operator decides
      {"10.08", true, answer::test_adjust, true},
  };
  int number = 0;
  for (const Case& c : cases) {
    const std::string name = "Adjust " + std::to_string(++number);
    lines(name, {c.option_j ? line(1, 1, "MATH", "MEM=0") : ask + "J",
                 line(1, 2, "MATH", std::string("MEM=") + c.mem), memc(1, 3), adjust, line(2, 1, "END", "")});
    desk.reply(c.code);
    EXPECT_EQ(go(name), run_result::finished);
    EXPECT_EQ(m(1), c.runs ? 1 : 0) << name;
    EXPECT_EQ(contents((folder / "rslt.tmp").string()).find("ADJUST PERFORMED") != std::string::npos, c.runs)
        << name;
    ASSERT_NE(run_variable(run, "NUM_ADJ$"), nullptr);
    EXPECT_EQ(*run_variable(run, "NUM_ADJ$"), c.runs ? "1" : "0") << name;
  }
}

TEST_F(Loop, AFloatingPointFaultLeavesTheStatementAndTheRegisters) {
  lines("Fault", {line(1, 1, "MATH", "M[1]=5; M[2]=exp(1000); M[3]=1"), line(1, 2, "MATH", "M[4]=1"),
                  line(1, 3, "END", "")});
  EXPECT_EQ(go("Fault"), run_result::finished);
  const auto windows = desk.of_kind("test");
  ASSERT_EQ(windows.size(), 1u);
  EXPECT_EQ(windows[0].test.status_text, msg(5026, "MATH"));
  EXPECT_EQ(m(1), 5);
  EXPECT_EQ(m(2), 0);
  EXPECT_EQ(m(3), 0);
  EXPECT_EQ(m(4), 1);
}

TEST_F(Loop, AResultThatIsNoNumberIsNeverADecision) {
  // 1E308 against -1E308 overflows on its way to a percent of tolerance.
  std::string memc_line = line(1, 2, "MEMC", "-1e308V");
  memc_line.resize(37, ' ');
  lines("Overflow", {line(1, 1, "MATH", "MEM=1e308"), memc_line + "1U", line(2, 1, "MATH", "M[1]=1"),
                     line(3, 1, "END", "")});
  EXPECT_EQ(go("Overflow"), run_result::failed);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{4703});
  EXPECT_TRUE(desk.results.empty());
  EXPECT_EQ(m(1), 0);
}

TEST_F(Loop, AnAbortEndsTheRunOrAsksTheOperator) {
  for (const bool option_t : {false, true}) {
    std::string ask = line(1, 1, "ASK-", "");
    ask.resize(72, ' ');
    const std::string name = option_t ? "Asks" : "Ends";
    lines(name, {option_t ? line(1, 1, "MATH", "MEM=10") : ask + "T", memc(1, 2),
                 line(2, 1, "MATH", "M[1]=1"), line(3, 1, "END", "")});
    desk.shown.clear();
    run.abort_at = {2};
    EXPECT_EQ(go(name), run_result::finished);
    EXPECT_EQ(run.has(run_flag::terminate), !option_t);
    const auto windows = desk.of_kind("test");
    ASSERT_EQ(windows.size(), option_t ? 1u : 0u);
    if (option_t) {
      EXPECT_EQ(windows[0].test.form, "pt_Terminate");
    }
    EXPECT_TRUE(desk.results.empty()) << "the statement is not evaluated";
    EXPECT_EQ(m(1), option_t ? 1 : 0);
    EXPECT_FALSE(abort_requested());
  }
}

TEST_F(Loop, TheTraceShowsEveryStatement) {
  lines("Trace", {line(1, 1, "MATH", "M[1]=1"), line(1, 2, "END", "")});
  ASSERT_TRUE(debug_letters("r"));
  ASSERT_TRUE(debug_log_open(folder.string()));
  EXPECT_EQ(go("Trace"), run_result::finished);
  debug_log_close();
  const std::string log = contents((folder / "ovdebug.txt").string());
  EXPECT_NE(log.find("run : " + line(1, 1, "MATH", "M[1]=1") + "\n"), std::string::npos) << log;
}

TEST_F(Loop, ADeskThatFailsEveryWindowStillComesToTheEnd) {
  lines("Failing", {line(1, 1, "WHILE", "M[1] < 3"), line(1, 2, "MATH", "M[1]=M[1]+1"),
                    line(1, 3, "DISP", "hello"), line(1, 4, "ENDW", ""), line(1, 5, "END", "")});
  platform().desk = nullptr;
  EXPECT_EQ(go("Failing"), run_result::failed);
}

}  // namespace
}  // namespace orvane
