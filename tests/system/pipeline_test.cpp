// The start and the end of whole runs of ovrun: after a run that died, with faults in the laboratory's files, without a
// database.
#include <signal.h>

#include <algorithm>

#include "system/laboratory.h"

namespace orvane::test {
namespace {

class RunEnds : public LaboratoryTest {
 protected:
  bool marked(const char* marker) const {
    return contents("settings.ini").find(std::string("procedure = ") + marker) != std::string::npos;
  }
};

TEST_F(RunEnds, ARunThatWasKilledResetsTheBenchBeforeAnythingElse) {
  procedure("endless", {source_line(1, 1, "HEAD", "looping"), source_line(1, 2, "WHILE", "1"),
                        source_line(1, 3, "MATH", "M[1] = M[1] + 1"), source_line(1, 4, "ENDW"),
                        source_line(1, 5, "END")});
  procedure("short", {source_line(1, 1, "DISP", "Here."), source_line(1, 2, "END")});
  {
    Process process(ovrun({"-run", "endless"}));
    ASSERT_TRUE(process.wait_for("== looping"));
    process.signal(SIGKILL);
    EXPECT_EQ(process.wait().signal, SIGKILL);
  }
  ASSERT_TRUE(marked("underway"));

  EXPECT_EQ(run_process(ovrun({"--list"})).status, 0);
  EXPECT_TRUE(marked("underway")) << "a list of names touches no instrument";

  // A bench that cannot be reset: nothing begins, and the next start tries again.
  const std::string sound = contents("orvane.ini");
  configure("ib_driver", "no-such-driver.so");
  EXPECT_EQ(run_process(ovrun("short", "ok\n")).status, 3);
  EXPECT_EQ(message_numbers(), std::vector<int>{2740});
  EXPECT_TRUE(marked("underway"));

  write("orvane.ini", sound);
  const Ended ended = run_process(ovrun("short", "ok\n"));
  EXPECT_EQ(ended.status, 0) << ended.err;
  EXPECT_EQ(message_numbers(), std::vector<int>{30650});
  const std::vector<nlohmann::json> all = events();
  const auto place = [&](const char* event) {
    return std::find_if(all.begin(), all.end(),
                        [&](const nlohmann::json& one) { return one["event"] == event; }) -
           all.begin();
  };
  EXPECT_LT(place("message"), place("window"));
  EXPECT_TRUE(marked("done"));
}

TEST_F(RunEnds, FaultsOfTheFilesAreToldAndNothingBegins) {
  procedure("short", {source_line(1, 1, "DISP", "Here."), source_line(1, 2, "END")});
  configure("bcf", "entry.txt");
  write("entry.txt", "[start]\nfield = SER_NO$\nwhat is this\n[begin]\n");
  const Ended ended = run_process(ovrun("short", ""));
  EXPECT_EQ(ended.status, 3);
  EXPECT_EQ(message_numbers(), (std::vector<int>{30621, 30612, 30613, 2508}));
  EXPECT_NE(ended.err.find("E30612: " + path("entry.txt") + ":3: "), std::string::npos) << ended.err;
  EXPECT_EQ(contents("settings.ini").find("procedure ="), std::string::npos);

  write("entry.txt", "[start]\nfield = SER_NUM$\nrequired = yes\n");
  EXPECT_EQ(run_process(ovrun("short", "cancel\n")).status, 2);
  EXPECT_EQ(run_process(ovrun("short", "set SER_NUM$ = 7\nabort\n")).status, 2) << "nothing has begun yet";
  EXPECT_EQ(run_process(ovrun("short", "set SER_NUM$ = 7\nok\nok\n")).status, 0);
  EXPECT_EQ(run_process(ovrun("short", "set NOBODY$ = 7\nok\nok\n")).status, 3);
}

TEST_F(RunEnds, WithoutADatabaseTheProgramSaysSoAndGoesOn) {
  procedure("short", {source_line(1, 1, "DISP", "Here."), source_line(1, 2, "END")});
  configure("database", "YES");
  const Ended ended = run_process(ovrun("short", "ok\n"));
  EXPECT_EQ(ended.status, 0) << ended.err;
  EXPECT_EQ(message_numbers(), std::vector<int>{30600});
  EXPECT_EQ(events("message")[0]["kind"], "information");
  EXPECT_EQ(ended.err, "The run finished without an evaluated test.\n");
}

}  // namespace
}  // namespace orvane::test
