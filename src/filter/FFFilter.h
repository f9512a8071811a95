// The one in-memory record of a Filter Factory filter. Every reader fills it,
// the code rewriters change its code strings, every writer turns it into a file.
// Strings hold single-byte text: one character is one byte of the file.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "filter/OneBased.h"

namespace trel {

struct FFFilter {
  std::string filename;   // file name with extension, no folder; target name of writers
  std::string category;   // submenu of the filter
  std::string title;      // menu entry of the filter
  std::string copyright;
  std::string author;
  OneBased<std::string, 4> mapName;  // map i stands in for the control pair 2i-1, 2i
  OneBased<std::string, 8> ctlName;  // a control or map exists iff its name is not empty
  OneBased<uint8_t, 8> ctlValue;
  std::string codeR, codeG, codeB, codeA;
  bool isPhotoshop = true;     // dialect of the code: Photoshop FF (true) or Premiere FF
  std::string transitionName;  // second name of a Premiere transition; only ReadTF fills it
  // presets[control 0..7][memory spot 0..9]; only the TXT format and the editor use it.
  std::array<std::array<int16_t, 10>, 8> presets{};

  bool operator==(const FFFilter&) const = default;
};

// Clears the fields every reader starts from. isPhotoshop, transitionName and
// presets are left alone on purpose: readers that don't set them keep the
// previous filter's values.
void IniVars(FFFilter& f);

}  // namespace trel
