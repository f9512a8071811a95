#include "catalogue/CatalogueTesting.h"

namespace trel {
namespace {

PluginTypeList Rows(std::initializer_list<std::pair<const char*, bool>> rows) {
  PluginTypeList list;
  for (const auto& [text, on] : rows) list.push_back({text, on});
  return list;
}

TEST(PluginTypes, GetPlugTypesParsesCheckedRowsAndBuildsThePattern) {
  PluginTypeTable table;
  GetPlugTypes(Rows({{"Acrobat Plugin (api|2)", true}, {"Foo (p|3)", true}, {"Off (off|1)", false},
                     {"Long Ext (abcd|0)", true}}),
               table);
  ASSERT_EQ(table.PluginTypes.size(), 4u);
  const PluginType& first = table.PluginTypes[0];
  EXPECT_EQ(first.typeName + "|" + first.extension + "|" + first.nameSource, "Acrobat Plugin|api|2");
  EXPECT_TRUE(table.PluginTypes[2].empty());
  EXPECT_EQ(table.PluginTypePattern, ";*?api;*.p;*_p;*?abcd");
  GetPlugTypes({}, table);  // an empty list leaves the table as it stands
  EXPECT_EQ(table.PluginTypePattern, ";*?api;*.p;*_p;*?abcd");
  GetPlugTypes(Rows({{"A (aaa|3)", false}, {"B (bbb|3)", false}}), table);  // empty columns, no pattern
  EXPECT_EQ(table.PluginTypes.size(), 2u);
  EXPECT_TRUE(table.PluginTypes[0].empty() && table.PluginTypes[1].empty());
  EXPECT_EQ(table.PluginTypePattern, "");
}

// Which names count is ClassifyTypedName's (PluginKinds); here: the row found.
TEST(PluginTypes, MatchingFindsTheRowAndTheScannerSeesFourCharactersOnly) {
  const PluginTypeTable table = test::Types({"Tube (tub|3)", "Lightwave (p|3)", "Long (abcd|3)"});
  EXPECT_EQ(MatchPluginType(table, "/x/pic.TUB")->typeName, "Tube");
  EXPECT_EQ(MatchPluginType(table, "scene.p")->typeName, "Lightwave");
  EXPECT_EQ(MatchPluginType(table, "x.abcd")->typeName, "Long");
  EXPECT_EQ(MatchPluginType(table, "photo.bmp"), nullptr);
  EXPECT_EQ(MatchPluginTypeBySuffix(table, "abcd"), nullptr);
  EXPECT_EQ(MatchPluginTypeBySuffix(table, ".tub")->typeName, "Tube");
}

TEST(PluginTypes, ListFileRoundTripsRowsAndStatesAndFailsWithoutLoss) {
  test::TempDir dir;
  const PluginTypeList list = Rows({{"Acrobat Plugin (api|2)", true}, {"Maya Plugin (mll|3)", false}});
  ASSERT_TRUE(SaveList(dir.file("PlugTypes.ini"), list, true));
  PluginTypeList back = Rows({{"stale", true}});
  ASSERT_TRUE(LoadList(dir.file("PlugTypes.ini"), back, true));
  EXPECT_EQ(back, list);
  EXPECT_FALSE(LoadList(dir.file("none.ini"), back, true));
  EXPECT_EQ(back, list);
  EXPECT_FALSE(SaveList(dir.file("no/such/PlugTypes.ini"), list, true));
}

TEST(PluginTypes, ResetAddsMissingDefaultsAndKeepsUserRowsAndMarks) {
  PluginTypeList list = Rows({{"My Own (own|3)", true}, {"acrobat plugin (api|1)", false}});
  ResetPluginTypes(list);
  const size_t defaults = DefaultPluginTypeRows().size();
  ASSERT_EQ(list.size(), defaults + 1);  // the acrobat row counts as the default's twin
  EXPECT_EQ(list[0], (PluginTypeRow{"My Own (own|3)", true}));
  EXPECT_EQ(list[1], (PluginTypeRow{"acrobat plugin (api|1)", false}));
  PluginTypeList empty;
  ResetPluginTypes(empty);
  EXPECT_EQ(empty.size(), defaults);
}

TEST(PluginTypes, ToggleGivesAllRowsTheOppositeOfTheFirst) {
  PluginTypeList list = Rows({{"A (aaa|3)", true}, {"B (bbb|3)", false}, {"C (ccc|3)", true}});
  for (const bool all : {false, true}) {
    TogglePluginTypes(list);
    EXPECT_EQ(list, Rows({{"A (aaa|3)", all}, {"B (bbb|3)", all}, {"C (ccc|3)", all}}));
  }
}

TEST(PluginTypes, AddEditRemoveAndTheDialogsChecks) {
  PluginTypeList list;
  AddPluginType(list, "Foo", "foo", "3");
  EXPECT_EQ(list, Rows({{"Foo (foo|3)", true}}));
  list[0].checked = false;
  EXPECT_TRUE(EditPluginType(list, 0, "Bar", "bar", "1"));
  EXPECT_EQ(list, Rows({{"Bar (bar|1)", false}}));
  std::string name, ext, digit;
  ASSERT_TRUE(SplitPluginTypeRow(list[0].text, name, ext, digit));
  EXPECT_EQ(name + "/" + ext + "/" + digit, "Bar/bar/1");
  EXPECT_FALSE(EditPluginType(list, 5, "X", "x", "3") || RemovePluginType(list, 1));
  EXPECT_TRUE(RemovePluginType(list, 0) && list.empty());
  ext = "";
  EXPECT_NE(CheckPluginTypeInput("", ext), "");
  EXPECT_NE(CheckPluginTypeInput("Foo", ext), "");
  ext = "*.foo";
  EXPECT_EQ(CheckPluginTypeInput("Foo", ext), "");
  EXPECT_EQ(ext, "foo");
}

TEST(PluginTypes, InitialListComesFromTheFileOrTheOldSettingsOrTheDefaults) {
  test::TempDir dir;
  const PluginTypeList fresh = InitialPluginTypeList(dir.path(), [](const std::string&) { return std::string(); });
  ASSERT_EQ(fresh.size(), DefaultPluginTypeRows().size());
  for (const auto& row : fresh) EXPECT_TRUE(row.checked);
  const auto legacy = [](const std::string& key) {
    if (key == "PluginType0") return std::string("Old Kind (old|3)");
    if (key == "PluginType1") return std::string("Acrobat Plugin (api|2)");
    return std::string();
  };
  const PluginTypeList migrated = InitialPluginTypeList(dir.path(), legacy);
  ASSERT_EQ(migrated.size(), DefaultPluginTypeRows().size() + 1);
  EXPECT_EQ(migrated[0].text + "|" + migrated[1].text, "Old Kind (old|3)|Acrobat Plugin (api|2)");
  ASSERT_TRUE(SaveList(dir.file("PlugTypes.ini"), Rows({{"Only (onl|3)", false}}), true));
  EXPECT_EQ(InitialPluginTypeList(dir.path(), legacy), Rows({{"Only (onl|3)", false}}));
}

}  // namespace
}  // namespace trel
