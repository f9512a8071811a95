#include "shell/window/CommandGroups.h"

#include "shell/window/MainWindow.h"

namespace trel {

void MainWindow::InstallCommandGroups() {
  InstallFileCommands(*this);
  InstallZipCommands(*this);
  InstallConvertCommands(*this);
  InstallPluginViewCommands(*this);
  InstallFflCommands(*this);
  InstallPreviewCommands(*this);
  InstallPictureCommands(*this);
  InstallEditorCommands(*this);
  InstallPreferencesCommands(*this);
  Switchit(activePane_);
}

}  // namespace trel
