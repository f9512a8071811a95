#include "editor/FFEditorType1.h"

#include <QApplication>
#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDesktopServices>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMouseEvent>
#include <QPrinter>
#include <QPushButton>
#include <QToolButton>
#include <QUrl>
#include <QWindow>

#include "editor/ClickLabel.h"
#include "editor/EditorLayout.h"
#include "editor/EditorWidgets.h"
#include "editor/FieldEditor.h"
#include "editor/LivePreview.h"
#include "editor/MemorySpots.h"
#include "settings/SettingsStore.h"

namespace trel {

using namespace layout;

namespace {

constexpr const char* kBatchRefusal =
    "This feature isn't available when the FF Editor\nis run from the Batch dialog.";
const char* const kTools[8] = {"Clear all Memory Spots",
                               "Delete only one Memory Spot",
                               "Show large preview",
                               "Save filtered picture",
                               "Open new BMP picture as preview source",
                               "Create random slider values",
                               "Reset all settings",
                               "Select the font of the code boxes"};
const char* const kToolGlyph[8] = {"C", "D", "L", "S", "O", "?", "N", "F"};

}  // namespace

// Reader messages go to the program; the memory spot marks come to this window.
class FFEditorType1::ReaderShell : public UserMessages {
 public:
  explicit ReaderShell(FFEditorType1& editor) : editor_(editor) {}
  UserMessages& outer() const { return editor_.ctx_.shell ? *editor_.ctx_.shell : NoMessages(); }
  MsgResult MsgBox(const std::string& text, MsgButtons b, MsgIcon i, const std::string& t) override {
    return outer().MsgBox(text, b, i, t);
  }
  void ErrorMessage(const std::string& d) override { outer().ErrorMessage(d); }
  bool ErrorMessage2(const std::string& d) override { return outer().ErrorMessage2(d); }
  void RefreshActivePane() override { outer().RefreshActivePane(); }
  void MarkMemorySpot(int spot) override { editor_.spots_->Mark(spot); }
  bool IsMemorySpotMarked(int spot) const override { return editor_.SpotMarked(spot); }
  void StatusDisplay(const std::string& text) override { outer().StatusDisplay(text); }
  bool EscapePressed() override { return outer().EscapePressed(); }

 private:
  FFEditorType1& editor_;
};

FFEditorType1::FFEditorType1(EditorContext context, QWidget* parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint), ctx_(std::move(context)) {
  setObjectName("FFEditorType1");
  setAccessibleName(kEditorCaption);
  readerShell_ = std::make_unique<ReaderShell>(*this);
  sliders_ = std::make_unique<SliderBank>(this);
  codes_ = std::make_unique<CodeBoxes>(this);
  preview_ = std::make_unique<LivePreview>(this);
  spots_ = std::make_unique<MemorySpots>(this, ctx_.filter, *sliders_);
  field_ = std::make_unique<FieldEditor>(this);
  timer1_.setSingleShot(true);
  timer1_.setInterval(2000);
  timer1_.setObjectName("Timer1");
  connect(&timer1_, &QTimer::timeout, this, [this] {
    if (AutoPreview()) UpdatePreview();
  });
  BuildControls();
  BuildMenus();
  // The window's load: preview picture, snippets, skin, preview size.
  preview_->Prepare(ctx_.store, ctx_.programFolder);
  combo2_->setCurrentIndex(0);
  codes_->LoadSnippets(ctx_.programFolder);
  ReadInterface();
  SetPreviewPicture(preview_->source());
}

FFEditorType1::~FFEditorType1() {
  // What the window keeps between runs: the preview picture's path.
  const std::string path = preview_->sourcePath();
  preview_.reset();  // no run outlives the window
  if (ctx_.store && !path.empty()) ctx_.store->Save("Settings", "PreviewPic", path);
}

FilterOptions FFEditorType1::Options() const {
  FilterOptions o = ctx_.options ? ctx_.options() : FilterOptions{};
  if (o.programFolder.empty()) o.programFolder = ctx_.programFolder;
  return o;
}

void FFEditorType1::Message(const std::string& text, MsgIcon icon, const std::string& title) {
  (ctx_.shell ? *ctx_.shell : NoMessages()).MsgBox(text, MsgButtons::Ok, icon, title);
}

bool FFEditorType1::BatchRefuses() {
  if (!ctx_.batchFile || ctx_.batchFile().empty()) return false;
  Message(kBatchRefusal, MsgIcon::Exclamation, "Trel");
  return true;
}

bool FFEditorType1::AutoPreview() const { return check2_->isChecked(); }
bool FFEditorType1::ApplyAtOnce() const { return ctx_.applyAtOnce && ctx_.applyAtOnce(); }

UserMessages& FFEditorType1::readerShell() { return *readerShell_; }

// --- controls ----------------------------------------------------------------

// The controls are made in their order for Tab; the window buttons move to the end.
void FFEditorType1::BuildControls() {
  resize(kWidth, kHeight);
  title_ = Named(new QLabel(kEditorCaption, this), "lblTitle");
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
    windowButtons_[size_t(i)] = b;
  }
  for (int i = 0; i < 5; ++i) {
    auto* l = Named(new ClickLabel(kNameRest[i], this), "Label6", i);
    l->setGeometry(NameField(i));
    l->setAccessibleName(kNameRest[i]);
    connect(l, &ClickLabel::clicked, this, [this, i] {
      field_->CommitIfOpen();
      if (i == 0 && BatchRefuses()) return;
      StartEdit(label6_[size_t(i)], 0);
    });
    label6_[size_t(i)] = l;
  }

  sliders_->Build();
  connect(sliders_.get(), &SliderBank::moved, this, &FFEditorType1::SliderMoved);
  connect(sliders_.get(), &SliderBank::editRequested, this, [this](QLabel* label, int extraWidth) {
    field_->CommitIfOpen();
    StartEdit(label, extraWidth);
  });
  connect(sliders_.get(), &SliderBank::lockMenuRequested, this, [this](QPoint at) { mnuSliderSwitch_->popup(at); });

  codes_->BuildBoxes();
  connect(codes_.get(), &CodeBoxes::switchPressed, this, [this] { field_->CommitIfOpen(); });
  connect(codes_.get(), &CodeBoxes::typed, this, [this] {
    if (isEnabled()) timer1_.start();  // every key restarts the delay
  });
  connect(codes_.get(), &CodeBoxes::inserted, this, [this] {
    if (AutoPreview()) UpdatePreview();
  });

  preview_->Build();
  connect(preview_.get(), &LivePreview::finished, this, &FFEditorType1::PreviewFinished);
  spots_->Build();
  connect(spots_.get(), &MemorySpots::recallRequested, this, &FFEditorType1::RecallSpot);

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
        case 1: spots_->ArmDelete(); break;
        case 2: ApplyFilterToPicture(); break;
        case 3: ApplyFilterToPicture(); SavePreviewPicture(); break;
        case 4: OpenPreviewPicture(); break;
        case 5: RandomizeSliders(); break;
        case 6: NewFilter(); break;
        case 7: ChooseCodeFont(); break;
      }
    });
  }
  check2_ = Named(new QCheckBox("Auto Preview", this), "Check2");
  check2_->setGeometry(kAutoPreview);
  check2_->setChecked(true);
  check2_->setStyleSheet("QCheckBox{color:white}");
  connect(check2_, &QCheckBox::toggled, this, [this](bool on) {
    if (on) UpdatePreview();
  });
  combo2_ = Named(new QComboBox(this), "Combo2");
  for (const SaveListEntry& entry : kSaveEntries) combo2_->addItem(entry.listCaption);
  combo2_->setGeometry(kSaveFormat);
  combo2_->setAccessibleName("Save format");
  auto* save = Named(new QPushButton("Save", this), "cmdSave");
  save->setGeometry(kSaveButton);
  save->setAccessibleName("Save");
  save->setToolTip("Save the filter in the chosen format (Ctrl+S)");
  connect(save, &QPushButton::clicked, this, [this] { SaveEntry(combo2_->currentIndex()); });
  mailLink_ = Named(new ClickLabel("Mail the designer", this), "MailLink");
  mailLink_->SetToolStyle(true);
  mailLink_->setGeometry(kDefaultMail);
  mailLink_->hide();
  connect(mailLink_, &ClickLabel::clicked, this, [this] {
    QDesktopServices::openUrl(QUrl("mailto:" + Latin1(mailAddress_) + "?subject=Your Design"));
  });
  codes_->BuildFaultLine();
  field_->Build();
  field_->onCommit = [this](QLabel* label, const QString& typed) { LabelTyped(label, typed); };

  for (int n = 0; n < 8; ++n) sliders_->Show(n, false);
  codes_->Toggle(1);
  // The window buttons come last for Tab: the keys belong to the code and the fields.
  QWidget* before = field_->box();
  for (QWidget* button : windowButtons_) {
    setTabOrder(before, button);
    before = button;
  }
}

// --- label editing --------------------------------------------------------------------

void FFEditorType1::StartEdit(QLabel* label, int extraWidth) { field_->Start(label, extraWidth); }

void FFEditorType1::CommitLabelEdit() { field_->Commit(); }

void FFEditorType1::LabelTyped(QLabel* label, const QString& typed) {
  if (!sliders_->TakeTyped(label, typed)) label->setText(typed);
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
  field_->CommitIfOpen();
  // A click on the body closes the code boxes; a switch brings one back.
  codes_->CloseAll();
}

void FFEditorType1::keyReleaseEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F1) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(ctx_.programFolder) + "help/ffe.htm"));
    return;
  }
  if (event->key() == Qt::Key_Escape && field_->open()) {
    field_->Drop();
    return;
  }
  QWidget::keyReleaseEvent(event);
}

void FFEditorType1::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  // Typing starts in the code, not on a window button.
  if (!field_->open()) codes_->FocusVisible(Qt::ActiveWindowFocusReason);
}

void FFEditorType1::closeEvent(QCloseEvent* event) {
  // Closing by the window system hides, as "Hide FF Editor" does.
  event->ignore();
  hide();
}

}  // namespace trel
