// Filter Factory Library files: the entry table, the entries read back by their
// positions, the text walk from the top, and the search. The first byte gives
// the length of the search text that follows it; the rest is the library.
#include <cstddef>
#include <string>

#include "FuzzSupport.h"
#include "base/BinFile.h"
#include "filter/FFL.h"

namespace {
// A library can hold many thousand entries; a few show the reads as well.
constexpr size_t kEntriesRead = 64;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  trel::fuzz::Input in(data, size);
  std::string search;
  for (int n = in.Byte() % 16; n > 0; --n) search += static_cast<char>(in.Byte());
  const std::string path = trel::fuzz::WriteScratch("in.ffl", in.Rest());
  trel::FFLLibrary library;
  if (trel::ReadFFLLibrary(path, library)) {
    auto file = trel::BinFile::Open(path, trel::BinFile::Mode::Read);
    for (size_t i = 0; file && i < library.positions.size() && i < kEntriesRead; ++i) {
      file->Seek(library.positions[i]);
      trel::FFFilter f;
      trel::ReadFFLEntryII(f, *file);
    }
    library.PositionOf(static_cast<int>(library.positions.size()));
  }

  if (auto reader = trel::FFLTextReader::Open(path)) {
    std::string line;
    reader->ReadLine(line);  // the version
    reader->ReadLine(line);  // the count
    std::string problem;
    for (size_t i = 0; i < kEntriesRead; ++i) {
      trel::FFFilter f;
      if (trel::ReadFFLEntry(f, *reader, problem) != trel::FFLRead::Entry) break;
    }
  }

  (void)trel::cmd_SearchFFL(path, search);
  return 0;
}
