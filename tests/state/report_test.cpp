#include "state/report.h"

#include <algorithm>
#include <regex>

#include "state/debug.h"
#include "state/error_log.h"
#include "support/desk.h"

namespace orvane {
namespace {

class Report : public test::EngineTest {
 protected:
  Report() {
    std::string reason;
    const std::string words =
        write("words.txt", "7 Value %d of \"%s\".\n8 Plain.\n30040 T\n30041 Y\n30042 N\n30043 O\n30044 C\n");
    if (!catalogue_load(words, reason)) ADD_FAILURE() << reason;
  }
  static FscRecord record(std::uint16_t flags) {
    FscRecord made = fsc_record_new();
    made.set(field::code, fsc::math);
    made.set(field::line_flags, flags);
    made.set(field::source_line, 12);
    return made;
  }
};

TEST_F(Report, AnErrorOfTheRunStopsTheTest) {
  EXPECT_FALSE(run_error(run, 7, 5, "x"));
  EXPECT_EQ(desk.last_message(), "E7: Value 5 of \"x\".");
  EXPECT_EQ(desk.shown[0].kind, "error");
  EXPECT_TRUE(run.has(run_flag::stop_test));
  run_error(run, 7, 5, std::string(3000, 'x'));
  EXPECT_EQ(desk.last_message().size(), report_limit);
}

TEST_F(Report, AReportOnARecordFollowsItsFlagsAndTheRuns) {
  struct Case {
    int line_flags, run_flags;
    const char* text;  // shown, or "" if nothing is
    const char* kind;
    bool stops;
    const char* queued;
  };
  const int active = run_flag::run_active, check = run_flag::check_mode, lines = run_flag::check_lines;
  const Case cases[] = {
      {0, active, "E8: FSC MATH: Plain.", "error", true, ""},
      {line_flag::warn_400, active, "W8: FSC MATH: Plain.", "warning", false, ""},
      {line_flag::first_after_header, active, "W8: FSC MATH: Plain.", "warning", false, ""},
      {0, 0, "", "", true, ""},  // neither a run nor a check: silent
      {0, active | lines, "E8: LINE 12: FSC MATH: Plain.", "error", true, ""},
      {0, check, "", "", true, "E8: FSC MATH: Plain."},
      {0, check | active, "E8: FSC MATH: Plain.", "error", true, ""},
  };
  int number = 0;
  for (const Case& c : cases) {
    desk.shown.clear();
    queue_clear();
    run.flags = static_cast<std::uint16_t>(c.run_flags);
    EXPECT_FALSE(run_report(run, record(static_cast<std::uint16_t>(c.line_flags)), 8));
    EXPECT_EQ(desk.last_message(), c.text) << number;
    EXPECT_EQ(desk.shown.empty() ? "" : desk.shown[0].kind, c.kind) << number;
    EXPECT_EQ(run.has(run_flag::stop_test), c.stops) << number;
    EXPECT_EQ(queue_peek() != nullptr ? *queue_peek() : "", c.queued) << number;
    ++number;
  }
}

TEST_F(Report, TheQueueDropsItsSeventeenthLine) {
  for (int i = 0; i < 16; ++i) EXPECT_TRUE(queue_add("line " + std::to_string(i)));
  EXPECT_FALSE(queue_add("line 16"));
  for (int i = 0; i < 16; ++i, queue_drop()) {
    ASSERT_NE(queue_peek(), nullptr);
    EXPECT_EQ(*queue_peek(), "line " + std::to_string(i));
  }
  EXPECT_EQ(queue_peek(), nullptr);
}

TEST_F(Report, SwitchesSendTextsToTheLogAndKeepBoxesAway) {
  EXPECT_TRUE(debug_letters("ae"));
  EXPECT_FALSE(debug_letters("x"));
  ASSERT_TRUE(debug_log_open(folder.string()));
  errp(8);
  set_box_flags(box_bit::none);
  errp(7, 1, "y");
  queue_add("queued");
  debug_log_close();
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{8});
  const std::string path = (folder / "ovdebug.txt").string();
  EXPECT_EQ(contents(path), "dpr_open : " + path +
                                "\neprint : E8: Plain.\neprint : E7: Value 1 of \"y\".\nerrq_add : queued\n");
}

TEST_F(Report, ALogThatCannotBeOpenedIsReported) {
  EXPECT_FALSE(debug_log_open((folder / "missing").string()));
  EXPECT_FALSE(debug_log_open(std::string(300, 'd')));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{493, 492}));
}

TEST_F(Report, QuestionsGiveTheirAnswer) {
  desk.reply(answer::no);
  EXPECT_EQ(yesnoph(8), answer::no);
  desk.reply(answer::terminate);
  EXPECT_EQ(okcanph(8), answer::terminate);
  EXPECT_EQ(desk.of_kind("lines")[0].lines, std::vector<std::string>{"Plain."});
}

TEST_F(Report, ASystemFaultHasTheSystemsWords) {
  show_error(8, 2);
  EXPECT_TRUE(desk.last_message().starts_with("E8: Plain.\n")) << desk.last_message();
  EXPECT_GT(desk.last_message().size(), std::string("E8: Plain.\n").size());
}

TEST_F(Report, ErrorsAndWarningsAreAppendedToTheErrorLog) {
  const std::string path = (folder / "errors.log").string();
  error_log_use(path);
  errp(7, 1, "first");
  warnp(7, 1, "second \xB5");
  msgp(8);
  const std::string log = contents(path);
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 2);
  EXPECT_TRUE(
      std::regex_match(log, std::regex("(\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d [EW]7: [^\n]*\n)+")))
      << log;
  EXPECT_NE(log.find("second \xC2\xB5"), std::string::npos);
  error_log_use((folder / "nowhere" / "errors.log").string());
  errp(7, 1, "third");
  errp(7, 1, "fourth");
  const std::vector<int> shown = desk.message_numbers();
  EXPECT_EQ(std::count(shown.begin(), shown.end(), 30321), 1) << "a log that cannot be written is told once";
  error_log_use({});
}

}  // namespace
}  // namespace orvane
