#include "procedure/operator/statements.h"

#include <algorithm>

#include "config/startup_config.h"
#include "messages/catalogue.h"
#include "procedure/operator/judgement.h"
#include "procedure/operator/lines.h"
#include "procedure/operator/pictures.h"
#include "procedure/operator/uut_settings.h"
#include "procedure/pipeline/run_test.h"
#include "state/debug.h"
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

TEST_F(OperatorStatements, AWaitWithoutATimeShowsItsLinesForAMoment) {
  procedure("Wait", {"WAIT -temperature falls to [M1]", "END"});
  EXPECT_EQ(go("Wait"), run_result::finished);
  EXPECT_EQ(clock.slept, 1200u);
  EXPECT_EQ(desk.of_kind("wait").back().lines, std::vector<std::string>{"-temperature falls to 0"});

  desk.watched = false;
  EXPECT_EQ(go("Wait"), run_result::finished);
  EXPECT_EQ(clock.slept, 1200u);
}

TEST_F(OperatorStatements, AWaitThatIsNoTimeIsReported) {
  procedure("Wait", {"WAIT -t soon", "WAIT -t", "WAIT [M0]", "END"});
  EXPECT_EQ(go("Wait"), run_result::finished);
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{4482, 4482, 30401, 4481}));
}

TEST_F(OperatorStatements, ElementsThatShapeLines) {
  source(test::header("Lines") + line(1, 1, "MATH", "S[2]=\"two\"; x=5; M[1]=1") + "\n" +
         line(1, 2, "DISP", "a[N]b [SREG2] [s2] [V x][NO]") + "\n" +
         line(1, 2, "DISP", " and on[NO]! [V proc_name$]") + "\n" + line(1, 2, "DISP", "last[NO]") + "\n" +
         line(1, 3, "DISP", "[V y]") + "\n" + line(1, 4, "DISP", "[V NOBODY$]") + "\n" +
         line(1, 5, "DISP", "[V]") + "\n" + line(1, 6, "DISP", "[DRAW 100,7,r]") + "\n" +
         line(1, 7, "DISP", "[DRAW 101,7,R]") + "\n" + line(1, 8, "END", "") + "\n");
  EXPECT_EQ(go("Lines"), run_result::finished);
  EXPECT_EQ(desk.of_kind("lines")[0].lines,
            (std::vector<std::string>{"a", "b two two 5 and on! Lines", "last"}));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{4516, 4517, 4511, 30401}));
  EXPECT_EQ(run.draw.x, 99);
  EXPECT_EQ(run.draw.y, 7);
}

TEST_F(OperatorStatements, RangesAreShownAsTheRecordNamesThem) {
  struct Case {
    const char* text;  // from the column of the nominal on
    const char* shown;
  };
  const Case cases[] = {{"10mV", "10mV"},
                        {"V", "V"},
                        {"300.0V                       AC", "300V AC"},
                        {"10A                                         -D", "10A -D"}};
  for (const Case& c : cases) {
    desk.shown.clear();
    procedure("Range", {std::string("RNG ") + c.text, "END"});
    EXPECT_EQ(go("Range"), run_result::finished);
    const auto windows = desk.of_kind("lines");
    ASSERT_EQ(windows.size(), 1u) << c.text;
    EXPECT_EQ(windows[0].title, "UUT Range");
    EXPECT_EQ(windows[0].lines, std::vector<std::string>{c.shown});
  }
  struct Answer {
    int code;
    std::string stop;
  };
  for (const Answer& a : {Answer{answer::terminate, msg(5022, "RNG")}, Answer{answer::yes, msg(5021, "RNG")},
                          Answer{answer::failed, msg(5021, "RNG")}}) {
    desk.shown.clear();
    desk.reply(a.code);
    EXPECT_EQ(go("Range"), run_result::finished);
    ASSERT_EQ(desk.of_kind("test").size(), 1u) << a.code;
    EXPECT_EQ(desk.of_kind("test")[0].test.status_text, a.stop);
  }
}

TEST_F(OperatorStatements, TextsForTheResults) {
  const std::string exactly = std::string(45, 'a') + "[MEM2]";
  procedure("Texts", {"MEM2 =" + std::string(30, 'b'), "RSLT =" + exactly, "RSLT =a" + exactly,
                      "RSLT Serial?", "RSLT Given up?", "MEMC 0V             1U", "RSLT =behind", "END"});
  desk.reply(answer::test_continue);  // after 1811
  desk.reply(answer::ok, "SN 7");
  desk.reply(answer::terminate);
  EXPECT_EQ(go("Texts"), run_result::finished);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{1811});
  EXPECT_EQ(desk.last_message(), "E1811: The text for the results has 77 characters; 76 are allowed.");
  EXPECT_EQ(desk.of_kind("ask").size(), 2u);
  EXPECT_EQ(desk.notes.front(), std::string(45, 'a') + std::string(30, 'b'));
  const std::string log = contents((folder / "rslt.tmp").string());
  EXPECT_NE(log.find("0001.002 R         " + std::string(45, 'a') + std::string(20, 'b') +
                     "\n0001.002 R         bbbbbbbbbb\n"),
            std::string::npos)
      << log;
  EXPECT_NE(log.find("0001.004 R         SN 7\n"), std::string::npos) << log;
  EXPECT_NE(log.find("0001.007 R         behind\n"), std::string::npos) << "noted behind the last test";
  EXPECT_EQ(log.find("Given up"), std::string::npos);
}

class Settings : public OperatorStatements {
 protected:
  std::string list() const {
    std::string out;
    for (const auto& [name, value] : run.uut_settings) out += name + "=" + value + ";";
    return out;
  }
};

TEST_F(Settings, AreRecordedChangedAndDropped) {
  struct Case {
    const char* text;
    const char* change;
    const char* list;
  };
  const Case cases[] = {
      {"Function : DC V", "Function : DC V", "Function=DC V;"},
      {" Range:10 V : low ", "Range : 10 V : low",
       "Function=DC V;Range=10 V : low;"},  // the first colon parts
      {"FUNCTION: AC", "FUNCTION : AC", "Function=AC;Range=10 V : low;"},
      {"Filter", "", "Function=AC;Range=10 V : low;"},
      {"autorange", "Range : Autorange", "Function=AC;Range=Autorange;"},
      {"Range", "Range : no longer set", "Function=AC;"},
      {"Autorange : off", "Autorange : off", "Function=AC;Autorange=off;"},
      {"Autorange", "Autorange : no longer set", "Function=AC;"},
      {"  ", "", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(apply_setting(run, c.text), c.change) << c.text;
    EXPECT_EQ(list(), c.list) << c.text;
  }
}

TEST_F(Settings, AStatementShowsWhatItChanges) {
  source(test::header("Set") + line(1, 1, "SET", "Function : DC V") + "\n" +
         line(1, 1, "SET", "Range : {Which range, [MEM]?} V") + "\n" + line(1, 2, "SET", "Unknown") + "\n" +
         line(1, 3, "SET", "A : " + std::string(29, 'x')) + "\n" + line(1, 4, "SET", ": x") + "\n" +
         line(1, 5, "SET", "A : {open") + "\n" + line(1, 6, "SET", "A : {Value?}") + "\n" +
         line(1, 7, "ASK-", std::string(19, ' ') + "S") + "\n" +
         line(1, 8, "SET", "A : " + std::string(28, 'x')) + "\n" + line(1, 9, "END", "") + "\n");
  desk.reply(answer::ok, "[M0]{");  // what is typed is no text of the procedure
  desk.reply(answer::ok);
  for (int stop = 0; stop < 3; ++stop) desk.reply(answer::test_continue);
  desk.reply(answer::terminate);
  EXPECT_EQ(go("Set"), run_result::finished);
  const auto windows = desk.of_kind("lines");
  ASSERT_EQ(windows.size(), 1u);
  EXPECT_EQ(windows[0].title, "UUT Setting");
  EXPECT_EQ(windows[0].lines, (std::vector<std::string>{"Function : DC V", "Range : [M0]{ V"}));
  EXPECT_EQ(desk.of_kind("ask")[0].lines, std::vector<std::string>{"Which range, 0?"});
  EXPECT_EQ(desk.of_kind("ask")[0].title, "UUT Setting");
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{1828, 30713, 30402}));
  EXPECT_NE(desk.shown[desk.shown.size() - 1].kind, "lines");
  EXPECT_EQ(desk.of_kind("test").size(), 4u);
  EXPECT_EQ(list(), "A=" + std::string(28, 'x') + ";")
      << "32 characters fit; each dialog has emptied the list";
}

// An author who tries out a procedure lets the windows of tests pass by themselves.
TEST_F(Settings, WindowsOfTestsCanBeInhibited) {
  set_debug_flags(debug_bit::api);
  procedure("Quiet", {"MATH M[1] = mcset(\"PTS Inhibit\")", "MEMC 9V             1U",
                      "MATH M[2] = mctest(\"PTS ShowWindow\")", "ASK- " + std::string(44, ' ') + "A",
                      "MEMC 0V             1U", "MATH M[3] = mctest(\"PTS ShowWindow\")", "END"});
  run.options = ask_option::A;
  EXPECT_EQ(go("Quiet"), run_result::finished);
  EXPECT_EQ(desk.of_kind("test").size(), 0u);
  EXPECT_EQ(desk.results.size(), 2u);
  EXPECT_EQ(m(2), 1);
  EXPECT_EQ(m(3), 0);
  EXPECT_EQ(go("Quiet"), run_result::finished);
  EXPECT_EQ(desk.of_kind("test").size(), 0u);
}

TEST_F(Settings, TheListIsOfferedWhileItHoldsEntries) {
  procedure("List", {"SET A : 1", "SET B : two", "MEMC 0V             1U", "MEMC 0V             1U", "END"});
  run.options = 0;
  desk.reply(answer::ok);
  desk.reply(answer::ok);
  desk.reply(answer::test_settings);
  desk.reply(answer::ok);
  EXPECT_EQ(go("List"), run_result::finished);
  const auto tests = desk.of_kind("test");
  ASSERT_EQ(tests.size(), 3u);  // the first one waits again behind its list
  const auto offers = [](const test::Shown& window) {
    return std::any_of(window.buttons.begin(), window.buttons.end(),
                       [](const Button& button) { return button.code == answer::test_settings; });
  };
  EXPECT_TRUE(offers(tests[0]));
  EXPECT_TRUE(offers(tests[1]));
  EXPECT_FALSE(offers(tests[2])) << "emptied after the dialog";
  const auto lists = desk.of_kind("choose");
  ASSERT_EQ(lists.size(), 1u);
  EXPECT_EQ(lists[0].lines, (std::vector<std::string>{"\tA\t:\t1", "\tB\t:\ttwo"}));

  desk.shown.clear();
  for (const int code : {answer::ok, answer::ok, answer::test_settings, answer::failed}) desk.reply(code);
  EXPECT_EQ(go("List"), run_result::finished);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{4702});
}

TEST_F(OperatorStatements, PicturesStandWhereDrawHasPutThem) {
  startup_config().picdir = folder.string();
  for (const char* name : {"front.png", "two words.png"}) write(name, "");
  const std::string absolute = write("abs.png", "");
  source(test::header("Pic") + line(1, 1, "DRAW", "10  5 60 99                   3  0  0  0") + "\n" +
         line(1, 2, "PIC", "front.png  Connect [MEM].") + "\n" + line(1, 2, "PIC", "Then wait.") + "\n" +
         line(1, 3, "PIC", "\"two words.png\"") + "\n" + line(1, 4, "PICE", absolute + " Lit?") + "\n" +
         line(1, 5, "END", "") + "\n");
  desk.reply(answer::ok);
  desk.reply(answer::terminate);
  desk.reply(answer::test_continue);
  desk.reply(answer::no);
  EXPECT_EQ(go("Pic"), run_result::finished);
  const auto windows = desk.of_kind("lines");
  ASSERT_EQ(windows.size(), 3u);
  const Picture& first = windows[0].picture.value();
  EXPECT_EQ(first.path, (folder / "front.png").string());
  EXPECT_EQ(first.title, "UUT Left View");
  ASSERT_TRUE(first.frame.has_value());
  EXPECT_EQ(first.frame->x, 10);
  EXPECT_EQ(first.frame->y, 5);
  EXPECT_EQ(first.frame->width, 60);
  EXPECT_EQ(first.frame->height, 99);
  EXPECT_EQ(windows[0].lines, (std::vector<std::string>{"Connect 0.", "Then wait."}));
  EXPECT_EQ(windows[1].picture->path, (folder / "two words.png").string());
  EXPECT_TRUE(windows[1].lines.empty());
  EXPECT_EQ(windows[2].picture->path, absolute);
  EXPECT_EQ(windows[2].title, "Test Evaluation");
  ASSERT_EQ(desk.results.size(), 1u);
  EXPECT_EQ(desk.results[0].status_text, "FAIL");
  EXPECT_EQ(desk.of_kind("test")[0].test.status_text, msg(5022, "PIC"));
}

TEST_F(OperatorStatements, TheFirstRecordNamesThePicture) {
  startup_config().picdir = folder.string();
  write("front view.bmp", "BM");
  write("back.bmp", "BM");
  struct Case {
    const char* text;
    const char* file;
    const char* rest;
  };
  const Case cases[] = {
      {" front view.bmp ", "front view.bmp", ""},
      {"back.bmp", "back.bmp", ""},
      {"back.bmp  the back", "back.bmp", "the back"},
      {"\"front view.bmp\" the front", "front view.bmp", "the front"},
      {"side.bmp the side", "side.bmp", "the side"},
  };
  FscRecord record = fsc_record_new();
  for (const Case& c : cases) {
    std::string_view rest;
    EXPECT_EQ(picture_file(c.text, rest), (folder / c.file).string()) << c.text;
    EXPECT_EQ(rest, c.rest) << c.text;
    ASSERT_TRUE(record.set_text(field::text, c.text));
    record.set(field::line_flags, line_flag::first);
    EXPECT_EQ(picture_of(record), (folder / c.file).string()) << c.text;
    record.set(field::line_flags, line_flag::last);
    EXPECT_EQ(picture_of(record), "") << "a further line of text";
  }
  std::string_view rest;
  EXPECT_EQ(picture_file("  ", rest), "");
  record.set(field::line_flags, line_flag::first);
  ASSERT_TRUE(record.set_text(field::text, "[MEM2].bmp on [13]"));
  EXPECT_EQ(picture_of(record), "") << "known only when it runs";
}

TEST(EvalText, ItsFirstWordIsTheMode) {
  struct Case {
    const char* text;
    EvalMode mode;
    const char* expression;
    const char* shown;
  };
  const Case cases[] = {
      {"Is it on?", EvalMode::ask, "", "Is it on?"},
      {"-extra: is it on?", EvalMode::ask, "", "-extra: is it on?"},
      {"  -E  M[1] > 2 : in range", EvalMode::expression, "M[1] > 2", "in range"},
      {"-e zcmp(S[1],\"a:b\\\":\"):c:d", EvalMode::expression, "zcmp(S[1],\"a:b\\\":\")", "c:d"},
      {"-e 1", EvalMode::expression, "1", ""},
      {"-s S[1]: right?", EvalMode::text, "S[1]", "right?"},
      {"-s", EvalMode::text, "", ""},
  };
  for (const Case& c : cases) {
    const EvalText parts = eval_text(c.text);
    EXPECT_EQ(parts.mode, c.mode) << c.text;
    EXPECT_EQ(parts.expression, c.expression) << c.text;
    EXPECT_EQ(parts.shown, c.shown) << c.text;
  }
}

TEST_F(OperatorStatements, JudgementsAreResults) {
  struct Case {
    std::string text;
    int code;  // of the window; 0: there is none
    const char* form;
    const char* status;
    std::string line1, line2;
  };
  const std::string blank79(79, ' ');
  const auto line_of = [&](std::size_t column, std::string_view text, std::string line) {
    return line.replace(column, text.size(), text);
  };
  const std::string one = line_of(0, "  1", blank79);
  const Case cases[] = {
      {"Is it on?", answer::yes, "pt_Operator_Evaluation", "PASS",
       line_of(73, "PASS", line_of(8, "Is it on?", one)), blank79},
      {"Is it on?", answer::no, "pt_Operator_Evaluation", "FAIL",
       line_of(73, "FAIL", line_of(8, "Is it on?", one)), line_of(60, "NOTIFY USER", blank79)},
      {"-e MEM == 0: at zero", 0, "pt_Expression_Evaluation", "PASS",
       line_of(73, "PASS", line_of(8, "at zero", one)), blank79},
      {"-e MEM > 0", 0, "pt_Expression_Evaluation", "FAIL",
       line_of(73, "FAIL", line_of(8, "Result of Operator Evaluation", one)),
       line_of(60, "NOTIFY USER", blank79)},
      {"-s \"SN\" & 5: right?", answer::yes, "pt_Operator_Evaluation", "PASS",
       line_of(73, "PASS", line_of(8, "SN5", one)), blank79},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    desk.shown.clear();
    desk.results.clear();
    source(test::header("Eval") + "  1.001  EVAL   " + c.text + "\n" + line(1, 2, "END", "") + "\n");
    if (c.code != 0) desk.reply(c.code);
    EXPECT_EQ(go("Eval"), run_result::finished);
    const auto windows = desk.of_kind("lines");
    ASSERT_EQ(windows.size(), c.code != 0 ? 1u : 0u);
    if (c.code != 0) {
      EXPECT_EQ(windows[0].title, "Test Evaluation");
      EXPECT_EQ(windows[0].buttons[0].code, answer::yes);
      EXPECT_EQ(windows[0].buttons[1].code, answer::no);
      EXPECT_EQ(windows[0].buttons[2].code, answer::terminate);
    }
    const auto tests = desk.of_kind("test");
    ASSERT_EQ(tests.size(), 1u);
    EXPECT_EQ(tests[0].test.form, c.form);
    const bool fails = std::string_view(c.status) == "FAIL";
    ASSERT_EQ(desk.results.size(), 1u);
    EXPECT_EQ(desk.results[0].status_text, c.status);
    EXPECT_EQ(desk.results[0].line1, c.line1);
    EXPECT_EQ(desk.results[0].line2, c.line2);
    EXPECT_EQ(desk.results[0].colour, fails ? result_colour::fail : result_colour::pass);
    EXPECT_FALSE(desk.results[0].percent.has_value());
    EXPECT_EQ(run.decision.result_flags, fails ? 0x04u : 0x02u);
    EXPECT_EQ((run.test.test_state & test_bit::failed) != 0, fails);
    const std::string log = contents((folder / "rslt.tmp").string());
    EXPECT_NE(log.find("0001.001 E " + c.line1), std::string::npos) << log;
    EXPECT_NE(log.find("0001.001 E " + c.line2), std::string::npos) << log;
  }
}

TEST_F(OperatorStatements, AJudgementThatIsNotMadeIsNoResult) {
  source(test::header("Eval") + "  1.001  EVAL   Is it on?\n" + "  2.001  EVAL   -e M[1] >: what\n" +
         "  3.001  EVAL   -s nothing(1): what\n" + line(4, 1, "END", "") + "\n");
  desk.reply(answer::terminate);
  EXPECT_EQ(go("Eval"), run_result::finished);
  EXPECT_TRUE(desk.results.empty());
  EXPECT_EQ(desk.of_kind("test").size(), 3u);
  EXPECT_EQ(desk.of_kind("lines").size(), 1u) << "what cannot be evaluated is not asked either";
}

TEST_F(OperatorStatements, TheLaboratorysTextsStandInTheWindowAtATest) {
  startup_config().pass_prompt = write("pass.txt", "Attach a label.\r\nGreen.\r\n");
  startup_config().fail_prompt = (folder / "absent.txt").string();
  procedure("Texts", {"MEMC 0V             1U", "MEMC 9V             1U", "END"});
  EXPECT_EQ(go("Texts"), run_result::finished);
  const auto tests = desk.of_kind("test");
  ASSERT_EQ(tests.size(), 2u);
  EXPECT_EQ(tests[0].test.texts.back().label, msg(7121));
  EXPECT_EQ(tests[0].test.texts.back().text, "Attach a label.\nGreen.");
  EXPECT_NE(tests[1].test.texts.back().label, msg(7121));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{30715});
}

}  // namespace
}  // namespace orvane
