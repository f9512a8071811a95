// Builds plugin files for the tests from readable descriptions: Windows DLLs
// (PE32 or PE32+) whose resource section holds PiPL, PIMI, _8BFM, version and
// any other resources, and plain files with bytes at chosen places for the
// Premiere signatures. Sizes and positions are chosen by the test.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace trel::test {

// One resource: a named type ("PIPL", "PIMI", "_8BFM") or a numbered one.
struct PeResource {
  std::string typeName;  // empty: numbered type `typeId`
  uint16_t typeId = 0;
  uint16_t id = 16000;
  std::string data;
};

struct PeOptions {
  bool pe32plus = true;            // 64-bit, as most plugins are today
  uint32_t peHeaderOffset = 0xF8;  // e_lfanew
  int sectionsBefore = 4;          // empty sections (.text, .rdata, ...) before .rsrc
  uint32_t rsrcRawOffset = 0;      // 0: behind the headers and the other sections
  uint32_t rsrcVirtualAddress = 0x9000;
  size_t fileSize = 0;             // padded with zeros to this size; 0: as built
  uint8_t filler = 0;              // the byte of the padding
};

// The DLL as bytes. Types appear in the root directory named ones first (in
// upper-case name order), then numbered ones; resources of a type by id.
std::string BuildPe(const std::vector<PeResource>& resources, const PeOptions& options = {});
// A plugin with one filter's PiPL.
std::string PiplPlugin(const std::string& category, const std::string& title, const PeOptions& options = {});
// As BuildPe, with the section moved so that `text` (its first occurrence)
// begins at the 1-based file position `position`.
std::string BuildPeWithTextAt(const std::vector<PeResource>& resources, PeOptions options,
                              const std::string& text, size_t position);

// One filter's property list, as a host reads it.
struct PiplFilter {
  std::string category;
  std::string title;
  bool nameFirst = true;         // the "name" property before "catg"
  int extraPadding = 0;          // zero bytes after each string beyond the 4-byte padding
  bool countIncludesPadding = false;  // the Pascal count covers the padding zeros too
  bool withCategory = true;
  bool withName = true;
};
std::string PiplData(const PiplFilter& filter);
std::string PimiData(const std::string& category);  // 16-bit version, zero-terminated text
std::string Bfm8Data(const std::string& title);
// A version resource with the given string values ("FileDescription", ...).
std::string VersionData(const std::vector<std::pair<std::string, std::string>>& strings);

PeResource Pipl(const PiplFilter& filter, uint16_t id = 16000);
PeResource Pimi(const std::string& category, uint16_t id = 16000);
PeResource Bfm8(const std::string& title, uint16_t id = 16000);
PeResource Version(const std::vector<std::pair<std::string, std::string>>& strings);

// A file of `size` bytes of `filler` with the given bytes at 0-based offsets.
std::string PlaceBytes(size_t size, const std::vector<std::pair<size_t, std::string>>& placements,
                       uint8_t filler = 0);

// Premiere 4 signatures. Video: "VFlt" stored reversed, a version byte at +8
// (below 3: title at +16, else at +8). Audio: "AFlt", title at +8.
std::string PremiereVideo(const std::string& title, uint8_t version = 1);
std::string PremiereAudio(const std::string& title);
// Transition: "SPFX" reversed, first name at +8, zeros, then the second name.
std::string PremiereTransition(const std::string& firstName, const std::string& secondName,
                               size_t zerosBetween = 4);
// An "8BIM" property as it stands in a PiPL: key "name" or "catg", Pascal string.
std::string PiplProperty(const std::string& key, const std::string& text, int extraPadding = 0);

}  // namespace trel::test
