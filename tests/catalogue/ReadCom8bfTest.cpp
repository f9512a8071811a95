#include <gtest/gtest.h>

#include "catalogue/PluginIdentification.h"
#include "support/PeBuilder.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::BuildPe;
using test::PeOptions;
using test::PiplFilter;

class ReadCom8bfTest : public ::testing::Test {
 protected:
  ResourceProbe Probe(const std::string& bytes, bool* ok = nullptr, const std::string& name = "a.8bf") {
    const std::string path = dir.Write(name, bytes);
    ResourceProbe probe;
    const bool result = ReadCom8bf(path, probe, env);
    if (ok) *ok = result;
    return probe;
  }
  test::TempDir dir;
  FilterEnv env;
};

TEST_F(ReadCom8bfTest, FindsCategoryAndTitleOfPiplInBothPeWidths) {
  for (const bool wide : {true, false}) {
    PeOptions o;
    o.pe32plus = wide;
    const std::string bytes = BuildPe({test::Pipl({"Distort", "Twirl"})}, o);
    bool ok = false;
    const ResourceProbe p = Probe(bytes, &ok);
    ASSERT_TRUE(ok) << "pe32plus=" << wide;
    ASSERT_EQ(p.Count(), 1);
    EXPECT_EQ(p[1].category, "Distort");
    EXPECT_EQ(p[1].title, "Twirl");
    // The offset is the 1-based position of the category's first character.
    EXPECT_EQ(p[1].categoryOffset, static_cast<int32_t>(bytes.find("Distort") + 1));
    // "Distort" (7) padded with the count byte to 8: no zero after it.
    EXPECT_EQ(p[1].maximumLength, 7);
  }
}

TEST_F(ReadCom8bfTest, RoomCountsTheZerosBehindTheCategory) {
  PiplFilter f{"Blur", "Soft", true, 8};
  const ResourceProbe p = Probe(BuildPe({test::Pipl(f)}));
  // "Blur" + count = 5, padded to 8 (3 zeros), plus 8 extra zeros.
  EXPECT_EQ(p[1].maximumLength, 4 + 3 + 8);
}

TEST_F(ReadCom8bfTest, CategoryBeforeNameIsFoundAsWell) {
  PiplFilter f{"Artistic", "Paint", false};
  bool ok = false;
  const ResourceProbe p = Probe(BuildPe({test::Pipl(f)}), &ok);
  EXPECT_TRUE(ok);
  EXPECT_EQ(p[1].category, "Artistic");
  EXPECT_EQ(p[1].title, "Paint");
}

TEST_F(ReadCom8bfTest, MultiFilterPluginGivesOneElementPerResource) {
  const std::string bytes = BuildPe({test::Pipl({"One", "First"}, 16000),
                                     test::Pipl({"Two", "Second"}, 16001),
                                     test::Pipl({"Three", "Third"}, 16002)});
  bool ok = false;
  const ResourceProbe p = Probe(bytes, &ok);
  ASSERT_TRUE(ok);
  ASSERT_EQ(p.Count(), 3);
  EXPECT_EQ(p[1].title, "First");
  EXPECT_EQ(p[2].category, "Two");
  EXPECT_EQ(p[3].title, "Third");
  EXPECT_EQ(p[3].categoryOffset, static_cast<int32_t>(bytes.find("Three") + 1));
}

TEST_F(ReadCom8bfTest, PascalCountThatCoversPaddingIsCutAtTheFirstNul) {
  PiplFilter f{"Noise", "Grain", true, 0, true};
  bool ok = false;
  const ResourceProbe p = Probe(BuildPe({test::Pipl(f)}), &ok);
  EXPECT_TRUE(ok);
  EXPECT_EQ(p[1].category, "Noise");
  EXPECT_EQ(p[1].title, "Grain");
}

TEST_F(ReadCom8bfTest, OldStylePimiAndBfmMeetInTheSameElements) {
  const std::string bytes = BuildPe({test::Pimi("Old Category"), test::Bfm8("Old Title")});
  bool ok = false;
  const ResourceProbe p = Probe(bytes, &ok);
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
}

TEST_F(ReadCom8bfTest, PimiWithoutTitleIsFalseButKeepsTheCategory) {
  bool ok = true;
  const ResourceProbe p = Probe(BuildPe({test::Pimi("Lonely")}), &ok);
  EXPECT_FALSE(ok);
  EXPECT_EQ(p[1].category, "Lonely");
}

TEST_F(ReadCom8bfTest, LaterFilterWithEmptyFieldsDoesNotChangeTheResult) {
  PiplFilter second{"", "", true};
  second.withCategory = false;
  second.withName = false;
  bool ok = false;
  const ResourceProbe p = Probe(BuildPe({test::Pipl({"Good", "Filter"}, 1), test::Pipl(second, 2)}), &ok);
  EXPECT_TRUE(ok);
  EXPECT_EQ(p.Count(), 2);
  EXPECT_TRUE(p[2].category.empty());
}

TEST_F(ReadCom8bfTest, OtherResourcesBesideThePiplDoNotDisturb) {
  const std::string bytes =
      BuildPe({test::Version({{"FileDescription", "Something"}}), test::Pipl({"Render", "Clouds"}),
               {"", 3, 1, std::string(300, '\x11')}, {"", 14, 1, std::string(20, '\x22')}});
  bool ok = false;
  const ResourceProbe p = Probe(bytes, &ok);
  EXPECT_TRUE(ok);
  EXPECT_EQ(p[1].category, "Render");
}

TEST_F(ReadCom8bfTest, SectionHeaderFurtherDownTheTableIsFound) {
  PeOptions o;
  o.sectionsBefore = 6;
  o.peHeaderOffset = 0x118;
  bool ok = false;
  Probe(BuildPe({test::Pipl({"Sharpen", "Edges"})}, o), &ok);
  EXPECT_TRUE(ok);
}

TEST_F(ReadCom8bfTest, SectionHeaderBeforeTheHeaderWindowIsNotFound) {
  // A PE32 with its headers at 0x40 puts ".rsrc" as first section before
  // position 374, where the window starts.
  PeOptions o;
  o.pe32plus = false;
  o.peHeaderOffset = 0x40;
  o.sectionsBefore = 0;
  bool ok = true;
  const ResourceProbe p = Probe(BuildPe({test::Pipl({"Sharpen", "Edges"})}, o), &ok);
  EXPECT_FALSE(ok);
  EXPECT_EQ(p.Count(), 1);
}

TEST_F(ReadCom8bfTest, MacintoshSizeBinRefusedByTheFilterReaderIsFalse) {
  bool ok = true;
  Probe(std::string(99712, '\0'), &ok, "mac.bin");
  EXPECT_FALSE(ok);
}

}  // namespace
}  // namespace trel
