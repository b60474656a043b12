#include "console/answers.h"

#include <gtest/gtest.h>

#include "console/desk.h"
#include "state/pump.h"
#include "support/desk.h"

namespace orvane {
namespace {

TEST(Answers, FaultsNameTheirLine) {
  struct Case {
    const char* text;
    const char* reason;
  };
  const Case cases[] = {
      {"ok\n\nmaybe\n", "3: \"maybe\" is no answer"},
      {"row 0\n", "1: \"row\" takes a number from 1"},
      {"abort-at x\n", "1: \"abort-at\" takes a number from 1"},
      {"set NAME\n", "1: \"set NAME = VALUE\" is expected"},
      {"set A = 1\n", "1: no answer follows the line \"set\""},
      {"*\nok\n", "2: \"*\" is the last line"},
      {"*\nset A = 1\n", "2: \"*\" is the last line"},
  };
  for (const Case& c : cases) {
    Answers answers;
    std::string reason;
    EXPECT_FALSE(parse_answers(c.text, answers, reason)) << c.text;
    EXPECT_EQ(reason, c.reason);
  }
}

// A console desk that is answered from a text.
class ScriptedDesk : public test::EngineTest {
 protected:
  void answer_with(std::string_view text) {
    std::string reason;
    ASSERT_TRUE(parse_answers(text, answers, reason)) << reason;
    console = std::make_unique<ConsoleDesk>(transcript);
    console->answer_from(&answers);
    ::testing::internal::CaptureStdout();
  }
  void TearDown() override { shown = ::testing::internal::GetCapturedStdout(); }

  static LinesWindow window() {
    return {
        .kind = WindowKind::question,
        .title = "Title",
        .lines = {"two\nlines"},
        .buttons = {
            {answer::yes, "Yes", false}, {answer::no, "No", true}, {answer::terminate, "Terminate", false}}};
  }
  std::string typed;
  int ask() {
    AskWindow asked{.kind = WindowKind::prompt,
                    .title = "Prompt",
                    .lines = {"text?"},
                    .buttons = {{answer::ok, "OK", true}, {answer::terminate, "Cancel", false}},
                    .length = 8};
    return console->ask(asked, typed);
  }
  static TestWindow test_window() {
    return {.form = "pt_Result",
            .title = "Result",
            .status_text = "FAIL",
            .colour = 2,
            .texts = {{"Test", "1"}},
            .buttons = {{{answer::test_continue, "Continue", true}, true},
                        {{answer::test_cancel, "Cancel", false}, true},
                        {{answer::test_repeat, "Repeat", false}, false}}};
  }

  Answers answers;
  Transcript transcript;
  std::unique_ptr<ConsoleDesk> console;
  std::string shown;
};

TEST_F(ScriptedDesk, EachWindowTakesTheNextAnswer) {
  answer_with("# comment\nyes\r\n\n212\ndefault\ncancel\n= \xC2\xB5V  \n=\n*\n");
  EXPECT_EQ(console->lines(window()), answer::yes);
  EXPECT_EQ(console->lines(window()), answer::no);
  EXPECT_EQ(console->lines(window()), answer::no);
  EXPECT_EQ(console->lines(window()), answer::terminate);  // the button that gives up
  EXPECT_EQ(ask(), answer::ok);
  EXPECT_EQ(typed, "\xB5V  ");
  EXPECT_EQ(ask(), answer::ok);
  EXPECT_EQ(typed, "");
  EXPECT_EQ(console->test(test_window()), answer::test_continue);
  EXPECT_EQ(console->lines(window()), answer::no);
  EXPECT_FALSE(console->misfit());
}

TEST_F(ScriptedDesk, CancelIsAnotherButtonInTheTestWindow) {
  answer_with("cancel\ncontinue\n");
  EXPECT_EQ(console->test(test_window()), answer::test_cancel);
  EXPECT_EQ(console->test(test_window()), answer::test_continue);
}

TEST_F(ScriptedDesk, AnAnswerThatDoesNotFitEndsTheRun) {
  answer_with("\nok\nyes\n");
  EXPECT_EQ(console->lines(window()), answer::terminate);
  EXPECT_TRUE(console->misfit());
  EXPECT_EQ(desk.last_message(),
            "E30508: The answer in line 2 does not fit the window \"Title\"; it offers 211 Yes, 212 No, 205 "
            "Terminate.");
  EXPECT_TRUE(abort_requested());
  // From then on every window is left, so that the run comes to its end.
  EXPECT_EQ(console->lines(window()), answer::terminate);
  EXPECT_EQ(console->test(test_window()), answer::test_term);
}

TEST_F(ScriptedDesk, NoAnswerLeftIsTold) {
  answer_with("");
  EXPECT_EQ(console->test(test_window()), answer::test_term);
  EXPECT_TRUE(console->misfit());
  EXPECT_EQ(desk.last_message(),
            "E30507: No answer is left for the window \"Result\"; it offers 1001 Continue, 1002 Cancel.");
}

TEST_F(ScriptedDesk, MisfitsOfEveryKind) {
  for (const char* text : {"row 1\n", "repeat\n", "= text\n", "set A = 1\nyes\n", "999\n"}) {
    std::string reason;
    ASSERT_TRUE(parse_answers(text, answers, reason)) << reason;
    ConsoleDesk other(transcript);
    other.answer_from(&answers);
    ::testing::internal::CaptureStdout();
    other.test(test_window());
    ::testing::internal::GetCapturedStdout();
    EXPECT_TRUE(other.misfit()) << text;
  }
  ::testing::internal::CaptureStdout();
}

TEST_F(ScriptedDesk, AbortAtStandsAnywhere) {
  std::string reason;
  ASSERT_TRUE(parse_answers("abort-at 30\nset A = 1\nabort-at 7\nok\n*\nabort-at 20\n", answers, reason))
      << reason;
  EXPECT_EQ(answers.abort_at, (std::vector<std::uint64_t>{7, 20, 30}));
  ASSERT_EQ(answers.list.size(), 1U);
  EXPECT_EQ(answers.list[0].fields.size(), 1U);
  EXPECT_TRUE(answers.defaults_follow);
  ::testing::internal::CaptureStdout();
}

TEST_F(ScriptedDesk, AbortPressesTheDefaultButton) {
  answer_with("abort\n");
  EXPECT_EQ(console->lines(window()), answer::no);
  EXPECT_TRUE(abort_requested());
}

TEST_F(ScriptedDesk, TheTranscriptHoldsWhatWasSeenAndAnswered) {
  const std::string path = (folder / "t.jsonl").string();
  ASSERT_TRUE(transcript.open(path));
  answer_with("yes\n= 1,5\ncontinue\n");
  console->lines(window());
  ask();
  console->test(test_window());
  console->message(MessageKind::warning, 7, "W7: \xB5");
  console->status(1025, "");
  console->result({"line 1", "line 2", "PASS", 1});
  EXPECT_EQ(contents(path),
            "{\"event\":\"window\",\"kind\":\"question\",\"title\":\"Title\",\"lines\":[\"two\",\"lines\"],"
            "\"buttons\":[211,212,205],\"answer\":211}\n"
            "{\"event\":\"window\",\"kind\":\"prompt\",\"title\":\"Prompt\",\"lines\":[\"text?\"],"
            "\"buttons\":[210,205],"
            "\"answer\":210,\"text\":\"1,5\"}\n"
            "{\"event\":\"window\",\"kind\":\"test\",\"title\":\"Result\",\"lines\":[\"FAIL\",\"Test 1\"],"
            "\"buttons\":[1001,1002],\"answer\":1001}\n"
            "{\"event\":\"message\",\"kind\":\"warning\",\"number\":7,\"text\":\"W7: \xC2\xB5\"}\n"
            "{\"event\":\"status\",\"row\":1025,\"text\":\"\"}\n"
            "{\"event\":\"result\",\"line1\":\"line 1\",\"line2\":\"line "
            "2\",\"status_text\":\"PASS\",\"colour\":1}\n");
}

}  // namespace
}  // namespace orvane
