#include "Templates.h"

#include "ByteImage.h"
#include "MacBinary.h"
#include "PeImage.h"
#include "filter/TemplateLayout.h"

namespace trel::gen {
namespace {

namespace L = trel::layout;

// The filter every template holds until it is patched: a filter that leaves
// the picture as it is, with the usual default names in its unused fields.
struct DefaultFilter {
  std::string title = "Untitled";
  std::string category = "Filter Factory";
  std::string copyright = "Copyright (c) the author";
  std::string author = "Unknown";
  std::string codeR = "r", codeG = "g", codeB = "b", codeA = "a";
};

size_t Off(int64_t position) { return static_cast<size_t>(position - 1); }

// Four-character codes are numbers; little-endian files store them reversed.
std::string Code(const std::string& code, bool bigEndian) {
  return bigEndian ? code : std::string(code.rbegin(), code.rend());
}

std::string Padded(std::string data, size_t length) {
  data.resize(length, '\0');
  return data;
}

std::string Pascal(const std::string& text, size_t length) {
  return Padded(std::string(1, static_cast<char>(text.size())) + text, length);
}

std::string Property(const std::string& key, const std::string& data, bool bigEndian) {
  const auto num = [&](uint32_t v) { return bigEndian ? ByteImage::Be(v, 4) : ByteImage::Le(v, 4); };
  return Code("8BIM", bigEndian) + Code(key, bigEndian) + num(0) + num(static_cast<uint32_t>(data.size())) + data;
}

// A Windows PiPL starts with a 16-bit 1 before the property list; the
// Macintosh one is the bare list.
std::string PiPL(const std::vector<std::string>& properties, bool bigEndian) {
  std::string out = bigEndian ? std::string() : ByteImage::Le(1, 2);
  out += bigEndian ? ByteImage::Be(0, 4) + ByteImage::Be(static_cast<uint32_t>(properties.size()), 4)
                   : ByteImage::Le(0, 4) + ByteImage::Le(static_cast<uint32_t>(properties.size()), 4);
  for (const auto& p : properties) out += p;
  return out;
}

enum class BlockForm { Windows, Macintosh, Premiere };

// The parameter block (resource PARM): 8296 bytes, its own size first.
std::string ParameterBlock(BlockForm form) {
  const DefaultFilter f;
  const bool be = form == BlockForm::Macintosh;
  ByteImage b(static_cast<size_t>(L::kParmSize));
  const auto u32 = [&](size_t at, uint32_t v) { be ? b.U32BE(at, v) : b.U32(at, v); };
  const auto text = [&](size_t at, const std::string& s) {
    b.Bytes(at, be ? std::string(1, static_cast<char>(s.size())) + s : s);
  };
  u32(0, static_cast<uint32_t>(L::kParmSize));
  b.U8(4, 1);  // a plugin with its own dialog
  for (int i = 0; i < 4; ++i) text(1128 + 256 * i, "Map " + std::to_string(i));
  for (int i = 0; i < 8; ++i) text(2152 + 256 * i, "Control " + std::to_string(i));
  if (form == BlockForm::Premiere) {
    text(360, f.copyright);
    b.Bytes(4200, f.codeB);
    b.Bytes(5224, f.codeG);
    b.Bytes(6248, f.codeR);
    b.Bytes(7272, f.codeA);
  } else {
    text(104, f.category);
    text(360, f.title);
    text(616, f.copyright);
    text(872, f.author);
    b.Bytes(4200, f.codeR);
    b.Bytes(5224, f.codeG);
    b.Bytes(6248, f.codeB);
    b.Bytes(7272, f.codeA);
  }
  return b.bytes();
}

// The resources of a Photoshop template with parameter block shift `s`; the
// 64-bit one names its entry point under `8664`, the others under `wx86`.
std::vector<PeResource> PhotoshopResources(int64_t s, int64_t marker, bool is64) {
  const DefaultFilter f;
  const auto field = static_cast<size_t>(L::kMenuFieldSize);
  // Property order fixes the patched places: name and catg data at the menu
  // positions, the `mode` flag word at the "All Modes" position.
  const std::string pipl = PiPL({Property("kind", Code("8BFM", false), false),
                                 Property("vers", ByteImage::Le(0x00040000, 4), false),
                                 Property("name", Pascal(f.title, field), false),
                                 Property("catg", Pascal(f.category, field), false),
                                 Property(is64 ? "8664" : "wx86", Padded("PluginMain", 24), false),
                                 Property("mode", ByteImage::Le(16, 4), false)},
                                false);
  return {
      {"FFABOUT", 1, Off(marker), Padded(L::kMarkerText, 16)},
      {"PIPL", 16000, Off(s + L::kTitleLength) - 16 - 40 - 10, pipl},
      {"PARM", 16, Off(s + L::kParmStart), ParameterBlock(BlockForm::Windows)},
      {"LAYOUT", 1, Off(s + L::kDialogLayout), L::DialogLayoutBlock(L::DialogSize::Normal)},
  };
}

std::string PhotoshopTemplate(TemplateKind kind) {
  const bool is304 = kind == TemplateKind::Photo304;
  const int64_t s = is304 ? L::kShift304 : L::kShift30;
  PeDescription desc;
  desc.dllName = is304 ? L::kPhoto304 : L::kPhoto30;
  desc.entryName = "PluginMain";
  desc.fileSize = static_cast<size_t>(is304 ? L::kPhoto304Size : L::kPhoto30Size);
  desc.textOffset = 0x400;
  // Only the code section differs in size between the two: everything in the
  // resource section moves by the shift.
  desc.rsrcOffset = is304 ? 0x4400 : 0x6000;
  desc.resources = PhotoshopResources(s, is304 ? L::kMarker304 : L::kMarker30, false);
  return BuildPeImage(desc);
}

std::string PremiereTemplate(bool transition) {
  const DefaultFilter f;
  const auto field = static_cast<size_t>(L::kMenuFieldSize);
  // The catg data is the reader's title field: a plain text, so a resource
  // scanner finds the category right behind the title field's first byte.
  const std::string titleField = transition ? Padded(f.title, 256) + Padded(f.title, 256) : Padded(f.title, 256);
  const std::string pipl =
      PiPL({Property("name", Pascal(f.title, field), false), Property("catg", titleField, false)}, false);
  PeDescription desc;
  desc.dllName = transition ? L::kPremiereTF : L::kPremiereFF;
  desc.entryName = "xFilter";
  desc.fileSize = static_cast<size_t>(transition ? L::kPremiereTFSize : L::kPremiereFFSize);
  desc.textOffset = 0x400;
  desc.rsrcOffset = transition ? 0x5000 : 0x6000;
  const int64_t nameProperty = transition ? L::kTfNameProperty : L::kPrmNameProperty;
  desc.resources = {
      {"FFVER", 1, Off(transition ? L::kTfProbe : L::kPrmProbe), Padded(transition ? "2.00" : "5.00", 8)},
      {"PIPL", 16000, Off(nameProperty) - 10, pipl},
      {"PARM", 16, Off(transition ? L::kTfParmStart : L::kPrmParmStart), ParameterBlock(BlockForm::Premiere)},
  };
  if (transition)
    desc.resources.push_back({"FFABOUT", 1, Off(L::kTfMarker), Padded(L::kTfMarkerText, 28)});
  return BuildPeImage(desc);
}

std::string MacTemplate() {
  const DefaultFilter f;
  const auto field = static_cast<size_t>(L::kMacMenuFieldSize);
  const std::string pipl = PiPL({Property("kind", "8BFM", true), Property("name", Pascal(f.title, field), true),
                                 Property("catg", Pascal(f.category, field), true),
                                 Property("mode", ByteImage::Be(16u << 16, 4), true)},
                                true);
  MacBinaryDescription desc;
  desc.fileName = f.title;
  desc.fileType = "8BFM";
  desc.creator = "8BIM";
  desc.fileSize = static_cast<size_t>(L::kMacSize);
  // The data fork is the room for the plugin's code; it keeps its size so that
  // nothing in the resource fork moves when it is filled.
  desc.dataFork = std::string(32768, '\0');
  // The marker is the 'STR ' resource "Filter Factory"; the reader looks at
  // its second word only.
  const std::string marker = Pascal(L::kMarkerText, 16);
  desc.resources = {
      {"PiPL", 16000, Off(L::kMacTitleLength) - 16 - 20 - 8, pipl},
      {"PARM", 16, Off(L::kShiftMac + L::kParmStart), ParameterBlock(BlockForm::Macintosh)},
      {"STR ", 16000, Off(L::kMacMarker) - 8, marker},
  };
  return BuildMacBinary(desc);
}

}  // namespace

const std::vector<TemplateFile>& AllTemplates() {
  static const std::vector<TemplateFile> all{
      {L::kPhoto30, TemplateKind::Photo30},       {L::kPhoto304, TemplateKind::Photo304},
      {L::kPhotoMac, TemplateKind::PhotoMac},     {L::kPremiereFF, TemplateKind::PremiereFF},
      {L::kPremiereTF, TemplateKind::PremiereTF},
  };
  return all;
}

std::string BuildPhoto64(const std::string& codeDll) {
  return AttachResources(codeDll, static_cast<size_t>(L::kPhoto64CodeRoom), static_cast<size_t>(L::kPhoto64Size),
                         PhotoshopResources(L::kShift64, L::kMarker64, true));
}

std::string BuildPhotoshopTemplate(TemplateKind kind, const std::string& codeDll) {
  const bool is304 = kind == TemplateKind::Photo304;
  // The resource section starts as late as the room allows: its directory
  // (354 bytes for the four resources) must end before the marker, the first
  // resource, at file offset 28208 or 21024.
  const size_t rsrcOffset = is304 ? 0x5000 : 0x6C00;
  return AttachResources(codeDll, rsrcOffset, static_cast<size_t>(is304 ? L::kPhoto304Size : L::kPhoto30Size),
                         PhotoshopResources(is304 ? L::kShift304 : L::kShift30, is304 ? L::kMarker304 : L::kMarker30,
                                            false));
}

std::string BuildTemplate(TemplateKind kind) {
  switch (kind) {
    case TemplateKind::Photo30:
    case TemplateKind::Photo304: return PhotoshopTemplate(kind);
    case TemplateKind::PhotoMac: return MacTemplate();
    case TemplateKind::PremiereFF: return PremiereTemplate(false);
    case TemplateKind::PremiereTF: return PremiereTemplate(true);
  }
  return {};
}

}  // namespace trel::gen
