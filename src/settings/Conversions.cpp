#include "settings/Conversions.h"

#include <cctype>
#include <climits>
#include <cmath>
#include <cstdlib>

#include "base/Paths.h"

namespace trel {

double LenientNumber(const std::string& text) {
  size_t i = 0;
  const size_t n = text.size();
  while (i < n && (text[i] == ' ' || text[i] == '\t')) ++i;
  std::string number;
  if (i < n && (text[i] == '+' || text[i] == '-')) number += text[i++];
  bool digits = false;
  while (i < n && std::isdigit(static_cast<unsigned char>(text[i]))) { number += text[i++]; digits = true; }
  if (i < n && text[i] == '.') {
    number += text[i++];
    while (i < n && std::isdigit(static_cast<unsigned char>(text[i]))) { number += text[i++]; digits = true; }
  }
  if (!digits) return 0.0;
  if (i < n && (text[i] == 'e' || text[i] == 'E')) {
    std::string exponent = "e";
    size_t j = i + 1;
    if (j < n && (text[j] == '+' || text[j] == '-')) exponent += text[j++];
    if (j < n && std::isdigit(static_cast<unsigned char>(text[j]))) {
      while (j < n && std::isdigit(static_cast<unsigned char>(text[j]))) exponent += text[j++];
      number += exponent;
    }
  }
  const double value = std::strtod(number.c_str(), nullptr);
  return std::isfinite(value) ? value : 0.0;
}

int LenientInt(const std::string& text) {
  const double value = std::round(LenientNumber(text));
  if (value >= static_cast<double>(INT_MAX)) return INT_MAX;
  if (value <= static_cast<double>(INT_MIN)) return INT_MIN;
  return static_cast<int>(value);
}

std::optional<bool> ParseBool(const std::string& text) {
  const std::string t = ToLower(Trim(text));
  if (t == "true") return true;
  if (t == "false") return false;
  if (t.empty()) return std::nullopt;
  // A number converts; a text that merely begins with one does not.
  char* end = nullptr;
  const double value = std::strtod(t.c_str(), &end);
  if (end == t.c_str() || *end != '\0') return std::nullopt;
  return value != 0.0;
}

std::optional<int> CheckValue(const std::string& text) {
  const std::string t = Trim(text);
  if (t.empty()) return std::nullopt;
  char* end = nullptr;
  const double value = std::strtod(t.c_str(), &end);
  if (end == t.c_str() || *end != '\0') return std::nullopt;
  if (value != 0.0 && value != 1.0 && value != 2.0) return std::nullopt;
  return static_cast<int>(value);
}

}  // namespace trel
