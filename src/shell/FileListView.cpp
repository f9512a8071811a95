#include "shell/FileListView.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QListView>
#include <QStackedLayout>
#include <QTreeView>

#include "shell/FileListModel.h"

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

bool FileListView::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress && (watched == details_ || watched == icons_)) {
    auto* key = static_cast<QKeyEvent*>(event);
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
