// A direct evaluator of the expression tree, one pixel and one channel at a
// time. It is the plain statement of the language's meaning: the compiler folds
// constants with it, and the row programs must agree with it on every input.
#pragma once

#include <cstdint>

#include "host/ff/FFAst.h"
#include "host/ff/FFImage.h"
#include "host/ff/FFRandom.h"

namespace trel::ff {

// What lives through one run of a filter over a picture.
struct RunState {
  int32_t cells[256] = {};
  FFRandom rng;
  void Reset() {
    for (int32_t& c : cells) c = 0;
    rng.Seed(0);
  }
};

struct PixelEnv {
  ConstImageView src;
  int channels = 3;  // Z: 4 when the picture has alpha
  int32_t x = 0, y = 0, z = 0;
  const int32_t* ctl = nullptr;  // eight control values
  RunState* state = nullptr;
};

int32_t EvaluateTree(const Ast& ast, uint32_t node, const PixelEnv& env);
// One node's value from its operands' values.
int32_t ApplyNode(const Node& node, const int32_t* operands, const PixelEnv& env);
int32_t BinaryValue(BinOp op, int32_t a, int32_t b);

// Symbols that depend only on the picture's size.
int32_t CentreMagnitude(int width, int height);  // M
int32_t PixelDirection(int32_t x, int32_t y, int width, int height);  // d
int32_t PixelMagnitude(int32_t x, int32_t y, int width, int height);  // m

}  // namespace trel::ff
