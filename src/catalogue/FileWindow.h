// Reading parts of a plugin file by offset with as few system calls as the
// platform allows: one open, one size query, one read per window. The scanner
// reads thousands of files and little of each, so the calls are the cost.
#pragma once

#include <cstdint>
#include <string>

namespace trel {

// The size and modification time of a file as its reader found them on
// opening it, before any byte was read: what a cache of scan results keys on.
struct FileFacts {
  bool known = false;
  int64_t size = -1;
  int64_t mtime = 0;  // nanoseconds of the file clock
};

class FileWindow {
 public:
  explicit FileWindow(const std::string& path);
  ~FileWindow();
  FileWindow(const FileWindow&) = delete;
  FileWindow& operator=(const FileWindow&) = delete;

  bool IsOpen() const;
  int64_t Length() const { return length_; }
  // Nanoseconds of the file clock; 0 where the platform doesn't say.
  int64_t ModificationTime() const { return mtime_; }
  // Up to `count` bytes from the 0-based `offset`; fewer at the end of the
  // file, none for an offset outside it or on a read error.
  std::string Read(int64_t offset, int64_t count) const;

 private:
  int fd_ = -1;
  [[maybe_unused]] void* stream_ = nullptr;  // where there are no descriptors
  int64_t length_ = -1;
  int64_t mtime_ = 0;
};

}  // namespace trel
