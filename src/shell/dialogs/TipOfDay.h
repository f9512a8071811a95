// The tips of the day: one tip a line of TipOfDay.txt, empty lines included,
// shown from a random start and stepped through in a ring.
#pragma once

#include <string>
#include <vector>

namespace trel {

class TipCollection {
 public:
  // False for an empty path or a missing file. A collection that already holds
  // tips keeps them and returns at once. `randomFraction` in [0, 1) picks the
  // start tip.
  bool LoadTips(const std::string& path, double randomFraction);
  void NextTip();  // past the last tip comes the first
  int count() const { return static_cast<int>(tips_.size()); }
  int current() const { return current_; }  // 1-based; 0 when empty
  std::string CurrentTip() const;
  std::string Counter() const;  // "3/17"

 private:
  std::vector<std::string> tips_;
  int current_ = 0;
};

inline constexpr const char* kTipFileMissing = "The Tip file was not found. \n";

}  // namespace trel
