// FFX: a binary record of length-prefixed strings. Only the lowest byte of each
// 4-byte length is used, so strings of up to 255 bytes are read correctly and
// longer ones derail the reader, as in every program that reads the format.
#include <optional>
#include <string>

#include "base/BinFile.h"
#include "base/Paths.h"
#include "filter/SourceFiles.h"
#include "filter/TextFormats.h"

namespace trel {
namespace {

// Reads the string field at `position` and moves it behind the field. A field
// that runs past the end of the file is an error: the file is short.
std::optional<std::string> ReadFfxString(BinFile& file, int64_t& position) {
  const int length = file.ByteAt(position);
  if (length < 0) return std::nullopt;
  std::string text = file.Read(position + 4, length);
  if (static_cast<int>(text.size()) != length) return std::nullopt;
  position += 4 + length;
  return text;
}

}  // namespace

bool ReadFFX(FFFilter& f, std::string folder, const std::string& name, const FilterEnv&) {
  const std::string path = WithTrailingSeparator(folder) + name;
  if (!FileExists(path)) return false;  // no refresh of the lists for this format
  if (FileLength(path) > kMaxSourceFileSize) return false;
  auto file = BinFile::Open(path, BinFile::Mode::Read);
  if (!file) return false;
  IniVars(f);
  f.filename = name;

  int64_t position = 1;
  const auto format = ReadFfxString(*file, position);
  if (!format || format->rfind("FFX", 0) != 0) return false;
  std::string discarded;
  for (std::string* field : {&f.title, &f.category, &f.author, &f.copyright, &discarded, &f.codeR,
                             &f.codeG, &f.codeB, &f.codeA}) {
    auto text = ReadFfxString(*file, position);
    if (!text) return false;
    *field = std::move(*text);
  }
  for (int i = 1; i <= 8; ++i) {
    auto text = ReadFfxString(*file, position);
    if (!text) return false;
    f.ctlName[i] = std::move(*text);
    position += 1;  // a byte of unknown meaning
    const int value = file->ByteAt(position);
    if (value < 0 || file->Length() < position + 3) return false;  // the 4-byte slot is cut off
    f.ctlValue[i] = static_cast<uint8_t>(value);
    position += 4;
  }
  return !file->Failed();
}

}  // namespace trel
