#include <gtest/gtest.h>

#include <filesystem>

#include "catalogue/PluginScanner.h"
#include "filter/TextFormats.h"
#include "support/PeBuilder.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::PiplFilter;

std::string PlainPlugin(const std::string& category, const std::string& title) {
  return test::BuildPe({test::Pipl({category, title})});
}

// A plugin of one of the Filter Factory sizes with its category where the
// compiled filters have it.
std::string FilterFactorySized(size_t size, size_t categoryPosition, const std::string& category) {
  test::PeOptions o;
  o.fileSize = size;
  return test::BuildPeWithTextAt({test::Pipl({category, "FF Title"})}, o, category, categoryPosition);
}

std::string MacFilterFactory(const std::string& category, const std::string& title) {
  return test::PlaceBytes(99712, {{59017, std::string("Factory") + '\0'},
                                  {49852, static_cast<char>(title.size()) + title},
                                  {50124, static_cast<char>(category.size()) + category}});
}

class ScannerTest : public ::testing::Test {
 protected:
  ScannerTest() { env.shell = &shell; }
  int Scan(const ScanOptions& options = {}) {
    return ScanPluginRecurse(pane, dir.path(), options, table, env);
  }
  void UseDefaultTypes() {
    PluginTypeList list;
    for (const auto& row : DefaultPluginTypeRows()) list.push_back({row, row.find("Tube") != std::string::npos});
    GetPlugTypes(list, table);
  }
  test::TempDir dir;
  test::RecordingShell shell;
  FilterEnv env;
  PaneCatalogue pane;
  PluginTypeTable table;
};

TEST_F(ScannerTest, MultiFilterPluginGivesOneEntryPerFilterAndOnlyTheLastCategory) {
  dir.Write("multi.8bf", test::BuildPe({test::Pipl({"Blur", "Soft"}, 1), test::Pipl({"Sharpen", "Crisp"}, 2)}));
  ASSERT_EQ(Scan(), 2);
  EXPECT_EQ(pane.plugins[1].title, "Soft");
  EXPECT_EQ(pane.plugins[2].title, "Crisp");
  EXPECT_EQ(pane.plugins[1].path, pane.plugins[2].path);
  EXPECT_EQ(pane.categories, std::vector<std::string>{"Sharpen"});
}

TEST_F(ScannerTest, FilesComeInNameOrderAndSubfoldersOnlyWithRecursion) {
  dir.Write("b.8bf", PlainPlugin("Zeta", "B"));
  dir.Write("A.8bf", PlainPlugin("alpha", "A"));
  std::filesystem::create_directories(dir.file("sub/deeper"));
  dir.Write("sub/deeper/d.8bf", PlainPlugin("Deep", "D"));
  dir.Write("sub/c.8bf", PlainPlugin("Mid", "C"));
  dir.Write("z.8bf", PlainPlugin("Zeta", "Z"));
  ASSERT_EQ(Scan(), 3);
  EXPECT_EQ(pane.plugins[1].title, "A");
  EXPECT_EQ(pane.plugins[3].title, "Z");

  pane = {};
  ScanOptions recursive;
  recursive.subFolders = true;
  ASSERT_EQ(Scan(recursive), 5);
  EXPECT_EQ(pane.plugins[4].title, "C");
  EXPECT_EQ(pane.plugins[5].title, "D");
  EXPECT_EQ(pane.categories, (std::vector<std::string>{"alpha", "Deep", "Mid", "Zeta"}));
}

TEST_F(ScannerTest, UnreadablePluginStandsAsUnknownAndTheScanGoesOn) {
  dir.Write("a_broken.8bf", "MZ not really");
  dir.Write("b_empty.aex", "");
  dir.Write("c_good.8bf", PlainPlugin("Good", "Fine"));
  ASSERT_EQ(Scan(), 3);
  EXPECT_EQ(pane.plugins[1].category, "[Unknown]");
  EXPECT_EQ(pane.plugins[1].title, "a_broken.8bf");
  EXPECT_EQ(pane.plugins[2].category, "[Unknown]");
  EXPECT_EQ(pane.plugins[3].category, "Good");
}

TEST_F(ScannerTest, SixtyFourAndThirtyTwoBitPluginsAreBothFound) {
  test::PeOptions narrow;
  narrow.pe32plus = false;
  narrow.peHeaderOffset = 0x80;
  dir.Write("a32.8bf", test::BuildPe({test::Pipl({"Old", "Narrow"})}, narrow));
  dir.Write("b64.8bf", test::BuildPe({test::Pipl({"New", "Wide"})}));
  ASSERT_EQ(Scan(), 2);
  EXPECT_EQ(pane.plugins[1].title, "Narrow");
  EXPECT_EQ(pane.plugins[2].title, "Wide");
}

TEST_F(ScannerTest, FilterFactoryPositionsZeroTheOffsetExceptThe53760Form) {
  dir.Write("a.8bf", FilterFactorySized(57344, 31064, "FF Cat"));
  dir.Write("b.8bf", FilterFactorySized(53760, 30404, "FF Cat"));
  dir.Write("c.8bf", FilterFactorySized(49152, 23896, "FF Cat"));
  ASSERT_EQ(Scan(), 3);
  EXPECT_EQ(pane.plugins[1].categoryOffset, 0);
  EXPECT_EQ(pane.plugins[1].category, "FF Cat");
  EXPECT_EQ(pane.plugins[2].categoryOffset, 30404);
  EXPECT_EQ(pane.plugins[3].categoryOffset, 0);
}

TEST_F(ScannerTest, ShiftKeepsOnlyFilterFactorySizes) {
  dir.Write("a.8bf", FilterFactorySized(57344, 31064, "FF Cat"));
  test::PeOptions big;
  big.fileSize = 100 * 1024;
  dir.Write("b.8bf", test::BuildPe({test::Pipl({"Real", "Plugin"})}, big));
  dir.Write("c.api", "x");
  ScanOptions ffOnly;
  ffOnly.ScanFFOnly = true;
  UseDefaultTypes();
  ASSERT_EQ(Scan(ffOnly), 1);
  EXPECT_EQ(pane.plugins[1].path, dir.file("a.8bf"));
}

TEST_F(ScannerTest, MacintoshFilterFactoryBinIsReadByItsFixedPlaces) {
  dir.Write("mac.bin", MacFilterFactory("Mac Cat", "Mac Title"));
  dir.Write("other.bin", "not a plugin");
  ASSERT_EQ(Scan(), 2);
  EXPECT_EQ(pane.plugins[1].category, "Mac Cat");
  EXPECT_EQ(pane.plugins[1].title, "Mac Title");
  EXPECT_EQ(pane.plugins[1].categoryOffset, 0);
  EXPECT_EQ(pane.plugins[2].category, "[Unknown]");
}

TEST_F(ScannerTest, PremiereFactoriesAreToldByTheirCategoryPosition) {
  test::PeOptions o;
  o.fileSize = 50176;
  dir.Write("ff.prm", test::BuildPeWithTextAt({test::Pipl({"Any", "Video FF"})}, o, "Any", 29108));
  o.fileSize = 51200;
  dir.Write("tf.prm", test::BuildPeWithTextAt({test::Pipl({"Any", "Transition TF"})}, o, "Any", 29692));
  dir.Write("video_prm", test::PlaceBytes(20000, {{10002, test::PremiereVideo("Old Video")}}));
  ASSERT_EQ(Scan(), 3);
  EXPECT_EQ(pane.plugins[1].category, "[Premiere FF]");
  EXPECT_EQ(pane.plugins[1].categoryOffset, 0);
  EXPECT_EQ(pane.plugins[2].category, "[Premiere TF]");
  EXPECT_EQ(pane.plugins[3].category, "[Premiere Video]");
  EXPECT_EQ(pane.plugins[3].title, "Old Video");
  EXPECT_NE(pane.plugins[3].categoryOffset, 0);
}

TEST_F(ScannerTest, FilterSourcesOnlyWithTheOption) {
  FFFilter f;
  f.filename = "Glow.afs";
  f.category = "Sources";
  f.title = "Glow";
  f.codeR = "r";
  f.codeG = "g";
  f.codeB = "b";
  f.codeA = "a";
  Writeafspff(f, dir.path(), 0, env);
  ASSERT_TRUE(dir.Exists("Glow.afs"));
  EXPECT_EQ(Scan(), 0);
  ScanOptions sources;
  sources.includeSources = true;
  ASSERT_EQ(Scan(sources), 1);
  EXPECT_EQ(pane.plugins[1].title, "Glow (.afs)");
  EXPECT_EQ(pane.plugins[1].category, "Sources");
  EXPECT_EQ(pane.plugins[1].categoryOffset, 0);
}

TEST_F(ScannerTest, TypeTableFilesOnlyWhenTheirRowIsChecked) {
  dir.Write("x.tub", "tube");
  dir.Write("y.api", "acrobat");
  dir.Write("z.abcd", "four letters");
  EXPECT_EQ(Scan(), 0);
  UseDefaultTypes();  // only the PSP Tube row is checked
  ASSERT_EQ(Scan(), 1);
  EXPECT_EQ(pane.plugins[1].category, "[PSP Tube]");
  EXPECT_EQ(pane.plugins[1].title, "x");
  EXPECT_EQ(pane.plugins[1].categoryOffset, -1);
}

TEST_F(ScannerTest, MaskFallsBackToEverythingWhenTooLong) {
  EXPECT_EQ(PluginScanMask({}, false), "*.8bf;*._bf;*_8bf;*?prm;*.pr-;*_prm;*?aex;*._ex;*_aex;*.bin");
  EXPECT_EQ(PluginScanMask({}, true),
            "*.8bf;*._bf;*_8bf;*?prm;*.pr-;*_prm;*?aex;*._ex;*_aex;*.bin;*.ffx;*.txt;*.afs;*.pff");
  PluginTypeList all;
  for (const auto& row : DefaultPluginTypeRows()) all.push_back({row, true});
  GetPlugTypes(all, table);
  EXPECT_EQ(PluginScanMask(table, false), "*.*");
  EXPECT_EQ(PluginScanMask(table, true), "*.*;*.ffx;*.txt;*.afs;*.pff");

  EXPECT_TRUE(MaskMatches("*.8bf;*?prm", "A.8BF"));
  EXPECT_TRUE(MaskMatches("*.8bf;*?prm", "a_prm"));
  EXPECT_FALSE(MaskMatches("*.8bf;*?prm", "a._rm"));
  EXPECT_FALSE(MaskMatches("*.8bf;*?prm", "prm"));
  EXPECT_TRUE(MaskMatches("*.*", "noextension"));
}

TEST_F(ScannerTest, NarrowMaskMissesUnderscoreSpellingsThatTheWideOneCatches) {
  dir.Write("a._rm", test::PlaceBytes(20000, {{10002, test::PremiereVideo("Hidden")}}));
  EXPECT_EQ(Scan(), 0);  // "*?prm" doesn't match "._rm"
  PluginTypeList all;
  for (const auto& row : DefaultPluginTypeRows()) all.push_back({row, true});
  GetPlugTypes(all, table);
  EXPECT_EQ(Scan(), 1);
}

TEST_F(ScannerTest, EscapeAbortsWithNothing) {
  dir.Write("a.8bf", PlainPlugin("A", "A"));
  dir.Write("b.8bf", PlainPlugin("B", "B"));
  shell.escapeAfterPolls = 1;
  EXPECT_EQ(Scan(), 0);
}

TEST_F(ScannerTest, ProgressAndLabelsAreReported) {
  for (const char* n : {"a.8bf", "b.8bf", "c.8bf", "d.8bf"}) dir.Write(n, PlainPlugin("C", n));
  std::vector<int> progress;
  std::vector<std::string> labels;
  int yields = 0;
  ScanCallbacks callbacks{[&](const std::string& s) { labels.push_back(s); },
                          [&](int p) { progress.push_back(p); }, [&] { ++yields; }};
  ScanOptions options;
  options.yieldRate = 50;  // every second file
  ASSERT_EQ(ScanPluginRecurse(pane, dir.path(), options, table, env, callbacks), 4);
  EXPECT_EQ(progress, (std::vector<int>{0, 25, 50, 75}));
  EXPECT_EQ(labels.front(), dir.path());
  EXPECT_EQ(labels.back(), "d.8bf");
  EXPECT_EQ(yields, 2);
}

TEST_F(ScannerTest, EnteringThePluginViewScansOnceAndSnapshotsTheCategories) {
  dir.Write("a.8bf", PlainPlugin("Blur", "A"));
  EXPECT_EQ(EnterPluginView(pane, dir.path(), {}, table, env), PluginViewEntry::Scanned);
  EXPECT_EQ(pane.categorySnapshot, std::vector<std::string>{"Blur"});
  dir.Write("b.8bf", PlainPlugin("Noise", "B"));
  EXPECT_EQ(EnterPluginView(pane, dir.path(), {}, table, env), PluginViewEntry::ListStands);
  EXPECT_EQ(pane.plugins.Count(), 1);
  pane.PluginViewFresh = false;  // what a toggle in the File View does
  EXPECT_EQ(EnterPluginView(pane, dir.path(), {}, table, env), PluginViewEntry::Scanned);
  EXPECT_EQ(pane.plugins.Count(), 2);
}

TEST_F(ScannerTest, EmptyFolderOrEscapeTellsTheUserAndScansAgainNextTime) {
  dir.Write("readme.txt", "text");
  EXPECT_EQ(EnterPluginView(pane, dir.path(), {}, table, env), PluginViewEntry::NothingFound);
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text,
            "No plugins or other supported files were found in the current\n"
            "folder. Please select another folder and try again.");
  EXPECT_FALSE(pane.PluginViewFresh);

  dir.Write("a.8bf", PlainPlugin("Blur", "A"));
  shell.escapeAfterPolls = 0;
  EXPECT_EQ(EnterPluginView(pane, dir.path(), {}, table, env), PluginViewEntry::NothingFound);
  EXPECT_EQ(pane.plugins.Count(), 0);
}

}  // namespace
}  // namespace trel
