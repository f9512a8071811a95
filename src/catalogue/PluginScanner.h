// Turning a folder into a pane's catalogue: the walk over the folder (and its
// subfolders), the scan mask, the dispatch of each file to its reader, and the
// Plugin View's decision whether a scan is needed at all.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "catalogue/FileWindow.h"
#include "catalogue/PluginList.h"
#include "catalogue/PluginTypes.h"
#include "filter/FilterEnv.h"

namespace trel {

struct ScanOptions {
  bool subFolders = false;      // "search for plugins in all sub folders"
  bool includeSources = false;  // "include txt, afs and pff files"
  bool ScanFFOnly = false;      // only files of the Filter Factory sizes (Shift held)
  int yieldRate = 0;            // above 0: let the interface breathe every 100/yieldRate files
};

// What the walk tells the window about itself. Any of them may be empty.
// Esc is asked of the shell (ShellHooks::EscapePressed) before every file.
struct ScanCallbacks {
  std::function<void(const std::string&)> scanLabel;  // a folder or file name being scanned
  std::function<void(int)> progress;                  // percent
  std::function<void()> processEvents;                // the yield point
  // Replaces IdentifyFile for each file that passes the mask (a cache answers
  // from what it knows). Same contract as IdentifyFile.
  std::function<bool(const std::string& folder, const std::string& name, std::vector<PluginEntry>& out)>
      identify{};
};

// The mask of the scan: the plugin suffixes and the type pattern, with the
// filter sources appended on request; "*.*" whenever a mask would exceed 256
// characters, in which case the dispatch sorts the files out by itself.
std::string PluginScanMask(const PluginTypeTable& table, bool includeSources);

// Identifies one file by its suffix and appends what it yields to `out`. Returns
// false when the file yields nothing (not a plugin kind, a skipped size, an
// unreadable source). A plugin-suffix file always yields, as "[Unknown]" if
// nothing can be read from it.
// `facts`, when given, gets the size and time of the file as its reader
// found them on opening it; left unknown for kinds read another way.
bool IdentifyFile(const std::string& folder, const std::string& name, const ScanOptions& options,
                  const PluginTypeTable& table, const FilterEnv& env, std::vector<PluginEntry>& out,
                  FileFacts* facts = nullptr);

// Walks `folder` (ending in a separator or not) depth first, its files in name
// order before its subfolders, and appends to the pane's PluginList and
// category list. Returns the number of entries, 0 when Esc aborted the walk.
int ScanPluginRecurse(PaneCatalogue& pane, const std::string& folder, const ScanOptions& options,
                      const PluginTypeTable& table, const FilterEnv& env,
                      const ScanCallbacks& callbacks = {});

enum class PluginViewEntry {
  ListStands,    // the list matched the folder; nothing was read
  Scanned,       // a scan found entries
  NothingFound,  // empty folder or Esc: tell NoPluginsFound(), back to the File View
};

// Entering the Plugin View on `folder`: scans unless PluginViewFresh is set for
// that very folder, then takes the snapshot of the category list.
PluginViewEntry EnterPluginView(PaneCatalogue& pane, const std::string& folder,
                                const ScanOptions& options, const PluginTypeTable& table,
                                const FilterEnv& env, const ScanCallbacks& callbacks = {});
// What the user reads when the Plugin View found nothing to list.
Error NoPluginsFound();

}  // namespace trel
