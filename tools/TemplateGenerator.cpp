// Writes the template plugins into the folder given as the first argument;
// with a second, the 64-bit plugin code, also Trel's 64-bit template.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "Templates.h"

int main(int argc, char** argv) {
  if (argc != 2 && argc != 3) {
    std::fprintf(stderr, "usage: %s OUTPUT_FOLDER [PLUGIN_CODE_DLL]\n", argv[0]);
    return 2;
  }
  try {
    const std::filesystem::path folder(argv[1]);
    std::filesystem::create_directories(folder);
    std::vector<std::pair<std::string, std::string>> files;
    for (const auto& t : trel::gen::AllTemplates()) files.emplace_back(t.name, trel::gen::BuildTemplate(t.kind));
    if (argc == 3) {
      std::ifstream in(argv[2], std::ios::binary);
      const std::string code((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
      if (!in && !in.eof()) throw std::runtime_error(std::string("cannot read ") + argv[2]);
      files.emplace_back("photo64.dll", trel::gen::BuildPhoto64(code));
    }
    for (const auto& [name, bytes] : files) {
      const auto target = folder / name;
      const auto temp = folder / (name + ".part");
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
