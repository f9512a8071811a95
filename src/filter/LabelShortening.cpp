#include "filter/LabelShortening.h"

#include <string_view>

#include "base/Paths.h"

namespace trel {
namespace {

// One word (or a whole label treated as one) made shorter: known words have a
// fixed short form, colour names and "size" stay, others lose their inner vowels.
std::string ShortenWord(const std::string& word) {
  static constexpr std::pair<std::string_view, std::string_view> kShortForms[] = {
      {"vertical", "Vert."},    {"horizontal", "Hori."}, {"brightness", "Brigh."},
      {"intensity", "Int."},    {"adjust", "Adj."},      {"amount", "Amou."},
      {"offset", "Offs."},      {"control", "Contr."},   {"controls", "Contr."},
      {"position", "Pos."},     {"shadow", "Shad."},     {"background", "Back."},
      {"multiplier", "Mult."},  {"general", "Gen."},     {"random", "Rnd"},
      {"treshold", "Tresh."},   {"radius", "Rad."},      {"amplitude", "Ampl."},
      {"density", "Dens."}};
  const std::string lower = ToLower(word);
  if (lower == "red" || lower == "green" || lower == "blue" || lower == "size") return word;
  for (const auto& [known, shortForm] : kShortForms)
    if (lower == known) return std::string(shortForm);

  std::string out;
  for (size_t i = 0; i < word.size(); ++i) {
    const char c = word[i];
    const bool vowel = c == 'a' || c == 'e' || c == 'i' || c == 'u' || c == 'o';
    if (vowel && i > 0 && word[i - 1] != ' ') continue;
    out += c;
  }
  return out;
}

std::string WithoutAny(const std::string& text, std::string_view drop) {
  std::string out;
  for (char c : text)
    if (drop.find(c) == std::string_view::npos) out += c;
  return out;
}

}  // namespace

std::string RemoveVocals(std::string& label) {
  if (!label.empty() && label.back() == ':') label.pop_back();
  const auto blank = label.find(' ');
  if (blank == std::string::npos) return ShortenWord(label);

  const std::string first = label.substr(0, blank);
  const std::string rest = ShortenWord(label.substr(blank + 1));
  if (first.size() + rest.size() < 12) return first + " " + rest;
  const std::string shortFirst = ShortenWord(first);
  if (shortFirst.size() + rest.size() < 12) return shortFirst + " " + rest;
  return ShortenWord(label);
}

std::string RemoveChars(const std::string& text) { return WithoutAny(text, ".\\/: "); }

void RemoveLetters(std::string& text) { text = WithoutAny(text, ". "); }

std::string RemoveSpaces(const std::string& text) { return WithoutAny(text, " "); }

std::string ReplaceAwithI(const std::string& code) {
  std::string out = code;
  for (size_t i = 0; i < out.size(); ++i) {
    if (out[i] != 'a') continue;
    const char next = i + 1 < out.size() ? out[i + 1] : '\0';
    // abs, add, and the like keep their `a`; only a lone alpha becomes intensity.
    const bool partOfName = next == 'l' || next == 'b' || next == 'd' || next == 'p' ||
                            next == 'x' || next == 'n';
    if (!partOfName) out[i] = 'i';
  }
  return out;
}

}  // namespace trel
