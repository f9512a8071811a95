#include "shell/PaneRules.h"

#include <gtest/gtest.h>

namespace trel {
namespace {

TEST(IconOfFile, KindsByTheLastFourCharacters) {
  struct Case {
    const char* name;
    int icon;
  } cases[] = {
      {"Blur.8BF", kIcon8bf}, {"Wave.prm", kIconPrm},    {"glow.aex", kIconAex},   {"lib.ffl", kIconFfl},
      {"pack.zip", kIconZip}, {"rose.tub", kIconPaint},  {"edge.sld", kIconPaint}, {"photo.jpg", kIconImage},
      {"a.PNG", kIconImage},  {"clip.wmf", kIconFile},   {"old.8b-", kIconFile},   {"readme", kIconFile},
      {"x.tif", kIconFile},   {".8bf", kIcon8bf},
  };
  for (const Case& c : cases) EXPECT_EQ(IconOfFile(c.name), c.icon) << c.name;
  EXPECT_TRUE(IsFileIcon(kIconFile));
  EXPECT_FALSE(IsFileIcon(kIconParent));
}

TEST(Masks, EntriesAndTheirPatterns) {
  EXPECT_STREQ(kMaskEntries[0], "All Files (*.*)");
  EXPECT_STREQ(kMaskEntries[5], "Zip Files (*.zip)");
  EXPECT_EQ(MaskPattern(3, "*.tub;*.jbr"), "*.tub;*.jbr");
  EXPECT_EQ(MaskPattern(5, ""), "*.zip");
  // The plugin entry also lists the disabled forms its caption doesn't show.
  const std::string plugins = MaskPattern(1, "");
  for (const char* name : {"a.8bf", "a.8b-", "a._bf", "a_8bf", "b.PRM", "b.pr-", "c.aex", "c.ae-"})
    EXPECT_TRUE(MatchesPattern(name, plugins)) << name;
  EXPECT_FALSE(MatchesPattern("a.txt", plugins));
}

TEST(Masks, WildcardsAreCaseBlindAndAlternativesTrimmed) {
  EXPECT_TRUE(MatchesPattern("README", "*.*"));
  EXPECT_TRUE(MatchesPattern("x.Txt", "*.afs; *.txt"));
  EXPECT_TRUE(MatchesPattern("abc", "a?c"));
  EXPECT_FALSE(MatchesPattern("abcd", "a?c"));
  EXPECT_TRUE(MatchesPattern("a.b.c", "*.c"));
  EXPECT_TRUE(MatchesPattern("anything", ""));
  EXPECT_FALSE(MatchesPattern("file.8bf", "blur*"));
  EXPECT_TRUE(MatchesPattern("blur.8bf", "blur*"));
  EXPECT_FALSE(MatchesPattern("x", ";;"));
}

TEST(FormatSize, GroupsThousandsAndShowsNothingForZero) {
  EXPECT_EQ(FormatSize(0), "");
  EXPECT_EQ(FormatSize(7), "7");
  EXPECT_EQ(FormatSize(1000), "1,000");
  EXPECT_EQ(FormatSize(1234567), "1,234,567");
  EXPECT_EQ(FormatSize(-1), "");
}

TEST(AddKilobytes, RoundsAfterEveryAddition) {
  int64_t total = 0;
  for (int i = 0; i < 100; ++i) total = AddKilobytes(total, 400);  // 0.39 K each: nothing
  EXPECT_EQ(total, 0);
  total = 0;
  for (int i = 0; i < 10; ++i) total = AddKilobytes(total, 700);  // 0.68 K each counts as 1
  EXPECT_EQ(total, 10);
  EXPECT_EQ(AddKilobytes(0, 1024 * 1024), 1024);
}

TEST(RouteOfFile, FirstHitWins) {
  const std::vector<std::string> types = {"tub", "8bc"};
  struct Case {
    const char* name;
    DblClickRoute route;
  } cases[] = {
      {"p.BMP", DblClickRoute::PicView},        {"p.jpg", DblClickRoute::PicView},
      {"p.gif", DblClickRoute::Shell},          {"lib.ffl", DblClickRoute::ConvertFFL},
      {"f.8bf", DblClickRoute::FFEditor},       {"f_8bf", DblClickRoute::FFEditor},
      {"f._bf", DblClickRoute::FFEditor},       {"f.prm", DblClickRoute::FFEditor},
      {"f._rm", DblClickRoute::FFEditor},       {"f.afs", DblClickRoute::FFEditor},
      {"f.pff", DblClickRoute::FFEditor},       {"f.bin", DblClickRoute::FFEditor},
      {"f.ffx", DblClickRoute::FFEditor},       {"f.txt", DblClickRoute::TxtSource},
      {"rose.tub", DblClickRoute::PluginInformation}, {"rose_tub", DblClickRoute::PluginInformation},
      {"rosetub", DblClickRoute::Shell},        {"x.8BC", DblClickRoute::PluginInformation},
      {"f.aex", DblClickRoute::Shell},          {"setup.exe", DblClickRoute::Shell},
  };
  for (const Case& c : cases) EXPECT_EQ(RouteOfFile(c.name, types), c.route) << c.name;
  // A text file that isn't a filter source goes on to the later rules.
  EXPECT_EQ(RouteOfFile("notes.txt", {"txt"}, true), DblClickRoute::PluginInformation);
  EXPECT_EQ(RouteOfFile("notes.txt", {}, true), DblClickRoute::Shell);
}

TEST(ProgramTitle, MinorVersionHasTwoDigits) {
  EXPECT_EQ(ProgramTitle(1, 0), "Trellium 1.00");
  EXPECT_EQ(ProgramTitle(1, 5), "Trellium 1.05");
  EXPECT_EQ(ProgramTitle(2, 12), "Trellium 2.12");
}

TEST(WelcomeText, OpensWithTheGreetingAndItsBlankLines) {
  const std::string text = WelcomeText();
  EXPECT_EQ(text.rfind("Welcome to Trel!\n\nI hope you will like and enjoy this tool.\n\n"
                       "If you shouldn't understand something,\nplease run the help file by pressing F1.\n\n",
                       0),
            0u);
}

TEST(PositionOnScreen, OnlyPointsInsideTheScreen) {
  EXPECT_TRUE(PositionOnScreen(0, 0, 1280, 1024));
  EXPECT_TRUE(PositionOnScreen(1279, 1023, 1280, 1024));
  EXPECT_FALSE(PositionOnScreen(1280, 10, 1280, 1024));
  EXPECT_FALSE(PositionOnScreen(10, 3000, 1280, 1024));
  EXPECT_FALSE(PositionOnScreen(-5000, 10, 1280, 1024));
}

}  // namespace
}  // namespace trel
