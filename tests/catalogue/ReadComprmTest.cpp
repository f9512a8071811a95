#include "catalogue/CatalogueTesting.h"
#include "catalogue/PluginIdentification.h"

namespace trel {
namespace {

using test::PlaceBytes;

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

}  // namespace
}  // namespace trel
