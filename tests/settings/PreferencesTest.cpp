#include "settings/Preferences.h"

#include <gtest/gtest.h>

#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;

class PreferencesTest : public ::testing::Test {
 protected:
  TempDir dir;
  SettingsStore store{dir.file("Trel10.ini")};
};

TEST_F(PreferencesTest, AnEmptyStoreKeepsTheDesignValues) {
  Preferences prefs;
  LoadPreferences(store, prefs);
  const Preferences design;
  EXPECT_EQ(prefs.interfaceFile, "Interfc4.des");
  EXPECT_EQ(prefs.fileview, design.fileview);
  EXPECT_EQ(prefs.ffl10, design.ffl10);
  EXPECT_EQ(prefs.folderItemLimit, design.folderItemLimit);
  EXPECT_TRUE(prefs.apps.empty());
  EXPECT_FALSE(prefs.fonts[0].set);
}

TEST_F(PreferencesTest, GarbageLeavesBoxesAsTheyAre) {
  store.Save(kSectionSettings, "ScanSubDirs", "yes please");
  store.Save(kSectionSettings, "Fileview5", "7");
  store.Save(kSectionSettings, "FolderItemLimit", "-4");
  Preferences prefs;
  prefs.scanSubDirs = 1;
  LoadPreferences(store, prefs);
  EXPECT_EQ(prefs.scanSubDirs, 1);
  EXPECT_EQ(prefs.fileview[5], 1);
  EXPECT_EQ(prefs.folderItemLimit, "20");
}

TEST_F(PreferencesTest, AGapInTheAppsHidesLaterEntriesAndOkRewritesThem) {
  for (int i = 0; i < 7; ++i) store.Save(kSectionSettings, NumberedKey("App", i), "/bin/app" + std::to_string(i));
  store.Save(kSectionSettings, "App20", "/bin/late");
  Preferences prefs;
  LoadPreferences(store, prefs);
  ASSERT_EQ(prefs.apps.size(), 7u);
  CommitPreferences(store, prefs);
  EXPECT_EQ(store.Get(kSectionSettings, "App20"), "");
  EXPECT_EQ(store.Get(kSectionSettings, "App6"), "/bin/app6");
  EXPECT_EQ(store.Get(kSectionSettings, "App7"), "");
}

TEST_F(PreferencesTest, OkStoresALimitOfZeroAsTwenty) {
  Preferences prefs;
  prefs.folderItemLimit = "abc";
  CommitPreferences(store, prefs);
  EXPECT_EQ(prefs.folderItemLimit, "20");
  EXPECT_EQ(store.Get(kSectionSettings, "FolderItemLimit"), "20");
}

TEST_F(PreferencesTest, AFontGrowsByOnePointAtEveryOk) {
  Preferences prefs;
  prefs.fonts[0] = {"Tahoma", 8.25, true, false, true};
  CommitPreferences(store, prefs);
  EXPECT_EQ(store.Get(kSectionSettings, "FontSize1"), "9");
  EXPECT_EQ(store.Get(kSectionSettings, "FontBold1"), "True");
  Preferences again;
  LoadPreferences(store, again);
  EXPECT_DOUBLE_EQ(again.fonts[0].size, 9);
  CommitPreferences(store, again);
  EXPECT_EQ(store.Get(kSectionSettings, "FontSize1"), "10");
  // A font with no name or a size below 1 isn't applied.
  store.Save(kSectionSettings, "FontName2", "Arial");
  store.Save(kSectionSettings, "FontSize2", "0.5");
  Preferences small;
  LoadPreferences(store, small);
  EXPECT_FALSE(small.fonts[1].set);
}

TEST_F(PreferencesTest, KeysTheProgramNeverWritesAreStillHonoured) {
  store.Save(kSectionSettings, "UsedFF", "2");
  store.Save(kSectionSettings, "Encrypt1", "1");
  store.Save(kSectionSettings, "EditorPlugin2", "1");
  store.Save(kSectionSettings, "PluginType0", "old row");
  Preferences prefs;
  LoadPreferences(store, prefs);
  EXPECT_EQ(prefs.usedFF, 2);
  EXPECT_EQ(prefs.encrypt[1], 1);
  EXPECT_EQ(prefs.editorPlugin[2], 1);
  EXPECT_TRUE(prefs.legacyPluginTypes);
  CommitPreferences(store, prefs);
  EXPECT_FALSE(store.HasSetting(kAppName, kSectionSettings, "PluginType0"));
}

}  // namespace
}  // namespace trel
