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

// What a listing takes besides names. The file lists want everything; a walk
// over a whole tree wants neither the cost of a look at every file nor a link
// back up that makes it endless.
struct ListOptions {
  bool details = true;              // lengths and times (one look at each entry)
  bool followFolderLinks = true;    // a link to a folder lists as a folder
};

// Hidden entries (names beginning with ".") are left out, as the system's own
// file boxes leave hidden files out; every walk sees what the file lists show.
// Files are matched against `pattern` by MatchesPattern; entries that are
// neither files nor folders (devices, sockets, broken links) are left out.
DirListing ListDirectory(const std::string& folder, const std::string& pattern, const ListOptions& options = {});

bool IsFolder(const std::string& path);
// The folder above `folder` (with a trailing separator), or `folder` itself at
// the root.
std::string ParentFolder(const std::string& folder);
bool IsRootFolder(const std::string& folder);

}  // namespace trel
