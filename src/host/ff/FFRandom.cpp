#include "host/ff/FFRandom.h"

namespace trel::ff {

void FFRandom::Seed(int32_t s) {
  uint32_t mj = 161803398u - (uint32_t(s) & 0x7FFFu);
  tab_[0] = 0;
  tab_[55] = mj;
  uint32_t mk = 1;
  int ii = 0;
  for (int n = 0; n < 54; ++n) {
    ii = (ii + 21) % 55;
    tab_[ii] = mk;
    mk = mj - mk;
    mj = tab_[ii];
  }
  for (int round = 0; round < 4; ++round)
    for (int k = 1; k <= 55; ++k) tab_[k] -= tab_[1 + (k + 30) % 55];
  i1_ = 0;
  i2_ = 31;
}

int32_t FFRandom::Next(int32_t a, int32_t b) {
  // i % 55 + 1 for i in 0..55, without a division.
  i1_ = i1_ >= 55 ? 1 : i1_ + 1;
  i2_ = i2_ >= 55 ? 1 : i2_ + 1;
  uint32_t v = tab_[i1_] - tab_[i2_];
  tab_[i1_] = v;
  uint32_t span = uint32_t(b) - uint32_t(a);
  if (static_cast<int32_t>(span) < 0) return 0;
  return static_cast<int32_t>(uint32_t(a) + v % (span + 1u));
}

}  // namespace trel::ff
