#include "support/TempDir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace trel::test {

TempDir::TempDir() {
  std::string pattern = (std::filesystem::temp_directory_path() / "trel-test-XXXXXX").string();
  if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
  path_ = pattern + "/";
}

TempDir::~TempDir() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempDir::Write(const std::string& name, const std::string& bytes) const {
  WriteFileBytes(file(name), bytes);
  return file(name);
}

std::string TempDir::Read(const std::string& name) const { return ReadFileBytes(file(name)); }

bool TempDir::Exists(const std::string& name) const { return std::filesystem::exists(file(name)); }

std::string ReadFileBytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void WriteFileBytes(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

}  // namespace trel::test
