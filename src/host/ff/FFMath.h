// The arithmetic of the Filter Factory language on single values: wrapping
// 32-bit integer operations, the table-driven trigonometry and polar
// conversions, and the built-in functions. Every evaluator (the tree walker,
// the row programs, constant folding) calls these, so a value never depends on
// which path computed it.
#pragma once

#include <cmath>
#include <cstdint>

namespace trel::ff {

// Signed results of unsigned (wrapping) arithmetic: no overflow is undefined.
inline int32_t Wrap(uint32_t v) { return static_cast<int32_t>(v); }
inline int32_t Add(int32_t a, int32_t b) { return Wrap(uint32_t(a) + uint32_t(b)); }
inline int32_t Sub(int32_t a, int32_t b) { return Wrap(uint32_t(a) - uint32_t(b)); }
inline int32_t Mul(int32_t a, int32_t b) { return Wrap(uint32_t(a) * uint32_t(b)); }
inline int32_t Neg(int32_t a) { return Wrap(0u - uint32_t(a)); }
inline int32_t Abs(int32_t a) { return a < 0 ? Neg(a) : a; }

// Truncating division; a zero divisor gives 0 and INT_MIN / -1 wraps to INT_MIN.
inline int32_t Div(int32_t a, int32_t b) {
  if (b == 0) return 0;
  if (b == -1) return Neg(a);
  return a / b;
}
inline int32_t Mod(int32_t a, int32_t b) {
  if (b == 0 || b == -1) return 0;
  return a % b;
}
// Div and Mod computed through double division, which loops over many values
// can vectorise. A double holds every 32-bit quotient exactly enough that the
// truncated result always equals the integer one.
inline int32_t DivFast(int32_t a, int32_t b) {
  int32_t safe = (b == 0 || b == -1) ? 1 : b;
  int32_t q = static_cast<int32_t>(static_cast<double>(a) / static_cast<double>(safe));
  return b == 0 ? 0 : (b == -1 ? Neg(a) : q);
}
inline int32_t ModFast(int32_t a, int32_t b) {
  int32_t safe = (b == 0 || b == -1) ? 1 : b;
  int32_t q = static_cast<int32_t>(static_cast<double>(a) / static_cast<double>(safe));
  return (b == 0 || b == -1) ? 0 : Sub(a, Mul(q, safe));
}
// Division by a number known before the run (neither 0 nor -1): a shift for
// powers of two, otherwise a multiplication by the reciprocal in double with a
// nudge of half a step away from zero. The nudge is far larger than the
// rounding error and far smaller than the distance of any non-integer
// quotient to the next integer, so truncation gives the exact result.
struct ConstDivisor {
  int32_t d = 1;
  int shift = -1;  // 0..30 when d is a power of two
  double inv = 1.0;
  double half = 0.5;

  explicit ConstDivisor(int32_t divisor) : d(divisor) {
    if (d > 0 && (d & (d - 1)) == 0) {
      shift = 0;
      while ((1 << shift) != d) ++shift;
    }
    inv = 1.0 / d;
    half = 0.5 / (d < 0 ? -double(d) : double(d));
  }
  int32_t QuotShift(int32_t a) const {
    return Wrap(uint32_t(a) + (uint32_t(a >> 31) & uint32_t(d - 1))) >> shift;
  }
  int32_t QuotMul(int32_t a) const {
    double t = double(a) * inv;
    return static_cast<int32_t>(t + (t < 0 ? -half : half));
  }
  int32_t Quot(int32_t a) const { return shift >= 0 ? QuotShift(a) : QuotMul(a); }
  int32_t Rem(int32_t a) const { return Sub(a, Mul(Quot(a), d)); }
};

inline int32_t Shl(int32_t a, int32_t b) { return Wrap(uint32_t(a) << (uint32_t(b) & 31u)); }
// A logical shift, as the original's: -1 >> 28 is 15.
inline int32_t Shr(int32_t a, int32_t b) { return Wrap(uint32_t(a) >> (uint32_t(b) & 31u)); }

inline int32_t Min(int32_t a, int32_t b) { return a < b ? a : b; }
inline int32_t Max(int32_t a, int32_t b) { return a > b ? a : b; }
inline int32_t Clamp(int32_t v, int32_t lo, int32_t hi) { return v < lo ? lo : (v > hi ? hi : v); }

// The three fixed-point tables, built once on first use.
struct Tables {
  int32_t cosT[1024];   // cosine, scale 16384
  int32_t cos5[1024];   // cosT >> 5, what cos() and sin() return
  int32_t atanT[1024];  // arctangent of (k+1)/1024, scale 65536
  int32_t magT[1024];   // magnitude correction for c2m
  // c2d's angle for each quotient 0..1024 of the smaller coordinate by the
  // larger, scaled by 1024: atanT[q-1] * 512 / 205888, and for 0 what the
  // original reads before its table.
  int32_t dirT[1025];
};
const Tables& GetTables();

inline int32_t Cos(const Tables& t, int32_t x) { return t.cos5[uint32_t(Abs(x)) & 1023u]; }
inline int32_t Sin(const Tables& t, int32_t x) { return Cos(t, Sub(x, 256)); }
inline int32_t Tan(const Tables& t, int32_t x) {
  // The table has no zero entry, so the division is always defined.
  return (t.cosT[uint32_t(Abs(Sub(x, 256))) & 1023u] * 1024) / t.cosT[uint32_t(Abs(x)) & 1023u];
}
inline int32_t R2x(const Tables& t, int32_t d, int32_t m) {
  int64_t p = int64_t(m) * t.cosT[uint32_t(d) & 1023u] + 8191;
  return Wrap(uint32_t(uint64_t(p >> 14)));
}
inline int32_t R2y(const Tables& t, int32_t d, int32_t m) { return R2x(t, Sub(d, 256), m); }
// c2d of a point just off the axis, where the original reads before its table.
constexpr int32_t kC2dBelowTable = 40;

// c2d and c2m without branches, so that loops over them vectorise. The
// magnitudes are taken in double, where |INT_MIN| is exact, and the quotient
// of the smaller by the larger, times 1024, is exact enough to truncate to
// the integer quotient (both are below 2^53 and it is at most 1024).
inline int32_t C2d(const Tables& t, int32_t x, int32_t y) {
  const double ax = std::fabs(double(x)), ay = std::fabs(double(y));
  const bool swap = ay > ax;
  const double lo = swap ? ax : ay, hi = swap ? ay : ax;
  const int32_t q = int32_t(lo * 1024.0 / (hi > 0 ? hi : 1.0));
  int32_t a = lo > 0 ? t.dirT[q] : 0;
  const int32_t f = ((y < 0 ? 4 : 0) | (x < 0 ? 3 : 0)) ^ (swap ? 1 : 0);
  a = (f & 1) ? 256 - a : a;
  a = (f & 2) ? a + 256 : a;
  return (f & 4) ? -a : a;
}
inline int32_t C2m(const Tables& t, int32_t x, int32_t y) {
  const double ax = std::fabs(double(x)), ay = std::fabs(double(y));
  const double lo = ax < ay ? ax : ay, hi = ax < ay ? ay : ax;
  // Below 1024 whenever lo < hi; the same values give 27146.
  const int32_t q = lo < hi ? int32_t(lo * 1024.0 / hi) : 0;
  const uint32_t f = lo < hi ? uint32_t(t.magT[q]) : 27146u;
  const uint32_t ux = x < 0 ? 0u - uint32_t(x) : uint32_t(x);
  const uint32_t uy = y < 0 ? 0u - uint32_t(y) : uint32_t(y);
  const uint32_t b = ux > uy ? ux : uy;
  // (f * b >> 16) + b with the 47-bit product in two halves: f < 2^15, so
  // f * (b >> 16) and f * (b & 0xFFFF) both fit 32 bits.
  return Wrap(f * (b >> 16) + ((f * (b & 0xFFFFu)) >> 16) + b);
}

// Floor of the square root for x >= 0; a negative x comes back unchanged.
int32_t Sqr(int32_t x);

inline int32_t FnAdd(int32_t a, int32_t b, int32_t c) { return Min(Add(a, b), c); }
inline int32_t FnSub(int32_t a, int32_t b, int32_t c) { return Max(Sub(a, b), c); }
inline int32_t FnDif(int32_t a, int32_t b) { return Abs(Sub(a, b)); }
// a * b / d with the product in 64 bits, as the original's scl and mix
// compute it; the quotient wraps to 32 bits, and a zero divisor gives 0.
inline int32_t MulDiv64(int32_t a, int32_t b, int32_t d) {
  if (d == 0) return 0;
  return Wrap(uint32_t(uint64_t((int64_t(a) * int64_t(b)) / int64_t(d))));
}
// MulDiv64 that divides in 32 bits (through DivFast) when the product fits.
inline int32_t MulDivFast(int32_t a, int32_t b, int32_t d) {
  const int64_t p = int64_t(a) * int64_t(b);
  return p == int32_t(p) ? DivFast(int32_t(p), d) : MulDiv64(a, b, d);
}
inline int32_t FnMix(int32_t a, int32_t b, int32_t n, int32_t d) {
  return Add(MulDiv64(a, n, d), MulDiv64(b, Sub(d, n), d));
}
// An empty input range gives 0, not ol: the original tests for it first.
inline int32_t FnScl(int32_t a, int32_t il, int32_t ih, int32_t ol, int32_t oh) {
  if (ih == il) return 0;
  return Add(ol, MulDiv64(Sub(oh, ol), Sub(a, il), Sub(ih, il)));
}
inline int32_t FnSclFast(int32_t a, int32_t il, int32_t ih, int32_t ol, int32_t oh) {
  if (ih == il) return 0;
  return Add(ol, MulDivFast(Sub(oh, ol), Sub(a, il), Sub(ih, il)));
}
// A control is a slider's byte; a value outside 0..255 handed in by a caller
// reads as the nearest (the compiler relies on the range).
inline int32_t CtlByte(const int32_t* ctl, int32_t i) { return Clamp(ctl[i], 0, 255); }
inline int32_t FnCtl(const int32_t* ctl, int32_t i) { return i >= 0 && i <= 7 ? CtlByte(ctl, i) : 0; }
inline int32_t FnVal(const int32_t* ctl, int32_t i, int32_t a, int32_t b) {
  if (i < 0 || i > 7) return 0;
  return Add(DivFast(Mul(CtlByte(ctl, i), Sub(b, a)), 255), a);
}
int32_t FnMap(const int32_t* ctl, int32_t i, int32_t n);

// The colour-space symbols i, u, v of a source pixel.
inline int32_t LumaI(int32_t r, int32_t g, int32_t b) { return (76 * r + 150 * g + 29 * b) / 256; }
inline int32_t ChromaU(int32_t r, int32_t g, int32_t b) { return (-19 * r - 37 * g + 56 * b) / 256; }
inline int32_t ChromaV(int32_t r, int32_t g, int32_t b) { return (78 * r - 65 * g - 13 * b) / 256; }

}  // namespace trel::ff
