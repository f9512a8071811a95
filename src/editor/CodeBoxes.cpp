#include "editor/CodeBoxes.h"

#include <QComboBox>
#include <QDialog>
#include <QFile>
#include <QFontDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextBlock>
#include <algorithm>

#include "editor/ClickLabel.h"
#include "editor/CodeHighlighter.h"
#include "editor/CompatWarnings.h"
#include "editor/EditorLayout.h"
#include "editor/EditorWidgets.h"

namespace trel {

using namespace layout;

namespace {

const char* const kCodeDefault[4] = {"a", "r", "g", "b"};
const char* const kCodeSwitch[4] = {"A=", "R=", "G=", "B="};
const char* const kCodeTip[4] = {"Show/Hide Aphacode", "Show/Hide Redcode", "Show/Hide Greencode",
                                 "Show/Hide Bluecode"};
const char* const kFunctionEntries[] = {
    "abs()", "add(,,)", "c2d(,)", "cnv(,,,,,,,,)", "cos()", "ctl()", "dif(,)", "get()", "map(,)",
    "max(,)", "min(,)", "mix(,,,)", "put(,)", "r2x(,)", "r2y(,)", "rad(,,)", "rnd(,)", "rst()",
    "scl(,,,,)", "sin()", "sqr()", "src(,,)", "sub(,,)", "tan()", "val(,,)"};

void SetBold(QWidget* w, bool bold) {
  QFont f = w->font();
  f.setBold(bold);
  w->setFont(f);
}

}  // namespace

CodeBoxes::CodeBoxes(QWidget* window) : window_(window) {}

void CodeBoxes::BuildBoxes() {
  expressions_ = Named(new QMenu("FF Expressions", window_), "mnuExpression_FFE");
  snippetMenu_ = Named(new QMenu("Code Snipet", window_), "mnuCodeSnipet_FFE");
  for (int i = 0; i < 4; ++i) {
    auto* sw = Named(new ClickLabel(kCodeSwitch[i], window_), "Label2", i);
    sw->setGeometry(CodeSwitch(i));
    sw->setToolTip(kCodeTip[i]);
    sw->setAccessibleName(kCodeTip[i]);
    sw->SetCheckable(true);
    sw->setAlignment(Qt::AlignCenter);
    connect(sw, &ClickLabel::clicked, this, [this, i] {
      emit switchPressed();
      Toggle(i);
      // The box a switch opens is where the next keys go.
      if (Visible() == i) boxes_[size_t(i)]->setFocus(Qt::MouseFocusReason);
    });
    switches_[size_t(i)] = sw;
    auto* box = Named(new QPlainTextEdit(window_), "Text5", i);
    box->setPlainText(kCodeDefault[i]);
    box->setAccessibleName(QString(kCodeSwitch[i]).left(1) + " code");
    box->setGeometry(kDefaultCode);
    box->setTabChangesFocus(true);
    QFont mono("Monospace");
    mono.setStyleHint(QFont::TypeWriter);
    mono.setPointSize(10);
    box->setFont(mono);
    new CodeHighlighter(box->document());
    box->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(box, &QPlainTextEdit::customContextMenuRequested, this, [this, box](QPoint at) {
      QMenu* menu = box->createStandardContextMenu();
      menu->addSeparator();
      menu->addMenu(expressions_);
      menu->addMenu(snippetMenu_);
      menu->exec(box->mapToGlobal(at));
      delete menu;
    });
    connect(box, &QPlainTextEdit::textChanged, this, &CodeBoxes::typed);
    connect(box, &QPlainTextEdit::cursorPositionChanged, this, [box] { MarkBrackets(box); });
    box->hide();
    boxes_[size_t(i)] = box;
  }
  modeButton_ = Named(new QPushButton("1", window_), "Command10");
  modeButton_->setGeometry(kBoxCount);
  modeButton_->setToolTip("One code box for all colours, or three");
  modeButton_->setAccessibleName("One or three code boxes");
  connect(modeButton_, &QPushButton::clicked, this, &CodeBoxes::SwitchMode);
  fontButton_ = Named(new QPushButton("F", window_), "Command14");
  fontButton_->setGeometry(kFontButton);
  fontButton_->setToolTip("Select the font of the code boxes");
  fontButton_->setAccessibleName(fontButton_->toolTip());
  connect(fontButton_, &QPushButton::clicked, this, &CodeBoxes::ChooseFont);
  functions_ = Named(new QComboBox(window_), "Combo1", 0);
  functions_->setToolTip("FF functions ready to paste into a code window");
  functions_->setAccessibleName(functions_->toolTip());
  for (const char* f : kFunctionEntries) functions_->addItem(f);
  functions_->setPlaceholderText("Functions");
  functions_->setCurrentIndex(-1);
  functions_->setGeometry(layout::kFunctionList);
  connect(functions_, &QComboBox::activated, this, [this](int index) {
    InsertFunction(functions_->itemText(index));
    functions_->setCurrentIndex(-1);
  });
  snippetList_ = Named(new QComboBox(window_), "Combo1", 1);
  snippetList_->setToolTip("Code Snipet Database");
  snippetList_->setAccessibleName("Code Snipet Database");
  snippetList_->setPlaceholderText("Code Snipet Database");
  snippetList_->setGeometry(kSnippetList);
  connect(snippetList_, &QComboBox::activated, this, [this](int index) {
    InsertSnippet(index);
    snippetList_->setCurrentIndex(-1);
  });

  struct Sub {
    const char* name;
    const char* caption;
    std::vector<const char*> entries;
  };
  const Sub subs[] = {
      {"mnuVars", "Variables", {"c", "r", "g", "b", "a", "x", "y", "i", "u", "v", "z", "d", "m"}},
      {"mnuVars2", "Max Variables", {"C", "X", "Y", "D", "M"}},
      {"mnuFunc", "Normal Functions", {"abs()", "add(,,)", "cnv(,,,,,,,,,)", "ctl()", "dif(,)", "get()",
                                       "put()", "map(,)", "max(,)", "min(,)", "mix(,,,)", "rnd(,)",
                                       "scl(,,,,)", "sqr()", "src(,,)", "val(,,)"}},
      {"mnuFunc2", "Polar Functions", {"c2d(,)", "c2m(,)", "cos()", "r2x(,)", "r2y(,)", "rad(,,)",
                                       "sin()", "tan()"}},
  };
  for (const Sub& sub : subs) {
    QMenu* menu = Named(expressions_->addMenu(sub.caption), sub.name);
    int index = 0;
    for (const char* e : sub.entries) {
      QAction* a = menu->addAction(e);
      a->setObjectName(QString("%1_%2").arg(sub.name).arg(index++));
      const QString text = e;
      connect(a, &QAction::triggered, this, [this, text] { Insert(text); });
    }
  }
}

void CodeBoxes::BuildFaultLine() {
  fault_ = Named(new QLabel(window_), "CodeError");
  fault_->setStyleSheet("QLabel{color:rgb(255,90,70);font-weight:bold}");
  fault_->setWordWrap(true);
  fault_->hide();
}

// --- which box shows --------------------------------------------------------------

int CodeBoxes::Visible() const {
  for (int i = 0; i < 4; ++i)
    if (!boxes_[size_t(i)]->isHidden()) return i;
  return -1;
}

void CodeBoxes::Toggle(int i) {
  if (switches_[size_t(i)]->font().bold()) {
    SetBold(switches_[size_t(i)], false);
    boxes_[size_t(i)]->hide();
    functions_->setEnabled(false);
    snippetList_->setEnabled(false);
    return;
  }
  for (int j = 0; j < 4; ++j) {
    SetBold(switches_[size_t(j)], j == i);
    boxes_[size_t(j)]->setVisible(j == i);
  }
  boxes_[size_t(i)]->selectAll();
  functions_->setEnabled(true);
  snippetList_->setEnabled(true);
}

void CodeBoxes::CloseAll() {
  for (int j = 0; j < 4; ++j) {
    SetBold(switches_[size_t(j)], false);
    boxes_[size_t(j)]->hide();
  }
  functions_->setEnabled(false);
  snippetList_->setEnabled(false);
}

void CodeBoxes::FocusVisible(Qt::FocusReason reason) {
  const int i = Visible();
  if (i >= 0) boxes_[size_t(i)]->setFocus(reason);
}

// The button offers the other mode: "1" while there are three boxes, "3" in one-box mode.
void CodeBoxes::SwitchMode() {
  if (mode_ == CodeMode::OneBox) {
    mode_ = CodeMode::ThreeBoxes;
    modeButton_->setText("1");
    switches_[1]->setText("R=");
    switches_[2]->show();
    switches_[3]->show();
  } else {
    mode_ = CodeMode::OneBox;
    modeButton_->setText("3");
    switches_[1]->setText("C=");
    for (size_t j : {size_t(2), size_t(3)}) {
      switches_[j]->hide();
      SetBold(switches_[j], false);
      boxes_[j]->hide();
    }
  }
}

void CodeBoxes::ApplyMode(FFFilter& f) const {
  if (mode_ == CodeMode::OneBox) f.codeG = f.codeB = f.codeR;
}

// --- the codes ----------------------------------------------------------------------

void CodeBoxes::Fill(const FFFilter& f) {
  const std::string* codes[4] = {&f.codeA, &f.codeR, &f.codeG, &f.codeB};
  for (int i = 0; i < 4; ++i) boxes_[size_t(i)]->setPlainText(Latin1(*codes[i]));
}

void CodeBoxes::Read(FFFilter& f) const {
  std::string* codes[4] = {&f.codeA, &f.codeR, &f.codeG, &f.codeB};
  for (int i = 0; i < 4; ++i) *codes[i] = Latin1(boxes_[size_t(i)]->toPlainText());
}

void CodeBoxes::Reset() {
  for (int i = 0; i < 4; ++i) boxes_[size_t(i)]->setPlainText(kCodeDefault[i]);
}

void CodeBoxes::FillEmpty() {
  for (int i = 0; i < 4; ++i)
    if (boxes_[size_t(i)]->toPlainText().isEmpty()) {
      const QSignalBlocker quiet(boxes_[size_t(i)]);
      boxes_[size_t(i)]->setPlainText(kCodeDefault[i]);
    }
}

void CodeBoxes::Place(std::optional<QRect> area) {
  if (area)
    for (auto* box : boxes_) box->setGeometry(*area);
  fault_->setGeometry(boxes_[0]->x(), boxes_[0]->geometry().bottom() + 2, boxes_[0]->width(), 28);
}

// --- the aids -----------------------------------------------------------------------

void CodeBoxes::Insert(const QString& text) {
  const int i = Visible();
  if (i < 0) return;
  QPlainTextEdit* box = boxes_[size_t(i)];
  QTextCursor c = box->textCursor();
  c.insertText(text);
  c.setPosition(c.position() - int(text.size()));
  c.setPosition(c.position() + int(text.size()), QTextCursor::KeepAnchor);
  box->setTextCursor(c);
  box->setFocus();
  emit inserted();
}

void CodeBoxes::InsertFunction(const QString& entry) {
  const int i = Visible();
  if (i < 0) return;
  QPlainTextEdit* box = boxes_[size_t(i)];
  QTextCursor c = box->textCursor();
  c.insertText(entry);
  const int end = c.position();
  c.setPosition(end - int(entry.size()) + int(entry.indexOf('(')) + 1);
  box->setTextCursor(c);
  box->setFocus();
  emit inserted();
}

void CodeBoxes::InsertSnippet(int index) {
  if (index < 0 || size_t(index) >= snippets_.size()) return;
  Insert(Latin1(snippets_[size_t(index)].code));
}

void CodeBoxes::LoadSnippets(const std::string& programFolder) {
  snippets_.clear();
  snippetList_->clear();
  snippetMenu_->clear();
  QFile file(QString::fromStdString(programFolder) + "Snipets.db");
  if (file.open(QIODevice::ReadOnly)) snippets_ = ParseSnipets(file.read(4 << 20).toStdString());
  for (size_t i = 0; i < snippets_.size(); ++i) {
    snippetList_->addItem(Latin1(snippets_[i].name));
    QAction* a = snippetMenu_->addAction(Latin1(snippets_[i].name));
    a->setObjectName(QString("mnuSnipet_FFE_%1").arg(i));
    connect(a, &QAction::triggered, this, [this, i] { InsertSnippet(int(i)); });
  }
  snippetList_->setCurrentIndex(-1);
}

int CodeBoxes::FindAndReplace(const QString& find, const QString& replace, ReplaceScope scope) {
  const int i = Visible();
  if (i < 0 || find.isEmpty()) return 0;
  QPlainTextEdit* box = boxes_[size_t(i)];
  int count = 0;
  if (scope == ReplaceScope::All) {
    QTextCursor edit(box->document());
    edit.beginEditBlock();  // one undo step
    QTextCursor at(box->document());
    while (true) {
      at = box->document()->find(find, at, QTextDocument::FindCaseSensitively);
      if (at.isNull()) break;
      at.insertText(replace);
      ++count;
    }
    edit.endEditBlock();
    return count;
  }
  QTextCursor c = box->textCursor();
  if (c.selectedText() == find) {
    c.insertText(replace);
    box->setTextCursor(c);
    ++count;
  }
  QTextCursor next = box->document()->find(find, box->textCursor(), QTextDocument::FindCaseSensitively);
  if (!next.isNull()) box->setTextCursor(next);
  return count;
}

void CodeBoxes::ShowFindReplace() {
  QDialog dialog(window_);
  dialog.setObjectName("FindReplace");
  dialog.setWindowTitle("Find and Replace");
  auto* form = new QFormLayout(&dialog);
  auto* find = Named(new QLineEdit(&dialog), "txtFind");
  auto* replace = Named(new QLineEdit(&dialog), "txtReplace");
  const int box = Visible();
  if (box >= 0) find->setText(boxes_[size_t(box)]->textCursor().selectedText());
  form->addRow("Find:", find);
  form->addRow("Replace with:", replace);
  auto* row = new QHBoxLayout;
  auto* next = new QPushButton("Find / Replace &Next", &dialog);
  auto* all = new QPushButton("Replace &All", &dialog);
  auto* close = new QPushButton("Close", &dialog);
  row->addWidget(next);
  row->addWidget(all);
  row->addWidget(close);
  form->addRow(row);
  auto* status = new QLabel(&dialog);
  form->addRow(status);
  connect(next, &QPushButton::clicked, &dialog, [&] {
    FindAndReplace(find->text(), replace->text(), ReplaceScope::Next);
  });
  connect(all, &QPushButton::clicked, &dialog, [&] {
    status->setText(QString("%1 replaced").arg(FindAndReplace(find->text(), replace->text(), ReplaceScope::All)));
  });
  connect(close, &QPushButton::clicked, &dialog, &QDialog::accept);
  if (Visible() < 0) Toggle(1);
  dialog.exec();
}

void CodeBoxes::ChooseFont() {
  bool ok = false;
  const QFont font = QFontDialog::getFont(&ok, boxes_[0]->font(), window_, "Code Font");
  if (!ok) return;
  for (auto* box : boxes_) box->setFont(font);
}

// --- faults and warnings -----------------------------------------------------------------

void CodeBoxes::ShowFault(int channel, size_t position, const std::string& message) {
  static const char* const kChannel[4] = {"R", "G", "B", "A"};
  static const int kBox[4] = {1, 2, 3, 0};
  const int ch = std::clamp(channel, 0, 3);
  int box = kBox[ch];
  // In one-box mode green and blue are copies of the red box.
  if (mode_ == CodeMode::OneBox && (box == 2 || box == 3)) box = 1;
  fault_->setText(QString("%1: position %2: %3")
                      .arg(kChannel[ch])
                      .arg(position + 1)
                      .arg(Latin1(message)));
  fault_->show();
  fault_->raise();
  QPlainTextEdit* shown = boxes_[size_t(box)];
  if (shown->isHidden()) Toggle(box);
  QTextCursor c = shown->textCursor();
  c.setPosition(std::min<int>(int(position), int(shown->toPlainText().size())));
  shown->setTextCursor(c);
}

void CodeBoxes::ShowRunFault(const QString& message) {
  fault_->setText(message);
  fault_->show();
}

void CodeBoxes::ClearFault() {
  fault_->clear();
  fault_->hide();
}

QString CodeBoxes::fault() const { return fault_->isHidden() ? QString() : fault_->text(); }

void CodeBoxes::ShowWarnings(const std::vector<ff::CompatWarning>& warnings) {
  ShowCompatWarnings(window_, fault_, {boxes_[1], boxes_[2], boxes_[3], boxes_[0]}, mode_ == CodeMode::OneBox,
                     warnings);
}

}  // namespace trel
