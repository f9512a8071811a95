#include "catalogue/CatalogueTesting.h"
#include "catalogue/PluginIdentification.h"

namespace trel {
namespace {

TEST(ReadVersionRessource, ModesPickTheirKeyAndEveryOccurrenceAddsItsValue) {
  test::TempDir dir;
  const std::string path = dir.Write(
      "v.dll", test::BuildPe({test::Version({{"FileDescription", "Nice Effect"},
                                             {"InternalName", "nicefx"},
                                             {"ProductName", "One"}}),
                              {"", 16, 2, test::VersionData({{"ProductName", "Two"}})}}));
  EXPECT_EQ(ReadVersionRessource(path, 0), "Nice Effect");
  EXPECT_EQ(ReadVersionRessource(path, 1), "nicefx");
  EXPECT_EQ(ReadVersionRessource(path, 2), "OneTwo");
  EXPECT_EQ(ReadVersionRessource(path, 3), "");
  EXPECT_EQ(ReadVersionRessource(path, -1), "");
}

TEST(ReadOther8b, TypeRowGivesTheCategoryTheNameSourceOrTheNameBeforeItsPointTheTitle) {
  test::TempDir dir;
  const PluginTypeTable defaults = test::DefaultTypes(), none;
  struct Case {
    const char* file;
    std::string bytes;
    const PluginTypeTable& table;
    bool ok;
    const char* category;
    const char* title;
  };
  const Case cases[] = {
      {"reader.api", test::BuildPe({test::Version({{"ProductName", "Acrobat Helper"}})}), defaults, true,
       "[Acrobat Plugin]", "Acrobat Helper"},
      {"my.control.ax", "no version", defaults, true, "[ActiveX Plugin]", "my"},
      {"brush_set_tub", "x", defaults, true, "[PSP Tube]", "brush"},
      {"thing.api", "x", none, true, "[Other Plugins]", "thing"},
      {".tub", "x", defaults, false, "[PSP Tube]", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    std::string category, title;
    EXPECT_EQ(ReadOther8b(dir.Write(c.file, c.bytes), c.table, category, title), c.ok);
    EXPECT_EQ(category, c.category);
    if (c.ok) { EXPECT_EQ(title, c.title); }
  }
}

}  // namespace
}  // namespace trel
