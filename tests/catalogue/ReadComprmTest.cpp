#include <gtest/gtest.h>

#include "catalogue/PluginIdentification.h"
#include "support/PeBuilder.h"
#include "support/TempDir.h"

namespace trel {
namespace {

struct PremiereResult {
  bool ok = false;
  std::string category, title;
  int32_t offset = 0, room = 0;
};

class ReadComprmTest : public ::testing::Test {
 protected:
  PremiereResult Read(const std::string& bytes) {
    PremiereResult r;
    r.ok = ReadComprm(dir.Write("p.prm", bytes), r.category, r.title, r.offset, r.room);
    return r;
  }
  test::TempDir dir;
};

// Signatures are searched at every fourth byte of a chunk that begins three
// bytes past a four-byte boundary: they stand at file offsets 2 modulo 4.

TEST_F(ReadComprmTest, PiplPropertiesInTheResourceSectionGiveCategoryAndTitle) {
  const std::string bytes = test::BuildPe({test::Pipl({"Keying", "Chroma Key", true, 4})});
  const PremiereResult r = Read(bytes);
  EXPECT_TRUE(r.ok);
  EXPECT_EQ(r.category, "Keying");
  EXPECT_EQ(r.title, "Chroma Key");
  EXPECT_EQ(r.offset, static_cast<int32_t>(bytes.find("Keying") + 1));
  EXPECT_EQ(r.room, 6 + 1 + 4);
}

TEST_F(ReadComprmTest, VideoFilterAtTheEndIsFoundInTheFirstPass) {
  const PremiereResult r = Read(test::PlaceBytes(60000, {{59002, test::PremiereVideo("Ripple")}}));
  EXPECT_TRUE(r.ok);
  EXPECT_EQ(r.category, "[Premiere Video]");
  EXPECT_EQ(r.title, "Ripple");
  // The chunk of the last 2% starts at 58803; the signature is its 201st byte,
  // and the offset counts 16 beyond.
  EXPECT_EQ(r.offset, 58803 + 201 + 16);
}

TEST_F(ReadComprmTest, NewerVideoFilterHasItsTitleCloser) {
  const PremiereResult r = Read(test::PlaceBytes(60000, {{30002, test::PremiereVideo("Wave", 3)}}));
  EXPECT_EQ(r.title, "Wave");
  EXPECT_EQ(r.category, "[Premiere Video]");
}

TEST_F(ReadComprmTest, AudioFilter) {
  const PremiereResult r = Read(test::PlaceBytes(20000, {{10002, test::PremiereAudio("Echo")}}));
  EXPECT_TRUE(r.ok);
  EXPECT_EQ(r.category, "[Premiere Audio]");
  EXPECT_EQ(r.title, "Echo");
}

TEST_F(ReadComprmTest, SignatureFollowedByMIIsRejected) {
  std::string sig = test::PremiereVideo("Nope");
  sig[4] = 'M';
  EXPECT_FALSE(Read(test::PlaceBytes(20000, {{10002, sig}})).ok);
}

TEST_F(ReadComprmTest, SignatureOffTheFourByteGridIsNotSeen) {
  EXPECT_FALSE(Read(test::PlaceBytes(20000, {{10004, test::PremiereVideo("Ripple")}})).ok);
}

TEST_F(ReadComprmTest, TransitionTakesTheShorterOfItsTwoNames) {
  PremiereResult r = Read(test::PlaceBytes(20000, {{10002, test::PremiereTransition("Wipe Left To Right", "Wipe")}}));
  EXPECT_TRUE(r.ok);
  EXPECT_EQ(r.category, "[Premiere Transition]");
  EXPECT_EQ(r.title, "Wipe");
  // start + i + 8, with start + i one past the signature's 1-based position.
  EXPECT_EQ(r.offset, 10003 + 1 + 8);

  r = Read(test::PlaceBytes(20000, {{10002, test::PremiereTransition("Iris", "Iris Round Shape")}}));
  EXPECT_EQ(r.title, "Iris");
}

TEST_F(ReadComprmTest, TransitionSkipsSecondNamesOfThreeLettersOrLess) {
  std::string sig = test::PremiereTransition("Page Peel Effect", "ab", 4);
  sig += std::string(3, '\0') + "Page Peel" + '\0';
  const PremiereResult r = Read(test::PlaceBytes(20000, {{10002, sig}}));
  EXPECT_EQ(r.title, "Page Peel");
}

TEST_F(ReadComprmTest, MillionByteFileIsSearchedAtItsStartOnlyByTheLastPass) {
  // One signature in the first 11% and one at 60%. A file of 1,000,000 bytes
  // has no early pass over its start, so the later signature is found first.
  const auto file = [](size_t size) {
    return test::PlaceBytes(size, {{50002, test::PremiereVideo("Early")},
                                   {600002, test::PremiereVideo("Middle")}});
  };
  EXPECT_EQ(Read(file(1000000)).title, "Middle");
  EXPECT_EQ(Read(file(1000004)).title, "Early");
}

TEST_F(ReadComprmTest, CategoryNearTheChunkEndMakesTheChunkGrow) {
  // Without a resource section the first chunk covers positions 3 to 7000.
  const std::string longCategory(60, 'C');
  const std::string bytes = test::PlaceBytes(
      100000, {{6950, test::PiplProperty("catg", longCategory)}, {6002, test::PiplProperty("name", "Grown")}});
  const PremiereResult r = Read(bytes);
  EXPECT_TRUE(r.ok);
  EXPECT_EQ(r.category, longCategory);
  EXPECT_EQ(r.title, "Grown");
  EXPECT_EQ(r.offset, 6950 + 17 + 1);  // 1-based position of the first character
}

TEST_F(ReadComprmTest, NothingToFindIsFalse) {
  EXPECT_FALSE(Read(std::string(30000, '\x55')).ok);
  EXPECT_FALSE(Read("").ok);
}

}  // namespace
}  // namespace trel
