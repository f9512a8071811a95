// `ffl`: listing, extracting from, creating, adding to and deleting from
// Filter Factory Library files.
#include <nlohmann/json.hpp>

#include <ostream>

#include "cli/Commands.h"
#include "cli/ConvertOptions.h"
#include "cli/Json.h"
#include "filter/FFL.h"

namespace trel::cli {
namespace {

struct FflArgs {
  std::string library;
  std::vector<std::string> files;
  std::vector<int> numbers;
  bool json = false;
  std::string search;
  bool ffl11 = false;
  ConvertOptions convert;
};

// Reads the table; false (with a message) when the file is no library.
bool OpenLibrary(const std::string& path, FFLLibrary& library, CliContext& ctx,
                 const std::string& command) {
  const Expected<void> read = ReadFFLLibrary(path, library);
  if (read) return true;
  ctx.env.hooks().Report(read.error());
  if (read.error().kind == ErrorKind::Gone)
    *ctx.err << "trel-cli ffl " << command << ": " << path << ": no such file\n";
  ctx.exitCode = 1;
  return false;
}

// A library read only up to a broken entry still shows what it has; the exit
// code tells that it is broken.
void TellProblem(const FFLLibrary& library, CliContext& ctx, const std::string& command) {
  if (library.problem.empty()) return;
  *ctx.err << "trel-cli ffl " << command << ": " << library.path << ": " << library.problem << '\n';
  ctx.exitCode = 1;
}

void RunList(const FflArgs& args, CliContext& ctx) {
  FFLLibrary library;
  if (!OpenLibrary(args.library, library, ctx, "list")) return;
  std::vector<FFLListItem> items = library.items;
  if (!args.search.empty()) {
    const Expected<std::vector<int>> search = cmd_SearchFFL(args.library, args.search);
    if (!search) ctx.env.hooks().Report(search.error());
    const std::vector<int> found = search ? *search : std::vector<int>{};
    std::erase_if(items, [&found](const FFLListItem& item) {
      return std::find(found.begin(), found.end(), item.number) == found.end();
    });
  }
  if (args.json) {
    nlohmann::ordered_json list = nlohmann::ordered_json::array();
    for (const auto& item : items) {
      list.push_back({{"number", item.number},
                      {"position", library.PositionOf(item.number)},
                      {"filename", Latin1ToUtf8(item.filename)},
                      {"category", Latin1ToUtf8(item.category)},
                      {"title", Latin1ToUtf8(item.title)},
                      {"author", Latin1ToUtf8(item.author)}});
    }
    *ctx.out << list.dump(2) << '\n';
  } else {
    for (const auto& item : items) {
      *ctx.out << item.number << '\t' << Latin1ToUtf8(item.category) << '\t'
               << Latin1ToUtf8(item.title) << '\t' << Latin1ToUtf8(item.author) << '\t'
               << Latin1ToUtf8(item.filename) << '\n';
    }
  }
  TellProblem(library, ctx, "list");
}

void RunExtract(const FflArgs& args, CliContext& ctx) {
  FFLLibrary library;
  if (!OpenLibrary(args.library, library, ctx, "extract")) return;
  std::vector<int> numbers = args.numbers;
  if (numbers.empty()) {
    for (const auto& item : library.items) numbers.push_back(item.number);
  }
  if (!MakeFolder(args.convert.outDir)) {
    *ctx.err << "trel-cli ffl extract: " << args.convert.outDir << ": the folder can't be created\n";
    ctx.exitCode = 1;
    return;
  }
  const FilterEnv env = args.convert.Env(ctx.env);
  const auto check = args.convert.Check();
  FFFilter f;
  ConvertReport report;
  const Expected<void> done =
      cmd_Extract(f, library, numbers, args.convert.Format(), args.convert.outDir, *check, env, report);
  if (!done) env.hooks().Report(done.error());
  ctx.exitCode = ReportConversion(report, *ctx.out, *ctx.err, "ffl extract");
  TellProblem(library, ctx, "extract");
}

void RunMake(const FflArgs& args, CliContext& ctx, bool create) {
  FilterEnv env = ctx.env;
  env.options.writeFFL10 = !args.ffl11;
  const FFLAddResult result =
      create ? cmd_CreateFFL(args.library, args.files, env) : cmd_Add2FFL(args.library, args.files, env);
  if (result.error) env.hooks().Report(*result.error);
  const std::string command = create ? "create" : "add";
  for (const auto& source : result.unreadable)
    *ctx.err << "trel-cli ffl " << command << ": " << source
             << ": skipped, not a filter that the batch conversion takes\n";
  if (!result.ok) {
    if (result.added == 0 && result.unreadable.size() == args.files.size())
      *ctx.err << "trel-cli ffl " << command << ": none of the files could be read\n";
    *ctx.err << "trel-cli ffl " << command << ": " << args.library << " was not changed\n";
    ctx.exitCode = 1;
    return;
  }
  *ctx.out << args.library << ": " << result.added << (create ? " filter(s)\n" : " filter(s) added\n");
}

void RunDelete(const FflArgs& args, CliContext& ctx) {
  FFLLibrary library;
  if (!OpenLibrary(args.library, library, ctx, "delete")) return;
  for (int number : args.numbers) {
    const bool listed = std::any_of(library.items.begin(), library.items.end(),
                                    [number](const FFLListItem& item) { return item.number == number; });
    if (!listed) {
      *ctx.err << "trel-cli ffl delete: " << args.library << ": there is no entry " << number
               << " to delete\n";
      ctx.exitCode = 1;
      continue;
    }
    if (!DeleteFFLEntry(args.library, library.PositionOf(number))) {
      *ctx.err << "trel-cli ffl delete: " << args.library << ": entry " << number
               << " can't be struck out (a file we may not write, or a name line under two "
                  "characters)\n";
      ctx.exitCode = 1;
      continue;
    }
    *ctx.out << "deleted entry " << number << '\n';
  }
}

}  // namespace

void AddFflCommands(CLI::App& app, CliContext& ctx) {
  auto args = std::make_shared<FflArgs>();
  auto* ffl = app.add_subcommand("ffl", "Filter Factory Library (FFL) files");
  ffl->require_subcommand(1);

  auto* list = ffl->add_subcommand("list", "List the entries of a library: number, category, "
                                           "title, author, file name (deleted entries left out)");
  list->add_option("LIBRARY", args->library, "the .ffl file")->required();
  list->add_flag("--json", args->json, "print a JSON array");
  list->add_option("--search", args->search,
                   "only entries with this text in title, category, author or code (any case)");
  list->callback([args, &ctx] { RunList(*args, ctx); });

  auto* extract = ffl->add_subcommand("extract", "Write entries of a library in another format");
  extract->add_option("LIBRARY", args->library, "the .ffl file")->required();
  extract->add_option("NUMBER", args->numbers, "entry numbers as `list` shows them (default: all)");
  AddConvertOptions(*extract, args->convert);
  extract->callback([args, &ctx] { RunExtract(*args, ctx); });

  auto* create = ffl->add_subcommand("create", "Make a new library from filter files");
  create->add_option("LIBRARY", args->library, "the .ffl file to write (replaced when it exists)")
      ->required();
  create->add_option("FILE", args->files, "filter files")->required();
  create->add_flag("--ffl11", args->ffl11, "write version FFL1.1 (default: FFL1.0, recommended)");
  create->callback([args, &ctx] { RunMake(*args, ctx, true); });

  auto* add = ffl->add_subcommand("add", "Add filter files to an existing library");
  add->add_option("LIBRARY", args->library, "the .ffl file")->required();
  add->add_option("FILE", args->files, "filter files")->required();
  add->callback([args, &ctx] { RunMake(*args, ctx, false); });

  auto* del = ffl->add_subcommand("delete", "Strike entries out of a library (they stay in the "
                                            "file, marked as deleted)");
  del->add_option("LIBRARY", args->library, "the .ffl file")->required();
  del->add_option("NUMBER", args->numbers, "entry numbers as `list` shows them")->required();
  del->callback([args, &ctx] { RunDelete(*args, ctx); });
}

}  // namespace trel::cli
