#include "shell/FilePane.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>
#include <filesystem>

#include "settings/Preferences.h"
#include "shell/DirListBox.h"
#include "shell/FileListModel.h"
#include "shell/FileListView.h"
#include "shell/PaneRules.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;

class FilePaneTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir.Write("blur.8bf", std::string(2000, 'x'));
    dir.Write("wave.prm", std::string(999, 'x'));
    dir.Write("old.8b-", "x");
    dir.Write("clip.wmf", "x");
    dir.Write("empty.txt", "");
    std::filesystem::create_directory(dir.file("zeta"));
    std::filesystem::create_directory(dir.file("Alpha"));
    shared.prefs = &prefs;
    shared.columnSortAscending = {true, true, true};
  }

  // The texts of the list in its order.
  std::vector<QString> Texts(const FilePane& pane) const {
    std::vector<QString> texts;
    for (const LvItem& item : pane.model()->items()) texts.push_back(item.text);
    return texts;
  }
  const LvItem* Item(const FilePane& pane, const QString& text) const {
    const int row = pane.model()->FindText(text);
    return row < 0 ? nullptr : &pane.model()->item(row);
  }

  TempDir dir;
  Preferences prefs;
  PaneShared shared;
};

TEST_F(FilePaneTest, ListsFoldersFirstWithOneParentEntry) {
  FilePane pane(0, shared);
  pane.FillDirList(dir.path());
  const std::vector<QString> expected = {" ..",      " Alpha",   " zeta",     "blur.8bf",
                                         "clip.wmf", "empty.txt", "old.8b-", "wave.prm"};
  EXPECT_EQ(Texts(pane), expected);
  EXPECT_EQ(Item(pane, " ..")->icon, kIconParent);
  EXPECT_EQ(Item(pane, " zeta")->icon, kIconFolder);
  EXPECT_EQ(Item(pane, "blur.8bf")->icon, kIcon8bf);
  EXPECT_EQ(Item(pane, "clip.wmf")->icon, kIconFile);
  EXPECT_EQ(Item(pane, "empty.txt")->sizeText, "");
  EXPECT_EQ(Item(pane, "blur.8bf")->sizeText, "2,000");
  EXPECT_FALSE(Item(pane, "blur.8bf")->dateText.isEmpty());
  EXPECT_EQ(pane.folder(), dir.path());
}

TEST_F(FilePaneTest, TheRootHasNoParentEntry) {
  FilePane pane(0, shared);
  pane.FillDirList("/");
  ASSERT_GT(pane.model()->rowCount(), 0);
  EXPECT_EQ(pane.model()->FindText(" .."), -1);
}

TEST_F(FilePaneTest, APathThatIsNoFolderChangesNothing) {
  FilePane pane(0, shared);
  pane.FillDirList(dir.path());
  const int rows = pane.model()->rowCount();
  pane.FillDirList(dir.file("blur.8bf"));
  pane.FillDirList(dir.file("gone"));
  EXPECT_EQ(pane.model()->rowCount(), rows);
  EXPECT_EQ(pane.folder(), dir.path());
}

TEST_F(FilePaneTest, MaskEntriesAndTypedMasksFilterFilesNotFolders) {
  FilePane pane(0, shared);
  pane.FillDirList(dir.path());
  pane.Combo1_Click(1);
  EXPECT_EQ(Texts(pane), (std::vector<QString>{" ..", " Alpha", " zeta", "blur.8bf", "old.8b-", "wave.prm"}));
  EXPECT_EQ(pane.maskEntry(), 1);
  // A mask typed into the box, confirmed with Return.
  pane.maskBox()->setEditText("*.TXT;*.wmf");
  QTest::keyClick(pane.maskBox()->lineEdit(), Qt::Key_Return);
  EXPECT_EQ(Texts(pane), (std::vector<QString>{" ..", " Alpha", " zeta", "clip.wmf", "empty.txt"}));
  EXPECT_EQ(pane.maskEntry(), -1);
  EXPECT_EQ(pane.maskText(), "*.TXT;*.wmf");
  // Typing an entry's own text selects the entry.
  pane.maskBox()->setEditText(kMaskEntries[5]);
  pane.Combo1_KeyPress(13);
  EXPECT_EQ(pane.maskEntry(), 5);
}

TEST_F(FilePaneTest, SizesSortByValueAndADirectionFlipsPerClick) {
  FilePane pane(0, shared);
  pane.FillDirList(dir.path());
  pane.ListView1_ColumnClick(1);  // True becomes False: descending
  EXPECT_FALSE(shared.columnSortAscending[1]);
  std::vector<QString> texts = Texts(pane);
  EXPECT_EQ(texts[0], "blur.8bf");
  EXPECT_EQ(texts[1], "wave.prm");
  pane.ListView1_ColumnClick(1);
  texts = Texts(pane);
  const auto at = [&](const char* name) { return std::find(texts.begin(), texts.end(), name) - texts.begin(); };
  EXPECT_LT(at("empty.txt"), at("old.8b-"));
  EXPECT_LT(at("wave.prm"), at("blur.8bf"));
  EXPECT_EQ(pane.sortColumn(), 1);
}

TEST_F(FilePaneTest, SortDirectionsAreSharedByBothPanes) {
  FilePane left(0, shared), right(1, shared);
  left.FillDirList(dir.path());
  right.SetSortColumn(1);
  left.ListView1_ColumnClick(1);  // the left pane makes Size descending
  right.FillDirList(dir.path());
  EXPECT_EQ(Texts(right).front(), "blur.8bf");
}

TEST_F(FilePaneTest, FolderBoxTakesTheFoldersOutOfTheList) {
  FilePane pane(0, shared);
  pane.FillDirList(dir.path());
  pane.Image5_Click();
  EXPECT_TRUE(pane.folderBoxShown());
  EXPECT_FALSE(pane.dirBox()->isHidden());
  EXPECT_EQ(pane.model()->FindText(" zeta"), -1);
  EXPECT_NE(pane.model()->FindText(" .."), -1);
  pane.FillDirList(dir.path());
  EXPECT_EQ(pane.model()->FindText(" zeta"), -1);
  pane.Image5_Click();
  EXPECT_NE(pane.model()->FindText(" zeta"), -1);
}

TEST_F(FilePaneTest, ViewModesAndClassic) {
  FilePane pane(0, shared);
  pane.FillDirList(dir.path());
  for (int mode = 0; mode < 4; ++mode) {
    pane.SetViewMode(mode);
    EXPECT_EQ(pane.DetermineFileViewMode(), mode);
    EXPECT_TRUE(pane.file1()->isHidden());
  }
  pane.SetViewMode(FilePane::kClassic);
  EXPECT_EQ(pane.DetermineFileViewMode(), FilePane::kClassic);
  EXPECT_TRUE(pane.listView()->isHidden());
  EXPECT_FALSE(pane.dirBox()->isHidden());
  EXPECT_EQ(pane.file1()->model()->rowCount(), 5);
}

TEST_F(FilePaneTest, BackspaceGoesUpAndSelectsTheFolderOfOrigin) {
  FilePane pane(0, shared);
  pane.FillDirList(dir.file("zeta"));
  QSignalSpy changed(&pane, &FilePane::folderChanged);
  pane.ListView1_KeyDown(Qt::Key_Backspace, Qt::NoModifier);
  EXPECT_EQ(pane.folder(), dir.path());
  const QList<int> rows = pane.listView()->SelectedRows();
  ASSERT_EQ(rows.size(), 1);
  EXPECT_EQ(pane.model()->item(rows.first()).text, " zeta");
  EXPECT_EQ(changed.count(), 1);
}

TEST_F(FilePaneTest, ReturnEntersAFolderOrOpensAFile) {
  FilePane pane(0, shared);
  pane.FillDirList(dir.path());
  QSignalSpy opened(&pane, &FilePane::fileDblClicked);
  QSignalSpy information(&pane, &FilePane::fileInformationRequested);
  pane.listView()->SelectOnly(pane.model()->FindText("wave.prm"));
  pane.ListView1_KeyDown(Qt::Key_Return, Qt::NoModifier);
  ASSERT_EQ(opened.count(), 1);
  EXPECT_EQ(pane.File1Current(), "wave.prm");
  pane.ListView1_KeyDown(Qt::Key_Return, Qt::AltModifier);
  EXPECT_EQ(information.count(), 1);
  pane.listView()->SelectOnly(pane.model()->FindText(" Alpha"));
  pane.ListView1_KeyDown(Qt::Key_Return, Qt::NoModifier);
  EXPECT_EQ(pane.folder(), dir.file("Alpha/"));
  EXPECT_EQ(opened.count(), 1);
}

TEST_F(FilePaneTest, KeysReachTheListThroughItsView) {
  FilePane pane(0, shared);
  pane.FillDirList(dir.file("Alpha"));
  pane.listView()->SelectOnly(0);
  QTest::keyClick(pane.listView()->details(), Qt::Key_Backspace);
  EXPECT_EQ(pane.folder(), dir.path());
}

TEST_F(FilePaneTest, DoubleClickOnTheParentEntryGoesUp) {
  FilePane pane(0, shared);
  pane.FillDirList(dir.file("Alpha"));
  pane.ListView1_DblClick(pane.model()->FindText(" .."));
  EXPECT_EQ(pane.folder(), dir.path());
}

TEST_F(FilePaneTest, SelectionSizeInWholeKilobytes) {
  FilePane pane(0, shared);
  pane.FillDirList(dir.path());
  pane.SetViewMode(FilePane::kClassic);
  pane.show();
  pane.file1()->selectAll();
  // 2000 bytes round to 2 K, 999 to 1 K, three files of one byte or none to 0.
  EXPECT_EQ(pane.selectionK(), 3);
  EXPECT_EQ(pane.caption()->text(), "3 K");
}

TEST_F(FilePaneTest, AFolderThatVanishesListsNothingAndDoesNotCrash) {
  FilePane pane(0, shared);
  pane.FillDirList(dir.file("zeta"));
  std::filesystem::remove(dir.file("zeta"));
  pane.Refresh(true);
  EXPECT_EQ(pane.folder(), dir.file("zeta/"));
  pane.ListView1_KeyDown(Qt::Key_Backspace, Qt::NoModifier);
  EXPECT_EQ(pane.folder(), dir.path());
}

TEST_F(FilePaneTest, AnUnreadableFolderShowsOnlyTheParentEntry) {
  if (::geteuid() == 0) GTEST_SKIP() << "root reads every folder";
  std::filesystem::create_directory(dir.file("locked"));
  dir.Write("locked/inside.8bf", "x");
  std::filesystem::permissions(dir.file("locked"), std::filesystem::perms::none);
  FilePane pane(0, shared);
  pane.FillDirList(dir.file("locked"));
  EXPECT_EQ(Texts(pane), std::vector<QString>{" .."});
  std::filesystem::permissions(dir.file("locked"), std::filesystem::perms::owner_all);
}

}  // namespace
}  // namespace trel

namespace trel {
namespace {

TEST_F(FilePaneTest, ClassicListKeysAndTheDriveBox) {
  FilePane pane(0, shared);
  pane.FillDirList(dir.file("Alpha"));
  pane.SetViewMode(FilePane::kClassic);
  QSignalSpy information(&pane, &FilePane::fileInformationRequested);
  pane.File1_KeyDown(Qt::Key_Return, Qt::AltModifier);
  EXPECT_EQ(information.count(), 1);
  pane.File1_KeyDown(Qt::Key_Backspace, Qt::NoModifier);
  EXPECT_EQ(pane.folder(), dir.path());
  const int root = pane.driveBox()->findData("/");
  ASSERT_GE(root, 0);
  pane.SetViewMode(3);
  pane.Drive1_Change(root);
  EXPECT_EQ(pane.folder(), "/");
  EXPECT_EQ(pane.model()->FindText(" .."), -1);
}

}  // namespace
}  // namespace trel

namespace trel {
namespace {

TEST_F(FilePaneTest, ALongFolderCaptionShowsItsEnd) {
  FilePane pane(0, shared);
  pane.resize(120, 300);
  pane.show();
  std::string deep = dir.path();
  for (const char* part : {"a-rather-long-folder-name", "and-another-one", "end"}) {
    deep += std::string(part) + "/";
    std::filesystem::create_directory(deep);
  }
  pane.FillDirList(deep);
  pane.DrawDirLabel();
  EXPECT_EQ(pane.caption()->text().toStdString(), deep);
  EXPECT_TRUE(pane.caption()->alignment() & Qt::AlignRight);
  pane.resize(4000, 300);
  QApplication::processEvents();
  pane.DrawDirLabel();
  EXPECT_TRUE(pane.caption()->alignment() & Qt::AlignLeft);
}

}  // namespace
}  // namespace trel
