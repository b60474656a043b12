// The desktop program as a process: its exit codes, one instance, what a start without a sound configuration or without
// a display says. Nobody presses a key here; that the windows' own tests do.
#include <signal.h>
#include <unistd.h>

#include <filesystem>

#include "system/laboratory.h"

namespace orvane::test {
namespace {

namespace fs = std::filesystem;

class DesktopProgram : public LaboratoryTest {
 protected:
  void SetUp() override {
    if (!fs::exists(built("orvane"))) GTEST_SKIP() << "this build has no desktop";
    fs::create_directories(folder / "home/.config/orvane");
    procedure("quick", {source_line(1, 1, "MATH", "M[1] = 1"), source_line(1, 2, "END")});
    procedure("endless", {source_line(1, 1, "WHILE", "1"), source_line(1, 2, "MATH", "M[1] = M[1] + 1"),
                          source_line(1, 3, "ENDW"), source_line(1, 4, "END")});
  }

  Command orvane(std::vector<std::string> words) const {
    Command command = ovrun(std::vector<std::string>());
    command.words = {built("orvane"), "--config", path("orvane.ini"), "--settings", path("settings.ini"),
                     "--mode",        "real"};
    command.words.insert(command.words.end(), words.begin(), words.end());
    command.environment.push_back({"QT_QPA_PLATFORM", "offscreen"});
    return command;
  }
  // The run has begun once the marker stands in the settings.
  bool wait_for_run() const {
    for (int i = 0; i < 1000; ++i) {
      if (contents("settings.ini").find("procedure = underway") != std::string::npos) return true;
      ::usleep(20000);
    }
    return false;
  }
};

TEST_F(DesktopProgram, ARunFromTheCommandLineGivesItsValueAsExitCode) {
  const Ended finished = run_process(orvane({"-run", "quick"}));
  EXPECT_EQ(finished.status, 1) << finished.err;
  EXPECT_NE(contents("settings.ini").find("procedure = done"), std::string::npos);
  // No such procedure; with -AutoTest the report opens no box.
  EXPECT_EQ(run_process(orvane({"-AutoTest", "-run", "absent"})).status, 0);
  EXPECT_EQ(run_process(orvane({"-hide", "-logo", "-lfcr", "-cproc", "-pack", "-run", "quick"})).status, 1);
}

TEST_F(DesktopProgram, WrongUsageAndHelpNeedNoConfiguration) {
  EXPECT_EQ(
      run_process({.words = {built("orvane"), "--nonsense"}, .environment = {}, .directory = {}}).status, 64);
  EXPECT_EQ(run_process({.words = {built("orvane"), "-run"}, .environment = {}, .directory = {}}).status, 64);
  const Ended version =
      run_process({.words = {built("orvane"), "--version"}, .environment = {}, .directory = {}});
  EXPECT_EQ(version.status, 0);
  EXPECT_TRUE(version.out.starts_with("orvane ")) << version.out;
}

TEST_F(DesktopProgram, EveryFaultOfTheStartIsTold) {
  std::string text = contents("orvane.ini");
  text.replace(text.find("oot_lim"), 7, "ootlim_");
  write("orvane.ini", text + "\nhead_font = LARGE\npd_min = perhaps\n");
  const Ended ended = run_process(orvane({"-run", "quick"}));
  EXPECT_EQ(ended.status, 3);
  for (const char* told : {"E504: ", "oot_lim", "head_font", "pd_min"})
    EXPECT_NE(ended.err.find(told), std::string::npos) << told << " in " << ended.err;
}

TEST_F(DesktopProgram, ASecondInstanceLeavesAndATerminationEndsTheFirst) {
  Process first(orvane({"-run", "endless"}));
  ASSERT_TRUE(wait_for_run());
  const Ended second = run_process(orvane({"-run", "quick"}));
  EXPECT_EQ(second.status, 3);
  EXPECT_NE(second.err.find("Multiple instances of Orvane Run Time are not allowed."), std::string::npos)
      << second.err;
  EXPECT_NE(contents("settings.ini").find("procedure = underway"), std::string::npos);
  first.signal(SIGTERM);
  const Ended ended = first.wait(20);
  EXPECT_EQ(ended.signal, 0);
  EXPECT_NE(contents("settings.ini").find("procedure = done"), std::string::npos);
  EXPECT_EQ(run_process(orvane({"-run", "quick"})).status, 1) << "the lock is free again";
}

TEST_F(DesktopProgram, ADeadInstanceLocksNothing) {
  {
    Process killed(orvane({"-run", "endless"}));
    ASSERT_TRUE(wait_for_run());
    killed.signal(SIGKILL);
    killed.wait(20);
  }
  EXPECT_EQ(run_process(orvane({"-run", "quick"})).status, 1);
}

TEST_F(DesktopProgram, ItDoesNotRunBesideTheEditor) {
  char host[256] = {};
  ASSERT_EQ(::gethostname(host, sizeof host - 1), 0);
  write("home/.config/orvane/test-run.lock", std::to_string(::getpid()) + "\ntest_system\n" + host + "\n");
  const Ended ended = run_process(orvane({"-run", "quick"}));
  EXPECT_EQ(ended.status, 3);
  EXPECT_NE(ended.err.find("E2292: "), std::string::npos) << ended.err;
}

TEST_F(DesktopProgram, WithoutADisplayItEndsWithAReason) {
  Command command = orvane({"-run", "quick"});
  command.environment.push_back({"QT_QPA_PLATFORM", "xcb"});
  command.environment.push_back({"DISPLAY", ":9999"});
  const Ended ended = run_process(command);
  EXPECT_EQ(ended.signal, 0);
  EXPECT_EQ(ended.status, 3);
  EXPECT_NE(ended.err, "");
}

TEST_F(DesktopProgram, ARunUnderARealWindowSystem) {
  if (!fs::exists("/usr/bin/Xvfb")) GTEST_SKIP() << "Xvfb is not installed";
  Process server(
      {.words = {"/usr/bin/Xvfb", "-displayfd", "1", "-nolisten", "tcp", "-screen", "0", "1280x800x24"},
       .environment = {},
       .directory = folder.string()});
  ASSERT_TRUE(server.wait_for("\n"));
  Command command = orvane({"-run", "quick"});
  command.environment.push_back({"QT_QPA_PLATFORM", "xcb"});
  command.environment.push_back({"DISPLAY", ":" + server.out().substr(0, server.out().find('\n'))});
  const Ended ended = run_process(command);
  EXPECT_EQ(ended.status, 1) << ended.err;
}

}  // namespace
}  // namespace orvane::test
