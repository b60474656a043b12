// What a run leaves for others: results as JSON, CSV and JUnit, the sorted log, and the log of a program that is killed.
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>

#include "support/json_schema.h"
#include "system/laboratory.h"

namespace orvane::test {
namespace {

using Json = nlohmann::json;

class ResultFiles : public LaboratoryTest {
 protected:
  // Tests of 10 V within 1 %, each with a reading of its own.
  void tests(const std::string& name, const std::vector<std::string>& readings) {
    std::vector<std::string> lines = {source_line(1, 1, "ASK-", std::string(44, ' ') + "F")};
    int test = 1;
    for (const std::string& reading : readings) {
      lines.push_back(source_line(++test, 1, "MATH", "MEM = " + reading));
      lines.push_back(source_line(test, 2, "MEMC", "10.000V        1%            1kH"));
    }
    procedure(name, lines);
  }
  Ended run_with(const std::string& name, const std::string& answers, const std::vector<std::string>& words) {
    Command command = ovrun(name, answers);
    command.words.insert(command.words.end(), words.begin(), words.end());
    return run_process(command);
  }
  static Json schema() {
    const std::string path = ORVANE_SOURCE_DIR "/docs/results.schema.json";
    std::ifstream file(path);
    return Json::parse(file);
  }
  static Json field(const Json& record, const std::string& name) {
    for (const Json& one : record["fields"]) {
      if (one["name"] == name) return one;
    }
    return nullptr;
  }
};

TEST_F(ResultFiles, JsonFitsItsSchemaAndTellsEveryField) {
  tests("three", {"10.05", "10.5", "100"});
  const Ended ended = run_with("three", "*\n", {"--results", path("r.json"), "--junit", path("j.xml")});
  EXPECT_EQ(ended.status, 1) << ended.err;
  const Json results = Json::parse(contents("r.json"));
  const JsonSchema rules(schema());
  EXPECT_EQ(rules.fault(results), "");
  EXPECT_EQ(results["run"]["overall"], "FAIL");
  EXPECT_EQ(results["run"]["exit"], 1);
  EXPECT_EQ(results["run"]["variables"]["NUM_FAILED$"], "2");
  EXPECT_EQ(results["run"]["variables"]["NOTIFY_USER$"], "2");
  ASSERT_EQ(results["records"].size(), 3U);
  const Json& second = results["records"][1];
  EXPECT_EQ(second["steps"], Json::array({"3.002"}));
  EXPECT_EQ(second["counts_as_failed"], true);
  EXPECT_EQ(
      field(second, "System Actual"),
      Json(
          {{"name", "System Actual"}, {"value", 10.5}, {"text", "10.50000"}, {"prefix", ""}, {"unit", "V"}}));
  EXPECT_EQ(field(second, "Test Description")["text"], "10.000 V @ 1 kHz");
  EXPECT_EQ(field(results["records"][2], "Condition")["text"], "NOTIFY USER");
  // The validator finds what does not fit.
  Json wrong = results;
  wrong["records"][0]["fields"][0].erase("name");
  EXPECT_NE(rules.fault(wrong), "");
  wrong = results;
  wrong["run"]["mode"] = "maybe";
  EXPECT_NE(rules.fault(wrong), "");

  const std::string junit = contents("j.xml");
  EXPECT_NE(junit.find("<testsuite name=\"three\" tests=\"3\" failures=\"2\" errors=\"0\""),
            std::string::npos)
      << junit;
  EXPECT_NE(junit.find("name=\"2.002 10.000 V @ 1 kHz\"/>"), std::string::npos) << junit;
  EXPECT_NE(junit.find("<failure message=\"Fail\">  3"), std::string::npos) << junit;
}

TEST_F(ResultFiles, CsvQuotesWhatWouldPartIt) {
  procedure("quotes", {source_line(1, 1, "ASK-", std::string(44, ' ') + "F"),
                       source_line(1, 2, "TSET", "TDESC = Volts, \"DC\" <&>"),
                       source_line(1, 3, "MEME", "10"), source_line(1, 4, "MEMC", "10.000V        1%")});
  EXPECT_EQ(run_with("quotes", "", {"--results", path("r.csv"), "--junit", path("j.xml")}).status, 0);
  const std::string csv = contents("r.csv");
  EXPECT_TRUE(csv.starts_with("row,step,field,value,text,prefix,unit\r\n,,procedure,,quotes,,\r\n")) << csv;
  EXPECT_NE(csv.find("1,1.004,Test Description,,\"Volts, \"\"DC\"\" <&>\",,\r\n"), std::string::npos) << csv;
  EXPECT_NE(csv.find("1,1.004,Nominal,10,10.000,,V\r\n"), std::string::npos) << csv;
  EXPECT_NE(contents("j.xml").find("Volts, &quot;DC&quot; &lt;&amp;&gt;"), std::string::npos);
}

TEST_F(ResultFiles, ARunThatIsGivenUpIsNoPass) {
  tests("given up", {"10", "10.5", "10"});
  EXPECT_EQ(run_with("given up", "term\n", {"--results", path("r.json"), "--junit", path("j.xml")}).status,
            2);
  EXPECT_EQ(Json::parse(contents("r.json"))["run"]["exit"], 2);
  EXPECT_NE(contents("j.xml").find("<error message=\"the run, or what follows it, was not finished (exit status 2)\"/>"),
            std::string::npos);
  // Told before the run begins; a name of another kind is wrong usage.
  const Ended ended = run_with("given up", "", {"--results", path("absent/r.json")});
  EXPECT_EQ(ended.status, 3);
  EXPECT_TRUE(ended.err.starts_with("E31191: ")) << ended.err;
  EXPECT_EQ(run_with("given up", "", {"--results", path("r.txt")}).status, 64);
}

TEST_F(ResultFiles, RepeatsAndCancelsAreSorted) {
  tests("again", {"10.5", "10"});
  EXPECT_EQ(
      run_with("again", "repeat\nrepeat\ncomment\n= leads\ncancel\ncontinue\n", {"--results", path("r.json")})
          .status,
      1);
  const auto tests_in = [&](const std::string& name) {
    const std::string log = contents(name);
    int count = 0;
    for (std::size_t at = 0; (at = log.find(" M   2 ", at)) != std::string::npos; ++at) ++count;
    return count;
  };
  EXPECT_EQ(tests_in("work/rslt.tmp"), 4);
  EXPECT_EQ(tests_in("work/rsltsort.tmp"), 2);
  EXPECT_NE(contents("work/rsltsort.tmp").find("0002.002 K         leads\n"), std::string::npos);
  EXPECT_EQ(Json::parse(contents("r.json"))["records"].size(),
            3U);  // the first and the last of test 2, and test 3
}

TEST_F(ResultFiles, AKilledProgramLeavesEveryFinishedTest) {
  constexpr int kills = 50;
  std::vector<std::string> lines = {
      source_line(1, 1, "ASK-", std::string(44, ' ') + "F"), source_line(1, 2, "WHILE", "M[1] < 2000"),
      source_line(1, 3, "MATH", "M[1] = M[1] + 1; MEM = 10 + M[1] / 50000"),
      source_line(1, 4, "MEMC", "10.000V        1%"), source_line(1, 5, "ENDW")};
  procedure("many", lines);
  std::mt19937 random(5);
  std::size_t seen = 0;
  for (int round = 0; round < kills; ++round) {
    Process process(ovrun("many", ""));
    // The run itself is to be met, however long the program takes to start.
    for (int wait = 0; wait < 20000 && !std::filesystem::exists(folder / "work/rslt.tmp"); ++wait)
      std::this_thread::sleep_for(std::chrono::microseconds(500));
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 60000));
    process.signal(SIGKILL);
    static_cast<void>(process.wait());
    // Whatever the operator saw stands in the log, both lines of it, in the same order.
    const std::vector<Json> shown = events("result");
    std::istringstream log(contents("work/rslt.tmp"));
    std::vector<std::string> tests;
    for (std::string line; std::getline(log, line);) {
      if (line.size() > 9 && line[9] == 'M') tests.push_back(line);
    }
    // The board has a result just before the log has it.
    ASSERT_GE(tests.size() + 2, shown.size() * 2) << round;
    for (std::size_t i = 0; i + 1 < tests.size(); i += 2) {
      ASSERT_EQ(tests[i].substr(11, 79), shown[i / 2]["line1"].get<std::string>()) << round;
      ASSERT_EQ(tests[i + 1].substr(11), shown[i / 2]["line2"].get<std::string>()) << round;
    }
    seen += tests.size() / 2;
    std::filesystem::remove(folder / "work/rslt.tmp");
    std::filesystem::remove(folder / "run.jsonl");
  }
  EXPECT_GT(seen, static_cast<std::size_t>(kills)) << "the kills met no run";
}

}  // namespace
}  // namespace orvane::test
