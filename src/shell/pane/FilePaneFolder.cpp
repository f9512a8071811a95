// The folder a pane shows: reading and watching it, the drive and mask boxes,
// the two lists' fill and sort, and the label above them.
#include "shell/pane/FilePane.h"

#include <sys/stat.h>

#include <QApplication>
#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QDropEvent>
#include <QFileSystemWatcher>
#include <QHBoxLayout>
#include <QHash>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QLocale>
#include <QMimeData>
#include <QMouseEvent>
#include <QSet>
#include <QStorageInfo>
#include <QStringListModel>
#include <QStyle>
#include <QTabWidget>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>
#include <QUrl>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <ctime>

#include "base/Paths.h"
#include "settings/Preferences.h"
#include "shell/fflview/FflViewPage.h"
#include "shell/pane/DirListBox.h"
#include "shell/pane/FileListModel.h"
#include "shell/pane/FileListView.h"
#include "shell/pane/PaneRules.h"
#include "shell/pane/ShellAccessible.h"
#include "shell/pluginview/PluginViewPage.h"

namespace trel {

namespace {

// The date part of a time stamp as the system writes dates; many files share a
// day, so each day is formatted once.
QString DateText(int64_t seconds) {
  static QHash<int, QString> days;
  const std::time_t t = static_cast<std::time_t>(seconds);
  std::tm local{};
  if (!localtime_r(&t, &local)) return {};
  const int day = (local.tm_year + 1900) * 10000 + (local.tm_mon + 1) * 100 + local.tm_mday;
  auto it = days.find(day);
  if (it == days.end()) {
    const QDate date(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday);
    it = days.insert(day, QLocale::system().toString(date, QLocale::ShortFormat));
  }
  return it.value();
}

// What the drive box says of a folder: its name and the mount it is on, with
// the mount's file system and free room ("/" alone says nothing on Linux).
QString MountText(const QString& folder) {
  const QStorageInfo volume(folder);
  QString root = volume.isValid() ? volume.rootPath() : QString("/");
  QString detail = QString::fromUtf8(volume.fileSystemType());
  if (volume.isValid() && volume.bytesAvailable() >= 0) {
    const QString room = QLocale::system().formattedDataSize(volume.bytesAvailable(), 1);
    detail += (detail.isEmpty() ? "" : ", ") + room + " free";
  }
  QString name = QDir(folder).dirName();
  if (QDir::cleanPath(folder) == QDir::cleanPath(root) || name.isEmpty()) name.clear();
  const QString mount = detail.isEmpty() ? root : root + "  (" + detail + ")";
  return name.isEmpty() ? mount : name + "  on  " + mount;
}

class HourGlass {
 public:
  HourGlass() { QApplication::setOverrideCursor(Qt::WaitCursor); }
  ~HourGlass() { QApplication::restoreOverrideCursor(); }
};

}  // namespace

void FilePane::Watch(const std::string& folder) {
  const QString path = watchPaused_ ? QString() : QString::fromStdString(folder);
  const QStringList watched = watcher_->directories();
  if (watched.size() == 1 && watched.front() == path) return;
  if (!watched.isEmpty()) watcher_->removePaths(watched);
  if (!path.isEmpty()) watcher_->addPath(path);
}

namespace {

// A folder's own modification time changes whenever an entry is made,
// removed or renamed in it; 0 when it can't be read.
int64_t FolderChangeTime(const std::string& folder) {
  struct stat info {};
  if (::stat(folder.c_str(), &info) != 0) return 0;
  return int64_t{info.st_mtim.tv_sec} * 1000000000 + info.st_mtim.tv_nsec;
}

}  // namespace

void FilePane::PauseWatching(bool paused, bool refreshAfter) {
  if (paused == watchPaused_) return;
  watchPaused_ = paused;
  Watch(folder_);
  if (paused) {
    pausedFolderTime_ = FolderChangeTime(folder_);
  } else if (refreshAfter && (pausedFolderTime_ == 0 || FolderChangeTime(folder_) != pausedFolderTime_)) {
    watchDelay_->start();
  }
}

void FilePane::FolderChangedOutside() {
  // A name being edited in place waits: a refresh would end the edit.
  if (QWidget* focus = QApplication::focusWidget();
      focus && (listView_->isAncestorOf(focus) || file1_->isAncestorOf(focus)) &&
      focus != listView_->current() && focus != file1_) {
    watchDelay_->start();
    return;
  }
  if (!IsFolder(folder())) return;
  Refresh(true);
}

void FilePane::ReadFolder(const std::string& folder) {
  DirListing listing = ListDirectory(folder, pattern_);
  ++listings_;
  // A re-read of the same folder keeps the classic list's selection on its names.
  QStringList keep;
  QString keepCurrent;
  if (WithTrailingSeparator(folder) == folder_) {
    for (const QModelIndex& index : file1_->selectionModel()->selectedRows()) keep.append(index.data().toString());
    keepCurrent = File1Current();
  }
  folder_ = WithTrailingSeparator(folder);
  Watch(folder_);
  dir1_->SetPath(folder_, listing.folders);
  files_ = std::move(listing.files);
  QStringList names;
  names.reserve(static_cast<qsizetype>(files_.size()));
  for (const DirEntry& f : files_) names.append(QString::fromStdString(f.name));
  const QSignalBlocker quiet(file1_->selectionModel());
  file1Model_->setStringList(names);
  selectionK_ = 0;
  if (!keep.isEmpty() || !keepCurrent.isEmpty()) {
    // Looked up in a set and selected in runs: see SelectTexts.
    const QSet<QString> wanted(keep.begin(), keep.end());
    QItemSelection selection;
    qsizetype runStart = -1;
    for (qsizetype i = 0; i <= names.size(); ++i) {
      const bool selected = i < names.size() && wanted.contains(names[i]);
      if (selected && runStart < 0) runStart = i;
      if (!selected && runStart >= 0) {
        selection.select(file1Model_->index(static_cast<int>(runStart)), file1Model_->index(static_cast<int>(i - 1)));
        runStart = -1;
      }
      if (i < names.size() && names[i] == keepCurrent)
        file1_->selectionModel()->setCurrentIndex(file1Model_->index(static_cast<int>(i)), QItemSelectionModel::NoUpdate);
    }
    file1_->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
  }
}

bool FilePane::ChangeFolder(const std::string& folder) {
  if (!IsFolder(folder)) return false;
  // The list shows what the caption names in every mode: a shown list follows
  // the folder at once.
  if (listViewShown()) {
    // Going to the folder shown already is a refresh: the selection stays.
    FillDirList(folder, WithTrailingSeparator(folder) == listedFolder_);
    return true;
  }
  ReadFolder(folder);
  SetDriveFor(folder_);
  return true;
}

void FilePane::SetDriveFor(const std::string& folder) {
  int best = -1;
  qsizetype bestLength = -1;
  const QString path = QString::fromStdString(folder);
  for (int i = 0; i < drive1_->count(); ++i) {
    QString root = drive1_->itemData(i).toString();
    if (!root.endsWith('/')) root += '/';
    if (path.startsWith(root) && root.size() > bestLength) {
      best = i;
      bestLength = root.size();
    }
  }
  if (best >= 0) {
    const QSignalBlocker quiet(drive1_);
    for (int i = 0; i < drive1_->count(); ++i) drive1_->setItemText(i, drive1_->itemData(i).toString());
    drive1_->setItemText(best, MountText(path));
    drive1_->setCurrentIndex(best);
  }
}

void FilePane::FillDirList(const std::string& requested, bool keepSelection) {
  // The selection is kept by name, not by row: the new listing may hold more or
  // fewer entries above it, and the sort comes after the fill.
  QStringList remembered;
  QString rememberedCurrent;
  if (keepSelection) {
    remembered = SelectedTexts();
    const QModelIndex current = listView_->selection()->currentIndex();
    if (current.isValid()) rememberedCurrent = model_->item(current.row()).text;
  }
  const HourGlass wait;
  std::string path = requested;
  const bool up = path == ".." || path == std::string("..") + kPathSeparator;
  if (up) path = ParentFolder(folder_.empty() ? folder() : folder_);
  if (!IsFolder(path)) return;
  path = WithTrailingSeparator(path);
  ReadFolder(path);
  SetDriveFor(path);
  listView_->setUpdatesEnabled(false);

  std::vector<LvItem> items;
  items.reserve(files_.size() + dir1_->subfolders().size() + 1);
  if (!IsRootFolder(path)) {
    LvItem parent;
    parent.text = " ..";
    parent.sizeText = " ";
    parent.icon = kIconParent;
    items.push_back(parent);
  }
  for (const DirEntry& f : files_) {
    LvItem item;
    item.text = QString::fromStdString(f.name);
    item.length = f.length;
    item.sizeText = QString::fromStdString(FormatSize(f.length));
    item.icon = IconOfFile(f.name);
    item.modified = f.modified;
    item.hasTime = f.hasTime;
    if (f.hasTime) item.dateText = DateText(f.modified);
    items.push_back(std::move(item));
  }
  if (!folderBoxShown_) {
    for (const DirEntry& d : dir1_->subfolders()) {
      LvItem item;
      item.text = " " + QString::fromStdString(d.name);
      item.sizeText = " ";
      item.icon = kIconFolder;
      item.modified = d.modified;
      item.hasTime = d.hasTime;
      if (d.hasTime) item.dateText = DateText(d.modified);
      items.push_back(std::move(item));
    }
  }
  model_->SetItems(std::move(items));
  model_->SetFolder(QString::fromStdString(path));
  listedFolder_ = path;
  if (shared_.prefs && shared_.prefs->AutoColumnWidth() && listView_->view() == FileListView::kDetails)
    listView_->OptimalWidth();
  SortList();
  if (keepSelection && (!remembered.isEmpty() || !rememberedCurrent.isEmpty()))
    SelectTexts(remembered, rememberedCurrent);
  listView_->setUpdatesEnabled(true);
}

void FilePane::SortList() {
  const int column = std::clamp(sortColumn_, 0, 2);
  model_->sort(column, shared_.columnSortAscending[static_cast<size_t>(column)] ? Qt::AscendingOrder
                                                                                : Qt::DescendingOrder);
  listView_->details()->header()->setSortIndicatorShown(true);
  listView_->details()->header()->setSortIndicator(
      column, shared_.columnSortAscending[static_cast<size_t>(column)] ? Qt::AscendingOrder : Qt::DescendingOrder);
}

void FilePane::Refresh(bool keepSelection) {
  const std::string current = folder();
  if (current.empty()) return;
  if (listViewShown()) {
    FillDirList(current, keepSelection);
  } else {
    ReadFolder(current);
  }
}

void FilePane::Dir1_Change() {
  if (!dir1_->isEnabled()) return;
  // A pick in the folder box, beside the list or instead of its folder
  // entries, shows in the list at once.
  if (listViewShown() && listedFolder_ != folder()) FillDirList(folder());
  DrawDirLabel();
  emit folderChanged(pane_);
}

void FilePane::Drive1_Change(int index) {
  emit activated(pane_);
  const std::string root = drive1_->itemData(index).toString().toStdString();
  // A volume that can't be read leaves the pane as it was.
  if (!ChangeFolder(root)) return;
  DrawDirLabel();
  emit folderChanged(pane_);
}

void FilePane::ApplyPattern(const std::string& pattern) {
  pattern_ = pattern;
  if (folder().empty()) return;
  if (listViewShown()) {
    FillDirList(folder());
  } else {
    ReadFolder(folder());
  }
}

void FilePane::Combo1_Click(int entry) {
  if (entry < 0 || entry >= kMaskEntryCount) return;
  typedMask_ = false;
  const QSignalBlocker quiet(combo1_);
  combo1_->setCurrentIndex(entry);
  ApplyPattern(MaskPattern(entry, shared_.pluginTypePattern));
}

void FilePane::Combo1_KeyPress(int key) {
  if (key != 13) return;
  const QString text = combo1_->currentText();
  const int entry = combo1_->findText(text, Qt::MatchExactly);
  if (entry >= 0) {
    Combo1_Click(entry);
    return;
  }
  typedMask_ = true;
  ApplyPattern(text.toStdString());
}

void FilePane::SetTypedMask(const QString& text) {
  const QSignalBlocker quiet(combo1_);
  combo1_->setCurrentIndex(-1);
  combo1_->setEditText(text);
  typedMask_ = true;
}

int FilePane::maskEntry() const {
  // Text typed over an entry, even unconfirmed, means no entry is selected.
  const int entry = combo1_->currentIndex();
  if (typedMask_ || entry < 0 || combo1_->currentText() != combo1_->itemText(entry)) return -1;
  return entry;
}

QString FilePane::maskText() const { return combo1_->currentText(); }

void FilePane::DrawDirLabel() {
  const QString path = QString::fromStdString(folder());
  if (path.size() < 4) {
    label6_->setText(path);
    label6_->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    return;
  }
  const int available = label6_->contentsRect().width() - 2 * label6_->margin();
  const bool fits = label6_->fontMetrics().horizontalAdvance(path) <= available;
  // A long path is right-aligned so that its end, the folder's own name, shows.
  label6_->setAlignment((fits ? Qt::AlignLeft : Qt::AlignRight) | Qt::AlignVCenter);
  label6_->setText(path);
}

void FilePane::GoUp() {
  std::string here = folder();
  if (!here.empty()) here.pop_back();
  const auto cut = here.rfind(kPathSeparator);
  const QString origin = QString::fromStdString(cut == std::string::npos ? here : here.substr(cut + 1));
  FillDirList("..");
  SelectListItem(" " + origin);
}

}  // namespace trel
