// Limits the filter-source readers share.
#pragma once

#include <cstdint>

namespace trel {

// A filter source is a few kilobytes (four codes of at most 1023 bytes and some
// names). Anything far larger is not one, and is refused before it is read, so
// that a stray multi-gigabyte file cannot exhaust memory.
constexpr int64_t kMaxSourceFileSize = 16 * 1024 * 1024;

}  // namespace trel
