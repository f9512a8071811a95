// The preferences dialog. It is made once at start-up and stays hidden; its
// controls hold the option values of the run. Opening it shows them; OK writes
// them to the settings store and the list files, Cancel reads them back from
// there. The three user lists (Folders, Images, Apps) and the plugin type table
// live on its pages; the window mirrors the first three in its menus.
#pragma once

#include <QDialog>
#include <array>
#include <functional>
#include <string>
#include <vector>

#include "catalogue/PluginTypes.h"
#include "settings/Preferences.h"

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;
class QRadioButton;
class QScrollBar;
class QTabWidget;

namespace trel {

class SettingsStore;
class ShellHooks;

class Form2 : public QDialog {
  Q_OBJECT
 public:
  enum Page { kGeneral = 0, kFFTF, kInterface, kFolders, kImages, kApps, kPluginTypes };
  enum List { kFolderList = 0, kImageList, kAppList, kTypeList };
  static constexpr int kMaxEntries = 201;  // the store numbers entries 0 to 200

  // `programFolder` ends in a separator.
  Form2(SettingsStore& store, std::string programFolder, ShellHooks& hooks, QWidget* parent = nullptr);

  // --- the live values
  Preferences Values() const;            // the controls read as options
  void SetValues(const Preferences& p);  // the controls set from options
  std::vector<std::string> ListItems(int list) const;  // lists 0 to 2
  void SetListItems(int list, const std::vector<std::string>& items);
  PluginTypeList PluginTypeRows() const;
  void SetPluginTypeRows(const PluginTypeList& rows);

  // --- the design's handlers
  void Command8_Click();  // Cancel: everything again from the store and the files
  // OK: writes everything; false when something could not be written, which the
  // user has been told.
  bool Command1_Click();
  // Fills the interface box; with `report`, tells the user when no skin is found.
  void LookforInterface(bool report = true);
  void Combo1_Click(int entry);
  void Command3_Click(int list);   // Add
  void Command6_Click(int list);   // Remove the selected entries
  void Command7_Click(int list);   // Select All
  void MoveEntry(int list, int direction);  // Command9 (-1), Command10 (+1)
  void Command11_Click();          // "Add %1"
  void Command12_Click();          // "Remove %1"
  void Command15_Click();          // Edit plugin type
  void Command16_Click();          // Reset plugin types
  void Command17_Click();          // Toggle plugin types
  void Command13_Click();          // Set Associations
  void Command5_Click();           // Clear Cache
  void Command14_Click(int which);  // font dialog
  void Command4_Click();           // help page of the current tab
  void SetFont(const std::string& name, double size, bool bold, bool italic, int which);
  void AdaptListWidth(int list);
  // Adds an entry to a list 0 to 2 unless it is there already (exact compare)
  // or the Folders limit is reached; true when added.
  bool AddEntry(int list, const std::string& value);

  // Takes the current values as those Cancel returns to (done by Open).
  void Snapshot() { opened_ = Values(); }
  // Opens modal on a page; true for OK.
  bool Open(int page);
  QTabWidget* tabs() const { return tabs_; }
  QListWidget* list(int index) const { return lists_[static_cast<size_t>(index)]; }

  // --- how the dialog asks (tests replace these)
  // Add: a folder, picture or program for lists 0 to 2; empty for cancel.
  std::function<std::string(int list)> chooseEntry;
  // The plugin type dialog; false for cancel. `edit` chooses its caption.
  std::function<bool(bool edit, std::string& name, std::string& extension, std::string& digit)> askPluginType;
  // The font dialog; false for cancel.
  std::function<bool(FontChoice& font)> chooseFont;
  // The program the associations start; the running program by default.
  QString programPath;
  QString dataHome;  // empty: the user's data folder

 signals:
  void committed();          // OK wrote the values
  void reloaded();           // Cancel read them back
  void listChanged(int list);  // a list 0 to 2 changed; its menu follows
  void fontChanged(int which);
  void listOptionChanged(int index);  // Check12(index) was clicked
  void interfaceChosen(const QString& interfaceFile);  // "OFF" for the original editor
  void helpRequested(const QString& page);

 public slots:
  void reject() override;  // Esc and the close button are Cancel

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  QWidget* BuildGeneral();
  QWidget* BuildFFTF();
  QWidget* BuildInterface();
  QWidget* BuildListPage(int list);
  QCheckBox* Check(QWidget* parent, const QString& name, const QString& caption, const QString& tip);
  QPushButton* Button(QWidget* parent, const QString& name, const QString& caption, const QString& tip);
  void LoadListsFromFiles();
  bool SaveListFiles();
  void UpdateFontLabel(int which);
  std::string DefaultChoose(int list);

  SettingsStore& store_;
  std::string programFolder_;
  ShellHooks& hooks_;
  QTabWidget* tabs_ = nullptr;
  std::array<QListWidget*, 4> lists_{};
  std::array<QCheckBox*, 3> autoAdd_{};
  QCheckBox* check1_ = nullptr;   // ScanSubDirs
  QCheckBox* check8_ = nullptr;   // include sources
  std::array<QCheckBox*, 6> check12_{};
  QCheckBox* check16_ = nullptr;  // FullStartUp
  QCheckBox* check4_ = nullptr;   // PassivePaneFolder
  QCheckBox* check2_ = nullptr;   // NoFFOptimize
  QCheckBox* check7_ = nullptr;   // cooperative
  QCheckBox* check17_ = nullptr;  // FFL1.0
  QCheckBox* check15_ = nullptr;  // cache
  QScrollBar* hScroll2_ = nullptr;
  QLabel* label3_ = nullptr;
  std::array<QCheckBox*, 5> check18_{};
  std::array<QLabel*, 2> fontLabels_{};
  std::array<FontChoice, 2> fonts_;
  QCheckBox* check19_ = nullptr;  // Auto Top
  QLineEdit* text1_ = nullptr;    // limit
  QComboBox* combo1_ = nullptr;   // interface
  QLabel* interfaceLabel_ = nullptr;
  std::string interfaceFile_ = "Interfc4.des";
  // the compile frames
  std::array<QRadioButton*, 4> option4_{};
  QComboBox* combo2_ = nullptr;  // custom template path
  QCheckBox* allModes_ = nullptr;
  QCheckBox* check5_ = nullptr;  // Editor Plugin
  QCheckBox* check6_ = nullptr;  // Demo Plugin
  QCheckBox* bigPreview_ = nullptr;
  QCheckBox* megaPreview_ = nullptr;
  QCheckBox* encrypted_ = nullptr;
  QLineEdit* premiereFF_ = nullptr;
  QLineEdit* premiereTF_ = nullptr;
  // values the store keeps that no control shows
  Preferences hidden_;
  Preferences opened_;  // the values when the dialog was opened or last confirmed
};

// Reads the first item of comma-separated input of a skin file: its title.
std::string InterfaceTitle(const std::string& path);

}  // namespace trel
