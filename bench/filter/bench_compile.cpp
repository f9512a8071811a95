// Compiling one filter into a plugin: a full compile (the template copied to a
// temporary file beside the target, patched, renamed over the target) and the
// editor's preview compile, which patches temp.dll in place with no copy.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "filter/PluginCompiler.h"

namespace {

namespace fs = std::filesystem;

// The generated templates: $TREL_TEMPLATE_DIR, else those of this build.
fs::path TemplateFolder() {
  if (const char* dir = std::getenv("TREL_TEMPLATE_DIR"); dir && *dir) return dir;
  return TREL_BUILD_TEMPLATE_DIR;
}

struct Setup {
  fs::path folder;
  trel::FilterEnv env;
  trel::FFFilter filter;

  Setup() {
    folder = fs::temp_directory_path() / ("trel-bench-compile-" + std::to_string(::getpid()));
    fs::create_directories(folder / "out");
    const fs::path templates = TemplateFolder();
    fs::copy_file(templates / "photo30.dll", folder / "photo30.dll", fs::copy_options::overwrite_existing);
    fs::copy_file(templates / "photo30.dll", folder / "temp.dll", fs::copy_options::overwrite_existing);
    env.options.programFolder = folder.string() + "/";
    filter.filename = "bench.afs";
    filter.title = "Benchmark";
    filter.category = "Trel";
    filter.copyright = "(c) Trel";
    filter.author = "Trel";
    filter.mapName[1] = "Map 0";
    for (int i = 3; i <= 8; ++i) filter.ctlName[i] = "Control " + std::to_string(i - 1);
    filter.codeR = "put(sin(x*ctl(2)/64)*ctl(3)+r,0),get(0)";
    filter.codeG = "src(x+ctl(4)-128,y,z)";
    filter.codeB = "b*ctl(5)/128";
    filter.codeA = "a";
  }
  ~Setup() {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
  }
};

void BM_Write8bfWithTemplateCopy(benchmark::State& state) {
  Setup s;
  const std::string out = (s.folder / "out").string();
  for (auto _ : state) {
    trel::FFFilter f = s.filter;
    trel::Write8bf(f, out, false, false, s.env);
  }
}
BENCHMARK(BM_Write8bfWithTemplateCopy)->Unit(benchmark::kMicrosecond);

void BM_Write8bfPreviewInPlace(benchmark::State& state) {
  Setup s;
  for (auto _ : state) {
    trel::FFFilter f = s.filter;
    trel::Write8bf(f, s.folder.string(), true, false, s.env);
  }
}
BENCHMARK(BM_Write8bfPreviewInPlace)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
