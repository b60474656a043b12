// Accuracy files: headers, the choice by interval and asset, and the row for a value.
#include <gtest/gtest.h>

#include <cmath>
#include <ctime>

#include "config/startup_config.h"
#include "support/desk.h"
#include "values/accuracy/accuracy_file.h"
#include "values/accuracy/accuracy_scan.h"
#include "values/numbers.h"

namespace orvane::test {
namespace {

using Numbers = std::vector<int>;

constexpr const char* example =
    "# 1 year specifications\n"
    "Begin Header\n"
    "instrument = HP 3458A\n"
    "confidence = 2 sigma\n"
    "interval = 12 months\n"
    "end header\n"
    "MODE: DC Volts\n"
    "0.0     0.12    na   na   0.0014   0.0000003   na\n"
    "0.12    1.2     na   na   0.0008   0.0000003   na\n"
    "MODE: AC Volts 3 wire\n"
    "0.0     0.7     1e1  1e4  0.02     0.00002     5%\n";

class AccuracyTest : public EngineTest {
 protected:
  AccuracyTest() { startup_config() = StartupConfig(); }
  ~AccuracyTest() override {
    startup_config() = StartupConfig();
    acch_clear();
  }

  std::string folder_path() const { return (folder / "acc").string(); }
  std::string file(const std::string& name, const std::string& text) const {
    std::filesystem::create_directory(folder / "acc");
    return write("acc/" + name, text);
  }

  // Numbers of the reports of a look-up; its row stays in `row`.
  Numbers look_up(const std::string& path, std::string_view mode, double x, std::optional<double> y = {}) {
    desk.shown.clear();
    const bool done = acc_lookup(path, mode, x, y, row);
    EXPECT_EQ(done, desk.message_numbers().empty());
    return desk.message_numbers();
  }
  // The line of the row for a value; 0 for none, -1 after a report.
  int line_of(const std::string& path, std::string_view mode, double x, std::optional<double> y = {}) {
    if (!look_up(path, mode, x, y).empty()) return -1;
    return (row.flags & acc_flag::hit) != 0 ? row.line : 0;
  }

  AccRow row;
};

std::string header(const std::string& lines, const std::string& end = "end header\n") {
  return "Begin Header\n" + lines + end;
}
constexpr const char* whole = "instrument = A\nconfidence = 2\ninterval = 12 months\n";

TEST_F(AccuracyTest, HeadersAndTheirFaults) {
  struct Case {
    std::string text;
    Numbers numbers;
    bool complete = false;
  };
  const std::string long_line(257, 'x');
  const Case cases[] = {
      {header(whole), {}, true},
      {"any words\n  begin HEADER of this\nINSTRUMENT=A\nConfidence = 2 SIGMA\ninterval = 1 D\nowner = "
       "B\nEND header",
       {},
       true},
      {header(whole, ""), {}},
      {header("instrument = A\ninterval = 12 months\n"), {}},
      {"MODE: x\n" + header(whole), {}},
      {header(std::string(whole) + "asset = 1\n"), {}, true},
      {header(std::string(whole) + "asset = 1\nasset = 2\n"), {180}},
      {header(std::string(whole) + "confidence = 2\n"), {185}},
      {header(std::string(whole) + "instrument = B\n"), {186}},
      {header(std::string(whole) + "interval = 1 d\n"), {187}},
      {header("instrument = " + std::string(127, 'a') + "\nconfidence = 2\ninterval = 1 w\n"), {}, true},
      {header("instrument = " + std::string(128, 'a') + "\n"), {179}},
      {header("asset = " + std::string(63, 'a') + "\n"), {}},
      {header("asset = " + std::string(64, 'a') + "\n"), {179}},
      {header("intervall = 12 months\n"), {179}},
      {std::string(256, 'x') + "   \t \n" + header(whole), {}, true},
      {long_line + "\n" + header(whole), {189}},
      {header("confidence = high\n"), {197}},
      {header("confidence = 0\n"), {197}},
      {header("confidence = -2\n"), {197}},
      {header("confidence = 2 sigmas\n"), {198}},
      {header("interval = x\n"), {199, 10339}},
      {header("interval = -1 d\n"), {199, 10339}},
      {header("interval = 12 - months\n"), {449, 10339}},
      {header("interval = 12\n"), {200, 10339}},
      {header("interval = 12 years\n"), {200, 10339}},
  };
  for (const Case& c : cases) {
    desk.shown.clear();
    AccFileInfo info;
    EXPECT_EQ(acch_header(write("a.acc", c.text), info), c.numbers.empty()) << c.text;
    EXPECT_EQ(desk.message_numbers(), c.numbers) << c.text;
    EXPECT_EQ((info.flags & AccFileInfo::complete) != 0, c.complete) << c.text;
  }
  AccFileInfo info;
  EXPECT_FALSE(acch_header((folder / "none").string(), info));
  EXPECT_EQ(desk.message_numbers().back(), 178);
  EXPECT_FALSE(acch_header(write("b.acc", header("\nconfidence = x\n")), info));
  EXPECT_EQ(desk.last_message(),
            "E197: " + (folder / "b.acc").string() + ", line 3: the confidence \"x\" is no number above 0.");
}

TEST_F(AccuracyTest, IntervalsInEveryUnit) {
  struct Case {
    const char* text;
    std::uint16_t units;
    double low, high, days_low, days_high;
  };
  for (const Case& c :
       {Case{"24 - 12 months", acc_interval::months, 12, 24, 365.25, 730.5},
        Case{"1-2wk", acc_interval::weeks, 1, 2, 7, 14}, Case{"90 Days", acc_interval::days, 90, 90, 90, 90},
        Case{"1.5 mon", acc_interval::months, 1.5, 1.5, 45.65625, 45.65625}}) {
    AccFileInfo info;
    ASSERT_TRUE(acch_header(write("a", header("interval = " + std::string(c.text) + "\n")), info)) << c.text;
    EXPECT_EQ(info.interval_units, c.units);
    EXPECT_EQ(info.interval_lo, c.low);
    EXPECT_EQ(info.interval_hi, c.high);
    EXPECT_EQ(info.days_lo, c.days_low);
    EXPECT_EQ(info.days_hi, c.days_high);
  }
}

TEST_F(AccuracyTest, TheWorkedExample) {
  const std::string path = write("a.acc", example);
  EXPECT_EQ(line_of(path, "dc volts", 1.2), 9);
  EXPECT_DOUBLE_EQ(1.2 * row.gain() / 100 + row.floor(), 0.0000099);
  EXPECT_EQ(row.confidence, 2);
  EXPECT_EQ(row.path, path);
  EXPECT_EQ(row.flags, acc_flag::hit | acc_flag::second_low | acc_flag::second_high | acc_flag::no_extra);
  EXPECT_EQ(line_of(path, "wire 3 VOLTS ac", 0.5, 100), 11);
  EXPECT_EQ(row.flags, acc_flag::hit | acc_flag::extra_percent);
  EXPECT_EQ(row.columns[6], 5);
  EXPECT_EQ(line_of(path, "wire 3 VOLTS ac", 0.5), 0) << "one value, rows of two";
  EXPECT_EQ(line_of(path, "dc volts", 0.5, 100), 0) << "two values, rows of one";
  EXPECT_EQ(line_of(path, "dc", 0.5), 0);
  EXPECT_EQ(line_of(path, "dc volts amps", 0.5), 0);
}

// At each limit, one epsilon of the comparison inside and outside of it; 1e-11 is the comparison's own.
TEST_F(AccuracyTest, LimitsAreInclusiveWithinTheEpsilon) {
  const std::string path =
      write("a.acc", "MODE: V\n-2 -1 na na 1 1 na\n1 2 na na 1 1 na\n2 4 na na 1 1 na\n0 1 10 20 1 1 na\n");
  constexpr double inside = 0.9e-11, outside = 1.1e-11;
  struct Case {
    double x;
    int line;
  };
  for (const Case& c :
       {Case{1, 3}, Case{1 - inside, 3}, Case{1 - outside, 0}, Case{2, 3}, Case{2 * (1 + inside), 3},
        Case{2 * (1 + outside), 4}, Case{4, 4}, Case{4 * (1 + inside), 4}, Case{4 * (1 + outside), 0},
        Case{-1, 2}, Case{-1 + inside, 2}, Case{-1 + outside, 0}, Case{-2 * (1 + inside), 2},
        Case{-2 * (1 + outside), 0}, Case{std::nan(""), 0}})
    EXPECT_EQ(line_of(path, "v", c.x), c.line) << c.x;
  for (const Case& c : {Case{10, 5}, Case{10 * (1 - inside), 5}, Case{10 * (1 - outside), 0}, Case{20, 5},
                        Case{20 * (1 + inside), 5}, Case{20 * (1 + outside), 0}})
    EXPECT_EQ(line_of(path, "v", 0.5, c.x), c.line) << c.x;
  EXPECT_EQ(line_of(path, "v", 0, 15), 5) << "a limit of 0 is exact";
  EXPECT_EQ(line_of(path, "v", -1e-300, 15), 0);
}

TEST_F(AccuracyTest, RangeLinesAndTheirFaults) {
  struct Case {
    std::string line;
    Numbers numbers;
  };
  const Case cases[] = {
      {"0 1 na na 1 1 na", {}},
      {"\t0\t1 NA Na nA na 2.5%", {}},
      {"0 1 na na 1 1 na na", {127}},
      {"0 1 na na 1 1", {127}},
      {"na 1 na na 1 1 na", {127}},
      {"0 na na na 1 1 na", {127}},
      {"0 1 2 na 1 1 na", {127}},
      {"0 1 na 2 1 1 na", {127}},
      {"0 1V na na 1 1 na", {127}},
      {"0 1 na na 1% 1 na", {127}},
      {"0 1 na na 1 1 %", {127}},
      {"0 1 na na 1 1 2%%", {127}},
      {"0 1e999 na na 1 1 na", {127}},
      {"x" + std::string(128, ' ') + "y", {127}},
      {"0 1 na na 1 1 na" + std::string(200, ' '), {}},
  };
  for (const Case& c : cases)
    EXPECT_EQ(look_up(write("a.acc", "MODE: V\n" + c.line), "V", 0.5), c.numbers) << c.line;
  look_up(write("a.acc", "MODE: V\n\n# x\n0 1 na na 1 one na\n"), "v", 1);
  EXPECT_EQ(desk.last_message(),
            "E127: " + (folder / "a.acc").string() +
                ", line 4: this is no range line: column 6 is no number. Correct the line.");
  EXPECT_TRUE(run.has(run_flag::stop_test));
}

TEST_F(AccuracyTest, ADamagedLineIsAFaultOnlyWhereItIsReached) {
  const std::string path =
      write("a.acc",
            "MODE: A\n0 1 na na 1 1 na\n0 2 na na bad 1 na\n0 3 na na 1 1 na\nmumble\n0 9 na na 1 1 na\n"
            "MODE: A\n0 8 na na 1 1 na\nMODE: B\n0 1 na na 1 1 na\nMODE: C c\nMODE: D\n0 1 na na 1 1 na\n");
  EXPECT_EQ(line_of(path, "a", 1), 2);
  EXPECT_EQ(look_up(path, "a", 2), Numbers{127});
  EXPECT_EQ(line_of(path, "b", 1), 10);
  EXPECT_EQ(look_up(path, "D", 1), Numbers{123});
  EXPECT_EQ(line_of(write("b.acc", "MODE: A\n0 1 na na 1 1 na\nmumble\n0 9 na na 1 1 na\n"), "a", 5), 0)
      << "a line with m ends the block";
  EXPECT_EQ(look_up(path, "X x", 1), Numbers{123});
  EXPECT_EQ(look_up(path, " ", 1), Numbers{122});
  EXPECT_EQ(look_up(write("c.acc", "MODE:\nMODE: A\n"), "a", 1), Numbers{124});
  EXPECT_EQ(look_up((folder / "none").string(), "a", 1), Numbers{121});
}

TEST_F(AccuracyTest, AChangedFileIsSeenAtTheNextLookUp) {
  clock.seconds = std::time(nullptr) + 10;
  const std::string path = write("a.acc", "MODE: V\n0 1 na na 1 1 na\n");
  EXPECT_EQ(line_of(path, "v", 1), 2);
  write("a.acc", "\nMODE: V\n0 1 na na 1 1 na\n");
  EXPECT_EQ(line_of(path, "v", 1), 3);
  std::filesystem::remove(path);
  EXPECT_EQ(line_of(path, "v", 1), -1);
  // Young as it is read: it may change without changing its stamp.
  clock.seconds = std::time(nullptr);
  write("a.acc", "MODE: V\n0 1 na na 1 1 na\n");
  EXPECT_EQ(line_of(path, "v", 1), 2);
  const auto time = std::filesystem::last_write_time(path);
  write("a.acc", "MODE: W\n0 1 na na 1 1 na\n");
  std::filesystem::last_write_time(path, time);
  EXPECT_EQ(line_of(path, "v", 1), 0);
}

// The quick search against reading row after row, over files with rising, falling and overlapping rows.
TEST_F(AccuracyTest, TheFirstRowThatFitsWinsHoweverItIsFound) {
  unsigned seed = 5;
  const auto random = [&seed](unsigned below) {
    return ((seed = seed * 1664525 + 1013904223) >> 16) % below;
  };
  for (int round = 0; round < 40; ++round) {
    std::vector<std::pair<int, int>> rows;
    std::string text = "MODE: V\n";
    for (int i = 0; i < 12; ++i) {
      const int low = round % 2 == 0 ? i : static_cast<int>(random(12));
      rows.emplace_back(low, low + static_cast<int>(random(4)));
      text += std::to_string(low) + " " + std::to_string(rows.back().second) + " na na 1 1 na\n";
    }
    const std::string path = write("r.acc", text);
    for (double x = -1; x < 17; x += 0.5) {
      int expected = 0;
      for (std::size_t i = 0; i < rows.size() && expected == 0; ++i) {
        if (num_ge(x, rows[i].first) && num_le(x, rows[i].second)) expected = static_cast<int>(i) + 2;
      }
      EXPECT_EQ(line_of(path, "v", x), expected) << text << x;
    }
  }
}

// --- Scan and choice -----------------------------------------------------------------------------------------------

TEST_F(AccuracyTest, TheScanListsCompleteHeaders) {
  EXPECT_FALSE(acch_scan(folder_path()));
  EXPECT_EQ(desk.message_numbers(), Numbers{174});
  file("b.acc", header(whole));
  file("a.acc", header("instrument = B\nconfidence = 3\ninterval = 1 d\n"));
  file("c.acc", "MODE: V\n");
  std::filesystem::create_directory(folder / "acc/sub");
  ASSERT_TRUE(acch_scan(folder_path()));
  ASSERT_EQ(acch_list().size(), 2U);
  EXPECT_EQ(acch_list()[0].instrument, "B");
  ASSERT_EQ(desk.of_kind("wait").size(), 1U);
  EXPECT_EQ(desk.of_kind("wait")[0].title, "Reading the accuracy files, please wait.");

  file("d.acc", header("instrument =\nconfidence = 3\ninterval = 1 d\n"));
  EXPECT_TRUE(acch_scan(folder_path())) << "the list stands";
  acch_list()[1].flags |= AccFileInfo::selected;
  acch_refresh();
  EXPECT_FALSE(acch_scan(folder_path()));
  EXPECT_EQ(desk.message_numbers().back(), 109);
  EXPECT_TRUE(acch_list().empty());
}

TEST_F(AccuracyTest, SelectedFilesStaySelectedWhenTheListIsMadeAnew) {
  const std::string path = file("b.acc", header(whole));
  ASSERT_TRUE(acch_scan(folder_path()));
  acch_list()[0].flags |= AccFileInfo::selected;
  file("a.acc", header(whole));
  acch_refresh();
  ASSERT_TRUE(acch_scan(folder_path()));
  ASSERT_EQ(acch_list().size(), 2U);
  EXPECT_EQ(acch_list()[0].flags & AccFileInfo::selected, 0);
  EXPECT_NE(acch_list()[1].flags & AccFileInfo::selected, 0);
}

class ChoiceTest : public AccuracyTest {
 protected:
  void entry(const std::string& name, const std::string& asset, double low, double high) {
    AccFileInfo info;
    info.path = name;
    info.instrument = "Meter";
    info.asset = asset;
    info.days_lo = low;
    info.days_hi = high;
    acch_list().push_back(info);
  }
  // The name of the choice, or the number of the message.
  std::string choose(double days, const std::string& asset = "77") {
    desk.shown.clear();
    const AccFileInfo* info = acc_choose({0, "meter", asset, {days, acc_interval::days, days}}, true);
    if (info != nullptr) return info->path;
    return desk.message_numbers().size() == 1 ? std::to_string(desk.message_numbers()[0]) : "?";
  }
};

TEST_F(ChoiceTest, TheIntervalFitsWithTheSlackOfItsKind) {
  struct Case {
    double days;
    const char* single;
    const char* range;
  };
  constexpr double in = 0.9e-11, out = 1.1e-11;
  const double year = 365.25;
  startup_config().acc_range_overlap = 50;
  for (const Case& c :
       {Case{year, "f", "f"}, Case{0.9 * year, "f", "f"}, Case{0.9 * year * (1 - in), "f", "f"},
        Case{0.9 * year * (1 - out), "136", "f"}, Case{1.1 * year, "f", "f"},
        Case{1.1 * year * (1 + in), "f", "f"}, Case{1.1 * year * (1 + out), "136", "f"},
        Case{0.5 * year, "136", "f"}, Case{0.5 * year * (1 - out), "136", "136"}, Case{3 * year, "136", "f"},
        Case{3 * year * (1 + out), "136", "136"}}) {
    acch_clear();
    entry("f", "", year, year);
    EXPECT_EQ(choose(c.days), c.single) << c.days;
    acch_clear();
    entry("f", "", year, 2 * year);
    EXPECT_EQ(choose(c.days), c.range) << c.days;
  }
}

TEST_F(ChoiceTest, ConflictsAndAssets) {
  struct Row {
    const char *name, *asset;
    double low, high;
  };
  struct Case {
    std::vector<Row> rows;
    std::int16_t rule;
    const char* choice;
  };
  startup_config().acc_range_overlap = 100;
  constexpr std::int16_t error = 0, shortest = 1, longest = 2;
  const Case cases[] = {
      {{{"a", "", 90, 100}, {"b", "", 80, 110}}, error, "153"},
      {{{"a", "", 90, 100}, {"b", "", 80, 110}}, shortest, "b"},
      {{{"a", "", 90, 100}, {"b", "", 80, 110}}, longest, "b"},
      {{{"a", "", 90, 100}, {"b", "", 90, 100}}, shortest, "a"},
      {{{"a", "", 90, 100}, {"b", "", 90, 100}}, longest, "a"},
      {{{"a", "", 80, 100}, {"b", "", 90, 110}}, shortest, "a"},
      {{{"a", "77", 90, 100}, {"b", "", 80, 110}, {"c", "", 80, 110}}, error, "a"},
      {{{"a", "77", 90, 100}, {"b", "", 80, 110}}, shortest, "a"},
      {{{"a", "78", 90, 100}, {"b", "", 80, 110}}, error, "b"},
      {{{"a", "78", 90, 100}}, error, "136"},
      {{{"a", "77", 90, 100}, {"b", "77", 90, 100}, {"c", "", 90, 100}}, error, "153"},
  };
  for (const Case& c : cases) {
    acch_clear();
    startup_config().acc_conflict = c.rule;
    for (const Row& r : c.rows) entry(r.name, r.asset, r.low, r.high);
    EXPECT_EQ(choose(95), c.choice) << c.rows[0].name << c.rule;
  }
  EXPECT_EQ(desk.last_message().find("77") != std::string::npos, true);
}

}  // namespace
}  // namespace orvane::test
