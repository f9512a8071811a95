// The table of further plugin kinds that the user keeps in the preferences: a
// check list of rows "Type Name (ext|digit)", its file PlugTypes.ini, and the
// parsed table and file mask that the scanner, the toggle and the readers use.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace trel {

// One row of the check list; `checked` is the row's check mark.
struct PluginTypeRow {
  std::string text;
  bool checked = false;
  bool operator==(const PluginTypeRow&) const = default;
};
using PluginTypeList = std::vector<PluginTypeRow>;

// The parsed form of a checked row. An unchecked row leaves its column empty
// (all fields empty); consumers skip empty columns.
struct PluginType {
  std::string typeName;    // shown as "[typeName]"
  std::string extension;   // without point, any length
  std::string nameSource;  // "0" FileDescription, "1" InternalName, "2" ProductName, "3" file name
  bool empty() const { return extension.empty(); }
};

struct PluginTypeTable {
  std::vector<PluginType> PluginTypes;  // one column per list row
  std::string PluginTypePattern;        // ";*?ext" or ";*.e;*_e" per checked row
  bool isEmpty() const { return PluginTypes.empty(); }
};

// The 41 rows a fresh installation starts with, in their order.
const std::vector<std::string>& DefaultPluginTypeRows();

// Rebuilds table and pattern from the checked rows; an empty list leaves both.
void GetPlugTypes(const PluginTypeList& list, PluginTypeTable& table);

// The first column whose extension ends the lower-cased name with a point or an
// underscore before it; null when none. `name` may be a whole path.
const PluginType* MatchPluginType(const PluginTypeTable& table, const std::string& name);
// The scanner's variant: only the four-character suffix is compared, so an
// extension of more than three letters never matches.
const PluginType* MatchPluginTypeBySuffix(const PluginTypeTable& table, const std::string& suffix4);

// Text files of the preferences' lists: one line per entry, with withState a
// second line "True" or "False". Lines are read back as comma-separated items,
// so an entry holding a comma comes back as two. LoadList returns false and
// leaves the list alone when the file is missing; SaveList replaces the file
// whole (written beside it, then renamed) and returns false if it could not.
bool LoadList(const std::string& path, PluginTypeList& list, bool withState);
bool SaveList(const std::string& path, const PluginTypeList& list, bool withState);

// The dialog's row text: name, " (", extension, "|", digit, ")".
std::string PluginTypeRowText(const std::string& name, const std::string& extension,
                              const std::string& digit);
// Splits a row at its "(" and "|"; false for a row without them.
bool SplitPluginTypeRow(const std::string& row, std::string& name, std::string& extension,
                        std::string& digit);
// Checks the Add/Edit dialog's fields; returns the message to show, or an empty
// string when they are fine, in which case points and asterisks are removed from
// the extension.
std::string CheckPluginTypeInput(const std::string& name, std::string& extension);

void AddPluginType(PluginTypeList& list, const std::string& name, const std::string& extension,
                   const std::string& digit);  // appended, checked
// Rewrites the row in place; its check mark stays. False for an index out of range.
bool EditPluginType(PluginTypeList& list, size_t index, const std::string& name,
                    const std::string& extension, const std::string& digit);
bool RemovePluginType(PluginTypeList& list, size_t index);
// Appends every default row that has no twin (same text up to "|", ignoring
// case); user rows and check marks stay.
void ResetPluginTypes(PluginTypeList& list);
// All rows get the opposite of the first row's check mark.
void TogglePluginTypes(PluginTypeList& list);

// The list the preferences open with. Older versions kept one row per settings
// key "PluginType0", "PluginType1", ...; `legacySetting` reads such a key (empty
// when missing). When PluginType0 holds something, those rows are taken over
// instead of the defaults; PlugTypes.ini in the program folder, when present,
// replaces everything with its rows and marks. Without the file every row is
// switched on. The caller deletes the legacy keys when the preferences are
// confirmed.
PluginTypeList InitialPluginTypeList(const std::string& programFolder,
                                     const std::function<std::string(const std::string&)>& legacySetting);

}  // namespace trel
