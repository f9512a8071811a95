#include "shell/CommandGroups.h"
#include "shell/MainWindow.h"

namespace trel {

void InstallEditorCommands(MainWindow& window) { (void)window; }

void MainWindow::LoadintoFFEditor(const QString& path) { emit routeTaken("LoadintoFFEditor", path); }

// The FF Editor's steps of the start, in their place in the order.
void MainWindow::LookforInterface() {}
void MainWindow::SelectInterfaceEntry() {}
void MainWindow::ToggleFFUI(const std::string& tempDll) { (void)tempDll; }
void MainWindow::LoadFFEditorHidden() {}

}  // namespace trel
