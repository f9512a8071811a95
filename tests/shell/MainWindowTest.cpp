#include "shell/MainWindow.h"

#include <gtest/gtest.h>

#include <QLabel>
#include <QAction>
#include <QComboBox>
#include <QDir>
#include <QListView>
#include <QTreeView>
#include <QGuiApplication>
#include <QPushButton>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>
#include <filesystem>
#include <unistd.h>
#include <memory>

#include "settings/SettingsStore.h"
#include "shell/FileListModel.h"
#include "shell/FileListView.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;

// A window over a store and a program folder of its own, started in `folder`
// (the process's folder), and the routes its double clicks took.
class Started {
 public:
  Started(const TempDir& home, const std::string& folder, const QString& commandLine = {})
      : store(home.file("Trel10.ini")) {
    QDir::setCurrent(QString::fromStdString(folder));
    window = std::make_unique<MainWindow>(store, home.path());
    window->SetShellOpener([this](const QString& path) {
      opened.push_back(path);
      return true;
    });
    QObject::connect(window.get(), &MainWindow::routeTaken, [this](const QString& route, const QString& path) {
      routes.push_back(route + " " + path);
    });
    window->Form_Initialize();
    window->Form_Load(commandLine);
  }
  ~Started() {
    if (window) window->close();
  }
  void Close() {
    window->close();
    window.reset();
  }

  SettingsStore store;
  std::unique_ptr<MainWindow> window;
  std::vector<QString> routes;
  std::vector<QString> opened;
};

class MainWindowTest : public ::testing::Test {
 protected:
  void SetUp() override {
    saved_ = QDir::currentPath();
    files.Write("blur.8bf", "12345");
    files.Write("notes.txt", "just words");
    std::filesystem::create_directory(files.file("sub"));
  }
  void TearDown() override { QDir::setCurrent(saved_); }

  TempDir home;
  TempDir files;

 private:
  QString saved_;
};

TEST_F(MainWindowTest, FirstRunLandsInTheProcessFolderAndWritesTheState) {
  {
    Started run(home, files.path());
    EXPECT_TRUE(run.window->firstRun());
    EXPECT_EQ(run.window->pane(0)->folder(), files.path());
    EXPECT_EQ(run.window->pane(1)->folder(), files.path());
    EXPECT_EQ(run.window->pane(0)->DetermineFileViewMode(), 3);
    EXPECT_EQ(run.window->pane(1)->DetermineFileViewMode(), 3);
    EXPECT_NE(run.window->pane(0)->model()->FindText("blur.8bf"), -1);
    EXPECT_EQ(run.window->windowTitle(), "Trellium 1.00");
    EXPECT_FALSE(run.window->splash());
    run.Close();
  }
  SettingsStore store(home.file("Trel10.ini"));
  EXPECT_EQ(store.Get(kSectionFolders, "Folder0"), files.path());
  EXPECT_EQ(store.Get(kSectionFolders, "Folder1"), files.path());
  EXPECT_EQ(store.Get(kSectionFolders, "Sortkey0"), "0");
  EXPECT_EQ(store.Get(kSectionFolders, "SortDirection0"), "True");
  EXPECT_EQ(store.Get(kSectionFolders, "Pattern1"), "0");
  EXPECT_EQ(store.Get(kSectionSettings, "FileViewMode0"), "3");
  EXPECT_EQ(store.Get(kSectionFolders, "Maximize"), "False");
  EXPECT_FALSE(store.Get(kSectionSettings, "Width").empty());
  EXPECT_FALSE(store.Get(kSectionFolders, "LastY").empty());
}

TEST_F(MainWindowTest, ASecondRunRestoresMasksSortModesAndFolders) {
  std::filesystem::create_directory(files.file("sub/deeper"));
  {
    SettingsStore store(home.file("Trel10.ini"));
    store.Save(kSectionFolders, "Folder0", files.path() + "sub");  // no trailing separator
    store.Save(kSectionFolders, "Pattern1", "-*.8bf");
    store.Save(kSectionFolders, "Pattern2", "4");
    store.Save(kSectionFolders, "Sortkey1", "2");
    store.Save(kSectionFolders, "SortDirection1", "False");
    store.Save(kSectionSettings, "FileViewMode1", "4");
    store.Save(kSectionSettings, "FileViewMode0", "1");
    store.Save(kSectionSettings, "Width", "700");
    store.Save(kSectionSettings, "Height", "500");
    store.Save(kSectionFolders, "LastX", "10");
    store.Save(kSectionFolders, "LastY", "20");
    store.Flush();
  }
  Started run(home, files.path());
  MainWindow& w = *run.window;
  EXPECT_FALSE(w.firstRun());
  EXPECT_EQ(w.pane(0)->folder(), files.file("sub/"));
  EXPECT_EQ(w.pane(1)->folder(), files.path());  // Folder1 empty: the default stays
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

TEST_F(MainWindowTest, GarbageSettingsDoNotStopTheStart) {
  {
    SettingsStore store(home.file("Trel10.ini"));
    store.Save(kSectionFolders, "Folder0", "/this/folder/is/gone/");
    store.Save(kSectionFolders, "Folder1", files.file("blur.8bf"));
    store.Save(kSectionFolders, "Sortkey0", "abc");
    store.Save(kSectionFolders, "SortDirection0", "perhaps");
    store.Save(kSectionFolders, "Pattern1", "99");
    store.Save(kSectionFolders, "Pattern2", "-");
    store.Save(kSectionSettings, "FileViewMode0", "zzz");
    store.Save(kSectionSettings, "FileViewMode1", "17");
    store.Save(kSectionSettings, "Width", "-5");
    store.Save(kSectionFolders, "LastX", "99999");
    store.Save(kSectionFolders, "LastY", "10");
    store.Save(kSectionOptions, "Show Tips at Startup", "maybe");
    store.Flush();
  }
  Started run(home, files.path());
  MainWindow& w = *run.window;
  EXPECT_FALSE(w.firstRun());
  EXPECT_EQ(w.pane(0)->folder(), files.path());
  EXPECT_EQ(w.pane(1)->folder(), files.path());
  EXPECT_EQ(w.pane(0)->sortColumn(), 0);
  EXPECT_EQ(w.pane(0)->maskEntry(), 0);
  EXPECT_EQ(w.pane(0)->DetermineFileViewMode(), 0);  // "zzz" reads as 0
  EXPECT_EQ(w.pane(1)->DetermineFileViewMode(), 3);  // 17 is no mode
  EXPECT_EQ(w.size(), QSize(960, 640));
  // Off the screen: the window keeps its default place and is not centred.
  EXPECT_NE(w.pos().x(), 99999);
  EXPECT_TRUE(w.isVisible());
}

TEST_F(MainWindowTest, FirstRunIsKeyedOnFolder0Alone) {
  {
    SettingsStore store(home.file("Trel10.ini"));
    store.Save(kSectionFolders, "Folder1", files.path());
    store.Flush();
  }
  Started run(home, files.path());
  EXPECT_TRUE(run.window->firstRun());
}

TEST_F(MainWindowTest, TheCommandLineOpensLikeADoubleClickInTheLeftPane) {
  TempDir other;
  other.Write("Wave.AFS", "%RGB-1.0\n");
  Started run(home, files.path(), QString::fromStdString(other.file("wave.afs")));
  EXPECT_EQ(run.window->pane(0)->folder(), other.path());
  auto* caption = run.window->findChild<QLabel*>("Label6_0");
  ASSERT_NE(caption, nullptr);
  EXPECT_EQ(caption->text().toStdString(), other.path());
  ASSERT_EQ(run.routes.size(), 1u);
  EXPECT_EQ(run.routes[0], "LoadintoFFEditor " + QString::fromStdString(other.file("Wave.AFS")));
}

TEST_F(MainWindowTest, AQuotedCommandLineResolvesToNothing) {
  Started run(home, files.path(), "\"" + QString::fromStdString(files.file("blur.8bf")) + "\"");
  EXPECT_TRUE(run.routes.empty());
  EXPECT_TRUE(run.window->isVisible());
}

TEST_F(MainWindowTest, DoubleClickRoutesByName) {
  files.Write("pic.jpg", "x");
  files.Write("lib.ffl", "x");
  files.Write("rose.tub", "x");
  files.Write("setup.exe", "x");
  files.Write("filter.txt", "x");
  Started run(home, files.path());
  MainWindow& w = *run.window;
  w.SetPluginTypeExtensions({"tub"});
  w.SetTxtSourceTest([](const QString& path) { return path.endsWith("filter.txt"); });
  w.prefs().autoAdd[2] = 1;
  FilePane* p = w.pane(0);
  const QString folder = QString::fromStdString(files.path());
  for (const char* name : {"pic.jpg", "lib.ffl", "blur.8bf", "rose.tub", "filter.txt", "notes.txt", "setup.exe",
                           "setup.exe"}) {
    p->ListView1_DblClick(p->model()->FindText(name));
  }
  const std::vector<QString> expected = {
      "LoadintoPicView " + folder + "pic.jpg",  "Convert " + folder + "lib.ffl",
      "LoadintoFFEditor " + folder + "blur.8bf", "cmd_PlugInInformation " + folder + "rose.tub",
      "LoadintoFFEditor " + folder + "filter.txt", "ShellOpen " + folder + "notes.txt",
      "ShellOpen " + folder + "setup.exe",       "ShellOpen " + folder + "setup.exe"};
  EXPECT_EQ(run.routes, expected);
  EXPECT_EQ(run.opened.size(), 3u);
  // An executable joins the Apps list once.
  EXPECT_EQ(w.prefs().apps, std::vector<std::string>{files.file("setup.exe")});
}

TEST_F(MainWindowTest, RefreshShowsAChangeInTheTwinPaneOfTheSameFolder) {
  Started run(home, files.path());
  MainWindow& w = *run.window;
  files.Write("new.8bf", "x");
  w.RefreshFile1(0);
  EXPECT_NE(w.pane(1)->model()->FindText("new.8bf"), -1);
  // A twin in another folder is left alone.
  w.pane(1)->FillDirList(files.file("sub"));
  files.Write("sub/later.8bf", "x");
  files.Write("third.8bf", "x");
  w.RefreshFile1(0);
  EXPECT_NE(w.pane(0)->model()->FindText("third.8bf"), -1);
  EXPECT_EQ(w.pane(1)->model()->FindText("later.8bf"), -1);
  w.RefreshFile1C(0);
  EXPECT_NE(w.pane(1)->model()->FindText("later.8bf"), -1);
}

TEST_F(MainWindowTest, SynchroniseCopiesTheFolderToTheOtherPane) {
  Started run(home, files.path());
  MainWindow& w = *run.window;
  w.pane(0)->FillDirList(files.file("sub"));
  w.Image4_Click(0);
  EXPECT_EQ(w.pane(1)->folder(), files.file("sub/"));
}

TEST_F(MainWindowTest, CommandsWithoutTheirWindowStayDisabledAndViewsDecide) {
  Started run(home, files.path());
  MainWindow& w = *run.window;
  ASSERT_NE(w.command("mnuRename"), nullptr);
  EXPECT_FALSE(w.command("mnuRename")->isEnabled());
  EXPECT_TRUE(w.command("mnuExiting")->isEnabled());
  w.SetCommandAvailable("mnuRename", true);
  w.SetCommandAvailable("mnuChangeCat", true);
  w.Switchit(0);
  EXPECT_TRUE(w.command("mnuRename")->isEnabled());
  EXPECT_FALSE(w.command("mnuChangeCat")->isEnabled());
  EXPECT_FALSE(w.findChild<QPushButton*>("Command1_4")->isEnabled());
  w.pane(0)->SelectTab(FilePane::kPluginView);
  EXPECT_EQ(w.pane(0)->paneView(), FilePane::kPluginView);
  EXPECT_FALSE(w.command("mnuRename")->isEnabled());
  EXPECT_TRUE(w.command("mnuChangeCat")->isEnabled());
  EXPECT_TRUE(w.findChild<QPushButton*>("Command1_4")->isEnabled());
  // The passive pane looks grey.
  w.Switchit(1);
  EXPECT_EQ(w.ActivePane(), 1);
  EXPECT_NE(w.pane(0)->listView()->details()->palette().color(QPalette::Base),
            w.pane(1)->listView()->details()->palette().color(QPalette::Base));
}

TEST_F(MainWindowTest, ControlsCarryTheirNames) {
  Started run(home, files.path());
  for (const char* name : {"ListView1_0", "ListView1_1", "File1_0", "Dir1_1", "Drive1_0", "Combo1_1", "Label6_0",
                           "SSTab1_1", "Image2_0", "Image4_1", "Image5_0", "Toolbar1", "Label3", "Command1_0"})
    EXPECT_NE(run.window->findChild<QWidget*>(name), nullptr) << name;
}

TEST_F(MainWindowTest, ARemovedFolderInTheFoldersMenuIsDropped) {
  files.Write("FolderList.log", "");
  std::filesystem::create_directory(files.file("gone"));
  TempDir programHome;
  programHome.Write("FolderList.log", files.file("gone") + "\r\n" + files.file("sub") + "\r\n");
  Started run(programHome, files.path());
  MainWindow& w = *run.window;
  ASSERT_EQ(w.folderList().size(), 2u);
  std::filesystem::remove(files.file("gone"));
  w.mnuDirectorys_Click(0);
  EXPECT_EQ(w.folderList(), std::vector<std::string>{files.file("sub")});
  EXPECT_EQ(w.pane(0)->folder(), files.path());
  w.mnuDirectorys_Click(0);
  EXPECT_EQ(w.pane(0)->folder(), files.file("sub/"));
  run.Close();
  // The list file is kept current at the end of the run, and the menu's
  // captions are stored under their numbers.
  EXPECT_EQ(programHome.Read("FolderList.log"), files.file("sub") + "\r\n");
  SettingsStore store(programHome.file("Trel10.ini"));
  EXPECT_EQ(store.Get(kSectionFolders, "0"), files.file("sub"));
}

TEST_F(MainWindowTest, VisitedFoldersJoinTheHistoryWhenAutoAddIsOn) {
  {
    SettingsStore store(home.file("Trel10.ini"));
    store.Save(kSectionFolders, "Folder0", files.path());
    store.Save(kSectionSettings, "AutoAdd0", "1");
    store.Flush();
  }
  Started run(home, files.path());
  MainWindow& w = *run.window;
  w.pane(0)->ListView1_DblClick(w.pane(0)->model()->FindText(" sub"));
  ASSERT_FALSE(w.folderList().empty());
  EXPECT_EQ(w.folderList().back(), files.file("sub/"));
}

}  // namespace
}  // namespace trel

namespace trel {
namespace {

TEST_F(MainWindowTest, TheTemplateIsCopiedForThePreviewAtStart) {
  home.Write("photo30.dll", "MZ template");
  home.Write("temp.dll", "stale");
  Started run(home, files.path());
  EXPECT_EQ(home.Read("temp.dll"), "MZ template");
}

TEST_F(MainWindowTest, AMaximisedWindowKeepsTheLastNormalSize) {
  {
    SettingsStore store(home.file("Trel10.ini"));
    store.Save(kSectionFolders, "Folder0", files.path());
    store.Save(kSectionSettings, "Width", "640");
    store.Save(kSectionSettings, "Height", "480");
    store.Flush();
  }
  {
    Started run(home, files.path());
    run.window->showMaximized();
    QApplication::processEvents();
    run.Close();
  }
  SettingsStore store(home.file("Trel10.ini"));
  EXPECT_EQ(store.Get(kSectionFolders, "Maximize"), "True");
  EXPECT_EQ(store.Get(kSectionSettings, "Width"), "640");
  EXPECT_EQ(store.Get(kSectionSettings, "Height"), "480");
  EXPECT_FALSE(store.Get(kSectionFolders, "LastX").empty());
  Started again(home, files.path());
  EXPECT_TRUE(again.window->isMaximized());
}

}  // namespace
}  // namespace trel

namespace trel {
namespace {

TEST_F(MainWindowTest, WelcomeOnceTipsAsTheBoxSays) {
  testing::internal::CaptureStdout();
  {
    Started first(home, files.path());
    first.Close();
  }
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_NE(out.find("auto-accepted: Trel\n"), std::string::npos);
  EXPECT_NE(out.find("auto-accepted: Tip of the Day\n"), std::string::npos);
  {
    SettingsStore store(home.file("Trel10.ini"));
    store.Save(kSectionOptions, "Show Tips at Startup", "0");
    store.Flush();
  }
  testing::internal::CaptureStdout();
  {
    Started second(home, files.path());
    second.Close();
  }
  out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out, "");
}

TEST_F(MainWindowTest, AMaskTypedButNotConfirmedIsStoredAsTyped) {
  {
    Started run(home, files.path());
    run.window->pane(0)->maskBox()->setEditText("*.zip");
    run.Close();
  }
  SettingsStore store(home.file("Trel10.ini"));
  EXPECT_EQ(store.Get(kSectionFolders, "Pattern1"), "-*.zip");
  EXPECT_EQ(store.Get(kSectionFolders, "Pattern2"), "0");
}

}  // namespace
}  // namespace trel

namespace trel {
namespace {

TEST_F(MainWindowTest, AnUnreadableStoredFolderDoesNotStopTheStart) {
  if (::geteuid() == 0) GTEST_SKIP() << "root reads every folder";
  std::filesystem::create_directory(files.file("locked"));
  files.Write("locked/inside.8bf", "x");
  std::filesystem::permissions(files.file("locked"), std::filesystem::perms::none);
  {
    SettingsStore store(home.file("Trel10.ini"));
    store.Save(kSectionFolders, "Folder0", files.file("locked/"));
    store.Flush();
  }
  {
    Started run(home, files.path());
    EXPECT_TRUE(run.window->isVisible());
    EXPECT_EQ(run.window->pane(0)->model()->FindText("inside.8bf"), -1);
  }
  std::filesystem::permissions(files.file("locked"), std::filesystem::perms::owner_all);
}

}  // namespace
}  // namespace trel

namespace trel {
namespace {

TEST_F(MainWindowTest, DefinedPluginTypesDriveTheMaskAndTheRoute) {
  home.Write("PlugTypes.ini", "Paint Shop Pro Tube (tub|3)\r\nTrue\r\nJasc Brush (jbr|3)\r\nFalse\r\n");
  files.Write("rose.tub", "x");
  files.Write("soft.jbr", "x");
  Started run(home, files.path());
  MainWindow& w = *run.window;
  FilePane* p = w.pane(0);
  p->Combo1_Click(3);
  EXPECT_NE(p->model()->FindText("rose.tub"), -1);
  EXPECT_EQ(p->model()->FindText("soft.jbr"), -1);  // its row is switched off
  EXPECT_EQ(p->model()->FindText("blur.8bf"), -1);
  p->ListView1_DblClick(p->model()->FindText("rose.tub"));
  ASSERT_EQ(run.routes.size(), 1u);
  EXPECT_TRUE(run.routes[0].startsWith("cmd_PlugInInformation "));
}

}  // namespace
}  // namespace trel
