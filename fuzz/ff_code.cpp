// Filter Factory code: the four expressions parsed, compiled and rendered on a
// small picture, and the text rewriters (optimizer, dialect conversions, the
// Macintosh adaption) on each. The first byte picks the options and the
// picture; then come the R, G, B and A code, one per line.
#include <array>
#include <string>

#include "FuzzSupport.h"
#include "filter/CodeRewrite.h"
#include "filter/LabelShortening.h"
#include "host/ff/FFEngine.h"
#include "host/ff/FFParser.h"

namespace {

void Render(const std::array<std::string, 4>& code, uint8_t choice) {
  trel::ff::CompileError err;
  const trel::ff::CompiledFilter filter = trel::ff::CompileFilter(code, &err);
  if (!filter.valid()) return;
  const bool alpha = choice & 0x01;
  trel::ff::ImageRGBA8 source(5 + (choice >> 4 & 3), 3 + (choice >> 6), alpha);
  for (size_t i = 0; i < source.pixels.size(); ++i) source.pixels[i] = static_cast<uint8_t>(i * 37 + choice);
  trel::ff::ImageRGBA8 target(source.width, source.height, alpha);
  trel::ff::Controls controls{};
  for (int i = 0; i < 8; ++i) controls[i] = (choice * (i + 1) * 29) & 255;
  trel::ff::RenderOptions options;
  options.threads = 1;
  trel::ff::RenderFilter(filter, controls, source.view(), target.view(), options);
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
