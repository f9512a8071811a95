// Files of the type table, and the version strings some of them are named by.
#include <algorithm>

#include "catalogue/ByteView.h"
#include "catalogue/PluginIdentification.h"
#include "base/BinFile.h"
#include "base/Paths.h"

namespace trel {
namespace {

struct VersionKey {
  const char* first;     // low bytes at distances 0, 2, 4, 6
  const char* last;      // low bytes at lastAt, +2, +4, +6
  int64_t lastAt;
  int64_t valueAt;       // where the value's first character stands
};

// The keys are found by eight of their characters. The value distances follow
// from the layout of a version string: a 6-byte header, the key with its zero,
// padding to four bytes.
constexpr VersionKey kVersionKeys[] = {
    {"File", "ript", 16, 34},  // "FileDescription"
    {"Inte", "Name", 16, 26},  // "InternalName"
    {"Prod", "Name", 14, 26},  // "ProductName"
};
constexpr int64_t kLastValueDistance = 300;
constexpr int64_t kBlock = 4 * 1024 * 1024;

bool LowBytesAre(const ByteView& v, int64_t at, const char* text) {
  for (int k = 0; k < 4; ++k) {
    const auto c = v.u8(at + 2 * k);
    if (!c || *c != static_cast<uint8_t>(text[k])) return false;
  }
  return true;
}

}  // namespace

std::string ReadVersionRessource(const std::string& path, int mode) {
  if (mode < 0 || mode > 2) return {};
  const VersionKey& key = kVersionKeys[mode];
  auto file = BinFile::Open(path, BinFile::Mode::Read);
  if (!file) return {};
  std::string value;
  // The whole file is searched, block by block; each block is read with enough
  // of the next one behind it to hold a value that starts inside the block.
  const int64_t length = file->Length();
  for (int64_t blockStart = 0; blockStart < length; blockStart += kBlock) {
    const std::string bytes = file->Read(blockStart + 1, kBlock + kLastValueDistance + 8);
    const ByteView v(bytes);
    const int64_t stop = std::min<int64_t>(kBlock, static_cast<int64_t>(bytes.size()));
    for (int64_t o = 0; o < stop; o += 2) {
      if (static_cast<uint8_t>(bytes[static_cast<size_t>(o)]) != static_cast<uint8_t>(key.first[0]))
        continue;
      if (!LowBytesAre(v, o, key.first) || !LowBytesAre(v, o + key.lastAt, key.last)) continue;
      for (int64_t d = key.valueAt; d <= kLastValueDistance; d += 2) {
        const auto c = v.u8(o + d);
        if (!c || *c == 0) break;
        value += static_cast<char>(*c);
      }
    }
  }
  return value;
}

bool ReadOther8b(const std::string& path, const PluginTypeTable& table, std::string& category,
                 std::string& title) {
  std::string folder, name;
  SplitPath(path, folder, name);
  const PluginType* row = table.isEmpty() ? nullptr : MatchPluginType(table, name);
  category = row ? "[" + row->typeName + "]" : "[Other Plugins]";
  if (row && !row->nameSource.empty() && row->nameSource[0] >= '0' && row->nameSource[0] < '3') {
    title = ReadVersionRessource(path, row->nameSource[0] - '0');
  }
  if (title.empty()) {
    auto cut = name.find('.');
    if (cut == std::string::npos) cut = name.find('_');
    title = name.substr(0, cut);
  }
  return !category.empty() && !title.empty();
}

}  // namespace trel
