// The preferences dialog. It is made once at start-up and stays hidden. Edit
// gives it a copy of the settings to show; OK writes the edited copy to the
// settings store and the list files and hands it back (committed), Cancel hands
// back what the store and the files hold (reverted). A few edits show in the
// window at once (list options, fonts, the three lists); those come as signals
// carrying the new value. Each tab is a page of PreferencesPages.h.
#pragma once

#include <QDialog>
#include <string>
#include <vector>

#include "settings/ui/PreferencesPages.h"

class QTabWidget;

namespace trel {

class SettingsStore;

class Form2 : public QDialog {
  Q_OBJECT
 public:
  enum Page { kGeneral = 0, kFFTF, kInterface, kFolders, kImages, kApps, kPluginTypes };
  enum List { kFolderList = 0, kImageList, kAppList, kTypeList };

  // `programFolder` ends in a separator.
  Form2(SettingsStore& store, std::string programFolder, UserMessages& hooks, QWidget* parent = nullptr);

  // Shows a copy; it is also what the options no control shows come from.
  void Edit(const PreferenceSet& set);
  // The copy as the controls have it now.
  PreferenceSet Edited() const;
  Preferences Values() const { return Edited().prefs; }
  // Opens modal on a page; true for OK.
  bool Open(int page);

  // --- the dialog's own buttons
  // OK: writes everything; false when something could not be written, which the
  // user has been told.
  bool Command1_Click();
  void Command8_Click();  // Cancel: everything again from the store and the files
  void Command4_Click();  // help page of the current tab
  // Fills the interface box; with `report`, tells the user when no skin is found.
  void LookforInterface(bool report = true) { interface_->LookforInterface(report); }

  // --- the pages
  QTabWidget* tabs() const { return tabs_; }
  GeneralPage& general() const { return *general_; }
  CompilePage& compile() const { return *compile_; }
  InterfacePage& skins() const { return *interface_; }
  ListPage& listPage(int list) const { return *lists_[static_cast<size_t>(list)]; }
  PluginTypesPage& pluginTypes() const { return *pluginTypes_; }
  QListWidget* list(int list) const;  // lists 0 to 3

 signals:
  void committed(const trel::PreferenceSet& set);
  void reverted(const trel::PreferenceSet& set);
  // Edits the window shows before OK.
  void listChanged(int list, const std::vector<std::string>& items);  // lists 0 to 2
  void fontChanged(int which, const trel::FontChoice& font);
  void listOptionChanged(int index, int value);
  void interfaceChosen(const QString& interfaceFile);  // "OFF" for the original editor
  void helpRequested(const QString& page);

 public slots:
  void reject() override;  // Esc and the close button are Cancel

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Show(const PreferenceSet& set);
  bool SaveListFiles(const PreferenceSet& set);

  SettingsStore& store_;
  PageContext context_;
  QTabWidget* tabs_ = nullptr;
  GeneralPage* general_ = nullptr;
  CompilePage* compile_ = nullptr;
  InterfacePage* interface_ = nullptr;
  std::array<ListPage*, 3> lists_{};
  PluginTypesPage* pluginTypes_ = nullptr;
  std::vector<PreferencesPage*> pages_;
  PreferenceSet edited_;  // the copy given, with what OK last wrote
};

// Reads the first item of comma-separated input of a skin file: its title.
std::string InterfaceTitle(const std::string& path);

}  // namespace trel
