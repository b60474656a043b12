#include "values/variable_file.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <sstream>

#include "state/reserved_variables.h"
#include "support/desk.h"

namespace orvane {
namespace {

class VariableFile : public test::EngineTest {
 protected:
  std::string path = (folder / "vars.txt").string();

  bool open(std::string_view text, std::string_view title = "T") {
    write("vars.txt", text);
    desk.shown.clear();
    return var_open(run, path, title);
  }
  std::string value(std::string_view name) {
    const std::string* found = run_variable(run, name);
    return found != nullptr ? *found : "(none)";
  }
  int first_message() { return desk.shown.empty() ? 0 : desk.message_numbers().front(); }
};

TEST_F(VariableFile, NothingChangesAFileInWhichNothingChanged) {
  const std::string text = "B$=2\r\nPTITLE_L$=T\nA_1$= x=y \nb$=3\nUI1$=9\nNOTIFY_USER$=me";
  ASSERT_TRUE(open(text));
  EXPECT_EQ(value("b"), "3");  // the last line of a name counts
  EXPECT_EQ(value("A_1$"), " x=y ");
  EXPECT_TRUE(var_set(run, "b", "3"));
  run_variable_set(run, "B$", "of the run");
  run_variable_set(run, "NEW$", "of the run");
  EXPECT_TRUE(var_set(run, "SER_NUM", "1"));             // belongs to the run
  EXPECT_TRUE(var_set_suffixed(run, "B$", "low", '1'));  // B1$ stays in memory
  EXPECT_EQ(value("B1$"), "low");
  EXPECT_TRUE(var_close(run));
  EXPECT_EQ(contents(path), text);
  EXPECT_EQ(value("b"), "(none)");
}

TEST_F(VariableFile, AChangeIsWrittenNewestFirst) {
  ASSERT_TRUE(open("B$=2\nPTITLE_L$=T\nUI$=1\nNOTIFY_USER$=me\nC$=\xC2\xB0\nD_$=\xB0\n"));
  run_variable_set(run, "B$", "of the run");
  EXPECT_TRUE(var_set(run, "new$", "1\xB5"));
  EXPECT_TRUE(var_set(run, "d_", "2"));
  EXPECT_TRUE(var_flush(run));
  // C$ and UI$ are what runs say; the NOTIFY_USER$ that was read stays in memory.
  EXPECT_EQ(contents(path), "NEW$=1\xC2\xB5\nB$=2\nPTITLE_L$=T\nD_$=2\n");
  EXPECT_FALSE(std::filesystem::exists(folder / "VAR$FILE.TMP"));
  EXPECT_EQ(value("B$"), "of the run");
  run_variables_restart(run);
  EXPECT_EQ(value("B$"), "2");
  EXPECT_EQ(value("UI$"), "1");  // what the file says outlives a run
  EXPECT_EQ(value("NOTIFY_USER$"), "me");
  std::ostringstream report;
  run_entry_set(run, "OPERATOR_NAME$", "Q");
  EXPECT_TRUE(var_write_reserved(run, report));
  EXPECT_EQ(report.str(), "NEW$=1\xB5\nB$=2\nPTITLE_L$=T\nUI$=1\nNOTIFY_USER$=me\nC$=\xB0\nD_$=2\n");
  report.setstate(std::ios::badbit);
  EXPECT_FALSE(var_write_reserved(run, report));
  EXPECT_EQ(first_message(), 4512);
}

TEST_F(VariableFile, AFileThatIsNotThereIsMade) {
  ASSERT_TRUE(var_open(run, path, "Title"));
  EXPECT_TRUE(var_close(run));
  EXPECT_EQ(contents(path), "PTITLE_L$=Title\n");
}

TEST_F(VariableFile, FaultsOfTheFile) {
  const std::string longest = "Q$=" + std::string(509, 'x');
  EXPECT_TRUE(open(longest));
  const struct {
    std::string text;
    int message;
  } cases[] = {{"FOO=1", 4513},        {"A$=1\n\n", 4513},
               {"A$ = 1", 4513},       {"x=$=1", 4513},
               {"$=1", 4506},          {"1A$=1", 4506},
               {"A B$=1", 4506},       {std::string("A$=1\0002", 6), 4506},
               {longest + "x", 31141}, {std::string(255, 'A') + "$=1", 4506}};
  for (const auto& c : cases) {
    EXPECT_FALSE(open("OK$=1\n" + c.text)) << c.text;
    EXPECT_EQ(first_message(), c.message) << c.text;
    EXPECT_TRUE(run.pipeline.variables.empty()) << c.text;
  }
  EXPECT_FALSE(open("", "two\nlines"));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{4514, 4515}));
  desk.shown.clear();
  EXPECT_FALSE(var_open(run, "/" + std::string(114, 'd') + "/vars.txt", ""));
  EXPECT_EQ(first_message(), 4505);
  desk.shown.clear();
  EXPECT_FALSE(var_open(run, folder.string(), ""));
  EXPECT_EQ(first_message(), 31140);
}

TEST_F(VariableFile, FaultsOfAName) {
  ASSERT_TRUE(open(""));
  const std::size_t before = run.pipeline.variables.size();
  EXPECT_FALSE(var_set(run, "1A", "x"));
  EXPECT_FALSE(var_set(run, "Q", std::string(510, 'x')));
  EXPECT_FALSE(var_set(run, "Q", "x\r"));
  const std::string_view names[25] = {"Q", "1"}, values[25] = {"1", "2"};
  EXPECT_FALSE(var_set_many(run, names, values));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{4506, 4514, 4514, 4509}));
  EXPECT_EQ(run.pipeline.variables.size(), before);
  EXPECT_FALSE(var_set_many(run, std::span(names).first(2), std::span(values).first(2)));
  EXPECT_EQ(value("Q"), "1");
  std::size_t length = 0;
  bool found = false;
  EXPECT_TRUE(var_get_length(run, "q", length, found) && found && length == 1);
  EXPECT_TRUE(var_get_length(run, "b", length, found) && !found);
  EXPECT_FALSE(var_get_length(run, "1", length, found));
  std::string name = "ab_1$";
  EXPECT_TRUE(var_valid_name(name));
  EXPECT_EQ(name, "AB_1$");
  EXPECT_FALSE(var_valid_name(name = "AB"));
}

// The disk is full: the file stays as it was, and the change is written once there is room.
TEST_F(VariableFile, FullDisk) {
  const std::string text = "Q$=" + std::string(400, 'a') + "\nPTITLE_L$=T\n";
  ASSERT_TRUE(open(text));
  rlimit old{};
  ::getrlimit(RLIMIT_FSIZE, &old);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small{.rlim_cur = 100, .rlim_max = old.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &small);
  EXPECT_TRUE(var_set(run, "B", "1"));
  const bool flushed = var_flush(run);
  ::setrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, handler);
  EXPECT_FALSE(flushed);
  EXPECT_EQ(first_message(), 4507);
  EXPECT_EQ(contents(path), text);
  EXPECT_FALSE(std::filesystem::exists(folder / "VAR$FILE.TMP"));
  EXPECT_TRUE(var_flush(run));
  EXPECT_EQ(contents(path), "B$=1\n" + text);

  // Something stands in the file's place that cannot be replaced.
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);
  EXPECT_TRUE(var_set(run, "B", "2"));
  desk.shown.clear();
  EXPECT_FALSE(var_close(run));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{4508, 4504}));
}

TEST_F(VariableFile, ReservedNames) {
  for (const ReservedVariable& row : reserved_variables()) EXPECT_NE(reserved_variable(row.name), nullptr);
  for (const char* name : {"UI1$", "UI2$", "RESULTS_FILE_NAME1$", "A2$"})
    EXPECT_NE(reserved_variable(name), nullptr) << name;
  for (const char* name : {"", "$", "A", "UI3$", "UI11$", "TEMP$", "1$", "T_INSTRUMENT_NAME12$"})
    EXPECT_EQ(reserved_variable(name), nullptr) << name;
}

}  // namespace
}  // namespace orvane
