// The operator's statements in whole runs of ovrun: forms, pictures, judgements, settings, programs.
#include <sys/stat.h>

#include <algorithm>
#include <chrono>

#include "system/laboratory.h"

namespace orvane::test {
namespace {

class OperatorRuns : public LaboratoryTest {
 protected:
  void script(const std::string& name, const std::string& body) const {
    write(name, "#!/bin/sh\n" + body);
    ::chmod(path(name).c_str(), 0755);
  }

  nlohmann::json window(const std::string& kind, std::size_t index = 0) const {
    for (const nlohmann::json& event : events("window")) {
      if (event["kind"] == kind && index-- == 0) return event;
    }
    return {};
  }
};

TEST_F(OperatorRuns, PicturesJudgementsAndSettings) {
  write("front view.bmp", "BM....");
  write("no picture.png", "text");
  procedure("looks",
            {source_line(1, 1, "SET", "Function : DC V"), source_line(1, 1, "SET", "Range : {Which?} V"),
             source_line(1, 2, "RNG", "300V"), source_line(1, 3, "PIC", "front view.bmp"),
             source_line(1, 3, "PIC", "Look at the front."), source_line(1, 4, "RSLT", "Serial number?"),
             source_line(1, 5, "WAIT", "A moment."), "  1.006  EVAL   Is it clean?",
             source_line(2, 1, "PICE", "no picture.png"), source_line(2, 1, "PICE", "Is it there?"),
             "  3.001  EVAL   -e 2 > 1 : two is more", source_line(3, 2, "END")});
  const auto start = std::chrono::steady_clock::now();
  const Ended ended =
      run_process(ovrun("looks",
                        "= 300\nok\nok\nok\n= SN \xC2\xB5\nyes\nsettings\nok\ncontinue\nno\ncontinue\n"
                        "continue\n"));
  EXPECT_EQ(ended.status, 1) << ended.err;
  EXPECT_EQ(ended.err, "");
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1100))
      << "a pause for nobody";

  const nlohmann::json set = window("settings");
  EXPECT_EQ(set["title"], "UUT Setting");
  EXPECT_EQ(set["lines"], nlohmann::json({"Function : DC V", "Range : 300 V"}));
  EXPECT_EQ(window("settings", 1)["lines"], nlohmann::json({"\tFunction\t:\tDC V", "\tRange\t:\t300 V"}));
  EXPECT_EQ(window("range")["lines"], nlohmann::json({"300V"}));
  EXPECT_EQ(window("range")["title"], "UUT Range");
  const nlohmann::json picture = window("picture");
  EXPECT_EQ(picture["lines"], nlohmann::json({"Look at the front."}));
  EXPECT_EQ(picture["picture"], path("./front view.bmp"));
  EXPECT_EQ(window("evaluation")["buttons"], nlohmann::json({211, 212, 205}));
  EXPECT_EQ(window("evaluation")["title"], "Test Evaluation");
  EXPECT_EQ(window("picture", 1)["answer"], 212);
  EXPECT_FALSE(window("wait").contains("answer"));
  EXPECT_NE(ended.out.find("[Picture: the file \"" + path("./no picture.png") + "\" is no picture"),
            std::string::npos)
      << ended.out;

  const auto results = events("result");
  ASSERT_EQ(results.size(), 3U);
  EXPECT_EQ(results[0]["status_text"], "PASS");
  EXPECT_EQ(results[1]["status_text"], "FAIL");
  EXPECT_EQ(results[1]["line2"].get<std::string>().substr(60, 11), "NOTIFY USER");
  EXPECT_EQ(results[2]["line1"].get<std::string>().substr(8, 11), "two is more");
  const std::string log = contents("work/rslt.tmp");
  EXPECT_NE(log.find("0001.004 R         SN \xB5\n"), std::string::npos) << log;
  EXPECT_NE(log.find("0002.001 E "), std::string::npos) << log;
}

TEST_F(OperatorRuns, APictureThatIsNotThereIsRefusedBeforeTheRun) {
  procedure("looks", {source_line(1, 1, "DISP", "Ready?"), source_line(1, 2, "PIC", "absent.bmp"),
                      source_line(1, 3, "END")});
  const Ended ended = run_process(ovrun("looks", "ok\nok\n"));
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(message_numbers(), std::vector<int>{1805});
  EXPECT_TRUE(window("message").is_null()) << "nobody was asked before";
}

TEST_F(OperatorRuns, FormsAreFilledFromAScript) {
  configure("bcf", path("entry.txt"));
  write("entry.txt",
        "[variables]\nvariable = TERMINALS$\n[start]\ntext = From the label:\nfield = SER_NUM$\nlabel = "
        "Serial number\n"
        "required = yes\nlength = 8\nfield = TERMINALS$\nlabel = Terminals\nkind = choice\nchoice = "
        "front\nchoice = "
        "rear\n");
  procedure("asks", {source_line(1, 1, "DISP", "[V SER_NUM$] [V TERMINALS$]"), source_line(1, 2, "END")});
  const Ended ended = run_process(ovrun("asks", "set SER_NUM$ = SN 1\nset TERMINALS$ = rear\nok\nok\n"));
  EXPECT_EQ(ended.status, 0) << ended.err;
  EXPECT_EQ(window("form")["fields"]["SER_NUM$"], "SN 1");
  EXPECT_EQ(window("message")["lines"], nlohmann::json({"SN 1 rear"}));

  const Ended wrong =
      run_process(ovrun("asks", "set SER_NUM$ = much too long\nset TERMINALS$ = rear\nok\nok\n"));
  EXPECT_EQ(wrong.status, 3);
  EXPECT_TRUE(wrong.err.starts_with("E30512: The answer in line 3 does not fit the field \"SER_NUM$\""))
      << wrong.err;
  EXPECT_EQ(std::count(wrong.err.begin(), wrong.err.end(), '\n'), 1) << wrong.err;
}

TEST_F(OperatorRuns, AProgramJudgesATest) {
  configure("user_prog_dir", path("programs"));
  std::filesystem::create_directory(folder / "programs");
  script("programs/judge",
         "read mem < dosdose.dat\n[ \"$mem\" = 12.5 ] || exit 9\nprintf '1\\n2\\n0\\n3\\n42.5\\n2 ok\\n' > "
         "dosdose.dat\n");
  procedure("judges", {source_line(1, 1, "MEME", "12.5"), source_line(1, 2, "DOSE", "judge"),
                       source_line(1, 3, "END")});
  const Ended ended = run_process(ovrun("judges", "continue\n"));
  EXPECT_EQ(ended.status, 0) << ended.err;
  const auto results = events("result");
  ASSERT_EQ(results.size(), 1U) << ended.out;
  EXPECT_EQ(results[0]["line1"], "  1     ok" + std::string(64, ' ') + "42   ");
  EXPECT_EQ(contents("work/dosdose.dat"), "1\n2\n0\n3\n42.5\n2 ok\n");
}

TEST_F(OperatorRuns, TheBusIsThereAgainBehindAProgram) {
  procedure("bus", {source_line(1, 1, "IEEE", "[@22]DCV 3;TRIG SGL[I]"),
                    source_line(1, 2, "MATH", "M[1] = MEM"), source_line(1, 3, "MATH", "MEM = 0"),
                    source_line(1, 4, "DOS", "true"), source_line(1, 5, "IEEE", "[@22]TRIG SGL[I]"),
                    "  1.006  EVAL   -e abs(M[1] - 3) < 0.1 && abs(MEM - 3) < 0.1 : both read",
                    source_line(1, 7, "END")});
  const Ended ended = run_process(ovrun("bus", "continue\n"));
  EXPECT_EQ(ended.status, 0) << ended.err << ended.out;
  EXPECT_EQ(message_numbers(), std::vector<int>{});
}

TEST_F(OperatorRuns, AFormIsTypedAtATerminal) {
  configure("bcf", path("entry.txt"));
  write("entry.txt", "[start]\nfield = SER_NUM$\nlabel = Serial number\nrequired = yes\n");
  procedure("asks", {source_line(1, 1, "DISP", "It is [V SER_NUM$]."), source_line(1, 2, "END")});
  Process process(ovrun({"-run", "asks"}), Process::Streams::terminal);
  for (const auto& [shown, typed] :
       std::vector<std::pair<const char*, const char*>>{{"Serial number (at most 76 characters, needed)", ""},
                                                        {"SER_NUM$> ", "\n"},
                                                        {"SER_NUM$> ", "SN 7\n"},
                                                        {"[1] OK (Enter)", ""},
                                                        {"> ", "\n"},
                                                        {"It is SN 7.", ""},
                                                        {"> ", "\n"}}) {
    ASSERT_TRUE(process.wait_for(shown)) << shown << process.out();
    process.type(typed);
  }
  EXPECT_EQ(process.wait().status, 0);
}

TEST_F(OperatorRuns, CtrlCEndsAProgramThatHangs) {
  configure("user_prog_dir", path("programs"));
  configure("beep", "3600, 1");
  std::filesystem::create_directory(folder / "programs");
  script("programs/hangs", "echo $$ > hangs.pid\nexec sleep 300\n");
  procedure("hangs", {source_line(1, 1, "DOS", "hangs"), source_line(1, 2, "END")});
  Process process(ovrun({"-run", "hangs"}), Process::Streams::terminal);
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  while (contents("work/hangs.pid").empty() && std::chrono::steady_clock::now() < deadline) {
  }
  process.type("\x03");
  ASSERT_TRUE(process.wait_for("was stopped by Abort")) << process.out();
  ASSERT_TRUE(process.wait_for("--- Test stopped ---")) << process.out();
  ASSERT_TRUE(process.wait_for("> ")) << process.out();
  process.type("continue\n");
  const Ended ended = process.wait();
  EXPECT_EQ(ended.status, 0) << ended.out;
  EXPECT_NE(ended.out.find('\a'), std::string::npos) << "the bell rings while the window waits";
  const int pid = std::stoi(contents("work/hangs.pid"));
  EXPECT_FALSE(std::filesystem::exists("/proc/" + std::to_string(pid) + "/stat"));
}

TEST_F(OperatorRuns, ProgressIsABarOnATerminal) {
  const auto lines = [](const char* condition) {
    return std::vector{source_line(1, 1, "WHILE", condition), source_line(1, 2, "MATH", "M[1] = M[1] + 1"),
                       source_line(1, 3, "ENDW"), source_line(1, 4, "END")};
  };
  procedure("endless", lines("1"));
  Process process(ovrun({"-run", "endless"}), Process::Streams::terminal);
  EXPECT_TRUE(process.wait_for("\r\x1b[K[")) << process.out();
  EXPECT_TRUE(process.wait_for("statement ")) << process.out();
  process.type("\x03");
  EXPECT_TRUE(process.wait_for("Term")) << process.out();
  process.type("Term\n");
  EXPECT_EQ(process.wait().status, 2);

  procedure("long", lines("M[1] < 100000"));
  const Ended silent = run_process(ovrun("long", ""));
  EXPECT_EQ(silent.status, 0);
  EXPECT_EQ(silent.out.find('\x1b'), std::string::npos);
}

}  // namespace
}  // namespace orvane::test
