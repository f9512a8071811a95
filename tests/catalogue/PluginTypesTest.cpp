#include <gtest/gtest.h>

#include <filesystem>

#include "catalogue/PluginTypes.h"
#include "support/TempDir.h"

namespace trel {
namespace {

PluginTypeList Rows(std::initializer_list<std::pair<const char*, bool>> rows) {
  PluginTypeList list;
  for (const auto& [text, on] : rows) list.push_back({text, on});
  return list;
}

TEST(PluginTypes, DefaultTableHas41RowsInTheirOrder) {
  const auto& rows = DefaultPluginTypeRows();
  ASSERT_EQ(rows.size(), 41u);
  EXPECT_EQ(rows.front(), "Acrobat Plugin (api|2)");
  EXPECT_EQ(rows[2], "Lightwave Plugin (p|3)");
  EXPECT_EQ(rows.back(), "PhotoBrush Plugin (xtr|3)");
}

TEST(PluginTypes, GetPlugTypesParsesCheckedRowsAndBuildsThePattern) {
  PluginTypeTable table;
  GetPlugTypes(Rows({{"Acrobat Plugin (api|2)", true}, {"Foo (p|3)", true}, {"Off (off|1)", false},
                     {"Long Ext (abcd|0)", true}}),
               table);
  ASSERT_EQ(table.PluginTypes.size(), 4u);
  EXPECT_EQ(table.PluginTypes[0].typeName, "Acrobat Plugin");
  EXPECT_EQ(table.PluginTypes[0].extension, "api");
  EXPECT_EQ(table.PluginTypes[0].nameSource, "2");
  EXPECT_TRUE(table.PluginTypes[2].empty());
  EXPECT_EQ(table.PluginTypePattern, ";*?api;*.p;*_p;*?abcd");
}

TEST(PluginTypes, AllRowsUncheckedLeavesEmptyColumnsAndNoPattern) {
  PluginTypeTable table;
  table.PluginTypePattern = ";*?old";
  GetPlugTypes(Rows({{"A (aaa|3)", false}, {"B (bbb|3)", false}}), table);
  EXPECT_EQ(table.PluginTypes.size(), 2u);
  EXPECT_FALSE(table.isEmpty());
  EXPECT_TRUE(table.PluginTypes[0].empty() && table.PluginTypes[1].empty());
  EXPECT_EQ(table.PluginTypePattern, "");
}

TEST(PluginTypes, EmptyListLeavesTheTableAsItStands) {
  PluginTypeTable table;
  GetPlugTypes(Rows({{"A (aaa|3)", true}}), table);
  GetPlugTypes({}, table);
  EXPECT_EQ(table.PluginTypePattern, ";*?aaa");
}

TEST(PluginTypes, MatchingWantsAPointOrUnderscoreBeforeTheExtension) {
  PluginTypeTable table;
  GetPlugTypes(Rows({{"Tube (tub|3)", true}, {"Lightwave (p|3)", true}, {"Long (abcd|3)", true}}), table);
  EXPECT_EQ(MatchPluginType(table, "/x/pic.TUB")->typeName, "Tube");
  EXPECT_EQ(MatchPluginType(table, "pic_tub")->typeName, "Tube");
  EXPECT_EQ(MatchPluginType(table, "scene.p")->typeName, "Lightwave");
  EXPECT_EQ(MatchPluginType(table, "pictub"), nullptr);
  EXPECT_EQ(MatchPluginType(table, "photo.bmp"), nullptr);
  EXPECT_EQ(MatchPluginType(table, "x.abcd")->typeName, "Long");
  // The scanner only looks at four characters: a four-letter extension never fits.
  EXPECT_EQ(MatchPluginTypeBySuffix(table, "abcd"), nullptr);
  EXPECT_EQ(MatchPluginTypeBySuffix(table, ".tub")->typeName, "Tube");
}

TEST(PluginTypes, ListFileRoundTripsRowsAndStates) {
  test::TempDir dir;
  const PluginTypeList list = Rows({{"Acrobat Plugin (api|2)", true}, {"Maya Plugin (mll|3)", false}});
  ASSERT_TRUE(SaveList(dir.file("PlugTypes.ini"), list, true));
  EXPECT_EQ(dir.Read("PlugTypes.ini"), "Acrobat Plugin (api|2)\r\nTrue\r\nMaya Plugin (mll|3)\r\nFalse\r\n");
  PluginTypeList back = Rows({{"stale", true}});
  ASSERT_TRUE(LoadList(dir.file("PlugTypes.ini"), back, true));
  EXPECT_EQ(back, list);
}

TEST(PluginTypes, ListFileReadsNumericStatesAndSplitsAtCommas) {
  test::TempDir dir;
  dir.Write("l.ini", "A, B (ab|3)\n-1\nC (ccc|3)\n0\n");
  PluginTypeList list;
  ASSERT_TRUE(LoadList(dir.file("l.ini"), list, true));
  // The comma makes two items of one row, so the pairs shift.
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[0].text, "A");
  EXPECT_EQ(list[1].text, "-1");
  EXPECT_EQ(list[2].text, "0");
}

TEST(PluginTypes, MissingListFileLeavesTheListAlone) {
  test::TempDir dir;
  PluginTypeList list = Rows({{"Keep (kee|3)", true}});
  EXPECT_FALSE(LoadList(dir.file("none.ini"), list, true));
  EXPECT_EQ(list.size(), 1u);
}

TEST(PluginTypes, SaveListIntoAMissingFolderFailsWithoutLeavingAnything) {
  test::TempDir dir;
  EXPECT_FALSE(SaveList(dir.file("no/such/PlugTypes.ini"), Rows({{"A (aaa|3)", true}}), true));
}

TEST(PluginTypes, ResetAddsMissingDefaultsAndKeepsUserRowsAndMarks) {
  PluginTypeList list = Rows({{"My Own (own|3)", true}, {"acrobat plugin (api|1)", false}});
  ResetPluginTypes(list);
  ASSERT_EQ(list.size(), 42u);  // the acrobat row counts as the default's twin
  EXPECT_EQ(list[0].text, "My Own (own|3)");
  EXPECT_TRUE(list[0].checked);
  EXPECT_EQ(list[1].text, "acrobat plugin (api|1)");
  EXPECT_FALSE(list[1].checked);
  EXPECT_EQ(list[2].text, "trueSpace Plugin (tsx|1)");

  PluginTypeList empty;
  ResetPluginTypes(empty);
  EXPECT_EQ(empty.size(), 41u);
}

TEST(PluginTypes, ToggleGivesAllRowsTheOppositeOfTheFirst) {
  PluginTypeList list = Rows({{"A (aaa|3)", true}, {"B (bbb|3)", false}, {"C (ccc|3)", true}});
  TogglePluginTypes(list);
  for (const auto& row : list) EXPECT_FALSE(row.checked);
  TogglePluginTypes(list);
  for (const auto& row : list) EXPECT_TRUE(row.checked);
}

TEST(PluginTypes, AddEditRemoveWorkOnRowTexts) {
  PluginTypeList list;
  AddPluginType(list, "Foo", "foo", "3");
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0].text, "Foo (foo|3)");
  EXPECT_TRUE(list[0].checked);
  list[0].checked = false;
  EXPECT_TRUE(EditPluginType(list, 0, "Bar", "bar", "1"));
  EXPECT_EQ(list[0].text, "Bar (bar|1)");
  EXPECT_FALSE(list[0].checked);
  std::string name, ext, digit;
  ASSERT_TRUE(SplitPluginTypeRow(list[0].text, name, ext, digit));
  EXPECT_EQ(name + "/" + ext + "/" + digit, "Bar/bar/1");
  EXPECT_FALSE(EditPluginType(list, 5, "X", "x", "3"));
  EXPECT_FALSE(RemovePluginType(list, 1));
  EXPECT_TRUE(RemovePluginType(list, 0));
  EXPECT_TRUE(list.empty());
}

TEST(PluginTypes, DialogInputIsCheckedAndCleaned) {
  std::string ext = "";
  EXPECT_EQ(CheckPluginTypeInput("", ext), "Please enter the Plugin Name!");
  EXPECT_EQ(CheckPluginTypeInput("Foo", ext), "Please enter the File Extension e.g. 8bf ");
  ext = "*.foo";
  EXPECT_EQ(CheckPluginTypeInput("Foo", ext), "");
  EXPECT_EQ(ext, "foo");
}

TEST(PluginTypes, InitialListComesFromTheFileOrTheDefaultsOrTheOldSettings) {
  test::TempDir dir;
  const auto none = [](const std::string&) { return std::string(); };
  PluginTypeList fresh = InitialPluginTypeList(dir.path(), none);
  ASSERT_EQ(fresh.size(), 41u);
  for (const auto& row : fresh) EXPECT_TRUE(row.checked);

  const auto legacy = [](const std::string& key) {
    if (key == "PluginType0") return std::string("Old Kind (old|3)");
    if (key == "PluginType1") return std::string("Acrobat Plugin (api|2)");
    return std::string();
  };
  PluginTypeList migrated = InitialPluginTypeList(dir.path(), legacy);
  ASSERT_EQ(migrated.size(), 42u);
  EXPECT_EQ(migrated[0].text, "Old Kind (old|3)");
  EXPECT_EQ(migrated[1].text, "Acrobat Plugin (api|2)");

  ASSERT_TRUE(SaveList(dir.file("PlugTypes.ini"), Rows({{"Only (onl|3)", false}}), true));
  PluginTypeList fromFile = InitialPluginTypeList(dir.path(), legacy);
  ASSERT_EQ(fromFile.size(), 1u);
  EXPECT_FALSE(fromFile[0].checked);

  // A deleted file and a press on Reset bring the 41 rows back.
  std::filesystem::remove(dir.file("PlugTypes.ini"));
  PluginTypeList restored;
  ResetPluginTypes(restored);
  EXPECT_EQ(restored.size(), 41u);
}

}  // namespace
}  // namespace trel
