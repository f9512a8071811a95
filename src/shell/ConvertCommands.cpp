#include "shell/CommandGroups.h"
#include "shell/MainWindow.h"

namespace trel {

void InstallConvertCommands(MainWindow& window) { (void)window; }

}  // namespace trel
