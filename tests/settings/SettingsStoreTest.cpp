#include "settings/SettingsStore.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>

#include "support/OrdinaryUser.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::RunAsOrdinaryUser;
using test::TempDir;

TEST(SettingsStore, MissingKeysReadEmptyOrTheirDefaultAndDeleteSaysSo) {
  TempDir dir;
  SettingsStore store(dir.file("Trel10.ini"));
  EXPECT_EQ(store.Get(kSectionFolders, "Folder0"), "");
  EXPECT_EQ(store.Get(kSectionOptions, "Show Tips at Startup", "1"), "1");
  store.Save(kSectionOptions, "Show Tips at Startup", "0");
  EXPECT_EQ(store.Get(kSectionOptions, "Show Tips at Startup", "1"), "0");
  EXPECT_TRUE(store.HasSetting(kAppName, kSectionOptions, "Show Tips at Startup"));
  EXPECT_TRUE(store.DeleteSetting(kAppName, kSectionOptions, "Show Tips at Startup"));
  EXPECT_FALSE(store.DeleteSetting(kAppName, kSectionOptions, "Show Tips at Startup"));
  EXPECT_EQ(store.Get(kSectionOptions, "Show Tips at Startup"), "");
}

TEST(SettingsStore, ValuesSurviveInTheFileWithAwkwardKeys) {
  TempDir dir;
  const std::array<std::string, 3> rows[] = {
      {kSectionSettings, "FFL1.0", "1"},          {kSectionOptions, "Show Tips at Startup", "0"},
      {kSectionFolders, "0", "/home/me/plugins/"}, {kSectionFolders, "Folder1", "/a,b/c d/"},
      {kSectionFolders, "Pattern1", "-*.8bf;*.txt"}};
  {
    SettingsStore store(dir.file("sub/Trel10.ini"));
    for (const auto& [section, key, value] : rows) store.Save(section, key, value);
    store.SaveSetting("OtherApp", "Folders", "Folder0", "elsewhere");
    store.Flush();
  }
  SettingsStore again(dir.file("sub/Trel10.ini"));
  for (const auto& [section, key, value] : rows) EXPECT_EQ(again.Get(section, key), value) << key;
  // Another application's tree stays apart from the program's own.
  EXPECT_EQ(again.Get(kSectionFolders, "Folder0"), "");
  EXPECT_EQ(again.GetSetting("OtherApp", "Folders", "Folder0"), "elsewhere");
}

TEST(SettingsStore, GarbageFileReadsWithoutFailing) {
  TempDir dir;
  const char garbage[] =
      "\x01\x02\xff garbage\0\n[Folders\nFolder0\n=x\n[Folders]\n"
      "Sortkey0=abc\nFolder1=a,b,c\nLastX=@Invalid()\n[Settings]\nWidth=\"\n";
  dir.Write("Trel10.ini", std::string(garbage, sizeof garbage - 1));
  SettingsStore store(dir.file("Trel10.ini"));
  EXPECT_EQ(store.Get(kSectionFolders, "Sortkey0"), "abc");
  EXPECT_EQ(store.Get(kSectionFolders, "Folder1"), "a,b,c");  // a list to the parser, text to us
  EXPECT_EQ(store.Get(kSectionFolders, "LastX"), "");
  store.Get(kSectionSettings, "Width");  // whatever it reads, it reads
}

TEST(SettingsStore, LiesUnderTrelHomeWhenSet) {
  const char* old = std::getenv("TREL_HOME");
  const std::string saved = old ? old : "";
  ::setenv("TREL_HOME", "/tmp/trel-home-test", 1);
  EXPECT_EQ(DefaultSettingsPath(), "/tmp/trel-home-test/Trel10.ini");
  ::unsetenv("TREL_HOME");
  EXPECT_NE(DefaultSettingsPath().find("Trel10/Trel10.ini"), std::string::npos);
  if (old) ::setenv("TREL_HOME", saved.c_str(), 1);
}

TEST(SettingsStore, AFileThatCannotBeWrittenIsReportedOneThatCannotBeReadIsEmpty) {
  TempDir dir;
  dir.Write("blocker", "a file where the folder should be");
  SettingsStore store(dir.file("blocker/Trel10.ini"));
  store.Save(kSectionFolders, "Folder0", "/x/");
  EXPECT_FALSE(store.Flush());
  EXPECT_EQ(store.Get(kSectionFolders, "Folder0"), "/x/");
  const std::string path = dir.Write("Trel10.ini", "[Folders]\nFolder0=/x/\n");
  RunAsOrdinaryUser({dir.path()}, [&] {
    ::chmod(path.c_str(), 0);
    EXPECT_EQ(SettingsStore(path).Get(kSectionFolders, "Folder0"), "");
  });
}

// The permission checks of the other tests rely on this helper really leaving
// root behind and really reporting the child's failures.
TEST(OrdinaryUser, TheCheckRunsWithoutRootsRightsInWhatWasHandedOver) {
  TempDir dir;
  const std::string secret = dir.Write("secret", "x");
  EXPECT_TRUE(RunAsOrdinaryUser({dir.path()}, [&] {
    EXPECT_NE(::geteuid(), 0u);
    EXPECT_EQ(dir.Read("secret"), "x");  // what the test prepared is there
    EXPECT_EQ(::access(dir.Write("made-by-child", "y").c_str(), W_OK), 0);
    ::chmod(secret.c_str(), 0);
    EXPECT_NE(::access(secret.c_str(), R_OK), 0);  // root would read it anyway
  }));
}

TEST(OrdinaryUser, AFailureInTheChildFailsTheTest) {
  EXPECT_NONFATAL_FAILURE(RunAsOrdinaryUser({}, [] { ADD_FAILURE() << "planted"; }),
                          "the check as an ordinary user failed");
}

}  // namespace
}  // namespace trel
