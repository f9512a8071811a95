#include "settings/ListFiles.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;

std::vector<std::string> Texts(const std::vector<ListEntry>& entries) {
  std::vector<std::string> out;
  for (const auto& e : entries) out.push_back(e.text);
  return out;
}

TEST(ListFiles, AnEntryWithACommaComesBackAsTwo) {
  TempDir dir;
  const std::string path = dir.file("FolderList.log");
  ASSERT_TRUE(SaveList(path, {{"/plugins/a,b/"}, {"/other/"}}, false));
  EXPECT_EQ(dir.Read("FolderList.log"), "/plugins/a,b/\r\n/other/\r\n");
  const auto loaded = LoadList(path, false);
  ASSERT_TRUE(loaded);
  EXPECT_EQ(Texts(*loaded), (std::vector<std::string>{"/plugins/a", "b/", "/other/"}));
}

TEST(ListFiles, InputItemsTrimsAndKeepsQuotedCommas) {
  EXPECT_EQ(InputItems("  one  ,\"two, three\"  ,four\r\n\nfive"),
            (std::vector<std::string>{"one", "two, three", "four", "", "five"}));
  EXPECT_EQ(InputItems("x,\n"), (std::vector<std::string>{"x", ""}));
  EXPECT_TRUE(InputItems("").empty());
  EXPECT_EQ(InputItems("\"unclosed, quote"), (std::vector<std::string>{"unclosed, quote"}));
}

TEST(ListFiles, StateLinesFollowTheirRows) {
  TempDir dir;
  const std::string path = dir.file("PlugTypes.ini");
  ASSERT_TRUE(SaveList(path, {{"Paint Shop Pro tube|tub", true}, {"Brush|jbr", false}}, true));
  EXPECT_EQ(dir.Read("PlugTypes.ini"), "Paint Shop Pro tube|tub\r\nTrue\r\nBrush|jbr\r\nFalse\r\n");
  const auto loaded = LoadList(path, true);
  ASSERT_TRUE(loaded);
  ASSERT_EQ(loaded->size(), 2u);
  EXPECT_TRUE((*loaded)[0].state);
  EXPECT_FALSE((*loaded)[1].state);
  // A row without its state line at the end of the file is kept switched off.
  dir.Write("short.ini", "Only|row\n");
  const auto shortList = LoadList(dir.file("short.ini"), true);
  ASSERT_TRUE(shortList);
  ASSERT_EQ(shortList->size(), 1u);
  EXPECT_FALSE((*shortList)[0].state);
}

TEST(ListFiles, MissingFileLeavesTheListAlone) {
  TempDir dir;
  EXPECT_FALSE(LoadList(dir.file("nothing.log"), false));
}

TEST(ListFiles, AFailedSaveKeepsTheOldFile) {
  if (::geteuid() == 0) GTEST_SKIP() << "root writes into read-only folders";
  TempDir dir;
  const std::string path = dir.Write("FolderList.log", "/kept/\r\n");
  ::chmod(dir.path().c_str(), 0500);
  EXPECT_FALSE(SaveList(path, {{"/new/"}}, false));
  ::chmod(dir.path().c_str(), 0700);
  EXPECT_EQ(dir.Read("FolderList.log"), "/kept/\r\n");
}

}  // namespace
}  // namespace trel
