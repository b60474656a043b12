// The author's guide is kept true: its procedures compile and run, its list of functions is the function table.
#include <algorithm>
#include <sstream>

#include "config/startup_config.h"
#include "functions/functions.h"
#include "procedure/pipeline/run_test.h"
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
