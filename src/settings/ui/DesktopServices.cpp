#include "settings/ui/DesktopServices.h"

#include <QDateTime>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QMimeDatabase>
#include <QProcess>
#include <QHash>
#include <QStandardPaths>
#include <QUrl>
#include <QVBoxLayout>
#include <set>

#include "base/SafeTarget.h"
#include "front/UserMessages.h"
#include "settings/Preferences.h"

namespace trel {

namespace {

const char* const kDesktopFile = "trel.desktop";
const char* const kMimePackage = "trel.xml";

const char* const kTypeComments[5] = {"Photoshop filter plugin", "Premiere filter plugin",
                                      "Filter Factory library", "Filter Factory source (AFS)",
                                      "Premiere filter source (PFF)"};

// Runs a tool if it is installed; false when it is missing or fails.
bool RunTool(const QString& tool, const QStringList& args, const QString& dataHome) {
  const QString path = QStandardPaths::findExecutable(tool);
  if (path.isEmpty()) return false;
  QProcess process;
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.insert("XDG_DATA_HOME", dataHome);
  process.setProcessEnvironment(env);
  process.start(path, args);
  if (!process.waitForFinished(20000)) {
    process.kill();
    process.waitForFinished(1000);
    return false;
  }
  return process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}

// The keys of the [Desktop Entry] group of a .desktop file; localised keys
// ("Name[de]") are left out.
QHash<QString, QString> DesktopEntry(const QString& path) {
  QHash<QString, QString> keys;
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) return keys;
  bool inGroup = false;
  while (!file.atEnd()) {
    const QString line = QString::fromUtf8(file.readLine()).trimmed();
    if (line.startsWith('[')) {
      inGroup = line == "[Desktop Entry]";
      continue;
    }
    const qsizetype eq = line.indexOf('=');
    if (!inGroup || line.startsWith('#') || eq <= 0) continue;
    const QString key = line.left(eq).trimmed();
    if (!key.contains('[') && !keys.contains(key)) keys.insert(key, line.mid(eq + 1).trimmed());
  }
  return keys;
}

bool WriteText(const QString& path, const QString& text) {
  QDir().mkpath(QFileInfo(path).absolutePath());
  return WriteWholeFile(path.toStdString(), text.toStdString());
}

}  // namespace

bool HasHandlerFor(const QUrl& url) {
  QString type;
  if (url.isLocalFile()) {
    type = QMimeDatabase().mimeTypeForFile(url.toLocalFile()).name();
  } else {
    type = "x-scheme-handler/" + url.scheme().toLower();
  }
  if (!AppsForMimeType(type).empty()) return true;
  // xdg-open falls back on $BROWSER and the usual browser commands for pages,
  // but mail needs an application that says it takes mailto.
  if (url.scheme() == "mailto") return false;
  if (!qEnvironmentVariable("BROWSER").isEmpty()) return true;
  for (const char* browser : {"x-www-browser", "www-browser", "firefox", "firefox-esr", "chromium",
                              "google-chrome", "epiphany", "konqueror", "lynx", "w3m", "links"})
    if (!QStandardPaths::findExecutable(browser).isEmpty()) return true;
  return false;
}

UrlOpener& DesktopOpener() {
  // The desktop's opener starts xdg-open and reports success whether or not
  // anything can show the address; so the question is asked first, and "no
  // viewer" reaches the user as a message instead of nothing at all.
  static UrlOpener opener = [](const QString& url) {
    const QUrl parsed(url);
    return HasHandlerFor(parsed) && QDesktopServices::openUrl(parsed);
  };
  return opener;
}

QString UserDataHome() {
  const QString env = qEnvironmentVariable("XDG_DATA_HOME");
  if (!env.isEmpty()) return env;
  return QDir::homePath() + "/.local/share";
}

QString TrelMimeType(const QString& extension) { return "application/x-trel-" + extension.toLower(); }

AssociationResult SetAssociations(const std::array<int, 5>& boxes, const QString& program,
                                  const QString& dataHome) {
  AssociationResult result;
  const QString desktopPath = dataHome + "/applications/" + kDesktopFile;
  const QString mimePath = dataHome + "/mime/packages/" + kMimePackage;
  QStringList types;
  QString xml =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<mime-info xmlns=\"http://www.freedesktop.org/standards/shared-mime-info\">\n";
  for (int i = 0; i < 5; ++i) {
    if (boxes[static_cast<size_t>(i)] != 1) continue;
    const QString ext = kAssociationExtensions[i];
    types << TrelMimeType(ext);
    xml += QString("  <mime-type type=\"%1\">\n    <comment>%2</comment>\n    <glob pattern=\"*.%3\"/>\n"
                   "  </mime-type>\n")
               .arg(TrelMimeType(ext), kTypeComments[i], ext);
  }
  xml += "</mime-info>\n";

  if (types.isEmpty()) {
    // Turned off: take back what an earlier call put there.
    for (const QString& path : {desktopPath, mimePath}) {
      if (!QFile::exists(path)) continue;
      if (QFile::remove(path))
        result.written << path;
      else
        result.problems << "Could not remove " + path;
    }
  } else {
    // The path is quoted, so a program folder with a blank still starts us.
    const QString desktop = QString(
                                "[Desktop Entry]\nType=Application\nName=Trel\n"
                                "Comment=Workbench for image-editor plugins and Filter Factory filters\n"
                                "Exec=\"%1\" %f\nTerminal=false\nCategories=Graphics;\nMimeType=%2;\n")
                                .arg(program, types.join(';'));
    if (WriteText(desktopPath, desktop))
      result.written << desktopPath;
    else
      result.problems << "Could not write " + desktopPath;
    if (WriteText(mimePath, xml))
      result.written << mimePath;
    else
      result.problems << "Could not write " + mimePath;
  }
  QDir().mkpath(dataHome + "/mime/packages");
  if (!RunTool("update-mime-database", {dataHome + "/mime"}, dataHome))
    result.problems << "update-mime-database did not run; the types take effect at the next log-in";
  RunTool("update-desktop-database", {dataHome + "/applications"}, dataHome);
  for (const QString& type : types)
    if (!RunTool("xdg-mime", {"default", kDesktopFile, type}, dataHome))
      result.problems << "xdg-mime could not make Trel the default for " + type;
  return result;
}

QString MailLink(const QString& address, const QString& subject, const QString& body) {
  return "mailto:" + address + "?subject=" + subject + "&body=" + body;
}

bool SendEmail(UserMessages& hooks, const QString& address, const QString& subject, const QString& body) {
  if (DesktopOpener()(MailLink(address, subject, body))) return true;
  hooks.MsgBox("You have no email application installed!", MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
  return false;
}

bool ShowURL(UserMessages& hooks, const QString& address) {
  if (DesktopOpener()(address)) return true;
  hooks.MsgBox("You have no HTML Viewer installed!", MsgButtons::Ok, MsgIcon::Exclamation, "Trel");
  return false;
}

bool ShowHelp(UserMessages& hooks, const QString& programFolder, const QString& page) {
  return ShowURL(hooks, QUrl::fromLocalFile(QDir(programFolder).filePath("help/" + page)).toString());
}

QString CreateInternetShortcut(const QString& address, const QString& name, const QString& folder) {
  const QString path = QDir(folder).filePath(name + ".desktop");
  const QString text = QString("[Desktop Entry]\nType=Link\nName=%1\nURL=%2\nIcon=text-html\n").arg(name, address);
  if (!WriteText(path, text)) return {};
  QFile::setPermissions(path, QFile::permissions(path) | QFileDevice::ExeOwner);  // trusted launcher
  return path;
}

std::vector<std::pair<QString, QString>> FileFacts(const QString& path) {
  std::vector<std::pair<QString, QString>> facts;
  const QFileInfo info(path);
  facts.emplace_back("Name", info.fileName().isEmpty() ? path : info.fileName());
  facts.emplace_back("Folder", info.absolutePath());
  if (!info.exists()) {
    facts.emplace_back("State", "doesn't exist");
    return facts;
  }
  const QString kind = info.isSymLink() ? "Link to " + info.symLinkTarget() : info.isDir() ? "Folder" : "File";
  facts.emplace_back("Kind", kind);
  facts.emplace_back("Type", QMimeDatabase().mimeTypeForFile(info).name());
  if (!info.isDir())
    facts.emplace_back("Size", QLocale::c().toString(info.size()) + " bytes (" +
                                   QLocale::system().formattedDataSize(info.size()) + ")");
  const auto when = [](const QDateTime& t) { return t.isValid() ? t.toString("yyyy-MM-dd hh:mm:ss") : "-"; };
  facts.emplace_back("Created", when(info.birthTime()));
  facts.emplace_back("Modified", when(info.lastModified()));
  facts.emplace_back("Accessed", when(info.lastRead()));
  facts.emplace_back("Owner", info.owner() + " / " + info.group());
  const QFileDevice::Permissions p = info.permissions();
  QString rwx;
  const std::pair<QFileDevice::Permission, char> bits[9] = {
      {QFileDevice::ReadOwner, 'r'}, {QFileDevice::WriteOwner, 'w'}, {QFileDevice::ExeOwner, 'x'},
      {QFileDevice::ReadGroup, 'r'}, {QFileDevice::WriteGroup, 'w'}, {QFileDevice::ExeGroup, 'x'},
      {QFileDevice::ReadOther, 'r'}, {QFileDevice::WriteOther, 'w'}, {QFileDevice::ExeOther, 'x'}};
  for (const auto& [bit, letter] : bits) rwx += (p & bit) ? QChar(letter) : QChar('-');
  facts.emplace_back("Permissions", rwx);
  return facts;
}

PropertiesDialog::PropertiesDialog(const QString& path, QWidget* parent) : QDialog(parent) {
  setObjectName("Properties");
  setWindowTitle("Properties of " + QFileInfo(path).fileName());
  auto* column = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  for (const auto& [caption, value] : FileFacts(path)) {
    auto* label = new QLabel(value, this);
    label->setObjectName("Fact" + caption);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setAccessibleName(caption);
    form->addRow(caption + ":", label);
  }
  column->addLayout(form);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
  column->addWidget(buttons);
}

std::vector<DesktopApp> AppsForMimeType(const QString& mimeType) {
  std::vector<DesktopApp> apps;
  std::set<QString> seen;
  QStringList roots{UserDataHome()};
  QString dirs = qEnvironmentVariable("XDG_DATA_DIRS");
  if (dirs.isEmpty()) dirs = "/usr/local/share:/usr/share";
  roots += dirs.split(':', Qt::SkipEmptyParts);
  // A type also opens with the applications of the types it inherits from.
  QStringList wanted{mimeType};
  wanted += QMimeDatabase().mimeTypeForName(mimeType).allAncestors();
  for (const QString& root : roots) {
    QDir dir(root + "/applications");
    for (const QFileInfo& file : dir.entryInfoList({"*.desktop"}, QDir::Files)) {
      if (seen.count(file.fileName())) continue;
      seen.insert(file.fileName());  // the first folder wins, as the desktop does it
      const QHash<QString, QString> entry = DesktopEntry(file.absoluteFilePath());
      if (entry.value("NoDisplay") == "true" || entry.value("Type") != "Application") continue;
      const QStringList types = entry.value("MimeType").split(';', Qt::SkipEmptyParts);
      bool match = false;
      for (const QString& t : wanted) match = match || types.contains(t);
      if (!match) continue;
      apps.push_back({entry.value("Name"), entry.value("Exec"), file.absoluteFilePath()});
    }
  }
  return apps;
}

QStringList ExecCommand(const QString& exec, const QString& file) {
  QStringList parts = QProcess::splitCommand(exec);
  QStringList command;
  bool placed = false;
  for (const QString& part : parts) {
    if (part == "%f" || part == "%F" || part == "%u" || part == "%U") {
      command << file;
      placed = true;
    } else if (part.size() == 2 && part[0] == '%') {
      continue;  // %i %c %k and the like
    } else {
      command << part;
    }
  }
  if (!placed && !command.isEmpty()) command << file;
  return command;
}

bool OpenWith(const QString& file, QWidget* parent, UserMessages& hooks) {
  const QString type = QMimeDatabase().mimeTypeForFile(file).name();
  const std::vector<DesktopApp> apps = AppsForMimeType(type);
  QDialog dialog(parent);
  dialog.setObjectName("OpenWith");
  dialog.setWindowTitle("Open With");
  auto* column = new QVBoxLayout(&dialog);
  column->addWidget(new QLabel("Choose the application to open\n" + file + "\n(" + type + ")", &dialog));
  auto* list = new QListWidget(&dialog);
  list->setObjectName("AppList");
  list->setAccessibleName("Applications");
  for (const DesktopApp& app : apps) list->addItem(app.name);
  if (!apps.empty()) list->setCurrentRow(0);
  column->addWidget(list);
  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, &dialog);
  QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
  QObject::connect(list, &QListWidget::itemDoubleClicked, &dialog, &QDialog::accept);
  column->addWidget(buttons);
  if (apps.empty()) {
    hooks.MsgBox("No application is registered for the type " + type.toStdString() + ".", MsgButtons::Ok,
                 MsgIcon::Information, "Open With");
    return false;
  }
  if (dialog.exec() != QDialog::Accepted || list->currentRow() < 0) return false;
  const QStringList command = ExecCommand(apps[static_cast<size_t>(list->currentRow())].exec, file);
  if (command.isEmpty()) return false;
  return QProcess::startDetached(command.front(), command.mid(1));
}

QStringList AppCommand(const std::string& entry, const std::string& selectedFile) {
  QString line = QString::fromStdString(entry);
  QStringList command;
  if (line.endsWith(" %1")) {
    line.chop(3);
    command << line.trimmed();
    if (!selectedFile.empty()) command << QString::fromStdString(selectedFile);
  } else {
    command << line.trimmed();
  }
  return command;
}

bool RunApp(const std::string& entry, const std::string& selectedFile) {
  const QStringList command = AppCommand(entry, selectedFile);
  if (command.isEmpty() || command.front().isEmpty()) return false;
  return QProcess::startDetached(command.front(), command.mid(1));
}

}  // namespace trel
