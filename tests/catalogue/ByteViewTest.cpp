#include "catalogue/ByteView.h"

#include <gtest/gtest.h>

#include <string>

namespace trel {
namespace {

TEST(ByteView, PascalTextsAndTheRoomBehindThemStopAtTheWindow) {
  using namespace std::string_literals;
  const std::string bytes = "xx\x04" "Blur"s + std::string(3, '\0') + "Z" + "\x09" "Cut";
  const ByteView d(bytes);
  uint32_t count = 99;
  EXPECT_EQ(d.pascal(2, count), "Blur");
  EXPECT_EQ(count, 4u);
  EXPECT_EQ(d.zerosAfter(7), 3);  // up to the "Z"
  // A count that runs past the end keeps the count and what is there.
  EXPECT_EQ(d.pascal(11, count), "Cut");
  EXPECT_EQ(count, 9u);
  // Outside the window: no count, no text, no room.
  EXPECT_EQ(d.pascal(static_cast<int64_t>(bytes.size()), count), "");
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(d.pascal(-1, count), "");
  EXPECT_EQ(d.zerosAfter(static_cast<int64_t>(bytes.size())), 0);
  // The room is counted up to 257 zero bytes at most.
  const std::string zeros(1000, '\0');
  EXPECT_EQ(ByteView(zeros).zerosAfter(0), 257);
  EXPECT_EQ(ByteView(zeros).zerosAfter(900), 100);
}

}  // namespace
}  // namespace trel
