// The address book of the FX Download window: names and addresses in two
// parallel tables, kept in a text file of the program folder, one entry a line,
// "name;address" or the name alone.
#pragma once

#include <string>
#include <vector>

namespace trel {

struct LinkList {
  std::vector<std::string> names;
  std::vector<std::string> urls;
  bool changed = false;

  size_t size() const { return names.size(); }
};

// The two tab sheets: file and the list's name in messages.
struct LinkListTab {
  const char* file;
  const char* listName;
};
inline constexpr LinkListTab kLinkListTabs[2] = {{"FilterURLs.txt", "Plugins"},
                                                 {"TubeURLs.txt", "PSP Tubes"}};

// Reads the file into `list` (cleared first); false and the list untouched when
// the file is missing. The first semicolon splits a line; both parts are
// trimmed. A line that begins with a semicolon takes the name of the line above.
bool LoadLinks(const std::string& path, LinkList& list);
// The file's text: rows with both fields empty are skipped.
std::string LinksText(const LinkList& list);
// Replaces the file; false when it could not be written (the old file stays).
// Clears the changed flag on success.
bool SaveLinks(const std::string& path, LinkList& list);

// Swaps the row with its neighbour (direction -1 or +1); false at the ends.
bool MoveLink(LinkList& list, size_t row, int direction);
void AddLink(LinkList& list, const std::string& name, const std::string& url);
bool DeleteLink(LinkList& list, size_t row);

}  // namespace trel
