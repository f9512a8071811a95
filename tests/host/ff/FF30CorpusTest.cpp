// Every filter of the corpus that genuine Filter Factory 3.0 ran (../shared/ff30,
// beside the checkout) through the engine, the tree evaluator and the
// interpreter of the small templates: each must give the original's bytes.
//
// What is not compared, and why:
// - pixels where `cnv` reads across the picture's border, or `rad` reads a
//   channel the picture does not have: the original reads memory beyond the
//   picture there (found per pixel by walking the tree);
// - channels the original refuses but Trel accepts on purpose (the compat
//   warnings of the compiled filter: `sqrt`, a comma inside brackets). There the
//   original gives 0 in the channel, which this test checks, so that every
//   warning is a true refusal.
// A channel that Trel refuses too is compared as the original's 0.
//
// The folder is found through TREL_FF30_DIR (environment, else the build's
// default). When it is missing the test fails, unless TREL_FF30_OPTIONAL=1
// says that this checkout has no corpus beside it.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "FFTestSupport.h"
#include "filter/CodeRewrite.h"
#include "host/ff/FFEngine.h"
#include "host/ff/FFMath.h"
#include "host/ff/FFParser.h"
#include "host/ff/FFTreeEval.h"

#ifndef TREL_FF30_DIR
#define TREL_FF30_DIR ""
#endif

namespace trel::ff::test {
namespace {

namespace fs = std::filesystem;
using Code = std::array<std::string, 4>;

struct Case {
  int index = 0;
  Code code;
  Controls ctl{};
  std::vector<uint8_t> rgb;  // width * height * 3, rows top first
};

struct Corpus {
  ImageRGBA8 picture;
  std::vector<Case> cases;
  std::string problem;  // why it could not be read
};

uint32_t Le(const std::vector<uint8_t>& b, size_t at, int bytes) {
  uint32_t v = 0;
  for (int k = bytes - 1; k >= 0; --k) v = v << 8 | b[at + size_t(k)];
  return v;
}

// An uncompressed 24-bit BMP, bottom-up or top-down, as a picture without alpha.
std::optional<ImageRGBA8> ReadBmp24(const std::vector<uint8_t>& b) {
  if (b.size() < 54 || b[0] != 'B' || b[1] != 'M' || Le(b, 28, 2) != 24 || Le(b, 30, 4) != 0) return std::nullopt;
  const int32_t w = int32_t(Le(b, 18, 4)), h = int32_t(Le(b, 22, 4));
  const int32_t rows = h < 0 ? -h : h;
  if (w <= 0 || w > 4096 || rows <= 0 || rows > 4096) return std::nullopt;
  const size_t offset = Le(b, 10, 4), stride = (size_t(w) * 3 + 3) / 4 * 4;
  if (offset > b.size() || (b.size() - offset) / stride < size_t(rows)) return std::nullopt;
  ImageRGBA8 img(w, rows, false);
  for (int y = 0; y < rows; ++y) {
    const uint8_t* row = b.data() + offset + stride * size_t(h < 0 ? y : rows - 1 - y);
    for (int x = 0; x < w; ++x) {
      uint8_t* p = img.at(x, y);
      p[0] = row[x * 3 + 2];
      p[1] = row[x * 3 + 1];
      p[2] = row[x * 3];
      p[3] = 255;
    }
  }
  return img;
}

std::vector<uint8_t> Base64(const std::string& text) {
  static const std::string digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::vector<uint8_t> out;
  uint32_t acc = 0;
  int bits = 0;
  for (char ch : text) {
    const size_t v = digits.find(ch);
    if (v == std::string::npos) continue;
    acc = acc << 6 | uint32_t(v);
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      out.push_back(uint8_t(acc >> bits));
    }
  }
  return out;
}

const Corpus& LoadCorpus() {
  static const Corpus corpus = [] {
    Corpus c;
    const char* env = std::getenv("TREL_FF30_DIR");
    const fs::path dir = env && *env ? env : TREL_FF30_DIR;
    std::ifstream bmp(dir / "in.bmp", std::ios::binary), lines(dir / "cases.jsonl");
    if (!bmp || !lines) {
      c.problem = "no Filter Factory 3.0 corpus at " + dir.string();
      return c;
    }
    auto picture = ReadBmp24(std::vector<uint8_t>(std::istreambuf_iterator<char>(bmp), {}));
    if (!picture) {
      c.problem = (dir / "in.bmp").string() + " is not a 24-bit BMP";
      return c;
    }
    c.picture = std::move(*picture);
    std::string line;
    for (int index = 0; std::getline(lines, line); ++index) {
      if (line.empty()) continue;
      const auto j = nlohmann::json::parse(line, nullptr, false);
      if (j.is_discarded() || !j.is_object()) {
        c.problem = "line " + std::to_string(index + 1) + " of cases.jsonl is not a JSON object";
        return c;
      }
      Case k;
      k.index = index;
      const char* keys[4] = {"R", "G", "B", "A"};
      for (int z = 0; z < 4; ++z) k.code[size_t(z)] = j.value(keys[z], std::string());
      const auto ctl = j.value("ctl", std::vector<int32_t>());
      for (size_t i = 0; i < 8 && i < ctl.size(); ++i) k.ctl[i] = ctl[i];
      k.rgb = Base64(j.value("ff30", std::string()));
      if (ctl.size() != 8 || k.rgb.size() != size_t(c.picture.width) * size_t(c.picture.height) * 3) {
        c.problem = "case " + std::to_string(index) + " has the wrong number of controls or bytes";
        return c;
      }
      c.cases.push_back(std::move(k));
    }
    return c;
  }();
  return corpus;
}

// Where the original's value is not defined.
struct Undefined {
  int width, height;
  std::vector<bool> bits = std::vector<bool>(size_t(width) * size_t(height) * 4);
  std::vector<bool>::reference operator()(int x, int y, int z) {
    return bits[(size_t(y) * size_t(width) + size_t(x)) * 4 + size_t(z)];
  }
};

// The tree walk of the language (as EvaluateTree does it), noting whether a
// `cnv` at the border or a `rad` of a missing channel ran.
int32_t WalkNoting(const Ast& ast, uint32_t node, const PixelEnv& e, bool& undefined) {
  const Node& n = ast.at(node);
  int32_t v[10] = {};
  for (int k = 0; k < n.kidCount && k < 10; ++k) v[k] = WalkNoting(ast, ast.kid(n, k), e, undefined);
  if (n.kind == NodeKind::Call) {
    const Fn f = static_cast<Fn>(n.code);
    if (f == Fn::Cnv && (e.x == 0 || e.y == 0 || e.x == e.src.width - 1 || e.y == e.src.height - 1))
      undefined = true;
    if (f == Fn::Rad && (v[2] < 0 || v[2] >= e.channels)) undefined = true;
  }
  return ApplyNode(n, v, e);
}

struct Channels {
  Code run;                    // what the evaluators get: a refused channel becomes "0"
  std::array<bool, 4> kept{};  // Trel's extension: not compared, the original must give 0
  std::array<bool, 4> refused{};
  std::array<std::string, 4> why;
};

// The corpus's filters reached the original as Trel compiles an AFS file:
// through the optimizer (it turned `rad(d,m,z)` into `c`, for one).
Channels Prepare(const Case& k) {
  Channels c;
  for (int z = 0; z < 4; ++z) c.run[size_t(z)] = OptimizeChannel(k.code[size_t(z)], z + 1, false);
  for (int z = 0; z < 4; ++z) {
    Ast ast;
    ParseError pe;
    std::vector<CompatNote> notes;
    if (!ParseExpression(c.run[size_t(z)], ast, pe, &notes)) {
      c.run[size_t(z)] = "0";
      c.refused[size_t(z)] = true;
      c.why[size_t(z)] = pe.message;
    } else if (!notes.empty()) {
      c.kept[size_t(z)] = true;
      c.why[size_t(z)] = notes.front().message;
    }
  }
  return c;
}

// The tree evaluator over the picture, in the language's order, noting the
// undefined pixels it met.
ImageRGBA8 TreeRender(const Code& code, const Controls& ctl, const ImageRGBA8& src, Undefined& undefined) {
  Ast asts[4];
  for (int z = 0; z < 4; ++z) asts[z] = MustParse(code[size_t(z)]);
  ImageRGBA8 out(src.width, src.height, src.hasAlpha);
  RunState state;
  PixelEnv env = EnvFor(src, ctl, state);
  for (env.y = 0; env.y < src.height; ++env.y)
    for (int x = 0; x < src.width; ++x) {
      uint8_t* p = out.at(x, env.y);
      p[3] = 255;
      for (env.z = 0; env.z < env.channels; ++env.z) {
        env.x = x;
        bool u = false;
        const int32_t v = WalkNoting(asts[env.z], asts[env.z].root, env, u);
        if (u) undefined(x, env.y, env.z) = true;
        p[env.z] = uint8_t(v < 0 ? 0 : (v > 255 ? 255 : v));
      }
    }
  return out;
}

std::string Describe(const Case& k) {
  std::ostringstream s;
  s << "case " << k.index << "\n  R: " << k.code[0] << "\n  G: " << k.code[1] << "\n  B: " << k.code[2]
    << "\n  A: " << k.code[3] << "\n  ctl:";
  for (int32_t v : k.ctl) s << ' ' << v;
  return s.str();
}

// The first compared pixel where `got` differs from the original, as text.
std::optional<std::string> FirstDifference(const Case& k, const Channels& c, Undefined& undefined,
                                           const ImageRGBA8& got) {
  for (int y = 0; y < got.height; ++y)
    for (int x = 0; x < got.width; ++x)
      for (int z = 0; z < 3; ++z) {
        if (c.kept[size_t(z)] || undefined(x, y, z)) continue;
        const uint8_t want = k.rgb[(size_t(y) * size_t(got.width) + size_t(x)) * 3 + size_t(z)];
        if (got.at(x, y)[z] != want)
          return "pixel (" + std::to_string(x) + ", " + std::to_string(y) + ") channel " + "RGB"[z] +
                 ": original " + std::to_string(want) + ", Trel " + std::to_string(got.at(x, y)[z]);
      }
  return std::nullopt;
}

class FF30Corpus : public ::testing::Test {
 protected:
  void SetUp() override {
    const Corpus& c = LoadCorpus();
    if (c.problem.empty()) return;
    const char* optional = std::getenv("TREL_FF30_OPTIONAL");
    if (optional && std::string(optional) == "1") GTEST_SKIP() << c.problem << " (TREL_FF30_OPTIONAL=1)";
    FAIL() << c.problem << "; set TREL_FF30_DIR, or TREL_FF30_OPTIONAL=1 where there is no corpus";
  }
};

TEST_F(FF30Corpus, EveryEvaluatorGivesTheOriginalsBytes) {
  const Corpus& corpus = LoadCorpus();
  ASSERT_GT(corpus.cases.size(), 1000u);
  int failures = 0, kept = 0, refused = 0, undefinedCount = 0, compared = 0;
  for (const Case& k : corpus.cases) {
    const Channels c = Prepare(k);
    Undefined undefined{corpus.picture.width, corpus.picture.height};
    const ImageRGBA8 tree = TreeRender(c.run, k.ctl, corpus.picture, undefined);
    for (int z = 0; z < 3; ++z) {
      kept += c.kept[size_t(z)];
      refused += c.refused[size_t(z)];
      if (std::getenv("TREL_FF30_VERBOSE") && (c.kept[size_t(z)] || c.refused[size_t(z)]))
        std::cout << "case " << k.index << " " << "RGB"[z] << (c.kept[size_t(z)] ? " kept: " : " refused: ")
                  << c.why[size_t(z)] << "\n    " << k.code[size_t(z)] << "\n";
      if (!c.kept[size_t(z)])
        for (int y = 0; y < undefined.height; ++y)
          for (int x = 0; x < undefined.width; ++x) ++(undefined(x, y, z) ? undefinedCount : compared);
    }
    const ImageRGBA8 plainTree = ReferenceRender(c.run, k.ctl, corpus.picture);
    const auto engine1 = EngineRender(c.run, k.ctl, corpus.picture, 1);
    const auto engineAll = EngineRender(c.run, k.ctl, corpus.picture, 4);
    const auto mini = MiniRender(c.run, k.ctl, corpus.picture);
    if (!engine1 || !engineAll || !mini) {
      ADD_FAILURE() << Describe(k) << "\n  the engine or the templates' interpreter refused it";
      ++failures;
    }
    const std::pair<const char*, const ImageRGBA8*> runs[] = {
        {"the tree evaluator", &plainTree},
        {"the tree walk that notes undefined reads", &tree},
        {"the engine on one thread", engine1 ? &*engine1 : nullptr},
        {"the engine on four threads", engineAll ? &*engineAll : nullptr},
        {"the templates' interpreter", mini ? &*mini : nullptr}};
    for (const auto& [who, img] : runs) {
      if (!img) continue;
      if (const auto diff = FirstDifference(k, c, undefined, *img)) {
        ADD_FAILURE() << Describe(k) << "\n  " << who << ": " << *diff;
        ++failures;
        break;  // one report per case is enough to find it
      }
    }
    // Where Trel keeps an extension, the original refused the channel: all 0.
    for (int z = 0; z < 3; ++z) {
      if (!c.kept[size_t(z)]) continue;
      for (size_t p = size_t(z); p < k.rgb.size(); p += 3)
        if (k.rgb[p] != 0) {
          ADD_FAILURE() << Describe(k) << "\n  channel " << "RGB"[z] << " is kept as an extension ("
                        << c.why[size_t(z)] << ") but the original accepted it";
          ++failures;
          break;
        }
    }
    if (failures > 40) FAIL() << "more than 40 failures; stopping";
  }
  std::cout << corpus.cases.size() << " filters: " << compared << " channel values compared, " << undefinedCount
            << " undefined in the original, " << kept << " channels kept as Trel's extensions, " << refused
            << " refused by both\n";
}

// Two filters people wrote that depend on measured behaviour, written out by
// hand: a displacement by a logical shift (a negative difference becomes a
// huge offset, so the read clamps to the far edge), and `a` without alpha.
TEST(FF30Behaviour, FiltersThatDependOnTheMeasuredRulesRenderAsTheOriginal) {
  ImageRGBA8 src(29, 17, false);
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x) {
      uint8_t* p = src.at(x, y);
      p[0] = uint8_t(x * 9 + y * 5);
      p[1] = uint8_t(120 + (x * 7 ^ y * 3));
      p[2] = uint8_t(255 - y * 13 + x);
      p[3] = 255;
    }
  const Controls ctl{};
  auto clampTo = [](int64_t v, int hi) { return int(v < 0 ? 0 : (v > hi ? hi : v)); };

  const std::string shift = "src(x+((r-g)>>3), y+((b-g)>>3), z)";
  ImageRGBA8 shifted(src.width, src.height, false);
  for (int y = 0; y < src.height; ++y)
    for (int x = 0; x < src.width; ++x) {
      const uint8_t* p = src.at(x, y);
      const int32_t dx = int32_t(uint32_t(p[0] - p[1]) >> 3), dy = int32_t(uint32_t(p[2] - p[1]) >> 3);
      const uint8_t* from = src.at(clampTo(int64_t(int32_t(uint32_t(x) + uint32_t(dx))), src.width - 1),
                                   clampTo(int64_t(int32_t(uint32_t(y) + uint32_t(dy))), src.height - 1));
      uint8_t* o = shifted.at(x, y);
      for (int z = 0; z < 3; ++z) o[z] = from[z];
      o[3] = 255;
    }

  const std::string alpha = "a>0 ? 255-a : r";
  ImageRGBA8 unchanged = src;  // a reads 0, so R keeps r

  const std::pair<Code, const ImageRGBA8*> filters[] = {{{shift, shift, shift, "a"}, &shifted},
                                                        {{alpha, "g", "b", "a"}, &unchanged}};
  for (const auto& [code, want] : filters) {
    EXPECT_EQ(ReferenceRender(code, ctl, src).pixels, want->pixels) << code[0];
    // The engine on one thread and on four, then the templates' interpreter.
    for (const auto& got :
         {EngineRender(code, ctl, src, 1), EngineRender(code, ctl, src, 4), MiniRender(code, ctl, src)}) {
      ASSERT_TRUE(got) << code[0];
      EXPECT_EQ(got->pixels, want->pixels) << code[0];
    }
  }
}

}  // namespace
}  // namespace trel::ff::test
