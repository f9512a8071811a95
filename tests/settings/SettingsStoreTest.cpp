#include "settings/SettingsStore.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>

#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;

TEST(SettingsStore, MissingKeysReadEmptyOrTheirDefault) {
  TempDir dir;
  SettingsStore store(dir.file("Trel10.ini"));
  EXPECT_EQ(store.Get(kSectionFolders, "Folder0"), "");
  EXPECT_EQ(store.Get(kSectionOptions, "Show Tips at Startup", "1"), "1");
  store.Save(kSectionOptions, "Show Tips at Startup", "0");
  EXPECT_EQ(store.Get(kSectionOptions, "Show Tips at Startup", "1"), "0");
}

TEST(SettingsStore, ValuesSurviveInTheFileWithAwkwardKeys) {
  TempDir dir;
  {
    SettingsStore store(dir.file("sub/Trel10.ini"));
    store.Save(kSectionSettings, "FFL1.0", "1");
    store.Save(kSectionOptions, "Show Tips at Startup", "0");
    store.Save(kSectionFolders, "0", "/home/me/plugins/");
    store.Save(kSectionFolders, "Folder1", "/a,b/c d/");
    store.Save(kSectionFolders, "Pattern1", "-*.8bf;*.txt");
    store.SaveSetting("OtherApp", "Folders", "Folder0", "elsewhere");
    store.Flush();
  }
  SettingsStore again(dir.file("sub/Trel10.ini"));
  EXPECT_EQ(again.Get(kSectionSettings, "FFL1.0"), "1");
  EXPECT_EQ(again.Get(kSectionOptions, "Show Tips at Startup"), "0");
  EXPECT_EQ(again.Get(kSectionFolders, "0"), "/home/me/plugins/");
  EXPECT_EQ(again.Get(kSectionFolders, "Folder1"), "/a,b/c d/");
  EXPECT_EQ(again.Get(kSectionFolders, "Pattern1"), "-*.8bf;*.txt");
  // Another application's tree stays apart from the program's own.
  EXPECT_EQ(again.Get(kSectionFolders, "Folder0"), "");
  EXPECT_EQ(again.GetSetting("OtherApp", "Folders", "Folder0"), "elsewhere");
}

TEST(SettingsStore, DeleteReportsAMissingKey) {
  TempDir dir;
  SettingsStore store(dir.file("Trel10.ini"));
  store.Save(kSectionSettings, "App0", "/usr/bin/gimp %1");
  EXPECT_TRUE(store.HasSetting(kAppName, kSectionSettings, "App0"));
  EXPECT_TRUE(store.DeleteSetting(kAppName, kSectionSettings, "App0"));
  EXPECT_FALSE(store.DeleteSetting(kAppName, kSectionSettings, "App0"));
  EXPECT_EQ(store.Get(kSectionSettings, "App0"), "");
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

TEST(SettingsStore, UnreadableFileReadsAsEmpty) {
  if (::geteuid() == 0) GTEST_SKIP() << "root reads every file";
  TempDir dir;
  const std::string path = dir.Write("Trel10.ini", "[Folders]\nFolder0=/x/\n");
  ::chmod(path.c_str(), 0);
  SettingsStore store(path);
  EXPECT_EQ(store.Get(kSectionFolders, "Folder0"), "");
  ::chmod(path.c_str(), 0600);
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

}  // namespace
}  // namespace trel

namespace trel {
namespace {

TEST(SettingsStore, AFileThatCannotBeWrittenIsReported) {
  test::TempDir dir;
  dir.Write("blocker", "a file where the folder should be");
  SettingsStore store(dir.file("blocker/Trel10.ini"));
  store.Save(kSectionFolders, "Folder0", "/x/");
  EXPECT_FALSE(store.Flush());
  EXPECT_EQ(store.Get(kSectionFolders, "Folder0"), "/x/");
}

}  // namespace
}  // namespace trel
