// Writes a target file so that a failure never leaves a half-written file where
// a good one stood: the bytes go to a temporary file in the same folder, which
// replaces the target only when everything was written. The one way the
// program replaces a file: the writers, the list files and the copies all go
// through here.
#pragma once

#include <memory>
#include <string>

#include "base/BinFile.h"

namespace trel {

// A new file beside `target`, under a hidden name of its own, in the same
// folder so that the final rename never crosses a file system. It is made
// exclusively (never over a file that is there) with `mode` less the umask,
// and opened for writing. On failure `fd` is -1 and `error` holds errno.
struct TempBeside {
  std::string path;
  int fd = -1;
  int error = 0;
};
TempBeside CreateTempBeside(const std::string& target, unsigned mode);
// The same for a file named `name` in the open folder `folderFd`, as a batch
// of copies into one folder makes them; `path` is then relative to the folder.
TempBeside CreateTempAt(int folderFd, const std::string& name, unsigned mode);
// Whether a file name is one CreateTempBeside gives: a writer's file that
// isn't complete yet, or one a crash left behind.
bool IsTempBesideName(const std::string& name);

class SafeTarget {
 public:
  // startFromExisting: the temporary file begins as a copy of the target, for
  // writers that patch a file or don't truncate it.
  SafeTarget(std::string targetPath, bool startFromExisting);
  ~SafeTarget();  // drops the temporary file unless committed
  SafeTarget(const SafeTarget&) = delete;
  SafeTarget& operator=(const SafeTarget&) = delete;

  BinFile* file() { return file_.get(); }  // null when the temporary could not be made
  const std::string& error() const { return error_; }
  // Closes the file and moves it over the target; false (and error()) on failure.
  bool Commit();

 private:
  std::string target_;
  std::string temp_;
  std::unique_ptr<BinFile> file_;
  std::string error_;
  bool committed_ = false;
};

// Writes `bytes` as the whole new content of `path` through a SafeTarget: the
// old file stays as it was unless everything could be written.
bool WriteWholeFile(const std::string& path, const std::string& bytes);

}  // namespace trel
