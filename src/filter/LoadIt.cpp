#include "filter/LoadIt.h"

#include "base/BinFile.h"
#include "filter/Dispatch.h"
#include "filter/FFL.h"

namespace trel {

bool LoadIt(FFFilter& f, int listIndex, const PaneAccess& pane, const FilterEnv& env) {
  if (pane.ViewKind() != PaneView::FFL) {
    std::string folder, name;
    return pane.SelectedItem(folder, name) && LoadItFile(f, folder, name, env);
  }

  int number = 0;
  int64_t position = 0;
  if (!pane.FFLItemTag(listIndex, number) || !pane.FFLEntryPosition(number, position))
    return false;
  auto file = BinFile::Open(pane.FFLPath(), BinFile::Mode::Read);
  // The entry follows the header, and the byte before it must exist: a table
  // that doesn't fit the file is an error, not a read somewhere else.
  if (!file || position <= kFFLCountPosition || position > file->Length()) return false;
  file->Seek(position);
  return ReadFFLEntryII(f, *file);
}

}  // namespace trel
