#include "base/FolderIdentity.h"

#include <filesystem>

namespace trel {

namespace fs = std::filesystem;

namespace {

fs::path Normal(const std::string& name) {
  fs::path p = fs::path(name).lexically_normal();
  // "/a/b/" and "/a/b" are one folder; the root keeps its separator.
  if (!p.has_filename() && p.has_relative_path()) p = p.parent_path();
  return p;
}

}  // namespace

bool SameFolder(const std::string& a, const std::string& b) {
  if (a.empty() || b.empty()) return a == b;
  std::error_code ec;
  const bool same = fs::equivalent(a, b, ec);
  if (!ec) return same;
  return Normal(a) == Normal(b);
}

bool IsInsideFolder(const std::string& path, const std::string& folder) {
  if (path.empty() || folder.empty()) return false;
  // The links along `path` are followed first: a link that leads below
  // `folder` is inside it, so a copy into it would be a copy into itself.
  std::error_code ec;
  fs::path resolved = fs::weakly_canonical(path, ec);
  if (ec) resolved = path;
  for (fs::path p = Normal(resolved.string());; p = p.parent_path()) {
    if (SameFolder(p.string(), folder)) return true;
    if (!p.has_relative_path()) return false;
  }
}

}  // namespace trel
