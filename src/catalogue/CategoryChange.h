// Changing the category under which a host lists a plugin: rewriting the bytes
// in a compiled plugin, or reading a filter source and writing it back.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/Error.h"
#include "catalogue/PluginList.h"
#include "filter/FilterEnv.h"

namespace trel {

// Patches the category of one compiled plugin. A Filter Factory plugin (offset
// 0 and one of its four sizes) gets the text at its fixed place, unchecked as it
// always was. Any other plugin gets it at its category offset, behind a new
// Pascal count, with the rest of its room zeroed, provided it fits the room and
// the file still holds the category the entry names. Virtual categories have no
// place in a file and fail. The file is replaced only when the patch is complete.
// False when the plugin has no place for the text; an error when the file can't
// be read or written.
Expected<bool> ChangeCat_FV(const PluginEntry& entry, const std::string& newCategory);

// A filter source (.afs, .pff, .txt) read and written again with the category;
// true when the file then reads back with it.
bool ChangeSourceCategory(const PluginEntry& entry, const std::string& newCategory,
                          const FilterEnv& env);

struct ChangeCategoryResult {
  bool refused = false;  // the command ended before any file was touched
  bool moved = false;    // at least one row moved: select `target` and rebuild the filter list
  int failures = 0;
  // The refusal, or the count of failures once the rows are done.
  std::optional<Error> error;
};

// The categories the dialog offers: those of the list not in square brackets.
std::vector<std::string> CategoryChoices(const PaneCatalogue& pane);
// Whether the dialog must ask again for `text`: empty, or a new "[Premiere..." name.
bool CategoryInputNeedsRetry(const PaneCatalogue& pane, const std::string& text);

// Moves the selected rows of the filter list to `target`. `dropped` says the
// target is a row of the category list (a drag and drop); otherwise it came from
// the dialog and a new name joins the category list. Moved rows leave the list;
// their entries take the new category; the snapshot gains a new category. A
// plugin that can't be reached is told to the env's shell as the run meets it.
ChangeCategoryResult cmd_ChangeCategory(int view, PaneCatalogue& pane, std::vector<FilterRow>& rows,
                                        const std::string& target, bool dropped,
                                        const FilterEnv& env);

}  // namespace trel
