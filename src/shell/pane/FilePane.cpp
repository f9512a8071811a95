// A pane of the window: its three tabs and the File View's controls, built once.
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

void FilePane::SSTab1_Click(int tab) {
  paneView_ = tab + 1;
  emit activated(pane_);
  emit viewChanged(pane_);
}

void FilePane::SelectTab(int view) {
  if (view >= kFileView && view <= kFFLView) tabs_->setCurrentIndex(view - 1);
}

void FilePane::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (listViewShown()) DrawDirLabel();
}

QWidget* FilePane::pluginViewPage() const { return pluginPage_; }

QWidget* FilePane::fflViewPage() const { return fflPage_; }

}  // namespace trel
