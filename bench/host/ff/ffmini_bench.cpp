// The small templates' tree-walking interpreter beside the engine on one
// thread, over a 640x480 picture without alpha. Items are pixels.
#include <benchmark/benchmark.h>

#include <array>
#include <memory>
#include <string>

#include "FFMini.h"
#include "NoisePicture.h"
#include "host/ff/FFEngine.h"

namespace {

using namespace trel::ff;

const ImageRGBA8& Source() {
  static const ImageRGBA8 img = NoisePicture(640, 480);
  return img;
}

const Controls kCtl{37, 200, 0, 0, 0, 0, 0, 0};
const char* const kFormulas[] = {
    "255 - c",
    "src(x + 3, y - 2, z) / 2 + c / 2",
    "(c * ctl(0) + x * y) % 256 ^ ctl(1)",
    "sin(d * 4 + m) / 2 + c2d(x - 320, y - 240) + cos(x) / 4",
    "cnv(1, 2, 1, 2, 4, 2, 1, 2, 1, 16)",
};

void Engine(benchmark::State& state) {
  const std::string code = kFormulas[state.range(0)];
  const CompiledFilter f = CompileFilter({code, code, code, "a"}, nullptr);
  ImageRGBA8 out(640, 480, false);
  RenderOptions options;
  options.threads = 1;
  for (auto _ : state) RenderFilter(f, kCtl, Source().view(), out.view(), options);
  state.SetItemsProcessed(state.iterations() * 640 * 480);
  state.SetLabel(code);
}

void Mini(benchmark::State& state) {
  const char* code = kFormulas[state.range(0)];
  const char* const texts[4] = {code, code, code, "a"};
  auto m = std::make_unique<FFMini>();
  FFMiniCompile(m.get(), texts);
  ImageRGBA8 out(640, 480, false);
  const FFMiniPicture from{const_cast<uint8_t*>(Source().pixels.data()), 640, 480, 640 * 4, 4};
  const FFMiniPicture to{out.pixels.data(), 640, 480, 640 * 4, 4};
  for (auto _ : state) FFMiniRender(m.get(), kCtl.data(), &from, 0, &to, nullptr, nullptr);
  state.SetItemsProcessed(state.iterations() * 640 * 480);
  state.SetLabel(code);
}

BENCHMARK(Engine)->DenseRange(0, 4)->Unit(benchmark::kMillisecond);
BENCHMARK(Mini)->DenseRange(0, 4)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
