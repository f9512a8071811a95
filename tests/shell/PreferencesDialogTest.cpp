#include <QKeyEvent>
#include <QMenu>
#include <QRadioButton>
#include <QTabWidget>
#include <functional>
#include <optional>
#include <tuple>

#include "ShellTesting.h"
#include "settings/ui/Form2.h"
#include "shell/pane/FilePane.h"
#include "shell/window/PreferencesCommands.h"

namespace trel {
namespace {

using namespace test;

// A started window over its own store and program folder, and its dialog.
class PreferencesDialogTest : public ::testing::Test {
 protected:
  void Start() {
    run.emplace(home, home.path(), QString(), programFolder);
    window = run->window.get();
    controller = FindPreferencesController(*window);
    ASSERT_NE(controller, nullptr);
    form = controller->form2();
    controller->SyncToDialog();
  }
  template <typename T>
  T* Find(const QString& name) const {
    T* child = form->findChild<T*>(name);
    EXPECT_NE(child, nullptr) << name.toStdString();
    return child;
  }
  std::string Ini(const std::string& key) const {
    return SettingsStore(home.file("Trel10.ini")).Get(kSectionSettings, key);
  }
  // The entries of a list's menu, as the menu holds them now.
  QStringList MenuTexts(const QString& stem) const {
    QStringList texts;
    const char* menu = stem == "mnuApps_" ? "mnuAppsMenu" : stem == "mnuPictures_" ? "mnuPicturesMenu" : "mnuFolders";
    for (QAction* action : window->findChild<QMenu*>(menu)->actions())
      if (action->objectName().startsWith(stem)) texts << action->text();
    return texts;
  }

  TempDir home;
  std::string programFolder = home.path();
  std::optional<StartedWindow> run;
  MainWindow* window = nullptr;
  PreferencesController* controller = nullptr;
  Form2* form = nullptr;
};

// Every stored check box: its control, its key, and what the rest of the
// program reads.
struct CheckRow {
  QString control;
  std::string key;
  std::function<int(const Preferences&)> value;
};
std::vector<CheckRow> Checks() {
  std::vector<CheckRow> rows;
  for (const auto& [control, key, field] : {std::tuple{"Check1", "ScanSubDirs", &Preferences::scanSubDirs},
                                            {"Check2", "NoFFOptimize", &Preferences::noFFOptimize},
                                            {"Check4", "PassivePaneFolder", &Preferences::passivePaneFolder},
                                            {"Check16", "FullStartUp", &Preferences::fullStartUp},
                                            {"Check17", "FFL1.0", &Preferences::ffl10},
                                            {"Check19", "AutoTop", &Preferences::autoTop}})
    rows.push_back({control, key, [field](const Preferences& p) { return p.*field; }});
  for (size_t i = 0; i < 6; ++i)
    rows.push_back({QString("Check12_%1").arg(i), "Fileview" + std::to_string(i),
                    [i](const Preferences& p) { return p.fileview[i]; }});
  for (size_t i = 0; i < 3; ++i)
    rows.push_back({QString("Check10_%1").arg(i), "AutoAdd" + std::to_string(i),
                    [i](const Preferences& p) { return p.autoAdd[i]; }});
  return rows;
}

TEST_F(PreferencesDialogTest, EveryOptionIsCommittedOnOkAndDiscardedOnCancel) {
  Start();
  const Preferences before = window->prefs();
  const auto flip = [this](const QString& name) {
    auto* box = Find<QCheckBox>(name);
    box->setChecked(!box->isChecked());
    return box->isChecked();
  };
  // Change everything, then Cancel: nothing reaches the store or the window.
  for (const CheckRow& row : Checks()) flip(row.control);
  Find<QLineEdit>("Text1")->setText("7");
  Find<QRadioButton>("Option4_1")->setChecked(true);
  Find<QCheckBox>("Check14")->setChecked(true);
  form->Command8_Click();
  for (const CheckRow& row : Checks()) {
    EXPECT_EQ(row.value(window->prefs()), row.value(before)) << row.key;
    EXPECT_EQ(Ini(row.key), "") << row.key;
  }
  EXPECT_EQ(Find<QLineEdit>("Text1")->text().toStdString(), before.folderItemLimit);
  EXPECT_EQ(window->prefs().compile.templateChoice, CompileTemplate::FilterFactory30);
  EXPECT_FALSE(Find<QCheckBox>("Check14")->isChecked());

  // The same changes and OK: each key holds the box's value and the window reads it.
  controller->SyncToDialog();
  for (const CheckRow& row : Checks()) {
    const bool on = flip(row.control);
    form->Command1_Click();
    EXPECT_EQ(Ini(row.key), on ? "1" : "0") << row.key;
    EXPECT_EQ(row.value(window->prefs()), on ? 1 : 0) << row.key;
  }
  Find<QLineEdit>("Text1")->setText("abc");
  Find<QCheckBox>("Check5")->setChecked(true);
  Find<QRadioButton>("Option4_3")->setChecked(true);
  form->Command1_Click();
  EXPECT_EQ(Ini("FolderItemLimit"), "20");
  EXPECT_EQ(Find<QLineEdit>("Text1")->text(), "20");
  EXPECT_EQ(window->prefs().compile.templateChoice, CompileTemplate::Macintosh);
  EXPECT_TRUE(window->prefs().compile.editorPlugin);
  EXPECT_EQ(MakeFilterOptions(window->prefs(), programFolder).compile.templateChoice, CompileTemplate::Macintosh);
  // Closing the dialog any other way is a Cancel: back to what OK committed.
  const int committed = window->prefs().scanSubDirs;
  flip("Check1");
  form->reject();
  EXPECT_EQ(window->prefs().scanSubDirs, committed);
  EXPECT_EQ(Find<QCheckBox>("Check1")->isChecked(), committed == 1);
}

// OK hands the whole copy back: what no control shows survives the round, and
// the window takes it in one change of its settings.
TEST_F(PreferencesDialogTest, OkHandsBackTheEditedCopyAndTheWindowFollowsItsSettings) {
  Start();
  window->settings().Change([](Preferences& p) {
    p.previewPicture = "/pics/a.png";
    p.encrypt[2] = 1;
  });
  controller->SyncToDialog();
  int changes = 0;
  QObject::connect(&window->settings(), &SettingsState::changed, [&] { ++changes; });
  Find<QCheckBox>("Check1")->setChecked(true);
  form->Command1_Click();
  EXPECT_EQ(window->prefs().scanSubDirs, 1);
  EXPECT_EQ(window->prefs().previewPicture, "/pics/a.png");
  EXPECT_EQ(window->prefs().encrypt[2], 1);
  EXPECT_EQ(changes, 1);
  // A change made while the program runs reaches the menu through the signal alone.
  window->show();
  window->settings().Change([](Preferences& p) { p.apps.push_back("/usr/bin/gimp"); });
  EXPECT_EQ(MenuTexts("mnuApps_"), QStringList{"/usr/bin/gimp"});
}

TEST_F(PreferencesDialogTest, EditorPluginAndDemoPluginExcludeEachOther) {
  Start();
  auto* editor = Find<QCheckBox>("Check5");
  auto* demo = Find<QCheckBox>("Check6");
  editor->click();
  demo->click();
  EXPECT_FALSE(editor->isChecked());
  editor->click();
  EXPECT_FALSE(demo->isChecked());
  // Without a template path the third option can't be chosen.
  EXPECT_FALSE(Find<QRadioButton>("Option4_2")->isEnabled());
  Find<QComboBox>("Combo2")->setEditText("/plugins/mine.8bf");
  EXPECT_TRUE(Find<QRadioButton>("Option4_2")->isEnabled());
}

TEST_F(PreferencesDialogTest, TheThreeListsEditTheirMenus) {
  Start();
  ASSERT_TRUE(form->listPage(Form2::kAppList).AddEntry("/usr/bin/gimp"));
  ASSERT_TRUE(form->listPage(Form2::kAppList).AddEntry("/usr/bin/krita"));
  EXPECT_FALSE(form->listPage(Form2::kAppList).AddEntry("/usr/bin/gimp"));  // already listed
  ASSERT_TRUE(form->listPage(Form2::kImageList).AddEntry(home.path() + "a.png"));
  ASSERT_TRUE(form->listPage(Form2::kFolderList).AddEntry("/opt/plugins/"));
  EXPECT_EQ(MenuTexts("mnuApps_"), (QStringList{"/usr/bin/gimp", "/usr/bin/krita"}));
  EXPECT_EQ(MenuTexts("mnuPictures_"), QStringList{QString::fromStdString(home.path() + "a.png")});
  EXPECT_EQ(MenuTexts("mnuDirectorys_"), QStringList{"/opt/plugins/"});
  controller->WireMenuEntries();
  EXPECT_TRUE(window->findChild<QAction*>("mnuApps_0")->isEnabled());

  // Move down, "Add %1", remove: the menu follows each step.
  form->list(Form2::kAppList)->setCurrentRow(0);
  form->listPage(Form2::kAppList).Move(+1);
  EXPECT_EQ(MenuTexts("mnuApps_"), (QStringList{"/usr/bin/krita", "/usr/bin/gimp"}));
  form->list(Form2::kAppList)->item(1)->setSelected(true);
  form->listPage(Form2::kAppList).AddFileArgument();
  EXPECT_EQ(MenuTexts("mnuApps_"), (QStringList{"/usr/bin/krita", "/usr/bin/gimp %1"}));
  form->list(Form2::kAppList)->clearSelection();
  form->list(Form2::kAppList)->item(0)->setSelected(true);
  form->listPage(Form2::kAppList).RemoveSelected();
  EXPECT_EQ(MenuTexts("mnuApps_"), QStringList{"/usr/bin/gimp %1"});

  // Choosing a picture makes it the preview picture.
  controller->ChoosePicture(0);
  EXPECT_EQ(window->prefs().previewPicture, home.path() + "a.png");

  // OK stores the lists; Cancel after further changes brings them back.
  form->Command1_Click();
  EXPECT_EQ(Ini("App0"), "/usr/bin/gimp %1");
  EXPECT_EQ(Ini("App1"), "");
  EXPECT_EQ(home.Read("FolderList.log"), "/opt/plugins/\r\n");
  controller->SyncToDialog();
  form->listPage(Form2::kAppList).AddEntry("/usr/bin/inkscape");
  form->Command8_Click();
  EXPECT_EQ(MenuTexts("mnuApps_"), QStringList{"/usr/bin/gimp %1"});
  EXPECT_EQ(window->prefs().apps, std::vector<std::string>{"/usr/bin/gimp %1"});
}

TEST_F(PreferencesDialogTest, TheFolderLimitAndAltArrowsApplyToTheFirstThreeListsOnly) {
  Start();
  Find<QLineEdit>("Text1")->setText("2");
  EXPECT_TRUE(form->listPage(Form2::kFolderList).AddEntry("/a/"));
  EXPECT_TRUE(form->listPage(Form2::kFolderList).AddEntry("/b/"));
  EXPECT_FALSE(form->listPage(Form2::kFolderList).AddEntry("/c/"));
  QListWidget* folders = form->list(Form2::kFolderList);
  folders->setCurrentRow(1);
  QKeyEvent up(QEvent::KeyPress, Qt::Key_Up, Qt::AltModifier);
  QCoreApplication::sendEvent(folders, &up);
  EXPECT_EQ(form->listPage(Form2::kFolderList).Items(), (std::vector<std::string>{"/b/", "/a/"}));
  QListWidget* types = form->list(Form2::kTypeList);
  types->setCurrentRow(1);
  const PluginTypeList before = form->pluginTypes().Rows();
  QCoreApplication::sendEvent(types, &up);
  EXPECT_EQ(form->pluginTypes().Rows(), before);
}

// The table's own operations are the catalogue's; here, that the dialog's
// rows reach the scanner and the list file at OK.
TEST_F(PreferencesDialogTest, ThePluginTypeRowsReachTheScannerAtOk) {
  Start();
  auto& types = form->pluginTypes();
  types.Toggle();
  if (types.Rows().front().checked) types.Toggle();  // all off
  types.askPluginType = [](bool edit, std::string& name, std::string& ext, std::string& digit) {
    if (edit) {
      EXPECT_EQ(name + "|" + ext, "Foo|p");
      name = "Foo Two";
      ext = "fo2";
    } else {
      name = "Foo";
      ext = "p";
      digit = "3";
    }
    return true;
  };
  types.Add();
  form->Command1_Click();
  EXPECT_EQ(window->pluginTypes().PluginTypePattern, ";*.p;*_p");
  types.Edit();
  form->Command1_Click();
  EXPECT_EQ(window->pluginTypes().PluginTypePattern, ";*?fo2");
  EXPECT_NE(home.Read("PlugTypes.ini").find("Foo Two (fo2|3)\r\nTrue\r\n"), std::string::npos);
  // A cancelled dialog adds nothing.
  types.askPluginType = [](bool, std::string&, std::string&, std::string&) { return false; };
  const size_t rows = types.Rows().size();
  types.Add();
  EXPECT_EQ(types.Rows().size(), rows);
}

TEST_F(PreferencesDialogTest, TheSkinListComesFromTheInterfaceFolderEvenWithBrokenSkins) {
  std::filesystem::create_directory(home.file("interface"));
  home.Write("interface/Interfc4.des", "\"Blue Steel\", 12, 14\nrest of the skin\n");
  home.Write("interface/Broken.des", std::string("\0\xff\xfe", 3));
  home.Write("interface/Empty.des", "");
  Start();
  form->LookforInterface(false);
  auto* box = Find<QComboBox>("Combo1");
  QStringList entries;
  for (int i = 0; i < box->count(); ++i) entries << box->itemText(i);
  EXPECT_EQ(entries.value(0), "Original FF Editor!");
  EXPECT_TRUE(entries.contains("Blue Steel - Interfc4.des"));
  EXPECT_EQ(entries.size(), 4);
  EXPECT_TRUE(box->currentText().endsWith("Interfc4.des"));  // the stored default
  // Choosing applies only while the dialog shows; entry 0 is the original editor.
  form->skins().Choose(0);
  EXPECT_EQ(form->Values().interfaceFile, "Interfc4.des");
  form->show();
  form->skins().Choose(0);
  EXPECT_EQ(form->Values().interfaceFile, "OFF");
  form->Command1_Click();
  EXPECT_EQ(Ini("Interface"), "OFF");
  EXPECT_EQ(window->prefs().interfaceFile, "OFF");
}

TEST_F(PreferencesDialogTest, SavingIntoAnUnwritableProgramFolderSaysWhatFailed) {
  home.Write("blocker", "x");
  programFolder = home.file("blocker/");  // nothing can be made below a plain file
  Start();
  testing::internal::CaptureStdout();
  EXPECT_FALSE(form->Command1_Click());
  const std::string out = testing::internal::GetCapturedStdout();
  EXPECT_NE(out.find("auto-accepted: Preferences"), std::string::npos);
  EXPECT_EQ(Ini("FFL1.0"), "1");  // the store itself was fine
}

// The options as the panes show them: option, action, observed difference.
TEST_F(PreferencesDialogTest, ListOptionsAndFontsChangeThePanes) {
  Start();
  QTreeView* details = window->pane(0)->listView()->details();
  QListView* file1 = window->pane(1)->file1();
  struct Row {
    int index;
    std::function<bool()> observed;
  };
  const Row rows[] = {
      {0, [&] { return details->hasMouseTracking() && details->property("hoverSelection").toBool(); }},
      {1, [&] { return details->styleSheet().contains("QScrollBar"); }},
      {2, [&] { return details->styleSheet().contains("border-bottom"); }},
      {3, [&] { return details->selectionBehavior() == QAbstractItemView::SelectRows; }},
      {4, [&] { return file1->styleSheet().contains(":hover"); }},
  };
  for (const Row& row : rows) {
    auto* box = Find<QCheckBox>(QString("Check12_%1").arg(row.index));
    box->setChecked(true);
    box->clicked(true);  // the click applies at once
    EXPECT_TRUE(row.observed()) << row.index;
    box->setChecked(false);
    form->Command1_Click();
    EXPECT_FALSE(row.observed()) << row.index;
  }
  // Auto Column Width: the Details columns fit a long name again at OK.
  home.Write(std::string(120, 'n') + ".8bf", "x");
  window->pane(0)->Refresh();
  details->setColumnWidth(0, 30);
  form->Command1_Click();
  EXPECT_GT(details->columnWidth(0), 300);
  Find<QCheckBox>("Check12_5")->setChecked(false);
  form->Command1_Click();
  details->setColumnWidth(0, 30);
  form->Command1_Click();
  EXPECT_EQ(details->columnWidth(0), 30);
  form->general().SetFont({"DejaVu Sans Mono", 13, true, false, true}, 0);
  form->general().SetFont({"DejaVu Serif", 11, false, true, true}, 1);
  form->Command1_Click();
  EXPECT_EQ(details->font().family(), "DejaVu Sans Mono");
  EXPECT_TRUE(details->font().bold());
  EXPECT_EQ(file1->font().pointSizeF(), 13);
  auto* button = window->findChild<QPushButton*>("Command1_0");
  EXPECT_EQ(button->font().family(), "DejaVu Serif");
  EXPECT_TRUE(button->font().italic());
  EXPECT_EQ(Ini("FontSize1"), "14");  // the whole size plus one
}

TEST_F(PreferencesDialogTest, WithGridlinesTheSelectedNameStaysReadable) {
  home.Write("selected name.8bf", "x");
  Start();
  FilePane* pane = window->pane(0);
  pane->ChangeFolder(home.path());
  window->show();
  window->Switchit(0);
  QTreeView* details = pane->listView()->details();
  // Pixels of the name cell that stand out from the cell's own background.
  auto inked = [&] {
    const int row = pane->model()->FindText("selected name.8bf");
    pane->SelectTexts({"selected name.8bf"}, "selected name.8bf");
    QCoreApplication::processEvents();
    const QRect cell = details->visualRect(pane->model()->index(row, 0)).adjusted(24, 3, -3, -3);
    const QImage shot = details->viewport()->grab().toImage();
    const QColor background = shot.pixelColor(cell.right(), cell.center().y());
    int count = 0;
    for (int y = cell.top(); y <= cell.bottom(); ++y)
      for (int x = cell.left(); x <= cell.right(); ++x) {
        const QColor c = shot.pixelColor(x, y);
        if (std::abs(c.red() - background.red()) + std::abs(c.green() - background.green()) +
                std::abs(c.blue() - background.blue()) > 150)
          ++count;
      }
    return count;
  };
  const int plain = inked();
  ASSERT_GT(plain, 20);
  // Gridlines, then Hot Tracking with them: each rule for the items keeps the name readable.
  for (const char* box : {"Check12_2", "Check12_4"}) {
    Find<QCheckBox>(box)->setChecked(true);
    Find<QCheckBox>(box)->clicked(true);
    EXPECT_GT(inked(), plain / 2) << box;
  }
  ASSERT_TRUE(details->styleSheet().contains("border-bottom"));
}

// The dialog on its own, with a shell that records its questions.
TEST(PreferencesDialogAloneTest, CacheSkinsAndAssociationsAskAndReport) {
  TempDir prog, data, config;
  test::RecordingShell shell;
  SettingsStore store(prog.file("Trel10.ini"));
  Form2 form(store, prog.path(), shell);
  std::filesystem::create_directory(prog.file("cache"));
  prog.Write("cache/a.jpg", "jpg");
  shell.nextAnswer = MsgResult::No;
  form.general().ClearCache();
  EXPECT_TRUE(prog.Exists("cache/a.jpg"));
  shell.nextAnswer = MsgResult::Yes;
  form.general().ClearCache();
  EXPECT_FALSE(prog.Exists("cache/a.jpg"));
  EXPECT_TRUE(std::filesystem::is_directory(prog.file("cache")));
  ASSERT_EQ(shell.boxes.size(), 2u);

  form.LookforInterface();
  EXPECT_EQ(shell.boxes.back().text, "Can't find FF Editor interface files.\nThe FF Editor won't be usable.");
  form.LookforInterface(false);
  EXPECT_EQ(shell.boxes.size(), 3u);

  const QByteArray oldConfig = qgetenv("XDG_CONFIG_HOME");
  qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(config.path()));
  form.general().dataHome = QString::fromStdString(data.path());
  form.general().SetAssociations();
  oldConfig.isEmpty() ? qunsetenv("XDG_CONFIG_HOME") : qputenv("XDG_CONFIG_HOME", oldConfig);
  EXPECT_EQ(shell.boxes.back().text.rfind("The associations were set.", 0), 0u);
  EXPECT_TRUE(data.Exists("applications/trel.desktop"));
}

}  // namespace
}  // namespace trel
