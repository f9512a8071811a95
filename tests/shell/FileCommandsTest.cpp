#include "FileCommandsFixture.h"

namespace trel {
namespace commander_test {
namespace {

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
               {"mnuMakeDir", true, false, false}, {"mnuEnable", true, true, false}, {"mnuKill2", true, true, false},
               {"mnuChangeCat", false, true, false}};
  window->SetCommandAvailable("mnuChangeCat", true);  // available, yet only the Plugin View turns it on
  FilePane* p = window->pane(0);
  for (int view : {1, 2, 3}) {
    p->SelectTab(view);
    window->Switchit(0);
    for (const Row& row : table) {
      const bool expected = view == 1 ? row.file : view == 2 ? row.plugin : row.ffl;
      EXPECT_EQ(window->command(row.command)->isEnabled(), expected) << row.command << " in view " << view;
    }
    EXPECT_EQ(window->findChild<QPushButton*>("Command1_4")->isEnabled(), view == 2) << view;
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
  dialogs->overwrite = {OverwriteButton::Overwrite, OverwriteButton::OverwriteAll};
  commander->cmd_CopyFiles(); Settle();
  EXPECT_EQ(dialogs->overwriteAsked.size(), 2u);
  for (const char* name : {"a.8bf", "b.txt", "c.afs"}) EXPECT_EQ(right.Read(name), std::string("left ") + name);
  EXPECT_EQ(dialogs->folderEntries.front().value(0).toStdString(), right.path());  // passive pane first
  // The label names the target and its size, then the source with " ?".
  EXPECT_TRUE(dialogs->overwriteAsked[0].startsWith(QString::fromStdString(right.file("a.8bf")) + "  (3 bytes, "));
  EXPECT_TRUE(dialogs->overwriteAsked[0].endsWith(") ?"));
  EXPECT_NE(window->pane(1)->model()->FindText("c.afs"), -1);  // the passive pane shows them

  // "Ignore", then "Cancel" on the last: the first is skipped, nothing after.
  for (const char* name : {"a.8bf", "b.txt", "c.afs"}) right.Write(name, "old");
  dialogs->overwriteAsked.clear();
  dialogs->overwrite = {OverwriteButton::Ignore, OverwriteButton::Overwrite, OverwriteButton::Cancel};
  commander->cmd_CopyFiles(); Settle();
  EXPECT_EQ(dialogs->overwriteAsked.size(), 3u);
  EXPECT_EQ(right.Read("a.8bf"), "old");
  EXPECT_EQ(right.Read("b.txt"), "left b.txt");
  EXPECT_EQ(right.Read("c.afs"), "old");

  // "Ignore All" skips every later conflict without asking; a new command asks again.
  right.Write("b.txt", "old");
  dialogs->overwriteAsked.clear();
  dialogs->folders = {"=", "="};
  dialogs->overwrite = {OverwriteButton::IgnoreAll, OverwriteButton::Cancel};
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
  // A name with a separator is refused, in place and in the box.
  recorder.said.clear();
  ASSERT_TRUE(p->SelectInFile1("a.8bf"));
  dialogs->inputs = {QString("sub/x.txt")};
  commander->cmd_RenameFiles();
  commander->ListView1_AfterLabelEdit(0, "a.8bf", "sub/x.txt");
  EXPECT_TRUE(left.Exists("a.8bf"));
  EXPECT_FALSE(left.Exists("sub/x.txt"));
  ASSERT_EQ(recorder.said.size(), 2u);
  for (const std::string& said : recorder.said)
    EXPECT_NE(said.find("\"sub/x.txt\" can't be a name: a file or folder name can't contain \"/\"."), std::string::npos);
}

// While a job runs the panes don't watch their folders; what changed in the
// meantime shows once the watch resumes.
TEST_F(FileCommandsTest, AShownFolderChangedByAnotherProgramShowsTheChangeAndKeepsTheSelection) {
  FilePane* p = window->pane(0);
  Select({"b.txt"});
  p->PauseWatching(true);
  left.Write("while resting.txt", "x");
  p->PauseWatching(false);
  QTRY_VERIFY_WITH_TIMEOUT(p->model()->FindText("while resting.txt") != -1, 5000);
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

}  // namespace
}  // namespace commander_test
}  // namespace trel
