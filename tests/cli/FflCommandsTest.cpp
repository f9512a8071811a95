#include <nlohmann/json.hpp>

#include "CliRunner.h"

namespace trel::test {
namespace {

class FflCommand : public CliTest {
 protected:
  nlohmann::json List() {
    const CliResult r = Run({"ffl", "list", "--json", lib});
    EXPECT_EQ(r.exitCode, 0) << r.err;
    return nlohmann::json::parse(r.out);
  }
  std::string Header() { return work.Read("lib.ffl").substr(0, 15); }
  std::string lib = work.file("lib.ffl");
};

TEST_F(FflCommand, CreateAddDeleteAndList) {
  CliResult r = Run({"ffl", "create", lib, Sample("WarmTone.afs"), Sample("Ripple.txt"), work.Write("x.doc", "no")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_TRUE(Has(r.err, "x.doc: skipped")) << r.err;
  EXPECT_EQ(Header(), "FFL1.0\r\n    2\r\n");
  r = Run({"ffl", "add", lib, Sample("SoftNegative.pff")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(Header(), "FFL1.0\r\n    3\r\n");
  nlohmann::json list = List();
  ASSERT_EQ(list.size(), 3u);
  EXPECT_EQ(list[0]["title"].get<std::string>() + "|" + list[1]["title"].get<std::string>(), "Warm Tone|Ripple");
  EXPECT_EQ(list[2]["number"], 3);
  EXPECT_EQ(list[2]["filename"], "SoftNegative.8bf");
  ASSERT_EQ(Run({"ffl", "delete", lib, "2"}).exitCode, 0);
  r = Run({"ffl", "delete", lib, "2"});  // already gone
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_TRUE(Has(r.err, "no entry 2")) << r.err;
  list = List();
  ASSERT_EQ(list.size(), 2u);
  EXPECT_EQ(list[1]["number"], 3);
  EXPECT_EQ(Header(), "FFL1.0\r\n    3\r\n");
  EXPECT_EQ(Run({"ffl", "list", lib}).out, "1\tTrel Samples\tWarm Tone\tTrel developers\tWarmTone.8bf\n"
                                           "3\tTrel Samples\tSoft Negative\tTrel developers\tSoftNegative.8bf\n");
  EXPECT_TRUE(Run({"ffl", "list", "--search", "RIPPLE", lib}).out.empty());  // deleted entries aren't found
  EXPECT_EQ(Run({"ffl", "list", "--search", "negative", lib}).out.substr(0, 2), "3\t");
}

TEST_F(FflCommand, ExtractWritesTheChosenEntriesKeepingPremiereCodeAsPremiere) {
  ASSERT_EQ(Run({"ffl", "create", "--ffl11", lib, Sample("WarmTone.afs"), Sample("SoftNegative.pff")}).exitCode, 0);
  EXPECT_EQ(Header().substr(0, 6), "FFL1.1");
  CliResult r = Run({"ffl", "extract", lib, "2", "--to", "pff", "-o", work.file("out")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(r.out, work.file("out/SoftNegative.pff") + "\n");
  // The sample's code survives library and extraction unchanged.
  const CliResult before = Run({"show", "--batch", Sample("SoftNegative.pff")});
  const CliResult after = Run({"show", "--batch", work.file("out/SoftNegative.pff")});
  ASSERT_EQ(after.exitCode, 0) << after.err;
  EXPECT_EQ(nlohmann::json::parse(after.out)["codeR"], nlohmann::json::parse(before.out)["codeR"]);
  ASSERT_EQ(Run({"ffl", "extract", lib, "--to", "txt", "-o", work.file("all")}).exitCode, 0);
  EXPECT_EQ(Files(work.file("all")), (std::vector<std::string>{"SoftNegative.txt", "WarmTone.txt"}));
}

TEST_F(FflCommand, BrokenOrForeignLibrariesFailClearly) {
  CliResult r = Run({"ffl", "list", work.Write("junk.ffl", std::string("\0\xff\x10", 3))});
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_TRUE(Has(r.err, "Format Violation")) << r.err;
  r = Run({"ffl", "list", work.file("none.ffl")});
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_TRUE(Has(r.err, "no such file")) << r.err;
  ASSERT_EQ(Run({"ffl", "create", lib, Sample("WarmTone.afs"), Sample("Ripple.txt")}).exitCode, 0);
  const std::string cut = work.Read("lib.ffl").substr(0, work.Read("lib.ffl").size() - 20);
  r = Run({"ffl", "list", work.Write("cut.ffl", cut)});
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_EQ(r.out.substr(0, 2), "1\t");  // what could be read is still shown
  EXPECT_TRUE(Has(r.err, "of 29 lines")) << r.err;
  EXPECT_EQ(Run({"ffl", "add", work.file("cut.ffl"), Sample("WarmTone.afs")}).exitCode, 1);
  EXPECT_EQ(work.Read("cut.ffl"), cut);
  EXPECT_EQ(Run({"ffl", "create", work.file("new.ffl"), work.Write("x.doc", "no")}).exitCode, 1);
  EXPECT_FALSE(work.Exists("new.ffl"));
  EXPECT_EQ(Run({"ffl", "delete", lib}).exitCode, 2);
}

}  // namespace
}  // namespace trel::test
