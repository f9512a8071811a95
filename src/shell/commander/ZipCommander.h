// The Zip menu through Debian's zip and unzip programs, run as processes with
// each name as an argument of its own.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
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
  // Runs a program in a folder; the exit code, or -1 when it can't start. The
  // output (both channels) comes back in `output`.
  static int Run(const QString& program, const QStringList& arguments, const QString& folder, QString* output,
                 const QByteArray& input = {});

  void mnuAddtoZip_Click();
  void mnuTestZip_Click();
  void mnuViewZip_Click();
  void mnuUnzip_Click();
  void mnuUnzipInstall_Click();
  void mnuRepairZip_Click(bool rescue);

 private:
  // The selected zip file of the active pane (full path), empty when there is none.
  QString SelectedZip() const;
  // Unpacks into `folder`, asking before each existing file; false on cancel or failure.
  bool UnzipInto(const QString& archive, const QString& folder);
  void Show(const QString& title, const QString& text);

  MainWindow& window_;
  std::function<void(const QString&, const QString&)> sink_;
};

}  // namespace trel
