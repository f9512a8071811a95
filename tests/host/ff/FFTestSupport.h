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

// Pixels that all differ: R = 10x + y, G = 200 - 7xy, B = 3x + 40y, A = 255 - 13x.
ImageRGBA8 PatternImage(int width, int height, bool alpha);

// Channel `z` of `code` along row y by every evaluator (the block form only
// without side effects); a disagreement fails the test.
std::vector<int32_t> EvalRow(const std::string& code, const ImageRGBA8& img, int y, int z,
                             const Controls& ctl);

// Channel 0 at (2, 1) of a 5x4 pattern with alpha, controls 0, 10, ... 70.
int32_t Eval(const std::string& code);

// The first evaluation on a 1x1 picture.
int32_t EvalOnce(const std::string& code, const Controls& ctl = {});

// The filter as the language defines it, pixel by pixel with the tree walker.
ImageRGBA8 ReferenceRender(const std::array<std::string, 4>& code, const Controls& ctl,
                           const ImageRGBA8& src);

CompiledFilter MustCompile(const std::array<std::string, 4>& code);

}  // namespace trel::ff::test
