#include "catalogue/PluginReports.h"

#include <algorithm>
#include <cstdio>

#include "catalogue/EnableState.h"
#include "catalogue/PluginIdentification.h"
#include "catalogue/PluginList.h"
#include "filter/CompiledReaders.h"
#include "base/Paths.h"
#include "base/PluginKinds.h"
#include "base/SafeTarget.h"

namespace trel {
namespace {

constexpr const char* kProgramTitle = "Trel";

std::string Hex(int64_t value) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%X", static_cast<uint32_t>(value));
  return buffer;
}

std::string ProbeLines(const ResourceProbe& probe) {
  std::string lines;
  for (int k = 1; k <= probe.Count(); ++k) {
    if (k > 1) lines += "\n";
    lines += probe[k].category + ": " + probe[k].title;
  }
  return lines;
}

}  // namespace

PluginInformation PlugInInformation(const std::string& path, const PluginTypeTable& table,
                                    const FilterEnv& env) {
  PluginInformation info;
  std::string folder, name;
  SplitPath(path, folder, name);
  const int64_t size = FileLength(path);
  const PluginKind kind = ClassifyPluginName(name).kind;
  std::string lines;
  int64_t room = 0, offset = 0;

  const auto twoLines = [&](const std::string& firstLabel, const std::string& first,
                            const std::string& secondLabel, const std::string& second) {
    lines = firstLabel + ": " + first + "\n" + secondLabel + ": " + second;
  };

  if (kind == PluginKind::Photoshop) {
    ResourceProbe probe;
    FFFilter f;
    if ((size == 99712 || size == 99840) && Read8bf(f, folder, name, true, false, env)) {
      info.kind = "Macintosh Filter Factory Plugin";
      twoLines("Category", f.category, "Title", f.title);
    } else if (ReadCom8bf(path, probe, env)) {
      if (size == 49152) info.kind = "Photoshop Filter Factory 3.04";
      else if (size == 49664) info.kind = "Halvard's FF Design (FF 3.04)";
      else if (size == 57344) info.kind = "Photoshop Filter Factory 3.0";
      else if (probe[1].categoryOffset < 0) info.kind = "Photoshop 2.5 Filter Plugin";
      else if (probe.Count() > 1) info.kind = "Photoshop Multiple Filter Plugin";
      else info.kind = "Photoshop Filter Plugin";
      lines = ProbeLines(probe);
      room = probe[1].maximumLength;
      offset = probe[1].categoryOffset;
    }
  } else if (kind == PluginKind::AfterEffects) {
    ResourceProbe probe;
    if (ReadCom8bf(path, probe, env)) {
      info.kind = "After Effects Plugin";
      lines = ProbeLines(probe);
      room = probe[1].maximumLength;
      offset = probe[1].categoryOffset;
    }
  } else if (kind == PluginKind::Premiere) {
    std::string category, title;
    int32_t off = 0, max = 0;
    if (ReadComprm(path, category, title, off, max)) {
      if (category == "[Premiere Video]" && (size == 50176 || size == 50688 || size == 53248)) {
        info.kind = "Premiere Filter Factory";
        category = "[Premiere FF]";
      } else if (category == "[Premiere Transition]" && (size == 50688 || size == 51200)) {
        info.kind = "Premiere Transition Factory";
        category = "[Premiere TF]";
      } else if (category == "[Premiere Video]") {
        info.kind = "Premiere 4.2 Video Plugin";
      } else if (category == "[Premiere Audio]") {
        info.kind = "Premiere 4.2 Audio Plugin";
      } else if (category == "[Premiere Transition]") {
        info.kind = "Premiere 4.2 Transition Plugin";
      } else {
        info.kind = "Premiere 5.0 Plugin";
      }
      twoLines("Plugin Name", title, "Category", category);
      room = max;
      offset = off;
    }
  } else if (kind == PluginKind::MacFilterFactory) {
    FFFilter f;
    if ((size == 99840 || size == 99712) && Read8bf(f, folder, name, true, false, env)) {
      info.kind = "Macintosh Filter Factory Plugin";
      twoLines("Category", f.category, "Title", f.title);
    }
  } else {
    std::string category, title;
    if (ReadOther8b(path, table, category, title)) {
      info.kind = category.size() >= 2 && IsVirtualCategory(category)
                      ? category.substr(1, category.size() - 2)
                      : category;
      twoLines("Category", category, "Title", title);
    }
  }

  info.known = !info.kind.empty();
  if (!info.known) {
    info.text = name + " is an unknown file type or maybe damaged.";
    return info;
  }
  info.text = name + "\n\nType: " + info.kind + "\n\n" + lines;
  if (room > 0) {
    info.text += "\n\nMax. Category Name: " + std::to_string(room) + " letters at &H" + Hex(offset - 1);
  }
  if (info.kind.find("Filter Factory") == std::string::npos) {
    info.text +=
        "\n\nThis file isn't a Filter Factory plugin\nand therefor can't be loaded\n"
        "into the Filter Factory Editor.";
  }
  return info;
}

Error cmd_PlugInInformation(int view, const std::vector<std::string>& selection,
                            const PluginTypeTable& table, const FilterEnv& env) {
  if (view == kFFLView)
    return Error::Warning("Plugin Information only works in File and Plugin View.", kProgramTitle);
  if (selection.empty())
    return Error::Warning("Please select a plugin or other supported file.", kProgramTitle);
  const PluginInformation info = PlugInInformation(selection.front(), table, env);
  if (info.known) return Error::Information(info.text, "Plugin Information");
  return Error::Warning(info.text, kProgramTitle, selection.front());
}

std::vector<std::string> PlugInListLines(const std::vector<std::string>& paths,
                                         const PlugInListOptions& options, const FilterEnv& env) {
  std::vector<std::string> lines;
  for (const std::string& path : paths) {
    std::string folder, name;
    SplitPath(path, folder, name);
    FFFilter f;
    bool ok = false;
    // This list has always spelled the second disabled Premiere form "_.rm"
    // and left "_8bf" out, so a "._rm" or "_8bf" file goes to the Filter
    // Factory reader like any other file (and a "._rm" one is skipped).
    const std::string suffix = LastFour(name);
    const bool listedForm = suffix != "._rm" && suffix != "_8bf";
    const PluginKind kind = listedForm ? ClassifyPluginName(name).kind : PluginKind::None;
    const bool premiere = kind == PluginKind::Premiere || suffix == "_.rm";
    const bool plugin = premiere || kind == PluginKind::Photoshop || kind == PluginKind::AfterEffects;
    if (premiere) {
      ok = Readprm(f, folder, name, false, false, env);
      if (!ok) {
        IniVars(f);
        int32_t offset = 0, room = 0;
        ok = ReadComprm(path, f.category, f.title, offset, room);
      }
    } else if (plugin) {
      ResourceProbe probe;
      ok = ReadCom8bf(path, probe, env);
      if (ok) {
        f.category = probe[1].category;
        f.title = probe[1].title;
      }
    } else {
      ok = Read8bf(f, folder, name, false, false, env);
    }
    if (!ok) continue;

    std::string line;
    if (options.csv) {
      std::string title = f.title;
      if (title.size() >= 3 && title.compare(title.size() - 3, 3, "...") == 0) title.resize(title.size() - 3);
      line = Trim(title) + ";" + Trim(f.category) + ";" + Trim(f.author) + ";;freeware;";
    } else {
      if (options.category) line += f.category + ": ";
      if (options.filtername) line += f.title;
      if (options.filename) line += " (" + name + ")";
      if (options.author) line += " by " + f.author;
      if (options.copyright) line += ", " + f.copyright;
    }
    lines.push_back(line);
  }
  std::stable_sort(lines.begin(), lines.end(), PaneCatalogue::CategoryLess);
  return lines;
}

std::string JoinPlugInList(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\r\n";
  return text;
}

Expected<void> cmd_PlugInList(const std::vector<std::string>& selection,
                              const PlugInListOptions& options, bool toClipboard,
                              const std::string& outputPath, std::string& text,
                              const FilterEnv& env) {
  if (selection.empty())
    return Error::Warning("Please select one or more plugin files.", kProgramTitle);
  const std::vector<std::string> lines = PlugInListLines(selection, options, env);
  text = JoinPlugInList(lines);
  if (toClipboard || lines.empty()) return {};
  SafeTarget target(outputPath, /*startFromExisting=*/false);
  BinFile* file = target.file();
  if (file) file->Write(text);
  if (!file || !target.Commit())
    return Error::Warning("The plugin list could not be written to\n" + outputPath, "Plugin List",
                          outputPath);
  env.hooks().RefreshActivePane();
  return {};
}

}  // namespace trel
