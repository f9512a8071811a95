#include "settings/Preferences.h"

#include <gtest/gtest.h>

#include "filter/CodeRewrite.h"
#include "support/TempDir.h"

namespace trel {
namespace {

using test::TempDir;

class PreferencesTest : public ::testing::Test {
 protected:
  TempDir dir;
  SettingsStore store{dir.file("Trel10.ini")};
};

TEST_F(PreferencesTest, LoadTakesWhatItCanReadAndLeavesTheRestAsItIs) {
  for (const auto& [key, value] : std::vector<std::pair<std::string, std::string>>{
           {"ScanSubDirs", "yes please"}, {"Fileview5", "7"}, {"FolderItemLimit", "-4"},
           // Keys the program never writes are still honoured.
           {"UsedFF", "2"}, {"Encrypt1", "1"}, {"EditorPlugin2", "1"}, {"PluginType0", "old row"}})
    store.Save(kSectionSettings, key, value);
  Preferences prefs;
  prefs.scanSubDirs = 1;
  LoadPreferences(store, prefs);
  EXPECT_EQ(std::tie(prefs.scanSubDirs, prefs.fileview, prefs.folderItemLimit),
            std::make_tuple(1, Preferences{}.fileview, std::string("20")));
  EXPECT_TRUE(prefs.apps.empty() && !prefs.fonts[0].set);
  EXPECT_EQ(std::make_tuple(prefs.usedFF, prefs.encrypt[1], prefs.editorPlugin[2]), std::make_tuple(2, 1, 1));
  EXPECT_TRUE(prefs.legacyPluginTypes);
  CommitPreferences(store, prefs);
  EXPECT_FALSE(store.HasSetting(kAppName, kSectionSettings, "PluginType0"));
}

TEST_F(PreferencesTest, AGapInTheAppsHidesLaterEntriesAndOkRewritesThem) {
  for (int i = 0; i < 7; ++i) store.Save(kSectionSettings, NumberedKey("App", i), "/bin/app" + std::to_string(i));
  store.Save(kSectionSettings, "App20", "/bin/late");
  Preferences prefs;
  LoadPreferences(store, prefs);
  ASSERT_EQ(prefs.apps.size(), 7u);
  CommitPreferences(store, prefs);
  EXPECT_EQ(store.Get(kSectionSettings, "App6") + "|" + store.Get(kSectionSettings, "App7") + "|" +
                store.Get(kSectionSettings, "App20"),
            "/bin/app6||");
}

TEST_F(PreferencesTest, OkGrowsAFontByOnePointAndStoresALimitOfZeroAsTwenty) {
  Preferences prefs;
  prefs.folderItemLimit = "abc";
  prefs.fonts[0] = {"Tahoma", 8.25, true, false, true};
  CommitPreferences(store, prefs);
  EXPECT_EQ(prefs.folderItemLimit + "|" + store.Get(kSectionSettings, "FolderItemLimit"), "20|20");
  EXPECT_EQ(store.Get(kSectionSettings, "FontSize1") + "|" + store.Get(kSectionSettings, "FontBold1"), "9|True");
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

TEST_F(PreferencesTest, ARoundTripAcrossARestartKeepsWhatTheStoreHolds) {
  Preferences before;
  before.interfaceFile = "Mine.des";
  before.noFFOptimize = before.scanSubDirs = before.autoTop = before.passivePaneFolder = before.fullStartUp = 1;
  before.autoAdd = {1, 0, 1};
  before.folderItemLimit = "7";
  before.fileview = {1, 1, 1, 0, 1, 0};
  before.ffl10 = 0;
  before.fonts[0] = {"DejaVu Sans", 10, false, true, true};
  before.fonts[1] = {"DejaVu Serif", 8.25, true, false, true};
  before.apps = {"/usr/bin/gimp %1", "/usr/bin/xterm"};
  before.pics = {"/pics/a.png"};
  before.includeSources = 1;  // holds for the run only
  CommitPreferences(store, before);
  ASSERT_TRUE(store.Flush());

  // The next run: a new store on the same file, and the design values to start from.
  SettingsStore next(dir.file("Trel10.ini"));
  Preferences after;
  LoadPreferences(next, after);
  // The size comes back as its whole part plus one, as the store keeps it;
  // the sources option isn't in the store and starts off in every run.
  Preferences expected = before;
  expected.fonts[0].size = 11;
  expected.fonts[1].size = 9;
  expected.includeSources = 0;
  const auto stored = [](const Preferences& p) {
    return std::tie(p.interfaceFile, p.noFFOptimize, p.scanSubDirs, p.autoAdd, p.autoTop, p.folderItemLimit,
                    p.fileview, p.passivePaneFolder, p.ffl10, p.fullStartUp, p.apps, p.pics, p.includeSources);
  };
  EXPECT_EQ(stored(after), stored(expected));
  EXPECT_TRUE(after.fonts == expected.fonts);

  // Within that run a second OK writes what the first one did.
  CommitPreferences(next, after);
  CommitPreferences(next, after);
  ASSERT_TRUE(next.Flush());
  SettingsStore third(dir.file("Trel10.ini"));
  EXPECT_EQ(third.Get(kSectionSettings, "FontSize1") + "|" + third.Get(kSectionSettings, "App1") + "|" +
                third.Get(kSectionSettings, "App2"),
            "12|/usr/bin/xterm|");
}

TEST_F(PreferencesTest, TheStoredCompileChoicesReachTheOptionsTheCoreTakes) {
  struct Row {
    std::string usedFF, encrypt0, editor0, noFF;
    CompileTemplate choice;
    bool encrypted, editorPlugin;
  };
  const Row rows[] = {
      {"", "", "", "", CompileTemplate::FilterFactory30, false, false},
      {"1", "1", "", "1", CompileTemplate::FilterFactory304, true, false},
      {"3", "", "1", "0", CompileTemplate::Macintosh, false, true},
      {"9", "x", "x", "1", CompileTemplate::FilterFactory30, false, false},  // out of range, garbage
  };
  for (const Row& row : rows) {
    TempDir own;
    SettingsStore s(own.file("Trel10.ini"));
    for (const auto& [key, value] : {std::pair{"UsedFF", row.usedFF}, {"Encrypt0", row.encrypt0},
                                     {"EditorPlugin0", row.editor0}, {"NoFFOptimize", row.noFF}})
      if (!value.empty()) s.Save(kSectionSettings, key, value);
    s.Save(kSectionSettings, "FFL1.0", "0");
    Preferences prefs;
    prefs.compile.demoPlugin = true;
    LoadPreferences(s, prefs);
    SCOPED_TRACE(row.usedFF);
    const FilterOptions options = MakeFilterOptions(prefs, "/prog/");
    const CompileOptions& c = options.compile;
    // "Editor Plugin" and "Demo Plugin" exclude each other.
    EXPECT_EQ(std::tie(c.templateChoice, c.encrypted, c.editorPlugin, c.demoPlugin),
              std::make_tuple(row.choice, row.encrypted, row.editorPlugin, !row.editorPlugin));
    EXPECT_FALSE(options.writeFFL10);
    // Without optimization the code stays as written.
    FFFilter f;
    f.codeR = "src(x,y,0)";
    OptimizeCode(f, options);
    EXPECT_EQ(f.codeR, row.noFF == "1" ? "src(x,y,0)" : "c");
  }
}

}  // namespace
}  // namespace trel
