// Wires the file commands, the selection commands, the command row, the
// context menu, the keys of a two-pane file manager and drag and drop to the
// window's menus and panes.
#include <QAction>
#include <QPushButton>

#include "shell/window/CommandGroups.h"
#include "shell/commander/FileCommander.h"
#include "shell/pane/FilePane.h"
#include "shell/window/MainWindow.h"

namespace trel {

namespace {

// The command's caption and keys come from the window's table.
QAction* Wire(MainWindow& window, const char* name, std::function<void()> body) {
  QAction* action = window.command(name);  // stops the program on a name the table lacks
  QObject::connect(action, &QAction::triggered, &window, [body = std::move(body)] { body(); });
  window.SetCommandAvailable(name, true);
  return action;
}

// A key with no menu entry of its own.
void Key(MainWindow& window, const char* name, QKeySequence key, std::function<void()> body) {
  auto* action = new QAction(&window);
  action->setObjectName(name);
  action->setShortcut(key);
  action->setShortcutContext(Qt::WindowShortcut);
  window.addAction(action);
  QObject::connect(action, &QAction::triggered, &window, [body = std::move(body)] { body(); });
}

}  // namespace

void InstallFileCommands(MainWindow& window) {
  auto* c = new FileCommander(window);
  Wire(window, "mnuFilecopy", [c] { c->cmd_CopyFiles(); });
  Wire(window, "mnuMove", [c] { c->cmd_MoveFiles(); });
  Wire(window, "mnuRename", [c] { c->cmd_RenameFiles(); });
  Wire(window, "mnuDelete", [c] { c->cmd_DeleteFiles(); });
  Wire(window, "mnuKill2", [c] { c->cmd_Kill(); });
  Wire(window, "mnuMakeDir", [c] { c->cmd_MakeDir(); });
  Wire(window, "mnuRenameFolder", [c] { c->mnuRenameFolder_Click(); });
  Wire(window, "mnuSelectAll", [c] { c->mnuSelectAll_Click(); });
  Wire(window, "mnuToggleselect", [c] { c->mnuToggleselect_Click(); });
  Wire(window, "mnuEnable", [c] { c->cmd_EnableDisable(); });
  Key(window, "cmdSwitchPane", QKeySequence(Qt::Key_Tab), [c] { c->SwitchPane(); });
  Key(window, "cmdToggleItem", QKeySequence(Qt::Key_Insert), [c] { c->ToggleCurrentAndMoveDown(); });

  for (int i = 0; i < 6; ++i) {
    QPushButton* button = window.commandButton(i);
    button->setAccessibleName(button->text().remove('&'));
    QObject::connect(button, &QPushButton::clicked, c, [c, i] { c->Command1_Click(i); });
  }
  for (int i = 0; i < 2; ++i) {
    FilePane* p = window.pane(i);
    QObject::connect(p, &FilePane::contextMenuRequested, c, &FileCommander::ShowContextMenu);
    // Both run after the event that brought them has ended: a rename refreshes
    // the list its edit box still belongs to, and a drop may ask a question,
    // which must not run inside the drag.
    QObject::connect(p, &FilePane::labelEdited, c, &FileCommander::ListView1_AfterLabelEdit,
                     Qt::QueuedConnection);
    QObject::connect(
        p, &FilePane::filesDropped, c,
        [c](int pane, const QStringList& paths, const QString& onto, int source) {
          c->DropFiles(pane, paths, onto.toStdString(), source);
        },
        Qt::QueuedConnection);
  }
}

}  // namespace trel
