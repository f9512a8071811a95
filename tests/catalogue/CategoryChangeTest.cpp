#include <filesystem>

#include "catalogue/CatalogueTesting.h"
#include "catalogue/CategoryChange.h"
#include "catalogue/EnableState.h"
#include "catalogue/PluginIdentification.h"
#include "catalogue/PluginScanner.h"
#include "filter/TextFormats.h"

namespace trel {
namespace {

using test::Column;
using test::Strings;

class CategoryChangeTest : public test::CatalogueTest {
 protected:
  // Scans one file as the Plugin View would and returns its first entry.
  PluginEntry Scanned(const std::string& name, const std::string& bytes) {
    dir.Write(name, bytes);
    std::vector<PluginEntry> out;
    EXPECT_TRUE(IdentifyFile(dir.path(), name, {}, {}, env, out));
    return out.empty() ? PluginEntry{} : out.front();
  }
  ResourceProbe ReadBack(const std::string& name) {
    ResourceProbe probe;
    EXPECT_TRUE(ReadCom8bf(dir.file(name), probe, env));
    return probe;
  }
  // True only for a patch that went through; a refusal and an error are both false.
  static bool Changed(const Expected<bool>& patched) { return patched && *patched; }
  auto FileCount() const { return std::distance(std::filesystem::directory_iterator(dir.path()), {}); }
};

TEST_F(CategoryChangeTest, GeneralPluginRewritesOnlyItsOwnRoomAndNothingThatDoesNotFit) {
  const std::string before = test::BuildPe({test::Pipl({"Distort", "Twirl", true, 8}, 1),
                                            test::Pipl({"Distort", "Other", true, 8}, 2)});
  PluginEntry entry = Scanned("p.8bf", before);
  ASSERT_EQ(entry.maxCategoryLength, 7 + 8);
  ASSERT_TRUE(Changed(ChangeCat_FV(entry, "Warp")));
  const std::string after = dir.Read("p.8bf");
  ASSERT_EQ(after.size(), before.size());
  const size_t count = static_cast<size_t>(entry.categoryOffset) - 2;  // 0-based count byte
  for (size_t i = 0; i < before.size(); ++i) {
    if (i < count || i > count + entry.maxCategoryLength) { ASSERT_EQ(after[i], before[i]) << "byte " << i; }
  }
  EXPECT_EQ(after.substr(count, 16), std::string("\x04Warp") + std::string(11, '\0'));
  // The second filter keeps its own.
  const ResourceProbe probe = ReadBack("p.8bf");
  EXPECT_EQ(probe[1].category + "|" + probe[1].title + "|" + probe[2].category, "Warp|Twirl|Distort");
  EXPECT_EQ(probe[1].maximumLength, entry.maxCategoryLength);

  entry.category = "Warp";
  EXPECT_FALSE(Changed(ChangeCat_FV(entry, std::string(16, 'L'))));  // one letter too many
  EXPECT_TRUE(dir.Read("p.8bf") == after && shell.boxes.empty());
  EXPECT_TRUE(Changed(ChangeCat_FV(entry, std::string(15, 'F'))));
  EXPECT_EQ(ReadBack("p.8bf")[1].category, std::string(15, 'F'));
}

TEST_F(CategoryChangeTest, EntriesWithoutAPlaceInTheFileFail) {
  const std::string bytes = test::PiplPlugin("Blur", "Soft");
  const PluginEntry entry = Scanned("p.8bf", bytes);
  const std::vector<std::pair<const char*, void (*)(PluginEntry&)>> damages = {
      {"virtual category", [](PluginEntry& e) { e.category = "[Premiere Video]"; }},
      {"type table file", [](PluginEntry& e) { e.categoryOffset = -1; }},
      {"no room", [](PluginEntry& e) { e.maxCategoryLength = 0; }},
      {"changed since the scan", [](PluginEntry& e) { e.category = "Noise"; }},
      {"Filter Factory place on another size", [](PluginEntry& e) { e.categoryOffset = 0; }},
  };
  for (const auto& [name, damage] : damages) {
    PluginEntry e = entry;
    damage(e);
    EXPECT_FALSE(Changed(ChangeCat_FV(e, "New"))) << name;
  }
  EXPECT_EQ(dir.Read("p.8bf"), bytes);
  // An unreadable plugin of a Filter Factory size is no Filter Factory plugin.
  const PluginEntry unknown = Scanned("u.8bf", std::string(57344, '\x01'));
  ASSERT_EQ(unknown.category, "[Unknown]");
  EXPECT_FALSE(Changed(ChangeCat_FV(unknown, "New")));
  EXPECT_EQ(dir.Read("u.8bf"), std::string(57344, '\x01'));
}

TEST_F(CategoryChangeTest, FilterFactorySizesArePatchedAtTheirFixedPlace) {
  const std::string before = test::BuildPeWithTextAt({test::Pipl({"FF Category", "FF Title"})},
                                                     {.fileSize = 57344}, "FF Category", 31064);
  const PluginEntry entry = Scanned("ff.8bf", before);
  ASSERT_EQ(entry.categoryOffset, 0);
  ASSERT_TRUE(Changed(ChangeCat_FV(entry, "Short")));
  std::string after = dir.Read("ff.8bf");
  EXPECT_EQ(after.substr(31062, 7), std::string("\x05Short\0", 7));
  EXPECT_EQ(after.substr(31069, 5), before.substr(31069, 5));  // the rest of the old text stays

  // No length test here: a longer text runs over what follows.
  const std::string longer = "A Category Longer Than The Old One";
  ASSERT_TRUE(Changed(ChangeCat_FV({entry.path, "Short", "FF Title", 0, 0}, longer)));
  after = dir.Read("ff.8bf");
  EXPECT_EQ(after.substr(31062, longer.size() + 2), static_cast<char>(longer.size()) + longer + '\0');
  EXPECT_FALSE(Changed(ChangeCat_FV({entry.path, "X", "FF Title", 0, 0}, std::string(256, 'L'))));
  EXPECT_EQ(dir.Read("ff.8bf"), after);
}

TEST_F(CategoryChangeTest, MissingFileIsToldAtOnceAndCountsAsAFailure) {
  const Expected<bool> gone = ChangeCat_FV({dir.file("gone.8bf"), "Blur", "Soft", 100, 7}, "New");
  ASSERT_FALSE(gone);
  EXPECT_EQ(gone.error().path, dir.file("gone.8bf"));
  PaneCatalogue pane;
  pane.plugins.Add({dir.file("a.8bf"), "Blur", "Soft", 100, 7});
  std::vector<FilterRow> rows = {{"+ Soft", 1, true}};
  EXPECT_EQ(cmd_ChangeCategory(kPluginView, pane, rows, "New", false, env).failures, 1);
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, gone.error().reason);
  EXPECT_EQ(shell.boxes[0].icon, MsgIcon::Critical);
}

TEST_F(CategoryChangeTest, SourcesAreReadAndWrittenAgainInTheirPlaceUnlessUnreadable) {
  FFFilter f = test::SourceFilter("Glow.afs", "Old");
  Writeafspff(f, dir.path(), 0, env);
  PaneCatalogue pane;
  ASSERT_EQ(EnterPluginView(pane, dir.path(), {.includeSources = true}, {}, env), PluginViewEntry::Scanned);
  std::vector<FilterRow> rows = {{"Glow (.afs)", 1, true}};
  EXPECT_TRUE(cmd_ChangeCategory(kPluginView, pane, rows, "Lights", false, env).moved);
  EXPECT_TRUE(rows.empty());
  FFFilter back;
  ASSERT_TRUE(ReadAFS(back, dir.path(), "Glow.afs", env));
  EXPECT_EQ(back.category + "|" + back.codeG, "Lights|g");
  EXPECT_EQ(pane.categories, (Strings{"Lights", "Old"}));

  // A text source keeps its file name field, which names another file.
  f = test::SourceFilter("Other.8bf", "Old");
  WriteTXT(f, dir.path(), false, env);
  std::filesystem::rename(dir.file("Other.txt"), dir.file("Glow.txt"));
  ASSERT_TRUE(ChangeSourceCategory({dir.file("Glow.txt"), "Old", "Glow (.txt)", 0, 0}, "New Place", env));
  ASSERT_TRUE(ReadTXT(back, dir.path(), "Glow.txt", false, true, env));
  EXPECT_EQ(back.category + "|" + back.filename, "New Place|Other.8bf");
  EXPECT_EQ(FileCount(), 2);

  const std::string broken = "%RGB-1.0\r300\r";  // a control value no byte can hold
  dir.Write("Broken.afs", broken);
  EXPECT_FALSE(ChangeSourceCategory({dir.file("Broken.afs"), "X", "Broken (.afs)", 0, 0}, "New", env));
  EXPECT_EQ(dir.Read("Broken.afs"), broken);
  EXPECT_EQ(FileCount(), 3);
}

class ChangeCategoryCommandTest : public CategoryChangeTest {
 protected:
  void SetUp() override {
    dir.Write("a.8bf", test::BuildPe({test::Pipl({"Blur", "Alpha", true, 8})}));
    dir.Write("b.8bf", test::BuildPe({test::Pipl({"Blur", "Beta", true, 8})}));
    dir.Write("odd.8bf", test::PiplPlugin("Blur", "Odd"));
    ASSERT_EQ(EnterPluginView(pane, dir.path(), {}, {}, env), PluginViewEntry::Scanned);
  }
  ChangeCategoryResult Change(const std::string& category, int view = kPluginView, bool isVirtual = false) {
    return cmd_ChangeCategory(view, pane, rows, category, isVirtual, env);
  }
  PaneCatalogue pane;
  std::vector<FilterRow> rows = {{"+ Alpha", 1, true}, {"+ Beta", 2, true}, {"+ Odd", 3, false}};
};

TEST_F(ChangeCategoryCommandTest, MovesSelectedRowsAddsTheCategoryToTheSnapshotAndCountsFailures) {
  rows[2].selected = true;  // "Odd" has room for 7 letters only
  const ChangeCategoryResult r = Change("Stylize More");
  EXPECT_TRUE(r.moved);
  EXPECT_EQ(r.failures, 1);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].text, "+ Odd");
  EXPECT_EQ(Column(pane.plugins, &PluginEntry::category), (Strings{"Stylize More", "Stylize More", "Blur"}));
  EXPECT_EQ(pane.categorySnapshot, (Strings{"Blur", "Stylize More"}));
  EXPECT_EQ(pane.categories, pane.categorySnapshot);
  EXPECT_EQ(ReadBack("b.8bf")[1].category, "Stylize More");
  ASSERT_TRUE(r.error);
  EXPECT_EQ(r.error->kind, ErrorKind::Warning);
}

TEST_F(ChangeCategoryCommandTest, RefusesOutsideThePluginViewWithoutSelectionAndOnVirtualTargets) {
  const ChangeCategoryResult fileView = Change("New", kFileView);
  for (auto& row : rows) row.selected = false;
  const ChangeCategoryResult none = Change("New");
  rows[0].selected = true;
  const ChangeCategoryResult virtualTarget = Change("[Premiere FF]", kPluginView, true);
  const std::pair<const ChangeCategoryResult*, const char*> cases[] = {
      {&fileView, "Change Category only works in Plugin View."},
      {&none, "Please select a plugin."},
      {&virtualTarget, "[Premiere FF] is only a virtual category!\nMoving plugins to this category isn't possible."}};
  for (const auto& [r, reason] : cases) {
    EXPECT_TRUE(r->refused);
    ASSERT_TRUE(r->error);
    EXPECT_EQ(std::tie(r->error->kind, r->error->reason), std::make_tuple(ErrorKind::Warning, std::string(reason)));
  }
  EXPECT_TRUE(shell.boxes.empty());
  EXPECT_EQ(rows.size(), 3u);
  EXPECT_EQ(pane.plugins[1].category, "Blur");
}

TEST_F(ChangeCategoryCommandTest, DialogChoicesAndRetries) {
  pane.AddCategory("[Unknown]");
  EXPECT_EQ(CategoryChoices(pane), Strings{"Blur"});
  EXPECT_TRUE(CategoryInputNeedsRetry(pane, "") && CategoryInputNeedsRetry(pane, "[Premiere Video]"));
  EXPECT_FALSE(CategoryInputNeedsRetry(pane, "[Unknown]") || CategoryInputNeedsRetry(pane, "Fresh"));
}

}  // namespace
}  // namespace trel
