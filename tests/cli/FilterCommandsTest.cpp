#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "CliRunner.h"
#include "support/TempDir.h"

namespace trel::test {
namespace {

class FilterCommands : public ::testing::Test {
 protected:
  CliResult Run(const std::vector<std::string>& args) { return RunCli(args, home.path()); }
  TempDir home;
  TempDir work;
};

TEST_F(FilterCommands, ShowPrintsTheRecordOfEachSample) {
  for (const char* sample : {"WarmTone.afs", "SoftNegative.pff", "Ripple.txt"}) {
    const CliResult r = Run({"show", std::string(TREL_SAMPLES_DIR) + "/" + sample});
    ASSERT_EQ(r.exitCode, 0) << sample << r.err;
    const auto j = nlohmann::json::parse(r.out);
    EXPECT_EQ(j["category"], "Trel Samples");
    EXPECT_EQ(j["ctlName"].size(), 8u);
    EXPECT_EQ(j["mapName"].size(), 4u);
    EXPECT_EQ(j["ctlValue"].size(), 8u);
    EXPECT_EQ(j["codeA"], "a");
  }
  // The Premiere sample comes out in Photoshop dialect: the mix arguments swap back.
  const auto pff = nlohmann::json::parse(Run({"show", std::string(TREL_SAMPLES_DIR) + "/SoftNegative.pff"}).out);
  EXPECT_EQ(pff["codeR"], "mix(r,255-r,ctl(0),255)");
  EXPECT_EQ(pff["isPhotoshop"], false);
  EXPECT_EQ(pff["filename"], "SoftNegative.pff");
}

TEST_F(FilterCommands, ShowPrintsHighBytesAsLatin1) {
  work.Write("l.txt", "Title: Caf\xE9\nR:r\n\nG:g\n\nB:b\n\n");
  const CliResult r = Run({"show", work.file("l.txt")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(nlohmann::json::parse(r.out)["title"], "Caf\xC3\xA9");
}

TEST_F(FilterCommands, ShowBatchRefusesASourceWithoutItsMetadata) {
  work.Write("bare.afs", "%RGB-1.0\r0\r0\r0\r0\r0\r0\r0\r0\rr\r\rg\r\rb\r\ra\r\r");
  EXPECT_EQ(Run({"show", work.file("bare.afs")}).exitCode, 0);
  const CliResult batch = Run({"show", "--batch", work.file("bare.afs")});
  EXPECT_EQ(batch.exitCode, 1);
  EXPECT_NE(batch.err.find("bare.afs"), std::string::npos);
  EXPECT_TRUE(batch.out.empty());
}

TEST_F(FilterCommands, ShowFailsClearlyOnBadInput) {
  const CliResult missing = Run({"show", work.file("nothing.afs")});
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_NE(missing.err.find("no such file"), std::string::npos);
  work.Write("junk.txt", std::string("\0\x01\xff garbage", 11));
  const CliResult junk = Run({"show", work.file("junk.txt")});
  EXPECT_EQ(junk.exitCode, 1);
  EXPECT_NE(junk.err.find("not a readable"), std::string::npos);
  work.Write("x.doc", "R:r\n\nG:g\n\nB:b\n\n");
  EXPECT_EQ(Run({"show", work.file("x.doc")}).exitCode, 1);
  EXPECT_EQ(Run({"show"}).exitCode, 2);
  EXPECT_EQ(Run({"frobnicate"}).exitCode, 2);
  EXPECT_EQ(Run({"show", "--help"}).exitCode, 0);
}

TEST_F(FilterCommands, CodeRewriters) {
  EXPECT_EQ(Run({"code", "optimize", "src(x,y,z) + T"}).out, "c+total\n");
  EXPECT_EQ(Run({"code", "--channel", "g", "optimize", "src(x,y,1)"}).out, "c\n");
  EXPECT_EQ(Run({"code", "--no-ff-optimize", "optimize", "r + T"}).out, "r + total\n");
  EXPECT_EQ(Run({"code", "prm2ps", "mix(a,b,n,d)*T/D"}).out, "mix(b,a,n,d)*total/512\n");
  EXPECT_EQ(Run({"code", "ps2prm", "z*512/D"}).out, "p*D/dmax\n");
  EXPECT_EQ(Run({"code", "--channel", "q", "optimize", "r"}).exitCode, 2);
  EXPECT_EQ(Run({"code"}).exitCode, 2);
}

}  // namespace
}  // namespace trel::test
