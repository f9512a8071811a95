// AFS and PFF, the line-oriented sibling formats: AFS holds Photoshop-dialect
// code, PFF Premiere-dialect code in the order blue, green, red, alpha. Lines end
// in a single CR; PFF puts a marker byte behind some of them.
#include <string>

#include "filter/ByteHelpers.h"
#include "filter/CodeRewrite.h"
#include "base/Paths.h"
#include "base/SafeTarget.h"
#include "filter/SourceFiles.h"
#include "filter/TextFormats.h"

namespace trel {
namespace {

enum class Kind { AFS, PFF };

// A value of a byte field; false when it lies outside 0..255.
bool ReadByteValue(const std::string& line, uint8_t& value) {
  const long long n = LeadingNumber(line);
  if (n < 0 || n > 255) return false;
  value = static_cast<uint8_t>(n);
  return true;
}

bool ReadAfsPff(FFFilter& f, const std::string& folder, const std::string& name, const FilterEnv& env,
                Kind kind) {
  const auto path = BeginSourceRead(f, folder, name, env);
  if (!path) return false;
  if (FileLength(*path) > kMaxSourceFileSize || name.size() < 3) return false;
  auto file = BinFile::Open(*path, BinFile::Mode::Read);
  if (!file) return false;
  f.filename = name.substr(0, name.size() - 3) + "8bf";

  // The magic is not checked. PFF's marker bytes behind the first seven lines
  // are below 14, so ReadtoDD takes them with the CR.
  if (kind == Kind::AFS) ReadtoD(*file); else ReadtoDD(*file);
  for (int i = 1; i <= 8; ++i) {
    const std::string line = (kind == Kind::PFF && i < 8) ? ReadtoDD(*file) : ReadtoD(*file);
    if (!ReadByteValue(line, f.ctlValue[i])) return false;
    if (f.ctlValue[i] != 0) f.ctlName[i] = "Slider " + std::to_string(i);
  }
  if (kind == Kind::AFS) {
    f.codeR = ReadtoDD(*file);
    f.codeG = ReadtoDD(*file);
    f.codeB = ReadtoDD(*file);
  } else {
    f.codeB = ReadtoDD(*file);
    f.codeG = ReadtoDD(*file);
    f.codeR = ReadtoDD(*file);
  }
  f.codeA = ReadtoDD(*file);
  f.title = f.filename;
  f.category = "Synthetic";

  if (!file->AtEnd()) {  // the metadata tail is optional
    f.category = ReadtoDD(*file);
    f.title = ReadtoDD(*file);
    f.author = ReadtoDD(*file);
    f.copyright = ReadtoDD(*file);
    for (int i = 1; i <= 8; ++i) {
      const std::string line = ReadtoDD(*file);  // "3: Name"
      if (line.size() > 3) f.ctlName[i] = line.substr(3);
    }
  }
  if (file->Failed()) return false;
  file->Close();
  OptimizeCode(f, env.options);
  f.isPhotoshop = kind == Kind::AFS;
  return true;
}

}  // namespace

bool ReadAFS(FFFilter& f, std::string folder, const std::string& name, const FilterEnv& env) {
  return ReadAfsPff(f, folder, name, env, Kind::AFS);
}

bool ReadPFF(FFFilter& f, std::string folder, const std::string& name, const FilterEnv& env) {
  return ReadAfsPff(f, folder, name, env, Kind::PFF);
}

// The writer does not truncate its target: overwriting a longer file leaves the
// old tail behind the new end, as files written by the program always had. The
// new bytes are written over a copy of the old file, which then replaces it, so a
// failed write leaves the old file whole.
void Writeafspff(FFFilter& f, std::string folder, int kind, const FilterEnv& env) {
  const bool pff = kind == 1;
  if (f.filename.find('.') == std::string::npos) f.filename += pff ? ".pff" : ".afs";
  folder = WithTrailingSeparator(folder);
  const std::string stem = f.filename.substr(0, f.filename.size() >= 4 ? f.filename.size() - 4 : 0);
  SafeTarget target(folder + stem + (pff ? ".pff" : ".afs"), /*startFromExisting=*/true);
  BinFile* file = target.file();
  if (!file) return;

  Writecode("%RGB-1.0", *file);
  if (pff) file->Put(2);
  for (int i = 1; i <= 8; ++i) {
    if (f.ctlName[i].empty()) f.ctlValue[i] = 0;
    Writecode(std::to_string(f.ctlValue[i]), *file);
    if (pff && i < 8) file->Put(1);
  }
  if (pff) {
    if (f.isPhotoshop) Correctcode(f);
    if (env.options.macFFAdaption) CorrectCodeForMac(f);
    for (const std::string* code : {&f.codeB, &f.codeG, &f.codeR, &f.codeA}) {
      Writecode(*code, *file);
      file->Put(13);
    }
  } else {
    if (!f.isPhotoshop) CorrectprmcodeAll(f);
    if (env.options.macFFAdaption) CorrectCodeForMac(f);
    for (const std::string* code : {&f.codeR, &f.codeG, &f.codeB, &f.codeA}) {
      Writecode(*code, *file);
      file->Put(13);
    }
  }
  for (const std::string* text : {&f.category, &f.title, &f.author, &f.copyright}) {
    Writecode(*text, *file);
    file->Put(13);
  }
  for (int i = 1; i <= 8; ++i) {
    Writecode(std::to_string(i) + ": " + f.ctlName[i], *file);
    file->Put(13);
  }
  target.Commit();
}

}  // namespace trel
