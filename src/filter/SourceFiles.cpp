#include "filter/SourceFiles.h"

#include "base/Paths.h"

namespace trel {

std::optional<std::string> BeginSourceRead(FFFilter& f, const std::string& folder,
                                           const std::string& name, const FilterEnv& env) {
  IniVars(f);
  std::string path = WithTrailingSeparator(folder) + name;
  if (!FileExists(path)) {
    env.hooks().RefreshActivePane();
    return std::nullopt;
  }
  return path;
}

}  // namespace trel
