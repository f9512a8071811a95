#include "base/SafeCopy.h"
#include "base/SafeTarget.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>

#include "base/ExistingNames.h"
#include "support/OrdinaryUser.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::RunAsOrdinaryUser;
using test::TempDir;
namespace fs = std::filesystem;

// Runs `body` as on a disk that fills up: the process may write no more than
// 1 MB into one file.
template <typename Body>
void WithFullDisk(Body body) {
  struct rlimit saved {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &saved), 0);
  struct rlimit limit = saved;
  limit.rlim_cur = 1 << 20;
  const auto oldHandler = signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  body();
  setrlimit(RLIMIT_FSIZE, &saved);
  signal(SIGXFSZ, oldHandler);
}

std::ptrdiff_t Entries(const TempDir& dir) {
  return std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator());
}

// Names that break naive command lines and string handling.
TEST(SafeCopy, AwkwardNamesCopyAndMoveWhole) {
  TempDir from, to;
  for (const std::string name : {"with blank.8bf", "quote\"d 'x'.afs", "Größe ñ.txt", "-leading-dash.prm"}) {
    SCOPED_TRACE(name);
    const std::string bytes = "bytes of " + name;
    from.Write(name, bytes);
    FileOpResult copied = SafeCopyFile(from.file(name), to.file(name));
    ASSERT_TRUE(copied.ok) << copied.error;
    EXPECT_EQ(to.Read(name), bytes);
    EXPECT_TRUE(from.Exists(name));
    to.Write(name, "old target");
    FileOpResult moved = SafeMoveFile(from.file(name), to.file(name));
    ASSERT_TRUE(moved.ok) << moved.error;
    EXPECT_EQ(to.Read(name), bytes);
    EXPECT_FALSE(from.Exists(name));
  }
  // Nothing but the copied files is left in the target.
  EXPECT_EQ(Entries(to), 4);
}

TEST(SafeCopy, AFailureLeavesTheSourceAndTheOldTargetAndNoTemporaryFile) {
  TempDir from, to;
  from.Write("big.bin", std::string(3 << 20, 'n'));
  to.Write("big.bin", "the old target");
  FileOpResult copied;
  WithFullDisk([&] { copied = SafeCopyFile(from.file("big.bin"), to.file("big.bin")); });
  EXPECT_FALSE(copied.ok);
  EXPECT_NE(copied.error.find("couldn't be written"), std::string::npos) << copied.error;
  EXPECT_EQ(to.Read("big.bin"), "the old target");
  EXPECT_EQ(from.Read("big.bin").size(), size_t{3 << 20});
  EXPECT_EQ(Entries(to), 1);

  // A target folder that can't be written, and a source that can't be read.
  TempDir locked;
  from.Write("small.txt", "x");
  RunAsOrdinaryUser({from.path(), locked.path()}, [&] {
    fs::permissions(locked.path(), fs::perms::owner_read | fs::perms::owner_exec);
    const FileOpResult refused = SafeCopyFile(from.file("small.txt"), locked.file("small.txt"));
    EXPECT_FALSE(refused.ok);
    EXPECT_NE(refused.error.find("can't be written to"), std::string::npos) << refused.error;
    fs::permissions(from.path(), fs::perms::none);
    EXPECT_FALSE(SafeCopyFile(from.file("small.txt"), to.file("small.txt")).ok);
    fs::permissions(from.path(), fs::perms::owner_all);
    fs::permissions(locked.path(), fs::perms::owner_all);
  });
  const FileOpResult missing = SafeCopyFile(from.file("gone.txt"), to.file("gone.txt"));
  EXPECT_FALSE(missing.ok);
  EXPECT_NE(missing.error.find("can't be read"), std::string::npos);
  EXPECT_FALSE(SafeCopyFile(from.path(), to.file("folder")).ok);
}

TEST(SafeCopy, AnAbortLeavesNoPartialFile) {
  TempDir from, to;
  from.Write("big.bin", std::string(20 << 20, 'a'));
  std::atomic<bool> abort{false};
  int calls = 0;
  const FileOpResult result = SafeCopyFile(from.file("big.bin"), to.file("big.bin"), [&](int64_t, int64_t) {
    if (++calls == 1) abort = true;
  }, &abort);
  EXPECT_TRUE(!result.ok && result.cancelled);
  EXPECT_EQ(Entries(to), 0);
}

// A batch keeps its folders open between files: each file still lands in the
// folder its own path names, and a move falls back to the same checks.
TEST(SafeCopy, ACopierUsedForABatchFollowsEveryPathsOwnFolder) {
  TempDir from, other, to, elsewhere;
  FileCopier copier;
  const struct {
    const TempDir& source;
    const char* name;
    const TempDir& target;
  } batch[] = {{from, "a", to}, {other, "b", to}, {from, "c", elsewhere}, {from, "d", to}, {other, "e", elsewhere}};
  for (const auto& file : batch) {
    file.source.Write(file.name, std::string("bytes of ") + file.name);
    const FileOpResult copied = copier.Copy(file.source.file(file.name), file.target.file(file.name));
    ASSERT_TRUE(copied.ok) << copied.error;
  }
  for (const auto& file : batch) EXPECT_EQ(file.target.Read(file.name), std::string("bytes of ") + file.name);
  EXPECT_EQ(Entries(to), 3);
  EXPECT_EQ(Entries(elsewhere), 2);

  ASSERT_TRUE(copier.Move(to.file("a"), elsewhere.file("a")).ok);
  EXPECT_TRUE(!to.Exists("a") && elsewhere.Read("a") == "bytes of a");
  const FileOpResult missing = copier.Move(to.file("gone"), elsewhere.file("gone"));
  EXPECT_FALSE(missing.ok);
  EXPECT_NE(missing.error.find("couldn't be moved"), std::string::npos) << missing.error;
  const FileOpResult noFolder = copier.Copy(from.file("c"), to.file("no such folder/c"));
  EXPECT_FALSE(noFolder.ok);
  EXPECT_NE(noFolder.error.find("can't be written to"), std::string::npos) << noFolder.error;
}

// A batch asks about its targets from one reading of the folder; a target
// found absent and made by someone else before the copy lands is kept, for
// copies and moves alike, and nothing of the batch's is left beside it.
TEST(SafeCopy, ATargetFoundAbsentIsNeverReplacedWhenItAppearsMeanwhile) {
  TempDir from, to;
  from.Write("a.8bf", "new a");
  from.Write("b.8bf", "new b");
  to.Write(".hidden", "x");
  ExistingNames names;
  EXPECT_TRUE(names.Contains(to.file(".hidden")));
  EXPECT_FALSE(names.Contains(to.file("a.8bf")) || names.Contains(to.file("b.8bf")));
  to.Write("a.8bf", "made meanwhile");
  EXPECT_FALSE(names.Contains(to.file("a.8bf"))) << "the names are read once";
  names.Add(to.file("b.8bf"));
  EXPECT_TRUE(names.Contains(to.file("b.8bf"))) << "a name the batch makes counts as taken";

  FileCopier copier;
  const FileOpResult copied = copier.Copy(from.file("a.8bf"), to.file("a.8bf"), {}, nullptr, Replace::Never);
  EXPECT_FALSE(copied.ok);
  EXPECT_NE(copied.error.find("was made by another program"), std::string::npos) << copied.error;
  EXPECT_EQ(to.Read("a.8bf"), "made meanwhile");
  const FileOpResult moved = copier.Move(from.file("a.8bf"), to.file("a.8bf"), {}, nullptr, Replace::Never);
  EXPECT_FALSE(moved.ok);
  EXPECT_EQ(to.Read("a.8bf") + "|" + from.Read("a.8bf"), "made meanwhile|new a");
  ASSERT_TRUE(copier.Move(from.file("b.8bf"), to.file("b.8bf"), {}, nullptr, Replace::Never).ok);
  EXPECT_EQ(to.Read("b.8bf"), "new b");
  EXPECT_EQ(Entries(to), 3);

  // The rename on its own: refused onto a name that is taken, done onto a free one.
  to.Write("t", "temp");
  EXPECT_EQ(RenameNoReplace(AT_FDCWD, to.file("t").c_str(), AT_FDCWD, to.file("a.8bf").c_str()), -1);
  EXPECT_EQ(errno, EEXIST);
  EXPECT_EQ(RenameNoReplace(AT_FDCWD, to.file("t").c_str(), AT_FDCWD, to.file("u").c_str()), 0);
  EXPECT_FALSE(to.Exists("t"));
  EXPECT_EQ(to.Read("u"), "temp");
}

unsigned ModeOf(const std::string& path) {
  struct stat st {};
  EXPECT_EQ(::stat(path.c_str(), &st), 0) << path;
  return st.st_mode & 07777;
}

TEST(SafeTarget, ReplacesWholeKeepingTheModeOrLeavesTheOldFile) {
  TempDir dir;
  dir.Write("list.ini", "old");
  ::chmod(dir.file("list.ini").c_str(), 0640);
  ASSERT_TRUE(WriteWholeFile(dir.file("list.ini"), "new contents"));
  EXPECT_EQ(dir.Read("list.ini"), "new contents");
  EXPECT_EQ(ModeOf(dir.file("list.ini")), 0640u);

  // A new file gets the usual mode, less the umask.
  const mode_t saved = ::umask(027);
  ASSERT_TRUE(WriteWholeFile(dir.file("fresh.txt"), "x"));
  ::umask(saved);
  EXPECT_EQ(ModeOf(dir.file("fresh.txt")), 0640u);

  // A patching writer starts from the old bytes; without a commit nothing changes.
  for (const bool commit : {false, true}) {
    {
      SafeTarget patch(dir.file("list.ini"), /*startFromExisting=*/true);
      ASSERT_NE(patch.file(), nullptr);
      patch.file()->WriteAt(1, "NEW");
      if (commit) { ASSERT_TRUE(patch.Commit()) << patch.error(); }
    }
    EXPECT_EQ(dir.Read("list.ini"), commit ? "NEW contents" : "new contents");
  }
  EXPECT_EQ(Entries(dir), 2);

  // A disk that fills up part way: the old file stands, no temporary is left.
  bool written = true;
  WithFullDisk([&] { written = WriteWholeFile(dir.file("list.ini"), std::string(3 << 20, 'z')); });
  EXPECT_FALSE(written);
  EXPECT_EQ(dir.Read("list.ini"), "NEW contents");
  EXPECT_EQ(Entries(dir), 2);
}

TEST(SafeTarget, TemporaryFilesAreHiddenDistinctAndBesideTheirTarget) {
  TempDir dir;
  std::set<std::string> made;
  for (int i = 0; i < 3; ++i) {
    const TempBeside temp = CreateTempBeside(dir.file("a.8bf"), 0600);
    ASSERT_GE(temp.fd, 0) << std::strerror(temp.error);
    ::close(temp.fd);
    const fs::path path(temp.path);
    EXPECT_EQ(path.parent_path().string() + "/", dir.path());
    EXPECT_TRUE(path.filename().string().front() == '.' && IsTempBesideName(path.filename().string()));
    made.insert(temp.path);
  }
  EXPECT_EQ(made.size(), 3u);
  EXPECT_FALSE(IsTempBesideName("a.8bf") || IsTempBesideName(".hidden") || dir.Exists("a.8bf"));

  // A folder that can't be written: an error, and nothing made.
  TempDir locked;
  locked.Write("keep.txt", "kept");
  test::RunAsOrdinaryUser({locked.path()}, [&] {
    fs::permissions(locked.path(), fs::perms::owner_read | fs::perms::owner_exec);
    const TempBeside refused = CreateTempBeside(locked.file("keep.txt"), 0600);
    EXPECT_EQ(std::tie(refused.fd, refused.error, refused.path), std::make_tuple(-1, EACCES, std::string()));
    EXPECT_FALSE(WriteWholeFile(locked.file("keep.txt"), "lost?"));
    fs::permissions(locked.path(), fs::perms::owner_all);
  });
  EXPECT_EQ(locked.Read("keep.txt"), "kept");
  EXPECT_EQ(Entries(locked), 1);
}

}  // namespace
}  // namespace trel
