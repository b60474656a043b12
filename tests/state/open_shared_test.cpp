#include "state/open_shared.h"

#include <cerrno>

#include "support/desk.h"

namespace orvane {
namespace {

class OpenShared : public test::EngineTest {
 protected:
  // Fails `times` times with this error, then succeeds.
  bool attempt(int times, int error) {
    tries = 0;
    return open_shared("a.prc", [&] {
      ++tries;
      errno = error;
      return tries > times;
    });
  }
  int tries = 0;
};

TEST_F(OpenShared, AsksToTryAgainWhileAnotherProgramHoldsTheFile) {
  desk.reply(answer::yes);
  desk.reply(answer::yes);
  EXPECT_TRUE(attempt(2, EBUSY));
  EXPECT_EQ(tries, 3);
  ASSERT_EQ(desk.of_kind("lines").size(), 2u);
  EXPECT_NE(desk.of_kind("lines")[0].lines[0].find("a.prc"), std::string::npos);

  desk.reply(answer::no);
  EXPECT_FALSE(attempt(5, EBUSY));
  EXPECT_EQ(tries, 1);
}

TEST_F(OpenShared, AnyOtherFailureIsFinal) {
  EXPECT_FALSE(attempt(1, ENOENT));
  EXPECT_EQ(tries, 1);
  EXPECT_TRUE(desk.of_kind("lines").empty());
}

}  // namespace
}  // namespace orvane
