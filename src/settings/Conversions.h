// How the program turns the text values of the settings tree into numbers and
// booleans, and back. Reading is lenient: it never fails, a broken value is 0.
#pragma once

#include <optional>
#include <string>

namespace trel {

// Reads the longest leading number (blanks ahead, sign, digits, one decimal
// point, exponent) and ignores the rest; no number at all reads as 0.
double LenientNumber(const std::string& text);
// The same, rounded to the nearest integer and kept within the int range.
int LenientInt(const std::string& text);

// "True"/"False" in any case, or a number (non-zero is true). Anything else is
// not a boolean: the caller keeps what it had.
std::optional<bool> ParseBool(const std::string& text);
// How a boolean proper is written.
inline std::string BoolText(bool value) { return value ? "True" : "False"; }

// The value of a check box: 0 unchecked, 1 checked, 2 grey. Any other value is
// refused, as a box refuses it, and the box keeps its state.
std::optional<int> CheckValue(const std::string& text);

}  // namespace trel
