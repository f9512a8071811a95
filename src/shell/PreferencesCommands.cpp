#include "shell/CommandGroups.h"
#include "shell/MainWindow.h"

namespace trel {

void InstallPreferencesCommands(MainWindow& window) { (void)window; }

// Opens the preferences on a page (0 the first); the Convert dialog's
// "Output Settings" opens the compile options.
void MainWindow::ShowPreferences(int page) { (void)page; }

void MainWindow::mnuFileInformation_Click() {
  FilePane* p = pane(activePane_);
  emit routeTaken("mnuFileInformation_Click", QString::fromStdString(p->folder()) + p->File1Current());
}

}  // namespace trel
