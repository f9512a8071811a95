// The preview of the selected plugin in a window: when it runs, its cache,
// the commands that run a plugin from the window, Browse and Batch. How a
// preview is rendered and cached is the host's (tests/host).
#include <QAbstractItemView>
#include <QElapsedTimer>
#include <QMenuBar>
#include <QTimer>

#include "../host/HostTestSupport.h"
#include "ShellTesting.h"
#include "host/PlugHostClient.h"
#include "host/PreviewPipeline.h"
#include "host/PreviewRender.h"
#include "picture/PicView.h"
#include "picture/PreviewPicture.h"
#include "shell/commander/FileCommander.h"
#include "shell/dialogs/BrowseDialog.h"
#include "shell/preview/PreviewController.h"
#include "shell/preview/PreviewWindow.h"

namespace trel {
namespace {

namespace fs = std::filesystem;
QImage Rgb(const QImage& image) { return image.convertToFormat(QImage::Format_RGB32); }

class PreviewTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // The program folder's own picture.
    ASSERT_TRUE(test::PatternPicture(64, 48, false).save(QString::fromStdString(home.file("Test.bmp"))));
    window = std::make_unique<MainWindow>(store, home.path());
    preview = PreviewController::Of(*window);
    ASSERT_NE(preview, nullptr);
    preview->SetShell(&shell);
    preview->SetSelectedFileProvider([this] { return selected; });
  }
  void TearDown() override {
    window->close();
    window.reset();
  }
  std::string Plugin(const std::string& code, const std::string& name) {
    FFFilter f = test::SampleFilter(code);
    f.filename = name + ".afs";
    const std::string path = test::CompilePlugin(plugins, f);
    EXPECT_FALSE(path.empty());
    return path;
  }
  QImage Shown() { return preview->previewWindow()->shown(); }
  QImage Thumb() { return *preview->library().image(preview->thumbnail()); }
  static std::string Picture(const test::TempDir& dir, const std::string& name) {
    EXPECT_TRUE(test::PatternPicture(5, 5, false).save(QString::fromStdString(dir.file(name))));
    return dir.file(name);
  }
  // The thumbnail as `plugin` renders it, in the format the window shows.
  QImage Rendered(const std::string& plugin) { return Rgb(RenderWith(PrepareFilter(plugin), Thumb())); }

  test::TempDir home, plugins;
  SettingsStore store{home.file("Trel10.ini")};
  std::unique_ptr<MainWindow> window;
  PreviewController* preview = nullptr;
  test::RecordingShell shell;
  std::string selected;
};

TEST_F(PreviewTest, ToolbarButtonAndMenuEntrySwitchTogether) {
  QAction* tb = window->findChild<QAction*>("tbPreview");
  QAction* menu = window->command("mnuPluginPreview");
  ASSERT_TRUE(tb && menu);
  menu->trigger();
  EXPECT_TRUE(tb->isChecked() && menu->isChecked() && preview->previewWindow()->isVisible());
  tb->trigger();
  EXPECT_FALSE(tb->isChecked() || menu->isChecked() || preview->previewWindow()->isVisible());
  preview->mnuPluginPreview_Click();
  EXPECT_TRUE(tb->isChecked() && menu->isChecked());
  // Closing the Preview window switches both off.
  preview->previewWindow()->close();
  EXPECT_FALSE(tb->isChecked() || menu->isChecked());
}

TEST_F(PreviewTest, AListChangeStartsTheTimerAndABurstRunsOnePreview) {
  selected = Plugin("255 - c", "invert");
  window->settings().Change([](Preferences& p) { p.previewCache = 0; });
  preview->SelectionChanged();
  EXPECT_FALSE(preview->Timer1().isActive());  // the preview is off: nothing waits
  window->findChild<QAction*>("tbPreview")->trigger();
  window->pane(0)->FillDirList(plugins.path());
  preview->Timer1().stop();
  QAbstractItemView* list = window->pane(0)->listView()->current();
  ASSERT_GT(list->model()->rowCount(), 1);
  list->selectionModel()->setCurrentIndex(list->model()->index(1, 0), QItemSelectionModel::ClearAndSelect);
  EXPECT_TRUE(preview->Timer1().isActive());
  ASSERT_TRUE(QTest::qWaitFor([&] { return !preview->Timer1().isActive(); }, 3000));
  QTest::qWait(20);
  const int afterSwitch = preview->previewRuns();
  for (int i = 0; i < 8; ++i) preview->SelectionChanged();
  EXPECT_TRUE(preview->Timer1().isActive());
  EXPECT_EQ(preview->previewRuns(), afterSwitch);
  ASSERT_TRUE(QTest::qWaitFor([&] { return !preview->Timer1().isActive(); }, 3000));
  QTest::qWait(20);
  EXPECT_EQ(preview->previewRuns(), afterSwitch + 1);
}

TEST_F(PreviewTest, APreviewShowsTheFilteredThumbnailAndIsCachedUntilUpdated) {
  const std::string plugin = Plugin("255 - c", "invert");
  ASSERT_TRUE(preview->PreviewPlugin(plugin));
  EXPECT_EQ(Rgb(Shown()), Rendered(plugin));
  const std::string entry = PreviewCacheFile(home.path(), plugin);
  preview->FinishCacheWrites();  // the JPEG is written off the window's thread
  ASSERT_TRUE(fs::exists(entry));
  EXPECT_EQ(preview->previewRuns(), 1);

  // Served from the cache: no run, the JPEG's pixels.
  ASSERT_TRUE(preview->PreviewPlugin(plugin));
  EXPECT_EQ(preview->previewRuns(), 1);
  // Shown lately, it comes from memory: the JPEG isn't read at all, and the
  // pixels are the exact ones of the run.
  fs::rename(entry, entry + ".away");
  ASSERT_TRUE(preview->PreviewPlugin(plugin));
  EXPECT_EQ(preview->previewRuns(), 1);
  EXPECT_EQ(Rgb(Shown()), Rendered(plugin));
  fs::rename(entry + ".away", entry);

  // Update makes the entry anew.
  selected = plugin;
  preview->mnuUpdateCache_Click();
  EXPECT_EQ(preview->previewRuns(), 2);
  preview->FinishCacheWrites();
  EXPECT_TRUE(fs::exists(entry));

  // Clear asks first; answered No nothing goes.
  shell.nextAnswer = MsgResult::No;
  EXPECT_FALSE(preview->ClearCache(true));
  EXPECT_EQ(shell.boxes.size(), 1u);
  EXPECT_TRUE(fs::exists(entry));
  shell.nextAnswer = MsgResult::Yes;
  EXPECT_TRUE(preview->ClearCache(true));
  EXPECT_FALSE(fs::exists(entry));
  EXPECT_EQ(preview->previewMemory().count(), 0u);
  EXPECT_TRUE(fs::is_directory(home.file("cache")));

  // Update on a plugin without an entry makes one.
  preview->mnuUpdateCache_Click();
  preview->FinishCacheWrites();
  EXPECT_TRUE(fs::exists(entry));
}

TEST_F(PreviewTest, AnEscBelongsToTheRunItWasPressedForNotToTheNextPreviews) {
  window->settings().Change([](Preferences& p) { p.previewCache = 0; });  // every preview is a run
  const std::string invert = Plugin("255 - c", "invert"), half = Plugin("c / 2", "half");
  // Esc in the main window, with nothing running, and between two previews.
  window->show();
  QTest::keyClick(window.get(), Qt::Key_Escape);
  ASSERT_TRUE(window->EscapeFlag().load());
  ASSERT_TRUE(preview->PreviewPlugin(invert));
  EXPECT_EQ(Rgb(Shown()), Rendered(invert));
  QTest::keyClick(window.get(), Qt::Key_Escape);
  ASSERT_TRUE(preview->PreviewPlugin(half));
  EXPECT_EQ(Rgb(Shown()), Rendered(half));
}

TEST_F(PreviewTest, ThePreviewWindowOpensBesideTheMainWindowOrBelowItsMenuBar) {
  for (const QSize size : {QSize(500, 400), QSize(4000, 3000)}) {  // room beside it, and none
    TearDown();
    SetUp();
    window->resize(size);
    window->move(0, 0);
    window->show();
    QTest::qWait(10);
    preview->previewWindow()->show();
    const QRect menu(window->menuBar()->mapToGlobal(QPoint(0, 0)), window->menuBar()->size());
    const QRect placed = preview->previewWindow()->frameGeometry();
    EXPECT_FALSE(placed.intersects(menu)) << size.width() << ": " << placed.x() << "," << placed.y();
    if (size.width() > 1000) {  // over the window: at its top, not down by the buttons
      EXPECT_LT(placed.top(), window->geometry().center().y()) << placed.y();
    }
    preview->previewWindow()->hide();
  }
}

TEST_F(PreviewTest, AnUnwritableCacheSaysSoOnceAndThePreviewStillShows) {
  ClearPreviewCache(home.path());
  fs::remove_all(home.file("cache"));
  test::WriteFileBytes(home.file("cache"), "a file in the cache's place");
  ASSERT_TRUE(preview->PreviewPlugin(Plugin("255 - c", "one")));
  ASSERT_TRUE(preview->PreviewPlugin(Plugin("c / 2", "two")));
  EXPECT_FALSE(Shown().isNull());
  preview->FinishCacheWrites();
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_NE(shell.boxes[0].text.find("Couldn't write the preview cache file"), std::string::npos);
  EXPECT_EQ(test::ReadFileBytes(home.file("cache")), "a file in the cache's place");
}

TEST_F(PreviewTest, PicturesMenuChangesThePictureAndMovesTheCheckMark) {
  preview->PreparePreviewPic();
  QAction* test = window->findChild<QAction*>("mnuPicturesTest");
  ASSERT_NE(test, nullptr);
  EXPECT_TRUE(test->isChecked());
  const std::string tall = home.file("tall.png");
  ASSERT_TRUE(test::PatternPicture(200, 800, false).save(QString::fromStdString(tall)));
  preview->mnuPictures_Click(QString::fromStdString(tall));
  EXPECT_FALSE(test->isChecked());
  EXPECT_EQ(preview->PreviewPicture(), tall);
  EXPECT_FLOAT_EQ(preview->aspect(), 0.25f);
}

TEST_F(PreviewTest, InvokeRunsOnThePreviewOrThePictureEditorAndRefusesWhatItCannotRun) {
  const std::string invert = Plugin("255 - c", "invert");
  selected = invert;
  preview->cmd_Invoke();
  EXPECT_TRUE(shell.boxes.empty());
  EXPECT_EQ(Rgb(Shown()), Rendered(invert));
  // It says where the run went.
  EXPECT_TRUE(preview->previewWindow()->windowTitle().contains("invert.8bf on the preview picture"));

  // A picture opened in the Picture Editor is the target from then on.
  const std::string path = home.file("Test.bmp");
  window->LoadintoPicView(QString::fromStdString(path));
  PicView* pic = preview->picView(false);
  ASSERT_NE(pic, nullptr);
  EXPECT_TRUE(pic->isVisible());
  EXPECT_TRUE(window->prefs().pics.empty());  // "Auto Add" is off
  window->settings().Change([](Preferences& p) { p.autoAdd[1] = 1; });
  window->LoadintoPicView(QString::fromStdString(path));
  window->LoadintoPicView(QString::fromStdString(path));
  EXPECT_EQ(window->prefs().pics, std::vector<std::string>{path});
  const QImage picture = pic->Picture();
  EXPECT_EQ(picture.size(), QSize(64, 48));
  preview->cmd_Invoke();
  EXPECT_EQ(pic->Picture().pixelColor(4, 4).red(), 255 - picture.pixelColor(4, 4).red());
  pic->mnuUndo_Click();
  EXPECT_EQ(pic->Picture().pixelColor(4, 4), picture.pixelColor(4, 4));
  pic->close();

  const std::pair<std::string, std::string> refused[] = {
      {"", "Please select a plugin or other supported file."},
      {plugins.Write("x.prm", "prm"), "Please select a Photoshop-compatible plugin to execute this function."},
      // The load box (the host's), then the cause the host found.
      {plugins.Write("other.8bf", "MZ not ours"), "no Windows DLL"},
  };
  for (const auto& [file, message] : refused) {
    selected = file;
    shell.boxes.clear();
    preview->cmd_Invoke();
    ASSERT_EQ(shell.boxes.size(), file.ends_with("8bf") ? 2u : 1u) << file;
    EXPECT_NE(shell.boxes.back().text.find(message), std::string::npos) << shell.boxes.back().text;
  }
  // A bare-named plugin runs only after Yes.
  fs::copy_file(invert, plugins.file("bare_8bf"));
  selected = plugins.file("bare_8bf");
  shell.boxes.clear();
  shell.nextAnswer = MsgResult::No;
  preview->cmd_Invoke();
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].title, "Warning");
  // About shows our plugin's own box.
  selected = Plugin("r", "about");
  shell.boxes.clear();
  preview->cmd_About();
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_NE(shell.boxes[0].text.find("A. Tester"), std::string::npos);
}

// A Windows plugin in the preview, in Batch and run from the window: an Esc
// pressed before (to close a box) does not stop the run, one pressed during a
// run from the window ends it, and a plugin that fails says why.
TEST_F(PreviewTest, WindowsPluginsRunAfterAnEarlierEscStopOnEscAndNameTheirFailure) {
  const std::string dir = TREL_PLUGHOST_TEST_DIR;
  const std::string invert = dir + "/invert64.8bf", crash = dir + "/crash64.8bf";
  if (!fs::exists(crash)) GTEST_SKIP() << "the test plugins were not built (no mingw-w64)";
  if (FindWine(false).empty()) GTEST_SKIP() << "wine64 is not installed";
  window->settings().Change([](Preferences& p) { p.previewCache = 0; });
  preview->PreparePreviewPic();
  window->EscapeFlag() = true;
  ASSERT_TRUE(preview->PreviewPlugin(invert));
  EXPECT_EQ(qRed(Shown().pixel(1, 1)), 255 - qRed(Thumb().pixel(1, 1)));
  test::TempDir in, out;
  window->EscapeFlag() = true;
  preview->RunBatch(invert, {Picture(in, "p.png")}, out.path());
  ASSERT_TRUE(QTest::qWaitFor([&] { return !preview->batchRunning(); }, 60000));
  EXPECT_EQ(preview->lastBatch().written, 1);

  // A run from the window may show the plugin's dialog and has no time limit;
  // Esc reaches the window only while it keeps handling events during the run.
  // A first run starts the host, so that the hanging plugin's own run is
  // under way when Esc comes.
  shell.boxes.clear();
  selected = invert;
  preview->cmd_Invoke();
  ASSERT_EQ(preview->library().ImgGetStatus(), IMG_OK) << preview->library().ImgErrString();
  selected = dir + "/hang64.8bf";
  QTimer::singleShot(1500, window.get(), [this] { QTest::keyClick(window.get(), Qt::Key_Escape); });
  QElapsedTimer clock;
  clock.start();
  preview->cmd_Invoke();
  EXPECT_GE(clock.elapsed(), 1500);
  EXPECT_LT(clock.elapsed(), 60000);
  EXPECT_TRUE(shell.boxes.empty()) << "a run the user stopped is no error";

  EXPECT_FALSE(preview->PreviewPlugin(crash));
  const QLabel* label = preview->previewWindow()->findChild<QLabel*>("Picture1");
  ASSERT_NE(label, nullptr);
  EXPECT_TRUE(label->text().contains("The plugin crashed")) << label->text().toStdString();
  EXPECT_TRUE(label->text().contains("Access violation")) << label->text().toStdString();
}

TEST_F(PreviewTest, RandomizeAndSavePreview) {
  preview->mnuRandomize_Click();  // no filter in hand: nothing happens
  EXPECT_TRUE(Shown().isNull());
  window->filter() = test::SampleFilter("ctl(0)");
  preview->mnuRandomize_Click();
  const int first = window->filter().ctlValue[1];
  ASSERT_FALSE(Shown().isNull());
  EXPECT_EQ(qRed(Shown().pixel(1, 1)), first);
  const std::string out = home.file("saved.png");
  ASSERT_TRUE(preview->cmd_SavePreview(out));
  EXPECT_EQ(QImage(QString::fromStdString(out)).size(), Shown().size());
  EXPECT_FALSE(preview->cmd_SavePreview(home.file("no/such/folder/x.png")));
  EXPECT_EQ(shell.boxes.size(), 1u);  // the library's message
}

TEST_F(PreviewTest, BrowseFillsEveryTileAndBatchRefusesAForeignPlugin) {
  std::vector<std::string> list;
  for (const char* code : {"255 - c", "c / 2", "r"}) list.push_back(Plugin(code, std::string("b") + char('0' + list.size())));
  preview->PreparePreviewPic();
  ContactSheetOptions options;
  options.threads = 2;
  BrowseDialog dialog(list, Thumb(), options);
  QSignalSpy done(&dialog, &BrowseDialog::allFinished);
  dialog.Start();
  ASSERT_TRUE(QTest::qWaitFor([&] { return dialog.allDone(); }, 10000));
  EXPECT_EQ(done.count(), 1);
  EXPECT_EQ(dialog.tile(1).pixelColor(2, 2).green(), Thumb().pixelColor(2, 2).green() / 2);
  QSignalSpy activated(&dialog, &BrowseDialog::pluginActivated);
  emit dialog.grid()->itemActivated(dialog.grid()->item(2));
  ASSERT_EQ(activated.count(), 1);
  EXPECT_EQ(activated[0][0].toString().toStdString(), list[2]);

  // A plugin Batch can't run says so, with the library's sentence and the
  // cause as the preview and Browse give them, and writes nothing.
  test::TempDir in, out;
  preview->RunBatch(plugins.Write("foreign.8bf", "MZ elsewhere"), {Picture(in, "p.png")}, out.path());
  ASSERT_TRUE(QTest::qWaitFor([&] { return !preview->batchRunning(); }, 10000));
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text.rfind(ImgStatusText(IMG_ERR_NOT_SUPPORTED), 0), 0u) << shell.boxes[0].text;
  EXPECT_NE(shell.boxes[0].text.find("no Windows DLL"), std::string::npos) << shell.boxes[0].text;
  EXPECT_TRUE(fs::is_empty(out.path()));
}

TEST_F(PreviewTest, BatchOnThePicturesOfTheOtherPaneNeverWritesOverThem) {
  selected = Plugin("255 - c", "invert");
  test::TempDir pics;
  const QImage original = test::PatternPicture(6, 6, false);
  ASSERT_TRUE(original.save(QString::fromStdString(pics.file("p.png"))));
  window->pane(0)->ChangeFolder(plugins.path());
  window->pane(1)->ChangeFolder(pics.path());
  window->Switchit(0);
  preview->mnuBatchProcessing_Click();
  // The window goes on while the pictures are filtered, and takes only Esc.
  EXPECT_TRUE(preview->batchRunning() && FileCommander::Of(*window)->busy());
  ASSERT_TRUE(QTest::qWaitFor([&] { return !preview->batchRunning(); }, 10000));
  EXPECT_FALSE(FileCommander::Of(*window)->busy());
  ASSERT_FALSE(shell.boxes.empty());
  EXPECT_EQ(shell.boxes.back().title, "Batch");
  for (const auto& box : shell.boxes) EXPECT_EQ(box.text.find("Do you want to replace it?"), std::string::npos);
  EXPECT_EQ(Rgb(QImage(QString::fromStdString(pics.file("p.png")))), Rgb(original));
  ASSERT_TRUE(pics.Exists("invert/p.png"));
  EXPECT_EQ(QImage(QString::fromStdString(pics.file("invert/p.png"))).pixelColor(1, 1).red(),
            255 - original.pixelColor(1, 1).red());
}

}  // namespace
}  // namespace trel
