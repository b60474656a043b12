// The log of a run whose program died.
#include "reports/died_run.h"

#include <gtest/gtest.h>

namespace orvane {
namespace {

TEST(DiedRun, ItsLogEndsBehindItsLastFinishedTest) {
  const std::string main = "0000.000 C          11 ENTER Main\n",
                    sub = "0002.001 C           5 ENTER Sub ENTER 1\n",
                    left_sub = "0002.001 L             LEAVE Sub ENTER 1\n",
                    left_main = "0000.000 L             LEAVE Main\n",
                    one = "0001.002 M   1\n0001.002 M      PASS\n",
                    high = "12345.002 I 12345\n12345.002 I      PASS\n", note = "0001.002 K         leads\n";
  const struct {
    std::string log, mended;
    int tests;
  } cases[] = {
      {"", "", 0},
      {main, main + left_main, 0},
      {main + one + note + sub + high, main + one + note + sub + high + left_sub + left_main, 2},
      {main + sub + one + left_sub + one, main + sub + one + left_sub + one + left_main, 2},
      {main + one + left_main, main + one + left_main, 1},
      // A test without its second line, a line without its end, a line that is none: the test was not finished.
      {main + one + "0002.002 M   2\n", main + one + left_main, 1},
      {main + one + "0002.002 M   2\n0002.002 M     ", main + one + left_main, 1},
      {main + one + "0002.002 M   2\n0003.002 M   3\n", main + one + left_main, 1},
      {main + one + "0002.0", main + one + left_main, 1},
  };
  for (const auto& c : cases) {
    int tests = -1;
    EXPECT_EQ(mended_log(c.log, tests), c.mended) << c.log;
    EXPECT_EQ(tests, c.tests) << c.log;
  }
}

}  // namespace
}  // namespace orvane
