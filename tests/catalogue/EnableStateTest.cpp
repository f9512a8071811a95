#include <gtest/gtest.h>

#include "catalogue/EnableState.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace {

PluginTypeTable Types(std::initializer_list<const char*> rows) {
  PluginTypeList list;
  for (const char* r : rows) list.push_back({r, true});
  PluginTypeTable table;
  GetPlugTypes(list, table);
  return table;
}

struct NameCase {
  const char* from;
  const char* to;  // "" for no rule
  bool enabling;
};

TEST(ToggleName, PluginSuffixRules) {
  const PluginTypeTable none;
  const NameCase cases[] = {
      {"Foo.8bf", "Foo._bf", false}, {"Foo._bf", "Foo.8bf", true}, {"Foo_8bf", "Foo.8bf", true},
      {"Foo.8b-", "Foo.8bf", true},  {"Foo.prm", "Foo_prm", false}, {"Foo._rm", "Foo.prm", true},
      {"Foo.pr-", "Foo.prm", true},  {"Foo_prm", "Foo.prm", true},  {"Foo.aex", "Foo_aex", false},
      {"Foo._ex", "Foo.aex", true},  {"Foo_aex", "Foo.aex", true},  {"FooXprm", "Foo.prm", true},
      {"Foo.PRM", "Foo_prm", false}, {"/a/b/Foo.8BF", "/a/b/Foo._bf", false},
      {"Foo8bf", "", false},         {"Foo.bin", "", false},        {"Foo.zip", "", false},
      {"Foo.ae-", "", false},        {"bf", "", false},
  };
  for (const NameCase& c : cases) {
    for (const int view : {kFileView, kPluginView}) {
      const auto t = ToggleName(c.from, none, view);
      if (!*c.to) {
        EXPECT_FALSE(t.has_value()) << c.from;
        continue;
      }
      ASSERT_TRUE(t.has_value()) << c.from;
      EXPECT_EQ(t->newName, c.to) << c.from;
      EXPECT_EQ(t->enabling, c.enabling) << c.from;
    }
  }
}

TEST(ToggleName, TogglingTwiceComesBackToTheActiveSpelling) {
  const PluginTypeTable none;
  std::string name = "Foo._rm";
  for (const char* expected : {"Foo.prm", "Foo_prm", "Foo.prm"}) {
    name = ToggleName(name, none, kFileView)->newName;
    EXPECT_EQ(name, expected);
  }
}

TEST(ToggleName, TypeRowsUseTheirOwnExtensionLength) {
  const PluginTypeTable table = Types({"Acrobat Plugin (api|2)", "Lightwave Plugin (p|3)", "Long (ABCD|3)"});
  EXPECT_EQ(ToggleName("x.api", table, kFileView)->newName, "x_api");
  EXPECT_EQ(ToggleName("x_api", table, kFileView)->newName, "x.api");
  EXPECT_EQ(ToggleName("scene.p", table, kPluginView)->newName, "scene_p");
  EXPECT_EQ(ToggleName("scene_p", table, kPluginView)->newName, "scene.p");
  // Enabling writes the extension as the row spells it.
  EXPECT_EQ(ToggleName("x_abcd", table, kFileView)->newName, "x.ABCD");
  EXPECT_TRUE(ToggleName("x_abcd", table, kFileView)->enabling);
  // Disabling: the File View keeps the whole extension, lower-cased; the Plugin
  // View takes the last three letters only.
  EXPECT_EQ(ToggleName("x.AbCd", table, kFileView)->newName, "x_abcd");
  EXPECT_EQ(ToggleName("x.AbCd", table, kPluginView)->newName, "x_bcd");
  EXPECT_FALSE(ToggleName("xapi", table, kFileView).has_value());
}

TEST(ToggleName, UncheckedRowsGiveNoRule) {
  PluginTypeList list = {{"Acrobat Plugin (api|2)", false}};
  PluginTypeTable table;
  GetPlugTypes(list, table);
  EXPECT_FALSE(ToggleName("x.api", table, kFileView).has_value());
}

class EnableDisableTest : public ::testing::Test {
 protected:
  EnableDisableTest() { env.shell = &shell; }
  test::TempDir dir;
  test::RecordingShell shell;
  FilterEnv env;
  PaneCatalogue pane;
  PluginTypeTable table;
};

TEST_F(EnableDisableTest, FileViewRenamesEachSelectedFileAndRefreshes) {
  dir.Write("Foo.8bf", "plugin");
  dir.Write("Bar.prm", "premiere");
  pane.PluginViewFresh = true;
  const ToggleResult r =
      cmd_EnableDisable_FileView(kFileView, {dir.file("Foo.8bf"), dir.file("Bar.prm")}, pane, table, env);
  EXPECT_EQ(r.renamed.size(), 2u);
  EXPECT_TRUE(dir.Exists("Foo._bf"));
  EXPECT_TRUE(dir.Exists("Bar_prm"));
  EXPECT_EQ(dir.Read("Foo._bf"), "plugin");
  EXPECT_FALSE(pane.PluginViewFresh);
  EXPECT_EQ(shell.refreshes, 1);
  EXPECT_TRUE(shell.boxes.empty());

  cmd_EnableDisable_FileView(kFileView, {dir.file("Foo._bf")}, pane, table, env);
  EXPECT_TRUE(dir.Exists("Foo.8bf"));
}

TEST_F(EnableDisableTest, FileViewWithoutRuleSaysSo) {
  dir.Write("a.zip", "z");
  dir.Write("b.bin", "m");
  pane.PluginViewFresh = true;
  cmd_EnableDisable_FileView(kFileView, {dir.file("a.zip"), dir.file("b.bin")}, pane, table, env);
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "Enabling and disabling of this file type is not possible.");
  EXPECT_TRUE(dir.Exists("a.zip"));
  EXPECT_TRUE(pane.PluginViewFresh);

  shell.boxes.clear();
  cmd_EnableDisable_FileView(kFileView, {}, pane, table, env);
  ASSERT_EQ(shell.boxes.size(), 1u);
}

TEST_F(EnableDisableTest, FflViewRefuses) {
  dir.Write("Foo.8bf", "x");
  cmd_EnableDisable_FileView(kFFLView, {dir.file("Foo.8bf")}, pane, table, env);
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "En/Disable doesn't work in the FFL View.");
  EXPECT_TRUE(dir.Exists("Foo.8bf"));
}

TEST_F(EnableDisableTest, ExistingTargetIsNeverOverwrittenAndEndsTheRun) {
  dir.Write("A.8bf", "first");
  dir.Write("B.8bf", "active");
  dir.Write("B._bf", "disabled copy");
  dir.Write("C.8bf", "third");
  const ToggleResult r = cmd_EnableDisable_FileView(
      kFileView, {dir.file("A.8bf"), dir.file("B.8bf"), dir.file("C.8bf")}, pane, table, env);
  EXPECT_TRUE(r.failed);
  ASSERT_EQ(r.renamed.size(), 1u);
  EXPECT_TRUE(dir.Exists("A._bf"));
  EXPECT_EQ(dir.Read("B.8bf"), "active");
  EXPECT_EQ(dir.Read("B._bf"), "disabled copy");
  EXPECT_TRUE(dir.Exists("C.8bf"));
  EXPECT_EQ(shell.errors.size(), 1u);
}

TEST_F(EnableDisableTest, PluginViewRenamesAMultiFilterFileOnceAndMarksAllItsRows) {
  const std::string multi = dir.Write("Multi.8bf", "three filters");
  const std::string single = dir.Write("Single.8bf", "one filter");
  const std::string source = dir.Write("Src.afs", "source");
  for (const char* t : {"One", "Two", "Three"}) pane.plugins.Add({multi, "Cat", t, 0, 0});
  pane.plugins.Add({single, "Cat", "Alone", 0, 0});
  pane.plugins.Add({source, "Cat", "Src (.afs)", 0, 0});
  std::vector<FilterRow> rows = {{"+ One", 1, true},   {"+ Two", 2, true},         {"+ Three", 3, true},
                                 {"+ Alone", 4, false}, {"Src (.afs)", 5, true}};
  const ToggleResult r = cmd_EnableDisable_PluginView(pane, rows, table, env);
  ASSERT_EQ(r.renamed.size(), 1u);
  EXPECT_TRUE(dir.Exists("Multi._bf"));
  EXPECT_EQ(dir.Read("Multi._bf"), "three filters");
  for (int i = 1; i <= 3; ++i) EXPECT_EQ(pane.plugins[i].path, dir.file("Multi._bf"));
  EXPECT_EQ(rows[0].text, "- One");
  EXPECT_EQ(rows[2].text, "- Three");
  EXPECT_EQ(rows[3].text, "+ Alone");
  EXPECT_EQ(rows[4].text, "Src (.afs)");
  EXPECT_TRUE(dir.Exists("Src.afs"));
  EXPECT_TRUE(shell.boxes.empty());

  // Enabling again marks the rows with "+".
  cmd_EnableDisable_PluginView(pane, rows, table, env);
  EXPECT_TRUE(dir.Exists("Multi.8bf"));
  EXPECT_EQ(rows[1].text, "+ Two");
}


}  // namespace
}  // namespace trel
