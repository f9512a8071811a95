// The tabs of the preferences dialog, one class each. A page shows the values of
// the copy the dialog edits (Load) and writes its controls back into a copy
// (Store); it keeps no option of its own beyond what its controls show. The
// buttons that act at once (clear the cache, set associations, edit a list)
// live on the page that shows them.
#pragma once

#include <QString>
#include <QWidget>
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

namespace trel {

class UserMessages;

// What the dialog edits as one copy: the options, the Folders list (kept in its
// own file) and the plugin type table. OK hands it back whole.
struct PreferenceSet {
  Preferences prefs;
  std::vector<std::string> folders;
  PluginTypeList pluginTypes;
};

// What every page may need from outside: where the program's files are and how
// to tell the user something.
struct PageContext {
  std::string programFolder;  // ends in a separator
  UserMessages& hooks;
};

class PreferencesPage : public QWidget {
  Q_OBJECT
 public:
  PreferencesPage(const PageContext& context, QWidget* parent) : QWidget(parent), context_(context) {}
  virtual void Load(const PreferenceSet& set) = 0;
  virtual void Store(PreferenceSet& set) const = 0;

 protected:
  const PageContext& context_;
};

// The store numbers the entries of a list 0 to 200.
inline constexpr int kMaxListEntries = 201;

// --- the controls every page makes the same way
QCheckBox* MakeCheck(QWidget* parent, const QString& name, const QString& caption, const QString& tip);
// An icon button passes an empty caption: its tool tip becomes its accessible name.
QPushButton* MakeButton(QWidget* parent, const QString& name, const QString& caption, const QString& tip);
// The stored check values: 0 off, 1 on, 2 grey (Qt numbers on and grey the other way round).
int CheckOf(const QCheckBox* box);
void SetCheck(QCheckBox* box, int value);
// The widest entry sets the scroll extent, so long paths can be scrolled to.
void AdaptListWidth(QListWidget* box);

// "General": fonts, plugin and file view options, associations, misc, preview cache.
class GeneralPage : public PreferencesPage {
  Q_OBJECT
 public:
  GeneralPage(const PageContext& context, QWidget* parent);
  void Load(const PreferenceSet& set) override;
  void Store(PreferenceSet& set) const override;

  void ClearCache();                 // Command5
  void SetAssociations();            // Command13
  void ChooseFont(int which);        // Command14
  void SetFont(const FontChoice& font, int which);

  // The font dialog; false for cancel (tests replace it).
  std::function<bool(FontChoice& font)> chooseFont;
  QString programPath;  // the program the associations start
  QString dataHome;     // empty: the user's data folder

 signals:
  void listOptionChanged(int index, int value);  // Check12(index) was clicked
  void fontChanged(int which, const trel::FontChoice& font);

 private:
  void UpdateFontLabel(int which);

  std::array<QLabel*, 2> fontLabels_{};
  std::array<FontChoice, 2> fonts_;
  QCheckBox* check1_ = nullptr;   // ScanSubDirs
  QCheckBox* check8_ = nullptr;   // include sources
  std::array<QCheckBox*, 6> check12_{};
  QCheckBox* check4_ = nullptr;   // PassivePaneFolder
  QCheckBox* check17_ = nullptr;  // FFL1.0
  std::array<QCheckBox*, 5> check18_{};
  QCheckBox* check16_ = nullptr;  // FullStartUp
  QCheckBox* check2_ = nullptr;   // NoFFOptimize
  QCheckBox* check7_ = nullptr;   // cooperative
  QCheckBox* check15_ = nullptr;  // cache
  QScrollBar* hScroll2_ = nullptr;
  QLabel* label3_ = nullptr;
};

// "FF/TF": how Filter Factory plugins are compiled.
class CompilePage : public PreferencesPage {
  Q_OBJECT
 public:
  CompilePage(const PageContext& context, QWidget* parent);
  void Load(const PreferenceSet& set) override;
  void Store(PreferenceSet& set) const override;

 private:
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
};

// "Interface": the skin of the FF Editor.
class InterfacePage : public PreferencesPage {
  Q_OBJECT
 public:
  InterfacePage(const PageContext& context, QWidget* parent);
  void Load(const PreferenceSet& set) override;
  void Store(PreferenceSet& set) const override;

  // Fills the box; with `report`, tells the user when no skin is found.
  void LookforInterface(bool report);
  void Choose(int entry);  // Combo1: entry 0 is the original editor

 signals:
  void interfaceChosen(const QString& interfaceFile);  // "OFF" for the original editor

 private:
  void ShowChosen();

  QComboBox* combo1_ = nullptr;
  QLabel* label5_ = nullptr;
  std::string interfaceFile_ = "Interfc4.des";
};

// "Folders", "Images" and "Apps": a list the window mirrors in a menu.
class ListPage : public PreferencesPage {
  Q_OBJECT
 public:
  enum Kind { kFolders = 0, kImages, kApps };

  ListPage(const PageContext& context, Kind kind, QWidget* parent);
  void Load(const PreferenceSet& set) override;
  void Store(PreferenceSet& set) const override;

  QListWidget* list() const { return list_; }
  std::vector<std::string> Items() const;
  void SetItems(const std::vector<std::string>& items);
  // Adds an entry unless it is there already (exact compare) or a limit is
  // reached; true when added.
  bool AddEntry(const std::string& value);
  void Add();                  // Command3: asks for the entry
  void RemoveSelected();       // Command6
  void SelectAll();            // Command7
  void Move(int direction);    // Command9 (-1), Command10 (+1), Alt+Up/Down
  void AddFileArgument();      // Command11, "Add %1"
  void RemoveFileArgument();   // Command12, "Remove %1"

  // Asks for a folder, picture or program; empty for cancel (tests replace it).
  std::function<std::string()> chooseEntry;

 signals:
  void listChanged(int list, const std::vector<std::string>& items);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  bool LimitReached();
  std::string DefaultChoose();
  void Changed();

  Kind kind_;
  QListWidget* list_ = nullptr;
  QCheckBox* autoAdd_ = nullptr;
  QCheckBox* check19_ = nullptr;  // Auto Top (Folders)
  QLineEdit* text1_ = nullptr;    // limit (Folders)
};

// "Plugin Types": the table of file types the scanner recognises.
class PluginTypesPage : public PreferencesPage {
  Q_OBJECT
 public:
  PluginTypesPage(const PageContext& context, QWidget* parent);
  void Load(const PreferenceSet& set) override;
  void Store(PreferenceSet& set) const override;

  QListWidget* list() const { return list_; }
  PluginTypeList Rows() const;
  void SetRows(const PluginTypeList& rows);
  void Add();     // Command3_3
  void Remove();  // Command6_3
  void Edit();    // Command15
  void Reset();   // Command16
  void Toggle();  // Command17

  // The plugin type dialog; false for cancel (tests replace it). `edit` chooses
  // its caption.
  std::function<bool(bool edit, std::string& name, std::string& extension, std::string& digit)> askPluginType;

 private:
  QListWidget* list_ = nullptr;
};

}  // namespace trel
