#include "shell/TipDialog.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QPushButton>
#include <QTest>

#include "settings/SettingsStore.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;

TEST(TipDialog, TheBoxIsWrittenAtOnceWhenClicked) {
  TempDir dir;
  SettingsStore store(dir.file("Trel10.ini"));
  TipDialog tip(store, dir.Write("TipOfDay.txt", "one\ntwo\n"));
  auto* box = tip.findChild<QCheckBox*>("chkLoadTipsAtStartup");
  ASSERT_NE(box, nullptr);
  EXPECT_TRUE(box->isChecked());  // the default is on
  QTest::mouseClick(box, Qt::LeftButton);
  SettingsStore reread(dir.file("Trel10.ini"));
  EXPECT_EQ(reread.Get(kSectionOptions, "Show Tips at Startup"), "0");
}

TEST(TipDialog, NextTipStepsAndAMissingFileIsSaid) {
  TempDir dir;
  SettingsStore store(dir.file("Trel10.ini"));
  TipDialog tip(store, dir.Write("TipOfDay.txt", "one\ntwo\n"));
  const QString first = tip.tipText();
  QTest::mouseClick(tip.findChild<QPushButton*>("cmdNextTip"), Qt::LeftButton);
  EXPECT_NE(tip.tipText(), first);
  TipDialog missing(store, dir.file("none.txt"));
  EXPECT_EQ(missing.tipText(), "The Tip file was not found. \n");
  QTest::mouseClick(missing.findChild<QPushButton*>("cmdNextTip"), Qt::LeftButton);
  EXPECT_EQ(missing.tipText(), "The Tip file was not found. \n");
}

}  // namespace
}  // namespace trel
