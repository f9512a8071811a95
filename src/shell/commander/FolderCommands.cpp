// The folder commands: the SelectFolder dialog and its checks, create, move,
// rename and kill a folder.
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

// --- SelectFolder

bool FileCommander::AcceptFolder(QString& text, bool noChange) {
  std::string folder = WithTrailingSeparator(text.trimmed().toStdString());
  text = QString::fromStdString(folder);
  if (!IsFolder(folder)) {
    if (messages().MsgBox(folder + " doesn't exist!\nDo you want to create it?", MsgButtons::YesNo,
                          MsgIcon::Question, "Trel") != MsgResult::Yes)
      return false;
    std::error_code ec;
    fs::create_directories(folder, ec);
    if (ec) {
      Refuse(folder + " couldn't be created: " + ec.message());
      return false;
    }
    for (int i = 0; i < 2; ++i)
      if (IsInsideFolder(folder, window_.pane(i)->folder())) window_.pane(i)->Refresh(true);
  }
  if (!noChange) {
    FilePane* passive = window_.pane(window_.ActivePane() ^ 1);
    if (passive->folder() != folder && passive->ChangeFolder(folder)) {
      passive->DrawDirLabel();
      emit passive->folderChanged(passive->pane());
    }
  }
  return true;
}

QString FileCommander::SelectFolderDialog(const QString& firstEntry, bool noChange, bool* subFolders) {
  const std::string passive = window_.pane(window_.ActivePane() ^ 1)->folder();
  const std::string active = window_.pane(window_.ActivePane())->folder();
  QStringList entries;
  if (!firstEntry.isEmpty()) entries << firstEntry;
  entries << QString::fromStdString(passive);
  if (active != passive) entries << QString::fromStdString(active);
  for (const std::string& f : window_.folderList()) entries << QString::fromStdString(f);
  entries.removeDuplicates();
  return dialogs_->SelectFolder(entries, [this, noChange](QString& text) { return AcceptFolder(text, noChange); },
                                subFolders);
}

bool FileCommander::FoldersIdentical() {
  if (!SameFolder(window_.pane(0)->folder(), window_.pane(1)->folder())) return false;
  Refuse("The source folder is identical to the destination folder!\nPlease select a different folder.");
  return true;
}

// --- kill a folder

void FileCommander::cmd_KillDir() {
  if (busy_) return;
  const int active = window_.ActivePane();
  FilePane* p = window_.pane(active);
  if (p->paneView() >= FilePane::kPluginView) {
    Refuse("Kill Folder only works in File View.");
    return;
  }
  const SelectedFolders folders = GetSelectedFolders(*p);
  if (!folders.HasSelectionFlag) return;
  if (messages().MsgBox("Kill the selected folder(s) and the files they contain?", MsgButtons::YesNo,
                        MsgIcon::Exclamation, "Kill Folders") != MsgResult::Yes)
    return;
  std::vector<CopyItem> trees;
  for (const std::string& folder : folders.folders) {
    StepOutOf(folder);
    trees.push_back({folder, {}});
  }
  // The trees go on the worker, one after the other; Esc stops between them.
  StartJob(std::move(trees), FileJob::EraseTree, [this, active](int, const std::string& error) {
    window_.ClearPluginViewFresh(active);
    window_.RefreshFile1(active);
    if (!error.empty())
      messages().MsgBox("Error while deleting...\nPlease check, if all selected files were deleted.", MsgButtons::Ok,
                        MsgIcon::Exclamation, "Error");
  });
}

// An open folder can't be removed: a pane standing in it, or below it, steps
// up out of it first.
void FileCommander::StepOutOf(const std::string& given) {
  const std::string folder = StripSeparator(given);
  for (int i = 0; i < 2; ++i) {
    FilePane* p = window_.pane(i);
    if (IsInsideFolder(p->folder(), folder)) {
      p->ChangeFolder(ParentFolder(WithTrailingSeparator(folder)));
      p->DrawDirLabel();
    }
  }
}

int FileCommander::DeleteTree(const std::string& folder, bool silent) {
  StepOutOf(folder);
  const int errors = RemoveTree(folder);
  if (!silent && errors >= 1)
    Refuse(std::to_string(errors) +
           " files or folders couldn't be deleted.\nThey are probably used by running applications.");
  return errors;
}

// --- rename a folder

void FileCommander::mnuRenameFolder_Click() {
  const int active = window_.ActivePane();
  FilePane* p = window_.pane(active);
  if (p->paneView() != FilePane::kFileView) {
    Refuse("Rename Folder only works in File View!");
    return;
  }
  const std::string folder = GetSingleFolder(*p, true);
  if (folder.empty() || folder == "..") {
    Refuse("Please select a folder!");
    return;
  }
  const std::string old = StripSeparator(folder);
  const std::optional<QString> answer = dialogs_->Input("Rename folder", QString::fromStdString(old));
  if (!answer) return;
  std::string to = StripSeparator(answer->trimmed().toStdString());
  if (to.find(kPathSeparator) == std::string::npos) to = FolderOf(old) + to;  // a bare name stays beside
  std::string error;
  if (to != old && !RenameKeepingTarget(old, to, error)) {
    messages().ErrorMessage(error);
    return;
  }
  window_.RefreshFile1(active);
}

// --- folders

void FileCommander::cmd_MakeDir() {
  const int active = window_.ActivePane();
  FilePane* p = window_.pane(active);
  if (p->paneView() >= FilePane::kPluginView) {
    Refuse("Create Folder only works in File View.", "Error");
    return;
  }
  const std::optional<QString> answer = dialogs_->Input("Enter name for new folder", "New");
  if (!answer) return;
  const QString name = answer->trimmed();
  if (name.isEmpty()) return;
  const std::string path = WithTrailingSeparator(p->folder()) + name.toStdString();
  std::error_code ec;
  if (!fs::create_directory(path, ec)) {
    messages().ErrorMessage(path + " couldn't be created" + (ec ? ": " + ec.message() : std::string(": it exists.")));
    return;
  }
  window_.RefreshFile1(active);
  p->SelectListItem(" " + name);
}

void FileCommander::cmd_MoveDir() {
  const int active = window_.ActivePane();
  FilePane* p = window_.pane(active);
  if (p->paneView() >= FilePane::kPluginView) {
    Refuse("Move Folder only works in File View!");
    return;
  }
  const std::string target = WithTrailingSeparator(window_.pane(active ^ 1)->folder());
  if (SameFolder(p->folder(), target)) {
    Refuse("The source folder is identical to the destination folder.", "Move Folder");
    return;
  }
  const std::string folder = GetSingleFolder(*p, true);
  if (folder.empty() || folder == "..") {
    Refuse("No Source Folder selected.");
    return;
  }
  const std::string source = StripSeparator(folder);
  if (IsInsideFolder(target, source)) {
    Refuse("A folder can't be moved into itself or one of its sub folders.\n" + source);
    return;
  }
  if (messages().MsgBox("Move " + source + "  to  " + target + "  ?", MsgButtons::YesNo, MsgIcon::Question,
                        "Trel") != MsgResult::Yes)
    return;
  const std::string destination = target + FileNameOf(source);
  std::string error;
  if (!RenameKeepingTarget(source, destination, error)) {
    // Another file system: the move of a folder is the copy command's work.
    Refuse("Move Folder works only within the same drive.\nPlease use the Copy command.\n\n" + error);
    return;
  }
  window_.ClearPluginViewFresh(0);
  window_.ClearPluginViewFresh(1);
  window_.RefreshBoth();
}

}  // namespace trel
