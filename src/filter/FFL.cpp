#include "filter/FFL.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "filter/BatchConvert.h"
#include "filter/ByteHelpers.h"
#include "filter/CodeRewrite.h"
#include "filter/Dispatch.h"
#include "base/Paths.h"
#include "base/SafeTarget.h"

namespace trel {
namespace {

constexpr char kCR = '\r';
constexpr char kLF = '\n';

using EntryLines = std::array<std::string, kFFLEntryLines>;

bool IsMagic(const std::string& line) { return line == "FFL1.0" || line == "FFL1.1"; }

// The two lines that open every library: the version, which tells a library
// from any other text, and the count of entries it declares.
struct FFLHead {
  std::string version;
  long declaredCount = 0;
};

// Reads the head; false when the first line isn't a version line. A missing
// count line declares none.
bool ReadFFLHead(FFLTextReader& in, FFLHead& head) {
  std::string line;
  if (!in.ReadLine(line) || !IsMagic(line)) return false;
  head.version = line;
  head.declaredCount = in.ReadLine(line) ? static_cast<long>(LeadingNumber(line)) : 0;
  return true;
}

bool IsDeleted(const FFFilter& f) { return f.filename.rfind("//", 0) == 0; }

std::string CountField(long count) {
  count = std::clamp<long>(count, 0, kFFLMaxCount);
  char text[8];
  std::snprintf(text, sizeof text, "%5ld", count);
  return text;
}

Error NotALibrary(const std::string& path) {
  return Error::Warning(path + " is not a Filter Factory Library File!", "Format Violation", path);
}

// The fields of an entry from its 29 lines; false (with `problem`) on a value
// that does not fit a byte.
bool FillEntry(FFFilter& f, const EntryLines& line, std::string& problem) {
  f.filename = line[0];
  f.category = line[1];
  f.title = line[2];
  f.author = line[3];
  f.copyright = line[4];
  if (!f.copyright.empty() && static_cast<unsigned char>(f.copyright[0]) == 169)
    f.copyright = "Copyright " + f.copyright;
  for (int i = 1; i <= 4; ++i) f.mapName[i] = line[4 + i];
  for (int i = 1; i <= 8; ++i) f.ctlName[i] = line[8 + i];
  for (int i = 1; i <= 8; ++i) {
    const long long value = LeadingNumber(line[16 + i]);
    if (value < 0 || value > 255) {
      problem = "value " + std::to_string(value) + " of control " + std::to_string(i) +
                " is out of range";
      return false;
    }
    f.ctlValue[i] = static_cast<uint8_t>(value);
  }
  // `"` is compared with the whole line: it repeats the code of the channel before.
  f.codeR = line[25];
  f.codeG = line[26] == "\"" ? f.codeR : line[26];
  f.codeB = line[27] == "\"" ? f.codeG : line[27];
  f.codeA = line[28];
  return true;
}

// A field must stay on its line, or every later line of the library shifts.
std::string OneLine(std::string text) {
  std::replace(text.begin(), text.end(), kCR, ' ');
  std::replace(text.begin(), text.end(), kLF, ' ');
  return text;
}

// The filters of `sources` as entry texts, read by the batch rules.
std::string EntriesOf(const std::vector<std::string>& sources, const FilterEnv& env,
                      FFLAddResult& result) {
  std::string text;
  for (const auto& source : sources) {
    FFFilter f;
    f.isPhotoshop = true;  // FFX leaves it alone; its code is Photoshop code
    if (LastFour(source) != ".ffl" && ReadFFfile(f, source, env)) {
      text += FFLEntryText(f);
      ++result.added;
    } else {
      result.unreadable.push_back(source);
    }
  }
  return text;
}

std::string Header(const std::string& version, long count) {
  return version + "\r\n" + CountField(count) + "\r\n";
}

}  // namespace

// ---------------------------------------------------------------- text reader

std::unique_ptr<FFLTextReader> FFLTextReader::Open(const std::string& path) {
  if (!FileExists(path)) return nullptr;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) return nullptr;
  return std::unique_ptr<FFLTextReader>(new FFLTextReader(file));
}

FFLTextReader::~FFLTextReader() { std::fclose(file_); }

int FFLTextReader::Peek() {
  if (at_ == size_) {
    size_ = std::fread(buffer_.data(), 1, buffer_.size(), file_);
    at_ = 0;
    if (size_ == 0) return -1;
  }
  return static_cast<unsigned char>(buffer_[at_]);
}

int FFLTextReader::Get() {
  const int c = Peek();
  if (c >= 0) {
    ++at_;
    ++consumed_;
  }
  return c;
}

bool FFLTextReader::AtEnd() { return tooLong_ || Peek() < 0; }

bool FFLTextReader::ReadLine(std::string& line) {
  line.clear();
  if (AtEnd()) return false;
  for (int c = Get(); c >= 0; c = Get()) {
    if (c == kCR) {
      if (Peek() == kLF) Get();
      break;
    }
    if (line.size() >= kMaxLine) {
      tooLong_ = true;
      return false;
    }
    line += static_cast<char>(c);
  }
  ++lines_;
  return true;
}

// ---------------------------------------------------------------- entries

FFLRead ReadFFLEntry(FFFilter& f, FFLTextReader& in, std::string& problem) {
  if (in.AtEnd()) return FFLRead::EndOfFile;
  const int64_t firstLine = in.LineNumber() + 1;
  EntryLines line;
  for (int k = 0; k < kFFLEntryLines; ++k) {
    if (in.ReadLine(line[static_cast<size_t>(k)])) continue;
    if (in.TooLong()) {
      problem = "line " + std::to_string(in.LineNumber() + 1) + " is too long";
      return FFLRead::Broken;
    }
    // Blank lines at the end of a file are no entry.
    if (std::all_of(line.begin(), line.begin() + k, [](const std::string& s) { return s.empty(); }))
      return FFLRead::EndOfFile;
    problem = "the entry at line " + std::to_string(firstLine) + " ends after " +
              std::to_string(k) + " of 29 lines";
    return FFLRead::Broken;
  }
  if (!FillEntry(f, line, problem)) {
    problem = "entry at line " + std::to_string(firstLine) + ": " + problem;
    return FFLRead::Broken;
  }
  return FFLRead::Entry;
}

bool ReadFFLEntryII(FFFilter& f, BinFile& file) {
  EntryLines line;
  for (auto& l : line) {
    if (file.AtEnd()) return false;
    l = Byt2str(file);
  }
  std::string problem;
  if (!FillEntry(f, line, problem)) return false;
  f.isPhotoshop = LastFour(f.filename) != ".prm";
  return true;
}

std::string FFLEntryText(const FFFilter& record) {
  FFFilter f = record;
  f.filename = ConfinedFilename(f.filename);
  const bool photoshopName = LastFour(f.filename) != ".prm";
  if (f.isPhotoshop != photoshopName) {
    if (photoshopName) {
      for (auto* code : {&f.codeR, &f.codeG, &f.codeB, &f.codeA}) *code = Correctprmcode(*code);
    } else {
      Correctcode(f);
    }
  }
  std::string text;
  auto add = [&text](const std::string& s) { text += OneLine(s) + "\r\n"; };
  add(f.filename);
  add(f.category);
  add(f.title);
  add(f.author);
  add(f.copyright);
  for (int i = 1; i <= 4; ++i) add(f.mapName[i]);
  for (int i = 1; i <= 8; ++i) add(f.ctlName[i]);
  for (int i = 1; i <= 8; ++i) add(std::to_string(f.ctlValue[i]));
  const std::string r = OneLine(f.codeR), g = OneLine(f.codeG), b = OneLine(f.codeB);
  add(r);
  add(g == r ? "\"" : g);
  add(b == g ? "\"" : b);
  add(f.codeA);
  return text;
}

bool WriteFFLEntry(const FFFilter& f, BinFile& file) {
  file.Write(FFLEntryText(f));
  return !file.Failed();
}

// ---------------------------------------------------------------- in place

bool FFLNumWrite(const std::string& libraryPath, long count) {
  if (!FileExists(libraryPath)) return false;
  auto file = BinFile::Open(libraryPath, BinFile::Mode::Binary);
  if (!file) return false;
  // Only a header of the fixed widths has its count at 9..13 with CR LF behind.
  const std::string head = file->Read(1, 15);
  if (head.size() < 15 || !IsMagic(head.substr(0, 6)) || head.substr(6, 2) != "\r\n" ||
      head.substr(13, 2) != "\r\n")
    return false;
  file->WriteAt(kFFLCountPosition, CountField(count));
  return file->Close();
}

std::vector<std::string> AddtoArrayList(const std::vector<int>& selectedNumbers) {
  std::vector<std::string> list;
  for (int number : selectedNumbers) {
    char text[16];
    std::snprintf(text, sizeof text, "%05d", number);
    list.emplace_back(text);
  }
  std::sort(list.begin(), list.end());
  return list;
}

bool DeleteFFLEntry(const std::string& libraryPath, int64_t position) {
  if (!FileExists(libraryPath) || position <= kFFLCountPosition) return false;
  auto file = BinFile::Open(libraryPath, BinFile::Mode::Binary);
  if (!file || position > file->Length()) return false;
  // The entry must begin a line, and the mark must not eat the line's end.
  const int before = file->ByteAt(position - 1);
  if (before != kLF && before != kCR) return false;
  const std::string head = file->Read(position, 4);
  const size_t lineLength = std::min(head.find_first_of("\r\n"), head.size());
  if (lineLength < 2) return false;
  file->WriteAt(position, std::string("//\0\0", 4).substr(0, std::min<size_t>(lineLength, 4)));
  return file->Close();
}

std::vector<int> DeleteFFLItems(const FFLLibrary& library, const std::vector<int>& selected) {
  std::vector<int> deleted;
  const std::vector<std::string> order = AddtoArrayList(selected);
  for (auto it = order.rbegin(); it != order.rend(); ++it) {
    const int number = std::stoi(*it);
    if (DeleteFFLEntry(library.path, library.PositionOf(number))) deleted.push_back(number);
  }
  return deleted;
}

// ---------------------------------------------------------------- whole library

int64_t FFLLibrary::PositionOf(int number) const {
  if (number < 1 || static_cast<size_t>(number) > positions.size()) return 0;
  return positions[static_cast<size_t>(number - 1)];
}

Expected<void> ReadFFLLibrary(const std::string& libraryPath, FFLLibrary& library) {
  library = FFLLibrary{};
  library.path = libraryPath;
  auto in = FFLTextReader::Open(libraryPath);
  if (!in) {
    library.problem = "the file can't be opened";
    return Error::Gone(libraryPath);
  }
  FFLHead head;
  if (!ReadFFLHead(*in, head)) {
    library.problem = "not a library";
    return NotALibrary(libraryPath);
  }
  library.version = head.version;
  library.declaredCount = head.declaredCount;
  FFFilter f;
  for (;;) {
    const int64_t position = in->Position();
    if (position > kMaxLibraryTable) {
      library.problem = "the file is too large to be listed beyond " +
                        std::to_string(library.positions.size()) + " entries";
      break;
    }
    const FFLRead r = ReadFFLEntry(f, *in, library.problem);
    if (r != FFLRead::Entry) break;
    library.positions.push_back(position);
    if (!IsDeleted(f)) {
      library.items.push_back({static_cast<int>(library.positions.size()), f.filename, f.category,
                               f.title, f.author});
    }
  }
  return {};
}

Expected<std::vector<int>> cmd_SearchFFL(const std::string& libraryPath, const std::string& text) {
  std::vector<int> found;
  auto in = FFLTextReader::Open(libraryPath);
  if (!in) return Error::Gone(libraryPath);
  FFLHead head;
  if (!ReadFFLHead(*in, head)) return NotALibrary(libraryPath);
  const std::string wanted = ToLower(text);
  FFFilter f;
  std::string problem;
  for (int number = 1; ReadFFLEntry(f, *in, problem) == FFLRead::Entry; ++number) {
    if (IsDeleted(f)) continue;
    for (const auto* field : {&f.title, &f.category, &f.author, &f.codeR, &f.codeG, &f.codeB,
                              &f.codeA}) {
      if (ToLower(*field).find(wanted) != std::string::npos) {
        found.push_back(number);
        break;
      }
    }
  }
  return found;
}

// ---------------------------------------------------------------- conversion

Expected<void> Convertffl(FFFilter& f, const std::string& libraryPath, std::string targetFolder,
                          OutputFormat format, const FilterEnv& env, ConvertReport* report,
                          OverwriteChecker* overwrite, bool askForEntries) {
  Progress& progress = env.hooks();
  ConvertReport scratch;
  ConvertReport& out = report ? *report : scratch;
  targetFolder = WithTrailingSeparator(targetFolder);
  if (!MakeFolder(targetFolder))
    return Error::Fault(targetFolder + ": the folder can't be created", targetFolder);
  IniVars(f);

  auto in = FFLTextReader::Open(libraryPath);
  if (!in) return Error::Fault(libraryPath + ": the file can't be opened", libraryPath);
  FFLHead head;
  if (!ReadFFLHead(*in, head)) return NotALibrary(libraryPath);
  const std::string count = std::to_string(head.declaredCount);

  TargetWriter writer(targetFolder, env, &out);
  Expected<void> result;
  // The walk ends at the end of the file; the count only feeds the progress text.
  for (long number = 1;; ++number) {
    if (progress.EscapePressed()) {
      out.stopped = true;
      break;
    }
    std::string problem;
    const FFLRead r = ReadFFLEntry(f, *in, problem);
    if (r == FFLRead::EndOfFile) break;
    if (r == FFLRead::Broken) {
      Error broken = Error::Fault(libraryPath + ": " + problem, libraryPath);
      broken.line = static_cast<int>(in->LineNumber());
      result = std::move(broken);
      break;
    }
    if (!IsDeleted(f)) {
      ++out.read;
      OverwriteAnswer answer = OverwriteAnswer::Write;
      if (overwrite && askForEntries)
        answer = overwrite->OverwriteCheck(libraryPath,
                                          targetFolder + GetFilname(format, f.filename,
                                                                    env.options));
      if (answer == OverwriteAnswer::Stop) {
        out.stopped = true;
        break;
      }
      if (answer == OverwriteAnswer::Write) {
        if (writer.Write(f, format) == WriteOutcome::FolderFailed) {
          result = Error::Fault(UnusableFolder(targetFolder), targetFolder);
          break;
        }
      } else {
        ++out.skipped;
      }
    }
    progress.StatusDisplay(std::to_string(number) + " of " + count);
    if (in->AtEnd()) break;
  }
  if (overwrite) overwrite->OverwriteCheck("", "");
  progress.StatusDisplay("");
  return result;
}

Expected<void> cmd_Extract(FFFilter& f, const FFLLibrary& library, const std::vector<int>& selected,
                           OutputFormat format, const std::string& targetFolder, OverwriteChecker& check,
                           const FilterEnv& env, ConvertReport& report) {
  Progress& progress = env.hooks();
  auto file = BinFile::Open(library.path, BinFile::Mode::Read);
  if (!file) return Error::Fault(library.path + ": the file can't be opened", library.path);
  const std::string folder = WithTrailingSeparator(targetFolder);
  const std::vector<std::string> order = AddtoArrayList(selected);
  const std::string total = std::to_string(order.size());
  check.OverwriteCheck("", "");
  TargetWriter writer(folder, env, &report);
  Expected<void> result;
  for (size_t i = 0; i < order.size(); ++i) {
    if (progress.EscapePressed()) {
      report.stopped = true;
      break;
    }
    progress.StatusDisplay(std::to_string(i + 1) + " of " + total);
    const int64_t position = library.PositionOf(std::stoi(order[i]));
    file->Seek(position);
    if (position == 0 || !ReadFFLEntryII(f, *file) || IsDeleted(f)) {
      ++report.unreadable;
      continue;
    }
    ++report.read;
    const OverwriteAnswer answer = check.OverwriteCheck(library.path,
                                            folder + GetFilname(format, f.filename, env.options));
    if (answer == OverwriteAnswer::Stop) {
      report.stopped = true;
      break;
    }
    if (answer == OverwriteAnswer::Skip) {
      ++report.skipped;
      continue;
    }
    ApplyNameRule(f, env.options);
    if (writer.Write(f, format) == WriteOutcome::FolderFailed) {
      result = Error::Fault(UnusableFolder(folder), folder);
      break;
    }
  }
  check.OverwriteCheck("", "");
  progress.StatusDisplay("");
  return result;
}

// ---------------------------------------------------------------- making libraries

FFLAddResult cmd_CreateFFL(const std::string& libraryPath, const std::vector<std::string>& sources,
                           const FilterEnv& env) {
  FFLAddResult result;
  const std::string entries = EntriesOf(sources, env, result);
  if (result.added == 0) return result;
  SafeTarget target(libraryPath, false);
  if (target.file()) {
    target.file()->Write(Header(env.options.writeFFL10 ? "FFL1.0" : "FFL1.1", result.added));
    target.file()->Write(entries);
    result.ok = target.Commit();
  }
  if (!result.ok) result.error = Error::Fault(target.error(), libraryPath);
  return result;
}

FFLAddResult cmd_Add2FFL(const std::string& libraryPath, const std::vector<std::string>& sources,
                         const FilterEnv& env) {
  FFLAddResult result;
  FFLLibrary library;
  if (auto read = ReadFFLLibrary(libraryPath, library); !read) {
    result.error = read.error();
    return result;
  }
  if (!library.problem.empty()) {
    result.error = Error::Fault(libraryPath + ": " + library.problem, libraryPath);
    return result;
  }
  const std::string entries = EntriesOf(sources, env, result);
  if (result.added == 0) return result;

  auto old = BinFile::Open(libraryPath, BinFile::Mode::Read);
  SafeTarget target(libraryPath, false);
  if (old && target.file()) {
    // The header is written anew, so the count is right whatever width the old one had.
    BinFile& out = *target.file();
    const long count = static_cast<long>(library.positions.size()) + result.added;
    out.Write(Header(library.version, count));
    int64_t from = library.positions.empty() ? old->Length() + 1 : library.positions.front();
    constexpr int64_t kChunk = 1 << 16;
    for (; from <= old->Length(); from += kChunk) out.Write(old->Read(from, kChunk));
    const std::string tail = old->Read(old->Length(), 1);
    if (!library.positions.empty() && tail != "\n" && tail != "\r") out.Write("\r\n");
    out.Write(entries);
    result.ok = !old->Failed() && target.Commit();
  }
  if (!result.ok) {
    result.added = 0;
    result.error = Error::Fault(target.error().empty() ? libraryPath + ": the file can't be read"
                                                       : target.error(),
                                libraryPath);
  }
  return result;
}

}  // namespace trel
