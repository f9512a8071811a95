// What the catalogue tests share: a fixture with a temporary folder and a shell
// that records messages, type tables in one line, and a filter source.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "catalogue/PluginList.h"
#include "catalogue/PluginTypes.h"
#include "filter/FFFilter.h"
#include "filter/FilterEnv.h"
#include "support/PeBuilder.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel::test {

class CatalogueTest : public ::testing::Test {
 protected:
  CatalogueTest() { env.shell = &shell; }
  TempDir dir;
  RecordingShell shell;
  FilterEnv env;
};

using Strings = std::vector<std::string>;

// One text field of every entry, in list order: Column(pane.plugins, &PluginEntry::title).
inline Strings Column(const PluginList& list, std::string PluginEntry::*field) {
  Strings out;
  for (const PluginEntry& e : list) out.push_back(e.*field);
  return out;
}

// A table of the given rows, all checked or all unchecked.
inline PluginTypeTable Types(std::initializer_list<const char*> rows, bool checked = true) {
  PluginTypeList list;
  for (const char* row : rows) list.push_back({row, checked});
  PluginTypeTable table;
  GetPlugTypes(list, table);
  return table;
}

// The default rows; only those containing `only` are checked ("" for all).
inline PluginTypeTable DefaultTypes(const std::string& only = "") {
  PluginTypeList list;
  for (const auto& row : DefaultPluginTypeRows()) list.push_back({row, row.find(only) != std::string::npos});
  PluginTypeTable table;
  GetPlugTypes(list, table);
  return table;
}

inline FFFilter SourceFilter(const std::string& filename, const std::string& category) {
  FFFilter f;
  f.filename = filename;
  f.category = category;
  f.title = "Glow";
  f.codeR = "r";
  f.codeG = "g";
  f.codeB = "b";
  f.codeA = "a";
  return f;
}

}  // namespace trel::test
