// `show` and `code`: reading one filter, and the code rewriters on one string.
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>

#include "cli/Commands.h"
#include "cli/Json.h"
#include "filter/CodeRewrite.h"
#include "filter/Dispatch.h"
#include "base/Paths.h"

namespace trel::cli {
namespace {

struct ShowArgs {
  std::string file;
  bool batch = false;
};

struct CodeArgs {
  std::string code;
  std::string channel = "r";
  bool noFFOptimize = false;
};

void RunShow(const ShowArgs& args, CliContext& ctx) {
  std::error_code ec;
  if (!std::filesystem::is_regular_file(args.file, ec)) {
    *ctx.err << "trel-cli show: " << args.file << ": no such file\n";
    ctx.exitCode = 1;
    return;
  }
  FFFilter f;
  std::string folder, name;
  SplitPath(args.file, folder, name);
  const bool read = args.batch ? ReadFFfile(f, args.file, ctx.env) : LoadItFile(f, folder, name, ctx.env);
  if (!read) {
    *ctx.err << "trel-cli show: " << args.file
             << (args.batch ? ": not a filter that the batch conversion takes\n"
                            : ": not a readable Filter Factory filter\n");
    ctx.exitCode = 1;
    return;
  }
  *ctx.out << FilterToJson(f).dump(2) << '\n';
}

int ChannelNumber(const std::string& channel) {
  if (channel == "g") return 2;
  if (channel == "b") return 3;
  if (channel == "a") return 4;
  return 1;
}

// --channel is accepted before or after the rewriter's name. Only the optimizer's
// rewrites depend on it; the dialect conversions take it so that a script can pass
// the same options to every rewriter.
void AddChannelOption(CLI::App& cmd, CodeArgs& args, const std::string& description) {
  cmd.add_option("--channel", args.channel, description)
      ->check(CLI::IsMember({"r", "g", "b", "a"}))
      ->capture_default_str();
}

CLI::App* AddCodeCommand(CLI::App& code, const std::string& name, const std::string& description,
                         std::shared_ptr<CodeArgs> args, CliContext& ctx,
                         std::string (*rewrite)(const CodeArgs&)) {
  auto* cmd = code.add_subcommand(name, description);
  cmd->add_option("CODE", args->code, "the code of one channel")->required();
  cmd->callback([args, &ctx, rewrite] { *ctx.out << rewrite(*args) << '\n'; });
  return cmd;
}

}  // namespace

void AddFilterCommands(CLI::App& app, CliContext& ctx) {
  auto show = std::make_shared<ShowArgs>();
  auto* showCmd = app.add_subcommand(
      "show", "Read a filter (source or compiled plugin) and print its record as JSON");
  showCmd->add_option("FILE", show->file, "the filter file")->required();
  showCmd->add_flag("--batch", show->batch,
                    "read as the batch conversion does (no dialect change; sources without "
                    "their metadata are refused)");
  showCmd->callback([show, &ctx] { RunShow(*show, ctx); });

  auto args = std::make_shared<CodeArgs>();
  auto* code = app.add_subcommand("code", "Rewrite one string of Filter Factory code");
  code->require_subcommand(1);
  AddChannelOption(*code, *args, "the channel the code belongs to (for optimize)");
  const char* noOptimize = "only the clean-up (\"No FF Code Optimization\")";
  code->add_flag("--no-ff-optimize", args->noFFOptimize, std::string("optimize: ") + noOptimize);
  auto* optimize = AddCodeCommand(
      *code, "optimize", "Normalise the code and use faster built-ins", args, ctx,
      [](const CodeArgs& a) {
        return OptimizeChannel(a.code, ChannelNumber(a.channel), a.noFFOptimize);
      });
  AddChannelOption(*optimize, *args,
                   "the channel the code belongs to: reading that channel becomes `c`");
  optimize->add_flag("--no-ff-optimize", args->noFFOptimize, noOptimize);
  for (auto* dialect :
       {AddCodeCommand(*code, "prm2ps", "Premiere dialect to Photoshop dialect", args, ctx,
                       [](const CodeArgs& a) { return Correctprmcode(a.code); }),
        AddCodeCommand(*code, "ps2prm", "Photoshop dialect to Premiere dialect", args, ctx,
                       [](const CodeArgs& a) { return CorrectcodeChannel(a.code); })}) {
    AddChannelOption(*dialect, *args, "the channel the code belongs to (the same for every channel)");
  }
}

}  // namespace trel::cli
