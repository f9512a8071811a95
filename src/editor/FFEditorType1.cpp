#include "editor/FFEditorType1.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QDesktopServices>
#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDialog>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QMouseEvent>
#include <QPageSetupDialog>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPrinter>
#include <QPushButton>
#include <QRandomGenerator>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QToolButton>
#include <QUrl>
#include <QVBoxLayout>
#include <QWindow>
#include <cmath>

#include "editor/ClickLabel.h"
#include "editor/CodeHighlighter.h"
#include "editor/CompatWarnings.h"
#include "editor/EditorAccessible.h"
#include "editor/EditorLayout.h"
#include "editor/PreviewRunner.h"
#include "editor/SkinArt.h"
#include "editor/SkinRegion.h"
#include "filter/FFL.h"
#include "filter/PluginCompiler.h"
#include "filter/TextFormats.h"
#include "host/ff/FFEngine.h"
#include "picture/PicView.h"
#include "settings/SettingsStore.h"
#include "settings/Latin1.h"

namespace trel {

using namespace layout;

namespace {

constexpr const char* kCaption = "Filter Factory Editor";
constexpr const char* kBatchRefusal =
    "This feature isn't available when the FF Editor\nis run from the Batch dialog.";
const char* const kNameRest[5] = {"Filename", "Category", "Filtername", "Author", "Copyright"};
const char* const kCodeDefault[4] = {"a", "r", "g", "b"};
const char* const kCodeSwitch[4] = {"A=", "R=", "G=", "B="};
const char* const kCodeTip[4] = {"Show/Hide Aphacode", "Show/Hide Redcode", "Show/Hide Greencode",
                                 "Show/Hide Bluecode"};
const char* const kSaveFormats[] = {"Photoshop Plug", "Premiere Plug", "AFS File", "PFF File",
                                    "Text File", "Transition Plug", "FFL Library"};
const char* const kFunctionEntries[] = {
    "abs()", "add(,,)", "c2d(,)", "cnv(,,,,,,,,)", "cos()", "ctl()", "dif(,)", "get()", "map(,)",
    "max(,)", "min(,)", "mix(,,,)", "put(,)", "r2x(,)", "r2y(,)", "rad(,,)", "rnd(,)", "rst()",
    "scl(,,,,)", "sin()", "sqr()", "src(,,)", "sub(,,)", "tan()", "val(,,)"};
const char* const kTools[8] = {"Clear all Memory Spots",
                               "Delete only one Memory Spot",
                               "Show large preview",
                               "Save filtered picture",
                               "Open new BMP picture as preview source",
                               "Create random slider values",
                               "Reset all settings",
                               "Select the font of the code boxes"};
const char* const kToolGlyph[8] = {"C", "D", "L", "S", "O", "?", "N", "F"};

std::string Latin1(const QString& s) { return s.toLatin1().toStdString(); }

template <typename W>
W* Named(W* w, const QString& name, int index = -1) {
  w->setObjectName(index < 0 ? name : name + "_" + QString::number(index));
  return w;
}

// A picture to preview on when no picture was chosen and no Test.bmp stands in
// the program folder: colour ramps, a disc and stripes show most filters well.
QImage GeneratedPreviewPicture() {
  QImage img(320, 240, QImage::Format_RGB32);
  for (int y = 0; y < img.height(); ++y)
    for (int x = 0; x < img.width(); ++x)
      img.setPixel(x, y, qRgb(x * 255 / 319, y * 255 / 239, 255 - (x + y) * 255 / 558));
  QPainter p(&img);
  p.setRenderHint(QPainter::Antialiasing);
  p.setBrush(QColor(250, 240, 200));
  p.setPen(QPen(Qt::black, 3));
  p.drawEllipse(QPointF(160, 120), 70, 70);
  for (int i = 0; i < 8; ++i) p.fillRect(20 + i * 12, 180, 6, 40, i % 2 ? Qt::white : Qt::black);
  return img;
}

QImage Thumb(const QImage& source, const QSize& room) {
  if (source.isNull()) return {};
  QImage t = source.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  return t.convertToFormat(t.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
}

}  // namespace

// Reader messages go to the program; the memory spot marks come to this window.
class FFEditorType1::ReaderShell : public ShellHooks {
 public:
  explicit ReaderShell(FFEditorType1& editor) : editor_(editor) {}
  ShellHooks& outer() const { return editor_.ctx_.shell ? *editor_.ctx_.shell : NullShell(); }
  MsgResult MsgBox(const std::string& text, MsgButtons b, MsgIcon i, const std::string& t) override {
    return outer().MsgBox(text, b, i, t);
  }
  void ErrorMessage(const std::string& d) override { outer().ErrorMessage(d); }
  bool ErrorMessage2(const std::string& d) override { return outer().ErrorMessage2(d); }
  void RefreshActivePane() override { outer().RefreshActivePane(); }
  void MarkMemorySpot(int spot) override {
    if (spot >= 0 && spot < 10) editor_.picture7_[size_t(spot)]->show();
  }
  bool IsMemorySpotMarked(int spot) const override { return editor_.SpotMarked(spot); }
  void StatusDisplay(const std::string& text) override { outer().StatusDisplay(text); }
  bool EscapePressed() override { return outer().EscapePressed(); }

 private:
  FFEditorType1& editor_;
};

FFEditorType1::FFEditorType1(EditorContext context, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint), ctx_(std::move(context)) {
  setObjectName("FFEditorType1");
  setAccessibleName(kCaption);
  readerShell_ = std::make_unique<ReaderShell>(*this);
  pool_.setMaxThreadCount(1);
  timer1_.setSingleShot(true);
  timer1_.setInterval(2000);
  timer1_.setObjectName("Timer1");
  connect(&timer1_, &QTimer::timeout, this, [this] {
    if (check2_->isChecked()) UpdatePreview();
  });
  repeat_.setInterval(95);
  connect(&repeat_, &QTimer::timeout, this, [this] {
    if (repeatSlider_ < 0) return repeat_.stop();
    const int v = SliderValue(repeatSlider_) + repeatStep_;
    if (v < 0 || v > 255) return repeat_.stop();
    SetSliderValue(repeatSlider_, v);
  });
  BuildControls();
  BuildMenus();
  // The window's load: preview picture, snippets, skin, preview size.
  PreparePreviewPic();
  combo2_->setCurrentIndex(0);
  LoadSnippets();
  ReadInterface();
  SetPreviewPicture(previewImage_);
}

FFEditorType1::~FFEditorType1() {
  if (cancel_) cancel_->store(true);
  pool_.waitForDone();
  // What the window keeps between runs: the preview picture's path.
  if (ctx_.store && !previewPath_.empty()) ctx_.store->Save("Settings", "PreviewPic", previewPath_);
}

FilterOptions FFEditorType1::Options() const {
  FilterOptions o = ctx_.options ? ctx_.options() : FilterOptions{};
  if (o.programFolder.empty()) o.programFolder = ctx_.programFolder;
  return o;
}

void FFEditorType1::Message(const std::string& text, MsgIcon icon, const std::string& title) {
  (ctx_.shell ? *ctx_.shell : NullShell()).MsgBox(text, MsgButtons::Ok, icon, title);
}

bool FFEditorType1::BatchRefuses() {
  if (!ctx_.batchFile || ctx_.batchFile().empty()) return false;
  Message(kBatchRefusal, MsgIcon::Exclamation, "Trel");
  return true;
}

ShellHooks& FFEditorType1::readerShell() { return *readerShell_; }

// --- controls ----------------------------------------------------------------

void FFEditorType1::BuildControls() {
  resize(kWidth, kHeight);
  title_ = Named(new QLabel(kCaption, this), "lblTitle");
  title_->setGeometry(kTitle);
  title_->setStyleSheet("QLabel{color:white;font-weight:bold}");
  title_->setAttribute(Qt::WA_TransparentForMouseEvents);
  const char* const buttons[3][3] = {{"cmdHide", "Hide FF Editor", "_"},
                                     {"cmdUnload", "Unload FF Editor from Memory", "x"},
                                     {"cmdMinimize", "Minimize Window", "v"}};
  for (int i = 0; i < 3; ++i) {
    auto* b = Named(new QToolButton(this), buttons[i][0]);
    b->setText(buttons[i][2]);
    b->setToolTip(buttons[i][1]);
    b->setAccessibleName(buttons[i][1]);
    b->setGeometry(WindowButton(i));
    connect(b, &QToolButton::clicked, this, [this, i] {
      if (i == 0) hide();
      else if (i == 1) emit unloadRequested();
      else showMinimized();
    });
  }
  for (int i = 0; i < 5; ++i) {
    auto* l = Named(new ClickLabel(kNameRest[i], this), "Label6", i);
    l->setGeometry(NameField(i));
    l->setAccessibleName(kNameRest[i]);
    connect(l, &ClickLabel::clicked, this, [this, i] {
      if (!text10_->isHidden()) CommitLabelEdit();
      if (i == 0 && BatchRefuses()) return;
      StartEdit(label6_[size_t(i)], 0);
    });
    label6_[size_t(i)] = l;
  }
  for (int n = 0; n < 8; ++n) {
    auto* name = Named(new ClickLabel(QString("Slider %1").arg(n + 1), this), "Label7", n);
    name->setGeometry(SliderName(n));
    name->setAccessibleName(QString("Name of slider %1").arg(n + 1));
    connect(name, &ClickLabel::clicked, this, [this, n] {
      if (!text10_->isHidden()) CommitLabelEdit();
      StartEdit(label7_[size_t(n)], 0);
    });
    connect(name, &ClickLabel::rightClicked, this, [this, n](QPoint at) {
      lockTarget_ = n;
      mnuSliderSwitch_->popup(at);
    });
    label7_[size_t(n)] = name;
    auto* value = Named(new ClickLabel("0", this), "Label1", n);
    value->setGeometry(layout::SliderValue(n));
    value->setAccessibleName(QString("Value of slider %1").arg(n + 1));
    connect(value, &ClickLabel::clicked, this, [this, n] {
      if (!text10_->isHidden()) CommitLabelEdit();
      StartEdit(label1_[size_t(n)], 8);
    });
    label1_[size_t(n)] = value;
    auto* bar = Named(new QScrollBar(Qt::Horizontal, this), "HScroll1", n);
    bar->setRange(0, 255);
    bar->setPageStep(10);
    bar->setGeometry(SliderTrack(n));
    bar->setAccessibleName(QString("Slider %1").arg(n + 1));
    connect(bar, &QScrollBar::valueChanged, this, [this, n](int v) {
      label1_[size_t(n)]->setText(QString::number(v));
      if (!isEnabled() || !check2_->isChecked()) return;
      // While dragged the preview follows only with "apply at once".
      if (hScroll1_[size_t(n)]->isSliderDown() && !(ctx_.applyAtOnce && ctx_.applyAtOnce())) return;
      UpdatePreview();
    });
    connect(bar, &QScrollBar::sliderReleased, this, [this] {
      if (isEnabled() && check2_->isChecked()) UpdatePreview();
    });
    hScroll1_[size_t(n)] = bar;
    auto* track = Named(new SliderPicture(this), "Picture2", n);
    track->setGeometry(SliderTrack(n));
    track->installEventFilter(this);
    track->value = [this, n] { return SliderValue(n); };
    track->setValue = [this, n](int v) { SetSliderValue(n, v); };
    track->spokenName = [this, n] { return SliderSpokenName(n); };
    picture2_[size_t(n)] = track;
    auto* knob = Named(new QLabel(this), "Picture3", n);
    knob->setAccessibleName(QString("Knob of slider %1").arg(n + 1));
    knob->setGeometry(PlaceKnob(0, SliderTrack(n).left(), SliderTrack(n).width(), kKnobWidth),
                      SliderTrack(n).top(), kKnobWidth, SliderTrack(n).height());
    knob->installEventFilter(this);
    picture3_[size_t(n)] = knob;
  }
  for (int m = 0; m < 4; ++m) {
    auto* c = Named(new QCheckBox(QString("Activate Map %1").arg(m + 1), this), "Check1", m);
    c->setGeometry(layout::MapSwitch(m));
    c->setStyleSheet("QCheckBox{color:white;font-size:10px;spacing:2px}");
    connect(c, &QCheckBox::toggled, this, [this, m] {
      MapSwitch(m);
      if (isEnabled() && check2_->isChecked()) UpdatePreview();
    });
    check1_[size_t(m)] = c;
  }
  for (int i = 0; i < 4; ++i) {
    auto* sw = Named(new ClickLabel(kCodeSwitch[i], this), "Label2", i);
    sw->setGeometry(CodeSwitch(i));
    sw->setToolTip(kCodeTip[i]);
    sw->setAccessibleName(kCodeTip[i]);
    sw->SetCheckable(true);
    sw->setAlignment(Qt::AlignCenter);
    connect(sw, &ClickLabel::clicked, this, [this, i] {
      if (!text10_->isHidden()) CommitLabelEdit();
      Label2_Click(i);
      // The box a switch opens is where the next keys go.
      if (VisibleBox() == i) text5_[size_t(i)]->setFocus(Qt::MouseFocusReason);
    });
    label2_[size_t(i)] = sw;
    auto* box = Named(new QPlainTextEdit(this), "Text5", i);
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
      menu->addMenu(mnuExpression_);
      menu->addMenu(mnuCodeSnipet_);
      menu->exec(box->mapToGlobal(at));
      delete menu;
    });
    connect(box, &QPlainTextEdit::textChanged, this, [this] {
      if (isEnabled()) timer1_.start();  // every key restarts the delay
    });
    connect(box, &QPlainTextEdit::cursorPositionChanged, this, [box] { MarkBrackets(box); });
    box->hide();
    text5_[size_t(i)] = box;
  }
  command10_ = Named(new QPushButton("1", this), "Command10");
  command10_->setGeometry(kBoxCount);
  command10_->setToolTip("One code box for all colours, or three");
  command10_->setAccessibleName("One or three code boxes");
  connect(command10_, &QPushButton::clicked, this, &FFEditorType1::Command10_Click);
  command14_ = Named(new QPushButton("F", this), "Command14");
  command14_->setGeometry(kFontButton);
  command14_->setToolTip("Select the font of the code boxes");
  command14_->setAccessibleName(command14_->toolTip());
  connect(command14_, &QPushButton::clicked, this, &FFEditorType1::ChooseCodeFont);
  combo1_[0] = Named(new QComboBox(this), "Combo1", 0);
  combo1_[0]->setToolTip("FF functions ready to paste into a code window");
  combo1_[0]->setAccessibleName(combo1_[0]->toolTip());
  for (const char* f : kFunctionEntries) combo1_[0]->addItem(f);
  combo1_[0]->setPlaceholderText("Functions");
  combo1_[0]->setCurrentIndex(-1);
  combo1_[0]->setGeometry(layout::kFunctionList);
  connect(combo1_[0], &QComboBox::activated, this, [this](int index) {
    InsertFunction(combo1_[0]->itemText(index));
    combo1_[0]->setCurrentIndex(-1);
  });
  combo1_[1] = Named(new QComboBox(this), "Combo1", 1);
  combo1_[1]->setToolTip("Code Snipet Database");
  combo1_[1]->setAccessibleName("Code Snipet Database");
  combo1_[1]->setPlaceholderText("Code Snipet Database");
  combo1_[1]->setGeometry(kSnippetList);
  connect(combo1_[1], &QComboBox::activated, this, [this](int index) {
    InsertSnippet(index);
    combo1_[1]->setCurrentIndex(-1);
  });

  picture1_ = Named(new QLabel(this), "Picture1");
  picture1_->setGeometry(kPreview);
  picture1_->setAlignment(Qt::AlignCenter);
  picture1_->setAccessibleName("Preview");
  picture1_->setStyleSheet("QLabel{background:black}");
  picture6_ = Named(new QLabel(this), "Picture6");
  picture6_->setGeometry(kSpotGrid);
  picture6_->setToolTip("Memory Spots: click to store the sliders");
  picture6_->setAccessibleName("Memory Spots");
  picture6_->installEventFilter(this);
  {
    QImage grid(kSpotGrid.size(), QImage::Format_ARGB32_Premultiplied);
    grid.fill(QColor(255, 255, 255, 150));
    QPainter p(&grid);
    p.setPen(QColor(60, 60, 70));
    for (int c = 0; c <= 5; ++c) p.drawLine(c * (grid.width() - 1) / 5, 0, c * (grid.width() - 1) / 5, grid.height());
    for (int r = 0; r <= 2; ++r) p.drawLine(0, r * (grid.height() - 1) / 2, grid.width(), r * (grid.height() - 1) / 2);
    picture6_->setPixmap(QPixmap::fromImage(grid));
  }
  for (int s = 0; s < 10; ++s) {
    auto* mark = Named(new QLabel(QString::number(s + 1), picture6_), "Picture7", s);
    const int cw = kSpotGrid.width() / 5, ch = kSpotGrid.height() / 2;
    mark->setGeometry((s % 5) * cw + 3, (s / 5) * ch + 2, cw - 6, ch - 4);
    mark->setAlignment(Qt::AlignCenter);
    mark->setStyleSheet("QLabel{background:rgb(230,120,60);color:white;border-radius:3px}");
    mark->installEventFilter(this);
    mark->hide();
    picture7_[size_t(s)] = mark;
    auto* b = Named(new QPushButton(QString::number(s + 1), this), "Command7", s);
    b->setGeometry(SpotButton(s));
    b->setAccessibleName(QString("Memory Spot %1").arg(s + 1));
    b->setStyleSheet("QPushButton{padding:0px;font-size:8pt}");
    connect(b, &QPushButton::clicked, this, [this, s] { Command7_Click(s); });
    command7_[size_t(s)] = b;
  }
  command8_ = Named(new QPushButton("-", this), "Command8");
  command8_->setGeometry(kDeleteSpot);
  command8_->setToolTip("Click, then select a Spot to delete");
  command8_->setAccessibleName("Delete");
  connect(command8_, &QPushButton::clicked, this, [this] {
    deletePending_ = true;
    command8_->setEnabled(false);
    setCursor(Qt::PointingHandCursor);
  });
  for (int i = 0; i < 8; ++i) {
    auto* t = Named(new ClickLabel(kToolGlyph[i], this), "Label9", i);
    t->SetToolStyle(true);
    t->setAlignment(Qt::AlignCenter);
    t->setGeometry(ToolLabel(i));
    t->setToolTip(kTools[i]);
    t->setAccessibleName(kTools[i]);
    connect(t, &ClickLabel::clicked, this, [this, i] {
      switch (i) {
        case 0: ClearAllSpots(); break;
        case 1: command8_->click(); break;
        case 2: ApplyFilterToPicture(); break;
        case 3: ApplyFilterToPicture(); SavePreviewPicture(); break;
        case 4: OpenPreviewPicture(); break;
        case 5: RandomizeSliders(); break;
        case 6: NewFilter(); break;
        case 7: ChooseCodeFont(); break;
      }
    });
    label9_[size_t(i)] = t;
  }
  check2_ = Named(new QCheckBox("Auto Preview", this), "Check2");
  check2_->setGeometry(kAutoPreview);
  check2_->setChecked(true);
  check2_->setStyleSheet("QCheckBox{color:white}");
  connect(check2_, &QCheckBox::toggled, this, [this](bool on) {
    if (on) UpdatePreview();
  });
  combo2_ = Named(new QComboBox(this), "Combo2");
  for (const char* f : kSaveFormats) combo2_->addItem(f);
  combo2_->setGeometry(kSaveFormat);
  combo2_->setAccessibleName("Save format");
  auto* save = Named(new QPushButton("Save", this), "cmdSave");
  save->setGeometry(kSaveButton);
  save->setAccessibleName("Save");
  save->setToolTip("Save the filter in the chosen format (Ctrl+S)");
  connect(save, &QPushButton::clicked, this, [this] { SaveFilterAs(combo2_->currentIndex()); });
  mailLink_ = Named(new ClickLabel("Mail the designer", this), "MailLink");
  mailLink_->SetToolStyle(true);
  mailLink_->setGeometry(kDefaultMail);
  mailLink_->hide();
  connect(mailLink_, &ClickLabel::clicked, this, [this] {
    QDesktopServices::openUrl(QUrl("mailto:" + Latin1(mailAddress_) + "?subject=Your Design"));
  });
  codeError_ = Named(new QLabel(this), "CodeError");
  codeError_->setStyleSheet("QLabel{color:rgb(255,90,70);font-weight:bold}");
  codeError_->setWordWrap(true);
  codeError_->hide();
  text10_ = Named(new QLineEdit(this), "Text10");
  text10_->setAccessibleName("Edit box");
  text10_->installEventFilter(this);
  text10_->hide();
  connect(text10_, &QLineEdit::returnPressed, this, &FFEditorType1::CommitLabelEdit);
  connect(text10_, &QLineEdit::editingFinished, this, [this] {
    if (!text10_->isHidden()) CommitLabelEdit();
  });
  for (int n = 0; n < 8; ++n) ShowSlider(n, false);
  Label2_Click(1);
  // The window buttons come last for Tab: the keys belong to the code and the fields.
  QWidget* before = text10_;
  for (const char* name : {"cmdHide", "cmdUnload", "cmdMinimize"}) {
    QWidget* button = findChild<QWidget*>(name);
    setTabOrder(before, button);
    before = button;
  }
}

void FFEditorType1::BuildMenus() {
  auto add = [this](QMenu* menu, const char* name, const QString& caption, auto slot,
                    QKeySequence key = {}) {
    QAction* a = menu->addAction(caption);
    a->setObjectName(name);
    if (!key.isEmpty()) {
      a->setShortcut(key);
      a->setShortcutContext(Qt::WindowShortcut);
      addAction(a);
    }
    connect(a, &QAction::triggered, this, slot);
    return a;
  };
  mnuFfeFunctions_ = Named(new QMenu("&Project", this), "mnuFfeFunctions_FFE");
  QMenu* m = mnuFfeFunctions_;
  add(m, "mnuCopyFilter2Clip_FFE", "Copy Filter to Clipboard", [this] { CopyFilterToClipboard(); },
      QKeySequence("Ctrl+Shift+C"));
  add(m, "mnuPasteFilter_FFE", "Paste Filter from Clipboard", [this] { PasteFilterFromClipboard(); },
      QKeySequence("Ctrl+Shift+V"));
  add(m, "mnuFindReplace_FFE", "Find and Replace", [this] { ShowFindReplace(); },
      QKeySequence("Ctrl+H"));
  mnuAlphaChannel_ = add(m, "mnuAlphaChannel", "Alpha Channel Display", [this] { UpdatePreview(); });
  mnuAlphaChannel_->setCheckable(true);
  add(m, "mnuUpdatePreview_FFE", "Update Preview", [this] { UpdatePreview(); }, QKeySequence("F5"));
  add(m, "mnuApplyFilter_FFE", "Apply (Filter)", [this] { ApplyFilterToPicture(); },
      QKeySequence("Ctrl+Return"));
  m->addSeparator();
  add(m, "mnuRandomize_FFE", "Randomize", [this] { RandomizeSliders(); }, QKeySequence("Ctrl+R"));
  add(m, "mnuFfeReset_FFE", "Reset", [this] { NewFilter(); }, QKeySequence("Ctrl+N"));
  m->addSeparator();
  add(m, "mnuOpenPicture_FFE", "Open Picture...", [this] { OpenPreviewPicture(); },
      QKeySequence("Ctrl+O"));
  add(m, "mnuSavePicture_FFE", "Save Picture...", [this] { SavePreviewPicture(); });
  QMenu* saveAs = Named(m->addMenu("Save (Filter) As"), "mnuSaveAs_FFE");
  const char* const entries[] = {"Photoshop Plugin", "Premiere Filter", "AFS File", "PFF File",
                                 "Text File", "Transition Filter", "Add to FFL Library"};
  for (int i = 0; i < 7; ++i) {
    QAction* a = saveAs->addAction(entries[i]);
    a->setObjectName(QString("mnuSaveFilterAs_FFE_%1").arg(i));
    connect(a, &QAction::triggered, this, [this, i] { SaveFilterAs(i); });
  }
  QAction* save = new QAction(this);
  save->setShortcut(QKeySequence("Ctrl+S"));
  connect(save, &QAction::triggered, this, [this] { SaveFilterAs(combo2_->currentIndex()); });
  addAction(save);
  add(m, "mnuCopyPreview_FFE", "Copy Preview to Clipboard", [this] {
    QGuiApplication::clipboard()->clear();
    QGuiApplication::clipboard()->setImage(previewResult_);
  });
  m->addSeparator();
  add(m, "mnuPrinterSetup_FFE", "Print Setup...", [this] { PrinterSetup(); });
  add(m, "mnuPrintFilter_FFE", "Print Filter...", [this] {
    if (!printer_) printer_ = std::make_unique<QPrinter>();
    PrintFilter(*printer_);
  }, QKeySequence("Ctrl+P"));

  mnuSliderSwitch_ = Named(new QMenu("SliderSwitch", this), "mnuSliderSwitch_FFE");
  add(mnuSliderSwitch_, "mnuDeactivate_FFE", "Lock for Randomize", [this] { SetLocked(lockTarget_, true); });
  add(mnuSliderSwitch_, "mnuActivate_FFE", "Unlock for Randomize", [this] { SetLocked(lockTarget_, false); });

  mnuCodeSnipet_ = Named(new QMenu("Code Snipet", this), "mnuCodeSnipet_FFE");
  mnuExpression_ = Named(new QMenu("FF Expressions", this), "mnuExpression_FFE");
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
    QMenu* menu = Named(mnuExpression_->addMenu(sub.caption), sub.name);
    int index = 0;
    for (const char* e : sub.entries) {
      QAction* a = menu->addAction(e);
      a->setObjectName(QString("%1_%2").arg(sub.name).arg(index++));
      const QString text = e;
      connect(a, &QAction::triggered, this, [this, text] { InsertInCode(text); });
    }
  }
}

void FFEditorType1::LoadSnippets() {
  snippets_.clear();
  combo1_[1]->clear();
  mnuCodeSnipet_->clear();
  QFile file(QString::fromStdString(ctx_.programFolder) + "Snipets.db");
  if (file.open(QIODevice::ReadOnly)) snippets_ = ParseSnipets(file.read(4 << 20).toStdString());
  for (size_t i = 0; i < snippets_.size(); ++i) {
    combo1_[1]->addItem(Latin1(snippets_[i].name));
    QAction* a = mnuCodeSnipet_->addAction(Latin1(snippets_[i].name));
    a->setObjectName(QString("mnuSnipet_FFE_%1").arg(i));
    connect(a, &QAction::triggered, this, [this, i] { InsertSnippet(int(i)); });
  }
  combo1_[1]->setCurrentIndex(-1);
}

// --- the skin -----------------------------------------------------------------

void FFEditorType1::LoadSkin(const std::string& interfaceFile) {
  ctx_.interfaceFile = [interfaceFile] { return interfaceFile; };
  ReadInterface();
}

void FFEditorType1::ReadInterface() {
  setWindowTitle(QString());
  const InterfaceListing listing = LookforInterfaceFiles(ctx_.programFolder);
  interfaceFolder_ = listing.folderName.empty() ? "interface" : listing.folderName;
  interfaceFile_ = ctx_.interfaceFile ? ctx_.interfaceFile() : std::string();
  if (interfaceFile_.empty() || interfaceFile_ == "OFF") interfaceFile_ = kDefaultInterfaceFile;
  const std::string path = ResolveInterfacePath(ctx_.programFolder, interfaceFolder_, interfaceFile_);
  ReadDesFile(path, skin_);
  const QString folder = QFileInfo(QString::fromStdString(path)).absolutePath();
  background_ = skin_.picture.empty() ? QImage() : QImage(folder + "/" + Latin1(skin_.picture));
  if (skin_.sizeRead && skin_.width > 0 && skin_.height > 0) setFixedSize(skin_.width, skin_.height);
  else setFixedSize(kWidth, kHeight);

  // A skin starts from the window as designed: no mail link until a skin names one.
  mailLink_->setGeometry(kDefaultMail);
  mailLink_->hide();
  mailAddress_.clear();
  graphSliders_ = skin_.graphSliders;
  tileSet_ = std::clamp(skin_.tileSet, 0, 2);
  for (int n = 0; n < 8; ++n) {
    const QRect t = SliderTrack(n);
    picture2_[size_t(n)]->setPixmap(QPixmap::fromImage(TrackTile(tileSet_, t.width(), t.height())));
    picture3_[size_t(n)]->setPixmap(QPixmap::fromImage(KnobTile(tileSet_, t.height())));
    ShowSlider(n, sliderShown_[size_t(n)]);
    PlaceSlider(n, SliderValue(n));
  }
  if (!skin_.mailItemRead) {
    mailLink_->setToolTip(QString());
    mailLink_->hide();
  } else if (skin_.mailSeen) {
    const DesBox& b = skin_.mailBox;
    mailLink_->setGeometry(b.left, b.top, b.right - b.left, b.bottom - b.top);
    mailAddress_ = skin_.mailAddress;
    mailLink_->setToolTip(Latin1(skin_.mailToolTip));
    mailLink_->setAccessibleName(Latin1(skin_.mailToolTip));
    mailLink_->show();
  }
  QRect code = kDefaultCode;
  if (skin_.codeSeen) {
    const DesBox& b = skin_.codeBox;
    code = QRect(b.left, b.top, b.right - b.left, b.bottom - b.top);
  }
  if (!skin_.codeItemRead || skin_.codeSeen)
    for (auto* box : text5_) box->setGeometry(code);
  codeError_->setGeometry(text5_[0]->x(), text5_[0]->geometry().bottom() + 2, text5_[0]->width(), 28);

  const QRegion outline = BuildSkinRegion(skin_);
  if (outline.isEmpty()) {
    clearMask();
    Message("SetWindowRegion Error:  0", MsgIcon::Exclamation, "Trel");
  } else {
    setMask(outline);
  }
  update();
  setWindowTitle(kCaption);
}

void FFEditorType1::paintEvent(QPaintEvent*) {
  QPainter p(this);
  if (!background_.isNull()) {
    p.drawImage(0, 0, background_);
  } else {
    p.fillRect(rect(), QColor(70, 80, 100));
  }
}

// --- filter and controls ----------------------------------------------------------

void FFEditorType1::ShowSlider(int n, bool visible) {
  sliderShown_[size_t(n)] = visible;
  hScroll1_[size_t(n)]->setVisible(visible && !graphSliders_);
  picture2_[size_t(n)]->setVisible(visible && graphSliders_);
  picture3_[size_t(n)]->setVisible(visible && graphSliders_);
  if (visible && graphSliders_) picture3_[size_t(n)]->raise();
  label1_[size_t(n)]->setVisible(visible);
  hScroll1_[size_t(n)]->setAccessibleName(SliderSpokenName(n));
}

QString FFEditorType1::SliderSpokenName(int n) const {
  const QString shown = !label7_[size_t(n)]->isHidden()
                            ? label7_[size_t(n)]->text()
                            : label7_[size_t(n & ~1)]->text();  // a map's second slider
  return shown.isEmpty() ? QString("Slider %1").arg(n + 1) : shown;
}

void FFEditorType1::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  // Typing starts in the code, not on a window button.
  const int box = VisibleBox();
  if (box >= 0 && text10_->isHidden()) text5_[size_t(box)]->setFocus(Qt::ActiveWindowFocusReason);
}

void FFEditorType1::PlaceSlider(int n, int value) {
  value = std::clamp(value, 0, 255);
  knobValue_[size_t(n)] = value;
  {
    const QSignalBlocker quiet(hScroll1_[size_t(n)]);
    hScroll1_[size_t(n)]->setValue(value);
  }
  const QRect t = SliderTrack(n);
  picture3_[size_t(n)]->move(PlaceKnob(value, t.left(), t.width(), kKnobWidth), t.top());
  label1_[size_t(n)]->setText(QString::number(value));
}

int FFEditorType1::SliderValue(int n) const {
  return graphSliders_ ? knobValue_[size_t(n)] : hScroll1_[size_t(n)]->value();
}

void FFEditorType1::SetSliderValue(int n, int value) {
  value = std::clamp(value, 0, 255);
  const bool changed = value != SliderValue(n);
  PlaceSlider(n, value);
  label1_[size_t(n)]->repaint();
  if (changed && isEnabled() && check2_->isChecked()) UpdatePreview();
}

void FFEditorType1::FilterToEditor() {
  FFFilter& f = *ctx_.filter;
  setEnabled(false);
  const std::string* names[5] = {&f.filename, &f.category, &f.title, &f.author, &f.copyright};
  for (int i = 0; i < 5; ++i) label6_[size_t(i)]->setText(Latin1(*names[i]));
  for (int m = 0; m < 4; ++m) {
    const bool map = !f.mapName[m + 1].empty();
    {
      const QSignalBlocker quiet(check1_[size_t(m)]);
      check1_[size_t(m)]->setChecked(map);
    }
    for (int k = 0; k < 2; ++k) {
      const int n = 2 * m + k;
      label7_[size_t(n)]->setText(Latin1(map && k == 0 ? f.mapName[m + 1] : f.ctlName[n + 1]));
      PlaceSlider(n, f.ctlValue[n + 1]);
    }
    MapSwitch(m);
  }
  const std::string* codes[4] = {&f.codeA, &f.codeR, &f.codeG, &f.codeB};
  for (int i = 0; i < 4; ++i) text5_[size_t(i)]->setPlainText(Latin1(*codes[i]));
  ClearCodeError();
  setEnabled(true);
  timer1_.stop();  // filling the boxes is no typing
}

void FFEditorType1::EditorToFilter() {
  FFFilter& f = *ctx_.filter;
  std::string* names[5] = {&f.filename, &f.category, &f.title, &f.author, &f.copyright};
  for (int i = 0; i < 5; ++i) *names[i] = Latin1(label6_[size_t(i)]->text());
  for (int m = 0; m < 4; ++m) {
    if (!check1_[size_t(m)]->isChecked()) {
      f.mapName[m + 1].clear();
      f.ctlName[2 * m + 1] = Latin1(label7_[size_t(2 * m)]->text());
      f.ctlName[2 * m + 2] = Latin1(label7_[size_t(2 * m + 1)]->text());
    } else {
      f.mapName[m + 1] = Latin1(label7_[size_t(2 * m)]->text());
      f.ctlName[2 * m + 1].clear();
      f.ctlName[2 * m + 2].clear();
    }
  }
  for (int n = 0; n < 8; ++n)
    f.ctlValue[n + 1] = static_cast<uint8_t>(NormalizeSliderValue(Latin1(label1_[size_t(n)]->text())));
  std::string* codes[4] = {&f.codeA, &f.codeR, &f.codeG, &f.codeB};
  for (int i = 0; i < 4; ++i) *codes[i] = Latin1(text5_[size_t(i)]->toPlainText());
}

void FFEditorType1::MapSwitch(int m) {
  const size_t a = size_t(2 * m), b = size_t(2 * m + 1);
  if (check1_[size_t(m)]->isChecked()) {
    label7_[b]->hide();
    label7_[a]->show();
    label7_[a]->setEnabled(false);
    ShowSlider(int(a), true);
    ShowSlider(int(b), true);
  } else {
    label7_[a]->setEnabled(true);
    label7_[a]->show();
    label7_[b]->show();
    for (size_t n : {a, b}) ShowSlider(int(n), !label7_[n]->text().isEmpty());
  }
}

bool FFEditorType1::NewFilter() {
  if (BatchRefuses()) return false;
  ShellHooks& shell = ctx_.shell ? *ctx_.shell : NullShell();
  if (shell.MsgBox("Delete the current filter?", MsgButtons::OkCancel, MsgIcon::Question,
                   "Attention") != MsgResult::Ok)
    return false;
  setEnabled(false);
  for (int i = 0; i < 5; ++i) label6_[size_t(i)]->setText(kNameRest[i]);
  for (int i = 0; i < 4; ++i) text5_[size_t(i)]->setPlainText(kCodeDefault[i]);
  for (int m = 0; m < 4; ++m) {
    const QSignalBlocker quiet(check1_[size_t(m)]);
    check1_[size_t(m)]->setChecked(false);
    label7_[size_t(2 * m)]->setEnabled(true);
  }
  for (int n = 0; n < 8; ++n) {
    PlaceSlider(n, 0);
    label7_[size_t(n)]->setText(QString());
    label7_[size_t(n)]->show();
    ShowSlider(n, false);
  }
  ClearCodeError();
  setEnabled(true);
  timer1_.stop();
  previewResult_ = previewImage_;
  picture1_->setPixmap(QPixmap::fromImage(previewImage_));
  return true;
}

// --- label editing --------------------------------------------------------------------

void FFEditorType1::StartEdit(QLabel* label, int extraWidth) {
  editedLabel_ = label;
  text10_->setText(label->text());
  text10_->setGeometry(label->x(), label->y(), label->width() + extraWidth, label->height());
  text10_->setFont(label->font());
  text10_->selectAll();
  text10_->show();
  text10_->raise();
  text10_->setFocus();
}

void FFEditorType1::CancelLabelEdit() {
  QLabel* label = editedLabel_;
  editedLabel_ = nullptr;
  const bool typing = text10_->hasFocus();
  text10_->hide();
  if (typing && label) label->setFocus(Qt::OtherFocusReason);
}

void FFEditorType1::CommitLabelEdit() {
  QLabel* label = editedLabel_;
  editedLabel_ = nullptr;
  // Ended by Return: the keys go back to the field, never on to a button
  // (ended by a click elsewhere, the focus is already where the user put it).
  const bool typing = text10_->hasFocus();
  text10_->hide();
  if (!label) return;
  if (typing) label->setFocus(Qt::OtherFocusReason);
  const QString typed = text10_->text();
  for (int n = 0; n < 8; ++n) {
    if (label == label1_[size_t(n)]) {
      const int v = NormalizeSliderValue(Latin1(typed));
      label->setText(QString::number(v));
      SetSliderValue(n, v);
      return;
    }
    if (label == label7_[size_t(n)]) {
      label->setText(typed);
      const int m = MapOfSlider(n);
      if (check1_[size_t(m)]->isChecked()) {
        ShowSlider(2 * m, !typed.isEmpty());
        ShowSlider(2 * m + 1, !typed.isEmpty());
      } else {
        ShowSlider(n, !typed.isEmpty());
      }
      return;
    }
  }
  label->setText(typed);
}

// --- code boxes ------------------------------------------------------------------------

int FFEditorType1::VisibleBox() const {
  for (int i = 0; i < 4; ++i)
    if (!text5_[size_t(i)]->isHidden()) return i;
  return -1;
}

void FFEditorType1::Label2_Click(int i) {
  QFont bold = label2_[size_t(i)]->font();
  if (label2_[size_t(i)]->font().bold()) {
    bold.setBold(false);
    label2_[size_t(i)]->setFont(bold);
    text5_[size_t(i)]->hide();
    combo1_[0]->setEnabled(false);
    combo1_[1]->setEnabled(false);
    return;
  }
  for (int j = 0; j < 4; ++j) {
    QFont f = label2_[size_t(j)]->font();
    f.setBold(j == i);
    label2_[size_t(j)]->setFont(f);
    text5_[size_t(j)]->setVisible(j == i);
  }
  text5_[size_t(i)]->selectAll();
  combo1_[0]->setEnabled(true);
  combo1_[1]->setEnabled(true);
}

void FFEditorType1::Command10_Click() {
  if (command10_->text() != "1") {
    command10_->setText("1");
    label2_[1]->setText("R=");
    label2_[2]->show();
    label2_[3]->show();
  } else {
    command10_->setText("3");
    label2_[1]->setText("C=");
    for (size_t j : {size_t(2), size_t(3)}) {
      label2_[j]->hide();
      QFont f = label2_[j]->font();
      f.setBold(false);
      label2_[j]->setFont(f);
      text5_[j]->hide();
    }
  }
}

void FFEditorType1::InsertInCode(const QString& text) {
  const int i = VisibleBox();
  if (i < 0) return;
  QPlainTextEdit* box = text5_[size_t(i)];
  QTextCursor c = box->textCursor();
  c.insertText(text);
  c.setPosition(c.position() - int(text.size()));
  c.setPosition(c.position() + int(text.size()), QTextCursor::KeepAnchor);
  box->setTextCursor(c);
  box->setFocus();
  if (check2_->isChecked()) UpdatePreview();
}

void FFEditorType1::InsertFunction(const QString& entry) {
  const int i = VisibleBox();
  if (i < 0) return;
  QPlainTextEdit* box = text5_[size_t(i)];
  QTextCursor c = box->textCursor();
  c.insertText(entry);
  const int end = c.position();
  c.setPosition(end - int(entry.size()) + int(entry.indexOf('(')) + 1);
  box->setTextCursor(c);
  box->setFocus();
  if (check2_->isChecked()) UpdatePreview();
}

void FFEditorType1::InsertSnippet(int index) {
  if (index < 0 || size_t(index) >= snippets_.size()) return;
  InsertInCode(Latin1(snippets_[size_t(index)].code));
}

int FFEditorType1::FindAndReplace(const QString& find, const QString& replace, bool all) {
  const int i = VisibleBox();
  if (i < 0 || find.isEmpty()) return 0;
  QPlainTextEdit* box = text5_[size_t(i)];
  int count = 0;
  if (all) {
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

void FFEditorType1::ShowFindReplace() {
  QDialog dialog(this);
  dialog.setObjectName("FindReplace");
  dialog.setWindowTitle("Find and Replace");
  auto* form = new QFormLayout(&dialog);
  auto* find = Named(new QLineEdit(&dialog), "txtFind");
  auto* replace = Named(new QLineEdit(&dialog), "txtReplace");
  const int box = VisibleBox();
  if (box >= 0) find->setText(text5_[size_t(box)]->textCursor().selectedText());
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
    FindAndReplace(find->text(), replace->text(), false);
  });
  connect(all, &QPushButton::clicked, &dialog, [&] {
    status->setText(QString("%1 replaced").arg(FindAndReplace(find->text(), replace->text(), true)));
  });
  connect(close, &QPushButton::clicked, &dialog, &QDialog::accept);
  if (VisibleBox() < 0) Label2_Click(1);
  dialog.exec();
}

void FFEditorType1::ChooseCodeFont() {
  bool ok = false;
  const QFont font = QFontDialog::getFont(&ok, text5_[0]->font(), this, "Code Font");
  if (!ok) return;
  for (auto* box : text5_) box->setFont(font);
}

// --- preview -----------------------------------------------------------------------------

void FFEditorType1::PreparePreviewPic() {
  std::string path = ctx_.store ? ctx_.store->Get("Settings", "PreviewPic") : std::string();
  QImage source;
  if (!path.empty()) source = QImage(QString::fromStdString(path));
  if (source.isNull()) {
    path = ctx_.programFolder + "Test.bmp";
    source = QImage(QString::fromStdString(path));
  }
  if (source.isNull()) {
    path.clear();
    source = GeneratedPreviewPicture();
  }
  previewPath_ = path;
  previewImage_ = Thumb(source, kPreview.size());
}

void FFEditorType1::SetPreviewPicture(const QImage& picture) {
  previewImage_ = Thumb(picture, kPreview.size());
  const QSize size = previewImage_.size();
  picture1_->setGeometry(kPreview.x() + (kPreview.width() - size.width()) / 2,
                         kPreview.y() + (kPreview.height() - size.height()) / 2, size.width(),
                         size.height());
  previewResult_ = previewImage_;
  picture1_->setPixmap(QPixmap::fromImage(previewImage_));
}

void FFEditorType1::SetAlphaDisplay(bool on) { mnuAlphaChannel_->setChecked(on); }
void FFEditorType1::SetAutoPreview(bool on) {
  const QSignalBlocker quiet(check2_);
  check2_->setChecked(on);
}
void FFEditorType1::SetTypingDelay(int ms) { timer1_.setInterval(ms); }

QString FFEditorType1::codeError() const { return codeError_->isHidden() ? QString() : codeError_->text(); }

void FFEditorType1::ShowCodeError(int channel, size_t position, const std::string& message) {
  static const char* const kChannel[4] = {"R", "G", "B", "A"};
  static const int kBox[4] = {1, 2, 3, 0};
  const int ch = std::clamp(channel, 0, 3);
  int box = kBox[ch];
  // In one-box mode green and blue are copies of the red box.
  if (command10_->text() == "3" && (box == 2 || box == 3)) box = 1;
  codeError_->setText(QString("%1: position %2: %3")
                          .arg(kChannel[ch])
                          .arg(position + 1)
                          .arg(Latin1(message)));
  codeError_->show();
  codeError_->raise();
  if (text5_[size_t(box)]->isHidden()) Label2_Click(box);
  QTextCursor c = text5_[size_t(box)]->textCursor();
  c.setPosition(std::min<int>(int(position), int(text5_[size_t(box)]->toPlainText().size())));
  text5_[size_t(box)]->setTextCursor(c);
}

void FFEditorType1::ClearCodeError() {
  codeError_->clear();
  codeError_->hide();
}

bool FFEditorType1::UpdatePreview() {
  if (!isEnabled()) return false;
  for (int i = 0; i < 4; ++i)
    if (text5_[size_t(i)]->toPlainText().isEmpty()) {
      const QSignalBlocker quiet(text5_[size_t(i)]);
      text5_[size_t(i)]->setPlainText(kCodeDefault[i]);
    }
  setWindowTitle("Calculating...");
  if (previewImage_.isNull()) {
    setWindowTitle(kCaption);
    return false;
  }
  EditorToFilter();
  FFFilter f = *ctx_.filter;
  if (command10_->text() == "3") f.codeG = f.codeB = f.codeR;
  // The engine says at once where a code is wrong; the plugin route would only fail.
  ff::CompileError err;
  const ff::CompiledFilter compiled = ff::CompileFilter({f.codeR, f.codeG, f.codeB, f.codeA}, &err);
  ShowCompatWarnings(this, codeError_, {text5_[1], text5_[2], text5_[3], text5_[0]}, command10_->text() == "3",
                     compiled.valid() ? compiled.compatWarnings() : std::vector<ff::CompatWarning>{});
  if (!compiled.valid()) {
    ShowCodeError(err.channel, err.position, err.message);
    setWindowTitle(kCaption);
    return false;
  }
  ClearCodeError();
  const PreviewPlan plan = PlanPreview(f, mnuAlphaChannel_->isChecked());
  if (cancel_) cancel_->store(true);
  cancel_ = std::make_shared<std::atomic<bool>>(false);
  PreviewJob job{f, plan.passes, Options(), previewImage_, cancel_};
  const int id = ++jobCounter_;
  const bool alpha = plan.alphaDisplay;
  inPluginCompile_ = false;
  pool_.start([this, job = std::move(job), id, alpha]() mutable {
    PreviewOutcome out = RunPreviewJob(std::move(job));
    if (out.cancelled) return;
    QMetaObject::invokeMethod(
        this,
        [this, id, alpha, picture = std::move(out.picture), ok = out.ok,
         message = QString::fromStdString(out.message)]() mutable {
          PreviewDone(id, std::move(picture), ok, message, alpha);
        },
        Qt::QueuedConnection);
  });
  return true;
}

void FFEditorType1::PreviewDone(int job, QImage result, bool ok, QString message, bool alpha) {
  if (job != jobCounter_) return;  // a newer edit is on its way
  jobShown_ = job;
  ++previewRuns_;
  if (ok) {
    if (alpha) {
      QPainter p(&result);
      QFont font("Arial", 8);
      font.setBold(true);
      p.setFont(font);
      p.setPen(QColor(255, 0, 0));
      const QFontMetrics fm(font);
      p.drawText(result.width() - fm.horizontalAdvance("Alpha") - 5, result.height() - 5, "Alpha");
    }
    previewResult_ = result;
    picture1_->setPixmap(QPixmap::fromImage(result));
  } else {
    codeError_->setText(message);
    codeError_->show();
  }
  setWindowTitle(kCaption);
  emit previewFinished(ok);
}

bool FFEditorType1::WaitForPreview(int timeoutMs) {
  QElapsedTimer t;
  t.start();
  while (jobShown_ != jobCounter_ && t.elapsed() < timeoutMs)
    QApplication::processEvents(QEventLoop::AllEvents, 20);
  return jobShown_ == jobCounter_;
}

void FFEditorType1::ApplyFilterToPicture() {
  if (BatchRefuses()) return;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  setWindowTitle("Calculating ...");
  QImage full = previewPath_.empty() ? GeneratedPreviewPicture() : QImage(QString::fromStdString(previewPath_));
  if (full.isNull()) full = GeneratedPreviewPicture();
  EditorToFilter();
  FFFilter f = *ctx_.filter;
  if (command10_->text() == "3") f.codeG = f.codeB = f.codeR;
  PreviewJob job{f, {PassCodes{f.codeR, f.codeG, f.codeB, f.codeA}}, Options(), full, nullptr};
  PreviewOutcome out = RunPreviewJob(std::move(job));
  inPluginCompile_ = true;
  QApplication::restoreOverrideCursor();
  setWindowTitle(kCaption);
  if (!out.ok) {
    Message(out.message, MsgIcon::Critical, "Trel");
    return;
  }
  if (!picView_) picView_ = new PicView(this);
  picView_->SetPicture(out.picture, Latin1(f.title));
  picView_->show();
  picView_->raise();
}

void FFEditorType1::OpenPreviewPicture() {
  if (BatchRefuses()) return;
  const QString file = QFileDialog::getOpenFileName(this, "Open Picture", QString(),
                                                    "Pictures (*.bmp *.png *.jpg *.jpeg *.gif *.ppm *.xpm)");
  if (file.isEmpty()) return;
  const QImage picture(file);
  if (picture.isNull()) {
    Message("The picture could not be read.", MsgIcon::Exclamation, "Trel");
    return;
  }
  previewPath_ = file.toStdString();
  SetPreviewPicture(picture);
  UpdatePreview();
}

void FFEditorType1::SavePreviewPicture() {
  if (BatchRefuses()) return;
  const QString file = QFileDialog::getSaveFileName(this, "Save Picture", QString(), "Pictures (*.bmp *.png *.jpg)");
  if (file.isEmpty()) return;
  const QImage picture = picView_ && picView_->isVisible() ? picView_->Picture() : previewResult_;
  if (!picture.save(file)) Message("The picture could not be written.", MsgIcon::Exclamation, "Trel");
}

// --- sliders, maps and memory spots ----------------------------------------------------

void FFEditorType1::SetLocked(int n, bool locked) {
  QFont f = label7_[size_t(n)]->font();
  f.setStrikeOut(locked);
  label7_[size_t(n)]->setFont(f);
}

bool FFEditorType1::Locked(int n) const { return label7_[size_t(n)]->font().strikeOut(); }

bool FFEditorType1::RandomizeSliders() {
  setEnabled(false);
  QRandomGenerator random(static_cast<quint32>(QDateTime::currentMSecsSinceEpoch()));
  for (int n = 0; n < 8; ++n) {
    const bool named = !label7_[size_t(n)]->text().isEmpty() || check1_[size_t(n / 2)]->isChecked();
    if (!named || Locked(n)) continue;
    PlaceSlider(n, static_cast<int>(std::nearbyint(255.0 * random.generateDouble())));
  }
  setEnabled(true);
  return UpdatePreview();
}

void FFEditorType1::StoreSpot(int s) {
  for (int n = 0; n < 8; ++n) ctx_.filter->presets[size_t(n)][size_t(s)] = int16_t(SliderValue(n));
  picture7_[size_t(s)]->show();
}

void FFEditorType1::RecallSpot(int s) {
  setEnabled(false);
  for (int n = 0; n < 8; ++n) PlaceSlider(n, ctx_.filter->presets[size_t(n)][size_t(s)]);
  setEnabled(true);
  UpdatePreview();
}

bool FFEditorType1::SpotMarked(int s) const {
  return !picture7_[size_t(s)]->isHidden() || command7_[size_t(s)]->font().bold();
}

void FFEditorType1::ClearAllSpots() {
  for (int s = 0; s < 10; ++s) {
    for (int n = 0; n < 8; ++n) ctx_.filter->presets[size_t(n)][size_t(s)] = 0;
    QFont f = command7_[size_t(s)]->font();
    f.setBold(false);
    command7_[size_t(s)]->setFont(f);
    picture7_[size_t(s)]->hide();
  }
}

void FFEditorType1::Command7_Click(int s) {
  QFont f = command7_[size_t(s)]->font();
  if (deletePending_) {
    f.setBold(false);
    command7_[size_t(s)]->setFont(f);
    deletePending_ = false;
    command8_->setEnabled(true);
    unsetCursor();
  } else if (f.bold()) {
    RecallSpot(s);
  } else {
    StoreSpot(s);
    f.setBold(true);
    command7_[size_t(s)]->setFont(f);
  }
}

void FFEditorType1::SpotClick(int s) {
  if (!deletePending_) StoreSpot(s);
}

void FFEditorType1::TrackPress(int n, int x) {
  const QRect t = SliderTrack(n);
  if (x <= 15 || x > t.width() - 15) {
    repeatSlider_ = n;
    repeatStep_ = x <= 15 ? -1 : 1;
    const int v = SliderValue(n) + repeatStep_;
    if (v >= 0 && v <= 255) SetSliderValue(n, v);
    repeat_.start();
    return;
  }
  const int left = KnobLeftForPress(x, t.left(), t.width(), kKnobWidth);
  const int v = left >= t.left() + t.width() - 1 - kKnobWidth ? 255 : KnobValue(left, t.left(), t.width(), kKnobWidth);
  SetSliderValue(n, v);
}

void FFEditorType1::KnobDrag(int n, int xInWindow) {
  const QRect t = SliderTrack(n);
  const int left = KnobLeftForPress(xInWindow - t.left(), t.left(), t.width(), kKnobWidth);
  const int v = left >= t.left() + t.width() - 1 - kKnobWidth ? 255 : KnobValue(left, t.left(), t.width(), kKnobWidth);
  knobValue_[size_t(n)] = v;
  picture3_[size_t(n)]->move(left, t.top());
  label1_[size_t(n)]->setText(QString::number(v));
  if (ctx_.applyAtOnce && ctx_.applyAtOnce() && check2_->isChecked()) UpdatePreview();
}

bool FFEditorType1::eventFilter(QObject* watched, QEvent* event) {
  const auto type = event->type();
  if (watched == text10_ && type == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
    CancelLabelEdit();
    return true;
  }
  if (type != QEvent::MouseButtonPress && type != QEvent::MouseMove && type != QEvent::MouseButtonRelease)
    return QWidget::eventFilter(watched, event);
  auto* me = static_cast<QMouseEvent*>(event);
  for (int n = 0; n < 8; ++n) {
    if (watched == picture2_[size_t(n)]) {
      if (type == QEvent::MouseButtonPress && me->button() == Qt::LeftButton) TrackPress(n, int(me->position().x()));
      if (type == QEvent::MouseButtonRelease) repeat_.stop(), repeatSlider_ = -1;
      return true;
    }
    if (watched == picture3_[size_t(n)]) {
      const int x = int(mapFromGlobal(me->globalPosition().toPoint()).x());
      if (type == QEvent::MouseButtonPress && me->button() == Qt::LeftButton) knobGrab_ = n;
      else if (type == QEvent::MouseMove && knobGrab_ == n) KnobDrag(n, x);
      else if (type == QEvent::MouseButtonRelease && knobGrab_ == n) {
        knobGrab_ = -1;
        if (check2_->isChecked()) UpdatePreview();
      }
      return true;
    }
  }
  if (type == QEvent::MouseButtonPress && me->button() == Qt::LeftButton) {
    if (watched == picture6_) {
      SpotClick(SpotAt(int(me->position().x()), int(me->position().y()), picture6_->width(), picture6_->height()));
      return true;
    }
    for (int s = 0; s < 10; ++s) {
      if (watched != picture7_[size_t(s)]) continue;
      if (deletePending_) {
        picture7_[size_t(s)]->hide();
        deletePending_ = false;
        command8_->setEnabled(true);
        unsetCursor();
      } else {
        RecallSpot(s);
      }
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

// --- the window body ---------------------------------------------------------------------

// Only a press on the body itself makes a body click: presses on controls stay
// with them, and a release that ends elsewhere is no click. The window is
// dragged once the mouse moves with the button held, so that a plain click
// reaches the release below (a window manager's move would swallow it).
void FFEditorType1::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::RightButton) {
    mnuFfeFunctions_->popup(event->globalPosition().toPoint());
    return;
  }
  if (event->button() == Qt::LeftButton) {
    bodyPress_ = true;
    pressAt_ = event->globalPosition().toPoint();
    dragOffset_ = pressAt_ - frameGeometry().topLeft();
  }
}

void FFEditorType1::mouseMoveEvent(QMouseEvent* event) {
  if (!(event->buttons() & Qt::LeftButton)) return;
  const QPoint at = event->globalPosition().toPoint();
  if (bodyPress_ && !dragging_ && (at - pressAt_).manhattanLength() >= QApplication::startDragDistance()) {
    bodyPress_ = false;
    // The window system drags a frameless window when asked; otherwise we move it.
    if (windowHandle() && windowHandle()->startSystemMove()) return;
    dragging_ = true;
  }
  if (dragging_) move(at - dragOffset_);
}

void FFEditorType1::mouseReleaseEvent(QMouseEvent* event) {
  const bool click = bodyPress_ && !dragging_;
  dragging_ = false;
  bodyPress_ = false;
  if (event->button() != Qt::LeftButton || !click) return;
  if (!text10_->isHidden()) CommitLabelEdit();
  // A click on the body closes the code boxes; a switch brings one back.
  for (int j = 0; j < 4; ++j) {
    QFont f = label2_[size_t(j)]->font();
    f.setBold(false);
    label2_[size_t(j)]->setFont(f);
    text5_[size_t(j)]->hide();
  }
  combo1_[0]->setEnabled(false);
  combo1_[1]->setEnabled(false);
}

void FFEditorType1::keyReleaseEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F1) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(ctx_.programFolder) + "help/ffe.htm"));
    return;
  }
  if (event->key() == Qt::Key_Escape && !text10_->isHidden()) {
    editedLabel_ = nullptr;
    text10_->hide();
    return;
  }
  QWidget::keyReleaseEvent(event);
}

void FFEditorType1::closeEvent(QCloseEvent* event) {
  // Closing by the window system hides, as "Hide FF Editor" does.
  event->ignore();
  hide();
}

// --- clipboard, print, save ---------------------------------------------------------------

void FFEditorType1::CopyFilterToClipboard() {
  EditorToFilter();
  QGuiApplication::clipboard()->clear();
  QGuiApplication::clipboard()->setText(Latin1(FilterClipboardText(*ctx_.filter)));
}

void FFEditorType1::PasteFilterFromClipboard() {
  const QMimeData* data = QGuiApplication::clipboard()->mimeData();
  if (!data || !data->hasText()) return;
  const std::string text = Latin1(data->text());
  QApplication::setOverrideCursor(Qt::WaitCursor);
  NewFilter();  // a "Cancel" here does not stop the paste
  const std::string folder = ctx_.programFolder;
  {
    QFile tmp(QString::fromStdString(folder) + "Temp.tmp");
    if (tmp.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
      tmp.write(text.data(), qint64(text.size()));
      tmp.close();
    }
  }
  FilterEnv env;
  env.options = Options();
  env.shell = readerShell_.get();
  if (ReadTXT(*ctx_.filter, folder, "Temp.tmp", false, true, env)) FilterToEditor();
  QFile::remove(QString::fromStdString(folder) + "Temp.tmp");
  UpdatePreview();
  QApplication::restoreOverrideCursor();
}

void FFEditorType1::PrinterSetup() {
  if (!printer_) printer_ = std::make_unique<QPrinter>();
  QPageSetupDialog dialog(printer_.get(), this);
  dialog.exec();
}

void FFEditorType1::PrintFilter(QPrinter& printer) {
  EditorToFilter();
  FFFilter f = *ctx_.filter;
  if (command10_->text() == "3") f.codeG = f.codeB = f.codeR;
  QPainter p;
  if (!p.begin(&printer)) return;
  QFont font("Monospace", 10);
  font.setStyleHint(QFont::TypeWriter);
  p.setFont(font);
  const QFontMetrics fm(p.font(), &printer);
  const QRect page = printer.pageLayout().paintRectPixels(printer.resolution());
  const int width = page.width() - 2 * fm.horizontalAdvance(' ');
  int y = fm.ascent();
  auto emitLine = [&](const QString& line) {
    if (y + fm.descent() > page.height()) {
      printer.newPage();
      y = fm.ascent();
    }
    p.drawText(0, y, line);
    y += fm.lineSpacing();
  };
  for (const std::string& raw : FilterPrintLines(f)) {
    // Code lines wrap at the page's width; continuation lines are indented.
    QString rest = Latin1(raw);
    rest.replace('\r', QString()).replace('\n', ' ');
    bool first = true;
    while (!rest.isEmpty()) {
      const QString indent = first ? QString() : QString(7, ' ');
      int take = int(rest.size());
      while (take > 1 && fm.horizontalAdvance(indent + rest.left(take)) > width) --take;
      emitLine(indent + rest.left(take));
      rest = rest.mid(take);
      first = false;
    }
  }
  p.end();
}

void FFEditorType1::SaveFilterAs(int format) {
  const QString label = label6_[0]->text();
  if (label == "Filename" || label.isEmpty()) {
    (ctx_.shell ? *ctx_.shell : NullShell())
        .MsgBox("Filename isn't specified!", MsgButtons::Ok, MsgIcon::Exclamation, "Error");
    return;
  }
  std::string folder;
  if (ctx_.batchFile && !ctx_.batchFile().empty()) {
    folder = QFileInfo(QString::fromStdString(ctx_.batchFile())).absolutePath().toStdString();
  } else {
    folder = ctx_.targetFolder ? ctx_.targetFolder() : ctx_.programFolder;
  }
  if (folder.empty()) return;
  if (folder.back() != '/') folder += '/';
  EditorToFilter();
  FFFilter out = *ctx_.filter;
  if (command10_->text() == "3") out.codeG = out.codeB = out.codeR;
  if (format == 6) {
    AddToLibrary();
    return;
  }
  const int kind = format == 5 ? 0 : format;  // the transition plug takes the plugin's name rule
  out.filename = SaveTargetName(Latin1(label), kind);
  if (format == 5) out.filename = out.filename.substr(0, out.filename.size() - 4) + ".prm";
  if (QFileInfo::exists(QString::fromStdString(folder + out.filename)) && ctx_.overwriteCheck &&
      !ctx_.overwriteCheck(folder + out.filename))
    return;
  FilterEnv env;
  env.options = Options();
  env.shell = readerShell_.get();  // the TXT writer asks which memory spots are taken
  switch (format) {
    case 0: Write8bf(out, folder, false, false, env); break;
    case 1: WritePRM(out, folder, env); break;
    case 2: Writeafspff(out, folder, 0, env); break;
    case 3: Writeafspff(out, folder, 1, env); break;
    case 4: WriteTXT(out, folder, true, env); break;
    case 5: WriteTF(out, folder, env); break;
    default: return;
  }
  if (ctx_.refreshPanes) ctx_.refreshPanes();
  if (ctx_.batchFile && !ctx_.batchFile().empty()) emit unloadRequested();
}

void FFEditorType1::AddToLibrary() {
  std::string library;
  if (ctx_.chooseLibrary) {
    library = ctx_.chooseLibrary();
  } else {
    library = QFileDialog::getSaveFileName(this, "Add to FFL Library", QString(), "FFL Libraries (*.ffl)",
                                           nullptr, QFileDialog::DontConfirmOverwrite)
                  .toStdString();
  }
  if (library.empty()) return;
  EditorToFilter();
  FFFilter out = *ctx_.filter;
  if (command10_->text() == "3") out.codeG = out.codeB = out.codeR;
  // The library takes filters from files: the filter goes through a TXT of its own.
  QTemporaryDir scratch;
  if (!scratch.isValid()) return;
  const std::string folder = scratch.path().toStdString() + "/";
  out.filename = SaveTargetName(Latin1(label6_[0]->text()), 4);
  FilterEnv env;
  env.options = Options();
  env.shell = ctx_.shell;
  WriteTXT(out, folder, false, env);
  const std::vector<std::string> sources{folder + out.filename};
  const FFLAddResult result = QFileInfo::exists(QString::fromStdString(library))
                                  ? cmd_Add2FFL(library, sources, env)
                                  : cmd_CreateFFL(library, sources, env);
  if (result.error) env.hooks().Report(*result.error);
  if (!result.ok) Message("The filter could not be added to " + library + ".", MsgIcon::Exclamation, "Trel");
  if (ctx_.refreshPanes) ctx_.refreshPanes();
}

}  // namespace trel
