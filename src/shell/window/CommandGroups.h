// The command groups of the main window. Each group connects its menu entries,
// buttons and keys to its commands and marks them built; the window installs
// every group once, after its menus and panes stand. A group keeps its bodies
// in its own unit; the window only wires.
#pragma once

namespace trel {

class MainWindow;

void InstallFileCommands(MainWindow& window);         // selection, file commands, keys, drag and drop
void InstallZipCommands(MainWindow& window);          // the Zip menu
void InstallConvertCommands(MainWindow& window);      // the Convert dialog
void InstallPluginViewCommands(MainWindow& window);   // Plugin View, categories, information, lists
void InstallFflCommands(MainWindow& window);          // FFL View and the library commands
void InstallPreviewCommands(MainWindow& window);      // preview, invoke, about, browse, batch
void InstallPictureCommands(MainWindow& window);      // the Picture Editor
void InstallEditorCommands(MainWindow& window);       // the Filter Factory Editor
void InstallPreferencesCommands(MainWindow& window);  // preferences, desktop, link lists, help

}  // namespace trel
