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

// Adds a resource section to a DLL built elsewhere (a PE32 or PE32+ file
// without resources): the section starts at `rsrcOffset`, which must lie
// behind the DLL's own bytes, and runs to `fileSize`; the resources stand at
// their given file offsets inside it. Throws std::runtime_error when the DLL
// is no such file, does not fit, or has no room for one more section header.
std::string AttachResources(const std::string& dll, size_t rsrcOffset, size_t fileSize,
                            const std::vector<PeResource>& resources);

inline constexpr uint32_t kSectionAlignment = 0x1000;
inline constexpr uint32_t kFileAlignment = 0x200;
inline constexpr uint32_t kImageBase = 0x10000000;

}  // namespace trel::gen
