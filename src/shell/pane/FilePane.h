// One pane of the main window: the tab strip with its three views and, in File
// View, the drive box, the folder box, the file list in five display modes and
// the mask box. The pane owns its models and its state (folder, mode, mask,
// sort column, view); what involves both panes or the rest of the program goes
// out through signals to the main window.
#pragma once

#include <QWidget>
#include <array>
#include <string>
#include <vector>

#include "base/DirectoryListing.h"

class QComboBox;
class QFileSystemWatcher;
class QTimer;
class QLabel;
class QListView;
class QStringListModel;
class QTabWidget;
class QToolButton;

namespace trel {

class DirListBox;
class FflViewPage;
class PluginViewPage;
class FileListModel;
class FileListView;
struct Preferences;

// What both panes share: the directions of the three columns, and the options.
struct PaneShared {
  std::array<bool, 3> columnSortAscending{false, false, false};
  const Preferences* prefs = nullptr;
  std::string pluginTypePattern;  // mask entry 3
};

class FilePane : public QWidget {
  Q_OBJECT
 public:
  static constexpr int kClassic = 4;
  enum View { kFileView = 1, kPluginView = 2, kFFLView = 3 };

  FilePane(int pane, PaneShared& shared, QWidget* parent = nullptr);

  int pane() const { return pane_; }
  int paneView() const { return paneView_; }
  std::string folder() const;  // Dir1's path, with a trailing separator

  // --- listing
  void FillDirList(const std::string& path, bool keepSelection = false);
  // Sets the folder box and the classic list to a folder (no refill of the
  // list); false when it isn't a folder.
  bool ChangeFolder(const std::string& folder);
  void Dir1_Change();
  void Drive1_Change(int index);
  void SetDriveFor(const std::string& folder);
  // While the program itself changes many files (a copy job), the pane's
  // watch of its folder rests: each change would wake the window. When it
  // resumes, one refresh follows, as after any burst of changes, unless the
  // pane has been filled since the changes ended (`listings` tells) or the
  // folder's own time shows that no entry came, went or was renamed.
  void PauseWatching(bool paused, bool refreshAfter = true);
  int listings() const { return listings_; }
  void Refresh(bool keepSelection = true);  // re-read the folder, keep the place
  const std::string& listedFolder() const { return listedFolder_; }
  // Names of the selected files and folders of the visible list (folders with
  // their leading blank), and selecting them again after a re-read.
  QStringList SelectedTexts() const;
  void SelectTexts(const QStringList& texts, const QString& current);

  // --- masks
  void Combo1_Click(int entry);
  void Combo1_KeyPress(int key);
  void SetTypedMask(const QString& text);  // text in the box, no entry selected
  int maskEntry() const;                   // -1 for a typed mask
  QString maskText() const;
  const std::string& pattern() const { return pattern_; }

  // --- modes
  void SetViewMode(int mode);  // mnuFileViewMode_Click for this pane
  int DetermineFileViewMode() const;
  bool listViewShown() const;
  bool folderBoxShown() const { return folderBoxShown_; }
  void Image5_Click();

  // --- sorting
  int sortColumn() const { return sortColumn_; }
  void SetSortColumn(int column);
  void ListView1_ColumnClick(int column);
  void SortList();

  // --- caption and selection
  void DrawDirLabel();
  void File1_Click();
  int64_t selectionK() const { return selectionK_; }
  QString File1Current() const;  // the classic list's entry at its index
  bool SelectInFile1(const QString& name);
  void SelectListItem(const QString& text);
  void SetActiveLook(bool active);
  void FocusList();
  // Which pane a dragging widget belongs to: this one's index or -1.
  bool OwnsWidget(const QObject* object) const;

  // --- clicks and keys
  void ListView1_DblClick(int row);
  void ListView1_KeyDown(int key, Qt::KeyboardModifiers modifiers);
  void File1_KeyDown(int key, Qt::KeyboardModifiers modifiers);
  void SSTab1_Click(int tab);
  void SelectTab(int view);

  FileListModel* model() const { return model_; }
  FileListView* listView() const { return listView_; }
  DirListBox* dirBox() const { return dir1_; }
  QListView* file1() const { return file1_; }
  QComboBox* maskBox() const { return combo1_; }
  QComboBox* driveBox() const { return drive1_; }
  QLabel* caption() const { return label6_; }
  QTabWidget* tabs() const { return tabs_; }
  QWidget* pluginViewPage() const;
  QWidget* fflViewPage() const;
  PluginViewPage* pluginView() const { return pluginPage_; }
  FflViewPage* fflView() const { return fflPage_; }
  const std::vector<DirEntry>& files() const { return files_; }

 signals:
  void activated(int pane);                 // a control of the pane got focus or a click
  void fileDblClicked(int pane);            // File1_DblClick of the main window
  void fileInformationRequested(int pane);  // Alt+Return
  void folderChanged(int pane);             // the folder history follows
  void synchronizeRequested(int pane);      // Image4
  void fixedFolderRequested(int pane);      // Image6
  void viewModeMenuRequested(int pane, QPoint globalPos);  // Image2
  void viewChanged(int pane);               // another tab was chosen
  void folderMenuRequested(int pane, QPoint globalPos);  // a right click on the caption
  void contextMenuRequested(int pane, QPoint globalPos);  // a right click in a list
  void labelEdited(int pane, const QString& oldText, const QString& newText);
  // Local paths dropped on this pane: into `ontoFolder` (empty: the pane's
  // folder); `sourcePane` is the pane they were dragged from, -1 another program.
  void filesDropped(int pane, const QStringList& paths, const QString& ontoFolder, int sourcePane);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  void BuildFileView(QWidget* page);
  void ReadFolder(const std::string& folder);
  void GoUp();
  void ApplyPattern(const std::string& pattern);
  void Watch(const std::string& folder);
  void FolderChangedOutside();

  int pane_;
  PaneShared& shared_;
  int paneView_ = kFileView;
  bool folderBoxShown_ = false;  // the tag of Image5
  int sortColumn_ = 0;
  std::string pattern_ = "*.*";
  bool typedMask_ = false;
  std::string folder_;
  std::string listedFolder_;  // the folder ListView1 shows, empty before the first fill
  // The shown folder is watched, so that what other programs change in it
  // shows without Ctrl+R; a burst of changes makes one refresh.
  QFileSystemWatcher* watcher_ = nullptr;
  QTimer* watchDelay_ = nullptr;
  bool watchPaused_ = false;
  int64_t pausedFolderTime_ = 0;  // nanoseconds; the folder's change time when the watch paused
  int listings_ = 0;  // how often the folder has been read
  std::vector<DirEntry> files_;
  std::string enteredFolder_;  // the name of the folder last entered from here
  int64_t selectionK_ = 0;

  QTabWidget* tabs_ = nullptr;
  PluginViewPage* pluginPage_ = nullptr;
  FflViewPage* fflPage_ = nullptr;
  QComboBox* drive1_ = nullptr;
  DirListBox* dir1_ = nullptr;
  QListView* file1_ = nullptr;
  QStringListModel* file1Model_ = nullptr;
  FileListModel* model_ = nullptr;
  FileListView* listView_ = nullptr;
  QComboBox* combo1_ = nullptr;
  QLabel* label6_ = nullptr;
  QToolButton* image2_ = nullptr;
  QToolButton* image4_ = nullptr;
  QToolButton* image5_ = nullptr;
  QToolButton* image6_ = nullptr;
};

}  // namespace trel
