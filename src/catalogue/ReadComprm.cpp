// Premiere plugins have no dependable resource layout, so the file is searched
// in chunks, the likeliest region first: just behind the resource section, then
// the end of the file, then ever earlier slices.
#include <cmath>
#include <optional>

#include "catalogue/ByteView.h"
#include "catalogue/PluginIdentification.h"
#include "catalogue/FileWindow.h"

namespace trel {
namespace {

// No Premiere plugin comes near this; a bigger chunk of a damaged or foreign
// file is passed over instead of being read into memory whole.
constexpr int64_t kMaxChunk = 64LL * 1024 * 1024;
// A category near a chunk's end makes the chunk grow by 100 bytes and be read
// again; this bounds how often that may happen to one chunk.
constexpr int kMaxRegrowths = 1000;

struct Found {
  std::string& category;
  std::string& title;
  int32_t& categoryOffset;
  int32_t& maximumLength;
};

// The 1-based byte b[i], or 0 outside the chunk (the chunk is read as if the
// file went on in zeros).
uint8_t At(const ByteView& b, int64_t i) { return b.u8(i - 1).value_or(0); }

std::string ZText(const ByteView& b, int64_t i) { return b.zstring(i - 1, 256).value_or(""); }

// A transition names itself twice; the second name follows after padding and
// sometimes short fields, which this skips.
std::string TransitionTitle(const ByteView& b, int64_t i) {
  const std::string first = ZText(b, i + 8);
  int64_t j = i + 8 + static_cast<int64_t>(first.size());
  const int64_t last = static_cast<int64_t>(b.size());
  std::string title;
  do {
    for (int walked = 1; walked <= 256; ++walked) {
      ++j;
      if (At(b, j) != 0) {
        if (walked > 2) break;
        j += 5;
      }
    }
    title = ZText(b, j);
    j += static_cast<int64_t>(title.size());
  } while (title.size() <= 3 && j <= last);
  if (title.size() > first.size()) title = first;
  return title;
}

// Searches the chunk [start, end) and fills what it finds into `out`.
void SearchChunk(const FileWindow& file, int64_t start, int64_t end, Found& out) {
  for (int regrowth = 0; regrowth <= kMaxRegrowths; ++regrowth) {
    start = start - (start % 4) + 3;
    const int64_t n = end - start;
    if (n <= 0 || n > kMaxChunk) return;
    std::string bytes = file.Read(start - 1, n);
    bytes.resize(static_cast<size_t>(n), '\0');
    const ByteView b(bytes);
    bool regrow = false;
    for (int64_t i = 1; i <= n && !regrow; i += 4) {
      if (b.matches(i - 1, "MIB8")) {
        if (b.matches(i + 3, "eman")) {
          if (out.title.empty()) {
            uint32_t count = 0;
            out.title = b.pascal(i + 15, count);
          }
          if (!out.category.empty()) return;
        } else if (b.matches(i + 3, "gtac")) {
          out.categoryOffset = static_cast<int32_t>(start + i + 16);
          if (n - i < 100) {
            end += 100;
            regrow = true;
            continue;
          }
          uint32_t count = 0;
          out.category = b.pascal(i + 15, count);
          out.maximumLength = static_cast<int32_t>(count) + b.zerosAfter(i + 16 + count);
          if (!out.title.empty()) return;
        }
        continue;
      }
      const bool notMI = At(b, i + 4) != 'M' && At(b, i + 5) != 'I';
      if (b.matches(i - 1, "tlF") && notMI) {
        const uint8_t kind = At(b, i + 3);
        if (kind == 'V' || kind == 'A') {
          const int64_t skip = kind == 'A' ? 8 : (At(b, i + 8) < 3 ? 16 : 8);
          out.categoryOffset = static_cast<int32_t>(start + i + skip);
          out.title = ZText(b, i + skip);
          out.category = kind == 'V' ? "[Premiere Video]" : "[Premiere Audio]";
          return;
        }
      } else if (b.matches(i - 1, "XFPS") && notMI) {
        out.title = TransitionTitle(b, i);
        out.categoryOffset = static_cast<int32_t>(start + i + 8);
        out.category = "[Premiere Transition]";
      }
    }
    if (!regrow) return;
  }
}

void TrimTrailingNuls(std::string& s) {
  while (!s.empty() && s.back() == '\0') s.pop_back();
}

}  // namespace

bool ReadComprm(const std::string& path, std::string& category, std::string& title,
                int32_t& categoryOffset, int32_t& maximumLength) {
  const FileWindow file(path);
  if (!file.IsOpen()) return false;
  Found out{category, title, categoryOffset, maximumLength};
  const int64_t L = file.Length();

  std::string head = file.Read(374 - 1, 1000);
  head.resize(1000, '\0');
  const ByteView h(head);
  int64_t start = 0;
  for (int64_t i = 1; i <= 1000; i += 4) {
    if (h.matches(i - 1, "rsrc")) {
      // Three bytes of the file offset, the third one shifted as the fourth:
      // a section beyond 64 KB is looked for in the wrong place, as always.
      start = static_cast<int64_t>(At(h, i + 19)) | (static_cast<int64_t>(At(h, i + 20)) << 8) |
              (static_cast<int64_t>(At(h, i + 22)) << 24);
      break;
    }
  }
  SearchChunk(file, start, start + 7000, out);

  const auto at = [L](double fraction) {
    return static_cast<int64_t>(std::nearbyint(fraction * static_cast<double>(L)));
  };
  struct Pass { int64_t start, end; };
  std::vector<Pass> passes = {{at(0.98), L}};
  if (L > 1000000) passes.push_back({1, at(0.11)});
  passes.push_back({at(0.85), at(0.98)});
  passes.push_back({at(0.75), at(0.85)});
  passes.push_back({at(0.65), at(0.75)});
  passes.push_back({at(0.48), at(0.65)});
  passes.push_back(L < 1000001 ? Pass{1, at(0.48)} : Pass{at(0.11), at(0.48)});
  for (const Pass& pass : passes) {
    if (!category.empty()) break;
    SearchChunk(file, pass.start, pass.end, out);
  }
  TrimTrailingNuls(category);
  TrimTrailingNuls(title);
  return !category.empty() && !title.empty();
}

}  // namespace trel
