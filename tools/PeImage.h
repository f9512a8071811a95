// A minimal PE32 DLL: DOS header and stub, PE and optional headers, a code
// section and a resource section. The code section holds a DllMain that
// succeeds and one exported entry point; it has a fixed size, so real code can
// replace it later without moving anything in the resource section.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace trel::gen {

struct PeResource {
  std::string type;     // a named type ("PIPL", "PARM" ...)
  uint16_t id;
  size_t fileOffset;    // where the data must stand in the file (0-based)
  std::string data;
};

struct PeDescription {
  std::string dllName;
  std::string entryName;  // exported name of the plugin entry point
  size_t fileSize;
  size_t textOffset;      // file offset of the code section (after the headers)
  size_t rsrcOffset;      // file offset of the resource section; it runs to the end
  std::vector<PeResource> resources;
};

// Throws std::runtime_error when the resources overlap each other or the
// resource directory, or don't fit the section.
std::string BuildPeImage(const PeDescription& desc);

inline constexpr uint32_t kSectionAlignment = 0x1000;
inline constexpr uint32_t kFileAlignment = 0x200;
inline constexpr uint32_t kImageBase = 0x10000000;

}  // namespace trel::gen
