#include "config/profile.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "config/startup_config.h"
#include "config/user_settings.h"
#include "support/desk.h"

namespace orvane {
namespace {

using Profile = test::EngineTest;

TEST_F(Profile, ReadsKeysOfASection) {
  const std::string path =
      write("a.ini",
            "\xEF\xBB\xBF[One]\r\nkey=1\n; key=2\n\n[ TWO ] x\n Key = \" quoted \" \nkey = 3\nempty =\n"
            "no equals\n[one]\nlater = \xC3\xB5 = \xB5\n");
  const auto get = [&](const char* section, const char* key) {
    return profile_get(path, section, key).value_or("(none)");
  };
  EXPECT_EQ(get("one", "KEY"), "1");
  EXPECT_EQ(get("Two", "key"), " quoted ");
  EXPECT_EQ(get("two", "empty"), "");
  EXPECT_EQ(get("One", "later"), "\xC3\xB5 = \xB5");  // a line that is no UTF-8 is taken byte by byte
  EXPECT_EQ(get("two", "later"), "(none)");
  EXPECT_EQ(get("three", "key"), "(none)");
  EXPECT_EQ(get("two", "no equals"), "(none)");
  EXPECT_FALSE(profile_get((folder / "absent").string(), "a", "b").has_value());
}

TEST_F(Profile, WritesOneKeyAndLeavesTheRest) {
  struct Case {
    const char *before, *section, *key, *value, *after;
  };
  const Case cases[] = {
      {"", "Run Time", "mode", "demo", "[Run Time]\nmode = demo\n"},
      {"[A]\nx = 1\n", "B", "y", "2", "[A]\nx = 1\n\n[B]\ny = 2\n"},
      {"[A]\nx = 1", "A", "y", "2", "[A]\nx = 1\ny = 2\n"},
      {"[A]\nx = 1", "B", "y", "2", "[A]\nx = 1\n\n[B]\ny = 2\n"},
      {"; head\n[a]\n; of x\nX  =  1\n\n; of B\n[B]\nx=3\n", "A", "x", "2",
       "; head\n[a]\n; of x\nx = 2\n\n; of B\n[B]\nx=3\n"},
      {"[A]\nx = 1\n\n; of B\n[B]\nx=3\n", "A", "y", "2", "[A]\nx = 1\ny = 2\n\n; of B\n[B]\nx=3\n"},
      {"[A]\n\n[B]\nx=3\n", "A", "y", "2", "[A]\ny = 2\n\n[B]\nx=3\n"},
      {"[A]\r\nx = 1\r\n[B]\r\n", "A", "x", "2", "[A]\r\nx = 2\r\n[B]\r\n"},
      {"[A]\nx = 1\nx = 5\n[A]\ny = 1\n", "A", "y", "2", "[A]\nx = 1\nx = 5\n[A]\ny = 2\n"},
      {"[A]\nx=1\n", "A", "x", "1", "[A]\nx=1\n"},
      {"[A]\n", "A", "x", " a ", "[A]\nx = \" a \"\n"},
      {"[A]\n", "A", "x", "\"q\"", "[A]\nx = \"\"q\"\"\n"},
      {"[A]\n", "A", "x", "two\r\n[B]", "[A]\nx = two  [B]\n"},
      {"[A]\n", "A", "x", "\xB5", "[A]\nx = \xC2\xB5\n"},
      {"x = 0\n[A]\n", "A", "x", "1", "x = 0\n[A]\nx = 1\n"},
  };
  for (const Case& c : cases) {
    const std::string path = write("p.ini", c.before);
    EXPECT_TRUE(profile_put(path, c.section, c.key, c.value));
    EXPECT_EQ(contents(path), c.after) << c.before;
  }
}

TEST_F(Profile, EveryValueComesBack) {
  const std::string path = (folder / "new" / "below" / "s.ini").string();
  for (const std::string value :
       {"", " ", "\"", "\"\"", "a=b", "; c", "# c", "[x]", "\xB0\xB2\xB5", "  two  words "}) {
    ASSERT_TRUE(profile_put(path, "S", "k", value)) << value;
    EXPECT_EQ(profile_get(path, "S", "k").value_or("(none)"), value);
  }
}

TEST_F(Profile, AFailedWriteLeavesTheFile) {
  const std::string folder_as_file = write("file", "x");
  EXPECT_FALSE(profile_put(folder_as_file + "/s.ini", "Run Time", "mode", "demo"));
  EXPECT_EQ(desk.last_message(), "E2242: The key \"mode\" of the section \"Run Time\" cannot be written to " +
                                     folder_as_file +
                                     "/s.ini; see that the file and its folder can be written.");
  // A file that cannot be read is not written over.
  const std::string big = write("big.ini", std::string((1 << 20) + 1, ';'));
  EXPECT_FALSE(profile_put(big, "a", "b", "c"));
  EXPECT_EQ(contents(big).size(), (1u << 20) + 1);
}

TEST_F(Profile, TheHouseRuleServesWhereTheUserSaysNothing) {
  std::vector<ConfigFault> faults;
  (void)config_load(write("orvane.ini", "[Run Time]\nmode = real\nmethod = house\n"), faults);
  use_user_settings((folder / "settings.ini").string());
  EXPECT_EQ(user_setting("Run Time", "mode"), "real");
  EXPECT_TRUE(put_user_setting("Run Time", "mode", "demo"));
  EXPECT_EQ(user_setting("Run Time", "mode"), "demo");
  EXPECT_EQ(user_setting("Run Time", "method"), "house");
  EXPECT_FALSE(user_setting("Other", "method").has_value());
  EXPECT_EQ(contents((folder / "orvane.ini").string()), "[Run Time]\nmode = real\nmethod = house\n");
  use_user_settings("");
  startup_config() = StartupConfig();
}

}  // namespace
}  // namespace orvane
