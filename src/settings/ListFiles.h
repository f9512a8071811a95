// The list files of the program folder (FolderList.log, PlugTypes.ini): one
// printed line per field, read back as comma-separated input. An entry holding a
// comma therefore comes back as two entries; the format has always been so.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace trel {

struct ListEntry {
  std::string text;
  bool state = false;  // only in lists saved with a state line
};

// The items of comma-separated input in a text: blanks around an item are
// dropped, a quoted item keeps its commas, and every line ends an item.
std::vector<std::string> InputItems(const std::string& content);

// The entries of a list file, or nothing when the file is missing or
// unreadable, in which case the caller's list stays as it was.
std::optional<std::vector<ListEntry>> LoadList(const std::string& path, bool withState);
// Replaces the file with the entries; with withState, "True" or "False" follows
// each entry on a line of its own. The old file is replaced only once the new
// one is complete. False when it could not be written.
bool SaveList(const std::string& path, const std::vector<ListEntry>& entries, bool withState);

}  // namespace trel
