#include "MacBinary.h"

#include <algorithm>
#include <stdexcept>

#include "ByteImage.h"

namespace trel::gen {
namespace {

constexpr size_t kHeader = 128;
constexpr size_t kForkHeader = 256;  // fork header plus the space reserved behind it
constexpr uint32_t kFixedDate = 0xB4000000;  // a fixed date keeps the build reproducible

size_t Pad128(size_t n) { return (n + 127) / 128 * 128; }

}  // namespace

uint16_t MacBinaryCrc(const std::string& bytes) {
  uint16_t crc = 0;
  for (unsigned char byte : bytes) {
    crc ^= static_cast<uint16_t>(byte << 8);
    for (int bit = 0; bit < 8; ++bit)
      crc = static_cast<uint16_t>((crc & 0x8000) ? (crc << 1) ^ 0x1021 : crc << 1);
  }
  return crc;
}

std::string BuildMacBinary(const MacBinaryDescription& desc) {
  if (desc.fileName.empty() || desc.fileName.size() > 63 || desc.fileSize % 128)
    throw std::runtime_error("bad Mac Binary header data");
  ByteImage img(desc.fileSize);
  const size_t fork = kHeader + Pad128(desc.dataFork.size());
  if (fork + kForkHeader >= desc.fileSize) throw std::runtime_error("no room for the resource fork");
  const size_t forkLength = desc.fileSize - fork;
  img.Bytes(kHeader, desc.dataFork);

  // The resource map: header copy, then the type list, then reference lists.
  std::vector<std::string> types;
  for (const auto& r : desc.resources)
    if (std::find(types.begin(), types.end(), r.type) == types.end()) types.push_back(r.type);
  const size_t typeList = 28, refLists = typeList + 2 + 8 * types.size();
  const size_t mapLength = refLists + 12 * desc.resources.size();
  const size_t mapOffset = forkLength - mapLength;  // fork-relative
  const size_t dataArea = fork + kForkHeader;

  size_t lastEnd = dataArea;
  std::vector<MacResource> sorted = desc.resources;
  std::sort(sorted.begin(), sorted.end(),
            [](const MacResource& a, const MacResource& b) { return a.fileOffset < b.fileOffset; });
  for (const auto& r : sorted) {
    if (r.fileOffset < lastEnd + 4 || r.fileOffset + r.data.size() > fork + mapOffset)
      throw std::runtime_error("resource " + r.type + " is misplaced");
    img.U32BE(r.fileOffset - 4, static_cast<uint32_t>(r.data.size()));
    img.Bytes(r.fileOffset, r.data);
    lastEnd = r.fileOffset + r.data.size();
  }

  const auto putForkHeader = [&](size_t at) {
    img.U32BE(at, kForkHeader);
    img.U32BE(at + 4, static_cast<uint32_t>(mapOffset));
    img.U32BE(at + 8, static_cast<uint32_t>(mapOffset - kForkHeader));
    img.U32BE(at + 12, static_cast<uint32_t>(mapLength));
  };
  putForkHeader(fork);
  const size_t map = fork + mapOffset;
  putForkHeader(map);
  img.U16BE(map + 24, static_cast<uint16_t>(typeList));
  img.U16BE(map + 26, static_cast<uint16_t>(mapLength));  // empty name list at the end
  img.U16BE(map + typeList, static_cast<uint16_t>(types.size() - 1));
  size_t ref = refLists;
  for (size_t t = 0; t < types.size(); ++t) {
    size_t count = 0;
    const size_t firstRef = ref;
    for (const auto& r : desc.resources) {
      if (r.type != types[t]) continue;
      img.U16BE(map + ref, static_cast<uint16_t>(r.id));
      img.U16BE(map + ref + 2, 0xFFFF);  // no name
      img.U32BE(map + ref + 4, static_cast<uint32_t>(r.fileOffset - 4 - dataArea));  // attributes 0
      ref += 12;
      ++count;
    }
    const size_t entry = map + typeList + 2 + 8 * t;
    img.Bytes(entry, types[t]);
    img.U16BE(entry + 4, static_cast<uint16_t>(count - 1));
    img.U16BE(entry + 6, static_cast<uint16_t>(firstRef - typeList));
  }

  img.U8(1, static_cast<uint8_t>(desc.fileName.size()));
  img.Bytes(2, desc.fileName);
  img.Bytes(65, desc.fileType);
  img.Bytes(69, desc.creator);
  img.U32BE(83, static_cast<uint32_t>(desc.dataFork.size()));
  img.U32BE(87, static_cast<uint32_t>(forkLength));
  img.U32BE(91, kFixedDate);
  img.U32BE(95, kFixedDate);
  img.U8(122, 129);  // written by MacBinary II
  img.U8(123, 129);  // readable by MacBinary II
  img.U16BE(124, MacBinaryCrc(img.bytes().substr(0, 124)));
  return img.bytes();
}

}  // namespace trel::gen
