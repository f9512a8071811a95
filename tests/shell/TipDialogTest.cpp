#include "shell/TipDialog.h"

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

}  // namespace
}  // namespace trel
