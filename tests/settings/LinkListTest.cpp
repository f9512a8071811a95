#include "settings/LinkList.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "settings/ListFiles.h"
#include "support/OrdinaryUser.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::RunAsOrdinaryUser;
using test::TempDir;
namespace fs = std::filesystem;

TEST(LinkListTest, LinesSplitAtTheFirstSemicolonAndAnEmptyNameTakesTheOneAbove) {
  TempDir dir;
  const std::string path = dir.Write("FilterURLs.txt",
                                     ";orphan.example\n"          // first line: empty name
                                     "  Plugins A ;  https://a.example/x;y=1  \r\n"
                                     ";https://mirror.example\n"  // takes "Plugins A"
                                     "Just a name\n"
                                     "\n"
                                     "B;\n");
  LinkList list;
  ASSERT_TRUE(LoadLinks(path, list));
  EXPECT_EQ(list.names, (std::vector<std::string>{"", "Plugins A", "Plugins A", "Just a name", "", "B"}));
  EXPECT_EQ(list.urls, (std::vector<std::string>{"orphan.example", "https://a.example/x;y=1",
                                                 "https://mirror.example", "", "", ""}));
  EXPECT_FALSE(list.changed);
  // Saving drops the row with both fields empty and writes a name alone
  // without its semicolon.
  EXPECT_EQ(LinksText(list),
            ";orphan.example\nPlugins A;https://a.example/x;y=1\nPlugins A;https://mirror.example\n"
            "Just a name\nB\n");
}

TEST(LinkListTest, AMissingFileLeavesTheListAndSavingRoundTrips) {
  TempDir dir;
  LinkList list;
  AddLink(list, "Kept", "https://kept.example");
  EXPECT_FALSE(LoadLinks(dir.file("none.txt"), list));
  EXPECT_EQ(list.size(), 1u);
  ASSERT_TRUE(SaveLinks(dir.file("out.txt"), list));
  EXPECT_FALSE(list.changed);
  LinkList back;
  ASSERT_TRUE(LoadLinks(dir.file("out.txt"), back));
  EXPECT_EQ(std::tie(back.names, back.urls), std::tie(list.names, list.urls));
}

TEST(LinkListTest, MovingStopsAtTheEndsAndDeletingShiftsTheRows) {
  LinkList list;
  for (const char* name : {"a", "b", "c"}) AddLink(list, name, std::string("u") + name);
  list.changed = false;
  EXPECT_FALSE(MoveLink(list, 0, -1) || MoveLink(list, 2, +1) || list.changed);
  EXPECT_TRUE(MoveLink(list, 0, +1));
  EXPECT_EQ(list.names, (std::vector<std::string>{"b", "a", "c"}));
  EXPECT_EQ(list.urls, (std::vector<std::string>{"ub", "ua", "uc"}));
  EXPECT_TRUE(list.changed);
  EXPECT_TRUE(DeleteLink(list, 1));
  EXPECT_EQ(list.names, (std::vector<std::string>{"b", "c"}));
  EXPECT_EQ(list.urls, (std::vector<std::string>{"ub", "uc"}));
  EXPECT_FALSE(DeleteLink(list, 5));
}

TEST(LinkListTest, AFailedSaveKeepsTheOldFileAndTheChangedFlag) {
  TempDir dir;
  // A path under a plain file can't be written, not even by root.
  dir.Write("blocker", "x");
  LinkList list;
  AddLink(list, "n", "u");
  EXPECT_FALSE(SaveLinks(dir.file("blocker/list.txt"), list));
  EXPECT_TRUE(list.changed);
  EXPECT_EQ(dir.Read("blocker"), "x");
}

TEST(LinkListTest, TheShippedListsHoldNamedHttpsAddresses) {
  for (const char* file : {"FilterURLs.txt", "TubeURLs.txt"}) {
    LinkList list;
    ASSERT_TRUE(LoadLinks(std::string(TREL_SHIPPED_DATA_DIR) + "/" + file, list)) << file;
    EXPECT_GE(list.size(), 5u) << file;
    for (size_t i = 0; i < list.size(); ++i) {
      EXPECT_FALSE(list.names[i].empty()) << file << " " << i;
      EXPECT_EQ(list.urls[i].rfind("https://", 0), 0u) << file << " " << list.urls[i];
    }
  }
}


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
  EXPECT_TRUE((*loaded)[0].state && !(*loaded)[1].state);
  // A row without its state line at the end of the file is kept switched off.
  const auto shortList = LoadList(dir.Write("short.ini", "Only|row\n"), true);
  ASSERT_TRUE(shortList && shortList->size() == 1u);
  EXPECT_FALSE((*shortList)[0].state);
}

TEST(ListFiles, AFailedSaveKeepsTheOldFile) {
  TempDir dir;
  const std::string path = dir.Write("FolderList.log", "/kept/\r\n");
  RunAsOrdinaryUser({dir.path()}, [&] {
    ::chmod(dir.path().c_str(), 0500);
    EXPECT_FALSE(SaveList(path, {{"/new/"}}, false));
    ::chmod(dir.path().c_str(), 0700);
    EXPECT_EQ(dir.Read("FolderList.log"), "/kept/\r\n");
  });
}

// The help pages the program opens are shipped, and their links lead somewhere.
const fs::path kHelp = fs::path(TREL_SHIPPED_DATA_DIR) / "help";

TEST(HelpPagesTest, EveryPageTheWindowsOpenIsShipped) {
  const char* pages[] = {"Help.htm", "Prefs_General.htm", "Prefs_FFTF.htm", "Prefs_Interface.htm",
                         "Prefs_FPA.htm", "Prefs_PluginTypes.htm", "menu_View.htm", "menu_Command.htm",
                         "menu_Help.htm", "buttonbar.htm", "buttonbar_Convert.htm", "buttonbar_ChangeCat.htm",
                         "ffe.htm", "pictureeditor.htm", "ff_language.htm", "tuts/tutorials.htm"};
  for (const char* page : pages) EXPECT_TRUE(fs::is_regular_file(kHelp / page)) << page;
}

TEST(HelpPagesTest, EveryLinkBetweenPagesResolves) {
  int links = 0;
  for (const auto& entry : fs::recursive_directory_iterator(kHelp)) {
    if (entry.path().extension() != ".htm") continue;
    const std::string html = test::ReadFileBytes(entry.path().string());
    EXPECT_NE(html.find("<title>"), std::string::npos) << entry.path();
    // Local links only: no scheme, no fragment.
    for (size_t at = html.find("href=\""); at != std::string::npos; at = html.find("href=\"", at + 1)) {
      const size_t start = at + 6;
      const std::string target = html.substr(start, html.find('"', start) - start);
      if (target.find_first_of(":#") != std::string::npos) continue;
      ++links;
      EXPECT_TRUE(fs::exists(entry.path().parent_path() / target)) << entry.path() << " -> " << target;
    }
  }
  EXPECT_GT(links, 50);
}

}  // namespace
}  // namespace trel
