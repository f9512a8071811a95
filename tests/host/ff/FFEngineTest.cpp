#include "host/ff/FFEngine.h"

#include <gtest/gtest.h>

#include <algorithm>
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

std::string Show(const std::array<std::string, 4>& code) {
  return code[0] + " | " + code[1] + " | " + code[2] + " | " + code[3];
}

std::vector<int> Px(const ImageRGBA8& img, int x, int y) {
  const uint8_t* p = img.at(x, y);
  return {p[0], p[1], p[2], p[3]};
}

TEST(FFRender, PublishedWholeFilters) {
  // Cells carry values from channel to channel and from pixel to pixel.
  const std::string f = "put(get(0) > 150 ? 0 : get(0)+50, 0)";
  ImageRGBA8 out = Render({f, f, f, "a"}, ImageRGBA8(5, 2, false));
  const std::vector<int> cycle[5] = {{50, 100, 150, 255}, {200, 0, 50, 255}, {100, 150, 200, 255},
                                     {0, 50, 100, 255}, {150, 200, 0, 255}};
  for (int n = 0; n < 10; ++n) EXPECT_EQ(Px(out, n % 5, n / 5), cycle[n % 5]) << n;

  // Random channels give the published stream in channel order, afresh on every run.
  const std::string rnd = "rnd(0,255)";
  ImageRGBA8 first = Render({rnd, rnd, rnd, "0"}, ImageRGBA8(9, 3, false));
  EXPECT_EQ(Render({rnd, rnd, rnd, "0"}, ImageRGBA8(9, 3, false)).pixels, first.pixels);
  std::vector<int> stream;
  for (size_t k = 0; k < first.pixels.size(); ++k)
    if (k % 4 != 3) stream.push_back(first.pixels[k]);
  EXPECT_EQ(std::vector<int>(stream.begin(), stream.begin() + 16),
            (std::vector<int>{0x0A, 0x23, 0x6A, 0x73, 0x9E, 0x6F, 0x78, 0x5B, 0x86, 0x58, 0x25, 0x91,
                              0x40, 0x75, 0x7D, 0xA4}));
  EXPECT_EQ(std::vector<int>(stream.begin() + 64, stream.begin() + 80),
            (std::vector<int>{0xD6, 0x8F, 0xA8, 0x0A, 0x19, 0xD6, 0x45, 0x2A, 0x7B, 0x2A, 0xA2, 0x2A,
                              0xFC, 0x7D, 0x6E, 0x46}));
}

TEST(FFRender, AlphaRunsOnlyWhenThePictureHasItAndResultsClamp) {
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
  EXPECT_EQ(Px(Render({"a", "Z", "0", "a/2"}, PatternImage(3, 1, true)), 1, 0),
            (std::vector<int>{242, 4, 0, 121}));
  EXPECT_EQ(Px(Render({"-5", "300", "2147483647", "-2147483647-1"}, PatternImage(2, 2, true)), 1, 1),
            (std::vector<int>{0, 255, 255, 0}));
}

TEST(FFRender, SinglePixelAndStridedViews) {
  ImageRGBA8 out = Render({"x+y+X+Y+d+m+M+100", "cnv(1,1,1,1,1,1,1,1,1,9)+src(-9,9,1)",
                           "rad(d,m,z)", "a"}, PatternImage(1, 1, false));
  EXPECT_EQ(Px(out, 0, 0), (std::vector<int>{103, 255, 0, 255}));  // X, Y and m are 1

  // Rows with padding between them, as a wrapped QImage has.
  ImageRGBA8 src = PatternImage(3, 2, false);
  std::vector<uint8_t> padded(2 * 20, 7), target(2 * 20, 7);
  for (size_t y = 0; y < 2; ++y)
    std::copy_n(src.pixels.begin() + ptrdiff_t(y * 12), 12, padded.begin() + ptrdiff_t(y * 20));
  CompiledFilter f = MustCompile({"src(x+1,y,z)", "g", "b", "a"});
  ASSERT_EQ(RenderFilter(f, {}, ConstImageView{padded.data(), 3, 2, 20, false},
                         ImageView{target.data(), 3, 2, 20, false}),
            RenderStatus::Done);
  EXPECT_EQ(target[20 + 0], src.at(1, 1)[0]);
  EXPECT_EQ(target[20 + 8], src.at(2, 1)[0]);
  EXPECT_EQ(target[12], 7);  // padding left alone
}

TEST(FFRender, WritingOverTheSourceReadsTheOriginal) {
  ImageRGBA8 img = PatternImage(6, 5, true);
  const std::array<std::string, 4> code{"src(x-1,y-1,z)", "src(x+1,y,z)", "c", "a"};
  ImageRGBA8 expect = Render(code, img);
  ASSERT_EQ(RenderFilter(MustCompile(code), {}, img.view(), img.view()), RenderStatus::Done);
  EXPECT_EQ(img.pixels, expect.pixels);
}

TEST(FFRender, RefusesWhatItCannotRun) {
  ImageRGBA8 src = PatternImage(4, 4, false), same(4, 4, false), empty, small(3, 4, false);
  small.pixels.assign(small.pixels.size(), 9);
  CompiledFilter good = MustCompile({"r", "g", "b", "a"});
  EXPECT_EQ(RenderFilter(good, {}, src.view(), small.view()), RenderStatus::Invalid);
  EXPECT_EQ(small.pixels, std::vector<uint8_t>(small.pixels.size(), 9));
  EXPECT_EQ(RenderFilter(good, {}, empty.view(), empty.view()), RenderStatus::Invalid);
  EXPECT_EQ(RenderFilter(CompileFilter({"r", "g", "b +", "a"}, nullptr), {}, src.view(), same.view()),
            RenderStatus::Invalid);
}

TEST(FFRender, ReportsProgressAndStopsWhenCancelled) {
  ImageRGBA8 src = PatternImage(50, 200, false), out(50, 200, false);
  for (const char* code : {"255-c", "rnd(0,c)"})
    for (int threads : {1, 2}) {
      SCOPED_TRACE(std::string(code) + " on threads: " + std::to_string(threads));
      CompiledFilter f = MustCompile({code, code, code, "a"});
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
      EXPECT_EQ(RenderFilter(f, {}, src.view(), out.view(), opt), RenderStatus::Cancelled);
    }
  // Cancelled part way, the rows done so far are written and the rest are not.
  ImageRGBA8 part(50, 200, false);
  RenderOptions opt;
  opt.threads = 1;
  int polls = 0;
  opt.cancel = [&] { return ++polls > 3; };
  EXPECT_EQ(RenderFilter(MustCompile({"255", "255", "255", "a"}), {}, src.view(), part.view(), opt),
            RenderStatus::Cancelled);
  EXPECT_EQ(part.at(0, 2)[0], 255);
  EXPECT_EQ(part.at(0, 3)[0], 0);
}

// Rows split among any number of threads, on pictures wider than two blocks
// of pixels with a part block at the end, with and without alpha, equal the
// tree walker: neighbours read as runs of a row across block and picture
// edges, channels that share one formula, and the shapes the machine has fast
// paths for.
TEST(FFRender, RowsOnAnyNumberOfThreadsEqualTheTreeWalker) {
  const std::array<std::string, 4> codes[] = {
      // First those that run in parallel with alpha.
      {"cnv(0,-1,0,-1,5,-1,0,-1,0,1)", "rad(d+ctl(0),m,z)", "scl(i,0,255,ctl(0),ctl(1))",
       "mix(a,255-a,x,X)"},
      {"src(x-1,y,z)/2+src(x+1,y,z)/2", "src(x+299,y-70,0) + src(2+x,y,3)",
       "cnv(1,2,3,4,5,6,7,8,9,ctl(2))", "cnv(0,-1,0,-1,5,-1,0,-1,0,ctl(3))"},
      {"(r+g+b)/3", "(r+g+b)/3", "(r+g+b)/3", "(r+g+b)/3 + x"},
      {"mix(r,255-r,ctl(0),255)", "mix(r,255-r,ctl(0),255)", "c", "mix(r,255-r,ctl(0),255)"},
      {"r", "g", "b", "a"},  // every channel left as it is
      {"c", "c", "c", "c"},
      {"b", "g", "r", "a"},
      {"255 - c", "src(x + 3, y - 2, z) / 2 + c / 2", "(c * ctl(0) + x * y) % 256 ^ ctl(1)", "c"},
      {"sin(d * 4 + m) / 2 + c2d(x - 320, y - 240) + cos(x) / 4", "cnv(1, 2, 1, 2, 4, 2, 1, 2, 1, 16)",
       "cnv(0,-1,0,-1,5,-1,0,-1,0,1)", "cnv(-3,1,7,0,0,-1,2,1,1,-5)"},
      // Powers of two and their neighbours as divisors of negative values.
      {"(x * 37 - 9000) % 256 + 128", "(x * y * 977 - 100000) % 64 + 64", "(500 - x * 3) / 16 + 100",
       "(x - 300) % 1024 / 4 + (x - 300) % 3"},
      // The same where the dividend cannot be negative, and where only one side can.
      {"c % 64 * 4 + src(x - 1, y, z) / 256 * 3 + c * ctl(0) / 1024", "(c - 128) / 4 + 128 + (c - 128) % 8",
       "(c + ctl(1)) / 2 / 2 % 32 * 8", "c / 1 + c % 1 + (c / 2147483647) * 100"},
      // Far off the axes, where the magnitudes need all 32 bits.
      {"c2d(x * 1000003 - 2147483647, y - 3) + 300", "c2m(x * 5000011, y * 40000000 - 1) & 255",
       "c2m(x - 258, (-2147483647 - 1) + y) >> 23", "c2d((-2147483647 - 1) * (x & 1), x - 2) + 600"},
  };
  for (size_t k = 0; k < 4; ++k) ASSERT_TRUE(MustCompile(codes[k]).parallel(true)) << codes[k][0];
  const Controls ctl{37, 200, 7, 0, 0, 0, 0, 0};
  for (bool alpha : {false, true}) {
    const ImageRGBA8 src = PatternImage(517, 61, alpha);
    for (const auto& code : codes) {
      const ImageRGBA8 reference = ReferenceRender(code, ctl, src);
      for (int threads : {1, 2, 3, 8})
        EXPECT_EQ(Render(code, src, ctl, threads).pixels, reference.pixels)
            << Show(code) << ", alpha " << alpha << ", " << threads << " threads";
    }
  }
  EXPECT_FALSE(MustCompile({"r", "g", "b", "rnd(0,1)"}).parallel(true));
  EXPECT_TRUE(MustCompile({"r", "g", "b", "rnd(0,1)"}).parallel(false));
  EXPECT_TRUE(MustCompile({"get(1)", "g", "b", "a"}).parallel(true));
  EXPECT_TRUE(MustCompile({"r", "rst(1)", "b", "a"}).parallel(false));  // rst acts on nothing
}

// Without put, rnd's numbers are drawn ahead for a block of pixels and put
// into their ranges there; the pixels must still get them in the language's
// order, row after row, whatever the ranges.
TEST(FFRender, RandomNumbersDrawnAheadKeepThePixelOrder) {
  const std::array<std::string, 4> codes[] = {
      {"rnd(0,255)", "rnd(0,255)", "rnd(0,255)", "rnd(0,255)"},
      {"rnd(0,c)", "rnd(-5, 300)", "rnd(x, 1000000) % 256", "rnd(7,3) + rnd(0, 2147483647) % 256"},
      {"rnd(0,255) + rnd(0,3)", "c", "rnd(-2147483647-1, 2147483647) & 255", "rnd(0,100) * (x > 300)"},
      {"get(3) + rnd(0,9)", "rst(0) + rnd(0, 65535) >> 8", "x > 250 ? rnd(0,255) : rnd(1,1)", "a"},
  };
  const Controls ctl{};
  for (bool alpha : {false, true}) {
    const ImageRGBA8 src = PatternImage(517, 3, alpha);
    for (const auto& code : codes) {
      ASSERT_FALSE(MustCompile(code).parallel(alpha)) << code[0];
      EXPECT_EQ(Render(code, src, ctl).pixels, ReferenceRender(code, ctl, src).pixels)
          << Show(code) << ", alpha " << alpha;
    }
  }
}

// Parts that several channels have alike are computed once, by the first
// channel; each channel's own values must not change for it, alone or in the
// whole pixel.
TEST(FFRender, PartsSharedBetweenChannelsKeepEveryChannelsValue) {
  const std::array<std::string, 4> codes[] = {
      {"(c * ctl(0) + x * y) % 256 ^ ctl(1)", "(c * ctl(0) + x * y) % 256 ^ ctl(1)",
       "(c * ctl(0) + x * y) % 256 ^ ctl(1)", "x * y % 255"},
      {"x*y+1", "x*y+1", "(x*y+1)*2", "c+x*y"},  // the whole, a part and a part of a part
      {"sin(x)+c", "sin(x)", "sin(x)", "sin(x)+1"},
      {"src(x+1,y,0) + (y ? x : 5)", "(y ? x : 5) - src(x+1,y,0)", "min(src(x+1,y,0), y ? x : 5)",
       "(y ? x : 5) * 0 + src(x+1,y,0)"},
      {"mix(r, g, x, 300) + scl(x, 0, 600, 0, 255)", "scl(x, 0, 600, 0, 255)", "mix(r, g, x, 300)",
       "mix(r, g, x, 300) - scl(x, 0, 600, 0, 255)"},
  };
  const Controls ctl{37, 200, 0, 0, 0, 0, 0, 0};
  const ImageRGBA8 src = PatternImage(300, 3, true);
  for (const auto& code : codes) {
    const CompiledFilter f = MustCompile(code);
    EXPECT_NE(f.program()->channels[1].needs & 1, 0) << code[1] << " reuses nothing from " << code[0];
    for (int z = 0; z < 4; ++z) {
      Ast ast = MustParse(code[z]);
      RunState state;
      PixelEnv env = EnvFor(src, ctl, state);
      env.y = 1;
      env.z = z;
      std::vector<int32_t> tree;
      for (env.x = 0; env.x < src.width; ++env.x) tree.push_back(EvaluateTree(ast, ast.root, env));
      for (bool ordered : {false, true}) {
        Machine machine(*f.program(), src.view(), ctl.data(), nullptr);
        EXPECT_EQ(machine.RawRow(z, 1, ordered), tree) << code[z] << (ordered ? " ordered" : " blocks");
      }
    }
    EXPECT_EQ(Render(code, src, ctl, 1).pixels, ReferenceRender(code, ctl, src).pixels) << code[0];
  }
  // Side effects between the channels could change a shared part: nothing is shared then.
  const CompiledFilter acting = MustCompile({"x*y + put(r, 0)", "x*y", "x*y", "a"});
  for (const ChannelCode& ch : acting.program()->channels) EXPECT_EQ(ch.needs, 0);
}

TEST(FFRender, HugePicturesWithATrivialFormula) {
#if defined(__SANITIZE_ADDRESS__)
  const bool sanitized = true;  // the full square costs a minute there; the strips reach as far
#else
  const bool sanitized = false;
#endif
  CompiledFilter f = MustCompile({"x & 255", "y & 255", "255 - c", "a"});
  for (const auto& [w, h] : {std::pair{10000, 3}, {3, 10000}, {10000, 10000}}) {
    if (sanitized && w == h) continue;
    ImageRGBA8 src(w, h, false), out(w, h, false);
    ASSERT_EQ(RenderFilter(f, {}, src.view(), out.view()), RenderStatus::Done);
    EXPECT_EQ(Px(out, w - 1, h - 1), (std::vector<int>{(w - 1) & 255, (h - 1) & 255, 255, 255}));
    EXPECT_EQ(out.at(w / 2, h / 3)[0], (w / 2) & 255);
  }
}

// Random formulas over the whole language: the renderer must reproduce the
// tree walker exactly, whatever the compiler folded, reused or reordered.
std::string RandomFormula(std::mt19937& gen, bool effects, int depth) {
  static const std::vector<std::string> unary{"-", "!", "~", "+"},
      binary{"*", "/", "%", "+", "-", "<<", ">>", "<", "<=", ">", ">=", "==", "!=", "&", "^", "|",
             "&&", "||"},
      leaves{"x", "y", "X", "Y", "z", "Z", "r", "g", "b", "a", "c", "i", "u", "v", "d", "m", "M",
             "D", "R", "0", "1", "2", "3", "7", "31", "32", "255", "256", "1024", "2147483647",
             "(-2147483647-1)", "(-1)", "0x7FFF"};
  static const std::vector<std::pair<std::string, int>> calls{  // the last three have effects
      {"src", 3}, {"rad", 3}, {"cnv", 10}, {"ctl", 1}, {"val", 3}, {"map", 2}, {"min", 2},
      {"max", 2}, {"abs", 1}, {"add", 3}, {"sub", 3}, {"dif", 2}, {"mix", 4}, {"scl", 5},
      {"sqr", 1}, {"sin", 1}, {"cos", 1}, {"tan", 1}, {"r2x", 2}, {"r2y", 2}, {"c2d", 2},
      {"c2m", 2}, {"get", 1}, {"rnd", 2}, {"rst", 1}, {"put", 2}};
  auto pick = [&](size_t n) { return size_t(gen() % n); };
  auto sub = [&](int d) { return RandomFormula(gen, effects, d); };
  if (depth <= 0 || pick(10) < 3) return leaves[pick(leaves.size())];
  switch (pick(6)) {
    case 0: return unary[pick(unary.size())] + "(" + sub(depth - 1) + ")";
    case 1:
    case 2: return "(" + sub(depth - 1) + " " + binary[pick(binary.size())] + " " + sub(depth - 1) + ")";
    case 3: return "(" + sub(depth - 1) + " ? " + sub(depth - 1) + " : " + sub(depth - 1) + ")";
    case 4: return "(" + sub(depth - 1) + ", " + sub(depth - 1) + ")";
  }
  const auto& [name, arity] = calls[pick(calls.size() - (effects ? 0 : 3))];
  std::string s = name + "(";
  for (int k = 0; k < arity; ++k) s += (k ? "," : "") + sub(arity > 3 ? depth - 2 : depth - 1);
  return s + ")";
}

TEST(FFRender, RandomFormulasMatchTheTreeWalker) {
  ImageRGBA8 pictures[2] = {PatternImage(9, 5, true), PatternImage(7, 4, false)};
  std::mt19937 gen(77);
  for (int round = 0; round < 400; ++round) {
    std::mt19937 formulas(uint32_t(round) * 7919u + 1);
    std::array<std::string, 4> code;
    for (std::string& c : code) c = RandomFormula(formulas, round % 2 == 1, 4);
    Controls ctl;
    for (int32_t& v : ctl) v = int32_t(gen() % 256);
    const ImageRGBA8& src = pictures[round % 4 < 2 ? 0 : 1];
    ASSERT_EQ(Render(code, src, ctl).pixels, ReferenceRender(code, ctl, src).pixels)
        << Show(code);
  }
}

}  // namespace
}  // namespace trel::ff::test
