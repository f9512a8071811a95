// Entering the Plugin View on 10,000 plugin files: the first scan (cold, the
// cache is written) and the next one (warm, the cache answers), each against
// the bare cost of opening every file and reading the bytes identification
// needs (the first 1,400 bytes and the resource section). Files are sparse, so
// the folder takes little disk; it is removed at the end.
#include <benchmark/benchmark.h>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <fstream>
#include <iostream>
#include <map>
#include <random>

#include "catalogue/ScanCache.h"
#include "support/PeBuilder.h"

namespace {

namespace fs = std::filesystem;
using namespace trel;

constexpr int kFiles = 10000;

struct Layout {
  std::string path;
  int64_t rsrcPosition = 0;
  int64_t rsrcSize = 0;
};

struct Corpus {
  fs::path root, folder, cache;
  std::vector<Layout> files;
  PluginTypeTable types;
  ~Corpus() {
    std::error_code ec;
    if (!root.empty()) fs::remove_all(root, ec);
  }
};

Corpus& TheCorpus() {
  static Corpus corpus = [] {
    Corpus c;
    c.root = fs::temp_directory_path() / ("trel-scancache-bench-" + std::to_string(::getpid()));
    c.folder = c.root / "plugins";
    c.cache = c.root / "home" / "cache";
    fs::create_directories(c.folder);
    std::mt19937 rng(7);
    const auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    for (int i = 0; i < kFiles; ++i) {
      test::PeOptions o;
      o.pe32plus = pick(0, 9) < 8;
      const size_t size = static_cast<size_t>(pick(200, 2000)) * 512;
      o.rsrcRawOffset = static_cast<uint32_t>(size - 16 * 1024);
      o.fileSize = size;
      std::vector<test::PeResource> res;
      const int filters = pick(0, 9) == 0 ? pick(2, 5) : 1;
      for (int k = 0; k < filters; ++k)
        res.push_back(test::Pipl({"Category " + std::to_string(pick(1, 60)), "Filter " + std::to_string(i)},
                                 static_cast<uint16_t>(16000 + k)));
      const std::string bytes = test::BuildPe(res, o);
      char name[64];
      std::snprintf(name, sizeof name, "plugin%05d.%s", i, pick(0, 19) == 0 ? "_bf" : "8bf");
      Layout l;
      l.path = (c.folder / name).string();
      const size_t h = bytes.find(".rsrc");
      const auto u24 = [&](size_t at) {
        return static_cast<int64_t>(static_cast<unsigned char>(bytes[at]) |
                                    (static_cast<unsigned char>(bytes[at + 1]) << 8) |
                                    (static_cast<unsigned char>(bytes[at + 2]) << 16));
      };
      l.rsrcSize = u24(h + 16);
      l.rsrcPosition = u24(h + 20);
      std::ofstream out(l.path, std::ios::binary | std::ios::trunc);
      out.write(bytes.data(), 4096);
      out.seekp(l.rsrcPosition);
      out.write(bytes.data() + l.rsrcPosition, static_cast<std::streamsize>(bytes.size() - static_cast<size_t>(l.rsrcPosition)));
      out.close();
      fs::resize_file(l.path, bytes.size());
      c.files.push_back(l);
    }
    PluginTypeList list;
    for (const auto& row : DefaultPluginTypeRows()) list.push_back({row, true});
    GetPlugTypes(list, c.types);
    return c;
  }();
  return corpus;
}

// One entry through the cache; `save` writes the cache file as part of it
// (the window writes it on a thread of its own after the lists show).
int ScanThroughCache(Corpus& c, bool dropCacheFirst, bool save = true) {
  FilterEnv env;
  ScanOptions options;
  ScanCache cache(c.cache.string(), c.folder.string(), options, c.types);
  if (dropCacheFirst) {
    std::error_code ec;
    fs::remove(cache.path(), ec);
  }
  cache.Load();
  PaneCatalogue pane;
  const PluginViewEntry entry =
      EnterPluginView(pane, c.folder.string(), options, c.types, env, cache.Wrap({}, options, c.types, env));
  if (save && entry == PluginViewEntry::Scanned) cache.Save();
  return pane.plugins.Count();
}

size_t BareReads(const Corpus& c) {
  static std::string buffer(1 << 20, '\0');
  size_t total = 0;
  for (const Layout& l : c.files) {
    std::FILE* f = std::fopen(l.path.c_str(), "rb");
    if (!f) continue;
    total += std::fread(buffer.data(), 1, 1400, f);
    if (std::fseek(f, static_cast<long>(l.rsrcPosition), SEEK_SET) == 0)
      total += std::fread(buffer.data(), 1, static_cast<size_t>(l.rsrcSize), f);
    std::fclose(f);
  }
  return total;
}

// The floor of a warm visit: the folder listed and every entry's metadata
// read once, by name, on the folder's descriptor.
size_t FstatatFloor(const Corpus& c) {
  size_t total = 0;
  DIR* dir = ::opendir(c.folder.c_str());
  if (!dir) return 0;
  while (const dirent* e = ::readdir(dir)) {
    struct stat st {};
    if (::fstatat(::dirfd(dir), e->d_name, &st, 0) == 0) total += static_cast<size_t>(st.st_size);
  }
  ::closedir(dir);
  return total;
}

void BM_BareReads(benchmark::State& state) {
  Corpus& c = TheCorpus();
  for (auto _ : state) benchmark::DoNotOptimize(BareReads(c));
}

void BM_FstatatFloor(benchmark::State& state) {
  Corpus& c = TheCorpus();
  for (auto _ : state) benchmark::DoNotOptimize(FstatatFloor(c));
}

// The same entry with no cache at all: what the cache adds to a first visit.
void BM_NoCacheEntry(benchmark::State& state) {
  Corpus& c = TheCorpus();
  FilterEnv env;
  int entries = 0;
  for (auto _ : state) {
    PaneCatalogue pane;
    EnterPluginView(pane, c.folder.string(), {}, c.types, env);
    entries = pane.plugins.Count();
  }
  state.counters["entries"] = entries;
}

void BM_ColdEntry(benchmark::State& state) {
  Corpus& c = TheCorpus();
  int entries = 0;
  for (auto _ : state) entries = ScanThroughCache(c, true);
  state.counters["entries"] = entries;
}

void BM_WarmEntry(benchmark::State& state) {
  Corpus& c = TheCorpus();
  ScanThroughCache(c, true);
  int entries = 0;
  for (auto _ : state) entries = ScanThroughCache(c, false);
  state.counters["entries"] = entries;
}

BENCHMARK(BM_BareReads)->Unit(benchmark::kMillisecond)->MinWarmUpTime(0.3);
BENCHMARK(BM_FstatatFloor)->Unit(benchmark::kMillisecond)->MinWarmUpTime(0.3);
double ThreadCpuSeconds() {
  timespec t {};
  ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
  return double(t.tv_sec) + double(t.tv_nsec) / 1e9;
}

// An entry and its floor in turns within every iteration, the order swapped
// each time, so that a machine whose speed drifts (other work, a neighbour on
// the host) moves both alike; the ratio is of the best CPU time of each.
void Beside(benchmark::State& state, const std::function<void()>& entry, const std::function<void()>& floor) {
  double bestEntry = 1e30, bestFloor = 1e30;
  bool entryFirst = true;
  for (auto _ : state) {
    double entryTime = 0;
    const auto runEntry = [&] {
      const double t0 = ThreadCpuSeconds();
      entry();
      entryTime = ThreadCpuSeconds() - t0;
      bestEntry = std::min(bestEntry, entryTime);
    };
    const auto runFloor = [&] {
      const double t0 = ThreadCpuSeconds();
      floor();
      bestFloor = std::min(bestFloor, ThreadCpuSeconds() - t0);
    };
    if (entryFirst) {
      runEntry();
      runFloor();
    } else {
      runFloor();
      runEntry();
    }
    entryFirst = !entryFirst;
    state.SetIterationTime(entryTime);
  }
  state.counters["floor_ms"] = bestFloor * 1e3;
  state.counters["ratio"] = bestEntry / bestFloor;
}

void BM_WarmBesideFstatat(benchmark::State& state) {
  Corpus& c = TheCorpus();
  ScanThroughCache(c, true);
  Beside(state, [&] { ScanThroughCache(c, false); }, [&] { benchmark::DoNotOptimize(FstatatFloor(c)); });
}

void BM_ColdBesideBareReads(benchmark::State& state) {
  Corpus& c = TheCorpus();
  // Until the lists can show: the cache file is written afterwards, off the
  // window's way (BM_ColdEntry includes it).
  Beside(state, [&] { ScanThroughCache(c, true, false); }, [&] { benchmark::DoNotOptimize(BareReads(c)); });
}

BENCHMARK(BM_NoCacheEntry)->Unit(benchmark::kMillisecond)->MinWarmUpTime(0.3);
BENCHMARK(BM_ColdEntry)->Unit(benchmark::kMillisecond)->MinWarmUpTime(0.3);
BENCHMARK(BM_WarmEntry)->Unit(benchmark::kMillisecond)->MinWarmUpTime(0.3);
BENCHMARK(BM_WarmBesideFstatat)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(40);
BENCHMARK(BM_ColdBesideBareReads)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(16);

class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    // Names carry their arguments ("BM_ColdEntry/min_warmup_time:0.300").
    for (const Run& run : runs) {
      const std::string name = run.benchmark_name();
      times_[name.substr(0, name.find('/'))] = run.GetAdjustedCPUTime();
    }
    ConsoleReporter::ReportRuns(runs);
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    const double bare = times_["BM_BareReads"], cold = times_["BM_ColdEntry"], warm = times_["BM_WarmEntry"];
    const double floor = times_["BM_FstatatFloor"];
    if (bare > 0 && cold > 0) {
      std::cout << "CPU time ratios (the machine's load makes wall time noisy):\n";
      std::cout << "cold / bare reads = " << cold / bare << "\n";
      std::cout << "warm / bare reads = " << warm / bare << "\n";
      std::cout << "warm / cold = " << warm / cold << "\n";
    }
    if (floor > 0 && warm > 0) std::cout << "warm / fstatat floor = " << warm / floor << "\n";
  }

 private:
  std::map<std::string, double> times_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
