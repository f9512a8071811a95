// Helpers shared by the engine's tests: evaluate a formula by the tree walker
// and by both forms of the compiled program, insisting that they agree.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "host/ff/FFEngine.h"
#include "host/ff/FFImage.h"

namespace trel::ff::test {

// A small picture whose pixels all differ: R = 10*x + y, G = 200 - 7*x*y,
// B = 3*x + 40*y, A = 255 - 13*x.
ImageRGBA8 PatternImage(int width, int height, bool alpha);

// Channel `z` of `code` along row y of `img`, by every evaluator (the block
// form only when the code has no side effects); a disagreement fails the test.
std::vector<int32_t> EvalRow(const std::string& code, const ImageRGBA8& img, int y, int z,
                             const Controls& ctl);

// The value of `code` as channel 0 at (2, 1) of a 5x4 pattern with alpha, with
// controls 0, 10, 20, ... 70.
int32_t Eval(const std::string& code);

// The value of `code` on a 1x1 picture: a formula with side effects gives the
// result of its first evaluation.
int32_t EvalOnce(const std::string& code, const Controls& ctl = {});

// The filter as the language defines it, pixel by pixel with the tree walker.
ImageRGBA8 ReferenceRender(const std::array<std::string, 4>& code, const Controls& ctl,
                           const ImageRGBA8& src);

// Compiles or fails the test.
CompiledFilter MustCompile(const std::array<std::string, 4>& code);

}  // namespace trel::ff::test
