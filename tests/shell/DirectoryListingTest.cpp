#include "shell/DirectoryListing.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/TempDir.h"

namespace trel {
namespace {

TEST(ListDirectory, HiddenEntriesNeverShowAndAMissingFolderIsUnreadable) {
  test::TempDir dir;
  dir.Write("b.8bf", "12345");
  dir.Write("A.txt", "");
  dir.Write(".hidden", "x");
  for (const char* folder : {"zeta", "Alpha", ".cache"}) std::filesystem::create_directory(dir.file(folder));
  const DirListing all = ListDirectory(dir.path(), "*.*");
  ASSERT_TRUE(all.readable);
  ASSERT_EQ(all.files.size(), 2u);
  EXPECT_EQ(all.files[0].length + all.files[1].length, 5);
  EXPECT_EQ(all.folders.size(), 2u);
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
