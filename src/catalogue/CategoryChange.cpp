#include "catalogue/CategoryChange.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>

#include "catalogue/EnableState.h"
#include "base/BinFile.h"
#include "filter/ByteHelpers.h"
#include "base/Paths.h"
#include "base/SafeTarget.h"
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

// The one message of a plugin that can't be read or written: shown with the
// critical icon under the title "Error".
Error AccessError(const std::string& path) {
  Error error{ErrorKind::Fault, "Error accessing plugin for category change!", "Error", path, 0};
  return error;
}

// Runs `patch` on a copy of the file and puts the copy in its place only if
// every byte was written.
template <typename Patch>
Expected<bool> PatchFile(const std::string& path, Patch patch) {
  SafeTarget target(path, /*startFromExisting=*/true);
  BinFile* file = target.file();
  if (!file) return AccessError(path);
  patch(*file);
  if (file->Failed() || !target.Commit()) return AccessError(path);
  return true;
}

}  // namespace

Expected<bool> ChangeCat_FV(const PluginEntry& entry, const std::string& newCategory) {
  if (IsVirtualCategory(entry.category) || IsVirtualCategory(newCategory)) return false;
  const int64_t size = FileLength(entry.path);
  if (size < 0) return AccessError(entry.path);

  if (entry.categoryOffset == 0) {
    const auto* place = std::find_if(std::begin(kFilterFactoryPlaces), std::end(kFilterFactoryPlaces),
                                     [size](const FilterFactoryPlace& p) { return p.size == size; });
    if (place == std::end(kFilterFactoryPlaces)) return false;
    // The room isn't checked, as it never was; a text its count byte can't
    // state is refused, though, rather than written over the filter's code.
    if (newCategory.size() > 255) return false;
    return PatchFile(entry.path, [&](BinFile& file) {
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
    if (!file) return AccessError(entry.path);
    if (file->Read(first, static_cast<int64_t>(entry.category.size())) != entry.category) return false;
  }
  std::string bytes(1, static_cast<char>(newCategory.size()));
  bytes += newCategory;
  bytes.resize(static_cast<size_t>(room) + 1, '\0');
  return PatchFile(entry.path, [&](BinFile& file) { file.WriteAt(first - 1, bytes); });
}

namespace {

// A fresh folder beside `folder`, on the same file system, so that its file can
// replace the original by a rename.
std::filesystem::path ScratchFolder(const std::string& folder) {
  namespace fs = std::filesystem;
  static std::atomic<unsigned> counter{0};
  const auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
  for (int attempt = 0; attempt < 100; ++attempt) {
    const fs::path candidate = fs::path(folder) / (".trel-category-" + std::to_string(stamp) + "-" +
                                                   std::to_string(++counter));
    std::error_code ec;
    if (fs::create_directory(candidate, ec) && !ec) return candidate;
  }
  return {};
}

}  // namespace

bool ChangeSourceCategory(const PluginEntry& entry, const std::string& newCategory,
                          const FilterEnv& env) {
  namespace fs = std::filesystem;
  std::string folder, name;
  SplitPath(entry.path, folder, name);
  const std::string suffix = LastFour(name);
  const auto read = [&](FFFilter& into, const std::string& from, const std::string& file) {
    if (suffix == ".afs") return ReadAFS(into, from, file, env);
    if (suffix == ".pff") return ReadPFF(into, from, file, env);
    if (suffix == ".txt") return ReadTXT(into, from, file, false, true, env);
    return false;
  };
  FFFilter f;
  if (!read(f, folder, name)) return false;
  f.category = newCategory;

  // The writers name their file after the filter (a text source may carry a
  // file name of its own), so the new file is written into a scratch folder,
  // checked, and then put in the place of the source it replaces.
  const fs::path scratch = ScratchFolder(folder);
  if (scratch.empty()) return false;
  const std::string scratchFolder = WithTrailingSeparator(scratch.string());
  if (suffix == ".afs") Writeafspff(f, scratchFolder, 0, env);
  if (suffix == ".pff") Writeafspff(f, scratchFolder, 1, env);
  if (suffix == ".txt") WriteTXT(f, scratchFolder, true, env);
  bool done = false;
  std::error_code ec;
  std::vector<fs::path> written;
  for (fs::directory_iterator it(scratch, ec), end; !ec && it != end; it.increment(ec)) {
    written.push_back(it->path());
  }
  if (written.size() == 1) {
    FFFilter check;
    if (read(check, scratchFolder, written[0].filename().string()) && check.category == newCategory) {
      fs::permissions(written[0], fs::status(entry.path, ec).permissions(), ec);
      fs::rename(written[0], entry.path, ec);
      done = !ec;
    }
  }
  fs::remove_all(scratch, ec);
  return done;
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
  const auto say = [&](const std::string& text) {
    result.error = Error::Warning(text, kProgramTitle);
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
      if (suffix == ".afs" || suffix == ".pff" || suffix == ".txt") {
        changed = ChangeSourceCategory(entry, target, env);
      } else {
        // A file that can't be reached is told at once, before the next one is tried.
        const Expected<bool> patched = ChangeCat_FV(entry, target);
        if (!patched) env.hooks().Report(patched.error());
        changed = patched && *patched;
      }
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
    result.error = Error::Warning(
        "Changing the category didn't work for " + std::to_string(result.failures) + " plugin(s).",
        kProgramTitle);
  }
  return result;
}

}  // namespace trel
