// The Plugin View of a window: the scan (which runs off the window's thread),
// the rows it shows, and the commands on the selected filter rows. What the
// scan finds in a file and how each command changes it is the catalogue's.
#include <QClipboard>
#include <QKeyEvent>
#include <QThread>
#include <optional>

#include "ShellTesting.h"
#include "catalogue/CatalogueTesting.h"
#include "catalogue/EnableState.h"
#include "catalogue/PluginIdentification.h"
#include "filter/TextFormats.h"
#include "shell/dialogs/PluginListDialog.h"
#include "shell/pluginview/PluginViewController.h"
#include "shell/pluginview/PluginViewPage.h"

namespace trel {
namespace {

using test::TempDir;
using test::Strings;
namespace fs = std::filesystem;

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
    files.Write("ff.8bf", test::BuildPeWithTextAt({test::Pipl({"FF Cat", "FF One"})}, {.fileSize = 57344}, "FF Cat", 31064));
    files.Write("broken.8bf", std::string(700, '\x11'));
    files.Write("notes.doc", "words");
    FFFilter glow = test::SourceFilter("glow.afs", "Lights");
    Writeafspff(glow, files.path(), 0, env);
    fs::create_directory(files.file("sub"));
    files.Write("sub/deep.8bf", test::PiplPlugin("Deep", "Down"));
  }

  // Starts the window on the folder and, unless told not to, enters the view.
  void Start(bool enter = true) {
    run.emplace(home, files.path());
    window = run->window.get();
    controller = PluginViewController::Of(*window);
    ASSERT_NE(controller, nullptr);
    controller->SetHooks(&shell);
    page = window->pane(0)->pluginView();
    if (enter) EnterPluginView();
  }
  // Switches pane 0 to the Plugin View as a click on its tab does, and waits
  // for its scan to end.
  void EnterPluginView() {
    window->SetPluginViewFresh(0, false);
    window->pane(0)->SelectTab(FilePane::kPluginView);
    WaitForScan();
  }
  void WaitForScan() { ASSERT_TRUE(QTest::qWaitFor([&] { return !page->busy(); }, 20000)); }
  Strings Rows() const {
    Strings out;
    for (const FilterRow& r : page->Rows()) out.push_back(r.text);
    return out;
  }
  // Selects the filter rows with these texts, the last one current.
  void SelectRows(const Strings& texts) {
    QListWidget* list = page->filterList();
    list->clearSelection();
    for (int i = 0; i < list->count(); ++i) {
      if (std::find(texts.begin(), texts.end(), list->item(i)->text().toStdString()) != texts.end())
        list->setCurrentRow(i, QItemSelectionModel::Select);
    }
  }
  void Show(const std::string& category, const Strings& rows) {
    page->SelectCategories({category});
    SelectRows(rows);
  }
  // A drop of the selected filter rows onto category row `target`, as the
  // mouse would make it.
  void DropOnCategory(const std::string& target) {
    QByteArray rows = "0";  // the source pane
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
  std::string LastBox() const { return shell.boxes.empty() ? "" : shell.boxes.back().text; }

  TempDir home, files;
  test::RecordingShell shell;  // outlives the window
  FilterEnv env;
  std::optional<test::StartedWindow> run;
  MainWindow* window = nullptr;
  PluginViewController* controller = nullptr;
  PluginViewPage* page = nullptr;
};

TEST_F(PluginViewTest, EnteringTheViewListsTheFolderAndASecondEntryIsAnsweredByTheCache) {
  Start();
  EXPECT_EQ(window->pane(0)->paneView(), FilePane::kPluginView);
  EXPECT_TRUE(window->PluginViewFresh(0));
  // Only the last filter of a file brings its category; sources are off;
  // the subfolder is not entered; a damaged plugin stands as [Unknown],
  // the first row and selected, its name active and its content unknown.
  const Strings categories{"[Unknown]", "Blur", "FF Cat", "Noise", "Warp"};
  EXPECT_EQ(page->CategoryRows(), categories);
  EXPECT_EQ(page->SelectedCategories(), Strings{"[Unknown]"});
  EXPECT_EQ(Rows(), Strings{"+ broken.8bf"});
  EXPECT_EQ(controller->lastCacheHits(), 0);

  page->SelectCategories({"Blur", "Warp"});
  ASSERT_EQ(Rows(), (Strings{"+ Bend", "+ Soft Blur", "- Hidden"}));
  SelectRows({"+ Soft Blur"});
  const std::string status = page->statusLine().toStdString();
  EXPECT_TRUE((status.starts_with(files.path()) || status.starts_with(" ..")) && status.ends_with(" K)")) << status;
  EXPECT_EQ(page->CurrentPath(), files.file("blur64.8bf"));
  EXPECT_EQ(page->SelectedPaths(), Strings{files.file("blur64.8bf")});
  const QListWidget* list = page->filterList();
  EXPECT_NE(list->findItems("- Hidden", Qt::MatchExactly)[0]->foreground().color(),
            list->findItems("+ Bend", Qt::MatchExactly)[0]->foreground().color());
  page->SelectAllFilters(true);
  EXPECT_EQ(page->SelectedPaths().size(), 3u);
  page->SelectAllFilters(false);
  EXPECT_TRUE(page->SelectedPaths().empty());
  EXPECT_TRUE(shell.boxes.empty());

  // The cache lives in the program folder and answers for every file.
  window->pane(0)->SelectTab(FilePane::kFileView);
  EnterPluginView();
  EXPECT_EQ(controller->lastCacheMisses(), 0);
  EXPECT_EQ(controller->lastCacheHits(), 8);  // the full type table scans every file
  EXPECT_EQ(page->CategoryRows(), categories);
  EXPECT_TRUE(fs::exists(home.file("cache")));
}

// The options reach the scan; a link loop and a dangling link leave the rest listed.
TEST_F(PluginViewTest, OptionsBringSourcesAndSubfoldersAndShiftKeepsFilterFactoryOnly) {
  fs::create_directory_symlink(files.path(), files.file("sub/back"));
  fs::create_symlink(files.file("nowhere.8bf"), files.file("dangling.8bf"));
  Start(false);
  controller->SetIncludeSources(true);
  window->settings().Change([](Preferences& p) { p.scanSubDirs = 1; });
  EnterPluginView();
  EXPECT_EQ(page->CategoryRows(), (Strings{"[Unknown]", "Blur", "Deep", "FF Cat", "Lights", "Noise", "Warp"}));
  page->SelectCategories({"Lights"});
  EXPECT_EQ(Rows(), Strings{"Glow (.afs)"});  // a source has no mark

  window->pane(0)->SelectTab(FilePane::kFileView);
  window->SetPluginViewFresh(0, false);
  controller->Scan(0, true);
  WaitForScan();
  EXPECT_EQ(page->CategoryRows(), Strings{"FF Cat"});
}

// Photoshop Mode shows active filters only, in the host's menu; an En/Disable
// shows there at once.
TEST_F(PluginViewTest, PhotoshopModeShowsTheHostsMenuAndFollowsEnDisable) {
  Start();
  page->photoshopCheck()->setChecked(true);
  // The damaged plugin has an active name, so its row stays.
  EXPECT_EQ(page->CategoryRows(), (Strings{"Blur", "Noise", "Pixelate", "Sharpen", "Stylize", "-------------",
                                           "[Unknown]", "FF Cat", "Warp", "Other"}));
  Show("Blur", {"Gaussian Blur..."});
  EXPECT_EQ(Rows(), (Strings{"+ Soft Blur", "Blur", "Blur More", "Gaussian Blur...", "Motion Blur..."}));
  EXPECT_EQ(page->statusLine(), ">>> This filter is built into Photoshop.exe");
  EXPECT_TRUE(page->SelectedPaths().empty());
  // "Other" catches the active filter whose category has no row.
  page->SelectCategories({"Other"});
  EXPECT_EQ(Rows().front(), "+ Twirl");
  page->photoshopCheck()->setChecked(false);
  EXPECT_EQ(page->CategoryRows(), (Strings{"[Unknown]", "Blur", "FF Cat", "Noise", "Warp"}));

  Show("Blur", {"+ Soft Blur", "- Hidden"});
  FilterEnv recorded;
  recorded.shell = &shell;
  EXPECT_EQ(page->EnableDisable(window->pluginTypes(), recorded).renamed.size(), 2u);
  EXPECT_TRUE(files.Exists("blur64._bf") && files.Exists("hidden.8bf"));
  EXPECT_EQ(Rows(), (Strings{"- Soft Blur", "+ Hidden"}));
  EXPECT_EQ(page->CurrentPath(), files.file("hidden.8bf"));
  page->photoshopCheck()->setChecked(true);
  page->SelectCategories({"Blur"});
  EXPECT_EQ(Rows(), (Strings{"+ Hidden", "Blur", "Blur More", "Gaussian Blur...", "Motion Blur..."}));
}

TEST_F(PluginViewTest, DroppingFiltersOnACategoryChangesTheFileButAVirtualOneTakesNothing) {
  Start();
  Show("Blur", {"+ Soft Blur"});
  DropOnCategory("Noise");
  ResourceProbe probe;
  ASSERT_TRUE(ReadCom8bf(files.file("blur64.8bf"), probe, env));
  EXPECT_EQ(probe[1].category, "Noise");
  EXPECT_EQ(page->SelectedCategories(), Strings{"Noise"});
  EXPECT_EQ(Rows(), (Strings{"+ Grain", "+ Soft Blur"}));
  EXPECT_TRUE(shell.boxes.empty());

  SelectRows({"+ Grain"});
  DropOnCategory("[Unknown]");
  EXPECT_EQ(shell.boxes.size(), 1u);
  probe = {};
  ASSERT_TRUE(ReadCom8bf(files.file("noise32.8bf"), probe, env));
  EXPECT_EQ(probe[1].category, "Noise");
}

TEST_F(PluginViewTest, ChangeCatAsksUntilItHasANameAndCountsFailures) {
  Start();
  page->SelectCategories({"Blur", "Noise"});
  SelectRows({"+ Soft Blur", "+ Grain"});
  const Strings answers = {"", "[Premiere Thing]", "Sharp New"};
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
  EXPECT_EQ(Rows(), Strings{"+ Soft Blur"});

  // Cancel ends the command; without a selection the dialog doesn't open.
  shell.boxes.clear();
  controller->SetCategoryPrompt([&](const Strings&) { ++asked; return std::nullopt; });
  SelectRows({"+ Soft Blur"});
  window->command("mnuChangeCat")->trigger();
  EXPECT_TRUE(shell.boxes.empty());
  page->filterList()->clearSelection();
  controller->cmd_ChangeCategory(false);
  EXPECT_EQ(asked, 4);
  EXPECT_EQ(LastBox(), "Please select a plugin.");
}

TEST_F(PluginViewTest, EscDuringTheScanReturnsToTheFileView) {
  for (int i = 0; i < 300; ++i) files.Write("many" + std::to_string(i) + ".8bf", test::PiplPlugin("Bulk", "F"));
  Start(false);
  controller->SetCacheEnabled(false);
  int seen = 0;
  // At the 40th file the user presses Esc; the scan waits until the window
  // has seen the key, so the test doesn't race the event loop.
  controller->SetScanPacer([&](const std::string&) {
    if (++seen != 40) return;
    QMetaObject::invokeMethod(window, [&] {
      QKeyEvent esc(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
      QApplication::sendEvent(window, &esc);
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
  EXPECT_TRUE(shell.boxes[0].text.starts_with("No plugins or other supported files were found")) << LastBox();
  EXPECT_TRUE(page->CategoryRows().empty());
}

// The box describes the file behind the selected row (the kinds themselves
// are the catalogue's); the FFL View has none.
TEST_F(PluginViewTest, InformationDescribesTheFileOfTheSelectedRow) {
  Start();
  for (const auto& [category, row, expected] :
       {std::tuple{"Warp", "+ Bend", "Type: Photoshop Multiple Filter Plugin"},
        std::tuple{"[Unknown]", "+ broken.8bf", " is an unknown file type or maybe damaged."}}) {
    SCOPED_TRACE(row);
    shell.boxes.clear();
    Show(category, {row});
    window->command("mnuPlugInfo")->trigger();
    ASSERT_EQ(shell.boxes.size(), 1u);
    EXPECT_NE(LastBox().find(expected), std::string::npos) << LastBox();
  }
  window->pane(0)->SelectTab(FilePane::kFFLView);
  controller->cmd_PlugInInformation();
  EXPECT_EQ(LastBox(), "Plugin Information only works in File and Plugin View.");
}

TEST_F(PluginViewTest, ThePluginListGoesToATextFileACsvFileOrTheClipboard) {
  Start();
  page->SelectCategories({"Blur", "Noise"});
  page->SelectAllFilters(true);
  PlugInListChoice choice;
  controller->SetListPrompt([&] { return std::optional<PlugInListChoice>(choice); });
  QAction* list = window->command("mnuPlugInList");
  list->trigger();
  const std::string text = files.Read("FFL-List.txt");
  EXPECT_NE(text.find("Blur: Soft Blur (blur64.8bf)"), std::string::npos) << text;
  EXPECT_NE(text.find("Noise: Grain (noise32.8bf)"), std::string::npos) << text;

  choice.options.csv = true;
  choice.fileName = "list.csv";
  list->trigger();
  EXPECT_NE(files.Read("list.csv").find("Soft Blur;Blur;"), std::string::npos) << files.Read("list.csv");

  choice = {.options = {}, .toClipboard = true, .fileName = "never.txt"};
  QApplication::clipboard()->setText("old");
  list->trigger();
  EXPECT_FALSE(files.Exists("never.txt"));
  EXPECT_TRUE(QApplication::clipboard()->text().contains("Noise: Grain")) << QApplication::clipboard()->text().toStdString();

  // Cancel writes nothing; an empty selection is refused before the dialog.
  controller->SetListPrompt([] { return std::nullopt; });
  fs::remove(files.file("FFL-List.txt"));
  list->trigger();
  EXPECT_FALSE(files.Exists("FFL-List.txt"));
  page->filterList()->clearSelection();
  list->trigger();
  EXPECT_EQ(LastBox(), "Please select one or more plugin files.");
}

TEST(PluginViewDialogs, TheListDialogsBoxesMakeTheChoice) {
  PluginListDialog form4;
  form4.box("Check7")->setChecked(true);
  EXPECT_FALSE(form4.fileName()->isEnabled());
  form4.box("Check6")->setChecked(true);
  form4.box("Check2")->setChecked(false);
  const PlugInListChoice c = form4.choice();
  EXPECT_TRUE(c.toClipboard && c.options.csv);
  EXPECT_FALSE(c.options.filtername);
}

}  // namespace
}  // namespace trel
