#include <QAction>
#include <QMenu>

#include "picture/PicView.h"
#include "shell/window/CommandGroups.h"
#include "shell/window/MainWindow.h"
#include "shell/preview/PreviewController.h"

namespace trel {

void InstallPictureCommands(MainWindow& window) {
  // The Picture Editor opens from the View menu with whatever it showed last.
  QObject::connect(window.command("mnuPicView"), &QAction::triggered, &window, [&window] {
    PreviewController* preview = PreviewController::Of(window);
    if (!preview) return;
    PicView* pic = preview->picView();
    pic->show();
    pic->raise();
  });
  window.SetCommandAvailable("mnuPicView", true);
}

void MainWindow::LoadintoPicView(const QString& path) {
  emit routeTaken("LoadintoPicView", path);
  if (PreviewController* preview = PreviewController::Of(*this)) preview->LoadintoPicView(path);
}

}  // namespace trel
