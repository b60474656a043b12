// What the console makes of pictures, lists with columns, hidden texts, progress and the bell.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>

#include "console/columns.h"
#include "console/desk.h"
#include "console/picture_file.h"
#include "console/progress_text.h"
#include "platform/terminal.h"
#include "state/beeper.h"
#include "support/desk.h"

namespace orvane {
namespace {

TEST(Columns, RowsStandUnderEachOther) {
  const std::vector<std::string> rows = {"Name\tRange\tState", "a\t10 V\tnew", "longer name\t\tused",
                                         "no columns at all"};
  const auto widths = column_widths(rows);
  EXPECT_EQ(in_columns(rows[0], widths), "Name         Range  State");
  EXPECT_EQ(in_columns(rows[1], widths), "a            10 V   new");
  EXPECT_EQ(in_columns(rows[2], widths), "longer name         used");
  EXPECT_EQ(in_columns(rows[3], widths), rows[3]);
  EXPECT_EQ(in_columns("\tA\t:\t1", column_widths({"\tA\t:\t1", "\tLong\t:\t2"})), "A     :  1");
}

TEST(ProgressText, TellsHowFarTheRunIs) {
  struct Case {
    RunProgress progress;
    const char* text;
  };
  const Case cases[] = {
      {{31, 120, 3, 12, 42}, "[#####---------------]  3 of 12 tests, statement 31 of 120, 0:42"},
      {{200, 120, 13, 12, 3725}, "[####################]  13 of 12 tests, statement 200 of 120, 1:02:05"},
      {{60, 120, 0, 0, 5}, "[##########----------]  statement 60 of 120, 0:05"},
      {{7, 0, 0, 0, 61}, "7 statements, 1:01"},
  };
  for (const Case& c : cases) EXPECT_EQ(progress_text(c.progress, true), c.text);
  EXPECT_EQ(progress_text(cases[0].progress, false), "3 of 12 tests, statement 31 of 120, 0:42");
}

TEST(Beeper, BeepsAtOnceAndThenAsOftenAsTheKeySays) {
  struct Case {
    int seconds, count, beeps;
  };
  for (const Case& c : {Case{0, 5, 0}, Case{2, 3, 3}, Case{2, 0, 11}, Case{3600, 0, 1}}) {
    const std::uint32_t start = 0xFFFFFFFF - 5000;  // the tick counter wraps in the middle
    Beeper beeper(c.seconds, c.count, start);
    int beeps = 0;
    for (std::uint32_t elapsed = 0; elapsed <= 20000; elapsed += 100)
      beeps += beeper.due(start + elapsed) ? 1 : 0;
    EXPECT_EQ(beeps, c.beeps) << c.seconds << ", " << c.count;
  }
}

class Windows : public test::EngineTest {
 protected:
  std::string show(const LinesWindow& window) {
    Answers answers;
    answers.defaults_follow = true;
    ConsoleDesk console(transcript);
    console.answer_from(&answers);
    ::testing::internal::CaptureStdout();
    console.lines(window);
    return ::testing::internal::GetCapturedStdout();
  }
  Transcript transcript;
};

TEST_F(Windows, PicturesAreNamedAndWhatIsNoneIsTold) {
  const std::string path = (folder / "t.jsonl").string();
  ASSERT_TRUE(transcript.open(path));
  struct Case {
    const char* name;
    const char* title;
    std::string line;
  };
  write("good.png", "\x89PNG\r\n\x1A\n....");
  write("good.bmp", "BM......");
  write("text.png", "no picture");
  write("empty.bmp", "");
  const std::string at = folder.string() + "/";
  const Case cases[] = {
      {"good.png", "UUT Front View", "[UUT Front View: " + at + "good.png]\n"},
      {"good.bmp", "", "[Picture: " + at + "good.bmp]\n"},
      {"text.png", "", "[Picture: the file \"" + at + "text.png\" is no picture that this program knows]\n"},
      {"empty.bmp", "",
       "[Picture: the file \"" + at + "empty.bmp\" is no picture that this program knows]\n"},
      {".", "", "[Picture: the file \"" + at + ".\" is no picture that this program knows]\n"},
      {"none.bmp", "", "[Picture: the file \"" + at + "none.bmp\" is not there]\n"},
  };
  for (const Case& c : cases) {
    LinesWindow window;
    window.kind = WindowKind::picture;
    window.title = "Look";
    window.lines = {"beside"};
    window.buttons = {{answer::ok, "OK", true}};
    window.picture = Picture{.path = at + c.name, .title = c.title};
    EXPECT_NE(show(window).find("--- Look ---\n" + c.line + "beside\n"), std::string::npos) << show(window);
  }
  EXPECT_NE(
      contents(path).find("\"kind\":\"picture\",\"title\":\"Look\",\"lines\":[\"beside\"],\"buttons\":[210],"
                          "\"answer\":210,\"picture\":\"" +
                          at + "good.png\"}"),
      std::string::npos)
      << contents(path);
}

TEST_F(Windows, LiveValuesTakeTheNextAnswerOnceOneIsShown) {
  const std::string path = (folder / "t.jsonl").string();
  ASSERT_TRUE(transcript.open(path));
  Answers answers;
  std::string reason;
  ASSERT_TRUE(parse_answers("ok\n", answers, reason));
  ConsoleDesk console(transcript);
  console.answer_from(&answers);
  {
    ::testing::internal::CaptureStdout();
    const auto live = console.live({.kind = WindowKind::slew,
                                    .title = "UUT Setup, a title that outlives its statement",
                                    .lines = {"Range : 10 V"},
                                    .buttons = {{answer::ok, "OK", true}, {answer::terminate, "Terminate"}}});
    EXPECT_EQ(live->poll(), answer::failed);
    live->post("9.9 V");
    live->post("10 V");
    EXPECT_EQ(live->poll(), answer::ok);
    EXPECT_NE(::testing::internal::GetCapturedStdout().find("  = 10 V\n"), std::string::npos);
  }
  EXPECT_EQ(
      contents(path),
      "{\"event\":\"window\",\"kind\":\"slew\",\"title\":\"UUT Setup, a title that outlives its statement\","
      "\"lines\":[\"Range : 10 V\",\"10 V\"],\"buttons\":[210,205],\"answer\":210}\n");
}

TEST_F(Windows, HiddenTextsAreWrittenNowhere) {
  const std::string path = (folder / "t.jsonl").string();
  ASSERT_TRUE(transcript.open(path));
  Answers answers;
  std::string reason, text;
  ASSERT_TRUE(parse_answers("= 1234\n", answers, reason));
  ConsoleDesk console(transcript);
  console.answer_from(&answers);
  EXPECT_FALSE(console.is_watched());
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(console.ask({.kind = WindowKind::login,
                         .title = "Log in",
                         .lines = {"Password?"},
                         .buttons = {{answer::ok, "OK", true}},
                         .length = 20,
                         .echo = false},
                        text),
            answer::ok);
  const std::string shown = ::testing::internal::GetCapturedStdout();
  EXPECT_EQ(text, "1234");
  EXPECT_EQ(shown.find("1234"), std::string::npos) << shown;
  EXPECT_EQ(contents(path).find("1234"), std::string::npos);
  EXPECT_NE(contents(path).find("\"kind\":\"login\""), std::string::npos);
  EXPECT_NE(contents(path).find("\"text\":\"***\""), std::string::npos);
}

TEST(TerminalEcho, IsOffWhileATextIsHidden) {
  const int terminal = ::posix_openpt(O_RDWR | O_NOCTTY);
  ASSERT_TRUE(terminal >= 0 && ::grantpt(terminal) == 0 && ::unlockpt(terminal) == 0);
  const int line = ::open(::ptsname(terminal), O_RDWR | O_NOCTTY), saved = ::dup(STDIN_FILENO);
  ASSERT_GE(line, 0);
  ::dup2(line, STDIN_FILENO);
  const auto echoes = [&] {
    termios settings{};
    return ::tcgetattr(line, &settings) == 0 && (settings.c_lflag & ECHO) != 0;
  };
  EXPECT_TRUE(echoes());
  terminal_echo(false);
  EXPECT_FALSE(echoes());
  terminal_echo(true);
  EXPECT_TRUE(echoes());
  ::dup2(saved, STDIN_FILENO);
  for (const int descriptor : {saved, line, terminal}) ::close(descriptor);
}

class ThreeRows : public RowSource {
 public:
  std::size_t count() const override { return 3; }
  std::string row(std::size_t index) const override {
    return std::string(index + 1, 'x') + "\t" + std::to_string(index);
  }
};

TEST_F(Windows, ListsHaveHeadingsAboveTheirColumns) {
  const ThreeRows rows;
  Answers answers;
  std::string reason;
  ASSERT_TRUE(parse_answers("row 3\n", answers, reason));
  ConsoleDesk console(transcript);
  console.answer_from(&answers);
  ChoiceWindow window;
  window.title = "Pick";
  window.headings = "Name\tNo.";
  window.rows = &rows;
  window.first_row = 1;
  window.buttons = {{answer::ok, "OK", true}};
  std::size_t row = 0;
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(console.choose(window, row), answer::ok);
  EXPECT_EQ(
      ::testing::internal::GetCapturedStdout(),
      "\n--- Pick ---\n        Name  No.\n     1  x     0\n>    2  xx    1\n     3  xxx   2\n  OK (Enter)\n");
  EXPECT_EQ(row, 2U);
}

}  // namespace
}  // namespace orvane
