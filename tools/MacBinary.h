// A MacBinary II file: the 128-byte header, a data fork and a resource fork,
// each padded to 128 bytes. Resources stand at fixed offsets in the file; the
// resource map is put at the end of the fork, which fills the file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace trel::gen {

struct MacResource {
  std::string type;   // four characters
  int16_t id;
  size_t fileOffset;  // where the data (behind its 4-byte length) must stand
  std::string data;
};

struct MacBinaryDescription {
  std::string fileName;  // up to 63 characters
  std::string fileType, creator;
  size_t fileSize;       // a multiple of 128
  std::string dataFork;
  std::vector<MacResource> resources;
};

std::string BuildMacBinary(const MacBinaryDescription& desc);
uint16_t MacBinaryCrc(const std::string& bytes);  // CRC-16/XMODEM

}  // namespace trel::gen
