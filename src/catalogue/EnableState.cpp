#include "catalogue/EnableState.h"

#include <algorithm>
#include <filesystem>

#include "base/Paths.h"

namespace trel {
namespace {

constexpr const char* kProgramTitle = "Trel";

std::string Right(const std::string& s, size_t n) { return n >= s.size() ? s : s.substr(s.size() - n); }
std::string CutEnd(const std::string& s, size_t n) { return n >= s.size() ? std::string() : s.substr(0, s.size() - n); }

}  // namespace

std::optional<ToggledName> ToggleName(const std::string& name, const PluginTypeTable& table,
                                      int view) {
  const std::string lower = ToLower(name);
  const std::string ext3 = Right(lower, 3);
  const std::string ext4 = Right(lower, 4);
  const auto withSuffix = [&](const std::string& target, bool enabling) -> std::optional<ToggledName> {
    if (name.size() < 4) return std::nullopt;
    return ToggledName{CutEnd(name, 4) + target, enabling};
  };

  if (ext3 == "pr-" || ext3 == "_rm") return withSuffix(".prm", true);
  if (ext3 == "8b-" || ext3 == "_bf") return withSuffix(".8bf", true);
  if (ext3 == "_ex") return withSuffix(".aex", true);
  if (ext3 == "8bf") {
    if (ext4 == "_8bf") return withSuffix(".8bf", true);
    if (ext4 == ".8bf") return withSuffix("._bf", false);
    return std::nullopt;
  }
  if (ext3 == "prm" || ext3 == "aex") {
    if (name.size() < 4) return std::nullopt;
    // Any character but a point before the letters counts as a disabled name.
    if (lower[lower.size() - 4] != '.') return withSuffix("." + ext3, true);
    return withSuffix("_" + ext3, false);
  }

  for (const PluginType& t : table.PluginTypes) {
    if (t.empty()) continue;
    const size_t L = t.extension.size();
    if (lower.size() < L + 1 || Right(lower, L) != ToLower(t.extension)) continue;
    const char before = lower[lower.size() - L - 1];
    if (before != '.' && before != '_') continue;
    const std::string stem = CutEnd(name, L + 1);
    if (before == '_') return ToggledName{stem + "." + t.extension, true};
    const std::string letters = view == kPluginView ? Right(ext3, L) : ToLower(Right(name, L));
    return ToggledName{stem + "_" + letters, false};
  }
  return std::nullopt;
}

bool RenameKeepingTarget(const std::string& from, const std::string& to, std::string& error) {
  std::error_code ec;
  if (std::filesystem::exists(std::filesystem::symlink_status(to, ec))) {
    error = "Can't rename \"" + from + "\": \"" + to + "\" exists already.";
    return false;
  }
  std::filesystem::rename(from, to, ec);
  if (ec) {
    error = "Can't rename \"" + from + "\" to \"" + to + "\": " + ec.message() + ".";
    return false;
  }
  return true;
}

ToggleResult cmd_EnableDisable_FileView(int view, const std::vector<std::string>& selection,
                                        PaneCatalogue& pane, const PluginTypeTable& table,
                                        const FilterEnv& env) {
  ToggleResult result;
  if (view == kFFLView) {
    result.error = Error::Warning("En/Disable doesn't work in the FFL View.", kProgramTitle);
    return result;
  }
  for (const std::string& path : selection) {
    const auto target = ToggleName(path, table, kFileView);
    if (!target) continue;
    std::string error;
    if (!RenameKeepingTarget(path, target->newName, error)) {
      result.error = Error::Fault(error, path);
      result.failed = true;
      break;
    }
    result.renamed.push_back({path, target->newName, target->enabling});
    // The catalogue no longer matches the disk.
    pane.PluginViewFresh = false;
  }
  if (!result.renamed.empty()) {
    env.hooks().RefreshActivePane();
  } else if (!result.failed) {
    result.error =
        Error::Warning("Enabling and disabling of this file type is not possible.", kProgramTitle);
  }
  return result;
}

ToggleResult cmd_EnableDisable_PluginView(PaneCatalogue& pane, std::vector<FilterRow>& rows,
                                          const PluginTypeTable& table, const FilterEnv& env) {
  ToggleResult result;
  std::vector<std::string> produced;  // lower-cased paths this run has made
  for (const FilterRow& row : rows) {
    if (!row.selected || !pane.plugins.Valid(row.entry)) continue;
    const std::string oldPath = pane.plugins[row.entry].path;
    const std::string oldLower = ToLower(oldPath);
    if (std::find(produced.begin(), produced.end(), oldLower) != produced.end()) continue;
    const auto target = ToggleName(oldPath, table, kPluginView);
    if (!target) continue;  // e.g. a filter source: no rule, no message
    std::string error;
    if (!RenameKeepingTarget(oldPath, target->newName, error)) {
      result.error = Error::Fault(error, oldPath);
      result.failed = true;
      break;
    }
    result.renamed.push_back({oldPath, target->newName, target->enabling});
    const std::string newLower = ToLower(target->newName);
    produced.push_back(newLower);
    for (PluginEntry& e : pane.plugins) {
      if (ToLower(e.path) == oldLower) e.path = target->newName;
    }
    for (FilterRow& r : rows) {
      if (pane.plugins.Valid(r.entry) && ToLower(pane.plugins[r.entry].path) == newLower &&
          !r.text.empty()) {
        r.text[0] = target->enabling ? '+' : '-';
      }
    }
  }
  env.hooks().RefreshActivePane();
  return result;
}

}  // namespace trel
