// Helpers shared by the engine's tests: evaluate a formula by the tree walker
// and by both forms of the compiled program, insisting that they agree.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "FFMini.h"
#include "host/ff/FFEngine.h"
#include "host/ff/FFImage.h"
#include "host/ff/FFMachine.h"
#include "host/ff/FFParser.h"
#include "host/ff/FFProgram.h"
#include "host/ff/FFTreeEval.h"

namespace trel::ff::test {

// Pixels that all differ: R = 10x + y, G = 200 - 7xy, B = 3x + 40y, A = 255 - 13x.
inline ImageRGBA8 PatternImage(int width, int height, bool alpha) {
  ImageRGBA8 img(width, height, alpha);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      uint8_t* p = img.at(x, y);
      p[0] = uint8_t(10 * x + y);
      p[1] = uint8_t(200 - 7 * x * y);
      p[2] = uint8_t(3 * x + 40 * y);
      p[3] = alpha ? uint8_t(255 - 13 * x) : 255;
    }
  return img;
}

inline CompiledFilter MustCompile(const std::array<std::string, 4>& code) {
  CompileError err;
  CompiledFilter f = CompileFilter(code, &err);
  EXPECT_TRUE(f.valid()) << "channel " << err.channel << " at " << err.position << ": " << err.message;
  return f;
}

inline Ast MustParse(const std::string& code) {
  Ast ast;
  ParseError pe;
  EXPECT_TRUE(ParseExpression(code, ast, pe)) << code << ": " << pe.message;
  return ast;
}

inline PixelEnv EnvFor(const ImageRGBA8& img, const Controls& ctl, RunState& state) {
  state.Reset();
  PixelEnv env;
  env.src = img.view();
  env.channels = img.hasAlpha ? 4 : 3;
  env.ctl = ctl.data();
  env.state = &state;
  return env;
}

// Channel `z` of `code` along row y by every evaluator (the block form only
// without side effects); a disagreement fails the test.
inline std::vector<int32_t> EvalRow(const std::string& code, const ImageRGBA8& img, int y, int z,
                                    const Controls& ctl) {
  std::array<std::string, 4> codes{"0", "0", "0", "0"};
  codes[z] = code;
  CompiledFilter f = MustCompile(codes);
  if (!f.valid()) return {};
  Ast ast = MustParse(code);
  RunState treeState, orderedState, blockState;
  PixelEnv env = EnvFor(img, ctl, treeState);
  env.y = y;
  env.z = z;
  std::vector<int32_t> tree;
  for (env.x = 0; env.x < img.width; ++env.x) tree.push_back(EvaluateTree(ast, ast.root, env));

  orderedState.Reset();
  Machine ordered(*f.program(), img.view(), ctl.data(), &orderedState);
  EXPECT_EQ(tree, ordered.RawRow(z, y, true)) << "ordered program differs from the tree for: " << code;
  if (!f.program()->channels[z].sideEffects) {
    blockState.Reset();
    Machine block(*f.program(), img.view(), ctl.data(), &blockState);
    EXPECT_EQ(tree, block.RawRow(z, y, false)) << "block program differs from the tree for: " << code;
  }
  return tree;
}

// Channel 0 at (2, 1) of a 5x4 pattern with alpha, controls 0, 10, ... 70.
inline int32_t Eval(const std::string& code) {
  static const ImageRGBA8 img = PatternImage(5, 4, true);
  std::vector<int32_t> row = EvalRow(code, img, 1, 0, {0, 10, 20, 30, 40, 50, 60, 70});
  return row.size() > 2 ? row[2] : INT32_MIN;
}

// The first evaluation on a 1x1 picture.
inline int32_t EvalOnce(const std::string& code, const Controls& ctl = {}) {
  std::vector<int32_t> row = EvalRow(code, PatternImage(1, 1, false), 0, 0, ctl);
  return row.empty() ? INT32_MIN : row[0];
}

// The filter as the language defines it, pixel by pixel with the tree walker.
inline ImageRGBA8 ReferenceRender(const std::array<std::string, 4>& code, const Controls& ctl,
                                  const ImageRGBA8& src) {
  Ast asts[4];
  for (int z = 0; z < 4; ++z) asts[z] = MustParse(code[z]);
  ImageRGBA8 out(src.width, src.height, src.hasAlpha);
  RunState state;
  PixelEnv env = EnvFor(src, ctl, state);
  for (env.y = 0; env.y < src.height; ++env.y)
    for (int x = 0; x < src.width; ++x) {
      uint8_t* p = out.at(x, env.y);
      p[3] = 255;
      for (env.z = 0; env.z < env.channels; ++env.z) {
        env.x = x;
        int32_t v = EvaluateTree(asts[env.z], asts[env.z].root, env);
        p[env.z] = uint8_t(v < 0 ? 0 : (v > 255 ? 255 : v));
      }
    }
  return out;
}

// The engine's picture; nothing when it refuses the code or stops.
inline std::optional<ImageRGBA8> EngineRender(const std::array<std::string, 4>& code, const Controls& ctl,
                                              const ImageRGBA8& src, int threads = 1) {
  const CompiledFilter f = CompileFilter(code, nullptr);
  ImageRGBA8 out(src.width, src.height, src.hasAlpha);
  RenderOptions options;
  options.threads = threads;
  if (!f.valid() || RenderFilter(f, ctl, src.view(), out.view(), options) != RenderStatus::Done) return std::nullopt;
  return out;
}

// The same by the small templates' interpreter.
inline std::optional<ImageRGBA8> MiniRender(const std::array<std::string, 4>& code, const Controls& ctl,
                                            const ImageRGBA8& src) {
  auto m = std::make_unique<FFMini>();
  const char* texts[4];
  for (int z = 0; z < 4; ++z) texts[z] = code[size_t(z)].c_str();
  if (!FFMiniCompile(m.get(), texts)) return std::nullopt;
  ImageRGBA8 out(src.width, src.height, src.hasAlpha);
  const FFMiniPicture from{const_cast<uint8_t*>(src.pixels.data()), src.width, src.height, src.width * 4, 4};
  const FFMiniPicture to{out.pixels.data(), out.width, out.height, out.width * 4, 4};
  if (FFMiniRender(m.get(), ctl.data(), &from, src.hasAlpha, &to, nullptr, nullptr) != kFFMiniDone)
    return std::nullopt;
  return out;
}

}  // namespace trel::ff::test
