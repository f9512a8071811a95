// Copying and moving single files without ever leaving half a file where a
// whole one stood. A copy is written under a temporary name in the target's
// folder and takes the target's name only when it is complete and of the
// source's size; a failure at any point removes the temporary file and leaves
// the source and any old target as they were. A move is a rename within one
// file system and copy, verify, delete across file systems. No Qt here: the
// commands and the benchmark share it.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

namespace trel {

struct FileOpResult {
  bool ok = false;
  bool cancelled = false;  // `abort` was set; nothing of the target changed
  std::string error;       // a sentence for the user when !ok
};

// Called now and then with the bytes written and the size of the file.
using CopyProgress = std::function<void(int64_t done, int64_t total)>;

// Copies `source` to `target`, replacing an existing target only at the very
// end. `abort`, when given, is polled between blocks.
FileOpResult SafeCopyFile(const std::string& source, const std::string& target,
                          const CopyProgress& progress = {}, const std::atomic<bool>* abort = nullptr);

// Moves `source` to `target` (replacing it). Across file systems the source is
// removed only after the copy is in place and of the right size.
FileOpResult SafeMoveFile(const std::string& source, const std::string& target,
                          const CopyProgress& progress = {}, const std::atomic<bool>* abort = nullptr);

// True when `inner` is `outer` or lies below it (both folders; the comparison
// is by path, with trailing separators ignored and symbolic links resolved).
bool IsSameOrInside(const std::string& inner, const std::string& outer);

}  // namespace trel
