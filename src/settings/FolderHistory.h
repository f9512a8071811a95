// The Folders list as a history of visited folders: most recently used first
// with "Auto Top", first in first out without it, of a limited length.
#pragma once

#include <string>
#include <vector>

namespace trel {

struct FolderHistoryOptions {
  bool autoAdd = false;
  bool autoTop = false;
  int limit = 0;  // 0 or below: no limit
};

// Records a visit of `folder`; true when the list changed (its menu is then
// rebuilt). The folder is looked up lower-cased.
bool UpdateFolderHistory(std::vector<std::string>& list, const std::string& folder,
                         const FolderHistoryOptions& options);

}  // namespace trel
