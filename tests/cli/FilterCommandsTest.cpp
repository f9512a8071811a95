#include <tuple>

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
  const std::tuple<std::vector<std::string>, int, const char*> rows[] = {
      {{"show", "--batch", bare}, 1, "bare.afs"},
      {{"show", work.file("nothing.afs")}, 1, "no such file"},
      {{"show", work.Write("junk.txt", std::string("\0\x01\xff garbage", 11))}, 1, "not a readable"},
      {{"show", work.Write("x.doc", "R:r\n\nG:g\n\nB:b\n\n")}, 1, ""},
      {{"show"}, 2, ""}, {{"frobnicate"}, 2, ""}};
  for (const auto& [args, exitCode, says] : rows) {
    const CliResult r = Run(args);
    EXPECT_EQ(r.exitCode, exitCode) << args.back();
    EXPECT_TRUE(Has(r.err, says) && r.out.empty()) << args.back() << ": " << r.err;
  }
  EXPECT_EQ(Run({"show", "--help"}).exitCode, 0);
}

TEST_F(FilterCommands, ChannelAfterTheRewriterName) {
  // Reading a fixed channel is `c` only in that channel's own code (the rewriter's
  // own tests hold the other cases); red is the default.
  struct Case {
    std::vector<std::string> channelArgs;
    std::string code, out;
  } cases[] = {
      {{}, "src(x,y,z) + T", "c+total"},
      {{}, "src(x,y,0)+rad(d,m,0)", "c+c"},
      {{"--channel", "g"}, "src(x,y,1) + rad(d,m,1)", "c+c"},
      {{"--channel", "b"}, "src(x,y,2)", "c"},
      // Alpha has no fixed index of its own here: only the channel-neutral forms shrink.
      {{"--channel", "a"}, "src(x,y,0)+src(x,y,3)+src(x,y,z)", "src(x,y,0)+src(x,y,3)+c"},
      // The option may stand after the code too, and beside --no-ff-optimize.
      {{"--no-ff-optimize", "--channel", "g"}, "src(x,y,1) + T", "src(x,y,1) + total"},
  };
  for (const Case& c : cases) {
    std::vector<std::string> args{"code", "optimize"};
    args.insert(args.end(), c.channelArgs.begin(), c.channelArgs.end());
    args.push_back(c.code);
    const CliResult r = Run(args);
    EXPECT_EQ(r.exitCode, 0) << c.code << r.err;
    EXPECT_EQ(r.out, c.out + "\n") << c.code;
  }
  EXPECT_EQ(Run({"code", "optimize", "src(x,y,1)", "--channel", "g"}).out, "c\n");

  // The dialect conversions take the option and give the same text for every channel.
  for (const char* channel : {"r", "a"}) {
    EXPECT_EQ(Run({"code", "prm2ps", "--channel", channel, "mix(a,b,n,d)*T/D"}).out,
              "mix(b,a,n,d)*total/512\n") << channel;
    EXPECT_EQ(Run({"code", "ps2prm", "--channel", channel, "z*512/D"}).out, "p*D/dmax\n") << channel;
  }

  // A wrong channel is wrong usage, named in the message, wherever it stands.
  for (const char* rewriter : {"optimize", "prm2ps", "ps2prm"}) {
    const CliResult bad = Run({"code", rewriter, "--channel", "x", "r"});
    EXPECT_TRUE(bad.exitCode == 2 && Has(bad.err, "--channel") && bad.out.empty()) << rewriter << bad.err;
    EXPECT_EQ(Run({"code", rewriter, "--channel"}).exitCode, 2) << rewriter;
  }
  EXPECT_EQ(Run({"code"}).exitCode, 2);
  const CliResult help = Run({"code", "optimize", "--help"});
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_TRUE(Has(help.out, "--channel")) << help.out;
}

}  // namespace
}  // namespace trel::test
