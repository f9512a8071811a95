// What a screen reader sees of a pane: only the views that are showing. Qt
// lists hidden child widgets too, and the items of a hidden list still report
// themselves as on screen; a container here lists only its shown children, so
// the lists behind the current view mode are not walked at all.
#pragma once

namespace trel {

// Installs the accessibility factory for the pane's containers (once).
void InstallShellAccessibility();

}  // namespace trel
