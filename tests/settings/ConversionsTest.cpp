#include "settings/Conversions.h"

#include <gtest/gtest.h>

#include <climits>

namespace trel {
namespace {

TEST(LenientNumber, ReadsTheLeadingNumberAndIgnoresTheRest) {
  struct Case {
    const char* text;
    double value;
  } cases[] = {
      {"", 0},      {"abc", 0},      {"12abc", 12},  {"  42", 42},  {"-7", -7},    {"+3", 3},
      {"3.5", 3.5}, {".5", 0.5},     {"1e3", 1000},  {"1e", 1},     {"2.5e-1x", 0.25},
      {"-", 0},     {"1e400", 0},    {"0x10", 0},    {"7 8", 7},
  };
  for (const Case& c : cases) EXPECT_DOUBLE_EQ(LenientNumber(c.text), c.value) << '"' << c.text << '"';
}

TEST(LenientInt, RoundsAndStaysInRange) {
  EXPECT_EQ(LenientInt("2.6"), 3);
  EXPECT_EQ(LenientInt("99999999999999"), INT_MAX);
  EXPECT_EQ(LenientInt("-99999999999999"), INT_MIN);
  EXPECT_EQ(LenientInt("garbage"), 0);
}

TEST(ParseBool, AcceptsBooleanWordsAndNumbersOnly) {
  EXPECT_EQ(ParseBool("True"), true);
  EXPECT_EQ(ParseBool("FALSE"), false);
  EXPECT_EQ(ParseBool(" true "), true);
  EXPECT_EQ(ParseBool("-1"), true);
  EXPECT_EQ(ParseBool("0"), false);
  EXPECT_EQ(ParseBool(""), std::nullopt);
  EXPECT_EQ(ParseBool("yes"), std::nullopt);
  EXPECT_EQ(ParseBool("1abc"), std::nullopt);
  EXPECT_EQ(BoolText(true), "True");
  EXPECT_EQ(BoolText(false), "False");
}

TEST(CheckValue, OnlyTheThreeStatesOfABox) {
  EXPECT_EQ(CheckValue("0"), 0);
  EXPECT_EQ(CheckValue("1"), 1);
  EXPECT_EQ(CheckValue("2"), 2);
  EXPECT_EQ(CheckValue("3"), std::nullopt);
  EXPECT_EQ(CheckValue("abc"), std::nullopt);
  EXPECT_EQ(CheckValue("1x"), std::nullopt);
  EXPECT_EQ(CheckValue(""), std::nullopt);
}

}  // namespace
}  // namespace trel
