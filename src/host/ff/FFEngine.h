// The Filter Factory engine: compile the four expressions of a filter once,
// then run them over pictures as often as needed.
//
//   trel::ff::CompileError err;
//   auto filter = trel::ff::CompileFilter({"r", "g", "255-b", "a"}, &err);
//   if (!filter.valid()) report(err.channel, err.position, err.message);
//   trel::ff::RenderFilter(filter, controls, source.view(), target.view(), {});
//
// Rendering reads only the source and writes only the target (the two may be
// the same memory: the source is then copied first). Pixels are computed as if
// row by row, left to right, channels R, G, B, A; filters without put, rnd or
// rst are spread over all cores, with the same result.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/ff/FFImage.h"

namespace trel::ff {

struct Program;

struct CompileError {
  int channel = -1;     // 0..3 for R, G, B, A; -1 when there is no error
  size_t position = 0;  // 0-based character position in that channel's code
  std::string message;
};

// A place where the code uses something that Trel accepts and a genuine
// Filter Factory host refuses: there the host computes 0 for the whole channel.
// A warning, not a fault; the filter runs in Trel.
struct CompatWarning {
  int channel = 0;      // 0..3 for R, G, B, A
  size_t position = 0;  // 0-based character position in that channel's code
  size_t length = 1;
  std::string message;
};

class CompiledFilter {
 public:
  bool valid() const { return program_ != nullptr; }
  // Where a genuine Filter Factory host would refuse the code, channel by
  // channel in text order; also filled when a later channel fails to compile.
  const std::vector<CompatWarning>& compatWarnings() const { return compat_; }
  // True when the channels that run on such a picture have no side effects,
  // so rows may be computed in any order.
  bool parallel(bool hasAlpha) const;
  const Program* program() const { return program_.get(); }

 private:
  friend CompiledFilter CompileFilter(const std::array<std::string, 4>&, CompileError*);
  std::shared_ptr<const Program> program_;
  std::vector<CompatWarning> compat_;
};

// Compiles the R, G, B and A expressions. On a fault the result is not valid
// and `err` (if given) names the first faulty channel, the position and why.
CompiledFilter CompileFilter(const std::array<std::string, 4>& code, CompileError* err);

// The eight slider values, 0..255; a value outside reads as the nearest of them.
using Controls = std::array<int32_t, 8>;

struct RenderOptions {
  int threads = 0;  // 0: all cores (one for small pictures); 1: the calling thread only
  // Called on the calling thread with the number of rows finished so far.
  std::function<void(int done, int total)> progress;
  // Polled on the calling thread between rows; true stops the run.
  std::function<bool()> cancel;
};

enum class RenderStatus { Done, Cancelled, Invalid };

// Runs `filter` over `src` into `dst`, which must have the same size. The
// picture has alpha (and Z = 4) when src.hasAlpha; without it the A expression
// does not run and the fourth byte of each target pixel becomes 255. Invalid
// means a filter that did not compile or pictures that do not fit; then `dst`
// is untouched.
RenderStatus RenderFilter(const CompiledFilter& filter, const Controls& controls,
                          const ConstImageView& src, const ImageView& dst,
                          const RenderOptions& options = {});

}  // namespace trel::ff
