#include "shell/CommandGroups.h"
#include "shell/MainWindow.h"

namespace trel {

void InstallZipCommands(MainWindow& window) { (void)window; }

}  // namespace trel
