// The window's smaller parts: its keys, its layout, the tip of the day and
// the dialogs that stand between the commands and the user.
#include <QDialog>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <deque>
#include <map>

#include "ShellTesting.h"
#include "shell/commander/FileCommander.h"
#include "shell/dialogs/Dialogs.h"
#include "shell/dialogs/MessageShell.h"
#include "shell/dialogs/TipDialog.h"
#include "shell/dialogs/TipOfDay.h"
#include "support/UnattendedDialogs.h"

namespace trel {
namespace {

using test::TempDir;

// Every command group adds keys to the one window; two commands on one key
// would leave one of them unreachable from the keyboard.
void Collect(const QList<QAction*>& actions, std::map<QString, QStringList>& byKey) {
  for (QAction* action : actions) {
    if (QMenu* sub = action->menu()) Collect(sub->actions(), byKey);
    for (const QKeySequence& key : action->shortcuts())
      if (!key.isEmpty()) byKey[key.toString()].append(action->objectName() + " " + action->text());
  }
}

// A bare window as the program shows it, whose left mouse button the test holds.
class WindowTest : public ::testing::Test {
 protected:
  WindowTest() : store(home.file("Trel10.ini")), window(store, home.path()) {
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

TEST_F(WindowTest, NoTwoCommandsOfTheMainWindowShareAKey) {
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
TEST_F(WindowTest, MenuTitlesAndCommandButtonsHaveTheirOwnAltLetters) {
  std::map<QString, QStringList> byKey;
  for (QAction* title : window.menuBar()->actions())
    byKey[QKeySequence::mnemonic(title->text()).toString()].append(title->text());
  for (QPushButton* button : window.findChildren<QPushButton*>(QRegularExpression("^Command1_")))
    byKey[QKeySequence::mnemonic(button->text()).toString()].append(button->text());
  byKey.erase(QString());
  for (const auto& [key, names] : byKey)
    EXPECT_EQ(names.size(), 1) << key.toStdString() << ": " << names.join(", ").toStdString();
}

TEST_F(WindowTest, DraggingTheFrameLaysOutOnceAfterTheButtonIsUp) {
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

TEST_F(WindowTest, PanesKeepTheirSharesAndBoxesTheirHeight) {
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

TEST(TipDialog, NextTipStepsAndTheBoxIsWrittenAtOnceWhenClicked) {
  TempDir dir;
  SettingsStore store(dir.file("Trel10.ini"));
  TipDialog tip(store, dir.Write("TipOfDay.txt", "one\ntwo\n"));
  const QString first = tip.tipText();
  QTest::mouseClick(tip.findChild<QPushButton*>("cmdNextTip"), Qt::LeftButton);
  EXPECT_NE(tip.tipText(), first);
  auto* box = tip.findChild<QCheckBox*>("chkLoadTipsAtStartup");
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
  TempDir dir;
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

// Answers each modal dialog with the next scripted result code, then as nobody
// at the screen would.
class ScriptedDialogs : public test::UnattendedDialogs {
 public:
  int Exec(QDialog& dialog, int unattended) override {
    asked << dialog.windowTitle();
    if (codes.empty()) return unattended;
    const int code = codes.front();
    codes.pop_front();
    return code;
  }
  std::deque<int> codes;
};

class DialogsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    auto owned = std::make_unique<ScriptedDialogs>();
    script = owned.get();
    UseDialogs(std::move(owned));
  }
  void TearDown() override { UseDialogs(std::make_unique<test::UnattendedDialogs>()); }
  ScriptedDialogs* script = nullptr;
};

// The commander's questions read their answer from the dialog's result code:
// a button's number, Cancel, or what nobody at the screen would answer.
TEST_F(DialogsTest, TheCommandersQuestionsTakeTheAnswerTheDialogsGive) {
  const std::unique_ptr<FileDialogs> files = MakeFileDialogs(nullptr);
  script->codes = {12, QDialog::Rejected};
  EXPECT_EQ(files->Overwrite("/a/x.8bf", "/b/x.8bf"), OverwriteButton::OverwriteAll);
  EXPECT_EQ(files->Overwrite("/a/x.8bf", ""), OverwriteButton::Cancel);     // closed
  EXPECT_EQ(files->Overwrite("/a/x.8bf", ""), OverwriteButton::Overwrite);  // nobody there

  const auto any = [](QString&) { return true; };
  const auto none = [](QString&) { return false; };
  bool sub = true;
  EXPECT_EQ(files->SelectFolder({"/p/", "/q/"}, any, &sub), "/p/");
  EXPECT_TRUE(sub);
  EXPECT_EQ(files->SelectFolder({"/p/"}, none, nullptr), "");  // the check refuses the entry
  script->codes = {QDialog::Rejected};
  EXPECT_EQ(files->SelectFolder({"/p/"}, any, nullptr), "");

  script->codes = {QDialog::Rejected};
  EXPECT_FALSE(files->Input("Rename", "a.txt").has_value());
  EXPECT_EQ(files->Input("Rename", "a.txt").value_or(""), "a.txt");

  EXPECT_EQ(script->asked, (QStringList{"Overwrite", "Overwrite", "Overwrite", "Select Folder", "Select Folder",
                                        "Select Folder", "Rename", "Rename"}));
}

TEST_F(DialogsTest, MessageBoxesGoThroughTheChosenDialogsUnderTheProgramsName) {
  MessageShell shell;
  EXPECT_EQ(shell.MsgBox("Really?", MsgButtons::YesNo, MsgIcon::Question, ""), MsgResult::Yes);
  EXPECT_EQ(shell.MsgBox("Done.", MsgButtons::Ok, MsgIcon::Information, "Convert"), MsgResult::Ok);
  EXPECT_TRUE(shell.ErrorMessage2("disk full"));  // "Continue anyway?" answers Yes
  EXPECT_EQ(script->asked, (QStringList{"Trel", "Convert", "Trel Error"}));
}

}  // namespace
}  // namespace trel
