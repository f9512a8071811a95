// `scan`, `info`, `list`, `toggle` and `category`: the plugin catalogue on the
// command line. The plugin type table is the user's, from PlugTypes.ini in the
// program folder, or the default rows.
#include <filesystem>
#include <memory>
#include <ostream>

#include "catalogue/CategoryChange.h"
#include "catalogue/EnableState.h"
#include "catalogue/PluginReports.h"
#include "catalogue/PluginScanner.h"
#include "cli/Commands.h"
#include "cli/Json.h"
#include "base/Paths.h"

namespace trel::cli {
namespace {

PluginTypeTable UserPluginTypes(const CliContext& ctx) {
  PluginTypeTable table;
  GetPlugTypes(InitialPluginTypeList(ctx.env.options.programFolder, {}), table);
  return table;
}

bool RequireFiles(const std::vector<std::string>& files, const char* command, CliContext& ctx) {
  for (const std::string& file : files) {
    std::error_code ec;
    if (!std::filesystem::is_regular_file(file, ec)) {
      *ctx.err << "trel-cli " << command << ": " << file << ": no such file\n";
      ctx.exitCode = 1;
      return false;
    }
  }
  return true;
}

std::string CsvField(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + '"';
}

struct ScanArgs {
  std::string folder;
  bool recursive = false, sources = false, ffOnly = false, json = false, csv = false;
};

void RunScan(const ScanArgs& args, CliContext& ctx) {
  std::error_code ec;
  if (!std::filesystem::is_directory(args.folder, ec)) {
    *ctx.err << "trel-cli scan: " << args.folder << ": no such folder\n";
    ctx.exitCode = 1;
    return;
  }
  ScanOptions options;
  options.subFolders = args.recursive;
  options.includeSources = args.sources;
  options.ScanFFOnly = args.ffOnly;
  PaneCatalogue pane;
  if (EnterPluginView(pane, args.folder, options, UserPluginTypes(ctx), ctx.env) !=
      PluginViewEntry::Scanned) {
    ctx.env.hooks().Report(NoPluginsFound());
    ctx.exitCode = 1;
    return;
  }
  if (args.json) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const PluginEntry& e : pane.plugins) {
      nlohmann::ordered_json j;
      j["path"] = e.path;
      j["category"] = Latin1ToUtf8(e.category);
      j["title"] = Latin1ToUtf8(e.title);
      j["categoryOffset"] = e.categoryOffset;
      j["maxCategoryLength"] = e.maxCategoryLength;
      list.push_back(j);
    }
    *ctx.out << list.dump(2) << '\n';
    return;
  }
  if (args.csv) *ctx.out << "path,category,title,categoryOffset,maxCategoryLength\n";
  for (const PluginEntry& e : pane.plugins) {
    if (args.csv) {
      *ctx.out << CsvField(e.path) << ',' << CsvField(Latin1ToUtf8(e.category)) << ','
               << CsvField(Latin1ToUtf8(e.title)) << ',' << e.categoryOffset << ','
               << static_cast<int>(e.maxCategoryLength) << '\n';
    } else {
      *ctx.out << e.path << '\t' << Latin1ToUtf8(e.category) << '\t' << Latin1ToUtf8(e.title) << '\t'
               << e.categoryOffset << '\t' << static_cast<int>(e.maxCategoryLength) << '\n';
    }
  }
}

void RunInfo(const std::string& file, CliContext& ctx) {
  if (!RequireFiles({file}, "info", ctx)) return;
  const PluginInformation info = PlugInInformation(file, UserPluginTypes(ctx), ctx.env);
  *ctx.out << Latin1ToUtf8(info.text) << '\n';
  if (!info.known) ctx.exitCode = 1;
}

void RunList(const std::vector<std::string>& files, bool csv, CliContext& ctx) {
  if (!RequireFiles(files, "list", ctx)) return;
  PlugInListOptions options;
  options.csv = csv;
  const std::vector<std::string> lines = PlugInListLines(files, options, ctx.env);
  for (const std::string& line : lines) *ctx.out << Latin1ToUtf8(line) << '\n';
  if (lines.empty()) {
    *ctx.err << "trel-cli list: none of the files could be read\n";
    ctx.exitCode = 1;
  }
}

void RunToggle(const std::vector<std::string>& files, CliContext& ctx) {
  if (!RequireFiles(files, "toggle", ctx)) return;
  PaneCatalogue pane;
  const ToggleResult r = cmd_EnableDisable_FileView(kFileView, files, pane, UserPluginTypes(ctx), ctx.env);
  if (r.error) ctx.env.hooks().Report(*r.error);
  for (const auto& rename : r.renamed) *ctx.out << rename.from << '\t' << rename.to << '\n';
  if (r.failed || r.renamed.empty()) ctx.exitCode = 1;
}

void RunCategory(const std::string& file, const std::string& category, CliContext& ctx) {
  if (!RequireFiles({file}, "category", ctx)) return;
  std::string folder, name;
  SplitPath(file, folder, name);
  ScanOptions options;
  options.includeSources = true;
  std::vector<PluginEntry> entries;
  if (!IdentifyFile(folder, name, options, UserPluginTypes(ctx), ctx.env, entries)) {
    *ctx.err << "trel-cli category: " << file << ": not a plugin or filter source\n";
    ctx.exitCode = 1;
    return;
  }
  // Every filter of the file moves, as if all its rows were selected.
  PaneCatalogue pane;
  std::vector<FilterRow> rows;
  for (PluginEntry& e : entries) {
    pane.plugins.Add(e);
    pane.AddCategory(e.category);
    rows.push_back({"+ " + e.title, pane.plugins.Count(), true});
  }
  pane.categorySnapshot = pane.categories;
  const ChangeCategoryResult r = cmd_ChangeCategory(kPluginView, pane, rows, category, false, ctx.env);
  if (r.error) ctx.env.hooks().Report(*r.error);
  if (r.refused || r.failures > 0) {
    ctx.exitCode = 1;
    return;
  }
  *ctx.out << file << '\t' << Latin1ToUtf8(category) << '\n';
}

}  // namespace

void AddCatalogueCommands(CLI::App& app, CliContext& ctx) {
  auto scan = std::make_shared<ScanArgs>();
  auto* scanCmd = app.add_subcommand("scan", "List the plugins of a folder as the Plugin View does");
  scanCmd->add_option("DIR", scan->folder, "the folder")->required();
  scanCmd->add_flag("--recursive", scan->recursive, "search for plugins in all sub folders");
  scanCmd->add_flag("--sources", scan->sources, "include txt, afs, pff and ffx files");
  scanCmd->add_flag("--ff-only", scan->ffOnly, "only files of the Filter Factory sizes");
  auto* json = scanCmd->add_flag("--json", scan->json, "print a JSON array");
  auto* csv = scanCmd->add_flag("--csv", scan->csv, "print CSV with a header line");
  json->excludes(csv);
  scanCmd->callback([scan, &ctx] { RunScan(*scan, ctx); });

  auto infoFile = std::make_shared<std::string>();
  auto* info = app.add_subcommand("info", "Print the plugin information of a file");
  info->add_option("FILE", *infoFile, "the plugin or other file")->required();
  info->callback([infoFile, &ctx] { RunInfo(*infoFile, ctx); });

  auto listFiles = std::make_shared<std::vector<std::string>>();
  auto listCsv = std::make_shared<bool>(false);
  auto* list = app.add_subcommand("list", "Print the plugin list of the files, sorted");
  list->add_option("FILE", *listFiles, "plugin files")->required();
  list->add_flag("--csv", *listCsv, "title;category;author;;freeware; lines");
  list->callback([listFiles, listCsv, &ctx] { RunList(*listFiles, *listCsv, ctx); });

  auto toggleFiles = std::make_shared<std::vector<std::string>>();
  auto* toggle = app.add_subcommand("toggle", "Enable or disable plugins by renaming them");
  toggle->add_option("FILE", *toggleFiles, "plugin files")->required();
  toggle->callback([toggleFiles, &ctx] { RunToggle(*toggleFiles, ctx); });

  auto catFile = std::make_shared<std::string>();
  auto catName = std::make_shared<std::string>();
  auto* category = app.add_subcommand("category", "Change the category of a plugin or filter source");
  category->add_option("FILE", *catFile, "the plugin or filter source")->required();
  category->add_option("NAME", *catName, "the new category")->required();
  category->callback([catFile, catName, &ctx] { RunCategory(*catFile, *catName, ctx); });
}

}  // namespace trel::cli
