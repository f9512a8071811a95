#include "base/DirectoryListing.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>

#include "base/Paths.h"
#include "base/NameMatch.h"

namespace trel {

namespace {

// Sorts by the lower-cased name, made once per entry rather than per comparison.
void SortByName(std::vector<DirEntry>& entries) {
  std::vector<std::pair<std::string, size_t>> keys;
  keys.reserve(entries.size());
  for (size_t i = 0; i < entries.size(); ++i) keys.emplace_back(ToLower(entries[i].name), i);
  std::sort(keys.begin(), keys.end(), [&](const auto& a, const auto& b) {
    return a.first != b.first ? a.first < b.first : entries[a.second].name < entries[b.second].name;
  });
  std::vector<DirEntry> sorted;
  sorted.reserve(entries.size());
  for (const auto& key : keys) sorted.push_back(std::move(entries[key.second]));
  entries = std::move(sorted);
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
    // Relative to the open folder: no walk of the whole path per entry.
    if (::fstatat(::dirfd(dir), entry->d_name, &st, 0) != 0) continue;
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
  SortByName(listing.files);
  SortByName(listing.folders);
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
