#include "settings/ui/Form2.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFontDialog>
#include <QFontMetrics>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <fstream>
#include <sstream>

#include "filter/ShellHooks.h"
#include "settings/Conversions.h"
#include "settings/ListFiles.h"
#include "settings/SettingsStore.h"
#include "settings/ui/DesktopServices.h"

namespace trel {

namespace {

const char* const kFolderListFile = "FolderList.log";
const char* const kPlugTypesFile = "PlugTypes.ini";

struct TabInfo {
  const char* caption;
  const char* help;
};
constexpr TabInfo kTabs[7] = {{"General", "Prefs_General.htm"},   {"FF/TF", "Prefs_FFTF.htm"},
                              {"Interface", "Prefs_Interface.htm"}, {"Folders", "Prefs_FPA.htm"},
                              {"Images", "Prefs_FPA.htm"},          {"Apps", "Prefs_FPA.htm"},
                              {"Plugin Types", "Prefs_PluginTypes.htm"}};

const char* const kAutoAddTips[3] = {"Automatically add all folders that are accessed to the Folders menu",
                                     "Automatically add all pictures that are opened to the File menu",
                                     "Automatically add all applications that are run to the Apps menu"};

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

// The stored values: 0 off, 1 on, 2 grey (Qt numbers on and grey the other way round).
int CheckOf(const QCheckBox* box) {
  switch (box->checkState()) {
    case Qt::Checked: return 1;
    case Qt::PartiallyChecked: return 2;
    default: return 0;
  }
}
void SetCheck(QCheckBox* box, int value) {
  box->setCheckState(value == 2 ? Qt::PartiallyChecked : value == 1 ? Qt::Checked : Qt::Unchecked);
}

QString Q(const std::string& s) { return QString::fromStdString(s); }

// The plugin type dialog: "Add Plugin Type" or "Edit Plugin Type".
bool RunPluginTypeDialog(QWidget* parent, ShellHooks& hooks, bool edit, std::string& name, std::string& extension,
                         std::string& digit) {
  QDialog dialog(parent);
  dialog.setObjectName("FrmPluginType");
  dialog.setWindowTitle(edit ? "Edit Plugin Type" : "Add Plugin Type");
  auto* grid = new QGridLayout(&dialog);
  auto* caption = new QLabel(edit ? "Edit Plugin Type" : "Add Plugin Type", &dialog);
  grid->addWidget(caption, 0, 0, 1, 2);
  auto* text1 = new QLineEdit(Q(name), &dialog);
  text1->setObjectName("Text1");
  text1->setAccessibleName("Plugin Type:");
  auto* text2 = new QLineEdit(Q(extension), &dialog);
  text2->setObjectName("Text2");
  text2->setAccessibleName("File Extension:");
  grid->addWidget(new QLabel("Plugin Type:", &dialog), 1, 0);
  grid->addWidget(text1, 1, 1);
  grid->addWidget(new QLabel("File Extension:", &dialog), 2, 0);
  grid->addWidget(text2, 2, 1);
  auto* frame = new QGroupBox("Get Plugin Name from", &dialog);
  auto* options = new QVBoxLayout(frame);
  // Digits 3, 2, 1, 0 in the order the dialog lists them.
  const std::pair<const char*, const char*> sources[4] = {
      {"File Name", "3"}, {"Product Name", "2"}, {"Internal Name", "1"}, {"Description", "0"}};
  std::vector<QRadioButton*> radios;
  for (const auto& [text, d] : sources) {
    auto* radio = new QRadioButton(text, frame);
    radio->setObjectName(QString("Option1_%1").arg(d));
    radio->setChecked(digit == d);
    options->addWidget(radio);
    radios.push_back(radio);
  }
  if (std::none_of(radios.begin(), radios.end(), [](QRadioButton* r) { return r->isChecked(); }))
    radios.front()->setChecked(true);
  grid->addWidget(frame, 3, 0, 1, 2);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
  grid->addWidget(buttons, 4, 0, 1, 2);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, [&] {
    std::string ext = text2->text().toStdString();
    const std::string message = CheckPluginTypeInput(text1->text().toStdString(), ext);
    if (!message.empty()) {
      hooks.MsgBox(message, MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
      (text1->text().isEmpty() ? text1 : text2)->setFocus();
      return;
    }
    text2->setText(Q(ext));
    dialog.accept();
  });
  if (dialog.exec() != QDialog::Accepted) return false;
  name = text1->text().toStdString();
  extension = text2->text().toStdString();
  for (size_t i = 0; i < 4; ++i)
    if (radios[i]->isChecked()) digit = sources[i].second;
  return true;
}

}  // namespace

std::string InterfaceTitle(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return {};
  std::string head(4096, '\0');
  in.read(head.data(), static_cast<std::streamsize>(head.size()));
  head.resize(static_cast<size_t>(in.gcount()));
  const std::vector<std::string> items = InputItems(head.substr(0, head.find('\n')));
  if (items.empty()) return {};
  // Skins are single-byte text.
  return QString::fromLatin1(items.front().data(), static_cast<qsizetype>(items.front().size())).toStdString();
}

Form2::Form2(SettingsStore& store, std::string programFolder, ShellHooks& hooks, QWidget* parent)
    : QDialog(parent), store_(store), programFolder_(std::move(programFolder)), hooks_(hooks) {
  setObjectName("Form2");
  setWindowTitle("Preferences");
  setModal(true);
  programPath = QCoreApplication::applicationFilePath();
  auto* column = new QVBoxLayout(this);
  tabs_ = new QTabWidget(this);
  tabs_->setObjectName("SSTab1");
  tabs_->addTab(BuildGeneral(), kTabs[0].caption);
  tabs_->addTab(BuildFFTF(), kTabs[1].caption);
  tabs_->addTab(BuildInterface(), kTabs[2].caption);
  for (int list = 0; list < 4; ++list) tabs_->addTab(BuildListPage(list), kTabs[3 + list].caption);
  column->addWidget(tabs_);

  auto* row = new QHBoxLayout;
  QPushButton* help = Button(this, "Command4", "Show Help File", "Opens the help page of this tab");
  connect(help, &QPushButton::clicked, this, &Form2::Command4_Click);
  row->addWidget(help);
  row->addStretch(1);
  QPushButton* ok = Button(this, "Command1", "OK", "");
  ok->setDefault(true);
  connect(ok, &QPushButton::clicked, this, [this] { Command1_Click(); });
  QPushButton* cancel = Button(this, "Command8", "Cancel", "");
  connect(cancel, &QPushButton::clicked, this, &Form2::Command8_Click);
  row->addWidget(ok);
  row->addWidget(cancel);
  column->addLayout(row);

  chooseEntry = [this](int list) { return DefaultChoose(list); };
  askPluginType = [this](bool edit, std::string& name, std::string& ext, std::string& digit) {
    return RunPluginTypeDialog(this, hooks_, edit, name, ext, digit);
  };
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
  SetValues(Preferences{});
  SetPluginTypeRows([] {
    PluginTypeList rows;
    ResetPluginTypes(rows);
    return rows;
  }());
  resize(620, 520);
}

QCheckBox* Form2::Check(QWidget* parent, const QString& name, const QString& caption, const QString& tip) {
  auto* box = new QCheckBox(caption, parent);
  box->setObjectName(name);
  box->setToolTip(tip);
  box->setAccessibleName(caption);
  return box;
}

QPushButton* Form2::Button(QWidget* parent, const QString& name, const QString& caption, const QString& tip) {
  auto* button = new QPushButton(caption, parent);
  button->setObjectName(name);
  button->setToolTip(tip);
  button->setAccessibleName(caption.isEmpty() ? tip : caption);
  button->setAutoDefault(false);
  return button;
}

QWidget* Form2::BuildGeneral() {
  auto* page = new QWidget;
  page->setObjectName("Frame1_0");
  auto* grid = new QGridLayout(page);

  auto* fonts = new QGroupBox("Fonts", page);
  auto* fontGrid = new QGridLayout(fonts);
  const char* fontCaptions[2] = {"List Box Font", "Other Font"};
  for (int i = 0; i < 2; ++i) {
    QPushButton* b = Button(fonts, QString("Command14_%1").arg(i), fontCaptions[i], "");
    connect(b, &QPushButton::clicked, this, [this, i] { Command14_Click(i); });
    fontLabels_[static_cast<size_t>(i)] = new QLabel(fonts);
    fontLabels_[static_cast<size_t>(i)]->setObjectName(QString("Label1_%1").arg(i));
    fontGrid->addWidget(b, i, 0);
    fontGrid->addWidget(fontLabels_[static_cast<size_t>(i)], i, 1);
  }
  grid->addWidget(fonts, 0, 0);

  auto* pluginView = new QGroupBox("Plugin View", page);
  auto* pv = new QVBoxLayout(pluginView);
  check1_ = Check(pluginView, "Check1", "search for plugins in all sub folders",
                  "If enabled, all sub folders will be scanned recursively for plugins.");
  check8_ = Check(pluginView, "Check8", "include txt, afs and pff files", "Slows the plugin scanning process down");
  pv->addWidget(check1_);
  pv->addWidget(check8_);
  grid->addWidget(pluginView, 0, 1);

  auto* fileView = new QGroupBox("File and FFL View", page);
  auto* fv = new QVBoxLayout(fileView);
  for (const ListOption& option : kListOptions) {
    QCheckBox* box = Check(fileView, QString("Check12_%1").arg(option.index), option.caption, option.tip);
    check12_[static_cast<size_t>(option.index)] = box;
    const int index = option.index;
    connect(box, &QCheckBox::clicked, this, [this, index] { emit listOptionChanged(index); });
    fv->addWidget(box);
  }
  check4_ = Check(fileView, "Check4", "Suppress the Select Folder dialog",
                  "If activated the Select Folder window won't display anymore and the passive pane folder "
                  "will be used as the destination folder");
  check17_ = Check(fileView, "Check17", "Write FFL 1.0 Files (recommended)",
                   "For compatibility reasons keep it activated");
  fv->addWidget(check4_);
  fv->addWidget(check17_);
  grid->addWidget(fileView, 1, 0, 2, 1);

  auto* assoc = new QGroupBox("Associations", page);
  auto* av = new QGridLayout(assoc);
  const char* patterns[5] = {"*.8bf", "*.prm", "*.ffl", "*.afs", "*.pff"};
  for (int i = 0; i < 5; ++i) {
    check18_[static_cast<size_t>(i)] = Check(assoc, QString("Check18_%1").arg(i), patterns[i], "");
    av->addWidget(check18_[static_cast<size_t>(i)], i / 3, i % 3);
  }
  QPushButton* associate = Button(assoc, "Command13", "Set Associations",
                                  "Press it to be able to run Trel by double clicking the selected file types");
  connect(associate, &QPushButton::clicked, this, &Form2::Command13_Click);
  av->addWidget(associate, 2, 0, 1, 3);
  grid->addWidget(assoc, 1, 1);

  auto* misc = new QGroupBox("Misc", page);
  auto* mv = new QVBoxLayout(misc);
  check16_ = Check(misc, "Check16", "Load all components on startup",
                   "If activated, the startup will take longer, but there won't be a delay when previewing "
                   "plugins etc.");
  check2_ = Check(misc, "Check2", "No FF Code Optimization", "Some function may be faster, if activated");
  check7_ = Check(misc, "Check7", "Enable Cooperative Multithreading",
                  "Lets you do more than one task at the same time");
  mv->addWidget(check16_);
  mv->addWidget(check2_);
  mv->addWidget(check7_);
  grid->addWidget(misc, 2, 1);

  auto* cache = new QGroupBox("Preview Cache", page);
  auto* cv = new QGridLayout(cache);
  check15_ = Check(cache, "Check15", "Enabled", "Activate for faster plugin previewing");
  hScroll2_ = new QScrollBar(Qt::Horizontal, cache);
  hScroll2_->setObjectName("HScroll2");
  hScroll2_->setAccessibleName("JPG compression");
  hScroll2_->setRange(1, 100);
  label3_ = new QLabel(cache);
  label3_->setObjectName("Label3");
  connect(hScroll2_, &QScrollBar::valueChanged, this,
          [this](int value) { label3_->setText(QString::number(value) + "%"); });
  QPushButton* clear = Button(cache, "Command5", "Clear Cache", "Delete all files from the cache sub folder");
  connect(clear, &QPushButton::clicked, this, &Form2::Command5_Click);
  cv->addWidget(check15_, 0, 0);
  cv->addWidget(new QLabel("JPG compression:", cache), 1, 0);
  cv->addWidget(hScroll2_, 1, 1);
  cv->addWidget(label3_, 1, 2);
  cv->addWidget(clear, 0, 1, 1, 2);
  grid->addWidget(cache, 3, 0, 1, 2);
  return page;
}

QWidget* Form2::BuildFFTF() {
  auto* page = new QWidget;
  page->setObjectName("Frame1_1");
  auto* column = new QVBoxLayout(page);
  auto* ps = new QGroupBox("Photoshop FF Compilation", page);
  ps->setObjectName("FramePhotoshopFF");
  auto* grid = new QGridLayout(ps);
  const char* templates[4] = {"Filter Factory 3.0", "Filter Factory 3.04 (needs plugin.dll from Adobe)",
                              "Template:", "Macintosh FF (Mac Binary)"};
  auto* group = new QButtonGroup(ps);
  for (int i = 0; i < 4; ++i) {
    auto* radio = new QRadioButton(templates[i], ps);
    radio->setObjectName(QString("Option4_%1").arg(i));
    radio->setAccessibleName(templates[i]);
    group->addButton(radio, i);
    option4_[static_cast<size_t>(i)] = radio;
  }
  combo2_ = new QComboBox(ps);
  combo2_->setObjectName("Combo2");
  combo2_->setEditable(true);
  combo2_->setAccessibleName("Template file");
  combo2_->setToolTip("A Filter Factory plugin of 49152, 49664 or 57344 bytes to use as the template");
  // The third option is usable only with a template entered.
  auto templateUsable = [this] {
    const bool has = !combo2_->currentText().trimmed().isEmpty();
    option4_[2]->setEnabled(has);
    if (!has && option4_[2]->isChecked()) option4_[0]->setChecked(true);
  };
  connect(combo2_, &QComboBox::currentTextChanged, this, templateUsable);
  grid->addWidget(option4_[0], 0, 0, 1, 2);
  grid->addWidget(option4_[1], 1, 0, 1, 2);
  grid->addWidget(option4_[2], 2, 0);
  grid->addWidget(combo2_, 2, 1);
  grid->addWidget(option4_[3], 3, 0, 1, 2);
  allModes_ = Check(ps, "Check9", "All Modes", "The plugin works in every colour mode, not only RGB");
  check5_ = Check(ps, "Check5", "Editor Plugin", "The plugin shows the code editor of the Filter Factory");
  check6_ = Check(ps, "Check6", "Demo Plugin", "Deactivate the OK-Button and makes the plugin undecompilable");
  bigPreview_ = Check(ps, "Check11", "Big Preview", "A larger preview in the plugin's dialog");
  megaPreview_ = Check(ps, "Check13", "Mega Preview", "The largest preview in the plugin's dialog");
  encrypted_ = Check(ps, "Check14", "Encrypted", "Makes the plugin's code unreadable for other programs");
  connect(check5_, &QCheckBox::clicked, this, [this](bool on) {
    if (on) check6_->setChecked(false);
  });
  connect(check6_, &QCheckBox::clicked, this, [this](bool on) {
    if (on) check5_->setChecked(false);
  });
  auto* options = new QGridLayout;
  options->addWidget(allModes_, 0, 0);
  options->addWidget(check5_, 0, 1);
  options->addWidget(check6_, 0, 2);
  options->addWidget(bigPreview_, 1, 0);
  options->addWidget(megaPreview_, 1, 1);
  options->addWidget(encrypted_, 1, 2);
  grid->addLayout(options, 4, 0, 1, 2);
  column->addWidget(ps);

  auto* pr = new QGroupBox("Premiere FF Compilation", page);
  pr->setObjectName("FramePremiereFF");
  auto* prGrid = new QGridLayout(pr);
  premiereFF_ = new QLineEdit(pr);
  premiereFF_->setObjectName("Text2");
  premiereFF_->setAccessibleName("Premiere FF template");
  premiereFF_->setToolTip("Select fl-fact.prm from your Adobe Premiere Plugin folder");
  premiereTF_ = new QLineEdit(pr);
  premiereTF_->setObjectName("Text3");
  premiereTF_->setAccessibleName("Premiere TF template");
  premiereTF_->setToolTip("Select fx-fact.prm from your Adobe Premiere Plugin folder");
  prGrid->addWidget(new QLabel("Filter template:", pr), 0, 0);
  prGrid->addWidget(premiereFF_, 0, 1);
  prGrid->addWidget(new QLabel("Transition template:", pr), 1, 0);
  prGrid->addWidget(premiereTF_, 1, 1);
  column->addWidget(pr);
  column->addStretch(1);
  return page;
}

QWidget* Form2::BuildInterface() {
  auto* page = new QWidget;
  page->setObjectName("Frame1_2");
  auto* column = new QVBoxLayout(page);
  column->addWidget(new QLabel("Interface of the FF Editor:", page));
  combo1_ = new QComboBox(page);
  combo1_->setObjectName("Combo1");
  combo1_->setAccessibleName("Interface of the FF Editor");
  connect(combo1_, &QComboBox::activated, this, &Form2::Combo1_Click);
  column->addWidget(combo1_);
  interfaceLabel_ = new QLabel(page);
  interfaceLabel_->setObjectName("Label5");
  interfaceLabel_->setWordWrap(true);
  column->addWidget(interfaceLabel_);
  column->addStretch(1);
  return page;
}

QWidget* Form2::BuildListPage(int list) {
  auto* page = new QWidget;
  page->setObjectName(QString("Frame1_%1").arg(3 + list));
  auto* grid = new QGridLayout(page);
  auto* box = new QListWidget(page);
  box->setObjectName(QString("List1_%1").arg(list));
  box->setAccessibleName(kTabs[3 + list].caption);
  box->setSelectionMode(QAbstractItemView::ExtendedSelection);
  box->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  box->installEventFilter(this);
  lists_[static_cast<size_t>(list)] = box;
  grid->addWidget(box, 0, 0, 8, 1);
  const bool types = list == kTypeList;
  QPushButton* add = Button(page, QString("Command3_%1").arg(list), "Add", types ? "Add new plugin type" : "");
  connect(add, &QPushButton::clicked, this, [this, list] { Command3_Click(list); });
  QPushButton* remove =
      Button(page, QString("Command6_%1").arg(list), "Remove", types ? "Remove plugin type" : "");
  connect(remove, &QPushButton::clicked, this, [this, list] { Command6_Click(list); });
  grid->addWidget(add, 0, 1);
  grid->addWidget(remove, 1, 1);
  if (types) {
    QPushButton* edit = Button(page, "Command15", "Edit", "Edit a plugin type");
    connect(edit, &QPushButton::clicked, this, &Form2::Command15_Click);
    QPushButton* reset = Button(page, "Command16", "Reset", "Restore the default plugin types");
    connect(reset, &QPushButton::clicked, this, &Form2::Command16_Click);
    QPushButton* toggle = Button(page, "Command17", "Toggle", "Turn all items on or off");
    connect(toggle, &QPushButton::clicked, this, &Form2::Command17_Click);
    grid->addWidget(edit, 2, 1);
    grid->addWidget(reset, 3, 1);
    grid->addWidget(toggle, 4, 1);
    box->setSelectionMode(QAbstractItemView::SingleSelection);
    return page;
  }
  QPushButton* all = Button(page, QString("Command7_%1").arg(list), "Select All", "");
  connect(all, &QPushButton::clicked, this, [this, list] { Command7_Click(list); });
  QPushButton* up = Button(page, QString("Command9_%1").arg(list), "", "Move the entry up (Alt+Up)");
  up->setIcon(style()->standardIcon(QStyle::SP_ArrowUp));
  connect(up, &QPushButton::clicked, this, [this, list] { MoveEntry(list, -1); });
  QPushButton* down = Button(page, QString("Command10_%1").arg(list), "", "Move the entry down (Alt+Down)");
  down->setIcon(style()->standardIcon(QStyle::SP_ArrowDown));
  connect(down, &QPushButton::clicked, this, [this, list] { MoveEntry(list, 1); });
  grid->addWidget(all, 2, 1);
  grid->addWidget(up, 3, 1);
  grid->addWidget(down, 4, 1);
  autoAdd_[static_cast<size_t>(list)] =
      Check(page, QString("Check10_%1").arg(list), "Auto Add", kAutoAddTips[list]);
  grid->addWidget(autoAdd_[static_cast<size_t>(list)], 8, 0);
  if (list == kFolderList) {
    check19_ = Check(page, "Check19", "Auto Top", "New and visited folders go to the top of the list");
    text1_ = new QLineEdit(page);
    text1_->setObjectName("Text1");
    text1_->setAccessibleName("Limit to entries");
    text1_->setMaximumWidth(60);
    text1_->installEventFilter(this);
    auto* limit = new QHBoxLayout;
    limit->addWidget(check19_);
    limit->addStretch(1);
    limit->addWidget(new QLabel("Limit to", page));
    limit->addWidget(text1_);
    limit->addWidget(new QLabel("entries", page));
    grid->addLayout(limit, 9, 0, 1, 2);
  }
  if (list == kAppList) {
    QPushButton* add1 = Button(page, "Command11", "Add %1", "The application gets the selected file");
    connect(add1, &QPushButton::clicked, this, &Form2::Command11_Click);
    QPushButton* remove1 = Button(page, "Command12", "Remove %1", "The application starts without a file");
    connect(remove1, &QPushButton::clicked, this, &Form2::Command12_Click);
    grid->addWidget(add1, 5, 1);
    grid->addWidget(remove1, 6, 1);
  }
  return page;
}

// --- values

Preferences Form2::Values() const {
  Preferences p = hidden_;
  p.interfaceFile = interfaceFile_;
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
  for (size_t i = 0; i < 3; ++i) p.autoAdd[i] = CheckOf(autoAdd_[i]);
  p.autoTop = CheckOf(check19_);
  p.folderItemLimit = text1_->text().toStdString();
  p.fonts = fonts_;
  p.apps = ListItems(kAppList);
  p.pics = ListItems(kImageList);
  for (int i = 0; i < 4; ++i)
    if (option4_[static_cast<size_t>(i)]->isChecked()) p.compile.templateChoice = static_cast<CompileTemplate>(i);
  p.usedFF = static_cast<int>(p.compile.templateChoice);
  p.compile.templatePath = combo2_->currentText().trimmed().toStdString();
  p.compile.allModes = allModes_->isChecked();
  p.compile.editorPlugin = check5_->isChecked();
  p.compile.demoPlugin = check6_->isChecked();
  p.compile.bigPreview = bigPreview_->isChecked();
  p.compile.megaPreview = megaPreview_->isChecked();
  p.compile.encrypted = encrypted_->isChecked();
  p.compile.premiereFFTemplate = premiereFF_->text().toStdString();
  p.compile.premiereTFTemplate = premiereTF_->text().toStdString();
  p.encrypt[0] = p.compile.encrypted ? 1 : 0;
  p.editorPlugin[0] = p.compile.editorPlugin ? 1 : 0;
  return p;
}

void Form2::SetValues(const Preferences& p) {
  hidden_ = p;
  interfaceFile_ = p.interfaceFile;
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
  for (size_t i = 0; i < 3; ++i) SetCheck(autoAdd_[i], p.autoAdd[i]);
  SetCheck(check19_, p.autoTop);
  text1_->setText(Q(p.folderItemLimit));
  fonts_ = p.fonts;
  for (int i = 0; i < 2; ++i) UpdateFontLabel(i);
  SetListItems(kAppList, p.apps);
  SetListItems(kImageList, p.pics);
  combo2_->setEditText(Q(p.compile.templatePath));
  option4_[2]->setEnabled(!combo2_->currentText().trimmed().isEmpty());
  const size_t choice = static_cast<size_t>(p.compile.templateChoice);
  option4_[choice < 4 ? choice : 0]->setChecked(true);
  if (!option4_[2]->isEnabled() && option4_[2]->isChecked()) option4_[0]->setChecked(true);
  allModes_->setChecked(p.compile.allModes);
  check5_->setChecked(p.compile.editorPlugin);
  check6_->setChecked(p.compile.demoPlugin && !p.compile.editorPlugin);
  bigPreview_->setChecked(p.compile.bigPreview);
  megaPreview_->setChecked(p.compile.megaPreview);
  encrypted_->setChecked(p.compile.encrypted);
  premiereFF_->setText(Q(p.compile.premiereFFTemplate));
  premiereTF_->setText(Q(p.compile.premiereTFTemplate));
  // The interface box shows the chosen skin when it is listed.
  if (combo1_->count() > 0) {
    int entry = 0;
    if (interfaceFile_ != "OFF")
      for (int i = 1; i < combo1_->count(); ++i)
        if (combo1_->itemText(i).endsWith(Q(interfaceFile_), Qt::CaseInsensitive)) entry = i;
    combo1_->setCurrentIndex(entry);
  }
}

std::vector<std::string> Form2::ListItems(int list) const {
  std::vector<std::string> items;
  QListWidget* box = lists_[static_cast<size_t>(list)];
  for (int i = 0; i < box->count(); ++i) items.push_back(box->item(i)->text().toStdString());
  return items;
}

void Form2::SetListItems(int list, const std::vector<std::string>& items) {
  QListWidget* box = lists_[static_cast<size_t>(list)];
  box->setUpdatesEnabled(false);
  box->clear();
  for (const std::string& item : items) box->addItem(Q(item));
  box->setUpdatesEnabled(true);
  AdaptListWidth(list);
}

PluginTypeList Form2::PluginTypeRows() const {
  PluginTypeList rows;
  QListWidget* box = lists_[kTypeList];
  for (int i = 0; i < box->count(); ++i)
    rows.push_back({box->item(i)->text().toStdString(), box->item(i)->checkState() == Qt::Checked});
  return rows;
}

void Form2::SetPluginTypeRows(const PluginTypeList& rows) {
  QListWidget* box = lists_[kTypeList];
  box->setUpdatesEnabled(false);
  box->clear();
  for (const PluginTypeRow& row : rows) {
    auto* item = new QListWidgetItem(Q(row.text), box);
    item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
    item->setCheckState(row.checked ? Qt::Checked : Qt::Unchecked);
  }
  box->setUpdatesEnabled(true);
  AdaptListWidth(kTypeList);
}

// --- Load and OK

void Form2::LoadListsFromFiles() {
  if (auto folders = LoadList(programFolder_ + kFolderListFile, false)) {
    std::vector<std::string> items;
    for (const ListEntry& entry : *folders) items.push_back(entry.text);
    SetListItems(kFolderList, items);
  }
  SetPluginTypeRows(InitialPluginTypeList(programFolder_, [this](const std::string& key) {
    return store_.Get(kSectionSettings, key);
  }));
}

void Form2::Command8_Click() {
  QApplication::setOverrideCursor(Qt::WaitCursor);
  // The values as they stood when the dialog opened; every key the store holds
  // replaces its value, as Load does.
  Preferences p = opened_;
  LoadPreferences(store_, p);
  SetValues(p);
  LoadListsFromFiles();
  QApplication::restoreOverrideCursor();
  for (int list = 0; list < 3; ++list) emit listChanged(list);
  emit reloaded();
  done(QDialog::Rejected);
}

bool Form2::SaveListFiles() {
  std::vector<ListEntry> folders;
  for (const std::string& f : ListItems(kFolderList)) folders.push_back({f, false});
  const bool folderOk = SaveList(programFolder_ + kFolderListFile, folders, false);
  const bool typesOk = SaveList(programFolder_ + kPlugTypesFile, PluginTypeRows(), true);
  return folderOk && typesOk;
}

bool Form2::Command1_Click() {
  Preferences p = Values();
  CommitPreferences(store_, p);
  hidden_ = p;
  opened_ = p;
  text1_->setText(Q(p.folderItemLimit));  // a limit of 0 or text comes back as 20
  std::vector<std::string> problems;
  if (!SaveListFiles()) problems.push_back("the lists in " + programFolder_);
  if (!store_.Flush()) problems.push_back("the settings in " + store_.path());
  emit committed();
  done(QDialog::Accepted);
  if (!problems.empty()) {
    std::string text = "These could not be written:";
    for (const std::string& problem : problems) text += "\n" + problem;
    text += "\n\nThe options hold for this run.";
    hooks_.MsgBox(text, MsgButtons::Ok, MsgIcon::Exclamation, "Preferences");
    return false;
  }
  return true;
}

bool Form2::Open(int page) {
  opened_ = Values();
  tabs_->setCurrentIndex(std::clamp(page, 0, tabs_->count() - 1));
  return exec() == QDialog::Accepted;
}

// --- interface skins

void Form2::LookforInterface(bool report) {
  const QSignalBlocker quiet(combo1_);
  combo1_->clear();
  combo1_->addItem("Original FF Editor!");
  QDir folder;
  bool found = false;
  for (const char* name : {"interface", "interfac"}) {
    folder = QDir(Q(programFolder_ + name));
    if (!folder.entryList({"*.des"}, QDir::Files).isEmpty()) {
      found = true;
      break;
    }
  }
  if (!found) {
    interfaceLabel_->setText("Can't find FF Editor interface files.");
    if (report)
      hooks_.MsgBox("Can't find FF Editor interface files.\nThe FF Editor won't be usable.", MsgButtons::Ok,
                  MsgIcon::Exclamation, "Trel");
    return;
  }
  for (const QString& file : folder.entryList({"*.des"}, QDir::Files, QDir::Name)) {
    std::string title = InterfaceTitle(folder.filePath(file).toStdString());
    if (title.empty()) title = "(no title)";
    combo1_->addItem(Q(title) + " - " + file);
  }
  interfaceLabel_->setText("Skins from " + folder.absolutePath());
  SetValues(Values());
}

void Form2::Combo1_Click(int entry) {
  if (!isVisible()) return;
  if (entry <= 0) {
    interfaceFile_ = "OFF";
  } else {
    // The file name is the entry's last 12 characters, as the names were short.
    interfaceFile_ = combo1_->itemText(entry).right(12).toStdString();
    const QString text = combo1_->itemText(entry);
    const qsizetype dash = text.lastIndexOf(" - ");
    if (dash >= 0) interfaceFile_ = text.mid(dash + 3).toStdString();  // longer names stay whole
  }
  emit interfaceChosen(Q(interfaceFile_));
}

// --- lists

std::string Form2::DefaultChoose(int list) {
  QString path;
  if (list == kFolderList) {
    path = QFileDialog::getExistingDirectory(this, "Please select a plugin folder ...", QDir::rootPath());
  } else if (list == kImageList) {
    path = QFileDialog::getOpenFileName(this, "Select Picture", {},
                                        "Pictures (*.bmp *.jpg *.jpeg *.png *.gif *.tif *.tiff *.tga *.pcx "
                                        "*.wmf *.emf *.psd *.ico)");
  } else if (list == kAppList) {
    path = QFileDialog::getOpenFileName(this, "Select Executable", {}, "Executables (*)");
  }
  return path.toStdString();
}

bool Form2::AddEntry(int list, const std::string& value) {
  if (list < 0 || list > 2 || value.empty()) return false;
  QListWidget* box = lists_[static_cast<size_t>(list)];
  if (box->count() >= kMaxEntries) {
    hooks_.MsgBox("Limit of entries was reached.", MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
    return false;
  }
  if (list == kFolderList) {
    const int limit = LenientInt(text1_->text().toStdString());
    if (limit > 0 && box->count() >= limit) {
      hooks_.MsgBox("Limit of entries was reached.", MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
      return false;
    }
  }
  if (!box->findItems(Q(value), Qt::MatchExactly | Qt::MatchCaseSensitive).isEmpty()) return false;
  box->addItem(Q(value));
  AdaptListWidth(list);
  emit listChanged(list);
  return true;
}

void Form2::Command3_Click(int list) {
  if (list == kTypeList) {
    std::string name, ext, digit = "3";
    if (!askPluginType(false, name, ext, digit) || name.empty()) return;
    PluginTypeList rows = PluginTypeRows();
    if (rows.size() >= static_cast<size_t>(kMaxEntries)) {
      hooks_.MsgBox("Limit of entries was reached.", MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
      return;
    }
    AddPluginType(rows, name, ext, digit);
    SetPluginTypeRows(rows);
    lists_[kTypeList]->setCurrentRow(static_cast<int>(rows.size()) - 1);
    return;
  }
  if (list == kFolderList) {
    const int limit = LenientInt(text1_->text().toStdString());
    if (limit > 0 && lists_[0]->count() >= limit) {
      hooks_.MsgBox("Limit of entries was reached.", MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
      return;
    }
  }
  std::string value = chooseEntry(list);
  if (value.empty()) return;
  if (list == kFolderList && value.back() != '/') value += '/';
  AddEntry(list, value);
}

void Form2::Command6_Click(int list) {
  QListWidget* box = lists_[static_cast<size_t>(list)];
  if (list == kTypeList) {
    PluginTypeList rows = PluginTypeRows();
    const int row = box->currentRow();
    if (row < 0 || !RemovePluginType(rows, static_cast<size_t>(row))) return;
    SetPluginTypeRows(rows);
    box->setCurrentRow(std::min(row, box->count() - 1));
    return;
  }
  for (int i = box->count() - 1; i >= 0; --i)
    if (box->item(i)->isSelected()) delete box->takeItem(i);
  AdaptListWidth(list);
  box->setFocus();
  emit listChanged(list);
}

void Form2::Command7_Click(int list) { lists_[static_cast<size_t>(list)]->selectAll(); }

void Form2::MoveEntry(int list, int direction) {
  if (list < 0 || list > 2) return;
  QListWidget* box = lists_[static_cast<size_t>(list)];
  const int row = box->currentRow();
  const int other = row + direction;
  if (row < 0 || other < 0 || other >= box->count()) return;
  QListWidgetItem* item = box->takeItem(row);
  box->insertItem(other, item);
  box->clearSelection();
  box->setCurrentRow(other);
  emit listChanged(list);
}

void Form2::Command11_Click() {
  QListWidget* box = lists_[kAppList];
  for (int i = 0; i < box->count(); ++i) {
    QListWidgetItem* item = box->item(i);
    if (item->isSelected() && !item->text().endsWith(" %1")) item->setText(item->text() + " %1");
  }
  emit listChanged(kAppList);
}

void Form2::Command12_Click() {
  QListWidget* box = lists_[kAppList];
  for (int i = 0; i < box->count(); ++i) {
    QListWidgetItem* item = box->item(i);
    if (item->isSelected() && item->text().endsWith(" %1")) item->setText(item->text().chopped(3));
  }
  emit listChanged(kAppList);
}

void Form2::Command15_Click() {
  QListWidget* box = lists_[kTypeList];
  const int row = box->currentRow();
  if (row < 0) return;
  PluginTypeList rows = PluginTypeRows();
  std::string name, ext, digit;
  SplitPluginTypeRow(rows[static_cast<size_t>(row)].text, name, ext, digit);
  if (!askPluginType(true, name, ext, digit) || name.empty()) return;
  EditPluginType(rows, static_cast<size_t>(row), name, ext, digit);
  SetPluginTypeRows(rows);
  box->setCurrentRow(row);
}

void Form2::Command16_Click() {
  PluginTypeList rows = PluginTypeRows();
  ResetPluginTypes(rows);
  SetPluginTypeRows(rows);
}

void Form2::Command17_Click() {
  PluginTypeList rows = PluginTypeRows();
  TogglePluginTypes(rows);
  SetPluginTypeRows(rows);
}

void Form2::AdaptListWidth(int list) {
  QListWidget* box = lists_[static_cast<size_t>(list)];
  const QFontMetrics metrics(box->font());
  int widest = 0;
  for (int i = 0; i < box->count(); ++i)
    widest = std::max(widest, metrics.horizontalAdvance(box->item(i)->text() + "  "));
  // The widest entry sets the scroll extent, so long paths can be scrolled to.
  box->setProperty("scrollExtent", widest);
  box->horizontalScrollBar()->setRange(0, std::max(0, widest - box->viewport()->width()));
}

// --- the other buttons

void Form2::Command13_Click() {
  std::array<int, 5> boxes{};
  for (size_t i = 0; i < 5; ++i) boxes[i] = CheckOf(check18_[i]);
  const AssociationResult result =
      SetAssociations(boxes, programPath, dataHome.isEmpty() ? UserDataHome() : dataHome);
  std::string text = "The associations were set.";
  for (const QString& problem : result.problems) text += "\n" + problem.toStdString();
  hooks_.MsgBox(text, MsgButtons::Ok, MsgIcon::Information, "Trel");
}

void Form2::Command5_Click() {
  if (hooks_.MsgBox("Do you really want to clear the preview cache?", MsgButtons::YesNo, MsgIcon::Question,
                    "Trel") != MsgResult::Yes)
    return;
  QDir cache(Q(programFolder_ + "cache"));
  cache.removeRecursively();
  QDir().mkpath(cache.path());
}

void Form2::Command14_Click(int which) {
  FontChoice font = fonts_[static_cast<size_t>(which)];
  if (!chooseFont(font)) return;
  SetFont(font.name, font.size, font.bold, font.italic, which);
}

void Form2::SetFont(const std::string& name, double size, bool bold, bool italic, int which) {
  if (which < 0 || which > 1 || name.empty() || size < 1) return;
  fonts_[static_cast<size_t>(which)] = {name, size, bold, italic, true};
  UpdateFontLabel(which);
  emit fontChanged(which);
}

void Form2::UpdateFontLabel(int which) {
  const FontChoice& font = fonts_[static_cast<size_t>(which)];
  fontLabels_[static_cast<size_t>(which)]->setText(
      font.set ? QString::number(font.size) + ", " + Q(font.name) : QString("(standard)"));
}

void Form2::Command4_Click() { emit helpRequested(kTabs[std::clamp(tabs_->currentIndex(), 0, 6)].help); }

void Form2::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F1) {
    Command4_Click();
    return;
  }
  QDialog::keyPressEvent(event);
}

void Form2::reject() { Command8_Click(); }

bool Form2::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    for (int list = 0; list < 3; ++list) {
      if (watched != lists_[static_cast<size_t>(list)] || !(key->modifiers() & Qt::AltModifier)) continue;
      if (key->key() == Qt::Key_Up || key->key() == Qt::Key_Down) {
        MoveEntry(list, key->key() == Qt::Key_Up ? -1 : 1);
        return true;
      }
    }
  }
  if (watched == text1_ && event->type() == QEvent::FocusIn)
    QMetaObject::invokeMethod(text1_, &QLineEdit::selectAll, Qt::QueuedConnection);
  return QDialog::eventFilter(watched, event);
}

}  // namespace trel
