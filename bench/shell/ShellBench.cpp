// Speed of the program window: listing a large folder in Details view, and a
// start on an empty settings store up to the visible window. Runs off screen:
//   QT_QPA_PLATFORM=offscreen shell_bench
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QDir>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "settings/SettingsStore.h"
#include "shell/pane/FileListModel.h"
#include "shell/pane/FileListView.h"
#include "shell/pane/FilePane.h"
#include "shell/window/MainWindow.h"
#include "support/UnattendedDialogs.h"

namespace {

namespace fs = std::filesystem;

std::string MakeTempFolder(const char* stem) {
  std::string pattern = (fs::temp_directory_path() / (std::string(stem) + "-XXXXXX")).string();
  if (!::mkdtemp(pattern.data())) std::abort();
  return pattern + "/";
}

// 20,000 files of mixed kinds and sizes, made once.
const std::string& LargeFolder() {
  static const std::string folder = [] {
    const std::string f = MakeTempFolder("trel-bench-20k");
    const char* kinds[] = {".8bf", ".prm", ".txt", ".jpg", ".afs", ".zip", ".dat", ".aex"};
    for (int i = 0; i < 20000; ++i) {
      const std::string name = f + "file" + std::to_string(i) + kinds[i % 8];
      if (std::FILE* out = std::fopen(name.c_str(), "wb")) {
        std::fwrite("0123456789", 1, static_cast<size_t>(i % 11), out);
        std::fclose(out);
      }
    }
    for (int i = 0; i < 50; ++i) fs::create_directory(f + "folder" + std::to_string(i));
    return f;
  }();
  return folder;
}

// A pane in Details view, shown, with the default preferences.
struct DetailsPane {
  trel::Preferences prefs;
  trel::PaneShared shared{{true, true, true}, &prefs, {}};
  trel::FilePane pane{0, shared};
  DetailsPane() {
    pane.resize(600, 800);
    pane.show();
    pane.SetViewMode(3);
  }
};

void BM_FillDirList20000Details(benchmark::State& state) {
  const std::string& folder = LargeFolder();
  DetailsPane details;
  trel::FilePane& pane = details.pane;
  for (auto _ : state) {
    pane.FillDirList(folder);
    QApplication::processEvents();  // the list draws what it shows
    benchmark::DoNotOptimize(pane.model()->rowCount());
  }
  state.counters["rows"] = pane.model()->rowCount();
}
BENCHMARK(BM_FillDirList20000Details)->Unit(benchmark::kMillisecond)->Iterations(10);

// A refresh that keeps the selection, with every row selected: what a pane
// does when its folder changes under a Select All.
void BM_RefreshKeepingSelection20000(benchmark::State& state) {
  const std::string& folder = LargeFolder();
  DetailsPane details;
  trel::FilePane& pane = details.pane;
  pane.FillDirList(folder);
  pane.listView()->current()->selectAll();
  for (auto _ : state) {
    pane.FillDirList(folder, true);
    QApplication::processEvents();
  }
  state.counters["selected"] = static_cast<double>(pane.SelectedTexts().size());
}
BENCHMARK(BM_RefreshKeepingSelection20000)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_StartUpEmptyStore(benchmark::State& state) {
  const std::string start = MakeTempFolder("trel-bench-start");
  QDir::setCurrent(QString::fromStdString(start));
  for (auto _ : state) {
    state.PauseTiming();
    const std::string home = MakeTempFolder("trel-bench-home");
    state.ResumeTiming();
    {
      trel::SettingsStore store(home + "Trel10.ini");
      trel::MainWindow window(store, home);
      window.Form_Initialize();
      window.Form_Load({});
      QApplication::processEvents();
      benchmark::DoNotOptimize(window.isVisible());
      state.PauseTiming();
      window.close();
    }
    fs::remove_all(home);
    state.ResumeTiming();
  }
}
BENCHMARK(BM_StartUpEmptyStore)->Unit(benchmark::kMillisecond)->Iterations(10);

}  // namespace

int main(int argc, char** argv) {
  if (!std::getenv("QT_QPA_PLATFORM")) ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QApplication app(argc, argv);
  // The welcome and the tip close themselves.
  trel::UseDialogs(std::make_unique<trel::test::UnattendedDialogs>());
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  std::error_code ignored;
  fs::remove_all(LargeFolder(), ignored);
  return 0;
}
