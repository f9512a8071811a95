// Skins of the Filter Factory Editor: the .des text format, read item by item
// with its own reading rules, and the interface folder beside the program.
// Standard library only, so the reader can be tested and reused without a
// window; the outline is built from the result elsewhere (SkinRegion.h).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace trel {

// Reads a .des text the way the format is read: items end at a comma or a line
// end, blanks before an item are skipped, an item in double quotes may hold
// commas (whatever follows the closing quote up to the separator is dropped).
class DesItemReader {
 public:
  explicit DesItemReader(std::string text) : text_(std::move(text)) {}
  // True when nothing but blanks and line ends remains.
  bool AtEnd() const;
  // The next item; nullopt when the text is used up.
  std::optional<std::string> Next();

 private:
  std::string text_;
  size_t pos_ = 0;
};

// The longest numeric prefix of an item (blanks first, sign, digits, a
// fraction, an exponent), 0 if there is none, rounded half to even into a
// signed 16-bit number; values outside that range stop at its ends.
int16_t DesNumber(const std::string& item);

// Windows' region combine modes, by the numbers the skin words select.
enum class CombineMode : int { None = 0, And = 1, Or = 2, Xor = 3, Diff = 4, Copy = 5 };
// "RGN_AND" .. "RGN_COPY", case-sensitive; None for any other word.
CombineMode CombineWord(const std::string& word);

enum class ShapeKind { Unknown, Rect, Ellipse, RoundRect };
ShapeKind ShapeWord(const std::string& word);

struct DesShape {
  ShapeKind kind = ShapeKind::Unknown;
  int16_t x1 = 0, y1 = 0, x2 = 0, y2 = 0, x3 = 0, y3 = 0;
};

// A shape and the combine word that follows it. The first group carries the
// first two shapes; `combine` of the second shape is the first combine word.
struct DesGroup {
  DesShape shape;
  std::optional<CombineMode> combine;  // nullopt: the file ended before the word
};

struct DesBox {
  int16_t left = 0, top = 0, right = 0, bottom = 0;
};

// Everything a skin file says, as far as it was read.
struct DesSkin {
  std::string displayName;
  std::string picture;  // relative to the interface folder
  int16_t shapeCount = 0;
  int16_t width = 0;
  int16_t height = 0;
  bool sizeRead = false;          // width and height were both present
  std::vector<DesGroup> shapes;   // shape 1, shape 2, then the further groups
  // Slider look: picture sliders with the tile set of the word's last character.
  bool graphSliders = false;
  int tileSet = 0;
  // The mail link: absent when the file ended before the slider word's follower;
  // `mailSeen` false with `mailItemRead` true keeps the window's own link.
  bool mailItemRead = false;
  bool mailSeen = false;
  DesBox mailBox;
  std::string mailAddress;
  std::string mailToolTip;
  // The code window rectangle: nullopt at end of file (the default place).
  bool codeItemRead = false;
  bool codeSeen = false;
  DesBox codeBox;
};

// Reads a whole skin text; never fails, a short or damaged text gives what was
// reached. Further groups stop at the end of the text whatever the count says.
DesSkin ParseDes(const std::string& text);
// Reads a skin file; a missing file gives an empty skin and false.
bool ReadDesFile(const std::string& path, DesSkin& skin);

// The interface folder and its skins, as the preferences list them.
struct InterfaceListing {
  std::string folderName;            // "interface" or "interfac"; empty when neither holds a skin
  std::vector<std::string> entries;  // display name, " - ", file name; sorted by file name
};
// Looks for *.des in programFolder + "interface", then "interfac".
InterfaceListing LookforInterfaceFiles(const std::string& programFolder);
// The file name an entry of that list stands for: its last 12 characters.
std::string InterfaceFileOfEntry(const std::string& entry);
// The skin to read: folder/file when it exists, else the fallback
// "Interfc5.des" in the same folder (tried once, not checked further).
std::string ResolveInterfacePath(const std::string& programFolder, const std::string& folderName,
                                 std::string& interfaceFile);

inline constexpr const char* kDefaultInterfaceFile = "Interfc4.des";
inline constexpr const char* kFallbackInterfaceFile = "Interfc5.des";

}  // namespace trel
