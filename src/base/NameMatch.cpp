#include "base/NameMatch.h"

#include "base/Paths.h"

namespace trel {

namespace {

bool Wildcard(const char* name, const char* pattern) {
  // Iterative matcher with one backtrack point: linear enough for file names.
  const char* star = nullptr;
  const char* resume = nullptr;
  while (*name) {
    if (*pattern == '?' || (*pattern && *pattern != '*' && *pattern == *name)) {
      ++name;
      ++pattern;
    } else if (*pattern == '*') {
      star = pattern++;
      resume = name;
    } else if (star) {
      pattern = star + 1;
      name = ++resume;
    } else {
      return false;
    }
  }
  while (*pattern == '*') ++pattern;
  return *pattern == '\0';
}

}  // namespace

bool MatchesPattern(const std::string& name, const std::string& pattern) {
  const std::string lowerName = ToLower(name);
  const std::string lowerPattern = ToLower(pattern);
  if (Trim(lowerPattern).empty()) return true;
  size_t start = 0;
  while (start <= lowerPattern.size()) {
    size_t end = lowerPattern.find(';', start);
    if (end == std::string::npos) end = lowerPattern.size();
    const std::string one = Trim(lowerPattern.substr(start, end - start));
    if (!one.empty()) {
      // "*.*" means every file, also one without a dot, as on the system the
      // masks come from.
      if (one == "*.*" || Wildcard(lowerName.c_str(), one.c_str())) return true;
    }
    start = end + 1;
  }
  return false;
}

}  // namespace trel
