#include "reports/result_directory.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>

#include "config/startup_config.h"
#include "platform/exclusive_file.h"
#include "platform/files.h"
#include "platform/platform.h"
#include "state/report.h"
#include "state/run_variables.h"
#include "support/desk.h"

namespace orvane::test {
namespace {

class ResultDirectoryTest : public EngineTest {
 protected:
  ResultDirectoryTest() {
    startup_config().rsltdir = folder.string();
    set("UUT_CODE$", "A-17");
    set("SER_NUM$", "4711");
    set("DATE$", "2026-11-23");
    set("TIME$", "16:20:59");
    set("PROC_NAME$", "Hand-held multimeter");
  }
  ~ResultDirectoryTest() override { startup_config().rsltdir.clear(); }
  void set(std::string_view name, std::string_view value) { run_variable_set(run, name, value); }
  std::string save(char kind, std::string_view text = "report\n") {
    SavedResult entry = saved_result_of(run, kind);
    return save_result_file(write("result.lst", text), entry) ? saved_file_name(entry) : "";
  }
  std::string bytes() const { return contents((folder / "rslt.dir").string()); }
};

TEST_F(ResultDirectoryTest, ARecordHasItsPlaces) {
  EXPECT_EQ(save(result_kind::results), "1.res");
  const std::string expected = std::string(" 1             ") + "A-17            " + "4711            " +
                               "20261123 " + "16:20" + "R\r\n" + "Hand-held multimeter" +
                               std::string(35, ' ') + "\r\n";
  EXPECT_EQ(bytes(), expected);
  EXPECT_EQ(expected.size(), SavedResult::size);
  EXPECT_EQ(contents((folder / "1.res").string()), "report\n");
}

TEST_F(ResultDirectoryTest, LongTextsAreCutAndLineBreaksAreBlanks) {
  set("SER_NUM$", "0123456789abcdefXYZ");
  set("PROC_NAME$", "a\r\nb" + std::string(80, 'x'));
  ASSERT_EQ(save(result_kind::summary), "1.res");
  EXPECT_EQ(bytes().size(), SavedResult::size);
  const SavedResult entry = saved_result_of(bytes());
  EXPECT_EQ(entry.serial_number, "0123456789abcdef");
  EXPECT_EQ(entry.procedure, "a  b" + std::string(51, 'x'));
  EXPECT_EQ(save(result_kind::summary), "1.res");  // known again as it was cut
}

TEST_F(ResultDirectoryTest, TheSameReportKeepsItsNumber) {
  EXPECT_EQ(save(result_kind::results, "first\n"), "1.res");
  EXPECT_EQ(save(result_kind::certificate), "2.res");
  EXPECT_EQ(save(result_kind::as_left), "3.raw");
  EXPECT_EQ(save(result_kind::results, "again\n"), "1.res");
  EXPECT_EQ(contents((folder / "1.res").string()), "again\n");
  set("SER_NUM$", "4712");
  EXPECT_EQ(save(result_kind::results), "4.res");
}

// The highest number counts all states; a protected record is not used again, a deleted one comes back.
TEST_F(ResultDirectoryTest, StatesOfRecords) {
  ASSERT_EQ(save(result_kind::results), "1.res");
  std::vector<SavedResult> all;
  ASSERT_TRUE(saved_results(all));
  ASSERT_TRUE(delete_saved_result(all[0]));
  EXPECT_FALSE(file_exists((folder / "1.res").string()));
  EXPECT_EQ(bytes()[0], 'D');
  EXPECT_FALSE(delete_saved_result(all[0]));
  set("SER_NUM$", "other");
  EXPECT_EQ(save(result_kind::results), "2.res");
  set("SER_NUM$", "4711");
  EXPECT_EQ(save(result_kind::results), "1.res");
  EXPECT_EQ(bytes()[0], ' ');

  std::string list = bytes();
  list[0] = result_state::is_protected;
  write("rslt.dir", list);
  EXPECT_EQ(save(result_kind::results), "3.res");
  EXPECT_EQ(bytes()[0], 'P');
}

// What a killed program left behind of a record is no record, and is written over.
TEST_F(ResultDirectoryTest, ARecordThatWasCutShort) {
  ASSERT_EQ(save(result_kind::results), "1.res");
  write("rslt.dir", bytes() + std::string(60, 'x'));
  EXPECT_EQ(save(result_kind::summary), "2.res");
  EXPECT_EQ(bytes().size(), 2 * SavedResult::size);
}

TEST_F(ResultDirectoryTest, WhoeverHoldsTheListIsWaitedFor) {
  ExclusiveFile held;
  ASSERT_TRUE(held.open((folder / "rslt.dir").string()));
  desk.reply(answer::no);  // the question whether to try again
  EXPECT_EQ(save(result_kind::results), "");
  EXPECT_GE(clock.slept, 1000U);
  EXPECT_EQ(desk.message_numbers().back(), 31282);
  EXPECT_FALSE(file_exists((folder / "1.res").string()));
  ASSERT_TRUE(held.close());
  EXPECT_EQ(save(result_kind::results), "1.res");
}

// Programs that save at the same time wait for one another: no record is lost, no number is given twice.
TEST_F(ResultDirectoryTest, SeveralProgramsSaveAtOnce) {
  constexpr int programs = 3, each = 40;
  std::vector<pid_t> children;
  for (int i = 0; i < programs; ++i) {
    const std::string report = write("report" + std::to_string(i), formatted("of %d\n", i));
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
      platform().clock = &system_clock();
      for (int n = 0; n < each; ++n) {
        set("SER_NUM$", formatted("%d-%d", i, n));
        SavedResult entry = saved_result_of(run, result_kind::results);
        if (!save_result_file(report, entry)) ::_exit(1);
      }
      ::_exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  std::vector<SavedResult> all;
  ASSERT_TRUE(saved_results(all));
  EXPECT_EQ(all.size(), static_cast<std::size_t>(programs * each));
  std::set<std::string> numbers, serials;
  for (const SavedResult& one : all) {
    numbers.insert(one.number);
    serials.insert(one.serial_number);
    EXPECT_EQ(contents(saved_file_path(one)), formatted("of %c\n", one.serial_number[0]));
  }
  EXPECT_EQ(numbers.size(), all.size());
  EXPECT_EQ(serials.size(), all.size());
}

TEST_F(ResultDirectoryTest, AFileThatCannotBeCopiedLeavesNoRecord) {
  SavedResult entry = saved_result_of(run, result_kind::results);
  EXPECT_FALSE(save_result_file((folder / "nothing").string(), entry));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{4952});
  EXPECT_EQ(bytes(), "");
  std::filesystem::create_directory(folder / "1.res");  // in the way of the copy
  EXPECT_EQ(save(result_kind::results), "");
  EXPECT_EQ(desk.message_numbers().back(), 31283);
  EXPECT_EQ(bytes(), "");
}

}  // namespace
}  // namespace orvane::test
