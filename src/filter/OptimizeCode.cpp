// The code optimizer. It works on text, left to right, one position at a time,
// with no idea of tokens: that is its documented character, and the order of
// the steps decides what is replaced (a match that was tried before the blanks
// to its right were removed has passed by for good).
#include <string_view>

#include "filter/CodeRewrite.h"

namespace trel {
namespace {

bool At(const std::string& s, size_t p, std::string_view text) {
  return s.compare(p, text.size(), text) == 0;
}

// Replaces `from` at p by `to` when it stands there; true if it did.
bool ReplaceAt(std::string& s, size_t p, std::string_view from, std::string_view to) {
  if (!At(s, p, from)) return false;
  s.replace(p, from.size(), to);
  return true;
}

// Clean-up at p, again and again until nothing applies.
void CleanUpAt(std::string& s, size_t p) {
  for (;;) {
    if (ReplaceAt(s, p, "\\r", "") || ReplaceAt(s, p, "\\n", "")) continue;
    if (p < s.size() && static_cast<unsigned char>(s[p]) <= 9) {
      s.erase(p, 1);
      if (s.empty() || p >= s.size()) return;
      continue;
    }
    if (p < s.size() && s[p] == 'T') s.replace(p, 1, "total");
    return;
  }
}

void RewritesAt(std::string& s, size_t p, int channel) {
  // Reading the channel being computed is just `c`; reading a fixed channel is
  // only `c` in that channel's own code.
  if (!ReplaceAt(s, p, "src(x,y,z)", "c")) ReplaceAt(s, p, "src(x,y,p)", "c");
  if (channel == 1) ReplaceAt(s, p, "src(x,y,0)", "c");
  if (channel == 2) ReplaceAt(s, p, "src(x,y,1)", "c");
  if (channel == 3) ReplaceAt(s, p, "src(x,y,2)", "c");
  if (!ReplaceAt(s, p, "rad(d,m,z)", "c")) ReplaceAt(s, p, "rad(d,m,p)", "c");
  if (channel == 1) ReplaceAt(s, p, "rad(d,m,0)", "c");
  if (channel == 2) ReplaceAt(s, p, "rad(d,m,1)", "c");
  if (channel == 3) ReplaceAt(s, p, "rad(d,m,2)", "c");
  ReplaceAt(s, p, "sqr(x*x+y*y)", "c2m(x,y)");
  ReplaceAt(s, p, "sqr(m*m+d*d)", "c2m(m,d)");
  ReplaceAt(s, p, "sqr(X*X+Y*Y)", "c2m(X,Y)");
  ReplaceAt(s, p, "(76*r+150*g+29*b)/256", "i");
}

}  // namespace

std::string OptimizeChannel(std::string s, int channel, bool noFFOptimize) {
  for (size_t p = 0;; ++p) {
    for (;;) {
      CleanUpAt(s, p);
      if (noFFOptimize) break;
      if (p < s.size() && s[p] == ' ') {
        s.erase(p, 1);
        continue;  // the blank's neighbour is now at p: clean up again
      }
      RewritesAt(s, p, channel);
      break;
    }
    if (p + 1 >= s.size()) return s;
  }
}

void OptimizeCode(FFFilter& f, const FilterOptions& options) {
  f.codeR = OptimizeChannel(std::move(f.codeR), 1, options.noFFOptimize);
  f.codeG = OptimizeChannel(std::move(f.codeG), 2, options.noFFOptimize);
  f.codeB = OptimizeChannel(std::move(f.codeB), 3, options.noFFOptimize);
  f.codeA = OptimizeChannel(std::move(f.codeA), 4, options.noFFOptimize);
}

}  // namespace trel
