#include <QDropEvent>
#include <QElapsedTimer>
#include <QTreeWidget>
#include <QUrl>

#include "ShellTesting.h"
#include "filter/FFL.h"
#include "filter/TextFormats.h"
#include "shell/fflview/FflViewController.h"
#include "shell/fflview/FflViewPage.h"
#include "shell/pluginview/PluginViewController.h"
#include "shell/pluginview/PluginViewPage.h"

namespace trel {
namespace {

using namespace test;

FFFilter Filter(const std::string& filename, const std::string& category, const std::string& title,
                const std::string& author) {
  FFFilter f;
  f.filename = filename;
  f.category = category;
  f.title = title;
  f.author = author;
  f.copyright = "free";
  f.codeR = f.codeG = f.codeB = f.codeA = "r";
  return f;
}

// A library file made of the given filters, as a library writer makes it.
std::string Library(const std::vector<FFFilter>& filters) {
  char count[8];
  std::snprintf(count, sizeof count, "%5zu", filters.size());
  std::string text = std::string("FFL1.0\r\n") + count + "\r\n";
  for (const FFFilter& f : filters) text += FFLEntryText(f);
  return text;
}

class FflViewTest : public ::testing::Test {
 protected:
  void SetUp() override {
    controller = FflController::Of(*window);
    ASSERT_NE(controller, nullptr);
    controller->SetHooks(&shell);
    PluginViewController::Of(*window)->SetHooks(&shell);
    window->pane(1)->ChangeFolder(files.file("out/"));
    page = window->pane(0)->fflView();
  }
  std::string MakeLibrary() {
    std::filesystem::create_directory(files.file("out"));
    return files.Write("lib.ffl", Library({Filter("a.8bf", "Blur", "Alpha", "Ann"), Filter("b.8bf", "Noise", "Beta", "Bob"),
                                           Filter("c.8bf", "Blur", "Gamma Ray", "Cy")}));
  }
  std::vector<Strings> Rows() const {
    std::vector<Strings> rows;
    for (int i = 0; i < page->count(); ++i) rows.push_back(page->RowTexts(i));
    return rows;
  }
  void Select(std::initializer_list<int> rows) {
    page->list()->clearSelection();
    for (int r : rows) page->list()->topLevelItem(r)->setSelected(true);
  }

  TempDir home, files;
  RecordingShell shell;  // outlives the window
  const std::string libraryPath = MakeLibrary();
  StartedWindow window{home, files.path()};
  FflController* controller = nullptr;
  FflViewPage* page = nullptr;
};

TEST_F(FflViewTest, OpeningALibraryShowsItsEntriesInTheFflView) {
  window->ConvertFFL(QString::fromStdString(libraryPath));
  EXPECT_EQ(window->pane(0)->paneView(), FilePane::kFFLView);
  EXPECT_EQ(Rows(), (std::vector<Strings>{{"Blur", "Alpha", "Ann"}, {"Noise", "Beta", "Bob"}, {"Blur", "Gamma Ray", "Cy"}}));
  EXPECT_EQ(page->libraryPath(), libraryPath);

  // Something else than a library keeps the view as it was and says so.
  const std::string text = files.Write("not.ffl", "hello\r\n");
  window->ConvertFFL(QString::fromStdString(text));
  EXPECT_EQ(page->libraryPath(), libraryPath);
}

TEST_F(FflViewTest, OpeningAnEntryLoadsItIntoTheWindowsFilter) {
  controller->Open(libraryPath);
  int handled = -1;
  controller->SetEntryHandler([&](int pane) { handled = pane; });
  ASSERT_TRUE(controller->OpenEntry(0, 1));
  EXPECT_EQ(handled, 0);
  EXPECT_EQ(window->filter().title, "Beta");
  EXPECT_EQ(window->filter().author, "Bob");

  controller->SetEntryHandler({});
  ASSERT_TRUE(controller->OpenEntry(0, 2));
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_NE(shell.boxes[0].text.find("Title: Gamma Ray"), std::string::npos);
}

TEST_F(FflViewTest, DeleteStrikesEntriesOutInPlaceAfterTheQuestion) {
  controller->Open(libraryPath);
  const std::string before = files.Read("lib.ffl");
  Select({0, 2});
  shell.nextAnswer = MsgResult::No;
  EXPECT_EQ(controller->Delete(0), 0);
  EXPECT_EQ(files.Read("lib.ffl"), before);
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "Do you want to delete these/this FFL item(s)?");
  EXPECT_EQ(shell.boxes[0].title, "Delete FFL Item");

  shell.nextAnswer = MsgResult::Yes;
  EXPECT_EQ(controller->Delete(0), 2);
  EXPECT_EQ(Rows(), (std::vector<Strings>{{"Noise", "Beta", "Bob"}}));
  // What is left still opens by its own number.
  ASSERT_TRUE(controller->OpenEntry(0, 0));
  EXPECT_EQ(window->filter().title, "Beta");
  page->Reload(controller->Env());
  EXPECT_EQ(page->count(), 1);
}

TEST_F(FflViewTest, SearchSelectsTheMatchingEntries) {
  controller->Open(libraryPath);
  EXPECT_EQ(controller->Search(0, "blur"), 2);
  EXPECT_EQ(page->SelectedNumbers(), (std::vector<int>{1, 3}));
  EXPECT_TRUE(shell.boxes.empty());
  EXPECT_EQ(controller->Search(0, "nowhere"), 0);
  EXPECT_TRUE(page->SelectedNumbers().empty());
  EXPECT_EQ(shell.boxes.size(), 1u);
}

TEST_F(FflViewTest, ExtractWritesTheSelectionIntoThePassivePanesFolder) {
  controller->Open(libraryPath);
  Select({1, 2});
  EXPECT_EQ(controller->Extract(0, OutputFormat::AFS), 2);
  FFFilter back;
  FilterEnv env;
  ASSERT_TRUE(ReadAFS(back, files.file("out/"), "b.afs", env));
  EXPECT_EQ(back.title, "Beta");
  EXPECT_TRUE(files.Exists("out/c.afs"));
  EXPECT_FALSE(files.Exists("out/a.afs"));

  // An existing file is left alone and the user is told.
  files.Write("out/b.afs", "mine");
  std::filesystem::remove(files.file("out/c.afs"));
  EXPECT_EQ(controller->Extract(0, OutputFormat::AFS), 1);
  EXPECT_EQ(files.Read("out/b.afs"), "mine");
  ASSERT_EQ(shell.boxes.size(), 1u);

  Select({});
  shell.boxes.clear();
  EXPECT_EQ(controller->Extract(0, OutputFormat::Plugin8bf), 0);
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "Please select one or more files.");
}

TEST_F(FflViewTest, FilesAddedOrDroppedJoinTheLibrary) {
  FilterEnv env;
  FFFilter glow = Filter("glow.afs", "Light", "Glow", "Gil");
  Writeafspff(glow, files.path(), 0, env);
  files.Write("junk.afs", "no filter");
  controller->Open(libraryPath);
  EXPECT_EQ(controller->AddFiles(0, {files.file("glow.afs"), files.file("junk.afs")}), 1);
  EXPECT_EQ(page->count(), 4);
  EXPECT_EQ(page->RowTexts(3), (Strings{"Light", "Glow", "Gil"}));
  ASSERT_EQ(shell.boxes.size(), 1u);  // the junk is named
  EXPECT_NE(shell.boxes[0].text.find("junk.afs"), std::string::npos);

  // A drop of files onto the list adds them too.
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(QString::fromStdString(files.file("glow.afs")))});
  QWidget* viewport = page->list()->viewport();
  QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(viewport, &enter);
  EXPECT_TRUE(enter.isAccepted());
  QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(viewport, &drop);
  EXPECT_EQ(page->count(), 5);
}

TEST_F(FflViewTest, CreateFflMakesALibraryOfThePluginViewSelection) {
  FilterEnv env;
  for (const char* name : {"one", "two"}) {
    FFFilter f = Filter(std::string(name) + ".afs", "Src", name, "Me");
    Writeafspff(f, files.path(), 0, env);
  }
  PluginViewController::Of(*window)->SetIncludeSources(true);
  window->SetPluginViewFresh(0, false);
  window->pane(0)->SelectTab(FilePane::kPluginView);
  PluginViewPage* plugins = window->pane(0)->pluginView();
  ASSERT_TRUE(QTest::qWaitFor([&] { return !plugins->busy(); }, 20000));
  plugins->SelectCategories({"Src"});
  plugins->SelectAllFilters(true);
  std::string askedIn;
  controller->SetLibraryPrompt([&](const std::string& folder) {
    askedIn = folder;
    return std::optional<std::string>(folder + "made");
  });
  window->command("mnuCreateLibrary")->trigger();
  EXPECT_EQ(askedIn, files.path());
  ASSERT_TRUE(files.Exists("made.ffl"));
  FFLLibrary made;
  ASSERT_TRUE(ReadFFLLibrary(files.file("made.ffl"), made));
  ASSERT_EQ(made.items.size(), 2u);
  EXPECT_EQ(made.items[0].title, "one");
}

TEST_F(FflViewTest, AHundredThousandEntriesOpenAndABrokenTailShowsWhatCouldBeRead) {
  std::string text = "FFL1.1\r\n99999\r\n";
  const std::string entry = FFLEntryText(Filter("x.8bf", "Bulk", "Entry", "Auto"));
  text.reserve(entry.size() * 100001);
  for (int i = 0; i < 100000; ++i) text += entry;
  text += "cut.8bf\r\nBulk\r\n";  // an entry cut short
  const std::string big = files.Write("big.ffl", text);
  QElapsedTimer timer;
  timer.start();
  ASSERT_TRUE(controller->Open(big));
  EXPECT_EQ(page->count(), 100000);
  EXPECT_LT(timer.elapsed(), 20000);
  page->SelectAllEntries(true);
  EXPECT_EQ(page->SelectedNumbers().size(), 100000u);
}

}  // namespace
}  // namespace trel
