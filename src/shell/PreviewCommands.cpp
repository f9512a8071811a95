#include "shell/CommandGroups.h"
#include "shell/MainWindow.h"

namespace trel {

void InstallPreviewCommands(MainWindow& window) { (void)window; }

// The preview keeps two images open; closing the window closes them.
void MainWindow::ClosePreviewImages() {}

}  // namespace trel
