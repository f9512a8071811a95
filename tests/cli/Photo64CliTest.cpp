// The catalogue commands treat a plugin compiled into Trel's 64-bit template
// like any Filter Factory plugin: the scanner finds its menu data at the
// template's place, and a category change keeps it readable.
#include <filesystem>

#include <nlohmann/json.hpp>

#include "CliRunner.h"

namespace trel::test {
namespace {

using Photo64Cli = CliTest;

TEST_F(Photo64Cli, ScannedAndRecategorisedLikeEveryFilterFactoryPlugin) {
  const std::string templ = std::string(TREL_TEMPLATE_DIR) + "/photo64.dll";
  if (!std::filesystem::exists(templ)) GTEST_SKIP() << "photo64.dll was not built";
  const std::string source = work.Write("s.txt", "Title: Sixty Four\nCategory: Wide\nR:255-r\n\nG:g\n\nB:b\n\n");
  ASSERT_EQ(Run({"convert", "--to", "8bf", "-o", work.path() + "out", "--template", templ, source}).exitCode, 0);
  CliResult r = Run({"scan", work.path() + "out", "--json"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  nlohmann::json list = nlohmann::json::parse(r.out);
  ASSERT_EQ(list.size(), 1u);
  EXPECT_EQ(list[0]["title"], "Sixty Four");
  EXPECT_EQ(list[0]["category"], "Wide");
  EXPECT_EQ(list[0]["categoryOffset"], 499712 + 31064);
  const std::string plugin = list[0]["path"];

  r = Run({"category", plugin, "Narrow Things"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  r = Run({"show", plugin});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const nlohmann::json shown = nlohmann::json::parse(r.out);
  EXPECT_EQ(shown["category"], "Narrow Things");
  EXPECT_EQ(shown["title"], "Sixty Four");
  EXPECT_EQ(shown["codeR"], "255-r");
  EXPECT_EQ(std::filesystem::file_size(plugin), 557056u);
}

}  // namespace
}  // namespace trel::test
