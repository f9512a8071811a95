// Small rewrites of names: labels squeezed for the narrow Macintosh dialog,
// file names made from titles.
#pragma once

#include <string>

namespace trel {

std::string RemoveVocals(std::string& label);  // cuts a trailing ':' off the argument too
std::string RemoveChars(const std::string& text);  // without . \ / : and blank
void RemoveLetters(std::string& text);             // . and blanks removed in place
std::string RemoveSpaces(const std::string& text);
std::string ReplaceAwithI(const std::string& code);  // a lone `a` becomes `i`

}  // namespace trel
