// The option values of the run as a plain object, and how they are read from
// the settings tree (Load, also Cancel) and written back (OK). The window keeps
// them in a SettingsState; the preferences dialog edits a copy. Fields keep
// their design value until a non-empty setting says otherwise.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "filter/FilterOptions.h"
#include "settings/SettingsStore.h"

namespace trel {

struct FontChoice {
  std::string name;
  double size = 0;
  bool bold = false;
  bool italic = false;
  bool set = false;  // applied at Load: a name and a size of at least 1

  bool operator==(const FontChoice&) const = default;
};

// Check box values are 0, 1 or 2 (grey).
struct Preferences {
  std::string interfaceFile = "Interfc4.des";
  int usedFF = 0;
  int noFFOptimize = 0;
  int scanSubDirs = 0;
  std::array<int, 3> autoAdd{0, 0, 0};  // Folders, Pictures, Apps
  int autoTop = 0;
  std::array<int, 3> encrypt{0, 0, 0};
  std::array<int, 3> editorPlugin{0, 0, 0};
  std::string folderItemLimit = "20";  // the "Limit to" box, as typed
  // 0 Hover Selection, 1 Flat Scrollbar, 2 Gridlines, 3 Full Row Selection,
  // 4 Hot Tracking, 5 Auto Column Width
  std::array<int, 6> fileview{0, 0, 0, 1, 0, 1};
  int passivePaneFolder = 0;
  int ffl10 = 1;
  int fullStartUp = 0;
  std::array<FontChoice, 2> fonts;  // 0 list box font, 1 other font
  std::vector<std::string> apps;
  std::vector<std::string> pics;
  bool legacyPluginTypes = false;  // an older store's PluginType0 was found

  // Options that hold for the run only: the store has no key for them.
  int includeSources = 0;     // "include txt, afs and pff files" (the scanner's sources)
  int cooperative = 0;        // "Enable Cooperative Multithreading": nothing reads it
  int previewCache = 1;       // "Enabled" of the preview cache
  int jpgCompression = 25;    // the cache's JPG compression in percent
  std::array<int, 5> associate{1, 1, 1, 1, 1};  // *.8bf, *.prm, *.ffl, *.afs, *.pff
  // The frame "Photoshop FF Compilation". Load takes the template from UsedFF,
  // "Encrypted" from Encrypt0 and "Editor Plugin" from EditorPlugin0; the rest
  // lasts for the run.
  CompileOptions compile;
  // The picture chosen in the Pictures menu for the preview; empty for the
  // stored PreviewPic or Test.bmp.
  std::string previewPicture;

  bool AutoColumnWidth() const { return fileview[5] == 1; }
};

inline constexpr int kMaxListKeys = 200;

// "Sortkey" and 0 give "Sortkey0".
std::string NumberedKey(const std::string& stem, int number);

// Load: every key that isn't empty replaces the field; App and Pic are read
// from 0 up to the first empty key.
void LoadPreferences(const SettingsStore& store, Preferences& prefs);
// OK: writes the fields back. The App, Pic and PluginType keys of every number
// are deleted first and the lists written afresh; a limit that reads as 0 or
// below becomes "20"; a font size is stored as its whole part plus 1.
void CommitPreferences(SettingsStore& store, Preferences& prefs);

// The options the core takes from the preferences, for a compile, a conversion
// or an FFL write.
FilterOptions MakeFilterOptions(const Preferences& prefs, const std::string& programFolder);

// The extensions the association boxes stand for, in their order.
inline constexpr const char* kAssociationExtensions[5] = {"8bf", "prm", "ffl", "afs", "pff"};

}  // namespace trel
