#include "PeImage.h"

#include <algorithm>
#include <stdexcept>

#include "ByteImage.h"

namespace trel::gen {
namespace {

constexpr size_t kPeOffset = 0x80;
constexpr size_t kOptionalHeader = kPeOffset + 24;
constexpr size_t kOptionalHeaderSize = 224;
constexpr size_t kSectionTable = kOptionalHeader + kOptionalHeaderSize;
constexpr uint32_t kExportOffset = 0x100;  // export directory inside the code section
constexpr uint16_t kLanguage = 0x0409;

uint32_t AlignUp(size_t v, uint32_t a) { return static_cast<uint32_t>((v + a - 1) / a * a); }

// The usual DOS stub: print a line and quit.
void PutDosHeader(ByteImage& img) {
  img.Bytes(0, "MZ");
  img.U16(0x02, 0x90);
  img.U16(0x04, 3);
  img.U16(0x08, 4);
  img.U16(0x0C, 0xFFFF);
  img.U16(0x10, 0xB8);
  img.U16(0x18, 0x40);
  img.U32(0x3C, kPeOffset);
  const std::string stub("\x0E\x1F\xBA\x0E\x00\xB4\x09\xCD\x21\xB8\x01\x4C\xCD\x21", 14);
  img.Bytes(0x40, stub + "This program cannot be run in DOS mode.\r\r\n$");
}

void PutSection(ByteImage& img, size_t at, const char* name, uint32_t va, uint32_t rawSize,
                uint32_t rawOffset, uint32_t characteristics) {
  img.Bytes(at, std::string(name) + std::string(8 - std::string(name).size(), '\0'));
  img.U32(at + 8, rawSize);
  img.U32(at + 12, va);
  img.U32(at + 16, rawSize);
  img.U32(at + 20, rawOffset);
  img.U32(at + 36, characteristics);
}

struct CodeLayout {
  uint32_t dllMain, entry, exportDir, exportSize;
};

// DllMain returns TRUE; the entry point answers every call with
// userCanceledErr (-128) in *result, so a host that loads the template on its
// own does nothing with the image.
CodeLayout PutCode(ByteImage& img, const PeDescription& desc, uint32_t textVa) {
  const size_t base = desc.textOffset;
  img.Bytes(base, std::string("\xB8\x01\x00\x00\x00\xC2\x0C\x00", 8));
  img.Bytes(base + 0x10, std::string("\x8B\x44\x24\x10\x66\xC7\x00\x80\xFF\xC3", 10));
  CodeLayout code{textVa, textVa + 0x10, textVa + kExportOffset, 0};

  const size_t dir = base + kExportOffset;
  const uint32_t eat = code.exportDir + 40, ent = eat + 4, ordinals = ent + 4, dllName = ordinals + 4;
  const uint32_t entryName = dllName + static_cast<uint32_t>(desc.dllName.size()) + 1;
  img.U32(dir + 12, dllName);
  img.U32(dir + 16, 1);  // ordinal base
  img.U32(dir + 20, 1);
  img.U32(dir + 24, 1);
  img.U32(dir + 28, eat);
  img.U32(dir + 32, ent);
  img.U32(dir + 36, ordinals);
  img.U32(dir + 40, code.entry);
  img.U32(dir + 44, entryName);
  img.U16(dir + 48, 0);
  img.Bytes(dir + 52, desc.dllName + '\0' + desc.entryName + '\0');
  code.exportSize = entryName + static_cast<uint32_t>(desc.entryName.size()) + 1 - code.exportDir;
  return code;
}

// The resource directory: root (named types, sorted) -> one ID each -> one
// language each -> data entry; the type names behind them as counted UTF-16.
// Returns the directory's size.
size_t PutResourceDirectory(ByteImage& img, std::vector<PeResource> resources, size_t section,
                            uint32_t sectionVa) {
  std::sort(resources.begin(), resources.end(),
            [](const PeResource& a, const PeResource& b) { return a.type < b.type; });
  const size_t n = resources.size();
  const size_t root = 0, types = 16 + 8 * n, langs = types + 24 * n, data = langs + 24 * n;
  size_t strings = data + 16 * n;
  img.U16(section + root + 12, static_cast<uint16_t>(n));  // named entries
  for (size_t i = 0; i < n; ++i) {
    const PeResource& r = resources[i];
    const size_t typeDir = types + 24 * i, langDir = langs + 24 * i, entry = data + 16 * i;
    img.U32(section + root + 16 + 8 * i, 0x80000000u | static_cast<uint32_t>(strings));
    img.U32(section + root + 20 + 8 * i, 0x80000000u | static_cast<uint32_t>(typeDir));
    img.U16(section + typeDir + 14, 1);
    img.U32(section + typeDir + 16, r.id);
    img.U32(section + typeDir + 20, 0x80000000u | static_cast<uint32_t>(langDir));
    img.U16(section + langDir + 14, 1);
    img.U32(section + langDir + 16, kLanguage);
    img.U32(section + langDir + 20, static_cast<uint32_t>(entry));
    img.U32(section + entry, sectionVa + static_cast<uint32_t>(r.fileOffset - section));
    img.U32(section + entry + 4, static_cast<uint32_t>(r.data.size()));
    img.U16(section + strings, static_cast<uint16_t>(r.type.size()));
    for (size_t c = 0; c < r.type.size(); ++c) img.U16(section + strings + 2 + 2 * c, static_cast<uint8_t>(r.type[c]));
    strings += 2 + 2 * r.type.size();
  }
  return strings;
}

void CheckPlacement(const PeDescription& desc, size_t directorySize) {
  std::vector<std::pair<size_t, size_t>> spans{{desc.rsrcOffset, desc.rsrcOffset + directorySize}};
  for (const auto& r : desc.resources) {
    if (r.fileOffset < desc.rsrcOffset || r.fileOffset + r.data.size() > desc.fileSize)
      throw std::runtime_error("resource " + r.type + " lies outside the resource section");
    spans.emplace_back(r.fileOffset, r.fileOffset + r.data.size());
  }
  std::sort(spans.begin(), spans.end());
  for (size_t i = 1; i < spans.size(); ++i)
    if (spans[i].first < spans[i - 1].second)
      throw std::runtime_error("resources overlap at file offset " + std::to_string(spans[i].first));
}

}  // namespace

std::string BuildPeImage(const PeDescription& desc) {
  if (desc.textOffset % kFileAlignment || desc.rsrcOffset % kFileAlignment ||
      desc.fileSize % kFileAlignment || desc.textOffset < kSectionTable + 80 ||
      desc.rsrcOffset <= desc.textOffset + kExportOffset + 128)
    throw std::runtime_error("section layout of " + desc.dllName + " is not aligned");
  ByteImage img(desc.fileSize);
  PutDosHeader(img);

  const uint32_t textSize = static_cast<uint32_t>(desc.rsrcOffset - desc.textOffset);
  const uint32_t rsrcSize = static_cast<uint32_t>(desc.fileSize - desc.rsrcOffset);
  const uint32_t textVa = kSectionAlignment;
  const uint32_t rsrcVa = textVa + AlignUp(textSize, kSectionAlignment);
  const CodeLayout code = PutCode(img, desc, textVa);
  const size_t directorySize = PutResourceDirectory(img, desc.resources, desc.rsrcOffset, rsrcVa);
  CheckPlacement(desc, directorySize);
  for (const auto& r : desc.resources) img.Bytes(r.fileOffset, r.data);

  img.Bytes(kPeOffset, std::string("PE\0\0", 4));
  img.U16(kPeOffset + 4, 0x014C);  // i386
  img.U16(kPeOffset + 6, 2);
  img.U16(kPeOffset + 20, kOptionalHeaderSize);
  img.U16(kPeOffset + 22, 0x2102);  // executable, 32-bit, DLL
  const size_t o = kOptionalHeader;
  img.U16(o, 0x010B);
  img.U8(o + 2, 6);
  img.U32(o + 4, textSize);
  img.U32(o + 8, rsrcSize);
  img.U32(o + 16, code.dllMain);
  img.U32(o + 20, textVa);
  img.U32(o + 24, rsrcVa);
  img.U32(o + 28, kImageBase);
  img.U32(o + 32, kSectionAlignment);
  img.U32(o + 36, kFileAlignment);
  img.U16(o + 40, 4);
  img.U16(o + 44, 1);
  img.U16(o + 48, 4);
  img.U32(o + 56, rsrcVa + AlignUp(rsrcSize, kSectionAlignment));
  img.U32(o + 60, static_cast<uint32_t>(desc.textOffset));
  img.U16(o + 68, 2);  // Windows GUI
  img.U32(o + 72, 0x100000);
  img.U32(o + 76, 0x1000);
  img.U32(o + 80, 0x100000);
  img.U32(o + 84, 0x1000);
  img.U32(o + 92, 16);
  img.U32(o + 96, code.exportDir);
  img.U32(o + 100, code.exportSize);
  img.U32(o + 96 + 16, rsrcVa);
  img.U32(o + 100 + 16, rsrcSize);
  PutSection(img, kSectionTable, ".text", textVa, textSize, static_cast<uint32_t>(desc.textOffset), 0x60000020);
  PutSection(img, kSectionTable + 40, ".rsrc", rsrcVa, rsrcSize, static_cast<uint32_t>(desc.rsrcOffset),
             0x40000040);
  return img.bytes();
}

namespace {

uint32_t Read32(const std::string& b, size_t at) {
  if (at + 4 > b.size()) throw std::runtime_error("the code DLL is cut short");
  return uint32_t(uint8_t(b[at])) | uint32_t(uint8_t(b[at + 1])) << 8 | uint32_t(uint8_t(b[at + 2])) << 16 |
         uint32_t(uint8_t(b[at + 3])) << 24;
}
uint16_t Read16(const std::string& b, size_t at) { return static_cast<uint16_t>(Read32(b, at) & 0xFFFF); }

}  // namespace

std::string AttachResources(const std::string& dll, size_t rsrcOffset, size_t fileSize,
                            const std::vector<PeResource>& resources) {
  if (dll.size() < 0x40 || dll[0] != 'M' || dll[1] != 'Z') throw std::runtime_error("the code DLL is no PE file");
  const size_t pe = Read32(dll, 0x3C);
  if (dll.compare(pe, 4, std::string("PE\0\0", 4)) != 0) throw std::runtime_error("the code DLL is no PE file");
  const uint16_t sections = Read16(dll, pe + 6);
  const size_t opt = pe + 24;
  const bool plus = Read16(dll, opt) == 0x020B;
  const size_t table = opt + Read16(dll, pe + 20);
  const uint32_t sectionAlign = Read32(dll, opt + 32), fileAlign = Read32(dll, opt + 36);
  const uint32_t headers = Read32(dll, opt + 60);
  if (dll.size() > rsrcOffset)
    throw std::runtime_error("the code DLL (" + std::to_string(dll.size()) + " bytes) does not fit its room of " +
                             std::to_string(rsrcOffset) + " bytes");
  if (rsrcOffset % fileAlign || fileSize % fileAlign) throw std::runtime_error("resource section not aligned");
  const size_t newHeader = table + 40u * sections;
  if (newHeader + 40 > headers) throw std::runtime_error("no room for the resource section's header");
  uint32_t end = 0;
  for (uint16_t i = 0; i < sections; ++i) {
    const size_t h = table + 40u * i;
    end = std::max(end, Read32(dll, h + 12) + std::max(Read32(dll, h + 8), Read32(dll, h + 16)));
  }
  const uint32_t va = AlignUp(end, sectionAlign);
  const uint32_t size = static_cast<uint32_t>(fileSize - rsrcOffset);

  ByteImage img(fileSize);
  img.Bytes(0, dll);
  const size_t directorySize = PutResourceDirectory(img, resources, rsrcOffset, va);
  PeDescription check;
  check.rsrcOffset = rsrcOffset;
  check.fileSize = fileSize;
  check.resources = resources;
  CheckPlacement(check, directorySize);
  for (const auto& r : resources) img.Bytes(r.fileOffset, r.data);
  PutSection(img, newHeader, ".rsrc", va, size, static_cast<uint32_t>(rsrcOffset), 0x40000040);
  img.U16(pe + 6, static_cast<uint16_t>(sections + 1));
  img.U32(opt + 56, va + AlignUp(size, sectionAlign));  // size of the image
  img.U32(opt + 64, 0);                                  // no checksum
  const size_t directories = opt + (plus ? 112 : 96);
  img.U32(directories + 16, va);
  img.U32(directories + 20, size);
  return img.bytes();
}

}  // namespace trel::gen
