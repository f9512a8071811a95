#include "catalogue/ByteView.h"
#include "catalogue/CatalogueTesting.h"
#include "catalogue/PluginIdentification.h"

namespace trel {
namespace {

using test::BuildPe;
using test::PiplFilter;
using test::PlaceBytes;

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

// Signatures are searched at every fourth byte of a chunk that begins three
// bytes past a four-byte boundary: they stand at file offsets 2 modulo 4.
TEST(ReadComprm, SignaturesAndPropertiesGiveCategoryTitleAndPlace) {
  struct Case {
    const char* name;
    std::string bytes;
    const char* category;  // "": the reader answers false
    const char* title;
    int32_t offset = -1;  // -1: not checked
    int32_t room = -1;
  };
  const std::string longCategory(60, 'C');
  std::string refused = test::PremiereVideo("Nope");
  refused[4] = 'M';  // "MI" behind the signature
  std::string shortSecond = test::PremiereTransition("Page Peel Effect", "ab", 4);
  shortSecond += std::string(3, '\0') + "Page Peel" + '\0';
  const auto earlyAndMiddle = [](size_t size) {
    return PlaceBytes(size, {{50002, test::PremiereVideo("Early")}, {600002, test::PremiereVideo("Middle")}});
  };
  const std::string pipl = test::BuildPe({test::Pipl({"Keying", "Chroma Key", true, 4})});
  const Case cases[] = {
      {"PiPL properties", pipl, "Keying", "Chroma Key", static_cast<int32_t>(pipl.find("Keying") + 1), 6 + 1 + 4},
      // The chunk of the last 2% starts at 58803; the signature is its 201st
      // byte, and the offset counts 16 beyond.
      {"video at the end, first pass", PlaceBytes(60000, {{59002, test::PremiereVideo("Ripple")}}),
       "[Premiere Video]", "Ripple", 58803 + 201 + 16},
      {"newer video, title closer", PlaceBytes(60000, {{30002, test::PremiereVideo("Wave", 3)}}),
       "[Premiere Video]", "Wave"},
      {"audio", PlaceBytes(20000, {{10002, test::PremiereAudio("Echo")}}), "[Premiere Audio]", "Echo"},
      {"followed by MI", PlaceBytes(20000, {{10002, refused}}), "", ""},
      {"off the grid", PlaceBytes(20000, {{10004, test::PremiereVideo("Ripple")}}), "", ""},
      // The shorter of the two names; start + i + 8, with start + i one past
      // the signature's 1-based position.
      {"transition, second shorter", PlaceBytes(20000, {{10002, test::PremiereTransition("Wipe Left To Right", "Wipe")}}),
       "[Premiere Transition]", "Wipe", 10003 + 1 + 8},
      {"transition, first shorter", PlaceBytes(20000, {{10002, test::PremiereTransition("Iris", "Iris Round Shape")}}),
       "[Premiere Transition]", "Iris"},
      {"transition skips names of three letters", PlaceBytes(20000, {{10002, shortSecond}}),
       "[Premiere Transition]", "Page Peel"},
      // Without a resource section the first chunk covers positions 3 to 7000;
      // a category near its end makes it grow.
      {"chunk grows", PlaceBytes(100000, {{6950, test::PiplProperty("catg", longCategory)},
                                          {6002, test::PiplProperty("name", "Grown")}}),
       longCategory.c_str(), "Grown", 6950 + 17 + 1},
      // A file of 1,000,000 bytes has no early pass over its start.
      {"million bytes", earlyAndMiddle(1000000), "[Premiere Video]", "Middle"},
      {"a few bytes more", earlyAndMiddle(1000004), "[Premiere Video]", "Early"},
      {"nothing to find", std::string(30000, '\x55'), "", ""},
      {"empty", "", "", ""},
  };
  test::TempDir dir;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    std::string category, title;
    int32_t offset = 0, room = 0;
    const bool ok = ReadComprm(dir.Write("p.prm", c.bytes), category, title, offset, room);
    EXPECT_EQ(ok, *c.category != '\0');
    if (!ok) continue;
    EXPECT_EQ(category, c.category);
    EXPECT_EQ(title, c.title);
    if (c.offset >= 0) { EXPECT_EQ(offset, c.offset); }
    if (c.room >= 0) { EXPECT_EQ(room, c.room); }
  }
}

TEST(ByteView, PascalTextsAndTheRoomBehindThemStopAtTheWindow) {
  using namespace std::string_literals;
  const std::string bytes = "xx\x04" "Blur"s + std::string(3, '\0') + "Z" + "\x09" "Cut";
  const ByteView d(bytes);
  const auto pascal = [&](int64_t at) {
    uint32_t count = 99;
    const std::string text = d.pascal(at, count);
    return text + "/" + std::to_string(count);
  };
  const int64_t end = static_cast<int64_t>(bytes.size());
  // A count that runs past the end keeps the count and what is there;
  // outside the window there is no count, no text and no room.
  EXPECT_EQ(pascal(2) + " " + pascal(11) + " " + pascal(end) + " " + pascal(-1), "Blur/4 Cut/9 /0 /0");
  EXPECT_EQ(d.zerosAfter(7), 3);  // up to the "Z"
  EXPECT_EQ(d.zerosAfter(end), 0);
  // The room is counted up to 257 zero bytes at most.
  const std::string zeros(1000, '\0');
  EXPECT_EQ(ByteView(zeros).zerosAfter(0), 257);
  EXPECT_EQ(ByteView(zeros).zerosAfter(900), 100);
}

}  // namespace
}  // namespace trel
