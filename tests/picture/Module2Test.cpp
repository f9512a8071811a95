#include "picture/Module2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <vector>

namespace trel {
namespace {

TEST(PathHelpers, SplitAtTheLastSeparator) {
  EXPECT_EQ(FileNameOf("/a/b/c.8bf"), "c.8bf");
  EXPECT_EQ(FolderOf("/a/b/c.8bf"), "/a/b/");
  EXPECT_EQ(FileNameOf("/a/b/"), "");
  EXPECT_EQ(FolderOf("/a/b/"), "/a/b/");
  EXPECT_EQ(FileNameOf("plain.txt"), "plain.txt");
  EXPECT_EQ(FolderOf("plain.txt"), "");
  EXPECT_EQ(FileNameOf(""), "");
}

TEST(InvertDigits, MirrorsDigitsAndBlanksMinus) {
  EXPECT_EQ(InvertDigits("-12"), " 87");
  EXPECT_EQ(InvertDigits("0123456789"), "9876543210");
  EXPECT_EQ(InvertDigits("a&b"), "a&b");
}

// Sorts cells by their keys as the list does, and returns their texts.
std::vector<std::string> SortedTexts(std::vector<SortCell> cells, SortColumn column, bool ascending) {
  std::stable_sort(cells.begin(), cells.end(), [&](const SortCell& a, const SortCell& b) {
    return SortKeyOf(a, column, ascending) < SortKeyOf(b, column, ascending);
  });
  std::vector<std::string> texts;
  for (const auto& c : cells) texts.push_back(c.text);
  return texts;
}

SortCell Size(const std::string& text, int64_t value) { return {text, true, value}; }

TEST(SortKeyOf, SizesSortByValueBothWays) {
  const std::vector<SortCell> cells = {Size("999", 999), Size("1,000", 1000), Size("", 0), {" ", false, 0},
                                       Size("5,000,000,000", 5000000000LL)};
  EXPECT_EQ(SortedTexts(cells, SortColumn::Size, true),
            (std::vector<std::string>{" ", "", "999", "1,000", "5,000,000,000"}));
  EXPECT_EQ(SortedTexts(cells, SortColumn::Size, false),
            (std::vector<std::string>{"5,000,000,000", "1,000", "999", "", " "}));
}

TEST(SortKeyOf, SameDatesSortBySecond) {
  std::tm day{};
  day.tm_year = 2024 - 1900;
  day.tm_mon = 4;
  day.tm_mday = 17;
  day.tm_hour = 12;
  day.tm_isdst = -1;
  const int64_t noon = static_cast<int64_t>(std::mktime(&day));
  const std::vector<SortCell> cells = {{"b", true, noon + 2}, {"a", true, noon + 1}, {"c", true, noon + 59},
                                       {"older", true, noon - 86400 * 400}};
  EXPECT_EQ(SortedTexts(cells, SortColumn::Date, true), (std::vector<std::string>{"older", "a", "b", "c"}));
  EXPECT_EQ(SortedTexts(cells, SortColumn::Date, false), (std::vector<std::string>{"c", "b", "a", "older"}));
}

TEST(SortKeyOf, NamesSortCaseBlindAndLeadingBlankFirst) {
  const std::vector<SortCell> cells = {{"beta.8bf"}, {" zeta"}, {"Alpha.prm"}, {" .."}, {"alpha"}};
  EXPECT_EQ(SortedTexts(cells, SortColumn::Name, true),
            (std::vector<std::string>{" ..", " zeta", "alpha", "Alpha.prm", "beta.8bf"}));
  // Descending is the exact reverse, a prefix included.
  EXPECT_EQ(SortedTexts(cells, SortColumn::Name, false),
            (std::vector<std::string>{"beta.8bf", "Alpha.prm", "alpha", " zeta", " .."}));
}

TEST(DensityFactors, ApplyOnlyWhenBothTwipSizesDifferFromTheDesign) {
  const DensityFactors normal = DensityFactorsFor(TwipsPerPixel(96), TwipsPerPixel(96));
  EXPECT_TRUE(normal.apply);
  EXPECT_DOUBLE_EQ(normal.fx, 15.0 / 12.0);
  EXPECT_DOUBLE_EQ(ScaledFontSize(8.0, normal), 10.0);
  const DensityFactors design = DensityFactorsFor(12, 12);
  EXPECT_FALSE(design.apply);
  EXPECT_FALSE(DensityFactorsFor(12, 15).apply);
  EXPECT_DOUBLE_EQ(ScaledFontSize(8.0, design), 8.0);
}

}  // namespace
}  // namespace trel
