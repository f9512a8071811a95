#include "shell/pluginview/PluginViewPage.h"

#include <QApplication>
#include <QCheckBox>
#include <QDrag>
#include <QDragMoveEvent>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QItemSelectionModel>
#include <QMimeData>
#include <QSignalBlocker>
#include <QSplitter>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>
#include <functional>
#include <initializer_list>

#include "catalogue/CategoryChange.h"
#include "catalogue/EnableState.h"
#include "filter/FilterEnv.h"
#include "base/Paths.h"
#include "base/PluginKinds.h"
#include "settings/Latin1.h"

namespace trel {

namespace {

constexpr const char* kOther = "Other";
constexpr const char* kSeparatorRow = "-------------";
constexpr int kEntryRole = Qt::UserRole + 1;

QString Named(const char* control, int pane) { return QString("%1_%2").arg(control).arg(pane); }
std::string FromLatin1(const QString& s) { return s.toLatin1().toStdString(); }

bool IsActivePhotoshopFilter(const std::string& path) {
  return ClassifyPluginName(path) == PluginName{PluginKind::Photoshop, false, false};
}

bool OneOf(const std::string& s, std::initializer_list<const char*> options) {
  return std::any_of(options.begin(), options.end(), [&](const char* o) { return s == o; });
}

// The filter list: its drag carries the pane and the entries of the rows, and
// the files themselves for any other target.
class FilterListWidget : public QListWidget {
 public:
  FilterListWidget(int pane, QWidget* parent) : QListWidget(parent), pane_(pane) {}
  std::function<std::string(int)> pathOf;

 protected:
  QStringList mimeTypes() const override { return {kFilterDragMime, "text/uri-list"}; }
  QMimeData* mimeData(const QList<QListWidgetItem*>& items) const override {
    auto* data = new QMimeData;
    QByteArray rows = QByteArray::number(pane_);
    QList<QUrl> urls;
    for (QListWidgetItem* item : items) {
      const int entry = item->data(kEntryRole).toInt();
      rows += '\n' + QByteArray::number(entry);
      if (entry > 0 && pathOf) urls << QUrl::fromLocalFile(QString::fromStdString(pathOf(entry)));
    }
    data->setData(kFilterDragMime, rows);
    data->setUrls(urls);
    return data;
  }

 private:
  int pane_;
};

// The category list: filters dragged over it select the row under the pointer,
// which becomes the target of the drop.
class CategoryListWidget : public QListWidget {
 public:
  explicit CategoryListWidget(QWidget* parent) : QListWidget(parent) { setAcceptDrops(true); }
  std::function<void(int sourcePane)> dropped;

 protected:
  void dragEnterEvent(QDragEnterEvent* event) override {
    if (!event->mimeData()->hasFormat(kFilterDragMime)) return event->ignore();
    before_.clear();
    for (int i = 0; i < count(); ++i)
      if (item(i)->isSelected()) before_.push_back(i);
    event->acceptProposedAction();
  }
  // The row under the pointer is selected quietly: the filter list keeps the
  // rows being dragged until the drop.
  void dragMoveEvent(QDragMoveEvent* event) override {
    if (!event->mimeData()->hasFormat(kFilterDragMime)) return event->ignore();
    QListWidgetItem* under = itemAt(event->position().toPoint());
    const QSignalBlocker quiet(this);
    clearSelection();
    if (under) under->setSelected(true);
    viewport()->update();
    event->acceptProposedAction();
  }
  void dragLeaveEvent(QDragLeaveEvent* event) override {
    const QSignalBlocker quiet(this);
    clearSelection();
    for (int i : before_)
      if (i < count()) item(i)->setSelected(true);
    viewport()->update();
    event->accept();
  }
  void dropEvent(QDropEvent* event) override {
    if (!event->mimeData()->hasFormat(kFilterDragMime)) return event->ignore();
    const QByteArray rows = event->mimeData()->data(kFilterDragMime);
    const int sourcePane = rows.left(rows.indexOf('\n')).toInt();
    event->setDropAction(Qt::MoveAction);
    event->accept();
    if (dropped) dropped(sourcePane);
  }

 private:
  std::vector<int> before_;
};

}  // namespace

const std::vector<BuiltinCategory>& BuiltinFilterTable() {
  static const std::vector<BuiltinCategory> table = {
      {"Blur", {"Blur", "Blur More", "Gaussian Blur...", "Motion Blur..."}},
      {"Noise", {"Add Noise...", "Despeckle", "Dust & Scratches", "Median..."}},
      {"Pixelate", {"Facet", "Fragment", "Mosaic..."}},
      {"Sharpen", {"Sharpen", "Sharpen Edges", "Sharpen More", "Unsharp Mask..."}},
      {"Stylize", {"Diffuse...", "Emboss...", "Find Edges", "Trace Contour..."}},
      {"Other", {"Custom...", "High Pass...", "Maximum...", "Minimum...", "Offset..."}},
  };
  return table;
}

bool FilterRowText(const PluginEntry& entry, bool photoshopMode, const PluginTypeTable& table, std::string& text) {
  const std::string suffix = LastFour(entry.path);
  if (IsActivePhotoshopFilter(entry.path)) {
    text = "+ " + entry.title;
    return true;
  }
  // Active plugins of the other kinds, and plugin files of other hosts by their extension.
  const PluginName plugin = ClassifyPluginName(entry.path);
  if ((plugin && !plugin.disabled) ||
      OneOf(suffix, {".vft", ".vfx", ".aft", ".tub", ".aip", ".atn", ".8be", ".8bi", ".8ba", ".8bx", ".8li", ".8by",
                     ".8bp", ".8bc", ".8bs", ".mll", ".tsx"})) {
    if (photoshopMode) return false;
    text = "+ " + entry.title;
    return true;
  }
  if (IsFilterSourceName(entry.path)) {
    if (photoshopMode) return false;
    text = entry.title;
    return true;
  }
  if (!table.isEmpty()) {
    // Only the active name of a typed plugin is marked "+" here.
    for (const PluginType& type : table.PluginTypes) {
      const PluginName typed = ClassifyTypedName(entry.path, type.extension);
      if (typed && !typed.disabled) {
        text = "+ " + entry.title;
        return true;
      }
    }
  }
  if (photoshopMode) return false;
  text = "- " + entry.title;
  return true;
}

PluginViewPage::PluginViewPage(int pane, QWidget* parent) : QWidget(parent), pane_(pane) {
  setObjectName(QString("PluginViewPage_%1").arg(pane));
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(2, 2, 2, 2);
  column->setSpacing(2);

  folderLabel_ = new QLabel(this);
  folderLabel_->setObjectName(Named("Label5", pane));
  folderLabel_->setAccessibleName("Plugin folder");
  column->addWidget(folderLabel_);

  auto* splitter = new QSplitter(Qt::Vertical, this);
  splitter->setObjectName(Named("PluginSplitter", pane));
  auto* cats = new CategoryListWidget(splitter);
  list2_ = cats;
  list2_->setObjectName(Named("List2", pane));
  list2_->setAccessibleName("Categories");
  list2_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  list2_->setDragDropMode(QAbstractItemView::DropOnly);
  list2_->viewport()->setAcceptDrops(true);
  cats->dropped = [this](int sourcePane) {
    if (sourcePane == pane_) emit filtersDroppedOnCategory(pane_);
    else emit filtersDroppedFromOtherPane(pane_, sourcePane);
  };
  auto* filters = new FilterListWidget(pane, splitter);
  list3_ = filters;
  filters->pathOf = [this](int entry) {
    return catalogue_.plugins.Valid(entry) ? catalogue_.plugins[entry].path : std::string();
  };
  list3_->setObjectName(Named("List3", pane));
  list3_->setAccessibleName("Filters");
  list3_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  list3_->setDragEnabled(true);
  list3_->setDragDropMode(QAbstractItemView::DragOnly);
  list3_->setDefaultDropAction(Qt::MoveAction);
  splitter->addWidget(list2_);
  splitter->addWidget(list3_);
  splitter->setStretchFactor(0, 1);
  splitter->setStretchFactor(1, 2);
  column->addWidget(splitter, 1);

  auto* row = new QHBoxLayout;
  check1_ = new QCheckBox("Photoshop Mode", this);
  check1_->setObjectName(Named("Check1", pane));
  check1_->setAccessibleName("Photoshop Mode");
  check1_->setToolTip("Shows the filters as the host's Filter menu lists them");
  row->addWidget(check1_);
  scanLabel_ = new QLabel(this);
  scanLabel_->setObjectName(Named("ScanLabel", pane));
  scanLabel_->setAccessibleName("Scan progress");
  row->addWidget(scanLabel_, 1);
  column->addLayout(row);
  status_ = new QLabel(this);
  status_->setObjectName(Named("Label7", pane));
  status_->setAccessibleName("Filter file");
  status_->setMinimumWidth(40);
  status_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  column->addWidget(status_);

  connect(list2_, &QListWidget::itemSelectionChanged, this, [this] {
    if (!filling_) List2_Click();
  });
  connect(list3_, &QListWidget::currentRowChanged, this, [this] {
    if (!filling_) List3_Click();
  });
  connect(list3_, &QListWidget::itemDoubleClicked, this, [this] { emit informationRequested(pane_); });
  connect(check1_, &QCheckBox::toggled, this, [this](bool on) {
    photoshopMode_ = on;
    Check1_Click();
  });
  for (QWidget* w : {static_cast<QWidget*>(list2_), static_cast<QWidget*>(list3_), list2_->viewport(),
                     list3_->viewport(), static_cast<QWidget*>(check1_)}) {
    w->installEventFilter(this);
  }
}

bool PluginViewPage::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::FocusIn || event->type() == QEvent::MouseButtonPress) emit activated(pane_);
  if (watched == list3_ && event->type() == QEvent::KeyPress) {
    auto* key = static_cast<QKeyEvent*>(event);
    if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && list3_->currentItem()) {
      emit informationRequested(pane_);
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

std::vector<std::string> PluginViewPage::SelectedPaths() const {
  std::vector<std::string> paths;
  for (int i = 0; i < list3_->count(); ++i) {
    const QListWidgetItem* item = list3_->item(i);
    const int entry = item->data(kEntryRole).toInt();
    if (item->isSelected() && catalogue_.plugins.Valid(entry)) paths.push_back(catalogue_.plugins[entry].path);
  }
  return paths;
}

std::string PluginViewPage::CurrentPath() const {
  const QListWidgetItem* item = list3_->currentItem();
  if (!item) return {};
  const int entry = item->data(kEntryRole).toInt();
  return catalogue_.plugins.Valid(entry) ? catalogue_.plugins[entry].path : std::string();
}

void PluginViewPage::SelectAllFilters(bool all) {
  // One selection over all rows: item by item is quadratic in the row count.
  if (list3_->count() > 0) {
    const QAbstractItemModel* model = list3_->model();
    const QItemSelection range(model->index(0, 0), model->index(list3_->count() - 1, 0));
    list3_->selectionModel()->select(range, all ? QItemSelectionModel::Select : QItemSelectionModel::Toggle);
  }
  list3_->setFocus();
}

void PluginViewPage::SetFolderText(const std::string& folder) {
  folder_ = folder;
  folderLabel_->setText(QString::fromStdString(WithTrailingSeparator(folder)));
}

void PluginViewPage::SetScanLabel(const QString& text) { scanLabel_->setText(text); }

void PluginViewPage::SetBusy(bool busy) {
  busy_ = busy;
  list2_->setEnabled(!busy);
  list3_->setEnabled(!busy);
  check1_->setEnabled(!busy);
}

void PluginViewPage::ClearLists() {
  filling_ = true;
  list2_->clear();
  list3_->clear();
  filling_ = false;
  status_->clear();
}

void PluginViewPage::SetCatalogue(PaneCatalogue catalogue) {
  catalogue_ = std::move(catalogue);
  if (photoshopMode_) {
    Check1_Click();
  } else {
    FillCategoryList(catalogue_.categories);
  }
  if (list2_->selectedItems().isEmpty() && list2_->count() > 0) {
    list2_->item(0)->setSelected(true);
    list2_->setCurrentRow(0, QItemSelectionModel::NoUpdate);
  }
  List2_Click();
}

void PluginViewPage::FillCategoryList(const std::vector<std::string>& rows) {
  filling_ = true;
  list2_->clear();
  int widest = 0;
  const QFontMetrics metrics(list2_->font());
  for (const std::string& row : rows) {
    auto* item = new QListWidgetItem(Latin1(row), list2_);
    if (row == kSeparatorRow) item->setFlags(Qt::ItemIsEnabled);  // selects nothing
    widest = std::max(widest, metrics.horizontalAdvance("  " + Latin1(row)));
  }
  list2_->setMinimumWidth(std::min(widest, 200));
  filling_ = false;
}

std::vector<std::string> PluginViewPage::CategoryRows() const {
  std::vector<std::string> rows;
  for (int i = 0; i < list2_->count(); ++i) rows.push_back(FromLatin1(list2_->item(i)->text()));
  return rows;
}

std::vector<std::string> PluginViewPage::SelectedCategories() const {
  std::vector<std::string> rows;
  for (int i = 0; i < list2_->count(); ++i)
    if (list2_->item(i)->isSelected()) rows.push_back(FromLatin1(list2_->item(i)->text()));
  return rows;
}

void PluginViewPage::SelectCategories(const std::vector<std::string>& categories) {
  filling_ = true;
  list2_->clearSelection();
  for (int i = 0; i < list2_->count(); ++i) {
    const std::string text = FromLatin1(list2_->item(i)->text());
    if (std::find(categories.begin(), categories.end(), text) != categories.end()) {
      list2_->item(i)->setSelected(true);
      list2_->setCurrentRow(i, QItemSelectionModel::NoUpdate);
    }
  }
  filling_ = false;
  List2_Click();
}

std::vector<FilterRow> PluginViewPage::Rows() const {
  std::vector<FilterRow> rows;
  rows.reserve(static_cast<size_t>(list3_->count()));
  for (int i = 0; i < list3_->count(); ++i) {
    const QListWidgetItem* item = list3_->item(i);
    rows.push_back({FromLatin1(item->text()), item->data(kEntryRole).toInt(), item->isSelected()});
  }
  return rows;
}

void PluginViewPage::SelectEntries(const std::vector<int>& entries) {
  list3_->clearSelection();
  for (int i = 0; i < list3_->count(); ++i) {
    const int entry = list3_->item(i)->data(kEntryRole).toInt();
    if (std::find(entries.begin(), entries.end(), entry) != entries.end()) {
      list3_->item(i)->setSelected(true);
      list3_->setCurrentRow(i, QItemSelectionModel::NoUpdate);
    }
  }
}

QString PluginViewPage::statusLine() const { return status_->text(); }

void PluginViewPage::FillFilterRows(std::vector<FilterRow> rows) {
  // The list sorts its rows by their text, as a sorted list box does.
  std::stable_sort(rows.begin(), rows.end(),
                   [](const FilterRow& a, const FilterRow& b) { return PaneCatalogue::CategoryLess(a.text, b.text); });
  filling_ = true;
  list3_->setUpdatesEnabled(false);
  list3_->clear();
  for (const FilterRow& row : rows) {
    auto* item = new QListWidgetItem(Latin1(row.text), list3_);
    item->setData(kEntryRole, row.entry);
    // Disabled plugins are told apart by their mark and, at a glance, by grey.
    if (row.text.rfind("- ", 0) == 0) item->setForeground(palette().color(QPalette::Disabled, QPalette::Text));
    if (row.selected) item->setSelected(true);
  }
  // The list scrolls horizontally by itself as wide as its longest row.
  list3_->setUpdatesEnabled(true);
  filling_ = false;
}

void PluginViewPage::List2_Click() {
  if (!folder_.empty()) SetFolderText(folder_);
  std::vector<std::string> collected;
  bool otherSelected = false;
  for (const std::string& category : SelectedCategories()) {
    if (photoshopMode_ && category == kOther) otherSelected = true;
    else collected.push_back(category);
  }
  static const PluginTypeTable kNoTypes;
  const PluginTypeTable& table = table_ ? *table_ : kNoTypes;
  std::vector<FilterRow> rows;
  if (photoshopMode_) {
    for (const BuiltinCategory& b : BuiltinFilterTable()) {
      const bool wanted = (otherSelected && std::string(b.category) == kOther) ||
                          std::find(collected.begin(), collected.end(), b.category) != collected.end();
      if (!wanted) continue;
      for (const char* title : b.filters) rows.push_back({title, 0, false});
    }
  }
  for (int index = 1; index <= catalogue_.plugins.Count(); ++index) {
    const PluginEntry& entry = catalogue_.plugins[index];
    for (const std::string& category : collected) {
      if (entry.category != category) continue;
      std::string text;
      if (FilterRowText(entry, photoshopMode_, table, text)) rows.push_back({text, index, false});
    }
  }
  if (otherSelected) {
    // "Other" catches every active filter whose category has no row of its own.
    std::vector<std::string> listed = CategoryRows();
    listed.erase(std::remove(listed.begin(), listed.end(), kOther), listed.end());
    for (int index = 1; index <= catalogue_.plugins.Count(); ++index) {
      const PluginEntry& entry = catalogue_.plugins[index];
      if (std::find(listed.begin(), listed.end(), entry.category) != listed.end()) continue;
      if (IsActivePhotoshopFilter(entry.path)) rows.push_back({"+ " + entry.title, index, false});
    }
  }
  FillFilterRows(std::move(rows));
  status_->clear();
}

void PluginViewPage::List3_Click() {
  const QListWidgetItem* item = list3_->currentItem();
  if (!item) {
    status_->clear();
    return;
  }
  const std::string path = CurrentPath();
  if (path.empty()) {
    status_->setText(photoshopMode_ ? ">>> This filter is built into Photoshop.exe" : QString());
    return;
  }
  const int64_t size = FileLength(path);
  const QString sizeText = QString(" (%1 K)").arg(size < 0 ? 0 : size / 1024);
  const QString full = QString::fromStdString(path) + sizeText;
  const QFontMetrics metrics(status_->font());
  const int room = status_->width() > 40 ? status_->width() : width();
  if (metrics.horizontalAdvance(full) <= room) {
    status_->setText(full);
  } else {
    status_->setText(" ../" + QFileInfo(QString::fromStdString(path)).fileName() + sizeText);
  }
}

void PluginViewPage::SetPhotoshopMode(bool on) {
  if (check1_->isChecked() == on) return;
  check1_->setChecked(on);  // runs Check1_Click
}

void PluginViewPage::Check1_Click() {
  const std::vector<std::string> selected = SelectedCategories();
  if (photoshopMode_) {
    std::vector<std::string> rows;
    for (const BuiltinCategory& b : BuiltinFilterTable())
      if (std::string(b.category) != kOther) rows.push_back(b.category);
    rows.push_back(kSeparatorRow);
    std::vector<std::string> active;
    for (const std::string& category : catalogue_.categorySnapshot) {
      if (std::find(rows.begin(), rows.end(), category) != rows.end() || category == kOther) continue;
      const bool hasActive = std::any_of(catalogue_.plugins.begin(), catalogue_.plugins.end(), [&](const PluginEntry& e) {
        return e.category == category && IsActivePhotoshopFilter(e.path);
      });
      if (hasActive) active.push_back(category);
    }
    rows.insert(rows.end(), active.begin(), active.end());
    rows.push_back(kOther);
    FillCategoryList(rows);
  } else {
    FillCategoryList(catalogue_.categorySnapshot.empty() ? catalogue_.categories : catalogue_.categorySnapshot);
  }
  SelectCategories(selected);
}

void PluginViewPage::CheckPhotoshopMode() {
  if (!photoshopMode_) return;
  std::vector<std::string> builtin;
  for (const BuiltinCategory& b : BuiltinFilterTable()) builtin.push_back(b.category);
  for (const std::string& row : CategoryRows()) {
    if (row == kOther || row == kSeparatorRow) continue;
    if (std::find(builtin.begin(), builtin.end(), row) != builtin.end()) continue;  // the host's own
    const bool hasActive = std::any_of(catalogue_.plugins.begin(), catalogue_.plugins.end(), [&](const PluginEntry& e) {
      return e.category == row && IsActivePhotoshopFilter(e.path);
    });
    if (!hasActive) {
      setUpdatesEnabled(false);
      Check1_Click();  // off and on again: the list is rebuilt from the catalogue
      setUpdatesEnabled(true);
      return;
    }
  }
}

ChangeCategoryResult PluginViewPage::ChangeCategory(const std::string& target, bool dropped, const FilterEnv& env) {
  std::vector<FilterRow> rows = Rows();
  const size_t snapshotBefore = catalogue_.categorySnapshot.size();
  QApplication::setOverrideCursor(Qt::WaitCursor);
  const ChangeCategoryResult result = cmd_ChangeCategory(kPluginView, catalogue_, rows, target, dropped, env);
  QApplication::restoreOverrideCursor();
  if (result.moved) {
    if (catalogue_.categorySnapshot.size() == snapshotBefore) {
      CheckPhotoshopMode();
    } else if (photoshopMode_) {
      setUpdatesEnabled(false);
      Check1_Click();
      setUpdatesEnabled(true);
    } else {
      FillCategoryList(catalogue_.categorySnapshot);
    }
    SelectCategories({target});
  } else if (!result.refused && !dropped) {
    // A new name joins the list even when no file took it.
    if (!photoshopMode_) {
      const std::vector<std::string> selected = SelectedCategories();
      FillCategoryList(catalogue_.categories);
      SelectCategories(selected);
    }
  }
  return result;
}

ToggleResult PluginViewPage::EnableDisable(const PluginTypeTable& table, const FilterEnv& env) {
  std::vector<FilterRow> rows = Rows();
  const int current = list3_->currentRow();
  list3_->setUpdatesEnabled(false);
  ToggleResult result = cmd_EnableDisable_PluginView(catalogue_, rows, table, env);
  if (result.error) env.hooks().Report(*result.error);
  filling_ = true;
  for (size_t i = 0; i < rows.size() && static_cast<int>(i) < list3_->count(); ++i) {
    QListWidgetItem* item = list3_->item(static_cast<int>(i));
    item->setText(Latin1(rows[i].text));
    item->setForeground(rows[i].text.rfind("- ", 0) == 0 ? palette().color(QPalette::Disabled, QPalette::Text)
                                                         : palette().color(QPalette::Text));
  }
  filling_ = false;
  CheckPhotoshopMode();
  list3_->setUpdatesEnabled(true);
  if (current >= 0 && current < list3_->count()) list3_->setCurrentRow(current, QItemSelectionModel::NoUpdate);
  List3_Click();
  return result;
}

}  // namespace trel
