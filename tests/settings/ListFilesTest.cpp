#include "settings/ListFiles.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;
using Strings = std::vector<std::string>;

TEST(ListFiles, AnEntryWithACommaComesBackAsTwo) {
  TempDir dir;
  const std::string path = dir.file("FolderList.log");
  EXPECT_FALSE(LoadList(path, false));  // a missing file leaves the list alone
  ASSERT_TRUE(SaveList(path, {{"/plugins/a,b/"}, {"/other/"}}, false));
  EXPECT_EQ(dir.Read("FolderList.log"), "/plugins/a,b/\r\n/other/\r\n");
  const auto loaded = LoadList(path, false);
  ASSERT_TRUE(loaded);
  Strings texts;
  for (const auto& e : *loaded) texts.push_back(e.text);
  EXPECT_EQ(texts, (Strings{"/plugins/a", "b/", "/other/"}));
}

TEST(ListFiles, InputItemsTrimsAndKeepsQuotedCommas) {
  EXPECT_EQ(InputItems("  one  ,\"two, three\"  ,four\r\n\nfive"), (Strings{"one", "two, three", "four", "", "five"}));
  EXPECT_EQ(InputItems("x,\n"), (Strings{"x", ""}));
  EXPECT_TRUE(InputItems("").empty());
  EXPECT_EQ(InputItems("\"unclosed, quote"), (Strings{"unclosed, quote"}));
}

TEST(ListFiles, StateLinesFollowTheirRows) {
  TempDir dir;
  const std::string path = dir.file("PlugTypes.ini");
  ASSERT_TRUE(SaveList(path, {{"Paint Shop Pro tube|tub", true}, {"Brush|jbr", false}}, true));
  EXPECT_EQ(dir.Read("PlugTypes.ini"), "Paint Shop Pro tube|tub\r\nTrue\r\nBrush|jbr\r\nFalse\r\n");
  const auto loaded = LoadList(path, true);
  ASSERT_TRUE(loaded && loaded->size() == 2u);
  EXPECT_TRUE((*loaded)[0].state);
  EXPECT_FALSE((*loaded)[1].state);
  // A row without its state line at the end of the file is kept switched off.
  const auto shortList = LoadList(dir.Write("short.ini", "Only|row\n"), true);
  ASSERT_TRUE(shortList && shortList->size() == 1u);
  EXPECT_FALSE((*shortList)[0].state);
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
