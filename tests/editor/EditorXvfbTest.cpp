// The editor as a user meets it, on a real (virtual) display: opened from the
// main window on a sample .afs, real clicks (xdotool, through the X server and
// the window manager) on every switch and field open their boxes, and real
// keys land there. Screenshots are kept in TREL_ARTIFACTS. Runs only under the
// Xvfb test (TREL_EDITOR_XVFB).
#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProcess>
#include <QScreen>
#include <QTest>

#include "editor/FFEditorType1.h"
#include "filter/ProgramFolder.h"
#include "settings/SettingsStore.h"
#include "shell/pane/FileListModel.h"
#include "shell/pane/FileListView.h"
#include "shell/pane/FilePane.h"
#include "shell/window/MainWindow.h"
#include "support/TempDir.h"

namespace trel {
namespace {

// The main window on the samples, with WarmTone.afs opened in the editor.
struct OpenEditor {
  OpenEditor() {
    FillProgramFolder(home.path(), {TREL_SHIPPED_DATA_DIR, TREL_TEMPLATE_DIR});
    store = std::make_unique<SettingsStore>(home.file("Trel10.ini"));
    QDir::setCurrent(QString::fromStdString(samples));
    window = std::make_unique<MainWindow>(*store, home.path());
    window->Form_Initialize();
    window->Form_Load({});
    window->show();
    FilePane* pane = window->pane(0);
    pane->FillDirList(samples);
    pane->listView()->SelectOnly(pane->model()->FindText("WarmTone.afs"));
    pane->ListView1_KeyDown(Qt::Key_Return, Qt::NoModifier);
    editor = window->FFEditor(false);
  }
  ~OpenEditor() { window->close(); }
  const std::string samples = std::string(TREL_SHIPPED_DATA_DIR) + "/samples/";
  test::TempDir home;
  std::unique_ptr<SettingsStore> store;
  std::unique_ptr<MainWindow> window;
  FFEditorType1* editor = nullptr;
};

// xdotool drives the X server as a user's hands do; Qt then reads the events
// from the server like any other, some time after xdotool returns.
bool Xdo(const QStringList& args) {
  const int code = QProcess::execute("xdotool", args);
  QTest::qWait(200);
  return code == 0;
}
bool ClickAt(QWidget* w, QPoint at = {-1, -1}) {
  if (at.x() < 0) at = w->rect().center();
  const QPoint g = w->mapToGlobal(at);
  return Xdo({"mousemove", "--sync", QString::number(g.x()), QString::number(g.y()), "click", "1"});
}
bool TypeText(const QString& text) { return Xdo({"type", "--delay", "30", text}); }
bool Key(const QString& key) { return Xdo({"key", key}); }

TEST(EditorXvfb, RealClicksOpenEveryBoxAndKeysLandThere) {
  if (!std::getenv("TREL_EDITOR_XVFB")) GTEST_SKIP() << "runs under the Xvfb test only";
  if (QProcess::execute("xdotool", {"version"}) != 0) GTEST_FAIL() << "xdotool is missing (scripts/deps.sh installs it)";
  OpenEditor open;
  FFEditorType1* editor = open.editor;
  ASSERT_NE(editor, nullptr);
  ASSERT_TRUE(QTest::qWaitForWindowExposed(editor, 5000));
  ASSERT_TRUE(QTest::qWaitFor([&] { return editor->previewIdle(); }, 5000));
  ASSERT_TRUE(QTest::qWaitForWindowActive(editor, 5000));
  ASSERT_EQ(QGuiApplication::platformName(), "xcb") << "real input needs the X server, not " << QGuiApplication::platformName().toStdString();
  auto box = [&](int i) { return editor->findChild<QPlainTextEdit*>(QString("Text5_%1").arg(i)); };
  auto label = [&](const QString& name) { return editor->findChild<QLabel*>(name); };
  auto* edit = editor->findChild<QLineEdit*>("Text10");
  auto focusName = [] { return QApplication::focusWidget() ? QApplication::focusWidget()->objectName() : QString(); };

  // The keys start in the code box that shows, never on "Hide FF Editor".
  ASSERT_FALSE(box(1)->isHidden());
  EXPECT_EQ(focusName(), "Text5_1");

  // Each switch shows its box after the release, keeps it, and takes the keys.
  const char* typed[4] = {"a/2", "255-r", "g", "b+1"};
  for (int i : {0, 2, 3, 1}) {
    ASSERT_TRUE(ClickAt(label(QString("Label2_%1").arg(i))));
    QTest::qWait(200);
    for (int j = 0; j < 4; ++j) EXPECT_EQ(box(j)->isVisible(), j == i) << "switch " << i << ", box " << j;
    EXPECT_TRUE(label(QString("Label2_%1").arg(i))->font().bold());
    EXPECT_EQ(focusName(), QString("Text5_%1").arg(i));
    ASSERT_TRUE(TypeText(typed[i]));  // the whole text is selected: typing replaces it
    EXPECT_EQ(box(i)->toPlainText(), typed[i]) << "switch " << i;
  }
  // A second click on the switch of the open box closes it; a third opens it again.
  ASSERT_TRUE(ClickAt(label("Label2_1")));
  EXPECT_TRUE(box(1)->isHidden());
  ASSERT_TRUE(ClickAt(label("Label2_1")));
  EXPECT_TRUE(box(1)->isVisible());

  // The five name fields: the edit box opens on the field and stays after the
  // release; Return writes the typed name and leaves the editor up.
  for (int i = 0; i < 5; ++i) {
    QLabel* field = label(QString("Label6_%1").arg(i));
    ASSERT_TRUE(ClickAt(field));
    ASSERT_TRUE(edit->isVisible()) << "field " << i;
    EXPECT_EQ(edit->geometry().topLeft(), field->geometry().topLeft());
    EXPECT_EQ(focusName(), "Text10");
    const QString name = QString("Name%1").arg(i);
    ASSERT_TRUE(TypeText(name));
    ASSERT_TRUE(Key("Return"));
    EXPECT_TRUE(edit->isHidden());
    EXPECT_EQ(field->text(), name);
    EXPECT_TRUE(editor->isVisible()) << "Return hid the editor";
    EXPECT_NE(focusName(), "cmdHide");
    EXPECT_TRUE(box(1)->isVisible()) << "field " << i << " closed the code box";
  }
  editor->EditorToFilter();
  EXPECT_EQ(open.window->filter().title, "Name2");

  // The slider name: Esc leaves it as it was, Return writes it.
  QLabel* sliderName = label("Label7_0");
  ASSERT_TRUE(sliderName->isVisible());
  const QString before = sliderName->text();
  ASSERT_TRUE(ClickAt(sliderName));
  ASSERT_TRUE(edit->isVisible());
  ASSERT_TRUE(TypeText("Heat"));
  ASSERT_TRUE(Key("Escape"));
  EXPECT_TRUE(edit->isHidden());
  EXPECT_EQ(sliderName->text(), before);
  ASSERT_TRUE(ClickAt(sliderName));
  ASSERT_TRUE(TypeText("Heat"));
  ASSERT_TRUE(Key("Return"));
  EXPECT_EQ(sliderName->text(), "Heat");

  // A click elsewhere ends an edit with what was typed; on the window body it
  // also closes the code boxes, as designed, and a switch brings them back.
  ASSERT_TRUE(ClickAt(label("Label6_3")));
  ASSERT_TRUE(TypeText("By click"));
  QPoint body(-1, -1);  // a place of the skin with no control on it
  for (int y = 470; y > 30 && body.x() < 0; y -= 4)
    for (int x = 630; x > 10 && body.x() < 0; x -= 4)
      if (!editor->childAt(x, y) && editor->mask().contains(QPoint(x, y))) body = QPoint(x, y);
  ASSERT_GE(body.x(), 0);
  ASSERT_TRUE(ClickAt(editor, body));
  EXPECT_TRUE(edit->isHidden());
  EXPECT_EQ(label("Label6_3")->text(), "By click");
  for (int j = 0; j < 4; ++j) EXPECT_TRUE(box(j)->isHidden());
  EXPECT_TRUE(editor->isVisible());
  ASSERT_TRUE(ClickAt(label("Label2_1")));
  EXPECT_TRUE(box(1)->isVisible());
  EXPECT_EQ(focusName(), "Text5_1");
  // Hidden and shown again, the editor gives the keys to the open box.
  editor->hide();
  QTest::qWait(200);
  editor->show();
  editor->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(editor, 5000));
  QTest::qWait(300);  // the window manager hands the focus over in steps
  EXPECT_TRUE(box(1)->isVisible());
  EXPECT_EQ(focusName(), "Text5_1");
  // Held and moved on the body, the mouse drags the window; that is no click,
  // so the open box stays.
  const QPoint from = editor->mapToGlobal(body), placed = editor->frameGeometry().topLeft();
  ASSERT_TRUE(Xdo({"mousemove", "--sync", QString::number(from.x()), QString::number(from.y()), "mousedown", "1"}));
  for (int step = 1; step <= 6; ++step)
    ASSERT_TRUE(Xdo({"mousemove", "--sync", QString::number(from.x() + 10 * step), QString::number(from.y() + 6 * step)}));
  ASSERT_TRUE(Xdo({"mouseup", "1"}));
  QTest::qWait(300);
  EXPECT_NE(editor->frameGeometry().topLeft(), placed);
  EXPECT_TRUE(box(1)->isVisible());
  const QString artifacts = qEnvironmentVariable("TREL_ARTIFACTS", QDir::tempPath());
  QDir().mkpath(artifacts);
  editor->screen()->grabWindow(0).save(artifacts + "/editor-clicked.png");
}

}  // namespace
}  // namespace trel
