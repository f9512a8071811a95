// The rules of the file lists that do not need a window: item kinds by icon
// number, the mask entries and their patterns, size texts, the selection total
// and the route a double click takes by a file's name.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "base/NameMatch.h"

namespace trel {

// The icon number of an item is also its kind; Parts that tell a file from a
// folder test "above 2".
enum LvIcon : int {
  kIconFolder = 1,
  kIconParent = 2,
  kIconFile = 3,
  kIcon8bf = 4,
  kIconPrm = 5,
  kIconAex = 6,
  kIconFfl = 7,
  kIconZip = 8,
  kIconPaint = 9,  // brushes, tubes, patterns and the like of paint programs
  kIconImage = 11,
};
inline bool IsFileIcon(int icon) { return icon > kIconParent; }

// The icon of a file by the last four characters of its name.
int IconOfFile(const std::string& name);

// The six entries of the mask box, in their fixed order.
inline constexpr int kMaskEntryCount = 6;
extern const std::array<const char*, kMaskEntryCount> kMaskEntries;
// The pattern of an entry; entry 3 is the pattern of the defined plugin types,
// which the caller passes.
std::string MaskPattern(int entry, const std::string& pluginTypePattern);

// A length as the list shows it ("#,###,###"): grouped by thousands, and a
// length of 0 shows nothing at all.
std::string FormatSize(int64_t length);

// The selection size in whole kilobytes, rounded after every addition, so many
// small files may count for nothing; the caption shows it with " K".
int64_t AddKilobytes(int64_t totalK, int64_t length);

// Where a double click on a file leads, first hit wins.
enum class DblClickRoute {
  PicView,            // .bmp, .jpg: the Picture Editor
  ConvertFFL,         // .ffl: the conversion dialog
  FFEditor,           // plugins and filter sources
  TxtSource,          // .txt: the editor if it reads as a filter source, else on
  PluginInformation,  // a row of the defined plugin types
  Shell,              // anything else: the desktop opens it
};
// `pluginTypeExtensions` are the extensions of the active plugin type rows,
// without their dot. Used also for what follows a .txt that isn't a filter.
DblClickRoute RouteOfFile(const std::string& name, const std::vector<std::string>& pluginTypeExtensions,
                          bool skipTxt = false);
const char* RouteName(DblClickRoute route);

// The caption of the main window: "Trellium 1.05".
std::string ProgramTitle(int major, int minor);

// The message of a first run.
std::string WelcomeText();

// A stored window position is used only if it lies on the screen.
bool PositionOnScreen(int x, int y, int screenWidth, int screenHeight);

}  // namespace trel
