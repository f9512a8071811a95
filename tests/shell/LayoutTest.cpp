#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QTest>

#include "settings/SettingsStore.h"
#include "shell/MainWindow.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;

class LayoutTest : public ::testing::Test {
 protected:
  LayoutTest() : store(home.file("Trel10.ini")), window(store, home.path()) {
    window.SetLeftButtonProbe([this] { return buttonDown; });
    window.resize(800, 600);
    window.show();
    QApplication::processEvents();
  }
  TempDir home;
  SettingsStore store;
  MainWindow window;
  bool buttonDown = false;
};

TEST_F(LayoutTest, DraggingTheFrameLaysOutOnceAfterTheButtonIsUp) {
  const int before = window.layoutCount();
  buttonDown = true;
  for (int w = 820; w <= 900; w += 20) {
    window.resize(w, 600);
    QApplication::processEvents();
  }
  EXPECT_EQ(window.layoutCount(), before);
  EXPECT_TRUE(window.Timer2()->isActive());
  buttonDown = false;
  QTRY_VERIFY_WITH_TIMEOUT(!window.Timer2()->isActive(), 2000);
  EXPECT_EQ(window.layoutCount(), before + 1);
}

TEST_F(LayoutTest, PanesKeepTheirSharesAndBoxesTheirHeight) {
  const int comboHeight = window.findChild<QComboBox*>("Combo1_0")->height();
  const int driveHeight = window.findChild<QComboBox*>("Drive1_1")->height();
  window.resize(1200, 900);
  QApplication::processEvents();
  const int left = window.pane(0)->width();
  const int right = window.pane(1)->width();
  EXPECT_NEAR(left, right, 2);
  EXPECT_GT(left, 500);
  EXPECT_EQ(window.findChild<QComboBox*>("Combo1_0")->height(), comboHeight);
  EXPECT_EQ(window.findChild<QComboBox*>("Drive1_1")->height(), driveHeight);
  EXPECT_GT(window.pane(0)->height(), 600);
}

}  // namespace
}  // namespace trel
