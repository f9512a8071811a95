// `apply`: running a filter (source or compiled plugin) over a picture file.
// Filter Factory filters run through the engine; any other Windows plugin,
// and with --out-of-process a compiled Filter Factory plugin too, runs in the
// Windows plugin host.
#include <array>
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <QImage>
#include <QImageReader>
#include <QString>

#include "cli/Commands.h"
#include "filter/Dispatch.h"
#include "base/Paths.h"
#include "host/ImageLibrary.h"
#include "host/PlugHostClient.h"
#include "host/ff/FFEngine.h"

namespace trel::cli {
namespace {

struct ApplyArgs {
  std::string filter;
  std::string image;
  std::string out;
  std::vector<std::string> controls;  // N=V
  bool outOfProcess = false;
};

// The library's error text on one line.
std::string OneLine(std::string text) {
  for (char& c : text)
    if (c == '\n') c = ' ';
  return text;
}

// "N=V" with N 0..7 and V 0..255.
bool ParseControl(const std::string& text, int& index, int& value) {
  const size_t eq = text.find('=');
  if (eq == std::string::npos || eq == 0 || eq + 1 >= text.size()) return false;
  try {
    size_t used = 0;
    index = std::stoi(text.substr(0, eq), &used);
    if (used != eq) return false;
    const std::string v = text.substr(eq + 1);
    value = std::stoi(v, &used);
    if (used != v.size()) return false;
  } catch (...) {
    return false;
  }
  return index >= 0 && index <= 7 && value >= 0 && value <= 255;
}

// The picture through the Windows plugin host; for a Filter Factory plugin
// with the given control values.
void RunInHost(const ApplyArgs& args, const ff::Controls& controls, bool setControls, CliContext& ctx) {
  auto fail = [&](const std::string& what) {
    *ctx.err << "trel-cli apply: " << what << '\n';
    ctx.exitCode = 1;
  };
  QImageReader reader(QString::fromLocal8Bit(args.image));
  QImage picture = reader.read();
  if (picture.isNull())
    return fail(args.image + ": cannot read the picture (" + reader.errorString().toStdString() + ")");
  ImageLibrary lib(ctx.env.hooks());
  lib.setOutOfProcess(true);
  if (setControls) {
    std::array<uint8_t, 8> values{};
    for (size_t i = 0; i < 8; ++i) values[i] = static_cast<uint8_t>(controls[i]);
    lib.setControls(values);
  }
  const ImgHandle h = lib.Adopt(picture);
  lib.ImgPlugInHostLoad("");
  if (lib.ImgPlugInLoad(args.filter) != IMG_OK) return fail(args.filter + ": " + OneLine(lib.ImgErrString()));
  if (lib.ImgPlugInInvoke(h, 0, {0, 0, picture.width() - 1, picture.height() - 1}) != IMG_OK)
    return fail(args.filter + ": " + OneLine(lib.ImgErrString()));
  lib.ImgPlugInHostUnload();
  const int32_t written = lib.ImgXWriteImage(args.out, "", h, 0);
  if (written != IMG_OK) return fail(args.out + ": " + ImgStatusText(written));
  *ctx.out << args.out << '\n';
}

void RunApply(const ApplyArgs& args, CliContext& ctx) {
  auto fail = [&](const std::string& what, int code = 1) {
    *ctx.err << "trel-cli apply: " << what << '\n';
    ctx.exitCode = code;
  };
  ff::Controls controls{};
  std::vector<std::pair<int, int>> overrides;
  for (const std::string& c : args.controls) {
    int index = 0, value = 0;
    if (!ParseControl(c, index, value))
      return fail("--ctl " + c + ": expected N=V with N from 0 to 7 and V from 0 to 255", 2);
    overrides.emplace_back(index, value);
  }

  std::error_code ec;
  if (!std::filesystem::is_regular_file(args.filter, ec)) return fail(args.filter + ": no such file");
  FFFilter f;
  std::string folder, name;
  SplitPath(args.filter, folder, name);
  const bool isFF = LoadItFile(f, folder, name, ctx.env);
  const bool windows = PluginMachineOf(args.filter) != PluginMachine::NotWindows;
  if (!isFF && !windows) return fail(args.filter + ": not a readable Filter Factory filter or Windows plugin");
  if (!isFF && !overrides.empty())
    return fail("--ctl sets the controls of a Filter Factory filter; " + args.filter + " is none", 2);
  if (isFF && args.outOfProcess && !windows)
    return fail("--out-of-process needs a compiled plugin; " + args.filter + " is a filter source", 2);
  for (int i = 0; i < 8; ++i) controls[size_t(i)] = f.ctlValue[i + 1];
  for (const auto& [index, value] : overrides) controls[size_t(index)] = value;
  if (!isFF || args.outOfProcess) return RunInHost(args, controls, !overrides.empty(), ctx);

  const std::array<std::string, 4> code{f.codeR, f.codeG, f.codeB, f.codeA};
  ff::CompileError err;
  ff::CompiledFilter compiled = ff::CompileFilter(code, &err);
  if (!compiled.valid()) {
    static const char* const channel[] = {"R", "G", "B", "A"};
    const std::string& text = code[size_t(err.channel)];
    *ctx.err << "trel-cli apply: " << args.filter << ": channel " << channel[err.channel]
             << ", position " << err.position << ": " << err.message << '\n';
    // The faulty line with a mark under the position, when it fits on a screen.
    if (text.size() <= 200 && text.find('\n') == std::string::npos)
      *ctx.err << "  " << text << "\n  " << std::string(err.position, ' ') << "^\n";
    ctx.exitCode = 1;
    return;
  }

  QImageReader reader(QString::fromLocal8Bit(args.image));
  QImage picture = reader.read();
  if (picture.isNull())
    return fail(args.image + ": cannot read the picture (" + reader.errorString().toStdString() + ")");
  const ImgRect all{0, 0, picture.width() - 1, picture.height() - 1};
  const int32_t st = RunFilterOnPicture(compiled, controls, picture, all);
  if (st != IMG_OK) return fail(args.image + ": " + ImgStatusText(st));

  // Written through the image library, which replaces OUT only when the new
  // file is complete.
  ImageLibrary lib(ctx.env.hooks());
  const ImgHandle h = lib.Adopt(picture);
  const int32_t written = lib.ImgXWriteImage(args.out, "", h, 0);
  if (written != IMG_OK) return fail(args.out + ": " + ImgStatusText(written));
  *ctx.out << args.out << '\n';
}

}  // namespace

void AddApplyCommands(CLI::App& app, CliContext& ctx) {
  auto args = std::make_shared<ApplyArgs>();
  auto* cmd = app.add_subcommand(
      "apply", "Run a filter (source or compiled plugin) over a picture and write the result");
  cmd->add_option("FILTER", args->filter, "the filter: AFS, PFF, FFX, TXT, a compiled plugin or any Windows filter plugin")
      ->required();
  cmd->add_option("IMAGE", args->image, "the picture (any format Qt reads)")->required();
  cmd->add_option("-o,--output", args->out, "the result; its extension gives the format")->required();
  cmd->add_option("--ctl", args->controls,
                  "control N (0-7) set to V (0-255) instead of the filter's stored value, as N=V")
      ->allow_extra_args(false);
  cmd->add_flag("--out-of-process", args->outOfProcess,
                "run a compiled Filter Factory plugin in the Windows plugin host instead of the engine");
  cmd->callback([args, &ctx] { RunApply(*args, ctx); });
}

}  // namespace trel::cli
