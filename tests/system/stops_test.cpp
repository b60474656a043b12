// Runs that are stopped from outside: interrupts, a killed program, a full disk, a reader that leaves.
#include <signal.h>

#include <algorithm>
#include <chrono>

#include "system/laboratory.h"

namespace orvane::test {
namespace {

class Stops : public LaboratoryTest {
 protected:
  // Evaluates one test, shows the heading "looping" and turns for ever. `options`: letters that ASK- switches off.
  void endless(char option) {
    std::string letters(51, ' ');
    if (option == 'T') letters[50] = 'T';
    letters[44] = 'F';
    procedure("endless",
              {source_line(1, 1, "ASK-", letters), source_line(1, 2, "MEME", "10"),
               source_line(1, 3, "MEMC", "10.000V        1%"), source_line(2, 1, "HEAD", "looping"),
               source_line(2, 2, "WHILE", "1"), source_line(2, 3, "MATH", "M[1] = M[1] + 1"),
               source_line(2, 4, "ENDW"), source_line(2, 5, "END")});
  }
  Command start(const std::vector<std::string>& words = {}) const {
    Command command = ovrun({"-run", "endless"});
    command.words.insert(command.words.end(), words.begin(), words.end());
    return command;
  }
};

double seconds_since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

TEST_F(Stops, AnInterruptEndsAnEndlessLoop) {
  endless('T');
  for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
    Process process(start());
    ASSERT_TRUE(process.wait_for("== looping"));
    const auto start = std::chrono::steady_clock::now();
    process.signal(number);
    const Ended ended = process.wait();
    EXPECT_LT(seconds_since(start), 10.0);  // at once, on a machine however loaded
    EXPECT_EQ(ended.status, 2) << "signal " << number << ": " << ended.signal;
    EXPECT_EQ(ended.err, "");
    EXPECT_NE(ended.out.find("Tests: 1. Failed: 0."), std::string::npos) << ended.out;
    EXPECT_EQ(ended.out.find("PASS\nOverall"), std::string::npos) << "no verdict on a run that was given up";
    EXPECT_EQ(events("run").back()["exit"], 2);
    EXPECT_NE(contents("settings.ini").find("procedure = done"), std::string::npos);
  }
}

TEST_F(Stops, WithTermAllowedAnInterruptAsks) {
  endless(' ');
  Process process(start());
  ASSERT_TRUE(process.wait_for("== looping"));
  process.signal(SIGINT);
  ASSERT_TRUE(process.wait_for("--- Test stopped ---"));
  ASSERT_TRUE(process.wait_for("\n> "));
  process.type("t\n");
  EXPECT_EQ(process.wait().status, 2);
  const nlohmann::json dialog = events("window").back();
  EXPECT_EQ(dialog["kind"], "test");
  EXPECT_EQ(dialog["answer"], 1007);
  // The statement that was in hand; the heading itself may still have been.
  const std::string text = dialog["lines"][0];
  EXPECT_TRUE(text.find("WHILE") != std::string::npos || text.find("MATH") != std::string::npos ||
              text.find("ENDW") != std::string::npos || text.find("HEAD") != std::string::npos)
      << text;
}

TEST_F(Stops, ASecondInterruptEndsTheProgramWithTheBusCleared) {
  endless(' ');
  write("answers.txt", "*\n");  // at each stop the run goes on
  Process process(start({"--answers", path("answers.txt"), "-Ti"}));
  ASSERT_TRUE(process.wait_for("== looping"));
  process.signal(SIGINT);
  ASSERT_TRUE(process.wait_for("--- Test stopped ---"));
  const auto clears = [&] {
    const std::string log = contents("work/ovdebug.txt");
    int count = 0;
    for (std::size_t at = 0; (at = log.find("IFC sent on board 0\n", at)) != std::string::npos; ++at) ++count;
    return count;
  };
  EXPECT_EQ(clears(), 1) << "as the run began";
  process.signal(SIGINT);
  const Ended ended = process.wait(10);
  EXPECT_EQ(ended.status, 2) << ended.signal;
  EXPECT_EQ(clears(), 2);
  EXPECT_EQ(events("run").back()["exit"], 2);
}

TEST_F(Stops, AKilledRunLeavesItsFinishedTestsAndItsMarker) {
  endless(' ');
  Process process(start());
  ASSERT_TRUE(process.wait_for("== looping"));
  // While it runs, its working folder is its own.
  Command second = ovrun("endless", "");
  *(std::find(second.words.begin(), second.words.end(), "--transcript") + 1) = path("second.jsonl");
  const Ended refused = run_process(second);
  EXPECT_EQ(refused.status, 3);
  EXPECT_NE(refused.err.find("E31401: "), std::string::npos) << refused.err;
  process.signal(SIGKILL);
  EXPECT_EQ(process.wait().signal, SIGKILL);
  const std::string log = contents("work/rslt.tmp");
  EXPECT_EQ(std::count(log.begin(), log.end(), '\n'), 3) << log;
  EXPECT_NE(log.find("0001.003 M   1           10V"), std::string::npos) << log;
  EXPECT_NE(log.find("PASS"), std::string::npos) << log;
  EXPECT_NE(contents("settings.ini").find("procedure = underway"), std::string::npos);
  EXPECT_EQ(events("result").size(), 1U);

  // At the next start what it has finished is kept and reported, before another run writes over it.
  procedure("after", {source_line(1, 1, "END")});
  EXPECT_EQ(run_process(ovrun("after", "")).status, 0);
  EXPECT_NE(contents("run.jsonl").find("31400"), std::string::npos);
  const std::string report = contents("work/2.res");
  for (const char* part : {"Procedure         endless\n", "State     INCOMPLETE\n", "  1          10V"})
    EXPECT_NE(report.find(part), std::string::npos) << part << report;
  EXPECT_NE(contents("work/1.raw").find("0000.000 L             LEAVE endless\n"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(folder / "work/rslt.var"));
  // Once: the run behind it has ended as it should.
  EXPECT_EQ(run_process(ovrun("after", "")).status, 0);
  EXPECT_EQ(contents("run.jsonl").find("31400"), std::string::npos);
}

TEST_F(Stops, AFullDiskIsToldOnceAndTheRunGoesOn) {
  std::vector<std::string> lines = {source_line(1, 1, "ASK-", std::string(44, ' ') + "F")};
  for (int test = 2; test < 6; ++test) {
    lines.push_back(source_line(test, 1, "MEME", "10"));
    lines.push_back(source_line(test, 2, "MEMC", "10.000V        1%"));
  }
  procedure("four tests", lines);
  std::filesystem::create_symlink("/dev/full", folder / "work/rslt.tmp");
  const Ended ended = run_process(ovrun("four tests", ""));
  EXPECT_EQ(ended.status, 0) << ended.err;
  EXPECT_EQ(message_numbers(), std::vector{4623});
  EXPECT_EQ(events("result").size(), 4U);

  // A transcript that breaks is told as well, and does not change the result.
  std::filesystem::remove(folder / "work/rslt.tmp");
  std::filesystem::create_symlink("/dev/full", folder / "full");
  Command command = ovrun("four tests", "");
  *(std::find(command.words.begin(), command.words.end(), "--transcript") + 1) = path("full");
  const Ended broken = run_process(command);
  EXPECT_EQ(broken.status, 0);
  EXPECT_NE(broken.err.find(path("full")), std::string::npos) << broken.err;
}

TEST_F(Stops, AReaderThatLeavesDoesNotEndTheRun) {
  demo();
  Process process(ovrun(demo_procedure, "yes\n*\n"));
  process.close_output();
  const Ended ended = process.wait();
  EXPECT_EQ(ended.status, 1) << ended.signal;
  EXPECT_EQ(events("result").size(), 11U);
}

}  // namespace
}  // namespace orvane::test
