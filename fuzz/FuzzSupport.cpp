#include "FuzzSupport.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

namespace trel::fuzz {
namespace {

struct Scratch {
  std::string folder;
  Scratch() {
    std::string pattern = (std::filesystem::temp_directory_path() / "trel-fuzz-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
      std::perror("trel fuzz: scratch folder");
      std::abort();
    }
    folder = pattern + "/";
  }
  ~Scratch() {
    std::error_code ec;
    std::filesystem::remove_all(folder, ec);
  }
};

}  // namespace

const std::string& ScratchFolder() {
  static const Scratch scratch;
  return scratch.folder;
}

std::string WriteScratch(const std::string& name, std::string_view bytes) {
  const std::string path = ScratchFolder() + name;
  std::FILE* file = std::fopen(path.c_str(), "wb");
  // A scratch file that cannot be written is the machine's fault, not a finding.
  if (!file) {
    std::perror(path.c_str());
    std::abort();
  }
  if (!bytes.empty() && std::fwrite(bytes.data(), 1, bytes.size(), file) != bytes.size()) {
    std::perror(path.c_str());
    std::abort();
  }
  std::fclose(file);
  return path;
}

}  // namespace trel::fuzz
