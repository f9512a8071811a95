#include "base/NameMatch.h"

#include <cctype>
#include <string_view>

namespace trel {

namespace {

char Lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

// One mask against one name, case-blind: '*' any run, '?' one character. An
// iterative matcher with one backtrack point: linear enough for file names.
bool Wildcard(std::string_view name, std::string_view pattern) {
  size_t n = 0, p = 0;
  size_t star = std::string_view::npos, resume = 0;
  while (n < name.size()) {
    if (p < pattern.size() && pattern[p] != '*' && (pattern[p] == '?' || Lower(pattern[p]) == Lower(name[n]))) {
      ++n;
      ++p;
    } else if (p < pattern.size() && pattern[p] == '*') {
      star = p++;
      resume = n;
    } else if (star != std::string_view::npos) {
      p = star + 1;
      n = ++resume;
    } else {
      return false;
    }
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p == pattern.size();
}

std::string_view TrimBlanks(std::string_view s) {
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

}  // namespace

bool MatchesPattern(const std::string& name, const std::string& pattern) {
  const std::string_view list(pattern);
  if (TrimBlanks(list).empty()) return true;
  size_t start = 0;
  while (start <= list.size()) {
    size_t end = list.find(';', start);
    if (end == std::string_view::npos) end = list.size();
    const std::string_view one = TrimBlanks(list.substr(start, end - start));
    // "*.*" means every file, also one without a dot, as on the system the
    // masks come from.
    if (!one.empty() && (one == "*.*" || Wildcard(name, one))) return true;
    start = end + 1;
  }
  return false;
}

}  // namespace trel
