// Everything that leaves the program for the desktop: file associations as a
// .desktop entry and shared-mime-info types in the user's data folder, mail and
// web links, help pages, internet shortcuts, the file's properties, Open With
// and starting programs.
#pragma once

#include <QDialog>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <array>
#include <functional>
#include <string>
#include <vector>

namespace trel {

class UserMessages;

// How addresses and documents are handed to the desktop; tests replace it.
using UrlOpener = std::function<bool(const QString& url)>;
UrlOpener& DesktopOpener();  // QDesktopServices::openUrl unless replaced
// Whether anything on this desktop opens `url`: an application for its type
// (its scheme for mail and web addresses), or a browser for pages.
bool HasHandlerFor(const QUrl& url);

// $XDG_DATA_HOME, else ~/.local/share.
QString UserDataHome();

// The MIME type this program gives an extension ("8bf" -> application/x-trel-8bf).
QString TrelMimeType(const QString& extension);

struct AssociationResult {
  QStringList written;   // files written or removed
  QStringList problems;  // what could not be done, in words
};

// Writes trel.desktop (applications/) and trel.xml (mime/packages/) under
// `dataHome` for the extensions whose box is on, refreshes the MIME database and
// makes Trel the default with xdg-mime where those tools exist. With every box
// off both files are removed again. `program` is the program's path.
AssociationResult SetAssociations(const std::array<int, 5>& boxes, const QString& program,
                                  const QString& dataHome = UserDataHome());

// "mailto:" address "?subject=" subject "&body=" body, unescaped as always.
QString MailLink(const QString& address, const QString& subject, const QString& body);
bool SendEmail(UserMessages& hooks, const QString& address, const QString& subject, const QString& body);
bool ShowURL(UserMessages& hooks, const QString& address);
// programFolder/help/page
bool ShowHelp(UserMessages& hooks, const QString& programFolder, const QString& page);

// Writes name.desktop, a link entry to the address, into the folder (created
// when missing); an existing one is overwritten. Returns the path, empty on failure.
QString CreateInternetShortcut(const QString& address, const QString& name, const QString& folder);

// The facts of a file or folder, one "caption: value" pair a row.
std::vector<std::pair<QString, QString>> FileFacts(const QString& path);
// The Properties dialog over FileFacts.
class PropertiesDialog : public QDialog {
 public:
  explicit PropertiesDialog(const QString& path, QWidget* parent = nullptr);
};

// An application the desktop registers for a type.
struct DesktopApp {
  QString name;
  QString exec;  // the Exec line
  QString desktopFile;
};
// Every .desktop entry in the applications folders of XDG_DATA_HOME and
// XDG_DATA_DIRS whose MimeType names the type; one per file name.
std::vector<DesktopApp> AppsForMimeType(const QString& mimeType);
// The command line of an Exec entry for a file: %f %F %u %U become the path,
// other field codes go.
QStringList ExecCommand(const QString& exec, const QString& file);
// The Open With dialog: lists the applications for the file's type, starts the
// chosen one. False when nothing was started.
bool OpenWith(const QString& file, QWidget* parent, UserMessages& hooks);

// An Apps entry: a path, optionally followed by " %1" which takes the selected
// file. Starts it detached; false when it could not start.
QStringList AppCommand(const std::string& entry, const std::string& selectedFile);
bool RunApp(const std::string& entry, const std::string& selectedFile);

}  // namespace trel
