#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QFontDialog>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>
#include <algorithm>

#include "front/UserMessages.h"
#include "settings/ui/DesktopServices.h"
#include "settings/ui/PreferencesPages.h"

namespace trel {

namespace {

struct ListOption {
  int index;
  const char* caption;
  const char* tip;
};
// In the order the frame shows them.
constexpr ListOption kListOptions[6] = {
    {5, "Auto Column Width", "Very handy feature: Makes sure that no information is cut off"},
    {3, "Full Row Selection", "Selects the full row"},
    {1, "Flat Scrollbar", "Flattens the scroll bar"},
    {2, "Gridlines", "Displays gridline"},
    {0, "Hover Selection", "Selects an item, if you keep the mouse one second placed over it"},
    {4, "Hot Tracking", ""}};

QString Q(const std::string& s) { return QString::fromStdString(s); }

}  // namespace

GeneralPage::GeneralPage(const PageContext& context, QWidget* parent) : PreferencesPage(context, parent) {
  setObjectName("Frame1_0");
  auto* grid = new QGridLayout(this);

  auto* fonts = new QGroupBox("Fonts", this);
  auto* fontGrid = new QGridLayout(fonts);
  const char* fontCaptions[2] = {"List Box Font", "Other Font"};
  for (int i = 0; i < 2; ++i) {
    QPushButton* b = MakeButton(fonts, QString("Command14_%1").arg(i), fontCaptions[i], "");
    connect(b, &QPushButton::clicked, this, [this, i] { ChooseFont(i); });
    QLabel*& label = fontLabels_[static_cast<size_t>(i)];
    label = new QLabel(fonts);
    label->setObjectName(QString("Label1_%1").arg(i));
    fontGrid->addWidget(b, i, 0);
    fontGrid->addWidget(label, i, 1);
  }
  grid->addWidget(fonts, 0, 0);

  auto* pluginView = new QGroupBox("Plugin View", this);
  auto* pv = new QVBoxLayout(pluginView);
  check1_ = MakeCheck(pluginView, "Check1", "search for plugins in all sub folders",
                      "If enabled, all sub folders will be scanned recursively for plugins.");
  check8_ = MakeCheck(pluginView, "Check8", "include txt, afs and pff files", "Slows the plugin scanning process down");
  pv->addWidget(check1_);
  pv->addWidget(check8_);
  grid->addWidget(pluginView, 0, 1);

  auto* fileView = new QGroupBox("File and FFL View", this);
  auto* fv = new QVBoxLayout(fileView);
  for (const ListOption& option : kListOptions) {
    QCheckBox* box = MakeCheck(fileView, QString("Check12_%1").arg(option.index), option.caption, option.tip);
    check12_[static_cast<size_t>(option.index)] = box;
    const int index = option.index;
    // The panes show the option at once; Cancel takes it back.
    connect(box, &QCheckBox::clicked, this, [this, index, box] { emit listOptionChanged(index, CheckOf(box)); });
    fv->addWidget(box);
  }
  check4_ = MakeCheck(fileView, "Check4", "Suppress the Select Folder dialog",
                      "If activated the Select Folder window won't display anymore and the passive pane folder "
                      "will be used as the destination folder");
  check17_ = MakeCheck(fileView, "Check17", "Write FFL 1.0 Files (recommended)",
                       "For compatibility reasons keep it activated");
  fv->addWidget(check4_);
  fv->addWidget(check17_);
  grid->addWidget(fileView, 1, 0, 2, 1);

  auto* assoc = new QGroupBox("Associations", this);
  auto* av = new QGridLayout(assoc);
  const char* patterns[5] = {"*.8bf", "*.prm", "*.ffl", "*.afs", "*.pff"};
  for (int i = 0; i < 5; ++i) {
    check18_[static_cast<size_t>(i)] = MakeCheck(assoc, QString("Check18_%1").arg(i), patterns[i], "");
    av->addWidget(check18_[static_cast<size_t>(i)], i / 3, i % 3);
  }
  QPushButton* associate = MakeButton(assoc, "Command13", "Set Associations",
                                      "Press it to be able to run Trel by double clicking the selected file types");
  connect(associate, &QPushButton::clicked, this, &GeneralPage::SetAssociations);
  av->addWidget(associate, 2, 0, 1, 3);
  grid->addWidget(assoc, 1, 1);

  auto* misc = new QGroupBox("Misc", this);
  auto* mv = new QVBoxLayout(misc);
  check16_ = MakeCheck(misc, "Check16", "Load all components on startup",
                       "If activated, the startup will take longer, but there won't be a delay when previewing "
                       "plugins etc.");
  check2_ = MakeCheck(misc, "Check2", "No FF Code Optimization", "Some function may be faster, if activated");
  check7_ = MakeCheck(misc, "Check7", "Enable Cooperative Multithreading",
                      "Lets you do more than one task at the same time");
  mv->addWidget(check16_);
  mv->addWidget(check2_);
  mv->addWidget(check7_);
  grid->addWidget(misc, 2, 1);

  auto* cache = new QGroupBox("Preview Cache", this);
  auto* cv = new QGridLayout(cache);
  check15_ = MakeCheck(cache, "Check15", "Enabled", "Activate for faster plugin previewing");
  hScroll2_ = new QScrollBar(Qt::Horizontal, cache);
  hScroll2_->setObjectName("HScroll2");
  hScroll2_->setAccessibleName("JPG compression");
  hScroll2_->setRange(1, 100);
  label3_ = new QLabel(cache);
  label3_->setObjectName("Label3");
  connect(hScroll2_, &QScrollBar::valueChanged, this,
          [this](int value) { label3_->setText(QString::number(value) + "%"); });
  QPushButton* clear = MakeButton(cache, "Command5", "Clear Cache", "Delete all files from the cache sub folder");
  connect(clear, &QPushButton::clicked, this, &GeneralPage::ClearCache);
  cv->addWidget(check15_, 0, 0);
  cv->addWidget(new QLabel("JPG compression:", cache), 1, 0);
  cv->addWidget(hScroll2_, 1, 1);
  cv->addWidget(label3_, 1, 2);
  cv->addWidget(clear, 0, 1, 1, 2);
  grid->addWidget(cache, 3, 0, 1, 2);

  programPath = QCoreApplication::applicationFilePath();
  chooseFont = [this](FontChoice& font) {
    bool ok = false;
    QFont start = QApplication::font();
    if (font.set) {
      start.setFamily(Q(font.name));
      start.setPointSizeF(font.size);
      start.setBold(font.bold);
      start.setItalic(font.italic);
    }
    const QFont chosen = QFontDialog::getFont(&ok, start, this);
    if (!ok) return false;
    font = {chosen.family().toStdString(), chosen.pointSizeF(), chosen.bold(), chosen.italic(), true};
    return true;
  };
}

void GeneralPage::Load(const PreferenceSet& set) {
  const Preferences& p = set.prefs;
  SetCheck(check1_, p.scanSubDirs);
  SetCheck(check8_, p.includeSources);
  for (size_t i = 0; i < 6; ++i) SetCheck(check12_[i], p.fileview[i]);
  SetCheck(check16_, p.fullStartUp);
  SetCheck(check4_, p.passivePaneFolder);
  SetCheck(check2_, p.noFFOptimize);
  SetCheck(check7_, p.cooperative);
  SetCheck(check17_, p.ffl10);
  SetCheck(check15_, p.previewCache);
  hScroll2_->setValue(std::clamp(p.jpgCompression, 1, 100));
  label3_->setText(QString::number(hScroll2_->value()) + "%");
  for (size_t i = 0; i < 5; ++i) SetCheck(check18_[i], p.associate[i]);
  fonts_ = p.fonts;
  for (int i = 0; i < 2; ++i) UpdateFontLabel(i);
}

void GeneralPage::Store(PreferenceSet& set) const {
  Preferences& p = set.prefs;
  p.scanSubDirs = CheckOf(check1_);
  p.includeSources = CheckOf(check8_);
  for (size_t i = 0; i < 6; ++i) p.fileview[i] = CheckOf(check12_[i]);
  p.fullStartUp = CheckOf(check16_);
  p.passivePaneFolder = CheckOf(check4_);
  p.noFFOptimize = CheckOf(check2_);
  p.cooperative = CheckOf(check7_);
  p.ffl10 = CheckOf(check17_);
  p.previewCache = CheckOf(check15_);
  p.jpgCompression = hScroll2_->value();
  for (size_t i = 0; i < 5; ++i) p.associate[i] = CheckOf(check18_[i]);
  p.fonts = fonts_;
}

void GeneralPage::SetAssociations() {
  std::array<int, 5> boxes{};
  for (size_t i = 0; i < 5; ++i) boxes[i] = CheckOf(check18_[i]);
  const AssociationResult result =
      trel::SetAssociations(boxes, programPath, dataHome.isEmpty() ? UserDataHome() : dataHome);
  std::string text = "The associations were set.";
  for (const QString& problem : result.problems) text += "\n" + problem.toStdString();
  context_.hooks.MsgBox(text, MsgButtons::Ok, MsgIcon::Information, "Trel");
}

void GeneralPage::ClearCache() {
  if (context_.hooks.MsgBox("Do you really want to clear the preview cache?", MsgButtons::YesNo,
                            MsgIcon::Question, "Trel") != MsgResult::Yes)
    return;
  QDir cache(Q(context_.programFolder + "cache"));
  cache.removeRecursively();
  QDir().mkpath(cache.path());
}

void GeneralPage::ChooseFont(int which) {
  FontChoice font = fonts_[static_cast<size_t>(which)];
  if (!chooseFont(font)) return;
  SetFont(font, which);
}

void GeneralPage::SetFont(const FontChoice& font, int which) {
  if (which < 0 || which > 1 || font.name.empty() || font.size < 1) return;
  FontChoice& kept = fonts_[static_cast<size_t>(which)];
  kept = font;
  kept.set = true;
  UpdateFontLabel(which);
  emit fontChanged(which, kept);
}

void GeneralPage::UpdateFontLabel(int which) {
  const FontChoice& font = fonts_[static_cast<size_t>(which)];
  fontLabels_[static_cast<size_t>(which)]->setText(
      font.set ? QString::number(font.size) + ", " + Q(font.name) : QString("(standard)"));
}

}  // namespace trel
