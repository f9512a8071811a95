#include "editor/FFEditorMod.h"

#include <cmath>
#include <cstdlib>
#include <fstream>
#include <filesystem>

#include "filter/LabelShortening.h"
#include "filter/TextFormats.h"

namespace trel {

int NormalizeSliderValue(const std::string& typed) {
  // The leading number of the text, as a value label reads it.
  size_t i = 0;
  while (i < typed.size() && (typed[i] == ' ' || typed[i] == '\t')) ++i;
  bool negative = false;
  if (i < typed.size() && (typed[i] == '-' || typed[i] == '+')) negative = typed[i++] == '-';
  long long v = 0;
  while (i < typed.size() && typed[i] >= '0' && typed[i] <= '9') {
    v = (v * 10 + (typed[i] - '0')) % 256000;  // keeps the value small; mod 256 is unchanged
    ++i;
  }
  (void)negative;  // a negative value becomes its absolute value
  return static_cast<int>(v % 256);
}

int MapOfSlider(int index) {
  return static_cast<int>(std::nearbyint(std::fabs(index - 0.5) / 2.0));
}

int PlaceKnob(int value, int trackLeft, int trackWidth, int knobWidth) {
  const int room = trackWidth - 1 - knobWidth;
  if (value >= 255) return trackLeft + room;
  return trackLeft + 1 + static_cast<int>(std::nearbyint(room / 255.0 * value));
}

int KnobValue(int knobLeft, int trackLeft, int trackWidth, int knobWidth) {
  const int room = trackWidth - 1 - knobWidth;
  if (room <= 0) return 0;
  const int v = static_cast<int>(std::nearbyint((knobLeft - trackLeft - 1) / (room / 255.0)));
  return v < 0 ? 0 : (v > 255 ? 255 : v);
}

int KnobLeftForPress(int x, int trackLeft, int trackWidth, int knobWidth) {
  const int lo = trackLeft + 1;
  const int hi = trackLeft + trackWidth - 1 - knobWidth;
  int left = trackLeft + x - knobWidth / 2;
  if (left < lo) left = lo;
  if (left > hi) left = hi;
  return left;
}

int SpotAt(int x, int y, int w, int h) {
  if (w < 5 || h < 2) return 0;
  int row = y / (h / 2), col = x / (w / 5);
  row = row < 0 ? 0 : (row > 1 ? 1 : row);
  col = col < 0 ? 0 : (col > 4 ? 4 : col);
  return row * 5 + col;
}

PreviewPlan PlanPreview(const FFFilter& f, bool alphaChannelDisplay) {
  PreviewPlan plan;
  const PassCodes asIs{f.codeR, f.codeG, f.codeB, f.codeA};
  const bool colourAtMostOne = f.codeR.size() <= 1 && f.codeG.size() <= 1 && f.codeB.size() <= 1;
  bool alphaPass = false;
  if (!alphaChannelDisplay) {
    if (f.codeA != "a" && f.codeR.size() == 1 && f.codeG.size() == 1 && f.codeB.size() == 1)
      alphaPass = true;
    else
      plan.passes.push_back(asIs);
  } else if (f.codeA == "a") {
    plan.passes.push_back(asIs);
  } else if (colourAtMostOne) {
    alphaPass = true;
  } else {
    plan.passes.push_back(asIs);
    alphaPass = true;
  }
  if (alphaPass) {
    const std::string a = ReplaceAwithI(f.codeA);
    PassCodes codes{f.codeR, f.codeG, f.codeB, a};
    // A's get needs the put calls that R may carry: then only B shows alpha.
    if (a.find("get") == std::string::npos || f.codeR.size() <= 1)
      codes[0] = codes[1] = codes[2] = a;
    else
      codes[2] = a;
    plan.passes.push_back(codes);
    plan.alphaDisplay = true;
  }
  return plan;
}

std::string FilterClipboardText(const FFFilter& f) { return FilterText(f, CodeLines::BelowLabel); }

std::vector<std::string> FilterPrintLines(const FFFilter& f) {
  std::vector<std::string> lines{"   Category: " + f.category, "   Title: " + f.title,
                                 "   Copyright: " + f.copyright, "   Author: " + f.author,
                                 "   Filename: " + f.filename,
                                 "   A: " + f.codeA, "   R: " + f.codeR,
                                 "   G: " + f.codeG, "   B: " + f.codeB};
  for (int pair = 1; pair <= 4; ++pair) {
    const int c1 = 2 * pair - 1, c2 = 2 * pair;
    if (!f.mapName[pair].empty()) {
      lines.push_back("   map[" + std::to_string(pair - 1) + "]: " + f.mapName[pair] + "  " +
                      std::to_string(f.ctlValue[c1]) + ", " + std::to_string(f.ctlValue[c2]));
      continue;
    }
    for (int c : {c1, c2})
      if (!f.ctlName[c].empty())
        lines.push_back("   ctl[" + std::to_string(c - 1) + "]: " + f.ctlName[c] + "  " +
                        std::to_string(f.ctlValue[c]));
  }
  return lines;
}

std::vector<Snippet> ParseSnipets(const std::string& text) {
  std::vector<Snippet> out;
  size_t start = 0;
  while (start <= text.size()) {
    size_t end = text.find('\n', start);
    if (end == std::string::npos) end = text.size();
    std::string line = text.substr(start, end - start);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    start = end + 1;
    if (line.empty() || line[0] == '#') {
      if (end == text.size()) break;
      continue;
    }
    const size_t semi = line.find(';');
    if (semi == std::string::npos)
      out.push_back({std::string(), line});
    else
      out.push_back({line.substr(0, semi), line.substr(semi + 1)});
    if (end == text.size()) break;
  }
  return out;
}

std::string SaveTargetName(const std::string& fileLabel, OutputFormat format) {
  const char* ext = ".8bf";
  switch (format) {
    case OutputFormat::Plugin8bf: ext = ".8bf"; break;
    case OutputFormat::PremierePlugin:
    case OutputFormat::TransitionPlugin: ext = ".prm"; break;
    case OutputFormat::AFS: ext = ".afs"; break;
    case OutputFormat::PFF: ext = ".pff"; break;
    case OutputFormat::TXT: ext = ".txt"; break;
  }
  const size_t dot = fileLabel.find('.');
  const std::string stem = dot == std::string::npos ? fileLabel : fileLabel.substr(0, dot);
  return stem + ext;
}

bool ToggleFFUIFile(const std::string& path, bool on) {
  std::error_code ec;
  const auto size = std::filesystem::file_size(path, ec);
  if (ec) return false;
  std::streamoff position = 0;
  switch (size) {
    case 49152: position = 24125; break;
    case 57344: position = 31293; break;
    case 49688: position = 26625; break;
    default: return false;
  }
  std::fstream file(path, std::ios::in | std::ios::out | std::ios::binary);
  if (!file) return false;
  file.seekp(position - 1);
  const char byte = on ? 1 : 0;
  file.write(&byte, 1);
  return static_cast<bool>(file);
}

}  // namespace trel
