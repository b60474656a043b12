#include "reports/page_layout.h"

#include <gtest/gtest.h>

#include "config/user_settings.h"
#include "messages/catalogue.h"
#include "support/desk.h"
#include "support/recording_printer.h"

namespace orvane::test {
namespace {

class PageLayoutTest : public EngineTest {
 protected:
  PageLayoutTest() { use_user_settings(write("settings.ini", "[Page Margin]\npage = 1\n")); }
  void set(std::string_view key, std::string_view value) {
    ASSERT_TRUE(put_user_setting("Page Margin", key, value));
  }
  // Lines "1", "2", ...
  static std::vector<std::string> numbered(int count) {
    std::vector<std::string> lines;
    for (int i = 1; i <= count; ++i) lines.push_back(std::to_string(i));
    return lines;
  }

  RecordingPrinter printer;
};

TEST_F(PageLayoutTest, MarksDivideAReport) {
  const std::string first = msg(4624), head = msg(4625);
  const ReportText whole = report_text("cover\r\n" + first + "\nhead\n" + head + "\nbody\n\nend");
  EXPECT_EQ(whole.first, std::vector<std::string>{"cover"});
  EXPECT_EQ(whole.head, std::vector<std::string>{"head"});
  EXPECT_EQ(whole.body, (std::vector<std::string>{"body", "", "end"}));
  EXPECT_EQ(report_lines(whole), (std::vector<std::string>{"cover", "head", "body", "", "end"}));
  // A certificate has only the first mark; a plain text none.
  EXPECT_EQ(report_text("cover\n" + first + "\nrest\n").body, std::vector<std::string>{"rest"});
  EXPECT_EQ(report_text("a\nb").body, (std::vector<std::string>{"a", "b"}));
}

// 100 dots an inch, lines of 10, 11 inches high: margins of 0.75 leave 95 lines, with page numbers 94.
TEST_F(PageLayoutTest, PagesEndAtTheBottomMarginAndBearNumbers) {
  ASSERT_TRUE(print_report(printer, "T", {.first = {"cover"}, .head = {"head"}, .body = numbered(200)}));
  ASSERT_EQ(printer.pages.size(), 3U);
  const auto& one = printer.pages[0];
  EXPECT_EQ(one.front(), (PrintedText{75, 75, "cover"}));
  EXPECT_EQ(one[1], (PrintedText{75, 85, "head"}));
  EXPECT_EQ(one.back(), (PrintedText{425, 1015, "1"}));  // the place of the last line without numbers
  EXPECT_EQ(one[one.size() - 2].y, 1005);                // the last line stands above it
  EXPECT_EQ(printer.pages[1].front(), (PrintedText{75, 75, "head"}));
  EXPECT_EQ(printer.pages[1][1].text, "93");  // 92 lines of the body stand on page 1
  EXPECT_EQ(printer.pages[2].back().text, "3");
  EXPECT_TRUE(printer.ended);

  set("page", "0");
  RecordingPrinter plain;
  ASSERT_TRUE(print_report(plain, "T", {.first = {}, .head = {}, .body = numbered(96)}));
  ASSERT_EQ(plain.pages.size(), 2U);
  EXPECT_EQ(plain.pages[0].back(), (PrintedText{75, 1015, "95"}));
}

TEST_F(PageLayoutTest, AFormFeedBeginsAPage) {
  ASSERT_TRUE(print_report(printer, "T", {.first = {}, .head = {"head"}, .body = {"a", "\fb", "\f", "c"}}));
  ASSERT_EQ(printer.pages.size(), 3U);
  EXPECT_EQ(printer.pages[1][1].text, "b");
  EXPECT_EQ(printer.pages[2][1].text, "c");
}

// A head as long as the page would push the report off every page.
TEST_F(PageLayoutTest, AHeadThatLeavesNoRoomIsNotRepeated) {
  ASSERT_TRUE(print_report(printer, "T", {.first = {}, .head = numbered(200), .body = numbered(5)}));
  EXPECT_LE(printer.pages.size(), 4U);
}

TEST_F(PageLayoutTest, MarginsAreCheckedAgainstThePrinter) {
  const PageMetrics page = printer.metrics();  // a border of 25 dots
  struct Case {
    PageMargins margins;
    int fault;
  };
  const Case cases[] = {{{"0.25", "0.25", "0.25", false}, 0}, {{"0.24", "1", "1", false}, 4852},
                        {{"1", "0.24", "1", false}, 4853},    {{"1", "1", "0.24", false}, 4854},
                        {{"1", "1", "0.34", true}, 4855},     {{"1", "1", "0.35", true}, 0},
                        {{"one", "1", "1", false}, 4852},     {{"1", "", "1", false}, 4853},
                        {{"1", "1", "-3", false}, 4854},      {{"1", "1", "nan", false}, 4854}};
  for (const Case& c : cases)
    EXPECT_EQ(margin_fault(c.margins, page), c.fault) << c.margins.left << c.margins.bottom;
}

TEST_F(PageLayoutTest, WithoutTheKeyPageNumbersAreOffAndSaidOnce) {
  use_user_settings(write("other.ini", ""));
  EXPECT_FALSE(page_margins().numbers);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{2225});
  EXPECT_FALSE(page_margins().numbers);
  EXPECT_EQ(desk.message_numbers().size(), 1U);
}

TEST_F(PageLayoutTest, LinesTooWideAreAskedAbout) {
  const ReportText report{.first = {}, .head = {}, .body = {std::string(151, 'x')}};
  desk.reply(answer::no);
  EXPECT_FALSE(print_report(printer, "T", report));
  EXPECT_EQ(desk.of_kind("lines").front().title, "Paper Width Exceeded!");
  EXPECT_FALSE(printer.begun);
  desk.reply(answer::yes);
  EXPECT_TRUE(print_report(printer, "T", report));
  ASSERT_TRUE(print_report(printer, "T", {.first = {}, .head = {}, .body = {std::string(150, 'x')}}));
  EXPECT_EQ(desk.of_kind("lines").size(), 2U);
}

TEST_F(PageLayoutTest, EveryRefusalOfAPrinterHasItsNumberAndGivesTheDocumentUp) {
  struct Case {
    std::string step;
    std::vector<int> numbers;
  };
  const Case cases[] = {
      {"metrics", {4834}}, {"begin", {2185}},    {"begin_page", {2187}}, {"font", {2210}},
      {"text", {2233}},    {"end_page", {2188}}, {"end", {2186}},        {"text,abort", {2233, 2189}}};
  for (const Case& c : cases) {
    RecordingPrinter faulty;
    faulty.refuses = c.step;
    const std::size_t before = desk.message_numbers().size();
    EXPECT_FALSE(print_report(faulty, "T", {.first = {}, .head = {}, .body = {"a"}})) << c.step;
    const std::vector<int> all = desk.message_numbers();
    EXPECT_EQ(std::vector<int>(all.begin() + static_cast<std::ptrdiff_t>(before), all.end()), c.numbers)
        << c.step;
  }
  set("top", "10.2");  // the margins meet
  EXPECT_FALSE(print_report(printer, "T", {.first = {}, .head = {}, .body = {"a"}}));
  EXPECT_EQ(desk.message_numbers().back(), 4835);
}

TEST_F(PageLayoutTest, TheOperatorCanGiveThePrintingUp) {
  desk.press_abort_in_wait = true;
  EXPECT_FALSE(print_report(printer, "T", {.first = {}, .head = {}, .body = numbered(300)}));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{4836});
  EXPECT_TRUE(printer.aborted);
  EXPECT_FALSE(printer.ended);
}

}  // namespace
}  // namespace orvane::test
