// The per-user settings tree: application, section, key, every value a string.
// It lies in one INI file; a missing key reads as empty, and nothing here ever
// fails loudly: a broken or unreadable file reads as an empty store.
#pragma once

#include <memory>
#include <string>

class QSettings;

namespace trel {

inline constexpr const char* kAppName = "Trel10";
inline constexpr const char* kSectionFolders = "Folders";
inline constexpr const char* kSectionSettings = "Settings";
inline constexpr const char* kSectionOptions = "Options";

// $TREL_HOME/Trel10.ini when TREL_HOME is set, else Trel10/Trel10.ini in the
// user's configuration folder.
std::string DefaultSettingsPath();

class SettingsStore {
 public:
  explicit SettingsStore(const std::string& iniPath = DefaultSettingsPath());
  ~SettingsStore();
  SettingsStore(const SettingsStore&) = delete;
  SettingsStore& operator=(const SettingsStore&) = delete;

  // The application level is fixed to Trel10; the calls keep it so that a
  // caller names the whole key.
  std::string GetSetting(const std::string& app, const std::string& section,
                         const std::string& key, const std::string& fallback = {}) const;
  void SaveSetting(const std::string& app, const std::string& section, const std::string& key,
                   const std::string& value);
  // False when the key did not exist; callers test first, as a delete of a
  // missing key is an error of the store.
  bool DeleteSetting(const std::string& app, const std::string& section, const std::string& key);
  bool HasSetting(const std::string& app, const std::string& section, const std::string& key) const;

  // Shorthands for the program's own application name.
  std::string Get(const std::string& section, const std::string& key,
                  const std::string& fallback = {}) const {
    return GetSetting(kAppName, section, key, fallback);
  }
  void Save(const std::string& section, const std::string& key, const std::string& value) {
    SaveSetting(kAppName, section, key, value);
  }

  // Writes pending changes to the file; false when the file could not be
  // written (the values stay readable for the rest of the run).
  bool Flush();
  const std::string& path() const { return path_; }

 private:
  std::string path_;
  std::unique_ptr<QSettings> settings_;
};

}  // namespace trel
