#include "state/run_variables.h"

#include "support/desk.h"

namespace orvane {
namespace {

using RunVariablesTest = test::EngineTest;
using List = std::vector<std::pair<std::string, std::string>>;

TEST_F(RunVariablesTest, EntriesOutliveTheStartOfTheRunAndNotTheNextPreparation) {
  run_entry_set(run, "ser_num", "12");
  run_variable_set(run, "Ser_Num$", "overwritten");
  run_variable_set(run, "ACT$", "1");
  run_variable_set(run, "no name", "1");
  EXPECT_EQ(run_variable_list(run), (List{{"ACT$", "1"}, {"SER_NUM$", "overwritten"}}));
  const std::string* const act = run_variable(run, "act");
  run_variable_set(run, "ACT", "2");
  EXPECT_EQ(run_variable(run, "ACT$"), act);
  EXPECT_EQ(run_variable(run, "ACT$$"), nullptr);
  run_variables_restart(run);
  EXPECT_EQ(run_variable_list(run), (List{{"SER_NUM$", "12"}}));
  run_entries_clear(run);
  run_variables_restart(run);
  EXPECT_TRUE(run_variable_list(run).empty());
}

}  // namespace
}  // namespace orvane
