#include "catalogue/PluginScanner.h"

#include <algorithm>
#include <initializer_list>
#include <unordered_set>

#include "catalogue/PluginIdentification.h"
#include "filter/CompiledReaders.h"
#include "base/DirectoryListing.h"
#include "base/Paths.h"
#include "base/PluginKinds.h"
#include "filter/TextFormats.h"

namespace trel {
namespace {

constexpr const char* kProgramTitle = "Trel";
constexpr size_t kMaskLimit = 256;
constexpr const char* kPluginMask = "*.8bf;*._bf;*_8bf;*?prm;*.pr-;*_prm;*?aex;*._ex;*_aex;*.bin";
constexpr const char* kSourceMask = ";*.ffx;*.txt;*.afs;*.pff";

bool OneOf(int64_t v, std::initializer_list<int64_t> options) {
  return std::find(options.begin(), options.end(), v) != options.end();
}

// The three positions of a Filter Factory category that mark the file as one.
// A 53760-byte plugin has its category elsewhere and keeps its offset.
int32_t ZeroFilterFactoryOffset(int32_t offset) {
  return (offset == 23896 || offset == 31064 || offset == 34980) ? 0 : offset;
}

uint8_t Room(int32_t maximumLength) {
  return static_cast<uint8_t>(std::clamp<int32_t>(maximumLength, 0, 255));
}

// The walk lists what the pane's file list shows under the scan mask, without
// a look at every file, and doesn't enter linked folders, so that a link back
// up can't make it endless.
constexpr ListOptions kWalk{.details = false, .followFolderLinks = false};

void UnknownIfEmpty(PluginEntry& e, const std::string& name) {
  if (e.category.empty() || e.title.empty()) {
    e.category = "[Unknown]";
    e.title = name;
  }
}

}  // namespace

std::string PluginScanMask(const PluginTypeTable& table, bool includeSources) {
  std::string mask = std::string(kPluginMask) + table.PluginTypePattern;
  if (mask.size() > kMaskLimit) mask = "*.*";
  if (includeSources) {
    mask += kSourceMask;
    if (mask.size() > kMaskLimit) mask = "*.*";
  }
  return mask;
}


bool IdentifyFile(const std::string& folderIn, const std::string& name, const ScanOptions& options,
                  const PluginTypeTable& table, const FilterEnv& env, std::vector<PluginEntry>& out,
                  FileFacts* facts) {
  const std::string folder = WithTrailingSeparator(folderIn);
  const std::string path = folder + name;
  const std::string suffix = LastFour(name);
  const PluginKind kind = ClassifyPluginName(name).kind;

  if (options.ScanFFOnly) {
    const int64_t size = FileLength(path);
    if (kind == PluginKind::Premiere) {
      if (!OneOf(size, {50176, 50688, 51200, 53248})) return false;
    } else if (kind == PluginKind::Photoshop || kind == PluginKind::MacFilterFactory) {
      if (!OneOf(size, {57344, 49152, 53760, 49664, 99712, 99840})) return false;
    } else {
      return false;
    }
  }

  const auto fromProbe = [&](const ResourceProbe& probe) {
    for (const ProbeElement& el : probe.elements) {
      out.push_back({path, el.category, el.title, el.categoryOffset, Room(el.maximumLength)});
    }
  };

  if (kind == PluginKind::Photoshop || kind == PluginKind::AfterEffects) {
    ResourceProbe probe;
    ReadCom8bf(path, probe, env, facts);
    if (probe.Count() == 0) probe.elements.resize(1);  // a plugin with no filters still shows
    fromProbe(probe);
    for (size_t k = out.size() - static_cast<size_t>(probe.Count()); k < out.size(); ++k) {
      out[k].categoryOffset = ZeroFilterFactoryOffset(out[k].categoryOffset);
    }
    UnknownIfEmpty(out.back(), name);
    return true;
  }

  if (kind == PluginKind::MacFilterFactory) {
    FFFilter f;
    PluginEntry e{path, {}, {}, 0, 0};
    if (Read8bf(f, folder, name, true, false, env)) {
      e.category = f.category;
      e.title = f.title;
      e.maxCategoryLength = Room(static_cast<int32_t>(f.category.size()));
    }
    UnknownIfEmpty(e, name);
    out.push_back(e);
    return true;
  }

  if (kind == PluginKind::Premiere) {
    ResourceProbe probe;
    if (ReadCom8bf(path, probe, env, facts)) {
      const size_t first = out.size();
      fromProbe(probe);
      // Compiled Premiere Filter and Transition Factory plugins are told by where
      // their category stands.
      for (size_t k = first; k < out.size(); ++k) {
        const int32_t off = out[k].categoryOffset;
        if (off == 29108 || off == 29612 || off == 32172) {
          out[k].category = "[Premiere FF]";
          out[k].categoryOffset = 0;
        } else if (off == -26460 || off == 29172 || off == 29692) {
          out[k].category = "[Premiere TF]";
          out[k].categoryOffset = 0;
        }
      }
    } else {
      PluginEntry e{path, {}, {}, 0, 0};
      int32_t offset = 0, room = 0;
      ReadComprm(path, e.category, e.title, offset, room);
      e.categoryOffset = offset;
      e.maxCategoryLength = Room(room);
      out.push_back(e);
    }
    UnknownIfEmpty(out.back(), name);
    return true;
  }

  if (IsFilterSourceName(name)) {
    if (!options.includeSources) return false;
    FFFilter f;
    bool ok = false;
    if (suffix == ".txt") ok = ReadTXT(f, folder, name, false, false, env);
    if (suffix == ".afs") ok = ReadAFS(f, folder, name, env);
    if (suffix == ".pff") ok = ReadPFF(f, folder, name, env);
    if (suffix == ".ffx") ok = ReadFFX(f, folder, name, env);
    const std::string title = f.title + " (" + suffix + ")";
    if (!ok || title.size() < 8) return false;
    out.push_back({path, f.category, title, 0, 0});
    return true;
  }

  if (!table.isEmpty() && MatchPluginTypeBySuffix(table, suffix)) {
    PluginEntry e{path, {}, {}, -1, 0};
    if (!ReadOther8b(path, table, e.category, e.title)) return false;
    out.push_back(e);
    return true;
  }
  return false;
}

int ScanPluginRecurse(PaneCatalogue& pane, const std::string& startFolder, const ScanOptions& options,
                      const PluginTypeTable& table, const FilterEnv& env,
                      const ScanCallbacks& callbacks) {
  Progress& progress = env.hooks();
  const std::string mask = PluginScanMask(table, options.includeSources);
  const auto report = [&](int percent) {
    if (callbacks.progress) callbacks.progress(std::clamp(percent, 0, 100));
  };
  const auto label = [&](const std::string& text) {
    if (callbacks.scanLabel) callbacks.scanLabel(text);
  };

  struct Level {
    std::string folder;
    DirListing content;
    size_t nextSub = 0;
  };
  std::vector<Level> levels;
  size_t startSubfolders = 0;
  std::vector<PluginEntry> found;
  std::unordered_set<std::string> listed;  // categories known to stand in the list

  // Processes one folder's files; false on Esc.
  const auto processFiles = [&](const Level& level) {
    label(level.folder);
    const auto& files = level.content.files;
    const int fileCount = static_cast<int>(files.size());
    for (int index = 0; index < fileCount; ++index) {
      if (progress.EscapePressed()) return false;
      const std::string& name = files[static_cast<size_t>(index)].name;
      label(name);
      found.clear();
      bool produced = false;
      try {
        produced = callbacks.identify ? callbacks.identify(level.folder, name, found)
                                      : IdentifyFile(level.folder, name, options, table, env, found);
      } catch (const std::exception&) {
        produced = false;  // a file that can't be read is passed over
      }
      if (produced && !found.empty()) {
        for (PluginEntry& e : found) pane.plugins.Add(std::move(e));
        // Only the last filter's category reaches the list; the others appear
        // there only if some other file brings them.
        const std::string& category = pane.plugins[pane.plugins.Count()].category;
        // The few categories of a scan are met thousands of times: the sorted
        // list is asked only about one not seen before.
        if (listed.find(category) == listed.end()) {
          listed.insert(category);
          pane.AddCategory(category);
        }
        if (category.size() + 2 > pane.longestCategory.size()) pane.longestCategory = "  " + category;
      }
      if (options.yieldRate > 0 && callbacks.processEvents) {
        const int every = std::max(1, 100 / options.yieldRate);
        if (index % every == 0) callbacks.processEvents();
      }
      if (fileCount > 0) {
        int percent = -1;
        if (!options.subFolders || level.content.folders.empty()) {
          percent = pane.plugins.Count() * 100 / fileCount;
        }
        if (startSubfolders == 0) percent = index * 100 / fileCount;
        if (percent >= 0) report(percent);
      }
    }
    return true;
  };

  levels.push_back({WithTrailingSeparator(startFolder), ListDirectory(startFolder, mask, kWalk), 0});
  startSubfolders = levels[0].content.folders.size();
  if (!processFiles(levels[0])) return 0;
  if (options.subFolders) {
    while (!levels.empty()) {
      Level& top = levels.back();
      if (top.nextSub >= top.content.folders.size()) {
        levels.pop_back();
        continue;
      }
      const std::string sub = WithTrailingSeparator(top.folder + top.content.folders[top.nextSub++].name);
      levels.push_back({sub, ListDirectory(sub, mask, kWalk), 0});
      if (!processFiles(levels.back())) return 0;
      if (startSubfolders > 0) report(static_cast<int>(levels[0].nextSub * 100 / startSubfolders));
    }
  }
  return pane.plugins.Count();
}

PluginViewEntry EnterPluginView(PaneCatalogue& pane, const std::string& folder,
                                const ScanOptions& options, const PluginTypeTable& table,
                                const FilterEnv& env, const ScanCallbacks& callbacks) {
  const std::string where = WithTrailingSeparator(folder);
  if (pane.PluginViewFresh && pane.scannedFolder == where) return PluginViewEntry::ListStands;
  pane.PluginViewFresh = true;
  pane.scannedFolder = where;
  pane.plugins.Clear();
  pane.categories.clear();
  pane.categorySnapshot.clear();
  pane.longestCategory.clear();
  const int found = ScanPluginRecurse(pane, where, options, table, env, callbacks);
  if (callbacks.progress) callbacks.progress(found > 0 ? 100 : 0);
  if (callbacks.scanLabel) callbacks.scanLabel("");
  if (found > 0) {
    pane.categorySnapshot = pane.categories;
    return PluginViewEntry::Scanned;
  }
  // An aborted or empty scan matches no folder; the next visit scans again.
  pane.PluginViewFresh = false;
  pane.plugins.Clear();
  pane.categories.clear();
  return PluginViewEntry::NothingFound;
}

Error NoPluginsFound() {
  return Error::Warning(
      "No plugins or other supported files were found in the current\n"
      "folder. Please select another folder and try again.",
      kProgramTitle);
}

}  // namespace trel
