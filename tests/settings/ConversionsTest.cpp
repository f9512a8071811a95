#include "settings/Conversions.h"
#include "settings/FolderHistory.h"

#include <gtest/gtest.h>

#include <climits>
#include <filesystem>

#include "support/TempDir.h"

namespace trel {
namespace {

TEST(LenientNumber, ReadsTheLeadingNumberAndIgnoresTheRest) {
  const std::pair<const char*, double> cases[] = {
      {"", 0},      {"abc", 0},      {"12abc", 12},  {"  42", 42},  {"-7", -7},    {"+3", 3},
      {"3.5", 3.5}, {".5", 0.5},     {"1e3", 1000},  {"1e", 1},     {"2.5e-1x", 0.25},
      {"-", 0},     {"1e400", 0},    {"0x10", 0},    {"7 8", 7},
  };
  for (const auto& [text, value] : cases) EXPECT_DOUBLE_EQ(LenientNumber(text), value) << '"' << text << '"';
}

TEST(LenientInt, RoundsAndStaysInRange) {
  EXPECT_EQ(LenientInt("2.6"), 3);
  EXPECT_EQ(LenientInt("99999999999999"), INT_MAX);
  EXPECT_EQ(LenientInt("-99999999999999"), INT_MIN);
  EXPECT_EQ(LenientInt("garbage"), 0);
}

TEST(ParseBool, AcceptsBooleanWordsAndNumbersOnly) {
  const std::pair<const char*, std::optional<bool>> cases[] = {
      {"True", true}, {"FALSE", false},   {" true ", true},      {"-1", true},
      {"0", false},   {"", std::nullopt}, {"yes", std::nullopt}, {"1abc", std::nullopt}};
  for (const auto& [text, value] : cases) EXPECT_EQ(ParseBool(text), value) << '"' << text << '"';
}

TEST(CheckValue, OnlyTheThreeStatesOfABox) {
  const std::pair<const char*, std::optional<int>> cases[] = {
      {"0", 0},   {"1", 1},   {"2", 2},   {"3", std::nullopt}, {"abc", std::nullopt},
      {"1x", std::nullopt}, {"", std::nullopt}};
  for (const auto& [text, value] : cases) EXPECT_EQ(CheckValue(text), value) << '"' << text << '"';
}


using List = std::vector<std::string>;

TEST(FolderHistory, FirstInFirstOutKeepsTheNewest) {
  List list;
  EXPECT_FALSE(UpdateFolderHistory(list, "/0/", {false, true, 0}));  // without AutoAdd nothing changes
  EXPECT_TRUE(list.empty());
  const FolderHistoryOptions fifo{true, false, 3};
  for (const char* f : {"/1/", "/2/", "/3/", "/4/"}) UpdateFolderHistory(list, f, fifo);
  EXPECT_EQ(list, (List{"/2/", "/3/", "/4/"}));
  // A known folder stays where it is.
  EXPECT_FALSE(UpdateFolderHistory(list, "/3/", fifo));
  EXPECT_EQ(list, (List{"/2/", "/3/", "/4/"}));
  // A limit of zero means no limit.
  for (int i = 0; i < 50; ++i) UpdateFolderHistory(list, "/f" + std::to_string(i) + "/", {true, false, 0});
  EXPECT_EQ(list.size(), 53u);
}

TEST(FolderHistory, AutoTopMovesAKnownFolderFirstAndDropsTheLast) {
  List list{"/Plugins/", "/b/", "/c/"};
  const FolderHistoryOptions mru{true, true, 3};
  EXPECT_TRUE(UpdateFolderHistory(list, "/b", mru));  // one folder, with or without the separator
  EXPECT_EQ(list, (List{"/b/", "/Plugins/", "/c/"}));
  EXPECT_TRUE(UpdateFolderHistory(list, "/c/", mru));
  EXPECT_EQ(list, (List{"/c/", "/b/", "/Plugins/"}));
  EXPECT_TRUE(UpdateFolderHistory(list, "/d/", mru));
  EXPECT_EQ(list, (List{"/d/", "/c/", "/b/"}));
}

TEST(FolderHistory, TwoFoldersWhoseNamesDifferInCaseAreTwoEntries) {
  test::TempDir root;
  std::filesystem::create_directory(root.file("Plugins"));
  std::filesystem::create_directory(root.file("plugins"));
  List list;
  const FolderHistoryOptions fifo{true, false, 0};
  EXPECT_TRUE(UpdateFolderHistory(list, root.file("Plugins/"), fifo));
  EXPECT_TRUE(UpdateFolderHistory(list, root.file("plugins/"), fifo));
  EXPECT_FALSE(UpdateFolderHistory(list, root.file("Plugins/../plugins"), fifo));
  EXPECT_EQ(list, (List{root.file("Plugins/"), root.file("plugins/")}));
}

}  // namespace
}  // namespace trel
