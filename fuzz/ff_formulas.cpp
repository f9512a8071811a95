// Random formulas, always well formed, held by the engine against the tree
// evaluator: the input's bytes are the choices of a generator over the whole
// language (every operator, symbol and function, edge numbers, side effects),
// so that the compiler's folding and rewriting and the machine's fast paths
// cannot drift from the plain statement of the meaning. Each channel's
// unclamped values are compared row by row in both forms of the compiled
// program, then the whole filter's pixels on one thread and on three.
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "FuzzSupport.h"
#include "host/ff/FFEngine.h"
#include "host/ff/FFMachine.h"
#include "host/ff/FFParser.h"
#include "host/ff/FFProgram.h"
#include "host/ff/FFTreeEval.h"

namespace {

using trel::ff::Ast;
using trel::ff::ImageRGBA8;

class Generator {
 public:
  explicit Generator(trel::fuzz::Input& in) : in_(in) {}

  std::string Formula(int depth) {
    const uint8_t b = in_.Byte();
    if (depth <= 0 || b < 64) return Leaf(b);
    switch (b % 6) {
      case 0: return Unary(depth);
      case 1:
      case 2: return "(" + Formula(depth - 1) + kBinary[in_.Byte() % std::size(kBinary)] + Formula(depth - 1) + ")";
      case 3: return "(" + Formula(depth - 1) + "?" + Formula(depth - 1) + ":" + Formula(depth - 1) + ")";
      case 4: return Call(depth);
      default: return Formula(depth - 1) + "," + Formula(depth - 1);  // a sequence, kept at this level
    }
  }

 private:
  static constexpr const char* kBinary[] = {"*", "/", "%", "+",  "-",  "<<", ">>", "<",  "<=",
                                            ">", ">=", "==", "!=", "&", "^",  "|",  "&&", "||"};
  static constexpr const char* kLeaves[] = {"x", "y", "X",    "Y",    "z",  "Z",     "r",   "g",  "b",
                                            "a", "c", "i",    "u",    "v",  "d",     "m",   "M",  "D",
                                            "p", "t", "tmax", "total", "I", "xmax", "ymax", "a0", "c1"};
  struct Fn {
    const char* name;
    int arity;
  };
  static constexpr Fn kFunctions[] = {
      {"src", 3}, {"rad", 3}, {"cnv", 10}, {"ctl", 1}, {"val", 3}, {"map", 2}, {"min", 2}, {"max", 2},
      {"abs", 1}, {"add", 3}, {"sub", 3},  {"dif", 2}, {"mix", 4}, {"scl", 5}, {"sqr", 1}, {"sin", 1},
      {"cos", 1}, {"tan", 1}, {"r2x", 2},  {"r2y", 2}, {"c2d", 2}, {"c2m", 2}, {"rnd", 2}, {"rst", 1},
      {"get", 1}, {"put", 2}};

  std::string Leaf(uint8_t b) {
    switch (b % 4) {
      case 0: return kLeaves[in_.Byte() % std::size(kLeaves)];
      case 1: return std::to_string(in_.Byte() % 12);
      case 2: {
        static constexpr const char* kEdges[] = {"255", "256", "1023", "1024", "65535", "65536", "2147483647",
                                                 "(-2147483647-1)", "0x7FFFFFFF", "16777216", "100000", "-1"};
        return kEdges[in_.Byte() % std::size(kEdges)];
      }
      default: {
        uint32_t v = 0;
        for (int k = 0; k < 4; ++k) v = v << 8 | in_.Byte();
        return std::to_string(v & 0x7FFFFFFFu);
      }
    }
  }

  std::string Unary(int depth) {
    static constexpr const char* kOps[] = {"-", "!", "~", "+"};
    return kOps[in_.Byte() % 4] + Formula(depth - 1);
  }

  std::string Call(int depth) {
    const Fn& f = kFunctions[in_.Byte() % std::size(kFunctions)];
    std::string s = std::string(f.name) + "(";
    for (int k = 0; k < f.arity; ++k) {
      if (k) s += ",";
      // Neighbour reads by small offsets take the machine's row paths.
      if (f.name[0] == 's' && f.name[1] == 'r' && k < 2 && (in_.Byte() & 1))
        s += std::string(k == 0 ? "x" : "y") + "+" + std::to_string(int(in_.Byte() % 7) - 3);
      else
        s += "(" + Formula(depth - 1 - (f.arity > 3)) + ")";  // a sequence stays one argument
    }
    return s + ")";
  }

  trel::fuzz::Input& in_;
};

[[noreturn]] void Disagree(const char* what, const std::string& code, int y, int x, int32_t tree, int32_t engine) {
  std::fprintf(stderr, "%s differs from the tree evaluator for\n  %s\nat row %d, column %d: %d against %d\n", what,
               code.c_str(), y, x, int(engine), int(tree));
  std::abort();
}

// The tree walk over the whole picture, pixel, then channel order.
ImageRGBA8 TreeRender(const std::array<Ast, 4>& asts, const trel::ff::Controls& ctl, const ImageRGBA8& src) {
  ImageRGBA8 out(src.width, src.height, src.hasAlpha);
  trel::ff::RunState state;
  state.Reset();
  trel::ff::PixelEnv env;
  env.src = src.view();
  env.channels = src.hasAlpha ? 4 : 3;
  env.ctl = ctl.data();
  env.state = &state;
  for (env.y = 0; env.y < src.height; ++env.y)
    for (int x = 0; x < src.width; ++x) {
      uint8_t* p = out.at(x, env.y);
      p[3] = 255;
      for (env.z = 0; env.z < env.channels; ++env.z) {
        env.x = x;
        const int32_t v = trel::ff::EvaluateTree(asts[size_t(env.z)], asts[size_t(env.z)].root, env);
        p[env.z] = uint8_t(v < 0 ? 0 : (v > 255 ? 255 : v));
      }
    }
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  trel::fuzz::Input in(data, size);
  const uint8_t choice = in.Byte();
  Generator gen(in);
  std::array<std::string, 4> code;
  for (std::string& channel : code) channel = gen.Formula(2 + (choice >> 5));

  const bool alpha = choice & 1;
  ImageRGBA8 src(3 + (choice >> 1 & 7), 2 + (choice >> 4 & 3), alpha);
  for (size_t i = 0; i < src.pixels.size(); ++i) src.pixels[i] = uint8_t(i * 151 + choice * 7);
  if (!alpha)
    for (size_t i = 3; i < src.pixels.size(); i += 4) src.pixels[i] = 255;
  trel::ff::Controls ctl{};
  for (int i = 0; i < 8; ++i) ctl[size_t(i)] = int32_t(in.Byte());

  std::array<Ast, 4> asts;
  for (int z = 0; z < 4; ++z) {
    trel::ff::ParseError err;
    // Height and nesting limits may refuse a deep formula; that is no disagreement.
    if (!trel::ff::ParseExpression(code[size_t(z)], asts[size_t(z)], err)) return 0;
  }

  // Each channel alone, unclamped, in both forms of the program.
  const int channels = alpha ? 4 : 3;
  for (int z = 0; z < channels; ++z) {
    std::array<std::string, 4> one{"0", "0", "0", "0"};
    one[size_t(z)] = code[size_t(z)];
    const trel::ff::CompiledFilter f = trel::ff::CompileFilter(one, nullptr);
    if (!f.valid()) return 0;  // too many registers
    trel::ff::RunState treeState, orderedState, blockState;
    treeState.Reset();
    orderedState.Reset();
    blockState.Reset();
    trel::ff::PixelEnv env;
    env.src = src.view();
    env.channels = channels;
    env.ctl = ctl.data();
    env.state = &treeState;
    env.z = z;
    trel::ff::Machine ordered(*f.program(), src.view(), ctl.data(), &orderedState);
    trel::ff::Machine block(*f.program(), src.view(), ctl.data(), &blockState);
    const bool effects = f.program()->channels[z].sideEffects;
    for (env.y = 0; env.y < src.height; ++env.y) {
      const std::vector<int32_t> o = ordered.RawRow(z, env.y, true);
      const std::vector<int32_t> b = effects ? o : block.RawRow(z, env.y, false);
      for (env.x = 0; env.x < src.width; ++env.x) {
        const int32_t t = trel::ff::EvaluateTree(asts[size_t(z)], asts[size_t(z)].root, env);
        if (o[size_t(env.x)] != t) Disagree("the ordered program", code[size_t(z)], env.y, env.x, t, o[size_t(env.x)]);
        if (b[size_t(env.x)] != t) Disagree("the block program", code[size_t(z)], env.y, env.x, t, b[size_t(env.x)]);
      }
    }
  }

  // The whole filter: channels sharing a formula, state passed between them.
  const trel::ff::CompiledFilter f = trel::ff::CompileFilter(code, nullptr);
  if (!f.valid()) return 0;
  const ImageRGBA8 want = TreeRender(asts, ctl, src);
  for (int threads : {1, 3}) {
    ImageRGBA8 got(src.width, src.height, alpha);
    trel::ff::RenderOptions options;
    options.threads = threads;
    trel::ff::RenderFilter(f, ctl, src.view(), got.view(), options);
    if (got.pixels != want.pixels) {
      std::fprintf(stderr, "the rendered filter differs from the tree evaluator's on %d threads:\n", threads);
      for (const std::string& c : code) std::fprintf(stderr, "  %s\n", c.c_str());
      std::abort();
    }
  }
  return 0;
}
