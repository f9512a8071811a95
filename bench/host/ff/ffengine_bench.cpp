// Speed of the Filter Factory engine over a 3000x3000 picture without alpha:
// each formula in R, G and B, run by the engine on one thread and on all
// cores, beside a hand-written loop computing the same thing in the same
// iteration (the two take turns going first). The figure is the engine's; the
// counters give the hand-written time (hand_ms) and the ratio engine/hand of
// CPU time, which a machine shared with other work disturbs least: `ratio` of
// the best iteration of each, `mean_ratio` of their sums. On all cores the CPU
// of every thread of the process counts, and wall_ratio is the ratio of the
// best wall times. Items are pixels. Before timing, the engine's picture
// is checked against the hand-written one, so the two compute the same thing.
#include <benchmark/benchmark.h>

#include <time.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "NoisePicture.h"
#include "host/ff/FFEngine.h"
#include "host/ff/FFMath.h"
#include "host/ff/FFRandom.h"
#include "host/ff/FFTreeEval.h"

namespace {

using namespace trel::ff;

constexpr int kSize = 3000;

const ImageRGBA8& Source() {
  static const ImageRGBA8 img = NoisePicture(kSize, kSize);
  return img;
}

const Controls kCtl{37, 200, 0, 0, 0, 0, 0, 0};

inline uint8_t Clamp8(int32_t v) { return uint8_t(v < 0 ? 0 : (v > 255 ? 255 : v)); }

// A hand-written filter: fills the three colour bytes of one pixel.
using Hand = std::function<void(const ImageRGBA8&, ImageRGBA8&)>;

template <class PerChannel>
void ForEachPixel(const ImageRGBA8& s, ImageRGBA8& d, PerChannel f) {
  for (int y = 0; y < s.height; ++y) {
    const uint8_t* in = s.at(0, y);
    uint8_t* out = d.at(0, y);
    for (int x = 0; x < s.width; ++x, in += 4, out += 4) {
      for (int z = 0; z < 3; ++z) out[z] = Clamp8(f(in, x, y, z));
      out[3] = 255;
    }
  }
}

struct Case {
  const char* name;
  const char* code;
  Hand hand;
};

const std::vector<Case>& Cases() {
  static const std::vector<Case> cases = [] {
    std::vector<Case> c;
    c.push_back({"c", "c", [](const ImageRGBA8& s, ImageRGBA8& d) {
                   ForEachPixel(s, d, [](const uint8_t* p, int, int, int z) { return int32_t(p[z]); });
                 }});
    c.push_back({"255-c", "255-c", [](const ImageRGBA8& s, ImageRGBA8& d) {
                   ForEachPixel(s, d, [](const uint8_t* p, int, int, int z) { return 255 - int32_t(p[z]); });
                 }});
    c.push_back({"(r+g+b)/3", "(r+g+b)/3", [](const ImageRGBA8& s, ImageRGBA8& d) {
                   ForEachPixel(s, d, [](const uint8_t* p, int, int, int) {
                     return (int32_t(p[0]) + p[1] + p[2]) / 3;
                   });
                 }});
    c.push_back({"src(x-1,y,z)/2+src(x+1,y,z)/2", "src(x-1,y,z)/2+src(x+1,y,z)/2",
                 [](const ImageRGBA8& s, ImageRGBA8& d) {
                   const int w = s.width;
                   ForEachPixel(s, d, [&](const uint8_t* p, int x, int, int z) {
                     const uint8_t* l = x > 0 ? p - 4 : p;
                     const uint8_t* r = x < w - 1 ? p + 4 : p;
                     return int32_t(l[z]) / 2 + int32_t(r[z]) / 2;
                   });
                 }});
    c.push_back({"rad(d+ctl(0),m,z)", "rad(d+ctl(0),m,z)", [](const ImageRGBA8& s, ImageRGBA8& d) {
                   const Tables& t = GetTables();
                   for (int y = 0; y < s.height; ++y)
                     for (int x = 0; x < s.width; ++x) {
                       int32_t dd = PixelDirection(x, y, s.width, s.height) + kCtl[0];
                       int32_t mm = PixelMagnitude(x, y, s.width, s.height);
                       int32_t sx = (s.width >> 1) + R2x(t, dd, mm);
                       int32_t sy = (s.height >> 1) + R2y(t, dd, mm);
                       sx = sx < 0 ? 0 : (sx >= s.width ? s.width - 1 : sx);
                       sy = sy < 0 ? 0 : (sy >= s.height ? s.height - 1 : sy);
                       const uint8_t* p = s.at(sx, sy);
                       uint8_t* o = d.at(x, y);
                       o[0] = p[0];
                       o[1] = p[1];
                       o[2] = p[2];
                       o[3] = 255;
                     }
                 }});
    c.push_back({"cnv(0,-1,0,-1,5,-1,0,-1,0,1)", "cnv(0,-1,0,-1,5,-1,0,-1,0,1)",
                 [](const ImageRGBA8& s, ImageRGBA8& d) {
                   const int w = s.width, h = s.height;
                   ForEachPixel(s, d, [&](const uint8_t* p, int x, int y, int z) {
                     const uint8_t* up = y > 0 ? p - ptrdiff_t(w) * 4 : p;
                     const uint8_t* dn = y < h - 1 ? p + ptrdiff_t(w) * 4 : p;
                     const uint8_t* l = x > 0 ? p - 4 : p;
                     const uint8_t* r = x < w - 1 ? p + 4 : p;
                     return 5 * int32_t(p[z]) - up[z] - dn[z] - l[z] - r[z];
                   });
                 }});
    c.push_back({"sin(x*4)/2+128", "sin(x*4)/2+128", [](const ImageRGBA8& s, ImageRGBA8& d) {
                   const Tables& t = GetTables();
                   ForEachPixel(s, d, [&](const uint8_t*, int x, int, int) { return Sin(t, x * 4) / 2 + 128; });
                 }});
    c.push_back({"mix(r,255-r,ctl(0),255)", "mix(r,255-r,ctl(0),255)",
                 [](const ImageRGBA8& s, ImageRGBA8& d) {
                   const int32_t n = kCtl[0];
                   ForEachPixel(s, d, [&](const uint8_t* p, int, int, int) {
                     return int32_t(p[0]) * n / 255 + (255 - int32_t(p[0])) * (255 - n) / 255;
                   });
                 }});
    c.push_back({"scl(i,0,255,ctl(0),ctl(1))", "scl(i,0,255,ctl(0),ctl(1))",
                 [](const ImageRGBA8& s, ImageRGBA8& d) {
                   const int32_t lo = kCtl[0], hi = kCtl[1];
                   ForEachPixel(s, d, [&](const uint8_t* p, int, int, int) {
                     int32_t i = (76 * p[0] + 150 * p[1] + 29 * p[2]) / 256;
                     return lo + (hi - lo) * i / 255;
                   });
                 }});
    c.push_back({"rnd(0,255)", "rnd(0,255)", [](const ImageRGBA8& s, ImageRGBA8& d) {
                   FFRandom rng;
                   ForEachPixel(s, d, [&](const uint8_t*, int, int, int) { return rng.Next(0, 255); });
                 }});
    c.push_back({"src(x+3,y-2,z)/2+c/2", "src(x + 3, y - 2, z) / 2 + c / 2",
                 [](const ImageRGBA8& s, ImageRGBA8& d) {
                   const int w = s.width;
                   for (int y = 0; y < s.height; ++y) {
                     const uint8_t* from = s.at(0, y < 2 ? 0 : y - 2);
                     const uint8_t* in = s.at(0, y);
                     uint8_t* out = d.at(0, y);
                     for (int x = 0; x < w; ++x, in += 4, out += 4) {
                       const uint8_t* q = from + (x + 3 < w ? x + 3 : w - 1) * 4;
                       for (int z = 0; z < 3; ++z) out[z] = Clamp8(q[z] / 2 + in[z] / 2);
                       out[3] = 255;
                     }
                   }
                 }});
    c.push_back({"(c*ctl(0)+x*y)%256^ctl(1)", "(c * ctl(0) + x * y) % 256 ^ ctl(1)",
                 [](const ImageRGBA8& s, ImageRGBA8& d) {
                   const int32_t k0 = kCtl[0], k1 = kCtl[1];
                   ForEachPixel(s, d, [&](const uint8_t* p, int x, int y, int z) {
                     return ((p[z] * k0 + x * y) % 256) ^ k1;
                   });
                 }});
    c.push_back({"sin(d*4+m)/2+c2d(x-320,y-240)+cos(x)/4",
                 "sin(d * 4 + m) / 2 + c2d(x - 320, y - 240) + cos(x) / 4",
                 [](const ImageRGBA8& s, ImageRGBA8& d) {
                   const Tables& t = GetTables();
                   for (int y = 0; y < s.height; ++y) {
                     uint8_t* out = d.at(0, y);
                     for (int x = 0; x < s.width; ++x, out += 4) {
                       const int32_t dd = PixelDirection(x, y, s.width, s.height);
                       const int32_t mm = PixelMagnitude(x, y, s.width, s.height);
                       const uint8_t v = Clamp8(Sin(t, dd * 4 + mm) / 2 + C2d(t, x - 320, y - 240) + Cos(t, x) / 4);
                       out[0] = out[1] = out[2] = v;
                       out[3] = 255;
                     }
                   }
                 }});
    c.push_back({"cnv(1,2,1,2,4,2,1,2,1,16)", "cnv(1, 2, 1, 2, 4, 2, 1, 2, 1, 16)",
                 [](const ImageRGBA8& s, ImageRGBA8& d) {
                   const int w = s.width, h = s.height;
                   ForEachPixel(s, d, [&](const uint8_t* p, int x, int y, int z) {
                     const ptrdiff_t up = y > 0 ? -ptrdiff_t(w) * 4 : 0;
                     const ptrdiff_t dn = y < h - 1 ? ptrdiff_t(w) * 4 : 0;
                     const ptrdiff_t l = x > 0 ? -4 : 0;
                     const ptrdiff_t r = x < w - 1 ? 4 : 0;
                     return (p[up + l + z] + 2 * p[up + z] + p[up + r + z] + 2 * p[l + z] + 4 * p[z] +
                             2 * p[r + z] + p[dn + l + z] + 2 * p[dn + z] + p[dn + r + z]) / 16;
                   });
                 }});
    return c;
  }();
  return cases;
}

double ProcessCpuSeconds() {
  timespec ts{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
  return double(ts.tv_sec) + double(ts.tv_nsec) * 1e-9;
}

double WallSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// The engine (on `threads`, 0 for all cores) and the hand-written loop, in
// turn, in every iteration; the engine's CPU time is the iteration's time.
void Compare(benchmark::State& state, const Case* c, int threads) {
  CompileError err;
  CompiledFilter f = CompileFilter({c->code, c->code, c->code, "a"}, &err);
  if (!f.valid()) {
    state.SkipWithError(err.message.c_str());
    return;
  }
  ImageRGBA8 out(kSize, kSize, false), hand(kSize, kSize, false);
  RenderOptions opt;
  opt.threads = threads;
  RenderFilter(f, kCtl, Source().view(), out.view(), opt);
  c->hand(Source(), hand);
  if (out.pixels != hand.pixels) {
    state.SkipWithError("the engine and the hand-written loop give different pictures");
    return;
  }
  // On all cores, a second floor: the hand-written loop on as many threads,
  // each over its own band of rows of the same size of picture. Two cores
  // share the memory bus, so even hand-written code takes more CPU in all
  // for the same work than on one core.
  const unsigned cores = threads == 0 ? std::max(1u, std::thread::hardware_concurrency()) : 1;
  std::vector<ImageRGBA8> bands, bandsOut;
  for (unsigned i = 0; cores > 1 && i < cores; ++i) {
    bands.push_back(NoisePicture(kSize, kSize / int(cores)));
    bandsOut.emplace_back(kSize, kSize / int(cores), false);
  }
  double handAllBest = 1e30;
  auto runHandAllCores = [&] {
    const double c0 = ProcessCpuSeconds();
    std::vector<std::thread> team;
    for (size_t i = 0; i < bands.size(); ++i) team.emplace_back([&, i] { c->hand(bands[i], bandsOut[i]); });
    for (std::thread& t : team) t.join();
    benchmark::DoNotOptimize(bandsOut.front().pixels.data());
    handAllBest = std::min(handAllBest, ProcessCpuSeconds() - c0);
  };
  double engineCpu = 0, handCpu = 0;
  double engineBest = 1e30, handBest = 1e30, engineWallBest = 1e30, handWallBest = 1e30;
  bool engineFirst = true;
  for (auto _ : state) {
    double iteration = 0;
    auto runEngine = [&] {
      const double c0 = ProcessCpuSeconds(), w0 = WallSeconds();
      RenderFilter(f, kCtl, Source().view(), out.view(), opt);
      benchmark::DoNotOptimize(out.pixels.data());
      iteration = ProcessCpuSeconds() - c0;
      engineCpu += iteration;
      engineBest = std::min(engineBest, iteration);
      engineWallBest = std::min(engineWallBest, WallSeconds() - w0);
    };
    auto runHand = [&] {
      const double c0 = ProcessCpuSeconds(), w0 = WallSeconds();
      c->hand(Source(), hand);
      benchmark::DoNotOptimize(hand.pixels.data());
      const double cpu = ProcessCpuSeconds() - c0;
      handCpu += cpu;
      handBest = std::min(handBest, cpu);
      handWallBest = std::min(handWallBest, WallSeconds() - w0);
    };
    if (engineFirst) {
      runEngine();
      runHand();
      if (!bands.empty()) runHandAllCores();
    } else {
      if (!bands.empty()) runHandAllCores();
      runHand();
      runEngine();
    }
    engineFirst = !engineFirst;
    state.SetIterationTime(iteration);
  }
  const double n = double(state.iterations());
  state.counters["hand_ms"] = handCpu / n * 1e3;
  state.counters["ratio"] = engineBest / handBest;
  state.counters["mean_ratio"] = handCpu > 0 ? engineCpu / handCpu : 0;
  state.counters["wall_ratio"] = engineWallBest / handWallBest;
  if (!bands.empty()) state.counters["ratio_hand_all_cores"] = engineBest / handAllBest;
  state.SetItemsProcessed(int64_t(state.iterations()) * kSize * kSize);
}

void Compile(benchmark::State& state) {
  const std::array<std::string, 4> code{
      "scl(i,0,255,ctl(0),ctl(1)) + (r+g+b)/3 - sin(x*4)/2",
      "rad(d+ctl(0),m,z) ? cnv(0,-1,0,-1,5,-1,0,-1,0,1) : mix(r,255-r,ctl(0),255)",
      "put(get(0) > 150 ? 0 : get(0)+50, 0) + src(x-1,y,z)/2+src(x+1,y,z)/2",
      "a == 255 ? val(2, 0, 255) : map(1, c) + rnd(0, 255)"};
  for (auto _ : state) {
    CompiledFilter f = CompileFilter(code, nullptr);
    benchmark::DoNotOptimize(f.valid());
  }
}

int Register() {
  for (const Case& c : Cases()) {
    benchmark::RegisterBenchmark((std::string("Engine1Thread/") + c.name).c_str(), Compare, &c, 1)
        ->Unit(benchmark::kMillisecond)->UseManualTime();
    benchmark::RegisterBenchmark((std::string("EngineAllCores/") + c.name).c_str(), Compare, &c, 0)
        ->Unit(benchmark::kMillisecond)->UseManualTime();
  }
  benchmark::RegisterBenchmark("CompileFourChannels", Compile)->Unit(benchmark::kMicrosecond);
  return 0;
}
const int registered = Register();

}  // namespace

BENCHMARK_MAIN();
