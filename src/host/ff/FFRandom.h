// The random generator behind rnd() and rst(): Knuth's subtractive generator
// with the original's seeding, so a filter draws the same numbers here as it
// did in the host it was written for.
#pragma once

#include <cstdint>

namespace trel::ff {

class FFRandom {
 public:
  FFRandom() { Seed(0); }
  // Only the low 15 bits of the seed matter.
  void Seed(int32_t s);
  // The next number in a..b; b < a still draws, and gives 0.
  int32_t Next(int32_t a, int32_t b);

 private:
  uint32_t tab_[56];
  int i1_ = 0;
  int i2_ = 31;
};

}  // namespace trel::ff
