// Whether two folder names name one folder. On this platform letter case
// matters: /a/Plugins and /a/plugins are two folders, and only the file system
// can tell that two different spellings (a link, "..", a trailing separator)
// lead to one place. Every comparison of folders goes through here.
#pragma once

#include <string>

namespace trel {

// True when `a` and `b` are one folder: existing folders by the file system's
// own identity, names of folders that don't exist by their normal form.
bool SameFolder(const std::string& a, const std::string& b);

// True when `path` is `folder` or lies somewhere below it, after the links
// along `path` are followed.
bool IsInsideFolder(const std::string& path, const std::string& folder);

}  // namespace trel
