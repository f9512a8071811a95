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
// rebuilt). A folder already listed under another spelling of its name is
// the same entry; two names that differ in case are two folders.
bool UpdateFolderHistory(std::vector<std::string>& list, const std::string& folder,
                         const FolderHistoryOptions& options);

}  // namespace trel
