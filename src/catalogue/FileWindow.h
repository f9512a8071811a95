// Reading parts of a plugin file by offset with as few system calls as the
// platform allows: one open, one size query, one read per window. The scanner
// reads thousands of files and little of each, so the calls are the cost.
#pragma once

#include <cstdint>
#include <string>

namespace trel {

class FileWindow {
 public:
  explicit FileWindow(const std::string& path);
  ~FileWindow();
  FileWindow(const FileWindow&) = delete;
  FileWindow& operator=(const FileWindow&) = delete;

  bool IsOpen() const;
  int64_t Length() const { return length_; }
  // Up to `count` bytes from the 0-based `offset`; fewer at the end of the
  // file, none for an offset outside it or on a read error.
  std::string Read(int64_t offset, int64_t count) const;

 private:
  int fd_ = -1;
  void* stream_ = nullptr;  // where there are no descriptors
  int64_t length_ = -1;
};

}  // namespace trel
