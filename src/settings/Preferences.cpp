#include "settings/Preferences.h"

#include <cmath>

#include "settings/Conversions.h"

namespace trel {

namespace {

void ReadCheck(const SettingsStore& store, const std::string& key, int& field) {
  if (auto value = CheckValue(store.Get(kSectionSettings, key))) field = *value;
}

void ReadList(const SettingsStore& store, const std::string& stem, std::vector<std::string>& list) {
  list.clear();
  for (int i = 0; i <= kMaxListKeys; ++i) {
    std::string value = store.Get(kSectionSettings, NumberedKey(stem, i));
    if (value.empty()) break;  // a gap hides every later entry
    list.push_back(std::move(value));
  }
}

void ReadFont(const SettingsStore& store, int which, FontChoice& font) {
  const std::string n = std::to_string(which + 1);
  const std::string name = store.Get(kSectionSettings, "FontName" + n);
  const double size = LenientNumber(store.Get(kSectionSettings, "FontSize" + n));
  if (name.empty() || size < 1) return;
  font.name = name;
  font.size = size;
  font.bold = ParseBool(store.Get(kSectionSettings, "FontBold" + n)).value_or(false);
  font.italic = ParseBool(store.Get(kSectionSettings, "FontItalic" + n)).value_or(false);
  font.set = true;
}

void WriteFont(SettingsStore& store, int which, const FontChoice& font) {
  if (!font.set) return;
  const std::string n = std::to_string(which + 1);
  store.Save(kSectionSettings, "FontName" + n, font.name);
  // The whole part plus one: a size of 8.25 on screen is stored as 9, and a size
  // taken back from the store grows by one at every OK.
  store.Save(kSectionSettings, "FontSize" + n,
             std::to_string(static_cast<long long>(std::floor(font.size)) + 1));
  store.Save(kSectionSettings, "FontBold" + n, BoolText(font.bold));
  store.Save(kSectionSettings, "FontItalic" + n, BoolText(font.italic));
}

}  // namespace

std::string NumberedKey(const std::string& stem, int number) { return stem + std::to_string(number); }

void LoadPreferences(const SettingsStore& store, Preferences& prefs) {
  if (std::string value = store.Get(kSectionSettings, "Interface"); !value.empty())
    prefs.interfaceFile = value;
  if (std::string value = store.Get(kSectionSettings, "UsedFF"); !value.empty())
    prefs.usedFF = LenientInt(value);
  ReadCheck(store, "NoFFOptimize", prefs.noFFOptimize);
  ReadCheck(store, "ScanSubDirs", prefs.scanSubDirs);
  for (int i = 0; i < 3; ++i) {
    ReadCheck(store, NumberedKey("AutoAdd", i), prefs.autoAdd[i]);
    ReadCheck(store, NumberedKey("Encrypt", i), prefs.encrypt[i]);
    ReadCheck(store, NumberedKey("EditorPlugin", i), prefs.editorPlugin[i]);
  }
  ReadCheck(store, "AutoTop", prefs.autoTop);
  if (std::string value = store.Get(kSectionSettings, "FolderItemLimit");
      !value.empty() && LenientInt(value) > 0)
    prefs.folderItemLimit = value;
  for (int i = 0; i < 6; ++i) ReadCheck(store, NumberedKey("Fileview", i), prefs.fileview[i]);
  prefs.legacyPluginTypes = !store.Get(kSectionSettings, "PluginType0").empty();
  ReadList(store, "App", prefs.apps);
  ReadList(store, "Pic", prefs.pics);
  ReadCheck(store, "PassivePaneFolder", prefs.passivePaneFolder);
  ReadCheck(store, "FFL1.0", prefs.ffl10);
  ReadCheck(store, "FullStartUp", prefs.fullStartUp);
  for (int i = 0; i < 2; ++i) ReadFont(store, i, prefs.fonts[i]);
  if (prefs.usedFF >= 0 && prefs.usedFF <= 3)
    prefs.compile.templateChoice = static_cast<CompileTemplate>(prefs.usedFF);
  prefs.compile.encrypted = prefs.encrypt[0] == 1;
  prefs.compile.editorPlugin = prefs.editorPlugin[0] == 1;
  // "Editor Plugin" and "Demo Plugin" exclude each other.
  if (prefs.compile.editorPlugin) prefs.compile.demoPlugin = false;
}

FilterOptions MakeFilterOptions(const Preferences& prefs, const std::string& programFolder) {
  FilterOptions options;
  options.noFFOptimize = prefs.noFFOptimize == 1;
  options.writeFFL10 = prefs.ffl10 == 1;
  options.compile = prefs.compile;
  options.programFolder = programFolder;
  return options;
}

void CommitPreferences(SettingsStore& store, Preferences& prefs) {
  store.Save(kSectionSettings, "Interface", prefs.interfaceFile);
  store.Save(kSectionSettings, "NoFFOptimize", std::to_string(prefs.noFFOptimize));
  store.Save(kSectionSettings, "ScanSubDirs", std::to_string(prefs.scanSubDirs));
  for (int i = 0; i < 3; ++i)
    store.Save(kSectionSettings, NumberedKey("AutoAdd", i), std::to_string(prefs.autoAdd[i]));
  store.Save(kSectionSettings, "AutoTop", std::to_string(prefs.autoTop));
  if (LenientInt(prefs.folderItemLimit) <= 0) prefs.folderItemLimit = "20";
  store.Save(kSectionSettings, "FolderItemLimit", prefs.folderItemLimit);
  for (int i = 0; i < 6; ++i)
    store.Save(kSectionSettings, NumberedKey("Fileview", i), std::to_string(prefs.fileview[i]));
  for (int i = 0; i <= kMaxListKeys; ++i) {
    for (const char* stem : {"Pic", "App", "PluginType"}) {
      const std::string key = NumberedKey(stem, i);
      if (store.HasSetting(kAppName, kSectionSettings, key))
        store.DeleteSetting(kAppName, kSectionSettings, key);
    }
  }
  for (size_t i = 0; i < prefs.apps.size(); ++i)
    store.Save(kSectionSettings, NumberedKey("App", static_cast<int>(i)), prefs.apps[i]);
  for (size_t i = 0; i < prefs.pics.size(); ++i)
    store.Save(kSectionSettings, NumberedKey("Pic", static_cast<int>(i)), prefs.pics[i]);
  store.Save(kSectionSettings, "PassivePaneFolder", std::to_string(prefs.passivePaneFolder));
  store.Save(kSectionSettings, "FFL1.0", std::to_string(prefs.ffl10));
  store.Save(kSectionSettings, "FullStartUp", std::to_string(prefs.fullStartUp));
  for (int i = 0; i < 2; ++i) WriteFont(store, i, prefs.fonts[i]);
  prefs.legacyPluginTypes = false;
}

}  // namespace trel
