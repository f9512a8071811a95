// Converting a library of 1,000 entries into each output format, as one batch
// run does: read every entry, write one file per entry. Each iteration writes
// into a fresh folder, so every target is new.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "filter/BatchConvert.h"
#include "filter/FFL.h"

namespace {

namespace fs = std::filesystem;

constexpr int kEntries = 1000;

// The generated templates: $TREL_TEMPLATE_DIR, else those of this build.
fs::path TemplateFolder() {
  if (const char* dir = std::getenv("TREL_TEMPLATE_DIR"); dir && *dir) return dir;
  return TREL_BUILD_TEMPLATE_DIR;
}

struct Setup {
  fs::path folder;
  fs::path library;
  trel::FilterEnv env;

  Setup() {
    folder = fs::temp_directory_path() / ("trel-bench-ffl-" + std::to_string(::getpid()));
    fs::create_directories(folder);
    std::error_code ec;
    for (const char* name : {"photo30.dll", "fl-fact.prm", "fx-fact.prm"})
      fs::copy_file(TemplateFolder() / name, folder / name, fs::copy_options::overwrite_existing, ec);
    env.options.programFolder = folder.string() + "/";

    library = folder / "bench.ffl";
    std::ofstream out(library, std::ios::binary);
    out << "FFL1.0\r\n" << " 1000\r\n";
    for (int i = 0; i < kEntries; ++i) {
      trel::FFFilter f;
      f.filename = "filter" + std::to_string(i) + ".8bf";
      f.category = "Benchmark";
      f.title = "Filter " + std::to_string(i);
      f.author = "Trel";
      f.copyright = "Free";
      f.mapName[1] = "Map 0";
      for (int c = 3; c <= 8; ++c) f.ctlName[c] = "Control " + std::to_string(c - 1);
      for (int c = 1; c <= 8; ++c) f.ctlValue[c] = static_cast<uint8_t>(i + c);
      f.codeR = "put(sin(x*ctl(2)/64)*ctl(3)+r,0),get(0)";
      f.codeG = "src(x+ctl(4)-128,y,z)";
      f.codeB = "b*ctl(5)/128+" + std::to_string(i);
      f.codeA = "a";
      out << trel::FFLEntryText(f);
    }
  }
  ~Setup() {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
  }
};

Setup& Shared() {
  static Setup setup;
  return setup;
}

void BM_ConvertLibrary(benchmark::State& state) {
  Setup& setup = Shared();
  const int format = static_cast<int>(state.range(0));
  int run = 0;
  for (auto _ : state) {
    state.PauseTiming();
    const fs::path out = setup.folder / ("out" + std::to_string(format) + "-" + std::to_string(run++));
    state.ResumeTiming();
    trel::FFFilter f;
    trel::ConvertReport report;
    const trel::Expected<void> done = trel::Convertffl(f, setup.library.string(), out.string(),
                                                       static_cast<trel::OutputFormat>(format), setup.env, &report);
    if (!done || report.written.size() != static_cast<size_t>(kEntries)) state.SkipWithError("entries not written");
    state.PauseTiming();
    std::error_code ignored;
    fs::remove_all(out, ignored);
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * kEntries);
}
BENCHMARK(BM_ConvertLibrary)
    ->ArgName("format")
    ->DenseRange(static_cast<int>(trel::OutputFormat::Plugin8bf), static_cast<int>(trel::OutputFormat::TXT))
    ->Unit(benchmark::kMillisecond);

// Reading the table of the library, as the FFL View does when it opens one.
void BM_ReadLibraryTable(benchmark::State& state) {
  Setup& setup = Shared();
  for (auto _ : state) {
    trel::FFLLibrary table;
    if (!trel::ReadFFLLibrary(setup.library.string(), table)) state.SkipWithError("library not read");
    benchmark::DoNotOptimize(table.items.data());
  }
}
BENCHMARK(BM_ReadLibraryTable)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
