#include <filesystem>
#include <iterator>

#include "base/NameMatch.h"
#include "base/PluginKinds.h"
#include "catalogue/CatalogueTesting.h"
#include "catalogue/PluginScanner.h"
#include "filter/TextFormats.h"

namespace trel {
namespace {

using test::Column;
using test::PiplPlugin;
using test::Strings;

// A plugin of one of the Filter Factory sizes with its category where the
// compiled filters have it.
std::string FactorySized(size_t size, size_t categoryPosition, const std::string& title = "FF Title") {
  return test::BuildPeWithTextAt({test::Pipl({"FF Cat", title})}, {.fileSize = size}, "FF Cat", categoryPosition);
}

class ScannerTest : public test::CatalogueTest {
 protected:
  int Scan(const ScanOptions& options = {}) { return ScanPluginRecurse(pane, dir.path(), options, table, env); }
  PluginViewEntry Enter() { return EnterPluginView(pane, dir.path(), {}, table, env); }
  PaneCatalogue pane;
  PluginTypeTable table;
};

TEST_F(ScannerTest, MultiFilterPluginGivesOneEntryPerFilterAndOnlyTheLastCategory) {
  dir.Write("multi.8bf", test::BuildPe({test::Pipl({"Blur", "Soft"}, 1), test::Pipl({"Sharpen", "Crisp"}, 2)}));
  ASSERT_EQ(Scan(), 2);
  EXPECT_EQ(Column(pane.plugins, &PluginEntry::title), (Strings{"Soft", "Crisp"}));
  EXPECT_EQ(pane.plugins[1].path, pane.plugins[2].path);
  EXPECT_EQ(pane.categories, Strings{"Sharpen"});
}

TEST_F(ScannerTest, FilesComeInNameOrderAndSubfoldersOnlyWithRecursion) {
  std::filesystem::create_directories(dir.file("sub/deeper"));
  for (const auto& [file, category] : {std::pair{"b.8bf", "Zeta"}, {"A.8bf", "alpha"}, {"sub/deeper/d.8bf", "Deep"},
                                       {"sub/c.8bf", "Mid"}, {"z.8bf", "Zeta"}}) {
    dir.Write(file, PiplPlugin(category, file));
  }
  ASSERT_EQ(Scan(), 3);
  EXPECT_EQ(Column(pane.plugins, &PluginEntry::title), (Strings{"A.8bf", "b.8bf", "z.8bf"}));
  pane = {};
  ASSERT_EQ(Scan({.subFolders = true}), 5);
  EXPECT_EQ(pane.plugins[4].title, "sub/c.8bf");
  EXPECT_EQ(pane.plugins[5].title, "sub/deeper/d.8bf");
  EXPECT_EQ(pane.categories, (Strings{"alpha", "Deep", "Mid", "Zeta"}));
}

TEST_F(ScannerTest, EachKindIsDispatchedAndFilterFactoryPlacesZeroTheOffset) {
  constexpr int kAny = -3, kKept = -2;  // kKept: the reader's offset, not zeroed
  struct Case {
    const char* file;
    std::string bytes;
    const char* category;
    const char* title;  // nullptr: not checked
    int32_t offset;
  };
  const Case cases[] = {
      {"a_broken.8bf", "MZ not really", "[Unknown]", "a_broken.8bf", kAny},
      {"b_empty.aex", "", "[Unknown]", "b_empty.aex", kAny},
      {"c32.8bf", PiplPlugin("Old", "Narrow", {.pe32plus = false, .peHeaderOffset = 0x80}), "Old", "Narrow", kKept},
      {"d64.8bf", PiplPlugin("New", "Wide"), "New", "Wide", kKept},
      {"e_ff.8bf", FactorySized(57344, 31064), "FF Cat", "FF Title", 0},
      {"f_ff.8bf", FactorySized(53760, 30404), "FF Cat", nullptr, 30404},
      {"g_ff.8bf", FactorySized(49152, 23896), "FF Cat", nullptr, 0},
      {"h_mac.bin", test::PlaceBytes(99712, {{59017, std::string("Factory") + '\0'},
                                           {49852, "\x09Mac Title"}, {50124, "\x07Mac Cat"}}),
       "Mac Cat", "Mac Title", 0},
      {"i_other.bin", "not a plugin", "[Unknown]", nullptr, kAny},
      {"j_ff.prm", test::BuildPeWithTextAt({test::Pipl({"Any", "Video FF"})}, {.fileSize = 50176}, "Any", 29108),
       "[Premiere FF]", nullptr, 0},
      {"k_tf.prm", test::BuildPeWithTextAt({test::Pipl({"Any", "Transition TF"})}, {.fileSize = 51200}, "Any", 29692),
       "[Premiere TF]", nullptr, kAny},
      {"l_video_prm", test::PlaceBytes(20000, {{10002, test::PremiereVideo("Old Video")}}), "[Premiere Video]",
       "Old Video", kKept},
  };
  for (const Case& c : cases) dir.Write(c.file, c.bytes);
  ASSERT_EQ(Scan(), static_cast<int>(std::size(cases)));
  for (int i = 1; i <= pane.plugins.Count(); ++i) {
    const Case& c = cases[i - 1];
    const PluginEntry& e = pane.plugins[i];
    SCOPED_TRACE(c.file);
    EXPECT_EQ(e.path, dir.file(c.file));
    EXPECT_EQ(e.category, c.category);
    if (c.title) { EXPECT_EQ(e.title, c.title); }
    if (c.offset == kKept) {
      EXPECT_NE(e.categoryOffset, 0);
    } else if (c.offset != kAny) {
      EXPECT_EQ(e.categoryOffset, c.offset);
    }
  }
}

TEST_F(ScannerTest, SourcesOnlyWithTheOptionAndTypeTableFilesOnlyWhenTheirRowIsChecked) {
  FFFilter f = test::SourceFilter("Glow.afs", "Sources");
  Writeafspff(f, dir.path(), 0, env);
  dir.Write("x.tub", "tube");
  dir.Write("y.api", "acrobat");
  dir.Write("z.abcd", "four letters");
  EXPECT_EQ(Scan(), 0);
  table = test::DefaultTypes("Tube");
  ASSERT_EQ(Scan({.includeSources = true}), 2);
  EXPECT_EQ(Column(pane.plugins, &PluginEntry::title), (Strings{"Glow (.afs)", "x"}));
  EXPECT_EQ(Column(pane.plugins, &PluginEntry::category), (Strings{"Sources", "[PSP Tube]"}));
  EXPECT_EQ(pane.plugins[1].categoryOffset, 0);
  EXPECT_EQ(pane.plugins[2].categoryOffset, -1);
}

TEST_F(ScannerTest, MaskTakesEveryPluginFormButTheDottedPremiereOneUntilItFallsBackToEverything) {
  // "*?prm" stands for ".prm" and "_prm" with one wild character; "._rm" has
  // always been left to the fallback mask, which a long type table brings.
  const std::string mask = PluginScanMask({}, false);
  for (const char* form : {".8bf", "._bf", "_8bf", ".prm", "_prm", "._rm", ".aex", "_aex", "._ex", ".bin"}) {
    const std::string name = std::string("a") + form;
    ASSERT_TRUE(ClassifyPluginName(name)) << name;
    EXPECT_EQ(MatchesPattern(name, mask), std::string(form) != "._rm") << name;
  }
  EXPECT_EQ(PluginScanMask({}, true), mask + ";*.ffx;*.txt;*.afs;*.pff");
  dir.Write("x._rm", test::PlaceBytes(20000, {{10002, test::PremiereVideo("Hidden")}}));
  EXPECT_EQ(Scan(), 0);
  table = test::DefaultTypes();
  EXPECT_EQ(PluginScanMask(table, true), "*.*;*.ffx;*.txt;*.afs;*.pff");
  EXPECT_EQ(Scan(), 1);
  // With the shift key, only the sizes of the Filter Factory kinds the readers hold.
  const std::pair<const char*, size_t> files[] = {{"a._bf", 57344}, {"b_8bf", 57344}, {"c.bin", 99712},
                                                  {"d_prm", 51200}, {"e._rm", 51200}, {"f.aex", 57344}};
  for (const auto& [name, size] : files) dir.Write(name, FactorySized(size, 1000));
  dir.Write("g.8bf", PiplPlugin("Real", "Plugin", {.fileSize = 100 * 1024}));
  dir.Write("h.api", "x");
  pane = {};
  ASSERT_EQ(Scan({.ScanFFOnly = true}), 5);
  EXPECT_EQ(Column(pane.plugins, &PluginEntry::path), (Strings{dir.file("a._bf"), dir.file("b_8bf"), dir.file("c.bin"),
                                                               dir.file("d_prm"), dir.file("e._rm")}));
}

TEST_F(ScannerTest, WalkSeesWhatTheFileListShowsAndNeverEntersALinkedFolder) {
  namespace fs = std::filesystem;
  dir.Write("a.8bf", PiplPlugin("C", "shown"));
  dir.Write(".b.8bf", PiplPlugin("C", "hidden file"));
  fs::create_directories(dir.file(".hidden"));
  dir.Write(".hidden/c.8bf", PiplPlugin("C", "in a hidden folder"));
  fs::create_directories(dir.file("sub"));
  dir.Write("sub/d.8bf", PiplPlugin("C", "in a folder"));
  fs::create_symlink(dir.file("a.8bf"), dir.file("sub/e.8bf"));
  // A link back up would make the walk endless if it were entered.
  fs::create_symlink(dir.path(), dir.file("sub/up"));
  ASSERT_EQ(Scan({.subFolders = true}), 3);
  EXPECT_EQ(Column(pane.plugins, &PluginEntry::path),
            (Strings{dir.file("a.8bf"), dir.file("sub/d.8bf"), dir.file("sub/e.8bf")}));
}

TEST_F(ScannerTest, ProgressAndLabelsAreReported) {
  for (const char* n : {"a.8bf", "b.8bf", "c.8bf", "d.8bf"}) dir.Write(n, PiplPlugin("C", n));
  std::vector<int> progress;
  std::vector<std::string> labels;
  int yields = 0;
  ScanCallbacks callbacks{[&](const std::string& s) { labels.push_back(s); },
                          [&](int p) { progress.push_back(p); }, [&] { ++yields; }};
  // yieldRate 50: every second file.
  ASSERT_EQ(ScanPluginRecurse(pane, dir.path(), {.yieldRate = 50}, table, env, callbacks), 4);
  EXPECT_EQ(progress, (std::vector<int>{0, 25, 50, 75}));
  EXPECT_EQ(labels.front(), dir.path());
  EXPECT_EQ(labels.back(), "d.8bf");
  EXPECT_EQ(yields, 2);
}

TEST_F(ScannerTest, EnteringThePluginViewScansOnlyWhenTheListIsStale) {
  dir.Write("readme.txt", "text");
  EXPECT_EQ(Enter(), PluginViewEntry::NothingFound);
  EXPECT_TRUE(shell.boxes.empty());  // the caller tells
  dir.Write("a.8bf", PiplPlugin("Blur", "A"));
  EXPECT_EQ(Enter(), PluginViewEntry::Scanned);
  EXPECT_EQ(pane.categorySnapshot, Strings{"Blur"});
  dir.Write("b.8bf", PiplPlugin("Noise", "B"));
  EXPECT_EQ(Enter(), PluginViewEntry::ListStands);
  EXPECT_EQ(pane.plugins.Count(), 1);
  pane.PluginViewFresh = false;  // what a toggle in the File View does
  EXPECT_EQ(Enter(), PluginViewEntry::Scanned);
  EXPECT_EQ(pane.plugins.Count(), 2);

  // Esc after the first file drops what was found so far.
  pane.PluginViewFresh = false;
  shell.escapePolls = 0;
  shell.escapeAfterPolls = 1;
  EXPECT_EQ(Enter(), PluginViewEntry::NothingFound);
  EXPECT_EQ(pane.plugins.Count(), 0);
  EXPECT_FALSE(pane.PluginViewFresh);
}

}  // namespace
}  // namespace trel
