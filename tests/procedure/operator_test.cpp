#include "procedure/operator/statements.h"

#include "messages/catalogue.h"
#include "procedure/operator/lines.h"
#include "procedure/pipeline/run_test.h"
#include "support/procedures.h"

namespace orvane {
namespace {

class OperatorStatements : public test::RunTest {};

TEST(AskLetters, FollowEachOther) {
  using namespace ask_option;
  struct Case {
    bool plus;
    std::uint32_t before, letters, after;
  };
  const Case cases[] = {
      {true, F, A, A | Q},  {true, 0, F, A},  // kept: as with A
      {true, G | K, B, B},  {true, B | K, G, G},      {true, B | G, K, K},
      {true, G, B | K, 0},  // kept: two of them in one statement put each other out
      {true, 0, R, R | Q},  {true, 0, W, W | Q | V},  {true, 0, V, V | W},
      {true, 0, Z, Z},      {false, A | F, A, 0},     {false, A, F, F},
      {false, G, B, 0},     {false, W | Q, W, Q | V},  // kept: V goes on
      {false, V | W, V, 0}, {false, R | Q, R, Q},
  };
  int number = 0;
  for (const Case& c : cases) {
    EXPECT_EQ(c.plus ? ask_plus(c.before, c.letters) : ask_minus(c.before, c.letters), c.after)
        << "case " << number;
    ++number;
  }
}

TEST(WrapLines, BreaksAtBlanks) {
  EXPECT_EQ(wrap_lines("", 5), std::vector<std::string>{""});
  EXPECT_EQ(wrap_lines("12345", 5), std::vector<std::string>{"12345"});
  EXPECT_EQ(wrap_lines("12345 789", 5), (std::vector<std::string>{"12345", "789"}));
  EXPECT_EQ(wrap_lines("ab cd ef", 5), (std::vector<std::string>{"ab cd", "ef"}));
  EXPECT_EQ(wrap_lines("1234567", 5), (std::vector<std::string>{"12345", "67"}));
  EXPECT_EQ(wrap_lines("a\n\nb", 5), (std::vector<std::string>{"a", "", "b"}));
}

TEST(WaitTime, TakesSecondsMinutesAndHours) {
  struct Case {
    const char* text;
    std::optional<std::uint32_t> milliseconds;
  };
  const Case cases[] = {{"5", 5000},     {"0.25", 250},
                        {"1:30", 90000}, {"1:00:00.5", 3600500},
                        {"0", 0},        {"4294967", 4294967000},
                        {"4294968", {}}, {"-1", {}},
                        {"", {}},        {"1:", {}},
                        {"1.5:00", {}},  {"1:2:3:4", {}},
                        {"5s", {}},      {"1e400", {}}};
  for (const Case& c : cases) EXPECT_EQ(wait_time(c.text), c.milliseconds) << c.text;
}

TEST_F(OperatorStatements, ADisplayOfSeveralRecordsIsOneWindow) {
  source(test::header("Disp") + line(1, 1, "MATH", "M[1]=2.5") + "\n" + line(1, 2, "DISP", "Set [M1] V.") +
         "\n" + line(1, 2, "DISP", std::string(40, 'a') + " " + std::string(14, 'b')) + "\n" +
         line(1, 3, "DISP", "Next.") + "\n" + line(1, 4, "END", "") + "\n");
  EXPECT_EQ(go("Disp"), run_result::finished);
  const auto windows = desk.of_kind("lines");
  ASSERT_EQ(windows.size(), 2u);
  EXPECT_EQ(windows[0].title, msg(689));
  EXPECT_EQ(windows[0].lines,
            (std::vector<std::string>{"Set 2.5 V.", std::string(40, 'a') + " " + std::string(14, 'b')}));
  EXPECT_EQ(windows[0].buttons[0].code, answer::ok);
  EXPECT_EQ(windows[0].buttons[1].code, answer::terminate);
  EXPECT_EQ(windows[1].lines, std::vector<std::string>{"Next."});
}

TEST_F(OperatorStatements, TerminateInAWindowOpensTheStopDialog) {
  procedure("Stop", {"DISP hello", "MATH M[1]=1", "END"});
  desk.reply(answer::terminate);
  EXPECT_EQ(go("Stop"), run_result::finished);
  const auto stops = desk.of_kind("test");
  ASSERT_EQ(stops.size(), 1u);
  EXPECT_EQ(stops[0].test.status_text, msg(5022, "DISP"));
  EXPECT_EQ(m(1), 1);
}

TEST_F(OperatorStatements, DecisionsSetTheSecondRegister) {
  struct Case {
    const char* text;
    int answer;
    double mem1;
  };
  for (const Case& c :
       {Case{"Ready?", answer::yes, 1}, Case{"Ready?", answer::no, -1}, Case{"-z Ready?", answer::yes, 1},
        Case{"-z Ready?", answer::no, 0}, Case{"-zero?", answer::no, -1}}) {
    desk.shown.clear();
    procedure("Ask", {std::string("OPBR ") + c.text, "MATH M[1]=MEM1", "END"});
    desk.reply(c.answer);
    EXPECT_EQ(go("Ask"), run_result::finished);
    EXPECT_EQ(m(1), c.mem1) << c.text << c.answer;
    const auto windows = desk.of_kind("lines");
    ASSERT_EQ(windows.size(), 1u);
    EXPECT_EQ(windows[0].title, "Test Decision");
    EXPECT_EQ(windows[0].lines[0], std::string(c.text).starts_with("-z ") ? "Ready?" : c.text);
  }
}

TEST_F(OperatorStatements, NumbersAreAskedUntilOneIsComplete) {
  procedure("Number", {"MEMI Reading in [13] V?", "END"});
  desk.reply(answer::ok, "12abc");
  desk.reply(answer::ok, "");
  desk.reply(answer::ok, "  1,5 ");
  EXPECT_EQ(go("Number"), run_result::finished);
  EXPECT_EQ(mem(), 1.5);
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{10336, 10336}));
  EXPECT_EQ(desk.of_kind("ask")[0].title, "Operator Prompt");

  procedure("Cancelled", {"MATH MEM=3", "MEMI Reading?", "END"});
  desk.reply(answer::terminate);
  EXPECT_EQ(go("Cancelled"), run_result::finished);
  EXPECT_EQ(mem(), 3);
}

TEST_F(OperatorStatements, TheTextRegisterIsAskedOrAssigned) {
  procedure("Text", {"MEM2 =abc", "END"});
  EXPECT_EQ(go("Text"), run_result::finished);
  EXPECT_EQ(run.registers.mem2, "abc");
  EXPECT_TRUE(desk.of_kind("ask").empty());

  source(test::header("Two") + line(1, 1, "MEM2", "=ab") + "\n" + line(1, 1, "MEM2", "cd") + "\n" +
         line(1, 2, "END", "") + "\n");
  EXPECT_EQ(go("Two"), run_result::finished);
  EXPECT_EQ(run.registers.mem2, "abcd");

  procedure("Asked", {"MEM2 Serial number?", "END"});
  desk.reply(answer::ok, "  SN 1  ");
  EXPECT_EQ(go("Asked"), run_result::finished);
  EXPECT_EQ(run.registers.mem2, "SN 1");
}

TEST_F(OperatorStatements, AJumpIntoAStatementOfSeveralRecordsIsTold) {
  // The second record of MEMI is reached without its first one.
  source(test::header("Jump") + line(1, 1, "JMP", "2.001") + "\n" + line(1, 2, "MEMI", "a") + "\n" +
         line(2, 1, "END", "") + "\n");
  EXPECT_EQ(go("Jump"), run_result::finished);
  EXPECT_TRUE(desk.of_kind("ask").empty());
}

TEST_F(OperatorStatements, HeadingsAndMessageLines) {
  procedure("Head", {"HEAD DC volts", "MESS first", "MESS", "MESS second {kept}", "HEAD", "END"});
  EXPECT_EQ(go("Head"), run_result::finished);
  std::vector<std::string> headings;
  for (const auto& [row, text] : desk.status_rows) {
    if (row == status_row::heading) headings.push_back(text);
  }
  EXPECT_EQ(headings, (std::vector<std::string>{"DC volts", "", ""}));  // the last one as the run ends
  EXPECT_EQ(run.mess_lines, std::vector<std::string>{"second "});
}

TEST_F(OperatorStatements, WaitsCountDownAndEndOnTime) {
  procedure("Wait", {"WAIT -t 2.6 warming up", "END"});
  clock.milliseconds = 0xFFFFFFFF - 700;  // the tick counter wraps in the middle
  EXPECT_EQ(go("Wait"), run_result::finished);
  EXPECT_EQ(clock.slept, 2600u);
  const auto windows = desk.of_kind("wait");
  ASSERT_FALSE(windows.empty());
  EXPECT_EQ(windows.back().lines, (std::vector<std::string>{"warming up\n00:00:03", "warming up\n00:00:02",
                                                            "warming up\n00:00:01"}));
}

TEST_F(OperatorStatements, AbortEndsAWait) {
  procedure("Wait", {"WAIT -t 3600", "MATH M[1]=1", "END"});
  desk.press_abort_in_wait = false;
  clock.slept = 0;
  // The load's own window comes first; press the button of the statement's.
  struct Pressing : test::Desk {
    std::unique_ptr<WaitWindow> wait(const WaitText& text) override {
      press_abort_in_wait = text.abort_button;
      return Desk::wait(text);
    }
  } pressing;
  platform().desk = &pressing;
  EXPECT_EQ(go("Wait"), run_result::finished);
  EXPECT_EQ(clock.slept, 0u);
  EXPECT_EQ(pressing.of_kind("test").size(), 1u);
  EXPECT_EQ(m(1), 1);
}

TEST_F(OperatorStatements, AWaitThatIsNoTimeIsReported) {
  procedure("Wait", {"WAIT -t soon", "WAIT ready", "END"});
  EXPECT_EQ(go("Wait"), run_result::finished);
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{4482, 2517}));
}

}  // namespace
}  // namespace orvane
