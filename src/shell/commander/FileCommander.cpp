// The command entry points of the file commands: copy, move, delete, kill,
// rename, en/disable and the command row, with the Overwrite question.
#include "shell/commander/FileCommander.h"

#include <unistd.h>

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

#include "base/ExistingNames.h"
#include "base/Paths.h"
#include "base/PluginKinds.h"
#include "base/SafeCopy.h"
#include "catalogue/EnableState.h"
#include "catalogue/PluginList.h"
#include "filter/FilterEnv.h"
#include "picture/Module2.h"
#include "base/FolderIdentity.h"
#include "settings/Trash.h"
#include "shell/commander/CopyJob.h"
#include "shell/commander/CopyPlan.h"
#include "shell/fflview/FflViewController.h"
#include "shell/fflview/FflViewPage.h"
#include "shell/pane/DirListBox.h"
#include "shell/pane/FileListModel.h"
#include "shell/pane/FileListView.h"
#include "shell/pane/FilePane.h"
#include "shell/pane/PaneRules.h"
#include "shell/pane/Selection.h"
#include "shell/pluginview/PluginViewPage.h"
#include "shell/window/MainWindow.h"

namespace trel {

namespace fs = std::filesystem;

namespace {

double SecondsSinceMidnight() { return QTime::currentTime().msecsSinceStartOfDay() / 1000.0; }

// "path  (N bytes, date time)" for a label of the Overwrite dialog.
QString Described(const std::string& path) {
  const QFileInfo info(QString::fromStdString(path));
  return QString::fromStdString(path) + "  (" + QString::number(info.size()) + " bytes, " +
         QLocale::system().toString(info.lastModified(), QLocale::ShortFormat) + ")";
}

}  // namespace

FileCommander::FileCommander(MainWindow& window) : QObject(&window), window_(window) {
  setObjectName("FileCommander");
  window.parts().commander = this;
  dialogs_ = MakeFileDialogs(&window);
  qApp->installEventFilter(this);
}

FileCommander::~FileCommander() = default;

FileCommander* FileCommander::Of(MainWindow& window) { return window.parts().commander; }

void FileCommander::SetDialogs(std::unique_ptr<FileDialogs> dialogs) { dialogs_ = std::move(dialogs); }

UserMessages& FileCommander::messages() { return hooks_ ? *hooks_ : window_.messages(); }

void FileCommander::Refuse(const std::string& text, const std::string& title) {
  messages().MsgBox(text, MsgButtons::Ok, MsgIcon::Exclamation, title);
}

// --- the overwrite question

OverwriteAnswer FileCommander::OverwriteCheck(const std::string& sourcePath, const std::string& targetPath) {
  if (sourcePath.empty() && targetPath.empty()) {
    overwrite_.Reset();
    return OverwriteAnswer::Write;
  }
  // The source is described only when the question is asked: its size and
  // date cost a look at the file and a formatted date, for every file of a batch.
  return AskOverwrite(targetPath, ::access(targetPath.c_str(), F_OK) == 0,
                      [&] { return sourcePath.empty() ? QString() : Described(sourcePath); });
}

OverwriteAnswer FileCommander::OverwriteCheckDescribed(const QString& source, const std::string& targetPath) {
  return AskOverwrite(targetPath, ::access(targetPath.c_str(), F_OK) == 0, [&] { return source; });
}

OverwriteAnswer FileCommander::AskOverwrite(const std::string& targetPath, bool targetExists,
                                            const std::function<QString()>& describeSource) {
  // Asked for every file of a batch: no conversion of the name until a question is shown.
  if (const std::optional<OverwriteAnswer> decided = overwrite_.Decided(targetExists)) return *decided;
  QString first = Described(targetPath);
  QString second;
  const QString source = describeSource();
  if (source.isEmpty()) {
    first += " ?";
  } else {
    second = source + " ?";
  }
  return overwrite_.Answer(dialogs_->Overwrite(first, second));
}

// --- copy and move

void FileCommander::StartJob(std::vector<CopyItem> items, FileJob kind,
                             std::function<void(int done, const std::string& error)> then) {
  window_.EscapeFlag() = false;
  busy_ = true;
  const double start = SecondsSinceMidnight();
  // Each file is asked about first, on this thread, and handed to the worker
  // as soon as it is answered.
  job_ = new CopyJob(
      std::move(items), kind, window_.EscapeFlag(),
      kind == FileJob::Copy || kind == FileJob::Move
          ? CopyJob::Ask([this, targets = std::make_shared<ExistingNames>()](CopyItem& item) {
              // OverwriteCheck, with the target folder's names read once for the
              // batch (the job asks about named files only).
              const bool exists = targets->Contains(item.target);
              const OverwriteAnswer answer =
                  AskOverwrite(item.target, exists, [&] { return Described(item.source); });
              item.replace = exists ? Replace::Allowed : Replace::Never;
              if (answer == OverwriteAnswer::Write) targets->Add(item.target);
              return answer;
            })
          : CopyJob::Ask(),
      this);
  // Copies and moves show their progress; erasing is quick and shows none.
  if (kind == FileJob::Copy || kind == FileJob::Move)
    connect(job_, &CopyJob::progress, this, [this, start](int files, int total, qint64 bytes, qint64 bytesTotal) {
      if (bytesTotal > (64 << 20)) {
        window_.Progressbar(static_cast<int>(100 * bytes / bytesTotal));
      } else if (files > 0) {
        window_.StatusDisplay(files, total, start);
      }
    });
  for (int i = 0; i < 2; ++i) window_.pane(i)->PauseWatching(true);
  connect(job_, &CopyJob::finished, this, [this, then = std::move(then)](int done, const QString& error) {
    job_->deleteLater();
    job_ = nullptr;
    busy_ = false;
    window_.StatusDisplayClear();
    // A pane the command fills anew shows the job's result; only the other
    // one looks again once its watch resumes.
    const int listed[2] = {window_.pane(0)->listings(), window_.pane(1)->listings()};
    then(done, error.toStdString());
    for (int i = 0; i < 2; ++i) window_.pane(i)->PauseWatching(false, window_.pane(i)->listings() == listed[i]);
    emit jobFinished();
  });
  job_->Start();
}

void FileCommander::cmd_CopyFiles() {
  const int active = window_.ActivePane();
  FilePane* source = window_.pane(active);
  if (source->paneView() == FilePane::kFFLView) {
    Refuse("Copy only work in File and Plugin View!");
    return;
  }
  if (busy_) return;
  const SelectedItems selection = GetSelectedItems(*source);
  if (!selection.HasSelectionFlag) {
    Refuse("Please select one or more files.");
    return;
  }
  const bool suppressed = window_.prefs().passivePaneFolder == 1;
  for (;;) {
    if (!suppressed && SelectFolderDialog({}, false).isEmpty()) return;
    if (!FoldersIdentical()) break;
    if (suppressed) return;  // nothing would change between two rounds of the message
  }
  const int passive = active ^ 1;
  const std::string target = WithTrailingSeparator(window_.pane(passive)->folder());
  window_.ClearPluginViewFresh(passive);
  OverwriteCheck("", "");
  std::vector<CopyItem> jobs =
      PlanCopy(selection.folder, selection.items, source->paneView() == FilePane::kPluginView, target);
  StartJob(std::move(jobs), FileJob::Copy, [this, active, passive](int done, const std::string& error) {
    if (done > 0 || !error.empty()) {
      window_.RefreshFile1C(active);
      if (window_.pane(passive)->paneView() == FilePane::kPluginView) window_.SSTab1_Click(passive);
    }
    OverwriteCheck("", "");
    if (!error.empty()) messages().ErrorMessage(error);
  });
}

void FileCommander::cmd_MoveFiles(const std::string& givenTarget, bool internal) {
  const int active = window_.ActivePane();
  FilePane* source = window_.pane(active);
  const int view = source->paneView();
  if (view == FilePane::kFFLView && !internal) {
    Refuse("Move only works in File and Plugin View!");
    return;
  }
  if (busy_) return;
  const SelectedItems selection = GetSelectedItems(*source);
  if (!selection.HasSelectionFlag) {
    const std::string folder = GetSingleFolder(*source, true);
    if (!folder.empty() && folder != "..") cmd_MoveDir();
    return;
  }
  if (givenTarget.empty()) {
    const bool suppressed = window_.prefs().passivePaneFolder == 1;
    for (;;) {
      if (!suppressed && SelectFolderDialog({}, false).isEmpty()) return;
      if (!FoldersIdentical()) break;
      if (suppressed) return;
    }
  }
  const std::string target = givenTarget.empty() ? WithTrailingSeparator(window_.pane(active ^ 1)->folder())
                                                 : WithTrailingSeparator(givenTarget);
  OverwriteCheck("", "");
  std::vector<CopyItem> jobs = PlanMove(selection.folder, selection.items, view == FilePane::kPluginView, target);
  StartJob(std::move(jobs), FileJob::Move, [this](int, const std::string& error) { MoveEnded(error); });
}

void FileCommander::MoveEnded(const std::string& error) {
  OverwriteCheck("", "");
  window_.RefreshBoth();
  // Both folders changed: a Plugin View on either side scans again.
  for (int i = 0; i < 2; ++i) {
    window_.ClearPluginViewFresh(i);
    if (window_.pane(i)->paneView() == FilePane::kPluginView) window_.SSTab1_Click(i);
  }
  if (!error.empty()) messages().ErrorMessage(error);
}

// --- delete and kill

void FileCommander::cmd_DeleteFiles(bool internal) {
  const int active = window_.ActivePane();
  FilePane* p = window_.pane(active);
  const int view = p->paneView();
  if (view == FilePane::kFFLView && !internal) {
    // The library's entries are struck out by the library's own commands.
    if (FflController* ffl = FflController::Of(window_)) ffl->Delete(active);
    return;
  }
  const SelectedItems selection = GetSelectedItems(*p);
  if (!selection.HasSelectionFlag) {
    const std::string folder = GetSingleFolder(*p, true);
    if (!folder.empty() && folder != "..") cmd_KillDir();
    return;
  }
  QApplication::setOverrideCursor(Qt::WaitCursor);
  std::string failed;
  for (const std::string& item : selection.items) {
    if (item.empty()) continue;
    const QString path = QString::fromStdString(FullPath(selection.folder, item, view == FilePane::kPluginView));
    QString why;
    if (!MoveToTrash(path, &why) && failed.empty()) failed = why.toStdString();
  }
  QApplication::restoreOverrideCursor();
  window_.RefreshFile1(active);
  window_.ClearPluginViewFresh(active);
  if (view == FilePane::kPluginView) window_.SSTab1_Click(active);
  if (!failed.empty()) messages().ErrorMessage(failed);
}

void FileCommander::cmd_Kill(bool internal) {
  if (busy_) return;
  const int active = window_.ActivePane();
  FilePane* p = window_.pane(active);
  const int view = p->paneView();
  if (view == FilePane::kFFLView && !internal) return;
  const SelectedItems selection = GetSelectedItems(*p);
  if (selection.HasSelectionFlag) {
    if (messages().MsgBox("The file(s) will be erased and won't be put in the trash can.\nProceed anyway?",
                          MsgButtons::YesNo, MsgIcon::Exclamation, "Kill") != MsgResult::Yes)
      return;
    std::vector<CopyItem> files;
    for (const std::string& item : selection.items)
      if (!item.empty()) files.push_back({FullPath(selection.folder, item, view == FilePane::kPluginView), {}});
    StartJob(std::move(files), FileJob::Erase, [this, active, view](int, const std::string& failed) {
      window_.ClearPluginViewFresh(active);
      window_.RefreshFile1(active);
      if (view == FilePane::kPluginView) window_.SSTab1_Click(active);
      if (!failed.empty()) messages().ErrorMessage(failed);
    });
    return;
  }
  const std::string folder = GetSingleFolder(*p, true);
  if (!folder.empty() && folder != "..") cmd_KillDir();
}


// --- rename

void FileCommander::cmd_RenameFiles(bool internal) {
  const int active = window_.ActivePane();
  FilePane* p = window_.pane(active);
  if (p->paneView() > FilePane::kFileView && !internal) {
    Refuse("Rename only works in File View.");
    return;
  }
  const SelectedItems selection = GetSelectedItems(*p);
  if (!selection.HasSelectionFlag) {
    const std::string folder = GetSingleFolder(*p, true);
    if (!folder.empty() && folder != "..") mnuRenameFolder_Click();
    return;
  }
  bool plugin = false;
  std::string failed;
  auto rename = [&](const std::string& from, const std::string& to) {
    if (from == to) return;
    if (to.find(kPathSeparator) != std::string::npos) {
      if (failed.empty()) failed = BadNameMessage(to);
      return;
    }
    std::string error;
    if (!RenameKeepingTarget(selection.folder + from, selection.folder + to, error)) {
      if (failed.empty()) failed = error;
      return;
    }
    plugin = plugin || IsAdobePluginName(to) || IsAdobePluginName(from);
  };
  if (selection.items.size() > 1) {
    const std::string& first = selection.items.front();
    const auto dot = first.rfind('.');
    const QString extension = QString::fromStdString(dot == std::string::npos ? std::string() : first.substr(dot + 1));
    const std::optional<QString> answer = dialogs_->Input("Rename File Extension", extension);
    if (!answer) return;
    for (const std::string& item : selection.items) {
      const auto cut = item.rfind('.');
      if (cut == std::string::npos) continue;
      rename(item, item.substr(0, cut + 1) + answer->toStdString());
      if (!failed.empty()) break;
    }
  } else if (p->listViewShown()) {
    const int row = p->model()->FindText(QString::fromStdString(selection.items.front()));
    p->listView()->StartEdit(row);
    return;
  } else {
    const std::optional<QString> answer = dialogs_->Input("Rename File", QString::fromStdString(selection.items.front()));
    if (!answer) return;
    rename(selection.items.front(), answer->trimmed().toStdString());
  }
  if (plugin) window_.ClearPluginViewFresh(active);
  window_.RefreshFile1(active);
  if (!failed.empty()) messages().ErrorMessage(failed);
}

void FileCommander::ListView1_AfterLabelEdit(int pane, const QString& oldText, const QString& newText) {
  FilePane* p = window_.pane(pane);
  const std::string folder = WithTrailingSeparator(p->folder());
  const QString trimmed = newText.trimmed();
  if (trimmed.isEmpty() || trimmed == oldText.trimmed()) return;
  if (trimmed.contains(QChar(kPathSeparator))) {
    Refuse(BadNameMessage(trimmed.toStdString()));
    return;
  }
  std::string error;
  const bool isFolder = oldText.startsWith(' ') && IsFolder(folder + oldText.mid(1).toStdString());
  const std::string from = folder + (isFolder ? oldText.mid(1) : oldText).toStdString();
  const std::string to = folder + (isFolder ? trimmed : newText).toStdString();
  if (!RenameKeepingTarget(from, to, error)) {
    messages().ErrorMessage(error);
    return;
  }
  if (!isFolder && (IsAdobePluginName(to) || IsAdobePluginName(from))) window_.ClearPluginViewFresh(pane);
  window_.RefreshFile1(pane);
  p->SelectListItem(isFolder ? " " + trimmed : newText);
}

// --- en/disable and the command row

void FileCommander::cmd_EnableDisable() {
  const int active = window_.ActivePane();
  FilePane* p = window_.pane(active);
  const int view = p->paneView();
  if (view == FilePane::kFFLView) {
    Refuse("En/Disable doesn't work in the FFL View.");
    return;
  }
  const SelectedItems selection = GetSelectedItems(*p);
  std::vector<std::string> paths;
  for (const std::string& item : selection.items) paths.push_back(FullPath(selection.folder, item, view == FilePane::kPluginView));
  PaneCatalogue catalogue;
  catalogue.PluginViewFresh = true;
  FilterEnv env;
  env.shell = &messages();
  // The Plugin View's rows are rebuilt by a new scan of the pane; the rename
  // rule is the same in both views.
  const ToggleResult result =
      cmd_EnableDisable_FileView(FilePane::kFileView, paths, catalogue, window_.pluginTypes(), env);
  // Nothing renamed and nothing failed: the error says the file type can't be
  // toggled, once.
  if (result.error) messages().Report(*result.error);
  if (result.renamed.empty()) return;
  window_.ClearPluginViewFresh(active);
  window_.RefreshFile1(active);
  if (view == FilePane::kFileView && p->listViewShown()) {
    QStringList names;
    for (const auto& r : result.renamed) names << QString::fromStdString(FileNameOf(r.to));
    p->SelectTexts(names, names.first());
  }
  if (view == FilePane::kPluginView) window_.SSTab1_Click(active);
}

void FileCommander::Command1_Click(int index) {
  switch (index) {
    case 0: {
      FilePane* p = window_.pane(window_.ActivePane());
      if (!GetSelectedItems(*p).HasSelectionFlag && p->paneView() != FilePane::kFFLView) {
        messages().MsgBox("Please select one or more files.", MsgButtons::Ok, MsgIcon::Exclamation, "Attention");
        return;
      }
      if (auto* convert = window_.command("cmdConvertDialog")) convert->trigger();
      return;
    }
    case 3: cmd_EnableDisable(); return;
    case 4:
      if (QAction* change = window_.command("mnuChangeCat")) change->trigger();
      return;
    default: {
      // Browse, Batch and Create FFL lead where their menu entries lead.
      static const char* kEntries[6] = {nullptr, "mnuBrowser", "mnuBatchProcessing", nullptr, nullptr,
                                        "mnuCreateLibrary"};
      if (index >= 0 && index < 6 && kEntries[index])
        if (QAction* entry = window_.command(kEntries[index])) entry->trigger();
    }
  }
}

}  // namespace trel
