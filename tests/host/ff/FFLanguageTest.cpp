// The meaning of every operator, symbol and function, each checked through the
// tree walker and both forms of the compiled program (see FFTestSupport).
// The probe pixel is (2, 1) of a 5x4 picture with alpha: r 21, g 186, b 46,
// a 229; controls are 0, 10, 20 ... 70.
#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <utility>
#include <vector>

#include "FFTestSupport.h"
#include "host/ff/FFMath.h"

namespace trel::ff::test {
namespace {

void ExpectAll(const std::vector<std::pair<const char*, int32_t>>& cases) {
  for (const auto& [code, want] : cases) EXPECT_EQ(Eval(code), want) << code;
}

TEST(FFLanguage, PrecedenceDiffersFromC) {
  // The original's levels, measured: comparisons bind tighter than shifts,
  // ^ and | share one level, all comparisons share one.
  ExpectAll({
      {"1 || 0 && 0", 1}, {"0 && 0 || 1", 1}, {"1 | 2 & 4", 1}, {"6 ^ 3 & 5", 7},
      {"6 | 1 ^ 3", 4},   // C gives 6
      {"1 ^ 3 | 6", 6},
      {"1 << 2 < 3", 2},  // C gives 1
      {"4 >> 1 == 2", 4},  // C gives 2
      {"2 == 2 < 1", 0},  // C gives 1
      {"1 + 2 * 3", 7}, {"2 * 3 % 4", 2}, {"1 << 2 + 1", 8}, {"1 < 2 == 1", 1}, {"3 & 1 == 1", 1},
      {"2 + 3 < 4", 0}, {"1 == 1 && 2 < 3", 1}, {"0 ? 1 : 0 ? 2 : 3", 3}, {"1 ? 2 : 3 ? 4 : 5", 2},
      {"-2 * -3", 6}, {"- -r", 21}, {"--r", 21}, {"+r", 21}, {"!r + 1", 1}, {"~r & 255", 234},
      {"(1, 2)", 2}, {"1, 2 + 3", 5}, {"(r, g, b)", 46},
  });
}

TEST(FFLanguage, ArithmeticWrapsAndNeverFaults) {
  ExpectAll({
      {"2147483647 + 1", INT_MIN}, {"-2147483647 - 2", INT_MAX}, {"65536 * 65536", 0},
      {"0x7FFFFFFF * 2", -2}, {"(-2147483647-1) / -1", INT_MIN}, {"(-2147483647-1) % -1", 0},
      {"-(-2147483647-1)", INT_MIN}, {"abs(-2147483647-1)", INT_MIN}, {"7 / 0", 0}, {"7 % 0", 0},
      {"r / (g - g)", 0}, {"-7 / 2", -3}, {"-7 % 2", -1}, {"7 % -2", 1}, {"1 << 33", 2},
      {"1 << 31", INT_MIN},
      {"-16 >> 2", 0x3FFFFFFC}, {"-1 >> 28", 15}, {"-1 >> 40", 0xFFFFFF},  // a logical shift
      {"r << -1", INT_MIN},  // the count is masked to 31
      {"r < g", 1}, {"r <= 21", 1}, {"r > g", 0}, {"r >= 22", 0}, {"r == 21", 1}, {"r != 21", 0},
      {"12 & 10", 8}, {"12 ^ 10", 6}, {"12 | 10", 14}, {"2 && 3", 1}, {"0 || 7", 1}, {"0 || 0", 0},
      {"!7", 0}, {"!0", 1}, {"~0", -1},
  });
}

TEST(FFLanguage, PixelAndPictureSymbols) {
  ExpectAll({
      {"x", 2}, {"y", 1}, {"X", 5}, {"Y", 4}, {"z", 0}, {"p", 0}, {"Z", 4}, {"r", 21}, {"g", 186},
      {"b", 46}, {"a", 229}, {"c", 21}, {"i", 120}, {"u", -18}, {"v", -43}, {"d", -256}, {"m", 1},
      {"M", 2}, {"D", 1024}, {"R+G+B+A+C", 5 * 255}, {"I+U+V", 3 * 255},
      {"rmin+gmin+bmin+amin+cmin+imin+umin+vmin+xmin+ymin+zmin+mmin+pmin+dmin+tmin", 0},
      {"rmax+gmax+bmax+amax+cmax+imax+umax+vmax", 8 * 255}, {"xmax", 5}, {"ymax", 4}, {"zmax", 4},
      {"pmax", 4}, {"mmax", 2}, {"dmax", 1024}, {"t", 0}, {"tmax", 1}, {"total", 1},
      {"r0+g0+b0+a0+c0+i0+u0+v0+d0+m0", 21 + 186 + 46 + 229 + 21 + 120 - 18 - 43 - 256 + 1},
      {"r1+g1+b1+a1+c1+i1+u1+v1+d1+m1", 21 + 186 + 46 + 229 + 21 + 120 - 18 - 43 - 256 + 1},
  });
}

TEST(FFLanguage, ChannelSymbolsFollowTheChannelBeingComputed) {
  ImageRGBA8 img = PatternImage(5, 4, true), opaque = PatternImage(5, 4, false);
  for (int z = 0; z < 4; ++z)
    for (const char* code : {"c", "cnv(0,0,0,0,1,0,0,0,0,1)", "src(x,y,z)", "z"})
      EXPECT_EQ(EvalRow(code, img, 1, z, {})[2], code[0] == 'z' ? z : img.at(2, 1)[z]) << code << z;
  EXPECT_EQ(EvalRow("a", opaque, 1, 0, {})[2], 0);  // reads the missing channel
  EXPECT_EQ(EvalRow("a > 0 ? 255 - a : r", opaque, 1, 0, {})[2], opaque.at(2, 1)[0]);
  EXPECT_EQ(EvalRow("Z", opaque, 1, 0, {})[2], 3);
  EXPECT_EQ(EvalRow("src(x,y,3)", opaque, 1, 0, {})[2], 0);  // no such channel
}

TEST(FFLanguage, SourceAccessClampsToTheEdges) {
  ExpectAll({
      {"src(x,y,0)", 21}, {"src(-5,-5,0)", 0}, {"src(100,100,1)", 116},
      {"src(4,-2147483647-1,2)", 12}, {"src(0,0,4)", 0}, {"src(0,0,-1)", 0}, {"src(2,1,3)", 229},
      {"src(x,y,r-20)", 186},  // channel computed per pixel
      {"rad(0,0,0)", 22}, {"rad(0,1,0)", 32},
      {"rad(256,100,1)", 200 - 7 * 1 * 3},  // r2x -1, r2y 100: (1, 3)
      {"rad(d,m,r-19)", 46}, {"cnv(1,1,1,1,1,1,1,1,1,9)", 21}, {"cnv(0,0,0,0,1,0,0,0,0,0)", 0},
      {"cnv(1,0,0,0,0,0,0,0,0,1)", 10}, {"cnv(0,0,0,0,0,0,0,0,x,1)", 2 * 32},
  });
  // Neighbours outside the picture repeat the edge pixel.
  std::vector<int32_t> row = EvalRow("cnv(1,2,3,4,5,6,7,8,9,1)", PatternImage(3, 2, false), 0, 0, {});
  EXPECT_EQ(row[0], 1 * 0 + 2 * 0 + 3 * 10 + 4 * 0 + 5 * 0 + 6 * 10 + 7 * 1 + 8 * 1 + 9 * 11);
}

TEST(FFLanguage, ControlFunctions) {
  ExpectAll({
      {"ctl(1)", 10}, {"ctl(7)", 70}, {"ctl(8)", 0}, {"ctl(-1)", 0}, {"ctl(r-20)", 10},
      {"val(1,0,255)", 10}, {"val(7,100,0)", 73}, {"val(9,1,2)", 0}, {"val(r-20,0,255)", 10},
      // Map 1 falls from 20 to 30; it counts down from 255, so 25 gives 128, not 127.
      {"map(0,100)", 0}, {"map(1,25)", 128}, {"map(1,20)", 255}, {"map(4,25)", 0},
      {"map(r-20,25)", 128},
  });
}

TEST(FFLanguage, ArithmeticFunctions) {
  ExpectAll({
      {"min(r,g)", 21}, {"max(r,g)", 186}, {"abs(-5)", 5}, {"abs(r-g)", 165},
      {"add(200,100,255)", 255}, {"add(r,g,255)", 207},
      {"sub(r,g,0)", 0}, {"sub(g,r,0)", 165}, {"sub(r,r,9)", 9}, {"sub(20,50,-100)", -30},
      {"dif(r,g)", 165}, {"mix(10,20,1,3)", 16}, {"mix(r,g,1,0)", 0},
      {"mix(r,255-r,128,255)", 10 + 116}, {"scl(128,0,255,-100,100)", 0}, {"scl(r,3,3,7,9)", 0},
      // products of mix and scl are 64 bits wide before the division
      {"scl(260,1904588895,9,2,0x5c45d1c)", 2 + int32_t(96754970LL * (260 - 1904588895LL) / (9 - 1904588895LL))},
      {"mix(100000,0,100000,300000)", 33333}, {"mix(x*50000,0,50000,y*300000)", 16666},
      {"scl(r,0,255,0,1000)", 82}, {"sqr(99)", 9}, {"sqr(100)", 10}, {"sqr(65025)", 255},
      {"sqrt(2147483647)", 46340}, {"sqr(-20)+21", 1},
  });
}

TEST(FFLanguage, TrigonometryAndPolarFunctions) {
  ExpectAll({
      {"sin(0)", -4}, {"sin(256)", 512}, {"cos(0)", 512}, {"cos(128)", 362}, {"cos(256)", -4},
      {"cos(-1)", 511}, {"cos(1152)", 362}, {"tan(0)", -6}, {"tan(128)", 1024},
      {"tan(256)", -167772}, {"cos(r-21)", 512}, {"sin(r*0+256)", 512},
      // The most negative angle has no positive counterpart; it must still index the table.
      {"cos(-2147483647-1)", 512}, {"sin(-2147483647-1) - cos(2147483392)", 0},
      {"r2x(0,100)", 100}, {"r2y(0,100)", 1}, {"r2x(0,-2147483647-1)", INT_MIN},
      {"c2d(1,0)", 0}, {"c2d(0,1)", 256}, {"c2d(-1,0)", 512}, {"c2d(0,-1)", -256},
      {"c2d(1,1)", 128}, {"c2d(3,4)", 152}, {"c2d(-1,-1)", -384}, {"c2d(0,0)", 0},
      {"c2d(-2147483647-1,0)", 512}, {"c2d(0,-2147483647-1)", -256}, {"c2d(r-18,r-17)", 152},
      {"c2m(3,4)", 5}, {"c2m(1,1)", 1}, {"c2m(100,100)", 141}, {"c2m(0,0)", 0},
      {"c2m(50,50)", 70},    // M of a 100x100 picture
      {"c2m(320,240)", 400},  // M of 640x480
      {"c2m(2147483647,1)", -2146435074},  // wraps like every other result
      {"c2m(r-18,r-17)", 5},
  });
}

TEST(FFLanguage, CellsAndRandomNumbers) {
  const std::pair<const char*, int32_t> cases[] = {
      {"get(5)", 0}, {"get(300)", 300},  // outside the cells: the index itself
      {"get(-1)", -1}, {"put(7,3)", 7}, {"put(7,3), get(3)", 7}, {"put(7,256), get(256)", 256},
      {"put(7,255), get(255)", 7}, {"rnd(0,255)", 0x0A}, {"rnd(0,255), rnd(0,255)", 0x23},
      {"rnd(5,4), rnd(0,255)", 0x23},  // an empty range still draws
      // rst leaves the running stream alone
      {"rnd(7,7)", 7}, {"rst(5)", 0}, {"rnd(0,255), rnd(0,255), rst(0), rnd(0,255)", 0x6A},
      {"rnd(0,255), rst(32768), rnd(0,255)", 0x23},
      // Nothing short-circuits.
      {"(0 && put(9,1)), get(1)", 9}, {"(1 || put(9,1)), get(1)", 9},
      {"(0 ? put(9,1) : 0), get(1)", 9}, {"(1 ? 0 : put(8,2)), get(2)", 8},
      {"(r ? 0 : put(8,2)), get(2)", 8}, {"(1 ? 0 : rnd(0,255)), rnd(0,255)", 0x23},
      // Operands run left to right.
      {"put(1,0) + put(get(0)+1,0) * 10", 21}, {"rnd(0,255) - rnd(0,255)", 0x0A - 0x23},
      {"put(get(0)+5,0) ? get(0) : -1", 5},
  };
  for (const auto& [code, want] : cases) EXPECT_EQ(EvalOnce(code), want) << code;
  EXPECT_EQ(EvalOnce("(0 ? rst(1) : 0), rnd(0,255)"), EvalOnce("rst(1), rnd(0,255)"));
  EXPECT_EQ(EvalOnce("rst(1), (rnd(0,255) << 16) | (rnd(0,255) << 8) | rnd(0,255)"), 0x0A236A);
  EvalOnce("rnd(-2147483647-1, 2147483647), rnd(0, 2147483647)");  // spans wrap, never divide by 0
  for (int32_t v : EvalRow("rnd(-5,5)", PatternImage(500, 1, false), 0, 0, {}))
    EXPECT_TRUE(v >= -5 && v <= 5) << v;
}

TEST(FFLanguage, ConstantFoldingKeepsTheMeaning) {
  // Folding runs the same arithmetic; these mix known and per-pixel parts.
  ExpectAll({
      {"(2147483647 + 1) / -1 + r", INT_MIN + 21}, {"1 ? r : g", 21}, {"0 ? r : g", 186},
      {"(5, r)", 21}, {"sin(256) + cos(z*128)", 1024}, {"min(3, 4) * r", 63},
      {"(1 ? 2 : u) + 3", 5},  // known through one branch only
      {"(0 ? v : 4) * (r, 2)", 8}, {"r / 1 + r % 1 + r % -1 + r / -1", 0},
      {"(r - 100) / 4 + (r - 100) % 4", -19 - 3}, {"(r * 1000000) / 255", Div(21000000, 255)},
      {"mix(r, g, 0, 0) + scl(r, 5, 5, 9, 9) + val(0, 5, 5)", 5},
      {"scl(r, 0, 0, 9, 9) + scl(r, x, x, 9, 9) + scl(r, 5, 6, 9, 9)", 9},
  });
}

}  // namespace
}  // namespace trel::ff::test
