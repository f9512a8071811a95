#include "settings/Conversions.h"

#include <gtest/gtest.h>

#include <climits>

namespace trel {
namespace {

TEST(LenientNumber, ReadsTheLeadingNumberAndIgnoresTheRest) {
  const std::pair<const char*, double> cases[] = {
      {"", 0},      {"abc", 0},      {"12abc", 12},  {"  42", 42},  {"-7", -7},    {"+3", 3},
      {"3.5", 3.5}, {".5", 0.5},     {"1e3", 1000},  {"1e", 1},     {"2.5e-1x", 0.25},
      {"-", 0},     {"1e400", 0},    {"0x10", 0},    {"7 8", 7},
  };
  for (const auto& [text, value] : cases) EXPECT_DOUBLE_EQ(LenientNumber(text), value) << '"' << text << '"';
}

TEST(LenientInt, RoundsAndStaysInRange) {
  EXPECT_EQ(LenientInt("2.6"), 3);
  EXPECT_EQ(LenientInt("99999999999999"), INT_MAX);
  EXPECT_EQ(LenientInt("-99999999999999"), INT_MIN);
  EXPECT_EQ(LenientInt("garbage"), 0);
}

TEST(ParseBool, AcceptsBooleanWordsAndNumbersOnly) {
  const std::pair<const char*, std::optional<bool>> cases[] = {
      {"True", true}, {"FALSE", false},   {" true ", true},      {"-1", true},
      {"0", false},   {"", std::nullopt}, {"yes", std::nullopt}, {"1abc", std::nullopt}};
  for (const auto& [text, value] : cases) EXPECT_EQ(ParseBool(text), value) << '"' << text << '"';
}

TEST(CheckValue, OnlyTheThreeStatesOfABox) {
  const std::pair<const char*, std::optional<int>> cases[] = {
      {"0", 0},   {"1", 1},   {"2", 2},   {"3", std::nullopt}, {"abc", std::nullopt},
      {"1x", std::nullopt}, {"", std::nullopt}};
  for (const auto& [text, value] : cases) EXPECT_EQ(CheckValue(text), value) << '"' << text << '"';
}

}  // namespace
}  // namespace trel
