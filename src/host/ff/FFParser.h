// Reads the text of one Filter Factory expression into a tree. A fault gives
// its 0-based character position and a sentence for the user; the parser never
// recurses without bound, so any text (random bytes, endless brackets) ends in
// a tree or an error.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

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

bool ParseExpression(std::string_view code, Ast& out, ParseError& err);

}  // namespace trel::ff
