#include "settings/ui/Form2.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <fstream>

#include "front/UserMessages.h"
#include "settings/Conversions.h"
#include "settings/ListFiles.h"
#include "settings/SettingsStore.h"

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

Form2::Form2(SettingsStore& store, std::string programFolder, UserMessages& hooks, QWidget* parent)
    : QDialog(parent), store_(store), context_{std::move(programFolder), hooks} {
  setObjectName("Form2");
  setWindowTitle("Preferences");
  setModal(true);
  auto* column = new QVBoxLayout(this);
  tabs_ = new QTabWidget(this);
  tabs_->setObjectName("SSTab1");
  general_ = new GeneralPage(context_, tabs_);
  compile_ = new CompilePage(context_, tabs_);
  interface_ = new InterfacePage(context_, tabs_);
  for (int list = 0; list < 3; ++list)
    lists_[static_cast<size_t>(list)] = new ListPage(context_, static_cast<ListPage::Kind>(list), tabs_);
  pluginTypes_ = new PluginTypesPage(context_, tabs_);
  pages_ = {general_, compile_, interface_, lists_[0], lists_[1], lists_[2], pluginTypes_};
  for (size_t i = 0; i < pages_.size(); ++i) tabs_->addTab(pages_[i], kTabs[i].caption);
  column->addWidget(tabs_);

  auto* row = new QHBoxLayout;
  QPushButton* help = MakeButton(this, "Command4", "Show Help File", "Opens the help page of this tab");
  connect(help, &QPushButton::clicked, this, &Form2::Command4_Click);
  row->addWidget(help);
  row->addStretch(1);
  QPushButton* ok = MakeButton(this, "Command1", "OK", "");
  ok->setDefault(true);
  connect(ok, &QPushButton::clicked, this, [this] { Command1_Click(); });
  QPushButton* cancel = MakeButton(this, "Command8", "Cancel", "");
  connect(cancel, &QPushButton::clicked, this, &Form2::Command8_Click);
  row->addWidget(ok);
  row->addWidget(cancel);
  column->addLayout(row);

  connect(general_, &GeneralPage::listOptionChanged, this, &Form2::listOptionChanged);
  connect(general_, &GeneralPage::fontChanged, this, &Form2::fontChanged);
  connect(interface_, &InterfacePage::interfaceChosen, this, &Form2::interfaceChosen);
  for (ListPage* page : lists_) connect(page, &ListPage::listChanged, this, &Form2::listChanged);

  PreferenceSet start;
  ResetPluginTypes(start.pluginTypes);
  Edit(start);
  resize(620, 520);
}

QListWidget* Form2::list(int list) const {
  return list == kTypeList ? pluginTypes_->list() : lists_[static_cast<size_t>(std::clamp(list, 0, 2))]->list();
}

void Form2::Edit(const PreferenceSet& set) {
  edited_ = set;
  Show(set);
}

void Form2::Show(const PreferenceSet& set) {
  for (PreferencesPage* page : pages_) page->Load(set);
}

PreferenceSet Form2::Edited() const {
  PreferenceSet set = edited_;
  for (const PreferencesPage* page : pages_) page->Store(set);
  return set;
}

bool Form2::Open(int page) {
  tabs_->setCurrentIndex(std::clamp(page, 0, tabs_->count() - 1));
  return exec() == QDialog::Accepted;
}

void Form2::Command8_Click() {
  QApplication::setOverrideCursor(Qt::WaitCursor);
  // The copy as it was given; every key the store holds replaces its value, as
  // the start-up's load does, and the lists come from their files again.
  PreferenceSet set = edited_;
  LoadPreferences(store_, set.prefs);
  if (auto folders = LoadList(context_.programFolder + kFolderListFile, false)) {
    set.folders.clear();
    for (const ListEntry& entry : *folders) set.folders.push_back(entry.text);
  }
  set.pluginTypes = InitialPluginTypeList(context_.programFolder,
                                          [this](const std::string& key) { return store_.Get(kSectionSettings, key); });
  Show(set);
  QApplication::restoreOverrideCursor();
  emit reverted(set);
  done(QDialog::Rejected);
}

bool Form2::SaveListFiles(const PreferenceSet& set) {
  std::vector<ListEntry> folders;
  for (const std::string& f : set.folders) folders.push_back({f, false});
  const bool folderOk = SaveList(context_.programFolder + kFolderListFile, folders, false);
  const bool typesOk = SaveList(context_.programFolder + kPlugTypesFile, set.pluginTypes, true);
  return folderOk && typesOk;
}

bool Form2::Command1_Click() {
  PreferenceSet set = Edited();
  CommitPreferences(store_, set.prefs);
  edited_ = set;
  Show(set);  // a limit of 0 or text comes back as 20
  std::vector<std::string> problems;
  if (!SaveListFiles(set)) problems.push_back("the lists in " + context_.programFolder);
  if (!store_.Flush()) problems.push_back("the settings in " + store_.path());
  emit committed(set);
  done(QDialog::Accepted);
  if (!problems.empty()) {
    std::string text = "These could not be written:";
    for (const std::string& problem : problems) text += "\n" + problem;
    text += "\n\nThe options hold for this run.";
    context_.hooks.MsgBox(text, MsgButtons::Ok, MsgIcon::Exclamation, "Preferences");
    return false;
  }
  return true;
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

}  // namespace trel
