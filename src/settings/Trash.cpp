#include "settings/Trash.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace trel {

namespace {

constexpr QFileDevice::Permissions kOwnerOnly =
    QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner;

// Creates `folder` and any missing parents with mode 0700, as the base
// directory rules ask of a folder made for the user's data.
bool MakeFolder(const QString& folder, QString* error) {
  if (QFileInfo(folder).isDir()) return true;
  const QString parent = QFileInfo(folder).absolutePath();
  if (parent != folder && !MakeFolder(parent, error)) return false;
  if (::mkdir(QFile::encodeName(folder).constData(), 0700) != 0 && !QFileInfo(folder).isDir()) {
    if (error) *error = folder + " couldn't be created: " + QString::fromLocal8Bit(strerror(errno));
    return false;
  }
  return true;
}

}  // namespace

QString HomeTrashFolder() {
  QString data = qEnvironmentVariable("XDG_DATA_HOME");
  if (data.isEmpty() || !QDir::isAbsolutePath(data)) data = QDir::homePath() + "/.local/share";
  return QDir::cleanPath(data + "/Trash");
}

bool MakeHomeTrash(QString* error) {
  const QString trash = HomeTrashFolder();
  if (!QDir::isAbsolutePath(trash)) {
    if (error) *error = "There is no home folder to keep the trash in.";
    return false;
  }
  const bool existed = QFileInfo(trash).isDir();
  if (!MakeFolder(trash + "/files", error) || !MakeFolder(trash + "/info", error)) return false;
  if (!existed) QFile::setPermissions(trash, kOwnerOnly);
  return true;
}

bool IsInTrash(const QString& path) {
  if (!QDir::isAbsolutePath(path)) return false;
  const QFileInfo file(QDir::cleanPath(path));
  const QDir files(file.absolutePath());
  if (files.dirName() != "files") return false;
  const QString trash = QFileInfo(files.absolutePath()).absolutePath();
  if (trash == HomeTrashFolder()) return true;
  const QString uid = QString::number(::getuid());
  const QFileInfo t(trash);
  if (t.fileName() == ".Trash-" + uid) return true;
  return t.fileName() == uid && QFileInfo(t.absolutePath()).fileName() == ".Trash";
}

bool MoveToTrash(const QString& path, QString* error) {
  QString reason;
  if (!MakeHomeTrash(&reason)) {
    if (error) *error = path + " wasn't moved to the trash: " + reason;
    return false;
  }
  QString landed;
  if (!QFile::moveToTrash(path, &landed)) {
    if (error) *error = path + " couldn't be moved to the trash.";
    return false;
  }
  if (IsInTrash(landed)) return true;
  // Qt put it somewhere that isn't a trash: bring it back, with no trace.
  const QString where = QFileInfo(landed).absoluteFilePath();
  if (!landed.isEmpty() && QFileInfo::exists(where) && QFile::rename(where, path)) {
    const QFileInfo wrong(where);
    QFile::remove(QDir::cleanPath(wrong.absolutePath() + "/../info/" + wrong.fileName() + ".trashinfo"));
    // The two folders it made, when they hold nothing else.
    QDir().rmdir(wrong.absolutePath());
    QDir().rmdir(QDir::cleanPath(wrong.absolutePath() + "/../info"));
    if (error) *error = path + " wasn't moved to the trash: the trash folder " + HomeTrashFolder() +
                        " isn't usable. The file is where it was.";
  } else if (error) {
    *error = path + " went to " + where + ", which isn't a trash folder.";
  }
  return false;
}

}  // namespace trel
