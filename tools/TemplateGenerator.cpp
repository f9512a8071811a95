// Writes the template plugins into the folder given as the only argument.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>

#include "Templates.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s OUTPUT_FOLDER\n", argv[0]);
    return 2;
  }
  try {
    const std::filesystem::path folder(argv[1]);
    std::filesystem::create_directories(folder);
    for (const auto& t : trel::gen::AllTemplates()) {
      const std::string bytes = trel::gen::BuildTemplate(t.kind);
      const auto target = folder / t.name;
      const auto temp = folder / (t.name + ".part");
      std::ofstream out(temp, std::ios::binary | std::ios::trunc);
      out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
      out.close();
      if (!out) throw std::runtime_error("cannot write " + temp.string());
      std::filesystem::rename(temp, target);
    }
  } catch (const std::exception& e) {
    std::fprintf(stderr, "template generator: %s\n", e.what());
    return 1;
  }
  return 0;
}
