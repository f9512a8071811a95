#include "filter/CompiledReaders.h"

#include <array>
#include <memory>

#include "base/BinFile.h"
#include "filter/ByteHelpers.h"
#include "filter/CodeRewrite.h"
#include "base/Paths.h"
#include "filter/PremiereProbe.h"
#include "filter/TemplateLayout.h"

namespace trel {
namespace {

namespace L = layout;

// Where a Photoshop plugin of one size keeps what Read8bf needs.
struct PhotoshopForm {
  int64_t size;
  int shift;
  int64_t marker;
  int64_t title;     // 0: at shift + 31012
  int64_t category;  // 0: at shift + 31064
  bool mac;
};

// The last Windows row is Trel's own 64-bit template (photo64.dll), whose code
// does not fit the rooms of the older sizes; see TemplateLayout.h.
constexpr std::array<PhotoshopForm, 8> kPhotoshopForms{{
    {49152, -7168, 21025, 0, 0, false},
    {49664, -4668, 21025, 34928, 34980, false},
    {50176, -7168, 21025, 0, 0, false},
    {53760, -576, 27697, 30352, 30404, false},
    {57344, 0, 28209, 0, 0, false},
    {L::kPhoto64Size, L::kShift64, L::kMarker64, 0, 0, false},
    {99712, 19308, 59018, 0, 0, true},
    {99840, 19308, 59018, 0, 0, true},
}};

const PhotoshopForm* FormOfSize(int64_t size) {
  for (const auto& form : kPhotoshopForms)
    if (form.size == size) return &form;
  return nullptr;
}

bool IsFilterFactoryMarker(const std::string& marker) {
  return marker == "Filter-Factory" || marker == "Filter Factory" || marker == " FilterFactory";
}

// A Pascal string of the Macintosh form: the text is read up to its 0 byte and
// then cut to the length byte.
std::string PascalAt(int64_t lengthPosition, BinFile& file) {
  const int length = file.ByteAt(lengthPosition);
  std::string text = bytes2string2(lengthPosition + 1, file);
  if (length >= 0 && text.size() > static_cast<size_t>(length)) text.resize(static_cast<size_t>(length));
  return text;
}

bool Flag(BinFile& file, int64_t position) { return file.ByteAt(position) == 1; }

uint8_t ByteValue(BinFile& file, int64_t position) {
  const int byte = file.ByteAt(position);
  return static_cast<uint8_t>(byte < 0 ? 0 : byte);
}

void ReadPhotoshopBody(FFFilter& f, BinFile& file, int shift, bool mac) {
  if (mac) {
    f.copyright = PascalAt(L::kMacCopyright, file);
    f.author = PascalAt(L::kMacAuthor, file);
  } else {
    f.copyright = bytes2string2(shift + L::kCopyright, file);
    f.author = bytes2string2(shift + L::kAuthor, file);
  }
  for (int i = 0; i < 4; ++i) {
    const bool used = Flag(file, mac ? L::kMacMapFlags + 4 * i : shift + L::kMapFlags + 4 * i);
    if (!used) continue;
    f.mapName[i + 1] = mac ? PascalAt(L::kMacMapNames + 256 * i, file)
                           : bytes2string2(shift + L::kMapNames + 256 * i, file);
  }
  for (int i = 0; i < 8; ++i) {
    const bool used = Flag(file, mac ? L::kMacCtlFlags + 4 * i : shift + L::kCtlFlags + 4 * i);
    if (!used) continue;
    f.ctlName[i + 1] = mac ? PascalAt(L::kMacCtlNames + 256 * i, file)
                           : bytes2string2(shift + L::kCtlNames + 256 * i, file);
  }
  // Values of unused controls are read too: a map keeps its pair's values.
  for (int i = 0; i < 8; ++i)
    f.ctlValue[i + 1] = ByteValue(file, mac ? L::kMacCtlValues + 4 * i : shift + L::kCtlValues + 4 * i);
  f.codeR = bytes2string(shift + L::kCodeR, file);
  f.codeG = bytes2string(shift + L::kCodeG, file);
  f.codeB = bytes2string(shift + L::kCodeB, file);
  f.codeA = bytes2string(shift + L::kCodeA, file);
}

// Flags, names, values and codes of both Premiere forms, which differ only in
// their base positions. In the file blue comes first.
struct PremiereBody {
  int64_t ctlValues, mapFlags, ctlFlags, copyright, mapNames, ctlNames, codeB, codeG, codeR, codeA;
};

void ReadPremiereBody(FFFilter& f, BinFile& file, int shift, const PremiereBody& at) {
  f.copyright = bytes2string2(shift + at.copyright, file);
  for (int i = 0; i < 4; ++i)
    if (Flag(file, shift + at.mapFlags + 4 * i))
      f.mapName[i + 1] = bytes2string2(shift + at.mapNames + 256 * i, file);
  for (int i = 0; i < 8; ++i) {
    const bool used = Flag(file, shift + at.ctlFlags + 4 * i);
    f.ctlValue[i + 1] = ByteValue(file, shift + at.ctlValues + 4 * i);
    if (used) f.ctlName[i + 1] = bytes2string2(shift + at.ctlNames + 256 * i, file);
  }
  f.codeB = bytes2string(shift + at.codeB, file);
  f.codeG = bytes2string(shift + at.codeG, file);
  f.codeR = bytes2string(shift + at.codeR, file);
  f.codeA = bytes2string(shift + at.codeA, file);
}

constexpr PremiereBody kPrmBody{L::kPrmCtlValues, L::kPrmMapFlags, L::kPrmCtlFlags, L::kPrmCopyright,
                                L::kPrmMapNames,  L::kPrmCtlNames, L::kPrmCodeB,   L::kPrmCodeG,
                                L::kPrmCodeR,     L::kPrmCodeA};
constexpr PremiereBody kTfBody{L::kTfCtlValues, L::kTfMapFlags, L::kTfCtlFlags, L::kTfCopyright,
                               L::kTfMapNames,  L::kTfCtlNames, L::kTfCodeB,   L::kTfCodeG,
                               L::kTfCodeR,     L::kTfCodeA};

// Common start of the three readers: the record cleared, the name noted, and a
// missing file reported to the pane, whose lists are then stale.
bool StartRead(FFFilter& f, const std::string& path, const std::string& name, const FilterEnv& env) {
  IniVars(f);
  f.filename = name;
  if (FileExists(path)) return true;
  env.hooks().RefreshActivePane();
  return false;
}

}  // namespace

bool Read8bf(FFFilter& f, std::string folder, const std::string& name, bool headerOnly, bool optimize,
             const FilterEnv& env) {
  folder = WithTrailingSeparator(folder);
  const std::string path = folder + name;
  if (!StartRead(f, path, name, env)) return false;
  // The size alone rejects nearly every ordinary plugin, before any open.
  const PhotoshopForm* form = FormOfSize(FileLength(path));
  if (!form) return false;
  auto file = BinFile::Open(path, BinFile::Mode::Read);
  if (!file) return false;

  std::string marker = bytes2string2(form->marker, *file);
  if (form->mac) marker = "Filter " + marker;
  if (!IsFilterFactoryMarker(marker)) return false;

  int shift = form->shift;
  int64_t titleAt = form->title ? form->title : shift + 31012;
  int64_t categoryAt = form->category ? form->category : shift + 31064;
  if ((form->size == 49152 || form->size == 50176) && marker == " FilterFactory") {
    // This variant keeps the category in front of the title.
    shift = -5096;
    titleAt = 26517;
    categoryAt = 26261;
  }
  if (form->mac) {
    f.title = PascalAt(L::kMacTitleLength, *file);
    f.category = PascalAt(L::kMacCategoryLength, *file);
  } else {
    f.title = bytes2string2(titleAt, *file);
    f.category = bytes2string2(categoryAt, *file);
  }
  if (Trim(f.category).size() < 2) f.category = "Photoshop";

  if (!headerOnly) ReadPhotoshopBody(f, *file, shift, form->mac);
  const bool failed = file->Failed();
  file->Close();
  if (failed) return false;
  if (optimize) OptimizeCode(f, env.options);
  f.isPhotoshop = true;
  return true;
}

bool Readprm(FFFilter& f, std::string folder, const std::string& name, bool headerOnly, bool optimize,
             const FilterEnv& env) {
  folder = WithTrailingSeparator(folder);
  const std::string path = folder + name;
  if (!StartRead(f, path, name, env)) return false;
  const int64_t size = FileLength(path);
  if (size != 50176 && size != 50688 && size != 53248) return false;
  auto file = BinFile::Open(path, BinFile::Mode::Read);
  if (!file) return false;

  int shift = 0;
  if (!PremiereFFShift(*file, shift)) return false;
  const std::string text = bytes2string2(shift == -4 ? 29099 : shift + L::kPrmTitle, *file);
  const size_t colon = text.find(':');
  if (colon == std::string::npos) {
    f.title = text;
  } else {
    // The title is taken from the right, one character short: the character
    // right after the colon (normally a blank) is dropped. A colon at the very
    // end leaves a negative count, which the format treats as a read error.
    const long long count = static_cast<long long>(text.size()) - static_cast<long long>(colon) - 2;
    if (count < 0) return false;
    f.category = text.substr(0, colon);
    f.title = text.substr(text.size() - static_cast<size_t>(count));
  }
  if (!headerOnly) ReadPremiereBody(f, *file, shift, kPrmBody);
  const bool failed = file->Failed();
  file->Close();
  if (failed) return false;
  if (f.category.empty()) f.category = "[Premiere FF]";
  if (optimize) OptimizeCode(f, env.options);
  f.isPhotoshop = false;
  return true;
}

bool ReadTF(FFFilter& f, std::string folder, const std::string& name, bool headerOnly,
            const FilterEnv& env) {
  // A drive root ("C:\") needs no special case here: joining always goes
  // through one separator.
  folder = WithTrailingSeparator(folder);
  const std::string path = folder + name;
  if (!StartRead(f, path, name, env)) return false;
  auto file = BinFile::Open(path, BinFile::Mode::Read);
  if (!file) return false;

  int shift = 0;
  if (!TransitionShift(*file, shift)) return false;
  f.title = bytes2string2(shift + L::kTfTitle, *file);
  if (!headerOnly) {
    f.transitionName = bytes2string2(shift + L::kTfTransitionName, *file);
    if (shift == 9904) shift += 8;
    if (shift == 520) shift += 4;
    ReadPremiereBody(f, *file, shift, kTfBody);
  }
  const bool failed = file->Failed();
  file->Close();
  if (failed) return false;
  f.category = "[Premiere TF]";
  OptimizeCode(f, env.options);
  f.isPhotoshop = false;
  return true;
}

}  // namespace trel
