// A picture of pseudo-random bytes, the same on every run, for the engine
// and interpreter benchmarks: no pattern a filter could shortcut.
#pragma once

#include <cstdint>

#include "host/ff/FFImage.h"

inline trel::ff::ImageRGBA8 NoisePicture(int width, int height) {
  trel::ff::ImageRGBA8 img(width, height, false);
  uint32_t s = 1;
  for (uint8_t& b : img.pixels) {
    s = s * 1664525u + 1013904223u;
    b = uint8_t(s >> 24);
  }
  return img;
}
