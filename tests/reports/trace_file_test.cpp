#include "reports/trace_file.h"

#include <gtest/gtest.h>

#include "config/startup_config.h"
#include "support/desk.h"

namespace orvane::test {
namespace {

// A record whose fields are set one by one; an empty value leaves the field out.
std::string record(std::string_view name, std::vector<std::pair<std::string, std::string>> changes = {}) {
  std::vector<std::pair<std::string, std::string>> fields = {{"instrument_name", std::string(name)},
                                                             {"manufacturer", "M"},
                                                             {"model", "X"},
                                                             {"property_number", "P1"},
                                                             {"serial_number", "S1"},
                                                             {"description", "D"},
                                                             {"report_number", "R1"},
                                                             {"cal_date", "2026-02-10"},
                                                             {"cal_interval", "365"}};
  for (auto& [field, value] : changes) {
    bool known = false;
    for (auto& [one, text] : fields) {
      if (one == field) known = true, text = value;
    }
    if (!known) fields.emplace_back(field, value);
  }
  std::string out;
  for (const auto& [field, value] : fields) {
    if (!value.empty()) out += field + " = " + value + "\n";
  }
  return out;
}

class TraceFileTest : public EngineTest {
 protected:
  ~TraceFileTest() override { trace_close(); }
  bool open(std::string_view contents) { return trace_open(write("trace.txt", contents)); }
  std::vector<int> faults_of(std::string_view contents) {
    desk.shown.clear();
    EXPECT_FALSE(open(contents)) << contents;
    EXPECT_FALSE(trace_is_open());
    return desk.message_numbers();
  }
};

TEST_F(TraceFileTest, RecordsAreReadInTheirOrderWithTheirDueDates) {
  ASSERT_TRUE(open("# standards\n\nInstrument_Name=A\n" + record("A", {{"instrument_name", ""}}) + "\n" +
                   record("B", {{"cal_due_date", "2027-01-01"}})));
  TraceRecord one;
  int state = 9;
  ASSERT_TRUE(trace_next(one, state));
  EXPECT_EQ(one[TraceField::instrument_name], "A");
  EXPECT_EQ(one[TraceField::cal_due_date], "2027-02-10");
  EXPECT_EQ(one.flags, TraceRecord::due_date_computed);
  EXPECT_EQ(state, 0);
  ASSERT_TRUE(trace_next(one, state));
  EXPECT_EQ(one[TraceField::cal_due_date], "2027-01-01");
  EXPECT_EQ(one.flags, 0U);
  EXPECT_EQ(state, 1);
  ASSERT_TRUE(trace_next(one, state));
  EXPECT_EQ(state, 2);
  trace_rewind();
  ASSERT_TRUE(trace_next(one, state));
  EXPECT_EQ(one[TraceField::instrument_name], "A");
}

TEST_F(TraceFileTest, AnEmptyFileAndAnIntervalOfNoDaysAreTaken) {
  ASSERT_TRUE(open("# nothing yet\n"));
  TraceRecord one;
  int state = 0;
  ASSERT_TRUE(trace_next(one, state));
  EXPECT_EQ(state, 2);
  EXPECT_FALSE(trace_any_overdue(run));
  EXPECT_TRUE(open(record("A", {{"cal_interval", "0"}})));
}

TEST_F(TraceFileTest, FaultsHaveTheirNumbers) {
  struct Case {
    std::string contents;
    int number;
  };
  const Case cases[] = {
      {"= 5\n" + record("A"), 705},
      {record("A") + std::string(298, 'x') + "\n", 707},
      {record("A") + "colour = red\n", 708},
      {record("A") + "model\n", 708},
      {"model = X\n" + record("A"), 709},
      {record("A") + "model = Y\n", 710},
      {record("A", {{"model", std::string(30, 'x')}}), 711},
      {record("A", {{"serial_number", ""}}) + record("B"), 712},
      {record("A") + record("B", {{"cal_date", ""}}), 712},
      {record("A", {{"cal_date", "yesterday"}}), 719},
      {record("A", {{"cal_interval", "1.5"}}), 720},
      {record("A", {{"cal_interval", "-3"}}), 720},
      {record("A", {{"cal_due_date", "2026-13-01"}}), 725},
      {record("A") + record("B") + record("A"), 3100},
  };
  for (const Case& c : cases) EXPECT_EQ(faults_of(c.contents), std::vector<int>{c.number}) << c.contents;
  EXPECT_TRUE(open(record("A", {{"model", std::string(29, 'x')}})));
  EXPECT_FALSE(trace_open(""));
  EXPECT_EQ(desk.message_numbers().back(), 703);
  EXPECT_FALSE(trace_open("/" + std::string(244, 'd') + "/trace.txt"));
  EXPECT_EQ(desk.message_numbers().back(), 704);
  EXPECT_FALSE(trace_open((folder / "nothing").string()));
  EXPECT_EQ(desk.message_numbers().back(), 706);
}

// The clock stands on 2023-11-14, 22:13 UTC.
TEST_F(TraceFileTest, OnlyWhatWasUsedCanBeOverdue) {
  clock.seconds = 1700000000 - 12 * 3600;  // noon, the same day in every zone but the outermost
  ASSERT_TRUE(open(record("Old", {{"cal_due_date", "2020-01-01"}}) +
                   record("Today", {{"cal_due_date", "2023-11-14"}}) +
                   record("Later", {{"cal_due_date", "2023-11-15"}})));
  struct Case {
    std::vector<std::string> used;
    bool due_day_holds, overdue;
  };
  const Case cases[] = {{{}, false, false},         {{"old"}, false, true},
                        {{"Later"}, false, false},  {{"Today"}, false, true},
                        {{"Today"}, true, false},   {{"Later", "Today"}, false, true},
                        {{"unknown"}, false, false}};
  for (const Case& c : cases) {
    run.pipeline.standards_used = c.used;
    startup_config().due_date_in_cal = c.due_day_holds ? 1 : 0;
    EXPECT_EQ(trace_any_overdue(run), c.overdue);
  }
  startup_config().due_date_in_cal = 0;
  run.pipeline.standards_used = {"LATER", "Old"};
  std::vector<TraceRecord> used;
  ASSERT_TRUE(trace_used_records(run, used));
  ASSERT_EQ(used.size(), 2U);
  EXPECT_EQ(used[0][TraceField::instrument_name], "Old");  // in the order of the file
}

TEST_F(TraceFileTest, ADumpIsReadBackAndARecordIsAdded) {
  ASSERT_TRUE(open(record("A")));
  TraceRecord one;
  int state = 0;
  ASSERT_TRUE(trace_next(one, state));
  std::vector<TraceRecord> back;
  ASSERT_TRUE(trace_parse(trace_dump(std::vector<TraceRecord>{one, one}), "saved", back));
  ASSERT_EQ(back.size(), 2U);
  EXPECT_EQ(back[1].text, one.text);

  one.text[0] = "Added";
  ASSERT_TRUE(trace_append(one));
  EXPECT_TRUE(tracecheck());
  run.pipeline.standards_used = {"Added"};
  ASSERT_TRUE(trace_used_records(run, back));
  EXPECT_EQ(back.size(), 1U);
  EXPECT_FALSE(std::filesystem::exists(folder / "TRACE$FL.TMP"));
}

}  // namespace
}  // namespace orvane::test
