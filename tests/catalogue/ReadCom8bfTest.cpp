#include "catalogue/CatalogueTesting.h"
#include "catalogue/PluginIdentification.h"

namespace trel {
namespace {

using test::BuildPe;
using test::PiplFilter;

class ReadCom8bfTest : public test::CatalogueTest {
 protected:
  ResourceProbe Probe(const std::string& bytes, bool& ok, const std::string& name = "a.8bf") {
    ResourceProbe probe;
    ok = ReadCom8bf(dir.Write(name, bytes), probe, env);
    return probe;
  }
};

TEST_F(ReadCom8bfTest, PiplVariantsGiveCategoryTitlePositionAndRoom) {
  struct Case {
    const char* name;
    const char* category;
    std::vector<test::PeResource> resources;
    test::PeOptions options;
    bool ok;
    int room;  // -1: not checked
  };
  const std::vector<test::PeResource> twirl = {test::Pipl({"Distort", "Twirl"})};
  const Case cases[] = {
      // "Distort" (7) with its count byte fills 8: no zero after it.
      {"PE32+", "Distort", twirl, {}, true, 7},
      {"PE32", "Distort", twirl, {.pe32plus = false}, true, 7},
      // "Blur" + count = 5, padded to 8 (3 zeros), plus 8 extra zeros.
      {"zeros behind", "Blur", {test::Pipl({"Blur", "Twirl", true, 8})}, {}, true, 4 + 3 + 8},
      {"category first", "Distort", {test::Pipl({"Distort", "Twirl", false})}, {}, true, -1},
      // The text is cut at the first zero.
      {"count covers padding", "Noise", {test::Pipl({"Noise", "Twirl", true, 0, true})}, {}, true, -1},
      {"other resources", "Distort",
       {test::Version({{"FileDescription", "Something"}}), twirl[0], {"", 3, 1, std::string(300, '\x11')},
        {"", 14, 1, std::string(20, '\x22')}},
       {}, true, -1},
      {"section header far down the table", "Distort", twirl, {.peHeaderOffset = 0x118, .sectionsBefore = 6}, true, -1},
      // ".rsrc" as first section of a PE32 at 0x40 stands before position 374,
      // where the search window starts.
      {"section header before the window", "Distort", twirl,
       {.pe32plus = false, .peHeaderOffset = 0x40, .sectionsBefore = 0}, false, -1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string bytes = BuildPe(c.resources, c.options);
    bool ok = false;
    const ResourceProbe p = Probe(bytes, ok);
    EXPECT_EQ(ok, c.ok);
    ASSERT_EQ(p.Count(), 1);
    if (!c.ok) continue;
    EXPECT_EQ(p[1].category, c.category);
    EXPECT_EQ(p[1].title, "Twirl");
    EXPECT_EQ(p[1].categoryOffset, static_cast<int32_t>(bytes.find(c.category) + 1));  // 1-based
    if (c.room >= 0) { EXPECT_EQ(p[1].maximumLength, c.room); }
  }
}

TEST_F(ReadCom8bfTest, MultiFilterPluginGivesOneElementPerResourceAndTheFirstDecides) {
  PiplFilter empty{"", ""};
  empty.withCategory = empty.withName = false;
  const std::string bytes =
      BuildPe({test::Pipl({"One", "First"}, 1), test::Pipl({"Two", "Second"}, 2), test::Pipl(empty, 3)});
  bool ok = false;
  const ResourceProbe p = Probe(bytes, ok);
  EXPECT_TRUE(ok);
  ASSERT_EQ(p.Count(), 3);
  EXPECT_EQ(p[1].title, "First");
  EXPECT_EQ(p[2].category, "Two");
  EXPECT_EQ(p[2].categoryOffset, static_cast<int32_t>(bytes.find("Two") + 1));
  EXPECT_TRUE(p[3].category.empty());
}

TEST_F(ReadCom8bfTest, OldStylePimiAndBfmMeetInTheSameElementsAndMacintoshBinsGoToTheFilterReader) {
  const std::string bytes = BuildPe({test::Pimi("Old Category"), test::Bfm8("Old Title")});
  bool ok = false;
  ResourceProbe p = Probe(bytes, ok);
  ASSERT_TRUE(ok);
  EXPECT_EQ(p[1].category, "Old Category");
  EXPECT_EQ(p[1].title, "Old Title");
  // The section's read position minus the data's offset in the section: a
  // signature, not the text's position.
  const size_t header = bytes.find(".rsrc");
  const int64_t raw = static_cast<unsigned char>(bytes[header + 20]) |
                      (static_cast<unsigned char>(bytes[header + 21]) << 8);
  const int64_t dataOffset = static_cast<int64_t>(bytes.find("Old Category")) - 2 - raw;
  EXPECT_EQ(p[1].categoryOffset, raw + 3 - dataOffset);

  p = Probe(BuildPe({test::Pimi("Lonely")}), ok);  // no title: false, the category stays
  EXPECT_FALSE(ok);
  EXPECT_EQ(p[1].category, "Lonely");

  Probe(std::string(99712, '\0'), ok, "mac.bin");  // the Macintosh size, refused by the filter reader
  EXPECT_FALSE(ok);
}

}  // namespace
}  // namespace trel
