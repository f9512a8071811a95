#include "shell/commander/CopyJob.h"

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>
#include <filesystem>

#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;
namespace fs = std::filesystem;

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
    if (item.target == to.file("b")) return Conflict::Skip;
    if (item.target == to.file("d")) return Conflict::Stop;
    return Conflict::Go;
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
  CopyJob job(items, FileJob::Move, escape, [](const CopyItem&) { return Conflict::Go; });
  const Finished end = RunToEnd(job);
  EXPECT_EQ(end.done, 1);
  EXPECT_TRUE(end.error.startsWith(QString::fromStdString(from.file("missing")))) << end.error.toStdString();
  EXPECT_EQ(to.Read("a"), "a");
  EXPECT_FALSE(from.Exists("a"));
  EXPECT_TRUE(from.Exists("c"));  // after the failure nothing more moves
  EXPECT_EQ(Entries(to.path()), 1);
}

TEST(CopyJob, EscWhileFilesAreAskedAboutLeavesWholeFilesOrNoneAndNoTemporaryFile) {
  TempDir from, to;
  std::atomic<bool> escape{false};
  // Large enough to be under way when Esc comes; a copy is either whole or absent.
  const std::string big(24 << 20, 'x');
  std::vector<CopyItem> items{{from.Write("big", big), to.file("big")}};
  for (int i = 0; i < 20; ++i) {
    const std::string name = "small" + std::to_string(i);
    items.push_back({from.Write(name, name), to.file(name)});
  }
  int asked = 0;
  CopyJob* running = nullptr;
  CopyJob job(items, FileJob::Copy, escape, [&](const CopyItem&) {
    if (++asked == 2) running->Cancel();
    return Conflict::Go;
  });
  running = &job;
  const Finished end = RunToEnd(job);
  EXPECT_TRUE(end.error.isEmpty()) << end.error.toStdString();  // a cancel is no error
  EXPECT_LE(end.done, 2);
  EXPECT_EQ(asked, 2);
  for (const auto& entry : fs::directory_iterator(to.path())) {
    const std::string name = entry.path().filename().string();
    EXPECT_TRUE(name == "big" || name == "small0") << name;
    if (name == "big") {
      EXPECT_EQ(fs::file_size(entry.path()), big.size());
    }
  }

  // Cancelled before it starts: nothing is asked and nothing copied.
  escape = false;
  asked = 0;
  CopyJob early(items, FileJob::Copy, escape, [&](const CopyItem&) {
    ++asked;
    return Conflict::Go;
  });
  early.Cancel();
  EXPECT_EQ(RunToEnd(early).done, 0);
  EXPECT_EQ(asked, 0);
}

TEST(CopyJob, DroppedWhileItRunsStopsAndLeavesNoTemporaryFile) {
  TempDir from, to;
  std::atomic<bool> escape{false};
  const std::vector<CopyItem> items{{from.Write("big", std::string(48 << 20, 'y')), to.file("big")}};
  {
    CopyJob job(items, FileJob::Copy, escape, [](const CopyItem&) { return Conflict::Go; });
    job.Start();
    QTest::qWait(5);  // under way, or already done
  }
  for (const auto& entry : fs::directory_iterator(to.path())) {
    EXPECT_EQ(entry.path().filename(), "big");
    EXPECT_EQ(fs::file_size(entry.path()), 48u << 20);
  }
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
