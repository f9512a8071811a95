// What the keyboard and the mouse reach directly: Esc and the input held back
// while a batch runs, the selection commands, the context menu, Tab and
// Insert, and drag and drop.
#include "shell/commander/FileCommander.h"

#include "shell/fflview/FflViewController.h"

#include <QAction>
#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QKeyEvent>
#include <QListView>
#include <QMenu>
#include <QMimeData>
#include <QTime>
#include <QTimer>
#include <QUrl>
#include <filesystem>

#include <unistd.h>

#include "catalogue/EnableState.h"
#include "catalogue/PluginList.h"
#include "filter/FilterEnv.h"
#include "base/Paths.h"
#include "base/PluginKinds.h"
#include "catalogue/PluginTypes.h"
#include "picture/Module2.h"
#include "base/FolderIdentity.h"
#include "settings/Trash.h"
#include "shell/pane/DirListBox.h"
#include "shell/pane/FileListModel.h"
#include "shell/pane/FileListView.h"
#include "shell/fflview/FflViewPage.h"
#include "shell/pane/FilePane.h"
#include "shell/window/MainWindow.h"
#include "shell/pluginview/PluginViewPage.h"
#include "shell/pane/PaneRules.h"
#include "base/SafeCopy.h"
#include "shell/commander/CopyJob.h"
#include "shell/commander/CopyPlan.h"
#include "shell/pane/Selection.h"

namespace trel {

namespace fs = std::filesystem;

// --- keys and mouse while a batch runs

bool FileCommander::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
    window_.EscapeFlag() = true;
    if (job_) job_->Cancel();
  }
  // While a batch runs the window paints and hears Esc, but takes no other
  // input, so no second command starts inside the first. A dialog the batch
  // asks (the Overwrite question) is a window of its own and takes its input.
  if (busy_ && watched->isWidgetType() && static_cast<QWidget*>(watched)->window() == &window_) {
    switch (event->type()) {
      case QEvent::ShortcutOverride:
        // Claimed for the widget, so that no command's key fires; the key
        // itself is then dropped below.
        if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) break;
        event->accept();
        return true;
      case QEvent::KeyPress:
      case QEvent::KeyRelease:
        return static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape;
      case QEvent::MouseButtonPress:
      case QEvent::MouseButtonDblClick:
      case QEvent::MouseButtonRelease:
      case QEvent::Drop:
        return true;
      default: break;
    }
  }
  return QObject::eventFilter(watched, event);
}

// --- selection commands

void FileCommander::SelectAllOrToggle(bool all) {
  window_.setUpdatesEnabled(false);
  // A pressed preview button would start a preview for every entry that the
  // flood of selection changes passes.
  QAction* preview = window_.previewToggle();
  const bool previewDown = preview && preview->isChecked();
  if (previewDown) {
    const QSignalBlocker quiet(preview);
    preview->setChecked(false);
  }
  FilePane* p = window_.pane(window_.ActivePane());
  switch (p->paneView()) {
    case FilePane::kFFLView: p->fflView()->SelectAllEntries(all); break;
    case FilePane::kPluginView: p->pluginView()->SelectAllFilters(all); break;
    default:
      if (p->listViewShown()) {
        QItemSelectionModel* model = p->listView()->selection();
        const int rows = p->model()->rowCount();
        if (rows > 0) {
          const QItemSelection range(p->model()->index(0, 0), p->model()->index(rows - 1, 2));
          model->select(range, all ? QItemSelectionModel::Select : QItemSelectionModel::Toggle);
        }
      } else {
        p->file1()->setEnabled(false);  // its click handler runs once, not per entry
        QItemSelectionModel* model = p->file1()->selectionModel();
        const int rows = p->file1()->model()->rowCount();
        if (rows > 0) {
          const QItemSelection range(p->file1()->model()->index(0, 0), p->file1()->model()->index(rows - 1, 0));
          model->select(range, all ? QItemSelectionModel::Select : QItemSelectionModel::Toggle);
        }
        p->file1()->setEnabled(true);
        p->File1_Click();
      }
      p->FocusList();
  }
  if (previewDown) {
    const QSignalBlocker quiet(preview);
    preview->setChecked(true);
  }
  window_.setUpdatesEnabled(true);
}

void FileCommander::SwitchCommandItems(int mode) {
  FilePane* p = window_.pane(window_.ActivePane());
  std::string first;
  if (mode == 0) {
    const SelectedItems selection = GetSelectedItems(*p);
    if (!selection.items.empty()) first = selection.items.front();
  }
  // Plugins of every kind and Filter Factory sources; `.bin` is a plugin too.
  const bool plugin = !first.empty() && (ClassifyPluginName(first) || IsFilterSourceName(first) ||
                                         MatchPluginType(window_.pluginTypes(), first));
  for (const char* name : {"mnuEnable", "mnuChangeCat", "mnuPlugInfo", "mnuPluginAbout", "mnuInvoke"}) {
    QAction* action = window_.command(name);
    if (!action) continue;
    const bool allowed = window_.IsCommandAllowed(name);
    if (QString(name) == "mnuChangeCat" && p->paneView() == FilePane::kPluginView) {
      action->setEnabled(allowed);
    } else {
      action->setEnabled(allowed && plugin);
    }
  }
}

void FileCommander::ShowContextMenu(int pane, QPoint globalPos) {
  if (pane != window_.ActivePane()) window_.Switchit(pane);
  SwitchCommandItems(0);
  window_.commandsMenu()->popup(globalPos);
}

void FileCommander::SwitchPane() {
  const int other = window_.ActivePane() ^ 1;
  window_.Switchit(other);
  window_.pane(other)->FocusList();
}

void FileCommander::ToggleCurrentAndMoveDown() {
  FilePane* p = window_.pane(window_.ActivePane());
  if (p->paneView() != FilePane::kFileView) return;
  QAbstractItemView* view = p->listViewShown() ? p->listView()->current() : static_cast<QAbstractItemView*>(p->file1());
  QItemSelectionModel* selection = view->selectionModel();
  QModelIndex current = view->currentIndex();
  if (!current.isValid()) {
    if (view->model()->rowCount() == 0) return;
    current = view->model()->index(0, 0);
  }
  const int lastColumn = view->model()->columnCount() - 1;
  const QItemSelection row(view->model()->index(current.row(), 0), view->model()->index(current.row(), lastColumn));
  selection->select(row, QItemSelectionModel::Toggle);
  const int next = std::min(current.row() + 1, view->model()->rowCount() - 1);
  selection->setCurrentIndex(view->model()->index(next, 0), QItemSelectionModel::NoUpdate);
  view->scrollTo(view->model()->index(next, 0));
  if (!p->listViewShown()) p->File1_Click();
}

// --- drag and drop

QMimeData* FileCommander::DragData(const FilePane& pane) {
  const SelectedItems selection = GetSelectedItems(pane);
  QList<QUrl> urls;
  for (const std::string& item : selection.items)
    urls << QUrl::fromLocalFile(QString::fromStdString(pane.paneView() == FilePane::kPluginView ? item : selection.folder + item));
  for (const std::string& folder : GetSelectedFolders(pane).folders)
    urls << QUrl::fromLocalFile(QString::fromStdString(StripSeparator(folder)));
  if (urls.isEmpty()) return nullptr;
  auto* data = new QMimeData;
  data->setUrls(urls);
  return data;
}

void FileCommander::DropFiles(int pane, const QStringList& paths, const std::string& ontoFolder, int sourcePane) {
  if (busy_ || paths.isEmpty()) return;
  FilePane* p = window_.pane(pane);
  if (p->paneView() == FilePane::kFFLView) {
    // Files dropped on a library are added to it.
    std::vector<std::string> files;
    for (const QString& path : paths) files.push_back(path.toStdString());
    if (FflController* ffl = FflController::Of(window_)) ffl->AddFiles(pane, files);
    return;
  }
  // A drop from the other pane is the move command with no target given: it
  // asks for the folder as the command does, unless the dialog is suppressed.
  // A drop onto a folder names its target and asks nothing.
  if (ontoFolder.empty() && sourcePane == -2 && pane != window_.ActivePane() &&
      window_.prefs().passivePaneFolder != 1) {
    for (;;) {
      if (SelectFolderDialog({}, false).isEmpty()) return;
      if (!FoldersIdentical()) break;
    }
  }
  const std::string target = WithTrailingSeparator(ontoFolder.empty() ? p->folder() : ontoFolder);
  OverwriteCheck("", "");
  std::vector<std::string> dropped;
  for (const QString& path : paths) dropped.push_back(path.toStdString());
  DropPlan plan = PlanDrop(dropped, target);
  if (!plan.intoItself.empty()) {
    Refuse("A folder can't be moved into itself or one of its sub folders.\n" + plan.intoItself);
    return;
  }
  // The folders move whole, by a rename, once the files are in place.
  StartJob(std::move(plan.files), FileJob::Move, [this, target, folders = std::move(plan.folders)](int, std::string error) {
    for (const std::string& folder : folders) {
      if (!error.empty()) break;
      const std::string to = target + FileNameOf(folder);
      if (QFileInfo::exists(QString::fromStdString(to))) {
        const OverwriteAnswer answer = OverwriteCheck(folder, to);
        if (answer == OverwriteAnswer::Stop) break;
        if (answer == OverwriteAnswer::Skip) continue;
      }
      if (!RenameKeepingTarget(folder, to, error))
        error = error.empty() ? folder + " couldn't be moved." : error;
    }
    MoveEnded(error);
  });
}

}  // namespace trel
