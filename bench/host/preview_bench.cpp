// Preview of a compiled Filter Factory plugin at 640 x 480, from the plugin
// file to pixels ready for the screen, cold (host, plugin load, run; the
// window writes the cache file on a worker, measured on its own) and from the
// cache; and the contact sheet of 200 plugins on all
// cores against one.
#include <benchmark/benchmark.h>

#include <sys/resource.h>

#include <QImage>
#include <filesystem>
#include <iostream>
#include <map>

#include "host/HostTestSupport.h"
#include "host/ContactSheet.h"
#include "host/PluginHost.h"
#include "host/PreviewPipeline.h"
#include "host/PreviewRender.h"

namespace trel {
namespace {

struct Fixture {
  Fixture() {
    FFFilter f = test::SampleFilter("(r + g + b) / 3 + sin(x * 8, 40)");
    f.codeR = "r * ctl(0) / 255 + (255 - r) * (255 - ctl(0)) / 255";
    f.codeB = "(b + src(x + 2, y, 2)) / 2";
    plugin = test::CompilePlugin(dir, f);
    picture = test::PatternPicture(640, 480, false);
    for (int i = 0; i < 200; ++i) {
      f.filename = "p" + std::to_string(i) + ".afs";
      f.codeG = "g * " + std::to_string(i % 7 + 1) + " / 8 + x % 32";
      plugins.push_back(test::CompilePlugin(dir, f));
    }
  }
  test::TempDir dir, prog;
  std::string plugin;
  QImage picture;
  std::vector<std::string> plugins;
};

Fixture& F() {
  static Fixture f;
  return f;
}

void BM_PreviewCold(benchmark::State& state) {
  Fixture& f = F();
  test::RecordingShell shell;
  ImageLibrary lib(shell);
  HostState host;
  const ImgHandle thumb = lib.Adopt(f.picture);
  for (auto _ : state) {
    int w = 0, h = 0;
    CopyImageSized(lib, w, h, const_cast<ImgHandle&>(thumb), host.PreviewImage);
    WindowHandle parent = 0;
    bool result = false;
    PluginInvoke(lib, host, shell, f.prog.path(), f.plugin, nullptr, false, parent, result);
    QImage shown = lib.image(host.PreviewImage)->convertToFormat(QImage::Format_RGB32);
    benchmark::DoNotOptimize(shown.bits());
  }
}
BENCHMARK(BM_PreviewCold)->Unit(benchmark::kMillisecond);

// The cache file of a cold preview, which the window writes on a worker after
// the picture is on show.
void BM_PreviewCacheWrite(benchmark::State& state) {
  Fixture& f = F();
  const QImage shown = f.picture.convertToFormat(QImage::Format_RGB888);
  const std::string entry = PreviewCacheFile(f.prog.path(), f.plugin);
  for (auto _ : state) benchmark::DoNotOptimize(WritePreviewCache(shown, entry, 75));
}
BENCHMARK(BM_PreviewCacheWrite)->Unit(benchmark::kMillisecond);

// Shown again: the preview kept decoded in memory, looked up by the plugin's
// path, size and time (one stat), made ready for the screen.
void BM_PreviewCached(benchmark::State& state) {
  Fixture& f = F();
  PreviewMemory memory;
  // Kept as the window keeps it: the 24-bit picture the disk cache gives.
  memory.Put(PreviewMemory::KeyOf(f.plugin, "picture"), f.picture.convertToFormat(QImage::Format_RGB888));
  for (auto _ : state) {
    QImage shown = memory.Find(PreviewMemory::KeyOf(f.plugin, "picture")).convertToFormat(QImage::Format_RGB32);
    benchmark::DoNotOptimize(shown.bits());
  }
}
BENCHMARK(BM_PreviewCached)->Unit(benchmark::kMillisecond);

// A miss in memory that the disk cache answers: the JPEG read and decoded.
void BM_PreviewFromDisk(benchmark::State& state) {
  Fixture& f = F();
  const std::string entry = PreviewCacheFile(f.prog.path(), f.plugin);
  WritePreviewCache(f.picture, entry, 75);
  for (auto _ : state) {
    QImage shown = ReadPreviewCache(entry).convertToFormat(QImage::Format_RGB32);
    benchmark::DoNotOptimize(shown.bits());
  }
}
BENCHMARK(BM_PreviewFromDisk)->Unit(benchmark::kMillisecond);

// The contact sheet of 200 plugins at the thumbnail size of the preview box.
void BM_Browse200(benchmark::State& state) {
  Fixture& f = F();
  const QImage thumb = f.picture.scaled(400, 300);
  ContactSheetOptions options;
  options.threads = int(state.range(0));
  // The CPU of all threads beside the wall time: on a shared machine the
  // second core may be taken, and then the wall time can't halve, but the
  // work done must stay that of one thread.
  const auto processCpu = [] {
    struct rusage use {};
    ::getrusage(RUSAGE_SELF, &use);
    return double(use.ru_utime.tv_sec + use.ru_stime.tv_sec) + double(use.ru_utime.tv_usec + use.ru_stime.tv_usec) / 1e6;
  };
  // One sheet before the clock starts: the first one in a process pays for
  // what is made once (the engine's tables, the allocator's arenas), and
  // would flatter whichever thread count ran first.
  RenderContactSheet(f.plugins, thumb, options, [](size_t, const QImage&, const std::string&) {});
  const double before = processCpu();
  for (auto _ : state) {
    std::atomic<int> n{0};
    RenderContactSheet(f.plugins, thumb, options, [&](size_t, const QImage&, const std::string&) { ++n; });
    benchmark::DoNotOptimize(n.load());
  }
  state.counters["all_threads_cpu_ms"] = (processCpu() - before) * 1e3 / double(state.iterations());
}
BENCHMARK(BM_Browse200)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->Iterations(2)->UseRealTime();

// Each figure beside its floor from the same run.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) times_[run.benchmark_name()] = run.GetAdjustedRealTime();
    ConsoleReporter::ReportRuns(runs);
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    const auto time = [&](const std::string& prefix) {
      for (const auto& [name, t] : times_)
        if (name.rfind(prefix, 0) == 0) return t;
      return 0.0;
    };
    const double cold = time("BM_PreviewCold"), cached = time("BM_PreviewCached"), disk = time("BM_PreviewFromDisk");
    const double one = time("BM_Browse200/1"), two = time("BM_Browse200/2");
    if (cold > 0) {
      std::cout << "cached / cold preview = " << cached / cold << "\n";
      std::cout << "from disk / cold preview = " << disk / cold << "\n";
    }
    if (one > 0) std::cout << "Browse, 2 threads / 1 thread = " << two / one << "\n";
  }

 private:
  std::map<std::string, double> times_;
};

}  // namespace
}  // namespace trel

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  trel::RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
