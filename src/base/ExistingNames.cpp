#include "base/ExistingNames.h"

#include <dirent.h>
#include <unistd.h>

#include "base/Paths.h"

namespace trel {

void ExistingNames::Read(const std::string& folder) {
  folder_ = folder;
  names_.clear();
  DIR* dir = ::opendir(folder.c_str());
  readable_ = dir != nullptr;
  if (!dir) return;
  while (const dirent* entry = ::readdir(dir)) names_.insert(entry->d_name);
  ::closedir(dir);
}

bool ExistingNames::Contains(const std::string& path) {
  std::string folder, name;
  SplitPath(path, folder, name);
  if (folder != folder_) Read(folder);
  // A folder that may be entered but not listed is asked name by name.
  if (!readable_ && ::access(path.c_str(), F_OK) == 0) return true;
  return names_.count(name) > 0;
}

void ExistingNames::Add(const std::string& path) {
  std::string folder, name;
  SplitPath(path, folder, name);
  if (folder != folder_) Read(folder);
  names_.insert(name);
}

void ExistingNames::Clear() {
  folder_.clear();
  readable_ = false;
  names_.clear();
}

}  // namespace trel
