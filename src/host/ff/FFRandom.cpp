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

const uint32_t* FFRandom::DrawMany(size_t count, uint32_t* h) {
  if (count == 0) return h + 55;
  // The slot the next draw writes holds the number of 55 draws ago; the
  // table read in that order is the history.
  auto slot = [](size_t i) { return int((i - 1) % 55 + 1); };
  const size_t first = size_t(i1_ >= 55 ? 1 : i1_ + 1);
  for (size_t m = 0; m < 55; ++m) h[m] = tab_[slot(first + m)];
  size_t n = 0;
  for (; n + 8 <= count; n += 8)
    for (size_t i = 0; i < 8; ++i) h[55 + n + i] = h[n + i] - h[n + 31 + i];
  for (; n < count; ++n) h[55 + n] = h[n] - h[n + 31];
  for (size_t m = 0; m < 55; ++m) tab_[slot(first + count + m)] = h[count + m];
  i1_ = slot(first + count - 1);
  i2_ = slot(size_t(i1_) + 31);
  return h + 55;
}

}  // namespace trel::ff
