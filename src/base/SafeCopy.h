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

// Whether a copy or move may take the place of a file already at the target.
// `Never` is for a target that was absent when the user was (not) asked: one
// made meanwhile by another program stays, and the copy fails with a message.
enum class Replace { Allowed, Never };

// Copies and moves many files in a row, as a batch does: the folders of the
// last source and target stay open, so that each file costs only the calls
// that copy it (open, create, copy, set the times, rename), not a walk of
// both paths for each. A folder is opened when the batch first reaches it:
// one renamed and made anew under its name while the batch runs is still the
// one the batch writes to. One object per batch and thread.
class FileCopier {
 public:
  FileCopier();
  ~FileCopier();
  FileCopier(const FileCopier&) = delete;
  FileCopier& operator=(const FileCopier&) = delete;

  FileOpResult Copy(const std::string& source, const std::string& target, const CopyProgress& progress = {},
                    const std::atomic<bool>* abort = nullptr, Replace replace = Replace::Allowed);
  FileOpResult Move(const std::string& source, const std::string& target, const CopyProgress& progress = {},
                    const std::atomic<bool>* abort = nullptr, Replace replace = Replace::Allowed);

 private:
  struct Folder {
    std::string path;
    int fd = -1;
  };
  // The open folder of `path`'s folder part, or -1 with errno set.
  static int Open(Folder& folder, const std::string& path);
  Folder source_, target_;
};

// Copies `source` to `target`, replacing an existing target only at the very
// end. `abort`, when given, is polled between blocks.
FileOpResult SafeCopyFile(const std::string& source, const std::string& target,
                          const CopyProgress& progress = {}, const std::atomic<bool>* abort = nullptr);

// Moves `source` to `target` (replacing it). Across file systems the source is
// removed only after the copy is in place and of the right size.
FileOpResult SafeMoveFile(const std::string& source, const std::string& target,
                          const CopyProgress& progress = {}, const std::atomic<bool>* abort = nullptr);

// Renames `from` in `fromFolder` to `to` in `toFolder` (open folders, or
// AT_FDCWD) only when no entry `to` exists; fails with EEXIST otherwise.
// Where the file system has no such rename, a hard link stands in for it, and
// only where it has neither does a look before the rename.
int RenameNoReplace(int fromFolder, const char* from, int toFolder, const char* to);

}  // namespace trel
