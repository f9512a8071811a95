#include "catalogue/CategoryChange.h"

#include <algorithm>

#include "catalogue/EnableState.h"
#include "filter/BinFile.h"
#include "filter/ByteHelpers.h"
#include "filter/Paths.h"
#include "filter/SafeTarget.h"
#include "filter/TextFormats.h"

namespace trel {
namespace {

constexpr const char* kProgramTitle = "Trel";

struct FilterFactoryPlace {
  int64_t size, countPosition, firstCharacter;
};
constexpr FilterFactoryPlace kFilterFactoryPlaces[] = {
    {49152, 23895, 23896},
    {49664, 34979, 34980},
    {53760, 30403, 30404},
    {57344, 31063, 31064},
};

void AccessError(const FilterEnv& env) {
  env.hooks().MsgBox("Error accessing plugin for category change!", MsgButtons::Ok,
                     MsgIcon::Critical, "Error");
}

// Runs `patch` on a copy of the file and puts the copy in its place only if
// every byte was written.
template <typename Patch>
bool PatchFile(const std::string& path, const FilterEnv& env, Patch patch) {
  SafeTarget target(path, /*startFromExisting=*/true);
  BinFile* file = target.file();
  if (!file) {
    AccessError(env);
    return false;
  }
  patch(*file);
  if (file->Failed() || !target.Commit()) {
    AccessError(env);
    return false;
  }
  return true;
}

}  // namespace

bool ChangeCat_FV(const PluginEntry& entry, const std::string& newCategory, const FilterEnv& env) {
  if (IsVirtualCategory(entry.category) || IsVirtualCategory(newCategory)) return false;
  const int64_t size = FileLength(entry.path);
  if (size < 0) {
    AccessError(env);
    return false;
  }

  if (entry.categoryOffset == 0) {
    const auto* place = std::find_if(std::begin(kFilterFactoryPlaces), std::end(kFilterFactoryPlaces),
                                     [size](const FilterFactoryPlace& p) { return p.size == size; });
    if (place == std::end(kFilterFactoryPlaces)) return false;
    return PatchFile(entry.path, env, [&](BinFile& file) {
      // The count goes in as 16 bits; its high byte lands on the first
      // character's place and is overwritten by the text.
      const auto n = static_cast<uint32_t>(newCategory.size());
      file.PutAt(place->countPosition, static_cast<uint8_t>(n & 0xFF));
      file.Put(static_cast<uint8_t>((n >> 8) & 0xFF));
      string2bytes(newCategory, place->firstCharacter, file);
    });
  }

  const int64_t first = entry.categoryOffset;
  const int64_t room = entry.maxCategoryLength;
  if (first < 2 || room == 0 || static_cast<int64_t>(newCategory.size()) > room) return false;
  if (first - 1 + room > size) return false;
  {
    // The entry must still describe the file: its category at its place.
    auto file = BinFile::Open(entry.path, BinFile::Mode::Read);
    if (!file) {
      AccessError(env);
      return false;
    }
    if (file->Read(first, static_cast<int64_t>(entry.category.size())) != entry.category) return false;
  }
  std::string bytes(1, static_cast<char>(newCategory.size()));
  bytes += newCategory;
  bytes.resize(static_cast<size_t>(room) + 1, '\0');
  return PatchFile(entry.path, env, [&](BinFile& file) { file.WriteAt(first - 1, bytes); });
}

bool ChangeSourceCategory(const PluginEntry& entry, const std::string& newCategory,
                          const FilterEnv& env) {
  std::string folder, name;
  SplitPath(entry.path, folder, name);
  const std::string suffix = LastFour(name);
  FFFilter f;
  const auto read = [&](FFFilter& into) {
    if (suffix == ".afs") return ReadAFS(into, folder, name, env);
    if (suffix == ".pff") return ReadPFF(into, folder, name, env);
    if (suffix == ".txt") return ReadTXT(into, folder, name, false, true, env);
    return false;
  };
  if (!read(f)) return false;
  f.category = newCategory;
  if (suffix == ".afs") Writeafspff(f, folder, 0, env);
  if (suffix == ".pff") Writeafspff(f, folder, 1, env);
  if (suffix == ".txt") WriteTXT(f, folder, true, env);
  // The writers don't report; reading the file back tells whether it worked.
  FFFilter check;
  return read(check) && check.category == newCategory;
}

std::vector<std::string> CategoryChoices(const PaneCatalogue& pane) {
  std::vector<std::string> out;
  for (const std::string& c : pane.categories) {
    if (c.empty() || c[0] != '[') out.push_back(c);
  }
  return out;
}

bool CategoryInputNeedsRetry(const PaneCatalogue& pane, const std::string& text) {
  if (text.empty()) return true;
  const bool listed = std::find(pane.categories.begin(), pane.categories.end(), text) != pane.categories.end();
  return !listed && text.rfind("[Premiere", 0) == 0;
}

ChangeCategoryResult cmd_ChangeCategory(int view, PaneCatalogue& pane, std::vector<FilterRow>& rows,
                                        const std::string& target, bool dropped,
                                        const FilterEnv& env) {
  ChangeCategoryResult result;
  ShellHooks& shell = env.hooks();
  const auto say = [&](const std::string& text) {
    shell.MsgBox(text, MsgButtons::Ok, MsgIcon::Exclamation, kProgramTitle);
    result.refused = true;
    return result;
  };
  if (view != kPluginView) return say("Change Category only works in Plugin View.");
  if (std::none_of(rows.begin(), rows.end(), [](const FilterRow& r) { return r.selected; })) {
    return say("Please select a plugin.");
  }
  if (!dropped) pane.AddCategory(target);
  if (IsVirtualCategory(target)) {
    return say(target + " is only a virtual category!\nMoving plugins to this category isn't possible.");
  }

  for (size_t r = 0; r < rows.size();) {
    if (!rows[r].selected) {
      ++r;
      continue;
    }
    bool changed = false;
    if (pane.plugins.Valid(rows[r].entry)) {
      PluginEntry& entry = pane.plugins[rows[r].entry];
      const std::string suffix = LastFour(entry.path);
      changed = (suffix == ".afs" || suffix == ".pff" || suffix == ".txt")
                    ? ChangeSourceCategory(entry, target, env)
                    : ChangeCat_FV(entry, target, env);
      if (changed) entry.category = target;
    }
    if (changed) {
      // The next row moves up into this index.
      rows.erase(rows.begin() + static_cast<std::ptrdiff_t>(r));
      result.moved = true;
    } else {
      ++result.failures;
      ++r;
    }
  }

  if (result.moved &&
      std::find(pane.categorySnapshot.begin(), pane.categorySnapshot.end(), target) ==
          pane.categorySnapshot.end()) {
    pane.categorySnapshot.push_back(target);
    std::stable_sort(pane.categorySnapshot.begin(), pane.categorySnapshot.end(),
                     PaneCatalogue::CategoryLess);
    pane.categories = pane.categorySnapshot;
  }
  if (result.failures > 0) {
    shell.MsgBox("Changing the category didn't work for " + std::to_string(result.failures) +
                     " plugin(s).",
                 MsgButtons::Ok, MsgIcon::Exclamation, kProgramTitle);
  }
  return result;
}

}  // namespace trel
