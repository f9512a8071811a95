#include "catalogue/PluginList.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "base/Paths.h"

namespace trel {

namespace {

// std::tolower of every byte, asked once: the sort below runs for every file
// a scan finds.
const std::array<unsigned char, 256>& LowerTable() {
  static const std::array<unsigned char, 256> table = [] {
    std::array<unsigned char, 256> t{};
    for (int c = 0; c < 256; ++c) t[size_t(c)] = static_cast<unsigned char>(std::tolower(c));
    return t;
  }();
  return table;
}

}  // namespace

bool PaneCatalogue::CategoryLess(const std::string& a, const std::string& b) {
  // Lower-cased, then by bytes; compared in place.
  const auto& lower = LowerTable();
  const size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    const unsigned char la = lower[static_cast<unsigned char>(a[i])];
    const unsigned char lb = lower[static_cast<unsigned char>(b[i])];
    if (la != lb) return la < lb;
  }
  if (a.size() != b.size()) return a.size() < b.size();
  return a < b;
}

void PaneCatalogue::AddCategory(const std::string& category) {
  // Exact comparison: categories differing only in case are distinct rows.
  // The order tells apart any two different texts, so the place where the
  // category would go is where it stands if it is there.
  const auto at = std::lower_bound(categories.begin(), categories.end(), category, CategoryLess);
  if (at != categories.end() && *at == category) return;
  categories.insert(at, category);
}

bool IsVirtualCategory(const std::string& category) {
  return category.size() >= 2 && category.front() == '[' && category.back() == ']';
}

}  // namespace trel
