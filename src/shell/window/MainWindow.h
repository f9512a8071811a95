// Form1, the main window: two panes, the menus, the toolbar and the command
// row, the start-up and shutdown orders, and the routes by which a double click
// reaches the other windows of the program. The per-pane state lives in the
// panes; what spans both (the active pane, the shared sort directions, the
// options, the folders list) lives here.
#pragma once

#include <QHash>
#include <QKeySequence>
#include <QList>
#include <QMainWindow>
#include <QPointer>
#include <QTimer>
#include <array>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "catalogue/PluginTypes.h"
#include "filter/FFFilter.h"
#include "settings/Preferences.h"
#include "settings/SettingsState.h"
#include "shell/pane/FilePane.h"
#include "shell/dialogs/MessageShell.h"
#include "shell/pane/PaneRules.h"
#include "shell/window/Splash.h"

class QAction;
class QActionGroup;
class QLabel;
class QMenu;
class QPushButton;
class QToolBar;

namespace trel {

class SettingsStore;
class StatusArea;
class FFEditorType1;
class FileCommander;
class ZipCommander;
class FflController;
class PluginViewController;
class PreviewController;
class PreferencesController;

// The controllers of the command groups. Each registers itself once, when it is
// made; the others reach it through these typed references.
struct WindowParts {
  QPointer<FileCommander> commander;
  QPointer<ZipCommander> zip;
  QPointer<FflController> ffl;
  QPointer<PluginViewController> pluginView;
  QPointer<PreviewController> preview;
  QPointer<PreferencesController> preferences;
};


class MainWindow : public QMainWindow {
  Q_OBJECT
 public:
  static constexpr int kVersionMajor = 1;
  static constexpr int kVersionMinor = 0;

  // `programFolder` ends in a separator; `store` outlives the window.
  MainWindow(SettingsStore& store, std::string programFolder, QWidget* parent = nullptr);
  ~MainWindow() override;

  // --- start and end
  void Form_Initialize();
  // Runs the start-up order; `commandLine` is taken as one path.
  void Form_Load(const QString& commandLine);
  // Writes the state of the run; called when the window closes.
  void Form_Unload();
  bool firstRun() const { return firstRun_; }
  Splash* splash() const { return splash_; }

  // --- panes
  FilePane* pane(int index) const { return panes_[static_cast<size_t>(index & 1)]; }
  int ActivePane() const { return activePane_; }
  void Switchit(int pane);
  void SSTab1_Click(int pane);  // a pane changed its view
  // The plugin list of a pane no longer matches its folder.
  void ClearPluginViewFresh(int pane) { pluginViewFresh_[static_cast<size_t>(pane & 1)] = false; }
  void RefreshFile1(int pane);
  void RefreshFile1C(int pane);
  void RefreshBoth();
  void Image4_Click(int pane);  // synchronise the other pane
  void Image6_Click(int pane);  // the fixed folder
  void mnuFileViewMode_Click(int mode);
  void mnuRefresh_Click();
  void File1_DblClick(int pane);
  std::array<bool, 3>& ColumnSortAscending() { return shared_.columnSortAscending; }
  // The options of the run; changes go through settings() and its signal.
  const Preferences& prefs() const { return settings_.values(); }
  SettingsState& settings() { return settings_; }

  // --- the folders menu and its list
  const std::vector<std::string>& folderList() const { return folderList_; }
  void mnuDirectorys_Click(int index);
  void ListToMenu(int list);

  // --- routes to the windows of other parts of the program. Each reports the
  // route it took through routeTaken; the windows complete them.
  void LoadintoFFEditor(const QString& path);
  void LoadintoPicView(const QString& path);
  void ConvertFFL(const QString& path);
  void cmd_PlugInInformation(const QString& path);
  void mnuFileInformation_Click();
  void ShellOpen(const QString& path);
  // Replaces how files are handed to the desktop (tests record instead).
  void SetShellOpener(std::function<bool(const QString&)> opener) { shellOpener_ = std::move(opener); }
  // Whether a .txt file reads as a filter source (the editor then opens it).
  void SetTxtSourceTest(std::function<bool(const QString&)> test) { txtSourceTest_ = std::move(test); }
  void SetPluginTypeExtensions(std::vector<std::string> extensions) {
    pluginTypeExtensions_ = std::move(extensions);
  }
  const PluginTypeTable& pluginTypes() const { return pluginTypeTable_; }
  // Takes the plugin type rows into the table, the masks and the routes.
  void ApplyPluginTypes(const PluginTypeList& rows);

  // --- commands and their availability. The table holds every command the
  // menus offer, built in one place (BuildMenus); asking for a name it lacks
  // is a fault in the program and stops it.
  QAction* command(const QString& objectName) const;
  // Adds an action made elsewhere (a key, a dialog's opener) to the table.
  void AddToCommands(QAction* action);
  WindowParts& parts() { return parts_; }
  const WindowParts& parts() const { return parts_; }

  // --- what the window built, by type
  QAction* previewToggle() const { return previewToggle_; }  // the tool bar's Preview
  QMenu* picturesMenu() const { return picturesMenu_; }
  QMenu* appsMenu() const { return appsMenu_; }
  QMenu* helpMenu() const { return helpMenu_; }
  QMenu* viewMenu() const { return viewMenu_; }
  QMenu* commandsMenu() const { return commandsMenu_; }
  QPushButton* commandButton(int index) const { return commandButtons_[static_cast<size_t>(index)]; }  // 0 to 5
  QLabel* label3() const { return label3_; }
  QLabel* label4() const { return label4_; }
  // Marks a command as built; Switchit then enables it by the view.
  void SetCommandAvailable(const QString& objectName, bool available);

  // --- the one filter in hand (readers fill it, the editor shows it)
  FFFilter& filter() { return filter_; }
  const std::string& programFolder() const { return programFolder_; }
  SettingsStore& store() { return store_; }

  // --- status, progress and Esc for long work (the status row of the window)
  // Labels "current of total" and "N sec." and the bar; `startSeconds` is the
  // start of the work in seconds since midnight.
  void StatusDisplay(long current, long total, double startSeconds);
  void StatusDisplayClear();
  void Progressbar(int percent, bool hide = false);
  // Esc sets the flag; long work polls it. It is atomic so that work off the
  // window's thread reads it.
  std::atomic<bool>& EscapeFlag() { return escapePressed_; }
  // An Esc belongs to the work it was pressed for: every piece of work (a
  // preview, a run, a copy, a scan) starts here with the flag clear, so a key
  // pressed before or between two runs stops neither.
  std::atomic<bool>& BeginWork() {
    escapePressed_ = false;
    return escapePressed_;
  }

  // --- preferences: opens the dialog on a page (0 the first)
  void ShowPreferences(int page = 0);

  // --- Preferences and desktop services (PreferencesCommands.cpp): the
  // dialog edits the folders list and the plugin type rows in place.
  std::vector<std::string>& FolderListForEdit() { return folderList_; }
  const PluginTypeList& pluginTypeRows() const { return pluginTypeList_; }

  // --- layout
  void Form_Resize();
  int layoutCount() const { return layoutCount_; }
  // How the window learns that the left mouse button is held (tests replace it).
  void SetLeftButtonProbe(std::function<bool()> probe) { leftButtonDown_ = std::move(probe); }
  QTimer* Timer2() { return &timer2_; }
  MessageShell& messages() { return messages_; }

  // --- commander (selection, file commands, status row)
  // Whether a command is built and allowed in the active pane's view.
  bool IsCommandAllowed(const QString& objectName) const;
  StatusArea* statusArea() const { return statusArea_; }
  // --- Filter Factory Editor: the one editor window (null until first use or
  // after "Unload FF Editor from Memory"); `create` makes it when missing.
  FFEditorType1* FFEditor(bool create = true);
  const std::vector<std::string>& interfaceEntries() const { return interfaceEntries_; }
  int interfaceEntry() const { return interfaceEntry_; }  // 0: "Original FF Editor!" (OFF)
 private:
  QPointer<FFEditorType1> ffEditor_;
  std::vector<std::string> interfaceEntries_;  // display name, " - ", file name
  int interfaceEntry_ = 0;
 public:
  // --- Plugin View and FFL View
  // Whether a pane's plugin list matches its folder (SSTab1_Click scans when not).
  bool PluginViewFresh(int pane) const { return pluginViewFresh_[static_cast<size_t>(pane & 1)]; }
  void SetPluginViewFresh(int pane, bool fresh) { pluginViewFresh_[static_cast<size_t>(pane & 1)] = fresh; }
  // Runs the Plugin View's entry for a pane now (the tab handler's scan step).
  void EnterPluginView(int pane) { ScanForPluginView(pane); }

 signals:
  void routeTaken(const QString& route, const QString& path);

 protected:
  void closeEvent(QCloseEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void BuildMenus();
  void BuildCentral();
  void InstallCommandGroups();  // every command group, once (CommandGroups.cpp)
  // One entry of the command table: its menu, name, caption and keys.
  QAction* AddCommand(QMenu* menu, const char* objectName, const QString& caption, bool available,
                      QList<QKeySequence> keys = {});
  void SplashStatus(const QString& text);
  void UnloadSplash();
  void ConnectPane(FilePane* pane);
  void ShowViewModeMenu(int pane, QPoint globalPos);
  void FolderVisited(int pane);
  void StartWithFile(const QString& commandLine);
  void ApplyPlacement();
  void mnuTip_Click();
  void ShowAbout();
  // Steps of the start-up order that belong to the FF Editor; kept in their
  // place and completed with the editor.
  void LookforInterface();
  void SelectInterfaceEntry();
  void ToggleFFUI(const std::string& tempDll);
  void LoadFFEditorHidden();
  void ClosePreviewImages();
  // Entering Plugin View with a stale list scans the pane's folder; the
  // category browser completes this step.
  void ScanForPluginView(int pane);
  void GetIcons();
  void AttachMenuBitmaps();

  SettingsStore& store_;
  std::string programFolder_;
  MessageShell messages_;
  PaneShared shared_;
  SettingsState settings_;
  std::array<FilePane*, 2> panes_{};
  int activePane_ = 0;
  std::array<bool, 2> pluginViewFresh_{false, false};
  FFFilter filter_;
  std::atomic<bool> escapePressed_{false};
  std::string interfaceFile_;
  bool firstRun_ = false;
  bool unloaded_ = false;
  std::vector<std::string> folderList_;
  std::vector<std::string> pluginTypeExtensions_;
  PluginTypeList pluginTypeList_;    // the rows of the preferences' list
  PluginTypeTable pluginTypeTable_;  // the checked rows, parsed
  QPointer<Splash> splash_;

  QHash<QString, QAction*> commands_;
  QHash<QString, bool> built_;
  QMenu* folderMenu_ = nullptr;
  QMenu* viewModeMenu_ = nullptr;
  std::array<QAction*, 5> viewModeActions_{};
  std::vector<QAction*> folderEntries_;
  QMenu* picturesMenu_ = nullptr;
  QMenu* appsMenu_ = nullptr;
  std::vector<QAction*> pictureEntries_;
  std::vector<QAction*> appEntries_;
  std::array<QPushButton*, 6> commandButtons_{};
  QToolBar* toolbar_ = nullptr;
  QAction* previewToggle_ = nullptr;
  QMenu* helpMenu_ = nullptr;
  QMenu* viewMenu_ = nullptr;
  QMenu* commandsMenu_ = nullptr;
  WindowParts parts_;
  QLabel* label3_ = nullptr;
  QLabel* label4_ = nullptr;
  StatusArea* statusArea_ = nullptr;  // the colour bar behind the two labels
  QWidget* host_ = nullptr;     // the client area
  QWidget* content_ = nullptr;  // everything in it, laid out by Qt
  QTimer timer2_;
  int layoutCount_ = 0;
  std::function<bool()> leftButtonDown_;
  std::function<bool(const QString&)> shellOpener_;
  std::function<bool(const QString&)> txtSourceTest_;
};

}  // namespace trel
