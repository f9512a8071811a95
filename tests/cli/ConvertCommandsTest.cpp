#include <gtest/gtest.h>

#include <filesystem>

#include "CliRunner.h"
#include "support/TempDir.h"

namespace trel::test {
namespace {

namespace fs = std::filesystem;

std::string Sample(const std::string& name) { return std::string(TREL_SAMPLES_DIR) + "/" + name; }

std::string Txt(const std::string& title, const std::string& filename) {
  return "Category: Cli\r\nTitle: " + title + "\r\nAuthor: Me\r\nFilename: " + filename +
         "\r\n\r\nR: r\r\n\r\nG: 255-g\r\n\r\nB: b/2\r\n\r\nA: a\r\n\r\nctl[0]: Amount\r\n\r\nval[0]: 30\r\n\r\n";
}

// A library of the given entries (title, file name), as the format lays it out.
std::string Library(const std::vector<std::pair<std::string, std::string>>& entries) {
  std::string t = "FFL1.0\r\n    " + std::to_string(entries.size()) + "\r\n";
  for (const auto& [title, filename] : entries) {
    t += filename + "\r\nLib\r\n" + title + "\r\nMe\r\nFree\r\n\r\n\r\n\r\n\r\nAmount\r\n";
    for (int i = 0; i < 7; ++i) t += "\r\n";
    t += "30\r\n";
    for (int i = 0; i < 7; ++i) t += "0\r\n";
    t += "r\r\n255-g\r\nb/2\r\na\r\n";
  }
  return t;
}

class ConvertCommand : public ::testing::Test {
 protected:
  CliResult Run(const std::vector<std::string>& args) { return RunCli(args, home.path()); }
  std::vector<std::string> Files(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& e : fs::recursive_directory_iterator(folder))
      names.push_back(fs::relative(e.path(), folder).string());
    std::sort(names.begin(), names.end());
    return names;
  }
  TempDir home;
  TempDir work;
};

TEST_F(ConvertCommand, WritesEachFileAndPrintsWhatItWrote) {
  const CliResult r = Run({"convert", "--to", "txt", "-o", work.file("out"), Sample("WarmTone.afs"),
                           Sample("SoftNegative.pff")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(Files(work.file("out")), (std::vector<std::string>{"SoftNegative.txt", "WarmTone.txt"}));
  EXPECT_EQ(r.out, work.file("out/WarmTone.txt") + "\n" + work.file("out/SoftNegative.txt") + "\n");
  // Premiere code reaches a text file in Photoshop dialect.
  EXPECT_NE(work.Read("out/SoftNegative.txt").find("R:mix(r,255-r,ctl(0),255)"), std::string::npos);
}

TEST_F(ConvertCommand, ExistingTargetsAreKeptUnlessOverwrite) {
  const std::string src = work.Write("a.txt", Txt("A", "a.8bf"));
  fs::create_directory(work.file("out"));
  work.Write("out/a.afs", "mine");
  CliResult r = Run({"convert", "--to", "afs", "-o", work.file("out"), src});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(work.Read("out/a.afs"), "mine");
  EXPECT_TRUE(r.out.empty());
  EXPECT_NE(r.err.find("--overwrite"), std::string::npos);

  r = Run({"convert", "--to", "afs", "--overwrite", "-o", work.file("out"), src});
  EXPECT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(work.Read("out/a.afs").rfind("%RGB-1.0\r", 0), 0u);
}

TEST_F(ConvertCommand, NameFromTitleAndLibrariesInSubFolders) {
  const std::string src = work.Write("a.txt", Txt("Fine Filter", "a.8bf"));
  const std::string lib = work.Write("Pack.ffl", Library({{"One", "one.8bf"}, {"Two", "two.8bf"}}));
  const CliResult r = Run({"convert", "--to", "pff", "--name-from-title", "--sub-folders", "-o",
                           work.file("out"), src, lib});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(Files(work.file("out")),
            (std::vector<std::string>{"FineFilter.pff", "Pack", "Pack/one.pff", "Pack/two.pff"}));
}

TEST_F(ConvertCommand, NothingReadableFailsAndBadUsageIsTold) {
  const CliResult none = Run({"convert", "--to", "afs", "-o", work.file("out"),
                              work.Write("x.doc", "hello"), work.file("missing.afs")});
  EXPECT_EQ(none.exitCode, 1);
  EXPECT_NE(none.err.find("nothing could be read"), std::string::npos);

  const CliResult junk = Run({"convert", "--to", "txt", "-o", work.file("out"),
                              work.Write("junk.ffl", std::string("\0\1\2junk", 7))});
  EXPECT_EQ(junk.exitCode, 1);
  EXPECT_NE(junk.err.find("is not a Filter Factory Library File!"), std::string::npos);

  EXPECT_EQ(Run({"convert", "--to", "gif", "-o", work.file("out"), Sample("WarmTone.afs")}).exitCode, 2);
  EXPECT_EQ(Run({"convert", "-o", work.file("out"), Sample("WarmTone.afs")}).exitCode, 2);
  EXPECT_EQ(Run({"convert", "--to", "afs", Sample("WarmTone.afs")}).exitCode, 2);
}

// Library -> each plugin format -> text, against library -> text directly.
TEST_F(ConvertCommand, LibraryRoundTripsThroughEveryPluginFormat) {
  const std::string lib = work.Write("lib.ffl", Library({{"Plug", "plug.8bf"}}));
  ASSERT_EQ(Run({"convert", "--to", "txt", "-o", work.file("direct"), lib}).exitCode, 0);
  const std::string direct = work.Read("direct/plug.txt");
  ASSERT_FALSE(direct.empty());

  for (const char* format : {"8bf", "prm", "tf"}) {
    SCOPED_TRACE(format);
    const std::string out = work.file(std::string("via-") + format);
    const CliResult r = Run({"convert", "--to", format, "-o", out, lib});
    ASSERT_EQ(r.exitCode, 0) << r.err;
    const std::string plugin = out + "/" + (std::string(format) == "8bf" ? "plug.8bf" : "plug.prm");
    ASSERT_TRUE(fs::exists(plugin)) << r.out;
    const CliResult back = Run({"convert", "--to", "txt", "-o", out + "/back", plugin});
    ASSERT_EQ(back.exitCode, 0) << back.err;
    const std::string text = ReadFileBytes(out + "/back/plug.txt");
    // Premiere plugins have no author field.
    if (std::string(format) == "8bf") {
      EXPECT_NE(text.find("Author: Me"), std::string::npos);
    }
    for (const char* line : {"Title: Plug", "Copyright: Free", "R:r", "G:255-g", "B:b/2", "A:a", "ctl[0]: Amount",
                             "val[0]: 30"}) {
      EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;
    }
  }
}

}  // namespace
}  // namespace trel::test
