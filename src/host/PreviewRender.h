// Running a Filter Factory plugin over a picture without the shared image
// library, so that many previews can render at once on worker threads (the
// contact sheet, the batch). Each call reads and compiles its own copy.
#pragma once

#include <functional>
#include <string>

#include <QImage>

#include "filter/FFFilter.h"
#include "host/ff/FFEngine.h"

namespace trel {

// A filter compiled for repeated runs: the record and its code.
struct PreparedFilter {
  FFFilter filter;
  ff::CompiledFilter compiled;
  std::string error;  // why it can't run; empty when it can
  bool ok() const { return error.empty(); }
};

// Reads a plugin file (or any filter source the readers know) and compiles it.
PreparedFilter PrepareFilter(const std::string& path);
// Compiles the record in hand.
PreparedFilter PrepareFilter(const FFFilter& filter);

// Runs the filter with its stored control values over a copy of `picture`;
// a null image when it can't run or was cancelled.
QImage RenderWith(const PreparedFilter& filter, const QImage& picture,
                  const std::function<bool()>& cancel = {});

}  // namespace trel
