// The rows of a pane's file list (ListView1): name, size and date, and the icon
// number that tells a row's kind. Sorting happens here, on typed keys, so a
// column of sizes or dates sorts by value in both directions.
#pragma once

#include <QAbstractTableModel>
#include <QIcon>
#include <QString>
#include <array>
#include <cstdint>
#include <vector>

namespace trel {

struct LvItem {
  QString text;      // a folder's text starts with a blank, the parent entry is " .."
  QString sizeText;  // sub-item 1
  QString dateText;  // sub-item 2
  int icon = 3;
  int64_t length = -1;
  int64_t modified = 0;
  bool hasTime = false;
};

class FileListModel : public QAbstractTableModel {
  Q_OBJECT
 public:
  enum Column { kName = 0, kSize = 1, kDate = 2 };
  static constexpr int kIconRole = Qt::UserRole + 1;

  explicit FileListModel(QObject* parent = nullptr);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  // ".." and the folders stay on top in both directions of the name column,
  // as in two-pane file managers; sizes and dates keep them apart by value.
  void sort(int column, Qt::SortOrder order) override;
  // Type-to-find goes by the names as the user reads them: a folder's leading
  // blank doesn't count.
  QModelIndexList match(const QModelIndex& start, int role, const QVariant& value, int hits,
                        Qt::MatchFlags flags) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  // An edit of a name renames nothing here: it is reported, and the pane's
  // refresh shows the outcome.
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  QStringList mimeTypes() const override;
  QMimeData* mimeData(const QModelIndexList& indexes) const override;
  Qt::DropActions supportedDragActions() const override { return Qt::MoveAction | Qt::CopyAction; }
  // The folder the rows lie in, for what a drag carries.
  void SetFolder(const QString& folder) { folder_ = folder; }

  void SetItems(std::vector<LvItem> items);
  void Clear();
  void RemoveRow(int row);
  const LvItem& item(int row) const { return items_[static_cast<size_t>(row)]; }
  const std::vector<LvItem>& items() const { return items_; }
  int FindText(const QString& text) const;  // -1 when absent

  // Larger icons for the icon view.
  void SetLargeIcons(bool large);

 signals:
  void labelEdited(int row, const QString& oldText, const QString& newText);

 private:
  QString folder_;
  std::vector<LvItem> items_;
  bool largeIcons_ = false;
};

// The icon of an icon number, drawn once and cached.
QIcon IconForKind(int icon, bool large);

}  // namespace trel
