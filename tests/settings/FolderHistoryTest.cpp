#include "settings/FolderHistory.h"

#include <gtest/gtest.h>

namespace trel {
namespace {

using List = std::vector<std::string>;

TEST(FolderHistory, FirstInFirstOutKeepsTheNewest) {
  List list;
  EXPECT_FALSE(UpdateFolderHistory(list, "/0/", {false, true, 0}));  // without AutoAdd nothing changes
  EXPECT_TRUE(list.empty());
  const FolderHistoryOptions fifo{true, false, 3};
  for (const char* f : {"/1/", "/2/", "/3/", "/4/"}) UpdateFolderHistory(list, f, fifo);
  EXPECT_EQ(list, (List{"/2/", "/3/", "/4/"}));
  // A known folder, compared case-blind, stays where it is.
  EXPECT_FALSE(UpdateFolderHistory(list, "/3/", fifo));
  EXPECT_EQ(list, (List{"/2/", "/3/", "/4/"}));
  // A limit of zero means no limit.
  for (int i = 0; i < 50; ++i) UpdateFolderHistory(list, "/f" + std::to_string(i) + "/", {true, false, 0});
  EXPECT_EQ(list.size(), 53u);
}

TEST(FolderHistory, AutoTopMovesAKnownFolderFirstAndDropsTheLast) {
  List list{"/Plugins/", "/b/", "/c/"};
  const FolderHistoryOptions mru{true, true, 3};
  EXPECT_TRUE(UpdateFolderHistory(list, "/plugins/", mru));
  EXPECT_EQ(list, (List{"/Plugins/", "/b/", "/c/"}));
  EXPECT_TRUE(UpdateFolderHistory(list, "/c/", mru));
  EXPECT_EQ(list, (List{"/c/", "/Plugins/", "/b/"}));
  EXPECT_TRUE(UpdateFolderHistory(list, "/d/", mru));
  EXPECT_EQ(list, (List{"/d/", "/c/", "/Plugins/"}));
}

}  // namespace
}  // namespace trel
