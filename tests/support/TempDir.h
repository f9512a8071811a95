// A fresh temporary folder per test, removed afterwards, with small helpers to
// write and read files as bytes.
#pragma once

#include <string>

namespace trel::test {

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }  // ends in '/'
  std::string file(const std::string& name) const { return path_ + name; }
  std::string Write(const std::string& name, const std::string& bytes) const;  // returns the path
  std::string Read(const std::string& name) const;  // empty when missing
  bool Exists(const std::string& name) const;

 private:
  std::string path_;
};

std::string ReadFileBytes(const std::string& path);
void WriteFileBytes(const std::string& path, const std::string& bytes);

}  // namespace trel::test
