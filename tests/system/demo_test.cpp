// The demo laboratory from its sources to its results.
#include <fstream>
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
  demo();
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
  EXPECT_EQ(answers,
            (std::vector{211, 210, 210, 210, 210, 210, 210, 210, 210, 1004, 210, 1001, 210, 210, 210, 210}));

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
  EXPECT_TRUE(comment.starts_with("0004.003 K fails at 300 V")) << comment;
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

// list | compile gives the same file again, compile | list the same text.
TEST_F(Demo, TheGeneratorIsCalibratedWithoutAHand) {
  demo();
  const Ended ended = run_process(ovrun("Function generator: frequency and amplitude", ""));
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
  EXPECT_EQ(sources, 5);
  EXPECT_EQ(contents("again/proc.dir"), contents("procedures/proc.dir"));
}

}  // namespace
}  // namespace orvane::test
