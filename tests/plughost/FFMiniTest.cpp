// The interpreter of the small 32-bit templates gives exactly the engine's
// pixels for every filter and refuses exactly what the engine refuses.
#include "FFMini.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "../host/ff/FFTestSupport.h"
#include "filter/Dispatch.h"
#include "filter/FFL.h"
#include "host/ff/FFEngine.h"
#include "host/ff/FFMath.h"

namespace trel {
namespace {

using Code = std::array<std::string, 4>;
using ff::ImageRGBA8;

// Values that cover 0..255 without a pattern a formula could line up with.
ImageRGBA8 Picture(int w, int h, bool alpha, uint32_t seed = 1) {
  ImageRGBA8 img(w, h, alpha);
  std::minstd_rand gen(seed);
  for (auto& b : img.pixels) b = uint8_t(gen() >> 8);
  if (!alpha)
    for (size_t i = 3; i < img.pixels.size(); i += 4) img.pixels[i] = 255;
  return img;
}

// The engine on the code as the plugin sees it: at most a field's 1024 bytes.
std::optional<ImageRGBA8> Engine(Code code, const ff::Controls& ctl, const ImageRGBA8& src) {
  for (std::string& text : code) text = text.substr(0, kFFMiniCodeSize);
  return ff::test::EngineRender(code, ctl, src);
}
using ff::test::MiniRender;

// Both on several pictures (with and without alpha, odd sizes, one pixel)
// and two sets of controls; a filter the engine refuses must be refused too.
void ExpectSame(const Code& code, const std::string& label) {
  const ImageRGBA8 pictures[] = {Picture(37, 23, false, 1), Picture(37, 23, true, 2), Picture(1, 1, true, 3),
                                 Picture(5, 64, false, 4)};
  const ff::Controls controls[] = {{0, 10, 20, 30, 40, 50, 60, 70}, {255, 3, 128, 128, 0, 255, 77, 1}};
  for (const ImageRGBA8& pic : pictures)
    for (const ff::Controls& ctl : controls) {
      const auto engine = Engine(code, ctl, pic), mini = MiniRender(code, ctl, pic);
      ASSERT_EQ(engine.has_value(), mini.has_value()) << label << ": only one of them accepts it";
      if (!engine) return;
      ASSERT_EQ(engine->pixels, mini->pixels)
          << label << " on " << pic.width << "x" << pic.height << (pic.hasAlpha ? " with alpha" : "");
    }
}

void ExpectSameEverywhere(const std::string& expr) {
  ExpectSame({expr, expr, expr, expr}, expr);
  ExpectSame({"r", expr, "b", "a"}, "G only: " + expr);
}

TEST(FFMini, TablesAreTheEngines) {
  const FFMiniTables* mini = FFMiniGetTables();
  const ff::Tables& engine = ff::GetTables();
  for (int k = 0; k < 1024; ++k) {
    ASSERT_EQ(mini->cosT[k], engine.cosT[k]) << "cosine " << k;
    ASSERT_EQ(mini->atanT[k], engine.atanT[k]) << "arctangent " << k;
    ASSERT_EQ(mini->magT[k], engine.magT[k]) << "magnitude " << k;
  }
}

TEST(FFMini, SampleFiltersGiveTheEnginesPixels) {
  namespace fs = std::filesystem;
  std::vector<FFFilter> filters;
  FilterEnv env;
  for (const auto& entry : fs::directory_iterator(TREL_SAMPLES_DIR)) {
    const std::string path = entry.path().string();
    if (entry.path().extension() == ".ffl") {
      auto in = FFLTextReader::Open(path);
      ASSERT_TRUE(in) << path;
      std::string line, problem;
      ASSERT_TRUE(in->ReadLine(line) && in->ReadLine(line)) << path;  // magic and count
      FFFilter f;
      while (ReadFFLEntry(f, *in, problem) == FFLRead::Entry) filters.push_back(f);
      EXPECT_TRUE(problem.empty()) << problem;
    } else {
      FFFilter f;
      ASSERT_TRUE(ReadFFfile(f, path, env)) << path;
      filters.push_back(f);
    }
  }
  ASSERT_GE(filters.size(), 6u);
  for (const FFFilter& f : filters) ExpectSame({f.codeR, f.codeG, f.codeB, f.codeA}, f.title);
}

TEST(FFMini, TrickyExpressionsGiveTheEnginesPixels) {
  const char* rows[] = {
      // arithmetic at its edges
      "c / 0 + c % 0 + 7 / (x - x)", "2147483647 + c", "-2147483647 - 1 - c", "(0x7fffffff + 1) / -1 + c",
      "(-2147483647 - 1) % -1 + c", "c * 16777216 * 255", "x * -7 % 5 + y / -3", "c << 33 >> x",
      "-c >> 3", "c >> -1", "~c & 255 ^ x | y",
      // comparisons, logic without short circuit, choices and sequences
      "c > 128 && x < 10 || !y", "x == y ? 255 : x != 3 ? c : 0", "(put(c, 1), get(1)) + (0 ? put(9, 1) : 0)",
      "x ? (c, 255) : (put(x, 2), get(2))", "0 && put(50, 3), get(3) + c",
      // the picture: symbols, clamped reads, channels it does not have
      "src(x - 5, y + 300, z)", "src(x, y, 3) + src(x, y, -1) + src(x, y, 4)", "src(-2147483647 - 1, 2147483647, 1)",
      "a", "c + z * 20 - Z", "i + u + v", "(i - u) * v / 16", "d", "m / 2", "M - m + d", "X * Y - x * y",
      "rad(d + 10, m, z)", "rad(x * 4, y, 3)", "cnv(1, 2, 1, 2, 4, 2, 1, 2, 1, 16)", "cnv(x, -1, y, 0, 1, 0, 1, -1, 1, z)",
      "cnv(0, 0, 0, 0, 0, 0, 0, 0, 0, 0) + c",
      // the functions
      "sin(x * 8) / 2 + cos(y * 8) / 2 + 128", "tan(x * 16 + y) / 4", "tan(256) + tan(-256) + tan(768)",
      "sin(-2147483647 - 1) + cos(2147483647)", "r2x(d, m) + r2y(x * 5, y)", "r2x(2147483647, 2147483647)",
      "c2d(x - 18, y - 11) + c2m(x - 18, y - 11)", "c2d(-2147483647 - 1, 5) + c2m(-2147483647 - 1, -2147483647 - 1)",
      "c2d(0, 0) + c2m(0, 0) + c2d(7, 7) + c2m(-3, 3)", "sqr(c * 1000) + sqrt(-5) + sqr(2147483647) / 256",
      "rnd(0, c) + rnd(x, y) + rnd(5, 1)", "rst(x * y) + rnd(0, 255)", "rnd(-2147483647 - 1, 2147483647) & 255",
      "ctl(x % 9) + ctl(-1) + val(y % 9, 0, 100) + val(2, 255, -255)", "map(0, c) + map(1, c) + map(3, x) + map(4, c)",
      "map(2, c) + map(x % 4, 300) + map(1, -5)", "min(c, x * 9) + max(-c, y) + abs(-c) + dif(x, y)",
      "add(c, x, 200) + sub(c, y, 10)", "mix(r, g, x, 36) + mix(c, b, 5, 0)", "scl(c, 0, 255, 255, 0) + scl(c, 5, 5, 0, 9)",
      "scl(x, 0, X, ctl(0), ctl(1))",
      // aliases and named constants
      "r0 + g1 - b0 + a1 + c0 * 0 + i1 - u0 + v1 + d0 * 0 + m1 * 0", "R + G - B + A - C + I - U + V + D - dmax",
      "rmin + xmin + tmin + rmax - total + tmax + t + xmax - ymax + zmax - pmax + mmax - mmax + p",
      "src0(x, y, z) + src1(x, y, z) + rad0(0, 0, z) + rad1(x, y, z) + cnv0(0,0,0,0,1,0,0,0,0,1) + "
      "cnv1(0,0,0,0,1,0,0,0,0,1)",
      // text the lexer must take apart like the engine
      "0x1F + 0XaB + 010 // a comment\n + x", "c//\n", "\tc\r\n+\n1", "((((c))))", "- - -c", "+ + c", "!!c * 255",
  };
  for (const char* row : rows) ExpectSameEverywhere(row);
}

TEST(FFMini, SideEffectsRunInPixelThenChannelOrder) {
  ExpectSame({"put(get(0) + 1, 0) % 256", "get(0) * 3", "put(c, 5) + get(6)", "put(b, 6), get(5) + get(0)"},
             "cells across channels");
  ExpectSame({"rnd(0, 255)", "rnd(0, 255)", "rst(x) + rnd(0, 255)", "rnd(0, 10)"}, "random across channels");
  ExpectSame({"c", "c", "c", "put(a, 0) + get(0)"}, "alpha channel");
}

TEST(FFMini, RefusesWhatTheEngineRefuses) {
  const std::string deep = std::string(255, '(') + "c" + std::string(255, ')');
  const std::string tooDeep = std::string(256, '(') + "c" + std::string(256, ')');
  const std::string unary = std::string(255, '-') + "c", tooUnary = std::string(256, '-') + "c";
  // The tallest trees a field can hold: unary operators on a left chain.
  std::string tall = std::string(255, '-') + "(c";
  while (tall.size() < 1021) tall += "+1";
  tall += ")";
  std::string cut = "c";  // the field ends in the middle of a "+1"
  while (cut.size() < 1200) cut += "+1";
  const std::string rows[] = {
      "", "   ", "// only a comment", "c +", "(c", "c)", "c ? 1", "c ? 1 : ", "c = 1", "c === 1", "12abc", "0x", "0xg",
      "2147483647", "2147483648", "0x7fffffff", "0x80000000", "99999999999999999999", "foo", "foo(1)", "c(1)",
      "src", "src(1, 2)", "src(1, 2, 3, 4)", "cnv(1,2,3,4,5,6,7,8,9)", "cnv(1,2,3,4,5,6,7,8,9,10,11)", "rnd()",
      "min(,1)", "min(1,)", "sin(1) sin(2)", "c $ 1", "c @", "'c'", "\x80" "c", "c\x01", "a_b", "_x", "r2", "x1",
      "1 ? 2 : 3 ? 4 : 5", "1 ? 2, 3 : 4", "(1, 2), 3", deep, tooDeep, unary, tooUnary, tall, cut,
  };
  for (const std::string& row : rows) ExpectSame({row, "g", "b", "a"}, "R: " + row.substr(0, 40));
  ExpectSame({"r", "g", "b", "a +"}, "a faulty alpha fails even without alpha");
}

TEST(FFMini, RandomTextIsAcceptedAndRunLikeTheEngine) {
  // Token soup: most of it is refused, some runs; either way both agree.
  const char* pieces[] = {"c", "x", "y", "z", "r", "a", "i", "d", "m", "M", "X", "0", "1", "255", "0x10", "-",
                          "+", "*", "/", "%", "<<", ">>", "<", ">=", "==", "!=", "&", "^", "|", "&&", "||",
                          "!", "~", "?", ":", ",", "(", ")", "src(", "rnd(", "get(", "put(", "sin(", "c2d(",
                          "cnv(", "map(", "ctl(", "mix(", " ", "//", "\n"};
  std::mt19937 gen(7);
  int accepted = 0;
  for (int n = 0; n < 1500; ++n) {
    std::string text;
    const int len = 1 + int(gen() % 14);
    for (int k = 0; k < len; ++k) text += pieces[gen() % std::size(pieces)];
    const ImageRGBA8 pic = Picture(6, 5, n % 2 == 0, uint32_t(n));
    const Code code{text, text, "b", "a"};
    const auto engine = Engine(code, {1, 2, 3, 4, 5, 6, 7, 8}, pic), mini = MiniRender(code, {1, 2, 3, 4, 5, 6, 7, 8}, pic);
    ASSERT_EQ(engine.has_value(), mini.has_value()) << text;
    if (engine) {
      ++accepted;
      ASSERT_EQ(engine->pixels, mini->pixels) << text;
    }
  }
  EXPECT_GT(accepted, 40);
}

TEST(FFMini, TheCallsItselfCheckFieldsPicturesAndCancel) {
  auto m = std::make_unique<FFMini>();
  const ff::Controls ctl{};
  // A field of 1024 bytes with no 0: what lies behind it must not be read.
  std::vector<char> memory(2048, '1');
  std::memset(memory.data(), ' ', 1024);
  std::memcpy(memory.data() + 1020, "c+2", 3);  // then the field's last byte, a space
  const char* full[4] = {memory.data(), "c", "c", "a"};
  ASSERT_EQ(FFMiniCompile(m.get(), full), 1);
  // Three bytes a pixel, rows padded: the layout a host hands in.
  std::vector<uint8_t> in(4 * 16, 7), out(4 * 16, 0);
  const FFMiniPicture from{in.data(), 5, 4, 16, 3}, to{out.data(), 5, 4, 16, 3};
  ASSERT_EQ(FFMiniRender(m.get(), ctl.data(), &from, 0, &to, nullptr, nullptr), kFFMiniDone);
  EXPECT_EQ(out[0], 9);
  EXPECT_EQ(out[14], 7);  // last pixel's blue
  EXPECT_EQ(out[15], 0);  // the padding is left alone
  EXPECT_EQ(FFMiniRender(m.get(), ctl.data(), &from, 1, &to, nullptr, nullptr), kFFMiniInvalid);  // 3 < 4 planes
  const FFMiniPicture narrow{out.data(), 4, 4, 16, 3};
  EXPECT_EQ(FFMiniRender(m.get(), ctl.data(), &from, 0, &narrow, nullptr, nullptr), kFFMiniInvalid);
  int polls = 0;
  const auto cancel = [](void* context) { return ++*static_cast<int*>(context) == 3 ? 1 : 0; };
  std::fill(out.begin(), out.end(), 0);
  EXPECT_EQ(FFMiniRender(m.get(), ctl.data(), &from, 0, &to, cancel, &polls), kFFMiniCancelled);
  EXPECT_EQ(out[16], 9);  // two rows were done
  EXPECT_EQ(out[32], 0);

  // A fault: its channel and position are told, and nothing runs.
  const char* bad[4] = {"r", "g", "b + $", "a"};
  EXPECT_EQ(FFMiniCompile(m.get(), bad), 0);
  EXPECT_EQ(m->errorChannel, 2);
  EXPECT_EQ(m->errorPosition, 4);
  EXPECT_EQ(FFMiniRender(m.get(), ctl.data(), &from, 0, &to, nullptr, nullptr), kFFMiniInvalid);
}

}  // namespace
}  // namespace trel
