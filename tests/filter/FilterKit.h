// Shared by the filter tests: a fixture with a recording shell, a sample
// record, small sources, and one-line views of a record's fields so that a
// single comparison still names what differs.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

#include "filter/FFFilter.h"
#include "filter/FFL.h"
#include "filter/FilterEnv.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace test {

template <typename List, typename Show>
std::string JoinOf(const List& list, Show show) {
  std::string s;
  for (const auto& item : list) s += "|" + show(item);
  return s.substr(1);
}
inline std::string Texts(const FFFilter& f) { return f.category + "|" + f.title + "|" + f.author + "|" + f.copyright; }
inline std::string Codes(const FFFilter& f) { return f.codeR + "|" + f.codeG + "|" + f.codeB + "|" + f.codeA; }
inline std::string Maps(const FFFilter& f) { return JoinOf(f.mapName, [](const std::string& s) { return s; }); }
inline std::string Controls(const FFFilter& f) { return JoinOf(f.ctlName, [](const std::string& s) { return s; }); }
inline std::string Values(const FFFilter& f) {
  return JoinOf(f.ctlValue, [](uint8_t v) { return std::to_string(v); });
}
inline std::string Describe(const FFFilter& f) {
  std::string presets;
  for (int c = 0; c < 8; ++c)
    for (int s = 0; s < 10; ++s)
      if (f.presets[c][s]) presets += " " + std::to_string(c) + "." + std::to_string(s) + "=" + std::to_string(f.presets[c][s]);
  return "filename=" + f.filename + "\ntexts=" + Texts(f) + "\nmaps=" + Maps(f) + "\nctls=" + Controls(f) +
         "\nvalues=" + Values(f) + "\ncodes=" + Codes(f) + "\nisPhotoshop=" + std::to_string(f.isPhotoshop) +
         "\ntransition=" + f.transitionName + "\npresets=" + presets + "\n";
}

using Names = std::vector<std::string>;

// The files and folders below `folder`, relative and sorted.
inline Names FilesBelow(const std::string& folder) {
  namespace fs = std::filesystem;
  Names names;
  for (const auto& e : fs::recursive_directory_iterator(folder)) names.push_back(fs::relative(e.path(), folder).string());
  std::sort(names.begin(), names.end());
  return names;
}

class FilterTest : public ::testing::Test {
 protected:
  FilterTest() { env.shell = &shell; }
  TempDir dir;
  RecordingShell shell;
  FilterEnv env;
  FFFilter f;
};

// Header, values and code only: the editor loads it, a batch refuses it.
inline const std::string kBareAfs = "%RGB-1.0\r0\r0\r0\r0\r0\r0\r0\r0\rr\r\rg\r\rb\r\ra\r\r";
inline const std::string kRgbTxt = "R:r\n\nG:g\n\nB:b\n\n";

inline FFFilter SampleFilter() {
  FFFilter f;
  f.filename = "sample.8bf";
  f.category = "Trel Samples";
  f.title = "Warm Glow";
  f.author = "Trel";
  f.copyright = "(c) Trel";
  f.ctlName[1] = "Warmth";
  f.ctlName[2] = "Glow";
  f.ctlName[5] = "Unused Value";
  f.ctlValue[1] = 40;
  f.ctlValue[2] = 200;
  f.ctlValue[5] = 7;
  f.ctlValue[6] = 99;  // no name: the source writers store 0
  f.codeR = "add(r,ctl(0),255)";
  f.codeG = "mix(g,255-g,ctl(1),255)";
  f.codeB = "b*Z/D";
  f.codeA = "a";
  return f;
}

// A library entry; a .prm name means Premiere code.
inline FFFilter Entry(const std::string& filename, const std::string& title) {
  FFFilter f;
  f.filename = filename;
  f.title = title;
  f.isPhotoshop = filename.size() < 4 || filename.substr(filename.size() - 4) != ".prm";
  f.codeR = "r";
  f.codeG = "g";
  f.codeB = "b";
  f.codeA = "a";
  return f;
}

// A library written by our own entry writer, the count right-aligned in five.
inline std::string FflOf(const std::vector<FFFilter>& entries, const std::string& version = "FFL1.0") {
  const std::string n = std::to_string(entries.size());
  std::string t = version + "\r\n" + std::string(5 - n.size(), ' ') + n + "\r\n";
  for (const auto& e : entries) t += FFLEntryText(e);
  return t;
}

}  // namespace test

inline void PrintTo(const FFFilter& f, std::ostream* os) { *os << "\n" << test::Describe(f); }

}  // namespace trel
