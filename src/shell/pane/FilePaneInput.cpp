// What reaches a pane from the user: the view modes and sort columns, the
// selection, clicks and keys in its lists, and the events its controls share.
#include "shell/pane/FilePane.h"

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

QStringList FilePane::SelectedTexts() const {
  QStringList texts;
  for (int row : listView_->SelectedRows()) texts.append(model_->item(row).text);
  return texts;
}

void FilePane::SelectTexts(const QStringList& texts, const QString& current) {
  // A refresh after Select All keeps tens of thousands of names: they are
  // looked up in a set, and each run of selected rows is one range, or the
  // refresh would take seconds.
  const QSet<QString> wanted(texts.begin(), texts.end());
  QItemSelection selection;
  int currentRow = -1;
  int runStart = -1;
  const int rows = model_->rowCount();
  for (int row = 0; row <= rows; ++row) {
    const bool selected = row < rows && wanted.contains(model_->item(row).text);
    if (selected && runStart < 0) runStart = row;
    if (!selected && runStart >= 0) {
      selection.select(model_->index(runStart, 0), model_->index(row - 1, 2));
      runStart = -1;
    }
    if (row < rows && model_->item(row).text == current) currentRow = row;
  }
  QItemSelectionModel* model = listView_->selection();
  if (currentRow >= 0) model->setCurrentIndex(model_->index(currentRow, 0), QItemSelectionModel::NoUpdate);
  model->select(selection, QItemSelectionModel::ClearAndSelect);
  if (currentRow >= 0) listView_->ScrollTo(currentRow);
}

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

}  // namespace trel
