// Loading the filter the user pointed at in the active pane: a file in the
// file, plugin and category views, an entry of the library in the FFL View.
#pragma once

#include <cstdint>
#include <string>

#include "filter/FFFilter.h"
#include "filter/FilterEnv.h"

namespace trel {

// The three views of a pane.
enum class PaneView { File, Plugin, FFL };

// What LoadIt needs of the active pane; the shell implements it.
class PaneAccess {
 public:
  virtual ~PaneAccess() = default;
  virtual PaneView ViewKind() const = 0;
  // Folder (ending in a separator) and file name of the selected item; false
  // when nothing is selected.
  virtual bool SelectedItem(std::string& folder, std::string& name) const = 0;
  // The library the pane shows.
  virtual std::string FFLPath() const = 0;
  // The tag of the list item at listIndex: the entry number, counted from 1.
  virtual bool FFLItemTag(int listIndex, int& entryNumber) const = 0;
  // The pane's table: where entry `entryNumber` begins (1-based).
  virtual bool FFLEntryPosition(int entryNumber, int64_t& position) const = 0;
};

// True when a filter is now in `f`. The File and Plugin Views read the selected
// file by the interactive rules; the FFL View reads list item `listIndex` of
// the library.
bool LoadIt(FFFilter& f, int listIndex, const PaneAccess& pane, const FilterEnv& env);

}  // namespace trel
