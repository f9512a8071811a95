#include "host/ff/FFMath.h"

#include <cmath>

namespace trel::ff {

namespace {

// The original's cosine table is not the plain truncation everywhere: these
// quarter-wave steps are one higher, which the check values depend on.
constexpr int kCosPlusOne[] = {40,  72,  106, 113, 134, 136, 144, 145, 148, 152, 158, 159, 166, 170,
                               171, 175, 183, 192, 213, 216, 223, 229, 234, 238, 239, 240, 248};

Tables BuildTables() {
  Tables t{};
  const double pi = std::acos(-1.0);
  for (int k = 0; k < 256; ++k) {
    int32_t q = static_cast<int32_t>(std::trunc(16384.0 * std::cos(2.0 * pi * k / 1024.0)));
    for (int p : kCosPlusOne)
      if (p == k) ++q;
    t.cosT[k] = q;
    t.cosT[511 - k] = -q;
    t.cosT[512 + k] = -q;
    t.cosT[1023 - k] = q;
  }
  for (int k = 0; k < 1024; ++k) t.cos5[k] = t.cosT[k] >> 5;
  for (int k = 0; k < 1023; ++k)
    t.atanT[k] = static_cast<int32_t>(std::floor(65536.0 * std::atan((k + 1) / 1024.0)));
  t.atanT[1023] = 51472;
  for (int k = 0; k < 1024; ++k) {
    double r = k / 1024.0;
    t.magT[k] = static_cast<int32_t>(std::floor(65536.0 * (std::sqrt(1.0 + r * r) - 1.0) + 32.0));
  }
  t.dirT[0] = kC2dBelowTable;
  for (int q = 1; q <= 1024; ++q) t.dirT[q] = (t.atanT[q - 1] << 9) / 205888;
  return t;
}

}  // namespace

const Tables& GetTables() {
  static const Tables tables = BuildTables();
  return tables;
}

int32_t Sqr(int32_t x) {
  if (x < 0) return x;
  uint32_t n = uint32_t(x);
  uint32_t r = static_cast<uint32_t>(std::sqrt(static_cast<double>(n)));
  // The double root can be off by one near perfect squares; settle it exactly.
  while (uint64_t(r) * r > n) --r;
  while (uint64_t(r + 1) * (r + 1) <= n) ++r;
  return static_cast<int32_t>(r);
}

int32_t FnMap(const int32_t* ctl, int32_t i, int32_t n) {
  if (i < 0 || i > 3) return 0;
  int32_t h = CtlByte(ctl, 2 * i);
  int32_t l = CtlByte(ctl, 2 * i + 1);
  n = Clamp(n, 0, 255);
  if (h == l) return n < h ? 0 : 255;
  if (h > l) {
    if (n <= l) return 0;
    if (n >= h) return 255;
  } else {
    // Falling: the original counts down from 255, which rounds differently.
    if (n <= h) return 255;
    if (n >= l) return 0;
    return Sub(255, Div(Mul(Sub(n, h), 255), Sub(l, h)));
  }
  return Div(Mul(Sub(n, l), 255), Sub(h, l));
}

}  // namespace trel::ff
