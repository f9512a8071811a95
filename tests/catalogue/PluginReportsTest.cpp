#include <gtest/gtest.h>

#include "catalogue/EnableState.h"
#include "catalogue/PluginReports.h"
#include "support/PeBuilder.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace {

class ReportsTest : public ::testing::Test {
 protected:
  ReportsTest() { env.shell = &shell; }
  PluginInformation Info(const std::string& name, const std::string& bytes) {
    return PlugInInformation(dir.Write(name, bytes), table, env);
  }
  test::TempDir dir;
  test::RecordingShell shell;
  FilterEnv env;
  PluginTypeTable table;
};

const char* const kNotFF =
    "\n\nThis file isn't a Filter Factory plugin\nand therefor can't be loaded\ninto the Filter Factory Editor.";

TEST_F(ReportsTest, OrdinaryPluginShowsItsLineAndTheRoomOfItsCategory) {
  const std::string bytes = test::BuildPe({test::Pipl({"Distort", "Twirl", true, 4})});
  const PluginInformation info = Info("twirl.8bf", bytes);
  ASSERT_TRUE(info.known);
  EXPECT_EQ(info.kind, "Photoshop Filter Plugin");
  const size_t at = bytes.find("Distort");  // offset - 1, 0-based position of the text
  char hex[16];
  std::snprintf(hex, sizeof hex, "%zX", at);
  EXPECT_EQ(info.text, "twirl.8bf\n\nType: Photoshop Filter Plugin\n\nDistort: Twirl\n\n"
                       "Max. Category Name: 11 letters at &H" + std::string(hex) + kNotFF);
}

TEST_F(ReportsTest, KindsOfThePhotoshopFamily) {
  EXPECT_EQ(Info("m.8bf", test::BuildPe({test::Pipl({"A", "One"}, 1), test::Pipl({"B", "Two"}, 2)})).kind,
            "Photoshop Multiple Filter Plugin");
  EXPECT_EQ(Info("m._bf", test::BuildPe({test::Pipl({"A", "One"}, 1), test::Pipl({"B", "Two"}, 2)})).text.find(
                "A: One\nB: Two"),
            std::string("m._bf\n\nType: Photoshop Multiple Filter Plugin\n\n").size());
  EXPECT_EQ(Info("fx.aex", test::BuildPe({test::Pipl({"Blur & Sharpen", "Fast Blur"})})).kind,
            "After Effects Plugin");

  // A PIMI resource lying far into the section makes the offset negative.
  const std::string old = test::BuildPe(
      {{"AAAA", 0, 1, std::string(5000, '\x7F')}, test::Pimi("Old Style"), test::Bfm8("Old Filter")});
  EXPECT_EQ(Info("old.8bf", old).kind, "Photoshop 2.5 Filter Plugin");
}

TEST_F(ReportsTest, FilterFactorySizesAreNamedBySize) {
  test::PeOptions o;
  o.fileSize = 49664;
  const PluginInformation info =
      Info("h.8bf", test::BuildPeWithTextAt({test::Pipl({"Halvard Cat", "Halvard Title"})}, o, "Halvard Cat", 34980));
  EXPECT_EQ(info.kind, "Halvard's FF Design (FF 3.04)");
  EXPECT_NE(info.text.find("Halvard Cat: Halvard Title"), std::string::npos);
  EXPECT_NE(info.text.find("at &H88A3"), std::string::npos);  // 34980 - 1
  o.fileSize = 57344;
  const PluginInformation ff =
      Info("f.8bf", test::BuildPeWithTextAt({test::Pipl({"FF Cat", "FF Title"})}, o, "FF Cat", 31064));
  EXPECT_EQ(ff.kind, "Photoshop Filter Factory 3.0");
  EXPECT_EQ(ff.text.find("isn't a Filter Factory plugin"), std::string::npos);
}

TEST_F(ReportsTest, PremiereKinds) {
  EXPECT_EQ(Info("v.prm", test::PlaceBytes(20000, {{10002, test::PremiereVideo("V")}})).kind,
            "Premiere 4.2 Video Plugin");
  EXPECT_EQ(Info("a_prm", test::PlaceBytes(20000, {{10002, test::PremiereAudio("A")}})).kind,
            "Premiere 4.2 Audio Plugin");
  EXPECT_EQ(Info("t.prm", test::PlaceBytes(20000, {{10002, test::PremiereTransition("Slide", "Slide Away")}})).kind,
            "Premiere 4.2 Transition Plugin");
  const PluginInformation ff = Info("ff.prm", test::PlaceBytes(50176, {{30002, test::PremiereVideo("Factory Made")}}));
  EXPECT_EQ(ff.kind, "Premiere Filter Factory");
  EXPECT_NE(ff.text.find("Plugin Name: Factory Made\nCategory: [Premiere FF]"), std::string::npos);
  EXPECT_EQ(Info("tf._rm", test::PlaceBytes(51200, {{30002, test::PremiereTransition("Slide", "Slide Away")}})).kind,
            "Premiere Transition Factory");
  EXPECT_EQ(Info("new.prm", test::BuildPe({test::Pipl({"Keying", "Key"})})).kind, "Premiere 5.0 Plugin");
}

TEST_F(ReportsTest, TypeTableAndUnknownFiles) {
  PluginTypeList list = {{"Acrobat Plugin (api|3)", true}};
  GetPlugTypes(list, table);
  const PluginInformation api = Info("reader.api", "data");
  EXPECT_EQ(api.kind, "Acrobat Plugin");
  EXPECT_NE(api.text.find("Category: [Acrobat Plugin]\nTitle: reader"), std::string::npos);

  EXPECT_EQ(Info("small.bin", "not mac").text, "small.bin is an unknown file type or maybe damaged.");
  EXPECT_FALSE(Info("broken.8bf", "MZ").known);
}

TEST_F(ReportsTest, InformationCommandRefusesOrShowsItsBox) {
  cmd_PlugInInformation(kFFLView, {dir.file("x.8bf")}, table, env);
  cmd_PlugInInformation(kFileView, {}, table, env);
  cmd_PlugInInformation(kPluginView, {dir.Write("p.8bf", test::BuildPe({test::Pipl({"C", "T"})}))}, table, env);
  ASSERT_EQ(shell.boxes.size(), 3u);
  EXPECT_EQ(shell.boxes[0].text, "Plugin Information only works in File and Plugin View.");
  EXPECT_EQ(shell.boxes[1].text, "Please select a plugin or other supported file.");
  EXPECT_EQ(shell.boxes[2].title, "Plugin Information");
  EXPECT_EQ(shell.boxes[2].icon, MsgIcon::Information);
}

class PluginListTest : public ReportsTest {
 protected:
  void SetUp() override {
    paths = {dir.Write("zeta.8bf", test::BuildPe({test::Pipl({"Blur", "zeta Soft"})})),
             dir.Write("alpha.8bf", test::BuildPe({test::Pipl({"Noise", "Alpha Grain..."})})),
             dir.Write("junk.8bf", "unreadable"),
             dir.Write("hidden._rm", test::PlaceBytes(20000, {{10002, test::PremiereVideo("Skipped")}})),
             dir.Write("video.prm", test::PlaceBytes(20000, {{10002, test::PremiereVideo("Old Video")}}))};
  }
  std::vector<std::string> paths;
};

TEST_F(PluginListTest, TextLinesAreSortedAndLeaveOutWhatCannotBeRead) {
  const auto lines = PlugInListLines(paths, {}, env);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0], "[Premiere Video]: Old Video (video.prm) by , ");
  EXPECT_EQ(lines[1], "Blur: zeta Soft (zeta.8bf) by , ");
  EXPECT_EQ(lines[2], "Noise: Alpha Grain... (alpha.8bf) by , ");

  PlugInListOptions titleOnly{false, true, false, false, false, false};
  EXPECT_EQ(PlugInListLines(paths, titleOnly, env),
            (std::vector<std::string>{"Alpha Grain...", "Old Video", "zeta Soft"}));
  PlugInListOptions nothing{false, false, false, false, false, false};
  EXPECT_EQ(PlugInListLines(paths, nothing, env), (std::vector<std::string>{"", "", ""}));
}

TEST_F(PluginListTest, CsvLinesEndInFreeware) {
  PlugInListOptions csv;
  csv.csv = true;
  csv.category = false;  // the boxes don't matter in this form
  const auto lines = PlugInListLines(paths, csv, env);
  EXPECT_EQ(lines, (std::vector<std::string>{"Alpha Grain;Noise;;;freeware;",
                                             "Old Video;[Premiere Video];;;freeware;",
                                             "zeta Soft;Blur;;;freeware;"}));
}

TEST_F(PluginListTest, CommandWritesTheFileWithLineBreaksOrRefuses) {
  std::string text;
  EXPECT_FALSE(cmd_PlugInList({}, {}, false, dir.file("FFL-List.txt"), text, env));
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "Please select one or more plugin files.");

  PlugInListOptions titleOnly{false, true, false, false, false, false};
  ASSERT_TRUE(cmd_PlugInList(paths, titleOnly, false, dir.file("FFL-List.txt"), text, env));
  EXPECT_EQ(dir.Read("FFL-List.txt"), "Alpha Grain...\r\nOld Video\r\nzeta Soft\r\n");
  EXPECT_EQ(text, dir.Read("FFL-List.txt"));

  ASSERT_TRUE(cmd_PlugInList({paths[2]}, titleOnly, false, dir.file("empty.txt"), text, env));
  EXPECT_FALSE(dir.Exists("empty.txt"));
}

}  // namespace
}  // namespace trel
