#include "base/FolderIdentity.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/TempDir.h"

namespace trel {
namespace {

namespace fs = std::filesystem;

TEST(FolderIdentity, TheFileSystemDecidesWhatIsOneFolder) {
  test::TempDir root;
  fs::create_directories(root.file("a/Plugins/deep"));
  fs::create_directory(root.file("a/plugins"));
  fs::create_directory_symlink(root.file("a/Plugins"), root.file("link"));
  EXPECT_FALSE(SameFolder(root.file("a/Plugins"), root.file("a/plugins")));
  EXPECT_TRUE(SameFolder(root.file("a/Plugins/"), root.file("a/Plugins")));
  EXPECT_TRUE(SameFolder(root.file("link/"), root.file("a/Plugins")));
  EXPECT_TRUE(SameFolder(root.file("a/plugins/../Plugins"), root.file("a/Plugins/")));
  // Names of folders that don't exist compare as written.
  EXPECT_TRUE(SameFolder("/no/such/Dir/", "/no/such/Dir"));
  EXPECT_FALSE(SameFolder("/no/such/Dir/", "/no/such/dir/"));
  EXPECT_FALSE(SameFolder(root.file("a/Plugins"), "/no/such/Dir"));

  EXPECT_TRUE(IsInsideFolder(root.file("a/Plugins/deep/"), root.file("a/Plugins/")));
  EXPECT_TRUE(IsInsideFolder(root.file("a/Plugins/deep/new/"), root.file("link")));
  EXPECT_FALSE(IsInsideFolder(root.file("a/Plugins/deep/"), root.file("a/plugins/")));
  EXPECT_FALSE(IsInsideFolder(root.file("a/"), root.file("a/Plugins/")));
}

TEST(FolderIdentity, InsideTellsSubFoldersFromNamesThatShareAPrefixAndFollowsLinks) {
  test::TempDir root;
  fs::create_directories(root.file("a/b"));
  fs::create_directories(root.file("ab"));
  fs::create_directory_symlink(root.file("a/b"), root.file("link"));
  struct Case {
    std::string inner, outer;
    bool inside;
  } cases[] = {{"a", "a", true},       {"a/", "a", true},      {"a/b", "a", true},  {"a/b/", "a/", true},
               {"ab", "a", false},     {"a", "a/b", false},    {"link", "a", true}, {"a/b/new", "a", true},
               {"link/new", "a/b", true}};
  for (const Case& c : cases)
    EXPECT_EQ(IsInsideFolder(root.file(c.inner), root.file(c.outer)), c.inside) << c.inner << " in " << c.outer;
}

}  // namespace
}  // namespace trel
