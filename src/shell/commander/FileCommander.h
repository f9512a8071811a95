// The file commands of the window: copy, move, delete, kill, rename and the
// folder commands, their two dialogs, the selection commands, the keys of a
// two-pane file manager, drag and drop, and Esc. One object per window, a child
// of it named "FileCommander"; the stored overwrite choice lives here for the
// length of one command.
#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "filter/BatchConvert.h"
#include "front/UserMessages.h"
#include "shell/commander/CopyPlan.h"

class QMimeData;

namespace trel {

class MainWindow;
class FilePane;
class CopyJob;
enum class FileJob;

// The questions the commands ask, so that tests answer them without a modal
// loop. The program's implementation shows the dialogs.
class FileDialogs {
 public:
  virtual ~FileDialogs() = default;
  // The Overwrite dialog: `target` and `source` are the two labels' texts, an
  // empty `source` hides the second label and "With:".
  virtual OverwriteButton Overwrite(const QString& target, const QString& source) = 0;
  // The SelectFolder dialog over `entries` (the first is selected). `accept`
  // is its OK button's check: false keeps the dialog open. With
  // `subFolders` given, the box "Automatically create sub folder(s)" shows and
  // its state comes back through it. Empty means cancelled.
  virtual QString SelectFolder(const QStringList& entries, const std::function<bool(QString&)>& accept,
                               bool* subFolders) = 0;
  // Form3: a caption and a text box; nullopt when not confirmed.
  virtual std::optional<QString> Input(const QString& caption, const QString& text) = 0;
};

// The dialogs of the program.
std::unique_ptr<FileDialogs> MakeFileDialogs(QWidget* owner);

class FileCommander : public QObject, public OverwriteChecker {
  Q_OBJECT
 public:
  explicit FileCommander(MainWindow& window);
  ~FileCommander() override;

  static FileCommander* Of(MainWindow& window);

  // Test seams: the dialogs and the message boxes.
  void SetDialogs(std::unique_ptr<FileDialogs> dialogs);
  void SetMessages(UserMessages* hooks) { hooks_ = hooks; }
  UserMessages& messages();
  FileDialogs& dialogs() { return *dialogs_; }

  // Asks when the target exists; two empty paths reset the standing answer.
  OverwriteAnswer OverwriteCheck(const std::string& sourcePath, const std::string& targetPath) override;
  // The same question for a source that isn't a file on disk (an entry of an
  // archive): `source` is its label as the dialog shows it, "name  (N bytes, date)".
  OverwriteAnswer OverwriteCheckDescribed(const QString& source, const std::string& targetPath);

  void cmd_CopyFiles();
  void cmd_MoveFiles(const std::string& target = {}, bool internal = false);
  void cmd_DeleteFiles(bool internal = false);
  void cmd_Kill(bool internal = false);
  void cmd_KillDir();
  // Removes a folder and all in it; returns the count of entries that stayed.
  int DeleteTree(const std::string& folder, bool silent);
  void cmd_RenameFiles(bool internal = false);
  void ListView1_AfterLabelEdit(int pane, const QString& oldText, const QString& newText);
  void mnuRenameFolder_Click();
  void cmd_MakeDir();
  void cmd_MoveDir();
  void cmd_EnableDisable();
  void Command1_Click(int index);
  void mnuSelectAll_Click() { SelectAllOrToggle(true); }
  void mnuToggleselect_Click() { SelectAllOrToggle(false); }
  void SwitchCommandItems(int mode);
  void ShowContextMenu(int pane, QPoint globalPos);
  // Tab: the other pane becomes active. Insert: the current entry's selection
  // flips and the cursor moves down.
  void SwitchPane();
  void ToggleCurrentAndMoveDown();
  // Files dropped on a pane: from the other pane (empty `ontoFolder`: the
  // pane's folder), from within the pane onto a folder, or from another
  // program (paths outside both panes), always a move.
  void DropFiles(int pane, const QStringList& paths, const std::string& ontoFolder, int sourcePane = -1);
  // What a drag out of a pane carries: the selected files as URLs.
  static QMimeData* DragData(const FilePane& pane);

  // The target of the last SelectFolder (for tests and the convert dialog).
  QString SelectFolderDialog(const QString& firstEntry, bool noChange, bool* subFolders = nullptr);

  // True from the start of a copy or move until its job has ended and the
  // panes show the result (then jobFinished is emitted).
  bool busy() const { return busy_; }
  // While busy the window paints and hears Esc but takes no other input, and
  // the file commands refuse to start: for work other commands run too.
  void SetBusy(bool on) { busy_ = on; }

 signals:
  void jobFinished();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void SelectAllOrToggle(bool all);
  void Refuse(const std::string& text, const std::string& title = "Trel");
  bool FoldersIdentical();
  void StepOutOf(const std::string& folder);
  OverwriteAnswer AskOverwrite(const std::string& targetPath, bool targetExists, const std::function<QString()>& describeSource);
  // Starts a batch of copies or moves as a job off the window's thread, with
  // progress; `then` runs on the window's thread when the batch has ended,
  // with how many files were done and the first error.
  void StartJob(std::vector<CopyItem> items, FileJob kind,
                std::function<void(int done, const std::string& error)> then);
  // The end of a move: the standing overwrite answer goes, both panes show the
  // result, and the first error is told.
  void MoveEnded(const std::string& error);
  bool AcceptFolder(QString& text, bool noChange);

  MainWindow& window_;
  std::unique_ptr<FileDialogs> dialogs_;
  UserMessages* hooks_ = nullptr;
  OverwriteRule overwrite_;
  bool busy_ = false;
  QPointer<CopyJob> job_;  // the batch under way
};

}  // namespace trel
