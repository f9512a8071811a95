#include "filter/LabelShortening.h"

#include <gtest/gtest.h>

namespace trel {
namespace {

std::string Vocals(std::string label) { return RemoveVocals(label); }

TEST(RemoveVocals, ShortensLabelsForTheNarrowDialog) {
  EXPECT_EQ(Vocals("Brightness:"), "Brigh.");
  EXPECT_EQ(Vocals("Red Amount"), "Red Amou.");
  EXPECT_EQ(Vocals("Vertical Position"), "Vert. Pos.");
  EXPECT_EQ(Vocals("Wave Length"), "Wave Lngth");
  EXPECT_EQ(Vocals("Very Long Label Text"), "Vry Lng Lbl Txt");
  EXPECT_EQ(Vocals(""), "");
  EXPECT_EQ(Vocals("GREEN"), "GREEN");
  EXPECT_EQ(Vocals("Treshold"), "Tresh.");
  EXPECT_EQ(Vocals("Threshold"), "Thrshld");  // only the listed spelling is a known word
  EXPECT_EQ(Vocals("Opacity"), "Opcty");       // the first letter stays, even a vowel
  EXPECT_EQ(Vocals("CONTROLS"), "Contr.");
  EXPECT_EQ(Vocals("UPPER"), "UPPER");         // upper-case vowels stay
}

TEST(RemoveVocals, CutsTheColonOffItsArgument) {
  std::string label = "Size:";
  EXPECT_EQ(RemoveVocals(label), "Size");
  EXPECT_EQ(label, "Size");
}

TEST(LabelHelpers, RemoveCharsLettersSpaces) {
  EXPECT_EQ(RemoveChars("My Filter: v1.0 c:\\a/b"), "MyFilterv10cab");
  EXPECT_EQ(RemoveChars("..  ::"), "");
  std::string text = "a. b .c";
  RemoveLetters(text);
  EXPECT_EQ(text, "abc");
  EXPECT_EQ(RemoveSpaces(" a b. "), "ab.");
}

TEST(LabelHelpers, ReplaceAwithILeavesNamesThatBeginWithA) {
  EXPECT_EQ(ReplaceAwithI("abs(a)"), "abs(i)");
  EXPECT_EQ(ReplaceAwithI("a"), "i");
  EXPECT_EQ(ReplaceAwithI("add(a,al,ap,ax,an,ad)"), "add(i,al,ap,ax,an,ad)");
  EXPECT_EQ(ReplaceAwithI("val(0,a,ca)"), "val(0,i,ci)");  // the test looks forward only
}

}  // namespace
}  // namespace trel
