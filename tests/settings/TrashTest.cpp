#include "settings/Trash.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <unistd.h>

#include "support/TempDir.h"

namespace trel {
namespace {

namespace fs = std::filesystem;

// An environment variable as it was before the test, put back after it.
struct SavedEnv {
  explicit SavedEnv(const char* n) : name(n) {
    if (const char* v = std::getenv(n)) value = v;
  }
  ~SavedEnv() { value ? ::setenv(name, value->c_str(), 1) : ::unsetenv(name); }
  const char* name;
  std::optional<std::string> value;
};

// An account whose home holds nothing, not even ~/.local/share; the working
// folder is the one the file lies in, as the panes set it.
class TrashTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ::setenv("HOME", home.path().c_str(), 1);
    ::unsetenv("XDG_DATA_HOME");
    fs::current_path(work.path());
  }
  void TearDown() override { fs::current_path(cwd); }
  SavedEnv savedHome{"HOME"}, savedData{"XDG_DATA_HOME"};
  fs::path cwd = fs::current_path();
  test::TempDir home, work;
};

TEST_F(TrashTest, AnEmptyHomeGetsItsTrashAndTheFileGoesThere) {
  const std::string victim = work.Write("victim.txt", "keep me");
  QString error;
  ASSERT_TRUE(MoveToTrash(QString::fromStdString(victim), &error)) << error.toStdString();
  EXPECT_FALSE(work.Exists("victim.txt"));
  EXPECT_FALSE(work.Exists("files") || work.Exists("info")) << "the trash must not land in the working folder";
  const std::string trash = home.file(".local/share/Trash/");
  EXPECT_EQ(QString::fromStdString(trash).chopped(1), HomeTrashFolder());
  EXPECT_EQ(test::ReadFileBytes(trash + "files/victim.txt"), "keep me");
  EXPECT_TRUE(fs::exists(trash + "info/victim.txt.trashinfo"));
  for (const char* folder : {"", "files", "info"})
    EXPECT_EQ(fs::status(trash + folder).permissions() & fs::perms::all, fs::perms::owner_all) << folder;

  // A second file of the same name goes in beside the first.
  work.Write("victim.txt", "second");
  ASSERT_TRUE(MoveToTrash(QString::fromStdString(victim), &error)) << error.toStdString();
  EXPECT_FALSE(work.Exists("victim.txt"));
  EXPECT_EQ(std::distance(fs::directory_iterator(trash + "files"), fs::directory_iterator()), 2);
}

TEST_F(TrashTest, XdgDataHomeIsTheTrashesHome) {
  ::setenv("XDG_DATA_HOME", home.file("data").c_str(), 1);
  const std::string victim = work.Write("v.8bf", "x");
  QString error;
  ASSERT_TRUE(MoveToTrash(QString::fromStdString(victim), &error)) << error.toStdString();
  EXPECT_TRUE(home.Exists("data/Trash/files/v.8bf"));
}

TEST_F(TrashTest, ATrashThatCantBeMadeLeavesTheFileAndSaysWhy) {
  // A home below a plain file: no folder can be made there, not even as root.
  home.Write("plain", "");
  ::setenv("HOME", home.file("plain/home").c_str(), 1);
  const std::string victim = work.Write("victim.txt", "keep me");
  QString error;
  EXPECT_FALSE(MoveToTrash(QString::fromStdString(victim), &error));
  EXPECT_EQ(work.Read("victim.txt"), "keep me");
  EXPECT_FALSE(work.Exists("files"));
  EXPECT_NE(error.toStdString().find("victim.txt wasn't moved to the trash"), std::string::npos)
      << error.toStdString();
  EXPECT_NE(error.toStdString().find("couldn't be created"), std::string::npos) << error.toStdString();
}

TEST(Trash, OnlyTheFilesFolderOfATrashCounts) {
  const QString home = HomeTrashFolder();
  const QString uid = QString::number(::getuid());
  EXPECT_TRUE(IsInTrash(home + "/files/a.txt"));
  EXPECT_TRUE(IsInTrash("/mnt/disk/.Trash-" + uid + "/files/a.txt"));
  EXPECT_TRUE(IsInTrash("/mnt/disk/.Trash/" + uid + "/files/a.txt"));
  EXPECT_FALSE(IsInTrash("files/a.txt"));  // relative: Qt's fallback
  EXPECT_FALSE(IsInTrash("/home/a/files/a.txt"));
  EXPECT_FALSE(IsInTrash(home + "/info/a.txt"));
  EXPECT_FALSE(IsInTrash("/mnt/disk/.Trash-" + uid + "x/files/a.txt"));
}

}  // namespace
}  // namespace trel
