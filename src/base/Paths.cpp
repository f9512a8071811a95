#include "base/Paths.h"

#include <sys/stat.h>

#include <algorithm>
#include <cctype>

namespace trel {

std::string WithTrailingSeparator(std::string folder) {
  if (folder.empty()) return std::string(".") + kPathSeparator;  // never the root by accident
  if (folder.back() != kPathSeparator) folder += kPathSeparator;
  return folder;
}

bool FileExists(const std::string& path) { return FileLength(path) >= 0; }

int64_t FileLength(const std::string& path) {
  struct stat st {};
  if (path.empty() || ::stat(path.c_str(), &st) != 0 || !S_ISREG(st.st_mode)) return -1;
  return static_cast<int64_t>(st.st_size);
}

std::string ToLower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

std::string LastFour(const std::string& name) {
  return ToLower(name.size() <= 4 ? name : name.substr(name.size() - 4));
}

void SplitPath(const std::string& path, std::string& folder, std::string& name) {
  const auto cut = path.find_last_of(kPathSeparator);
  if (cut == std::string::npos) {
    folder = std::string(".") + kPathSeparator;
    name = path;
  } else {
    folder = path.substr(0, cut + 1);
    name = path.substr(cut + 1);
  }
}

std::string Trim(const std::string& text) {
  const auto first = text.find_first_not_of(' ');
  if (first == std::string::npos) return {};
  const auto last = text.find_last_not_of(' ');
  return text.substr(first, last - first + 1);
}

}  // namespace trel
