// What a command works on: the selection of the active pane, read by its view.
// In File View the items are bare names in `folder`; in Plugin View they are
// full paths, because a plugin list mixes folders; FFL View yields nothing
// here (its commands read the library's own list). `folder` ends in a separator.
#pragma once

#include <string>
#include <vector>

namespace trel {

class FilePane;

struct SelectedItems {
  std::vector<std::string> items;
  std::string folder;
  bool HasSelectionFlag = false;
};

struct SingleItem {
  std::string name;  // empty when nothing is selected
  std::string folder;
};

struct SelectedFolders {
  std::vector<std::string> folders;  // each with a trailing separator
  bool HasSelectionFlag = false;
};

SelectedItems GetSelectedItems(const FilePane& pane);
SingleItem GetSingleItem(const FilePane& pane);
SelectedFolders GetSelectedFolders(const FilePane& pane);
// The one selected folder with a trailing separator, ".." for the parent entry;
// with nothing found and `allowParent` off, the pane's folder.
std::string GetSingleFolder(const FilePane& pane, bool allowParent);

}  // namespace trel
