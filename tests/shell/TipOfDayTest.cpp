#include "shell/TipOfDay.h"

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace trel {
namespace {

TEST(TipCollection, RefusesAnEmptyPathAndAMissingFile) {
  TipCollection tips;
  EXPECT_FALSE(tips.LoadTips("", 0.5));
  EXPECT_FALSE(tips.LoadTips("/no/TipOfDay.txt", 0.5));
  tips.NextTip();  // nothing to step through
  EXPECT_EQ(tips.current(), 0);
}

TEST(TipCollection, EveryLineIsATipAndTheRingWraps) {
  test::TempDir dir;
  const std::string path = dir.Write("TipOfDay.txt", "first\r\n\nthird\n");
  TipCollection fromStart;
  ASSERT_TRUE(fromStart.LoadTips(path, 0.0));
  EXPECT_EQ(fromStart.current(), 1);
  TipCollection tips;
  ASSERT_TRUE(tips.LoadTips(path, 0.99));
  EXPECT_EQ(tips.count(), 3);
  EXPECT_EQ(tips.current(), 3);  // whole part of 0.99 * 3, plus 1
  EXPECT_EQ(tips.CurrentTip(), "third");
  EXPECT_EQ(tips.Counter(), "3/3");
  tips.NextTip();
  EXPECT_EQ(tips.CurrentTip(), "first");
  tips.NextTip();
  EXPECT_EQ(tips.CurrentTip(), "");  // the empty line is a tip too
  // A second load keeps what is there.
  dir.Write("TipOfDay.txt", "other\n");
  EXPECT_TRUE(tips.LoadTips(path, 0.0));
  EXPECT_EQ(tips.count(), 3);
}

}  // namespace
}  // namespace trel
