// The editor window off screen: loading every source format and a compiled
// plugin, edits, the live preview against trel-cli, compile errors, sliders,
// memory spots, saving in every format, code tools and bad input.
#include <gtest/gtest.h>

#include <QApplication>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QClipboard>
#include <QFileInfo>
#include <QElapsedTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QTest>
#include <QTextBlock>
#include <QTextLayout>
#include <filesystem>

#include "editor/FFEditorType1.h"
#include "filter/Dispatch.h"
#include "filter/FFL.h"
#include "filter/PluginCompiler.h"
#include "filter/ProgramFolder.h"
#include "filter/TextFormats.h"
#include "host/ff/FFEngine.h"
#include "settings/SettingsStore.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace {

class EditorWindow : public ::testing::Test {
 protected:
  void SetUp() override {
    FillProgramFolder(dir.path(), {TREL_SHIPPED_DATA_DIR, TREL_TEMPLATE_DIR});
    std::filesystem::create_directories(dir.path() + "out");
    store = std::make_unique<SettingsStore>(dir.file("Trel10.ini"));
    EditorContext ctx;
    ctx.filter = &filter;
    ctx.programFolder = dir.path();
    ctx.store = store.get();
    ctx.shell = &shell;
    ctx.interfaceFile = [] { return std::string("Interfc4.des"); };
    ctx.targetFolder = [this] { return target; };
    ctx.refreshPanes = [this] { ++refreshes; };
    ctx.overwriteCheck = [](const std::string&) { return true; };
    ctx.chooseLibrary = [this] { return chosenLibrary; };
    editor = std::make_unique<FFEditorType1>(std::move(ctx));
    }
  void TearDown() override {
    EXPECT_TRUE(QTest::qWaitFor([&] { return editor->previewIdle(); }, 5000));
    editor.reset();
  }
  template <typename T>
  T* child(const QString& name) const { return editor->findChild<T*>(name); }
  QPlainTextEdit* box(int i) const { return child<QPlainTextEdit>(QString("Text5_%1").arg(i)); }
  QString label(const char* stem, int i) const {
    return child<QLabel>(QString("%1_%2").arg(stem).arg(i))->text();
  }
  bool Load(const std::string& name, const std::string& folder = kSamples) {
    FilterEnv env = Env();
    env.shell = &editor->readerShell();
    return LoadItFile(filter, folder, name, env);
  }
  static inline const std::string kSamples = std::string(TREL_SHIPPED_DATA_DIR) + "/samples/";
  void Type(int i, const QString& code) { box(i)->setPlainText(code); }
  FilterEnv Env() {
    FilterEnv env;
    env.shell = &shell;
    env.options.programFolder = dir.path();
    return env;
  }
  QImage Preview() {
    EXPECT_TRUE(editor->UpdatePreview());
    EXPECT_TRUE(QTest::qWaitFor([&] { return editor->previewIdle(); }, 5000));
    return editor->previewResult();
  }
  QString Q(const std::string& name) const { return QString::fromStdString(dir.file(name)); }

  test::TempDir dir;
  test::RecordingShell shell;
  FFFilter filter;
  std::unique_ptr<SettingsStore> store;
  std::unique_ptr<FFEditorType1> editor;
  std::string target = dir.path() + "out/";
  int refreshes = 0;
  std::string chosenLibrary;
};

// Everything the editor shows; the file name and presets are not its business here.
auto Shown(const FFFilter& f) {
  return std::tie(f.title, f.category, f.author, f.copyright, f.codeR, f.codeG, f.codeB, f.codeA, f.ctlValue,
                  f.ctlName, f.mapName);
}

TEST_F(EditorWindow, SkinIsReadWithItsBlocks) {
  EXPECT_EQ(editor->interfaceFile(), "Interfc4.des");
  EXPECT_TRUE(editor->GraphSliders());
  EXPECT_EQ(editor->MailAddress(), "trel-skins@example.org");
  EXPECT_EQ(box(1)->geometry(), QRect(216, 278, 416, 168));
  EXPECT_FALSE(editor->mask().contains(QPoint(0, 0)));  // rounded corners
  editor->LoadSkin("Missing1.des");
  EXPECT_EQ(editor->interfaceFile(), "Interfc5.des");
  EXPECT_FALSE(editor->GraphSliders());
  EXPECT_FALSE(editor->findChild<QWidget*>("MailLink")->isVisibleTo(editor.get()));
}

TEST_F(EditorWindow, EverySourceFormatAndAPluginShowUnchanged) {
  // A compiled plugin of the AFS sample, through the real writer.
  ASSERT_TRUE(Load("WarmTone.afs"));
  FFFilter compiled = filter;
  compiled.filename = "WarmTone.8bf";
  FilterEnv env = Env();
  Write8bf(compiled, target, false, false, env);
  const std::pair<std::string, std::string> sources[] = {
      {"WarmTone.afs", kSamples}, {"SoftNegative.pff", kSamples}, {"Ripple.txt", kSamples}, {"WarmTone.8bf", target}};
  for (const auto& [name, folder] : sources) {
    ASSERT_TRUE(Load(name, folder)) << name;
    const FFFilter expected = filter;
    editor->FilterToEditor();
    EXPECT_EQ(label("Label6", 0).toStdString() + "|" + label("Label6", 2).toStdString() + "|" +
                  box(1)->toPlainText().toStdString(),
              expected.filename + "|" + expected.title + "|" + expected.codeR) << name;
    for (int n = 0; n < 8; ++n) EXPECT_EQ(label("Label1", n).toInt(), expected.ctlValue[n + 1]) << name << n;
    filter = FFFilter{};
    editor->EditorToFilter();
    EXPECT_EQ(Shown(filter), Shown(expected)) << name;
  }
}

TEST_F(EditorWindow, EditsReachTheRecord) {
  ASSERT_TRUE(Load("WarmTone.afs"));
  editor->FilterToEditor();
  editor->SetSliderValue(4, 99);
  Type(2, "g/2");
  child<QCheckBox>("Check1_3")->setChecked(true);  // the names of sliders 7 and 8 give way to the map name
  editor->EditorToFilter();
  EXPECT_EQ(filter.ctlValue[5], 99);
  EXPECT_EQ(filter.codeG, "g/2");
  EXPECT_EQ(filter.mapName[4], label("Label7", 6).toStdString());
  EXPECT_TRUE(filter.ctlName[7].empty());
  EXPECT_TRUE(child<QWidget>("Picture3_7")->isVisibleTo(editor.get()));
}

TEST_F(EditorWindow, PreviewEqualsTheCommandLine) {
  if (!QFileInfo::exists(TREL_CLI)) GTEST_SKIP() << "trel-cli not built";
  editor->FilterToEditor();
  child<QLabel>("Label7_0")->setText("Amount");
  editor->CommitLabelEdit();
  Type(1, "255-r");
  Type(2, "scl(g,0,255,0,ctl(0))");
  Type(3, "src(x+3,y,z)");
  editor->SetSliderValue(0, 140);
  const QImage shown = Preview();
  ASSERT_FALSE(shown.isNull());
  ASSERT_TRUE(editor->previewSource().save(Q("src.png")));
  FFFilter f = filter;
  f.filename = "Same.txt";
  FilterEnv env;
  WriteTXT(f, dir.path(), false, env);
  QProcess cli;
  cli.start(TREL_CLI, {"apply", Q("Same.txt"), Q("src.png"), "-o", Q("cli.png")});
  ASSERT_TRUE(cli.waitForFinished(20000));
  ASSERT_EQ(cli.exitCode(), 0) << cli.readAllStandardError().toStdString();
  const QImage expected(Q("cli.png"));
  ASSERT_EQ(expected.size(), shown.size());
  EXPECT_EQ(expected.convertToFormat(QImage::Format_RGB32), shown.convertToFormat(QImage::Format_RGB32));
}

TEST_F(EditorWindow, CompileErrorsShowChannelAndPosition) {
  Type(1, "r");
  Type(2, "g+*2");
  EXPECT_FALSE(editor->UpdatePreview());
  EXPECT_TRUE(editor->codeError().startsWith("G: position ")) << editor->codeError().toStdString();
  EXPECT_EQ(editor->previewRuns(), 0);
  EXPECT_TRUE(box(2)->isVisibleTo(editor.get()));
  EXPECT_TRUE(box(2)->textCursor().position() >= 1 && box(2)->textCursor().position() <= 3);
  Type(2, "g");
  EXPECT_TRUE(editor->UpdatePreview());
  EXPECT_TRUE(editor->codeError().isEmpty());
}

TEST_F(EditorWindow, CodeARealHostRefusesIsWarnedNotRefused) {
  Type(1, "max((r,9), 3)");
  Type(2, "g");
  Type(3, "sqrt(b) * 16");
  EXPECT_TRUE(editor->UpdatePreview());  // Trel runs it
  EXPECT_TRUE(editor->codeError().isEmpty());
  auto* warning = child<QLabel>("CompatWarning");
  ASSERT_NE(warning, nullptr);
  EXPECT_TRUE(warning->isVisibleTo(editor.get()));
  EXPECT_TRUE(warning->text().startsWith("Warning: R: position 7: ") && warning->text().contains("(and 1 more)"))
      << warning->text().toStdString();
  EXPECT_EQ(warning->accessibleDescription(), warning->text());
  // At the place: the comma in R and the name in B are underlined.
  auto marked = [&](int i, int pos) {
    const QTextBlock block = box(i)->document()->firstBlock();
    for (const QTextLayout::FormatRange& r : block.layout()->formats())
      if (r.start <= pos && pos < r.start + r.length && r.format.underlineStyle() == QTextCharFormat::WaveUnderline)
        return true;
    return false;
  };
  EXPECT_TRUE(marked(1, 6) && !marked(1, 5) && marked(3, 0) && marked(3, 3));
  Type(1, "r");
  Type(3, "b");
  EXPECT_TRUE(editor->UpdatePreview());
  EXPECT_FALSE(warning->isVisibleTo(editor.get()));
  EXPECT_FALSE(marked(1, 0) || marked(3, 0));
}

TEST_F(EditorWindow, TypingPreviewsAfterTheDelay) {
  editor->SetAutoPreview(true);
  editor->SetTypingDelay(50);
  ASSERT_TRUE(QTest::qWaitFor([&] { return editor->previewIdle(); }, 5000));
  const int before = editor->previewRuns();
  const QImage old = editor->previewResult();
  box(1)->setPlainText("255-r");
  QElapsedTimer t;
  t.start();
  while (editor->previewRuns() == before && t.elapsed() < 3000) QApplication::processEvents();
  EXPECT_GT(editor->previewRuns(), before);
  EXPECT_NE(editor->previewResult(), old);
}

TEST_F(EditorWindow, RandomizeKeepsLockedAndUnnamedSliders) {
  filter.ctlName[1] = filter.ctlName[2] = filter.ctlName[3] = "S";
  filter.ctlValue[2] = 7;
  editor->FilterToEditor();
  editor->SetLocked(1, true);
  bool changed = false;
  for (int i = 0; i < 6; ++i) {
    editor->RandomizeSliders();
    EXPECT_EQ(editor->SliderValue(1), 7);
    EXPECT_EQ(editor->SliderValue(5), 0);
    changed = changed || editor->SliderValue(0) != 0 || editor->SliderValue(2) != 0;
  }
  EXPECT_TRUE(changed);
  editor->SetLocked(1, false);
  bool moved = false;
  for (int i = 0; i < 6 && !moved; ++i) {
    editor->RandomizeSliders();
    moved = editor->SliderValue(1) != 7;
  }
  EXPECT_TRUE(moved);
}

TEST_F(EditorWindow, MemorySpotsRoundTripThroughTxt) {
  for (int n = 0; n < 8; ++n) filter.ctlName[n + 1] = "C" + std::to_string(n);
  editor->FilterToEditor();
  for (int n = 0; n < 8; ++n) editor->SetSliderValue(n, 10 * n + 3);
  editor->StoreSpot(3);
  for (int n = 0; n < 8; ++n) editor->SetSliderValue(n, 200);
  editor->StoreSpot(7);
  editor->RecallSpot(3);
  for (int n = 0; n < 8; ++n) EXPECT_EQ(editor->SliderValue(n), 10 * n + 3);
  child<QLabel>("Label6_0")->setText("Spots.txt");
  editor->SaveFilterAs(OutputFormat::TXT);
  const auto presets = filter.presets;
  editor->ClearAllSpots();
  EXPECT_FALSE(editor->SpotMarked(3));
  FilterEnv env;
  env.shell = &editor->readerShell();
  FFFilter back;
  ASSERT_TRUE(ReadTXT(back, target, "Spots.txt", false, true, env));
  filter.presets = back.presets;
  EXPECT_EQ(back.presets, presets);
  EXPECT_TRUE(editor->SpotMarked(3) && editor->SpotMarked(7));
  editor->RecallSpot(7);
  EXPECT_EQ(editor->SliderValue(4), 200);
}

TEST_F(EditorWindow, SaveInEveryFormatReadsBack) {
  ASSERT_TRUE(Load("WarmTone.afs"));
  editor->FilterToEditor();
  child<QLabel>("Label6_0")->setText("Saved.afs");
  editor->EditorToFilter();
  const FFFilter expected = filter;
  // The "Save (Filter) As" menu in its order; the save list has the same.
  const char* names[] = {"Saved.8bf", "Saved.prm", "Saved.afs", "Saved.pff", "Saved.txt", "Saved.prm"};
  auto saveAs = [this](int entry) { child<QAction>(QString("mnuSaveFilterAs_FFE_%1").arg(entry))->trigger(); };
  for (int entry = 0; entry < 6; ++entry) {
    target = dir.path() + "out" + std::to_string(entry) + "/";
    std::filesystem::create_directories(target);
    saveAs(entry);
    ASSERT_EQ(std::distance(std::filesystem::directory_iterator(target), {}), 1) << entry;
    FFFilter back;
    FilterEnv env = Env();
    ASSERT_TRUE(LoadItFile(back, target, names[entry], env)) << entry;
    EXPECT_EQ(std::tie(back.title, back.codeR, back.codeB, back.ctlValue),
              std::tie(expected.title, expected.codeR, expected.codeB, expected.ctlValue)) << entry;
  }
  EXPECT_EQ(refreshes, 6);
  // The Premiere and the transition plugin share the ending, not the bytes.
  EXPECT_NE(dir.Read("out1/Saved.prm"), dir.Read("out5/Saved.prm"));
  // The library entry: a new library, then a second filter added to it.
  saveAs(6);  // no chooser answer yet: nothing happens
  EXPECT_FALSE(QFileInfo::exists(Q("Mine.ffl")));
  chosenLibrary = dir.file("Mine.ffl");
  saveAs(6);
  child<QLabel>("Label6_2")->setText("Second");
  child<QComboBox>("Combo2")->setCurrentIndex(6);
  child<QPushButton>("cmdSave")->click();
  FFLLibrary lib;
  ASSERT_TRUE(ReadFFLLibrary(chosenLibrary, lib));
  ASSERT_EQ(lib.items.size(), 2u);
  EXPECT_EQ(lib.items[0].title + "|" + lib.items[1].title, expected.title + "|Second");
  child<QLabel>("Label6_0")->setText("Filename");
  shell.boxes.clear();
  saveAs(2);  // the placeholder name is refused with a message
  EXPECT_EQ(shell.boxes.size(), 1u);
}

TEST_F(EditorWindow, FindReplaceAndUndo) {
  Type(1, "r+r*2+r");  // the red box shows at start
  EXPECT_EQ(editor->FindAndReplace("r", "g", ReplaceScope::All), 3);
  EXPECT_EQ(box(1)->toPlainText(), "g+g*2+g");
  box(1)->undo();
  EXPECT_EQ(box(1)->toPlainText(), "r+r*2+r");
  // Next: the first call only finds, the second replaces what it found.
  box(1)->setTextCursor(QTextCursor(box(1)->document()));
  EXPECT_EQ(editor->FindAndReplace("r", "g", ReplaceScope::Next), 0);
  EXPECT_EQ(box(1)->textCursor().selectedText(), "r");
  EXPECT_EQ(editor->FindAndReplace("r", "g", ReplaceScope::Next), 1);
  EXPECT_EQ(box(1)->toPlainText() + QString::number(box(1)->textCursor().selectionStart()), "g+r*2+r2");
  editor->Label2_Click(1);  // hidden: nothing to search in
  EXPECT_EQ(editor->FindAndReplace("r", "g", ReplaceScope::All), 0);
}

TEST_F(EditorWindow, MenusAndSnippetsInsertAtTheCaret) {
  ASSERT_GT(editor->Snippets().size(), 20u);
  for (const auto& s : editor->Snippets()) {
    ff::CompileError err;
    EXPECT_TRUE(ff::CompileFilter({s.code, s.code, s.code, "a"}, &err).valid())
        << s.name << ": " << err.message;
  }
  Type(1, "");
  editor->InsertSnippet(0);
  EXPECT_EQ(box(1)->toPlainText().toStdString(), editor->Snippets()[0].code);
  EXPECT_EQ(box(1)->textCursor().selectedText(), box(1)->toPlainText());
  Type(1, "");
  editor->InsertFunction("mix(,,,)");
  EXPECT_EQ(box(1)->textCursor().position(), 4);
}

TEST_F(EditorWindow, ClipboardRoundTripAndGarbage) {
  ASSERT_TRUE(Load("Ripple.txt"));
  std::tie(filter.mapName[1], filter.ctlName[5], filter.ctlValue[5]) = std::make_tuple("Curve", "Green", 77);
  editor->FilterToEditor();
  editor->EditorToFilter();
  const FFFilter expected = filter;
  editor->CopyFilterToClipboard();
  editor->PasteFilterFromClipboard();
  editor->EditorToFilter();
  // The text form puts "A:" alone on its line, and the text reader keeps the
  // alpha preset "a" in front of a code that follows on the next line.
  EXPECT_EQ(filter.codeA, "a" + expected.codeA);
  filter.codeA = expected.codeA;
  EXPECT_EQ(Shown(filter), Shown(expected));
  EXPECT_FALSE(QFileInfo::exists(Q("Temp.tmp")));
  std::string garbage;
  for (int i = 0; i < 5000; ++i) garbage += char((i * 131) & 0xff);
  QApplication::clipboard()->setText(QString::fromLatin1(garbage.data(), qsizetype(garbage.size())));
  editor->PasteFilterFromClipboard();
  EXPECT_FALSE(QFileInfo::exists(Q("Temp.tmp")));
}

TEST_F(EditorWindow, LongCodeAndSlowFiltersKeepTheWindowFree) {
  std::string longCode = "r";
  while (longCode.size() < 100000) longCode += "+0";
  Type(1, QString::fromStdString(longCode));
  QElapsedTimer t;
  t.start();
  editor->UpdatePreview();
  EXPECT_LT(t.elapsed(), 1000);
  EXPECT_TRUE(QTest::qWaitFor([&] { return editor->previewIdle(); }, 20000));
  // A slow filter on a large picture: the next edit does not wait for it.
  QImage big(1600, 1200, QImage::Format_RGB32);
  big.fill(Qt::darkCyan);  // the preview size still caps it; the work is in cnv
  editor->SetPreviewPicture(big);
  Type(1, "cnv(1,2,1,2,4,2,1,2,1,16)+cnv(1,1,1,1,1,1,1,1,1,9)");
  Type(2, "src(x,y,1)");
  t.restart();
  for (int i = 0; i < 10; ++i) {
    Type(3, QString("b+%1").arg(i));
    editor->UpdatePreview();
  }
  EXPECT_LT(t.elapsed(), 1000);
  EXPECT_TRUE(QTest::qWaitFor([&] { return editor->previewIdle(); }, 20000));
}

TEST_F(EditorWindow, NewFilterAsksAndResets) {
  ASSERT_TRUE(Load("WarmTone.afs"));
  editor->FilterToEditor();
  shell.nextAnswer = MsgResult::Cancel;
  EXPECT_FALSE(editor->NewFilter());
  EXPECT_NE(label("Label6", 2), "Filtername");
  shell.nextAnswer = MsgResult::Ok;
  EXPECT_TRUE(editor->NewFilter());
  EXPECT_EQ(label("Label6", 2) + "|" + box(0)->toPlainText(), "Filtername|a");
  EXPECT_FALSE(child<QWidget>("Picture3_0")->isVisibleTo(editor.get()));
}

TEST_F(EditorWindow, PrintsToAFile) {
  Type(1, QString("r+").repeated(600) + "r");
  QPrinter printer;
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(Q("print.pdf"));
  editor->PrintFilter(printer);
  EXPECT_GT(QFileInfo(Q("print.pdf")).size(), 500);
}

TEST_F(EditorWindow, LabelEditsCommitAndNormalise) {
  filter.ctlName[1] = "One";
  filter.mapName[2] = "Curve";
  editor->FilterToEditor();
  auto* edit = child<QLineEdit>("Text10");
  // A typed 300 becomes 44 (the rules are in EditorMod's tests).
  QMetaObject::invokeMethod(child<QLabel>("Label1_0"), "clicked");
  ASSERT_FALSE(edit->isHidden());
  edit->setText("300");
  editor->CommitLabelEdit();
  EXPECT_EQ(QString::number(editor->SliderValue(0)) + "|" + label("Label1", 0), "44|44");
  // A click on another label commits the running edit first.
  QMetaObject::invokeMethod(child<QLabel>("Label6_2"), "clicked");
  edit->setText("New Title");
  QMetaObject::invokeMethod(child<QLabel>("Label6_3"), "clicked");
  EXPECT_EQ(label("Label6", 2), "New Title");
  editor->CommitLabelEdit();
  // Emptying the name of a map that is on hides both sliders of the pair.
  EXPECT_TRUE(child<QWidget>("Picture3_3")->isVisibleTo(editor.get()));
  QMetaObject::invokeMethod(child<QLabel>("Label7_2"), "clicked");
  edit->setText("");
  editor->CommitLabelEdit();
  EXPECT_FALSE(child<QWidget>("Picture3_2")->isVisibleTo(editor.get()) ||
               child<QWidget>("Picture3_3")->isVisibleTo(editor.get()));
}

TEST_F(EditorWindow, AlphaOnlyFiltersShowAlphaInGrey) {
  editor->FilterToEditor();
  Type(0, "255-a");
  const QImage shown = Preview();
  // The picture has no alpha: a reads 255, so 255-i of it... every pixel is grey.
  const QRgb p = shown.pixel(10, 10);
  EXPECT_TRUE(qRed(p) == qGreen(p) && qGreen(p) == qBlue(p));
  bool red = false;  // the red word stands bottom right
  for (int y = shown.height() - 20; y < shown.height(); ++y)
    for (int x = shown.width() - 50; x < shown.width(); ++x)
      red = red || (qRed(shown.pixel(x, y)) > 200 && qGreen(shown.pixel(x, y)) < 60);
  EXPECT_TRUE(red);
}

TEST_F(EditorWindow, OneBoxModeCopiesRedToGreenAndBlue) {
  EXPECT_EQ(editor->codeMode(), CodeMode::ThreeBoxes);
  editor->Command10_Click();
  EXPECT_EQ(editor->codeMode(), CodeMode::OneBox);
  EXPECT_FALSE(child<QLabel>("Label2_2")->isVisibleTo(editor.get()));
  Type(1, "255-c");
  Type(2, "g");
  const QRgb out = Preview().pixel(5, 5), src = editor->previewSource().pixel(5, 5);
  EXPECT_EQ(std::make_pair(qGreen(out), qBlue(out)), std::make_pair(255 - qGreen(src), 255 - qBlue(src)));
  // What is saved and copied is what runs: green and blue are the red code.
  child<QLabel>("Label6_0")->setText("One.txt");
  editor->SaveFilterAs(OutputFormat::TXT);
  FFFilter saved;
  FilterEnv env = Env();
  ASSERT_TRUE(LoadItFile(saved, target, "One.txt", env));
  EXPECT_EQ(saved.codeR + "|" + saved.codeG + "|" + saved.codeB, "255-c|255-c|255-c");
  editor->Command10_Click();
  EXPECT_EQ(editor->codeMode(), CodeMode::ThreeBoxes);
  EXPECT_EQ(box(2)->toPlainText(), "g");  // the hidden boxes kept their text
  editor->SaveFilterAs(OutputFormat::TXT);
  ASSERT_TRUE(LoadItFile(saved, target, "One.txt", env));
  EXPECT_EQ(saved.codeG, "g");
}

TEST_F(EditorWindow, DeleteTakesTheNextClickedSpot) {
  for (int n = 0; n < 8; ++n) filter.ctlName[n + 1] = "C" + std::to_string(n);
  editor->FilterToEditor();
  editor->SetSliderValue(0, 77);
  auto* button = child<QPushButton>("Command7_3");
  auto* mark = child<QLabel>("Picture7_3");
  auto* del = child<QPushButton>("Command8");
  button->click();  // stores, and the button holds the spot
  EXPECT_TRUE(button->font().bold() && editor->SpotMarked(3));
  editor->SetSliderValue(0, 5);
  button->click();  // a held spot recalls
  EXPECT_EQ(editor->SliderValue(0), 77);
  del->click();
  EXPECT_FALSE(del->isEnabled());
  button->click();  // armed: the button lets go of the spot and nothing is recalled
  EXPECT_FALSE(button->font().bold());
  EXPECT_TRUE(del->isEnabled() && editor->SpotMarked(3));  // the mark stays until it is deleted itself
  del->click();
  QTest::mouseClick(mark, Qt::LeftButton);
  EXPECT_TRUE(!editor->SpotMarked(3) && del->isEnabled());
  // Unarmed, the grid stores into the spot under the mouse.
  auto* grid = child<QLabel>("Picture6");
  QTest::mouseClick(grid, Qt::LeftButton, {}, QPoint(grid->width() / 10, grid->height() * 3 / 4));
  EXPECT_TRUE(editor->SpotMarked(5));
  EXPECT_EQ(filter.presets[0][5], 77);
}

}  // namespace
}  // namespace trel
