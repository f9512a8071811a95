// Filter Factory code: the four expressions parsed, compiled and rendered on a
// small picture, and the text rewriters (optimizer, dialect conversions, the
// Macintosh adaption) on each. The first byte picks the options and the
// picture; then come the R, G, B and A code, one per line. The compact
// interpreter of the small plugin templates runs the same code and must agree
// with the engine on what it accepts and on every pixel.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "FuzzSupport.h"
#include "filter/CodeRewrite.h"
#include "filter/LabelShortening.h"
#include "host/ff/FFEngine.h"
#include "host/ff/FFParser.h"
#include "plughost/ffmini/FFMini.h"

namespace {

// What a plugin reads: 0-terminated fields of at most kFFMiniCodeSize bytes.
bool FitsAField(const std::array<std::string, 4>& code) {
  for (const std::string& text : code)
    if (text.size() >= kFFMiniCodeSize || text.find('\0') != std::string::npos) return false;
  return true;
}

void CompareWithMini(const std::array<std::string, 4>& code, bool engineAccepts, const trel::ff::Controls& controls,
                     const trel::ff::ImageRGBA8& source, const trel::ff::ImageRGBA8& target) {
  static const auto mini = std::make_unique<FFMini>();
  const char* texts[4] = {code[0].c_str(), code[1].c_str(), code[2].c_str(), code[3].c_str()};
  const bool accepts = FFMiniCompile(mini.get(), texts) == 1;
  if (accepts != engineAccepts) {
    std::fprintf(stderr, "the compact interpreter %s what the engine %s\n", accepts ? "accepts" : "refuses",
                 engineAccepts ? "accepts" : "refuses");
    std::abort();
  }
  if (!accepts) return;
  trel::ff::ImageRGBA8 out(source.width, source.height, source.hasAlpha);
  const FFMiniPicture from{const_cast<uint8_t*>(source.pixels.data()), source.width, source.height,
                           source.width * 4, 4};
  const FFMiniPicture to{out.pixels.data(), out.width, out.height, out.width * 4, 4};
  int32_t ctl[8];
  for (int i = 0; i < 8; ++i) ctl[i] = controls[size_t(i)];
  if (FFMiniRender(mini.get(), ctl, &from, source.hasAlpha, &to, nullptr, nullptr) != kFFMiniDone ||
      out.pixels != target.pixels) {
    std::fprintf(stderr, "the compact interpreter's pixels differ from the engine's\n");
    std::abort();
  }
}

void Render(const std::array<std::string, 4>& code, uint8_t choice) {
  trel::ff::CompileError err;
  const trel::ff::CompiledFilter filter = trel::ff::CompileFilter(code, &err);
  const bool alpha = choice & 0x01;
  trel::ff::ImageRGBA8 source(5 + (choice >> 4 & 3), 3 + (choice >> 6), alpha);
  for (size_t i = 0; i < source.pixels.size(); ++i) source.pixels[i] = static_cast<uint8_t>(i * 37 + choice);
  trel::ff::ImageRGBA8 target(source.width, source.height, alpha);
  trel::ff::Controls controls{};
  for (int i = 0; i < 8; ++i) controls[i] = (choice * (i + 1) * 29) & 255;
  if (!filter.valid()) {
    if (FitsAField(code)) CompareWithMini(code, false, controls, source, target);
    return;
  }
  trel::ff::RenderOptions options;
  options.threads = 1;
  trel::ff::RenderFilter(filter, controls, source.view(), target.view(), options);
  if (FitsAField(code)) CompareWithMini(code, true, controls, source, target);
  // Source and target in the same memory take the copying path.
  if (choice & 0x02) trel::ff::RenderFilter(filter, controls, source.view(), source.view(), options);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  trel::fuzz::Input in(data, size);
  const uint8_t choice = in.Byte();
  std::array<std::string, 4> code;
  for (auto& channel : code) channel = std::string(in.Part('\n'));

  for (const auto& channel : code) {
    trel::ff::Ast ast;
    trel::ff::ParseError err;
    trel::ff::ParseExpression(channel, ast, err);
  }
  Render(code, choice);

  std::array<std::string, 4> optimized, photoshop;
  for (int i = 0; i < 4; ++i) {
    optimized[i] = trel::OptimizeChannel(code[i], i + 1, choice & 0x04);
    photoshop[i] = trel::Correctprmcode(code[i]);
    trel::CorrectcodeChannel(code[i]);
    trel::CorrectCodeForMacChannel(code[i]);
    trel::SwapMixArguments(code[i]);
    trel::ReplaceAwithI(code[i]);
  }
  // What the editor and the converter run next: the rewritten code compiled.
  if (choice & 0x08) {
    Render(optimized, choice);
    Render(photoshop, choice);
  }
  return 0;
}
