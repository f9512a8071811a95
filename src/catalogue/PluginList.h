// What a scan of a pane's folder found: one PluginEntry per filter (a file with
// several filters has several entries with the same path), the pane's category
// list with its snapshot, and the per-pane state that says whether the list
// still matches the folder.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace trel {

struct PluginEntry {
  // The true path, used for file access. The catalogue compares paths
  // lower-cased, which is how the list has always been matched.
  std::string path;
  std::string category;  // virtual categories stand in square brackets
  std::string title;     // for "[Unknown]" the file's name
  // Position of the category text in the file; 0 for a Filter Factory plugin
  // recognised by its position and for filter sources; -1 for a file matched by
  // the type table. Other values are signatures (see the identification).
  int32_t categoryOffset = 0;
  uint8_t maxCategoryLength = 0;  // room for the category; 0 if not known
};

// The rows of a pane's catalogue, indexed from 1 like the filter list's numbers.
class PluginList {
 public:
  int Count() const { return static_cast<int>(entries_.size()); }
  PluginEntry& operator[](int index) { return entries_.at(static_cast<size_t>(index - 1)); }
  const PluginEntry& operator[](int index) const { return entries_.at(static_cast<size_t>(index - 1)); }
  bool Valid(int index) const { return index >= 1 && index <= Count(); }
  int Add(PluginEntry entry) {
    entries_.push_back(std::move(entry));
    return Count();
  }
  void Clear() { entries_.clear(); }
  void Reserve(size_t n) { entries_.reserve(n); }
  auto begin() const { return entries_.begin(); }
  auto end() const { return entries_.end(); }
  auto begin() { return entries_.begin(); }
  auto end() { return entries_.end(); }

 private:
  std::vector<PluginEntry> entries_;
};

// A row of the Plugin View's filter list: its text ("+ " or "- " and the title,
// or the bare title of a filter source) and the index of its PluginEntry (0 for
// a filter built into the host).
struct FilterRow {
  std::string text;
  int entry = 0;
  bool selected = false;
};

// The catalogue state of one pane. The Plugin View owns one per pane, so a scan
// of one pane never touches the other's.
struct PaneCatalogue {
  PluginList plugins;
  std::vector<std::string> categories;        // sorted, distinct
  std::vector<std::string> categorySnapshot;  // the list as the scan left it
  std::string longestCategory;                // with two blanks in front, for the list's extent
  std::string scannedFolder;                  // the folder last scanned
  bool PluginViewFresh = false;               // the list matches scannedFolder

  // Adds a category at its sorted place unless it stands there already.
  void AddCategory(const std::string& category);
  // The list's sort order: case-insensitive, then by bytes.
  static bool CategoryLess(const std::string& a, const std::string& b);
};

// Virtual categories stand in square brackets and exist in no file.
bool IsVirtualCategory(const std::string& category);

}  // namespace trel
