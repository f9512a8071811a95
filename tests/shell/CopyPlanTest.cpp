#include "shell/commander/CopyPlan.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;
namespace fs = std::filesystem;

TEST(CopyPlan, CopyTakesEveryRowAndMoveLeavesWhatAlreadyLiesInTheTarget) {
  TempDir dir;
  fs::create_directories(dir.file("Plugins"));
  fs::create_directories(dir.file("plugins"));
  const std::vector<std::string> rows{"a.8bf", "", "/elsewhere/b.prm"};
  const auto copy = PlanCopy(dir.file("Plugins/"), rows, false, dir.file("plugins/"));
  ASSERT_EQ(copy.size(), 3u);
  EXPECT_EQ(copy[0].source, dir.file("Plugins/a.8bf"));
  EXPECT_EQ(copy[0].target, dir.file("plugins/a.8bf"));
  EXPECT_TRUE(copy[1].source.empty() && copy[1].target.empty());  // the parent row names no file
  EXPECT_EQ(copy[2].source, "/elsewhere/b.prm");                  // a whole path stands for itself
  EXPECT_EQ(copy[2].target, dir.file("plugins/b.prm"));
  // Plugin View rows are whole paths even without a leading separator.
  EXPECT_EQ(PlanCopy("/x/", {"y/a.8bf"}, true, "/t/").front().source, "y/a.8bf");

  // Names differing in case are two folders: nothing is left out of the move.
  EXPECT_EQ(PlanMove(dir.file("Plugins/"), {"a.8bf"}, false, dir.file("plugins/")).size(), 1u);
  // The same folder under another spelling is the same folder.
  EXPECT_TRUE(PlanMove(dir.file("Plugins/"), {"a.8bf"}, false, dir.file("plugins/../Plugins/")).empty());
}

TEST(CopyPlan, ADropSplitsFilesFromFoldersAndRefusesAFolderIntoItself) {
  TempDir dir;
  fs::create_directories(dir.file("from/sub/deeper"));
  fs::create_directories(dir.file("to"));
  dir.Write("from/a.8bf", "a");
  dir.Write("to/here.txt", "h");
  const DropPlan plan =
      PlanDrop({dir.file("from/a.8bf"), dir.file("from/sub/"), dir.file("to/here.txt")}, dir.file("to/"));
  ASSERT_EQ(plan.files.size(), 1u);
  EXPECT_EQ(plan.files[0].target, dir.file("to/a.8bf"));
  EXPECT_EQ(plan.folders, std::vector<std::string>{dir.file("from/sub")});  // without its separator
  EXPECT_TRUE(plan.intoItself.empty());

  const DropPlan inside = PlanDrop({dir.file("from/sub")}, dir.file("from/sub/deeper/"));
  EXPECT_EQ(inside.intoItself, dir.file("from/sub"));
}

TEST(CopyPlan, OverwriteAnswersForOneFileOrForTheRestOfTheCommand) {
  OverwriteRule rule;
  Conflict decision = Conflict::Stop;
  EXPECT_TRUE(rule.Decided(false, decision));  // no target: no question
  EXPECT_EQ(decision, Conflict::Go);
  EXPECT_FALSE(rule.Decided(true, decision));
  // Single answers hold for one file.
  EXPECT_EQ(rule.Answer(0), Conflict::Go);
  EXPECT_FALSE(rule.Decided(true, decision));
  EXPECT_EQ(rule.Answer(1), Conflict::Skip);
  EXPECT_FALSE(rule.Decided(true, decision));
  // "Overwrite All" and "Ignore All" stand until the reset at the command's end.
  EXPECT_EQ(rule.Answer(2), Conflict::Go);
  EXPECT_TRUE(rule.Decided(true, decision));
  EXPECT_EQ(decision, Conflict::Go);
  EXPECT_EQ(rule.Answer(3), Conflict::Skip);
  EXPECT_TRUE(rule.Decided(true, decision));
  EXPECT_EQ(decision, Conflict::Skip);
  rule.Reset();
  EXPECT_FALSE(rule.Decided(true, decision));
  // Cancel, or a closed dialog, stops the batch.
  EXPECT_EQ(rule.Answer(4), Conflict::Stop);
  EXPECT_EQ(rule.Answer(-1), Conflict::Stop);
  EXPECT_FALSE(rule.Decided(true, decision));
}

TEST(CopyPlan, NameRules) {
  EXPECT_EQ(StripSeparator("/a/b//"), "/a/b");
  EXPECT_EQ(StripSeparator("/"), "/");
  EXPECT_EQ(FullPath("/f/", "n", false), "/f/n");
}

}  // namespace
}  // namespace trel
