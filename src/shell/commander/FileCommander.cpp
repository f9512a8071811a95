#include "shell/commander/FileCommander.h"

#include "shell/fflview/FflViewController.h"

#include <QAction>
#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QKeyEvent>
#include <QListView>
#include <QMenu>
#include <QMimeData>
#include <QTime>
#include <QTimer>
#include <QUrl>
#include <condition_variable>
#include <deque>
#include <filesystem>
#include <mutex>
#include <thread>

#include <unistd.h>

#include "catalogue/EnableState.h"
#include "catalogue/PluginList.h"
#include "filter/FilterEnv.h"
#include "base/Paths.h"
#include "base/PluginKinds.h"
#include "picture/Module2.h"
#include "settings/FolderIdentity.h"
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
#include "shell/pane/Selection.h"

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

// The separator can't be part of a name: a rename to "a/b" would move the
// file into another folder, or fail for a folder that isn't there.
std::string BadNameMessage(const std::string& name) {
  return "\"" + name + "\" can't be a name: a file or folder name can't contain \"/\".";
}

std::string StripSeparator(std::string folder) {
  while (folder.size() > 1 && folder.back() == kPathSeparator) folder.pop_back();
  return folder;
}

}  // namespace

// One copy or move of the batch.
struct FileCommander::Job {
  std::string source;
  std::string target;
};

// Works through the jobs on a thread of its own, so that the window paints and
// hears Esc while bytes move. Jobs are handed over one by one as the window
// has asked its questions; Esc or a failure ends the batch between files.
class FileCommander::Worker {
 public:
  Worker(bool move, const std::atomic<bool>& escape) : move_(move), escape_(escape) {
    thread_ = std::thread([this] { Run(); });
  }
  ~Worker() {
    Close();
    if (thread_.joinable()) thread_.join();
  }
  void Push(Job job) {
    std::lock_guard lock(mutex_);
    // The worker only sleeps on an empty queue: a wake-up for every file of a
    // long batch would cost a switch of threads each.
    const bool idle = queue_.empty();
    queue_.push_back(std::move(job));
    if (idle) wake_.notify_one();
  }
  void Close() {
    std::lock_guard lock(mutex_);
    closed_ = true;
    wake_.notify_one();
  }
  bool finished() const { return finished_.load(); }
  bool failed() const { return failed_.load(); }
  int done() const { return done_.load(); }
  int64_t bytesDone() const { return bytesDone_.load(); }
  int64_t bytesTotal() const { return bytesTotal_.load(); }
  std::string error() {
    std::lock_guard lock(mutex_);
    return error_;
  }

 private:
  void Run() {
    const CopyProgress progress = [this](int64_t done, int64_t total) {
      bytesDone_.store(done, std::memory_order_relaxed);
      bytesTotal_.store(total, std::memory_order_relaxed);
    };
    std::deque<Job> batch;
    for (;;) {
      {
        // Whatever has been handed over is taken at once, so the window's
        // thread and this one meet at the lock once a batch, not once a file.
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [this] { return closed_ || !queue_.empty(); });
        if (queue_.empty()) break;
        batch.swap(queue_);
      }
      for (Job& job : batch) {
        if (escape_.load() || failed_.load()) continue;  // drain without work
        bytesDone_.store(0, std::memory_order_relaxed);
        bytesTotal_.store(0, std::memory_order_relaxed);
        const FileOpResult result =
            move_ ? SafeMoveFile(job.source, job.target, progress) : SafeCopyFile(job.source, job.target, progress);
        if (result.ok) {
          done_.fetch_add(1, std::memory_order_relaxed);
        } else {
          std::lock_guard lock(mutex_);
          error_ = result.error;
          failed_ = true;
        }
      }
      batch.clear();
    }
    finished_ = true;
  }

  const bool move_;
  const std::atomic<bool>& escape_;
  std::thread thread_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<Job> queue_;
  bool closed_ = false;
  std::string error_;
  std::atomic<bool> finished_{false};
  std::atomic<bool> failed_{false};
  std::atomic<int> done_{0};
  std::atomic<int64_t> bytesDone_{0};
  std::atomic<int64_t> bytesTotal_{0};
};

FileCommander::FileCommander(MainWindow& window) : QObject(&window), window_(window) {
  setObjectName("FileCommander");
  window.parts().commander = this;
  dialogs_ = MakeFileDialogs(&window);
  qApp->installEventFilter(this);
}

FileCommander::~FileCommander() = default;

FileCommander* FileCommander::Of(MainWindow& window) { return window.parts().commander; }

void FileCommander::SetDialogs(std::unique_ptr<FileDialogs> dialogs) { dialogs_ = std::move(dialogs); }

ShellHooks& FileCommander::messages() { return hooks_ ? *hooks_ : window_.messages(); }

void FileCommander::Refuse(const std::string& text, const std::string& title) {
  messages().MsgBox(text, MsgButtons::Ok, MsgIcon::Exclamation, title);
}

bool FileCommander::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape)
    window_.EscapeFlag() = true;
  // While a batch runs the window paints and hears Esc, but takes no other
  // input, so no second command starts inside the first.
  if (busy_ && watched->isWidgetType()) {
    switch (event->type()) {
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

// --- the overwrite question

int FileCommander::OverwriteCheck(const std::string& sourcePath, const std::string& targetPath) {
  if (sourcePath.empty() && targetPath.empty()) {
    overwriteChoice_ = 0;
    return 0;
  }
  return OverwriteCheckDescribed(sourcePath.empty() ? QString() : Described(sourcePath), targetPath);
}

int FileCommander::OverwriteCheckDescribed(const QString& source, const std::string& targetPath) {
  // Asked for every file of a batch: one system call, no conversion of the name.
  if (::access(targetPath.c_str(), F_OK) != 0 || overwriteChoice_ == 2) return 0;
  if (overwriteChoice_ == 3) return 1;
  QString first = Described(targetPath);
  QString second;
  if (source.isEmpty()) {
    first += " ?";
  } else {
    second = source + " ?";
  }
  const int button = dialogs_->Overwrite(first, second);
  overwriteChoice_ = button;
  switch (button) {
    case 2: return 0;
    case 3: return 1;
    case 0:
    case 1: overwriteChoice_ = 0; return button;  // a single answer isn't a standing one
    default: return 4;
  }
}

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

std::string FileCommander::FullPath(const std::string& folder, const std::string& item, int view) const {
  if (view == FilePane::kPluginView || (!item.empty() && item.front() == kPathSeparator)) return item;
  return folder + item;
}

// --- copy and move

int FileCommander::RunJobs(std::vector<Job>& jobs, bool move, std::string& error) {
  // `jobs` holds the candidates; each is asked about first, on this thread,
  // and handed to the worker as soon as it is answered.
  window_.EscapeFlag() = false;
  busy_ = true;
  const double start = SecondsSinceMidnight();
  const long total = static_cast<long>(jobs.size());
  Worker worker(move, window_.EscapeFlag());
  QTimer ticker;
  ticker.setInterval(100);
  connect(&ticker, &QTimer::timeout, this, [&] {
    const int64_t bytes = worker.bytesTotal();
    if (bytes > (64 << 20)) {
      window_.Progressbar(static_cast<int>(100 * worker.bytesDone() / bytes));
    } else if (worker.done() > 0) {
      window_.StatusDisplay(worker.done(), total, start);
    }
  });
  ticker.start();
  std::vector<Job> handed;
  QElapsedTimer slice;
  slice.start();
  for (Job& job : jobs) {
    // Thousands of names are handed over in slices, so the window paints and
    // hears Esc in between.
    if (slice.elapsed() > 15) {
      QApplication::processEvents();
      slice.restart();
    }
    if (window_.EscapeFlag() || worker.failed()) break;
    if (job.source.empty()) continue;
    const int answer = OverwriteCheck(job.source, job.target);
    if (answer == 4) break;
    if (answer != 0) continue;
    handed.push_back(job);
    worker.Push(std::move(job));
  }
  worker.Close();
  while (!worker.finished()) {
    QEventLoop wait;
    QTimer::singleShot(5, &wait, &QEventLoop::quit);
    wait.exec();
  }
  ticker.stop();
  busy_ = false;
  window_.StatusDisplayClear();
  jobs = std::move(handed);
  if (worker.failed()) error = worker.error();
  return worker.done();
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
  std::vector<Job> jobs;
  for (const std::string& item : selection.items) {
    const std::string from = item.empty() ? item : FullPath(selection.folder, item, source->paneView());
    jobs.push_back({from, from.empty() ? from : target + FileNameOf(from)});
  }
  std::string error;
  const int done = RunJobs(jobs, false, error);
  if (done > 0 || !error.empty()) {
    window_.RefreshFile1C(active);
    if (window_.pane(passive)->paneView() == FilePane::kPluginView) window_.SSTab1_Click(passive);
  }
  OverwriteCheck("", "");
  if (!error.empty()) messages().ErrorMessage(error);
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
  std::vector<Job> jobs;
  for (const std::string& item : selection.items) {
    const std::string from = item.empty() ? item : FullPath(selection.folder, item, view);
    // A file dropped onto the folder it lies in stays where it is.
    if (!from.empty() && SameFolder(FolderOf(from), target)) continue;
    jobs.push_back({from, from.empty() ? from : target + FileNameOf(from)});
  }
  std::string error;
  RunJobs(jobs, true, error);
  OverwriteCheck("", "");
  window_.RefreshBoth();
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
    const QString path = QString::fromStdString(FullPath(selection.folder, item, view));
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
  const int active = window_.ActivePane();
  FilePane* p = window_.pane(active);
  const int view = p->paneView();
  if (view == FilePane::kFFLView && !internal) return;
  const SelectedItems selection = GetSelectedItems(*p);
  if (selection.HasSelectionFlag) {
    if (messages().MsgBox("The file(s) will be erased and won't be put in the trash can.\nProceed anyway?",
                          MsgButtons::YesNo, MsgIcon::Exclamation, "Kill") != MsgResult::Yes)
      return;
    window_.EscapeFlag() = false;
    std::string failed;
    for (const std::string& item : selection.items) {
      if (item.empty()) continue;
      QApplication::processEvents();
      if (window_.EscapeFlag()) break;
      const std::string path = FullPath(selection.folder, item, view);
      std::error_code ec;
      if (!fs::remove(path, ec) && failed.empty()) failed = path + " couldn't be erased: " + ec.message();
    }
    window_.ClearPluginViewFresh(active);
    window_.RefreshFile1(active);
    if (view == FilePane::kPluginView) window_.SSTab1_Click(active);
    if (!failed.empty()) messages().ErrorMessage(failed);
    return;
  }
  const std::string folder = GetSingleFolder(*p, true);
  if (!folder.empty() && folder != "..") cmd_KillDir();
}

void FileCommander::cmd_KillDir() {
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
  window_.EscapeFlag() = false;
  int errors = 0;
  for (const std::string& folder : folders.folders) {
    QApplication::processEvents();
    if (window_.EscapeFlag()) break;
    errors += DeleteTree(folder, true);
  }
  window_.ClearPluginViewFresh(active);
  window_.RefreshFile1(active);
  if (errors != 0)
    messages().MsgBox("Error while deleting...\nPlease check, if all selected files were deleted.", MsgButtons::Ok,
                      MsgIcon::Exclamation, "Error");
}

int FileCommander::DeleteTree(const std::string& given, bool silent) {
  const std::string folder = StripSeparator(given);
  int errors = 0;
  std::error_code ec;
  if (fs::is_symlink(folder, ec)) {
    // A link to a folder goes, never what it points to.
    if (!fs::remove(folder, ec)) ++errors;
    return errors;
  }
  for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
    const fs::path entry = it->path();
    std::error_code e;
    if (it->is_directory(e) && !it->is_symlink(e)) {
      errors += DeleteTree(entry.string(), true);
    } else if (!fs::remove(entry, e)) {
      ++errors;
    }
  }
  if (ec) ++errors;
  // An open folder can't be removed: a pane standing in it, or below it, steps
  // up out of it first.
  for (int i = 0; i < 2; ++i) {
    FilePane* p = window_.pane(i);
    if (IsSameOrInside(p->folder(), folder)) {
      p->ChangeFolder(ParentFolder(WithTrailingSeparator(folder)));
      p->DrawDirLabel();
    }
  }
  if (!fs::remove(folder, ec)) ++errors;
  if (!silent && errors >= 1)
    Refuse(std::to_string(errors) +
           " files or folders couldn't be deleted.\nThey are probably used by running applications.");
  return errors;
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
  if (IsSameOrInside(target, source)) {
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
  for (const std::string& item : selection.items) paths.push_back(FullPath(selection.folder, item, view));
  PaneCatalogue catalogue;
  catalogue.PluginViewFresh = true;
  FilterEnv env;
  env.shell = &messages();
  // The Plugin View's rows are rebuilt by a new scan of the pane; the rename
  // rule is the same in both views.
  const ToggleResult result =
      cmd_EnableDisable_FileView(FilePane::kFileView, paths, catalogue, window_.pluginTypes(), env);
  if (result.error) messages().Report(*result.error);
  if (result.renamed.empty()) {
    if (!result.failed) Refuse("Enabling and disabling of this file type is not possible.");
    return;
  }
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
  std::vector<Job> jobs;
  std::vector<std::string> folders;
  for (const QString& path : paths) {
    const std::string from = StripSeparator(path.toStdString());
    if (SameFolder(FolderOf(from), target)) continue;  // dropped where it lies
    if (IsFolder(from)) {
      folders.push_back(from);
    } else {
      jobs.push_back({from, target + FileNameOf(from)});
    }
  }
  std::string error;
  for (const std::string& folder : folders) {
    if (IsSameOrInside(target, folder)) {
      Refuse("A folder can't be moved into itself or one of its sub folders.\n" + folder);
      return;
    }
  }
  RunJobs(jobs, true, error);
  for (const std::string& folder : folders) {
    if (!error.empty()) break;
    const std::string to = target + FileNameOf(folder);
    if (QFileInfo::exists(QString::fromStdString(to)) && OverwriteCheck(folder, to) != 0) continue;
    if (!RenameKeepingTarget(folder, to, error))
      error = error.empty() ? folder + " couldn't be moved." : error;
  }
  OverwriteCheck("", "");
  window_.RefreshBoth();
  for (int i = 0; i < 2; ++i) {
    window_.ClearPluginViewFresh(i);
    if (window_.pane(i)->paneView() == FilePane::kPluginView) window_.SSTab1_Click(i);
  }
  if (!error.empty()) messages().ErrorMessage(error);
}

}  // namespace trel
