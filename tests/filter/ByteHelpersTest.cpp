#include "filter/ByteHelpers.h"
#include "filter/LabelShortening.h"

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;

std::unique_ptr<BinFile> OpenBytes(const TempDir& dir, const std::string& bytes) {
  return BinFile::Open(dir.Write("f.bin", bytes), BinFile::Mode::Binary);
}

TEST(ByteHelpers, FixedFieldWritersPlaceTheirBytes) {
  TempDir dir;
  auto file = BinFile::Open(dir.file("w.bin"), BinFile::Mode::Output);
  Writecode("", *file);
  file->Close();
  EXPECT_EQ(dir.Read("w.bin"), "\r");
  file = BinFile::Open(dir.file("s.bin"), BinFile::Mode::Output);
  string2bytes("", 1, *file);
  file->Close();
  EXPECT_EQ(dir.Read("s.bin"), std::string(1, '\0'));

  file = OpenBytes(dir, "xxxxxxxx");
  string2bytes("ab", 2, *file);    // x a b 0
  string2bytes_w0("C", 6, *file);  // no closing zero
  file->Close();
  EXPECT_EQ(dir.Read("f.bin"), std::string("xab\0xCxx", 8));
  file = OpenBytes(dir, "xxxxxxxx");
  ReplaceB("ab", 2, *file);  // one position further than string2bytes
  file->Close();
  EXPECT_EQ(dir.Read("f.bin"), std::string("xxab\0xxx", 8));
  file = OpenBytes(dir, "ab");  // writing behind the end grows the file with zeros
  string2bytes("z", 5, *file);
  file->Close();
  EXPECT_EQ(dir.Read("f.bin"), std::string("ab\0\0z\0", 6));
}

TEST(ByteHelpers, LineReaders) {
  TempDir dir;
  auto file = OpenBytes(dir, "ab\rc\r\rrest");
  EXPECT_EQ(ReadtoDD(*file), "abc");  // joins lines broken inside code
  EXPECT_EQ(file->Loc(), 7);          // behind the second CR
  EXPECT_EQ(ReadtoDD(*file), "rest");  // end of file ends the line without failing
  EXPECT_EQ(ReadtoDD(*file), "");

  file = OpenBytes(dir, "one\r\ntwo\rX3");
  EXPECT_EQ(ReadtoD(*file), "one");
  EXPECT_EQ(ReadtoD(*file), "\ntwo");  // ReadtoD drops only the CR
  EXPECT_EQ(Byt2str(*file), "X3");
  file = OpenBytes(dir, "one\r\ntwo\rX3");
  EXPECT_EQ(Byt2str(*file), "one");  // the byte behind the CR goes too
  EXPECT_EQ(Byt2str(*file), "two");
  EXPECT_EQ(Byt2str(*file), "3");
  EXPECT_TRUE(file->AtEnd());
  EXPECT_EQ(ReadtoD(*file), "");
}

TEST(ByteHelpers, TextFieldReaders) {
  TempDir dir;
  struct Case {
    std::string bytes;
    int64_t at;
    bool comments;  // bytes2string, else bytes2string2
    std::string text;
  };
  const Case cases[] = {
      {std::string("xab\r\ncd\ref\0zz", 13), 2, false, "abcdef"},  // CR and CR LF vanish
      {std::string("\0Old\0", 5), 1, false, std::string("\0Old", 4)},  // a first 0 does not end it
      {"abc", 2, false, "bc"},  // the end of the file ends the field
      {"abc", 10, false, ""},
      {std::string("1/2\0", 4), 1, true, "1/2"},
      {std::string("1//x\r2\0", 7), 1, true, "12"},
      {std::string("a//c\r\nb\0", 8), 1, true, "ab"},
      // A comment with no CR behind it runs through the zeros to the next CR,
      // or to the end of the file, which ends the walk.
      {std::string("a//c\0\0\0next\rz\0", 14), 1, true, "az"},
      {std::string("a//c\0\0", 6), 1, true, "a"},
      {"a/", 1, true, "a/"},
  };
  for (const Case& c : cases) {
    auto file = OpenBytes(dir, c.bytes);
    EXPECT_EQ(c.comments ? bytes2string(c.at, *file) : bytes2string2(c.at, *file), c.text) << c.bytes;
  }
}

TEST(ByteHelpers, GetUntillAndLeadingNumber) {
  EXPECT_EQ(GetUntill("a(b,c),d", ','), "a(b,c)");
  EXPECT_EQ(GetUntill("abc", ','), "abc");
  EXPECT_EQ(GetUntill("", ','), "");
  EXPECT_EQ(GetUntill("a[b,c]", ','), "a[b");  // only round brackets count
  EXPECT_EQ(GetUntill("f(x)),y", ')'), "f(x)");  // the closing bracket of f counts first
  EXPECT_EQ(GetUntill("a)b,c", ','), "a)b,c");  // depth below 0 never matches
  EXPECT_EQ(LeadingNumber("42abc"), 42);
  EXPECT_EQ(LeadingNumber("  -7"), -7);
  EXPECT_EQ(LeadingNumber("x1"), 0);
  EXPECT_EQ(LeadingNumber(""), 0);
  EXPECT_GT(LeadingNumber("99999999999999999999999"), 255);  // saturates, no overflow
}


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
