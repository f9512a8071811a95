#include "shell/CommandGroups.h"
#include "shell/MainWindow.h"

namespace trel {

void InstallPluginViewCommands(MainWindow& window) { (void)window; }

// Entering Plugin View with a stale list scans the pane's folder.
void MainWindow::ScanForPluginView(int index) { (void)index; }

void MainWindow::cmd_PlugInInformation(const QString& path) { emit routeTaken("cmd_PlugInInformation", path); }

}  // namespace trel
