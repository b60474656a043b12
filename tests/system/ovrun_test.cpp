// ovrun from its command line to its exit status.
#include <algorithm>

#include "config/key_table.h"
#include "messages/encoding.h"
#include "system/laboratory.h"

namespace orvane::test {
namespace {

class Ovrun : public LaboratoryTest {
 protected:
  // A point that passes, then one that fails if `second` says so.
  void points(const std::string& name, const char* second) {
    procedure(name, {source_line(1, 1, "ASK-", std::string(44, ' ') + "F"), source_line(1, 2, "MEME", "10"),
                     source_line(1, 3, "MEMC", "10.000V        1%"), source_line(2, 1, "MEME", second),
                     source_line(2, 2, "MEMC", "10.000V        1%"), source_line(3, 1, "END")});
  }
};

std::size_t count_lines(const std::string& text) {
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
}

TEST_F(Ovrun, ExitStatuses) {
  points("passes", "10.05");
  points("fails", "10.5");
  procedure("evaluates nothing", {source_line(1, 1, "END")});
  procedure("asks",
            {source_line(1, 1, "DISP", "Ready?"), source_line(1, 2, "MEME", "1"), source_line(1, 3, "END")});
  procedure("breaks", {source_line(1, 1, "MEME", "0"), source_line(1, 2, "MATH", "M[1] = nothing(1)"),
                       source_line(1, 3, "END")});
  procedure("calls nobody", {source_line(1, 1, "CALL", "nobody"), source_line(1, 2, "END")});
  struct Case {
    const char* procedure;
    const char* answers;
    int status;
    const char* standard_error;  // what it begins with
    int run_test;
  };
  const Case cases[] = {
      {"passes", "", 0, "", 1},
      {"fails", "continue\n", 1, "", 1},
      {"evaluates nothing", "", 0, "The run finished without an evaluated test.\n", 1},
      {"asks", "terminate\nterm\n", 2, "", 1},
      {"asks", "terminate\ncontinue\n", 0, "The run finished without an evaluated test.\n", 1},
      {"fails", "term\n", 2, "", 1},
      {"asks", "ok\nabort-at 2\nterm\n", 2, "", 1},
      {"asks", "abort\nterm\n", 2, "", 1},
      {"breaks", "term\n", 2, "E", 1},
      {"breaks", "*\n", 0, "E", 1},  // a statement that failed and was continued does not change the status
      {"calls nobody", "", 3, "E905: ", 0},  // found before anything is asked
      {"no such procedure", "", 3, "E905: ", 0},
      {"asks", "", 3, "E30507: ", 1},
      {"asks", "continue\n", 3, "E30508: ", 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.procedure) + ": " + c.answers);
    const Ended ended = run_process(ovrun(c.procedure, c.answers));
    EXPECT_EQ(ended.status, c.status) << ended.err;
    EXPECT_TRUE(ended.err.starts_with(c.standard_error)) << ended.err;
    EXPECT_EQ(ended.err.empty(), std::string_view(c.standard_error).empty()) << ended.err;
    const nlohmann::json end = events("run").back();
    EXPECT_EQ(end["state"], "end");
    EXPECT_EQ(end["run_test"], c.run_test);
    EXPECT_EQ(end["exit"], c.status);
    EXPECT_EQ(ended.out.find("Overall result: PASS") != std::string::npos,
              c.status == 0 && std::string(c.procedure) == "passes")
        << ended.out;
  }
}

TEST_F(Ovrun, AMisfitIsTheOneLineOnStandardError) {
  procedure("asks", {source_line(1, 1, "DISP", "Ready?"), source_line(1, 2, "MEMI", "Number?"),
                     source_line(1, 3, "END")});
  struct Case {
    const char* answers;
    const char* line;
  };
  const Case cases[] = {
      {"",
       "E30507: No answer is left for the window \"Test Information\"; it offers 210 OK, 205 Terminate.\n"},
      {"yes\n",
       "E30508: The answer in line 1 does not fit the window \"Test Information\"; it offers 210 OK, 205 "
       "Terminate.\n"},
      {"\n# first\nok\nset FIELD = 1\nok\n",
       "E30508: The answer in line 5 does not fit the window \"Operator Prompt\"; it offers 210 OK, 205 "
       "Cancel.\n"},
  };
  for (const Case& c : cases) {
    const Ended ended = run_process(ovrun("asks", c.answers));
    EXPECT_EQ(ended.status, 3) << c.answers;
    EXPECT_EQ(ended.err, c.line);
    EXPECT_EQ(events("run").back()["exit"], 3);
    EXPECT_EQ(ended.out.find("Overall result"), std::string::npos);
  }
}

TEST_F(Ovrun, UsageIsToldInOneLine) {
  const std::vector<std::string> wrong[] = {{"--frobnicate"},       {"stray"},   {"--mode", "maybe"},
                                            {"--config"},           {"-run"},    {"-run", ""},
                                            {"--progress", "loud"}, {"-unknown"}};
  for (const std::vector<std::string>& words : wrong) {
    Command command{.words = {built("ovrun")}, .environment = {}, .directory = folder.string()};
    command.words.insert(command.words.end(), words.begin(), words.end());
    const Ended ended = run_process(command);
    EXPECT_EQ(ended.status, 64) << words.front();
    EXPECT_EQ(count_lines(ended.err), 1U) << ended.err;
    EXPECT_EQ(ended.out, "");
  }
  // One dash and one letter, and -T with letters, are the system's own words.
  for (const char* word : {"-h", "--help", "--version"}) {
    const Command command{
        .words = {built("ovrun"), "-q", "-Tzz", "-hide", word}, .environment = {}, .directory = "/"};
    const Ended ended = run_process(command);
    EXPECT_EQ(ended.status, 0) << word;
    EXPECT_EQ(ended.err, "");
    EXPECT_NE(ended.out.find("ovrun"), std::string::npos);
  }
}

TEST_F(Ovrun, AFaultOfTheStartIsOneLineWithItsNumberAndWhatToDo) {
  procedure("passes", {source_line(1, 1, "END")});
  const std::string sound = contents("orvane.ini");
  const auto with = [&](const std::string& key, const std::string& value) {
    const std::size_t at = sound.find("\n" + key + " =") + 1;
    write("changed.ini", sound.substr(0, at) + key + " = " + value + sound.substr(sound.find('\n', at)));
    return std::vector<std::string>{"--config", path("changed.ini")};
  };
  struct Case {
    const char* name;
    std::vector<std::string> words;
    const char* standard_error;
  };
  write("empty.ini", "");
  const std::vector<std::string> no_driver = with("ib_driver", path("no-such-driver.so"));
  const Case cases[] = {
      {"missing configuration", {"--config", path("missing.ini")}, "E2506: "},
      {"a folder as configuration", {"--config", folder.string()}, "E2506: "},
      {"empty configuration", {"--config", path("empty.ini")}, "E2525: "},
      {"missing answers", {"--answers", path("missing.txt")}, "E30505: "},
      {"transcript that cannot be written", {"--transcript", path("missing/t.jsonl")}, "E30506: "},
      {"missing folder", {"-dir", path("missing")}, "E30504: "},
      {"missing driver library", no_driver, "E2740: "},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Command command = ovrun({});
    for (const std::string& word : c.words) {
      // An option of the case takes the place of the fixture's own.
      const auto own = std::find(command.words.begin(), command.words.end(), word);
      if (word.starts_with("--") && own != command.words.end()) command.words.erase(own, own + 2);
    }
    command.words.insert(command.words.end(), c.words.begin(), c.words.end());
    command.words.insert(command.words.end(), {"-run", "passes"});
    const Ended ended = run_process(command);
    EXPECT_EQ(ended.status, 3);
    EXPECT_TRUE(ended.err.starts_with(c.standard_error)) << ended.err;
    EXPECT_EQ(count_lines(ended.err), 1U) << ended.err;
    EXPECT_GE(std::count(ended.err.begin(), ended.err.end(), '.'), 1) << ended.err;
  }
  write("changed.ini", sound + "\noot_lim = 3\npass100 = perhaps\n");
  Command command = ovrun({"-run", "passes"});
  command.words[2] = path("changed.ini");
  EXPECT_EQ(run_process(command).status, 3);
  EXPECT_EQ(message_numbers(), (std::vector{501, 501}));  // both keys stand in the sound part already
}

TEST_F(Ovrun, WithoutTheMessageTextsTheFaultIsToldAllTheSame) {
  std::filesystem::copy_file(built("ovrun"), folder / "ovrun");
  Command command = ovrun({"-run", "nothing"});
  command.words[0] = path("ovrun");
  const Ended ended = run_process(command);
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(ended.err, "E30500: " + path("messages/en.txt") +
                           ": the message texts are missing; install them beside the program\n");
  command.words = {path("ovrun"), "--version"};
  EXPECT_EQ(run_process(command).status, 0);
}

TEST_F(Ovrun, TheQuestionBeforeADemonstration) {
  procedure("short", {source_line(1, 1, "END")});
  std::string text = contents("orvane.ini");
  text.replace(text.find("rt_demo_prompt = NO"), 19, "rt_demo_prompt = YES");
  write("orvane.ini", text);
  struct Case {
    const char* answers;
    int status;
    int run_test;
  };
  for (const Case& c : {Case{"yes\n", 0, 1}, Case{"no\n", 2, 2}, Case{"", 3, 0}}) {
    Command command = ovrun("short", c.answers);
    *std::find(command.words.begin(), command.words.end(), "real") = "demo";
    EXPECT_EQ(run_process(command).status, c.status) << c.answers;
    EXPECT_EQ(events("run").back()["run_test"], c.run_test) << c.answers;
  }
  Command command = ovrun({"-run", "short"});
  *std::find(command.words.begin(), command.words.end(), "real") = "demo";
  EXPECT_EQ(run_process(command).status, 2) << "end of input gives the run up";
  EXPECT_EQ(contents("settings.ini"), "") << "a demonstration leaves no marker";
}

TEST_F(Ovrun, CheckConfigPrintsEveryKeyAndEveryFault) {
  write("orvane.ini",
        "[startup]\nprocdir = procedures\n\noot_lim = 20\ntur_lim = none\nptitle_l = 10 \xC2\xB5V\n");
  const Command command{.words = {built("ovrun"), "--check-config", "--config", "orvane.ini"},
                        .environment = {},
                        .directory = folder.string()};
  const Ended ended = run_process(command);
  EXPECT_EQ(ended.status, 3);
  for (const char* line :
       {"accdir =     (default)\n", "procdir = procedures    (orvane.ini:2)\n",
        "oot_lim = 20    (orvane.ini:4)\n", "tur_lim = none    (orvane.ini:5)\n",
        "ptitle_l = 10 \xC2\xB5V    (orvane.ini:6)\n", "MathConvPrecision = 13    (default)\n",
        "ib_driver = libgpib.so.0    (default)\n"})
    EXPECT_NE(("\n" + ended.out).find(std::string("\n") + line), std::string::npos) << line;
  EXPECT_EQ(count_lines(ended.out), config_keys().size());
  EXPECT_NE(ended.err.find("orvane.ini:4: "), std::string::npos) << ended.err;
  EXPECT_NE(ended.err.find(" (message 505)\n"), std::string::npos) << ended.err;
  EXPECT_NE(ended.err.find("orvane.ini: the key \"workdir\" is missing"), std::string::npos) << ended.err;
  EXPECT_NE(ended.err.find(" (message 504)\n"), std::string::npos) << ended.err;
  EXPECT_EQ(ended.err.find("E50"), std::string::npos);
}

TEST_F(Ovrun, FindsTheConfigurationByTheEnvironment) {
  procedure("one", {source_line(1, 1, "END")});
  procedure("two \xC2\xB5", {source_line(1, 1, "END")});
  std::filesystem::create_directories(folder / "home/.config/orvane");
  Command command = ovrun(std::vector<std::string>{});
  command.words = {built("ovrun"), "--list"};
  const std::string own = path("home/.config/orvane/orvane.ini");
  EXPECT_EQ(run_process(command).status, 3) << "no configuration anywhere";
  std::string text = contents("orvane.ini");
  for (const std::string name :
       {"procedures", "work", "instruments.txt", "accuracy", "corrections", "templates"}) {
    const std::string whole = "= " + path(name);
    for (std::size_t at = 0; (at = text.find("= " + name, at)) != std::string::npos; at += whole.size())
      text.replace(at, name.size() + 2, whole);
  }
  write("home/.config/orvane/orvane.ini", text);
  EXPECT_EQ(run_process(command).out, "one\ntwo \xC2\xB5\n");
  std::filesystem::remove(own);
  command.environment.emplace_back("ORVANE_INI", "orvane.ini");
  EXPECT_EQ(run_process(command).out, "one\ntwo \xC2\xB5\n");
  // Words of the command line are read from the folder of the start, whatever -dir says.
  command.words.insert(command.words.end(), {"-dir", "/"});
  EXPECT_EQ(run_process(command).out, "one\ntwo \xC2\xB5\n");
}

TEST_F(Ovrun, TextGoesInAndOutAsUtf8) {
  procedure("Ger\xC3\xA4t", {source_line(1, 1, "MEM2",
                                         "Gr\xC3\xB6\xC3\x9F"
                                         "e in \xC2\xB5V?"),
                             source_line(1, 2, "DISP", "[MEM2]"), source_line(1, 3, "END")});
  const Command command = ovrun({"--answers", "-", "-run", "GER\xC3\xA4T"});
  const Ended ended = run_process(command, "\xEF\xBB\xBF= 5 k\xC3\x84 \xE2\x82\xAC  \nok\n");
  EXPECT_EQ(ended.status, 0) << ended.err;
  EXPECT_NE(ended.out.find("\n5 k\xC3\x84 \xE2\x82\xAC\n"), std::string::npos) << ended.out;
  const std::vector<nlohmann::json> windows = events("window");
  ASSERT_EQ(windows.size(), 3U);  // the load, the prompt, the display
  EXPECT_EQ(windows[1]["text"], "5 k\xC3\x84 \xE2\x82\xAC  ");
  EXPECT_EQ(windows[1]["lines"][0],
            "Gr\xC3\xB6\xC3\x9F"
            "e in \xC2\xB5V?");
}

TEST_F(Ovrun, EveryReportIsInTheTranscriptAsInTheDebugLog) {
  procedure("breaks", {source_line(1, 1, "MATH", "M[1] = \"\xC2\xB5\" + 1"),
                       source_line(1, 2, "VISA", "*IDN?"), source_line(1, 3, "MEMI", "Number?"),
                       source_line(1, 4, "MATH", "M[1000] = 1"), source_line(1, 5, "END")});
  Command command = ovrun("breaks", "continue\ncontinue\n= 12abc\n= 1,5\ncontinue\n");
  command.words.insert(command.words.end(), {"-Te"});
  const Ended ended = run_process(command);
  std::string logged, reported;
  std::istringstream log(utf8_from_cp1252(contents("work/ovdebug.txt")));
  for (std::string line; std::getline(log, line);) {
    if (line.starts_with("eprint : ")) logged += line.substr(9) + "\n";
  }
  for (const nlohmann::json& message : events("message")) {
    reported += message["text"].get<std::string>() + "\n";
    const std::string head =
        (message["kind"] == "warning" ? "W" : "E") + std::to_string(message["number"].get<int>()) + ": ";
    EXPECT_TRUE(message["text"].get<std::string>().starts_with(head)) << message;
    EXPECT_NE(ended.err.find(message["text"].get<std::string>()), std::string::npos) << message;
  }
  EXPECT_EQ(reported, logged);
  const std::vector<int> numbers = message_numbers();
  EXPECT_GE(numbers.size(), 4U);
  for (const int number : {313, 10336})
    EXPECT_EQ(std::count(numbers.begin(), numbers.end(), number), 1) << number;
}

TEST_F(Ovrun, AutoTestOpensNoBoxesButTellsWhyItFailed) {
  procedure("breaks", {source_line(1, 1, "VISA", "*IDN?"), source_line(1, 2, "END")});
  Command command = ovrun("breaks", "*\n");
  command.words.push_back("-AutoTest");
  const Ended runs = run_process(command);
  EXPECT_EQ(runs.status, 0);
  EXPECT_EQ(runs.err.find("E313"), std::string::npos) << runs.err;
  EXPECT_TRUE(message_numbers().empty());
  command = ovrun("nobody", "*\n");
  command.words.push_back("-AutoTest");
  const Ended fails = run_process(command);
  EXPECT_EQ(fails.status, 3);
  EXPECT_TRUE(fails.err.starts_with("E905: ")) << fails.err;
}

}  // namespace
}  // namespace orvane::test
