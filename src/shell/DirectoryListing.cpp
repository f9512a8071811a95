#include "shell/DirectoryListing.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>

#include "filter/Paths.h"
#include "shell/PaneRules.h"

namespace trel {

namespace {

bool NameLess(const DirEntry& a, const DirEntry& b) {
  const std::string la = ToLower(a.name), lb = ToLower(b.name);
  return la != lb ? la < lb : a.name < b.name;
}

}  // namespace

DirListing ListDirectory(const std::string& folder, const std::string& pattern) {
  DirListing listing;
  const std::string base = WithTrailingSeparator(folder);
  DIR* dir = ::opendir(base.c_str());
  if (!dir) return listing;
  listing.readable = true;
  while (const dirent* entry = ::readdir(dir)) {
    const std::string name = entry->d_name;
    if (name.empty() || name[0] == '.') continue;
    struct stat st {};
    if (::stat((base + name).c_str(), &st) != 0) continue;
    DirEntry item;
    item.name = name;
    item.modified = static_cast<int64_t>(st.st_mtime);
    item.hasTime = true;
    if (S_ISDIR(st.st_mode)) {
      listing.folders.push_back(std::move(item));
    } else if (MatchesPattern(name, pattern)) {
      item.length = static_cast<int64_t>(st.st_size);
      listing.files.push_back(std::move(item));
    }
  }
  ::closedir(dir);
  std::sort(listing.files.begin(), listing.files.end(), NameLess);
  std::sort(listing.folders.begin(), listing.folders.end(), NameLess);
  return listing;
}

bool IsFolder(const std::string& path) {
  struct stat st {};
  return !path.empty() && ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::string ParentFolder(const std::string& folder) {
  std::string f = WithTrailingSeparator(folder);
  if (IsRootFolder(f)) return f;
  f.pop_back();
  const auto cut = f.rfind(kPathSeparator);
  return cut == std::string::npos ? WithTrailingSeparator(folder) : f.substr(0, cut + 1);
}

bool IsRootFolder(const std::string& folder) {
  return folder.size() == 1 && folder[0] == kPathSeparator;
}

}  // namespace trel
