#include "base/DirectoryListing.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

#include "base/NameMatch.h"
#include "support/TempDir.h"

namespace trel {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> Names(const std::vector<DirEntry>& entries) {
  std::vector<std::string> names;
  for (const DirEntry& e : entries) names.push_back(e.name);
  return names;
}

using Strings = std::vector<std::string>;

class ListingTest : public ::testing::Test {
 protected:
  void SetUp() override {
    dir.Write("b.8bf", "12345");
    dir.Write("B.8bf", "1");
    dir.Write("a.TXT", "");
    dir.Write(".hidden.8bf", "x");
    for (const char* folder : {"zeta", "Alpha", ".cache"}) fs::create_directory(dir.file(folder));
    dir.Write("zeta/inner.8bf", "y");
    fs::create_symlink(dir.file("b.8bf"), dir.file("link.8bf"));
    fs::create_symlink(dir.file("zeta"), dir.file("linked"));
    fs::create_symlink(dir.file("gone.8bf"), dir.file("broken.8bf"));
    ASSERT_EQ(::mkfifo(dir.file("pipe.8bf").c_str(), 0600), 0);
  }
  test::TempDir dir;
};

TEST_F(ListingTest, TheFileListsSeeFilesAndFoldersInNameOrderWithTheirDetails) {
  const DirListing all = ListDirectory(dir.path(), "*.*");
  ASSERT_TRUE(all.readable);
  // Case-blind order, ties by bytes; hidden names, the broken link and the pipe are left out.
  EXPECT_EQ(Names(all.files), (Strings{"a.TXT", "B.8bf", "b.8bf", "link.8bf"}));
  EXPECT_EQ(Names(all.folders), (Strings{"Alpha", "linked", "zeta"}));
  // The link lists with the length of its file.
  EXPECT_EQ(std::make_tuple(all.files[0].length, all.files[2].length, all.files[3].length), std::make_tuple(0, 5, 5));
  EXPECT_TRUE(all.files[0].hasTime);

  EXPECT_EQ(Names(ListDirectory(dir.path(), "*.8BF").files), (Strings{"B.8bf", "b.8bf", "link.8bf"}));
  // The mask is for files only: every folder stays.
  EXPECT_EQ(ListDirectory(dir.path(), "*.zip").folders.size(), 3u);
}

TEST_F(ListingTest, AWalkTakesNamesOnlyAndLeavesLinkedFoldersOut) {
  const DirListing walk = ListDirectory(dir.path(), "*.8bf", {.details = false, .followFolderLinks = false});
  EXPECT_EQ(Names(walk.files), (Strings{"B.8bf", "b.8bf", "link.8bf"}));
  EXPECT_EQ(Names(walk.folders), (Strings{"Alpha", "zeta"}));
  for (const DirEntry& e : walk.files) EXPECT_TRUE(e.length == -1 && !e.hasTime) << e.name;
}

TEST_F(ListingTest, AFolderThatCannotBeReadListsEmpty) {
  const DirListing none = ListDirectory(dir.file("no/such/folder/"), "*.*");
  EXPECT_TRUE(!none.readable && none.files.empty() && none.folders.empty());
  // A file is no folder.
  EXPECT_FALSE(ListDirectory(dir.file("b.8bf"), "*.*").readable);
}

TEST(NameMatch, MasksAreCaseBlindAlternativesWithOneWildCharacter) {
  const struct {
    const char *name, *pattern;
    bool match;
  } cases[] = {
      {"A.8BF", "*.8bf;*?prm", true},  {"a_prm", "*.8bf;*?prm", true},   {"a._rm", "*.8bf;*?prm", false},
      {"prm", "*?prm", false},         {"noextension", "*.*", true},     {"x", "*", true},
      {"x.Txt", " *.afs ; *.txt ", true}, {"x", ";;", false},            {"anything", "  ", true},
      {"abcbcd", "a*bcd", true},       {"abcbce", "a*bcd", false},       {"a.b.c", "*.c", true},
      {"ab", "a?b", false},            {"a?b", "a?b", true},             {"Ω.8bf", "*.8BF", true},
  };
  for (const auto& c : cases) EXPECT_EQ(MatchesPattern(c.name, c.pattern), c.match) << c.name << " | " << c.pattern;
  // Many stars against a long name that almost matches: no blow-up.
  EXPECT_FALSE(MatchesPattern(std::string(4000, 'a'), "*a*a*a*a*a*a*a*a*b"));
}

}  // namespace
}  // namespace trel
