// A plugin's enable state lives in its file name alone: a host loads only files
// with the right extension, so disabling renames the file out of its sight and
// enabling renames it back. This unit holds the naming rules and the toggle
// command over a File View selection or the rows of a Plugin View.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "catalogue/PluginList.h"
#include "catalogue/PluginTypes.h"
#include "filter/FilterEnv.h"

namespace trel {

// The view index of a pane.
constexpr int kFileView = 1;
constexpr int kPluginView = 2;
constexpr int kFFLView = 3;

struct ToggledName {
  std::string newName;
  bool enabling = false;
};

// The name a toggle gives `name` (a file name or a whole path) in the given
// view, or nullopt when no rule applies. The views differ on purpose in one
// point: the Plugin View takes a disabled type extension from the last three
// letters of the name, so an extension of four letters comes out shortened.
std::optional<ToggledName> ToggleName(const std::string& name, const PluginTypeTable& table,
                                      int view);

struct ToggleResult {
  struct Rename {
    std::string from, to;
    bool enabled;
  };
  std::vector<Rename> renamed;
  bool failed = false;          // a rename failed and ended the run
  std::optional<Error> error;   // what to tell: the failed rename or the refusal
};

// The File View's toggle over the selected paths. Refuses in the FFL View. A
// rename whose target exists is refused and ends the run; files renamed so far
// stay renamed. Clears the pane's PluginViewFresh when it renames anything.
ToggleResult cmd_EnableDisable_FileView(int view, const std::vector<std::string>& selection,
                                        PaneCatalogue& pane, const PluginTypeTable& table,
                                        const FilterEnv& env);

// The Plugin View's toggle over the selected rows of the filter list. A file is
// renamed once however many of its filters are selected; every entry of that
// file gets the new path, and every row of it the mark "+" or "-".
ToggleResult cmd_EnableDisable_PluginView(PaneCatalogue& pane, std::vector<FilterRow>& rows,
                                          const PluginTypeTable& table, const FilterEnv& env);

// Renames within the file system without ever replacing an existing file; on
// failure returns false and says why in `error`.
bool RenameKeepingTarget(const std::string& from, const std::string& to, std::string& error);

}  // namespace trel
