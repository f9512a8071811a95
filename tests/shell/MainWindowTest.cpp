#include "ShellTesting.h"
#include "support/OrdinaryUser.h"

namespace trel {
namespace {

using namespace test;
using Started = StartedWindow;

class MainWindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    files.Write("blur.8bf", "12345");
    files.Write("notes.txt", "just words");
    std::filesystem::create_directory(files.file("sub"));
  }

  // Settings as an earlier run left them: {section, key, value} rows.
  void Stored(std::initializer_list<std::array<std::string, 3>> rows) {
    SettingsStore store(home.file("Trel10.ini"));
    for (const auto& [section, key, value] : rows) store.Save(section, key, value);
    store.Flush();
  }
  std::string Ini(const std::string& section, const std::string& key) const {
    return SettingsStore(home.file("Trel10.ini")).Get(section, key);
  }

  TempDir home, files;
};

TEST_F(MainWindowTest, AFirstRunWelcomesAndWhatItLeavesComesBackAtTheNext) {
  Stored({{kSectionFolders, "Folder1", files.path()}});  // only Folder0 tells a first run
  home.Write("photo30.dll", "MZ template");
  home.Write("temp.dll", "stale");
  // A program folder as a start fills it: with the editor's skins.
  std::filesystem::create_directories(home.file("interface"));
  home.Write("interface/Interfc4.des", "\"Test Skin\"\n");
  {
    Started run(home, files.path());
    MainWindow& w = *run.window;
    EXPECT_TRUE(w.firstRun());
    for (int i : {0, 1}) {
      EXPECT_EQ(w.pane(i)->folder(), files.path());
      EXPECT_EQ(w.pane(i)->DetermineFileViewMode(), 3);
    }
    EXPECT_NE(w.pane(0)->model()->FindText("blur.8bf"), -1);
    EXPECT_FALSE(w.splash());
    EXPECT_EQ(home.Read("temp.dll"), "MZ template");  // the preview's copy of the template
    w.pane(0)->FillDirList(files.file("sub"));
    w.pane(0)->maskBox()->setEditText("*.8bf");  // typed, never confirmed
    w.pane(0)->SetViewMode(1);
    w.pane(1)->Combo1_Click(4);
    w.pane(1)->ListView1_ColumnClick(2);  // Date: up at the first click, down at the second
    w.pane(1)->ListView1_ColumnClick(2);
    w.pane(1)->SetViewMode(4);
    w.resize(700, 500);
    w.move(10, 20);
  }
  // The welcome and the tip at a first start are trel_xvfb_smoke's.
  const std::array<std::string, 3> written[] = {
      {kSectionFolders, "Folder0", files.file("sub/")},  {kSectionFolders, "Folder1", files.path()},
      {kSectionFolders, "Sortkey0", "0"},                {kSectionFolders, "SortDirection0", "True"},
      {kSectionFolders, "Sortkey1", "2"},                {kSectionFolders, "SortDirection1", "False"},
      {kSectionFolders, "Pattern1", "-*.8bf"},           {kSectionFolders, "Pattern2", "4"},
      {kSectionSettings, "FileViewMode0", "1"},          {kSectionSettings, "FileViewMode1", "4"},
      {kSectionSettings, "Width", "700"},                {kSectionSettings, "Height", "500"},
      {kSectionFolders, "LastX", "10"},                  {kSectionFolders, "LastY", "20"},
      {kSectionFolders, "Maximize", "False"}};
  for (const auto& [section, key, value] : written) EXPECT_EQ(Ini(section, key), value) << key;
  // The second start: a folder without its trailing separator, no welcome,
  // and the box keeps the tip away.
  Stored({{kSectionFolders, "Folder0", files.path() + "sub"}, {kSectionOptions, "Show Tips at Startup", "0"}});
  testing::internal::CaptureStdout();
  Started run(home, files.path());
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  MainWindow& w = *run.window;
  EXPECT_FALSE(w.firstRun());
  EXPECT_EQ(w.pane(0)->folder(), files.file("sub/"));
  EXPECT_EQ(w.pane(1)->folder(), files.path());
  EXPECT_EQ(w.pane(0)->maskEntry(), -1);
  EXPECT_EQ(w.pane(0)->maskText(), "*.8bf");
  EXPECT_EQ(w.pane(0)->pattern(), "*.8bf");
  EXPECT_EQ(w.pane(1)->maskEntry(), 4);
  EXPECT_EQ(w.pane(1)->sortColumn(), 2);
  EXPECT_FALSE(w.ColumnSortAscending()[2]);
  EXPECT_EQ(w.pane(0)->DetermineFileViewMode(), 1);
  EXPECT_EQ(w.pane(1)->DetermineFileViewMode(), 4);
  EXPECT_EQ(w.pane(1)->file1()->model()->rowCount(), 1);  // notes.txt under the FF source mask
  EXPECT_EQ(w.size(), QSize(700, 500));
  EXPECT_EQ(w.pos(), QPoint(10, 20));
  EXPECT_EQ(w.ActivePane(), 0);
}

TEST_F(MainWindowTest, AMaximisedWindowKeepsTheLastNormalSize) {
  Stored({{kSectionFolders, "Folder0", files.path()}, {kSectionSettings, "Width", "640"},
          {kSectionSettings, "Height", "480"}});
  {
    Started run(home, files.path());
    run.window->showMaximized();
    QApplication::processEvents();
  }
  EXPECT_EQ(Ini(kSectionFolders, "Maximize"), "True");
  EXPECT_EQ(Ini(kSectionSettings, "Width"), "640");
  EXPECT_EQ(Ini(kSectionSettings, "Height"), "480");
  EXPECT_NE(Ini(kSectionFolders, "LastX"), "");
  EXPECT_TRUE(Started(home, files.path()).window->isMaximized());
}

TEST_F(MainWindowTest, GarbageSettingsDoNotStopTheStart) {
  Stored({{kSectionFolders, "Folder0", "/this/folder/is/gone/"}, {kSectionFolders, "Folder1", files.file("blur.8bf")},
          {kSectionFolders, "Sortkey0", "abc"},         {kSectionFolders, "SortDirection0", "perhaps"},
          {kSectionFolders, "Pattern1", "99"},          {kSectionFolders, "Pattern2", "-"},
          {kSectionSettings, "FileViewMode0", "zzz"},   {kSectionSettings, "FileViewMode1", "17"},
          {kSectionSettings, "Width", "-5"},            {kSectionFolders, "LastX", "99999"},
          {kSectionFolders, "LastY", "10"},             {kSectionOptions, "Show Tips at Startup", "maybe"}});
  Started run(home, files.path());
  MainWindow& w = *run.window;
  EXPECT_FALSE(w.firstRun());
  for (int i : {0, 1}) EXPECT_EQ(w.pane(i)->folder(), files.path());
  EXPECT_EQ(w.pane(0)->sortColumn(), 0);
  EXPECT_EQ(w.pane(0)->maskEntry(), 0);
  EXPECT_EQ(w.pane(0)->DetermineFileViewMode(), 0);  // "zzz" reads as 0
  EXPECT_EQ(w.pane(1)->DetermineFileViewMode(), 3);  // 17 is no mode
  EXPECT_EQ(w.size(), QSize(960, 640));
  // Off the screen: the window keeps its default place and is not centred.
  EXPECT_NE(w.pos().x(), 99999);
  EXPECT_TRUE(w.isVisible());
}

TEST_F(MainWindowTest, AnUnreadableStoredFolderDoesNotStopTheStart) {
  std::filesystem::create_directory(files.file("locked"));
  files.Write("locked/inside.8bf", "x");
  Stored({{kSectionFolders, "Folder0", files.file("locked/")}});
  RunAsOrdinaryUser({files.path(), home.path()}, [&] {
    std::filesystem::permissions(files.file("locked"), std::filesystem::perms::none);
    Started run(home, files.path());
    EXPECT_TRUE(run.window->isVisible());
    EXPECT_EQ(run.window->pane(0)->model()->FindText("inside.8bf"), -1);
  });
}

TEST_F(MainWindowTest, TheCommandLineOpensLikeADoubleClickInTheLeftPane) {
  TempDir other;
  other.Write("Wave.AFS", "%RGB-1.0\n");
  Started run(home, files.path(), QString::fromStdString(other.file("wave.afs")));
  EXPECT_EQ(run.window->pane(0)->folder(), other.path());
  EXPECT_EQ(run.routes, std::vector<QString>{"LoadintoFFEditor " + QString::fromStdString(other.file("Wave.AFS"))});
  // A quoted path resolves to nothing.
  Started quoted(home, files.path(), "\"" + QString::fromStdString(files.file("blur.8bf")) + "\"");
  EXPECT_TRUE(quoted.routes.empty());
  EXPECT_TRUE(quoted.window->isVisible());
  // A folder opens itself, with or without its separator.
  std::string bare = other.path();
  bare.pop_back();
  for (const std::string& given : {bare, other.path()}) {
    Started folder(home, files.path(), QString::fromStdString(given));
    EXPECT_EQ(folder.window->pane(0)->folder(), other.path());
    EXPECT_NE(folder.window->pane(0)->model()->FindText("Wave.AFS"), -1);
    EXPECT_TRUE(folder.routes.empty());
  }
}

TEST_F(MainWindowTest, DoubleClicksRouteByNameAndDefinedPluginTypes) {
  home.Write("PlugTypes.ini", "Paint Shop Pro Tube (tub|3)\r\nTrue\r\nJasc Brush (jbr|3)\r\nFalse\r\n");
  for (const char* name : {"pic.jpg", "lib.ffl", "rose.tub", "soft.jbr", "setup.exe", "filter.txt"})
    files.Write(name, "x");
  Started run(home, files.path());
  MainWindow& w = *run.window;
  w.SetTxtSourceTest([](const QString& path) { return path.endsWith("filter.txt"); });
  // Visited folders and executables join their lists.
  w.settings().Change([](Preferences& p) { p.autoAdd = {1, 0, 1}; });
  FilePane* p = w.pane(0);
  p->Combo1_Click(3);
  EXPECT_NE(p->model()->FindText("rose.tub"), -1);
  EXPECT_EQ(p->model()->FindText("soft.jbr"), -1);  // its row is switched off
  EXPECT_EQ(p->model()->FindText("blur.8bf"), -1);
  p->Combo1_Click(0);
  const QString at = " " + QString::fromStdString(files.path());
  const std::pair<const char*, QString> cases[] = {
      {"pic.jpg", "LoadintoPicView"},   {"lib.ffl", "Convert"},      {"blur.8bf", "LoadintoFFEditor"},
      {"rose.tub", "cmd_PlugInInformation"}, {"soft.jbr", "ShellOpen"}, {"filter.txt", "LoadintoFFEditor"},
      {"notes.txt", "ShellOpen"},       {"setup.exe", "ShellOpen"},  {"setup.exe", "ShellOpen"}};
  std::vector<QString> expected;
  for (const auto& [name, route] : cases) {
    p->ListView1_DblClick(p->model()->FindText(name));
    expected.push_back(route + at + name);
  }
  EXPECT_EQ(run.routes, expected);
  EXPECT_EQ(run.opened.size(), 4u);
  EXPECT_EQ(w.prefs().apps, std::vector<std::string>{files.file("setup.exe")});  // once
  p->ListView1_DblClick(p->model()->FindText(" sub"));
  EXPECT_EQ(w.folderList(), std::vector<std::string>{files.file("sub/")});
}

TEST_F(MainWindowTest, ThePassivePaneLooksGrey) {
  Started run(home, files.path());
  run->Switchit(1);
  EXPECT_EQ(run->ActivePane(), 1);
  EXPECT_NE(run->pane(0)->listView()->details()->palette().color(QPalette::Base),
            run->pane(1)->listView()->details()->palette().color(QPalette::Base));
}

TEST_F(MainWindowTest, ARemovedFolderInTheFoldersMenuIsDropped) {
  std::filesystem::create_directory(files.file("gone"));
  home.Write("FolderList.log", files.file("gone") + "\r\n" + files.file("sub") + "\r\n");
  {
    Started run(home, files.path());
    MainWindow& w = *run.window;
    ASSERT_EQ(w.folderList().size(), 2u);
    std::filesystem::remove(files.file("gone"));
    w.mnuDirectorys_Click(0);
    EXPECT_EQ(w.folderList(), std::vector<std::string>{files.file("sub")});
    EXPECT_EQ(w.pane(0)->folder(), files.path());
    w.mnuDirectorys_Click(0);
    EXPECT_EQ(w.pane(0)->folder(), files.file("sub/"));
  }
  // The list file is kept current at the end of the run, and the menu's
  // captions are stored under their numbers.
  EXPECT_EQ(home.Read("FolderList.log"), files.file("sub") + "\r\n");
  EXPECT_EQ(Ini(kSectionFolders, "0"), files.file("sub"));
}


// The names a pane's Details list shows, without the parent entry.
std::vector<std::string> Listed(FilePane* p) {
  std::vector<std::string> names;
  for (const LvItem& item : p->model()->items())
    if (item.icon != kIconParent) names.push_back(item.text.trimmed().toStdString());
  std::sort(names.begin(), names.end());
  return names;
}

TEST_F(MainWindowTest, ASecondStartFromAnotherFolderListsTheStoredFoldersInEveryMode) {
  TempDir left, right, elsewhere;
  left.Write("left.afs", "x");
  right.Write("right.pff", "x");
  elsewhere.Write("stray.txt", "x");
  for (int mode = 0; mode <= FilePane::kClassic; ++mode) {
    SCOPED_TRACE(mode);
    {
      Started first(home, files.path());
      first.window->pane(0)->ChangeFolder(left.path());
      first.window->pane(1)->ChangeFolder(right.path());
      first.window->pane(0)->SetViewMode(mode);
      first.window->pane(1)->SetViewMode(mode);
    }
    Started second(home, elsewhere.path());
    for (int i = 0; i < 2; ++i) {
      FilePane* p = second.window->pane(i);
      const TempDir& expected = i == 0 ? left : right;
      EXPECT_EQ(p->folder(), expected.path());
      const std::string name = i == 0 ? "left.afs" : "right.pff";
      if (mode < FilePane::kClassic) {
        EXPECT_EQ(Listed(p), std::vector<std::string>{name});
        p->SetViewMode(FilePane::kClassic);  // a later switch shows the same folder
      }
      ASSERT_EQ(p->file1()->model()->rowCount(), 1);
      EXPECT_EQ(p->file1()->model()->index(0, 0).data().toString().toStdString(), name);
      p->SetViewMode(FileListView::kDetails);
      EXPECT_EQ(Listed(p), std::vector<std::string>{name});
    }
  }
}

TEST_F(MainWindowTest, RefreshAndSynchroniseReachTheTwinPaneAndKeepTheSelectionOnTheSameFiles) {
  for (const char* name : {"a.8bf", "c.8bf", "e.8bf", "g.8bf"}) files.Write(name, "x");
  Started run(home, files.path());
  MainWindow& w = *run.window;
  FilePane* p = w.pane(0);
  auto select = [&](std::initializer_list<const char*> names) {
    QStringList texts;
    for (const char* n : names) texts.append(n);
    p->SelectTexts(texts, texts.first());
  };
  auto selected = [&] {
    QStringList texts = p->SelectedTexts();
    texts.sort();
    return texts.join(",").toStdString();
  };
  // Both sort directions, since the fill comes before the sort.
  for (bool ascending : {true, false}) {
    w.ColumnSortAscending()[0] = ascending;
    p->SetSortColumn(0);
    p->Refresh(false);
    select({"c.8bf", "g.8bf"});
    for (int press = 0; press < 3; ++press) {
      w.mnuRefresh_Click();
      EXPECT_EQ(selected(), "c.8bf,g.8bf");
    }
    // New files above the selection don't move it either.
    files.Write("b.8bf", "x");
    w.RefreshBoth();
    EXPECT_EQ(selected(), "c.8bf,g.8bf");
    w.Image4_Click(1);  // the other pane synchronises onto this one's folder
    EXPECT_EQ(selected(), "c.8bf,g.8bf");
    std::filesystem::remove(files.file("b.8bf"));
  }
  // The classic list keeps its selection by name as well.
  p->SetViewMode(FilePane::kClassic);
  ASSERT_TRUE(p->SelectInFile1("e.8bf"));
  files.Write("0first.8bf", "x");
  p->Refresh(true);
  EXPECT_EQ(p->File1Current(), "e.8bf");
  // A refresh reaches the twin pane in the same folder; one elsewhere only when asked.
  p->SetViewMode(FileListView::kDetails);
  files.Write("new.8bf", "x");
  w.RefreshFile1(0);
  EXPECT_NE(w.pane(1)->model()->FindText("new.8bf"), -1);
  w.pane(1)->FillDirList(files.file("sub"));
  files.Write("sub/later.8bf", "x");
  files.Write("third.8bf", "x");
  w.RefreshFile1(0);
  EXPECT_NE(p->model()->FindText("third.8bf"), -1);
  EXPECT_EQ(w.pane(1)->model()->FindText("later.8bf"), -1);
  w.RefreshFile1C(0);
  EXPECT_NE(w.pane(1)->model()->FindText("later.8bf"), -1);
  p->FillDirList(files.file("sub/"));
  w.pane(1)->FillDirList(files.path());
  w.Image4_Click(0);
  EXPECT_EQ(w.pane(1)->folder(), files.file("sub/"));
}


// A name the command table lacks stops the program at once instead of
// leaving a menu entry silently dead.
TEST(CommandTableTest, AnUnknownNameStopsTheProgram) {
  TempDir home;
  SettingsStore store(home.file("Trel10.ini"));
  MainWindow window(store, home.path());
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_DEATH(window.command("mnuNoSuchCommand"), "no command named mnuNoSuchCommand");
}

}  // namespace
}  // namespace trel
