// The copy command's parts without the window: what a command plans, and the
// job that carries the plan out on the event loop.
#include "shell/commander/CopyJob.h"
#include "shell/commander/CopyPlan.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
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

TEST(CopyPlan, NameRules) {
  EXPECT_EQ(StripSeparator("/a/b//"), "/a/b");
  EXPECT_EQ(StripSeparator("/"), "/");
  EXPECT_EQ(FullPath("/f/", "n", false), "/f/n");
}

int Entries(const std::string& folder) {
  return static_cast<int>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
}

struct Finished {
  int done = -1;
  QString error;
};

// Runs `job` to its end on the event loop; the job's own signal says when.
Finished RunToEnd(CopyJob& job) {
  Finished result;
  QObject::connect(&job, &CopyJob::finished, [&](int done, const QString& error) {
    result.done = done;
    result.error = error;
  });
  QSignalSpy ended(&job, &CopyJob::finished);
  job.Start();
  EXPECT_TRUE(ended.wait(20000));
  EXPECT_EQ(ended.count(), 1);
  return result;
}

TEST(CopyJob, CopiesWhatIsAnsweredGoSkipsTheRestAndStopsAtCancel) {
  TempDir from, to;
  std::vector<CopyItem> items;
  for (const char* name : {"a", "b", "c", "d"}) items.push_back({from.Write(name, name), to.file(name)});
  items.insert(items.begin() + 1, CopyItem{});  // a row that names no file is passed over unasked
  std::atomic<bool> escape{false};
  std::vector<std::string> asked;
  CopyJob job(items, FileJob::Copy, escape, [&](const CopyItem& item) {
    asked.push_back(item.target);
    if (item.target == to.file("b")) return OverwriteAnswer::Skip;
    if (item.target == to.file("d")) return OverwriteAnswer::Stop;
    return OverwriteAnswer::Write;
  });
  const Finished end = RunToEnd(job);
  EXPECT_EQ(end.done, 2);
  EXPECT_TRUE(end.error.isEmpty());
  EXPECT_EQ(asked.size(), 4u);
  EXPECT_EQ(to.Read("a"), "a");
  EXPECT_EQ(to.Read("c"), "c");
  EXPECT_EQ(Entries(to.path()), 2);
  EXPECT_EQ(from.Read("a"), "a");  // a copy leaves the source
}

TEST(CopyJob, AFailureEndsTheBatchWithTheFirstErrorAndAMoveKeepsWhatItDidntMove) {
  TempDir from, to;
  std::atomic<bool> escape{false};
  const std::vector<CopyItem> items{{from.Write("a", "a"), to.file("a")},
                                    {from.file("missing"), to.file("missing")},
                                    {from.Write("c", "c"), to.file("c")}};
  CopyJob job(items, FileJob::Move, escape, [](const CopyItem&) { return OverwriteAnswer::Write; });
  const Finished end = RunToEnd(job);
  EXPECT_EQ(end.done, 1);
  EXPECT_TRUE(end.error.startsWith(QString::fromStdString(from.file("missing")))) << end.error.toStdString();
  EXPECT_EQ(to.Read("a"), "a");
  EXPECT_FALSE(from.Exists("a"));
  EXPECT_TRUE(from.Exists("c"));  // after the failure nothing more moves
  EXPECT_EQ(Entries(to.path()), 1);
}

TEST(CopyJob, CancelledBeforeItStartsItAsksNothingAndCopiesNothing) {
  TempDir from, to;
  std::atomic<bool> escape{false};
  int asked = 0;
  CopyJob early({{from.Write("a", "a"), to.file("a")}}, FileJob::Copy, escape, [&](const CopyItem&) {
    ++asked;
    return OverwriteAnswer::Write;
  });
  early.Cancel();
  EXPECT_EQ(RunToEnd(early).done, 0);
  EXPECT_EQ(asked, 0);
  EXPECT_EQ(Entries(to.path()), 0);
}

TEST(CopyJob, ErasingGoesOnPastWhatCantBeErasedAndATreeTakesLinksNotWhatTheyPointTo) {
  TempDir dir, outside;
  std::atomic<bool> escape{false};
  CopyJob files({{dir.Write("a", "a"), {}}, {dir.file("missing"), {}}, {dir.Write("c", "c"), {}}}, FileJob::Erase,
                escape);
  const Finished erased = RunToEnd(files);
  EXPECT_EQ(erased.done, 2);
  EXPECT_TRUE(erased.error.startsWith(QString::fromStdString(dir.file("missing") + " couldn't be erased")))
      << erased.error.toStdString();
  EXPECT_FALSE(dir.Exists("a"));
  EXPECT_FALSE(dir.Exists("c"));

  fs::create_directories(dir.file("tree/deep/er"));
  dir.Write("tree/deep/er/f", "f");
  dir.Write("tree/g", "g");
  outside.Write("kept", "kept");
  fs::create_directory_symlink(outside.path(), dir.file("tree/link"));
  fs::create_directories(dir.file("second"));
  CopyJob trees({{dir.file("tree/"), {}}, {dir.file("second"), {}}}, FileJob::EraseTree, escape);
  const Finished gone = RunToEnd(trees);
  EXPECT_EQ(gone.done, 2);
  EXPECT_TRUE(gone.error.isEmpty()) << gone.error.toStdString();
  EXPECT_FALSE(dir.Exists("tree"));
  EXPECT_FALSE(dir.Exists("second"));
  EXPECT_EQ(outside.Read("kept"), "kept");
}

}  // namespace
}  // namespace trel
