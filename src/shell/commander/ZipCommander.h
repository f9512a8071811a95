// The Zip menu through Debian's zip and unzip programs, run as processes with
// each name as an argument of its own. The programs run while the window goes
// on painting: each command is a chain of steps, the next one started when
// the program before it has ended. While a chain runs the window takes Esc
// (which ends the program) and no other input, as during a copy.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <functional>

namespace trel {

class MainWindow;

class ZipCommander : public QObject {
  Q_OBJECT
 public:
  explicit ZipCommander(MainWindow& window);
  static ZipCommander* Of(MainWindow& window);

  // Where a program's report goes (a dialog; tests record it).
  void SetOutputSink(std::function<void(const QString& title, const QString& text)> sink) {
    sink_ = std::move(sink);
  }
  // What a program left: its exit code (-1 when it couldn't start, crashed or
  // was stopped by Esc) and its output, both channels.
  struct Ended {
    int code = -1;
    QString output;
  };
  // Whether Esc ends the program (and the command with it) or lets it finish.
  enum class OnEsc { Stop, Finish };
  // Runs a program in a folder and hands its end to `then`, on the window's
  // thread; `input` is written to its standard input. A program ended by Esc
  // ends its command: `then` isn't called.
  void Start(const QString& program, const QStringList& arguments, const QString& folder,
             std::function<void(const Ended&)> then, OnEsc onEsc = OnEsc::Stop, const QByteArray& input = {});
  // True from a command's first program until its last step has run.
  bool busy() const { return running_ > 0; }

  void mnuAddtoZip_Click();
  void mnuTestZip_Click();
  void mnuViewZip_Click();
  void mnuUnzip_Click();
  void mnuUnzipInstall_Click();
  void mnuRepairZip_Click(bool rescue);

 private:
  // The selected zip file of the active pane (full path), empty when there is none.
  QString SelectedZip() const;
  // Unpacks into `folder`, asking before each existing file; `done` hears
  // false on cancel or failure.
  void UnzipInto(const QString& archive, const QString& folder, std::function<void(bool)> done);
  void AskAndUnzip(const QString& archive, const QString& folder, const QString& listing, const QString& details,
                   const std::function<void(bool)>& done);
  void Show(const QString& title, const QString& text);

  MainWindow& window_;
  std::function<void(const QString&, const QString&)> sink_;
  int running_ = 0;
  QTimer escapePoll_;  // ends the running programs when Esc was pressed
};

}  // namespace trel
