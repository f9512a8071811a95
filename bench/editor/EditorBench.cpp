// The editor's edit-to-pixels path: the filter compiled into temp.dll and run
// through the plugin host on the working copy, at the preview size and at
// 640x480; and slider moves at 640x480 (each one a full compile and run).
#include <benchmark/benchmark.h>

#include <QDir>
#include <QGuiApplication>
#include <QTemporaryDir>

#include "editor/PreviewRunner.h"
#include "filter/ProgramFolder.h"

namespace {

struct Folder {
  Folder() {
    trel::FillProgramFolder(path(), {TREL_TEMPLATE_DIR});
  }
  std::string path() const { return dir.path().toStdString() + "/"; }
  QTemporaryDir dir;
};

Folder& ProgramFolder() {
  static Folder folder;
  return folder;
}

QImage Picture(int w, int h) {
  QImage img(w, h, QImage::Format_RGB32);
  for (int y = 0; y < h; ++y)
    for (int x = 0; x < w; ++x) img.setPixel(x, y, qRgb(x & 255, y & 255, (x ^ y) & 255));
  return img;
}

trel::PreviewJob Job(const QImage& picture, int slider) {
  trel::PreviewJob job;
  job.filter.filename = "Bench.afs";
  job.filter.title = "Bench";
  job.filter.ctlValue[1] = static_cast<uint8_t>(slider);
  // A typical filter: a levels change, a mix, a neighbour read.
  job.passes = {{"scl(r,0,255,ctl(0),255)", "mix(g,255-g,ctl(0),255)", "(src(x+1,y,z)+b)/2", "a"}};
  job.options.programFolder = ProgramFolder().path();
  job.picture = picture;
  return job;
}

void EditToPixels(benchmark::State& state) {
  const QImage picture = Picture(int(state.range(0)), int(state.range(1)));
  for (auto _ : state) {
    trel::PreviewOutcome out = trel::RunPreviewJob(Job(picture, 128));
    if (!out.ok) state.SkipWithError(out.message.c_str());
    benchmark::DoNotOptimize(out.picture.constBits());
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(EditToPixels)->Args({188, 140})->Args({640, 480})->Unit(benchmark::kMillisecond)->UseRealTime();

void SliderDragAt640x480(benchmark::State& state) {
  const QImage picture = Picture(640, 480);
  int value = 0;
  for (auto _ : state) {
    trel::PreviewOutcome out = trel::RunPreviewJob(Job(picture, value));
    value = (value + 7) & 255;
    benchmark::DoNotOptimize(out.picture.constBits());
  }
  state.counters["updates_per_s"] = benchmark::Counter(double(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(SliderDragAt640x480)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QGuiApplication app(argc, argv);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
