#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "CliRunner.h"
#include "support/TempDir.h"

namespace trel::test {
namespace {

std::string Sample(const std::string& name) { return std::string(TREL_SAMPLES_DIR) + "/" + name; }

class FflCommand : public ::testing::Test {
 protected:
  CliResult Run(const std::vector<std::string>& args) { return RunCli(args, home.path()); }
  nlohmann::json List() {
    const CliResult r = Run({"ffl", "list", "--json", lib});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    return nlohmann::json::parse(r.out);
  }
  TempDir home;
  TempDir work;
  std::string lib = work.file("lib.ffl");
};

TEST_F(FflCommand, CreateAddDeleteAndList) {
  CliResult r = Run({"ffl", "create", lib, Sample("WarmTone.afs"), Sample("Ripple.txt"),
                     work.Write("x.doc", "no")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_NE(r.err.find("x.doc: skipped"), std::string::npos);
  EXPECT_EQ(work.Read("lib.ffl").substr(0, 15), "FFL1.0\r\n    2\r\n");

  r = Run({"ffl", "add", lib, Sample("SoftNegative.pff")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(work.Read("lib.ffl").substr(0, 15), "FFL1.0\r\n    3\r\n");

  nlohmann::json list = List();
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[0]["title"], "Warm Tone");
  EXPECT_EQ(list[1]["title"], "Ripple");
  EXPECT_EQ(list[2]["number"], 3);
  EXPECT_EQ(list[2]["filename"], "SoftNegative.8bf");

  r = Run({"ffl", "delete", lib, "2"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  r = Run({"ffl", "delete", lib, "2"});  // already gone
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_NE(r.err.find("no entry 2"), std::string::npos);
  list = List();
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[1]["number"], 3);
  EXPECT_EQ(work.Read("lib.ffl").substr(0, 15), "FFL1.0\r\n    3\r\n");

  r = Run({"ffl", "list", lib});
  EXPECT_EQ(r.out, "1\tTrel Samples\tWarm Tone\tTrel developers\tWarmTone.8bf\n"
                   "3\tTrel Samples\tSoft Negative\tTrel developers\tSoftNegative.8bf\n");
  r = Run({"ffl", "list", "--search", "RIPPLE", lib});  // deleted entries aren't found
  EXPECT_TRUE(r.out.empty());
  r = Run({"ffl", "list", "--search", "negative", lib});
  EXPECT_EQ(r.out.substr(0, 2), "3\t");
}

TEST_F(FflCommand, ExtractWritesTheChosenEntriesKeepingPremiereCodeAsPremiere) {
  ASSERT_EQ(Run({"ffl", "create", "--ffl11", lib, Sample("WarmTone.afs"), Sample("SoftNegative.pff")}).exitCode, 0);
  EXPECT_EQ(work.Read("lib.ffl").substr(0, 6), "FFL1.1");
  CliResult r = Run({"ffl", "extract", lib, "2", "--to", "pff", "-o", work.file("out")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out, work.file("out/SoftNegative.pff") + "\n");
  // The sample's code survives library and extraction unchanged.
  const CliResult before = Run({"show", "--batch", Sample("SoftNegative.pff")});
  const CliResult after = Run({"show", "--batch", work.file("out/SoftNegative.pff")});
  ASSERT_EQ(after.exitCode, 0) << after.err;
  EXPECT_EQ(nlohmann::json::parse(after.out)["codeR"], nlohmann::json::parse(before.out)["codeR"]);

  r = Run({"ffl", "extract", lib, "--to", "txt", "-o", work.file("all")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(work.Exists("all/WarmTone.txt"));
  EXPECT_TRUE(work.Exists("all/SoftNegative.txt"));
}

TEST_F(FflCommand, BrokenOrForeignLibrariesFailClearly) {
  CliResult r = Run({"ffl", "list", work.Write("junk.ffl", std::string("\0\xff\x10", 3))});
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_NE(r.err.find("Format Violation"), std::string::npos);

  r = Run({"ffl", "list", work.file("none.ffl")});
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_NE(r.err.find("no such file"), std::string::npos);

  ASSERT_EQ(Run({"ffl", "create", lib, Sample("WarmTone.afs"), Sample("Ripple.txt")}).exitCode, 0);
  const std::string whole = work.Read("lib.ffl");
  work.Write("cut.ffl", whole.substr(0, whole.size() - 20));
  r = Run({"ffl", "list", work.file("cut.ffl")});
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_EQ(r.out.substr(0, 2), "1\t");  // what could be read is still shown
  EXPECT_NE(r.err.find("of 29 lines"), std::string::npos);

  r = Run({"ffl", "add", work.file("cut.ffl"), Sample("WarmTone.afs")});
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_EQ(work.Read("cut.ffl"), whole.substr(0, whole.size() - 20));

  r = Run({"ffl", "create", work.file("new.ffl"), work.Write("x.doc", "no")});
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_FALSE(work.Exists("new.ffl"));
  EXPECT_EQ(Run({"ffl", "delete", lib}).exitCode, 2);
}

}  // namespace
}  // namespace trel::test
