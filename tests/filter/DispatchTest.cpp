#include "filter/Dispatch.h"

#include <gtest/gtest.h>

#include "filter/TextFormats.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;

TEST(GetFilname, ExchangesTheExtensionByFormat) {
  FilterOptions options;
  EXPECT_EQ(GetFilname(3, "abc", options), "abcafs");  // no dot: glued on as it is
  EXPECT_EQ(GetFilname(9, "a.txt", options), "a.txt");
  EXPECT_EQ(GetFilname(0, "a.b.afs", options), "a.8bf");
  EXPECT_EQ(GetFilname(1, "f.afs", options), "f.prm");
  EXPECT_EQ(GetFilname(2, "f.afs", options), "f.prm");
  EXPECT_EQ(GetFilname(4, "f.txt", options), "f.pff");
  EXPECT_EQ(GetFilname(5, "f.8bf", options), "f.txt");
  options.compile.templateChoice = CompileTemplate::Macintosh;
  EXPECT_EQ(GetFilname(0, "f.afs", options), "f.bin");
}

class Dispatch : public ::testing::Test {
 protected:
  FilterEnv Env() {
    FilterEnv env;
    env.shell = &shell;
    return env;
  }
  TempDir dir;
  test::RecordingShell shell;
  FFFilter f;
};

TEST_F(Dispatch, AfsWithoutTailLoadsButIsNotConvertedInABatch) {
  dir.Write("bare.afs", "%RGB-1.0\r0\r0\r0\r0\r0\r0\r0\r0\rr\r\rg\r\rb\r\ra\r\r");
  EXPECT_TRUE(LoadItFile(f, dir.path(), "bare.afs", Env()));
  EXPECT_EQ(f.filename, "bare.afs");
  EXPECT_FALSE(ReadFFfile(f, dir.file("bare.afs"), Env()));
}

TEST_F(Dispatch, TxtKeepsTheStemOfItsFilenameLine) {
  dir.Write("t.txt", "Filename: other.8bf\nR:r\n\nG:g\n\nB:b\n\n");
  ASSERT_TRUE(LoadItFile(f, dir.path(), "t.txt", Env()));
  EXPECT_EQ(f.filename, "other.txt");
  ASSERT_TRUE(ReadFFfile(f, dir.file("t.txt"), Env()));
  EXPECT_EQ(f.filename, "other.8bf");  // the batch path leaves it alone
}

TEST_F(Dispatch, PffComesIntoPhotoshopDialectOnlyForTheEditor) {
  FFFilter g;
  g.filename = "p.8bf";
  g.title = "P";
  g.codeR = "r*T/D";
  g.codeG = g.codeB = g.codeA = "p";
  g.isPhotoshop = false;
  Writeafspff(g, dir.path(), 1, Env());  // Premiere code written as it is
  ASSERT_TRUE(LoadItFile(f, dir.path(), "p.pff", Env()));
  EXPECT_EQ(f.codeR, "r*total/512");
  EXPECT_EQ(f.codeG, "z");
  EXPECT_FALSE(f.isPhotoshop);  // the dialect flag still tells where it came from
  EXPECT_EQ(f.filename, "p.pff");
  ASSERT_TRUE(ReadFFfile(f, dir.file("p.pff"), Env()));
  EXPECT_EQ(f.codeR, "r*total/D");  // the optimizer's T; the D stays for the writers
}

TEST_F(Dispatch, UnknownKindsLeaveTheRecordAlone) {
  dir.Write("x.doc", "R:r\n\nG:g\n\nB:b\n\n");
  f.title = "kept";
  EXPECT_FALSE(LoadItFile(f, dir.path(), "x.doc", Env()));
  EXPECT_FALSE(ReadFFfile(f, dir.file("x.doc"), Env()));
  EXPECT_EQ(f.title, "kept");
}

TEST_F(Dispatch, ExtensionsAreComparedInAnyCase) {
  dir.Write("UP.TXT", "R:r\n\nG:g\n\nB:b\n\n");
  EXPECT_TRUE(LoadItFile(f, dir.path(), "UP.TXT", Env()));
  EXPECT_EQ(f.filename, "-NoName.txt");
}

}  // namespace
}  // namespace trel
