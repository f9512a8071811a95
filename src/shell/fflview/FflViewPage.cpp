#include "shell/fflview/FflViewPage.h"
#include "front/UserMessages.h"
#include "settings/Latin1.h"

#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QLabel>
#include <QMimeData>
#include <QTreeWidget>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>
#include <unordered_set>

namespace trel {

namespace {
constexpr int kNumberRole = Qt::UserRole + 1;
QString Named(const char* control, int pane) { return QString("%1_%2").arg(control).arg(pane); }
}  // namespace

FflViewPage::FflViewPage(int pane, QWidget* parent) : QWidget(parent), pane_(pane) {
  setObjectName(QString("FFLViewPage_%1").arg(pane));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(2, 2, 2, 2);
  column->setSpacing(2);
  label_ = new QLabel(this);
  label_->setObjectName(Named("Label8", pane));
  label_->setAccessibleName("Library");
  column->addWidget(label_);
  list_ = new QTreeWidget(this);
  list_->setObjectName(Named("ListView2", pane));
  list_->setAccessibleName("Library entries");
  list_->setColumnCount(3);
  list_->setHeaderLabels({"Category", "Filter Name", "Author"});
  list_->setRootIsDecorated(false);
  list_->setUniformRowHeights(true);
  list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  list_->setAllColumnsShowFocus(true);
  // Clicks on the columns do nothing: the entries stay in library order.
  list_->header()->setSectionsClickable(false);
  list_->setAcceptDrops(true);
  list_->viewport()->setAcceptDrops(true);
  list_->setDropIndicatorShown(false);
  column->addWidget(list_, 1);
  connect(list_, &QTreeWidget::itemDoubleClicked, this,
          [this](QTreeWidgetItem* item) { emit entryOpened(pane_, list_->indexOfTopLevelItem(item)); });
  list_->installEventFilter(this);
  list_->viewport()->installEventFilter(this);
}

bool FflViewPage::eventFilter(QObject* watched, QEvent* event) {
  const QEvent::Type type = event->type();
  if (type == QEvent::FocusIn || type == QEvent::MouseButtonPress) emit activated(pane_);
  if (watched == list_ && type == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && list_->currentItem()) {
      emit entryOpened(pane_, CurrentIndex());
      return true;
    }
    if (key->key() == Qt::Key_Delete && key->modifiers() == Qt::NoModifier) {
      emit deleteRequested(pane_);
      return true;
    }
    if (key->key() == Qt::Key_F && key->modifiers() == Qt::ControlModifier) {
      emit searchRequested(pane_);
      return true;
    }
  }
  if (watched == list_->viewport()) {
    if (type == QEvent::DragEnter || type == QEvent::DragMove) {
      auto* drag = static_cast<QDropEvent*>(event);
      if (drag->mimeData()->hasUrls() && !library_.path.empty()) {
        drag->setDropAction(Qt::CopyAction);
        drag->accept();
      } else {
        drag->ignore();
      }
      return true;
    }
    if (type == QEvent::Drop) {
      auto* drop = static_cast<QDropEvent*>(event);
      std::vector<std::string> paths;
      for (const QUrl& url : drop->mimeData()->urls())
        if (url.isLocalFile()) paths.push_back(url.toLocalFile().toStdString());
      drop->setDropAction(Qt::CopyAction);
      drop->accept();
      if (!paths.empty() && !library_.path.empty()) emit filesDropped(pane_, paths);
      return true;
    }
    if (type == QEvent::ContextMenu) {
      emit contextMenuRequested(pane_, static_cast<QContextMenuEvent*>(event)->globalPos());
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

bool FflViewPage::OpenLibrary(const std::string& path, const FilterEnv& env) {
  FFLLibrary read;
  if (const Expected<void> ok = ReadFFLLibrary(path, read); !ok) {
    env.hooks().Report(ok.error());
    return false;
  }
  library_ = std::move(read);
  Fill();
  return true;
}

bool FflViewPage::Reload(const FilterEnv& env) {
  if (library_.path.empty()) return false;
  const std::vector<int> selected = SelectedNumbers();
  const int current = CurrentNumber();
  if (!OpenLibrary(library_.path, env)) return false;
  SelectNumbers(selected);
  for (int i = 0; i < list_->topLevelItemCount(); ++i) {
    if (NumberAt(i) == current) {
      list_->setCurrentItem(list_->topLevelItem(i), 0, QItemSelectionModel::NoUpdate);
      break;
    }
  }
  return true;
}

void FflViewPage::Close() {
  library_ = FFLLibrary{};
  list_->clear();
  label_->clear();
}

void FflViewPage::Fill() {
  list_->setUpdatesEnabled(false);
  list_->clear();
  QList<QTreeWidgetItem*> items;
  items.reserve(static_cast<qsizetype>(library_.items.size()));
  for (const FFLListItem& entry : library_.items) {
    auto* item = new QTreeWidgetItem({Latin1(entry.category), Latin1(entry.title), Latin1(entry.author)});
    item->setData(0, kNumberRole, entry.number);
    items.push_back(item);
  }
  list_->addTopLevelItems(items);
  list_->setUpdatesEnabled(true);
  QString text = QString::fromStdString(library_.path);
  if (!library_.problem.empty()) text += "  (" + QString::fromStdString(library_.problem) + ")";
  label_->setText(text);
}

int FflViewPage::count() const { return list_->topLevelItemCount(); }

std::vector<int> FflViewPage::SelectedNumbers() const {
  std::vector<int> numbers;
  for (int i = 0; i < list_->topLevelItemCount(); ++i)
    if (list_->topLevelItem(i)->isSelected()) numbers.push_back(NumberAt(i));
  return numbers;
}

int FflViewPage::CurrentIndex() const {
  return list_->currentItem() ? list_->indexOfTopLevelItem(list_->currentItem()) : -1;
}

int FflViewPage::CurrentNumber() const { return NumberAt(CurrentIndex()); }

int FflViewPage::NumberAt(int index) const {
  const QTreeWidgetItem* item = index >= 0 ? list_->topLevelItem(index) : nullptr;
  return item ? item->data(0, kNumberRole).toInt() : 0;
}

void FflViewPage::SelectNumbers(const std::vector<int>& numbers) {
  list_->clearSelection();
  const std::unordered_set<int> wanted(numbers.begin(), numbers.end());
  // Runs of wanted rows become one range each.
  const QAbstractItemModel* model = list_->model();
  const int last = model->columnCount() - 1;
  QItemSelection selection;
  const int rows = list_->topLevelItemCount();
  for (int i = 0; i < rows;) {
    if (!wanted.count(NumberAt(i))) {
      ++i;
      continue;
    }
    int end = i;
    while (end + 1 < rows && wanted.count(NumberAt(end + 1))) ++end;
    selection.select(model->index(i, 0), model->index(end, last));
    i = end + 1;
  }
  list_->selectionModel()->select(selection, QItemSelectionModel::Select);
}

std::vector<std::string> FflViewPage::RowTexts(int index) const {
  const QTreeWidgetItem* item = list_->topLevelItem(index);
  if (!item) return {};
  return {item->text(0).toLatin1().toStdString(), item->text(1).toLatin1().toStdString(),
          item->text(2).toLatin1().toStdString()};
}

void FflViewPage::SelectAllEntries(bool all) {
  // One selection over all rows: item by item is quadratic in the row count.
  const int rows = list_->topLevelItemCount();
  if (rows > 0) {
    const QAbstractItemModel* model = list_->model();
    const QItemSelection range(model->index(0, 0), model->index(rows - 1, model->columnCount() - 1));
    list_->selectionModel()->select(range, all ? QItemSelectionModel::Select : QItemSelectionModel::Toggle);
  }
  list_->setFocus();
}

int FflViewPage::DeleteSelected(UserMessages& messages) {
  const std::vector<int> selected = SelectedNumbers();
  if (selected.empty() ||
      messages.MsgBox("Do you want to delete these/this FFL item(s)?", MsgButtons::YesNo,
                         MsgIcon::Question, "Delete FFL Item") != MsgResult::Yes)
    return 0;
  const std::vector<int> deleted = DeleteFFLItems(library_, selected);
  // The entries stay in the file at their length; only the rows go.
  const std::unordered_set<int> gone(deleted.begin(), deleted.end());
  list_->setUpdatesEnabled(false);
  for (int i = list_->topLevelItemCount() - 1; i >= 0; --i) {
    if (gone.count(NumberAt(i))) delete list_->takeTopLevelItem(i);
  }
  list_->setUpdatesEnabled(true);
  library_.items.erase(std::remove_if(library_.items.begin(), library_.items.end(),
                                      [&](const FFLListItem& item) { return gone.count(item.number) != 0; }),
                       library_.items.end());
  return static_cast<int>(deleted.size());
}

bool FflViewPage::Access::FFLItemTag(int listIndex, int& entryNumber) const {
  entryNumber = page_.NumberAt(listIndex);
  return entryNumber > 0;
}

bool FflViewPage::Access::FFLEntryPosition(int entryNumber, int64_t& position) const {
  position = page_.library().PositionOf(entryNumber);
  return position > 0;
}

}  // namespace trel
