#include "settings/ProgramFolderSetup.h"

#include "filter/ProgramFolder.h"

namespace trel {

std::string PrepareProgramFolder() {
  const std::string folder = DefaultProgramFolder();
  FillProgramFolder(folder, {TREL_SHIPPED_DATA_DIR, TREL_TEMPLATE_DIR});
  return folder;
}

}  // namespace trel
