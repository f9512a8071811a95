#include "shell/CommandGroups.h"
#include "shell/MainWindow.h"

namespace trel {

void InstallFflCommands(MainWindow& window) { (void)window; }

void MainWindow::ConvertFFL(const QString& path) { emit routeTaken("Convert", path); }

}  // namespace trel
