#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDir>
#include <QKeyEvent>
#include <QTest>
#include <QThread>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <filesystem>
#include <memory>

#include "catalogue/EnableState.h"
#include "catalogue/PluginIdentification.h"
#include "filter/TextFormats.h"
#include "settings/SettingsStore.h"
#include "shell/dialogs/CategoryDialog.h"
#include "shell/window/MainWindow.h"
#include "shell/dialogs/PluginListDialog.h"
#include "shell/pluginview/PluginViewController.h"
#include "shell/pluginview/PluginViewPage.h"
#include "support/PeBuilder.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;
using Strings = std::vector<std::string>;

std::string FilterFactoryPlugin(const std::string& category, const std::string& title) {
  test::PeOptions o;
  o.fileSize = 57344;
  return test::BuildPeWithTextAt({test::Pipl({category, title})}, o, category, 31064);
}

// A folder of generated plugins of every kind the view tells apart, and a
// window started on it with a recorder for its messages.
class PluginViewTest : public ::testing::Test {
 protected:
  void SetUp() override {
    test::PeOptions pe32;
    pe32.pe32plus = false;
    files.Write("blur64.8bf", test::BuildPe({test::Pipl({"Blur", "Soft Blur", true, 8})}));
    files.Write("noise32.8bf", test::PiplPlugin("Noise", "Grain", pe32));
    files.Write("multi.8bf", test::BuildPe({test::Pipl({"Distort", "Twirl"}, 16000), test::Pipl({"Warp", "Bend"}, 16001)}));
    files.Write("hidden._bf", test::PiplPlugin("Blur", "Hidden"));
    files.Write("ff.8bf", FilterFactoryPlugin("FF Cat", "FF One"));
    files.Write("broken.8bf", std::string(700, '\x11'));
    files.Write("notes.doc", "words");
    FFFilter glow;
    glow.filename = "glow.afs";
    glow.category = "Lights";
    glow.title = "Glow";
    glow.codeR = glow.codeG = glow.codeB = glow.codeA = "r";
    Writeafspff(glow, files.path(), 0, env);
    std::filesystem::create_directory(files.file("sub"));
    files.Write("sub/deep.8bf", test::PiplPlugin("Deep", "Down"));
  }
  void TearDown() override {
    if (window) window->close();
    window.reset();
    QDir::setCurrent(saved_);
  }

  void Start() {
    QDir::setCurrent(QString::fromStdString(files.path()));
    store = std::make_unique<SettingsStore>(home.file("Trel10.ini"));
    window = std::make_unique<MainWindow>(*store, home.path());
    window->Form_Initialize();
    window->Form_Load({});
    controller = PluginViewController::Of(*window);
    ASSERT_NE(controller, nullptr);
    controller->SetHooks(&shell);
    page = window->pane(0)->pluginView();
  }
  // Switches pane 0 to the Plugin View as a click on its tab does.
  // and waits for its scan to end.
  void EnterPluginView() {
    window->SetPluginViewFresh(0, false);
    window->pane(0)->SelectTab(FilePane::kPluginView);
    WaitForScan();
  }
  void WaitForScan() { ASSERT_TRUE(QTest::qWaitFor([&] { return !page->busy(); }, 20000)); }
  Strings Texts(const std::vector<FilterRow>& rows) const {
    Strings out;
    for (const FilterRow& r : rows) out.push_back(r.text);
    return out;
  }
  // Selects the filter rows with these texts, the last one current.
  void SelectRows(const Strings& texts) {
    QListWidget* list = page->filterList();
    list->clearSelection();
    for (int i = 0; i < list->count(); ++i) {
      if (std::find(texts.begin(), texts.end(), list->item(i)->text().toStdString()) != texts.end()) {
        list->setCurrentRow(i, QItemSelectionModel::Select);
      }
    }
  }
  // A drop of the selected filter rows onto category row `target`, as the
  // mouse would make it.
  void DropOnCategory(const std::string& target, int sourcePane = 0) {
    QByteArray rows = QByteArray::number(sourcePane);
    for (const FilterRow& r : page->Rows())
      if (r.selected) rows += '\n' + QByteArray::number(r.entry);
    QMimeData data;
    data.setData(kFilterDragMime, rows);
    window->show();  // rows have places only once the list is laid out
    QApplication::processEvents();
    QListWidget* list = page->categoryList();
    QListWidgetItem* item = list->findItems(QString::fromStdString(target), Qt::MatchExactly).value(0);
    ASSERT_NE(item, nullptr) << target;
    const QPoint at = list->visualItemRect(item).center();
    QDragEnterEvent enter(at, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(list->viewport(), &enter);
    QDragMoveEvent move(at, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(list->viewport(), &move);
    QDropEvent drop(at, Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(list->viewport(), &drop);
  }

  TempDir home, files;
  test::RecordingShell shell;
  FilterEnv env;
  std::unique_ptr<SettingsStore> store;
  std::unique_ptr<MainWindow> window;
  PluginViewController* controller = nullptr;
  PluginViewPage* page = nullptr;
  const QString saved_ = QDir::currentPath();
};

TEST_F(PluginViewTest, EnteringTheViewListsCategoriesAndFiltersOfTheFolder) {
  Start();
  EnterPluginView();
  EXPECT_EQ(window->pane(0)->paneView(), FilePane::kPluginView);
  EXPECT_TRUE(window->PluginViewFresh(0));
  // Only the last filter of a file brings its category; sources are off;
  // the subfolder is not entered; a damaged plugin stands as [Unknown].
  EXPECT_EQ(page->CategoryRows(), (Strings{"[Unknown]", "Blur", "FF Cat", "Noise", "Warp"}));
  EXPECT_EQ(page->SelectedCategories(), Strings{"[Unknown]"});  // the first is selected
  EXPECT_EQ(Texts(page->Rows()), Strings{"+ broken.8bf"});  // the name is active, the content unknown

  page->SelectCategories({"Blur", "Warp"});
  EXPECT_EQ(Texts(page->Rows()), (Strings{"+ Bend", "+ Soft Blur", "- Hidden"}));
  SelectRows({"+ Soft Blur"});
  const QString status = page->statusLine();
  EXPECT_TRUE(status.startsWith(QString::fromStdString(files.path())) || status.startsWith(" ..")) << status.toStdString();
  EXPECT_TRUE(status.endsWith(" K)")) << status.toStdString();
  EXPECT_EQ(page->CurrentPath(), files.file("blur64.8bf"));
  EXPECT_EQ(page->SelectedPaths(), Strings{files.file("blur64.8bf")});
  const QListWidgetItem* hidden = page->filterList()->findItems("- Hidden", Qt::MatchExactly).value(0);
  ASSERT_NE(hidden, nullptr);
  EXPECT_NE(hidden->foreground().color(), page->filterList()->findItems("+ Bend", Qt::MatchExactly)[0]->foreground().color());

  page->SelectAllFilters(true);
  EXPECT_EQ(page->SelectedPaths().size(), 3u);
  page->SelectAllFilters(false);
  EXPECT_TRUE(page->SelectedPaths().empty());
  EXPECT_TRUE(shell.boxes.empty());
}

// Link loops and dangling links leave the rest of the folder listed.
TEST_F(PluginViewTest, OptionsBringSourcesAndSubfoldersAndShiftKeepsFilterFactoryOnly) {
  std::filesystem::create_directory_symlink(files.path(), files.file("sub/back"));
  std::filesystem::create_symlink(files.file("nowhere.8bf"), files.file("dangling.8bf"));
  files.Write("empty.8bf", "");
  Start();
  controller->SetIncludeSources(true);
  window->settings().Change([](Preferences& p) { p.scanSubDirs = 1; });
  EnterPluginView();
  EXPECT_EQ(page->CategoryRows(), (Strings{"[Unknown]", "Blur", "Deep", "FF Cat", "Lights", "Noise", "Warp"}));
  page->SelectCategories({"Lights"});
  EXPECT_EQ(Texts(page->Rows()), Strings{"Glow (.afs)"});  // a source has no mark
  page->SelectCategories({"[Unknown]"});
  EXPECT_EQ(Texts(page->Rows()), (Strings{"+ broken.8bf", "+ empty.8bf"}));

  window->pane(0)->SelectTab(FilePane::kFileView);
  window->SetPluginViewFresh(0, false);
  controller->Scan(0, true);
  WaitForScan();
  EXPECT_EQ(page->CategoryRows(), Strings{"FF Cat"});
}

TEST_F(PluginViewTest, EnDisableRenamesOnceAndTurnsTheMarks) {
  Start();
  EnterPluginView();
  page->SelectCategories({"Blur", "Warp"});
  SelectRows({"+ Soft Blur", "- Hidden"});
  FilterEnv recorded;
  recorded.shell = &shell;
  const ToggleResult result = page->EnableDisable(window->pluginTypes(), recorded);
  EXPECT_FALSE(result.failed);
  EXPECT_EQ(result.renamed.size(), 2u);
  EXPECT_TRUE(files.Exists("blur64._bf"));
  EXPECT_TRUE(files.Exists("hidden.8bf"));
  EXPECT_EQ(Texts(page->Rows()), (Strings{"+ Bend", "- Soft Blur", "+ Hidden"}));
  EXPECT_EQ(page->CurrentPath(), files.file("hidden.8bf"));
  // In Photoshop Mode the filter disabled now is gone from its category.
  page->photoshopCheck()->setChecked(true);
  page->SelectCategories({"Blur"});
  const Strings rows = Texts(page->Rows());
  EXPECT_EQ(std::count(rows.begin(), rows.end(), "- Soft Blur"), 0);
  EXPECT_EQ(std::count(rows.begin(), rows.end(), "+ Hidden"), 1);
}

TEST_F(PluginViewTest, PhotoshopModeShowsTheHostsMenuWithActiveFiltersOnly) {
  Start();
  EnterPluginView();
  page->photoshopCheck()->setChecked(true);
  // The damaged plugin has an active name, so its row stays.
  EXPECT_EQ(page->CategoryRows(), (Strings{"Blur", "Noise", "Pixelate", "Sharpen", "Stylize", "-------------",
                                           "[Unknown]", "FF Cat", "Warp", "Other"}));
  page->SelectCategories({"Blur"});
  EXPECT_EQ(Texts(page->Rows()), (Strings{"+ Soft Blur", "Blur", "Blur More", "Gaussian Blur...", "Motion Blur..."}));
  SelectRows({"Gaussian Blur..."});
  EXPECT_EQ(page->statusLine(), ">>> This filter is built into Photoshop.exe");
  EXPECT_TRUE(page->SelectedPaths().empty());

  // "Other" catches the active filter whose category has no row.
  page->SelectCategories({"Other"});
  EXPECT_EQ(Texts(page->Rows()),
            (Strings{"+ Twirl", "Custom...", "High Pass...", "Maximum...", "Minimum...", "Offset..."}));

  page->photoshopCheck()->setChecked(false);
  EXPECT_EQ(page->CategoryRows(), (Strings{"[Unknown]", "Blur", "FF Cat", "Noise", "Warp"}));
}

TEST_F(PluginViewTest, DroppingFiltersOnACategoryChangesTheFile) {
  Start();
  EnterPluginView();
  page->SelectCategories({"Blur"});
  SelectRows({"+ Soft Blur"});
  DropOnCategory("Noise");
  ResourceProbe probe;
  ASSERT_TRUE(ReadCom8bf(files.file("blur64.8bf"), probe, env));
  EXPECT_EQ(probe[1].category, "Noise");
  EXPECT_EQ(page->SelectedCategories(), Strings{"Noise"});
  EXPECT_EQ(Texts(page->Rows()), (Strings{"+ Grain", "+ Soft Blur"}));
  EXPECT_TRUE(shell.boxes.empty());

  // A virtual category takes nothing.
  SelectRows({"+ Grain"});
  DropOnCategory("[Unknown]");
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text,
            "[Unknown] is only a virtual category!\nMoving plugins to this category isn't possible.");
  probe = {};
  ASSERT_TRUE(ReadCom8bf(files.file("noise32.8bf"), probe, env));
  EXPECT_EQ(probe[1].category, "Noise");
}

TEST_F(PluginViewTest, ChangeCatAsksUntilItHasANameAndCountsFailures) {
  Start();
  EnterPluginView();
  page->SelectCategories({"Blur", "Noise"});
  SelectRows({"+ Soft Blur", "+ Grain"});
  Strings answers = {"", "[Premiere Thing]", "Sharp New"};
  Strings offered;
  int asked = 0;
  controller->SetCategoryPrompt([&](const Strings& choices) -> std::optional<std::string> {
    offered = choices;
    return answers[static_cast<size_t>(asked++)];
  });
  window->command("mnuChangeCat")->trigger();
  EXPECT_EQ(asked, 3);
  EXPECT_EQ(offered, (Strings{"Blur", "FF Cat", "Noise", "Warp"}));  // no bracketed rows
  // "Grain" has no room for nine letters; "Soft Blur" has. The message names the room.
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text,
            "Changing the category didn't work for 1 plugin(s).\n"
            "noise32.8bf: the file has room for a category of 7 characters; \"Sharp New\" has 9.");
  EXPECT_EQ(page->SelectedCategories(), Strings{"Sharp New"});  // the new row, chosen
  EXPECT_EQ(Texts(page->Rows()), Strings{"+ Soft Blur"});

  // Cancel ends the command; without a selection the dialog doesn't open.
  shell.boxes.clear();
  controller->SetCategoryPrompt([&](const Strings&) { ++asked; return std::nullopt; });
  SelectRows({"+ Soft Blur"});
  window->command("mnuChangeCat")->trigger();
  EXPECT_TRUE(shell.boxes.empty());
  page->filterList()->clearSelection();
  const int before = asked;
  controller->cmd_ChangeCategory(false);
  EXPECT_EQ(asked, before);
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "Please select a plugin.");
}

TEST_F(PluginViewTest, EscDuringTheScanReturnsToTheFileView) {
  for (int i = 0; i < 300; ++i) files.Write("many" + std::to_string(i) + ".8bf", test::PiplPlugin("Bulk", "F"));
  Start();
  controller->SetCacheEnabled(false);
  int seen = 0;
  // At the 40th file the user presses Esc; the scan waits until the window
  // has seen the key, so the test doesn't race the event loop.
  controller->SetScanPacer([&](const std::string&) {
    if (++seen != 40) return;
    QMetaObject::invokeMethod(window.get(), [&] {
      QKeyEvent esc(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
      QApplication::sendEvent(window.get(), &esc);
    }, Qt::QueuedConnection);
    for (int i = 0; i < 500 && !window->EscapeFlag().load(); ++i) QThread::msleep(10);
  });
  int reported = -1;
  QObject::connect(controller, &PluginViewController::scanFinished, [&](int, int entries) { reported = entries; });
  EnterPluginView();
  EXPECT_EQ(reported, 0);
  EXPECT_LT(seen, 300);
  EXPECT_EQ(window->pane(0)->paneView(), FilePane::kFileView);
  EXPECT_FALSE(window->PluginViewFresh(0));
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text,
            "No plugins or other supported files were found in the current\nfolder. Please select another folder "
            "and try again.");
  EXPECT_TRUE(page->CategoryRows().empty());
}

TEST_F(PluginViewTest, ASecondEntryIsAnsweredByTheCacheInTheProgramFolder) {
  Start();
  EnterPluginView();
  const Strings first = page->CategoryRows();
  EXPECT_EQ(controller->lastCacheHits(), 0);
  window->pane(0)->SelectTab(FilePane::kFileView);
  EnterPluginView();
  EXPECT_EQ(controller->lastCacheMisses(), 0);
  EXPECT_EQ(controller->lastCacheHits(), 8);  // the full type table scans every file
  EXPECT_EQ(page->CategoryRows(), first);
  EXPECT_TRUE(std::filesystem::exists(home.file("cache")));
}

TEST_F(PluginViewTest, InformationNamesEveryKindAndRefusesWhereItMust) {
  Start();
  EnterPluginView();
  struct Case {
    const char* category;
    const char* row;
    const char* expected;
  };
  const Case cases[] = {
      {"FF Cat", "+ FF One", "Type: Photoshop Filter Factory 3.0"},
      {"Warp", "+ Bend", "Type: Photoshop Multiple Filter Plugin"},
      {"Blur", "+ Soft Blur", "Type: Photoshop Filter Plugin"},
      {"[Unknown]", "+ broken.8bf", " is an unknown file type or maybe damaged."},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.row);
    shell.boxes.clear();
    page->SelectCategories({c.category});
    SelectRows({c.row});
    window->command("mnuPlugInfo")->trigger();
    ASSERT_EQ(shell.boxes.size(), 1u);
    EXPECT_NE(shell.boxes[0].text.find(c.expected), std::string::npos) << shell.boxes[0].text;
  }

  shell.boxes.clear();
  window->pane(0)->SelectTab(FilePane::kFFLView);
  controller->cmd_PlugInInformation();
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "Plugin Information only works in File and Plugin View.");
}

TEST_F(PluginViewTest, ThePluginListGoesToATextFileACsvFileOrTheClipboard) {
  Start();
  EnterPluginView();
  page->SelectCategories({"Blur", "Noise"});
  page->SelectAllFilters(true);
  PlugInListChoice choice;
  controller->SetListPrompt([&] { return std::optional<PlugInListChoice>(choice); });
  QAction* list = window->findChild<QAction*>("mnuPlugInList");
  ASSERT_NE(list, nullptr);

  list->trigger();
  const std::string text = files.Read("FFL-List.txt");
  EXPECT_NE(text.find("Blur: Soft Blur (blur64.8bf)"), std::string::npos) << text;
  EXPECT_NE(text.find("Noise: Grain (noise32.8bf)"), std::string::npos) << text;

  choice.options.csv = true;
  choice.fileName = "list.csv";
  list->trigger();
  const std::string csv = files.Read("list.csv");
  EXPECT_NE(csv.find("Soft Blur;Blur;"), std::string::npos) << csv;
  EXPECT_NE(csv.find(";freeware;"), std::string::npos);

  choice.toClipboard = true;
  choice.options.csv = false;
  choice.fileName = "never.txt";
  QApplication::clipboard()->setText("old");
  list->trigger();
  EXPECT_FALSE(files.Exists("never.txt"));
  EXPECT_TRUE(QApplication::clipboard()->text().contains("Noise: Grain")) << QApplication::clipboard()->text().toStdString();

  // Cancel writes nothing; an empty selection is refused before the dialog.
  controller->SetListPrompt([] { return std::nullopt; });
  std::filesystem::remove(files.file("FFL-List.txt"));
  list->trigger();
  EXPECT_FALSE(files.Exists("FFL-List.txt"));
  page->filterList()->clearSelection();
  list->trigger();
  ASSERT_FALSE(shell.boxes.empty());
  EXPECT_EQ(shell.boxes.back().text, "Please select one or more plugin files.");
}

TEST(PluginViewDialogs, CategoryAndListDialogsReportTheirChoice) {
  CategoryDialog form3({"Blur", "Noise"});
  form3.combo()->setCurrentIndex(1);
  EXPECT_EQ(form3.text(), "Noise");

  PluginListDialog form4;
  form4.box("Check7")->setChecked(true);
  EXPECT_FALSE(form4.fileName()->isEnabled());
  form4.box("Check6")->setChecked(true);
  form4.box("Check2")->setChecked(false);
  const PlugInListChoice c = form4.choice();
  EXPECT_TRUE(c.toClipboard);
  EXPECT_TRUE(c.options.csv);
  EXPECT_FALSE(c.options.filtername);
}

}  // namespace
}  // namespace trel
