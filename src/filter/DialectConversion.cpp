// Conversions of Filter Factory code between the Premiere and the Photoshop
// dialect, and for the Macintosh version. Correctprmcode works as text with
// no parser, as the program always did; its quirks (no idea of names, `dmax`
// stopping at `D`, `pmax` unreachable) are relied upon and kept. Correctcode
// and CorrectCodeForMac respect names, so that they never change a part of a
// longer name.
#include <cctype>
#include <string_view>

#include "filter/ByteHelpers.h"
#include "filter/CodeRewrite.h"

namespace trel {
namespace {

// Premiere's chroma terms, written out as Premiere code spells them. The `v`
// form has `g` twice; that is the text Correctprmcode recognises.
constexpr std::string_view kPremiereU = "((56*b-19*r-37*g)/256)";
constexpr std::string_view kPremiereV = "((78*r-65*g-13*g)/256)";

bool At(const std::string& s, size_t p, std::string_view text) {
  return p <= s.size() && s.compare(p, text.size(), text) == 0;
}

// Replaces `from` at p by `to` when it stands there.
bool ReplaceAt(std::string& s, size_t p, std::string_view from, std::string_view to) {
  if (!At(s, p, from)) return false;
  s.replace(p, from.size(), to);
  return true;
}

// First pass of Correctprmcode: constants and variables, one position at a time.
std::string PremiereNamesToPhotoshop(std::string s) {
  static constexpr std::pair<std::string_view, std::string_view> kMaxMin[] = {
      {"pmax", "Z"}, {"tmax", "255"}, {"pmin", "0"}, {"xmax", "X"}, {"xmin", "0"},
      {"ymax", "Y"}, {"ymin", "0"},   {"dmax", "D"}, {"mmax", "M"}};
  for (size_t p = 0;; ++p) {
    const char c = p < s.size() ? s[p] : '\0';
    if (c == 'P') {
      s[p] = 'Z';
      continue;
    }
    if (c == 'T') {
      s.replace(p, 1, "total");
      p += 4;
      continue;
    }
    if (c == 'D') {
      s.replace(p, 1, "512");
      p += 2;
      continue;
    }
    if (c == 'p' && !At(s, p, "put") && !At(s, p, "p(")) {
      s[p] = 'z';
      continue;
    }
    if (!ReplaceAt(s, p, kPremiereU, "u")) ReplaceAt(s, p, kPremiereV, "v");
    if (ReplaceAt(s, p, "(M/2)", "M") || ReplaceAt(s, p, "M/4", "M/2") ||
        ReplaceAt(s, p, "M/2", "M")) {
      // Premiere's M is twice Photoshop's.
    } else if (p < s.size() && s[p] == 'M') {
      s.replace(p, 1, "(M/2)");
      p += 4;
    }
    bool replaced = false;
    for (const auto& [from, to] : kMaxMin) {
      if (ReplaceAt(s, p, from, to)) {
        if (from == "tmax") p += 2;
        replaced = true;
        break;
      }
    }
    // Only this branch can end the pass: the others run on until p passes the
    // end of the code.
    if (!replaced && p >= s.size()) return s;
  }
}

}  // namespace

// Swaps the first two arguments of every `mix(`; the two dialects take them in
// the opposite order. Its own inverse on well-formed code.
std::string SwapMixArguments(std::string s) {
  for (size_t p = 0; p < s.size(); ++p) {
    if (!At(s, p, "mix(")) continue;
    const std::string rest = s.substr(p + 4);
    const std::string a = GetUntill(rest, ',');
    const std::string afterA = a.size() + 1 <= rest.size() ? rest.substr(a.size() + 1) : "";
    const std::string b = GetUntill(afterA, ',');
    const std::string afterB = b.size() + 1 <= afterA.size() ? afterA.substr(b.size() + 1) : "";
    s = s.substr(0, p) + "mix(" + b + "," + a + "," + afterB;
  }
  return s;
}

std::string Correctprmcode(std::string code) {
  return SwapMixArguments(PremiereNamesToPhotoshop(std::move(code)));
}

void CorrectprmcodeAll(FFFilter& f) {
  f.codeR = Correctprmcode(std::move(f.codeR));
  f.codeG = Correctprmcode(std::move(f.codeG));
  f.codeB = Correctprmcode(std::move(f.codeB));
  f.codeA = Correctprmcode(std::move(f.codeA));
}

namespace {

bool IsNameStart(char c) { return std::isalpha(static_cast<unsigned char>(c)) || c == '_'; }
bool IsNameChar(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

// Walks code as names, numbers and other characters and lets `rename` map each
// whole name or number. `rename` gets the code and the token's place so that it
// can look at its neighbours, and may consume more text by moving `end`.
template <typename Rename>
std::string MapTokens(const std::string& s, Rename rename) {
  std::string out;
  size_t p = 0;
  while (p < s.size()) {
    size_t end = p + 1;
    if (IsNameStart(s[p]) || std::isdigit(static_cast<unsigned char>(s[p]))) {
      while (end < s.size() && IsNameChar(s[end])) ++end;
      out += rename(s, p, end);
    } else {
      out += s[p];
    }
    p = end;
  }
  return out;
}

}  // namespace

// Photoshop dialect to Premiere dialect: the inverse of Correctprmcode for every
// name and form that one knows, so that Correctprmcode(CorrectcodeChannel(s)) == s.
std::string CorrectcodeChannel(std::string code) {
  code = SwapMixArguments(std::move(code));
  return MapTokens(code, [](const std::string& s, size_t p, size_t& end) -> std::string {
    const std::string_view name(s.data() + p, end - p);
    if (name == "z") return "p";
    if (name == "Z") return "P";
    if (name == "zmax") return "pmax";
    if (name == "zmin") return "pmin";
    if (name == "total") return "T";
    if (name == "D") return "dmax";
    if (name == "512") return "D";
    if (name == "X") return "xmax";
    if (name == "Y") return "ymax";
    if (name == "u") return std::string(kPremiereU);
    if (name == "v") return std::string(kPremiereV);
    if (name == "M") {
      // Premiere's M is twice Photoshop's: M/2 there is M here, M/4 there M/2 here.
      const bool halved = At(s, end, "/2") &&
                          !(end + 2 < s.size() && std::isdigit(static_cast<unsigned char>(s[end + 2])));
      if (halved) {
        end += 2;
        return "M/4";
      }
      // Correctprmcode reads "(M/2)" as M, so a bracketed lone M needs brackets of its own.
      const bool bracketed = p > 0 && s[p - 1] == '(' && At(s, end, ")");
      return bracketed ? "(M/2)" : "M/2";
    }
    return std::string(name);
  });
}

void Correctcode(FFFilter& f) {
  f.codeR = CorrectcodeChannel(std::move(f.codeR));
  f.codeG = CorrectcodeChannel(std::move(f.codeG));
  f.codeB = CorrectcodeChannel(std::move(f.codeB));
  f.codeA = CorrectcodeChannel(std::move(f.codeA));
}

// What is known to differ on the Macintosh: I, U, V and imax, umax, vmax are 256
// there instead of 255, so they are written as the number the filter means.
// `get` outside 0..255 also differs (0 there, the index here); that cannot be
// rewritten without evaluating the argument twice, so it is left as it is.
std::string CorrectCodeForMacChannel(std::string code) {
  return MapTokens(code, [](const std::string& s, size_t p, size_t& end) -> std::string {
    const std::string_view name(s.data() + p, end - p);
    if (name == "I" || name == "U" || name == "V" || name == "imax" || name == "umax" ||
        name == "vmax")
      return "255";
    return std::string(name);
  });
}

void CorrectCodeForMac(FFFilter& f) {
  f.codeR = CorrectCodeForMacChannel(std::move(f.codeR));
  f.codeG = CorrectCodeForMacChannel(std::move(f.codeG));
  f.codeB = CorrectCodeForMacChannel(std::move(f.codeB));
  f.codeA = CorrectCodeForMacChannel(std::move(f.codeA));
}

}  // namespace trel
