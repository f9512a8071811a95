#include "shell/pane/FileListView.h"

#include <QApplication>
#include <QHeaderView>
#include <QDropEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QUrl>
#include <QListView>
#include <QStackedLayout>
#include <QTreeView>

#include "shell/pane/FileListModel.h"

namespace trel {

FileListView::FileListView(FileListModel* model, const QString& objectName, QWidget* parent)
    : QWidget(parent), model_(model) {
  setObjectName(objectName);
  details_ = new QTreeView(this);
  details_->setObjectName(objectName + "_details");
  details_->setRootIsDecorated(false);
  details_->setItemsExpandable(false);
  details_->setUniformRowHeights(true);
  details_->setSortingEnabled(false);  // the pane sorts, with its shared directions
  details_->setAllColumnsShowFocus(true);
  details_->setModel(model);
  details_->header()->setSectionsClickable(true);
  details_->header()->setStretchLastSection(true);
  details_->header()->resizeSection(0, 220);

  icons_ = new QListView(this);
  icons_->setObjectName(objectName + "_icons");
  icons_->setModel(model);
  icons_->setSelectionModel(details_->selectionModel());
  icons_->setUniformItemSizes(true);
  icons_->setResizeMode(QListView::Adjust);
  icons_->setWrapping(true);

  for (QAbstractItemView* v : {static_cast<QAbstractItemView*>(details_), static_cast<QAbstractItemView*>(icons_)}) {
    v->setSelectionMode(QAbstractItemView::ExtendedSelection);
    v->setSelectionBehavior(QAbstractItemView::SelectRows);
    v->setEditTriggers(QAbstractItemView::NoEditTriggers);
    v->setDragEnabled(true);
    v->setDragDropMode(QAbstractItemView::DragDrop);
    v->setDefaultDropAction(Qt::MoveAction);
    v->viewport()->setAcceptDrops(true);
    v->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(v, &QWidget::customContextMenuRequested, this,
            [this, v](const QPoint& pos) { emit contextMenuRequested(v->viewport()->mapToGlobal(pos)); });
    v->installEventFilter(this);
    v->viewport()->installEventFilter(this);
    connect(v, &QAbstractItemView::doubleClicked, this, [this](const QModelIndex& index) {
      if (index.isValid()) emit rowActivated(index.row());
    });
  }

  stack_ = new QStackedLayout(this);
  stack_->setContentsMargins(0, 0, 0, 0);
  stack_->addWidget(details_);
  stack_->addWidget(icons_);
  SetView(kDetails);
}

void FileListView::SetView(int view) {
  if (view < kLargeIcons || view > kDetails) return;
  view_ = view;
  if (view == kDetails) {
    model_->SetLargeIcons(false);
    stack_->setCurrentWidget(details_);
    return;
  }
  model_->SetLargeIcons(view == kLargeIcons);
  if (view == kLargeIcons) {
    icons_->setViewMode(QListView::IconMode);
    icons_->setFlow(QListView::LeftToRight);
    icons_->setIconSize(QSize(32, 32));
    icons_->setGridSize(QSize(96, 64));
    icons_->setWordWrap(true);
  } else {
    icons_->setViewMode(QListView::ListMode);
    // Small Icons run in rows, List in columns.
    icons_->setFlow(view == kSmallIcons ? QListView::LeftToRight : QListView::TopToBottom);
    icons_->setIconSize(QSize(16, 16));
    icons_->setGridSize(view == kSmallIcons ? QSize(160, 20) : QSize());
    icons_->setWordWrap(false);
  }
  icons_->setWrapping(true);
  icons_->setMovement(QListView::Static);
  stack_->setCurrentWidget(icons_);
}

QAbstractItemView* FileListView::current() const {
  return view_ == kDetails ? static_cast<QAbstractItemView*>(details_) : icons_;
}

QItemSelectionModel* FileListView::selection() const { return details_->selectionModel(); }

int FileListView::RowAt(const QPoint& viewportPos) const {
  const QModelIndex index = current()->indexAt(viewportPos);
  return index.isValid() ? index.row() : -1;
}

QList<int> FileListView::SelectedRows() const {
  QList<int> rows;
  for (const QModelIndex& index : selection()->selectedRows(0)) rows.append(index.row());
  std::sort(rows.begin(), rows.end());
  return rows;
}

void FileListView::SelectOnly(int row) {
  if (row < 0 || row >= model_->rowCount()) return;
  const QModelIndex index = model_->index(row, 0);
  selection()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
}

void FileListView::ScrollTo(int row) {
  if (row < 0 || row >= model_->rowCount()) return;
  current()->scrollTo(model_->index(row, 0));
}

void FileListView::OptimalWidth() {
  for (int column = 0; column < 3; ++column) details_->resizeColumnToContents(column);
}

void FileListView::StartEdit(int row) {
  if (row < 0 || row >= model_->rowCount()) return;
  const QModelIndex index = model_->index(row, 0);
  current()->setCurrentIndex(index);
  current()->edit(index);
}

bool FileListView::IsOwnView(const QObject* object) const {
  return object == details_ || object == icons_ || object == details_->viewport() || object == icons_->viewport();
}

bool FileListView::eventFilter(QObject* watched, QEvent* event) {
  const bool onViewport = watched == details_->viewport() || watched == icons_->viewport();
  if (onViewport && (event->type() == QEvent::DragEnter || event->type() == QEvent::DragMove)) {
    auto* drag = static_cast<QDragMoveEvent*>(event);
    if (!drag->mimeData()->hasUrls()) return false;
    // A folder under the pointer is where the drop goes; it shows so.
    const int row = RowAt(drag->position().toPoint());
    const bool folder = row >= 0 && model_->item(row).icon == 1;
    if (dropHighlight_ != row) {
      dropHighlight_ = folder ? row : -1;
      if (folder) current()->scrollTo(model_->index(row, 0));
    }
    // Within one list only a folder takes a drop.
    if (IsOwnView(drag->source()) && !folder) {
      drag->ignore();
      return true;
    }
    drag->setDropAction(Qt::MoveAction);
    drag->accept();
    return true;
  }
  if (onViewport && event->type() == QEvent::Drop) {
    auto* drop = static_cast<QDropEvent*>(event);
    QStringList paths;
    for (const QUrl& url : drop->mimeData()->urls())
      if (url.isLocalFile()) paths << url.toLocalFile();
    const int row = RowAt(drop->position().toPoint());
    dropHighlight_ = -1;
    drop->setDropAction(Qt::MoveAction);
    drop->accept();
    if (!paths.isEmpty()) emit filesDropped(paths, row, drop->source());
    return true;
  }
  if (event->type() == QEvent::KeyPress && (watched == details_ || watched == icons_)) {
    auto* key = static_cast<QKeyEvent*>(event);
    // The Return that ends an in-place rename comes up from the edit box;
    // it belongs to the rename and must not open the file as well.
    if (QWidget* focus = QApplication::focusWidget(); focus && focus != watched && static_cast<QWidget*>(watched)->isAncestorOf(focus)) {
      if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) return true;
      return QWidget::eventFilter(watched, event);
    }
    if (key->key() == Qt::Key_Backspace || key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
      emit keyPressed(key->key() == Qt::Key_Enter ? Qt::Key_Return : key->key(), key->modifiers());
      return true;
    }
  } else if (event->type() == QEvent::FocusIn || event->type() == QEvent::MouseButtonPress) {
    emit gotFocus();
  }
  return QWidget::eventFilter(watched, event);
}

}  // namespace trel
