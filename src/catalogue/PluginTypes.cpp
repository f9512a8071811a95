#include "catalogue/PluginTypes.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "base/Paths.h"
#include "base/PluginKinds.h"
#include "base/SafeTarget.h"

namespace trel {

const std::vector<std::string>& DefaultPluginTypeRows() {
  static const std::vector<std::string> rows = {
      "Acrobat Plugin (api|2)",        "trueSpace Plugin (tsx|1)",
      "Lightwave Plugin (p|3)",        "Maya Plugin (mll|3)",
      "Photoshop Action (atn|3)",      "Illustrator Plugin (aip|3)",
      "ActiveX Plugin (ax|0)",         "Ulead Filter Plugin (vft|3)",
      "Ulead FX Plugin (vfx|3)",       "Ulead Audio Plugin (aft|3)",
      "PS Export Plugin (8be|1)",      "PS File Format Plugin (8bi|1)",
      "PS Import Plugin (8ba|0)",      "PS Extension Plugin (8bx|0)",
      "PS Automation Plugin (8li|1)",  "PS Parser Plugin (8by|2)",
      "PS General Plugin (8bp|1)",     "PS Color Picker Plugin (8bc|1)",
      "PS Selection Plugin (8bs|1)",   "ACDSee Plugin (apl|0)",
      "PSP 6 Pattern (pat|3)",         "PSP 6 Texture (tex|3)",
      "PSP 7 Shape (jsl|3)",           "PSP 7 Texture/Pattern (bmp|3)",
      "PSP Brush (jbr|3)",             "PSP Frame (pfr|3)",
      "PSP Gradient (jgd|3)",          "PSP Image (psp|3)",
      "PSP Mask (msk|3)",              "PSP Styled Line (sld|3)",
      "PSP Tube (tub|3)",              "Painter Plugin (arp|3)",
      "PhotoImpact Plugin (upi|0)",    "Photo-Paint Plugin (eff|1)",
      "Ultimate Paint Plugin (upc|3)", "Quick Time Extension (qtx|0)",
      "Hollywood FX Effect (hfx|3)",   "Avid Express (avx|0)",
      "QuarkXpress XTension (xxt|0)",  "Indesign Plugin (pln|0)",
      "PhotoBrush Plugin (xtr|3)",
  };
  return rows;
}

void GetPlugTypes(const PluginTypeList& list, PluginTypeTable& table) {
  if (list.empty()) return;
  table.PluginTypes.assign(list.size(), PluginType{});
  table.PluginTypePattern.clear();
  for (size_t i = 0; i < list.size(); ++i) {
    if (!list[i].checked) continue;
    const std::string& row = list[i].text;
    const auto open = row.find('(');
    const auto bar = row.find('|');
    // A row typed without its brackets names nothing a file could match.
    if (open == std::string::npos || bar == std::string::npos || bar < open) continue;
    PluginType& t = table.PluginTypes[i];
    t.typeName = row.substr(0, open > 0 ? open - 1 : 0);
    t.extension = row.substr(open + 1, bar - open - 1);
    t.nameSource = row.substr(bar + 1, 1);
    if (t.extension.size() >= 3) {
      table.PluginTypePattern += ";*?" + t.extension;
    } else {
      // A wild character before one or two letters would match too much.
      table.PluginTypePattern += ";*." + t.extension + ";*_" + t.extension;
    }
  }
}

const PluginType* MatchPluginType(const PluginTypeTable& table, const std::string& name) {
  for (const PluginType& t : table.PluginTypes) {
    if (!t.empty() && ClassifyTypedName(name, t.extension)) return &t;
  }
  return nullptr;
}

const PluginType* MatchPluginTypeBySuffix(const PluginTypeTable& table, const std::string& suffix4) {
  const std::string lower = ToLower(suffix4.size() > 4 ? suffix4.substr(suffix4.size() - 4) : suffix4);
  return MatchPluginType(table, lower);
}

namespace {

// The items of a list file as the comma-separated input of the original reads
// them: commas and line ends separate, blanks around an item vanish, and a
// quoted item keeps its commas.
std::vector<std::string> ReadItems(std::istream& in) {
  std::vector<std::string> items;
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    size_t i = 0;
    do {
      while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
      std::string item;
      if (i < line.size() && line[i] == '"') {
        const auto close = line.find('"', i + 1);
        item = line.substr(i + 1, (close == std::string::npos ? line.size() : close) - i - 1);
        i = close == std::string::npos ? line.size() : close + 1;
        const auto comma = line.find(',', i);
        i = comma == std::string::npos ? line.size() + 1 : comma + 1;
      } else {
        const auto comma = line.find(',', i);
        item = line.substr(i, (comma == std::string::npos ? line.size() : comma) - i);
        i = comma == std::string::npos ? line.size() + 1 : comma + 1;
        while (!item.empty() && (item.back() == ' ' || item.back() == '\t')) item.pop_back();
      }
      items.push_back(item);
    } while (i <= line.size());
  }
  return items;
}

bool ParseState(const std::string& item) {
  const std::string s = ToLower(Trim(item));
  if (s == "true" || s == "#true#") return true;
  if (s.empty() || s == "false" || s == "#false#") return false;
  return std::atoi(s.c_str()) != 0;
}

}  // namespace

bool LoadList(const std::string& path, PluginTypeList& list, bool withState) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  list.clear();
  const std::vector<std::string> items = ReadItems(in);
  const size_t step = withState ? 2 : 1;
  for (size_t i = 0; i < items.size(); i += step) {
    PluginTypeRow row;
    row.text = items[i];
    if (withState && i + 1 < items.size()) row.checked = ParseState(items[i + 1]);
    list.push_back(row);
  }
  return true;
}

bool SaveList(const std::string& path, const PluginTypeList& list, bool withState) {
  std::ostringstream text;
  for (const PluginTypeRow& row : list) {
    text << row.text << "\r\n";
    if (withState) text << (row.checked ? "True" : "False") << "\r\n";
  }
  return WriteWholeFile(path, text.str());  // the old file stays unless the new one is complete
}

std::string PluginTypeRowText(const std::string& name, const std::string& extension,
                              const std::string& digit) {
  return name + " (" + extension + "|" + digit + ")";
}

bool SplitPluginTypeRow(const std::string& row, std::string& name, std::string& extension,
                        std::string& digit) {
  const auto open = row.find('(');
  const auto bar = row.find('|');
  if (open == std::string::npos || bar == std::string::npos || bar < open) return false;
  name = row.substr(0, open);
  while (!name.empty() && name.back() == ' ') name.pop_back();
  extension = row.substr(open + 1, bar - open - 1);
  digit = row.substr(bar + 1, 1);
  return true;
}

std::string CheckPluginTypeInput(const std::string& name, std::string& extension) {
  if (name.empty()) return "Please enter the Plugin Name!";
  if (extension.empty()) return "Please enter the File Extension e.g. 8bf ";
  std::string cleaned;
  for (char c : extension) {
    if (c != '.' && c != '*') cleaned += c;
  }
  extension = cleaned;
  return {};
}

void AddPluginType(PluginTypeList& list, const std::string& name, const std::string& extension,
                   const std::string& digit) {
  list.push_back({PluginTypeRowText(name, extension, digit), true});
}

bool EditPluginType(PluginTypeList& list, size_t index, const std::string& name,
                    const std::string& extension, const std::string& digit) {
  if (index >= list.size()) return false;
  list[index].text = PluginTypeRowText(name, extension, digit);
  return true;
}

bool RemovePluginType(PluginTypeList& list, size_t index) {
  if (index >= list.size()) return false;
  list.erase(list.begin() + static_cast<std::ptrdiff_t>(index));
  return true;
}

void ResetPluginTypes(PluginTypeList& list) {
  for (const std::string& def : DefaultPluginTypeRows()) {
    const std::string lowerDef = ToLower(def);
    bool twin = false;
    for (const PluginTypeRow& row : list) {
      const std::string start = ToLower(row.text.substr(0, row.text.find('|')));
      if (lowerDef.compare(0, start.size(), start) == 0 && start.size() <= lowerDef.size()) {
        twin = true;
        break;
      }
    }
    if (!twin) list.push_back({def, false});
  }
}

void TogglePluginTypes(PluginTypeList& list) {
  if (list.empty()) return;
  const bool state = !list.front().checked;
  for (PluginTypeRow& row : list) row.checked = state;
}

PluginTypeList InitialPluginTypeList(
    const std::string& programFolder,
    const std::function<std::string(const std::string&)>& legacySetting) {
  PluginTypeList list;
  if (legacySetting && !legacySetting("PluginType0").empty()) {
    for (int i = 0; i <= 200; ++i) {
      const std::string row = legacySetting("PluginType" + std::to_string(i));
      if (row.empty()) break;
      list.push_back({row, false});
    }
  } else {
    ResetPluginTypes(list);
  }
  if (!LoadList(WithTrailingSeparator(programFolder) + "PlugTypes.ini", list, true)) {
    ResetPluginTypes(list);
    for (PluginTypeRow& row : list) row.checked = true;
  }
  return list;
}

}  // namespace trel
