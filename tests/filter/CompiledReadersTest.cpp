#include "filter/CompiledReaders.h"

#include <random>

#include "FilterKit.h"
#include "base/Paths.h"

namespace trel {
namespace {

using namespace test;

// A synthetic plugin image with 1-based placement, as the format describes it.
struct Image {
  std::string bytes;
  explicit Image(int64_t size, char fill = '\0') : bytes(static_cast<size_t>(size), fill) {}
  Image& Put(int64_t position, const std::string& text) {
    bytes.replace(static_cast<size_t>(position - 1), text.size(), text);
    return *this;
  }
  Image& Text(int64_t position, const std::string& text) { return Put(position, text + '\0'); }
  Image& Byte(int64_t position, int value) { return Put(position, std::string(1, static_cast<char>(value))); }
};

// The 57344-byte form with its marker, title and category.
Image Plugin(const std::string& category = "Cat") {
  return Image(57344).Text(28209, "Filter Factory").Text(31012, "T").Text(31064, category);
}

class CompiledReaders : public FilterTest {
 protected:
  bool Read8(const Image& img, const std::string& name = "p.8bf", bool headerOnly = false) {
    dir.Write(name, img.bytes);
    return Read8bf(f, dir.path(), name, headerOnly, false, env);
  }
  bool ReadPrm(const Image& img, bool headerOnly = false) {
    dir.Write("p.prm", img.bytes);
    return Readprm(f, dir.path(), "p.prm", headerOnly, false, env);
  }
  bool ReadTf(const Image& img) {
    dir.Write("t.prm", img.bytes);
    return ReadTF(f, dir.path(), "t.prm", false, env);
  }
};

// Every listed size takes title, category and the block from its own places.
TEST_F(CompiledReaders, EachWindowsSizeReadsFromItsPlaces) {
  struct Row {
    int64_t size;
    int shift;
    int64_t marker, title, category;
  };
  const Row rows[] = {{49152, -7168, 21025, 23844, 23896}, {49664, -4668, 21025, 34928, 34980},
                      {50176, -7168, 21025, 23844, 23896}, {53760, -576, 27697, 30352, 30404},
                      {57344, 0, 28209, 31012, 31064}};
  for (const Row& r : rows) {
    SCOPED_TRACE(r.size);
    Image img(r.size);
    img.Text(r.marker, "Filter Factory").Text(r.title, "Title").Text(r.category, "Cat");
    img.Text(r.shift + 31869, "Copy").Text(r.shift + 32125, "Auth").Text(r.shift + 35453, "r+1");
    img.Byte(r.shift + 31325, 1).Text(r.shift + 33405, "Ctl");
    ASSERT_TRUE(Read8(img));
    EXPECT_EQ(Texts(f) + " " + f.codeR + " " + f.ctlName[1], "Cat|Title|Auth|Copy r+1 Ctl");
  }
}

TEST_F(CompiledReaders, MarkerDecidesAndTheBlankVariantMovesTheFields) {
  EXPECT_TRUE(Read8(Plugin().Text(28209, "Filter-Factory")));
  EXPECT_FALSE(Read8(Plugin().Text(28209, "Filter Factorz")));
  EXPECT_FALSE(Read8(Plugin().Text(28209, "Filter Factory ")));
  for (const char* category : {"", "X", " X "}) {  // too short: Photoshop
    ASSERT_TRUE(Read8(Plugin(category)));
    EXPECT_EQ(f.category, "Photoshop") << '"' << category << '"';
  }
  // The same size, two markers, two sets of places: category before title.
  Image small(49152);
  small.Text(23844, "Normal").Text(23896, "NormalCat").Text(26517, "Variant").Text(26261, "VariantCat");
  small.Text(-7168 + 31869, "copy at -7168").Text(-5096 + 31869, "copy at -5096");
  ASSERT_TRUE(Read8(Image(small).Text(21025, "Filter Factory")));
  EXPECT_EQ(f.title + "|" + f.copyright, "Normal|copy at -7168");
  ASSERT_TRUE(Read8(Image(small).Text(21025, " FilterFactory")));
  EXPECT_EQ(f.category + "|" + f.title + "|" + f.copyright, "VariantCat|Variant|copy at -5096");
}

TEST_F(CompiledReaders, FlagsDecideNamesButValuesAreAlwaysRead) {
  Image img = Plugin();
  img.Byte(31309, 1).Text(32381, "Map 1");  // map 1 used
  img.Byte(31325, 1).Text(33405, "Ctl 1");  // and its pair too: both kept
  img.Byte(31329, 1).Text(33661, "Ctl 2");
  img.Byte(31333, 2).Text(33917, "Ctl 3");  // a flag other than 1
  img.Text(33405 + 256 * 3, "Ctl 4");       // a name without flag
  for (int i = 0; i < 8; ++i) img.Byte(31261 + 4 * i, 10 * (i + 1));
  img.Text(31869, "Copy").Text(35453, "r");
  ASSERT_TRUE(Read8(img));
  EXPECT_EQ(Maps(f) + " " + Controls(f) + " " + Values(f), "Map 1||| Ctl 1|Ctl 2|||||| 10|20|30|40|50|60|70|80");
  // Header only stops behind title and category.
  ASSERT_TRUE(Read8(img, "p.8bf", true));
  EXPECT_EQ(f.title + "|" + f.copyright + "|" + f.codeR, "T||");
  EXPECT_EQ(f.ctlValue[1], 0);
}

TEST_F(CompiledReaders, MacintoshFormCutsPascalStringsToTheirLength) {
  Image img(99712);
  img.Text(59018, "Factory");
  img.Byte(49853, 5).Text(49854, "Title and more");  // the length byte wins
  img.Byte(50125, 3).Text(50126, "Category");
  img.Byte(51177, 4).Text(51178, "Copy");
  img.Byte(50620, 1).Byte(51689, 3).Text(51690, "Map");
  img.Byte(50636 + 4, 1).Byte(52713 + 256, 2).Text(52714 + 256, "C2");
  img.Byte(50572 + 4 * 7, 200).Text(19308 + 38525, "a*2");
  ASSERT_TRUE(Read8(img, "m.bin"));
  EXPECT_EQ(Texts(f) + " " + f.mapName[1] + " " + f.ctlName[2] + " " + f.codeA, "Cat|Title||Copy Map C2 a*2");
  EXPECT_EQ(f.ctlValue[8], 200);
  EXPECT_FALSE(Read8(Image(99840).Text(59018, "Factory-ish"), "m.bin"));
  EXPECT_FALSE(Read8(Image(99713).Text(59018, "Factory"), "m.bin"));  // a Mac Binary file of another size
}

TEST_F(CompiledReaders, MissingFilesOtherSizesAndGarbageAreNoFilters) {
  // Each generated Premiere template is only what it is.
  EXPECT_FALSE(Readprm(f, TREL_TEMPLATE_DIR, "fx-fact.prm", true, false, env));
  EXPECT_FALSE(ReadTF(f, TREL_TEMPLATE_DIR, "fl-fact.prm", true, env));
  EXPECT_FALSE(Read8bf(f, dir.path(), "gone.8bf", false, false, env));
  EXPECT_FALSE(Readprm(f, dir.path(), "gone.prm", false, false, env));
  EXPECT_FALSE(ReadTF(f, dir.path(), "gone.prm", false, env));
  EXPECT_EQ(shell.refreshes, 3);
  EXPECT_EQ(f.filename, "gone.prm");
  EXPECT_FALSE(Read8(Image(57345).Text(28209, "Filter Factory")));
  EXPECT_FALSE(Read8(Image(0)));
  EXPECT_EQ(shell.refreshes, 3);
  EXPECT_TRUE(shell.boxes.empty());
  // Random bytes of every listed size, and a right marker over junk that has no
  // 0 byte anywhere, so every field runs to the end of the file.
  std::mt19937 random(42);
  for (int64_t size : {49152, 49664, 50176, 53760, 57344, 99712, 99840}) {
    Image img(size);
    for (char& c : img.bytes) c = static_cast<char>(random() % 255 + 1);
    EXPECT_FALSE(Read8(img)) << size;
  }
  Image junk(57344, 'x');
  junk.Text(28209, "Filter Factory");
  junk.bytes.back() = 'x';
  ASSERT_TRUE(Read8(junk));
  EXPECT_EQ(f.codeA.size(), 57344u - 38525 + 1);
  for (int64_t size : {50176, 50688, 53248}) {
    Image img(size, '\xCA');  // probe value 202, no second probe letter
    EXPECT_TRUE(ReadPrm(img)) << size;
    EXPECT_FALSE(ReadTf(img));
  }
}

TEST_F(CompiledReaders, PremiereProbesGiveTheShift) {
  struct Probe {
    int first;
    int64_t secondAt;
    int second, shift;
  };
  const Probe probes[] = {{'D', 28877, 'v', -4}, {'D', 28877, 'r', -8},   {'D', 28877, 'x', 0}, {'e', 0, 0, 504},
                          {202, 32031, 'r', 3064}, {202, 32031, 'c', 3072}, {'5', 0, 0, 0}};
  for (const Probe& p : probes) {
    SCOPED_TRACE(p.shift);
    Image img(53248);
    img.Byte(29021, p.first);
    if (p.secondAt) img.Byte(p.secondAt, p.second);
    img.Text(p.shift == -4 ? 29099 : p.shift + 29107, "Cat: Title");
    img.Text(p.shift + 29725, "Copy").Text(p.shift + 33565, "b").Text(p.shift + 36637, "a");
    img.Byte(p.shift + 29421 + 4, 1).Text(p.shift + 30493 + 256, "Map 2");
    img.Byte(p.shift + 29437 + 28, 1).Text(p.shift + 31517 + 256 * 7, "Ctl 8");
    img.Byte(p.shift + 29373 + 28, 99);
    ASSERT_TRUE(ReadPrm(img));
    EXPECT_EQ(Texts(f) + " " + f.codeB + f.codeA + " " + f.mapName[2] + " " + f.ctlName[8],
              "Cat|Title||Copy ba Map 2 Ctl 8");
    EXPECT_EQ(f.ctlValue[8], 99);
    EXPECT_FALSE(f.isPhotoshop);
  }
  EXPECT_FALSE(ReadPrm(Image(53248).Byte(29021, 'x')));
  EXPECT_FALSE(ReadPrm(Image(51200).Byte(29021, '5')));
}

TEST_F(CompiledReaders, PremiereTitleSplitsAtTheFirstColonAndDropsOneCharacter) {
  const std::pair<const char*, const char*> cases[] = {
      {"Cat: Title", "Cat|Title"}, {"Cat:Title", "Cat|itle"},        {"A: b:c", "A|b:c"},
      {"Plain", "[Premiere FF]|Plain"}, {": Only", "[Premiere FF]|Only"}, {"Cat:", nullptr}, {"Cat:x", "Cat|"}};
  for (auto [field, read] : cases) {
    SCOPED_TRACE(field);
    ASSERT_EQ(ReadPrm(Image(50688).Byte(29021, '5').Text(29107, field), true), read != nullptr);
    if (read) {
      EXPECT_EQ(f.category + "|" + f.title, read);
    }
  }
}

TEST_F(CompiledReaders, TransitionProbesMarkersAndShiftGrowth) {
  struct Probe {
    int first, second, shift, later;
    int64_t marker;  // 0: none
  };
  const Probe probes[] = {{'n', 'P', 9904, 9912, 22033}, {'n', 139, 520, 524, 0}, {'n', 'x', 0, 0, 21521},
                          {'o', 0, 3076, 3076, 25105}, {'2', 0, 0, 0, 21521}};
  for (const Probe& p : probes) {
    SCOPED_TRACE(p.shift);
    Image img(60000);
    img.Byte(29081, p.first);
    if (p.second) img.Byte(22033, p.second);
    if (p.marker) img.Text(p.marker, "Premiere Transition Factory");
    img.Text(p.shift + 29171, "Title").Text(p.shift + 29427, "Second");
    img.Text(p.later + 30057, "Copy").Text(p.later + 36969, "a").Byte(p.later + 29705, 5);
    img.Byte(p.later + 29769, 1).Text(p.later + 31849, "Ctl 1");
    ASSERT_TRUE(ReadTf(img));
    EXPECT_EQ(Texts(f) + " " + f.transitionName + " " + f.codeA + " " + f.ctlName[1],
              "[Premiere TF]|Title||Copy Second a Ctl 1");
    EXPECT_EQ(f.ctlValue[1], 5);
    if (p.marker) {
      EXPECT_FALSE(ReadTf(Image(img).Put(p.marker + 9, "X")));  // "Premiere Xransition Factory"
    }
  }
  EXPECT_FALSE(ReadTf(Image(60000).Byte(29081, 'x')));
  EXPECT_FALSE(ReadTf(Image(100)));  // too short for any probe
}

}  // namespace
}  // namespace trel
