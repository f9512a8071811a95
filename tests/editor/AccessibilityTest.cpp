// What a screen reader gets, read through Qt's accessibility interfaces as the
// desktop bridge reads them: the editor's fields say their purpose and what
// they show, its sliders are sliders with a value; in the main window every
// control on screen has a name and each file is reported once.
#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTest>
#include <functional>

#include "editor/FFEditorType1.h"
#include "filter/ProgramFolder.h"
#include "settings/SettingsStore.h"
#include "shell/pane/FilePane.h"
#include "shell/pane/FileListView.h"
#include "shell/pluginview/PluginViewPage.h"
#include "shell/window/MainWindow.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace {

QAccessibleInterface* Iface(QObject* o) {
  QAccessibleInterface* i = o ? QAccessible::queryAccessibleInterface(o) : nullptr;
  EXPECT_NE(i, nullptr) << (o ? o->objectName().toStdString() : "null object");
  return i;
}

class EditorAccess : public ::testing::Test {
 protected:
  void SetUp() override {
    FillProgramFolder(dir.path(), {TREL_SHIPPED_DATA_DIR, TREL_TEMPLATE_DIR});
    store = std::make_unique<SettingsStore>(dir.file("Trel10.ini"));
    EditorContext ctx;
    ctx.filter = &filter;
    ctx.programFolder = dir.path();
    ctx.store = store.get();
    ctx.shell = &shell;
    ctx.interfaceFile = [this] { return skin; };
    editor = std::make_unique<FFEditorType1>(std::move(ctx));
    filter.filename = "Warm.8bf";
    filter.category = "Demo";
    filter.title = "Warm Tone";
    filter.author = "Trel";
    filter.copyright = "Free";
    filter.ctlName[1] = "Warmth";
    filter.ctlValue[1] = 10;
    filter.mapName[2] = "Curve";
    filter.ctlValue[3] = 77;
    editor->FilterToEditor();
    editor->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(editor.get()));
  }
  void TearDown() override {
    EXPECT_TRUE(QTest::qWaitFor([&] { return editor->previewIdle(); }, 5000));
    editor.reset();
  }
  QAccessibleInterface* Of(const QString& name) { return Iface(editor->findChild<QWidget*>(name)); }

  test::TempDir dir;
  test::RecordingShell shell;
  FFFilter filter;
  std::string skin = "Interfc4.des";
  std::unique_ptr<SettingsStore> store;
  std::unique_ptr<FFEditorType1> editor;
};

TEST_F(EditorAccess, FieldsSayTheirPurposeAndWhatTheyShow) {
  const struct {
    const char *widget, *name, *value;
  } fields[] = {{"Label6_0", "Filename", "Warm.8bf"}, {"Label6_1", "Category", "Demo"},
                {"Label6_2", "Filtername", "Warm Tone"}, {"Label6_3", "Author", "Trel"},
                {"Label6_4", "Copyright", "Free"},       {"Label7_0", "Name of slider 1", "Warmth"},
                {"Label1_0", "Value of slider 1", "10"}};
  for (const auto& f : fields) {
    SCOPED_TRACE(f.widget);
    QAccessibleInterface* field = Of(f.widget);
    ASSERT_NE(field, nullptr);
    EXPECT_EQ(field->text(QAccessible::Name), f.name);
    EXPECT_EQ(field->text(QAccessible::Value), f.value);
    EXPECT_FALSE(field->state().invisible);
    if (QString(f.widget).startsWith("Label6")) { EXPECT_EQ(field->text(QAccessible::Description), f.value); }
  }
  QAccessibleInterface* value = Of("Label1_0");
  // The value follows the field: a change is heard without a new interface.
  editor->SetSliderValue(0, 99);
  EXPECT_EQ(value->text(QAccessible::Value), "99");

  // The switches are checkable buttons; pressing one through the interface
  // opens its box as a click does.
  QAccessibleInterface* red = Of("Label2_1");
  QAccessibleInterface* green = Of("Label2_2");
  EXPECT_EQ(red->text(QAccessible::Name), "Show/Hide Redcode");
  EXPECT_TRUE(red->state().checkable);
  EXPECT_TRUE(red->state().checked);
  EXPECT_FALSE(green->state().checked);
  ASSERT_NE(green->actionInterface(), nullptr);
  green->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
  EXPECT_TRUE(green->state().checked);
  EXPECT_FALSE(red->state().checked);
  EXPECT_TRUE(editor->findChild<QPlainTextEdit*>("Text5_2")->isVisible());
}

TEST_F(EditorAccess, SlidersAreSlidersWithTheirValueInBothLooks) {
  // Scroll bars: sized on the track, named by the slider's name, with a value.
  editor->LoadSkin("Interfc5.des");
  ASSERT_FALSE(editor->GraphSliders());
  auto* bar = editor->findChild<QScrollBar*>("HScroll1_0");
  ASSERT_TRUE(bar->isVisible());
  QAccessibleInterface* scroll = Iface(bar);
  EXPECT_EQ(scroll->text(QAccessible::Name), "Warmth");
  EXPECT_GT(scroll->rect().width(), 100);
  EXPECT_GT(scroll->rect().height(), 8);
  ASSERT_NE(scroll->valueInterface(), nullptr);
  EXPECT_EQ(scroll->valueInterface()->currentValue().toInt(), 10);
  // A map's two sliders carry the map's name.
  EXPECT_EQ(Of("HScroll1_3")->text(QAccessible::Name), "Curve");
  EXPECT_EQ(Of("HScroll1_2")->valueInterface()->currentValue().toInt(), 77);

  // Picture sliders: the drawn track is the slider; setting its value moves
  // the knob and the value label as the mouse would.
  editor->LoadSkin("Interfc6.des");
  ASSERT_TRUE(editor->GraphSliders());
  EXPECT_TRUE(Of("HScroll1_0")->state().invisible);
  QAccessibleInterface* track = Of("Picture2_0");
  EXPECT_EQ(track->role(), QAccessible::Slider);
  EXPECT_FALSE(track->state().invisible);
  EXPECT_EQ(track->text(QAccessible::Name), "Warmth");
  ASSERT_NE(track->valueInterface(), nullptr);
  EXPECT_EQ(track->valueInterface()->currentValue().toInt(), 10);
  EXPECT_EQ(track->valueInterface()->maximumValue().toInt(), 255);
  const int knobBefore = editor->findChild<QWidget*>("Picture3_0")->x();
  track->valueInterface()->setCurrentValue(200);
  EXPECT_EQ(editor->SliderValue(0), 200);
  EXPECT_EQ(editor->findChild<QLabel*>("Label1_0")->text(), "200");
  EXPECT_GT(editor->findChild<QWidget*>("Picture3_0")->x(), knobBefore);
  EXPECT_EQ(track->text(QAccessible::Value), "200");
  // The keyboard reaches the drawn slider too.
  editor->findChild<QWidget*>("Picture2_0")->setFocus();
  QTest::keyClick(editor->findChild<QWidget*>("Picture2_0"), Qt::Key_PageUp);
  EXPECT_EQ(editor->SliderValue(0), 210);
  // Unnamed sliders are hidden and heard as such.
  EXPECT_TRUE(Of("Picture2_1")->state().invisible);
}

// --- the main window --------------------------------------------------------------

struct Walk {
  QStringList unnamed;            // controls on screen without a name
  QMap<QString, int> fileInTree;  // file name -> times it is in the tree at all
  QMap<QString, int> fileShown;   // file name -> times reported as on screen
};

bool IsControl(QAccessible::Role r) {
  using A = QAccessible;
  for (A::Role control : {A::PushButton, A::CheckBox, A::RadioButton, A::ComboBox, A::List, A::Table, A::Tree,
                          A::EditableText, A::Slider, A::SpinBox, A::PageTabList, A::StaticText, A::ButtonMenu,
                          A::ButtonDropDown})
    if (r == control) return true;
  return false;
}

// The whole tree, as the desktop bridge exposes it: also below nodes that say
// they are hidden, since their items may not say so.
void WalkTree(QAccessibleInterface* node, const QStringList& files, Walk& walk, bool shownAbove = true,
              int depth = 0) {
  if (!node || depth > 40) return;
  const bool shown = !node->state().invisible && !node->state().offscreen;
  const QString name = node->text(QAccessible::Name);
  const QAccessible::Role role = node->role();
  const bool item = role == QAccessible::ListItem || role == QAccessible::Cell || role == QAccessible::TreeItem ||
                    role == QAccessible::ColumnHeader || role == QAccessible::RowHeader;
  if (item && files.contains(name)) {
    ++walk.fileInTree[name];
    if (shown) ++walk.fileShown[name];
  }
  // Text labels without any text are empty captions; items are the lists' business.
  if (shown && shownAbove && !item && IsControl(role) && name.trimmed().isEmpty() &&
      !(role == QAccessible::StaticText && node->text(QAccessible::Value).isEmpty()))
    walk.unnamed << QString("%1 (%2)").arg(node->object() ? node->object()->objectName() : "?").arg(int(role));
  for (int i = 0; i < node->childCount(); ++i)
    WalkTree(node->child(i), files, walk, shownAbove && shown, depth + 1);
}

TEST(MainWindowAccess, EveryControlOnScreenIsNamedAndEachFileHeardOnce) {
  test::TempDir home, folder;
  FillProgramFolder(home.path(), {TREL_SHIPPED_DATA_DIR, TREL_TEMPLATE_DIR});
  QStringList files;
  for (int i = 0; i < 40; ++i) {
    const QString name = QString("plugin%1.8bf").arg(i, 2, 10, QChar('0'));
    QFile f(QString::fromStdString(folder.path()) + name);
    ASSERT_TRUE(f.open(QIODevice::WriteOnly));
    f.write("MZ");
    files << name;
  }
  SettingsStore store(home.file("Trel10.ini"));
  MainWindow window(store, home.path());
  window.Form_Initialize();
  window.Form_Load(QString::fromStdString(folder.path()));
  window.resize(1100, 800);
  window.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
  FilePane* left = window.pane(0);
  left->FillDirList(folder.path());
  QApplication::processEvents();

  for (int mode : {int(FileListView::kDetails), int(FileListView::kList), FilePane::kClassic}) {
    left->SetViewMode(mode);
    QApplication::processEvents();
    Walk walk;
    WalkTree(Iface(&window), files, walk);
    EXPECT_TRUE(walk.unnamed.isEmpty()) << "mode " << mode << ": " << walk.unnamed.join(", ").toStdString();
    // Once in the tree: the lists behind the current mode are not walked, and
    // rows scrolled out of view may say so.
    for (const QString& f : files) {
      EXPECT_EQ(walk.fileInTree.value(f), 1) << "mode " << mode << ": " << f.toStdString();
      EXPECT_LE(walk.fileShown.value(f), 1) << "mode " << mode << ": " << f.toStdString();
    }
  }
  // The other two views of the pane have their controls named too.
  for (int view : {int(FilePane::kPluginView), int(FilePane::kFFLView)}) {
    left->SelectTab(view);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !left->pluginView()->busy(); }, 20000));
    Walk walk;
    WalkTree(Iface(&window), files, walk);
    EXPECT_TRUE(walk.unnamed.isEmpty()) << "view " << view << ": " << walk.unnamed.join(", ").toStdString();
  }
  left->SelectTab(FilePane::kFileView);
  // The icon buttons say what their tool tip says, also after it changes.
  for (int pane = 0; pane < 2; ++pane)
    for (const char* stem : {"Image2", "Image4", "Image5", "Image6"}) {
      QWidget* b = window.findChild<QWidget*>(QString("%1_%2").arg(stem).arg(pane));
      ASSERT_NE(b, nullptr);
      EXPECT_EQ(Iface(b)->text(QAccessible::Name), b->toolTip());
    }
  left->SetViewMode(FileListView::kDetails);
  left->Image5_Click();
  QWidget* folderBox = window.findChild<QWidget*>("Image5_0");
  EXPECT_EQ(Iface(folderBox)->text(QAccessible::Name), folderBox->toolTip());
  // The path line: its purpose, and the folder as its value.
  QAccessibleInterface* path = Iface(window.findChild<QLabel*>("Label6_0"));
  EXPECT_EQ(path->text(QAccessible::Name), "Left pane folder");
  EXPECT_EQ(path->text(QAccessible::Value), QString::fromStdString(folder.path()));
  // The drive box names the folder and the mount it is on, not a bare "/".
  EXPECT_TRUE(left->driveBox()->currentText().startsWith(QDir(QString::fromStdString(folder.path())).dirName()))
      << left->driveBox()->currentText().toStdString();
  EXPECT_TRUE(left->driveBox()->currentText().contains(QRegularExpression(" on +/"))) << left->driveBox()->currentText().toStdString();
  window.close();
}

}  // namespace
}  // namespace trel
