// The Plugin View on a real X display, reached by the keyboard, with a
// screenshot for a person to look at. Needs an X server (pluginview_xvfb.sh).
#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QListWidget>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <cstdlib>
#include <memory>

#include "settings/SettingsStore.h"
#include "shell/pluginview/PluginViewPage.h"
#include "shell/window/MainWindow.h"
#include "support/PeBuilder.h"
#include "support/TempDir.h"

namespace trel {
namespace {

TEST(PluginViewXvfb, TheKeyboardReachesThePluginViewAndItsCategoriesShow) {
  if (QGuiApplication::platformName() != "xcb") GTEST_SKIP() << "needs an X server";
  test::TempDir home, files;
  for (int i = 0; i < 40; ++i) {
    const char* categories[4] = {"Artistic", "Distort", "Texture", "Sketch"};
    files.Write("filter" + std::to_string(i) + (i % 9 == 0 ? "._bf" : ".8bf"),
                test::PiplPlugin(categories[i % 4], "Effect " + std::to_string(i), {}));
  }
  files.Write("damaged.8bf", std::string(300, '\x7f'));
  const QString saved = QDir::currentPath();
  QDir::setCurrent(QString::fromStdString(files.path()));
  SettingsStore store(home.file("Trel10.ini"));
  auto window = std::make_unique<MainWindow>(store, home.path());
  window->Form_Initialize();
  window->Form_Load({});
  window->resize(1100, 760);
  window->show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));

  // The arrow key moves a focused tab bar to its next page.
  auto* tabs = window->findChild<QTabWidget*>("SSTab1_0");
  ASSERT_NE(tabs, nullptr);
  tabs->tabBar()->setFocus();
  QTest::keyClick(tabs->tabBar(), Qt::Key_Right);
  EXPECT_EQ(window->pane(0)->paneView(), FilePane::kPluginView);
  ASSERT_TRUE(QTest::qWaitFor([&] { return !window->pane(0)->pluginView()->busy(); }, 20000));

  auto* categories = window->findChild<QListWidget*>("List2_0");
  ASSERT_NE(categories, nullptr);
  QStringList rows;
  for (int i = 0; i < categories->count(); ++i) rows << categories->item(i)->text();
  EXPECT_EQ(rows, (QStringList{"[Unknown]", "Artistic", "Distort", "Sketch", "Texture"}));
  categories->setCurrentRow(2);
  categories->item(2)->setSelected(true);
  auto* filters = window->findChild<QListWidget*>("List3_0");
  ASSERT_NE(filters, nullptr);
  EXPECT_GT(filters->count(), 0);
  filters->setFocus();
  filters->setCurrentRow(0);
  QTest::qWait(200);
  if (const char* shot = std::getenv("TREL_PLUGINVIEW_SHOT")) window->grab().save(shot);
  window->close();
  window.reset();
  QDir::setCurrent(saved);
}

}  // namespace
}  // namespace trel
