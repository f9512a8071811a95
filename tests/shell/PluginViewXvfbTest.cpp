// The Plugin View on a real X display, reached by the keyboard, with a
// screenshot for a person to look at. Needs an X server (pluginview_xvfb.sh).
#include <QTabBar>
#include <QTabWidget>
#include <cstdlib>

#include "ShellTesting.h"
#include "shell/pluginview/PluginViewPage.h"
#include "support/PeBuilder.h"

namespace trel {
namespace {

TEST(PluginViewXvfb, TheKeyboardReachesThePluginViewAndItsCategoriesShow) {
  if (QGuiApplication::platformName() != "xcb") GTEST_SKIP() << "needs an X server";
  test::TempDir home, files;
  const char* categories[4] = {"Artistic", "Distort", "Texture", "Sketch"};
  for (int i = 0; i < 40; ++i) {
    files.Write("filter" + std::to_string(i) + (i % 9 == 0 ? "._bf" : ".8bf"),
                test::PiplPlugin(categories[i % 4], "Effect " + std::to_string(i), {}));
  }
  files.Write("damaged.8bf", std::string(300, '\x7f'));
  test::StartedWindow window(home, files.path());
  window->resize(1100, 760);
  window->show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(window.window.get()));

  // The arrow key moves a focused tab bar to its next page.
  auto* tabs = window->findChild<QTabWidget*>("SSTab1_0");
  ASSERT_NE(tabs, nullptr);
  tabs->tabBar()->setFocus();
  QTest::keyClick(tabs->tabBar(), Qt::Key_Right);
  EXPECT_EQ(window->pane(0)->paneView(), FilePane::kPluginView);
  PluginViewPage* page = window->pane(0)->pluginView();
  ASSERT_TRUE(QTest::qWaitFor([&] { return !page->busy(); }, 20000));
  EXPECT_EQ(page->CategoryRows(), (test::Strings{"[Unknown]", "Artistic", "Distort", "Sketch", "Texture"}));
  page->SelectCategories({"Distort"});
  ASSERT_GT(page->filterList()->count(), 0);
  page->filterList()->setFocus();
  page->filterList()->setCurrentRow(0);
  QTest::qWait(200);
  if (const char* shot = std::getenv("TREL_PLUGINVIEW_SHOT")) window->grab().save(shot);
}

}  // namespace
}  // namespace trel
