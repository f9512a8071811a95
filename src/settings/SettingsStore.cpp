#include "settings/SettingsStore.h"

#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>
#include <cstdlib>

namespace trel {

namespace {

// Sections are groups of the file; another application name gets a group of
// its own above them, so the tree keeps three levels.
QString KeyPath(const std::string& app, const std::string& section, const std::string& key) {
  QString path;
  if (app != kAppName) path = QString::fromStdString(app) + '/';
  return path + QString::fromStdString(section) + '/' + QString::fromStdString(key);
}

// A hand-edited file may hold values that QSettings parses as lists or typed
// values; the store knows only text.
std::string AsText(const QVariant& value) {
  if (value.typeId() == QMetaType::QStringList) return value.toStringList().join(',').toStdString();
  if (!value.canConvert<QString>()) return {};
  return value.toString().toStdString();
}

}  // namespace

std::string DefaultSettingsPath() {
  if (const char* home = std::getenv("TREL_HOME"); home && *home)
    return QDir(QString::fromLocal8Bit(home)).filePath("Trel10.ini").toStdString();
  const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  return QDir(config).filePath("Trel10/Trel10.ini").toStdString();
}

SettingsStore::SettingsStore(const std::string& iniPath)
    : path_(iniPath),
      settings_(std::make_unique<QSettings>(QString::fromStdString(iniPath), QSettings::IniFormat)) {}

SettingsStore::~SettingsStore() = default;

std::string SettingsStore::GetSetting(const std::string& app, const std::string& section,
                                      const std::string& key, const std::string& fallback) const {
  const QVariant value = settings_->value(KeyPath(app, section, key));
  if (!value.isValid()) return fallback;
  return AsText(value);
}

void SettingsStore::SaveSetting(const std::string& app, const std::string& section,
                                const std::string& key, const std::string& value) {
  settings_->setValue(KeyPath(app, section, key), QString::fromStdString(value));
}

bool SettingsStore::DeleteSetting(const std::string& app, const std::string& section,
                                  const std::string& key) {
  const QString path = KeyPath(app, section, key);
  if (!settings_->contains(path)) return false;
  settings_->remove(path);
  return true;
}

bool SettingsStore::HasSetting(const std::string& app, const std::string& section,
                               const std::string& key) const {
  return settings_->contains(KeyPath(app, section, key));
}

bool SettingsStore::Flush() {
  // The folder of a fresh store may not exist yet; QSettings does not create it.
  QDir().mkpath(QFileInfo(QString::fromStdString(path_)).absolutePath());
  settings_->sync();
  return settings_->status() != QSettings::AccessError;
}

}  // namespace trel
