// The list of results after a run: sorted, thinned out, numbered, counted; and its files.
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <random>

#include "config/startup_config.h"
#include "evaluation/guardband.h"
#include "evaluation/result_store.h"
#include "results/delimited_files.h"
#include "results/result_list.h"
#include "results/results.h"
#include "state/debug.h"
#include "state/run_variables.h"
#include "support/desk.h"
#include "values/units.h"

namespace orvane {
namespace {

using F = ResultField;

class ResultLists : public test::EngineTest {
 protected:
  ResultLists() {
    startup_config() = StartupConfig();
    startup_config().workdir = folder.string();
    startup_config().database = 0;
    startup_config().delimited_results = 1;
  }
  ~ResultLists() override {
    set_result_roads(nullptr);
    startup_config() = StartupConfig();
    run = RunState();
  }

  ResultRecord& add(const std::vector<CallLevel>& calls, int major, int minor, std::uint32_t flags,
                    int rsm = 2) {
    FscRecord statement = fsc_record_new();
    statement.set(field::test_major, static_cast<std::int16_t>(major));
    statement.set(field::test_minor, static_cast<std::int16_t>(minor));
    run.calls = calls;
    ResultRecord& record = *r_alloc_result(run);
    record.key = result_key(run, statement);
    record.flags = flags | result_bit::is_evaluated;
    r_set_integer(record, F::rsm, rsm);
    return record;
  }
  std::string files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    std::string out;
    for (const std::string& name : names) out += name + " ";
    return out;
  }
};

TEST_F(ResultLists, SortingIsStableAtEveryDepth) {
  std::mt19937 random(11);
  for (int round = 0; round < 50; ++round) {
    run.results.clear();
    for (int i = 0; i < 200; ++i) {
      std::vector<CallLevel> calls(random() % (round % 2 == 0 ? 4 : 9));
      for (CallLevel& call : calls)
        call = {static_cast<std::int16_t>(random() % 3 + 1), static_cast<std::int16_t>(random() % 2 + 1)};
      add(calls, static_cast<int>(random() % 3 + 1), static_cast<int>(random() % 2 + 1), 0).percent = i;
    }
    std::vector<std::pair<ResultKey, double>> expected;
    for (const auto& record : run.results.records) expected.emplace_back(record->key, record->percent);
    std::stable_sort(expected.begin(), expected.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    r_sort(run.results);
    for (std::size_t i = 0; i < expected.size(); ++i)
      EXPECT_EQ(run.results.records[i]->percent, expected[i].second) << round;
  }
  // A CALL stands before the tests of its procedure, and behind the tests before it.
  run.results.clear();
  add({{2, 1}}, 1, 5, 0).percent = 2;
  add({}, 3, 1, 0).percent = 4;
  add({}, 1, 9, 0).percent = 1;
  add({{2, 1}, {4, 1}}, 1, 1, 0).percent = 3;
  r_sort(run.results);
  r_number(run.results);
  for (const auto& record : run.results.records) {
    EXPECT_EQ(record->percent, record->row);
    EXPECT_EQ(r_text(*record, F::row), std::to_string(record->row));
  }
  EXPECT_EQ(run.results.records[2]->test_major(), 1);
}

TEST_F(ResultLists, RepeatedTestsAreThinnedOut) {
  struct Case {
    int rsm;
    const char* kept;
  };
  const Case cases[] = {{1, "0123"}, {2, "03"}, {3, "3"}};
  for (const Case& c : cases) {
    run.results.clear();
    for (int i = 0; i < 4; ++i) add({}, 1, 2, 0, i == 3 ? c.rsm : 2).percent = i;
    add({}, 2, 1, 0, c.rsm).percent = 9;
    r_reduce(run.results);
    std::string kept;
    for (const auto& record : run.results.records) kept += std::to_string(static_cast<int>(record->percent));
    EXPECT_EQ(kept, std::string(c.kept) + "9");
    EXPECT_EQ(run.results.latest, run.results.records.back().get());
  }
}

TEST_F(ResultLists, TheLastRunOfATestCounts) {
  constexpr std::uint32_t pass = result_bit::pass, open = result_bit::indeterminate;
  EXPECT_EQ(r_overall(run.results), overall_value::passed);
  add({}, 1, 1, 0);
  add({}, 2, 1, pass);
  EXPECT_EQ(r_overall(run.results), overall_value::failed);
  add({}, 1, 1, pass);  // run again, behind the other
  EXPECT_EQ(r_overall(run.results), overall_value::passed);
  add({{1, 1}}, 1, 1, 0);  // the same numbers in a called procedure
  EXPECT_EQ(r_count(run.results).tests, 3u);
  EXPECT_EQ(r_count(run.results).failed, 1u);
  add({{1, 1}}, 1, 1, pass).flags = pass;  // not an evaluated one
  EXPECT_EQ(r_count(run.results).failed, 1u);
  struct Case {
    std::uint32_t flags;
    int by;
    bool failed;
  };
  const Case cases[] = {{pass, guard_counts::fails, false},         {0, guard_counts::passes, true},
                        {open | pass, guard_counts::fails, true},   {open | pass, guard_counts::both, false},
                        {open | pass, guard_counts::passes, false}, {open, guard_counts::fails, true},
                        {open, guard_counts::both, true},           {open, guard_counts::passes, false}};
  for (const Case& c : cases) {
    ResultRecord& record = add({}, 9, 1, c.flags | result_bit::guardbanded);
    r_set_integer(record, F::gb_result, c.by);
    EXPECT_EQ(r_counts_as_failed(record), c.failed) << c.flags << " " << c.by;
  }
}

// The columns of a delimited line; texts without their quotes.
std::vector<std::string> split(const std::string& line) {
  std::vector<std::string> out(1);
  bool quoted = false;
  for (std::size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '\'' && quoted && i + 1 < line.size() && line[i + 1] == '\'') {
      out.back() += line[i++];
    } else if (line[i] == '\'') {
      quoted = !quoted;
    } else if (line[i] == ',' && !quoted) {
      out.emplace_back();
    } else {
      out.back() += line[i];
    }
  }
  return out;
}

TEST_F(ResultLists, TheDelimitedPair) {
  constexpr std::size_t columns = 29 + 53 + 13 + 114 + 33 + 65 + 7;  // of the seven groups
  run_variable_set(run, "UUT_CODE$", "it's, \r\none");
  run_variable_set(run, "DATE$", "2026-11-23");
  ResultRecord& record = add({}, 7, 2, result_bit::pass);
  r_set_text(record, F::test_description, "10 V, 'AC'\nline");
  r_set_value(record, F::fixed_quantity, 2, 10, prefix_code::milli, unit_code::volt);
  EXPECT_TRUE(r_set_printed(record, F::fixed_quantity, "10.00"));
  r_set_value(record, F::lower_limit, 2, 1, prefix_code::femto, unit_code::none, "widgets");
  r_set_text(record, F::dpf_polarity, "lag");
  r_set_text(record, F::test_step_2, "0007");
  record.readings = {9.5, 10.25};
  record.reading_format = "%.3f";
  record.reading_prefix = prefix_code::milli;
  record.reading_unit = unit_code::volt;
  add({}, 8, 1, 0);
  r_number(run.results);
  ASSERT_TRUE(r_write_all(run)) << desk.last_message();
  EXPECT_EQ(files(), "readings-001.txt results-001.txt ");
  const std::string results = contents((folder / "results-001.txt").string());
  const std::size_t end = results.find("'0007'\r\n") + 8;
  EXPECT_TRUE(results.starts_with("1,'10 V, ''AC''\nline','10.00','m','V',,,,'1.00','f','widgets',,,,,"));
  const std::vector<std::string> first = split(results.substr(0, end - 2)),
                                 second = split(results.substr(end));
  ASSERT_EQ(first.size(), columns);
  EXPECT_EQ(second.size(), columns);
  EXPECT_EQ(first[columns - 8], "lag");
  EXPECT_EQ(first[columns - 7], "it's, \r\none");
  EXPECT_EQ(first[columns - 6], "2026-11-23");
  EXPECT_EQ(first.back(), "0007");
  EXPECT_TRUE(results.ends_with(",\r\n"));  // the second record has no step
  EXPECT_EQ(contents((folder / "readings-001.txt").string()),
            "'it''s, \r\none','2026-11-23',1,'0','9.500','m','V',,,,\r\n"
            "'it''s, \r\none','2026-11-23',1,'1','10.250','m','V',,,,\r\n");

  set_debug_flags(debug_bit::run);
  startup_config().delimited_results = 0;
  ASSERT_TRUE(r_write_all(run));
  clear_debug_words();
  const std::string dump = contents((folder / "r7.tmp").string());
  EXPECT_TRUE(dump.starts_with("row 1 flags 00008002 percent 0\n")) << dump;
  EXPECT_NE(dump.find("  Fixed Quantity = 10.00 mV\n"), std::string::npos) << dump;
  EXPECT_NE(dump.find("  Value 2 = 10.250\nrow 2 "), std::string::npos) << dump;
  std::filesystem::remove(folder / "r7.tmp");
  startup_config().delimited_results = 1;

  // The next pair has the next number; with the key off there is none.
  ASSERT_TRUE(r_write_all(run));
  EXPECT_EQ(files(), "readings-001.txt readings-002.txt results-001.txt results-002.txt ");
  startup_config().delimited_results = 0;
  ASSERT_TRUE(r_write_all(run));
  EXPECT_EQ(files(), "readings-001.txt readings-002.txt results-001.txt results-002.txt ");
}

TEST_F(ResultLists, AFailedStepLeavesTheListAndNoHalfFile) {
  for (int i = 1; i < 200; ++i) r_set_text(add({}, i, 1, 0), F::remark, std::string(100, 'r'));
  rlimit old{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small{4096, old.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const bool done = r_write_all(run);
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &old), 0);
  std::signal(SIGXFSZ, handler);
  EXPECT_FALSE(done);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{691});
  EXPECT_EQ(files(), "");
  startup_config().workdir = (folder / "absent").string();
  EXPECT_FALSE(r_write_all(run));
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{691, 694}));
  set_debug_flags(debug_bit::run);
  EXPECT_FALSE(r_write_all(run));
  clear_debug_words();
  EXPECT_EQ(desk.message_numbers(), (std::vector<int>{691, 694, 31190, 694}));
  EXPECT_EQ(run.results.records.size(), 199u);
}

// A database that keeps what it is given.
struct Roads {
  bool takes = true, writes = true;
  std::vector<std::string> steps;
};
Roads* roads = nullptr;
constexpr ResultRoads table = {[](RunState&, const std::string& results, const std::string& readings) {
                                 roads->steps.push_back(std::filesystem::path(results).filename().string() +
                                                        " " +
                                                        std::filesystem::path(readings).filename().string());
                                 return roads->takes;
                               },
                               [](RunState&, const ResultRecord& record) {
                                 roads->steps.push_back("row " + std::to_string(record.row));
                                 return roads->writes;
                               },
                               [](RunState&) {
                                 roads->steps.emplace_back("finish");
                                 return true;
                               }};

TEST_F(ResultLists, ADatabaseTakesFilesAndRows) {
  Roads here;
  roads = &here;
  startup_config().database = 1;
  set_result_roads(&table);
  add({}, 1, 1, 0);
  add({}, 2, 1, 0);
  r_number(run.results);
  EXPECT_TRUE(r_write_all(run));
  EXPECT_EQ(here.steps,
            (std::vector<std::string>{"results-001.txt readings-001.txt", "row 1", "row 2", "finish"}));
  EXPECT_EQ(files(), "");  // handed over and deleted
  here = Roads();
  here.takes = false;
  EXPECT_FALSE(r_write_all(run));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{693});
  EXPECT_EQ(files(), "readings-001.txt results-001.txt ");
  here = Roads();
  here.writes = false;
  EXPECT_FALSE(r_write_all(run));
  EXPECT_EQ(here.steps, (std::vector<std::string>{"results-002.txt readings-002.txt", "row 1"}));
  EXPECT_EQ(run.results.records.size(), 2u);
  r_discard(run);
  EXPECT_TRUE(run.results.records.empty());
}

}  // namespace
}  // namespace orvane
