// The file pane: its rules as plain functions, then the pane itself.
#include "shell/pane/FilePane.h"

#include <unistd.h>

#include <array>

#include "ShellTesting.h"
#include "base/DirectoryListing.h"
#include "base/NameMatch.h"
#include "base/PluginKinds.h"
#include "settings/Preferences.h"
#include "shell/pane/DirListBox.h"
#include "shell/pane/PaneRules.h"
#include "support/OrdinaryUser.h"

namespace trel {
namespace {

using namespace test;
using Texts = std::vector<QString>;

TEST(IconOfFile, KindsByTheLastFourCharacters) {
  const std::pair<const char*, int> cases[] = {
      {"Blur.8BF", kIcon8bf}, {"Wave.prm", kIconPrm},   {"glow.aex", kIconAex},   {"lib.ffl", kIconFfl},
      {"pack.zip", kIconZip}, {"rose.tub", kIconPaint}, {"edge.sld", kIconPaint}, {"photo.jpg", kIconImage},
      {"a.PNG", kIconImage},  {"clip.wmf", kIconFile},  {"old.8b-", kIconFile},   {"readme", kIconFile},
      {"x.tif", kIconFile},   {".8bf", kIcon8bf},
  };
  for (const auto& [name, icon] : cases) EXPECT_EQ(IconOfFile(name), icon) << name;
}

TEST(Masks, PluginEntryShowsEveryAdobePluginFormButTheDottedAfterEffectsOne) {
  // The box's plugin entry was written by hand beside the toggle's forms;
  // "._ex" has never been in it, and ".bin" isn't an Adobe plugin. The old
  // disabled forms ("-" for the last letter) are in it as well.
  const std::string mask = MaskPattern(1, "");
  for (const char* form : {".8bf", "._bf", "_8bf", ".prm", "_prm", "._rm", ".aex", "_aex", "._ex", ".bin", ".txt"}) {
    const std::string name = std::string("a") + form;
    EXPECT_EQ(MatchesPattern(name, mask), IsAdobePluginName(name) && std::string(form) != "._ex") << name;
  }
  for (const char* name : {"a.8b-", "b.pr-", "c.ae-"}) EXPECT_TRUE(MatchesPattern(name, mask)) << name;
  EXPECT_EQ(MaskPattern(5, ""), "*.zip");
}

TEST(FormatSize, GroupsThousandsAndShowsNothingForZero) {
  const std::pair<int64_t, const char*> cases[] = {
      {0, ""}, {-1, ""}, {7, "7"}, {1000, "1,000"}, {1234567, "1,234,567"}};
  for (const auto& [bytes, text] : cases) EXPECT_EQ(FormatSize(bytes), text) << bytes;
}

TEST(AddKilobytes, RoundsAfterEveryAddition) {
  int64_t total = 0;
  for (int i = 0; i < 100; ++i) total = AddKilobytes(total, 400);  // 0.39 K each: nothing
  EXPECT_EQ(total, 0);
  total = 0;
  for (int i = 0; i < 10; ++i) total = AddKilobytes(total, 700);  // 0.68 K each counts as 1
  EXPECT_EQ(total, 10);
  EXPECT_EQ(AddKilobytes(0, 1024 * 1024), 1024);
}

TEST(RouteOfFile, FirstHitWins) {
  const std::vector<std::string> types = {"tub", "8bc"};
  using R = DblClickRoute;
  const std::pair<const char*, R> cases[] = {
      {"p.BMP", R::PicView},   {"p.jpg", R::PicView},   {"p.gif", R::Shell},    {"lib.ffl", R::ConvertFFL},
      {"f.8bf", R::FFEditor},  {"f_8bf", R::FFEditor},  {"f._bf", R::FFEditor}, {"f.prm", R::FFEditor},
      {"f._rm", R::FFEditor},  {"f.afs", R::FFEditor},  {"f.pff", R::FFEditor}, {"f.bin", R::FFEditor},
      {"f.ffx", R::FFEditor},  {"f.txt", R::TxtSource}, {"rosetub", R::Shell},  {"f.aex", R::Shell},
      {"setup.exe", R::Shell}, {"x.8BC", R::PluginInformation},  {"rose.tub", R::PluginInformation},
      {"rose_tub", R::PluginInformation}};
  for (const auto& [name, route] : cases) EXPECT_EQ(RouteOfFile(name, types), route) << name;
  // A text file that isn't a filter source goes on to the later rules.
  EXPECT_EQ(RouteOfFile("notes.txt", {"txt"}, true), R::PluginInformation);
  EXPECT_EQ(RouteOfFile("notes.txt", {}, true), R::Shell);
}

TEST(ProgramTitle, MinorVersionHasTwoDigits) {
  EXPECT_EQ(ProgramTitle(1, 5), "Trellium 1.05");
  EXPECT_EQ(ProgramTitle(2, 12), "Trellium 2.12");
}

TEST(PositionOnScreen, OnlyPointsInsideTheScreen) {
  const std::array<int, 3> cases[] = {{0, 0, 1}, {1279, 1023, 1}, {1280, 10, 0}, {10, 3000, 0}, {-5000, 10, 0}};
  for (const auto& [x, y, inside] : cases) EXPECT_EQ(PositionOnScreen(x, y, 1280, 1024), inside == 1) << x << "," << y;
}

TEST(ParentFolder, StopsAtTheRoot) {
  EXPECT_EQ(ParentFolder("/a/b/"), "/a/");
  EXPECT_EQ(ParentFolder("/a/b"), "/a/");
  EXPECT_EQ(ParentFolder("/a/"), "/");
  EXPECT_EQ(ParentFolder("/"), "/");
  EXPECT_TRUE(IsRootFolder("/"));
  EXPECT_FALSE(IsRootFolder("/a/"));
}

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
