// The demo laboratory from its sources to its results.
#include <charconv>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>

#include "system/laboratory.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

class Demo : public LaboratoryTest {};

std::string read(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

TEST_F(Demo, RunsToItsEndAndOnePointFails) {
  demo_with_its_windows();
  const Ended ended =
      run_process(ovrun({"--answers", ORVANE_SOURCE_DIR "/demo/answers.txt", "-run", demo_procedure}));
  EXPECT_EQ(ended.status, 1) << ended.err;
  EXPECT_EQ(ended.err, "");
  EXPECT_NE(ended.out.find("Overall result: FAIL"), std::string::npos) << ended.out;

  // Each point once: five in DC, three in AC of which the last fails, three in ohms.
  std::string statuses;
  for (const nlohmann::json& result : events("result")) {
    statuses += result["status_text"].get<std::string>() + " ";
    EXPECT_EQ(result["line1"].get<std::string>().size(), 79U);
    EXPECT_EQ(result["colour"], result["status_text"] == "FAIL" ? 2 : 1);
  }
  EXPECT_EQ(statuses, "PASS PASS PASS PASS PASS PASS PASS FAIL PASS PASS PASS ");
  const nlohmann::json failed = events("result")[7];
  EXPECT_NE(failed["line1"].get<std::string>().find("305.09"), std::string::npos) << failed;

  // Only the failing point opens its dialog: once for the comment, once more to go on.
  std::vector<int> tests, answers;
  for (const nlohmann::json& window : events("window")) {
    if (window["kind"] == "wait") continue;
    answers.push_back(window["answer"]);
    if (window["kind"] != "test") continue;
    tests.push_back(window["answer"]);
    EXPECT_EQ(window["lines"][0], "FAIL");
  }
  EXPECT_EQ(tests, (std::vector{1004, 1001}));
  EXPECT_EQ(answers, (std::vector{210, 211,  210, 210, 210, 210, 210, 210, 210, 210, 1004,
                                  210, 1001, 210, 210, 210, 210, 210, 210, 210, 210, 205}));

  // What is on paper: who calibrated what, with what, and every point.
  const std::string results = contents("work/1.res"), certificate = contents("work/2.res");
  EXPECT_NE(certificate.find("30172"), std::string::npos);
  EXPECT_NE(certificate.find("2823A10345"), std::string::npos);
  for (const char* point : {"  2-2 ", "  2-6 ", "  3-4 ", "        Remark: fails at 300 V", "  4-4 "})
    EXPECT_NE(results.find(point), std::string::npos) << point;

  const std::vector<nlohmann::json> runs = events("run");
  ASSERT_EQ(runs.size(), 2U);
  EXPECT_EQ(runs[0]["procedure"], demo_procedure);
  EXPECT_EQ(runs[1]["run_test"], 1);
  EXPECT_EQ(runs[1]["overall"], "FAIL");
  EXPECT_EQ(runs[1]["exit"], 1);

  // The log: every procedure entered and left, each test's two lines, the comment behind its test.
  std::string letters;
  std::string comment;
  for (const std::string& line : lines_of(contents("work/rslt.tmp"))) {
    ASSERT_GT(line.size(), 9U);
    letters += line[9];
    if (line[9] == 'K') comment = line;
  }
  EXPECT_EQ(letters, "CCMMMMMMMMMMLCMMMMMMKLCMMMMMMLL");
  EXPECT_TRUE(comment.starts_with("0004.003 K         fails at 300 V")) << comment;
  EXPECT_NE(contents("settings.ini").find("procedure = done"), std::string::npos);
}

TEST_F(Demo, TheAcSectionIsLeftOutOnNo) {
  demo();
  const Ended ended = run_process(ovrun(demo_procedure, "no\n*\n"));
  EXPECT_EQ(ended.status, 0) << ended.err;
  EXPECT_EQ(events("result").size(), 8U);
  EXPECT_EQ(contents("work/rslt.tmp").find("AC volts"), std::string::npos);
}

TEST_F(Demo, TheSameSeedGivesTheSameReadings) {
  demo();
  run_process(ovrun(demo_procedure, "yes\n*\n"));
  const std::string first = contents("work/rslt.tmp");
  run_process(ovrun(demo_procedure, "yes\n*\n"));
  EXPECT_EQ(contents("work/rslt.tmp"), first);
}

// The facts behind a result, by their labels. Components of the uncertainty stand below theirs.
std::map<std::string, std::string> explained(const std::string& out) {
  std::map<std::string, std::string> facts;
  for (const std::string& line : lines_of(out)) {
    if (!line.starts_with("      ") || line.size() < 8 || line[6] == ' ') continue;
    const std::size_t gap = line.find("  ", 6);
    if (gap != std::string::npos)
      facts[line.substr(6, gap - 6)] = line.substr(line.find_first_not_of(' ', gap));
  }
  return facts;
}

// The numbers of a text in their order; a sign counts where a number begins.
std::vector<double> numbers_of(const std::string& text) {
  std::vector<double> found;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool begins = i == 0 || std::string_view(" (+-").find(text[i - 1]) != std::string_view::npos;
    if (!begins || text[i] < '0' || text[i] > '9') continue;
    double value = 0;
    const char* const end = std::from_chars(text.data() + i, text.data() + text.size(), value).ptr;
    found.push_back(i > 0 && text[i - 1] == '-' ? -value : value);
    i = static_cast<std::size_t>(end - text.data());
  }
  return found;
}

// One point from its readings to its verdict, worked out again from what --explain tells and from the files it names.
TEST_F(Demo, EveryFigureOfAnExplanationIsFoundAgainByHand) {
  demo();
  write("answers.txt", "continue\n");
  const Ended ended =
      run_process(ovrun({"--explain", "--answers", path("answers.txt"), "-run", "One point, explained"}));
  EXPECT_EQ(ended.status, 0) << ended.err;
  const auto facts = explained(ended.out);
  const auto of = [&](const char* label) {
    const auto at = facts.find(label);
    return at != facts.end() ? numbers_of(at->second) : std::vector<double>();
  };
  const auto readings = of("Readings"), error = of("Error"), tolerance = of("Tolerance"),
             limits = of("Limits"), percent = of("Percent of tolerance"), accuracy = of("Accuracy"),
             guard = of("Guard band"), u1 = of("U1 system accuracy"), u2 = of("U2 scatter and resolution");
  ASSERT_EQ(readings.size(), 7U) << ended.out;
  ASSERT_TRUE(error.size() == 3 && tolerance.size() == 3 && limits.size() == 2 && percent.size() == 3);
  ASSERT_TRUE(accuracy.size() == 5 && guard.size() == 6 && u1.size() == 4 && u2.size() == 9) << ended.out;

  const auto near = [](double found, double expected) {
    EXPECT_NEAR(found, expected, std::fabs(expected) * 1e-5);  // readings are told to nine digits
  };
  double mean = 0, squares = 0;
  for (std::size_t i = 2; i < 7; ++i) mean += readings[i] / 5;
  for (std::size_t i = 2; i < 7; ++i) squares += (readings[i] - mean) * (readings[i] - mean);
  near(of("System").front(), mean);
  near(error[2], 3 - mean);
  near(tolerance[0], 0.00038 * 3);
  near(limits[0], mean - tolerance[0]);
  near(limits[1], mean + tolerance[0]);
  near(percent[2], 100 * error[2] / tolerance[0]);

  // The accuracy row as it stands in the file.
  const std::string row =
      lines_of(contents("accuracy/hp3458a.acc")).at(static_cast<std::size_t>(accuracy[0]) - 1);
  const auto columns = numbers_of(row);
  ASSERT_GE(columns.size(), 4U) << row;
  EXPECT_TRUE(columns[0] <= 3 && 3 <= columns[1]) << row;
  const double system = columns[2] / 100 * 3 + columns[3];
  near(of("System tolerance").front(), system);
  near(of("TUR").back(), tolerance[0] / system);

  const double scatter = std::sqrt(squares / 4 / 5), resolution = 0.0001 / std::sqrt(12.0);
  EXPECT_NEAR(u2[2], scatter, 2e-9);
  const double standard = std::hypot(system / 2, scatter, resolution);
  EXPECT_NEAR(u1[0], 100 * std::pow(system / 2 / standard, 2), 0.06);
  EXPECT_NEAR(u1[0] + u2[0], 100, 0.11);
  EXPECT_NEAR(of("Standard uncertainty").front(), standard, 1e-9);
  EXPECT_NEAR(of("Expanded uncertainty").front(), 2 * standard, 2e-9);
  EXPECT_NEAR(guard[3], tolerance[0] - 2 * standard, 2e-9);
  EXPECT_NEAR(guard[4], 100 * error[2] / guard[3], 1e-5);
  EXPECT_NEAR(guard[5], 100 * error[2] / (tolerance[0] + 2 * standard), 1e-3);

  // What stands in the result is the same.
  const nlohmann::json result = events("result").at(0);
  EXPECT_TRUE(facts.at("Verdict").starts_with(result["status_text"].get<std::string>()))
      << facts.at("Verdict");
  const std::string line1 = result["line1"];
  EXPECT_EQ(std::stod(line1.substr(29)), error[1]) << line1;
  EXPECT_EQ(std::stod(line1.substr(73)), std::round(percent[2])) << line1;
}

// list | compile gives the same file again, compile | list the same text.
TEST_F(Demo, TheGeneratorIsCalibratedWithoutAHand) {
  demo_with_its_windows();
  const Ended ended = run_process(ovrun({"--answers", ORVANE_SOURCE_DIR "/demo/answers-generator.txt", "-run",
                                         "Function generator: frequency and amplitude"}));
  EXPECT_EQ(ended.status, 0) << ended.out << ended.err;
  EXPECT_EQ(ended.err, "");
  std::string statuses;
  for (const nlohmann::json& result : events("result"))
    statuses += result["status_text"].get<std::string>() + " ";
  EXPECT_EQ(statuses, "PASS PASS PASS PASS PASS PASS ");
  // What the meters find is the generator's error: 4 ppm of the frequency and the meter's own, 0.4 % of the amplitude.
  EXPECT_NE(events("result")[0]["line1"].get<std::string>().find("1.000004"), std::string::npos);
  EXPECT_NE(events("result")[3]["line1"].get<std::string>().find("0.7099"), std::string::npos);
}

TEST_F(Demo, EverySourceComesRoundBothWays) {
  fs::create_directory(folder / "again");
  int sources = 0;
  for (const auto& entry : fs::directory_iterator(ORVANE_SOURCE_DIR "/demo/source")) {
    const std::string source = entry.path().string();
    const Ended compiled = run_process(ovproc({"compile", source, "--procdir", path("procedures")}));
    ASSERT_EQ(compiled.status, 0) << compiled.err;
    const std::string file = compiled.out.substr(0, compiled.out.find(' '));
    const Ended listed = run_process(ovproc({"list", path("procedures/" + file)}));
    EXPECT_EQ(listed.out, read(source)) << source;
    const Ended again = run_process(ovproc({"compile", "-", "--procdir", path("again")}), listed.out);
    EXPECT_EQ(again.out, compiled.out) << again.err;
    EXPECT_EQ(contents("again/" + file), contents("procedures/" + file)) << source;
    EXPECT_EQ(run_process(ovproc({"check", path("again/" + file)})).status, 0);
    ++sources;
  }
  EXPECT_EQ(sources, 6);
  EXPECT_EQ(contents("again/proc.dir"), contents("procedures/proc.dir"));
}

}  // namespace
}  // namespace orvane::test
