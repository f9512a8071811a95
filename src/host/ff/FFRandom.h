// The random generator behind rnd() and rst(): Knuth's subtractive generator
// with the original's seeding, so a filter draws the same numbers here as it
// did in the host it was written for.
#pragma once

#include <cstddef>
#include <cstdint>

namespace trel::ff {

class FFRandom {
 public:
  FFRandom() { Seed(0); }
  // Only the low 15 bits of the seed matter.
  void Seed(int32_t s);
  // The next number in a..b; b < a still draws, and gives 0.
  int32_t Next(int32_t a, int32_t b) { return In(Draw(), a, b); }

  // Next in two steps: the generator moves on by the same step whatever the
  // range, so numbers can be drawn ahead and put into their ranges later.
  uint32_t Draw() {
    i1_ = i1_ >= 55 ? 1 : i1_ + 1;  // i % 55 + 1 for i in 0..55, without a division
    i2_ = i2_ >= 55 ? 1 : i2_ + 1;
    const uint32_t v = tab_[i1_] - tab_[i2_];
    tab_[i1_] = v;
    return v;
  }
  // `count` numbers of Draw at once, in `history` (55 + count values) from
  // index 55 on; returns where they start. Each number is the one 55 draws
  // before it less the one 24 before, so runs of up to 24 are independent
  // and are computed eight at a time.
  const uint32_t* DrawMany(size_t count, uint32_t* history);
  static int32_t In(uint32_t v, int32_t a, int32_t b) {
    const uint32_t span = uint32_t(b) - uint32_t(a);
    if (static_cast<int32_t>(span) < 0) return 0;
    return static_cast<int32_t>(uint32_t(a) + v % (span + 1u));
  }

 private:
  uint32_t tab_[56];
  int i1_ = 0;
  int i2_ = 31;
};

}  // namespace trel::ff
