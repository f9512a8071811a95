#include "shell/CommandGroups.h"
#include "shell/MainWindow.h"

namespace trel {

void InstallFileCommands(MainWindow& window) { (void)window; }

}  // namespace trel
