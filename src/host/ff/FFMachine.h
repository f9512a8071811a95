// Runs a compiled program over the rows of a picture. One machine belongs to
// one thread: it owns the register file (one block of values per register).
#pragma once

#include <cstdint>
#include <vector>

#include "host/ff/FFImage.h"
#include "host/ff/FFMath.h"
#include "host/ff/FFProgram.h"
#include "host/ff/FFTreeEval.h"

namespace trel::ff {

class Machine {
 public:
  // `state` may be null when the program has no side effects and reads no cells.
  Machine(const Program& prog, const ConstImageView& src, const int32_t* ctl, RunState* state);

  // Computes row y into `dstRow` (4 bytes a pixel, clamped). The block form runs
  // each channel over many pixels at once and is only right for programs that
  // write no cells (rnd draws its numbers ahead there, in pixel order); the
  // ordered form keeps pixel, then channel order exactly.
  void RunRowBlocks(int y, uint8_t* dstRow);
  void RunRowOrdered(int y, uint8_t* dstRow);

  // Unclamped values of one channel along row y, for checking the machine
  // against the tree evaluator.
  std::vector<int32_t> RawRow(int channel, int y, bool ordered);

  int channels() const { return channels_; }

 private:
  int32_t* Reg(uint16_t r) { return regs_.data() + size_t(r) * block_; }
  void BeginRow(int y);
  void LoadInputs(int x0, int n, uint32_t used);
  void RunBlock(const ChannelCode& code, int n);
  void RunOne(const ChannelCode& code, int k);

  const Program& prog_;
  ConstImageView src_;
  const int32_t* ctl_;
  RunState* state_;
  const Tables& tables_;
  int channels_;
  int block_;
  int y_ = 0;
  uint32_t used_ = 0;
  bool identity_ = false;  // every channel is its own source byte
  int rndPerPixel_ = 0;    // rnd calls in one pixel's run of the channels
  std::vector<uint32_t> history_;  // the generator's numbers for one block
  const uint32_t* draws_ = nullptr;
  bool drawing_ = false;
  int drawsUsed_ = 0;
  std::vector<int32_t> regs_;
  std::vector<int32_t> scratch_;
  std::vector<int32_t> columns_;  // 0, 1, ... width - 1
  // The channels' instructions one after the other, R first: one pass of it
  // computes a whole pixel in the language's order.
  ChannelCode pixelCode_;
};

}  // namespace trel::ff
