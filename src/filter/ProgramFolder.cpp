#include "filter/ProgramFolder.h"

#include <cstdlib>
#include <filesystem>

#include "base/Paths.h"

namespace trel {

namespace fs = std::filesystem;

std::string DefaultProgramFolder() {
  if (const char* home = std::getenv("TREL_HOME"); home && *home) return WithTrailingSeparator(home);
  if (const char* data = std::getenv("XDG_DATA_HOME"); data && *data)
    return WithTrailingSeparator((fs::path(data) / "Trel10").string());
  const char* user = std::getenv("HOME");
  return WithTrailingSeparator((fs::path(user ? user : ".") / ".local/share/Trel10").string());
}

bool FillProgramFolder(const std::string& folder, const std::vector<std::string>& sources) {
  std::error_code ec;
  fs::create_directories(folder, ec);
  if (!fs::is_directory(folder, ec)) return false;
  for (const auto& source : sources) {
    if (!fs::is_directory(source, ec)) continue;
    for (auto it = fs::recursive_directory_iterator(source, ec);
         !ec && it != fs::recursive_directory_iterator(); it.increment(ec)) {
      const fs::path target = fs::path(folder) / fs::relative(it->path(), source, ec);
      if (it->is_directory(ec)) {
        fs::create_directories(target, ec);
      } else if (it->is_regular_file(ec) && !fs::exists(target, ec)) {
        fs::copy_file(it->path(), target, ec);
      }
    }
  }
  return true;
}

}  // namespace trel
