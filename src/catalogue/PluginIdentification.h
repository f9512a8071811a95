// Finding the category and title a host would show for a plugin file, without
// loading it: by walking the resource section of a Windows plugin, by searching
// a Premiere plugin for known signatures, by the type table, or by a version
// string. The readers only read; they show no message and report failure as
// false, and every offset taken from a file is checked before it is used.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "catalogue/FileWindow.h"
#include "catalogue/PluginTypes.h"
#include "filter/FilterEnv.h"

namespace trel {

struct ProbeElement {
  std::string category;
  std::string title;
  // Where the category text stands in the file (1-based), or a signature value
  // that the scanner tells Filter Factory plugins by.
  int32_t categoryOffset = 0;
  int32_t maximumLength = 0;  // room for the category in the file; 0 if unknown
};

// What ReadCom8bf found: one element per filter inside the file, indexed from 1.
struct ResourceProbe {
  std::vector<ProbeElement> elements;
  int Count() const { return static_cast<int>(elements.size()); }
  ProbeElement& operator[](int k) { return elements.at(static_cast<size_t>(k - 1)); }
  const ProbeElement& operator[](int k) const { return elements.at(static_cast<size_t>(k - 1)); }
};

// Photoshop-style plugins (PiPL, or the older PIMI and _8BFM resources), and the
// Macintosh Filter Factory form by way of Read8bf. True if the first element
// has both a category and a title.
// `facts`, when given, gets the file's size and time as found on opening it.
bool ReadCom8bf(const std::string& path, ResourceProbe& probe, const FilterEnv& env,
                FileFacts* facts = nullptr);

// Premiere plugins searched in chunks for "8BIM" name and category properties
// and the signatures of video, audio and transition filters. category and title
// must come in empty. True if both are non-empty afterwards.
bool ReadComprm(const std::string& path, std::string& category, std::string& title,
                int32_t& categoryOffset, int32_t& maximumLength);

// A file of the type table: category "[type name]" or "[Other Plugins]", title
// from the version resource or the file name. True if both are non-empty.
bool ReadOther8b(const std::string& path, const PluginTypeTable& table, std::string& category,
                 std::string& title);

// The value(s) of a version string: mode 0 "FileDescription", 1 "InternalName",
// 2 "ProductName"; any other mode gives an empty string. Every occurrence of the
// key in the file adds its value.
std::string ReadVersionRessource(const std::string& path, int mode);

}  // namespace trel
