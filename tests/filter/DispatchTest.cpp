#include "filter/Dispatch.h"

#include "FilterKit.h"
#include "filter/TextFormats.h"

namespace trel {
namespace {

using namespace test;
using Dispatch = FilterTest;

TEST(GetFilname, ExchangesTheExtensionByFormat) {
  FilterOptions options;
  EXPECT_EQ(GetFilname(3, "abc", options), "abcafs");  // no dot: glued on as it is
  EXPECT_EQ(GetFilname(9, "a.txt", options), "a.txt");
  EXPECT_EQ(GetFilname(0, "a.b.afs", options), "a.8bf");
  EXPECT_EQ(GetFilname(1, "f.afs", options) + GetFilname(2, "f.afs", options), "f.prmf.prm");
  EXPECT_EQ(GetFilname(4, "f.txt", options), "f.pff");
  EXPECT_EQ(GetFilname(5, "f.8bf", options), "f.txt");
  options.compile.templateChoice = CompileTemplate::Macintosh;
  EXPECT_EQ(GetFilname(0, "f.afs", options), "f.bin");
}

TEST_F(Dispatch, EditorAndBatchRulesForTheSourceFormats) {
  // An AFS file without its tail loads but is no batch source.
  dir.Write("bare.afs", kBareAfs);
  EXPECT_TRUE(LoadItFile(f, dir.path(), "bare.afs", env));
  EXPECT_EQ(f.filename, "bare.afs");
  EXPECT_FALSE(ReadFFfile(f, dir.file("bare.afs"), env));
  // TXT keeps the stem of its Filename line; the batch path leaves it alone.
  dir.Write("t.txt", "Filename: other.8bf\n" + kRgbTxt);
  ASSERT_TRUE(LoadItFile(f, dir.path(), "t.txt", env));
  EXPECT_EQ(f.filename, "other.txt");
  ASSERT_TRUE(ReadFFfile(f, dir.file("t.txt"), env));
  EXPECT_EQ(f.filename, "other.8bf");
  // Extensions compare in any case.
  dir.Write("UP.TXT", kRgbTxt);
  EXPECT_TRUE(LoadItFile(f, dir.path(), "UP.TXT", env));
  EXPECT_EQ(f.filename, "-NoName.txt");
  // Unknown kinds leave the record alone.
  dir.Write("x.doc", kRgbTxt);
  EXPECT_FALSE(LoadItFile(f, dir.path(), "x.doc", env));
  EXPECT_FALSE(ReadFFfile(f, dir.file("x.doc"), env));
  EXPECT_EQ(f.filename, "-NoName.txt");
}

TEST_F(Dispatch, PffComesIntoPhotoshopDialectOnlyForTheEditor) {
  FFFilter g = Entry("p.8bf", "P");
  g.codeR = "r*T/D";
  g.codeG = g.codeB = g.codeA = "p";
  g.isPhotoshop = false;
  Writeafspff(g, dir.path(), 1, env);  // Premiere code written as it is
  ASSERT_TRUE(LoadItFile(f, dir.path(), "p.pff", env));
  EXPECT_EQ(f.codeR, "r*total/512");
  EXPECT_EQ(f.codeG, "z");
  EXPECT_FALSE(f.isPhotoshop);  // the dialect flag still tells where it came from
  EXPECT_EQ(f.filename, "p.pff");
  ASSERT_TRUE(ReadFFfile(f, dir.file("p.pff"), env));
  EXPECT_EQ(f.codeR, "r*total/D");  // the optimizer's T; the D stays for the writers
}

}  // namespace
}  // namespace trel
