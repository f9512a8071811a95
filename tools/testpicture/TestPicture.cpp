// Writes Test.bmp, the picture previews are made from when the user has chosen
// none: 640 x 480, 24 bits, with what shows a filter's effect at a glance:
// a hue sweep and grey ramp (gradients), skin tones, hard edges and fine
// detail (thin lines, a zone plate). Drawn from arithmetic alone, so the file
// is the same on every build.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

constexpr int kW = 640, kH = 480;
constexpr double kPi = 3.14159265358979323846;

struct Rgb {
  double r, g, b;
};

Rgb Hue(double h) {  // h in [0, 1)
  const double x = h * 6;
  const int i = static_cast<int>(x) % 6;
  const double f = x - std::floor(x);
  switch (i) {
    case 0: return {1, f, 0};
    case 1: return {1 - f, 1, 0};
    case 2: return {0, 1, f};
    case 3: return {0, 1 - f, 1};
    case 4: return {f, 0, 1};
    default: return {1, 0, 1 - f};
  }
}

Rgb Mix(Rgb a, Rgb b, double t) { return {a.r + (b.r - a.r) * t, a.g + (b.g - a.g) * t, a.b + (b.b - a.b) * t}; }

Rgb Pixel(int x, int y) {
  const double u = double(x) / (kW - 1), v = double(y) / (kH - 1);
  // Top band: hue sweep fading to white above and black below.
  if (y < 160) {
    const Rgb hue = Hue(std::fmod(u, 1.0));
    const double t = double(y) / 159;
    return t < 0.5 ? Mix({1, 1, 1}, hue, t * 2) : Mix(hue, {0, 0, 0}, (t - 0.5) * 2 * 0.8);
  }
  // A grey ramp in 32 steps and a smooth one below it.
  if (y < 184) {
    const double step = std::floor(u * 32) / 31;
    return {step, step, step};
  }
  if (y < 200) return {u, u, u};
  // Lower left: a face-like oval of skin tones on a blue-green backdrop.
  if (x < 240) {
    const double cx = 120, cy = 330, rx = 80, ry = 105;
    const double dx = (x - cx) / rx, dy = (y - cy) / ry, d = dx * dx + dy * dy;
    if (d < 1) {
      // Lit from the upper left: light to deep skin across the oval.
      const Rgb light{0.98, 0.84, 0.72}, mid{0.87, 0.64, 0.50}, deep{0.55, 0.36, 0.25};
      const double shade = std::clamp(0.5 + 0.45 * (dx + dy) / 1.4 + 0.2 * d, 0.0, 1.0);
      Rgb skin = shade < 0.5 ? Mix(light, mid, shade * 2) : Mix(mid, deep, (shade - 0.5) * 2);
      // Cheeks.
      const double ch = std::exp(-(std::pow(dx - 0.45, 2) + std::pow(dy - 0.2, 2)) * 20) +
                        std::exp(-(std::pow(dx + 0.45, 2) + std::pow(dy - 0.2, 2)) * 20);
      return Mix(skin, {0.9, 0.45, 0.45}, std::min(0.35, ch * 0.35));
    }
    return Mix({0.1, 0.35, 0.45}, {0.2, 0.55, 0.35}, v);
  }
  // Middle: hard edges, a checkerboard and coloured blocks.
  if (x < 440) {
    if (y < 340) {
      const bool on = ((x - 240) / 20 + (y - 200) / 20) % 2 == 0;
      return on ? Rgb{0.95, 0.95, 0.95} : Rgb{0.05, 0.05, 0.05};
    }
    const int block = (x - 240) / 50 + 4 * ((y - 340) / 70);
    const Rgb colours[8] = {{0.85, 0.1, 0.1}, {0.1, 0.7, 0.15}, {0.1, 0.2, 0.85}, {0.95, 0.85, 0.1},
                            {0.1, 0.8, 0.85}, {0.8, 0.15, 0.75}, {0.98, 0.55, 0.1}, {0.45, 0.3, 0.15}};
    return colours[std::clamp(block, 0, 7)];
  }
  // Right: fine detail, a zone plate above and thin lines below.
  if (y < 340) {
    const double cx = 540, cy = 270, r2 = (x - cx) * (x - cx) + (y - cy) * (y - cy);
    const double g = 0.5 + 0.5 * std::cos(kPi * r2 / 180.0);
    return {g, g, 0.3 + 0.7 * g};
  }
  const bool line = (x % 4 == 0) || ((y - 340) % 6 == 0) || ((x + y) % 9 == 0);
  return line ? Rgb{0.1, 0.1, 0.1} : Rgb{0.95, 0.92, 0.85};
}

void Put16(std::vector<uint8_t>& b, uint16_t v) {
  b.push_back(uint8_t(v));
  b.push_back(uint8_t(v >> 8));
}
void Put32(std::vector<uint8_t>& b, uint32_t v) {
  for (int i = 0; i < 4; ++i) b.push_back(uint8_t(v >> (8 * i)));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: trel_testpicture_gen OUTPUT.bmp\n");
    return 2;
  }
  const uint32_t stride = (kW * 3 + 3) & ~3u, pixels = stride * kH;
  std::vector<uint8_t> b;
  b.push_back('B');
  b.push_back('M');
  Put32(b, 54 + pixels);
  Put32(b, 0);
  Put32(b, 54);
  Put32(b, 40);
  Put32(b, kW);
  Put32(b, kH);
  Put16(b, 1);
  Put16(b, 24);
  Put32(b, 0);
  Put32(b, pixels);
  Put32(b, 2835);
  Put32(b, 2835);
  Put32(b, 0);
  Put32(b, 0);
  auto byte = [](double c) { return uint8_t(std::clamp(std::lround(c * 255), 0L, 255L)); };
  for (int y = kH - 1; y >= 0; --y) {  // bottom-up rows
    uint32_t n = 0;
    for (int x = 0; x < kW; ++x, n += 3) {
      const Rgb p = Pixel(x, y);
      b.push_back(byte(p.b));
      b.push_back(byte(p.g));
      b.push_back(byte(p.r));
    }
    for (; n < stride; ++n) b.push_back(0);
  }
  const std::string out = argv[1];
  const std::string tmp = out + ".tmp";
  std::FILE* f = std::fopen(tmp.c_str(), "wb");
  if (!f) return 1;
  const bool ok = std::fwrite(b.data(), 1, b.size(), f) == b.size();
  if (std::fclose(f) != 0 || !ok || std::rename(tmp.c_str(), out.c_str()) != 0) {
    std::remove(tmp.c_str());
    return 1;
  }
  return 0;
}
