#include "picture/Module2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <vector>

namespace trel {
namespace {

TEST(PathHelpers, SplitAtTheLastSeparator) {
  const std::array<const char*, 3> cases[] = {
      {"/a/b/c.8bf", "/a/b/", "c.8bf"}, {"/a/b/", "/a/b/", ""}, {"plain.txt", "", "plain.txt"}, {"", "", ""}};
  for (const auto& [path, folder, name] : cases) {
    EXPECT_EQ(FolderOf(path), folder) << path;
    EXPECT_EQ(FileNameOf(path), name) << path;
  }
}

TEST(InvertDigits, MirrorsDigitsAndBlanksMinus) {
  EXPECT_EQ(InvertDigits("-12"), " 87");
  EXPECT_EQ(InvertDigits("0123456789"), "9876543210");
  EXPECT_EQ(InvertDigits("a&b"), "a&b");
}

using Texts = std::vector<std::string>;

// Sorts cells by their keys as the list does, and returns their texts.
Texts SortedTexts(std::vector<SortCell> cells, SortColumn column, bool ascending) {
  std::stable_sort(cells.begin(), cells.end(), [&](const SortCell& a, const SortCell& b) {
    return SortKeyOf(a, column, ascending) < SortKeyOf(b, column, ascending);
  });
  Texts texts;
  for (const auto& c : cells) texts.push_back(c.text);
  return texts;
}

TEST(SortKeyOf, ValuesForSizesAndDatesNamesCaseBlindDescendingTheExactReverse) {
  std::tm day{};
  day.tm_year = 2024 - 1900, day.tm_mon = 4, day.tm_mday = 17, day.tm_hour = 12, day.tm_isdst = -1;
  const int64_t noon = static_cast<int64_t>(std::mktime(&day));
  const struct {
    SortColumn column;
    std::vector<SortCell> cells;
    Texts ascending;
  } cases[] = {
      {SortColumn::Size,  // a folder has no size and comes before an empty file
       {{"999", true, 999}, {"1,000", true, 1000}, {"", true, 0}, {" ", false, 0}, {"5,000,000,000", true, 5000000000}},
       {" ", "", "999", "1,000", "5,000,000,000"}},
      {SortColumn::Date,  // the same day sorts by the second
       {{"b", true, noon + 2}, {"a", true, noon + 1}, {"c", true, noon + 59}, {"older", true, noon - 86400 * 400}},
       {"older", "a", "b", "c"}},
      {SortColumn::Name,  // a leading blank first, a prefix before its longer names
       {{"beta.8bf"}, {" zeta"}, {"Alpha.prm"}, {" .."}, {"alpha"}},
       {" ..", " zeta", "alpha", "Alpha.prm", "beta.8bf"}}};
  for (const auto& c : cases) {
    EXPECT_EQ(SortedTexts(c.cells, c.column, true), c.ascending);
    EXPECT_EQ(SortedTexts(c.cells, c.column, false), Texts(c.ascending.rbegin(), c.ascending.rend()));
  }
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
