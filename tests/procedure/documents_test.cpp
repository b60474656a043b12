// The author's guide is kept true: its procedures compile and run, its list of functions is the function table.
#include <algorithm>
#include <sstream>

#include "config/startup_config.h"
#include "functions/functions.h"
#include "procedure/operator/statements.h"
#include "procedure/pipeline/run_test.h"
#include "state/fsc.h"
#include "support/procedures.h"

namespace orvane {
namespace {

class AuthorsGuide : public test::RunTest {
 protected:
  std::string guide = contents(ORVANE_SOURCE_DIR "/docs/procedures.md");

  // The indented blocks whose first line begins with this word, without their indent.
  std::vector<std::string> blocks(const std::string& first) const {
    std::vector<std::string> found;
    std::istringstream lines(guide);
    std::string line, block;
    while (std::getline(lines, line)) {
      if (line.starts_with("    ")) {
        block += line.substr(4) + "\n";
        continue;
      }
      if (block.starts_with(first)) found.push_back(block);
      block.clear();
    }
    return found;
  }
};

TEST_F(AuthorsGuide, TheFirstProcedureRunsAsPrinted) {
  const std::vector<std::string> sources = blocks("INSTRUMENT:");
  ASSERT_EQ(sources.size(), 2u);
  for (const std::string& text : sources) source(text);
  desk.reply(answer::ok);            // DISP
  desk.reply(answer::ok, "10,004");  // MEMI
  desk.reply(answer::test_continue);
  EXPECT_EQ(go("First procedure"), run_result::finished);
  EXPECT_TRUE(desk.message_numbers().empty());
  ASSERT_EQ(desk.results.size(), 1u);
  EXPECT_EQ(desk.results[0].status_text, "PASS");
  EXPECT_EQ(desk.of_kind("lines").back().lines[0], "This is the sub-procedure.");
  EXPECT_EQ(desk.of_kind("lines")[1].lines[0], "The meter reads well.");
}

TEST_F(AuthorsGuide, TheSmallestConfigurationIsEnough) {
  const std::vector<std::string> files = blocks("[startup]");
  ASSERT_EQ(files.size(), 1u);
  std::filesystem::create_directory(folder / "procedures");
  std::filesystem::create_directory(folder / "work");
  std::vector<ConfigFault> faults;
  EXPECT_TRUE(config_load(write("orvane.ini", files[0]), faults));
  for (const ConfigFault& fault : faults) ADD_FAILURE() << fault.text;
}

TEST_F(AuthorsGuide, EveryStatementOfTheOperatorIsListed) {
  for (const HandlerRow& row : operator_handlers()) {
    const std::string name = "`" + std::string(fsc_name(fsc_ordinal(row.code))) + "`";
    // In a row of the table, alone or behind its partner.
    EXPECT_TRUE(guide.find("| " + name) != std::string::npos || guide.find("` " + name) != std::string::npos)
        << name;
  }
}

TEST_F(AuthorsGuide, ItsExamplesOfStatementsRun) {
  startup_config().picdir = folder.string();
  write("front.bmp", "BM");
  for (const char* program : {"measure.sh", "judge"}) {
    const std::string path = write(program, "#!/bin/sh\nprintf '0\\n0\\n0\\n1\\n0\\n' > dosdose.dat\n");
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
  }
  startup_config().user_prog_dir = folder.string();
  std::string text = test::header("Examples") + line(1, 1, "MATH", "M[1] = 2.5; S[1] = \"SN 1\"") + "\n";
  std::istringstream lines(guide);
  for (std::string one; std::getline(lines, one);) {
    // Examples that stand alone: tests 3 to 6 of the guide.
    const bool statement =
        one.starts_with("      ") && one.size() > 7 && one[6] >= '3' && one[6] <= '6' && one[7] == '.';
    if (statement) text += one.substr(4) + "\n";
  }
  source(text + line(7, 1, "END", "") + "\n");
  for (const int code :
       {answer::yes, answer::test_continue, answer::test_continue, answer::yes, answer::test_continue})
    desk.reply(code);
  desk.reply(answer::ok, "300");
  EXPECT_EQ(go("Examples"), run_result::finished);
  EXPECT_TRUE(desk.message_numbers().empty()) << desk.last_message();
  EXPECT_EQ(desk.results.size(), 4u) << "three judgements and a program's";
  for (const ResultLine& result : desk.results) EXPECT_EQ(result.status_text, "PASS");
  EXPECT_TRUE(run.uut_settings.empty());
}

TEST_F(AuthorsGuide, EveryFunctionIsListed) {
  for (const MathFunctionRow& row : math_function_rows()) {
    const std::string name = "`" + std::string(row.name);
    EXPECT_TRUE(guide.find(name + "`") != std::string::npos || guide.find(name + "(") != std::string::npos ||
                (name.ends_with("_l") && guide.find(name.substr(0, name.size() - 2)) != std::string::npos))
        << row.name;
  }
}

}  // namespace
}  // namespace orvane
