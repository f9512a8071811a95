// The copy command against `cp -r` of the same data in the same run: 10,000
// small files and one large file (2 GB by default; TREL_BENCH_BIG_MB sets
// it), with the longest stall of the window's event loop during the copy.
//   QT_QPA_PLATFORM=offscreen shell_copy_bench
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "settings/SettingsStore.h"
#include "shell/commander/FileCommander.h"
#include "shell/pane/FilePane.h"
#include "shell/window/MainWindow.h"
#include "support/UnattendedDialogs.h"

namespace {

namespace fs = std::filesystem;

std::vector<std::string> sources;  // removed at the end

std::string MakeTempFolder(const char* stem) {
  std::string pattern = (fs::temp_directory_path() / (std::string(stem) + "-XXXXXX")).string();
  if (!::mkdtemp(pattern.data())) std::abort();
  return pattern + "/";
}

void WriteFile(const std::string& path, int64_t size) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
  std::string block(1 << 20, 'x');
  for (int64_t done = 0; done < size;) {
    const size_t n = static_cast<size_t>(std::min<int64_t>(size - done, static_cast<int64_t>(block.size())));
    if (::write(fd, block.data(), n) < 0) std::abort();
    done += static_cast<int64_t>(n);
  }
  ::close(fd);
}

double Seconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Seconds of CPU (user and system) of this process, all its threads, or of
// the children it waited for.
double CpuSeconds(int who) {
  struct rusage use {};
  ::getrusage(who, &use);
  const auto seconds = [](const timeval& t) { return double(t.tv_sec) + double(t.tv_usec) / 1e6; };
  return seconds(use.ru_utime) + seconds(use.ru_stime);
}

// Copies made are removed only at the end: on a file system without a
// journal, ext4 passes over inodes freed in the last minutes, one look at
// their block each, when it makes a file. Removing one copy's files before
// the next copy ran would charge that search to whichever copy came second.
std::vector<std::string> made;

// Copies everything of `source` with the window's command into a fresh
// folder; returns the seconds and the longest gap between ticks of a 1 ms
// timer on the window's thread.
double CommanderCopy(const std::string& source, double* longestStallMs, double* cpu) {
  const std::string home = MakeTempFolder("trel-copy-home");
  const std::string target = MakeTempFolder("trel-copy-target");
  made.push_back(target);
  trel::SettingsStore store(home + "Trel10.ini");
  trel::MainWindow window(store, home);
  window.settings().Change([](trel::Preferences& p) { p.passivePaneFolder = 1; });
  window.pane(0)->ChangeFolder(source);
  window.pane(1)->ChangeFolder(target);
  window.Switchit(0);
  window.command("mnuSelectAll")->trigger();
  QElapsedTimer clock;
  qint64 last = 0, longest = 0;
  QTimer tick;
  tick.setInterval(1);
  QObject::connect(&tick, &QTimer::timeout, [&] {
    const qint64 now = clock.nsecsElapsed();
    longest = std::max(longest, now - last);
    last = now;
  });
  clock.start();
  tick.start();
  const double cpuBefore = CpuSeconds(RUSAGE_SELF);
  trel::FileCommander* commander = trel::FileCommander::Of(window);
  const double seconds = Seconds([&] {
    // The copy runs as a job; the time is until its end has been shown.
    QEventLoop ended;
    QObject::connect(commander, &trel::FileCommander::jobFinished, &ended, &QEventLoop::quit);
    commander->cmd_CopyFiles();
    if (commander->busy()) ended.exec();
  });
  *cpu = CpuSeconds(RUSAGE_SELF) - cpuBefore;
  tick.stop();
  *longestStallMs = longest / 1e6;
  fs::remove_all(home);
  return seconds;
}

double CpCopy(const std::string& source, double* cpu) {
  const std::string target = MakeTempFolder("trel-cp-target");
  made.push_back(target);
  const std::string command = "cp -r '" + source + ".' '" + target + "'";
  const double cpuBefore = CpuSeconds(RUSAGE_CHILDREN);
  const double seconds = Seconds([&] {
    if (std::system(command.c_str()) != 0) std::abort();
  });
  *cpu = CpuSeconds(RUSAGE_CHILDREN) - cpuBefore;
  return seconds;
}

// The disk is shared with other work, so both copies run in turns, `rounds`
// times, taking turns at going first, and the best time of each counts.
void Compare(benchmark::State& state, const std::string& source, int rounds, int files) {
  double ours = 1e9, cp = 1e9, stall = 0, oursCpu = 1e9, cpCpu = 1e9;
  for (auto _ : state) {
    for (int round = 0; round < rounds; ++round) {
      for (int turn = 0; turn < 2; ++turn) {
        ::sync();
        double cpu = 0;
        if ((turn + round) % 2 == 0) {
          cp = std::min(cp, CpCopy(source, &cpu));
          cpCpu = std::min(cpCpu, cpu);
        } else {
          double roundStall = 0;
          ours = std::min(ours, CommanderCopy(source, &roundStall, &cpu));
          oursCpu = std::min(oursCpu, cpu);
          stall = std::max(stall, roundStall);
        }
      }
    }
    state.SetIterationTime(ours);
  }
  for (const std::string& f : made) fs::remove_all(f);
  made.clear();
  state.counters["trel_s"] = ours;
  state.counters["cp_s"] = cp;
  state.counters["ratio_to_cp"] = ours / cp;
  state.counters["longest_stall_ms"] = stall;
  // CPU of the whole process (window, worker) against cp's, per file.
  state.counters["trel_cpu_us_per_file"] = oursCpu / files * 1e6;
  state.counters["cp_cpu_us_per_file"] = cpCpu / files * 1e6;
}

void BM_Copy10000SmallFiles(benchmark::State& state) {
  static const std::string folder = [] {
    const std::string f = MakeTempFolder("trel-bench-small");
    for (int i = 0; i < 10000; ++i) WriteFile(f + "small" + std::to_string(i) + ".8bf", 100 + i % 4000);
    sources.push_back(f);
    return f;
  }();
  Compare(state, folder, 3, 10000);
}
BENCHMARK(BM_Copy10000SmallFiles)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_CopyOneLargeFile(benchmark::State& state) {
  const char* mb = std::getenv("TREL_BENCH_BIG_MB");
  const int64_t size = (mb ? std::atoll(mb) : 2048) << 20;
  static const std::string folder = [size] {
    const std::string f = MakeTempFolder("trel-bench-big");
    WriteFile(f + "large.bin", size);
    sources.push_back(f);
    return f;
  }();
  Compare(state, folder, 2, 1);
}
BENCHMARK(BM_CopyOneLargeFile)->Iterations(1)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  trel::UseDialogs(std::make_unique<trel::test::UnattendedDialogs>());
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  for (const std::string& f : sources) fs::remove_all(f);
  return 0;
}
