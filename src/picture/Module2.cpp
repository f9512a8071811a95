#include "picture/Module2.h"

#include <cmath>
#include <cstdio>

#include "base/Paths.h"

namespace trel {

std::string FileNameOf(const std::string& path) {
  const auto cut = path.rfind(kPathSeparator);
  return cut == std::string::npos ? path : path.substr(cut + 1);
}

std::string FolderOf(const std::string& path) {
  const auto cut = path.rfind(kPathSeparator);
  return cut == std::string::npos ? std::string() : path.substr(0, cut + 1);
}

std::string InvertDigits(std::string text) {
  for (char& c : text) {
    if (c == '-') {
      c = ' ';
    } else if (c >= '0' && c <= '9') {
      c = static_cast<char>('9' - (c - '0'));
    }
  }
  return text;
}

namespace {

// Sizes may be negative only in theory; the offset keeps every 64-bit value in
// 20 digits that compare as text.
std::string FixedDigits(int64_t value) {
  const uint64_t shifted = static_cast<uint64_t>(value) ^ (uint64_t{1} << 63);
  char buffer[24];
  std::snprintf(buffer, sizeof buffer, "%020llu", static_cast<unsigned long long>(shifted));
  return buffer;
}

std::string DateDigits(int64_t seconds) {
  const std::time_t t = static_cast<std::time_t>(seconds);
  std::tm parts{};
  if (!localtime_r(&t, &parts)) return FixedDigits(seconds);
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%04d%02d%02d%02d%02d%02d", parts.tm_year + 1900,
                parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec);
  return buffer;
}

}  // namespace

std::string SortKeyOf(const SortCell& cell, SortColumn column, bool ascending) {
  if (column == SortColumn::Name || !cell.hasValue) {
    std::string key = ToLower(cell.text);
    if (ascending) return key;
    // Descending text: invert every byte so the same ascending comparison works.
    for (char& c : key) c = static_cast<char>(0xFF - static_cast<unsigned char>(c));
    return key + '\xFF';
  }
  std::string digits = column == SortColumn::Size ? FixedDigits(cell.value) : DateDigits(cell.value);
  if (!ascending) digits = InvertDigits(digits);
  // Valued cells follow the text cells (folders, the parent entry) ascending;
  // descending, the marker is inverted with the rest and they lead.
  return (ascending ? "&" : "\x01") + digits;
}

DensityFactors DensityFactorsFor(double twipsPerPixelX, double twipsPerPixelY) {
  DensityFactors f;
  f.fx = twipsPerPixelX / 12.0;
  f.fy = twipsPerPixelY / 12.0;
  f.apply = twipsPerPixelX != 12.0 && twipsPerPixelY != 12.0;
  if (!f.apply) f.fx = f.fy = 1.0;
  return f;
}

double TwipsPerPixel(double logicalDpi) { return logicalDpi > 0 ? 1440.0 / logicalDpi : 15.0; }

double ScaledFontSize(double size, const DensityFactors& f) { return size * (f.fx + f.fy) / 2.0; }

}  // namespace trel
