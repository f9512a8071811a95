#include "shell/Selection.h"

#include "shell/FflViewPage.h"
#include "shell/FilePane.h"
#include "shell/PluginViewPage.h"

namespace trel {

SelectedItems GetSelectedItems(const FilePane& pane) {
  SelectedItems result;
  result.folder = pane.folder();
  switch (pane.paneView()) {
    case FilePane::kPluginView: result.items = pane.pluginView()->SelectedPaths(); break;
    default: break;
  }
  result.HasSelectionFlag = !result.items.empty();
  return result;
}

SingleItem GetSingleItem(const FilePane& pane) {
  SingleItem result;
  result.folder = pane.folder();
  if (pane.paneView() == FilePane::kPluginView) result.name = pane.pluginView()->CurrentPath();
  return result;
}

SelectedFolders GetSelectedFolders(const FilePane& pane) {
  (void)pane;
  return {};
}

std::string GetSingleFolder(const FilePane& pane, bool allowParent) {
  (void)allowParent;
  return pane.folder();
}

}  // namespace trel
