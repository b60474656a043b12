// ovrun at a pseudo-terminal, with an operator who types.
#include "system/laboratory.h"

namespace orvane::test {
namespace {

class Terminal : public LaboratoryTest {
 protected:
  static constexpr const char* prompt = "\n> ";

  void start(const std::string& name, bool coloured = true) {
    Command command = ovrun({"-run", name});
    if (!coloured) command.environment.emplace_back("NO_COLOR", "1");
    process = std::make_unique<Process>(command, Process::Streams::terminal);
  }
  // What is typed once `shown` stands on the screen and the program waits.
  void when(const std::string& shown, const std::string& typed) {
    ASSERT_TRUE(process->wait_for(shown)) << shown << "\n" << process->out();
    ASSERT_TRUE(process->wait_for("> ")) << process->out();
    process->type(typed);
  }

  std::unique_ptr<Process> process;
};

TEST_F(Terminal, TheDemoIsAnsweredByLettersNumbersAndEnter) {
  demo();
  start(demo_procedure);
  when("Does the unit measure AC volts?", "y\n");
  for (const char* volts : {"0.300", "3.000", "30.00", "300.0", "-30.00"})
    when(std::string("shows ") + volts + " V DC.", volts[0] == '3' ? "1\n" : "\n");
  for (const char* volts : {"3.000", "30.00", "300.0"}) when(std::string("shows ") + volts + " V AC", "ok\n");
  when("--- Test result ---", "c\n");  // Continue, Cancel result and Comment begin so
  when("Please type the number or the first letters of a button.", "com\n");
  when("--- Comment ---", "1\n");  // no button: the text is taken whole
  when("?) why this verdict", "?\n");
  when("Verdict ", "cont\n");  // the window still waits
  for (const char* ohms : {"100.0 Ohm", "10.00 kOhm", "1.000 MOhm"}) when(std::string("the ") + ohms, "O\n");
  when("The verification is finished.", "\n");
  const Ended ended = process->wait();
  EXPECT_EQ(ended.status, 1);
  EXPECT_NE(ended.out.find("[1] Yes (Enter)   [2] No   [3] Terminate"), std::string::npos);
  EXPECT_NE(ended.out.find("Overall result: FAIL"), std::string::npos);
  EXPECT_NE(ended.out.find("Accuracy              hp3458a.acc, line 25, mode \"Volts\""), std::string::npos)
      << ended.out;
  EXPECT_NE(ended.out.find("\x1b[32m"), std::string::npos) << "a pass is green";
  EXPECT_NE(ended.out.find("\x1b[1;31m"), std::string::npos) << "a fail is red";
  EXPECT_NE(contents("work/rslt.tmp").find("0004.003 K         1\n"), std::string::npos);
}

TEST_F(Terminal, NothingIsColouredOrRedrawnWithNoColor) {
  procedure("waits", {source_line(1, 1, "ASK-", std::string(44, ' ') + "F"), source_line(1, 2, "MEME", "10"),
                      source_line(1, 3, "MEMC", "10.000V        1%"),
                      source_line(1, 4, "WAIT", "-t 1.2 Warming up"), source_line(1, 5, "END")});
  start("waits", false);
  const Ended plain = process->wait();
  EXPECT_EQ(plain.status, 0);
  EXPECT_EQ(plain.out.find('\x1b'), std::string::npos) << plain.out;
  EXPECT_NE(plain.out.find("Warming up"), std::string::npos);
  start("waits");
  const Ended live = process->wait();
  EXPECT_NE(live.out.find("\r\x1b[K00:00:01"), std::string::npos) << live.out;
  EXPECT_NE(live.out.find("Warming up"), std::string::npos);
}

TEST_F(Terminal, TypedTextIsTakenWholeAndWhatWasUnderstoodIsShown) {
  procedure("prompts", {source_line(1, 1, "MEMI", "First?"), source_line(1, 2, "DISP", "It is [MEM]."),
                        source_line(1, 3, "MEM2", "Second?"), source_line(1, 4, "DISP", "It is [MEM2]."),
                        source_line(1, 5, "END")});
  start("prompts");
  when("First?", "t\n");  // no shortcut for a button
  when("First?", "1,25\n");
  when("It is 1.25.", "\n");
  when("Second?", "OK \xC2\xB5\n");
  when("It is OK \xC2\xB5.", "\n");
  const Ended ended = process->wait();
  EXPECT_EQ(ended.status, 0) << ended.out;
  EXPECT_NE(ended.out.find("  = 1.25"), std::string::npos);
  EXPECT_NE(ended.out.find("E10336: \"t\""), std::string::npos);

  start("prompts");
  when("First?", "\x1b\n");
  when("given up by the operator", "term\n");
  EXPECT_EQ(process->wait().status, 2);
}

TEST_F(Terminal, EndOfInputAndCtrlCAreAbortAndNeverAnAnswer) {
  procedure("decides", {source_line(1, 1, "OPBR", "Is it good?"), source_line(1, 2, "IF", "MEM1 == 1"),
                        source_line(1, 3, "HEAD", "taken as yes"), source_line(1, 4, "ENDIF"),
                        source_line(1, 5, "IF", "MEM1 == 0-1"), source_line(1, 6, "HEAD", "taken as no"),
                        source_line(1, 7, "ENDIF"), source_line(1, 8, "END")});
  start("decides");
  when("Is it good?", "\x04");
  const Ended left = process->wait();
  EXPECT_EQ(left.status, 2);
  EXPECT_NE(left.out.find("End of input"), std::string::npos);
  EXPECT_EQ(left.out.find("taken as"), std::string::npos) << left.out;

  start("decides");
  when("Is it good?", "y\x03");  // what was typed before it is lost
  when("--- Test stopped ---", "continue\n");
  const Ended aborted = process->wait();
  EXPECT_EQ(aborted.status, 0);
  EXPECT_EQ(aborted.out.find("taken as"), std::string::npos) << aborted.out;
}

TEST_F(Terminal, AListIsBrowsedAndARowChosen) {
  std::vector<std::string> lines = {source_line(1, 1, "MEME", "20"),
                                    source_line(1, 2, "MEMC", "10.000V        1%")};
  for (int step = 3; step < 100; ++step) lines.push_back(source_line(1, step, "MATH", "M[1] = M[1] + 1"));
  lines.push_back(source_line(2, 1, "DISP", "Counted: [M1]."));
  lines.push_back(source_line(2, 2, "END"));
  procedure("long", lines);
  start("long");
  when("--- Test result ---", "list\n");
  when("(Esc and Enter)", "/ cOunted\n");
  ASSERT_TRUE(process->wait_for("  2.001  DISP         Counted: [M1]."));
  process->type("-\n");
  ASSERT_TRUE(process->wait_for("  1.080  MATH"));
  process->type("/nowhere\n");
  when("No row has this text.", "+\n109\n");
  when("Counted: 1.", "\n");  // row 109 is step 99: behind ten header lines
  EXPECT_EQ(process->wait().status, 1);
  for (const nlohmann::json& window : events("window")) {
    if (window["kind"] != "listing") continue;
    EXPECT_EQ(window["lines"].size(), 111U);
    EXPECT_EQ(window["buttons"], nlohmann::json({210, 205}));
    EXPECT_EQ(window["row"], 109);
    EXPECT_EQ(window["answer"], 210);
  }
}

}  // namespace
}  // namespace orvane::test
