#include "shell/commander/CopyPlan.h"

#include <filesystem>

#include "base/DirectoryListing.h"
#include "base/Paths.h"
#include "base/FolderIdentity.h"
#include "base/SafeCopy.h"
#include "picture/Module2.h"

namespace trel {

std::string FullPath(const std::string& folder, const std::string& item, bool pluginView) {
  if (pluginView || (!item.empty() && item.front() == kPathSeparator)) return item;
  return folder + item;
}

std::vector<CopyItem> PlanCopy(const std::string& folder, const std::vector<std::string>& items, bool pluginView,
                               const std::string& targetFolder) {
  std::vector<CopyItem> plan;
  plan.reserve(items.size());
  for (const std::string& item : items) {
    const std::string from = item.empty() ? item : FullPath(folder, item, pluginView);
    plan.push_back({from, from.empty() ? from : targetFolder + FileNameOf(from)});
  }
  return plan;
}

std::vector<CopyItem> PlanMove(const std::string& folder, const std::vector<std::string>& items, bool pluginView,
                               const std::string& targetFolder) {
  std::vector<CopyItem> plan;
  for (const std::string& item : items) {
    const std::string from = item.empty() ? item : FullPath(folder, item, pluginView);
    // A file dropped onto the folder it lies in stays where it is.
    if (!from.empty() && SameFolder(FolderOf(from), targetFolder)) continue;
    plan.push_back({from, from.empty() ? from : targetFolder + FileNameOf(from)});
  }
  return plan;
}

DropPlan PlanDrop(const std::vector<std::string>& paths, const std::string& targetFolder) {
  DropPlan plan;
  for (const std::string& path : paths) {
    const std::string from = StripSeparator(path);
    if (SameFolder(FolderOf(from), targetFolder)) continue;  // dropped where it lies
    if (IsFolder(from)) {
      plan.folders.push_back(from);
    } else {
      plan.files.push_back({from, targetFolder + FileNameOf(from)});
    }
  }
  for (const std::string& folder : plan.folders) {
    if (IsInsideFolder(targetFolder, folder)) {
      plan.intoItself = folder;
      break;
    }
  }
  return plan;
}

std::optional<OverwriteAnswer> OverwriteRule::Decided(bool targetExists) const {
  if (!targetExists) return OverwriteAnswer::Write;
  return standing_;
}

OverwriteAnswer OverwriteRule::Answer(OverwriteButton button) {
  switch (button) {
    case OverwriteButton::Overwrite: return OverwriteAnswer::Write;
    case OverwriteButton::Ignore: return OverwriteAnswer::Skip;
    case OverwriteButton::OverwriteAll: return *(standing_ = OverwriteAnswer::Write);
    case OverwriteButton::IgnoreAll: return *(standing_ = OverwriteAnswer::Skip);
    case OverwriteButton::Cancel: break;
  }
  return OverwriteAnswer::Stop;
}

int RemoveTree(const std::string& given) {
  namespace fs = std::filesystem;
  const std::string folder = StripSeparator(given);
  int errors = 0;
  std::error_code ec;
  if (fs::is_symlink(folder, ec)) {
    if (!fs::remove(folder, ec)) ++errors;
    return errors;
  }
  for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
    const fs::path entry = it->path();
    std::error_code e;
    if (it->is_directory(e) && !it->is_symlink(e)) {
      errors += RemoveTree(entry.string());
    } else if (!fs::remove(entry, e)) {
      ++errors;
    }
  }
  if (ec) ++errors;
  if (!fs::remove(folder, ec)) ++errors;
  return errors;
}

// The separator can't be part of a name: a rename to "a/b" would move the
// file into another folder, or fail for a folder that isn't there.
std::string BadNameMessage(const std::string& name) {
  return "\"" + name + "\" can't be a name: a file or folder name can't contain \"/\".";
}

std::string StripSeparator(std::string folder) {
  while (folder.size() > 1 && folder.back() == kPathSeparator) folder.pop_back();
  return folder;
}

}  // namespace trel
