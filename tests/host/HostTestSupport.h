// Pictures and compiled Filter Factory plugins for the host's tests, made by
// the tests themselves.
#pragma once

#include <string>

#include <QImage>

#include "filter/FFFilter.h"
#include "support/TempDir.h"

namespace trel::test {

QImage PatternPicture(int width, int height, bool alpha);  // pixels that all differ

// Titled "Sample Filter", by "A. Tester", "(c) 2026 The Tests"; `rgbCode` in
// the three colour channels, "a" in alpha, control values 20, 40, ... 160.
FFFilter SampleFilter(const std::string& rgbCode);

// Compiles `f` with the project's template into dir/out/; "" if nothing was written.
std::string CompilePlugin(const TempDir& dir, FFFilter f);

}  // namespace trel::test
