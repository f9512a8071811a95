// Reading a folder for a pane: its files under a mask and its sub-folders, with
// lengths and time stamps. A folder that can't be read lists as empty; entries
// that vanish while being read are passed over.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace trel {

struct DirEntry {
  std::string name;
  int64_t length = -1;   // -1 when it could not be read
  int64_t modified = 0;  // seconds since the epoch
  bool hasTime = false;
};

struct DirListing {
  bool readable = false;
  std::vector<DirEntry> files;    // matching the mask, sorted by name, case-blind
  std::vector<DirEntry> folders;  // sorted likewise
};

// Hidden entries (names beginning with ".") are left out, as the system's own
// file boxes leave hidden files out.
DirListing ListDirectory(const std::string& folder, const std::string& pattern);

bool IsFolder(const std::string& path);
// The folder above `folder` (with a trailing separator), or `folder` itself at
// the root.
std::string ParentFolder(const std::string& folder);
bool IsRootFolder(const std::string& folder);

}  // namespace trel
