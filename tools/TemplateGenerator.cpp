// Writes the template plugins into the folder given as the first argument.
// Further arguments NAME=CODE_DLL give plugin code to build a template around:
// photo64.dll (Trel's 64-bit template) and photo30.dll / photo304.dll (the
// 32-bit ones, whose code otherwise does nothing).
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "Templates.h"

namespace {

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  const std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (!in && !in.eof()) throw std::runtime_error("cannot read " + path);
  return bytes;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s OUTPUT_FOLDER [photo64.dll=CODE] [photo30.dll=CODE] [photo304.dll=CODE]\n",
                 argv[0]);
    return 2;
  }
  try {
    const std::filesystem::path folder(argv[1]);
    std::filesystem::create_directories(folder);
    std::map<std::string, std::string> code;
    for (int i = 2; i < argc; ++i) {
      const std::string arg = argv[i];
      const size_t eq = arg.find('=');
      if (eq == std::string::npos) throw std::runtime_error("expected NAME=CODE_DLL, got " + arg);
      if (eq + 1 < arg.size()) code[arg.substr(0, eq)] = ReadFile(arg.substr(eq + 1));
    }
    std::vector<std::pair<std::string, std::string>> files;
    for (const auto& t : trel::gen::AllTemplates()) {
      const auto it = code.find(t.name);
      std::string bytes;
      if (it != code.end()) {
        try {
          bytes = trel::gen::BuildPhotoshopTemplate(t.kind, it->second);
        } catch (const std::exception& e) {
          // The shaped template still serves the readers and the compiler.
          std::fprintf(stderr, "template generator: warning: %s keeps its inactive code: %s\n", t.name.c_str(),
                       e.what());
        }
      }
      files.emplace_back(t.name, bytes.empty() ? trel::gen::BuildTemplate(t.kind) : bytes);
    }
    if (const auto it = code.find("photo64.dll"); it != code.end())
      files.emplace_back("photo64.dll", trel::gen::BuildPhoto64(it->second));
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
