#include "host/ff/FFMath.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <random>
#include <utility>

namespace trel::ff {
namespace {

uint32_t Crc32OfInts(const int32_t* v, int count) {
  uint32_t crc = 0xFFFFFFFFu;
  for (int i = 0; i < count; ++i)
    for (int byte = 0; byte < 4; ++byte) {
      crc ^= (uint32_t(v[i]) >> (8 * byte)) & 0xFFu;
      for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ (0xEDB88320u & (0u - (crc & 1u)));
    }
  return ~crc;
}

TEST(FFTables, CosineTableMatchesItsCheckValues) {
  const Tables& t = GetTables();
  EXPECT_EQ(t.cosT[0], 16384);
  EXPECT_EQ(t.cosT[1], 16383);
  EXPECT_EQ(t.cosT[40], 15893);
  EXPECT_EQ(t.cosT[128], 11585);
  EXPECT_EQ(t.cosT[255], 100);
  EXPECT_EQ(t.cosT[256], -100);
  int64_t sum = 0;
  for (int32_t v : t.cosT) sum += v;
  EXPECT_EQ(sum, 0);
  EXPECT_EQ(Crc32OfInts(t.cosT, 1024), 0xB846D3ECu);
}

TEST(FFTables, AtanAndMagnitudeTablesMatchTheirCheckValues) {
  const Tables& t = GetTables();
  EXPECT_EQ(t.atanT[1023], 51472);
  EXPECT_EQ(t.atanT[0], 63);  // floor(65536 * atan(1/1024))
  EXPECT_EQ(t.magT[0], 32);
  EXPECT_EQ(t.magT[1023], 27132);
  EXPECT_EQ(Crc32OfInts(t.magT, 1024), 0x6A959328u);
}

TEST(FFTrig, SinCosTanFollowTheTable) {
  const Tables& t = GetTables();
  EXPECT_EQ(Sin(t, 0), -4);
  EXPECT_EQ(Sin(t, 256), 512);
  EXPECT_EQ(Cos(t, 0), 512);
  EXPECT_EQ(Cos(t, 128), 362);
  EXPECT_EQ(Cos(t, 256), -4);
  EXPECT_EQ(Cos(t, -1), 511);
  EXPECT_EQ(Cos(t, 1024 + 128), 362);
  EXPECT_EQ(Tan(t, 0), -6);
  EXPECT_EQ(Tan(t, 128), 1024);
  EXPECT_EQ(Tan(t, 256), -167772);
  // The most negative angle has no positive counterpart; it must still index the table.
  EXPECT_EQ(Cos(t, INT_MIN), 512);
  EXPECT_EQ(Sin(t, INT_MIN), Cos(t, INT_MIN - 256LL + (1LL << 32)));
}

TEST(FFPolar, DirectionAndMagnitudeVectors) {
  const Tables& t = GetTables();
  EXPECT_EQ(C2d(t, 1, 0), 0);
  EXPECT_EQ(C2d(t, 0, 1), 256);
  EXPECT_EQ(C2d(t, -1, 0), 512);
  EXPECT_EQ(C2d(t, 0, -1), -256);
  EXPECT_EQ(C2d(t, 1, 1), 128);
  EXPECT_EQ(C2d(t, 3, 4), 152);
  EXPECT_EQ(C2d(t, -1, -1), -384);
  EXPECT_EQ(C2d(t, 0, 0), 0);
  EXPECT_EQ(C2m(t, 3, 4), 5);
  EXPECT_EQ(C2m(t, 1, 1), 1);
  EXPECT_EQ(C2m(t, 100, 100), 141);
  EXPECT_EQ(C2m(t, 0, 0), 0);
  EXPECT_EQ(C2m(t, 50, 50), 70);    // M of a 100x100 picture
  EXPECT_EQ(C2m(t, 320, 240), 400);  // M of 640x480
  EXPECT_EQ(R2x(t, 0, 100), 100);
  EXPECT_EQ(R2y(t, 0, 100), 1);
  // Extreme arguments neither overflow nor index outside the tables.
  EXPECT_EQ(C2d(t, INT_MIN, 0), 512);
  EXPECT_EQ(C2d(t, 0, INT_MIN), -256);
  EXPECT_EQ(C2m(t, INT_MAX, 1), -2146435074);  // wraps like every other result
  EXPECT_EQ(R2x(t, 0, INT_MIN), INT_MIN);
}

TEST(FFPolar, MatchesPlainIntegerArithmeticEverywhere) {
  // The same steps in 64-bit integers, as the definition states them.
  const Tables& t = GetTables();
  auto direction = [&](int64_t x, int64_t y) {
    int64_t ay = y < 0 ? -y : y, ax = x < 0 ? -x : x;
    int f = (y < 0 ? 4 : 0) | (x < 0 ? 3 : 0);
    if (ay > ax) std::swap(ay, ax), f ^= 1;
    int64_t a = 0;
    if (ay > 0) {
      a = (ay << 10) / ax;
      if (a != 0) a = (int64_t(t.atanT[a - 1]) << 9) / 205888;
    }
    if (f & 1) a = 256 - a;
    if (f & 2) a += 256;
    if (f & 4) a = -a;
    return int32_t(a);
  };
  auto magnitude = [&](int64_t x, int64_t y) {
    int64_t a = x < 0 ? -x : x, b = y < 0 ? -y : y, f;
    if (a == b) {
      f = 27146;
    } else {
      if (a > b) std::swap(a, b);
      f = t.magT[(a << 10) / b];
    }
    return int32_t(uint32_t(uint64_t(((f * b) >> 16) + b)));
  };
  std::mt19937 gen(5);
  for (int i = 0; i < 100000; ++i) {
    int shift = int(gen() % 32);
    int32_t x = int32_t(gen()) >> shift, y = int32_t(gen()) >> (gen() % 32);
    ASSERT_EQ(C2d(t, x, y), direction(x, y)) << x << "," << y;
    ASSERT_EQ(C2m(t, x, y), magnitude(x, y)) << x << "," << y;
  }
  for (int32_t x = -40; x <= 40; ++x)
    for (int32_t y = -40; y <= 40; ++y) {
      ASSERT_EQ(C2d(t, x, y), direction(x, y)) << x << "," << y;
      ASSERT_EQ(C2m(t, x, y), magnitude(x, y)) << x << "," << y;
    }
}

TEST(FFMath, SquareRoot) {
  EXPECT_EQ(Sqr(99), 9);
  EXPECT_EQ(Sqr(100), 10);
  EXPECT_EQ(Sqr(65025), 255);
  EXPECT_EQ(Sqr(2147483647), 46340);
  EXPECT_EQ(Sqr(0), 0);
  EXPECT_EQ(Sqr(-20), -20);
  for (int32_t r = 1; r < 46341; r += 97) {
    EXPECT_EQ(Sqr(r * r), r);
    EXPECT_EQ(Sqr(r * r - 1), r - 1);
  }
}

TEST(FFMath, DivisionTruncatesAndSurvivesZeroAndOverflow) {
  EXPECT_EQ(Div(7, 2), 3);
  EXPECT_EQ(Div(-7, 2), -3);
  EXPECT_EQ(Mod(-7, 2), -1);
  EXPECT_EQ(Div(5, 0), 0);
  EXPECT_EQ(Mod(5, 0), 0);
  EXPECT_EQ(Div(INT_MIN, -1), INT_MIN);
  EXPECT_EQ(Mod(INT_MIN, -1), 0);
  EXPECT_EQ(Shl(1, 33), 2);
  EXPECT_EQ(Shr(-16, 2), -4);
  EXPECT_EQ(Shr(-1, 31 + 32), -1);
  EXPECT_EQ(Add(INT_MAX, 1), INT_MIN);
  EXPECT_EQ(Mul(65536, 65536), 0);
  EXPECT_EQ(Abs(INT_MIN), INT_MIN);
}

TEST(FFMath, FastDivisionEqualsIntegerDivision) {
  const int32_t edge[] = {0, 1, -1, 2, -2, 3, 7, -7, 255, 256, 65535, 46341, INT_MAX, INT_MIN,
                          INT_MAX - 1, INT_MIN + 1, 1 << 30, -(1 << 30), 999999937};
  for (int32_t a : edge)
    for (int32_t b : edge) {
      EXPECT_EQ(DivFast(a, b), Div(a, b)) << a << " / " << b;
      EXPECT_EQ(ModFast(a, b), Mod(a, b)) << a << " % " << b;
    }
  std::mt19937 gen(12345);
  for (int i = 0; i < 200000; ++i) {
    int32_t a = int32_t(gen());
    int32_t b = int32_t(gen()) >> (gen() % 32);
    ASSERT_EQ(DivFast(a, b), Div(a, b)) << a << " / " << b;
    ASSERT_EQ(ModFast(a, b), Mod(a, b)) << a << " % " << b;
  }
}

TEST(FFMath, DivisionByAKnownNumberEqualsIntegerDivision) {
  const int32_t dividends[] = {0, 1, -1, 2, -2, 254, 255, 256, -255, -256, 65025, 1 << 30,
                               INT_MAX, INT_MIN, INT_MAX - 1, INT_MIN + 1, 999999937, -999999937};
  const int32_t divisors[] = {2, 3, 4, 5, 7, 9, 255, 256, 1024, 65535, 46341, 1 << 30, INT_MAX,
                              INT_MIN, -2, -3, -255, -256, INT_MIN + 1, 999999937};
  std::mt19937 gen(99);
  for (int32_t d : divisors) {
    ConstDivisor cd(d);
    for (int32_t a : dividends) {
      EXPECT_EQ(cd.Quot(a), Div(a, d)) << a << " / " << d;
      EXPECT_EQ(cd.Rem(a), Mod(a, d)) << a << " % " << d;
      // Exact multiples are where a reciprocal is most likely to fall short.
      int32_t m = Mul(Div(a, d), d);
      EXPECT_EQ(cd.Quot(m), Div(m, d)) << m << " / " << d;
      EXPECT_EQ(cd.Quot(Sub(m, 1)), Div(Sub(m, 1), d)) << m << " - 1 / " << d;
    }
    for (int i = 0; i < 20000; ++i) {
      int32_t a = int32_t(gen());
      ASSERT_EQ(cd.Quot(a), Div(a, d)) << a << " / " << d;
    }
  }
  for (int i = 0; i < 20000; ++i) {
    int32_t d = int32_t(gen()) >> (gen() % 31);
    if (d == 0 || d == -1) continue;
    ConstDivisor cd(d);
    int32_t a = int32_t(gen());
    ASSERT_EQ(cd.Quot(a), Div(a, d)) << a << " / " << d;
    ASSERT_EQ(cd.Rem(a), Mod(a, d)) << a << " % " << d;
  }
}

TEST(FFFunctions, PublishedVectors) {
  int32_t ctl[8] = {0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(FnVal(ctl, 0, 1, 10), 1);
  ctl[0] = 127;
  EXPECT_EQ(FnVal(ctl, 0, 1, 10), 5);
  ctl[0] = 255;
  EXPECT_EQ(FnVal(ctl, 0, 1, 10), 10);
  EXPECT_EQ(FnVal(ctl, 8, 1, 10), 0);
  EXPECT_EQ(FnVal(ctl, -1, 1, 10), 0);
  EXPECT_EQ(FnScl(128, 0, 255, -100, 100), 0);
  EXPECT_EQ(FnScl(7, 3, 3, 42, 99), 42);  // empty input range
  EXPECT_EQ(FnMix(10, 20, 1, 3), 16);
  EXPECT_EQ(FnMix(10, 20, 1, 0), 0);
  EXPECT_EQ(FnAdd(200, 100, 255), 255);
  EXPECT_EQ(FnAdd(20, 10, 255), 30);
  EXPECT_EQ(FnSub(10, 200, 0), 190);
  EXPECT_EQ(FnSub(10, 12, 5), 5);
  EXPECT_EQ(FnDif(3, 10), 7);
  EXPECT_EQ(LumaI(255, 0, 0), 75);
  EXPECT_EQ(ChromaU(255, 0, 0), -18);
  EXPECT_EQ(ChromaV(255, 0, 0), 77);
  EXPECT_EQ(LumaI(0, 0, 255), 28);
  EXPECT_EQ(ChromaU(0, 0, 255), 55);
  EXPECT_EQ(ChromaV(0, 0, 255), -12);
  EXPECT_EQ(LumaI(255, 255, 255), 254);
  EXPECT_EQ(ChromaU(1, 0, 0), 0);  // truncates toward zero, not down
}

TEST(FFFunctions, MapBuildsItsTableFromTwoControls) {
  int32_t ctl[8] = {200, 100, 65, 181, 50, 50, 0, 0};
  EXPECT_EQ(FnMap(ctl, 0, 150), 127);
  EXPECT_EQ(FnMap(ctl, 0, 100), 0);
  EXPECT_EQ(FnMap(ctl, 0, 200), 255);
  EXPECT_EQ(FnMap(ctl, 0, 999), 255);  // n clamps to 255 first
  EXPECT_EQ(FnMap(ctl, 1, 100), 178);
  EXPECT_EQ(FnMap(ctl, 1, 65), 255);
  EXPECT_EQ(FnMap(ctl, 1, 181), 0);
  EXPECT_EQ(FnMap(ctl, 2, 49), 0);
  EXPECT_EQ(FnMap(ctl, 2, 50), 255);
  EXPECT_EQ(FnMap(ctl, 3, -5), 255);  // H = L = 0, n clamps to 0
  EXPECT_EQ(FnMap(ctl, 4, 100), 0);
  EXPECT_EQ(FnMap(ctl, -1, 100), 0);
}

}  // namespace
}  // namespace trel::ff
