// What the filter-source readers share: their size limit and their common start.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "filter/FFFilter.h"
#include "filter/FilterEnv.h"

namespace trel {

// A filter source is a few kilobytes (four codes of at most 1023 bytes and some
// names). Anything far larger is not one, and is refused before it is read, so
// that a stray multi-gigabyte file cannot exhaust memory.
constexpr int64_t kMaxSourceFileSize = 16 * 1024 * 1024;

// Clears the record and gives the file's path. A missing file gives none, after
// asking the shell to refresh the active pane: its lists may be stale.
std::optional<std::string> BeginSourceRead(FFFilter& f, const std::string& folder,
                                           const std::string& name, const FilterEnv& env);

}  // namespace trel
