#include "filter/PluginCompiler.h"

#include <cstdio>
#include <optional>

#include "filter/ByteHelpers.h"
#include "filter/CodeRewrite.h"
#include "filter/DemoPlugin.h"
#include "filter/LabelShortening.h"
#include "base/Paths.h"
#include "filter/PremiereProbe.h"
#include "base/SafeTarget.h"
#include "filter/TemplateLayout.h"
#include "filter/TemplatePatch.h"

namespace trel {
namespace {

namespace L = layout;

struct ChosenTemplate {
  std::string path;
  int shift = 0;
  bool mac = false;
};

std::optional<std::string> ReadWholeFile(const std::string& path) {
  const int64_t length = FileLength(path);
  if (length < 0) return std::nullopt;
  std::FILE* in = std::fopen(path.c_str(), "rb");
  if (!in) return std::nullopt;
  std::string bytes(static_cast<size_t>(length), '\0');
  const size_t got = std::fread(bytes.data(), 1, bytes.size(), in);
  std::fclose(in);
  if (got != bytes.size()) return std::nullopt;
  return bytes;
}

// The template of the frame "Photoshop FF Compilation"; an error text when
// there is none to use.
std::optional<ChosenTemplate> ChooseTemplate(const FilterOptions& options, std::string& error) {
  const CompileOptions& compile = options.compile;
  const std::string folder = WithTrailingSeparator(options.programFolder);
  switch (compile.templateChoice) {
    case CompileTemplate::FilterFactory304:
      return ChosenTemplate{folder + L::kPhoto304, L::kShift304, false};
    case CompileTemplate::Macintosh:
      return ChosenTemplate{folder + L::kPhotoMac, L::kShiftMac, true};
    case CompileTemplate::CustomPath: {
      if (compile.templatePath.empty()) break;
      const int64_t size = FileLength(compile.templatePath);
      if (size == L::kPhoto304Size) return ChosenTemplate{compile.templatePath, L::kShift304, false};
      if (size == L::kWideAboutSize) return ChosenTemplate{compile.templatePath, L::kShiftWideAbout, false};
      if (size == L::kPhoto30Size) return ChosenTemplate{compile.templatePath, L::kShift30, false};
      if (size == L::kPhoto64Size) return ChosenTemplate{compile.templatePath, L::kShift64, false};
      error = size < 0 ? "The template " + compile.templatePath + " doesn't exist."
                       : "The template " + compile.templatePath +
                             " is no Filter Factory plugin of a usable size (49152, 49664, 57344 or " +
                             std::to_string(L::kPhoto64Size) + " bytes).";
      return std::nullopt;
    }
    case CompileTemplate::FilterFactory30:
      break;
  }
  return ChosenTemplate{folder + L::kPhoto30, L::kShift30, false};
}

std::optional<TemplatePatch> LoadTemplate(const std::string& path, std::string& error) {
  auto bytes = ReadWholeFile(path);
  if (!bytes || bytes->empty()) {
    error = "The template " + path + " can't be read.";
    return std::nullopt;
  }
  return TemplatePatch(std::move(*bytes));
}

// The patched image goes to a temporary file beside the target, which replaces
// the target only when everything is written: a failure keeps what stood there.
bool WriteTarget(const TemplatePatch& image, const std::string& target, std::string& error) {
  SafeTarget out(target, false);
  if (!out.file()) {
    error = out.error();
    return false;
  }
  out.file()->WriteAt(1, image.bytes());
  if (out.Commit()) return true;
  error = out.error();
  return false;
}

void PutLength(TemplatePatch& file, int64_t position, const std::string& text) {
  file.PutAt(position, static_cast<uint8_t>(text.size()));
}

// A Pascal string with its text closed by a 0 byte, as every reader of the
// menu data stops at the 0.
// Text fields are cleared to their width first: the readers keep reading
// behind a 0 in a field's first byte, so an empty text must not leave the
// template's old text standing behind it. Longer texts still run on.
void Field(TemplatePatch& file, int64_t position, int64_t width, const std::string& text) {
  file.WriteAt(position, std::string(static_cast<size_t>(width), '\0'));
  file.Text(position, text);
}

void PutPascal(TemplatePatch& file, int64_t lengthPosition, const std::string& text, int64_t width) {
  file.WriteAt(lengthPosition, std::string(static_cast<size_t>(width), '\0'));
  PutLength(file, lengthPosition, text);
  file.Text(lengthPosition + 1, text);
}

void PutCode(TemplatePatch& file, int64_t position, const std::string& code) {
  // The four zeros clear the end of whatever code stood there before.
  file.WriteAt(position, code + std::string(4, '\0'));
}

void PutWord(TemplatePatch& file, int64_t position, uint16_t value) {
  file.PutAt(position, static_cast<uint8_t>(value & 0xFF));
  file.Put(static_cast<uint8_t>(value >> 8));
}

// The about text of the templates with shift -4668: author and copyright as
// 16-bit characters, 60 characters at most, then three dots.
std::string WideAboutText(const std::string& author, const std::string& copyright) {
  std::string out;
  int counted = 0;
  auto take = [&](const std::string& text) {
    for (char c : text) {
      if (counted == 60) return false;
      out += c;
      out += '\0';
      ++counted;
    }
    return counted < 60;
  };
  bool full = !take(author);
  if (!full) {
    out += " ";
    out += '\0';
    out += "(";
    out += '\0';
    full = !take(copyright);
  }
  if (counted == 60) full = true;
  if (!full) return out + ")";
  out.resize(114);
  out += std::string(".\0.\0.\0", 6);
  return out;
}

// Flags and names of maps and controls, shared by the Windows forms and the
// Premiere ones: a map wins over its control pair, whose names are then lost.
struct NameLayout {
  int64_t mapFlags, ctlFlags, mapNames, ctlNames;
};

void PutMapsAndControls(TemplatePatch& file, const FFFilter& f, int shift, const NameLayout& at) {
  for (int i = 0; i < 4; ++i) {
    const int64_t mapFlag = shift + at.mapFlags + 4 * i;
    const int64_t firstFlag = shift + at.ctlFlags + 8 * i;
    if (!f.mapName[i + 1].empty()) {
      file.PutAt(mapFlag, 1);
      Field(file, shift + at.mapNames + 256 * i, 256, f.mapName[i + 1]);
      file.PutAt(firstFlag, 0);
      file.PutAt(firstFlag + 4, 0);
      continue;
    }
    for (int k = 0; k < 2; ++k) {
      const std::string& name = f.ctlName[2 * i + k + 1];
      file.PutAt(firstFlag + 4 * k, name.empty() ? 0 : 1);
      if (!name.empty()) Field(file, shift + at.ctlNames + 512 * i + 256 * k, 256, name);
    }
    file.PutAt(mapFlag, 0);
  }
}

// The Macintosh dialog is narrow: names above 10 characters are squeezed, and
// the length byte keeps the original length on purpose (the reader cuts to it).
void PutMacName(TemplatePatch& file, int64_t lengthPosition, const std::string& name) {
  std::string text = name;
  if (text.size() > 10) {
    std::string label = name;
    text = RemoveVocals(label);
  }
  file.WriteAt(lengthPosition, std::string(256, '\0'));
  PutLength(file, lengthPosition, name);
  file.Text(lengthPosition + 1, text);
}

void PutMacMapsAndControls(TemplatePatch& file, const FFFilter& f) {
  for (int i = 0; i < 4; ++i) {
    const int64_t firstFlag = L::kMacCtlFlags + 8 * i;
    if (!f.mapName[i + 1].empty()) {
      file.PutAt(L::kMacMapFlags + 4 * i, 1);
      PutMacName(file, L::kMacMapNames + 256 * i, f.mapName[i + 1]);
      file.PutAt(firstFlag, 0);
      file.PutAt(firstFlag + 4, 0);
      continue;
    }
    for (int k = 0; k < 2; ++k) {
      const std::string& name = f.ctlName[2 * i + k + 1];
      file.PutAt(firstFlag + 4 * k, name.empty() ? 0 : 1);
      if (!name.empty()) PutMacName(file, L::kMacCtlNames + 512 * i + 256 * k, name);
    }
    file.PutAt(L::kMacMapFlags + 4 * i, 0);
  }
}

// MacBinary II keeps a CRC-16 (CCITT, XMODEM form) of the first 124 header
// bytes; a decoder that finds it wrong takes the file for an older format.
void UpdateMacBinaryCrc(TemplatePatch& file) {
  const std::string header = file.Read(1, 124);
  uint16_t crc = 0;
  for (unsigned char byte : header) {
    crc ^= static_cast<uint16_t>(byte << 8);
    for (int bit = 0; bit < 8; ++bit)
      crc = static_cast<uint16_t>((crc & 0x8000) ? (crc << 1) ^ 0x1021 : crc << 1);
  }
  file.PutAt(125, static_cast<uint8_t>(crc >> 8));
  file.Put(static_cast<uint8_t>(crc & 0xFF));
}

std::string WithoutLastFour(const std::string& name) { return name.substr(0, name.size() - 4); }

bool EndsWithLower(const std::string& name, const std::string& suffix) {
  return name.size() >= suffix.size() && ToLower(name.substr(name.size() - suffix.size())) == suffix;
}

void PatchPhotoshop(TemplatePatch& file, FFFilter& f, const ChosenTemplate& chosen, bool toTemp,
                    bool editorPlugin, const CompileOptions& options) {
  const int shift = chosen.shift;
  if (chosen.mac) {
    std::string inner = RemoveChars(f.title);
    // The wrapper's name field has room for 63 characters; more would run
    // into the file type behind it.
    if (inner.size() > static_cast<size_t>(L::kMacNameRoom)) inner.resize(static_cast<size_t>(L::kMacNameRoom));
    PutPascal(file, L::kMacNameLength, inner, L::kMacNameRoom + 1);
    PutPascal(file, L::kMacTitleLength, f.title, L::kMacMenuFieldSize);
    PutPascal(file, L::kMacCategoryLength, f.category, L::kMacMenuFieldSize);
    PutPascal(file, L::kMacBlockCategory, f.category, L::kMacMenuFieldSize);
    PutPascal(file, L::kMacBlockTitle, f.title, L::kMacMenuFieldSize);
    PutPascal(file, L::kMacCopyright, f.copyright, L::kMacMenuFieldSize);
    PutPascal(file, L::kMacAuthor, f.author, L::kMacMenuFieldSize);
    PutMacMapsAndControls(file, f);
    for (int i = 1; i <= 8; ++i) file.PutAt(L::kMacCtlValues + 4 * (i - 1), f.ctlValue[i]);
  } else {
    if (shift == L::kShiftWideAbout) {
      PutPascal(file, L::kWideTitleLength, f.title, L::kMenuFieldSize);
      PutPascal(file, L::kWideCategoryLength, f.category, L::kMenuFieldSize);
      const std::string about = WideAboutText(f.author, f.copyright);
      file.WriteAt(L::kWideAboutText, about);
      file.Put(0);
    } else {
      // No length is checked: a title over 50 characters runs into the
      // category's length byte, which is written after it.
      PutPascal(file, shift + L::kTitleLength, f.title, L::kMenuFieldSize);
      PutPascal(file, shift + L::kCategoryLength, f.category, L::kMenuFieldSize);
    }
    Field(file, shift + L::kBlockCategory, 256, f.category);
    Field(file, shift + L::kBlockTitle, 256, f.title);
    Field(file, shift + L::kCopyright, 256, f.copyright);
    Field(file, shift + L::kAuthor, 256, f.author);
    PutMapsAndControls(file, f, shift, {L::kMapFlags, L::kCtlFlags, L::kMapNames, L::kCtlNames});
    for (int i = 1; i <= 8; ++i) file.PutAt(shift + L::kCtlValues + 4 * (i - 1), f.ctlValue[i]);
  }

  if (!f.isPhotoshop) CorrectprmcodeAll(f);
  if (chosen.mac) CorrectCodeForMac(f);
  // Red to alpha: a code over 1023 bytes is overwritten by the next channel.
  PutCode(file, shift + L::kCodeR, f.codeR);
  PutCode(file, shift + L::kCodeG, f.codeG);
  PutCode(file, shift + L::kCodeB, f.codeB);
  PutCode(file, shift + L::kCodeA, f.codeA);
  file.PutAt(shift + L::kStandAlone, (options.editorPlugin || editorPlugin) ? 0 : 1);

  if (!toTemp && !chosen.mac) {
    PutWord(file, shift == L::kShiftWideAbout ? L::kWideAllModes : shift + L::kAllModes,
            options.allModes ? 65535 : 16);
    if (options.demoPlugin) DemoPlugin(file, shift, true, true, true);
    if (options.encrypted) {
      if (!options.demoPlugin) DemoPlugin(file, shift, false, false, true);
      RandomFileSize(file);
    }
  }
  if (chosen.mac) UpdateMacBinaryCrc(file);
}

}  // namespace

Expected<void> Make8bf(FFFilter& f, std::string folder, bool toTemp, bool editorPlugin,
                       const FilterEnv& env) {
  const CompileOptions& options = env.options.compile;
  folder = WithTrailingSeparator(folder);
  if (f.filename.find('.') == std::string::npos && !EndsWithLower(f.filename, "_8bf")) f.filename += ".8bf";

  std::string error;
  std::optional<ChosenTemplate> chosen =
      toTemp ? ChosenTemplate{WithTrailingSeparator(env.options.programFolder) + L::kPhoto30, L::kShift30, false}
             : ChooseTemplate(env.options, error);
  if (!chosen) return Error::Fault(error);
  if (f.filename.size() < 4)
    return Error::Fault("The file name " + f.filename + " is too short for a plugin.");
  std::string target = folder + WithoutLastFour(f.filename) + (chosen->mac ? ".bin" : ".8bf");
  if (f.category == "[Premiere FF]") f.category = "Premiere(converted)";
  // The preview compile runs on every change in the editor: the title must
  // not grow there.
  if (options.demoPlugin && !chosen->mac && !toTemp) f.title += " Demo...";
  if (f.title.size() > 255 || f.category.size() > 255)
    return Error::Fault("The title or the category of " + f.filename +
                        " is longer than the 255 characters a plugin can hold.");

  // The preview copy is the program's own scratch file and is patched as it
  // stands; only when it has gone missing is it made again from the template.
  if (toTemp) target = WithTrailingSeparator(env.options.programFolder) + L::kTempPlugin;
  const bool inPlace = toTemp && FileExists(target);
  std::optional<TemplatePatch> image = LoadTemplate(inPlace ? target : chosen->path, error);
  if (!image) return Error::Fault(error);
  if (!toTemp && (options.bigPreview || options.megaPreview) &&
      (chosen->shift == L::kShift30 || chosen->shift == L::kShift304)) {
    const int64_t at = chosen->shift + L::kDialogLayout;
    if (options.bigPreview) image->WriteAt(at, L::DialogLayoutBlock(L::DialogSize::Big));
    if (options.megaPreview) image->WriteAt(at, L::DialogLayoutBlock(L::DialogSize::Mega));
  }
  PatchPhotoshop(*image, f, *chosen, toTemp, editorPlugin, options);
  if (toTemp && inPlace) {
    auto file = BinFile::Open(target, BinFile::Mode::Binary);
    if (file) file->WriteAt(1, image->bytes());
    if (!file || !file->Close()) return Error::Fault(target + " can't be written.", target);
    return {};
  }
  if (!WriteTarget(*image, target, error)) return Error::Fault(error, target);
  return {};
}

namespace {

std::string PremiereTitleField(const FFFilter& f) {
  // Readprm splits at the first colon and drops the character behind it.
  const bool noCategory = f.category.empty() || f.category == "[Premiere FF]";
  if (noCategory) return f.title.find(':') == std::string::npos ? f.title : ": " + f.title;
  return f.category + ": " + f.title;
}

// Our own Premiere templates carry a PiPL `name` property that hosts show; it
// is patched only where the property really stands, never in a foreign template.
void PutNameProperty(TemplatePatch& file, int64_t property, const std::string& title) {
  if (file.Read(property, 8) != "MIB8eman") return;
  std::string text = title.substr(0, static_cast<size_t>(L::kMenuFieldSize - 1));
  std::string field(static_cast<size_t>(L::kMenuFieldSize), '\0');
  field[0] = static_cast<char>(text.size());
  field.replace(1, text.size(), text);
  file.WriteAt(property + 16, field);
}

std::string PremiereTargetName(std::string name) {
  if (name.find('.') == std::string::npos && !EndsWithLower(name, "_prm")) name += ".prm";
  return name;
}

// The probes of the readers, on a template. Transition templates get no size
// test, as ReadTF makes none.
bool ProbePremiere(TemplatePatch& file, bool transition, int& shift) {
  if (transition) return TransitionShift(file, shift);
  const int64_t size = file.Length();
  if (size != 50176 && size != 50688 && size != 53248) return false;
  return PremiereFFShift(file, shift);
}

Expected<void> MakePremiere(const FFFilter& source, std::string folder, const FilterEnv& env,
                            bool transition) {
  const CompileOptions& options = env.options.compile;
  folder = WithTrailingSeparator(folder);
  std::string templatePath = transition ? options.premiereTFTemplate : options.premiereFFTemplate;
  if (templatePath.empty())
    templatePath = WithTrailingSeparator(env.options.programFolder) + (transition ? L::kPremiereTF : L::kPremiereFF);

  FFFilter f = source;
  f.filename = PremiereTargetName(f.filename);
  if (f.filename.size() < 4)
    return Error::Fault("The file name " + f.filename + " is too short for a plugin.");
  // Premiere plugins hold Premiere dialect; the record itself is left as it is.
  if (f.isPhotoshop) Correctcode(f);

  std::string error;
  std::optional<TemplatePatch> image = LoadTemplate(templatePath, error);
  if (!image) return Error::Fault(error);
  TemplatePatch& file = *image;
  int shift = 0;
  if (!ProbePremiere(file, transition, shift))
    return Error::Fault("The template " + templatePath + " is no Premiere " +
                        (transition ? "Transition" : "Filter") + " Factory plugin.",
                        templatePath);

  int64_t copyright, mapFlags, ctlFlags, mapNames, ctlNames, values, codeB, codeG, codeR, codeA;
  if (transition) {
    Field(file, shift + L::kTfTitle, 256, f.title);
    Field(file, shift + L::kTfTransitionName, 256, f.transitionName.empty() ? f.title : f.transitionName);
    if (shift == 0) PutNameProperty(file, L::kTfNameProperty, f.title);
    if (shift == 9904) shift += 8;
    if (shift == 520) shift += 4;
    copyright = L::kTfCopyright; mapFlags = L::kTfMapFlags; ctlFlags = L::kTfCtlFlags;
    mapNames = L::kTfMapNames; ctlNames = L::kTfCtlNames; values = L::kTfCtlValues;
    codeB = L::kTfCodeB; codeG = L::kTfCodeG; codeR = L::kTfCodeR; codeA = L::kTfCodeA;
  } else {
    Field(file, shift == -4 ? 29099 : shift + L::kPrmTitle, L::kPrmTitleField, PremiereTitleField(f));
    if (shift == 0) PutNameProperty(file, L::kPrmNameProperty, f.title);
    copyright = L::kPrmCopyright; mapFlags = L::kPrmMapFlags; ctlFlags = L::kPrmCtlFlags;
    mapNames = L::kPrmMapNames; ctlNames = L::kPrmCtlNames; values = L::kPrmCtlValues;
    codeB = L::kPrmCodeB; codeG = L::kPrmCodeG; codeR = L::kPrmCodeR; codeA = L::kPrmCodeA;
  }
  Field(file, shift + copyright, 256, f.copyright);
  PutMapsAndControls(file, f, shift, {mapFlags, ctlFlags, mapNames, ctlNames});
  for (int i = 1; i <= 8; ++i) file.PutAt(shift + values + 4 * (i - 1), f.ctlValue[i]);
  PutCode(file, shift + codeB, f.codeB);
  PutCode(file, shift + codeG, f.codeG);
  PutCode(file, shift + codeR, f.codeR);
  PutCode(file, shift + codeA, f.codeA);
  const std::string target = folder + WithoutLastFour(f.filename) + ".prm";
  if (!WriteTarget(file, target, error)) return Error::Fault(error, target);
  return {};
}

}  // namespace

Expected<void> MakePRM(const FFFilter& f, std::string folder, const FilterEnv& env) {
  return MakePremiere(f, std::move(folder), env, false);
}

Expected<void> MakeTF(const FFFilter& f, std::string folder, const FilterEnv& env) {
  return MakePremiere(f, std::move(folder), env, true);
}

void Write8bf(FFFilter& f, std::string folder, bool toTemp, bool editorPlugin, const FilterEnv& env) {
  if (auto made = Make8bf(f, std::move(folder), toTemp, editorPlugin, env); !made)
    env.hooks().Report(made.error());
}

void WritePRM(FFFilter& f, std::string folder, const FilterEnv& env) {
  if (auto made = MakePRM(f, std::move(folder), env); !made) env.hooks().Report(made.error());
}

void WriteTF(FFFilter& f, std::string folder, const FilterEnv& env) {
  if (auto made = MakeTF(f, std::move(folder), env); !made) env.hooks().Report(made.error());
}

}  // namespace trel
