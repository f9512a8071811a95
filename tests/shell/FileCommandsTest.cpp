#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMimeData>
#include <QSignalSpy>
#include <QPushButton>
#include <QTest>
#include <QTreeView>
#include <deque>
#include <filesystem>
#include <memory>

#include "settings/SettingsStore.h"
#include "shell/commander/FileCommander.h"
#include "shell/pane/FileListModel.h"
#include "shell/pane/FileListView.h"
#include "shell/window/MainWindow.h"
#include "shell/pane/Selection.h"
#include "shell/window/StatusArea.h"
#include "shell/commander/ZipCommander.h"
#include "shell/dialogs/ConvertDialog.h"
#include <QCheckBox>
#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;
namespace fs = std::filesystem;

// Answers the dialogs from a script and keeps what they were asked.
class ScriptedDialogs : public FileDialogs {
 public:
  std::deque<int> overwrite;
  std::vector<QString> overwriteAsked;
  std::deque<QString> folders;  // "=" takes the first entry; "" cancels
  std::vector<QStringList> folderEntries;
  std::deque<std::optional<QString>> inputs;
  std::vector<QString> inputAsked;

  int Overwrite(const QString& target, const QString& source) override {
    overwriteAsked.push_back(target + (source.isEmpty() ? "" : " | " + source));
    if (overwrite.empty()) return 4;
    const int answer = overwrite.front();
    overwrite.pop_front();
    return answer;
  }
  QString SelectFolder(const QStringList& entries, const std::function<bool(QString&)>& accept,
                       bool* subFolders) override {
    (void)subFolders;
    folderEntries.push_back(entries);
    while (!folders.empty()) {
      QString text = folders.front() == "=" ? entries.value(0) : folders.front();
      folders.pop_front();
      if (text.isEmpty()) return {};
      if (accept(text)) return text;
    }
    return {};
  }
  std::optional<QString> Input(const QString& caption, const QString& text) override {
    inputAsked.push_back(caption + ": " + text);
    if (inputs.empty()) return std::nullopt;
    auto answer = inputs.front();
    inputs.pop_front();
    return answer;
  }
};

class Recorder : public ShellHooks {
 public:
  std::vector<std::string> said;  // "title: text"
  std::deque<MsgResult> answers;
  MsgResult MsgBox(const std::string& text, MsgButtons buttons, MsgIcon, const std::string& title) override {
    said.push_back(title + ": " + text);
    if (!answers.empty()) {
      const MsgResult a = answers.front();
      answers.pop_front();
      return a;
    }
    return buttons == MsgButtons::YesNo ? MsgResult::Yes : MsgResult::Ok;
  }
  void ErrorMessage(const std::string& description) override { said.push_back("error: " + description); }
};

class FileCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    QDir::setCurrent(QString::fromStdString(left.path()));
    store = std::make_unique<SettingsStore>(home.file("Trel10.ini"));
    window = std::make_unique<MainWindow>(*store, home.path());
    window->Form_Initialize();
    window->Form_Load({});
    commander = FileCommander::Of(*window);
    auto owned = std::make_unique<ScriptedDialogs>();
    dialogs = owned.get();
    commander->SetDialogs(std::move(owned));
    commander->SetMessages(&recorder);
    for (const char* name : {"a.8bf", "b.txt", "c.afs"}) left.Write(name, std::string("left ") + name);
    fs::create_directory(left.file("sub"));
    Open(0, left.path());
    Open(1, right.path());
    window->Switchit(0);
  }
  void TearDown() override {
    if (window) window->close();
    window.reset();
    QDir::setCurrent(saved_);
  }
  void Open(int pane, const std::string& folder) {
    ASSERT_TRUE(window->pane(pane)->ChangeFolder(folder));
  }
  // Selects rows of the active pane's list by their texts (folders with their blank).
  void Select(std::initializer_list<const char*> texts, int pane = 0) {
    QStringList list;
    for (const char* t : texts) list << t;
    window->pane(pane)->SelectTexts(list, list.value(0));
  }
  // A copy or move runs as a job while the event loop turns; the checks
  // look once it has ended.
  void Settle() {
    QElapsedTimer waited;
    waited.start();
    while (commander->busy() && waited.elapsed() < 20000) QTest::qWait(2);
    ASSERT_FALSE(commander->busy());
  }
  std::string Said() const {
    std::string all;
    for (const std::string& s : recorder.said) all += s + "\n";
    return all;
  }

  TempDir home, left, right;
  std::unique_ptr<SettingsStore> store;
  std::unique_ptr<MainWindow> window;
  FileCommander* commander = nullptr;
  ScriptedDialogs* dialogs = nullptr;
  Recorder recorder;
  const QString saved_ = QDir::currentPath();
};

TEST_F(FileCommandsTest, SelectionReadsFilesAndFoldersByModeAndOnlyInTheActivePane) {
  FilePane* p = window->pane(0);
  for (int mode : {0, 1, 2, 3}) {
    SCOPED_TRACE(mode);
    p->SetViewMode(mode);
    Select({" ..", "b.txt", " sub", "a.8bf"});
    const SelectedItems items = GetSelectedItems(*p);
    EXPECT_EQ(items.folder, left.path());
    EXPECT_EQ(items.items, (std::vector<std::string>{"a.8bf", "b.txt"}));  // shown order, files only
    EXPECT_EQ(GetSingleItem(*p).name, "a.8bf");
    EXPECT_EQ(GetSelectedFolders(*p).folders, std::vector<std::string>{left.file("sub/")});
    EXPECT_EQ(GetSingleFolder(*p, true), "..");  // the parent entry comes first
    Select({" .."});
    EXPECT_FALSE(GetSelectedItems(*p).HasSelectionFlag);
    Select({" sub"});
    EXPECT_EQ(GetSingleFolder(*p, true), left.file("sub/"));
    p->listView()->selection()->clear();
    EXPECT_EQ(GetSingleFolder(*p, true), "");
    EXPECT_EQ(GetSingleFolder(*p, false), left.path());
    EXPECT_EQ(GetSingleItem(*p).name, "");
  }
  p->SetViewMode(FilePane::kClassic);
  p->file1()->selectionModel()->clear();
  p->file1()->setCurrentIndex({});
  EXPECT_EQ(GetSingleItem(*p).name, "");
  ASSERT_TRUE(p->SelectInFile1("c.afs"));
  EXPECT_EQ(GetSelectedItems(*p).items, std::vector<std::string>{"c.afs"});
  EXPECT_EQ(GetSingleItem(*p).name, "c.afs");
  // FFL View yields nothing here.
  p->SelectTab(FilePane::kFFLView);
  EXPECT_FALSE(GetSelectedItems(*p).HasSelectionFlag);
}

TEST_F(FileCommandsTest, ViewsEnableCommandsAndCommandsRefuseWhatTheirViewForbids) {
  struct Row {
    const char* command;
    bool file, plugin, ffl;
  } table[] = {{"mnuFilecopy", true, true, false}, {"mnuMove", true, true, false}, {"mnuRename", true, false, false},
               {"mnuMakeDir", true, false, false}, {"mnuEnable", true, true, false}, {"mnuKill2", true, true, false}};
  FilePane* p = window->pane(0);
  for (int view : {1, 2, 3}) {
    p->SelectTab(view);
    window->Switchit(0);
    for (const Row& row : table) {
      const bool expected = view == 1 ? row.file : view == 2 ? row.plugin : row.ffl;
      EXPECT_EQ(window->command(row.command)->isEnabled(), expected) << row.command << " in view " << view;
    }
  }
  EXPECT_FALSE(window->findChild<QPushButton*>("Command1_3")->isEnabled());  // En/Disable in FFL View
  // The keyboard can't pass what the menu hides: each command asks the view.
  const std::pair<std::function<void()>, const char*> refusals[] = {
      {[&] { commander->cmd_CopyFiles(); }, "Trel: Copy only work in File and Plugin View!"},
      {[&] { commander->cmd_MoveFiles(); }, "Trel: Move only works in File and Plugin View!"},
      {[&] { commander->cmd_RenameFiles(); }, "Trel: Rename only works in File View."},
      {[&] { commander->cmd_MakeDir(); }, "Error: Create Folder only works in File View."},
      {[&] { commander->cmd_MoveDir(); }, "Trel: Move Folder only works in File View!"},
      {[&] { commander->cmd_KillDir(); }, "Trel: Kill Folder only works in File View."},
      {[&] { commander->mnuRenameFolder_Click(); }, "Trel: Rename Folder only works in File View!"},
      {[&] { commander->cmd_EnableDisable(); }, "Trel: En/Disable doesn't work in the FFL View."},
  };
  for (const auto& [run, text] : refusals) {
    recorder.said.clear();
    run();
    EXPECT_EQ(recorder.said, std::vector<std::string>{text});
  }
  p->SelectTab(FilePane::kFileView);
  window->Switchit(0);
  recorder.said.clear();
  commander->cmd_CopyFiles(); Settle();
  EXPECT_EQ(recorder.said, std::vector<std::string>{"Trel: Please select one or more files."});
  recorder.said.clear();
  commander->Command1_Click(0);
  EXPECT_EQ(recorder.said, std::vector<std::string>{"Attention: Please select one or more files."});
}

TEST_F(FileCommandsTest, CopyAsksPerConflictRemembersForAllAndForgetsAfterTheCommand) {
  for (const char* name : {"a.8bf", "b.txt", "c.afs"}) right.Write(name, "old");
  Select({"a.8bf", "b.txt", "c.afs"});
  dialogs->folders = {"=", "="};
  // "Overwrite" asks again at the next conflict; "Overwrite All" doesn't.
  dialogs->overwrite = {0, 2};
  commander->cmd_CopyFiles(); Settle();
  EXPECT_EQ(dialogs->overwriteAsked.size(), 2u);
  for (const char* name : {"a.8bf", "b.txt", "c.afs"}) EXPECT_EQ(right.Read(name), std::string("left ") + name);
  EXPECT_EQ(commander->storedChoice(), 0);
  EXPECT_EQ(dialogs->folderEntries.front().value(0).toStdString(), right.path());  // passive pane first
  // The label names the target and its size, then the source with " ?".
  EXPECT_TRUE(dialogs->overwriteAsked[0].startsWith(QString::fromStdString(right.file("a.8bf")) + "  (3 bytes, "));
  EXPECT_TRUE(dialogs->overwriteAsked[0].endsWith(") ?"));
  EXPECT_NE(window->pane(1)->model()->FindText("c.afs"), -1);  // the passive pane shows them

  // "Ignore", then "Cancel" on the last: the first is skipped, nothing after.
  for (const char* name : {"a.8bf", "b.txt", "c.afs"}) right.Write(name, "old");
  dialogs->overwriteAsked.clear();
  dialogs->overwrite = {1, 0, 4};
  commander->cmd_CopyFiles(); Settle();
  EXPECT_EQ(dialogs->overwriteAsked.size(), 3u);
  EXPECT_EQ(right.Read("a.8bf"), "old");
  EXPECT_EQ(right.Read("b.txt"), "left b.txt");
  EXPECT_EQ(right.Read("c.afs"), "old");

  // "Ignore All" skips every later conflict without asking; a new command asks again.
  right.Write("b.txt", "old");
  dialogs->overwriteAsked.clear();
  dialogs->folders = {"=", "="};
  dialogs->overwrite = {3, 4};
  commander->cmd_CopyFiles(); Settle();
  EXPECT_EQ(dialogs->overwriteAsked.size(), 1u);
  EXPECT_EQ(right.Read("b.txt"), "old");
  commander->cmd_CopyFiles(); Settle();
  EXPECT_EQ(dialogs->overwriteAsked.size(), 2u);
  // Nothing but the files is ever left in the target.
  EXPECT_EQ(std::distance(fs::directory_iterator(right.path()), fs::directory_iterator()), 3);
}

TEST_F(FileCommandsTest, CopyToAFolderPickedInTheDialogMovesThePassivePaneThereAndRefusesTheSameFolder) {
  Select({"b.txt"});
  TempDir elsewhere;
  const std::string fresh = elsewhere.file("made by dialog");
  dialogs->folders = {QString::fromStdString(fresh)};
  commander->cmd_CopyFiles(); Settle();
  EXPECT_EQ(window->pane(1)->folder(), fresh + "/");
  EXPECT_EQ(elsewhere.Read("made by dialog/b.txt"), "left b.txt");
  EXPECT_NE(Said().find("doesn't exist!\nDo you want to create it?"), std::string::npos);

  // Declining to create keeps the dialog open; cancelling it ends the command.
  recorder.said.clear();
  recorder.answers = {MsgResult::No};
  dialogs->folders = {QString::fromStdString(elsewhere.file("never")), ""};
  commander->cmd_CopyFiles(); Settle();
  EXPECT_FALSE(elsewhere.Exists("never"));

  Open(1, left.path());
  recorder.said.clear();
  dialogs->folders = {"=", ""};
  commander->cmd_CopyFiles(); Settle();
  EXPECT_EQ(recorder.said, std::vector<std::string>{
                               "Trel: The source folder is identical to the destination folder!\nPlease select a "
                               "different folder."});
}

TEST_F(FileCommandsTest, MoveDeleteKillAndTheirRefreshes) {
  Select({"a.8bf", "b.txt"});
  window->settings().Change([](Preferences& p) { p.passivePaneFolder = 1; });  // no Select Folder dialog
  commander->cmd_MoveFiles(); Settle();
  EXPECT_FALSE(left.Exists("a.8bf"));
  EXPECT_EQ(right.Read("a.8bf"), "left a.8bf");
  EXPECT_EQ(window->pane(0)->model()->FindText("a.8bf"), -1);
  EXPECT_NE(window->pane(1)->model()->FindText("b.txt"), -1);

  // Kill asks first; No keeps the file.
  Select({"c.afs"});
  recorder.answers = {MsgResult::No};
  commander->cmd_Kill(); Settle();
  EXPECT_TRUE(left.Exists("c.afs"));
  EXPECT_EQ(recorder.said.back(),
            "Kill: The file(s) will be erased and won't be put in the trash can.\nProceed anyway?");
  commander->cmd_Kill(); Settle();
  EXPECT_FALSE(left.Exists("c.afs"));

  // Delete goes to the trash, with no question of its own.
  window->Switchit(1);
  Select({"b.txt"}, 1);
  recorder.said.clear();
  commander->cmd_DeleteFiles();
  EXPECT_FALSE(right.Exists("b.txt"));
  EXPECT_TRUE(recorder.said.empty()) << Said();
}

TEST_F(FileCommandsTest, FolderCommandsRenameCreateMoveAndKill) {
  FilePane* p = window->pane(0);
  dialogs->inputs = {QString("Fresh Folder")};
  commander->cmd_MakeDir();
  EXPECT_EQ(dialogs->inputAsked.back(), "Enter name for new folder: New");
  EXPECT_TRUE(fs::is_directory(left.file("Fresh Folder")));
  EXPECT_EQ(p->SelectedTexts(), QStringList{" Fresh Folder"});

  dialogs->inputs = {QString("Renamed")};
  commander->mnuRenameFolder_Click();
  EXPECT_EQ(dialogs->inputAsked.back().toStdString(), "Rename folder: " + left.file("Fresh Folder"));
  EXPECT_TRUE(fs::is_directory(left.file("Renamed")));

  // A folder can't move into itself; the passive pane stands inside it.
  fs::create_directories(left.file("Renamed/inner"));
  left.Write("Renamed/inner/deep.txt", "x");
  Open(1, left.file("Renamed/inner"));
  Select({" Renamed"});
  recorder.said.clear();
  commander->cmd_MoveDir();
  ASSERT_EQ(recorder.said.size(), 1u);
  EXPECT_EQ(recorder.said[0].rfind("Trel: A folder can't be moved into itself", 0), 0u) << Said();
  EXPECT_TRUE(left.Exists("Renamed/inner/deep.txt"));

  Open(1, right.path());
  Select({" Renamed"});
  commander->cmd_MoveDir();
  EXPECT_NE(Said().find("Move " + left.file("Renamed") + "  to  " + right.path() + "  ?"), std::string::npos);
  EXPECT_TRUE(right.Exists("Renamed/inner/deep.txt"));
  EXPECT_NE(p->model()->FindText(" sub"), -1);

  // Killing the folder a pane stands in moves that pane up first.
  Open(1, left.file("sub"));
  left.Write("sub/x.txt", "x");
  Select({" sub"});
  commander->cmd_KillDir(); Settle();
  EXPECT_FALSE(fs::exists(left.file("sub")));
  EXPECT_EQ(window->pane(1)->folder(), left.path());
  EXPECT_EQ(p->model()->FindText(" sub"), -1);
}

TEST_F(FileCommandsTest, RenameOneInPlaceOrManyByExtension) {
  FilePane* p = window->pane(0);
  Select({"a.8bf", "b.txt"});
  dialogs->inputs = {QString("bak")};
  commander->cmd_RenameFiles();
  EXPECT_EQ(dialogs->inputAsked.back(), "Rename File Extension: 8bf");
  EXPECT_TRUE(left.Exists("a.bak"));
  EXPECT_TRUE(left.Exists("b.bak"));
  // One file in the list: the edit is in place and ends in AfterLabelEdit.
  Select({"c.afs"});
  commander->cmd_RenameFiles();
  commander->ListView1_AfterLabelEdit(0, "c.afs", "c renamed.afs");
  EXPECT_TRUE(left.Exists("c renamed.afs"));
  EXPECT_EQ(p->SelectedTexts(), QStringList{"c renamed.afs"});
  // An existing name is never replaced.
  commander->ListView1_AfterLabelEdit(0, "a.bak", "b.bak");
  EXPECT_EQ(left.Read("b.bak"), "left b.txt");
  EXPECT_EQ(recorder.said.size(), 1u);
  // In Classic mode the input box asks.
  p->SetViewMode(FilePane::kClassic);
  ASSERT_TRUE(p->SelectInFile1("a.bak"));
  dialogs->inputs = {QString("a.8bf")};
  commander->cmd_RenameFiles();
  EXPECT_EQ(dialogs->inputAsked.back(), "Rename File: a.bak");
  EXPECT_TRUE(left.Exists("a.8bf"));
}

TEST_F(FileCommandsTest, ANameWithASeparatorIsRefusedAndTheReturnOfAnInPlaceRenameOpensNothing) {
  FilePane* p = window->pane(0);
  commander->ListView1_AfterLabelEdit(0, "b.txt", "sub/b.txt");
  EXPECT_TRUE(left.Exists("b.txt"));
  EXPECT_FALSE(left.Exists("sub/b.txt"));
  EXPECT_EQ(recorder.said, std::vector<std::string>{
                               "Trel: \"sub/b.txt\" can't be a name: a file or folder name can't contain \"/\"."});
  p->SetViewMode(FilePane::kClassic);
  ASSERT_TRUE(p->SelectInFile1("b.txt"));
  dialogs->inputs = {QString("sub/x.txt")};
  commander->cmd_RenameFiles();
  EXPECT_TRUE(left.Exists("b.txt"));
  EXPECT_NE(Said().find("can't contain \"/\""), std::string::npos);
  p->SetViewMode(FileListView::kDetails);

  // Shift+F6 opens the edit box; its Return renames, and the list never sees it.
  std::vector<QString> opened;
  window->SetShellOpener([&](const QString& path) {
    opened.push_back(path);
    return true;
  });
  window->show();
  QAbstractItemView* list = p->listView()->current();
  Select({"b.txt"});
  list->setFocus();
  commander->cmd_RenameFiles();
  QLineEdit* edit = list->findChild<QLineEdit*>();
  ASSERT_NE(edit, nullptr);
  edit->selectAll();
  QTest::keyClicks(edit, "notes.txt");
  QTest::keyClick(edit, Qt::Key_Return);
  QTest::qWait(50);
  EXPECT_TRUE(left.Exists("notes.txt"));
  EXPECT_FALSE(left.Exists("b.txt"));
  EXPECT_TRUE(opened.empty()) << opened.front().toStdString();
  // A Return in the list itself still opens.
  Select({"notes.txt"});
  QTest::keyClick(list, Qt::Key_Return);
  ASSERT_EQ(opened.size(), 1u);
  EXPECT_EQ(opened.front().toStdString(), left.file("notes.txt"));
}

TEST_F(FileCommandsTest, FoldersWhoseNamesDifferInCaseAreTwoFolders) {
  fs::create_directories(left.file("x/Plugins"));
  fs::create_directories(left.file("x/plugins"));
  left.Write("x/Plugins/a.8bf", "upper");
  Open(0, left.file("x/Plugins"));
  Open(1, left.file("x/plugins"));
  window->settings().Change([](Preferences& p) { p.passivePaneFolder = 1; });
  Select({"a.8bf"});
  commander->cmd_CopyFiles(); Settle();
  EXPECT_TRUE(recorder.said.empty()) << Said();
  EXPECT_EQ(left.Read("x/plugins/a.8bf"), "upper");
  EXPECT_NE(window->pane(1)->model()->FindText("a.8bf"), -1);
  // One folder under two spellings still is one.
  Open(1, left.file("x/plugins/../Plugins/"));
  commander->cmd_CopyFiles(); Settle();
  EXPECT_NE(Said().find("The source folder is identical to the destination folder!"), std::string::npos);
}

TEST_F(FileCommandsTest, AShownFolderChangedByAnotherProgramShowsTheChangeAndKeepsTheSelection) {
  FilePane* p = window->pane(0);
  Select({"b.txt"});
  left.Write("from outside.txt", "x");
  fs::remove(left.file("c.afs"));
  QTRY_VERIFY_WITH_TIMEOUT(p->model()->FindText("from outside.txt") != -1, 5000);
  EXPECT_EQ(p->model()->FindText("c.afs"), -1);
  EXPECT_EQ(p->SelectedTexts(), QStringList{"b.txt"});
  // The pane follows its folder: the old one is no longer watched.
  Open(0, right.path());
  left.Write("later.txt", "x");
  right.Write("here.txt", "x");
  QTRY_VERIFY_WITH_TIMEOUT(p->model()->FindText("here.txt") != -1, 5000);
  EXPECT_EQ(p->model()->FindText("later.txt"), -1);
}

// While a job runs the panes don't watch their folders; what changed in the
// meantime shows once the watch resumes, and the watch is back for later changes.
TEST_F(FileCommandsTest, WhatChangedWhileAPaneRestedItsWatchShowsWhenItResumes) {
  FilePane* p = window->pane(0);
  p->PauseWatching(true);
  left.Write("while resting.txt", "x");
  p->PauseWatching(false);
  QTRY_VERIFY_WITH_TIMEOUT(p->model()->FindText("while resting.txt") != -1, 5000);
  left.Write("after.txt", "x");
  QTRY_VERIFY_WITH_TIMEOUT(p->model()->FindText("after.txt") != -1, 5000);
}

TEST_F(FileCommandsTest, ReverseNameOrderKeepsTheParentAndFoldersOnTopAndTypingFindsFolders) {
  FilePane* p = window->pane(0);
  fs::create_directory(left.file("zeta"));
  p->Refresh(true);
  auto texts = [&] {
    QStringList all;
    for (int row = 0; row < p->model()->rowCount(); ++row) all << p->model()->item(row).text;
    return all;
  };
  p->ListView1_ColumnClick(0);
  const QStringList first = texts();
  p->ListView1_ColumnClick(0);
  const QStringList second = texts();
  const QStringList up{" ..", " sub", " zeta", "a.8bf", "b.txt", "c.afs"};
  const QStringList down{" ..", " zeta", " sub", "c.afs", "b.txt", "a.8bf"};
  EXPECT_TRUE((first == up && second == down) || (first == down && second == up))
      << first.join('|').toStdString() << " then " << second.join('|').toStdString();

  // Typing a name reaches a folder as it is shown, without its blank.
  window->show();
  QAbstractItemView* list = p->listView()->current();
  list->setFocus();
  Select({"c.afs"});
  QTest::keyClicks(list, "su");
  EXPECT_EQ(p->model()->item(list->currentIndex().row()).text, " sub");
  QTest::qWait(QApplication::keyboardInputInterval() + 50);
  QTest::keyClicks(list, "b");
  EXPECT_EQ(p->model()->item(list->currentIndex().row()).text, "b.txt");
}

TEST_F(FileCommandsTest, ADropFromTheOtherPaneAsksForTheFolderAsTheMoveCommandDoes) {
  window->Switchit(0);
  dialogs->folders = {""};  // cancelled: nothing moves
  commander->DropFiles(1, {QString::fromStdString(left.file("a.8bf"))}, "", -2); Settle();
  ASSERT_EQ(dialogs->folderEntries.size(), 1u);
  EXPECT_EQ(dialogs->folderEntries.back().value(0).toStdString(), right.path());
  EXPECT_TRUE(left.Exists("a.8bf"));
  dialogs->folders = {"="};
  commander->DropFiles(1, {QString::fromStdString(left.file("a.8bf"))}, "", -2); Settle();
  EXPECT_EQ(right.Read("a.8bf"), "left a.8bf");
  EXPECT_FALSE(left.Exists("a.8bf"));
  // Onto a folder row the target is named: no question.
  commander->DropFiles(1, {QString::fromStdString(left.file("b.txt"))}, right.path(), -2); Settle();
  EXPECT_EQ(dialogs->folderEntries.size(), 2u);
  EXPECT_TRUE(right.Exists("b.txt"));
}

TEST_F(FileCommandsTest, EnableDisableTogglesTheSelectionAndRefusesOtherTypes) {
  Select({"a.8bf"});
  commander->Command1_Click(3);
  EXPECT_TRUE(left.Exists("a._bf"));
  EXPECT_EQ(window->pane(0)->SelectedTexts(), QStringList{"a._bf"});  // still on the same file
  window->command("mnuEnable")->trigger();
  EXPECT_TRUE(left.Exists("a.8bf"));
  left.Write("pack.zip", "PK");
  window->pane(0)->Refresh();
  Select({"pack.zip"});
  const size_t before = recorder.said.size();
  commander->cmd_EnableDisable();
  // Said once, not once by the rule and again by the command.
  ASSERT_EQ(recorder.said.size(), before + 1);
  EXPECT_EQ(recorder.said.back(), "Trel: Enabling and disabling of this file type is not possible.");
}

TEST_F(FileCommandsTest, SelectAllToggleAndInsertLeaveThePreviewButtonAlone) {
  FilePane* p = window->pane(0);
  auto* preview = window->findChild<QAction*>("tbPreview");
  preview->setChecked(true);
  int previewSignals = 0;
  QObject::connect(preview, &QAction::toggled, [&] { ++previewSignals; });
  window->command("mnuSelectAll")->trigger();
  EXPECT_EQ(p->SelectedTexts().size(), p->model()->rowCount());
  window->command("mnuToggleselect")->trigger();
  EXPECT_TRUE(p->SelectedTexts().isEmpty());
  EXPECT_TRUE(preview->isChecked());
  EXPECT_EQ(previewSignals, 0);
  // Insert flips the current row and moves down.
  p->listView()->selection()->setCurrentIndex(p->model()->index(1, 0), QItemSelectionModel::NoUpdate);
  commander->ToggleCurrentAndMoveDown();
  commander->ToggleCurrentAndMoveDown();
  EXPECT_EQ(p->SelectedTexts(), (QStringList{p->model()->item(1).text, p->model()->item(2).text}));
  EXPECT_EQ(p->listView()->selection()->currentIndex().row(), 3);
}

TEST_F(FileCommandsTest, TheContextMenuEnablesPluginCommandsByTheFirstFile) {
  window->SetCommandAvailable("mnuPlugInfo", true);
  window->SetCommandAvailable("mnuEnable", true);
  for (const char* name : {"a.8bf", "b.txt", "c.afs"}) {
    Select({name});
    commander->SwitchCommandItems(0);
    EXPECT_TRUE(window->command("mnuPlugInfo")->isEnabled()) << name;
  }
  left.Write("pic.png", "x");
  window->pane(0)->Refresh();
  Select({"pic.png"});
  commander->SwitchCommandItems(0);
  EXPECT_FALSE(window->command("mnuPlugInfo")->isEnabled());
  EXPECT_FALSE(window->command("mnuEnable")->isEnabled());
}

TEST_F(FileCommandsTest, DropsMoveBetweenPanesOntoFoldersAndFromOtherPrograms) {
  FilePane* target = window->pane(1);
  // What a drag out of a pane carries: the files as URLs.
  Select({"a.8bf", " sub"});
  std::unique_ptr<QMimeData> carried(window->pane(0)->model()->mimeData(
      window->pane(0)->listView()->selection()->selectedRows(0)));
  ASSERT_TRUE(carried);
  QStringList urls;
  for (const QUrl& url : carried->urls()) urls << url.toLocalFile();
  urls.sort();
  EXPECT_EQ(urls, (QStringList{QString::fromStdString(left.file("a.8bf")), QString::fromStdString(left.file("sub"))}));

  // A drop on the other pane's list from a widget that isn't the list's own
  // (the other pane, or another program) moves into its folder.
  emit target->listView()->filesDropped({QString::fromStdString(left.file("a.8bf"))}, -1, nullptr);
  QCoreApplication::processEvents();  // a drop is handled once the drag has ended
  Settle();
  EXPECT_FALSE(left.Exists("a.8bf"));
  EXPECT_EQ(right.Read("a.8bf"), "left a.8bf");
  EXPECT_NE(target->model()->FindText("a.8bf"), -1);

  // Onto a folder row: into that folder; a folder dropped into itself is refused.
  commander->DropFiles(0, {QString::fromStdString(left.file("b.txt"))}, left.file("sub"), 0); Settle();
  EXPECT_TRUE(left.Exists("sub/b.txt"));
  recorder.said.clear();
  commander->DropFiles(0, {QString::fromStdString(left.file("sub"))}, left.file("sub"), 0); Settle();
  EXPECT_TRUE(fs::is_directory(left.file("sub")));
  ASSERT_EQ(recorder.said.size(), 1u);
  // A drop from the desktop's file manager reaches the pane through its list.
  left.Write("desk.txt", "from the desktop");
  QMimeData desktop;
  desktop.setUrls({QUrl::fromLocalFile(QString::fromStdString(left.file("desk.txt")))});
  QWidget* viewport = target->listView()->details()->viewport();
  QDragEnterEvent enter(QPoint(5, 5), Qt::MoveAction | Qt::CopyAction, &desktop, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(viewport, &enter);
  EXPECT_TRUE(enter.isAccepted());
  QDropEvent drop(QPointF(5, 5), Qt::MoveAction | Qt::CopyAction, &desktop, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(viewport, &drop);
  QCoreApplication::processEvents();
  Settle();
  EXPECT_EQ(right.Read("desk.txt"), "from the desktop");
  // The classic list takes drops too.
  left.Write("classic.txt", "x");
  target->SetViewMode(FilePane::kClassic);
  desktop.setUrls({QUrl::fromLocalFile(QString::fromStdString(left.file("classic.txt")))});
  QDragEnterEvent classicEnter(QPoint(5, 5), Qt::MoveAction, &desktop, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(target->file1()->viewport(), &classicEnter);
  QDropEvent classicDrop(QPointF(5, 5), Qt::MoveAction, &desktop, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(target->file1()->viewport(), &classicDrop);
  QCoreApplication::processEvents();
  Settle();
  EXPECT_TRUE(right.Exists("classic.txt"));
  target->SetViewMode(FileListView::kDetails);
  // A folder from elsewhere moves in whole.
  commander->DropFiles(1, {QString::fromStdString(left.file("sub"))}, "", 0); Settle();
  EXPECT_TRUE(right.Exists("sub/b.txt"));
}

TEST_F(FileCommandsTest, CommanderKeysReachTheCommands) {
  window->show();
  window->activateWindow();
  window->settings().Change([](Preferences& p) { p.passivePaneFolder = 1; });
  FilePane* p = window->pane(0);
  p->FocusList();
  Select({"b.txt"});
  QWidget* list = p->listView()->current();
  QTest::keyClick(list, Qt::Key_F5);
  Settle();
  EXPECT_EQ(right.Read("b.txt"), "left b.txt");
  Select({"b.txt"});
  dialogs->inputs = {QString("Keyed")};
  QTest::keyClick(list, Qt::Key_F7);
  EXPECT_TRUE(fs::is_directory(left.file("Keyed")));
  Select({"c.afs"});
  QTest::keyClick(list, Qt::Key_F6);
  Settle();
  EXPECT_TRUE(right.Exists("c.afs"));
  Select({"a.8bf"});
  QTest::keyClick(list, Qt::Key_F8);
  EXPECT_FALSE(left.Exists("a.8bf"));
  QTest::keyClick(list, Qt::Key_Tab);
  EXPECT_EQ(window->ActivePane(), 1);
  QTest::keyClick(window->pane(1)->listView()->current(), Qt::Key_Tab);
  EXPECT_EQ(window->ActivePane(), 0);
  // Esc raises the flag long work polls.
  window->EscapeFlag() = false;
  QTest::keyClick(list, Qt::Key_Escape);
  EXPECT_TRUE(window->EscapeFlag());
}

TEST_F(FileCommandsTest, TheColourBarRunsFromBlueToRedAndIgnoresWhatIsOutOfRange) {
  StatusArea* area = window->statusArea();
  auto* label3 = window->findChild<QLabel*>("Label3");
  auto* label4 = window->findChild<QLabel*>("Label4");
  window->Progressbar(0);
  EXPECT_EQ(area->barLength(), 0);
  window->Progressbar(100);
  EXPECT_EQ(area->barLength(), area->width());
  EXPECT_EQ(area->barColour(), QColor(250, 0, 5));
  window->Progressbar(101);
  EXPECT_EQ(area->percent(), 100);  // nothing drawn, nothing changed
  window->Progressbar(40);
  EXPECT_EQ(area->barColour(), QColor(100, 0, 155));
  window->StatusDisplay(0, 10, 0);
  EXPECT_EQ(area->percent(), 40);
  const double now = QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
  window->StatusDisplay(1, 4, now - 2);
  EXPECT_EQ(label3->text(), "1 of 4");
  EXPECT_EQ(label4->text(), "7 sec.");
  EXPECT_EQ(area->percent(), 25);
  window->StatusDisplay(4, 4, now);
  EXPECT_EQ(label4->text(), "1 sec.");  // the last step never shows 0
  window->StatusDisplayClear();
  EXPECT_TRUE(label3->text().isEmpty());
  EXPECT_EQ(area->barLength(), 0);
}


TEST_F(FileCommandsTest, ZipAddListTestAndUnzipWithAwkwardNames) {
  ZipCommander* zip = ZipCommander::Of(*window);
  std::vector<std::pair<QString, QString>> shown;
  zip->SetOutputSink([&](const QString& title, const QString& text) { shown.emplace_back(title, text); });
  left.Write("with blank.afs", "blank");
  left.Write("-dash.txt", "dash");
  left.Write("Größe.pff", "umlaut");
  window->pane(0)->Refresh();
  Select({"with blank.afs", "-dash.txt", "Größe.pff"});
  dialogs->inputs = {QString("my pack.zip")};
  window->command("mnuAddtoZip")->trigger();
  ASSERT_TRUE(left.Exists("my pack.zip")) << Said();
  EXPECT_EQ(window->pane(0)->maskEntry(), 5);  // the zip files show
  QString listing;
  ASSERT_EQ(ZipCommander::Run("unzip", {"-Z1", QString::fromStdString(left.file("my pack.zip"))}, {}, &listing), 0);
  QStringList names = listing.split('\n', Qt::SkipEmptyParts);
  names.sort();
  EXPECT_EQ(names, (QStringList{"-dash.txt", "Größe.pff", "with blank.afs"}));

  Select({"my pack.zip"});
  window->command("mnuViewZip")->trigger();
  window->command("mnuTestZip")->trigger();
  ASSERT_EQ(shown.size(), 2u);
  EXPECT_EQ(shown[0].first, "View Zip");
  EXPECT_TRUE(shown[0].second.contains("with blank.afs"));
  EXPECT_EQ(shown[1].first, "Test Zip");
  EXPECT_TRUE(shown[1].second.contains("OK")) << shown[1].second.toStdString();

  // Unzip into the passive pane asks before an existing file.
  right.Write("with blank.afs", "keep me");
  dialogs->overwrite = {1};
  window->command("mnuUnzip")->trigger();
  ASSERT_EQ(dialogs->overwriteAsked.size(), 1u);
  // The question shows the entry, with the entry's size, not the archive's.
  EXPECT_TRUE(dialogs->overwriteAsked[0].contains(
      " | " + QString::fromStdString(left.file("my pack.zip")) + ": with blank.afs  (5 bytes, "))
      << dialogs->overwriteAsked[0].toStdString();
  EXPECT_TRUE(dialogs->overwriteAsked[0].endsWith(") ?"));
  EXPECT_EQ(right.Read("with blank.afs"), "keep me");
  EXPECT_EQ(right.Read("-dash.txt"), "dash");
  EXPECT_NE(window->pane(1)->model()->FindText("Größe.pff"), -1);

  // Unzip and Run: a fresh folder, opened in the passive pane.
  window->command("mnuUnzipInstall")->trigger();
  EXPECT_EQ(window->pane(1)->folder(), right.file("my pack/"));
  EXPECT_EQ(right.Read("my pack/with blank.afs"), "blank");

  // Repair writes a new archive beside the old one.
  window->command("mnuRepairZip")->trigger();
  EXPECT_TRUE(left.Exists("my pack_repaired.zip")) << shown.back().second.toStdString();

  // Test Zip on something that isn't a zip says nothing.
  shown.clear();
  Select({"b.txt"});
  window->command("mnuTestZip")->trigger();
  EXPECT_TRUE(shown.empty());
}

TEST_F(FileCommandsTest, TheConvertDialogEnablesByFormatAndWritesIntoThePassivePane) {
  ConvertDialog dialog;
  auto* settings = dialog.findChild<QPushButton*>("Command3");
  auto* mac = dialog.findChild<QCheckBox*>("Check3");
  for (OutputFormat format : kOutputFormats) {
    dialog.SetFormat(format);
    EXPECT_EQ(dialog.format(), format);
    const bool plugin = format == OutputFormat::Plugin8bf || format == OutputFormat::PremierePlugin ||
                        format == OutputFormat::TransitionPlugin;
    EXPECT_EQ(settings->isEnabled(), plugin) << static_cast<int>(format);
    EXPECT_EQ(mac->isEnabled(), !plugin) << static_cast<int>(format);
  }

  // The window's dialog converts the selection into the passive pane's folder.
  fs::copy_file(TREL_SAMPLES "WarmTone.afs", left.file("Warm.afs"));
  window->pane(0)->Refresh();
  Select({"Warm.afs"});
  auto* windowDialog = window->findChild<ConvertDialog*>("Convert");
  ASSERT_NE(windowDialog, nullptr);
  windowDialog->SetFormat(OutputFormat::TXT);
  dialogs->folders = {"="};
  windowDialog->accept();
  std::string written;
  for (const auto& entry : fs::directory_iterator(right.path())) written += entry.path().filename().string() + " ";
  EXPECT_EQ(written, "Warm.txt ") << Said();
}


// Esc set while the second conflict is asked ends the copy before the third
// file; nothing half-written is left behind.
class EscapingDialogs : public ScriptedDialogs {
 public:
  explicit EscapingDialogs(MainWindow& w) : window(w) {}
  int Overwrite(const QString& target, const QString& source) override {
    if (++asked == 2) window.EscapeFlag() = true;
    return ScriptedDialogs::Overwrite(target, source);
  }
  MainWindow& window;
  int asked = 0;
};

TEST_F(FileCommandsTest, EscStopsACopyBetweenFiles) {
  auto owned = std::make_unique<EscapingDialogs>(*window);
  owned->overwrite = {0, 0, 0};
  owned->folders = {"="};
  EscapingDialogs* escaping = owned.get();
  commander->SetDialogs(std::move(owned));
  for (const char* name : {"a.8bf", "b.txt", "c.afs"}) right.Write(name, "old");
  Select({"a.8bf", "b.txt", "c.afs"});
  commander->cmd_CopyFiles(); Settle();
  EXPECT_EQ(escaping->asked, 2);
  EXPECT_EQ(right.Read("c.afs"), "old");
  for (const char* name : {"a.8bf", "b.txt"}) {
    const std::string now = right.Read(name);
    EXPECT_TRUE(now == "old" || now == std::string("left ") + name) << now;
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(right.path()), fs::directory_iterator()), 3);
}

// A copy returns to the event loop at once and runs as a job: the window
// answers while it runs, takes no second command, and a dialog of the job
// still takes its keys.
TEST_F(FileCommandsTest, ACopyRunsAsAJobWhileTheWindowKeepsItsEventLoop) {
  window->show();
  window->settings().Change([](Preferences& p) { p.passivePaneFolder = 1; });
  for (int i = 0; i < 200; ++i) left.Write("many" + std::to_string(i) + ".txt", std::string(1000, 'm'));
  window->pane(0)->Refresh(true);
  commander->mnuSelectAll_Click();
  QSignalSpy ended(commander, &FileCommander::jobFinished);
  commander->cmd_CopyFiles();
  ASSERT_TRUE(commander->busy());  // back before the copy has ended
  // Not re-entered: the command refuses while its job runs, and the window's
  // keys don't reach the lists.
  const size_t asked = dialogs->folderEntries.size();
  commander->cmd_CopyFiles();
  commander->cmd_MoveFiles();
  EXPECT_EQ(dialogs->folderEntries.size(), asked);
  QTest::keyClick(window->pane(0)->listView()->current(), Qt::Key_F7);  // Create Folder's key
  EXPECT_TRUE(dialogs->inputAsked.empty());
  QLineEdit dialogBox;  // a window of its own, as the Overwrite question is
  dialogBox.show();
  QTest::keyClicks(&dialogBox, "ok");
  EXPECT_EQ(dialogBox.text(), "ok");
  ASSERT_TRUE(ended.wait(20000));
  EXPECT_EQ(ended.count(), 1);
  EXPECT_FALSE(commander->busy());
  EXPECT_EQ(right.Read("many199.txt"), std::string(1000, 'm'));
  EXPECT_NE(window->pane(1)->model()->FindText("many0.txt"), -1);  // shown once done
  EXPECT_TRUE(recorder.said.empty()) << Said();
}

// A window closed while its copy runs ends the copy: no crash, and only
// whole files in the target.
TEST_F(FileCommandsTest, AWindowClosedDuringACopyLeavesOnlyWholeFiles) {
  window->settings().Change([](Preferences& p) { p.passivePaneFolder = 1; });
  const std::string bytes(1 << 20, 'w');
  for (int i = 0; i < 40; ++i) left.Write("big" + std::to_string(i), bytes);
  window->pane(0)->Refresh(true);
  commander->mnuSelectAll_Click();
  commander->cmd_CopyFiles();
  ASSERT_TRUE(commander->busy());
  QTest::qWait(1);
  window.reset();
  for (const auto& entry : fs::directory_iterator(right.path())) {
    const std::string name = entry.path().filename().string();
    EXPECT_NE(name.front(), '.') << name;  // no temporary copy
    if (name.rfind("big", 0) == 0) {
      EXPECT_EQ(fs::file_size(entry.path()), bytes.size()) << name;
    }
  }
}

}  // namespace
}  // namespace trel
