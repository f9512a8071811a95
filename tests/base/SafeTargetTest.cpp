#include "base/SafeTarget.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>

#include "support/OrdinaryUser.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;
namespace fs = std::filesystem;

size_t Entries(const TempDir& dir) {
  return static_cast<size_t>(std::distance(fs::directory_iterator(dir.path()), fs::directory_iterator()));
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
  {
    SafeTarget patch(dir.file("list.ini"), /*startFromExisting=*/true);
    ASSERT_NE(patch.file(), nullptr);
    patch.file()->WriteAt(1, "NEW");
  }
  EXPECT_EQ(dir.Read("list.ini"), "new contents");
  {
    SafeTarget patch(dir.file("list.ini"), /*startFromExisting=*/true);
    ASSERT_NE(patch.file(), nullptr);
    patch.file()->WriteAt(1, "NEW");
    ASSERT_TRUE(patch.Commit()) << patch.error();
  }
  EXPECT_EQ(dir.Read("list.ini"), "NEW contents");
  EXPECT_EQ(Entries(dir), 2u);

  // A disk that fills up part way: the old file stands, no temporary is left.
  struct rlimit old {};
  ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
  struct rlimit limit = old;
  limit.rlim_cur = 1 << 20;
  const auto handler = signal(SIGXFSZ, SIG_IGN);
  ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
  const bool written = WriteWholeFile(dir.file("list.ini"), std::string(3 << 20, 'z'));
  setrlimit(RLIMIT_FSIZE, &old);
  signal(SIGXFSZ, handler);
  EXPECT_FALSE(written);
  EXPECT_EQ(dir.Read("list.ini"), "NEW contents");
  EXPECT_EQ(Entries(dir), 2u);
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
    EXPECT_EQ(path.filename().string().front(), '.');
    EXPECT_TRUE(IsTempBesideName(path.filename().string()));
    made.insert(temp.path);
  }
  EXPECT_EQ(made.size(), 3u);
  EXPECT_FALSE(IsTempBesideName("a.8bf"));
  EXPECT_FALSE(IsTempBesideName(".hidden"));
  EXPECT_FALSE(dir.Exists("a.8bf"));

  // A folder that can't be written: an error, and nothing made.
  TempDir locked;
  locked.Write("keep.txt", "kept");
  test::RunAsOrdinaryUser({locked.path()}, [&] {
    fs::permissions(locked.path(), fs::perms::owner_read | fs::perms::owner_exec);
    const TempBeside refused = CreateTempBeside(locked.file("keep.txt"), 0600);
    EXPECT_EQ(refused.fd, -1);
    EXPECT_EQ(refused.error, EACCES);
    EXPECT_TRUE(refused.path.empty());
    EXPECT_FALSE(WriteWholeFile(locked.file("keep.txt"), "lost?"));
    fs::permissions(locked.path(), fs::perms::owner_all);
  });
  EXPECT_EQ(locked.Read("keep.txt"), "kept");
  EXPECT_EQ(Entries(locked), 1u);
}

}  // namespace
}  // namespace trel
