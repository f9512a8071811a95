#include "shell/CommandGroups.h"
#include "shell/MainWindow.h"

namespace trel {

void InstallPictureCommands(MainWindow& window) { (void)window; }

void MainWindow::LoadintoPicView(const QString& path) { emit routeTaken("LoadintoPicView", path); }

}  // namespace trel
