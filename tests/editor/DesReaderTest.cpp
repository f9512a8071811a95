// The skin format's reading rules, damaged skins, the interface folder and
// the outline built from the shapes.
#include <gtest/gtest.h>

#include <filesystem>
#include <tuple>

#include "support/TempDir.h"
#include "editor/DesReader.h"
#include "editor/SkinRegion.h"

namespace trel {
namespace {

std::vector<std::string> Items(const std::string& text) {
  DesItemReader in(text);
  std::vector<std::string> out;
  while (auto item = in.Next()) out.push_back(*item);
  return out;
}

TEST(DesItems, SeparatorsQuotesAndBlanks) {
  struct Case {
    std::string text;
    std::vector<std::string> items;
  } cases[] = {
      {"a,b\r\nc\nd", {"a", "b", "c", "d"}},
      {"   lead,\tx", {"lead", "x"}},
      {"\"one, two\",three", {"one, two", "three"}},
      {"\"quoted\" tail,next", {"quoted", "next"}},
      {"a,,b", {"a", "", "b"}},
      {"a\r\n\r\n\r\nb", {"a", "b"}},
      {"\"open to the end, still", {"open to the end, still"}},
      {"", {}},
      {"Rect \r\n", {"Rect "}},
  };
  for (const auto& c : cases) EXPECT_EQ(Items(c.text), c.items) << c.text;
}

TEST(DesItems, AtEndIgnoresTrailingLineEnds) {
  DesItemReader in("x\r\n \r\n");
  EXPECT_FALSE(in.AtEnd());
  EXPECT_TRUE((in.Next(), in.AtEnd()));
}

TEST(DesNumbers, LongestPrefixRoundedInto16Bits) {
  const std::pair<const char*, int> cases[] = {
      {"640", 640}, {"  -12px", -12}, {"abc", 0}, {"", 0},       {"2.5", 2},         {"3.5", 4},
      {"-2.5", -2}, {"1e2", 100},     {"1e", 1},  {"99999", 32767}, {"-99999", -32768}, {"+7", 7},
      {".5", 0},    {"12 34", 12},    {"0x10", 0}};
  for (const auto& [item, value] : cases) EXPECT_EQ(DesNumber(item), value) << item;
}

TEST(DesWords, KeywordsAreCaseSensitive) {
  EXPECT_EQ(std::make_pair(CombineWord("RGN_DIFF"), CombineWord("rgn_diff")),
            std::make_pair(CombineMode::Diff, CombineMode::None));
  EXPECT_EQ(std::make_pair(ShapeWord("RoundRect"), ShapeWord("rect")),
            std::make_pair(ShapeKind::RoundRect, ShapeKind::Unknown));
}

std::string Skin(const std::string& tail, int count = 2) {
  return "\"My skin\"\npic.png\n" + std::to_string(count) +
         "\n100\n80\nRect,0,0,100,80,0,0\nEllipse,10,10,50,50,0,0\nRGN_OR\n" + tail;
}

TEST(DesParse, FullFileWithEveryBlock) {
  const DesSkin s = ParseDes(Skin("RoundRect,0,0,20,20,4,4,RGN_DIFF\nGraphSlider2\nMailto,1,2,30,12,me@x.org,\"Hi, you\"\n"
                                  "CodeWindows,5,6,95,75\n",
                                  3));
  EXPECT_EQ(std::tie(s.displayName, s.picture, s.width, s.height), std::make_tuple(std::string("My skin"), std::string("pic.png"), 100, 80));
  ASSERT_EQ(s.shapes.size(), 3u);
  EXPECT_EQ(std::make_pair(s.shapes[2].shape.kind, s.shapes[2].combine.value_or(CombineMode::None)),
            std::make_pair(ShapeKind::RoundRect, CombineMode::Diff));
  EXPECT_TRUE(s.graphSliders && s.mailSeen && s.codeSeen);
  EXPECT_EQ(s.tileSet, 2);
  EXPECT_EQ(s.mailAddress + "|" + s.mailToolTip, "me@x.org|Hi, you");
  EXPECT_EQ(std::tie(s.mailBox.right, s.codeBox.left, s.codeBox.bottom), std::make_tuple(30, 5, 75));
}

TEST(DesParse, CountsBelowThreeReadTwoShapesAndNoGroup) {
  for (int count : {0, 1, 2}) {
    const DesSkin s = ParseDes(Skin("GraphSlider0\n", count));
    EXPECT_EQ(s.shapes.size(), 2u) << count;
    EXPECT_TRUE(s.graphSliders) << count;  // the word after the first group is the slider word
  }
}

TEST(DesParse, SliderWordAndTrailingBlocks) {
  struct Case {
    const char* tail;
    bool sliders;
    int tileSet;
    bool mailRead, mailSeen, codeRead, codeSeen;
  } cases[] = {
      {"", false, 0, false, false, false, false},  // end right after the groups: defaults
      // a mail block where the slider word belongs is eaten as that word
      {"Mailto,1,2,30,12,me@x.org,tip\nCodeWindows,5,6,95,75\n", false, 0, true, false, true, false},
      {"GraphSlider\n", true, 0, false, false, false, false},  // "r" reads as 0
      {"GraphSlider1\n", true, 1, false, false, false, false},
      {"graphslider1\n", false, 0, false, false, false, false},
      {"Anything\n", false, 0, false, false, false, false},
  };
  for (const auto& c : cases) {
    const DesSkin s = ParseDes(Skin(c.tail));
    EXPECT_EQ(s.graphSliders, c.sliders) << c.tail;
    EXPECT_TRUE(!c.sliders || s.tileSet == c.tileSet) << c.tail;
    EXPECT_EQ(std::tie(s.mailItemRead, s.mailSeen, s.codeSeen), std::tie(c.mailRead, c.mailSeen, c.codeSeen))
        << c.tail;
    EXPECT_TRUE(c.codeRead || !s.codeItemRead) << c.tail;
  }
}

TEST(DesParse, DamagedSkinsNeverThrowAndKeepWhatWasReached) {
  const std::string damaged[] = {
      "",
      "name",
      "name,pic,2",
      "name,pic,32767,100,100,Rect,0,0,1,1,0,0,Rect,0,0,1,1,0,0,RGN_OR",  // huge count, no groups
      "name,pic,2,-50,-60,Rect,0,0,-5,-5,0,0,Ellipse,9,9,-9,-9,0,0,RGN_XOR",
      [] {
        const char bytes[] = "name,pic,3,10,10,Rect,0,0,\0\xff,5,0,0,Blob";
        return std::string(bytes, sizeof bytes - 1);
      }(),
      "name,pic,5,10,10,Rect,0,0,5,5,0,0,Rect",  // ends inside the second shape
  };
  for (const auto& text : damaged) (void)BuildSkinRegion(ParseDes(text));
  const DesSkin huge = ParseDes(damaged[3]);
  EXPECT_EQ(std::make_pair(huge.shapeCount, huge.shapes.size()), std::make_pair(int16_t{32767}, size_t{2}));
}

TEST(SkinRegion, ShapesAndCombineModes) {
  DesSkin s;
  s.width = 100;
  s.height = 80;
  DesGroup a{{ShapeKind::Rect, 0, 0, 60, 40, 0, 0}, std::nullopt};
  DesGroup b{{ShapeKind::Rect, 30, 20, 100, 80, 0, 0}, CombineMode::And};
  s.shapes = {a, b};
  const QRegion both(30, 20, 30, 20), first(0, 0, 60, 40), second(30, 20, 70, 60);
  // An unknown first word (None): the combine fails, the outline stays the whole window.
  const std::pair<CombineMode, QRegion> cases[] = {
      {CombineMode::And, both},         {CombineMode::Or, first.united(second)},
      {CombineMode::Diff, first - both}, {CombineMode::Xor, first.xored(second)},
      {CombineMode::Copy, first},       {CombineMode::None, QRegion(0, 0, 100, 80)}};
  for (const auto& [mode, expected] : cases) {
    s.shapes[1].combine = mode;
    EXPECT_EQ(BuildSkinRegion(s), expected) << int(mode);
  }
}

TEST(SkinRegion, FurtherShapesCombineWithAllBefore) {
  DesSkin s;
  s.width = 100;
  s.height = 100;
  s.shapes = {{{ShapeKind::Rect, 0, 0, 100, 100, 0, 0}, std::nullopt},
              {{ShapeKind::Rect, 0, 0, 100, 100, 0, 0}, CombineMode::And},
              {{ShapeKind::Ellipse, 0, 0, 20, 20, 0, 0}, CombineMode::Diff},
              {{ShapeKind::Unknown, 50, 50, 60, 60, 0, 0}, CombineMode::Diff}};
  const QRegion r = BuildSkinRegion(s);
  EXPECT_TRUE(!r.contains(QPoint(10, 10)) && r.contains(QPoint(50, 50)));  // the ellipse was cut out
  // The unknown kind made no region: the ellipse stood in for it and was united back.
  s.shapes[3].combine = CombineMode::Or;
  EXPECT_TRUE(BuildSkinRegion(s).contains(QPoint(10, 10)));
}

TEST(SkinRegion, RoundRectCornersAndEdges) {
  EXPECT_EQ(*ShapeRegion({ShapeKind::RoundRect, 0, 0, 40, 30, 0, 0}), QRegion(0, 0, 40, 30));
  EXPECT_EQ(*ShapeRegion({ShapeKind::Rect, 0, 0, 40, 30, 9, 9}), QRegion(0, 0, 40, 30));
  const QRegion round = *ShapeRegion({ShapeKind::RoundRect, 0, 0, 40, 30, 20, 20});
  EXPECT_TRUE(!round.contains(QPoint(0, 0)) && round.contains(QPoint(20, 15)));
  EXPECT_FALSE(ShapeRegion({ShapeKind::Unknown, 0, 0, 5, 5, 0, 0}).has_value());
  EXPECT_EQ(ShapeRegion({ShapeKind::Ellipse, 0, 0, 40, 30, 0, 0})->boundingRect(), QRect(0, 0, 40, 30));
}

TEST(InterfaceFolder, LookupEntriesAndFallback) {
  test::TempDir dir;
  EXPECT_TRUE(LookforInterfaceFiles(dir.path()).folderName.empty());
  std::filesystem::create_directories(dir.path() + "interfac");
  dir.Write("interfac/Interfc5.des", "\"Plain\",p.png,2,10,10");
  dir.Write("interfac/Shortie.des", "Short,p.png,2,10,10");
  InterfaceListing l = LookforInterfaceFiles(dir.path());
  EXPECT_EQ(l.folderName, "interfac");
  ASSERT_EQ(l.entries.size(), 2u);
  EXPECT_EQ(l.entries[0], "Plain - Interfc5.des");
  EXPECT_EQ(InterfaceFileOfEntry(l.entries[0]), "Interfc5.des");
  // An 11-character name takes the blank of " - " into its 12 characters.
  EXPECT_EQ(InterfaceFileOfEntry(l.entries[1]), " Shortie.des");
  std::string file = InterfaceFileOfEntry(l.entries[1]);
  ResolveInterfacePath(dir.path(), l.folderName, file);
  EXPECT_EQ(file, "Interfc5.des");
  // "interface" wins when it holds a skin.
  std::filesystem::create_directories(dir.path() + "interface");
  dir.Write("interface/Interfc4.des", "Four,p.png,2,10,10");
  EXPECT_EQ(LookforInterfaceFiles(dir.path()).folderName, "interface");
  file = "interfc4.DES";  // names compare without case
  EXPECT_EQ(ResolveInterfacePath(dir.path(), "interface", file), dir.path() + "interface/Interfc4.des");
  file = "Missing1.des";  // the fallback is tried once, even when it is missing too
  ResolveInterfacePath(dir.path(), "interface", file);
  EXPECT_EQ(file, "Interfc5.des");
}

TEST(ShippedSkins, ReadCompletelyAndGiveTheirOutlines) {
  for (const char* name : {"Interfc4.des", "Interfc5.des", "Interfc6.des"}) {
    DesSkin s;
    ASSERT_TRUE(ReadDesFile(std::string(TREL_SHIPPED_DATA_DIR) + "/interface/" + name, s)) << name;
    EXPECT_TRUE(s.width == 640 && s.codeSeen) << name;
    const QRegion r = BuildSkinRegion(s);  // 630,455: the error line under the code boxes
    EXPECT_TRUE(r.contains(QPoint(320, 240)) && r.contains(QPoint(630, 455))) << name;
  }
  DesSkin six;
  ReadDesFile(std::string(TREL_SHIPPED_DATA_DIR) + "/interface/Interfc6.des", six);
  EXPECT_FALSE(BuildSkinRegion(six).contains(QPoint(2, 240)));  // the notch: not rectangular
}

}  // namespace
}  // namespace trel
