#include "text/expand.h"

#include "config/startup_config.h"
#include "support/desk.h"

namespace orvane {
namespace {

class Expand : public test::EngineTest {
 protected:
  Expand() {
    startup_config() = StartupConfig();
    record.set(field::code, fsc::disp);
    record.set(field::test_major, 3);
    record.set(field::test_minor, 2);
    run.registers.mem = -0.0015;
    run.registers.mem1() = 1e20;
    run.registers.mem2 = "text [MEM]";
    run.registers.m[255] = 1.0 / 3;
    run.registers.l[32] = 7;
  }

  // The expanded text, or "!" and the number of the report.
  std::string expanded(std::string_view text) {
    desk.shown.clear();
    std::string out;
    if (expand_text(run, record, text, out)) return out;
    return "!" + std::to_string(desk.message_numbers().empty() ? 0 : desk.message_numbers()[0]);
  }

  FscRecord record = fsc_record_new();
};

TEST_F(Expand, ElementsInsertValues) {
  struct Case {
    const char* text;
    std::string result;
  };
  const Case cases[] = {
      {"plain", "plain"},
      {"", ""},
      {"[MEM] V", "-0.0015 V"},
      {"[ mem1 ]", "1e+20"},
      {"<[MEM2]>", "<text [MEM]>"},  // what is inserted is not expanded again
      {"[M255]/[l 32]", "0.333333333333/7"},
      {"a[13][ 10 ]b", "a\r\nb"},
      {"[0]", std::string(1, '\0')},
      {"[X 41 4a4B]", "AJK"},
      {"[XAB]", "\xAB"},
      {"a]b", "a]b"},
      {"[256]", "!30401"},
      {"[M0]", "!30401"},
      {"[M256]", "!30401"},
      {"[L33]", "!30401"},
      {"[MEM3]", "!30401"},
      {"[X4]", "!30401"},
      {"[]", "!30401"},
      {"[-1]", "!30401"},
      {"[MEM", "!30400"},
      {"[I]", "!1935"},  // an operator's text has no device
      {"[D 100]", "!1935"},
      {"[WHAT]", "!1935"},
      {"{text", "!30402"},
  };
  for (const Case& c : cases) EXPECT_EQ(expanded(c.text), c.result) << c.text;
}

TEST_F(Expand, TextInBracesGoesToTheResults) {
  EXPECT_EQ(expanded("set {10 V, [L32]} now{}"), "set  now");
  ASSERT_EQ(run.log.notes.size(), 2u);
  EXPECT_EQ(run.log.notes[0].text, "10 V, 7");
  EXPECT_EQ(run.log.notes[0].mask, PendingNote::brace);
  EXPECT_EQ(run.log.notes[0].test_major, 3);
  EXPECT_EQ(run.log.notes[0].test_minor, 2);
  EXPECT_EQ(run.log.notes[1].text, "");

  run.log.notes.clear();
  startup_config().BraceEval = 0;
  startup_config().BraceEmpty = 0;
  EXPECT_EQ(expanded("{[L32]}{}"), "");
  ASSERT_EQ(run.log.notes.size(), 1u);
  EXPECT_EQ(run.log.notes[0].text, "[L32]");
}

TEST_F(Expand, ABoundIsKept) {
  run.registers.mem2 = std::string(4000, 'x');
  EXPECT_EQ(expanded("[MEM2]").size(), 4000u);
  EXPECT_EQ(expanded("[MEM2][MEM2]"), "!1901");
}

// Texts and actions happen in their written order: an action behind text waits for the next call.
std::string done;
bool act_note(RunState&, const FscRecord&, std::string_view argument) {
  done += "<" + std::string(argument) + ">";
  return true;
}

TEST_F(Expand, ActionsWaitForTheTextInFront) {
  const ElementAction actions[] = {{"D", act_note}, {"I$", act_note}};
  done.clear();
  TextCursor cursor{"[D 1]A[MEM][D 2][i$]B", 0};
  std::string out;
  while (!cursor.done()) {
    ASSERT_TRUE(expand(run, record, cursor, actions, out));
    done += out;
  }
  EXPECT_EQ(done, "<1>A-0.0015<2><>B");
}

}  // namespace
}  // namespace orvane
