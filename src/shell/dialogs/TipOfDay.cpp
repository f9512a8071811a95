#include "shell/dialogs/TipOfDay.h"

#include <cmath>
#include <fstream>

namespace trel {

bool TipCollection::LoadTips(const std::string& path, double randomFraction) {
  if (path.empty()) return false;
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  if (!tips_.empty()) return true;
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    tips_.push_back(line);
  }
  if (tips_.empty()) return true;
  if (!(randomFraction >= 0.0 && randomFraction < 1.0)) randomFraction = 0.0;
  current_ = static_cast<int>(std::floor(randomFraction * count())) + 1;
  return true;
}

void TipCollection::NextTip() {
  if (tips_.empty()) return;
  current_ = current_ >= count() ? 1 : current_ + 1;
}

std::string TipCollection::CurrentTip() const {
  if (current_ < 1 || current_ > count()) return {};
  return tips_[static_cast<size_t>(current_ - 1)];
}

std::string TipCollection::Counter() const {
  return std::to_string(current_) + "/" + std::to_string(count());
}

}  // namespace trel
