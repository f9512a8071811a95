// The doors into the editor from the main window: a source file, a filter
// already in the record (an FFL entry), the skin list at "OFF", hiding and
// unloading.
#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QPlainTextEdit>
#include <QTest>
#include <set>

#include "editor/FFEditorType1.h"
#include "filter/Dispatch.h"
#include "filter/FFL.h"
#include "filter/ProgramFolder.h"
#include "host/ff/FFEngine.h"
#include "picture/PicView.h"
#include "settings/SettingsStore.h"
#include "shell/window/MainWindow.h"
#include "support/RecordingShell.h"
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
  EXPECT_TRUE(QTest::qWaitFor([&] { return editor->previewIdle(); }, 5000));
  // An FFL entry: the view fills the record and passes no path.
  window->filter().codeR = "255-r";
  window->filter().title = "From the library";
  editor->hide();
  window->LoadintoFFEditor(QString());
  EXPECT_TRUE(editor->isVisible());
  EXPECT_EQ(editor->findChild<QPlainTextEdit*>("Text5_1")->toPlainText(), "255-r");
  EXPECT_TRUE(QTest::qWaitFor([&] { return editor->previewIdle(); }, 5000));
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

// The demo collection the run script opens: every source in data/demo/ was
// compiled into a plugin that reads back as the filter it came from, with
// code the engine takes; two of them are disabled; the library holds its
// filters; the categories give Plugin View something to show.
TEST(DemoCollection, EverySourceIsAWorkingPluginTwoDisabledAndALibrary) {
  const QString demo = TREL_DEMO_DIR;
  const QString sources = QString(TREL_SHIPPED_DATA_DIR) + "/demo";
  test::RecordingShell shell;
  FilterEnv env;
  env.shell = &shell;
  const QStringList txt = QDir(sources).entryList({"*.txt"}, QDir::Files);
  ASSERT_GE(txt.size(), 24);
  int disabled = 0;
  std::set<std::string> categories;
  for (const QString& name : txt) {
    FFFilter source, plugin;
    ASSERT_TRUE(LoadItFile(source, sources.toStdString() + "/", name.toStdString(), env)) << name.toStdString();
    const QString stem = QFileInfo(name).completeBaseName();
    QString compiled = stem + ".8bf";
    if (!QFileInfo::exists(demo + "/" + compiled)) {
      compiled = stem + "._bf";  // disabled by renaming
      ++disabled;
    }
    ASSERT_TRUE(QFileInfo::exists(demo + "/" + compiled)) << stem.toStdString();
    ASSERT_TRUE(LoadItFile(plugin, demo.toStdString() + "/", compiled.toStdString(), env)) << compiled.toStdString();
    EXPECT_EQ(plugin.title, source.title);
    EXPECT_EQ(plugin.category, source.category);
    EXPECT_EQ(plugin.codeR, source.codeR);
    ff::CompileError error;
    EXPECT_TRUE(ff::CompileFilter({plugin.codeR, plugin.codeG, plugin.codeB, plugin.codeA}, &error).valid())
        << stem.toStdString() << ": " << error.message;
    categories.insert(plugin.category);
  }
  EXPECT_EQ(disabled, 2);
  EXPECT_GE(categories.size(), 5u);
  FFLLibrary library;
  ASSERT_TRUE(ReadFFLLibrary((demo + "/Trel Demo Effects.ffl").toStdString(), library));
  EXPECT_EQ(library.items.size(), 8u);
  EXPECT_TRUE(library.problem.empty()) << library.problem;
}

}  // namespace
}  // namespace trel
