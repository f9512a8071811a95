// Pictures as the engine sees them: 8-bit R, G, B, A bytes per pixel, rows
// `stride` bytes apart, in memory the caller owns (a view) or in a vector (an
// image). Without alpha the fourth byte is present but not a channel.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace trel::ff {

struct ConstImageView {
  const uint8_t* pixels = nullptr;
  int width = 0;
  int height = 0;
  ptrdiff_t stride = 0;  // bytes from one row to the next
  bool hasAlpha = false;
};

struct ImageView {
  uint8_t* pixels = nullptr;
  int width = 0;
  int height = 0;
  ptrdiff_t stride = 0;
  bool hasAlpha = false;

  operator ConstImageView() const { return {pixels, width, height, stride, hasAlpha}; }
};

struct ImageRGBA8 {
  int width = 0;
  int height = 0;
  bool hasAlpha = false;
  std::vector<uint8_t> pixels;  // width * height * 4 bytes, rows without padding

  ImageRGBA8() = default;
  ImageRGBA8(int w, int h, bool alpha)
      : width(w), height(h), hasAlpha(alpha), pixels(size_t(w) * size_t(h) * 4u, 0) {}

  uint8_t* at(int x, int y) { return pixels.data() + (size_t(y) * size_t(width) + size_t(x)) * 4u; }
  const uint8_t* at(int x, int y) const {
    return pixels.data() + (size_t(y) * size_t(width) + size_t(x)) * 4u;
  }
  ImageView view() { return {pixels.data(), width, height, ptrdiff_t(width) * 4, hasAlpha}; }
  ConstImageView view() const { return {pixels.data(), width, height, ptrdiff_t(width) * 4, hasAlpha}; }
};

// The source value at (x, y) in channel z, coordinates clamped to the edges;
// a channel outside 0..channels-1 reads 0.
inline int32_t SampleClamped(const ConstImageView& img, int channels, int32_t x, int32_t y, int32_t z) {
  if (z < 0 || z >= channels) return 0;
  x = x < 0 ? 0 : (x >= img.width ? img.width - 1 : x);
  y = y < 0 ? 0 : (y >= img.height ? img.height - 1 : y);
  return img.pixels[y * img.stride + ptrdiff_t(x) * 4 + z];
}

}  // namespace trel::ff
