// Outputs are off behind a run, however it ends. The simulated sources keep their state in a file, so that what they
// put out can be seen behind a program that is gone.
#include <signal.h>

#include "system/laboratory.h"

namespace orvane::test {
namespace {

class Standby : public LaboratoryTest {
 protected:
  Standby() {
    write("instruments.txt", "10 : HP 33120A = GEN\n4 : \"Source\" = SRC\n");
    write("bench.txt",
          "[10] HP33120A\n[4] SCPI\nsetting = SOURce:VOLTage 0 -1100 1100\nsetting = OUTPut:STATe 0 0 1\n");
    write("kill.sh", "#!/bin/sh\nkill -9 $PPID\n");
    std::filesystem::permissions(folder / "kill.sh", std::filesystem::perms::owner_all);
    configure("user_prog_dir", folder.string());
    configure("tur_lim", "NONE");  // the generator has no accuracy file
  }

  // Both sources on, two tests, both on again. The generator is reset by its driver, the other one by the list.
  static std::vector<std::string> lines() {
    return {"RESET        [@SRC]:SOUR:VOLT 0;:OUTP:STAT 0",
            "IEEE         [@SRC]:SOUR:VOLT 100;:OUTP:STAT 1",
            "IEEE         [@GEN]APPL:SIN 1E3,5,0",
            "MEME         10",
            "MEMC         10.000V        1%",
            "IEEE         [@SRC]:SOUR:VOLT 10;:OUTP:STAT 1[@GEN]VOLT 6",
            "MATH         M[1] = 1 / 1",
            "IEEE         [@GEN]VOLT 7",
            "END"};
  }
  void compile(const std::vector<std::string>& statements) {
    std::vector<std::string> source;
    for (std::size_t i = 0; i < statements.size(); ++i) {
      const std::size_t blank = statements[i].find(' ');
      const std::string text = blank == std::string::npos ? "" : statements[i].substr(13);
      source.push_back(source_line(1, static_cast<int>(i) + 1, statements[i].substr(0, blank), text));
    }
    procedure("sources", source, "HP 33120A");
  }
  Command start(const std::string& answers) {
    std::filesystem::remove(folder / "state.txt");
    return restart(answers);
  }
  Command restart(const std::string& answers) {
    Command command = ovrun("sources", answers);
    command.environment.emplace_back("ORVANE_BENCH", path("bench.txt"));
    command.environment.emplace_back("ORVANE_BENCH_STATE", path("state.txt"));
    return command;
  }
  // "4 idle 10 idle": what the sources put out.
  std::string outputs() const {
    std::istringstream state(contents("state.txt"));
    std::string out, line;
    while (std::getline(state, line)) out += (out.empty() ? "" : " ") + line.substr(0, line.find(' ', 4));
    return out;
  }
};

constexpr const char* all_off = "4 idle 10 idle";

TEST_F(Standby, AtTheEndAndAtAnAbortBehindEachStatement) {
  compile(lines());
  Ended ended = run_process(start("*\n"));
  EXPECT_EQ(ended.status, 0) << ended.out << ended.err;
  EXPECT_EQ(outputs(), all_off);
  for (std::size_t i = 1; i < lines().size(); ++i) {
    ended = run_process(start("abort-at " + std::to_string(i) + "\nterm\n*\n"));
    EXPECT_EQ(ended.status, 2) << i << ended.out << ended.err;
    EXPECT_EQ(outputs(), all_off) << "abort behind statement " << i;
  }
}

TEST_F(Standby, AtATermAndBehindAnError) {
  std::vector<std::string> text = lines();
  text[6] = "MATH         M[1] = 1 / 0";
  compile(text);
  for (const char* answers : {"term\n*\n", "continue\n*\n"}) {
    const Ended ended = run_process(start(answers));
    EXPECT_EQ(outputs(), all_off) << answers << ended.out << ended.err;
  }
}

TEST_F(Standby, AKilledRunIsMadeSafeAtTheNextStart) {
  for (std::size_t i = 1; i < lines().size(); ++i) {
    std::vector<std::string> text = lines();
    text.insert(text.begin() + static_cast<std::ptrdiff_t>(i), "DOS          kill.sh");
    compile(text);
    Ended ended = run_process(start("*\n"));
    ASSERT_EQ(ended.signal, SIGKILL) << i << ended.out << ended.err;
    EXPECT_EQ(outputs() == all_off, i <= 1 || i == 5) << "killed behind statement " << i;
    // The unit that only the lost list knew is cleared with every device, and the operator is told.
    compile({"END"});
    ended = run_process(restart("*\n"));
    EXPECT_EQ(ended.status, 0) << ended.out << ended.err;
    EXPECT_EQ(outputs().substr(outputs().size() - 7), "10 idle") << "killed behind statement " << i;
    EXPECT_EQ(message_numbers().front(), 30650) << i;
  }
}

TEST_F(Standby, ASecondInterruptPutsTheSourcesToStandby) {
  std::vector<std::string> text = lines();
  text.insert(text.begin() + 3, {"HEAD         looping", "WHILE        1", "MATH         M[1] = 2", "ENDW"});
  compile(text);
  Process process(start("*\n"));
  ASSERT_TRUE(process.wait_for("== looping"));
  process.signal(SIGINT);
  ASSERT_TRUE(process.wait_for("--- Test stopped ---"));
  process.signal(SIGINT);
  EXPECT_EQ(process.wait(10).status, 2);
  EXPECT_EQ(outputs(), all_off);
}

}  // namespace
}  // namespace orvane::test
