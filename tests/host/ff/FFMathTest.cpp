#include "host/ff/FFMath.h"

#include "host/ff/FFRandom.h"

#include <gtest/gtest.h>

#include <array>
#include <climits>
#include <cstdint>
#include <random>
#include <utility>
#include <vector>

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

TEST(FFTables, TablesMatchTheirCheckValues) {
  const Tables& t = GetTables();
  const std::pair<int32_t, int32_t> checks[] = {
      {t.cosT[0], 16384}, {t.cosT[1], 16383}, {t.cosT[40], 15893}, {t.cosT[128], 11585},
      {t.cosT[255], 100}, {t.cosT[256], -100}, {t.atanT[1023], 51472},
      {t.atanT[0], 63},  // floor(65536 * atan(1/1024))
      {t.magT[0], 32},    {t.magT[1023], 27132},
      {t.dirT[0], 40},  // read before the arctangent table
      {t.dirT[1], 0},     {t.dirT[1024], 128}};
  for (const auto& [got, want] : checks) EXPECT_EQ(got, want);
  int64_t sum = 0;
  for (int32_t v : t.cosT) sum += v;
  EXPECT_EQ(sum, 0);
  EXPECT_EQ(Crc32OfInts(t.cosT, 1024), 0xB846D3ECu);
  EXPECT_EQ(Crc32OfInts(t.magT, 1024), 0x6A959328u);
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
      // The original reads before its table for a quotient of 0: 40, measured.
      a = a != 0 ? (int64_t(t.atanT[a - 1]) << 9) / 205888 : 40;
    }
    if (f & 1) a = 256 - a;
    if (f & 2) a += 256;
    return int32_t(f & 4 ? -a : a);
  };
  auto magnitude = [&](int64_t x, int64_t y) {
    int64_t a = x < 0 ? -x : x, b = y < 0 ? -y : y;
    if (a > b) std::swap(a, b);
    int64_t f = a == b ? 27146 : t.magT[(a << 10) / b];
    return int32_t(uint32_t(uint64_t(((f * b) >> 16) + b)));
  };
  auto check = [&](int32_t x, int32_t y) {
    ASSERT_EQ(C2d(t, x, y), direction(x, y)) << x << "," << y;
    ASSERT_EQ(C2m(t, x, y), magnitude(x, y)) << x << "," << y;
  };
  std::mt19937 gen(5);
  for (int i = 0; i < 100000; ++i) {
    int shift = int(gen() % 32);
    int32_t x = int32_t(gen()) >> shift, y = int32_t(gen()) >> (gen() % 32);
    check(x, y);
  }
  for (int32_t x = -40; x <= 40; ++x)
    for (int32_t y = -40; y <= 40; ++y) check(x, y);
  for (int32_t e : {INT_MIN, INT_MIN + 1, INT_MAX}) check(e, 0), check(0, e), check(e, e), check(e, 1);
}

TEST(FFMath, SquareRootIsExactNearEverySquare) {
  EXPECT_EQ(Sqr(0), 0);
  for (int32_t r = 1; r < 46341; r += 97) {
    EXPECT_EQ(Sqr(r * r), r);
    EXPECT_EQ(Sqr(r * r - 1), r - 1);
  }
}

TEST(FFMath, FastDivisionEqualsIntegerDivision) {
  const int32_t edge[] = {0, 1, -1, 2, -2, 3, -3, 4, 5, 7, -7, 9, 255, 256, -255, -256, 1024,
                          65025, 65535, 46341, INT_MAX, INT_MIN, INT_MAX - 1, INT_MIN + 1, 1 << 30,
                          -(1 << 30), 999999937, -999999937};
  std::mt19937 gen(12345);
  for (int32_t b : edge) {
    for (int32_t a : edge) {
      EXPECT_EQ(DivFast(a, b), Div(a, b)) << a << " / " << b;
      EXPECT_EQ(ModFast(a, b), Mod(a, b)) << a << " % " << b;
    }
    if (b == 0 || b == -1) continue;
    // Division by a number known when compiling; exact multiples are where
    // a reciprocal is most likely to fall short.
    ConstDivisor cd(b);
    for (int32_t a : edge) {
      int32_t m = Mul(Div(a, b), b);
      for (int32_t n : {a, m, Sub(m, 1)}) {
        EXPECT_EQ(cd.Quot(n), Div(n, b)) << n << " / " << b;
        EXPECT_EQ(cd.Rem(n), Mod(n, b)) << n << " % " << b;
      }
    }
  }
  for (int i = 0; i < 200000; ++i) {
    int32_t a = int32_t(gen()), b = int32_t(gen()) >> (gen() % 32);
    ASSERT_EQ(DivFast(a, b), Div(a, b)) << a << " / " << b;
    ASSERT_EQ(ModFast(a, b), Mod(a, b)) << a << " % " << b;
    if (b == 0 || b == -1) continue;
    ConstDivisor cd(b);
    ASSERT_EQ(cd.Quot(a), Div(a, b)) << a << " / " << b;
    ASSERT_EQ(cd.Rem(a), Mod(a, b)) << a << " % " << b;
  }
}

TEST(FFFunctions, PublishedVectors) {
  int32_t ctl[8] = {0, 0, 0, 0, 0, 0, 0, 0};
  for (const auto& [c0, want] : {std::pair{0, 1}, {127, 5}, {255, 10}}) {
    ctl[0] = c0;
    EXPECT_EQ(FnVal(ctl, 0, 1, 10), want) << c0;
  }
  EXPECT_EQ(FnVal(ctl, 8, 1, 10), 0);
  EXPECT_EQ(FnVal(ctl, -1, 1, 10), 0);
  const int rgb[][6] = {{255, 0, 0, 75, -18, 77}, {0, 0, 255, 28, 55, -12}, {255, 255, 255, 254, 0, 0},
                        {1, 0, 0, 0, 0, 0}};  // the last truncates toward zero, not down
  for (const auto& c : rgb)
    EXPECT_EQ((std::array{LumaI(c[0], c[1], c[2]), ChromaU(c[0], c[1], c[2]), ChromaV(c[0], c[1], c[2])}),
              (std::array{c[3], c[4], c[5]}))
        << c[0] << "," << c[1] << "," << c[2];
}

TEST(FFFunctions, MapBuildsItsTableFromTwoControls) {
  const int32_t ctl[8] = {200, 100, 65, 181, 50, 50, 0, 0};
  const int32_t cases[][3] = {
      {0, 150, 127}, {0, 100, 0},   {0, 200, 255}, {0, 999, 255},  // n clamps to 255 first
      {1, 100, 179},  // falling: 255 - (100-65)*255/116, not (100-181)*255/(65-181)
      {1, 65, 255},  {1, 181, 0},   {2, 49, 0}, {2, 50, 255},
      {3, -5, 255},  // H = L = 0, n clamps to 0
      {4, 100, 0},   {-1, 100, 0}};
  for (const auto& c : cases) EXPECT_EQ(FnMap(ctl, c[0], c[1]), c[2]) << c[0] << "," << c[1];
}

TEST(FFRandom, DrawingManyAtOnceContinuesTheSameStream) {
  // Batches of every awkward length: empty, below and above the lag of 24,
  // around the table's 55, mixed with single draws that move the table on.
  FFRandom one, many;
  one.Seed(1234);
  many.Seed(1234);
  std::vector<uint32_t> history;
  for (size_t count : {size_t(0), size_t(1), size_t(23), size_t(24), size_t(25), size_t(54), size_t(55),
                       size_t(56), size_t(110), size_t(1), size_t(768), size_t(3)}) {
    history.assign(55 + count, 0);
    const uint32_t* got = many.DrawMany(count, history.data());
    for (size_t n = 0; n < count; ++n) ASSERT_EQ(got[n], one.Draw()) << "batch of " << count << ", draw " << n;
    ASSERT_EQ(many.Next(0, 255), one.Next(0, 255)) << "after a batch of " << count;
  }
}

TEST(FFRandom, RangesTakeTheRemainderOfTheDraw) {
  // Empty and reversed ranges give 0; the whole 32-bit range gives 0 as well
  // (its span does not fit), the largest that fits every value.
  EXPECT_EQ(FFRandom::In(12345, 7, 7), 7);
  EXPECT_EQ(FFRandom::In(12345, 8, 7), 0);
  EXPECT_EQ(FFRandom::In(0xFFFFFFFFu, INT_MIN, INT_MAX), 0);
  EXPECT_EQ(FFRandom::In(0xFFFFFFFFu, 0, INT_MAX), INT_MAX);
  EXPECT_EQ(FFRandom::In(1000, -10, 10), -10 + 1000 % 21);
  EXPECT_EQ(FFRandom::In(0x80000001u, -1, 0x7FFFFFFE), -1 + int32_t(0x80000001u % 0x80000000u));
}

}  // namespace
}  // namespace trel::ff
