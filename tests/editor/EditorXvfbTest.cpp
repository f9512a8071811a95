// The editor as a user meets it, on a real (virtual) display: a double click
// on a sample .afs in the main window opens the editor with its skin; typing
// into the red code box changes the preview within the delay. A screenshot is
// kept in TREL_ARTIFACTS. Runs only under the Xvfb test (TREL_EDITOR_XVFB).
#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QPlainTextEdit>
#include <QScreen>
#include <QTest>

#include "editor/FFEditorType1.h"
#include "filter/ProgramFolder.h"
#include "settings/SettingsStore.h"
#include "shell/FileListModel.h"
#include "shell/FileListView.h"
#include "shell/FilePane.h"
#include "shell/MainWindow.h"
#include "support/TempDir.h"

namespace trel {
namespace {

TEST(EditorXvfb, DoubleClickOpensTheSkinnedEditorAndTypingPreviews) {
  if (!std::getenv("TREL_EDITOR_XVFB")) GTEST_SKIP() << "runs under the Xvfb test only";
  test::TempDir home;
  FillProgramFolder(home.path(), {TREL_SHIPPED_DATA_DIR, TREL_TEMPLATE_DIR});
  const std::string samples = std::string(TREL_SHIPPED_DATA_DIR) + "/samples/";
  SettingsStore store(home.file("Trel10.ini"));
  QDir::setCurrent(QString::fromStdString(samples));
  auto window = std::make_unique<MainWindow>(store, home.path());
  window->Form_Initialize();
  window->Form_Load({});
  window->show();
  FilePane* pane = window->pane(0);
  pane->FillDirList(samples);
  pane->listView()->SelectOnly(pane->model()->FindText("WarmTone.afs"));
  pane->ListView1_KeyDown(Qt::Key_Return, Qt::NoModifier);

  FFEditorType1* editor = window->FFEditor(false);
  ASSERT_NE(editor, nullptr);
  ASSERT_TRUE(QTest::qWaitForWindowExposed(editor, 5000));
  EXPECT_EQ(editor->interfaceFile(), "Interfc4.des");
  EXPECT_EQ(window->filter().filename, "WarmTone.afs");
  ASSERT_TRUE(editor->WaitForPreview(5000));
  QTest::qWait(300);
  const QString artifacts = qEnvironmentVariable("TREL_ARTIFACTS", QDir::tempPath());
  QDir().mkpath(artifacts);
  editor->screen()->grabWindow(0).save(artifacts + "/editor-afs.png");

  auto* red = editor->findChild<QPlainTextEdit*>("Text5_1");
  ASSERT_NE(red, nullptr);
  red->setFocus();
  red->selectAll();
  const QImage before = editor->previewResult();
  const int runs = editor->previewRuns();
  QTest::keyClicks(red, "255-r");
  QElapsedTimer t;
  t.start();
  while (editor->previewRuns() == runs && t.elapsed() < 4000) QTest::qWait(20);
  EXPECT_GT(editor->previewRuns(), runs);
  EXPECT_LT(t.elapsed(), 3000);  // the 2 second delay after the last key, and the run
  EXPECT_NE(editor->previewResult(), before);
  QTest::qWait(200);
  editor->screen()->grabWindow(0).save(artifacts + "/editor-typed.png");
  // The non-rectangular skin: the desktop shows through its notches.
  editor->LoadSkin("Interfc6.des");
  EXPECT_TRUE(editor->GraphSliders());
  EXPECT_FALSE(editor->mask().contains(QPoint(2, 240)));
  QTest::qWait(300);
  editor->screen()->grabWindow(0).save(artifacts + "/editor-orbit.png");
  window->close();
}

}  // namespace
}  // namespace trel
