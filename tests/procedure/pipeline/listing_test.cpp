// The listing from the window at a test: where it begins, and what its buttons do.
#include "procedure/file/listing.h"

#include "config/startup_config.h"
#include "messages/catalogue.h"
#include "procedure/pipeline/run_test.h"
#include "support/procedures.h"

namespace orvane {
namespace {

class Listing : public test::RunTest {
 protected:
  // Two tests; the one that is judged begins two lines above its comparison.
  void judged(const std::string& first_line) {
    std::string compared = line(2, 3, "MEMC", "10.00V");
    compared.resize(37, ' ');
    source(test::header("Judged") + line(1, 1, "MATH", "M[1] = M[1] + 1") + "\n" + first_line + "\n" +
           line(2, 2, "MATH", "MEM = 10; M[2] = M[2] + 1") + "\n" + compared + "1%\n" +
           line(2, 4, "END", "") + "\n");
  }
  static constexpr std::size_t header_lines = 10;
};

TEST_F(Listing, BeginsAtTheCurrentLineOrAtTheTestsFirst) {
  struct Case {
    std::int16_t list_current;
    std::string first_line;
    std::size_t row;
  };
  const Case cases[] = {
      {1, line(2, 1, "HEAD", "volts"), header_lines + 3},
      {0, line(2, 1, "HEAD", "volts"), header_lines + 1},
      {0, line(1, 2, "TARGET", "-p"), header_lines + 1},
      {0, line(1, 2, "TARGET", ""),
       header_lines},  // a mark for jumps only: back to the line that has the step 1
  };
  for (const Case& c : cases) {
    judged(c.first_line);
    startup_config().pt_list_current = c.list_current;
    desk.shown.clear();
    desk.reply(answer::test_list);
    desk.reply(answer::terminate);
    EXPECT_EQ(go("Judged"), run_result::finished);
    const std::vector<test::Shown> lists = desk.of_kind("choose");
    ASSERT_EQ(lists.size(), 1u);
    EXPECT_EQ(lists[0].choice.kind, WindowKind::listing);
    EXPECT_EQ(lists[0].title, msg(244));
    EXPECT_EQ(lists[0].choice.first_row, c.row) << c.first_line << c.list_current;
    ASSERT_EQ(lists[0].buttons.size(), 2u);
    EXPECT_EQ(lists[0].buttons[0].label, msg(5901));
    EXPECT_EQ(lists[0].buttons[1].label, msg(5911));
    // Rows are rendered from the records: nothing was loaded as text.
    EXPECT_EQ(lists[0].lines[header_lines], line(1, 1, "MATH", "M[1] = M[1] + 1"));
    EXPECT_EQ(lists[0].lines.size(), header_lines + 5);
  }
}

TEST_F(Listing, TheChosenLineRunsNext) {
  judged(line(2, 1, "HEAD", "volts"));
  struct Case {
    std::size_t row;
    double first, second;  // how often each MATH line has run
  };
  for (const Case& c : {Case{0, 2, 2}, Case{header_lines, 2, 2}, Case{header_lines + 2, 1, 2},
                        Case{header_lines + 4, 1, 1}}) {
    desk.replies.clear();
    desk.reply(answer::test_list);
    desk.reply(answer::ok, {}, c.row);
    desk.reply(answer::test_continue);
    EXPECT_EQ(go("Judged"), run_result::finished);
    EXPECT_EQ(m(1), c.first) << c.row;
    EXPECT_EQ(m(2), c.second) << c.row;
  }
}

}  // namespace
}  // namespace orvane
