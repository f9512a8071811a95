#include "FileCommandsFixture.h"
#include <QProcess>

namespace trel {
namespace commander_test {
namespace {

TEST_F(FileCommandsTest, DropsMoveBetweenPanesOntoFoldersAndFromOtherPrograms) {
  FilePane* target = window->pane(1);
  // What a drag out of a pane carries: the files as URLs.
  Select({"a.8bf", " sub"});
  std::unique_ptr<QMimeData> carried(window->pane(0)->model()->mimeData(
      window->pane(0)->listView()->selection()->selectedRows(0)));
  ASSERT_TRUE(carried);
  QStringList urls;
  for (const QUrl& url : carried->urls()) urls << url.toLocalFile();
  urls.sort();
  EXPECT_EQ(urls, (QStringList{QString::fromStdString(left.file("a.8bf")), QString::fromStdString(left.file("sub"))}));

  // The drop of a file from the other pane is dragged by trel_xvfb_wm.

  // Onto a folder row: into that folder; a folder dropped into itself is refused.
  commander->DropFiles(0, {QString::fromStdString(left.file("b.txt"))}, left.file("sub"), 0); Settle();
  EXPECT_TRUE(left.Exists("sub/b.txt"));
  recorder.said.clear();
  commander->DropFiles(0, {QString::fromStdString(left.file("sub"))}, left.file("sub"), 0); Settle();
  EXPECT_TRUE(fs::is_directory(left.file("sub")));
  ASSERT_EQ(recorder.said.size(), 1u);
  // A drop from the desktop's file manager reaches the pane through its list.
  left.Write("desk.txt", "from the desktop");
  QMimeData desktop;
  desktop.setUrls({QUrl::fromLocalFile(QString::fromStdString(left.file("desk.txt")))});
  QWidget* viewport = target->listView()->details()->viewport();
  QDragEnterEvent enter(QPoint(5, 5), Qt::MoveAction | Qt::CopyAction, &desktop, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(viewport, &enter);
  EXPECT_TRUE(enter.isAccepted());
  QDropEvent drop(QPointF(5, 5), Qt::MoveAction | Qt::CopyAction, &desktop, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(viewport, &drop);
  QCoreApplication::processEvents();
  Settle();
  EXPECT_EQ(right.Read("desk.txt"), "from the desktop");
  EXPECT_NE(target->model()->FindText("desk.txt"), -1);
  // The classic list takes drops too.
  left.Write("classic.txt", "x");
  target->SetViewMode(FilePane::kClassic);
  desktop.setUrls({QUrl::fromLocalFile(QString::fromStdString(left.file("classic.txt")))});
  QDragEnterEvent classicEnter(QPoint(5, 5), Qt::MoveAction, &desktop, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(target->file1()->viewport(), &classicEnter);
  QDropEvent classicDrop(QPointF(5, 5), Qt::MoveAction, &desktop, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(target->file1()->viewport(), &classicDrop);
  QCoreApplication::processEvents();
  Settle();
  EXPECT_TRUE(right.Exists("classic.txt"));
  target->SetViewMode(FileListView::kDetails);
  // A folder from elsewhere moves in whole.
  commander->DropFiles(1, {QString::fromStdString(left.file("sub"))}, "", 0); Settle();
  EXPECT_TRUE(right.Exists("sub/b.txt"));
}

// F5 and F8 are pressed on a real display by trel_xvfb_keys.
TEST_F(FileCommandsTest, CommanderKeysReachTheCommands) {
  window->show();
  window->activateWindow();
  window->settings().Change([](Preferences& p) { p.passivePaneFolder = 1; });
  FilePane* p = window->pane(0);
  p->FocusList();
  Select({"b.txt"});
  QWidget* list = p->listView()->current();
  dialogs->inputs = {QString("Keyed")};
  QTest::keyClick(list, Qt::Key_F7);
  EXPECT_TRUE(fs::is_directory(left.file("Keyed")));
  Select({"c.afs"});
  QTest::keyClick(list, Qt::Key_F6);
  Settle();
  EXPECT_TRUE(right.Exists("c.afs"));
  QTest::keyClick(list, Qt::Key_Tab);
  EXPECT_EQ(window->ActivePane(), 1);
  QTest::keyClick(window->pane(1)->listView()->current(), Qt::Key_Tab);
  EXPECT_EQ(window->ActivePane(), 0);
  // Esc raises the flag long work polls.
  window->EscapeFlag() = false;
  QTest::keyClick(list, Qt::Key_Escape);
  EXPECT_TRUE(window->EscapeFlag());
}

TEST_F(FileCommandsTest, TheColourBarRunsFromBlueToRedAndIgnoresWhatIsOutOfRange) {
  StatusArea* area = window->statusArea();
  auto* label3 = window->findChild<QLabel*>("Label3");
  auto* label4 = window->findChild<QLabel*>("Label4");
  window->Progressbar(0);
  EXPECT_EQ(area->barLength(), 0);
  window->Progressbar(100);
  EXPECT_EQ(area->barLength(), area->width());
  EXPECT_EQ(area->barColour(), QColor(250, 0, 5));
  window->Progressbar(101);
  EXPECT_EQ(area->percent(), 100);  // nothing drawn, nothing changed
  window->Progressbar(40);
  EXPECT_EQ(area->barColour(), QColor(100, 0, 155));
  window->StatusDisplay(0, 10, 0);
  EXPECT_EQ(area->percent(), 40);
  const double now = QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
  window->StatusDisplay(1, 4, now - 2);
  EXPECT_EQ(label3->text(), "1 of 4");
  EXPECT_EQ(label4->text(), "7 sec.");
  EXPECT_EQ(area->percent(), 25);
  window->StatusDisplay(4, 4, now);
  EXPECT_EQ(label4->text(), "1 sec.");  // the last step never shows 0
  window->StatusDisplayClear();
  EXPECT_TRUE(label3->text().isEmpty());
  EXPECT_EQ(area->barLength(), 0);
}


TEST_F(FileCommandsTest, ZipAddListTestAndUnzipWithAwkwardNames) {
  ZipCommander* zip = ZipCommander::Of(*window);
  std::vector<std::pair<QString, QString>> shown;
  zip->SetOutputSink([&](const QString& title, const QString& text) { shown.emplace_back(title, text); });
  // Each command runs its programs while the window goes on; the test waits
  // for the command's last step.
  const auto run = [&](const char* command) {
    window->command(command)->trigger();
    return QTest::qWaitFor([&] { return !zip->busy(); }, 20000);
  };
  left.Write("with blank.afs", "blank");
  left.Write("-dash.txt", "dash");
  left.Write("Größe.pff", "umlaut");
  window->pane(0)->Refresh();
  Select({"with blank.afs", "-dash.txt", "Größe.pff"});
  dialogs->inputs = {QString("my pack.zip")};
  window->command("mnuAddtoZip")->trigger();
  // While zip runs the window takes no other input, as during a copy.
  EXPECT_TRUE(zip->busy() && commander->busy());
  ASSERT_TRUE(QTest::qWaitFor([&] { return !zip->busy(); }, 20000));
  EXPECT_FALSE(commander->busy());
  ASSERT_TRUE(left.Exists("my pack.zip")) << Said();
  EXPECT_EQ(window->pane(0)->maskEntry(), 5);  // the zip files show
  QProcess unzip;
  unzip.start("unzip", {"-Z1", QString::fromStdString(left.file("my pack.zip"))});
  ASSERT_TRUE(unzip.waitForFinished());
  QStringList names = QString::fromLocal8Bit(unzip.readAll()).split('\n', Qt::SkipEmptyParts);
  names.sort();
  EXPECT_EQ(names, (QStringList{"-dash.txt", "Größe.pff", "with blank.afs"}));

  Select({"my pack.zip"});
  ASSERT_TRUE(run("mnuViewZip"));
  ASSERT_TRUE(run("mnuTestZip"));
  ASSERT_EQ(shown.size(), 2u);
  EXPECT_EQ(shown[0].first, "View Zip");
  EXPECT_TRUE(shown[0].second.contains("with blank.afs"));
  EXPECT_EQ(shown[1].first, "Test Zip");
  EXPECT_TRUE(shown[1].second.contains("OK")) << shown[1].second.toStdString();

  // Unzip into the passive pane asks before an existing file.
  right.Write("with blank.afs", "keep me");
  dialogs->overwrite = {OverwriteButton::Ignore};
  ASSERT_TRUE(run("mnuUnzip"));
  ASSERT_EQ(dialogs->overwriteAsked.size(), 1u);
  // The question shows the entry, with the entry's size, not the archive's.
  EXPECT_TRUE(dialogs->overwriteAsked[0].contains(
      " | " + QString::fromStdString(left.file("my pack.zip")) + ": with blank.afs  (5 bytes, "))
      << dialogs->overwriteAsked[0].toStdString();
  EXPECT_EQ(right.Read("with blank.afs"), "keep me");
  EXPECT_EQ(right.Read("-dash.txt"), "dash");
  EXPECT_NE(window->pane(1)->model()->FindText("Größe.pff"), -1);

  // Unzip and Run: a fresh folder, opened in the passive pane.
  ASSERT_TRUE(run("mnuUnzipInstall"));
  EXPECT_EQ(window->pane(1)->folder(), right.file("my pack/"));
  EXPECT_EQ(right.Read("my pack/with blank.afs"), "blank");

  // Repair writes a new archive beside the old one.
  ASSERT_TRUE(run("mnuRepairZip"));
  EXPECT_TRUE(left.Exists("my pack_repaired.zip")) << shown.back().second.toStdString();

  // Test Zip on something that isn't a zip says nothing.
  shown.clear();
  Select({"b.txt"});
  ASSERT_TRUE(run("mnuTestZip"));
  EXPECT_TRUE(shown.empty());
}

// The window's Convert dialog converts the selection into the passive pane's folder.
TEST_F(FileCommandsTest, TheConvertDialogWritesIntoThePassivePane) {
  fs::copy_file(TREL_SAMPLES "WarmTone.afs", left.file("Warm.afs"));
  window->pane(0)->Refresh();
  Select({"Warm.afs"});
  auto* windowDialog = window->findChild<ConvertDialog*>("Convert");
  ASSERT_NE(windowDialog, nullptr);
  windowDialog->SetFormat(OutputFormat::TXT);
  dialogs->folders = {"="};
  int opened = 0;
  QObject::connect(window->command("cmdConvertDialog"), &QAction::triggered, [&] { ++opened; });
  window->commandButton(0)->click();  // the command row's Convert opens the dialog
  EXPECT_EQ(opened, 1);
  windowDialog->accept();
  EXPECT_FALSE(window->commandButton(0)->isEnabled());  // one conversion at a time
  ASSERT_TRUE(QTest::qWaitFor([&] { return window->commandButton(0)->isEnabled(); }, 20000));
  std::string written;
  for (const auto& entry : fs::directory_iterator(right.path())) written += entry.path().filename().string() + " ";
  EXPECT_EQ(written, "Warm.txt ") << Said();

  // Again: the Overwrite question comes on the window's thread; Skip keeps the file.
  right.Write("Warm.txt", "kept");
  dialogs->folders = {"="};
  dialogs->overwrite = {OverwriteButton::Ignore};
  windowDialog->accept();
  ASSERT_TRUE(QTest::qWaitFor([&] { return window->commandButton(0)->isEnabled(); }, 20000));
  ASSERT_EQ(dialogs->overwriteAsked.size(), 1u) << Said();
  EXPECT_EQ(right.Read("Warm.txt"), "kept");
}


// Esc set while the second conflict is asked ends the copy before the third
// file; nothing half-written is left behind.
class EscapingDialogs : public ScriptedDialogs {
 public:
  explicit EscapingDialogs(MainWindow& w) : window(w) {}
  OverwriteButton Overwrite(const QString& target, const QString& source) override {
    if (++asked == 2) window.EscapeFlag() = true;
    return ScriptedDialogs::Overwrite(target, source);
  }
  MainWindow& window;
  int asked = 0;
};

TEST_F(FileCommandsTest, EscStopsACopyBetweenFiles) {
  auto owned = std::make_unique<EscapingDialogs>(*window);
  owned->overwrite = {OverwriteButton::Overwrite, OverwriteButton::Overwrite, OverwriteButton::Overwrite};
  owned->folders = {"="};
  EscapingDialogs* escaping = owned.get();
  commander->SetDialogs(std::move(owned));
  for (const char* name : {"a.8bf", "b.txt", "c.afs"}) right.Write(name, "old");
  Select({"a.8bf", "b.txt", "c.afs"});
  commander->cmd_CopyFiles(); Settle();
  EXPECT_EQ(escaping->asked, 2);
  EXPECT_EQ(right.Read("c.afs"), "old");
  for (const char* name : {"a.8bf", "b.txt"}) {
    const std::string now = right.Read(name);
    EXPECT_TRUE(now == "old" || now == std::string("left ") + name) << now;
  }
  EXPECT_EQ(std::distance(fs::directory_iterator(right.path()), fs::directory_iterator()), 3);
}

// A copy returns to the event loop at once and runs as a job: the window
// answers while it runs, takes no second command, and a dialog of the job
// still takes its keys.
TEST_F(FileCommandsTest, ACopyRunsAsAJobWhileTheWindowKeepsItsEventLoop) {
  window->show();
  window->settings().Change([](Preferences& p) { p.passivePaneFolder = 1; });
  for (int i = 0; i < 200; ++i) left.Write("many" + std::to_string(i) + ".txt", std::string(1000, 'm'));
  window->pane(0)->Refresh(true);
  commander->mnuSelectAll_Click();
  QSignalSpy ended(commander, &FileCommander::jobFinished);
  commander->cmd_CopyFiles();
  ASSERT_TRUE(commander->busy());  // back before the copy has ended
  // Not re-entered: the command refuses while its job runs, and the window's
  // keys don't reach the lists.
  const size_t asked = dialogs->folderEntries.size();
  commander->cmd_CopyFiles();
  commander->cmd_MoveFiles();
  EXPECT_EQ(dialogs->folderEntries.size(), asked);
  QTest::keyClick(window->pane(0)->listView()->current(), Qt::Key_F7);  // Create Folder's key
  EXPECT_TRUE(dialogs->inputAsked.empty());
  QLineEdit dialogBox;  // a window of its own, as the Overwrite question is
  dialogBox.show();
  QTest::keyClicks(&dialogBox, "ok");
  EXPECT_EQ(dialogBox.text(), "ok");
  ASSERT_TRUE(ended.wait(20000));
  EXPECT_EQ(ended.count(), 1);
  EXPECT_FALSE(commander->busy());
  EXPECT_EQ(right.Read("many199.txt"), std::string(1000, 'm'));
  EXPECT_NE(window->pane(1)->model()->FindText("many0.txt"), -1);  // shown once done
  EXPECT_TRUE(recorder.said.empty()) << Said();
}

// A window closed while its copy runs ends the copy: no crash, and only
// whole files in the target.
TEST_F(FileCommandsTest, AWindowClosedDuringACopyLeavesOnlyWholeFiles) {
  window->settings().Change([](Preferences& p) { p.passivePaneFolder = 1; });
  const std::string bytes(1 << 20, 'w');
  for (int i = 0; i < 40; ++i) left.Write("big" + std::to_string(i), bytes);
  window->pane(0)->Refresh(true);
  commander->mnuSelectAll_Click();
  commander->cmd_CopyFiles();
  ASSERT_TRUE(commander->busy());
  QTest::qWait(1);
  window.reset();
  for (const auto& entry : fs::directory_iterator(right.path())) {
    const std::string name = entry.path().filename().string();
    EXPECT_NE(name.front(), '.') << name;  // no temporary copy
    if (name.rfind("big", 0) == 0) {
      EXPECT_EQ(fs::file_size(entry.path()), bytes.size()) << name;
    }
  }
}

}  // namespace
}  // namespace commander_test
}  // namespace trel
