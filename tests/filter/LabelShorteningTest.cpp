#include "filter/LabelShortening.h"

#include <gtest/gtest.h>

namespace trel {
namespace {

TEST(RemoveVocals, ShortensLabelsForTheNarrowDialog) {
  const std::pair<std::string, std::string> cases[] = {
      {"Brightness:", "Brigh."}, {"Red Amount", "Red Amou."}, {"Vertical Position", "Vert. Pos."},
      {"Wave Length", "Wave Lngth"}, {"Very Long Label Text", "Vry Lng Lbl Txt"}, {"", ""},
      {"GREEN", "GREEN"}, {"Treshold", "Tresh."},
      {"Threshold", "Thrshld"},  // only the listed spelling is a known word
      {"Opacity", "Opcty"},      // the first letter stays, even a vowel
      {"CONTROLS", "Contr."}, {"UPPER", "UPPER"}};  // upper-case vowels stay
  for (auto [label, shortened] : cases) EXPECT_EQ(RemoveVocals(label), shortened) << label;
  std::string label = "Size:";  // the colon is cut off the argument too
  EXPECT_EQ(RemoveVocals(label), "Size");
  EXPECT_EQ(label, "Size");
}

TEST(LabelHelpers, RemoveCharsLettersSpacesAndReplaceAwithI) {
  EXPECT_EQ(RemoveChars("My Filter: v1.0 c:\\a/b"), "MyFilterv10cab");
  EXPECT_EQ(RemoveChars("..  ::"), "");
  std::string text = "a. b .c";
  RemoveLetters(text);
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(RemoveSpaces(" a b. "), "ab.");
  // Names that begin with a stay; the test looks forward only.
  EXPECT_EQ(ReplaceAwithI("abs(a)"), "abs(i)");
  EXPECT_EQ(ReplaceAwithI("a"), "i");
  EXPECT_EQ(ReplaceAwithI("add(a,al,ap,ax,an,ad)"), "add(i,al,ap,ax,an,ad)");
  EXPECT_EQ(ReplaceAwithI("val(0,a,ca)"), "val(0,i,ci)");
}

}  // namespace
}  // namespace trel
