// The doors into the editor from the main window: a source file, a filter
// already in the record (an FFL entry), the skin list at "OFF", hiding and
// unloading.
#include <gtest/gtest.h>

#include <QApplication>
#include <QPlainTextEdit>
#include <QTest>

#include "editor/FFEditorType1.h"
#include "filter/ProgramFolder.h"
#include "picture/PicView.h"
#include "settings/SettingsStore.h"
#include "shell/window/MainWindow.h"
#include "support/TempDir.h"

namespace trel {
namespace {

class EditorRoute : public ::testing::Test {
 protected:
  void SetUp() override {
    FillProgramFolder(home.path(), {TREL_SHIPPED_DATA_DIR, TREL_TEMPLATE_DIR});
    store = std::make_unique<SettingsStore>(home.file("Trel10.ini"));
    window = std::make_unique<MainWindow>(*store, home.path());
  }
  test::TempDir home;
  std::unique_ptr<SettingsStore> store;
  std::unique_ptr<MainWindow> window;
};

TEST_F(EditorRoute, SourceFileAndRecordBothReachTheEditor) {
  EXPECT_EQ(window->FFEditor(false), nullptr);  // made on first use
  window->LoadintoFFEditor(QString(TREL_SHIPPED_DATA_DIR) + "/samples/WarmTone.afs");
  FFEditorType1* editor = window->FFEditor(false);
  ASSERT_NE(editor, nullptr);
  EXPECT_TRUE(editor->isVisible());
  EXPECT_EQ(editor->findChild<QPlainTextEdit*>("Text5_1")->toPlainText().toStdString(),
            window->filter().codeR);
  editor->WaitForPreview();
  // An FFL entry: the view fills the record and passes no path.
  window->filter().codeR = "255-r";
  window->filter().title = "From the library";
  editor->hide();
  window->LoadintoFFEditor(QString());
  EXPECT_TRUE(editor->isVisible());
  EXPECT_EQ(editor->findChild<QPlainTextEdit*>("Text5_1")->toPlainText(), "255-r");
  editor->WaitForPreview();
  // A file that is no filter leaves the editor as it was.
  const std::string bad = home.Write("bad.8bf", "not a plugin");
  window->LoadintoFFEditor(QString::fromStdString(bad));
  EXPECT_EQ(editor->findChild<QPlainTextEdit*>("Text5_1")->toPlainText(), "255-r");
  // Unloading drops the window; the next use makes a new one.
  emit editor->unloadRequested();
  QTest::qWait(10);
  QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_EQ(window->FFEditor(false), nullptr);
}

TEST_F(EditorRoute, SkinListAtOffAppliesStraightToThePicture) {
  window->settings().Change([](Preferences& p) { p.interfaceFile = "OFF"; });
  window->LoadintoFFEditor(QString(TREL_SHIPPED_DATA_DIR) + "/samples/WarmTone.afs");
  EXPECT_EQ(window->FFEditor(false), nullptr);
}

}  // namespace
}  // namespace trel
