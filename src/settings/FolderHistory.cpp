#include "settings/FolderHistory.h"

#include <algorithm>

#include "base/FolderIdentity.h"

namespace trel {

bool UpdateFolderHistory(std::vector<std::string>& list, const std::string& folder,
                         const FolderHistoryOptions& options) {
  const auto found = std::find_if(list.begin(), list.end(),
                                  [&](const std::string& entry) { return SameFolder(entry, folder); });
  if (!options.autoAdd) return false;
  if (found != list.end()) {
    if (!options.autoTop) return false;
    std::string entry = *found;
    list.erase(found);
    list.insert(list.begin(), entry);
    return true;
  }
  if (options.autoTop) {
    list.insert(list.begin(), folder);
  } else {
    list.push_back(folder);
  }
  if (options.limit > 0 && static_cast<int>(list.size()) > options.limit) {
    if (options.autoTop) {
      list.pop_back();
    } else {
      list.erase(list.begin());
    }
  }
  return true;
}

}  // namespace trel
