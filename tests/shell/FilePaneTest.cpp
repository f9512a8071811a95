#include "shell/pane/FilePane.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QSignalSpy>
#include <QTest>
#include <QTreeView>
#include <algorithm>
#include <filesystem>

#include "settings/Preferences.h"
#include "shell/pane/DirListBox.h"
#include "shell/pane/FileListModel.h"
#include "shell/pane/FileListView.h"
#include "shell/pane/PaneRules.h"
#include "support/OrdinaryUser.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::RunAsOrdinaryUser;
using test::TempDir;
using Texts = std::vector<QString>;

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
  }

  // The texts of the list in its order.
  static Texts TextsOf(const FilePane& pane) {
    Texts texts;
    for (const LvItem& item : pane.model()->items()) texts.push_back(item.text);
    return texts;
  }
  static const LvItem& Item(const FilePane& pane, const QString& text) {
    return pane.model()->item(pane.model()->FindText(text));
  }

  TempDir dir;
  Preferences prefs;
  PaneShared shared{{true, true, true}, &prefs, {}};
  FilePane pane{0, shared};
};

TEST_F(FilePaneTest, ListsFoldersFirstWithOneParentEntryButNoneAtTheRoot) {
  pane.FillDirList(dir.path());
  EXPECT_EQ(TextsOf(pane),
            (Texts{" ..", " Alpha", " zeta", "blur.8bf", "clip.wmf", "empty.txt", "old.8b-", "wave.prm"}));
  EXPECT_EQ(Item(pane, " ..").icon, kIconParent);
  EXPECT_EQ(Item(pane, " zeta").icon, kIconFolder);
  EXPECT_EQ(Item(pane, "clip.wmf").icon, kIconFile);
  EXPECT_EQ(Item(pane, "empty.txt").sizeText, "");
  EXPECT_FALSE(Item(pane, "blur.8bf").dateText.isEmpty());
  EXPECT_EQ(pane.folder(), dir.path());
  const int root = pane.driveBox()->findData("/");
  ASSERT_GE(root, 0);
  pane.Drive1_Change(root);
  EXPECT_EQ(pane.folder(), "/");
  EXPECT_GT(pane.model()->rowCount(), 0);
  EXPECT_EQ(pane.model()->FindText(" .."), -1);
}

TEST_F(FilePaneTest, MissingVanishedAndUnreadableFoldersDoNoHarm) {
  pane.FillDirList(dir.path());
  const int rows = pane.model()->rowCount();
  pane.FillDirList(dir.file("blur.8bf"));
  pane.FillDirList(dir.file("gone"));
  EXPECT_EQ(pane.model()->rowCount(), rows);
  EXPECT_EQ(pane.folder(), dir.path());
  // The folder shown goes away: the list stays, Backspace still goes up.
  pane.FillDirList(dir.file("zeta"));
  std::filesystem::remove(dir.file("zeta"));
  pane.Refresh(true);
  EXPECT_EQ(pane.folder(), dir.file("zeta/"));
  pane.ListView1_KeyDown(Qt::Key_Backspace, Qt::NoModifier);
  EXPECT_EQ(pane.folder(), dir.path());
  std::filesystem::create_directory(dir.file("locked"));
  dir.Write("locked/inside.8bf", "x");
  RunAsOrdinaryUser({dir.path()}, [&] {
    std::filesystem::permissions(dir.file("locked"), std::filesystem::perms::none);
    pane.FillDirList(dir.file("locked"));
    EXPECT_EQ(TextsOf(pane), Texts{" .."});
  });
}

TEST_F(FilePaneTest, MaskEntriesAndTypedMasksFilterFilesNotFolders) {
  pane.FillDirList(dir.path());
  pane.Combo1_Click(1);
  EXPECT_EQ(TextsOf(pane), (Texts{" ..", " Alpha", " zeta", "blur.8bf", "old.8b-", "wave.prm"}));
  EXPECT_EQ(pane.maskEntry(), 1);
  // A mask typed into the box, confirmed with Return.
  pane.maskBox()->setEditText("*.TXT;*.wmf");
  QTest::keyClick(pane.maskBox()->lineEdit(), Qt::Key_Return);
  EXPECT_EQ(TextsOf(pane), (Texts{" ..", " Alpha", " zeta", "clip.wmf", "empty.txt"}));
  EXPECT_EQ(pane.maskEntry(), -1);
  EXPECT_EQ(pane.maskText(), "*.TXT;*.wmf");
  // Typing an entry's own text selects the entry.
  pane.maskBox()->setEditText(kMaskEntries[5]);
  pane.Combo1_KeyPress(13);
  EXPECT_EQ(pane.maskEntry(), 5);
}

TEST_F(FilePaneTest, SizesSortByValueAndBothPanesShareTheDirections) {
  FilePane right(1, shared);
  pane.FillDirList(dir.path());
  right.SetSortColumn(1);
  pane.ListView1_ColumnClick(1);  // True becomes False: descending
  EXPECT_FALSE(shared.columnSortAscending[1]);
  EXPECT_EQ(pane.sortColumn(), 1);
  Texts texts = TextsOf(pane);
  EXPECT_EQ(Texts(texts.begin(), texts.begin() + 2), (Texts{"blur.8bf", "wave.prm"}));
  right.FillDirList(dir.path());  // the direction set in the left pane holds here
  EXPECT_EQ(TextsOf(right).front(), "blur.8bf");
  pane.ListView1_ColumnClick(1);
  texts = TextsOf(pane);
  EXPECT_LT(std::find(texts.begin(), texts.end(), "wave.prm"), std::find(texts.begin(), texts.end(), "blur.8bf"));
}

TEST_F(FilePaneTest, ViewModesAndTheFolderBox) {
  pane.FillDirList(dir.path());
  for (int mode = 0; mode < 4; ++mode) {
    pane.SetViewMode(mode);
    EXPECT_EQ(pane.DetermineFileViewMode(), mode);
    EXPECT_TRUE(pane.file1()->isHidden());
  }
  // The folder box takes the folders out of the list, but not the parent entry.
  pane.Image5_Click();
  EXPECT_TRUE(pane.folderBoxShown());
  EXPECT_FALSE(pane.dirBox()->isHidden());
  EXPECT_EQ(pane.model()->FindText(" zeta"), -1);
  EXPECT_NE(pane.model()->FindText(" .."), -1);
  pane.FillDirList(dir.path());
  EXPECT_EQ(pane.model()->FindText(" zeta"), -1);
  pane.Image5_Click();
  EXPECT_NE(pane.model()->FindText(" zeta"), -1);
  pane.SetViewMode(FilePane::kClassic);
  EXPECT_EQ(pane.DetermineFileViewMode(), FilePane::kClassic);
  EXPECT_TRUE(pane.listView()->isHidden());
  EXPECT_FALSE(pane.dirBox()->isHidden());
  EXPECT_EQ(pane.file1()->model()->rowCount(), 5);
}

TEST_F(FilePaneTest, KeysAndDoubleClicksEnterFoldersOrHandFilesOn) {
  QSignalSpy opened(&pane, &FilePane::fileDblClicked);
  QSignalSpy information(&pane, &FilePane::fileInformationRequested);
  QSignalSpy changed(&pane, &FilePane::folderChanged);
  // Backspace goes up and selects the folder it came from.
  pane.FillDirList(dir.file("zeta"));
  pane.ListView1_KeyDown(Qt::Key_Backspace, Qt::NoModifier);
  EXPECT_EQ(pane.folder(), dir.path());
  EXPECT_EQ(changed.count(), 1);
  const QList<int> rows = pane.listView()->SelectedRows();
  ASSERT_EQ(rows.size(), 1);
  EXPECT_EQ(pane.model()->item(rows.first()).text, " zeta");
  // Return opens a file, Alt+Return asks for its information, a folder is entered.
  pane.listView()->SelectOnly(pane.model()->FindText("wave.prm"));
  pane.ListView1_KeyDown(Qt::Key_Return, Qt::NoModifier);
  EXPECT_EQ(opened.count(), 1);
  EXPECT_EQ(pane.File1Current(), "wave.prm");
  pane.ListView1_KeyDown(Qt::Key_Return, Qt::AltModifier);
  EXPECT_EQ(information.count(), 1);
  pane.listView()->SelectOnly(pane.model()->FindText(" Alpha"));
  pane.ListView1_KeyDown(Qt::Key_Return, Qt::NoModifier);
  EXPECT_EQ(pane.folder(), dir.file("Alpha/"));
  EXPECT_EQ(opened.count(), 1);
  // A double click on the parent entry, and a real key press on the view.
  pane.ListView1_DblClick(pane.model()->FindText(" .."));
  EXPECT_EQ(pane.folder(), dir.path());
  pane.FillDirList(dir.file("Alpha"));
  pane.listView()->SelectOnly(0);
  QTest::keyClick(pane.listView()->details(), Qt::Key_Backspace);
  EXPECT_EQ(pane.folder(), dir.path());
  // The classic list has the same keys.
  pane.FillDirList(dir.file("Alpha"));
  pane.SetViewMode(FilePane::kClassic);
  pane.File1_KeyDown(Qt::Key_Return, Qt::AltModifier);
  EXPECT_EQ(information.count(), 2);
  pane.File1_KeyDown(Qt::Key_Backspace, Qt::NoModifier);
  EXPECT_EQ(pane.folder(), dir.path());
}

TEST_F(FilePaneTest, TheCaptionShowsTheSelectionInKilobytesAndTheEndOfALongFolder) {
  pane.resize(120, 300);
  pane.show();
  pane.FillDirList(dir.path());
  pane.SetViewMode(FilePane::kClassic);
  pane.file1()->selectAll();
  // 2000 bytes round to 2 K, 999 to 1 K, three files of one byte or none to 0.
  EXPECT_EQ(pane.selectionK(), 3);
  EXPECT_EQ(pane.caption()->text(), "3 K");
  // Far wider than the pane can be, whatever the random part of the temporary name.
  const std::string deep = dir.path() + "a-rather-long-folder-name/and-another-rather-long-one/" +
                           "and-a-third-folder-name-to-be-sure/end/";
  std::filesystem::create_directories(deep);
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
