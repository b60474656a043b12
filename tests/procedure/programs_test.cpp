// DOS and DOSE with real programs: small scripts that the tests write.
#include "procedure/operator/programs.h"

#include <sys/stat.h>

#include <chrono>
#include <thread>

#include "config/startup_config.h"
#include "messages/catalogue.h"
#include "platform/process.h"
#include "procedure/operator/data_file.h"
#include "procedure/pipeline/run_test.h"
#include "state/pump.h"
#include "support/procedures.h"

namespace orvane {
namespace {

TEST(CommandWords, BlanksAndQuotesPartThem) {
  struct Case {
    const char* command;
    std::vector<std::string> words;
  };
  const Case cases[] = {
      {"", {}},
      {"  \t ", {}},
      {"a b\tc", {"a", "b", "c"}},
      {"\"two words\" \"\" x\"y z\"", {"two words", "", "xy z"}},
      {R"(C:\dir\prog.exe say \"hi\" "in \" it")", {"C:\\dir\\prog.exe", "say", "\"hi\"", "in \" it"}},
      {R"(a\ b $HOME ; rm *)", {"a\\", "b", "$HOME", ";", "rm", "*"}},  // no shell
  };
  for (const Case& c : cases) {
    std::vector<std::string> words;
    EXPECT_TRUE(command_words(c.command, words)) << c.command;
    EXPECT_EQ(words, c.words) << c.command;
  }
  std::vector<std::string> words;
  EXPECT_FALSE(command_words("a \"b", words));
}

TEST(ProgramData, IsReadBackAsItWasWritten) {
  for (const char* text : {"", "one", "one\ntwo", "\n", "a\r\nb\n", " lead", "5 x\n\n"}) {
    const ProgramData data{
        .mem = -1.5e-7, .mem1 = 1e20, .mem2 = text, .status = 2, .percent = 0.25, .text = "r m"};
    const std::string written = write_program_data(data);
    ProgramData back;
    int line = 0;
    ASSERT_TRUE(read_program_data(written, back, line)) << text;
    EXPECT_EQ(back.mem, data.mem);
    EXPECT_EQ(back.mem1, data.mem1);
    EXPECT_EQ(back.mem2, data.mem2);
    EXPECT_EQ(back.status, 2);
    EXPECT_EQ(back.percent, 0.25);
    EXPECT_EQ(back.text, "r m");
  }
  const ProgramData data{.mem = 0.1, .mem1 = 0, .mem2 = "ab\n\ncde", .text = {}};
  EXPECT_EQ(write_program_data(data), "0.1\n0\n3\n0\n0\n2 ab\n0\n3 cde\n0\n");
}

TEST(ProgramData, WhatAProgramLeavesIsNotBelieved) {
  struct Case {
    const char* text;
    int line;  // the faulty one; 0: sound
  };
  const std::string too_long =
      "1\n2\n2\n0\n0\n4000 " + std::string(4000, 'x') + "\n96 " + std::string(96, 'y') + "\n";
  const Case cases[] = {
      {"1\n2\n0\n", 0},
      {"1\r\n2\r\n0\r\n", 0},
      {"1\n2\n0", 0},
      {"1\n2\n1\n3\n99.5\n3 abc\n", 0},
      {"1\n2\n1\n3\n99.5\n3 abc\n4 text", 0},
      {"", 1},
      {"one\n2\n0\n", 1},
      {"1\n\n0\n", 2},
      {"1\n1e999\n0\n", 2},
      {"1\nnan\n0\n", 2},
      {"1\n2\n-1\n", 3},
      {"1\n2\n1\n", 4},
      {"1\n2\n0\n4\n0\n", 4},
      {"1\n2\n0\n3\ninf\n", 5},
      {"1\n2\n1\n1\n0\n", 6},
      {"1\n2\n1\n1\n0\n4 abc\n", 6},
      {"1\n2\n1\n1\n0\n2 abc\n", 6},
      {"1\n2\n99999\n1\n0\n", 3},
      {"1\n2\n0\n1\n0\n5000 x\n", 6},
      {too_long.c_str(), 7},
  };
  for (const Case& c : cases) {
    ProgramData data{.mem = 77, .mem2 = {}, .text = "kept"};
    int line = 0;
    EXPECT_EQ(read_program_data(c.text, data, line), c.line == 0) << c.text;
    if (c.line == 0) continue;
    EXPECT_EQ(line, c.line) << c.text;
    EXPECT_EQ(data.mem, 77) << c.text;
    EXPECT_EQ(data.text, "kept") << c.text;
  }
}

class Programs : public test::RunTest {
 protected:
  Programs() {
    std::filesystem::create_directory(folder / "programs");
    std::filesystem::create_directory(folder / "cwd");
    startup_config().user_prog_dir = (folder / "programs").string();
    startup_config().user_cwd = (folder / "cwd").string();
    platform().clock = &system_clock();
  }
  ~Programs() override { use_processes(nullptr); }

  std::string script(const std::string& name, const std::string& body) const {
    const std::string path = write(name, "#!/bin/sh\n" + body);
    ::chmod(path.c_str(), 0755);
    return path;
  }

  // A DOSE whose program writes these lines; what the window at the test showed.
  test::Shown dose(const std::string& lines) {
    desk.shown.clear();
    desk.results.clear();
    script("programs/judge", "printf '" + lines + "' > dosdose.dat\n");
    procedure("Dose", {"DOSE judge", "END"});
    EXPECT_EQ(go("Dose"), run_result::finished);
    const auto tests = desk.of_kind("test");
    return tests.empty() ? test::Shown{} : tests[0];
  }
};

TEST_F(Programs, AProgramIsGivenTheRegistersAndChangesThem) {
  script("programs/double.sh",
         "read mem; read mem1; read n; read st; read pc; read length text\n"
         "echo \"$0|$1|$2|$#\" > seen.txt; pwd >> seen.txt; echo said; echo complained >&2; cat > input.txt\n"
         "printf '%s\\n%s\\n2\\n0\\n0\\n%s\\n3 new\\n' $((mem * 2)) $((mem1 + 1)) \"$length $text\" > "
         "dosdose.new\n"
         "mv dosdose.new dosdose.dat\n");
  // The shell reads the file that it was given.
  script("programs/run", "exec \"$(dirname \"$0\")\"/double.sh \"$@\" < dosdose.dat\n");
  procedure("Dos", {"MATH MEM = 21; MEM1 = 4", "MEM2 =old text", "DOS run \"a  b\" [MEM]", "MATH M[1] = MEM",
                    "END"});
  EXPECT_EQ(go("Dos"), run_result::finished);
  EXPECT_TRUE(desk.message_numbers().empty()) << desk.last_message();
  EXPECT_EQ(mem(), 42);
  EXPECT_EQ(run.registers.mem1(), 5);
  EXPECT_EQ(run.registers.mem2, "old text\nnew");
  EXPECT_NE(
      contents((folder / "cwd/seen.txt").string()).find("|a  b|21|2\n" + (folder / "cwd").string() + "\n"),
      std::string::npos)
      << contents((folder / "cwd/seen.txt").string());
  EXPECT_EQ(contents((folder / "dosdose.log").string()), "said\ncomplained\n");
  EXPECT_EQ(contents((folder / "cwd/input.txt").string()), "0\n")
      << "the rest of the file, not this program's input";
}

TEST_F(Programs, TheTextIsTakenAsItStandsWithoutTheKey) {
  startup_config().dos_sc_eval = 0;
  script("programs/say", "echo \"$1\" > said.txt\n");
  procedure("Say", {"DOS say [MEM]", "DOS", "END"});
  EXPECT_EQ(go("Say"), run_result::finished);
  EXPECT_TRUE(desk.message_numbers().empty()) << desk.last_message();
  EXPECT_EQ(contents((folder / "cwd/said.txt").string()), "[MEM]\n");
}

TEST_F(Programs, TextsAreTheSystemsOnesOutside) {
  script(
      "programs/\xC3\xBC"
      "ber",
      "echo \"$1\" > said.txt\n");
  procedure("Say", {"DOS \xFC"
                    "ber \xB5V",
                    "END"});  // Windows-1252 inside
  EXPECT_EQ(go("Say"), run_result::finished);
  EXPECT_TRUE(desk.message_numbers().empty()) << desk.last_message();
  EXPECT_EQ(contents((folder / "cwd/said.txt").string()), "\xC2\xB5V\n");
}

TEST_F(Programs, AreLookedForInTheirFolders) {
  const std::string in_programs = script("programs/tool", ""), in_cwd = script("cwd/tool", "");
  const std::string only_cwd = script("cwd/other.exe", ""), absolute = script("alone", "");
  write("programs/data.txt", "no program");
  EXPECT_EQ(find_program("tool"), in_programs);
  std::filesystem::remove(in_programs);
  EXPECT_EQ(find_program("tool"), in_cwd);
  EXPECT_EQ(find_program("other"), only_cwd) << "a name without an extension takes .exe";
  EXPECT_EQ(find_program("other.exe"), only_cwd);
  EXPECT_EQ(find_program(absolute), absolute);
  EXPECT_EQ(find_program((folder / "tool").string()), "") << "a name with a root stands alone";
  EXPECT_EQ(find_program("data.txt"), "") << "must be a program";
  EXPECT_TRUE(find_program("sh").ends_with("/sh")) << find_program("sh");
  EXPECT_EQ(find_program("no-such-program-anywhere"), "");
}

TEST_F(Programs, WhatDoseReturnsIsTheOutcome) {
  struct Case {
    const char* lines;
    const char* status;
    const char* first;  // column 73 of the first line
    const char* condition;
    const char* second;
    std::uint32_t flags;
    char letter;
    std::optional<double> percent;
  };
  const Case cases[] = {
      {"0\\n0\\n0\\n1\\n0\\n6 within\\n", "PASS", "PASS", "", "PASS", 0x02, 'd', {}},
      {"0\\n0\\n0\\n2\\n0\\n", "FAIL NOTIFY USER", "FAIL", "NOTIFY USER", "FAIL", 0, 'd', {}},
      {"0\\n0\\n0\\n0\\n0\\n", "PASS", "", "", "PASS", 0x02, 'd', {}},
      {"0\\n0\\n0\\n3\\n55.4\\n6 within\\n", "PASS", " 55", "", "PASS", 0x02, 'D', 55.4},
      {"0\\n0\\n0\\n3\\n71\\n", "MARGINAL PASS", " 71", "MARGINAL", "PASS", 0x0A, 'D', 71.0},
      {"0\\n0\\n0\\n3\\n150\\n", "FAIL", "150", "", "FAIL", 0, 'D', 150.0},
      {"0\\n0\\n0\\n3\\n-150\\n", "FAIL", "150", "", "FAIL", 0, 'D', -150.0},  // a sign is no pass
      {"0\\n0\\n0\\n3\\n501\\n", "FAIL NOTIFY USER", ">500", "NOTIFY USER", "FAIL", 0x04, 'D', 500.0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.lines);
    const test::Shown window = dose(c.lines);
    EXPECT_EQ(window.test.form, "pt_User_Program_Evaluation");
    ASSERT_EQ(desk.results.size(), 1u) << desk.last_message();
    const ResultLine& line = desk.results[0];
    const auto column = [](const std::string& text, std::size_t from, std::size_t size) {
      std::string part = text.substr(from, size);
      part.erase(part.find_last_not_of(' ') + 1);
      return part;
    };
    EXPECT_EQ(line.status_text, c.status);
    EXPECT_EQ(column(line.line1, 73, 6), c.first);
    EXPECT_EQ(column(line.line2, 60, 13), c.condition);
    EXPECT_EQ(column(line.line2, 73, 6), c.second);
    EXPECT_EQ(line.percent, c.percent);
    EXPECT_EQ(run.decision.result_flags, c.flags);
    EXPECT_EQ(column(line.line1, 8, 52),
              std::string_view(c.lines).find("within") != std::string_view::npos ? "within" : "");
    const std::string log = contents((folder / "rslt.tmp").string());
    EXPECT_NE(log.find(std::string("0001.001 ") + c.letter + "   1"), std::string::npos) << log;
  }
}

TEST_F(Programs, FailuresAreToldAndAreNoResult) {
  script("programs/seven", "exit 7\n");
  script("programs/dies", "kill -KILL $$\n");
  script("programs/removes", "rm dosdose.dat\n");
  script("programs/garbles", "echo PASS > dosdose.dat\n");
  write("programs/textfile", "no program");
  struct Case {
    const char* command;
    bool exit_code_key;
    int number;  // 0: no fault
  };
  const Case cases[] = {{"seven", false, 0},       {"seven", true, 1846},
                        {"dies", false, 30705},    {"removes", false, 30707},
                        {"garbles", false, 30708}, {"no-such-program", false, 284},
                        {"textfile", false, 284},  {"seven \"x", false, 30709}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.command);
    desk.shown.clear();
    desk.results.clear();
    startup_config().uexit_code = c.exit_code_key ? 1 : 0;
    procedure("Fails", {"MATH MEM = 3", std::string("DOSE ") + c.command, "MATH M[1] = MEM", "END"});
    EXPECT_EQ(go("Fails"), run_result::finished);
    EXPECT_EQ(desk.message_numbers(), c.number != 0 ? std::vector<int>{c.number} : std::vector<int>{});
    EXPECT_EQ(desk.results.size(), c.number != 0 ? 0u : 1u);
    EXPECT_EQ(m(1), 3) << "the registers are as they were";
  }
  EXPECT_EQ(run.registers.mem, 3);
}

TEST_F(Programs, ThoseThatCannotBeStartedAreNamed) {
  procedure("Fails", {"DOS no-such-program --now", "END"});
  EXPECT_EQ(go("Fails"), run_result::finished);
  EXPECT_TRUE(desk.last_message().starts_with(
      "E284: The program \"no-such-program --now\" could not be started (dos_exec32, system error 2)."))
      << desk.last_message();
}

TEST_F(Programs, AbortEndsAProgramThatHangs) {
  // It ignores the kind request, and so does what it has started.
  script("programs/hangs",
         "trap '' TERM\necho $$ > pid.txt\nsleep 100 &\necho $! > child.txt\nwait\nsleep 100\n");
  procedure("Hangs", {"DOSE hangs", "MATH M[1] = 1", "END"});
  struct Pressing : test::Desk {
    std::filesystem::path pid;
    struct Window : WaitWindow {
      std::filesystem::path pid;
      void update(std::string_view) override {}
      bool abort_pressed() override { return std::filesystem::exists(pid); }
    };
    std::unique_ptr<WaitWindow> wait(const WaitText& text) override {
      if (!text.abort_button) return Desk::wait(text);
      shown.push_back({});
      shown.back().lines = {text.text};
      auto window = std::make_unique<Window>();
      window->pid = pid;
      return window;
    }
  } pressing;
  pressing.pid = folder / "cwd/child.txt";
  platform().desk = &pressing;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(go("Hangs"), run_result::finished);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_EQ(pressing.message_numbers(), (std::vector<int>{30704, 5019}));
  const std::vector<test::Shown> warnings = pressing.of_kind("warning");
  ASSERT_EQ(warnings.size(), 1u);
  EXPECT_EQ(warnings[0].lines.front(), "W30704: " + msg(30704, "hangs"));
  EXPECT_TRUE(pressing.results.empty());
  EXPECT_EQ(m(1), 1);
  const auto gone = [&](const char* name) {
    const int pid = std::stoi(contents((folder / "cwd" / name).string()));
    for (int i = 0; i < 100; ++i) {
      const std::string state = contents("/proc/" + std::to_string(pid) + "/stat");
      if (state.empty() || state.find(") Z") != std::string::npos) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
  };
  EXPECT_TRUE(gone("pid.txt"));
  EXPECT_TRUE(gone("child.txt"));
}

// What only a failing system does.
class FailingChild : public ChildProcess {
 public:
  explicit FailingChild(int at) : at_(at) {}
  State wait(std::uint32_t, int& error) override {
    error = 6;
    return at_ == 2138 ? State::failed : State::ended;
  }
  std::optional<int> exit_code(int& error) override {
    error = 6;
    return at_ == 2165 ? std::nullopt : std::optional<int>(0);
  }
  bool ended_badly() const override { return false; }
  void end() override {}
  Closed close(int& error) override {
    error = 6;
    return at_ == 1812 ? Closed::process_kept : at_ == 1813 ? Closed::thread_kept : Closed::well;
  }

 private:
  int at_;
};
struct FailingProcesses : Processes {
  int at = 0;
  std::unique_ptr<ChildProcess> start(const ProcessStart&, int& error) override {
    error = 6;
    return at == 284 ? nullptr : std::make_unique<FailingChild>(at);
  }
};

TEST_F(Programs, EveryFailureOfTheSystemHasItsNumber) {
  FailingProcesses failing;
  use_processes(&failing);
  procedure("Fails", {"DOS sh", "END"});
  for (const int number : {284, 2138, 2165, 1812, 1813}) {
    desk.shown.clear();
    failing.at = number;
    EXPECT_EQ(go("Fails"), run_result::finished);
    EXPECT_EQ(desk.message_numbers(), std::vector<int>{number});
    EXPECT_NE(desk.last_message().find("(dos_exec32, system error 6)"), std::string::npos)
        << desk.last_message();
    EXPECT_EQ(desk.of_kind("test").size(), 1u) << "the statement has stopped";
  }
}

}  // namespace
}  // namespace orvane
