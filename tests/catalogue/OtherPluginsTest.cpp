#include <gtest/gtest.h>

#include "catalogue/PluginIdentification.h"
#include "support/PeBuilder.h"
#include "support/TempDir.h"

namespace trel {
namespace {

class OtherPluginsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    PluginTypeList list;
    for (const auto& row : DefaultPluginTypeRows()) list.push_back({row, true});
    GetPlugTypes(list, table);
  }
  test::TempDir dir;
  PluginTypeTable table;
};

TEST_F(OtherPluginsTest, VersionStringsAreReadByTheirKey) {
  const std::string path = dir.Write(
      "v.dll", test::BuildPe({test::Version({{"FileDescription", "Nice Effect"},
                                             {"InternalName", "nicefx"},
                                             {"ProductName", "Nice Suite"}})}));
  EXPECT_EQ(ReadVersionRessource(path, 0), "Nice Effect");
  EXPECT_EQ(ReadVersionRessource(path, 1), "nicefx");
  EXPECT_EQ(ReadVersionRessource(path, 2), "Nice Suite");
  EXPECT_EQ(ReadVersionRessource(path, 3), "");
  EXPECT_EQ(ReadVersionRessource(path, -1), "");
}

TEST_F(OtherPluginsTest, EveryOccurrenceOfTheKeyAddsItsValue) {
  const std::string path = dir.Write(
      "v.dll", test::BuildPe({test::Version({{"ProductName", "One"}}),
                              {"", 16, 2, test::VersionData({{"ProductName", "Two"}})}}));
  EXPECT_EQ(ReadVersionRessource(path, 2), "OneTwo");
}

TEST_F(OtherPluginsTest, TypeRowGivesTheCategoryAndItsNameSourceTheTitle) {
  const std::string path =
      dir.Write("reader.api", test::BuildPe({test::Version({{"ProductName", "Acrobat Helper"}})}));
  std::string category, title;
  EXPECT_TRUE(ReadOther8b(path, table, category, title));
  EXPECT_EQ(category, "[Acrobat Plugin]");
  EXPECT_EQ(title, "Acrobat Helper");
}

TEST_F(OtherPluginsTest, TitleFallsBackToTheNameBeforeItsFirstPoint) {
  std::string category, title;
  // Name source 0 finds no version resource here.
  EXPECT_TRUE(ReadOther8b(dir.Write("my.control.ax", "no version"), table, category, title));
  EXPECT_EQ(category, "[ActiveX Plugin]");
  EXPECT_EQ(title, "my");
  category.clear();
  title.clear();
  EXPECT_TRUE(ReadOther8b(dir.Write("brush_set_tub", "x"), table, category, title));
  EXPECT_EQ(category, "[PSP Tube]");
  EXPECT_EQ(title, "brush");
}

TEST_F(OtherPluginsTest, EmptyTableFilesEverythingUnderOtherPlugins) {
  std::string category, title;
  EXPECT_TRUE(ReadOther8b(dir.Write("thing.api", "x"), PluginTypeTable{}, category, title));
  EXPECT_EQ(category, "[Other Plugins]");
  EXPECT_EQ(title, "thing");
}

TEST_F(OtherPluginsTest, NameStartingWithAPointHasNoTitle) {
  std::string category, title;
  EXPECT_FALSE(ReadOther8b(dir.Write(".tub", "x"), table, category, title));
  EXPECT_EQ(category, "[PSP Tube]");
}

}  // namespace
}  // namespace trel
