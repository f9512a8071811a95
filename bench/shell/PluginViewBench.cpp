// Entering the Plugin View of the window on 10,000 plugin files, cold (no
// cache) and warm (the cache of the first visit), with the longest time the
// window's event loop went without turning while the scan ran. Off screen:
//   QT_QPA_PLATFORM=offscreen pluginview_bench
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "settings/SettingsStore.h"
#include "shell/window/MainWindow.h"
#include "shell/pluginview/PluginViewController.h"
#include "support/PeBuilder.h"
#include "support/UnattendedDialogs.h"

namespace {

namespace fs = std::filesystem;

std::string MakeTempFolder(const char* stem) {
  std::string pattern = (fs::temp_directory_path() / (std::string(stem) + "-XXXXXX")).string();
  if (!::mkdtemp(pattern.data())) std::abort();
  return pattern + "/";
}

struct Setup {
  std::string home = MakeTempFolder("trel-pvbench-home");
  std::string folder = MakeTempFolder("trel-pvbench-plugins");
  Setup() {
    for (int i = 0; i < 10000; ++i) {
      const std::string bytes =
          trel::test::PiplPlugin("Category " + std::to_string(i % 50), "Filter " + std::to_string(i), {});
      const std::string name = folder + "plugin" + std::to_string(i) + ".8bf";
      if (std::FILE* out = std::fopen(name.c_str(), "wb")) {
        std::fwrite(bytes.data(), 1, bytes.size(), out);
        std::fclose(out);
      }
    }
  }
  ~Setup() {
    std::error_code ec;
    fs::remove_all(home, ec);
    fs::remove_all(folder, ec);
  }
};

Setup& TheSetup() {
  static Setup setup;
  return setup;
}

// One entry into the Plugin View of pane 0; the longest gap between two turns
// of the event loop goes to `stallMs`.
void Enter(trel::MainWindow& window, bool dropCache, double& stallMs) {
  if (dropCache) {
    trel::PluginViewController::Of(window)->FinishCacheWrites();
    std::error_code ec;
    fs::remove_all(window.programFolder() + "cache", ec);
  }
  QElapsedTimer gap;
  gap.start();
  qint64 longest = 0;
  QTimer ticker;
  ticker.setInterval(1);
  QObject::connect(&ticker, &QTimer::timeout, [&] {
    longest = std::max(longest, gap.nsecsElapsed());
    gap.restart();
  });
  ticker.start();
  window.SetPluginViewFresh(0, false);
  auto* controller = trel::PluginViewController::Of(window);
  QEventLoop scanning;
  QObject::connect(controller, &trel::PluginViewController::scanFinished, &scanning, &QEventLoop::quit);
  controller->Scan(0, false);
  scanning.exec();
  ticker.stop();
  stallMs = std::max(stallMs, static_cast<double>(longest) / 1e6);
}

void BM_PluginViewEntry(benchmark::State& state) {
  Setup& setup = TheSetup();
  const bool warm = state.range(0) == 1;
  QDir::setCurrent(QString::fromStdString(setup.folder));
  trel::SettingsStore store(setup.home + "Trel10.ini");
  trel::MainWindow window(store, setup.home);
  window.Form_Initialize();
  window.Form_Load({});
  double stall = 0;
  if (warm) Enter(window, true, stall);
  stall = 0;
  for (auto _ : state) Enter(window, !warm, stall);
  state.counters["longest_stall_ms"] = stall;
  window.close();
}

BENCHMARK(BM_PluginViewEntry)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

int main(int argc, char** argv) {
  if (!std::getenv("QT_QPA_PLATFORM")) ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  trel::UseDialogs(std::make_unique<trel::test::UnattendedDialogs>());
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
