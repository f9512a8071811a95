// Every command group adds keys to the one window; two commands on one key
// would leave one of them unreachable from the keyboard.
#include <QAction>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRegularExpression>
#include <gtest/gtest.h>

#include <map>

#include "settings/SettingsStore.h"
#include "shell/window/MainWindow.h"
#include "support/TempDir.h"

namespace trel {
namespace {

void Collect(const QList<QAction*>& actions, std::map<QString, QStringList>& byKey) {
  for (QAction* action : actions) {
    if (QMenu* sub = action->menu()) Collect(sub->actions(), byKey);
    for (const QKeySequence& key : action->shortcuts())
      if (!key.isEmpty()) byKey[key.toString()].append(action->objectName() + " " + action->text());
  }
}

class ShortcutsTest : public ::testing::Test {
 protected:
  test::TempDir home;
  SettingsStore store{home.file("Trel10.ini")};
  MainWindow window{store, home.path()};
};

TEST_F(ShortcutsTest, NoTwoCommandsOfTheMainWindowShareAKey) {
  std::map<QString, QStringList> byKey;
  Collect(window.menuBar()->actions(), byKey);
  // Actions the window holds outside its menus (keys of the panes and groups).
  QList<QAction*> loose;
  for (QAction* action : window.actions())
    if (action->associatedObjects().size() <= 1) loose.append(action);
  Collect(loose, byKey);
  for (const auto& [key, names] : byKey) {
    QStringList unique = names;
    unique.removeDuplicates();
    EXPECT_EQ(unique.size(), 1) << key.toStdString() << ": " << unique.join(", ").toStdString();
  }
}

// Alt with a letter opens a menu title or presses a command button; two on one
// letter leave one of them out of reach.
TEST_F(ShortcutsTest, MenuTitlesAndCommandButtonsHaveTheirOwnAltLetters) {
  std::map<QString, QStringList> byKey;
  for (QAction* title : window.menuBar()->actions())
    byKey[QKeySequence::mnemonic(title->text()).toString()].append(title->text());
  for (QPushButton* button : window.findChildren<QPushButton*>(QRegularExpression("^Command1_")))
    byKey[QKeySequence::mnemonic(button->text()).toString()].append(button->text());
  byKey.erase(QString());
  for (const auto& [key, names] : byKey)
    EXPECT_EQ(names.size(), 1) << key.toStdString() << ": " << names.join(", ").toStdString();
}

}  // namespace
}  // namespace trel
