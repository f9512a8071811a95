// Pictures and compiled Filter Factory plugins for the host's tests, made by
// the tests themselves.
#pragma once

#include <string>

#include <QImage>

#include "filter/FFFilter.h"
#include "support/TempDir.h"

namespace trel::test {

// A picture whose pixels all differ.
QImage PatternPicture(int width, int height, bool alpha);

// A filter record with the given code in all three colour channels.
FFFilter SampleFilter(const std::string& rgbCode);

// Compiles `f` into a plugin in dir/out/ with the project's template and
// returns its path ("" if the compiler wrote nothing).
std::string CompilePlugin(const TempDir& dir, FFFilter f);

}  // namespace trel::test
