#include "instruments/connections.h"

#include "config/startup_config.h"
#include "messages/catalogue.h"
#include "procedure/pipeline/run_test.h"
#include "support/procedures.h"

namespace orvane {
namespace {

constexpr std::uint32_t always = ask_option::W, where_forced = ask_option::V, silent = 0;

class Connections : public test::RunTest {
 protected:
  // What the windows showed since the last call: "heading line|line".
  std::vector<std::string> windows() {
    std::vector<std::string> all;
    for (const test::Shown& one : desk.of_kind("lines")) {
      std::string text = one.title;
      for (const std::string& each : one.lines) text += "|" + each;
      all.push_back(text);
    }
    desk.shown.clear();
    return all;
  }
  int want(std::initializer_list<int> numbers, std::uint32_t word, bool sticky = false) {
    for (const int number : numbers) EXPECT_TRUE(con_want(run, number, sticky));
    return con_prompt(run, word);
  }
  // Texts of the test's own, numbers 1 to 4 and 8, which forces a prompt.
  void own_texts() {
    const std::string path = write(
        "en.txt",
        "2037 long %d %d\n2044 marker %d %s %d\n2045 Connect\n2046 Disconnect\n"
        "2706 no text %d\n8001 Connect one\n8002 Connect two to @1 now\n8004 @1 four @2\n8006 Connect @9\n"
        "8008 Connect eight\n10580 High\n");
    std::string reason;
    ASSERT_TRUE(catalogue_load(path, reason)) << reason;
  }
  using Windows = std::vector<std::string>;
};

TEST_F(Connections, OnlyWhatChangesIsAskedFor) {
  own_texts();
  EXPECT_EQ(want({1, 580}, always), answer::ok);
  EXPECT_EQ(windows(), Windows{"Connect:|Connect one|High"});
  EXPECT_EQ(want({1, 580}, always), answer::ok);
  EXPECT_EQ(windows(), Windows{});
  EXPECT_EQ(want({1, 8}, always), answer::ok);
  EXPECT_EQ(windows(), (Windows{"Disconnect:|High", "Connect:|Connect eight"}));
  EXPECT_TRUE(con_drop(run, 1));
  EXPECT_TRUE(con_drop(run, 580));  // is off already
  EXPECT_EQ(con_prompt_only(run, always), answer::ok);
  EXPECT_EQ(windows(), Windows{"Disconnect:|Disconnect one"});
  EXPECT_FALSE(con_is_connected(run, 1));
  EXPECT_TRUE(con_is_connected(run, 8));
  startup_config().ConnDisconn = 0;
  EXPECT_EQ(want({}, always), answer::ok);
  EXPECT_EQ(windows(), Windows{"Disconnect:|Connect eight"});
}

TEST_F(Connections, WindowsAppearByTheOptions) {
  own_texts();
  EXPECT_EQ(want({1, 3}, silent), answer::ok);  // 3 has no text, and needs none
  EXPECT_TRUE(con_is_connected(run, 1));
  EXPECT_EQ(want({1, 2}, where_forced), answer::ok);
  EXPECT_EQ(windows(), Windows{});
  EXPECT_EQ(want({8}, where_forced), answer::ok);
  EXPECT_EQ(windows(),
            (Windows{"Disconnect:|Disconnect one|Disconnect two to now", "Connect:|Connect eight"}));
  EXPECT_EQ(want({1}, where_forced), answer::ok);  // 8 goes
  EXPECT_EQ(windows(), (Windows{"Disconnect:|Disconnect eight", "Connect:|Connect one"}));
  EXPECT_EQ(want({3}, always), answer::failed);
  EXPECT_EQ(desk.message_numbers().back(), 2706);
}

TEST_F(Connections, StickyOnesStayUntilTheyAreReleased) {
  own_texts();
  EXPECT_EQ(want({1}, always, true), answer::ok);
  windows();
  EXPECT_EQ(want({8}, always), answer::ok);
  EXPECT_EQ(windows(), Windows{"Connect:|Connect eight"});
  EXPECT_TRUE(con_is_connected(run, 1));
  EXPECT_TRUE(con_release(run, 1));
  EXPECT_EQ(want({8}, always), answer::ok);
  EXPECT_EQ(windows(), Windows{"Disconnect:|Disconnect one"});
  EXPECT_EQ(want({1, 2}, silent, true), answer::ok);
  EXPECT_TRUE(con_release(run, 0));
  EXPECT_EQ(want({}, silent), answer::ok);
  EXPECT_FALSE(con_is_connected(run, 1) || con_is_connected(run, 2));
}

TEST_F(Connections, ConditionsAreFilledInAndRemembered) {
  own_texts();
  ASSERT_TRUE(con_set_condition(run, 1, "A@2"));  // a marker that a condition brings along is none
  ASSERT_TRUE(con_set_condition(run, 2, "B"));
  EXPECT_EQ(want({2, 4}, always), answer::ok);
  EXPECT_EQ(windows(), Windows{"Connect:|Connect two to A@2 now|A@2 four B"});
  ASSERT_TRUE(con_set_condition(run, 2, ""));  // changes 4 alone
  EXPECT_EQ(want({2, 4}, always), answer::ok);
  EXPECT_EQ(windows(), (Windows{"Disconnect:|A@2 four B", "Connect:|A@2 four"}));
  ASSERT_TRUE(con_set_condition(run, 1, std::string(128, 'x')));
  EXPECT_EQ(want({2}, always), answer::failed);
  EXPECT_EQ(desk.message_numbers().back(), 2037);
  EXPECT_EQ(*con_get_condition(run, 2), "");
  EXPECT_EQ(want({6}, always), answer::failed);
  EXPECT_EQ(desk.message_numbers().back(), 2044);
}

TEST_F(Connections, AStopLeavesTheRestAsItStood) {
  own_texts();
  EXPECT_EQ(want({1}, silent), answer::ok);
  desk.reply(answer::terminate);
  EXPECT_EQ(want({8}, always), answer::terminate);
  EXPECT_TRUE(con_is_connected(run, 1));
  EXPECT_EQ(windows().size(), 1U);
  desk.reply(answer::ok);
  desk.reply(answer::terminate);
  EXPECT_EQ(con_prompt(run, always), answer::terminate);  // 8 is still wanted
  EXPECT_FALSE(con_is_connected(run, 1) || con_is_connected(run, 8));
  EXPECT_EQ(want({}, always), answer::ok);
  EXPECT_FALSE(con_is_connected(run, 8));
}

TEST_F(Connections, NumbersOutOfBoundsAreRefused) {
  EXPECT_FALSE(con_want(run, 1025));
  EXPECT_FALSE(con_want(run, 0));
  EXPECT_FALSE(con_drop(run, -1));
  EXPECT_FALSE(con_release(run, 1025));
  EXPECT_FALSE(con_set_condition(run, 9, "x"));
  EXPECT_EQ(con_get_condition(run, 0), nullptr);
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{2705, 2705, 2705, 2705, 2042, 2040}));
  EXPECT_TRUE(con_want(run, 1024));
}

TEST_F(Connections, TheStatement) {
  procedure("Leads", {"CON +67,68", "CON -68", "CON =69", "CON 69", "CON 1025", "END"});
  go("Leads");
  EXPECT_EQ(windows(),
            (Windows{"Connect:|Connect HP 3458A, volts and ohms 2-wire: terminals INPUT HI and LO"
                     "|Connect HP 3458A, ohms 4-wire: terminals SENSE HI and LO as well",
                     "Disconnect:|Disconnect HP 3458A, ohms 4-wire: terminals SENSE HI and LO as well",
                     "Disconnect:|Disconnect HP 3458A, volts and ohms 2-wire: terminals INPUT HI and LO",
                     "Connect:|Connect HP 3458A, current: terminals I and INPUT LO",
                     "Disconnect:|Disconnect HP 3458A, current: terminals I and INPUT LO"}));
}

}  // namespace
}  // namespace orvane
