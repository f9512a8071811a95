// Reads the text of one Filter Factory expression into a tree. A fault gives
// its 0-based character position and a sentence for the user; the parser never
// recurses without bound, so any text (random bytes, endless brackets) ends in
// a tree or an error.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "host/ff/FFAst.h"

namespace trel::ff {

struct ParseError {
  size_t position = 0;
  std::string message;
};

// How deeply brackets, calls and unary operators may nest, and how tall the
// finished tree may grow; both keep later passes' recursion shallow.
constexpr int kMaxNesting = 256;
constexpr uint32_t kMaxHeight = 1000;

// A place where the code uses something that Trel accepts and a genuine Filter
// Factory host refuses (it then computes 0 for the whole channel).
struct CompatNote {
  size_t position = 0;
  size_t length = 1;  // characters from `position` that make up the construct
  std::string message;
};

// With `compat`, the places a genuine host would refuse are added to it, in
// the order of the text; they are not faults.
bool ParseExpression(std::string_view code, Ast& out, ParseError& err,
                     std::vector<CompatNote>* compat = nullptr);

}  // namespace trel::ff
