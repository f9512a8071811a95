#include "shell/DirectoryListing.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;

TEST(ListDirectory, FilesUnderTheMaskFoldersAlwaysHiddenNever) {
  TempDir dir;
  dir.Write("b.8bf", "12345");
  dir.Write("A.txt", "");
  dir.Write(".hidden", "x");
  std::filesystem::create_directory(dir.file("zeta"));
  std::filesystem::create_directory(dir.file("Alpha"));
  std::filesystem::create_directory(dir.file(".cache"));
  const DirListing all = ListDirectory(dir.path(), "*.*");
  ASSERT_TRUE(all.readable);
  ASSERT_EQ(all.files.size(), 2u);
  EXPECT_EQ(all.files[0].name, "A.txt");
  EXPECT_EQ(all.files[0].length, 0);
  EXPECT_EQ(all.files[1].name, "b.8bf");
  EXPECT_EQ(all.files[1].length, 5);
  ASSERT_EQ(all.folders.size(), 2u);
  EXPECT_EQ(all.folders[0].name, "Alpha");
  const DirListing plugins = ListDirectory(dir.path(), "*.8bf");
  ASSERT_EQ(plugins.files.size(), 1u);
  EXPECT_EQ(plugins.folders.size(), 2u);  // the mask is for files only
}

TEST(ListDirectory, AMissingFolderListsEmpty) {
  const DirListing none = ListDirectory("/no/such/folder/here/", "*.*");
  EXPECT_FALSE(none.readable);
  EXPECT_TRUE(none.files.empty());
}

TEST(ParentFolder, StopsAtTheRoot) {
  EXPECT_EQ(ParentFolder("/a/b/"), "/a/");
  EXPECT_EQ(ParentFolder("/a/b"), "/a/");
  EXPECT_EQ(ParentFolder("/a/"), "/");
  EXPECT_EQ(ParentFolder("/"), "/");
  EXPECT_TRUE(IsRootFolder("/"));
  EXPECT_FALSE(IsRootFolder("/a/"));
}

}  // namespace
}  // namespace trel
