// The compiled form of a filter: for each channel a flat list of register
// instructions. Each instruction runs over a whole block of pixels of a row,
// so the cost of deciding what to do is paid once per block, not per pixel;
// when the filter writes cells the same instructions run one pixel at a time
// in the language's order instead (rnd alone draws its numbers ahead).
#pragma once

#include <cstdint>
#include <vector>

namespace trel::ff {

enum class OpCode : uint8_t {
  Neg, Not, BitNot,
  Mul, Div, Mod, Add, Sub, Shl, Shr, Lt, Le, Gt, Ge, Eq, Ne, BitAnd, BitXor, BitOr, LogAnd, LogOr,
  Select,  // dst = a ? b : c
  Min, Max, Abs, AddF, SubF, Dif, Mix, Scl, Sqr, Sin, Cos, Tan, R2x, R2y, C2d, C2m,
  Ctl, Val, Map,
  Src,   // a, b, c: x, y, channel
  SrcC,  // a, b: x, y; imm: channel
  Rad,   // a, b, c: direction, magnitude, channel
  RadC,  // a, b; imm: channel
  Cnv,   // ten registers from args[extra]; imm: channel; c: 1 when the weights are uniform
  Get, Put, Rnd,
  DivC, ModC,  // a by the constant imm (neither 0 nor -1)
  SrcRel,      // src(x + extra, y + imm2, imm)
  MulDiv,      // a * b / c with a 64-bit product
  MulDivC,     // a * b / imm with a 64-bit product (imm neither 0 nor -1)
};

struct Instr {
  OpCode op;
  uint16_t dst = 0;
  uint16_t a = 0, b = 0, c = 0;
  uint32_t extra = 0;  // first of this instruction's registers in Program::args
  int32_t imm = 0;
  int32_t imm2 = 0;
};

// Registers with a fixed meaning. The pixel inputs are loaded per block, the
// row and picture values are filled once, the rest are constants and
// temporaries.
enum FixedReg : uint16_t {
  kRegR, kRegG, kRegB, kRegA, kRegX, kRegI, kRegU, kRegV, kRegD, kRegM,
  kRegY, kRegWidth, kRegHeight, kRegChannels, kRegCentre,
  kRegCtl0,  // eight control values
  kFirstFreeReg = kRegCtl0 + 8
};

// Registers are 16-bit numbers; far below that, a filter is unreasonably large.
constexpr uint16_t kMaxRegisters = 60000;

struct ChannelCode {
  std::vector<Instr> code;
  uint16_t result = 0;
  bool sideEffects = false;  // put, rnd or rst may run
  int sharedWith = -1;  // an earlier channel with the same formula computes the result
  uint8_t needs = 0;    // bit j: reads values that channel j computes, so j runs first
};

struct Program {
  ChannelCode channels[4];
  std::vector<uint16_t> args;
  std::vector<std::pair<uint16_t, int32_t>> constants;  // register, value
  uint16_t regCount = kFirstFreeReg;
  uint32_t inputsUsed[4] = {};  // per channel, bit k set: fixed register k is read
};

}  // namespace trel::ff
