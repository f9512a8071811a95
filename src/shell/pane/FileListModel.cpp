#include "shell/pane/FileListModel.h"

#include <QMimeData>
#include <QSet>
#include <QUrl>

#include <QApplication>
#include <QHash>
#include <QPainter>
#include <QStyle>
#include <algorithm>
#include <numeric>

#include "picture/Module2.h"
#include "shell/pane/PaneRules.h"

namespace trel {

namespace {

// The badges of the file kinds: a short text on a colour, over the plain
// file icon of the style.
struct Badge {
  const char* text;
  QColor color;
};

Badge BadgeOf(int icon) {
  switch (icon) {
    case kIcon8bf: return {"8B", QColor(40, 90, 200)};
    case kIconPrm: return {"PR", QColor(120, 50, 160)};
    case kIconAex: return {"AE", QColor(60, 40, 120)};
    case kIconFfl: return {"FF", QColor(20, 140, 70)};
    case kIconZip: return {"ZP", QColor(150, 110, 20)};
    case kIconPaint: return {"PT", QColor(200, 90, 20)};
    case kIconImage: return {"IM", QColor(190, 40, 60)};
    default: return {nullptr, QColor()};
  }
}

QIcon DrawIcon(int icon, bool large) {
  QStyle* style = QApplication::style();
  const int size = large ? 32 : 16;
  if (icon == kIconFolder) return style->standardIcon(QStyle::SP_DirIcon);
  if (icon == kIconParent) return style->standardIcon(QStyle::SP_FileDialogToParent);
  QPixmap pixmap = style->standardIcon(QStyle::SP_FileIcon).pixmap(size, size);
  const Badge badge = BadgeOf(icon);
  if (badge.text) {
    QPainter painter(&pixmap);
    const QRect box(0, size / 2, size, size / 2);
    painter.fillRect(box, badge.color);
    painter.setPen(Qt::white);
    QFont font = painter.font();
    font.setPixelSize(size / 2 - 1);
    font.setBold(true);
    painter.setFont(font);
    painter.drawText(box, Qt::AlignCenter, QString::fromLatin1(badge.text));
  }
  return QIcon(pixmap);
}

}  // namespace

QIcon IconForKind(int icon, bool large) {
  static QHash<int, QIcon> cache;
  const int key = icon * 2 + (large ? 1 : 0);
  auto it = cache.find(key);
  if (it == cache.end()) it = cache.insert(key, DrawIcon(icon, large));
  return it.value();
}

FileListModel::FileListModel(QObject* parent) : QAbstractTableModel(parent) {}

int FileListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(items_.size());
}

int FileListModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : 3; }

QVariant FileListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const LvItem& it = items_[static_cast<size_t>(index.row())];
  switch (role) {
    case Qt::EditRole:
      return index.column() == kName ? (it.icon == 1 ? it.text.mid(1) : it.text) : QVariant();
    case Qt::DisplayRole:
      return index.column() == kName ? it.text : index.column() == kSize ? it.sizeText : it.dateText;
    case Qt::DecorationRole:
      return index.column() == kName ? QVariant(IconForKind(it.icon, largeIcons_)) : QVariant();
    case Qt::TextAlignmentRole:
      return index.column() == kSize ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    case kIconRole:
      return it.icon;
    default:
      return {};
  }
}

Qt::ItemFlags FileListModel::flags(const QModelIndex& index) const {
  Qt::ItemFlags f = QAbstractTableModel::flags(index);
  if (!index.isValid() || index.row() >= rowCount()) return f;
  const LvItem& it = items_[static_cast<size_t>(index.row())];
  if (it.icon != kIconParent) {
    f |= Qt::ItemIsDragEnabled;
    if (index.column() == kName) f |= Qt::ItemIsEditable;
  }
  return f;
}

bool FileListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || !index.isValid() || index.column() != kName || index.row() >= rowCount()) return false;
  const QString old = items_[static_cast<size_t>(index.row())].text;
  emit labelEdited(index.row(), old, value.toString());
  return false;
}

QStringList FileListModel::mimeTypes() const { return {QStringLiteral("text/uri-list")}; }

QMimeData* FileListModel::mimeData(const QModelIndexList& indexes) const {
  QList<QUrl> urls;
  QSet<int> seen;
  for (const QModelIndex& index : indexes) {
    if (!index.isValid() || index.row() >= rowCount() || seen.contains(index.row())) continue;
    seen.insert(index.row());
    const LvItem& it = items_[static_cast<size_t>(index.row())];
    if (it.icon == kIconParent) continue;
    urls << QUrl::fromLocalFile(folder_ + (it.icon == 1 ? it.text.mid(1) : it.text));
  }
  if (urls.isEmpty()) return nullptr;
  auto* data = new QMimeData;
  data->setUrls(urls);
  return data;
}

QVariant FileListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  switch (section) {
    case kName: return QStringLiteral("Name");
    case kSize: return QStringLiteral("Size");
    case kDate: return QStringLiteral("Date");
    default: return {};
  }
}

void FileListModel::sort(int column, Qt::SortOrder order) {
  if (column < 0 || column > 2) return;
  const bool ascending = order == Qt::AscendingOrder;
  const auto sortColumn = static_cast<SortColumn>(column);
  std::vector<std::string> keys(items_.size());
  for (size_t i = 0; i < items_.size(); ++i) {
    const LvItem& it = items_[i];
    SortCell cell;
    if (column == kName) {
      cell.text = it.text.toStdString();
    } else if (column == kSize) {
      cell.text = it.sizeText.toStdString();
      cell.hasValue = IsFileIcon(it.icon) && it.length >= 0;
      cell.value = it.length;
    } else {
      cell.text = it.dateText.toStdString();
      cell.hasValue = it.hasTime;
      cell.value = it.modified;
    }
    keys[i] = SortKeyOf(cell, sortColumn, ascending);
    if (column == kName) {
      // The blank of a folder's text puts it first only in ascending order.
      const char group = it.icon == kIconParent ? '0' : it.icon == 1 ? '1' : '2';
      keys[i].insert(keys[i].begin(), group);
    }
  }
  std::vector<int> order_(items_.size());
  std::iota(order_.begin(), order_.end(), 0);
  std::stable_sort(order_.begin(), order_.end(),
                   [&](int a, int b) { return keys[static_cast<size_t>(a)] < keys[static_cast<size_t>(b)]; });

  emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
  std::vector<int> newRowOf(items_.size());
  std::vector<LvItem> sorted;
  sorted.reserve(items_.size());
  for (size_t i = 0; i < order_.size(); ++i) {
    newRowOf[static_cast<size_t>(order_[i])] = static_cast<int>(i);
    sorted.push_back(std::move(items_[static_cast<size_t>(order_[i])]));
  }
  items_ = std::move(sorted);
  const QModelIndexList persistent = persistentIndexList();
  QModelIndexList moved;
  moved.reserve(persistent.size());
  for (const QModelIndex& index : persistent)
    moved.append(this->index(newRowOf[static_cast<size_t>(index.row())], index.column()));
  changePersistentIndexList(persistent, moved);
  emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

QModelIndexList FileListModel::match(const QModelIndex& start, int role, const QVariant& value, int hits,
                                     Qt::MatchFlags flags) const {
  const Qt::MatchFlags kind = flags & Qt::MatchTypeMask;
  if (role != Qt::DisplayRole || start.column() != kName ||
      (kind != Qt::MatchStartsWith && kind != Qt::MatchFixedString))
    return QAbstractTableModel::match(start, role, value, hits, flags);
  const QString wanted = value.toString();
  const Qt::CaseSensitivity cs = flags & Qt::MatchCaseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive;
  const int rows = rowCount();
  const int first = std::clamp(start.row(), 0, std::max(rows - 1, 0));
  const int count = flags & Qt::MatchWrap ? rows : rows - first;
  QModelIndexList found;
  for (int i = 0; i < count && (hits < 0 || found.size() < hits); ++i) {
    const int row = (first + i) % rows;
    const LvItem& it = items_[static_cast<size_t>(row)];
    const QString shown = it.icon == 1 || it.icon == kIconParent ? it.text.mid(1) : it.text;
    const bool hit = kind == Qt::MatchStartsWith ? shown.startsWith(wanted, cs) : shown.compare(wanted, cs) == 0;
    if (hit) found.append(index(row, kName));
  }
  return found;
}

void FileListModel::SetItems(std::vector<LvItem> items) {
  beginResetModel();
  items_ = std::move(items);
  endResetModel();
}

void FileListModel::Clear() { SetItems({}); }

void FileListModel::RemoveRow(int row) {
  if (row < 0 || row >= rowCount()) return;
  beginRemoveRows({}, row, row);
  items_.erase(items_.begin() + row);
  endRemoveRows();
}

int FileListModel::FindText(const QString& text) const {
  for (size_t i = 0; i < items_.size(); ++i)
    if (items_[i].text == text) return static_cast<int>(i);
  return -1;
}

void FileListModel::SetLargeIcons(bool large) {
  if (largeIcons_ == large) return;
  largeIcons_ = large;
  if (!items_.empty()) emit dataChanged(index(0, 0), index(rowCount() - 1, 0), {Qt::DecorationRole});
}

}  // namespace trel
