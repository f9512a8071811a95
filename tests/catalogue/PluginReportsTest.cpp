#include <filesystem>

#include "catalogue/CatalogueTesting.h"
#include "catalogue/EnableState.h"
#include "catalogue/PluginIdentification.h"
#include "catalogue/PluginReports.h"

namespace trel {
namespace {

using test::PlaceBytes;

class ReportsTest : public test::CatalogueTest {
 protected:
  PluginInformation Info(const std::string& name, const std::string& bytes) {
    return PlugInInformation(dir.Write(name, bytes), table, env);
  }
  PluginTypeTable table = test::Types({"Acrobat Plugin (api|3)"});
};

TEST_F(ReportsTest, OrdinaryPluginShowsItsLineAndTheRoomOfItsCategory) {
  const std::string bytes = test::BuildPe({test::Pipl({"Distort", "Twirl", true, 4})});
  const PluginInformation info = Info("twirl.8bf", bytes);
  ASSERT_TRUE(info.known);
  EXPECT_EQ(info.kind, "Photoshop Filter Plugin");
  char hex[16];
  std::snprintf(hex, sizeof hex, "%zX", bytes.find("Distort"));  // offset - 1
  EXPECT_EQ(info.text, "twirl.8bf\n\nType: Photoshop Filter Plugin\n\nDistort: Twirl\n\n"
                       "Max. Category Name: 11 letters at &H" + std::string(hex) +
                       "\n\nThis file isn't a Filter Factory plugin\nand therefor can't be loaded\n"
                       "into the Filter Factory Editor.");
}

TEST_F(ReportsTest, EveryKindIsNamedWithItsLines) {
  const std::string twoFilters = test::BuildPe({test::Pipl({"A", "One"}, 1), test::Pipl({"B", "Two"}, 2)});
  // A PIMI resource lying far into the section makes the offset negative.
  const std::string old = test::BuildPe(
      {{"AAAA", 0, 1, std::string(5000, '\x7F')}, test::Pimi("Old Style"), test::Bfm8("Old Filter")});
  const auto factory = [](const char* category, size_t size, size_t position) {
    return test::BuildPeWithTextAt({test::Pipl({category, "Title"})}, {.fileSize = size}, category, position);
  };
  const std::string transition = test::PremiereTransition("Slide", "Slide Away");
  struct Case {
    const char* file;
    std::string bytes;
    const char* kind;
    const char* text;     // a part of the text
    bool editor = false;  // without the line that the editor can't load it
  };
  const Case cases[] = {
      {"m._bf", twoFilters, "Photoshop Multiple Filter Plugin",
       "m._bf\n\nType: Photoshop Multiple Filter Plugin\n\nA: One\nB: Two"},
      {"fx.aex", test::PiplPlugin("Blur & Sharpen", "Fast Blur"), "After Effects Plugin", "Blur & Sharpen: Fast Blur"},
      {"old.8bf", old, "Photoshop 2.5 Filter Plugin", "Old Style: Old Filter"},
      {"h.8bf", factory("Halvard Cat", 49664, 34980), "Halvard's FF Design (FF 3.04)", "at &H88A3"},  // 34980 - 1
      {"f.8bf", factory("FF Cat", 57344, 31064), "Photoshop Filter Factory 3.0", "FF Cat: Title", true},
      {"v.prm", PlaceBytes(20000, {{10002, test::PremiereVideo("V")}}), "Premiere 4.2 Video Plugin", ""},
      {"a_prm", PlaceBytes(20000, {{10002, test::PremiereAudio("A")}}), "Premiere 4.2 Audio Plugin", ""},
      {"t.prm", PlaceBytes(20000, {{10002, transition}}), "Premiere 4.2 Transition Plugin", ""},
      {"ff.prm", PlaceBytes(50176, {{30002, test::PremiereVideo("Factory Made")}}), "Premiere Filter Factory",
       "Plugin Name: Factory Made\nCategory: [Premiere FF]"},
      {"tf._rm", PlaceBytes(51200, {{30002, transition}}), "Premiere Transition Factory", ""},
      {"new.prm", test::PiplPlugin("Keying", "Key"), "Premiere 5.0 Plugin", ""},
      {"reader.api", "data", "Acrobat Plugin", "Category: [Acrobat Plugin]\nTitle: reader"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    const PluginInformation info = Info(c.file, c.bytes);
    EXPECT_EQ(info.kind, c.kind);
    EXPECT_NE(info.text.find(c.text), std::string::npos) << info.text;
    if (c.editor) { EXPECT_EQ(info.text.find("isn't a Filter Factory plugin"), std::string::npos); }
  }
  EXPECT_EQ(Info("small.bin", "not mac").text, "small.bin is an unknown file type or maybe damaged.");
  EXPECT_FALSE(Info("broken.8bf", "MZ").known);
}

TEST_F(ReportsTest, InformationCommandRefusesOrShowsItsBox) {
  const Error ffl = cmd_PlugInInformation(kFFLView, {dir.file("x.8bf")}, table, env);
  const Error none = cmd_PlugInInformation(kFileView, {}, table, env);
  const Error known = cmd_PlugInInformation(kPluginView, {dir.Write("p.8bf", test::PiplPlugin("C", "T"))}, table, env);
  const Error unknown = cmd_PlugInInformation(kFileView, {dir.Write("u.bin", "not mac")}, table, env);
  EXPECT_EQ(ffl.reason, "Plugin Information only works in File and Plugin View.");
  EXPECT_EQ(none.reason, "Please select a plugin or other supported file.");
  for (const Error* e : {&ffl, &none, &unknown})
    EXPECT_EQ(std::tie(e->kind, e->title), std::make_tuple(ErrorKind::Warning, ffl.title));
  EXPECT_NE(known.reason.find("C: T"), std::string::npos);
  EXPECT_EQ(known.kind, ErrorKind::Information);
  EXPECT_TRUE(shell.boxes.empty());
}

class PluginListTest : public ReportsTest {
 protected:
  void SetUp() override {
    paths = {dir.Write("zeta.8bf", test::PiplPlugin("Blur", "zeta Soft")),
             dir.Write("alpha.8bf", test::PiplPlugin("Noise", "Alpha Grain...")),
             dir.Write("junk.8bf", "unreadable"),
             dir.Write("hidden._rm", PlaceBytes(20000, {{10002, test::PremiereVideo("Skipped")}})),
             dir.Write("video.prm", PlaceBytes(20000, {{10002, test::PremiereVideo("Old Video")}}))};
  }
  std::vector<std::string> paths;
  const PlugInListOptions titleOnly{false, true, false, false, false, false};
};

TEST_F(PluginListTest, LinesAreSortedAndLeaveOutWhatCannotBeRead) {
  using Lines = std::vector<std::string>;
  EXPECT_EQ(PlugInListLines(paths, {}, env),
            (Lines{"[Premiere Video]: Old Video (video.prm) by , ", "Blur: zeta Soft (zeta.8bf) by , ",
                   "Noise: Alpha Grain... (alpha.8bf) by , "}));
  EXPECT_EQ(PlugInListLines(paths, titleOnly, env), (Lines{"Alpha Grain...", "Old Video", "zeta Soft"}));
  EXPECT_EQ(PlugInListLines(paths, {false, false, false, false, false, false}, env), (Lines{"", "", ""}));
  // CSV lines end in "freeware"; the boxes don't matter in this form.
  PlugInListOptions csv{.category = false, .csv = true};
  EXPECT_EQ(PlugInListLines(paths, csv, env),
            (Lines{"Alpha Grain;Noise;;;freeware;", "Old Video;[Premiere Video];;;freeware;",
                   "zeta Soft;Blur;;;freeware;"}));
}

TEST_F(PluginListTest, CommandWritesTheFileWithLineBreaksOrRefuses) {
  std::string text;
  const Expected<void> refused = cmd_PlugInList({}, {}, false, dir.file("FFL-List.txt"), text, env);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.error().kind, ErrorKind::Warning);
  EXPECT_FALSE(dir.Exists("FFL-List.txt"));
  ASSERT_TRUE(cmd_PlugInList(paths, titleOnly, false, dir.file("FFL-List.txt"), text, env));
  EXPECT_EQ(dir.Read("FFL-List.txt"), "Alpha Grain...\r\nOld Video\r\nzeta Soft\r\n");
  EXPECT_EQ(text, dir.Read("FFL-List.txt"));
  ASSERT_TRUE(cmd_PlugInList({paths[2]}, titleOnly, false, dir.file("empty.txt"), text, env));
  EXPECT_FALSE(dir.Exists("empty.txt"));
  // A folder where the file should go: nothing is written, the warning names the target.
  std::filesystem::create_directory(dir.file("taken.txt"));
  const Expected<void> blocked = cmd_PlugInList(paths, titleOnly, false, dir.file("taken.txt"), text, env);
  ASSERT_FALSE(blocked);
  EXPECT_NE(blocked.error().reason.find(dir.file("taken.txt")), std::string::npos);
  EXPECT_TRUE(std::filesystem::is_directory(dir.file("taken.txt")));
}

TEST(ReadVersionRessource, ModesPickTheirKeyAndEveryOccurrenceAddsItsValue) {
  test::TempDir dir;
  const std::string path = dir.Write(
      "v.dll", test::BuildPe({test::Version({{"FileDescription", "Nice Effect"},
                                             {"InternalName", "nicefx"},
                                             {"ProductName", "One"}}),
                              {"", 16, 2, test::VersionData({{"ProductName", "Two"}})}}));
  std::string all;
  for (int mode : {0, 1, 2, 3, -1}) all += ReadVersionRessource(path, mode) + "|";
  EXPECT_EQ(all, "Nice Effect|nicefx|OneTwo|||");
}

TEST(ReadOther8b, TypeRowGivesTheCategoryTheNameSourceOrTheNameBeforeItsPointTheTitle) {
  test::TempDir dir;
  const PluginTypeTable defaults = test::DefaultTypes(), none;
  struct Case {
    const char* file;
    std::string bytes;
    const PluginTypeTable& table;
    bool ok;
    const char* category;
    const char* title;
  };
  const Case cases[] = {
      {"reader.api", test::BuildPe({test::Version({{"ProductName", "Acrobat Helper"}})}), defaults, true,
       "[Acrobat Plugin]", "Acrobat Helper"},
      {"my.control.ax", "no version", defaults, true, "[ActiveX Plugin]", "my"},
      {"brush_set_tub", "x", defaults, true, "[PSP Tube]", "brush"},
      {"thing.api", "x", none, true, "[Other Plugins]", "thing"},
      {".tub", "x", defaults, false, "[PSP Tube]", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    std::string category, title;
    EXPECT_EQ(ReadOther8b(dir.Write(c.file, c.bytes), c.table, category, title), c.ok);
    EXPECT_EQ(category, c.category);
    if (c.ok) { EXPECT_EQ(title, c.title); }
  }
}

}  // namespace
}  // namespace trel
