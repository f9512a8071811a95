// How a file name is matched against a mask such as "*.8b?;*._bf": the one
// matcher of the program, used by the file lists and the plugin scanner alike.
#pragma once

#include <string>

namespace trel {

// Whether a file name matches a pattern: alternatives separated by ";", with
// "*" and "?", compared case-blind. An empty pattern matches everything.
bool MatchesPattern(const std::string& name, const std::string& pattern);

}  // namespace trel
