// The sorted log: what stays, what goes, what is counted.
#include "results/log_sort.h"

#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <map>
#include <random>

#include "messages/catalogue.h"
#include "state/run_variables.h"
#include "support/desk.h"

namespace orvane {
namespace {

class LogSorting : public test::EngineTest {
 protected:
  std::string input() const { return (folder / "rslt.tmp").string(); }
  std::string output() const { return (folder / "rsltsort.tmp").string(); }

  bool sort(const std::string& log) {
    write("rslt.tmp", log);
    return log_sort(run, input(), output());
  }
  std::string sorted(const std::string& log) {
    EXPECT_TRUE(sort(log)) << desk.last_message();
    return contents(output());
  }
  // Failed, marginal, gross and adjusted tests.
  std::string counts() const {
    std::string out;
    for (const char* name : {"NUM_FAILED$", "MARGINAL$", "NOTIFY_USER$", "NUM_ADJ$"})
      out += (run_variable(run, name) != nullptr ? *run_variable(run, name) : "-") + " ";
    return out;
  }

  static std::string plain(const std::string& step, char letter, const std::string& text) {
    return step + ' ' + letter + ' ' + text + '\n';
  }
  static std::string enter(const char* step = "0000.000") { return plain(step, 'C', "          9 ENTER P"); }
  static std::string leave(const char* step = "0000.000") { return plain(step, 'L', "            LEAVE P"); }
  // Both lines of a run of a test; `mark` tells runs apart.
  static std::string test(const std::string& step, const std::string& verdict, const std::string& mark,
                          char letter = 'M') {
    std::string one(79, ' '), two(79, ' ');
    one.replace(14, mark.size(), mark);
    const bool judged = letter == 'E' || letter == 'G' || letter == 'd';
    if (verdict.find("FAIL") != std::string::npos) (judged ? one : two).replace(73, 4, "FAIL");
    if (!judged) one.replace(73, 3, " 99");
    if (verdict.find("NOTIFY") != std::string::npos) two.replace(60, 11, "NOTIFY USER");
    if (verdict.find("MARGINAL") != std::string::npos) two.replace(60, 8, "MARGINAL");
    return plain(step, letter, one + std::string(1 + 20 + 32, '0') + "3:::::: ::::") +
           plain(step, letter, two);
  }
  // The same as the sorted log has it.
  static std::string marked(const std::string& step, const std::string& verdict, const std::string& mark,
                            char letter = 'M') {
    std::string out = test(step, verdict, mark, letter);
    out.replace(11 + 73, 4, "FAIL");
    out.replace(out.find('\n') + 1 + 11 + 73, 4, "FAIL");
    return out;
  }
};

TEST_F(LogSorting, TheFirstAndTheLastRunStay) {
  const std::string s = "0001.003", note = plain(s, 'R', "note"), brace = plain(s, 'B', "brace"),
                    comment = plain(s, 'K', "said");
  EXPECT_EQ(sorted(enter() + test(s, "FAIL", "a") + note + test(s, "MARGINAL", "b") + note + comment +
                   test(s, "FAIL", "c") + brace + test(s, "", "d") + note + leave()),
            enter() + marked(s, "FAIL", "a") + note + comment + test(s, "", "d") + note + leave());
  EXPECT_EQ(counts(), "0 0 0 0 ");  // the last run counts
  // Another step of the same test is a test of its own.
  EXPECT_EQ(
      sorted(enter() + test("0001.003", "", "a") + test("0001.005", "", "b") + test("0001.007", "", "c") +
             leave()),
      enter() + test("0001.003", "", "a") + test("0001.005", "", "b") + test("0001.007", "", "c") + leave());
}

TEST_F(LogSorting, ACancelledRunGoes) {
  const std::string s = "0002.001", cancel = plain(s, 'c', "");
  // Alone; the second of two; the third, which brings the second back.
  EXPECT_EQ(sorted(enter() + test(s, "FAIL", "a") + cancel + leave()), enter() + leave());
  EXPECT_EQ(counts(), "0 0 0 0 ");
  EXPECT_EQ(sorted(enter() + test(s, "FAIL", "a") + test(s, "", "b") + cancel + leave()),
            enter() + marked(s, "FAIL", "a") + leave());
  EXPECT_EQ(counts(), "1 0 0 0 ");
  EXPECT_EQ(
      sorted(enter() + test(s, "", "a") + test(s, "MARGINAL", "b") + test(s, "FAIL", "c") + cancel + leave()),
      enter() + test(s, "", "a") + test(s, "MARGINAL", "b") + leave());
  EXPECT_EQ(counts(), "0 1 0 0 ");
  // Nothing to cancel is no fault.
  EXPECT_EQ(sorted(enter() + cancel + test(s, "", "a") + leave()), enter() + test(s, "", "a") + leave());
}

TEST_F(LogSorting, EveryNestingHasItsOwnTests) {
  const std::string one = "0001.001", call = "0002.002";
  const std::string callee = enter("0002.002") + test(one, "FAIL", "x") +
                             plain(one, 'A', "ADJUST PERFORMED") + plain(one, 'A', "ADJUST PERFORMED") +
                             leave("0002.002");
  const std::string kept =
      enter("0002.002") + marked(one, "FAIL", "x") + plain(one, 'A', "ADJUST PERFORMED") + leave("0002.002");
  EXPECT_EQ(
      sorted(enter() + test(one, "", "m") + callee + callee + leave() + plain("0003.001", 'R', "behind")),
      enter() + test(one, "", "m") + kept + kept + leave() + plain("0003.001", 'R', "behind"));
  EXPECT_EQ(counts(), "2 0 0 2 ");
}

TEST_F(LogSorting, WordsOfEachKindOfTest) {
  struct Case {
    char letter;
    const char* verdict;
    const char* counts;
  };
  const Case cases[] = {{'M', "FAIL NOTIFY", "1 0 1 0 "}, {'E', "FAIL NOTIFY", "1 0 1 0 "},
                        {'G', "FAIL NOTIFY", "1 0 1 0 "}, {'d', "FAIL", "1 0 0 0 "},
                        {'I', "MARGINAL", "0 1 0 0 "},    {'S', "", "0 0 0 0 "},
                        {'a', "FAIL", "1 0 0 0 "},        {'D', "NOTIFY", "0 0 1 0 "}};
  for (const Case& c : cases) {
    const std::string log = test("12345.001", c.verdict, "m", c.letter);
    EXPECT_TRUE(sort(enter() + log + leave())) << c.letter;
    EXPECT_EQ(counts(), c.counts) << c.letter << " " << c.verdict;
  }
}

TEST_F(LogSorting, AWordNeverRunsIntoTheNextLine) {
  const std::string first = plain("0001.001", 'M', std::string(73, '.') + "FAIL"),
                    note = plain("0001.001", 'R', std::string(90, 'n'));
  EXPECT_EQ(
      sorted(enter() + first + plain("0001.001", 'M', "short") + note + leave()),
      enter() + first + plain("0001.001", 'M', "short" + std::string(68, ' ') + "FAIL") + note + leave());
}

TEST_F(LogSorting, FaultsLeaveNoOutput) {
  const std::string good = enter() + test("0001.001", "", "a") + leave();
  const std::string first_only = test("0001.001", "", "a").substr(0, 160);
  const std::string other_second = plain("0002.001", 'M', std::string(79, ' '));
  struct Case {
    std::string log;
    int message;
  };
  const Case cases[] = {{enter() + test("0000.001", "", "a") + leave(), 4621},
                        {enter() + test("40000.001", "", "a") + leave(), 4621},
                        {enter() + plain("0001.001", 'x', "?") + leave(), 4622},
                        {enter() + "nonsense\n" + leave(), 4622},
                        {enter() + "\n" + leave(), 4622},
                        {enter() + first_only, 4622},
                        {enter() + first_only + "\n" + leave(), 4622},
                        {enter() + first_only + "\n" + other_second + leave(), 4622},
                        {enter(), 4650},
                        {leave(), 4650},
                        {test("0001.001", "", "a"), 4650},
                        {good + leave(), 4650}};
  for (const Case& c : cases) {
    desk.shown.clear();
    EXPECT_FALSE(sort(c.log)) << c.log;
    EXPECT_EQ(desk.message_numbers(), std::vector<int>{c.message}) << c.log;
    EXPECT_FALSE(std::filesystem::exists(output()));
  }
  desk.shown.clear();
  std::filesystem::remove(input());
  EXPECT_FALSE(log_sort(run, input(), output()));
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{4623});
  // A log that was cut anywhere is told or sorted, and never more.
  for (std::size_t length = 0; length <= good.size(); ++length)
    static_cast<void>(sort(good.substr(0, length)));
}

TEST_F(LogSorting, AFullDiskLeavesTheSortedLogBefore) {
  const std::string before = sorted(enter() + leave());
  std::string log = enter();
  for (int i = 1; i < 100; ++i) log += test(formatted("%04d.001", i), "", "a");
  write("rslt.tmp", log + leave());
  rlimit old{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit small{4096, old.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
  const bool done = log_sort(run, input(), output());
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &old), 0);
  std::signal(SIGXFSZ, handler);
  EXPECT_FALSE(done);
  EXPECT_EQ(desk.message_numbers(), std::vector<int>{4623});
  EXPECT_EQ(contents(output()), before);
  EXPECT_FALSE(std::filesystem::exists(output() + ".new"));
}

// The rule once more, slow and plain: the runs of each test as they stand in one list.
struct SlowSort {
  static std::string sort(const std::vector<std::string>& steps, const std::vector<std::string>& texts,
                          std::size_t& failed) {
    std::map<std::string, std::vector<std::size_t>> runs;
    for (std::size_t i = 0; i < steps.size(); ++i) {
      auto& of_test = runs[steps[i]];
      if (!texts[i].empty()) of_test.push_back(i);
      if (texts[i].empty() && !of_test.empty()) of_test.pop_back();
    }
    std::vector<bool> stays(steps.size());
    failed = 0;
    for (const auto& [step, of_test] : runs) {
      if (of_test.empty()) continue;
      stays[of_test.front()] = stays[of_test.back()] = true;
      failed += texts[of_test.back()].find("FAIL") != std::string::npos ? 1 : 0;
    }
    std::string out;
    for (std::size_t i = 0; i < steps.size(); ++i) {
      if (stays[i]) out += texts[i];
    }
    return out;
  }
};

TEST_F(LogSorting, AgreesWithTheSlowRule) {
  std::mt19937 random(7);
  for (int round = 0; round < 300; ++round) {
    std::vector<std::string> steps, texts;
    std::string log;
    for (int i = 0; i < 40; ++i) {
      const std::string step = formatted("%04d.00%d", static_cast<int>(random() % 5 + 1), 1);
      const bool cancels = random() % 4 == 0 && !steps.empty() && !texts.back().empty();
      steps.push_back(cancels ? steps.back() : step);
      const bool fails = random() % 2 == 0;
      texts.push_back(cancels ? ""
                      : fails ? marked(step, "FAIL", std::to_string(i))
                              : test(step, "", std::to_string(i)));
      log += cancels ? plain(steps.back(), 'c', "")
             : fails ? test(step, "FAIL", std::to_string(i))
                     : texts.back();
    }
    std::size_t failed = 0;
    EXPECT_EQ(sorted(enter() + log + leave()), enter() + SlowSort::sort(steps, texts, failed) + leave())
        << log;
    EXPECT_EQ(*run_variable(run, "NUM_FAILED$"), std::to_string(failed));
  }
}

}  // namespace
}  // namespace orvane
