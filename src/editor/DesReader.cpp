#include "editor/DesReader.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace trel {

namespace fs = std::filesystem;

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t'; }
bool IsLineEnd(char c) { return c == '\r' || c == '\n'; }

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

}  // namespace

bool DesItemReader::AtEnd() const {
  for (size_t i = pos_; i < text_.size(); ++i)
    if (!IsBlank(text_[i]) && !IsLineEnd(text_[i])) return false;
  return true;
}

std::optional<std::string> DesItemReader::Next() {
  // Blanks and empty lines before an item are passed over.
  while (pos_ < text_.size() && (IsBlank(text_[pos_]) || IsLineEnd(text_[pos_]))) ++pos_;
  if (pos_ >= text_.size()) return std::nullopt;
  std::string item;
  if (text_[pos_] == '"') {
    const size_t close = text_.find('"', pos_ + 1);
    if (close == std::string::npos) {
      item = text_.substr(pos_ + 1);
      pos_ = text_.size();
      return item;
    }
    item = text_.substr(pos_ + 1, close - pos_ - 1);
    pos_ = close + 1;
    // Whatever stands between the closing quote and the separator is dropped.
    while (pos_ < text_.size() && text_[pos_] != ',' && !IsLineEnd(text_[pos_])) ++pos_;
  } else {
    const size_t start = pos_;
    while (pos_ < text_.size() && text_[pos_] != ',' && !IsLineEnd(text_[pos_])) ++pos_;
    item = text_.substr(start, pos_ - start);
  }
  // The separator itself: a comma, or one line end (CR LF counts as one).
  if (pos_ < text_.size()) {
    if (text_[pos_] == ',') {
      ++pos_;
    } else if (text_[pos_] == '\r') {
      ++pos_;
      if (pos_ < text_.size() && text_[pos_] == '\n') ++pos_;
    } else {
      ++pos_;
    }
  }
  return item;
}

int16_t DesNumber(const std::string& item) {
  size_t i = 0;
  while (i < item.size() && IsBlank(item[i])) ++i;
  const size_t start = i;
  if (i < item.size() && (item[i] == '+' || item[i] == '-')) ++i;
  size_t digits = 0;
  while (i < item.size() && std::isdigit(static_cast<unsigned char>(item[i]))) ++i, ++digits;
  if (i < item.size() && item[i] == '.') {
    ++i;
    while (i < item.size() && std::isdigit(static_cast<unsigned char>(item[i]))) ++i, ++digits;
  }
  if (digits == 0) return 0;
  // An exponent counts only when digits follow it.
  if (i < item.size() && (item[i] == 'e' || item[i] == 'E')) {
    size_t j = i + 1;
    if (j < item.size() && (item[j] == '+' || item[j] == '-')) ++j;
    size_t expDigits = 0;
    while (j < item.size() && std::isdigit(static_cast<unsigned char>(item[j]))) ++j, ++expDigits;
    if (expDigits > 0) i = j;
  }
  const std::string prefix = item.substr(start, i - start);
  double value = std::strtod(prefix.c_str(), nullptr);
  if (std::isnan(value)) return 0;
  if (value >= 32767.0) return 32767;
  if (value <= -32768.0) return -32768;
  return static_cast<int16_t>(std::nearbyint(value));  // the default mode rounds half to even
}

CombineMode CombineWord(const std::string& word) {
  if (word == "RGN_AND") return CombineMode::And;
  if (word == "RGN_OR") return CombineMode::Or;
  if (word == "RGN_XOR") return CombineMode::Xor;
  if (word == "RGN_DIFF") return CombineMode::Diff;
  if (word == "RGN_COPY") return CombineMode::Copy;
  return CombineMode::None;
}

ShapeKind ShapeWord(const std::string& word) {
  if (word == "Rect") return ShapeKind::Rect;
  if (word == "Ellipse") return ShapeKind::Ellipse;
  if (word == "RoundRect") return ShapeKind::RoundRect;
  return ShapeKind::Unknown;
}

namespace {

// A missing item reads as empty (so a number as 0): a short file goes on with
// whatever it reached.
std::string Item(DesItemReader& in) { return in.Next().value_or(std::string()); }

DesGroup ReadShape(DesItemReader& in) {
  DesGroup g;
  g.shape.kind = ShapeWord(Item(in));
  g.shape.x1 = DesNumber(Item(in));
  g.shape.y1 = DesNumber(Item(in));
  g.shape.x2 = DesNumber(Item(in));
  g.shape.y2 = DesNumber(Item(in));
  g.shape.x3 = DesNumber(Item(in));
  g.shape.y3 = DesNumber(Item(in));
  return g;
}

void ReadCombine(DesItemReader& in, DesGroup& g) {
  if (auto word = in.Next()) g.combine = CombineWord(*word);
}

DesBox ReadBox(DesItemReader& in) {
  DesBox b;
  b.left = DesNumber(Item(in));
  b.top = DesNumber(Item(in));
  b.right = DesNumber(Item(in));
  b.bottom = DesNumber(Item(in));
  return b;
}

}  // namespace

DesSkin ParseDes(const std::string& text) {
  DesSkin skin;
  DesItemReader in(text);
  skin.displayName = Item(in);
  skin.picture = Item(in);
  skin.shapeCount = DesNumber(Item(in));
  auto w = in.Next();
  auto h = in.Next();
  skin.width = DesNumber(w.value_or(""));
  skin.height = DesNumber(h.value_or(""));
  skin.sizeRead = w.has_value() && h.has_value();
  if (in.AtEnd()) return skin;
  // Shapes 1 and 2 and the first combine word are read in any case.
  skin.shapes.push_back(ReadShape(in));
  skin.shapes.push_back(ReadShape(in));
  ReadCombine(in, skin.shapes.back());
  for (int n = 1; n <= skin.shapeCount - 2 && !in.AtEnd(); ++n) {
    DesGroup g = ReadShape(in);
    ReadCombine(in, g);
    skin.shapes.push_back(g);
  }
  // The slider place is consumed whatever stands there.
  if (in.AtEnd()) return skin;
  const std::string slider = Item(in);
  if (slider.compare(0, 11, "GraphSlider") == 0) {
    skin.graphSliders = true;
    skin.tileSet = DesNumber(slider.substr(slider.size() - 1));
  }
  if (in.AtEnd()) return skin;
  skin.mailItemRead = true;
  if (Item(in) == "Mailto") {
    skin.mailSeen = true;
    skin.mailBox = ReadBox(in);
    skin.mailAddress = Item(in);
    skin.mailToolTip = Item(in);
  }
  if (in.AtEnd()) return skin;
  skin.codeItemRead = true;
  if (Item(in) == "CodeWindows") {
    skin.codeSeen = true;
    skin.codeBox = ReadBox(in);
  }
  return skin;
}

bool ReadDesFile(const std::string& path, DesSkin& skin) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    skin = DesSkin{};
    return false;
  }
  // Skins are small; a huge file is cut at 1 MB so a wrong choice cannot stall the window.
  std::string text(1 << 20, '\0');
  file.read(text.data(), static_cast<std::streamsize>(text.size()));
  text.resize(static_cast<size_t>(file.gcount()));
  skin = ParseDes(text);
  return true;
}

namespace {

std::vector<fs::path> DesFilesIn(const fs::path& folder) {
  std::vector<fs::path> found;
  std::error_code ec;
  if (!fs::is_directory(folder, ec)) return found;
  for (auto it = fs::directory_iterator(folder, ec); !ec && it != fs::directory_iterator();
       it.increment(ec)) {
    if (it->is_regular_file(ec) && Lower(it->path().extension().string()) == ".des")
      found.push_back(it->path());
  }
  std::sort(found.begin(), found.end(), [](const fs::path& a, const fs::path& b) {
    return Lower(a.filename().string()) < Lower(b.filename().string());
  });
  return found;
}

}  // namespace

InterfaceListing LookforInterfaceFiles(const std::string& programFolder) {
  InterfaceListing listing;
  for (const char* name : {"interface", "interfac"}) {
    const auto files = DesFilesIn(fs::path(programFolder) / name);
    if (files.empty()) continue;
    listing.folderName = name;
    for (const auto& file : files) {
      std::ifstream in(file, std::ios::binary);
      std::string head(4096, '\0');
      in.read(head.data(), static_cast<std::streamsize>(head.size()));
      head.resize(static_cast<size_t>(in.gcount()));
      DesItemReader items(head);
      listing.entries.push_back(items.Next().value_or("") + " - " + file.filename().string());
    }
    break;
  }
  return listing;
}

std::string InterfaceFileOfEntry(const std::string& entry) {
  return entry.size() <= 12 ? entry : entry.substr(entry.size() - 12);
}

namespace {

// The true name of `file` in `folder`, compared without case; empty if absent.
std::string FindNoCase(const fs::path& folder, const std::string& file) {
  std::error_code ec;
  if (file.empty()) return {};
  if (fs::is_regular_file(folder / file, ec)) return (folder / file).string();
  const std::string want = Lower(file);
  if (!fs::is_directory(folder, ec)) return {};
  for (auto it = fs::directory_iterator(folder, ec); !ec && it != fs::directory_iterator();
       it.increment(ec)) {
    if (Lower(it->path().filename().string()) == want && it->is_regular_file(ec))
      return it->path().string();
  }
  return {};
}

}  // namespace

std::string ResolveInterfacePath(const std::string& programFolder, const std::string& folderName,
                                 std::string& interfaceFile) {
  const fs::path folder = fs::path(programFolder) / (folderName.empty() ? "interface" : folderName);
  std::string path = FindNoCase(folder, interfaceFile);
  if (!path.empty()) return path;
  interfaceFile = kFallbackInterfaceFile;
  path = FindNoCase(folder, interfaceFile);
  return path.empty() ? (folder / interfaceFile).string() : path;
}

}  // namespace trel
