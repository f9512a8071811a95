#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QTest>

#include "settings/SettingsStore.h"
#include "shell/window/MainWindow.h"
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
  ASSERT_TRUE(QTest::qWaitFor([&] { return !window.Timer2()->isActive(); }, 2000));
  EXPECT_EQ(window.layoutCount(), before + 1);
}

TEST_F(LayoutTest, PanesKeepTheirSharesAndBoxesTheirHeight) {
  auto* mask = window.findChild<QComboBox*>("Combo1_0");
  auto* drive = window.findChild<QComboBox*>("Drive1_1");
  const int maskHeight = mask->height(), driveHeight = drive->height();
  window.resize(1200, 900);
  QApplication::processEvents();
  EXPECT_NEAR(window.pane(0)->width(), window.pane(1)->width(), 2);
  EXPECT_GT(window.pane(0)->width(), 500);
  EXPECT_GT(window.pane(0)->height(), 600);
  EXPECT_EQ(mask->height(), maskHeight);
  EXPECT_EQ(drive->height(), driveHeight);
}

}  // namespace
}  // namespace trel
