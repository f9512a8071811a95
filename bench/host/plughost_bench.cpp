// Invoking a plugin through the Windows host on a 640x480 picture: the first
// call (Wine and the host start, the plugin loads) and repeated calls on the
// running host, as repeated previews make them. Run with WINEPREFIX set to an
// initialised prefix, or the first call includes making one.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include <QImage>

#include "host/ImageLibrary.h"
#include "host/PlugHostClient.h"

namespace {

// Message boxes answer themselves.
class NoShell : public trel::ShellHooks {};

QImage Picture() {
  QImage img(640, 480, QImage::Format_RGB888);
  for (int y = 0; y < img.height(); ++y)
    for (int x = 0; x < img.width(); ++x) img.setPixelColor(x, y, QColor(x % 256, y % 256, (x * y) % 256));
  return img;
}

std::string Plugin(const std::string& name) { return std::string(TREL_PLUGHOST_TEST_DIR) + "/" + name; }

bool Ready(benchmark::State& state, const std::string& plugin) {
  if (trel::FindWine(false).empty() || !std::filesystem::exists(plugin)) {
    state.SkipWithError("wine64 or the cross-built plugins are missing");
    return false;
  }
  return true;
}

// Each iteration: a new library, so a new host process, then one run.
void BM_FirstCall(benchmark::State& state) {
  const std::string plugin = Plugin("invert64.8bf");
  if (!Ready(state, plugin)) return;
  NoShell shell;
  const QImage picture = Picture();
  for (auto _ : state) {
    trel::ImageLibrary lib(shell);
    lib.ImgPlugInHostLoad("");
    const trel::ImgHandle h = lib.Adopt(picture);
    if (lib.ImgPlugInLoad(plugin) != trel::IMG_OK || lib.ImgPlugInInvoke(h, 0, {0, 0, 639, 479}) != trel::IMG_OK)
      state.SkipWithError(lib.ImgErrString().c_str());
  }
}
BENCHMARK(BM_FirstCall)->Unit(benchmark::kMillisecond)->Iterations(3);

// Load and invoke on a host that is already running, as a preview repeats them.
void RepeatedCall(benchmark::State& state, const std::string& plugin, bool outOfProcess) {
  if (!Ready(state, plugin)) return;
  NoShell shell;
  trel::ImageLibrary lib(shell);
  lib.setOutOfProcess(outOfProcess);
  const QImage picture = Picture();
  lib.ImgPlugInHostLoad("");
  const trel::ImgHandle warm = lib.Adopt(picture);
  lib.ImgPlugInLoad(plugin);
  lib.ImgPlugInInvoke(warm, 0, {0, 0, 639, 479});
  for (auto _ : state) {
    const trel::ImgHandle h = lib.Adopt(picture);
    if (lib.ImgPlugInLoad(plugin) != trel::IMG_OK || lib.ImgPlugInInvoke(h, 0, {0, 0, 639, 479}) != trel::IMG_OK)
      state.SkipWithError(lib.ImgErrString().c_str());
    lib.ImgClose(h);
  }
}

void BM_RepeatedCall(benchmark::State& state) { RepeatedCall(state, Plugin("invert64.8bf"), false); }
BENCHMARK(BM_RepeatedCall)->Unit(benchmark::kMillisecond)->Iterations(20);

// The filter that reads the interface through its own offsets and calls
// every suite on each selector: the host's callbacks in the repeated preview.
void BM_RepeatedCallLayout(benchmark::State& state) { RepeatedCall(state, Plugin("layout64.8bf"), false); }
BENCHMARK(BM_RepeatedCallLayout)->Unit(benchmark::kMillisecond)->Iterations(20);

// A filter compiled into the 64-bit template (the host compiles and runs it
// with the engine) against the same filter in the engine in process.
void BM_Template64(benchmark::State& state) {
  RepeatedCall(state, std::string(TREL_TEMPLATE_DIR) + "/photo64.dll", state.range(0) != 0);
}
BENCHMARK(BM_Template64)->Arg(0)->Arg(1)->ArgName("outOfProcess")->Unit(benchmark::kMillisecond)->Iterations(10);

}  // namespace

BENCHMARK_MAIN();
