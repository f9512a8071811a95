#include "filter/DemoPlugin.h"

#include <chrono>
#include <cmath>
#include <random>
#include <string>

#include "filter/TemplateLayout.h"

namespace trel {
namespace {

namespace L = layout;

constexpr char kScrambleTag[] = "TRSC";
constexpr char kProtectedMarker[] = "Trel Protected";  // as long as "Filter Factory"

int64_t MarkerPosition(int shift) {
  if (shift == L::kShift64) return L::kMarker64;  // the 64-bit template's code comes first
  return shift == L::kShift30 ? L::kMarker30 : L::kMarker304;
}

uint32_t NextKey(uint32_t& state) {
  state ^= state << 13;
  state ^= state >> 17;
  state ^= state << 5;
  return state;
}

// The four code fields XORed with an xorshift key stream; applying it twice
// gives the original bytes back.
void XorCodeFields(TemplatePatch& file, int shift, uint32_t seed) {
  const int64_t start = shift + L::kCodeR;
  const int64_t length = 4 * L::kCodeFieldSize;
  std::string bytes = file.Read(start, length);
  uint32_t state = seed ? seed : 1;
  for (char& c : bytes) c = static_cast<char>(static_cast<uint8_t>(c) ^ (NextKey(state) & 0xFF));
  file.WriteAt(start, bytes);
}

uint32_t SeedFromTitle(TemplatePatch& file, int shift) {
  uint32_t hash = 2166136261u;  // FNV-1a
  for (unsigned char c : file.CString(shift + L::kBlockTitle)) hash = (hash ^ c) * 16777619u;
  return hash;
}

void SetLayoutFlag(TemplatePatch& file, int shift, uint16_t flag) {
  // Only our own templates have the layout block; a foreign template is left alone.
  const int64_t block = shift + L::kDialogLayout;
  if (file.Read(block, 4) != "TRDL") return;
  const int low = file.ByteAt(block + L::kLayoutFlags);
  const int high = file.ByteAt(block + L::kLayoutFlags + 1);
  if (low < 0 || high < 0) return;
  const uint16_t flags = static_cast<uint16_t>((low | (high << 8)) | flag);
  file.PutAt(block + L::kLayoutFlags, static_cast<uint8_t>(flags & 0xFF));
  file.Put(static_cast<uint8_t>(flags >> 8));
}

}  // namespace

// Scrambling, the part that makes a plugin "undecompilable":
// 1. The four 1024-byte code fields are XORed with an xorshift32 key stream
//    whose seed is the FNV-1a hash of the block's title.
// 2. The unused 16 bytes of the parameter block get the tag "TRSC" and the seed
//    (32-bit little-endian), so the plugin's run-time code can undo step 1.
// 3. The Filter Factory marker is overwritten with "Trel Protected", so our
//    readers no longer take the file for a Filter Factory plugin at all.
// It keeps honest people from reading the code back; it is no encryption.
void DemoPlugin(TemplatePatch& file, int shift, bool deadOk, bool demoCaption, bool scramble) {
  if (deadOk) SetLayoutFlag(file, shift, L::kLayoutOkDisabled);
  if (demoCaption) SetLayoutFlag(file, shift, L::kLayoutDemo);
  if (!scramble) return;
  if (file.Read(shift + L::kUnusedBlock, 4) == kScrambleTag) return;  // already scrambled
  const uint32_t seed = SeedFromTitle(file, shift);
  XorCodeFields(file, shift, seed);
  std::string tag = kScrambleTag;
  for (int i = 0; i < 4; ++i) tag += static_cast<char>((seed >> (8 * i)) & 0xFF);
  file.WriteAt(shift + L::kUnusedBlock, tag);
  file.WriteAt(MarkerPosition(shift), kProtectedMarker);
}

bool UnscrambleCode(TemplatePatch& file, int shift) {
  const std::string tag = file.Read(shift + L::kUnusedBlock, 8);
  if (tag.size() != 8 || tag.compare(0, 4, kScrambleTag) != 0) return false;
  uint32_t seed = 0;
  for (int i = 0; i < 4; ++i) seed |= static_cast<uint32_t>(static_cast<uint8_t>(tag[4 + i])) << (8 * i);
  XorCodeFields(file, shift, seed);
  file.WriteAt(shift + L::kUnusedBlock, std::string(8, '\0'));
  file.WriteAt(MarkerPosition(shift), L::kMarkerText);
  return true;
}

void RandomFileSize(TemplatePatch& file) {
  std::mt19937 random(static_cast<uint32_t>(
      std::chrono::high_resolution_clock::now().time_since_epoch().count()));
  const double fraction = std::uniform_real_distribution<double>(0.0, 1.0)(random);
  RandomFileSize(file, static_cast<int>(std::lround(fraction * 2048)));
}

void RandomFileSize(TemplatePatch& file, int n) {
  if (n < 0) n = 0;
  file.WriteAt(file.Length(), std::string(static_cast<size_t>(n) + 1, '\0'));
}

}  // namespace trel
