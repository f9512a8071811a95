// The catalogue commands treat a plugin compiled into Trel's 64-bit template
// like any Filter Factory plugin: the scanner finds its menu data at the
// template's place, and a category change keeps it readable.
#include <filesystem>

#include <nlohmann/json.hpp>

#include "CliRunner.h"

namespace trel::test {
namespace {

TEST(Photo64Cli, ScannedAndRecategorisedLikeEveryFilterFactoryPlugin) {
  const std::string templ = std::string(TREL_TEMPLATE_DIR) + "/photo64.dll";
  if (!std::filesystem::exists(templ)) GTEST_SKIP() << "photo64.dll was not built";
  TempDir home, work;
  const std::string source = work.Write("s.txt", "Title: Sixty Four\nCategory: Wide\nR:255-r\n\nG:g\n\nB:b\n\n");
  ASSERT_EQ(RunCli({"convert", "--to", "8bf", "-o", work.path() + "out", "--template", templ, source}, home.path())
                .exitCode,
            0);
  CliResult r = RunCli({"scan", work.path() + "out", "--json"}, home.path());
  ASSERT_EQ(r.exitCode, 0) << r.err;
  nlohmann::json list = nlohmann::json::parse(r.out);
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0]["title"], "Sixty Four");
  EXPECT_EQ(list[0]["category"], "Wide");
  EXPECT_EQ(list[0]["categoryOffset"], 499712 + 31064);
  const std::string plugin = list[0]["path"];

  r = RunCli({"category", plugin, "Narrow Things"}, home.path());
  ASSERT_EQ(r.exitCode, 0) << r.err;
  r = RunCli({"show", plugin}, home.path());
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const nlohmann::json shown = nlohmann::json::parse(r.out);
  EXPECT_EQ(shown["category"], "Narrow Things");
  EXPECT_EQ(shown["title"], "Sixty Four");
  EXPECT_EQ(shown["codeR"], "255-r");
  EXPECT_EQ(std::filesystem::file_size(plugin), 557056u);
}

}  // namespace
}  // namespace trel::test
