#include <gtest/gtest.h>

#include <filesystem>

#include "catalogue/CategoryChange.h"
#include "catalogue/EnableState.h"
#include "catalogue/PluginIdentification.h"
#include "catalogue/PluginScanner.h"
#include "filter/TextFormats.h"
#include "support/PeBuilder.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace {

class CategoryChangeTest : public ::testing::Test {
 protected:
  CategoryChangeTest() { env.shell = &shell; }
  // Scans one file as the Plugin View would and returns its first entry.
  PluginEntry Scanned(const std::string& name, const std::string& bytes) {
    dir.Write(name, bytes);
    std::vector<PluginEntry> out;
    EXPECT_TRUE(IdentifyFile(dir.path(), name, {}, {}, env, out));
    return out.empty() ? PluginEntry{} : out.front();
  }
  test::TempDir dir;
  test::RecordingShell shell;
  FilterEnv env;
};

TEST_F(CategoryChangeTest, GeneralPluginRewritesOnlyItsOwnRoom) {
  const std::string before = test::BuildPe({test::Pipl({"Distort", "Twirl", true, 8}, 1),
                                            test::Pipl({"Distort", "Other", true, 8}, 2)});
  const PluginEntry entry = Scanned("p.8bf", before);
  ASSERT_EQ(entry.maxCategoryLength, 7 + 8);
  ASSERT_TRUE(ChangeCat_FV(entry, "Warp", env));
  const std::string after = dir.Read("p.8bf");
  ASSERT_EQ(after.size(), before.size());
  const size_t count = static_cast<size_t>(entry.categoryOffset) - 2;  // 0-based count byte
  for (size_t i = 0; i < before.size(); ++i) {
    if (i >= count && i <= count + entry.maxCategoryLength) continue;
    ASSERT_EQ(after[i], before[i]) << "byte " << i << " outside the room changed";
  }
  EXPECT_EQ(after.substr(count, 1 + entry.maxCategoryLength),
            std::string("\x04Warp") + std::string(entry.maxCategoryLength - 4, '\0'));

  ResourceProbe probe;
  ASSERT_TRUE(ReadCom8bf(dir.file("p.8bf"), probe, env));
  EXPECT_EQ(probe[1].category, "Warp");
  EXPECT_EQ(probe[1].title, "Twirl");
  EXPECT_EQ(probe[1].maximumLength, entry.maxCategoryLength);
  EXPECT_EQ(probe[2].category, "Distort");  // the second filter keeps its own
}

TEST_F(CategoryChangeTest, CategoryFillingTheWholeRoomFits) {
  const PluginEntry entry = Scanned("p.8bf", test::BuildPe({test::Pipl({"Blur", "Soft"})}));
  ASSERT_EQ(entry.maxCategoryLength, 7);
  EXPECT_TRUE(ChangeCat_FV(entry, "Sharpen", env));
  ResourceProbe probe;
  ReadCom8bf(dir.file("p.8bf"), probe, env);
  EXPECT_EQ(probe[1].category, "Sharpen");
}

TEST_F(CategoryChangeTest, TooLongCategoryFailsWithoutTouchingTheFile) {
  const std::string before = test::BuildPe({test::Pipl({"Blur", "Soft"})});
  const PluginEntry entry = Scanned("p.8bf", before);
  EXPECT_FALSE(ChangeCat_FV(entry, "Much Too Long For The Room", env));
  EXPECT_EQ(dir.Read("p.8bf"), before);
  EXPECT_TRUE(shell.boxes.empty());
}

TEST_F(CategoryChangeTest, EntriesWithoutAPlaceInTheFileFail) {
  const std::string bytes = test::BuildPe({test::Pipl({"Blur", "Soft"})});
  PluginEntry entry = Scanned("p.8bf", bytes);
  PluginEntry virtualOne = entry;
  virtualOne.category = "[Premiere Video]";
  EXPECT_FALSE(ChangeCat_FV(virtualOne, "New", env));
  PluginEntry typeRow = entry;
  typeRow.categoryOffset = -1;
  EXPECT_FALSE(ChangeCat_FV(typeRow, "New", env));
  PluginEntry noRoom = entry;
  noRoom.maxCategoryLength = 0;
  EXPECT_FALSE(ChangeCat_FV(noRoom, "New", env));
  // A file changed since the scan no longer has the category at that place.
  PluginEntry stale = entry;
  stale.category = "Noise";
  EXPECT_FALSE(ChangeCat_FV(stale, "New", env));
  EXPECT_EQ(dir.Read("p.8bf"), bytes);
  // An unreadable plugin of a Filter Factory size is no Filter Factory plugin.
  const PluginEntry unknown = Scanned("u.8bf", std::string(57344, '\x01'));
  ASSERT_EQ(unknown.category, "[Unknown]");
  EXPECT_FALSE(ChangeCat_FV(unknown, "New", env));
  EXPECT_EQ(dir.Read("u.8bf"), std::string(57344, '\x01'));
}

TEST_F(CategoryChangeTest, FilterFactorySizesArePatchedAtTheirFixedPlace) {
  test::PeOptions o;
  o.fileSize = 57344;
  const std::string before =
      test::BuildPeWithTextAt({test::Pipl({"FF Category", "FF Title"})}, o, "FF Category", 31064);
  const PluginEntry entry = Scanned("ff.8bf", before);
  ASSERT_EQ(entry.categoryOffset, 0);

  ASSERT_TRUE(ChangeCat_FV(entry, "Short", env));
  std::string after = dir.Read("ff.8bf");
  EXPECT_EQ(after.substr(31062, 7), std::string("\x05Short\0", 7));
  EXPECT_EQ(after.substr(31069, 5), before.substr(31069, 5));  // the rest of the old text stays

  // No length test here: a longer text runs over what follows.
  const std::string longer = "A Category Longer Than The Old One";
  ASSERT_TRUE(ChangeCat_FV({entry.path, "Short", "FF Title", 0, 0}, longer, env));
  after = dir.Read("ff.8bf");
  EXPECT_EQ(after.substr(31062, longer.size() + 2),
            static_cast<char>(longer.size()) + longer + '\0');

  EXPECT_FALSE(ChangeCat_FV({entry.path, "X", "FF Title", 0, 0}, std::string(256, 'L'), env));
  EXPECT_EQ(dir.Read("ff.8bf"), after);
}

TEST_F(CategoryChangeTest, FilterFactoryOffsetOnAnotherSizeFails) {
  const std::string bytes = test::BuildPe({test::Pipl({"Blur", "Soft"})});
  dir.Write("p.8bf", bytes);
  EXPECT_FALSE(ChangeCat_FV({dir.file("p.8bf"), "Blur", "Soft", 0, 7}, "New", env));
  EXPECT_EQ(dir.Read("p.8bf"), bytes);
}

TEST_F(CategoryChangeTest, MissingFileIsReportedAsAccessError) {
  EXPECT_FALSE(ChangeCat_FV({dir.file("gone.8bf"), "Blur", "Soft", 100, 7}, "New", env));
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "Error accessing plugin for category change!");
  EXPECT_EQ(shell.boxes[0].title, "Error");
}

class ChangeCategoryCommandTest : public CategoryChangeTest {
 protected:
  void SetUp() override {
    dir.Write("a.8bf", test::BuildPe({test::Pipl({"Blur", "Alpha", true, 8})}));
    dir.Write("b.8bf", test::BuildPe({test::Pipl({"Blur", "Beta", true, 8})}));
    dir.Write("odd.8bf", test::BuildPe({test::Pipl({"Blur", "Odd"})}));
    ASSERT_EQ(EnterPluginView(pane, dir.path(), {}, {}, env), PluginViewEntry::Scanned);
    rows = {{"+ Alpha", 1, true}, {"+ Beta", 2, true}, {"+ Odd", 3, false}};
  }
  PaneCatalogue pane;
  std::vector<FilterRow> rows;
};

TEST_F(ChangeCategoryCommandTest, MovesSelectedRowsAndAddsTheNewCategoryToTheSnapshot) {
  const ChangeCategoryResult r = cmd_ChangeCategory(kPluginView, pane, rows, "Artistic", false, env);
  EXPECT_TRUE(r.moved);
  EXPECT_EQ(r.failures, 0);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].text, "+ Odd");
  EXPECT_EQ(pane.plugins[1].category, "Artistic");
  EXPECT_EQ(pane.plugins[2].category, "Artistic");
  EXPECT_EQ(pane.plugins[3].category, "Blur");
  EXPECT_EQ(pane.categorySnapshot, (std::vector<std::string>{"Artistic", "Blur"}));
  EXPECT_EQ(pane.categories, pane.categorySnapshot);
  ResourceProbe probe;
  ReadCom8bf(dir.file("b.8bf"), probe, env);
  EXPECT_EQ(probe[1].category, "Artistic");
  EXPECT_TRUE(shell.boxes.empty());
}

TEST_F(ChangeCategoryCommandTest, CountsTheFailures) {
  rows[2].selected = true;  // "Odd" has room for 7 letters only
  const ChangeCategoryResult r = cmd_ChangeCategory(kPluginView, pane, rows, "Stylize More", false, env);
  EXPECT_EQ(r.failures, 1);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].text, "+ Odd");
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "Changing the category didn't work for 1 plugin(s).");
}

TEST_F(ChangeCategoryCommandTest, RefusesOutsideThePluginViewWithoutSelectionAndOnVirtualTargets) {
  cmd_ChangeCategory(kFileView, pane, rows, "New", false, env);
  for (auto& row : rows) row.selected = false;
  cmd_ChangeCategory(kPluginView, pane, rows, "New", false, env);
  rows[0].selected = true;
  const ChangeCategoryResult r = cmd_ChangeCategory(kPluginView, pane, rows, "[Premiere FF]", true, env);
  EXPECT_TRUE(r.refused);
  ASSERT_EQ(shell.boxes.size(), 3u);
  EXPECT_EQ(shell.boxes[0].text, "Change Category only works in Plugin View.");
  EXPECT_EQ(shell.boxes[1].text, "Please select a plugin.");
  EXPECT_EQ(shell.boxes[2].text,
            "[Premiere FF] is only a virtual category!\nMoving plugins to this category isn't possible.");
  EXPECT_EQ(rows.size(), 3u);
  EXPECT_EQ(pane.plugins[1].category, "Blur");
}

TEST_F(ChangeCategoryCommandTest, DialogChoicesAndRetries) {
  pane.AddCategory("[Unknown]");
  EXPECT_EQ(CategoryChoices(pane), std::vector<std::string>{"Blur"});
  EXPECT_TRUE(CategoryInputNeedsRetry(pane, ""));
  EXPECT_TRUE(CategoryInputNeedsRetry(pane, "[Premiere Video]"));
  EXPECT_FALSE(CategoryInputNeedsRetry(pane, "[Unknown]"));
  EXPECT_FALSE(CategoryInputNeedsRetry(pane, "Fresh"));
}

TEST_F(CategoryChangeTest, FilterSourceIsReadAndWrittenAgain) {
  FFFilter f;
  f.filename = "Glow.afs";
  f.category = "Old";
  f.title = "Glow";
  f.codeR = "r";
  f.codeG = "g";
  f.codeB = "b";
  f.codeA = "a";
  Writeafspff(f, dir.path(), 0, env);
  PaneCatalogue pane;
  ScanOptions sources;
  sources.includeSources = true;
  ASSERT_EQ(EnterPluginView(pane, dir.path(), sources, {}, env), PluginViewEntry::Scanned);
  std::vector<FilterRow> rows = {{"Glow (.afs)", 1, true}};
  const ChangeCategoryResult r = cmd_ChangeCategory(kPluginView, pane, rows, "Lights", false, env);
  EXPECT_TRUE(r.moved);
  EXPECT_TRUE(rows.empty());
  FFFilter back;
  ASSERT_TRUE(ReadAFS(back, dir.path(), "Glow.afs", env));
  EXPECT_EQ(back.category, "Lights");
  EXPECT_EQ(back.codeG, "g");
  EXPECT_EQ(pane.categories, (std::vector<std::string>{"Lights", "Old"}));
}

TEST_F(CategoryChangeTest, TextSourceKeepsItsFileNameFieldAndItsPlace) {
  FFFilter f;
  f.filename = "Other.8bf";
  f.category = "Old";
  f.title = "Glow";
  f.codeR = "r";
  f.codeG = "g";
  f.codeB = "b";
  f.codeA = "a";
  WriteTXT(f, dir.path(), false, env);
  std::filesystem::rename(dir.file("Other.txt"), dir.file("Glow.txt"));
  const PluginEntry entry{dir.file("Glow.txt"), "Old", "Glow (.txt)", 0, 0};
  ASSERT_TRUE(ChangeSourceCategory(entry, "New Place", env));
  FFFilter back;
  ASSERT_TRUE(ReadTXT(back, dir.path(), "Glow.txt", false, true, env));
  EXPECT_EQ(back.category, "New Place");
  EXPECT_EQ(back.filename, "Other.8bf");
  EXPECT_FALSE(dir.Exists("Other.txt"));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
}

TEST_F(CategoryChangeTest, UnreadableSourceFailsAndStaysAsItWas) {
  const std::string broken = "%RGB-1.0\r300\r";  // a control value no byte can hold
  dir.Write("Broken.afs", broken);
  EXPECT_FALSE(ChangeSourceCategory({dir.file("Broken.afs"), "X", "Broken (.afs)", 0, 0}, "New", env));
  EXPECT_EQ(dir.Read("Broken.afs"), broken);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}), 1);
}

}  // namespace
}  // namespace trel
