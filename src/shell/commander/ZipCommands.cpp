// The Zip menu. The archive work is done by Debian's zip and unzip. Unlike
// the one command line the design built (names joined with blanks, so a name
// with a blank fell apart), every name goes to the program as an argument of
// its own, so names with blanks, quotes or a leading dash arrive whole.
#include <QAction>
#include <QDialog>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QLabel>
#include <QLocale>
#include <QPlainTextEdit>
#include <QProcess>
#include <QVariant>
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
  // zip writes a new archive under a temporary name and removes it when
  // told to end, so Esc ends it; an unzip writing over files is left to
  // finish, or it would leave a half-written file where a good one stood.
  escapePoll_.setInterval(50);
  connect(&escapePoll_, &QTimer::timeout, this, [this] {
    if (!window_.EscapeFlag()) return;
    for (QProcess* process : findChildren<QProcess*>(Qt::FindDirectChildrenOnly)) {
      if (process->property("keepOnEsc").toBool()) continue;
      process->setProperty("stopped", true);
      process->terminate();
    }
  });
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

void ZipCommander::Start(const QString& program, const QStringList& arguments, const QString& folder,
                         std::function<void(const Ended&)> then, OnEsc onEsc, const QByteArray& input) {
  FileCommander* files = FileCommander::Of(window_);
  if (running_++ == 0) {
    window_.BeginWork();
    files->SetBusy(true);
    escapePoll_.start();
  }
  // The status row says what runs, since the program reports no progress.
  window_.label3()->setText("Running " + program + " ...");
  auto* process = new QProcess(this);
  process->setProperty("keepOnEsc", onEsc == OnEsc::Finish);
  process->setWorkingDirectory(folder);
  process->setProcessChannelMode(QProcess::MergedChannels);
  // Each program ends once: it couldn't start, or it finished (crashed included).
  auto ended = [this, files, process, then = std::move(then)](int code) {
    process->disconnect(this);
    process->deleteLater();
    const bool stopped = process->property("stopped").toBool();
    window_.StatusDisplayClear();
    if (!stopped) then(Ended{code, QString::fromLocal8Bit(process->readAll())});
    if (--running_ > 0) return;
    escapePoll_.stop();
    files->SetBusy(false);
    if (stopped) window_.RefreshBoth();  // whatever the program got done shows
  };
  connect(process, &QProcess::started, this, [process, input] {
    if (!input.isEmpty()) process->write(input);
    process->closeWriteChannel();
  });
  connect(process, &QProcess::finished, this, [ended](int code, QProcess::ExitStatus status) {
    ended(status == QProcess::NormalExit ? code : -1);
  });
  connect(process, &QProcess::errorOccurred, this, [ended](QProcess::ProcessError error) {
    if (error == QProcess::FailedToStart) ended(-1);
  });
  process->start(program, arguments);
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
  Start("zip", arguments, folder, [this, files, p](const Ended& zip) {
    if (zip.code != 0) {
      files->messages().ErrorMessage(zip.code < 0 ? std::string("The program zip could not be started.")
                                                  : "zip: " + zip.output.trimmed().toStdString());
    }
    p->Combo1_Click(kZipMaskEntry);
    window_.RefreshBoth();
  });
}

void ZipCommander::mnuTestZip_Click() {
  const QString archive = SelectedZip();
  if (archive.isEmpty()) return;  // not a zip: nothing to say
  Start("zip", {"-T", AsArgument(QFileInfo(archive).fileName())}, QFileInfo(archive).absolutePath(),
        [this](const Ended& test) {
          Show("Test Zip", test.code < 0 ? "The program zip could not be started." : test.output);
        });
}

void ZipCommander::mnuViewZip_Click() {
  const QString archive = SelectedZip();
  if (archive.isEmpty()) return;
  Start("unzip", {"-l", AsArgument(QFileInfo(archive).fileName())}, QFileInfo(archive).absolutePath(),
        [this](const Ended& view) {
          Show("View Zip", view.code < 0 ? "The program unzip could not be started." : view.output);
        });
}

void ZipCommander::UnzipInto(const QString& archive, const QString& folder, std::function<void(bool)> done) {
  Start("unzip", {"-Z1", archive}, folder, [=, this](const Ended& listing) {
    if (listing.code != 0) {
      FileCommander::Of(window_)->messages().ErrorMessage(archive.toStdString() + " can't be read as a zip file.");
      done(false);
      return;
    }
    // The question shows the entry that would replace the file, with the
    // entry's own size and date, not the archive's.
    Start("unzip", {"-l", archive}, folder, [=, this](const Ended& details) {
      AskAndUnzip(archive, folder, listing.output, details.output, done);
    });
  });
}

void ZipCommander::AskAndUnzip(const QString& archive, const QString& folder, const QString& listing,
                               const QString& details, const std::function<void(bool)>& done) {
  FileCommander* files = FileCommander::Of(window_);
  const QHash<QString, QString> described = EntryLabels(archive, details);
  QStringList skip;
  files->OverwriteCheck("", "");
  const QString base = QString::fromStdString(WithTrailingSeparator(folder.toStdString()));
  for (const QString& entry : listing.split('\n', Qt::SkipEmptyParts)) {
    if (entry.endsWith('/')) continue;
    const QString target = base + entry;
    if (!QFileInfo::exists(target)) continue;
    const OverwriteAnswer answer =
        files->OverwriteCheckDescribed(described.value(entry, archive + ": " + entry), target.toStdString());
    if (answer == OverwriteAnswer::Stop) {
      files->OverwriteCheck("", "");
      done(false);
      return;
    }
    if (answer == OverwriteAnswer::Skip) skip << entry;
  }
  files->OverwriteCheck("", "");
  QStringList arguments{"-o", "-q", archive, "-d", folder};
  if (!skip.isEmpty()) arguments << "-x" << skip;
  Start(
      "unzip", arguments, folder,
      [files, done](const Ended& unzip) {
        if (unzip.code != 0) {
          files->messages().ErrorMessage(unzip.code < 0 ? std::string("The program unzip could not be started.")
                                                        : "unzip: " + unzip.output.trimmed().toStdString());
        }
        done(unzip.code == 0);
      },
      OnEsc::Finish);
}

void ZipCommander::mnuUnzip_Click() {
  const QString archive = SelectedZip();
  if (archive.isEmpty()) return;
  const int passive = window_.ActivePane() ^ 1;
  UnzipInto(archive, QString::fromStdString(window_.pane(passive)->folder()), [this, passive](bool) {
    window_.ClearPluginViewFresh(passive);
    window_.RefreshBoth();
  });
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
  UnzipInto(archive, folder, [this, passive, folder](bool unzipped) {
    if (unzipped) {
      FilePane* p = window_.pane(passive);
      p->ChangeFolder(folder.toStdString());
      p->DrawDirLabel();
      window_.ClearPluginViewFresh(passive);
    }
    window_.RefreshBoth();
  });
}

void ZipCommander::mnuRepairZip_Click(bool rescue) {
  const QString archive = SelectedZip();
  if (archive.isEmpty()) return;
  const QFileInfo info(archive);
  // The repaired archive is a new file beside the old one, which stays as it was.
  QString out = info.absolutePath() + "/" + info.completeBaseName() + (rescue ? "_rescued" : "_repaired");
  QString candidate = out + ".zip";
  for (int n = 2; QFileInfo::exists(candidate); ++n) candidate = out + QString(" (%1).zip").arg(n);
  Start(
      "zip", {rescue ? "-FF" : "-F", AsArgument(info.fileName()), "--out", candidate}, info.absolutePath(),
      [this, rescue, candidate](const Ended& repair) {
        Show(rescue ? "Rescue Zip" : "Repair Zip",
             (repair.code == 0 ? "Written: " + candidate + "\n\n" : QString()) + repair.output);
        window_.RefreshBoth();
      },
      OnEsc::Stop, QByteArray("y\n"));
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
