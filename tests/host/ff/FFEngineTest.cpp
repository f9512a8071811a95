#include "host/ff/FFEngine.h"

#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <string>
#include <vector>

#include "FFTestSupport.h"
#include "host/ff/FFProgram.h"

namespace trel::ff::test {
namespace {

ImageRGBA8 Render(const std::array<std::string, 4>& code, const ImageRGBA8& src,
                  const Controls& ctl = {}, int threads = 0) {
  CompiledFilter f = MustCompile(code);
  ImageRGBA8 out(src.width, src.height, src.hasAlpha);
  RenderOptions opt;
  opt.threads = threads;
  EXPECT_EQ(RenderFilter(f, ctl, src.view(), out.view(), opt), RenderStatus::Done);
  return out;
}

std::vector<int> Bytes(const ImageRGBA8& img, int channels) {
  std::vector<int> v;
  for (int y = 0; y < img.height; ++y)
    for (int x = 0; x < img.width; ++x)
      for (int z = 0; z < channels; ++z) v.push_back(img.at(x, y)[z]);
  return v;
}

TEST(FFRender, CellsCarryValuesFromChannelToChannel) {
  const std::string f = "put(get(0) > 150 ? 0 : get(0)+50, 0)";
  ImageRGBA8 out = Render({f, f, f, "a"}, ImageRGBA8(5, 2, false));
  const int cycle[5][3] = {{50, 100, 150}, {200, 0, 50}, {100, 150, 200}, {0, 50, 100}, {150, 200, 0}};
  for (int n = 0; n < 10; ++n) {
    const uint8_t* p = out.at(n % 5, n / 5);
    EXPECT_EQ(p[0], cycle[n % 5][0]) << n;
    EXPECT_EQ(p[1], cycle[n % 5][1]) << n;
    EXPECT_EQ(p[2], cycle[n % 5][2]) << n;
    EXPECT_EQ(p[3], 255);
  }
}

TEST(FFRender, RandomChannelsGiveThePublishedStreamInChannelOrder) {
  const std::string f = "rnd(0,255)";
  ImageRGBA8 out = Render({f, f, f, "0"}, ImageRGBA8(9, 3, false));
  std::vector<int> stream = Bytes(out, 3);
  std::vector<int> first(stream.begin(), stream.begin() + 16);
  std::vector<int> later(stream.begin() + 64, stream.begin() + 80);
  EXPECT_EQ(first, (std::vector<int>{0x0A, 0x23, 0x6A, 0x73, 0x9E, 0x6F, 0x78, 0x5B, 0x86, 0x58,
                                     0x25, 0x91, 0x40, 0x75, 0x7D, 0xA4}));
  EXPECT_EQ(later, (std::vector<int>{0xD6, 0x8F, 0xA8, 0x0A, 0x19, 0xD6, 0x45, 0x2A, 0x7B, 0x2A,
                                     0xA2, 0x2A, 0xFC, 0x7D, 0x6E, 0x46}));
  // Every run starts afresh.
  EXPECT_EQ(Bytes(Render({f, f, f, "0"}, ImageRGBA8(9, 3, false)), 3), stream);
}

TEST(FFRender, UntakenBranchStillStores) {
  ImageRGBA8 out = Render({"1==0 ? put(255,0) : 0", "get(0)", "0", "a"}, PatternImage(4, 3, false));
  for (int y = 0; y < 3; ++y)
    for (int x = 0; x < 4; ++x) {
      EXPECT_EQ(out.at(x, y)[0], 0);
      EXPECT_EQ(out.at(x, y)[1], 255);
      EXPECT_EQ(out.at(x, y)[2], 0);
    }
}

TEST(FFRender, AlphaChannelRunsOnlyWhenThePictureHasAlpha) {
  // The A expression stores into the cell that R of the next pixel reads.
  const std::array<std::string, 4> code{"get(0)", "g", "b", "put(99,0) + 1000"};
  ImageRGBA8 opaque = Render(code, PatternImage(3, 2, false));
  ImageRGBA8 clear = Render(code, PatternImage(3, 2, true));
  for (int n = 0; n < 6; ++n) {
    EXPECT_EQ(opaque.at(n % 3, n / 3)[0], 0);
    EXPECT_EQ(opaque.at(n % 3, n / 3)[3], 255);
    EXPECT_EQ(clear.at(n % 3, n / 3)[0], n == 0 ? 0 : 99);
    EXPECT_EQ(clear.at(n % 3, n / 3)[3], 255);  // 1099 clamps
  }
  ImageRGBA8 a = Render({"a", "Z", "0", "a/2"}, PatternImage(3, 1, true));
  EXPECT_EQ(a.at(1, 0)[0], 242);
  EXPECT_EQ(a.at(1, 0)[1], 4);
  EXPECT_EQ(a.at(1, 0)[3], 121);
}

TEST(FFRender, ResultsClampToBytes) {
  ImageRGBA8 out = Render({"-5", "300", "2147483647", "-2147483647-1"}, PatternImage(2, 2, true));
  EXPECT_EQ(out.at(1, 1)[0], 0);
  EXPECT_EQ(out.at(1, 1)[1], 255);
  EXPECT_EQ(out.at(1, 1)[2], 255);
  EXPECT_EQ(out.at(1, 1)[3], 0);
}

TEST(FFRender, SinglePixelAndStridedViews) {
  ImageRGBA8 one = PatternImage(1, 1, false);
  ImageRGBA8 out = Render({"x+y+X+Y+d+m+M+100", "cnv(1,1,1,1,1,1,1,1,1,9)+src(-9,9,1)",
                           "rad(d,m,z)", "a"},
                         one);
  EXPECT_EQ(out.at(0, 0)[0], 103);  // X, Y and m are 1
  EXPECT_EQ(out.at(0, 0)[1], 255);
  EXPECT_EQ(out.at(0, 0)[2], 0);

  // Rows with padding between them, as a wrapped QImage has.
  ImageRGBA8 src = PatternImage(3, 2, false);
  std::vector<uint8_t> padded(2 * 20, 7), target(2 * 20, 7);
  for (int y = 0; y < 2; ++y)
    for (int k = 0; k < 12; ++k) padded[size_t(y) * 20 + size_t(k)] = src.pixels[size_t(y) * 12 + size_t(k)];
  CompiledFilter f = MustCompile({"src(x+1,y,z)", "g", "b", "a"});
  ConstImageView sv{padded.data(), 3, 2, 20, false};
  ImageView dv{target.data(), 3, 2, 20, false};
  ASSERT_EQ(RenderFilter(f, {}, sv, dv), RenderStatus::Done);
  EXPECT_EQ(target[20 + 0], src.at(1, 1)[0]);
  EXPECT_EQ(target[20 + 8], src.at(2, 1)[0]);
  EXPECT_EQ(target[12], 7);  // padding left alone
}

TEST(FFRender, WritingOverTheSourceReadsTheOriginal) {
  ImageRGBA8 img = PatternImage(6, 5, true);
  ImageRGBA8 expect = Render({"src(x-1,y-1,z)", "src(x+1,y,z)", "c", "a"}, img);
  CompiledFilter f = MustCompile({"src(x-1,y-1,z)", "src(x+1,y,z)", "c", "a"});
  ASSERT_EQ(RenderFilter(f, {}, img.view(), img.view()), RenderStatus::Done);
  EXPECT_EQ(img.pixels, expect.pixels);
}

TEST(FFRender, RefusesWhatItCannotRun) {
  ImageRGBA8 src = PatternImage(4, 4, false);
  ImageRGBA8 small(3, 4, false);
  small.pixels.assign(small.pixels.size(), 9);
  CompiledFilter good = MustCompile({"r", "g", "b", "a"});
  EXPECT_EQ(RenderFilter(good, {}, src.view(), small.view()), RenderStatus::Invalid);
  EXPECT_EQ(small.pixels, std::vector<uint8_t>(small.pixels.size(), 9));
  CompileError err;
  CompiledFilter bad = CompileFilter({"r", "g", "b +", "a"}, &err);
  EXPECT_FALSE(bad.valid());
  EXPECT_EQ(err.channel, 2);
  EXPECT_EQ(err.position, 3u);
  ImageRGBA8 same(4, 4, false);
  EXPECT_EQ(RenderFilter(bad, {}, src.view(), same.view()), RenderStatus::Invalid);
  ImageRGBA8 empty;
  EXPECT_EQ(RenderFilter(good, {}, empty.view(), empty.view()), RenderStatus::Invalid);
}

TEST(FFRender, ReportsProgressAndStopsWhenCancelled) {
  ImageRGBA8 src = PatternImage(50, 200, false);
  for (const char* code : {"255-c", "rnd(0,c)"}) {
    for (int threads : {1, 2}) {
      CompiledFilter f = MustCompile({code, code, code, "a"});
      ImageRGBA8 out(50, 200, false);
      RenderOptions opt;
      opt.threads = threads;
      int last = 0, calls = 0;
      opt.progress = [&](int done, int total) {
        EXPECT_EQ(total, 200);
        EXPECT_GT(done, last);
        last = done;
        ++calls;
      };
      EXPECT_EQ(RenderFilter(f, {}, src.view(), out.view(), opt), RenderStatus::Done);
      EXPECT_EQ(last, 200);
      // Row by row the count is exact; with workers it depends on scheduling.
      if (threads == 1 || !f.parallel(false)) {
        EXPECT_EQ(calls, 200);
      }

      opt.progress = nullptr;
      opt.cancel = [] { return true; };
      EXPECT_EQ(RenderFilter(f, {}, src.view(), out.view(), opt), RenderStatus::Cancelled) << code;
    }
  }
  // Cancelled part way, the rows done so far are written and the rest are not.
  CompiledFilter f = MustCompile({"255", "255", "255", "a"});
  ImageRGBA8 out(50, 200, false);
  RenderOptions opt;
  opt.threads = 1;
  int polls = 0;
  opt.cancel = [&] { return ++polls > 3; };
  EXPECT_EQ(RenderFilter(f, {}, src.view(), out.view(), opt), RenderStatus::Cancelled);
  EXPECT_EQ(out.at(0, 2)[0], 255);
  EXPECT_EQ(out.at(0, 3)[0], 0);
}

TEST(FFRender, ParallelRowsEqualTheSequentialOrder) {
  ImageRGBA8 src = PatternImage(300, 61, true);  // wider than one block of pixels
  const std::array<std::string, 4> code{"cnv(0,-1,0,-1,5,-1,0,-1,0,1)", "rad(d+ctl(0),m,z)",
                                        "scl(i,0,255,ctl(0),ctl(1))", "mix(a,255-a,x,X)"};
  CompiledFilter f = MustCompile(code);
  ASSERT_TRUE(f.parallel(true));
  const Controls ctl{30, 200, 0, 0, 0, 0, 0, 0};
  ImageRGBA8 reference = ReferenceRender(code, ctl, src);
  for (int threads : {1, 2, 3, 8}) EXPECT_EQ(Render(code, src, ctl, threads).pixels, reference.pixels) << threads;
  // Neighbours read as runs of a row, across block and picture edges, and
  // channels that share one formula.
  const std::array<std::string, 4> more[] = {
      {"src(x-1,y,z)/2+src(x+1,y,z)/2", "src(x+299,y-70,0) + src(2+x,y,3)",
       "cnv(1,2,3,4,5,6,7,8,9,ctl(2))", "cnv(0,-1,0,-1,5,-1,0,-1,0,ctl(3))"},
      {"(r+g+b)/3", "(r+g+b)/3", "(r+g+b)/3", "(r+g+b)/3 + x"},
      {"mix(r,255-r,ctl(0),255)", "mix(r,255-r,ctl(0),255)", "c", "mix(r,255-r,ctl(0),255)"},
  };
  const Controls ctl2{30, 200, 7, 0, 0, 0, 0, 0};
  for (const auto& m : more) {
    ImageRGBA8 ref = ReferenceRender(m, ctl2, src);
    for (int threads : {1, 2}) EXPECT_EQ(Render(m, src, ctl2, threads).pixels, ref.pixels) << m[0];
  }
  EXPECT_FALSE(MustCompile({"r", "g", "b", "rnd(0,1)"}).parallel(true));
  EXPECT_TRUE(MustCompile({"r", "g", "b", "rnd(0,1)"}).parallel(false));
  EXPECT_TRUE(MustCompile({"get(1)", "g", "b", "a"}).parallel(true));
  EXPECT_FALSE(MustCompile({"r", "rst(1)", "b", "a"}).parallel(false));
}

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kSanitized = true;
#else
constexpr bool kSanitized = false;
#endif

TEST(FFRender, HugePicturesWithATrivialFormula) {
  CompiledFilter f = MustCompile({"x & 255", "y & 255", "255 - c", "a"});
  // The full square costs a minute under the sanitizers; the long strips
  // reach the same coordinates there.
  const std::pair<int, int> sizes[] = {{10000, 3}, {3, 10000}, {10000, 10000}};
  for (const auto& [w, h] : sizes) {
    if (kSanitized && w == h) continue;
    ImageRGBA8 src(w, h, false);
    ImageRGBA8 out(w, h, false);
    ASSERT_EQ(RenderFilter(f, {}, src.view(), out.view()), RenderStatus::Done);
    EXPECT_EQ(out.at(w - 1, h - 1)[0], (w - 1) & 255);
    EXPECT_EQ(out.at(w - 1, h - 1)[1], (h - 1) & 255);
    EXPECT_EQ(out.at(w - 1, h - 1)[2], 255);
    EXPECT_EQ(out.at(w - 1, h - 1)[3], 255);
    EXPECT_EQ(out.at(w / 2, h / 3)[0], (w / 2) & 255);
  }
}

// Random formulas over the whole language: the renderer must reproduce the
// tree walker exactly, whatever the compiler folded, reused or reordered.
class FormulaMaker {
 public:
  FormulaMaker(uint32_t seed, bool effects) : gen_(seed), effects_(effects) {}

  std::string Make(int depth) {
    if (depth <= 0 || Pick(10) < 3) return Leaf();
    switch (Pick(6)) {
      case 0: return std::string(Choose({"-", "!", "~", "+"})) + "(" + Make(depth - 1) + ")";
      case 1:
      case 2:
        return "(" + Make(depth - 1) + " " +
               Choose({"*", "/", "%", "+", "-", "<<", ">>", "<", "<=", ">", ">=", "==", "!=", "&",
                       "^", "|", "&&", "||"}) +
               " " + Make(depth - 1) + ")";
      case 3: return "(" + Make(depth - 1) + " ? " + Make(depth - 1) + " : " + Make(depth - 1) + ")";
      case 4: return "(" + Make(depth - 1) + ", " + Make(depth - 1) + ")";
      default: return Call(depth - 1);
    }
  }

 private:
  int Pick(int n) { return int(gen_() % uint32_t(n)); }
  const char* Choose(std::initializer_list<const char*> list) {
    return list.begin()[Pick(int(list.size()))];
  }
  std::string Leaf() {
    if (Pick(2) == 0)
      return Choose({"x", "y", "X", "Y", "z", "Z", "r", "g", "b", "a", "c", "i", "u", "v", "d", "m",
                     "M", "D", "R"});
    return Choose({"0", "1", "2", "3", "7", "31", "32", "255", "256", "1024", "2147483647",
                   "(-2147483647-1)", "(-1)", "0x7FFF"});
  }
  std::string Call(int depth) {
    struct F {
      const char* name;
      int arity;
      bool effect;
    };
    static const F fns[] = {
        {"src", 3, false}, {"rad", 3, false}, {"cnv", 10, false}, {"ctl", 1, false},
        {"val", 3, false}, {"map", 2, false}, {"min", 2, false},  {"max", 2, false},
        {"abs", 1, false}, {"add", 3, false}, {"sub", 3, false},  {"dif", 2, false},
        {"mix", 4, false}, {"scl", 5, false}, {"sqr", 1, false},  {"sin", 1, false},
        {"cos", 1, false}, {"tan", 1, false}, {"r2x", 2, false},  {"r2y", 2, false},
        {"c2d", 2, false}, {"c2m", 2, false}, {"get", 1, false},  {"rnd", 2, true},
        {"rst", 1, true},  {"put", 2, true},
    };
    const int count = effects_ ? 26 : 23;
    const F& f = fns[Pick(count)];
    std::string s = std::string(f.name) + "(";
    for (int k = 0; k < f.arity; ++k) s += (k ? "," : "") + Make(f.arity > 3 ? depth - 1 : depth);
    return s + ")";
  }

  std::mt19937 gen_;
  bool effects_;
};

TEST(FFRender, RandomFormulasMatchTheTreeWalker) {
  ImageRGBA8 pictures[2] = {PatternImage(9, 5, true), PatternImage(7, 4, false)};
  std::mt19937 gen(77);
  for (int round = 0; round < 400; ++round) {
    const bool effects = round % 2 == 1;
    FormulaMaker maker(uint32_t(round) * 7919u + 1, effects);
    std::array<std::string, 4> code;
    for (std::string& c : code) c = maker.Make(4);
    Controls ctl;
    for (int32_t& v : ctl) v = int32_t(gen() % 256);
    const ImageRGBA8& src = pictures[round % 4 < 2 ? 0 : 1];
    ImageRGBA8 reference = ReferenceRender(code, ctl, src);
    ImageRGBA8 got = Render(code, src, ctl);
    ASSERT_EQ(got.pixels, reference.pixels) << code[0] << "\n" << code[1] << "\n" << code[2]
                                            << "\n" << code[3];
  }
}

TEST(FFCompile, FoldsConstantsAndSharesThem) {
  CompiledFilter f = MustCompile({"(1+2)*3 + r", "9 + g", "sin(0) + cos(0)", "1 ? a : put(1,2)"});
  const Program& p = *f.program();
  EXPECT_EQ(p.channels[0].code.size(), 1u);  // one addition of 9 to r
  EXPECT_EQ(p.channels[1].code.size(), 1u);
  EXPECT_EQ(p.channels[2].code.size(), 0u);  // a constant, 508
  EXPECT_FALSE(p.channels[2].sideEffects);
  EXPECT_TRUE(p.channels[3].sideEffects);  // the untaken put still runs
  EXPECT_EQ(p.channels[3].code.size(), 2u);
  int nines = 0;
  for (const auto& [reg, value] : p.constants) nines += value == 9;
  EXPECT_EQ(nines, 1);
}

}  // namespace
}  // namespace trel::ff::test
