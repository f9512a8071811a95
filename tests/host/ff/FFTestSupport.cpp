#include "FFTestSupport.h"

#include <gtest/gtest.h>

#include "host/ff/FFMachine.h"
#include "host/ff/FFParser.h"
#include "host/ff/FFProgram.h"
#include "host/ff/FFTreeEval.h"

namespace trel::ff::test {

ImageRGBA8 PatternImage(int width, int height, bool alpha) {
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

CompiledFilter MustCompile(const std::array<std::string, 4>& code) {
  CompileError err;
  CompiledFilter f = CompileFilter(code, &err);
  EXPECT_TRUE(f.valid()) << "channel " << err.channel << " at " << err.position << ": "
                         << err.message;
  return f;
}

std::vector<int32_t> EvalRow(const std::string& code, const ImageRGBA8& img, int y, int z,
                             const Controls& ctl) {
  std::array<std::string, 4> codes{"0", "0", "0", "0"};
  codes[z] = code;
  CompiledFilter f = MustCompile(codes);
  if (!f.valid()) return {};
  Ast ast;
  ParseError pe;
  EXPECT_TRUE(ParseExpression(code, ast, pe));

  RunState treeState;
  treeState.Reset();
  PixelEnv env;
  env.src = img.view();
  env.channels = img.hasAlpha ? 4 : 3;
  env.y = y;
  env.z = z;
  env.ctl = ctl.data();
  env.state = &treeState;
  std::vector<int32_t> tree;
  for (int x = 0; x < img.width; ++x) {
    env.x = x;
    tree.push_back(EvaluateTree(ast, ast.root, env));
  }

  RunState orderedState;
  orderedState.Reset();
  Machine ordered(*f.program(), img.view(), ctl.data(), &orderedState);
  std::vector<int32_t> one = ordered.RawRow(z, y, true);
  EXPECT_EQ(tree, one) << "ordered program differs from the tree for: " << code;

  if (!f.program()->channels[z].sideEffects) {
    RunState blockState;
    blockState.Reset();
    Machine block(*f.program(), img.view(), ctl.data(), &blockState);
    std::vector<int32_t> many = block.RawRow(z, y, false);
    EXPECT_EQ(tree, many) << "block program differs from the tree for: " << code;
  }
  return tree;
}

int32_t Eval(const std::string& code) {
  static const ImageRGBA8 img = PatternImage(5, 4, true);
  const Controls ctl{0, 10, 20, 30, 40, 50, 60, 70};
  std::vector<int32_t> row = EvalRow(code, img, 1, 0, ctl);
  return row.size() > 2 ? row[2] : INT32_MIN;
}

int32_t EvalOnce(const std::string& code, const Controls& ctl) {
  ImageRGBA8 img = PatternImage(1, 1, false);
  std::vector<int32_t> row = EvalRow(code, img, 0, 0, ctl);
  return row.empty() ? INT32_MIN : row[0];
}

ImageRGBA8 ReferenceRender(const std::array<std::string, 4>& code, const Controls& ctl,
                           const ImageRGBA8& src) {
  Ast asts[4];
  for (int z = 0; z < 4; ++z) {
    ParseError pe;
    EXPECT_TRUE(ParseExpression(code[z], asts[z], pe)) << pe.message;
  }
  ImageRGBA8 out(src.width, src.height, src.hasAlpha);
  RunState state;
  state.Reset();
  PixelEnv env;
  env.src = src.view();
  env.channels = src.hasAlpha ? 4 : 3;
  env.ctl = ctl.data();
  env.state = &state;
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x) {
      uint8_t* p = out.at(x, y);
      p[3] = 255;
      for (int z = 0; z < env.channels; ++z) {
        env.x = x;
        env.y = y;
        env.z = z;
        int32_t v = EvaluateTree(asts[z], asts[z].root, env);
        p[z] = uint8_t(v < 0 ? 0 : (v > 255 ? 255 : v));
      }
    }
  return out;
}

}  // namespace trel::ff::test
