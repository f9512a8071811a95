// The Zip menu. The archive work is done by Debian's zip and unzip. Unlike
// the one command line the design built (names joined with blanks, so a name
// with a blank fell apart), every name goes to the program as an argument of
// its own, so names with blanks, quotes or a leading dash arrive whole.
#include <QAction>
#include <QCoreApplication>
#include <QEventLoop>
#include <QDialog>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QLocale>
#include <QPlainTextEdit>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QVBoxLayout>

#include "base/Paths.h"
#include "shell/window/CommandGroups.h"
#include "shell/commander/FileCommander.h"
#include "shell/pane/FilePane.h"
#include "shell/window/MainWindow.h"
#include "shell/pane/Selection.h"
#include "shell/dialogs/Dialogs.h"
#include "shell/commander/ZipCommander.h"

namespace trel {

namespace {

constexpr int kZipMaskEntry = 5;

// Names handed to zip and unzip never start with a dash, so none reads as an option.
QString AsArgument(const QString& name) { return name.startsWith('-') ? "./" + name : name; }

// "archive: entry  (N bytes, date time)" for each entry of a listing of
// `unzip -l`, whose rows are: length, date, time, name.
QHash<QString, QString> EntryLabels(const QString& archive, const QString& listing) {
  static const QRegularExpression row(R"(^\s*(\d+)\s+(\d+-\d+-\d+)\s+(\d+:\d+)\s+(.+)$)");
  QHash<QString, QString> labels;
  for (const QString& line : listing.split('\n', Qt::SkipEmptyParts)) {
    const QRegularExpressionMatch m = row.match(line);
    if (!m.hasMatch()) continue;
    const QString stamp = m.captured(2) + " " + m.captured(3);
    QDateTime when = QDateTime::fromString(stamp, "yyyy-MM-dd hh:mm");
    if (!when.isValid()) when = QDateTime::fromString(stamp, "MM-dd-yyyy hh:mm");
    const QString date = when.isValid() ? QLocale::system().toString(when, QLocale::ShortFormat) : stamp;
    labels.insert(m.captured(4), archive + ": " + m.captured(4) + "  (" + m.captured(1) + " bytes, " + date + ")");
  }
  return labels;
}

}  // namespace

ZipCommander::ZipCommander(MainWindow& window) : QObject(&window), window_(window) {
  setObjectName("ZipCommander");
  window.parts().zip = this;
  sink_ = [this](const QString& title, const QString& text) {
    QDialog dialog(&window_);
    dialog.setWindowTitle(title);
    auto* column = new QVBoxLayout(&dialog);
    auto* view = new QPlainTextEdit(text, &dialog);
    view->setObjectName("ZipOutput");
    view->setReadOnly(true);
    view->setFont(QFont("Monospace"));
    column->addWidget(view);
    auto* close = new QPushButton("Close", &dialog);
    close->setDefault(true);
    QObject::connect(close, &QPushButton::clicked, &dialog, &QDialog::accept);
    column->addWidget(close, 0, Qt::AlignRight);
    dialog.resize(640, 400);
    dialog.exec();
  };
}

ZipCommander* ZipCommander::Of(MainWindow& window) { return window.parts().zip; }

int ZipCommander::Run(const QString& program, const QStringList& arguments, const QString& folder, QString* output,
                      const QByteArray& input) {
  QProcess process;
  process.setWorkingDirectory(folder);
  process.setProcessChannelMode(QProcess::MergedChannels);
  process.start(program, arguments);
  if (!process.waitForStarted(10000)) return -1;
  if (!input.isEmpty()) process.write(input);
  process.closeWriteChannel();
  // The window keeps painting while the archive program works.
  while (!process.waitForFinished(50)) {
    if (process.state() == QProcess::NotRunning) break;
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  }
  if (output) *output = QString::fromLocal8Bit(process.readAll());
  return process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
}

void ZipCommander::Show(const QString& title, const QString& text) {
  if (sink_) sink_(title, text);
}

QString ZipCommander::SelectedZip() const {
  FilePane* p = window_.pane(window_.ActivePane());
  const SingleItem item = GetSingleItem(*p);
  if (item.name.empty() || !QString::fromStdString(item.name).endsWith(".zip", Qt::CaseInsensitive)) return {};
  // Plugin View names a file by its whole path.
  return QString::fromStdString(item.name.front() == '/' ? item.name : item.folder + item.name);
}

void ZipCommander::mnuAddtoZip_Click() {
  const int active = window_.ActivePane();
  FilePane* p = window_.pane(active);
  const SelectedItems selection = GetSelectedItems(*p);
  if (!selection.HasSelectionFlag || p->paneView() != FilePane::kFileView) return;
  const SingleItem current = GetSingleItem(*p);
  const QString suggested = QString::fromStdString(current.name).endsWith(".zip", Qt::CaseInsensitive)
                                ? QString::fromStdString(current.name)
                                : QString("New.zip");
  FileCommander* files = FileCommander::Of(window_);
  const std::optional<QString> name = files->dialogs().Input("Enter name for zip file", suggested);
  if (!name || name->trimmed().isEmpty()) return;
  const QString folder = QString::fromStdString(selection.folder);
  // Packed formats are stored as they are, not compressed again.
  QStringList arguments{"-n", ".zip:.tif:.gif:.jpg:.arj:.rar", folder + name->trimmed()};
  for (const std::string& item : selection.items) arguments << AsArgument(QString::fromStdString(item));
  QString output;
  const int code = Run("zip", arguments, folder, &output);
  if (code != 0) {
    files->messages().ErrorMessage(code < 0 ? std::string("The program zip could not be started.")
                                            : "zip: " + output.trimmed().toStdString());
  }
  p->Combo1_Click(kZipMaskEntry);
  window_.RefreshBoth();
}

void ZipCommander::mnuTestZip_Click() {
  const QString archive = SelectedZip();
  if (archive.isEmpty()) return;  // not a zip: nothing to say
  QString output;
  const int code = Run("zip", {"-T", AsArgument(QFileInfo(archive).fileName())}, QFileInfo(archive).absolutePath(), &output);
  if (code < 0) output = "The program zip could not be started.";
  Show("Test Zip", output);
}

void ZipCommander::mnuViewZip_Click() {
  const QString archive = SelectedZip();
  if (archive.isEmpty()) return;
  QString output;
  const int code = Run("unzip", {"-l", AsArgument(QFileInfo(archive).fileName())}, QFileInfo(archive).absolutePath(), &output);
  if (code < 0) output = "The program unzip could not be started.";
  Show("View Zip", output);
}

bool ZipCommander::UnzipInto(const QString& archive, const QString& folder) {
  FileCommander* files = FileCommander::Of(window_);
  QString listing;
  if (Run("unzip", {"-Z1", archive}, folder, &listing) != 0) {
    files->messages().ErrorMessage(archive.toStdString() + " can't be read as a zip file.");
    return false;
  }
  // The question shows the entry that would replace the file, with the
  // entry's own size and date, not the archive's.
  QString details;
  Run("unzip", {"-l", archive}, folder, &details);
  const QHash<QString, QString> described = EntryLabels(archive, details);
  QStringList skip;
  files->OverwriteCheck("", "");
  const QString base = QString::fromStdString(WithTrailingSeparator(folder.toStdString()));
  for (const QString& entry : listing.split('\n', Qt::SkipEmptyParts)) {
    if (entry.endsWith('/')) continue;
    const QString target = base + entry;
    if (!QFileInfo::exists(target)) continue;
    const int answer = files->OverwriteCheckDescribed(described.value(entry, archive + ": " + entry), target.toStdString());
    if (answer == 4) {
      files->OverwriteCheck("", "");
      return false;
    }
    if (answer == 1) skip << entry;
  }
  files->OverwriteCheck("", "");
  QStringList arguments{"-o", "-q", archive, "-d", folder};
  if (!skip.isEmpty()) arguments << "-x" << skip;
  QString output;
  const int code = Run("unzip", arguments, folder, &output);
  if (code != 0) {
    files->messages().ErrorMessage(code < 0 ? std::string("The program unzip could not be started.")
                                            : "unzip: " + output.trimmed().toStdString());
    return false;
  }
  return true;
}

void ZipCommander::mnuUnzip_Click() {
  const QString archive = SelectedZip();
  if (archive.isEmpty()) return;
  const int passive = window_.ActivePane() ^ 1;
  UnzipInto(archive, QString::fromStdString(window_.pane(passive)->folder()));
  window_.ClearPluginViewFresh(passive);
  window_.RefreshBoth();
}

void ZipCommander::mnuUnzipInstall_Click() {
  const QString archive = SelectedZip();
  if (archive.isEmpty()) return;
  const int passive = window_.ActivePane() ^ 1;
  // A fresh folder beside the passive pane's others, named after the archive.
  const QString parent = QString::fromStdString(window_.pane(passive)->folder());
  const QString stem = QFileInfo(archive).completeBaseName();
  QString folder = parent + stem;
  for (int n = 2; QFileInfo::exists(folder); ++n) folder = parent + stem + QString(" (%1)").arg(n);
  if (!QDir().mkpath(folder)) {
    FileCommander::Of(window_)->messages().ErrorMessage(folder.toStdString() + " couldn't be created.");
    return;
  }
  if (UnzipInto(archive, folder)) {
    FilePane* p = window_.pane(passive);
    p->ChangeFolder(folder.toStdString());
    p->DrawDirLabel();
    window_.ClearPluginViewFresh(passive);
  }
  window_.RefreshBoth();
}

void ZipCommander::mnuRepairZip_Click(bool rescue) {
  const QString archive = SelectedZip();
  if (archive.isEmpty()) return;
  const QFileInfo info(archive);
  // The repaired archive is a new file beside the old one, which stays as it was.
  QString out = info.absolutePath() + "/" + info.completeBaseName() + (rescue ? "_rescued" : "_repaired");
  QString candidate = out + ".zip";
  for (int n = 2; QFileInfo::exists(candidate); ++n) candidate = out + QString(" (%1).zip").arg(n);
  QString output;
  const int code = Run("zip", {rescue ? "-FF" : "-F", AsArgument(info.fileName()), "--out", candidate},
                       info.absolutePath(), &output, QByteArray("y\n"));
  Show(rescue ? "Rescue Zip" : "Repair Zip",
       (code == 0 ? "Written: " + candidate + "\n\n" : QString()) + output);
  window_.RefreshBoth();
}

void InstallZipCommands(MainWindow& window) {
  auto* zip = new ZipCommander(window);
  const std::pair<const char*, std::function<void()>> entries[] = {
      {"mnuAddtoZip", [zip] { zip->mnuAddtoZip_Click(); }},
      {"mnuZipit", [zip] { zip->mnuAddtoZip_Click(); }},
      {"mnuTestZip", [zip] { zip->mnuTestZip_Click(); }},
      {"mnuViewZip", [zip] { zip->mnuViewZip_Click(); }},
      {"mnuUnzip", [zip] { zip->mnuUnzip_Click(); }},
      {"mnuUnzipit", [zip] { zip->mnuUnzip_Click(); }},
      {"mnuUnzipInstall", [zip] { zip->mnuUnzipInstall_Click(); }},
      {"mnuRepairZip", [zip] { zip->mnuRepairZip_Click(false); }},
      {"mnuRescueZip", [zip] { zip->mnuRepairZip_Click(true); }},
  };
  for (const auto& [name, body] : entries) {
    if (QAction* action = window.command(name)) {
      QObject::connect(action, &QAction::triggered, zip, body);
      window.SetCommandAvailable(name, true);
    }
  }
}

}  // namespace trel
