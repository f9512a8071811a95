// What the file commands decide before any widget is involved: which files a
// copy, move or drop takes and where each goes, the standing answer of the
// Overwrite question, and the small name rules of renames. Standard C++ only,
// so the rules are tested without a window.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "base/OverwriteAnswer.h"
#include "base/SafeCopy.h"

namespace trel {

// One copy or move of a batch. An empty source is a row that names no file
// (the parent entry); it stays in the plan so that counts match the selection.
struct CopyItem {
  std::string source;
  std::string target;
  // Set when the item is asked about: only a target that was there when the
  // user was asked may be replaced.
  Replace replace = Replace::Allowed;
};

// The path of a selected row: Plugin View rows and rows that already are a
// whole path stand for themselves, others lie in `folder`.
std::string FullPath(const std::string& folder, const std::string& item, bool pluginView);

// Every selected row to `targetFolder` (with its trailing separator).
std::vector<CopyItem> PlanCopy(const std::string& folder, const std::vector<std::string>& items, bool pluginView,
                               const std::string& targetFolder);
// The same for a move, leaving out what already lies in the target folder.
std::vector<CopyItem> PlanMove(const std::string& folder, const std::vector<std::string>& items, bool pluginView,
                               const std::string& targetFolder);

// Paths dropped on a folder: files to move one by one, folders to move whole.
// What lies in the target folder already is left out.
struct DropPlan {
  std::vector<CopyItem> files;
  std::vector<std::string> folders;
  // The first folder the target lies in (a move into itself), or empty.
  std::string intoItself;
};
DropPlan PlanDrop(const std::vector<std::string>& paths, const std::string& targetFolder);

// The buttons of the Overwrite question, in the order they stand.
enum class OverwriteButton { Overwrite, Ignore, OverwriteAll, IgnoreAll, Cancel };

// The standing answer of one command: "... All" answers hold until the
// command ends; single answers are for one file.
class OverwriteRule {
 public:
  void Reset() { standing_.reset(); }
  // The answer without asking, or nothing when the user must be asked.
  std::optional<OverwriteAnswer> Decided(bool targetExists) const;
  // Records the button the user chose and returns what it means.
  OverwriteAnswer Answer(OverwriteButton button);

 private:
  std::optional<OverwriteAnswer> standing_;  // from "Overwrite All" or "Ignore All"
};

// Removes a folder and all in it; a link to a folder goes, never what it
// points to. Returns the count of entries that stayed.
int RemoveTree(const std::string& folder);

// The message for a new name with a separator in it.
std::string BadNameMessage(const std::string& name);

// A folder path without its trailing separators (the root stays "/").
std::string StripSeparator(std::string folder);

}  // namespace trel
