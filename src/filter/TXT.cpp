// TXT: filter source as text. Two forms, told apart by the first line: the free
// form read by key words (written by WriteTXT and typed by hand), and the fixed
// form of another tool's "Filter Factory Plugin Information:" report.
#include <stdexcept>
#include <string>
#include <vector>

#include "filter/ByteHelpers.h"
#include "filter/CodeRewrite.h"
#include "base/Paths.h"
#include "base/SafeTarget.h"
#include "filter/SourceFiles.h"
#include "filter/TextFormats.h"

namespace trel {
namespace {

// A read error of the text reader; its text is shown in the general error box.
struct TxtError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The lines of a text file; CR, LF and CR LF all end a line.
class Lines {
 public:
  explicit Lines(const std::string& text) {
    std::string line;
    for (size_t i = 0; i < text.size(); ++i) {
      const char c = text[i];
      if (c == '\r' || c == '\n') {
        lines_.push_back(std::move(line));
        line.clear();
        if (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
      } else {
        line += c;
      }
    }
    if (!line.empty()) lines_.push_back(std::move(line));
  }
  bool AtEnd() const { return next_ >= lines_.size(); }
  // The next line; reading past the last one is the classic text-input error.
  std::string Next() {
    if (AtEnd()) throw TxtError("Input past end of file");
    return lines_[next_++];
  }

 private:
  std::vector<std::string> lines_;
  size_t next_ = 0;
};

bool StartsWith(const std::string& s, const std::string& prefix) { return s.rfind(prefix, 0) == 0; }
bool StartsWithAnyCase(const std::string& s, const std::string& prefix) {
  return StartsWith(ToLower(s.substr(0, prefix.size())), prefix);
}
std::string From(const std::string& s, size_t index) { return index < s.size() ? s.substr(index) : ""; }
std::string CutComment(const std::string& s) { return s.substr(0, s.find("//")); }

// The index digit at column 5 of a `ctl[n]`, `map[n]`, `val[n]` or `set[n]` line;
// like the number conversion it stands for, a non-digit reads as 0. An index the
// table has no room for is a read error.
int IndexAtColumn5(const std::string& line, int highest) {
  const char c = line.size() > 4 ? line[4] : ' ';
  const int index = (c >= '0' && c <= '9') ? c - '0' : 0;
#ifndef TREL_FUZZ_PLANTED_FAULT  // a fuzz build that shows the fuzzers catch a missing check
  if (index > highest) throw TxtError("Subscript out of range");
#else
  (void)highest;
#endif
  return index;
}

long long NumberInRange(const std::string& text, long long low, long long high) {
  const long long n = LeadingNumber(text);
  if (n < low || n > high) throw TxtError("Overflow");
  return n;
}

struct Channel {
  char letter;
  std::string* code;
};

class FreeFormReader {
 public:
  FreeFormReader(FFFilter& f, Lines& lines, bool acceptPresets, const FilterEnv& env)
      : f_(f), lines_(lines), acceptPresets_(acceptPresets), env_(env) {}

  void Read(std::string line) {
    f_.codeA = "a";  // with no A: line the alpha channel passes through
    for (;;) {
      RunTests(line);
      if (lines_.AtEnd()) break;
      line = lines_.Next();
    }
  }

 private:
  void RunTests(std::string& line) {
    if (StartsWithAnyCase(line, "category:")) {
      f_.category = Trim(From(line, 9));
      if (f_.category.empty()) f_.category = "Photoshop";
    }
    if (StartsWithAnyCase(line, "name:")) f_.title = Trim(From(line, 5));
    if (StartsWithAnyCase(line, "title:")) f_.title = Trim(From(line, 6));
    if (StartsWithAnyCase(line, "copyright:")) f_.copyright = Trim(From(line, 10));
    if (StartsWithAnyCase(line, "author:")) f_.author = Trim(From(line, 7));
    if (StartsWithAnyCase(line, "filename:")) f_.filename = Trim(From(line, 9));
    if (StartsWithAnyCase(line, "file:")) f_.filename = Trim(From(line, 5));
    // A block may end at another channel's marker; that line then goes on
    // through the tests after the current channel's, so a marker of an earlier
    // channel is lost.
    const Channel channels[] = {{'R', &f_.codeR}, {'G', &f_.codeG}, {'B', &f_.codeB}, {'A', &f_.codeA}};
    for (const Channel& channel : channels) ChannelTest(line, channel);
    if (StartsWithAnyCase(line, "ctl")) f_.ctlName[IndexAtColumn5(line, 7) + 1] = Trim(From(line, 7));
    if (StartsWithAnyCase(line, "map")) f_.mapName[IndexAtColumn5(line, 3) + 1] = Trim(From(line, 7));
    if (StartsWithAnyCase(line, "val"))
      f_.ctlValue[IndexAtColumn5(line, 7) + 1] = static_cast<uint8_t>(NumberInRange(From(line, 7), 0, 255));
    if (acceptPresets_ && StartsWithAnyCase(line, "set")) SetTest(line);
  }

  void ChannelTest(std::string& line, const Channel& channel) {
    if (!StartsWith(line, std::string(1, channel.letter) + ":") &&
        !StartsWith(line, std::string(1, channel.letter) + "="))
      return;
    std::string code = *channel.code;
    if (line.size() > 2) code = From(CutComment(line), 2);
    for (;;) {
      line = lines_.Next();  // a block running into the end of the file is an error
      if (line.empty() || EndsBlock(line, channel.letter)) break;
      code += CutComment(line);
    }
    *channel.code = Trim(code);
  }

  static bool EndsBlock(const std::string& line, char channel) {
    for (char other : {'R', 'G', 'B', 'A'})
      if (other != channel && StartsWith(line, std::string(1, other) + ":")) return true;
    return channel == 'A' && StartsWith(line, "ctl");
  }

  void SetTest(const std::string& line) {
    const int spot = IndexAtColumn5(line, 9);
    std::string rest = From(line, 7);
    for (int j = 0; j < 8; ++j) {
      std::string value = rest;
      if (j < 7) {
        const auto comma = rest.find(',');
        value = rest.substr(0, comma);
        rest = comma == std::string::npos ? "" : rest.substr(comma + 1);
      }
      f_.presets[j][spot] = static_cast<int16_t>(NumberInRange(value, -32768, 32767));
    }
    env_.hooks().MarkMemorySpot(spot);
  }

  FFFilter& f_;
  Lines& lines_;
  bool acceptPresets_;
  const FilterEnv& env_;
};

// Skips lines up to one that begins with `marker` and returns it.
std::string SkipTo(Lines& lines, const std::string& marker) {
  for (;;) {
    std::string line = lines.Next();
    if (StartsWith(line, marker)) return line;
  }
}

// Reads the names of the `Map i:` or `Control i:` lines of the report. False on
// a line that breaks the form.
bool ReadNameList(Lines& lines, const std::string& word, int count, OneBased<std::string, 8>* controls,
                  OneBased<std::string, 4>* maps) {
  for (int i = 0; i < count; ++i) {
    const std::string line = SkipTo(lines, word);
    const std::string label = word + " " + std::to_string(i) + ":";  // "Map 0:", "Control 0:"
    if (!StartsWith(line, label)) return false;
    const size_t nameAt = label.size() + 2;  // behind ": ["
    std::string name;
    const bool endOfList = line.size() >= 2 && line.compare(line.size() - 2, 2, "[]") == 0;
    if (!endOfList && line.compare(std::min(nameAt, line.size()), label.size(), label) != 0 &&
        line.size() > nameAt)
      name = line.substr(nameAt, line.size() - nameAt - 1);
    if (controls) (*controls)[i + 1] = name; else (*maps)[i + 1] = name;
    if (endOfList) break;
  }
  return true;
}

// Appends lines to `code` up to the line that ends the block.
void ReadCodeLines(Lines& lines, std::string& code, const std::string& end, bool exact) {
  for (;;) {
    const std::string line = lines.Next();
    if (exact ? line == end : StartsWith(line, end)) return;
    code += line;
  }
}

bool ReadFixedForm(FFFilter& f, Lines& lines, const std::string& folder, const std::string& name,
                   const FilterEnv& env) {
  std::string line = SkipTo(lines, "FILENAME:");
  std::string last12 = line.size() > 12 ? line.substr(line.size() - 12) : line;
  if (const auto slash = last12.rfind('\\'); slash != std::string::npos) last12 = last12.substr(slash + 1);
  f.filename = last12;
  SkipTo(lines, "CATEGORY:");
  f.category = lines.Next();
  SkipTo(lines, "TITLE:");
  f.title = lines.Next();
  SkipTo(lines, "COPYRIGHT:");
  f.copyright = lines.Next();
  SkipTo(lines, "AUTHOR:");
  f.author = lines.Next();

  if (!ReadNameList(lines, "Map", 4, nullptr, &f.mapName) ||
      !ReadNameList(lines, "Control", 8, &f.ctlName, nullptr)) {
    env.hooks().Report(Error::Warning(name + ": Format Violation", "Error", folder + name));
    return false;
  }
  while (lines.Next() != "R=") {
  }
  ReadCodeLines(lines, f.codeR, "G=", true);
  ReadCodeLines(lines, f.codeG, "B=", false);
  ReadCodeLines(lines, f.codeB, "A=", true);
  ReadCodeLines(lines, f.codeA, "", true);

  // The report has no control values; an AFS file of the same name beside it does.
  const std::string afs = folder + name.substr(0, name.rfind('.')) + ".afs";
  if (FileExists(afs) && FileLength(afs) <= kMaxSourceFileSize) {
    if (auto file = BinFile::Open(afs, BinFile::Mode::Read)) {
      Lines values(file->Read(1, file->Length()));
      values.Next();  // the magic
      for (int i = 1; i <= 8; ++i)
        f.ctlValue[i] = static_cast<uint8_t>(NumberInRange(values.Next(), 0, 255));
    }
  }
  OptimizeCode(f, env.options);
  f.isPhotoshop = true;
  return true;
}

}  // namespace

bool ReadTXT(FFFilter& f, std::string folder, const std::string& name, bool /*ignored*/,
             bool acceptPresets, const FilterEnv& env) {
  const auto found = BeginSourceRead(f, folder, name, env);
  if (!found) return false;
  const std::string& path = *found;
  folder = WithTrailingSeparator(folder);
  try {
    if (FileLength(path) > kMaxSourceFileSize) throw TxtError("File too large for a filter source");
    auto file = BinFile::Open(path, BinFile::Mode::Read);
    if (!file) throw TxtError("Permission denied");
    Lines lines(file->Read(1, file->Length()));
    if (file->Failed()) throw TxtError("Device I/O error");
    file->Close();
    const std::string first = lines.Next();
    if (StartsWith(first, "Filter Factory Plugin Information:"))
      return ReadFixedForm(f, lines, folder, name, env);

    FreeFormReader(f, lines, acceptPresets, env).Read(first);
    if (f.filename.empty()) f.filename = "-NoName.8bf";
    if (f.codeR.empty() || f.codeG.empty() || f.codeB.empty() || f.codeA.empty()) return false;
    OptimizeCode(f, env.options);
    f.isPhotoshop = true;
    return true;
  } catch (const TxtError& e) {
    env.hooks().Report(Error::Fault(e.what(), path));
    return false;
  }
}

std::string FilterText(const FFFilter& f, CodeLines codes) {
  std::string text;
  auto line = [&text](const std::string& s) { text += s + "\r\n"; };
  line("Category: " + f.category);
  line("Title: " + f.title);
  line("Copyright: " + f.copyright);
  line("Author: " + f.author);
  line("Filename: " + f.filename);
  line("");
  for (const auto& [label, code] : {std::pair{"R:", &f.codeR}, std::pair{"G:", &f.codeG},
                                    std::pair{"B:", &f.codeB}, std::pair{"A:", &f.codeA}}) {
    if (codes == CodeLines::BesideLabel) {
      line(label + *code);
    } else {
      line(label);
      line(*code);
    }
    line("");
  }
  // A map and its control pair exclude each other; the map wins.
  for (int i = 0; i < 4; ++i) {
    if (!f.mapName[i + 1].empty()) {
      line("map[" + std::to_string(i) + "]: " + f.mapName[i + 1]);
    } else {
      for (int c = 2 * i; c <= 2 * i + 1; ++c)
        if (!f.ctlName[c + 1].empty()) line("ctl[" + std::to_string(c) + "]: " + f.ctlName[c + 1]);
    }
  }
  line("");
  for (int i = 0; i < 4; ++i) {
    for (int c = 2 * i; c <= 2 * i + 1; ++c)
      if (!f.mapName[i + 1].empty() || !f.ctlName[c + 1].empty())
        line("val[" + std::to_string(c) + "]: " + std::to_string(f.ctlValue[c + 1]));
  }
  line("");
  return text;
}

void WriteTXT(FFFilter& f, std::string folder, bool withPresets, const FilterEnv& env) {
  if (!f.isPhotoshop) CorrectprmcodeAll(f);
  if (env.options.macFFAdaption) CorrectCodeForMac(f);
  if (f.filename.find('.') == std::string::npos) f.filename += ".txt";
  const std::string stem = f.filename.substr(0, f.filename.size() >= 4 ? f.filename.size() - 4 : 0);

  std::string text = FilterText(f, CodeLines::BesideLabel);
  auto line = [&text](const std::string& s) { text += s + "\r\n"; };
  for (int spot = 0; spot <= 9; ++spot) {
    if (!withPresets || !env.hooks().IsMemorySpotMarked(spot)) continue;
    std::string values;
    for (int j = 0; j < 8; ++j) values += (j ? "," : "") + std::to_string(f.presets[j][spot]);
    line("set[" + std::to_string(spot) + "]: " + values);
  }

  SafeTarget target(WithTrailingSeparator(folder) + stem + ".txt", /*startFromExisting=*/false);
  if (BinFile* file = target.file()) {
    file->Write(text);
    target.Commit();
  }
}

}  // namespace trel
