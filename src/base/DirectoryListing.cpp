#include "base/DirectoryListing.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "base/Paths.h"
#include "base/NameMatch.h"

namespace trel {

namespace {

// Case-blind name order, then by bytes. The lower-cased keys are made once,
// side by side in one buffer, so a folder of thousands of names costs a
// handful of allocations, not one per name or per comparison.
void SortByName(std::vector<DirEntry>& entries) {
  static const std::array<char, 256> lower = [] {
    std::array<char, 256> t{};
    for (int c = 0; c < 256; ++c) t[size_t(c)] = static_cast<char>(std::tolower(c));
    return t;
  }();
  struct Key {
    size_t at, length, index;
  };
  std::string keys;
  size_t total = 0;
  for (const DirEntry& e : entries) total += e.name.size();
  keys.reserve(total);
  std::vector<Key> order;
  order.reserve(entries.size());
  for (size_t i = 0; i < entries.size(); ++i) {
    order.push_back({keys.size(), entries[i].name.size(), i});
    for (char c : entries[i].name) keys += lower[static_cast<unsigned char>(c)];
  }
  const std::string_view all(keys);
  std::sort(order.begin(), order.end(), [&](const Key& a, const Key& b) {
    const int c = all.substr(a.at, a.length).compare(all.substr(b.at, b.length));
    return c != 0 ? c < 0 : entries[a.index].name < entries[b.index].name;
  });
  std::vector<DirEntry> sorted;
  sorted.reserve(entries.size());
  for (const Key& k : order) sorted.push_back(std::move(entries[k.index]));
  entries = std::move(sorted);
}

}  // namespace

DirListing ListDirectory(const std::string& folder, const std::string& pattern, const ListOptions& options) {
  DirListing listing;
  const std::string base = WithTrailingSeparator(folder);
  DIR* dir = ::opendir(base.c_str());
  if (!dir) return listing;
  listing.readable = true;
  const int fd = ::dirfd(dir);
  while (const dirent* entry = ::readdir(dir)) {
    const char* name = entry->d_name;
    if (name[0] == '.' || name[0] == '\0') continue;
    // The listing's own type saves a look at the entry where nothing more is
    // wanted; a link, or a file system that doesn't say, needs one.
    unsigned char type = entry->d_type;
    struct stat st {};
    bool looked = false;
    if (options.details || type == DT_UNKNOWN || type == DT_LNK) {
      if (::fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) != 0) continue;
      if (S_ISLNK(st.st_mode)) {
        // Relative to the open folder: no walk of the whole path per entry.
        if (::fstatat(fd, name, &st, 0) != 0) continue;  // a broken link
        if (S_ISDIR(st.st_mode) && !options.followFolderLinks) continue;
      }
      type = S_ISDIR(st.st_mode) ? DT_DIR : S_ISREG(st.st_mode) ? DT_REG : DT_UNKNOWN;
      looked = true;
    }
    if (type != DT_DIR && type != DT_REG) continue;
    DirEntry item;
    item.name = name;
    if (looked) {
      item.modified = static_cast<int64_t>(st.st_mtime);
      item.hasTime = options.details;
    }
    if (type == DT_DIR) {
      listing.folders.push_back(std::move(item));
    } else if (MatchesPattern(item.name, pattern)) {
      if (options.details) item.length = static_cast<int64_t>(st.st_size);
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
