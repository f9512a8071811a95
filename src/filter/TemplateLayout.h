// Where things stand in the template plugins that Trel generates and patches.
// The compiled-plugin readers, the plugin compiler and the template generator
// all take their positions from here, so a template always matches the code
// that reads and patches it. Positions are 1-based, like every binary format of
// the filter core; `shift` is a template's displacement of the parameter block.
#pragma once

#include <cstdint>
#include <string>

namespace trel::layout {

// File names in the program folder.
inline constexpr const char* kPhoto30 = "photo30.dll";
inline constexpr const char* kPhoto304 = "photo304.dll";
inline constexpr const char* kPhotoMac = "photomac.bin";
inline constexpr const char* kPremiereFF = "fl-fact.prm";
inline constexpr const char* kPremiereTF = "fx-fact.prm";
inline constexpr const char* kTempPlugin = "temp.dll";

inline constexpr int64_t kPhoto30Size = 57344;
inline constexpr int64_t kPhoto304Size = 49152;
inline constexpr int64_t kWideAboutSize = 49664;  // a template with the wide about text
inline constexpr int64_t kMacSize = 99712;
inline constexpr int64_t kPremiereFFSize = 50688;
inline constexpr int64_t kPremiereTFSize = 51200;

// Trel's own 64-bit template: the engine compiled for Windows in front, then a
// resource section laid out exactly as photo30.dll's, moved by the shift. The
// code has a fixed room, so the size and every position stay the same from
// build to build. It is a size of the readers' and the compiler's tables.
inline constexpr const char* kPhoto64 = "photo64.dll";
inline constexpr int64_t kPhoto64CodeRoom = 0x80000;  // the resource section starts here
inline constexpr int64_t kPhoto64Size = kPhoto64CodeRoom + 32768;
inline constexpr int kShift64 = int(kPhoto64CodeRoom) - 0x6000;
inline constexpr int64_t kMarker64 = 28209 + kShift64;

inline constexpr int kShift30 = 0;
inline constexpr int kShift304 = -7168;
inline constexpr int kShiftWideAbout = -4668;
inline constexpr int kShiftMac = 19308;

// The parameter block of a Windows plugin, at shift + base. It is the data of
// the `PARM` resource, which begins with a 32-bit size four bytes earlier.
inline constexpr int64_t kParmStart = 31253;
inline constexpr int64_t kParmSize = 8296;
inline constexpr int64_t kStandAlone = 31257;
inline constexpr int64_t kCtlValues = 31261;
inline constexpr int64_t kUnusedBlock = 31293;  // 16 bytes no reader looks at
inline constexpr int64_t kMapFlags = 31309;
inline constexpr int64_t kCtlFlags = 31325;
inline constexpr int64_t kBlockCategory = 31357;
inline constexpr int64_t kBlockTitle = 31613;
inline constexpr int64_t kCopyright = 31869;
inline constexpr int64_t kAuthor = 32125;
inline constexpr int64_t kMapNames = 32381;
inline constexpr int64_t kCtlNames = 33405;
inline constexpr int64_t kCodeR = 35453;
inline constexpr int64_t kCodeG = 36477;
inline constexpr int64_t kCodeB = 37501;
inline constexpr int64_t kCodeA = 38525;
inline constexpr int64_t kCodeFieldSize = 1024;

// The menu data of the PiPL: Pascal strings, length byte first.
inline constexpr int64_t kTitleLength = 31011;
inline constexpr int64_t kCategoryLength = 31063;
inline constexpr int64_t kMenuFieldSize = 36;  // data length of `name` and `catg`
inline constexpr int64_t kAllModes = 31155;    // the `mode` property's flag word

// The marker that identifies a Filter Factory plugin, per template.
inline constexpr int64_t kMarker30 = 28209;
inline constexpr int64_t kMarker304 = 21025;
inline constexpr const char* kMarkerText = "Filter Factory";

// Templates of shift -4668 keep title and category at fixed places, the
// "All Modes" word elsewhere and a wide about text.
inline constexpr int64_t kWideTitleLength = 34927;
inline constexpr int64_t kWideCategoryLength = 34979;
inline constexpr int64_t kWideAllModes = 35071;
inline constexpr int64_t kWideAboutText = 42335;

// The dialog layout of our Windows templates (resource `LAYOUT`), at
// shift + kDialogLayout. "Big Preview" and "Mega Preview" replace it.
inline constexpr int64_t kDialogLayout = 43809;
inline constexpr int64_t kDialogLayoutSize = 64;

// The Macintosh form, a Mac Binary file. Its PiPL and parameter block are
// big-endian, so a flag or value is the last byte of its 4-byte slot.
inline constexpr int64_t kMacNameLength = 2;  // file name inside the wrapper
inline constexpr int64_t kMacNameRoom = 63;
inline constexpr int64_t kMacTitleLength = 49853;
inline constexpr int64_t kMacCategoryLength = 50125;
inline constexpr int64_t kMacBlockCategory = 50665;
inline constexpr int64_t kMacBlockTitle = 50921;
inline constexpr int64_t kMacCopyright = 51177;
inline constexpr int64_t kMacAuthor = 51433;
inline constexpr int64_t kMacMapNames = 51689;
inline constexpr int64_t kMacCtlNames = 52713;
inline constexpr int64_t kMacCtlValues = 50572;
inline constexpr int64_t kMacMapFlags = 50620;
inline constexpr int64_t kMacCtlFlags = 50636;
inline constexpr int64_t kMacMarker = 59018;  // "Factory"; the reader puts "Filter " in front
inline constexpr int64_t kMacMenuFieldSize = 256;

// Premiere Filter Factory template (probe byte '5': shift 0).
inline constexpr int64_t kPrmProbe = 29021;
inline constexpr int64_t kPrmTitle = 29107;  // "category: title" or the title alone
inline constexpr int64_t kPrmParmStart = 29365;
inline constexpr int64_t kPrmCtlValues = 29373;
inline constexpr int64_t kPrmMapFlags = 29421;
inline constexpr int64_t kPrmCtlFlags = 29437;
inline constexpr int64_t kPrmCopyright = 29725;
inline constexpr int64_t kPrmMapNames = 30493;
inline constexpr int64_t kPrmCtlNames = 31517;
inline constexpr int64_t kPrmCodeB = 33565;
inline constexpr int64_t kPrmCodeG = 34589;
inline constexpr int64_t kPrmCodeR = 35613;
inline constexpr int64_t kPrmCodeA = 36637;
inline constexpr int64_t kPrmTitleField = 256;

// Premiere Transition Factory template (probe byte '2': shift 0).
inline constexpr int64_t kTfProbe = 29081;
inline constexpr int64_t kTfMarker = 21521;
inline constexpr const char* kTfMarkerText = "Premiere Transition Factory";
inline constexpr int64_t kTfTitle = 29171;
inline constexpr int64_t kTfTransitionName = 29427;
inline constexpr int64_t kTfParmStart = 29697;
inline constexpr int64_t kTfCtlValues = 29705;
inline constexpr int64_t kTfMapFlags = 29753;
inline constexpr int64_t kTfCtlFlags = 29769;
inline constexpr int64_t kTfCopyright = 30057;
inline constexpr int64_t kTfMapNames = 30825;
inline constexpr int64_t kTfCtlNames = 31849;
inline constexpr int64_t kTfCodeB = 33897;
inline constexpr int64_t kTfCodeG = 34921;
inline constexpr int64_t kTfCodeR = 35945;
inline constexpr int64_t kTfCodeA = 36969;

// The `name` property of a Premiere template's PiPL: 16 bytes of property
// header, then a Pascal string of at most kMenuFieldSize - 1 characters. Hosts
// show it; our readers take the title from the fields above.
inline constexpr int64_t kPrmNameProperty = 29039;
inline constexpr int64_t kTfNameProperty = 29103;

// The dialog layout block. The plugin's own dialog code sizes itself from it,
// so the preview options only swap this block. Little-endian, 64 bytes:
//   0 "TRDL", 4 u16 version (1), 6 u16 flags, 8 u16 dialog width, 10 height,
//   12 u16 preview left, 14 top, 16 width, 18 height,
//   20 u16 slider column left, 22 top, 24 width, 26 row height, rest zero.
enum class DialogSize { Normal, Big, Mega };
inline constexpr uint16_t kLayoutOkDisabled = 1;  // flags: the OK button is dead
inline constexpr uint16_t kLayoutDemo = 2;        // flags: the caption says it is a demo
inline constexpr int64_t kLayoutFlags = 6;        // offset of the flags word in the block
std::string DialogLayoutBlock(DialogSize size);

}  // namespace trel::layout
