#include "shell/pane/FilePane.h"

#include "shell/fflview/FflViewPage.h"
#include "shell/pluginview/PluginViewPage.h"

#include <QApplication>
#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QHBoxLayout>
#include <QHash>
#include <QHeaderView>
#include <QDropEvent>
#include <QFileSystemWatcher>
#include <QTimer>
#include <QKeyEvent>
#include <QMimeData>
#include <QUrl>
#include <QMouseEvent>
#include <QWindow>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QLocale>
#include <QStorageInfo>
#include <QStringListModel>
#include <QStyle>
#include <QTabWidget>
#include <QToolButton>
#include <QTreeView>
#include <QVBoxLayout>
#include <algorithm>
#include <ctime>

#include "base/Paths.h"
#include "settings/Preferences.h"
#include "shell/pane/DirListBox.h"
#include "shell/pane/FileListModel.h"
#include "shell/pane/FileListView.h"
#include "shell/pane/PaneRules.h"
#include "shell/pane/ShellAccessible.h"

namespace trel {

namespace {

QString Named(const char* control, int pane) { return QString("%1_%2").arg(control).arg(pane); }

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

FilePane::FilePane(int pane, PaneShared& shared, QWidget* parent)
    : QWidget(parent), pane_(pane), shared_(shared) {
  setObjectName(Named("Pane", pane));
  InstallShellAccessibility();
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  tabs_ = new QTabWidget(this);
  tabs_->setObjectName(Named("SSTab1", pane));
  layout->addWidget(tabs_);

  auto* filePage = new QWidget;
  filePage->setObjectName(Named("FileViewPage", pane));
  BuildFileView(filePage);
  // The Plugin View and FFL View pages are filled by the category browser and
  // the library list.
  pluginPage_ = new PluginViewPage(pane);
  fflPage_ = new FflViewPage(pane);
  tabs_->addTab(filePage, "File View");
  tabs_->addTab(pluginPage_, "Plugin View");
  tabs_->addTab(fflPage_, "FFL View");
  connect(tabs_, &QTabWidget::currentChanged, this, &FilePane::SSTab1_Click);
  tabs_->installEventFilter(this);

  watcher_ = new QFileSystemWatcher(this);
  watchDelay_ = new QTimer(this);
  watchDelay_->setSingleShot(true);
  watchDelay_->setInterval(300);
  connect(watcher_, &QFileSystemWatcher::directoryChanged, watchDelay_, qOverload<>(&QTimer::start));
  connect(watchDelay_, &QTimer::timeout, this, &FilePane::FolderChangedOutside);
}

void FilePane::Watch(const std::string& folder) {
  const QString path = watchPaused_ ? QString() : QString::fromStdString(folder);
  const QStringList watched = watcher_->directories();
  if (watched.size() == 1 && watched.front() == path) return;
  if (!watched.isEmpty()) watcher_->removePaths(watched);
  if (!path.isEmpty()) watcher_->addPath(path);
}

void FilePane::PauseWatching(bool paused, bool refreshAfter) {
  if (paused == watchPaused_) return;
  watchPaused_ = paused;
  Watch(folder_);
  if (!paused && refreshAfter) watchDelay_->start();
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

void FilePane::BuildFileView(QWidget* page) {
  auto* column = new QVBoxLayout(page);
  column->setContentsMargins(2, 2, 2, 2);
  column->setSpacing(2);

  auto* top = new QHBoxLayout;
  drive1_ = new QComboBox(page);
  drive1_->setObjectName(Named("Drive1", pane_));
  drive1_->setAccessibleName(pane_ == 0 ? "Left pane mount" : "Right pane mount");
  for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
    if (!volume.isValid() || !volume.isReady()) continue;
    const QString root = volume.rootPath();
    if (drive1_->findData(root) < 0) drive1_->addItem(root, root);
  }
  drive1_->model()->sort(0);
  drive1_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  drive1_->setMinimumContentsLength(12);
  connect(drive1_, &QComboBox::activated, this, &FilePane::Drive1_Change);
  top->addWidget(drive1_, 1);

  auto button = [&](const char* name, QStyle::StandardPixmap icon, const char* tip) {
    auto* b = new QToolButton(page);
    b->setObjectName(Named(name, pane_));
    b->setIcon(style()->standardIcon(icon));
    b->setToolTip(tip);
    b->setAccessibleName(tip);
    b->setAutoRaise(true);  // the frame shows on hover
    top->addWidget(b);
    return b;
  };
  image2_ = button("Image2", QStyle::SP_FileDialogDetailedView, "Choose File View Mode");
  image4_ = button("Image4", QStyle::SP_BrowserReload, "Synchronize both panes");
  image5_ = button("Image5", QStyle::SP_DirIcon, "Display folder box");
  image6_ = button("Image6", QStyle::SP_DesktopIcon, "Desktop");
  connect(image2_, &QToolButton::clicked, this, [this] {
    emit viewModeMenuRequested(pane_, image2_->mapToGlobal(QPoint(0, image2_->height())));
  });
  connect(image4_, &QToolButton::clicked, this, [this] { emit synchronizeRequested(pane_); });
  connect(image5_, &QToolButton::clicked, this, [this] {
    emit activated(pane_);
    Image5_Click();
  });
  connect(image6_, &QToolButton::clicked, this, [this] { emit fixedFolderRequested(pane_); });
  column->addLayout(top);

  label6_ = new QLabel(page);
  label6_->setObjectName(Named("Label6", pane_));
  label6_->setToolTip("Right click to display Folders context menu");
  label6_->setAccessibleName(pane_ == 0 ? "Left pane folder" : "Right pane folder");
  label6_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  label6_->setFrameShape(QFrame::StyledPanel);
  label6_->installEventFilter(this);
  column->addWidget(label6_);

  auto* body = new QHBoxLayout;
  dir1_ = new DirListBox(Named("Dir1", pane_), page);
  dir1_->setAccessibleName(pane_ == 0 ? "Left pane folders" : "Right pane folders");
  dir1_->hide();
  dir1_->viewport()->setAcceptDrops(true);
  dir1_->viewport()->installEventFilter(this);
  connect(dir1_, &DirListBox::entryChosen, this, [this](const QString& path) {
    if (ChangeFolder(path.toStdString())) Dir1_Change();
  });
  connect(dir1_, &DirListBox::gotFocus, this, [this] { emit activated(pane_); });
  body->addWidget(dir1_, 1);

  model_ = new FileListModel(this);
  listView_ = new FileListView(model_, Named("ListView1", pane_), page);
  listView_->setAccessibleName(pane_ == 0 ? "Left pane files" : "Right pane files");
  listView_->details()->setAccessibleName(listView_->accessibleName());
  listView_->icons()->setAccessibleName(listView_->accessibleName());
  connect(listView_, &FileListView::rowActivated, this, &FilePane::ListView1_DblClick);
  connect(listView_, &FileListView::keyPressed, this, &FilePane::ListView1_KeyDown);
  connect(listView_, &FileListView::gotFocus, this, [this] { emit activated(pane_); });
  connect(listView_->details()->header(), &QHeaderView::sectionClicked, this,
          &FilePane::ListView1_ColumnClick);
  connect(listView_, &FileListView::contextMenuRequested, this,
          [this](QPoint globalPos) { emit contextMenuRequested(pane_, globalPos); });
  connect(model_, &FileListModel::labelEdited, this,
          [this](int, const QString& oldText, const QString& newText) { emit labelEdited(pane_, oldText, newText); });
  connect(listView_, &FileListView::filesDropped, this, [this](const QStringList& paths, int row, QObject* source) {
    QString onto;
    if (row >= 0 && row < model_->rowCount() && model_->item(row).icon == kIconFolder)
      onto = QString::fromStdString(folder()) + model_->item(row).text.mid(1);
    const bool own = OwnsWidget(source);
    if (own && onto.isEmpty()) return;  // within one list only a folder takes a drop
    emit filesDropped(pane_, paths, onto, own ? pane_ : source ? -2 : -1);
  });
  body->addWidget(listView_, 2);

  file1_ = new QListView(page);
  file1_->setObjectName(Named("File1", pane_));
  file1_->setAccessibleName(listView_->accessibleName());
  file1Model_ = new QStringListModel(this);
  file1_->setModel(file1Model_);
  file1_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  file1_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  file1_->setUniformItemSizes(true);
  file1_->installEventFilter(this);
  file1_->viewport()->installEventFilter(this);
  file1_->setContextMenuPolicy(Qt::CustomContextMenu);
  file1_->viewport()->setAcceptDrops(true);
  connect(file1_, &QWidget::customContextMenuRequested, this,
          [this](const QPoint& pos) { emit contextMenuRequested(pane_, file1_->viewport()->mapToGlobal(pos)); });
  file1_->hide();
  connect(file1_, &QListView::doubleClicked, this, [this](const QModelIndex& index) {
    if (index.isValid()) emit fileDblClicked(pane_);
  });
  connect(file1_->selectionModel(), &QItemSelectionModel::selectionChanged, this, &FilePane::File1_Click);
  body->addWidget(file1_, 2);
  column->addLayout(body, 1);

  combo1_ = new QComboBox(page);
  combo1_->setObjectName(Named("Combo1", pane_));
  combo1_->setEditable(true);
  combo1_->setInsertPolicy(QComboBox::NoInsert);
  combo1_->setToolTip("Select or enter the displayed file types");
  combo1_->setAccessibleName("Displayed file types");
  combo1_->lineEdit()->setAccessibleName(combo1_->accessibleName());
  for (const char* entry : kMaskEntries) combo1_->addItem(entry);
  combo1_->setCurrentIndex(0);
  connect(combo1_, &QComboBox::activated, this, [this](int index) {
    emit activated(pane_);
    Combo1_Click(index);
  });
  connect(combo1_->lineEdit(), &QLineEdit::returnPressed, this, [this] { Combo1_KeyPress(13); });
  column->addWidget(combo1_);
}

std::string FilePane::folder() const { return dir1_->path(); }

bool FilePane::listViewShown() const { return !listView_->isHidden(); }

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
    QItemSelection selection;
    for (qsizetype i = 0; i < names.size(); ++i) {
      const QModelIndex index = file1Model_->index(static_cast<int>(i));
      if (keep.contains(names[i])) selection.select(index, index);
      if (names[i] == keepCurrent) file1_->selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
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

QStringList FilePane::SelectedTexts() const {
  QStringList texts;
  for (int row : listView_->SelectedRows()) texts.append(model_->item(row).text);
  return texts;
}

void FilePane::SelectTexts(const QStringList& texts, const QString& current) {
  QItemSelection selection;
  int currentRow = -1;
  for (int row = 0; row < model_->rowCount(); ++row) {
    const QString& text = model_->item(row).text;
    if (texts.contains(text)) selection.select(model_->index(row, 0), model_->index(row, 2));
    if (text == current) currentRow = row;
  }
  QItemSelectionModel* model = listView_->selection();
  if (currentRow >= 0) model->setCurrentIndex(model_->index(currentRow, 0), QItemSelectionModel::NoUpdate);
  model->select(selection, QItemSelectionModel::ClearAndSelect);
  if (currentRow >= 0) listView_->ScrollTo(currentRow);
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

void FilePane::SetViewMode(int mode) {
  if (mode < 0 || mode > kClassic) return;
  if (mode < kClassic) {
    file1_->hide();
    dir1_->setVisible(folderBoxShown_);
    listView_->show();
    image5_->show();
    DrawDirLabel();
    listView_->SetView(mode);
    listView_->current()->setFocus();
    if (listedFolder_ != folder() && !folder().empty()) FillDirList(folder());
  } else {
    file1_->show();
    dir1_->show();
    listView_->hide();
    image5_->hide();
    label6_->clear();
    file1_->setFocus();
  }
}

int FilePane::DetermineFileViewMode() const {
  return file1_->isHidden() ? listView_->view() : kClassic;
}

void FilePane::Image5_Click() {
  if (!folderBoxShown_) {
    // Folder entries leave the list; the parent entry stays.
    for (int row = model_->rowCount() - 1; row >= 0; --row)
      if (model_->item(row).icon == kIconFolder) model_->RemoveRow(row);
    dir1_->show();
    folderBoxShown_ = true;
    image5_->setToolTip("Hide folder box");
    image5_->setAccessibleName(image5_->toolTip());
    if (shared_.prefs && shared_.prefs->AutoColumnWidth() && listView_->view() == FileListView::kDetails)
      listView_->OptimalWidth();
  } else {
    dir1_->hide();
    folderBoxShown_ = false;
    image5_->setToolTip("Display folder box");
    image5_->setAccessibleName(image5_->toolTip());
    FillDirList(folder(), true);
  }
}

void FilePane::SetSortColumn(int column) { sortColumn_ = std::clamp(column, 0, 2); }

void FilePane::ListView1_ColumnClick(int column) {
  if (column < 0 || column > 2) return;
  emit activated(pane_);
  const QList<int> rows = listView_->SelectedRows();
  const QString selected = rows.isEmpty() ? QString() : model_->item(rows.first()).text;
  auto& ascending = shared_.columnSortAscending[static_cast<size_t>(column)];
  ascending = !ascending;
  sortColumn_ = column;
  SortList();
  if (!selected.isNull()) {
    const int row = model_->FindText(selected);
    listView_->ScrollTo(row);
  }
}

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

void FilePane::File1_Click() {
  if (!file1_->isEnabled()) return;
  if (file1_->isHidden()) return;
  int64_t total = 0;
  for (const QModelIndex& index : file1_->selectionModel()->selectedRows()) {
    const size_t row = static_cast<size_t>(index.row());
    if (row < files_.size() && files_[row].length > 0) total = AddKilobytes(total, files_[row].length);
  }
  selectionK_ = total;
  label6_->setAlignment(Qt::AlignCenter);
  label6_->setText(QString::number(total) + " K");
}

QString FilePane::File1Current() const {
  const QModelIndex index = file1_->currentIndex();
  return index.isValid() ? index.data().toString() : QString();
}

bool FilePane::SelectInFile1(const QString& name) {
  const QStringList names = file1Model_->stringList();
  for (qsizetype i = 0; i < names.size(); ++i) {
    if (names[i].compare(name, Qt::CaseInsensitive) == 0) {
      const QSignalBlocker quiet(file1_->selectionModel());
      file1_->selectionModel()->setCurrentIndex(file1Model_->index(static_cast<int>(i)),
                                                QItemSelectionModel::ClearAndSelect);
      return true;
    }
  }
  return false;
}

void FilePane::SelectListItem(const QString& text) {
  for (int row = 0; row < model_->rowCount(); ++row) {
    if (model_->item(row).text.compare(text, Qt::CaseInsensitive) == 0) {
      listView_->SelectOnly(row);
      listView_->ScrollTo(row);
      return;
    }
  }
}

void FilePane::SetActiveLook(bool active) {
  // The passive pane looks grey: its lists take the colour of buttons.
  const QColor colour = QApplication::palette().color(active ? QPalette::Base : QPalette::Button);
  for (QWidget* w : {static_cast<QWidget*>(file1_), static_cast<QWidget*>(listView_->details()),
                     static_cast<QWidget*>(listView_->icons())}) {
    QPalette palette = w->palette();
    palette.setColor(QPalette::Base, colour);
    w->setPalette(palette);
  }
}

void FilePane::FocusList() {
  if (listViewShown()) {
    listView_->current()->setFocus();
  } else {
    file1_->setFocus();
  }
}

bool FilePane::OwnsWidget(const QObject* object) const {
  return object && (listView_->IsOwnView(object) || object == file1_ || object == file1_->viewport());
}

void FilePane::GoUp() {
  std::string here = folder();
  if (!here.empty()) here.pop_back();
  const auto cut = here.rfind(kPathSeparator);
  const QString origin = QString::fromStdString(cut == std::string::npos ? here : here.substr(cut + 1));
  FillDirList("..");
  SelectListItem(" " + origin);
}

void FilePane::ListView1_DblClick(int row) {
  if (row < 0 || row >= model_->rowCount()) return;
  const LvItem item = model_->item(row);
  if (IsFileIcon(item.icon)) {
    if (SelectInFile1(item.text)) emit fileDblClicked(pane_);
    return;
  }
  if (item.icon == kIconParent) {
    GoUp();
  } else {
    FillDirList(folder() + item.text.mid(1).toStdString());
  }
  DrawDirLabel();
  emit folderChanged(pane_);
}

void FilePane::ListView1_KeyDown(int key, Qt::KeyboardModifiers modifiers) {
  const bool alt = modifiers & Qt::AltModifier;
  const bool plain = (modifiers & (Qt::AltModifier | Qt::ControlModifier | Qt::ShiftModifier)) == 0;
  if (key == Qt::Key_Backspace && plain) {
    GoUp();
    DrawDirLabel();
    emit folderChanged(pane_);
  } else if (key == Qt::Key_Return && alt) {
    emit fileInformationRequested(pane_);
  } else if (key == Qt::Key_Return && plain) {
    const QList<int> rows = listView_->SelectedRows();
    for (int row : rows) {
      if (!IsFileIcon(model_->item(row).icon)) {
        ListView1_DblClick(row);
        return;
      }
    }
    if (!rows.isEmpty()) ListView1_DblClick(rows.first());
  }
}

void FilePane::File1_KeyDown(int key, Qt::KeyboardModifiers modifiers) {
  const bool alt = modifiers & Qt::AltModifier;
  if (key == Qt::Key_Return && alt) {
    emit fileInformationRequested(pane_);
  } else if (key == Qt::Key_Return) {
    if (!File1Current().isEmpty()) emit fileDblClicked(pane_);
  } else if (key == Qt::Key_Backspace) {
    const int above = dir1_->CurrentRow() - 1;
    if (above >= 0 && ChangeFolder(dir1_->EntryPath(above))) Dir1_Change();
  }
}

void FilePane::SSTab1_Click(int tab) {
  paneView_ = tab + 1;
  emit activated(pane_);
  emit viewChanged(pane_);
}

void FilePane::SelectTab(int view) {
  if (view >= kFileView && view <= kFFLView) tabs_->setCurrentIndex(view - 1);
}

bool FilePane::eventFilter(QObject* watched, QEvent* event) {
  if (watched == label6_ && event->type() == QEvent::MouseButtonPress) {
    auto* mouse = static_cast<QMouseEvent*>(event);
    if (mouse->button() == Qt::RightButton) {
      emit folderMenuRequested(pane_, mouse->globalPosition().toPoint());
      return true;
    }
    // The caption moves the window like its title bar does.
    if (mouse->button() == Qt::LeftButton && window()->windowHandle()) {
      window()->windowHandle()->startSystemMove();
      return true;
    }
  }
  // The classic list and the folder box take files dropped on them as a move
  // into the pane's folder, as the list does.
  if ((watched == file1_->viewport() || watched == dir1_->viewport()) &&
      (event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove || event->type() == QEvent::Drop)) {
    auto* drop = static_cast<QDropEvent*>(event);
    if (!drop->mimeData()->hasUrls() || OwnsWidget(drop->source())) {
      drop->ignore();
      return true;
    }
    drop->setDropAction(Qt::MoveAction);
    drop->accept();
    if (event->type() == QEvent::Drop) {
      QStringList paths;
      for (const QUrl& url : drop->mimeData()->urls())
        if (url.isLocalFile()) paths << url.toLocalFile();
      if (!paths.isEmpty()) emit filesDropped(pane_, paths, {}, drop->source() ? -2 : -1);
    }
    return true;
  }
  if (watched == file1_ && event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter || key->key() == Qt::Key_Backspace) {
      File1_KeyDown(key->key() == Qt::Key_Enter ? Qt::Key_Return : key->key(), key->modifiers());
      return true;
    }
  }
  if ((watched == file1_ || watched == file1_->viewport() || watched == tabs_) &&
      (event->type() == QEvent::FocusIn || event->type() == QEvent::MouseButtonPress)) {
    emit activated(pane_);
  }
  return QWidget::eventFilter(watched, event);
}

void FilePane::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (listViewShown()) DrawDirLabel();
}

}  // namespace trel

namespace trel {
QWidget* FilePane::pluginViewPage() const { return pluginPage_; }
QWidget* FilePane::fflViewPage() const { return fflPage_; }
}  // namespace trel
