#include "catalogue/ScanCache.h"

#include <sys/stat.h>
#include <utime.h>

#include <filesystem>

#include "CatalogueTesting.h"

namespace trel::test {
namespace {

class ScanCacheTest : public CatalogueTest {
 protected:
  ScanCacheTest() {
    std::filesystem::create_directories(dir.file("plugins"));
    std::filesystem::create_directories(dir.file("home"));
    folder = dir.file("plugins/");
    cacheFolder = dir.file("home/cache");
  }
  std::string Plugin(const std::string& name, const std::string& category, const std::string& title) {
    return dir.Write("plugins/" + name, PiplPlugin(category, title));
  }
  // A scan of `folder` through a fresh cache object, as a new visit would make.
  PaneCatalogue Scan(int* hits = nullptr, int* misses = nullptr, const ScanOptions& options = {}) {
    ScanCache cache(cacheFolder, folder, options, table);
    cache.Load();
    PaneCatalogue pane;
    ScanPluginRecurse(pane, folder, options, table, env, cache.Wrap({}, options, table, env));
    EXPECT_TRUE(cache.Save());
    if (hits) *hits = cache.hits();
    if (misses) *misses = cache.misses();
    return pane;
  }
  std::string CacheFile(const ScanOptions& options = {}) const {
    return ScanCache(cacheFolder, folder, options, table).path();
  }
  // Sets a file's modification time to a fixed second, as a copy that keeps
  // times would.
  static void Touch(const std::string& path, time_t when) {
    struct utimbuf times {when, when};
    ASSERT_EQ(::utime(path.c_str(), &times), 0);
  }

  std::string folder, cacheFolder;
  PluginTypeTable table = DefaultTypes();
};

TEST_F(ScanCacheTest, ASecondVisitReadsOnlyTheFilesThatChanged) {
  Plugin("a.8bf", "Blur", "Soft");
  const std::string b = Plugin("b.8bf", "Noise", "Grain");
  Plugin("c._bf", "Blur", "Off");
  dir.Write("plugins/readme.doc", "not a plugin");
  int hits = 0, misses = 0;
  const PaneCatalogue cold = Scan(&hits, &misses);
  // The full type table makes the mask "*.*", so the document is looked at
  // too; that it is no plugin is remembered like the rest.
  EXPECT_EQ(std::make_pair(hits, misses), std::make_pair(0, 4));

  const PaneCatalogue warm = Scan(&hits, &misses);
  EXPECT_EQ(std::make_pair(hits, misses), std::make_pair(4, 0));
  EXPECT_EQ(Column(warm.plugins, &PluginEntry::title), Column(cold.plugins, &PluginEntry::title));
  EXPECT_EQ(Column(warm.plugins, &PluginEntry::path), Column(cold.plugins, &PluginEntry::path));
  EXPECT_EQ(warm.categories, cold.categories);

  // The same size, another time: read again, and the new category shows.
  WriteFileBytes(b, PiplPlugin("Sharp", "Grain"));
  Touch(b, 1000000000);
  const PaneCatalogue changed = Scan(&hits, &misses);
  EXPECT_EQ(std::make_pair(hits, misses), std::make_pair(3, 1));
  EXPECT_EQ(changed.plugins[2].category, "Sharp");
}

// Paths are looked up in the file's own bytes: names that the file must
// escape, and a folder spelt in another case, are found again all the same.
TEST_F(ScanCacheTest, EscapedNamesAndAnotherCaseOfTheFolderAreFoundAgain) {
  Plugin("tab\there.8bf", "Blur", "Tabbed");
  Plugin("back\\slash.8bf", "Noise", "Slashed");
  Plugin("line\nend.8bf", "Sharp", "Broken");
  int hits = 0, misses = 0;
  const PaneCatalogue cold = Scan(&hits, &misses);
  EXPECT_EQ(misses, 3);
  const PaneCatalogue warm = Scan(&hits, &misses);
  EXPECT_EQ(std::make_pair(hits, misses), std::make_pair(3, 0));
  EXPECT_EQ(Column(warm.plugins, &PluginEntry::path), Column(cold.plugins, &PluginEntry::path));
  EXPECT_EQ(Column(warm.plugins, &PluginEntry::title), Column(cold.plugins, &PluginEntry::title));

  // The cache of "plugins/" read while scanning "PLUGINS/" through a link:
  // the key ignores case, and the entries carry today's spelling.
  std::filesystem::create_directory_symlink(folder, dir.file("PLUGINS"));
  ScanCache cache(cacheFolder, folder, {}, table);
  ASSERT_TRUE(cache.Load());
  std::vector<PluginEntry> out;
  EXPECT_TRUE(cache.Identify(dir.file("PLUGINS/"), "tab\there.8bf", {}, table, env, out));
  EXPECT_EQ(cache.hits(), 1);
  ASSERT_EQ(out.size(), 1u);
  EXPECT_EQ(out[0].path, dir.file("PLUGINS/") + "tab\there.8bf");
  EXPECT_EQ(out[0].title, "Tabbed");
}

TEST_F(ScanCacheTest, RemovedAndAddedFilesAreNotAnsweredFromMemoryAndOtherOptionsUseAnotherFile) {
  Plugin("a.8bf", "Blur", "Soft");
  const std::string gone = Plugin("b.8bf", "Noise", "Grain");
  Scan();
  std::filesystem::remove(gone);
  Plugin("n.8bf", "New", "Fresh");
  int hits = 0, misses = 0;
  EXPECT_EQ(Column(Scan(&hits, &misses).plugins, &PluginEntry::title), (Strings{"Soft", "Fresh"}));
  EXPECT_EQ(std::make_pair(hits, misses), std::make_pair(1, 1));
  const ScanOptions sources{.includeSources = true};
  EXPECT_NE(CacheFile(), CacheFile(sources));
  Scan(&hits, &misses, sources);
  EXPECT_EQ(std::make_pair(hits, misses), std::make_pair(0, 2));
}

// Whatever happened to the cache file, the scan is right and the file is
// written anew.
TEST_F(ScanCacheTest, ADamagedCacheIsIgnoredAndRebuilt) {
  Plugin("a.8bf", "Blur", "Soft");
  Plugin("b.8bf", "Noise", "Grain\tTab\\Slash\nLine");
  const PaneCatalogue truth = Scan();
  const std::string good = ReadFileBytes(CacheFile());
  ASSERT_FALSE(good.empty());

  const auto swap = [&](std::string s, const std::string& from, const std::string& to) {
    const size_t at = s.find(from);
    return at == std::string::npos ? s : s.replace(at, from.size(), to);
  };
  const std::vector<std::pair<const char*, std::string>> damages = {
      {"cut in the middle", good.substr(0, good.size() / 2)},
      {"no end line", swap(good, "END\t", "EN")},
      {"wrong record count", swap(good, "END\t2", "END\t3")},
      {"wrong magic", swap(good, "TRELSCAN", "TRELSCAM")},
      {"a letter in a number", swap(good, "\nE\t", "\nE\tx")},
      {"a broken escape", swap(good, "\\t", "\\q")},
      {"an entry line missing", swap(good, "\nE\t", "\nX\t")},
      {"empty", ""},
      {"binary junk", std::string(300, '\xff')},
  };
  for (const auto& [what, bytes] : damages) {
    SCOPED_TRACE(what);
    WriteFileBytes(CacheFile(), bytes);
    ScanCache cache(cacheFolder, folder, {}, table);
    if (bytes != good) {
      EXPECT_FALSE(cache.Load());
    }
    int hits = 0, misses = 0;
    const PaneCatalogue pane = Scan(&hits, &misses);
    EXPECT_EQ(Column(pane.plugins, &PluginEntry::title), Column(truth.plugins, &PluginEntry::title));
    EXPECT_EQ(Column(pane.plugins, &PluginEntry::category), Column(truth.plugins, &PluginEntry::category));
    EXPECT_EQ(ReadFileBytes(CacheFile()), good);
  }
}

// A cache that lies (an entry of another category with the file's true size
// and time) is believed: that is the contract of the key. This pins the key
// to size and time, not to the bytes.
TEST_F(ScanCacheTest, TheKeyIsPathSizeAndTime) {
  const std::string a = Plugin("a.8bf", "Blur", "Soft");
  Touch(a, 1200000000);
  Scan();
  std::string text = ReadFileBytes(CacheFile());
  const size_t at = text.find("\tBlur\t");
  ASSERT_NE(at, std::string::npos);
  text.replace(at, 6, "\tCached\t");
  WriteFileBytes(CacheFile(), text);
  EXPECT_EQ(Scan().plugins[1].category, "Cached");
  // One more second and the file is read again.
  Touch(a, 1200000001);
  EXPECT_EQ(Scan().plugins[1].category, "Blur");
}

TEST_F(ScanCacheTest, AnUnwritableCacheFolderLeavesTheScanAlone) {
  Plugin("a.8bf", "Blur", "Soft");
  dir.Write("home/cache", "a file where the folder should be");
  ScanCache cache(cacheFolder, folder, {}, table);
  EXPECT_FALSE(cache.Load());
  PaneCatalogue pane;
  EXPECT_EQ(ScanPluginRecurse(pane, folder, {}, table, env, cache.Wrap({}, {}, table, env)), 1);
  EXPECT_FALSE(cache.Save());
  EXPECT_EQ(dir.Read("home/cache"), "a file where the folder should be");
}

}  // namespace
}  // namespace trel::test
