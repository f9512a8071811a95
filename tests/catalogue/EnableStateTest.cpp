#include "catalogue/CatalogueTesting.h"
#include "catalogue/EnableState.h"

#include "base/PluginKinds.h"

namespace trel {
namespace {

struct NameCase {
  const char* from;
  const char* to;  // "": no rule
  bool enabling;
  int view = kFileView;
};

void ExpectToggles(const PluginTypeTable& table, const std::vector<NameCase>& cases, bool bothViews) {
  for (const NameCase& c : cases) {
    for (const int view : {c.view, bothViews ? kPluginView : c.view}) {
      SCOPED_TRACE(std::string(c.from) + " in view " + std::to_string(view));
      const auto t = ToggleName(c.from, table, view);
      ASSERT_EQ(t.has_value(), *c.to != '\0');
      if (t) {
        EXPECT_EQ(t->newName, c.to);
        EXPECT_EQ(t->enabling, c.enabling);
      }
    }
  }
}

TEST(ToggleName, PluginSuffixRulesAreTheSameInBothViews) {
  ExpectToggles({},
                {{"Foo.8bf", "Foo._bf", false}, {"Foo._bf", "Foo.8bf", true},   {"Foo_8bf", "Foo.8bf", true},
                 {"Foo.8b-", "Foo.8bf", true},  {"Foo.prm", "Foo_prm", false},  {"Foo._rm", "Foo.prm", true},
                 {"Foo.pr-", "Foo.prm", true},  {"Foo_prm", "Foo.prm", true},   {"Foo.aex", "Foo_aex", false},
                 {"Foo._ex", "Foo.aex", true},  {"Foo_aex", "Foo.aex", true},   {"FooXprm", "Foo.prm", true},
                 {"Foo.PRM", "Foo_prm", false}, {"/a/b/Foo.8BF", "/a/b/Foo._bf", false},
                 {"Foo8bf", "", false},         {"Foo.bin", "", false},         {"Foo.zip", "", false},
                 {"Foo.ae-", "", false},        {"bf", "", false}},
                true);
}

// Whatever form of a plugin the program recognises, the toggle turns it into
// the other state of the same kind, and a disabling writes the kind's own
// disabled form: the rename and every list that recognises plugins agree.
TEST(ToggleName, EveryRecognisedPluginFormTogglesWithinItsKind) {
  for (const char* form : {".8bf", "._bf", "_8bf", ".prm", "_prm", "._rm", ".aex", "_aex", "._ex"}) {
    const std::string name = std::string("Foo") + form;
    SCOPED_TRACE(name);
    const PluginName before = ClassifyPluginName(name);
    ASSERT_TRUE(before);
    for (const int view : {kFileView, kPluginView}) {
      const auto t = ToggleName(name, {}, view);
      ASSERT_TRUE(t.has_value());
      const PluginName after = ClassifyPluginName(t->newName);
      EXPECT_EQ(after.kind, before.kind);
      EXPECT_EQ(after.disabled, !before.disabled);
      EXPECT_EQ(t->enabling, before.disabled);
      const std::string_view written = before.disabled ? ActiveSuffix(before.kind) : DisablingSuffix(before.kind);
      EXPECT_EQ(t->newName, "Foo" + std::string(written));
    }
  }
  // The Macintosh form has no disabled name.
  EXPECT_FALSE(ToggleName("Foo.bin", {}, kFileView).has_value());
}

TEST(ToggleName, TypeRowsUseTheirOwnExtensionLengthAndOnlyWhenChecked) {
  // Enabling writes the extension as the row spells it. Disabling: the File
  // View keeps the whole extension, lower-cased; the Plugin View takes the
  // last three letters only.
  ExpectToggles(test::Types({"Acrobat Plugin (api|2)", "Lightwave Plugin (p|3)", "Long (ABCD|3)"}),
                {{"x.api", "x_api", false}, {"x_api", "x.api", true}, {"scene.p", "scene_p", false, kPluginView},
                 {"scene_p", "scene.p", true, kPluginView}, {"x_abcd", "x.ABCD", true}, {"x.AbCd", "x_abcd", false},
                 {"x.AbCd", "x_bcd", false, kPluginView}, {"xapi", "", false}},
                false);
  EXPECT_FALSE(ToggleName("x.api", test::Types({"Acrobat Plugin (api|2)"}, false), kFileView).has_value());
}

class EnableDisableTest : public test::CatalogueTest {
 protected:
  ToggleResult FileView(const std::vector<std::string>& names, int view = kFileView) {
    std::vector<std::string> paths;
    for (const std::string& n : names) paths.push_back(dir.file(n));
    return cmd_EnableDisable_FileView(view, paths, pane, table, env);
  }
  PaneCatalogue pane;
  PluginTypeTable table;
};

TEST_F(EnableDisableTest, FileViewRenamesEachSelectedFileAndRefreshes) {
  dir.Write("Foo.8bf", "plugin");
  dir.Write("Bar.prm", "premiere");
  pane.PluginViewFresh = true;
  EXPECT_EQ(FileView({"Foo.8bf", "Bar.prm"}).renamed.size(), 2u);
  EXPECT_EQ(dir.Read("Foo._bf"), "plugin");
  EXPECT_TRUE(dir.Exists("Bar_prm") && !pane.PluginViewFresh);
  EXPECT_EQ(shell.refreshes, 1);
  FileView({"Foo._bf"});
  EXPECT_TRUE(dir.Exists("Foo.8bf"));
}

TEST_F(EnableDisableTest, FileViewRefusals) {
  dir.Write("a.zip", "z");
  dir.Write("b.bin", "m");
  dir.Write("Foo.8bf", "x");
  pane.PluginViewFresh = true;
  const std::optional<Error> types = FileView({"a.zip", "b.bin"}).error;
  const std::optional<Error> none = FileView({}).error;
  const std::optional<Error> ffl = FileView({"Foo.8bf"}, kFFLView).error;
  ASSERT_TRUE(types && none && ffl);
  EXPECT_EQ(types->reason, "Enabling and disabling of this file type is not possible.");
  EXPECT_EQ(none->reason, types->reason);
  EXPECT_EQ(ffl->reason, "En/Disable doesn't work in the FFL View.");
  for (const Error* e : {&*types, &*none, &*ffl}) EXPECT_EQ(e->kind, ErrorKind::Warning);
  EXPECT_TRUE(shell.boxes.empty() && dir.Exists("a.zip") && dir.Exists("Foo.8bf") && pane.PluginViewFresh);
}

TEST_F(EnableDisableTest, ExistingTargetIsNeverOverwrittenAndEndsTheRun) {
  dir.Write("A.8bf", "first");
  dir.Write("B.8bf", "active");
  dir.Write("B._bf", "disabled copy");
  dir.Write("C.8bf", "third");
  const ToggleResult r = FileView({"A.8bf", "B.8bf", "C.8bf"});
  EXPECT_TRUE(r.failed);
  ASSERT_EQ(r.renamed.size(), 1u);
  EXPECT_TRUE(dir.Exists("A._bf") && dir.Exists("C.8bf"));
  EXPECT_EQ(dir.Read("B.8bf") + "|" + dir.Read("B._bf"), "active|disabled copy");
  ASSERT_TRUE(r.error);
  EXPECT_EQ(std::tie(r.error->kind, r.error->path), std::make_tuple(ErrorKind::Fault, dir.file("B.8bf")));
  EXPECT_NE(r.error->reason.find("exists already"), std::string::npos);
}

TEST_F(EnableDisableTest, PluginViewRenamesAMultiFilterFileOnceAndMarksAllItsRows) {
  const std::string multi = dir.Write("Multi.8bf", "three filters");
  for (const char* t : {"One", "Two", "Three"}) pane.plugins.Add({multi, "Cat", t, 0, 0});
  pane.plugins.Add({dir.Write("Single.8bf", "one filter"), "Cat", "Alone", 0, 0});
  pane.plugins.Add({dir.Write("Src.afs", "source"), "Cat", "Src (.afs)", 0, 0});
  std::vector<FilterRow> rows = {{"+ One", 1, true},    {"+ Two", 2, true},       {"+ Three", 3, true},
                                 {"+ Alone", 4, false}, {"Src (.afs)", 5, true}};
  const ToggleResult first = cmd_EnableDisable_PluginView(pane, rows, table, env);
  ASSERT_EQ(first.renamed.size(), 1u);
  EXPECT_FALSE(first.error);
  EXPECT_EQ(dir.Read("Multi._bf"), "three filters");
  for (int i = 1; i <= 3; ++i) EXPECT_EQ(pane.plugins[i].path, dir.file("Multi._bf"));
  std::string texts;
  for (const FilterRow& row : rows) texts += row.text + "|";
  EXPECT_EQ(texts, "- One|- Two|- Three|+ Alone|Src (.afs)|");
  EXPECT_TRUE(dir.Exists("Src.afs"));

  cmd_EnableDisable_PluginView(pane, rows, table, env);  // enabling marks with "+"
  EXPECT_TRUE(dir.Exists("Multi.8bf"));
  EXPECT_EQ(rows[1].text, "+ Two");
}

}  // namespace
}  // namespace trel
