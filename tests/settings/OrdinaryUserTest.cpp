// The permission checks of the other tests rely on this helper really leaving
// root behind and really reporting the child's failures.
#include "support/OrdinaryUser.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include "support/TempDir.h"

namespace trel {
namespace {

TEST(OrdinaryUser, TheCheckRunsWithoutRootsRightsInWhatWasHandedOver) {
  test::TempDir dir;
  const std::string secret = dir.Write("secret", "x");
  EXPECT_TRUE(test::RunAsOrdinaryUser({dir.path()}, [&] {
    EXPECT_NE(::geteuid(), 0u);
    EXPECT_EQ(dir.Read("secret"), "x");  // what the test prepared is there
    EXPECT_EQ(::access(dir.Write("made-by-child", "y").c_str(), W_OK), 0);
    ::chmod(secret.c_str(), 0);
    EXPECT_NE(::access(secret.c_str(), R_OK), 0);  // root would read it anyway
  }));
}

TEST(OrdinaryUser, AFailureInTheChildFailsTheTest) {
  EXPECT_NONFATAL_FAILURE(test::RunAsOrdinaryUser({}, [] { ADD_FAILURE() << "planted"; }),
                          "the check as an ordinary user failed");
}

}  // namespace
}  // namespace trel
