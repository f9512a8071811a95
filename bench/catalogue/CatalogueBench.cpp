// How fast the scanner turns a folder of 10,000 mixed plugin files into a
// PluginList, against the bare cost of opening each file and reading its first
// 1,400 bytes and its resource section; and how much memory an entry takes.
// The folder is generated under the temporary folder and removed at the end.
// The plugins are sparse: their headers and resource sections are written, the
// code between them is a hole, so 10,000 files of 100 KB to 2 MB take little disk.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <random>

#include <unistd.h>

#include "catalogue/PluginScanner.h"
#include "support/PeBuilder.h"

namespace {

namespace fs = std::filesystem;
using namespace trel;

constexpr int kFiles = 10000;

struct Layout {
  std::string path;
  int64_t rsrcPosition = 0;  // 0-based; 0 for files without a section
  int64_t rsrcSize = 0;
};

struct Corpus {
  fs::path folder;
  std::vector<Layout> files;
  PluginTypeTable types;
  ~Corpus() {
    std::error_code ec;
    if (!folder.empty()) fs::remove_all(folder, ec);
  }
};

// Writes the file's non-zero parts only and sizes it, leaving a hole between.
void WriteSparse(const std::string& path, const std::string& bytes, size_t headerEnd, size_t tailStart) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(std::min(headerEnd, bytes.size())));
  if (tailStart < bytes.size()) {
    out.seekp(static_cast<std::streamoff>(tailStart));
    out.write(bytes.data() + tailStart, static_cast<std::streamsize>(bytes.size() - tailStart));
  }
  out.close();
  fs::resize_file(path, bytes.size());
}

Corpus& TheCorpus() {
  static Corpus corpus = [] {
    Corpus c;
    c.folder = fs::temp_directory_path() / ("trel-catalogue-bench-" + std::to_string(::getpid()));
    fs::create_directories(c.folder);
    std::mt19937 rng(4);
    const auto pick = [&](int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); };
    const std::string icon(2048, '\x33');
    for (int i = 0; i < kFiles; ++i) {
      char name[64];
      const int kind = pick(0, 99);
      Layout l;
      std::string bytes;
      test::PeOptions o;
      o.pe32plus = pick(0, 9) < 8;
      if (kind < 85) {
        // An ordinary plugin: code, then the resources near the end.
        const size_t size = static_cast<size_t>(pick(200, 4000)) * 512;
        o.rsrcRawOffset = static_cast<uint32_t>(size - 16 * 1024);
        o.fileSize = size;
        std::vector<test::PeResource> res = {
            test::Version({{"FileDescription", "Plugin " + std::to_string(i)}, {"ProductName", "Suite"}}),
            {"", 3, 1, icon}, {"", 14, 1, std::string(20, '\x01')}};
        const int filters = pick(0, 9) == 0 ? pick(2, 6) : 1;
        for (int k = 0; k < filters; ++k) {
          res.push_back(test::Pipl({"Category " + std::to_string(pick(1, 60)),
                                    "Filter " + std::to_string(i) + "." + std::to_string(k), pick(0, 1) == 1,
                                    pick(0, 3) * 4}, static_cast<uint16_t>(16000 + k)));
        }
        bytes = test::BuildPe(res, o);
        std::snprintf(name, sizeof name, "plugin%05d.%s", i, pick(0, 19) == 0 ? "_bf" : "8bf");
        l.rsrcPosition = -1;
      } else if (kind < 90) {
        o.fileSize = 57344;
        bytes = test::BuildPeWithTextAt({test::Pipl({"FF Cat " + std::to_string(i % 7), "FF " + std::to_string(i)})},
                                        o, "FF Cat ", 31064);
        std::snprintf(name, sizeof name, "ff%05d.8bf", i);
        l.rsrcPosition = -1;  // small: written whole
      } else if (kind < 94) {
        const size_t size = static_cast<size_t>(pick(200, 1000)) * 512;
        o.rsrcRawOffset = static_cast<uint32_t>(size - 8 * 1024);
        o.fileSize = size;
        bytes = test::BuildPe({test::Pipl({"Video", "Premiere " + std::to_string(i)})}, o);
        std::snprintf(name, sizeof name, "premiere%05d.prm", i);
        l.rsrcPosition = -1;
      } else if (kind < 96) {
        bytes = test::PlaceBytes(60000, {{59002, test::PremiereVideo("Old " + std::to_string(i))}});
        std::snprintf(name, sizeof name, "old%05d.prm", i);
      } else if (kind < 98) {
        bytes = std::string(30000, '\x44');
        std::snprintf(name, sizeof name, "tube%05d.tub", i);
      } else {
        bytes = std::string(static_cast<size_t>(pick(10, 5000)), '\x11');
        std::snprintf(name, sizeof name, "broken%05d.8bf", i);
      }
      l.path = (c.folder / name).string();
      if (l.rsrcPosition < 0) {  // a PE file: its section header tells where the resources are
        const size_t h = bytes.find(".rsrc");
        const auto u24 = [&](size_t at) {
          return static_cast<int64_t>(static_cast<unsigned char>(bytes[at]) |
                                      (static_cast<unsigned char>(bytes[at + 1]) << 8) |
                                      (static_cast<unsigned char>(bytes[at + 2]) << 16));
        };
        l.rsrcSize = u24(h + 16);
        l.rsrcPosition = u24(h + 20);
        WriteSparse(l.path, bytes, 4096, static_cast<size_t>(l.rsrcPosition));
      } else {
        WriteSparse(l.path, bytes, bytes.size(), bytes.size());
      }
      c.files.push_back(l);
    }
    PluginTypeList list;
    for (const auto& row : DefaultPluginTypeRows()) list.push_back({row, true});
    GetPlugTypes(list, c.types);
    return c;
  }();
  return corpus;
}

size_t HeapBytes(const std::string& s) { return s.capacity() > 15 ? s.capacity() + 1 : 0; }

void BM_ScanFolder(benchmark::State& state) {
  Corpus& c = TheCorpus();
  FilterEnv env;
  size_t entries = 0, bytes = 0;
  for (auto _ : state) {
    PaneCatalogue pane;
    const int n = ScanPluginRecurse(pane, c.folder.string(), {}, c.types, env);
    benchmark::DoNotOptimize(n);
    entries = static_cast<size_t>(pane.plugins.Count());
    bytes = 0;
    for (const PluginEntry& e : pane.plugins) {
      bytes += sizeof(PluginEntry) + HeapBytes(e.path) + HeapBytes(e.category) + HeapBytes(e.title);
    }
  }
  state.SetItemsProcessed(state.iterations() * kFiles);
  state.counters["files/s"] = benchmark::Counter(static_cast<double>(kFiles), benchmark::Counter::kIsIterationInvariantRate);
  state.counters["entries"] = static_cast<double>(entries);
  state.counters["bytes/entry"] = entries ? static_cast<double>(bytes) / static_cast<double>(entries) : 0;
}

// The least any scanner must do: open each file, read 1,400 bytes, read the
// resource section where there is one.
void BM_BareReads(benchmark::State& state) {
  Corpus& c = TheCorpus();
  std::string buffer(16 * 1024 * 1024, '\0');
  for (auto _ : state) {
    size_t total = 0;
    for (const Layout& l : c.files) {
      std::FILE* f = std::fopen(l.path.c_str(), "rb");
      if (!f) continue;
      total += std::fread(buffer.data(), 1, 1400, f);
      if (l.rsrcSize > 0 && std::fseek(f, static_cast<long>(l.rsrcPosition), SEEK_SET) == 0) {
        total += std::fread(buffer.data(), 1, static_cast<size_t>(l.rsrcSize), f);
      }
      std::fclose(f);
    }
    benchmark::DoNotOptimize(total);
  }
  state.SetItemsProcessed(state.iterations() * kFiles);
  state.counters["files/s"] = benchmark::Counter(static_cast<double>(kFiles), benchmark::Counter::kIsIterationInvariantRate);
}

BENCHMARK(BM_BareReads)->Unit(benchmark::kMillisecond)->MinWarmUpTime(0.5);
BENCHMARK(BM_ScanFolder)->Unit(benchmark::kMillisecond)->MinWarmUpTime(0.5);

// Prints the scan's cost as a multiple of the bare reads after the table.
class RatioReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) times_[run.benchmark_name()] = run.GetAdjustedRealTime();
    ConsoleReporter::ReportRuns(runs);
  }
  void Finalize() override {
    ConsoleReporter::Finalize();
    const auto bare = times_.find("BM_BareReads"), scan = times_.find("BM_ScanFolder");
    if (bare != times_.end() && scan != times_.end() && bare->second > 0) {
      std::cout << "scan / bare reads = " << scan->second / bare->second << "\n";
    }
  }

 private:
  std::map<std::string, double> times_;
};

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  TheCorpus();
  RatioReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();
  return 0;
}
