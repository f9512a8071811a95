// Reports on plugins: the information box of one file (kind, category, titles,
// the room for the category) and the exported list of a selection, as text
// lines or CSV, sorted by the line.
#pragma once

#include <string>
#include <vector>

#include "base/Error.h"
#include "catalogue/PluginTypes.h"
#include "filter/FilterEnv.h"

namespace trel {

struct PluginInformation {
  bool known = false;  // a kind was found
  std::string kind;    // e.g. "Photoshop Filter Plugin"
  std::string text;    // the whole message
};

// What the information box says about the file at `path`.
PluginInformation PlugInInformation(const std::string& path, const PluginTypeTable& table,
                                    const FilterEnv& env);

// The command: what to show. A warning in the FFL View and without a
// selection, otherwise the note titled "Plugin Information" (or a warning with
// the unknown-file line).
Error cmd_PlugInInformation(int view, const std::vector<std::string>& selection,
                            const PluginTypeTable& table, const FilterEnv& env);

// The "Include" boxes and "CSV Format" of the export dialog.
struct PlugInListOptions {
  bool category = true;
  bool filtername = true;
  bool filename = true;
  bool author = true;
  bool copyright = true;
  bool csv = false;
};

// One line per readable file, sorted as the list box sorts (case ignored);
// files that can't be read are left out.
std::vector<std::string> PlugInListLines(const std::vector<std::string>& paths,
                                         const PlugInListOptions& options, const FilterEnv& env);
// The lines as the export writes them: each ends in CR LF.
std::string JoinPlugInList(const std::vector<std::string>& lines);

// The command without its dialog: refuses an empty selection; otherwise returns
// the list text and, unless `toClipboard`, writes it to `outputPath` when there
// is at least one line (the old file is replaced only by a complete new one).
// A warning when it refused or the file could not be written.
Expected<void> cmd_PlugInList(const std::vector<std::string>& selection,
                              const PlugInListOptions& options, bool toClipboard,
                              const std::string& outputPath, std::string& text,
                              const FilterEnv& env);

}  // namespace trel
