// ListView1 of a pane: one list in four looks (Large Icons, Small Icons, List,
// Details) over one model and one selection. Details is a table with the Name,
// Size and Date columns; the other looks are an icon view of the Name column.
#pragma once

#include <QWidget>

class QAbstractItemView;
class QItemSelectionModel;
class QListView;
class QStackedLayout;
class QTreeView;

namespace trel {

class FileListModel;

class FileListView : public QWidget {
  Q_OBJECT
 public:
  enum View { kLargeIcons = 0, kSmallIcons = 1, kList = 2, kDetails = 3 };

  FileListView(FileListModel* model, const QString& objectName, QWidget* parent = nullptr);

  int view() const { return view_; }
  void SetView(int view);
  QAbstractItemView* current() const;
  QTreeView* details() const { return details_; }
  QListView* icons() const { return icons_; }
  QItemSelectionModel* selection() const;

  // The row under a point of the current view, -1 for none.
  int RowAt(const QPoint& viewportPos) const;
  QList<int> SelectedRows() const;
  void SelectOnly(int row);
  void ScrollTo(int row);
  void OptimalWidth();  // LV_OptimalWidth: columns fit their content
  // Starts the in-place edit of a row's name.
  void StartEdit(int row);
  // Whether a widget is one of this list's views (a drag's source).
  bool IsOwnView(const QObject* object) const;

 signals:
  void keyPressed(int key, Qt::KeyboardModifiers modifiers);
  void rowActivated(int row);  // a double click on a row
  void gotFocus();
  void contextMenuRequested(QPoint globalPos);
  // Local files dropped on the row `row` (-1 for none) from `source`, the
  // dragging widget or null for another program.
  void filesDropped(const QStringList& paths, int row, QObject* source);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  FileListModel* model_;
  QTreeView* details_;
  QListView* icons_;
  QStackedLayout* stack_;
  int view_ = kDetails;
  int dropHighlight_ = -1;
};

}  // namespace trel
