#include <filesystem>

#include <nlohmann/json.hpp>

#include "CliRunner.h"

namespace trel::test {
namespace {

using Names = std::vector<std::string>;

std::string Txt(const std::string& title, const std::string& filename) {
  return "Category: Cli\r\nTitle: " + title + "\r\nAuthor: Me\r\nCopyright: Free\r\nFilename: " + filename +
         "\r\n\r\nR: r\r\n\r\nG: 255-g\r\n\r\nB: b/2\r\n\r\nA: a\r\n\r\nctl[0]: Amount\r\n\r\nval[0]: 30\r\n\r\n";
}

class ConvertCommand : public CliTest {
 protected:
  // A library made by `ffl create` of the given sources.
  std::string Library(const std::string& name, const Names& sources) {
    Names args = {"ffl", "create", work.file(name)};
    args.insert(args.end(), sources.begin(), sources.end());
    EXPECT_EQ(Run(args).exitCode, 0);
    return work.file(name);
  }
};

TEST_F(ConvertCommand, WritesEachFileAndPrintsWhatItWrote) {
  const CliResult r = Run({"convert", "--to", "txt", "-o", work.file("out"), Sample("WarmTone.afs"),
                           Sample("SoftNegative.pff")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(Files(work.file("out")), (Names{"SoftNegative.txt", "WarmTone.txt"}));
  EXPECT_EQ(r.out, work.file("out/WarmTone.txt") + "\n" + work.file("out/SoftNegative.txt") + "\n");
  // Premiere code reaches a text file in Photoshop dialect.
  EXPECT_TRUE(Has(work.Read("out/SoftNegative.txt"), "R:mix(r,255-r,ctl(0),255)"));
}

TEST_F(ConvertCommand, ExistingTargetsAreKeptUnlessOverwrite) {
  const std::string src = work.Write("a.txt", Txt("A", "a.8bf"));
  std::filesystem::create_directory(work.file("out"));
  work.Write("out/a.afs", "mine");
  CliResult r = Run({"convert", "--to", "afs", "-o", work.file("out"), src});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(work.Read("out/a.afs"), "mine");
  EXPECT_TRUE(r.out.empty());
  EXPECT_TRUE(Has(r.err, "--overwrite")) << r.err;
  r = Run({"convert", "--to", "afs", "--overwrite", "-o", work.file("out"), src});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(work.Read("out/a.afs").rfind("%RGB-1.0\r", 0), 0u);
}

TEST_F(ConvertCommand, NameFromTitleAndLibrariesInSubFolders) {
  const std::string src = work.Write("a.txt", Txt("Fine Filter", "a.8bf"));
  const std::string lib = Library("Pack.ffl", {work.Write("o.txt", Txt("One", "one.8bf")), work.Write("t.txt", Txt("Two", "two.8bf"))});
  const CliResult r = Run({"convert", "--to", "pff", "--name-from-title", "--sub-folders", "-o",
                           work.file("out"), src, lib});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(Files(work.file("out")), (Names{"FineFilter.pff", "Pack", "Pack/one.pff", "Pack/two.pff"}));
}

TEST_F(ConvertCommand, NothingReadableFailsAndBadUsageIsTold) {
  const CliResult none = Run({"convert", "--to", "afs", "-o", work.file("out"), work.Write("x.doc", "hello"),
                              work.file("missing.afs")});
  EXPECT_EQ(none.exitCode, 1);
  EXPECT_TRUE(Has(none.err, "nothing could be read")) << none.err;
  const CliResult junk = Run({"convert", "--to", "txt", "-o", work.file("out"),
                              work.Write("junk.ffl", std::string("\0\1\2junk", 7))});
  EXPECT_EQ(junk.exitCode, 1);
  EXPECT_TRUE(Has(junk.err, "is not a Filter Factory Library File!")) << junk.err;
  EXPECT_EQ(Run({"convert", "--to", "gif", "-o", work.file("out"), Sample("WarmTone.afs")}).exitCode, 2);
  EXPECT_EQ(Run({"convert", "-o", work.file("out"), Sample("WarmTone.afs")}).exitCode, 2);
  EXPECT_EQ(Run({"convert", "--to", "afs", Sample("WarmTone.afs")}).exitCode, 2);
}

// The plugin formats: what each can hold is proven by the compiler's own
// read-backs; here the command line reaches each writer and reads it back.
TEST_F(ConvertCommand, LibraryRoundTripsThroughEveryPluginFormat) {
  const std::string lib = Library("lib.ffl", {work.Write("p.txt", Txt("Plug", "plug.8bf"))});
  for (const std::string format : {"8bf", "prm", "tf"}) {
    const std::string out = work.file("via-" + format);
    const CliResult r = Run({"convert", "--to", format, "-o", out, lib});
    ASSERT_EQ(r.out, out + (format == "8bf" ? "/plug.8bf\n" : "/plug.prm\n")) << r.err;
    const CliResult back = Run({"convert", "--to", "txt", "-o", out + "/back", r.out.substr(0, r.out.size() - 1)});
    ASSERT_EQ(back.exitCode, 0) << back.err;
    const std::string text = ReadFileBytes(out + "/back/plug.txt");
    EXPECT_EQ(Has(text, "Author: Me"), format == "8bf") << format;  // Premiere plugins have no author field
    EXPECT_TRUE(Has(text, "Title: Plug") && Has(text, "G:255-g") && Has(text, "val[0]: 30")) << format << text;
  }
}

// The catalogue commands treat a plugin compiled into Trel's 64-bit template
// like any Filter Factory plugin: the scanner finds its menu data at the
// template's place, and a category change keeps it readable.
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
