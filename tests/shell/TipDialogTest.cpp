#include "shell/dialogs/TipDialog.h"
#include "shell/dialogs/TipOfDay.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QPushButton>
#include <QTest>

#include "settings/SettingsStore.h"
#include "support/TempDir.h"

namespace trel {
namespace {

TEST(TipDialog, NextTipStepsAndTheBoxIsWrittenAtOnceWhenClicked) {
  test::TempDir dir;
  SettingsStore store(dir.file("Trel10.ini"));
  TipDialog tip(store, dir.Write("TipOfDay.txt", "one\ntwo\n"));
  const QString first = tip.tipText();
  QTest::mouseClick(tip.findChild<QPushButton*>("cmdNextTip"), Qt::LeftButton);
  EXPECT_NE(tip.tipText(), first);
  auto* box = tip.findChild<QCheckBox*>("chkLoadTipsAtStartup");
  ASSERT_NE(box, nullptr);
  EXPECT_TRUE(box->isChecked());  // the default is on
  QTest::mouseClick(box, Qt::LeftButton);
  EXPECT_EQ(SettingsStore(dir.file("Trel10.ini")).Get(kSectionOptions, "Show Tips at Startup"), "0");
  // A missing file is said, and Next Tip keeps saying it.
  TipDialog missing(store, dir.file("none.txt"));
  EXPECT_EQ(missing.tipText(), "The Tip file was not found. \n");
  QTest::mouseClick(missing.findChild<QPushButton*>("cmdNextTip"), Qt::LeftButton);
  EXPECT_EQ(missing.tipText(), "The Tip file was not found. \n");
}

TEST(TipCollection, EveryLineIsATipAndTheRingWraps) {
  TipCollection none;
  EXPECT_FALSE(none.LoadTips("", 0.5));
  none.NextTip();  // nothing to step through
  EXPECT_EQ(none.current(), 0);
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
