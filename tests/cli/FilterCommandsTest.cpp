#include <nlohmann/json.hpp>

#include "CliRunner.h"

namespace trel::test {
namespace {

using FilterCommands = CliTest;

TEST_F(FilterCommands, ShowPrintsTheRecordOfEachSample) {
  for (const char* sample : {"WarmTone.afs", "SoftNegative.pff", "Ripple.txt"}) {
    const CliResult r = Run({"show", Sample(sample)});
    ASSERT_EQ(r.exitCode, 0) << sample << r.err;
    const auto j = nlohmann::json::parse(r.out);
    EXPECT_EQ(j["category"], "Trel Samples");
    EXPECT_EQ(std::vector<size_t>({j["ctlName"].size(), j["mapName"].size(), j["ctlValue"].size()}),
              (std::vector<size_t>{8, 4, 8}));
    EXPECT_EQ(j["codeA"], "a");
  }
  // The Premiere sample comes out in Photoshop dialect: the mix arguments swap back.
  const auto pff = nlohmann::json::parse(Run({"show", Sample("SoftNegative.pff")}).out);
  EXPECT_EQ(pff["codeR"], "mix(r,255-r,ctl(0),255)");
  EXPECT_EQ(pff["isPhotoshop"], false);
  EXPECT_EQ(pff["filename"], "SoftNegative.pff");
  // High bytes are Latin-1.
  const CliResult latin = Run({"show", work.Write("l.txt", "Title: Caf\xE9\nR:r\n\nG:g\n\nB:b\n\n")});
  ASSERT_EQ(latin.exitCode, 0) << latin.err;
  EXPECT_EQ(nlohmann::json::parse(latin.out)["title"], "Caf\xC3\xA9");
}

TEST_F(FilterCommands, ShowFailsClearlyOnBadInput) {
  // A source without its metadata shows, but not in a batch.
  const std::string bare = work.Write("bare.afs", "%RGB-1.0\r0\r0\r0\r0\r0\r0\r0\r0\rr\r\rg\r\rb\r\ra\r\r");
  EXPECT_EQ(Run({"show", bare}).exitCode, 0);
  const CliResult batch = Run({"show", "--batch", bare});
  EXPECT_EQ(batch.exitCode, 1);
  EXPECT_TRUE(Has(batch.err, "bare.afs")) << batch.err;
  EXPECT_TRUE(batch.out.empty());
  const CliResult missing = Run({"show", work.file("nothing.afs")});
  EXPECT_EQ(missing.exitCode, 1);
  EXPECT_TRUE(Has(missing.err, "no such file")) << missing.err;
  const CliResult junk = Run({"show", work.Write("junk.txt", std::string("\0\x01\xff garbage", 11))});
  EXPECT_EQ(junk.exitCode, 1);
  EXPECT_TRUE(Has(junk.err, "not a readable")) << junk.err;
  EXPECT_EQ(Run({"show", work.Write("x.doc", "R:r\n\nG:g\n\nB:b\n\n")}).exitCode, 1);
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
