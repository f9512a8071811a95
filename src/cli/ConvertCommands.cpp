// `convert`: the batch conversion of selected files, libraries included.
#include <map>
#include <ostream>

#include "cli/Commands.h"
#include "cli/ConvertOptions.h"
#include "base/Paths.h"

namespace trel::cli {
namespace {

const std::map<std::string, OutputFormat> kFormats = {
    {"8bf", OutputFormat::Plugin8bf}, {"prm", OutputFormat::PremierePlugin}, {"tf", OutputFormat::TransitionPlugin},
    {"afs", OutputFormat::AFS},       {"pff", OutputFormat::PFF},            {"txt", OutputFormat::TXT}};

struct ConvertArgs {
  ConvertOptions options;
  bool subFolders = false;
  std::vector<std::string> files;
};

void RunConvert(const ConvertArgs& args, CliContext& ctx) {
  const FilterEnv env = args.options.Env(ctx.env);
  if (!MakeFolder(args.options.outDir)) {
    *ctx.err << "trel-cli convert: " << args.options.outDir << ": the folder can't be created\n";
    ctx.exitCode = 1;
    return;
  }
  ConvertRequest request;
  request.format = args.options.Format();
  request.targetFolder = args.options.outDir;
  request.selection = args.files;
  request.createSubFolders = args.subFolders;
  request.askForLibraryEntries = true;
  FFFilter f;
  const auto check = args.options.Check();
  const ConvertReport report = cmd_Convert(f, request, *check, env);
  ctx.exitCode = ReportConversion(report, *ctx.out, *ctx.err, "convert");
}

}  // namespace

OutputFormat ConvertOptions::Format() const {
  const auto it = kFormats.find(to);
  return it == kFormats.end() ? OutputFormat::Plugin8bf : it->second;
}

FilterEnv ConvertOptions::Env(const FilterEnv& base) const {
  FilterEnv env = base;
  env.options.useFilterNameAsFileName = nameFromTitle;
  env.options.macFFAdaption = macAdaption;
  CompileOptions& compile = env.options.compile;
  if (templateChoice == "30" || templateChoice.empty()) {
    compile.templateChoice = CompileTemplate::FilterFactory30;
  } else if (templateChoice == "304") {
    compile.templateChoice = CompileTemplate::FilterFactory304;
  } else if (templateChoice == "mac") {
    compile.templateChoice = CompileTemplate::Macintosh;
  } else {
    compile.templateChoice = CompileTemplate::CustomPath;
    compile.templatePath = templateChoice;
  }
  return env;
}

std::unique_ptr<OverwriteChecker> ConvertOptions::Check() const {
  if (overwrite) return std::make_unique<OverwriteAllTargets>();
  return std::make_unique<SkipExistingTargets>();
}

void AddConvertOptions(CLI::App& cmd, ConvertOptions& options) {
  std::vector<std::string> names;
  for (const auto& [name, format] : kFormats) names.push_back(name);
  cmd.add_option("--to", options.to, "the output format")->required()->check(CLI::IsMember(names));
  cmd.add_option("-o,--output", options.outDir, "the target folder (created when missing)")
      ->required();
  cmd.add_flag("--name-from-title", options.nameFromTitle,
               "Use Filter Name as File Name: the file name is made from the title");
  cmd.add_flag("--mac-adaption", options.macAdaption,
               "Mac FF Adaption: corrections for using the code on the Macintosh (afs, pff, txt)");
  cmd.add_flag("--overwrite", options.overwrite, "replace existing targets (default: skip them)");
  cmd.add_option("--template", options.templateChoice,
                 "the template of 8bf plugins: 30, 304, mac or the path of a template plugin");
}

int ReportConversion(const ConvertReport& report, std::ostream& out, std::ostream& err,
                     const std::string& command) {
  for (const auto& path : report.written) out << path << '\n';
  if (report.skipped > 0)
    err << "trel-cli " << command << ": " << report.skipped
        << " existing target(s) kept (use --overwrite to replace them)\n";
  if (report.unreadable > 0)
    err << "trel-cli " << command << ": " << report.unreadable
        << " source(s) skipped: not a filter that the batch conversion takes\n";
  if (report.failed > 0)
    err << "trel-cli " << command << ": " << report.failed << " target(s) could not be written\n";
  if (report.stopped) err << "trel-cli " << command << ": stopped\n";
  if (report.read == 0) {
    err << "trel-cli " << command << ": nothing could be read\n";
    return 1;
  }
  return report.failed > 0 ? 1 : 0;
}

void AddConvertCommands(CLI::App& app, CliContext& ctx) {
  auto args = std::make_shared<ConvertArgs>();
  auto* cmd = app.add_subcommand(
      "convert", "Convert filter files and FFL libraries into another format, as a batch");
  AddConvertOptions(*cmd, args->options);
  cmd->add_flag("--sub-folders", args->subFolders,
                "Automatically create sub folder(s): each library gets a folder of its name "
                "(later files follow it)");
  cmd->add_option("FILE", args->files, "filter files (.8bf .prm .afs .pff .ffx .txt) or .ffl libraries")
      ->required();
  cmd->callback([args, &ctx] { RunConvert(*args, ctx); });
}

}  // namespace trel::cli
