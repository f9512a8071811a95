#include "catalogue/PluginList.h"

#include <algorithm>

#include "filter/Paths.h"

namespace trel {

bool PaneCatalogue::CategoryLess(const std::string& a, const std::string& b) {
  const std::string la = ToLower(a), lb = ToLower(b);
  if (la != lb) return la < lb;
  return a < b;
}

void PaneCatalogue::AddCategory(const std::string& category) {
  // Exact comparison: categories differing only in case are distinct rows.
  if (std::find(categories.begin(), categories.end(), category) != categories.end()) return;
  categories.insert(std::upper_bound(categories.begin(), categories.end(), category, CategoryLess),
                    category);
}

bool IsVirtualCategory(const std::string& category) {
  return category.size() >= 2 && category.front() == '[' && category.back() == ']';
}

}  // namespace trel
