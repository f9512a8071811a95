#include "shell/pane/PaneRules.h"

#include <gtest/gtest.h>

#include <array>

#include "base/DirectoryListing.h"
#include "base/NameMatch.h"
#include "base/PluginKinds.h"

namespace trel {
namespace {

TEST(IconOfFile, KindsByTheLastFourCharacters) {
  const std::pair<const char*, int> cases[] = {
      {"Blur.8BF", kIcon8bf}, {"Wave.prm", kIconPrm},   {"glow.aex", kIconAex},   {"lib.ffl", kIconFfl},
      {"pack.zip", kIconZip}, {"rose.tub", kIconPaint}, {"edge.sld", kIconPaint}, {"photo.jpg", kIconImage},
      {"a.PNG", kIconImage},  {"clip.wmf", kIconFile},  {"old.8b-", kIconFile},   {"readme", kIconFile},
      {"x.tif", kIconFile},   {".8bf", kIcon8bf},
  };
  for (const auto& [name, icon] : cases) EXPECT_EQ(IconOfFile(name), icon) << name;
}

TEST(Masks, PluginEntryShowsEveryAdobePluginFormButTheDottedAfterEffectsOne) {
  // The box's plugin entry was written by hand beside the toggle's forms;
  // "._ex" has never been in it, and ".bin" isn't an Adobe plugin. The old
  // disabled forms ("-" for the last letter) are in it as well.
  const std::string mask = MaskPattern(1, "");
  for (const char* form : {".8bf", "._bf", "_8bf", ".prm", "_prm", "._rm", ".aex", "_aex", "._ex", ".bin", ".txt"}) {
    const std::string name = std::string("a") + form;
    EXPECT_EQ(MatchesPattern(name, mask), IsAdobePluginName(name) && std::string(form) != "._ex") << name;
  }
  for (const char* name : {"a.8b-", "b.pr-", "c.ae-"}) EXPECT_TRUE(MatchesPattern(name, mask)) << name;
  EXPECT_EQ(MaskPattern(5, ""), "*.zip");
}

TEST(FormatSize, GroupsThousandsAndShowsNothingForZero) {
  const std::pair<int64_t, const char*> cases[] = {
      {0, ""}, {-1, ""}, {7, "7"}, {1000, "1,000"}, {1234567, "1,234,567"}};
  for (const auto& [bytes, text] : cases) EXPECT_EQ(FormatSize(bytes), text) << bytes;
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
  using R = DblClickRoute;
  const std::pair<const char*, R> cases[] = {
      {"p.BMP", R::PicView},   {"p.jpg", R::PicView},   {"p.gif", R::Shell},    {"lib.ffl", R::ConvertFFL},
      {"f.8bf", R::FFEditor},  {"f_8bf", R::FFEditor},  {"f._bf", R::FFEditor}, {"f.prm", R::FFEditor},
      {"f._rm", R::FFEditor},  {"f.afs", R::FFEditor},  {"f.pff", R::FFEditor}, {"f.bin", R::FFEditor},
      {"f.ffx", R::FFEditor},  {"f.txt", R::TxtSource}, {"rosetub", R::Shell},  {"f.aex", R::Shell},
      {"setup.exe", R::Shell}, {"x.8BC", R::PluginInformation},  {"rose.tub", R::PluginInformation},
      {"rose_tub", R::PluginInformation}};
  for (const auto& [name, route] : cases) EXPECT_EQ(RouteOfFile(name, types), route) << name;
  // A text file that isn't a filter source goes on to the later rules.
  EXPECT_EQ(RouteOfFile("notes.txt", {"txt"}, true), R::PluginInformation);
  EXPECT_EQ(RouteOfFile("notes.txt", {}, true), R::Shell);
}

TEST(ProgramTitle, MinorVersionHasTwoDigits) {
  EXPECT_EQ(ProgramTitle(1, 5), "Trellium 1.05");
  EXPECT_EQ(ProgramTitle(2, 12), "Trellium 2.12");
}

TEST(PositionOnScreen, OnlyPointsInsideTheScreen) {
  const std::array<int, 3> cases[] = {{0, 0, 1}, {1279, 1023, 1}, {1280, 10, 0}, {10, 3000, 0}, {-5000, 10, 0}};
  for (const auto& [x, y, inside] : cases) EXPECT_EQ(PositionOnScreen(x, y, 1280, 1024), inside == 1) << x << "," << y;
}

TEST(ParentFolder, StopsAtTheRoot) {
  EXPECT_EQ(ParentFolder("/a/b/"), "/a/");
  EXPECT_EQ(ParentFolder("/a/b"), "/a/");
  EXPECT_EQ(ParentFolder("/a/"), "/");
  EXPECT_EQ(ParentFolder("/"), "/");
  EXPECT_TRUE(IsRootFolder("/"));
  EXPECT_FALSE(IsRootFolder("/a/"));
}

}  // namespace
}  // namespace trel
