// The editor's window-free rules: typed values, knob places, the spot grid,
// the preview passes, snippets, save names and the dialog switch of compiled
// filters.
#include <gtest/gtest.h>

#include <tuple>

#include "editor/FFEditorMod.h"
#include "filter/TextFormats.h"
#include "support/TempDir.h"

namespace trel {
namespace {

TEST(EditorMod, TypedSliderValues) {
  const std::pair<const char*, int> cases[] = {{"300", 44}, {"-3", 3}, {"255", 255},
                                               {"256", 0},  {"abc", 0}, {" 17x", 17}};
  for (const auto& [typed, value] : cases) EXPECT_EQ(NormalizeSliderValue(typed), value) << typed;
  // Long digit strings keep their value modulo 256 without overflowing.
  std::string digits = "1";
  for (int i = 0; i < 40; ++i) digits += "7";
  int mod = 0;
  for (char ch : digits) mod = (mod * 10 + (ch - '0')) % 256;
  EXPECT_EQ(NormalizeSliderValue(digits), mod);
}

TEST(EditorMod, KnobPlacesReadBackAndStayInTheTrack) {
  for (int width : {100, 236, 255, 300}) {
    int mismatches = 0;
    for (int v = 0; v <= 255; ++v) {
      const int left = PlaceKnob(v, 40, width, 11);
      EXPECT_GE(left, 41);
      EXPECT_LE(left + 11, 40 + width);  // 254 may stand one pixel right of 255
      if (KnobValue(left, 40, width, 11) != v) ++mismatches;
    }
    EXPECT_TRUE(width - 12 < 255 || mismatches <= 1) << width;  // narrow tracks cannot give each value a pixel
  }
  EXPECT_EQ(PlaceKnob(255, 0, 236, 11), 236 - 1 - 11);
  EXPECT_EQ(KnobLeftForPress(-50, 0, 236, 11), 1);
  EXPECT_EQ(KnobLeftForPress(5000, 0, 236, 11), 224);
}

TEST(EditorMod, SpotGridIsTwoRowsOfFive) {
  struct Case {
    int x, y, spot;
  } cases[] = {{0, 0, 0}, {187, 0, 4}, {0, 35, 5}, {187, 35, 9}, {80, 20, 7}, {-5, 99, 5}};
  for (const auto& c : cases) EXPECT_EQ(SpotAt(c.x, c.y, 188, 36), c.spot) << c.x << "," << c.y;
}

FFFilter Codes(const char* r, const char* g, const char* b, const char* a) {
  FFFilter f;
  std::tie(f.codeR, f.codeG, f.codeB, f.codeA) = std::make_tuple(r, g, b, a);
  return f;
}

TEST(EditorMod, PreviewPasses) {
  // Only alpha changes: one alpha pass, all colours show the alpha code on intensity.
  PreviewPlan p = PlanPreview(Codes("r", "g", "b", "255-a"), false);
  ASSERT_EQ(p.passes.size(), 1u);
  EXPECT_TRUE(p.alphaDisplay);
  EXPECT_EQ(p.passes[0][0], "255-i");
  EXPECT_EQ(p.passes[0][2], "255-i");
  // Colour code: runs as it is.
  p = PlanPreview(Codes("255-r", "g", "b", "255-a"), false);
  ASSERT_EQ(p.passes.size(), 1u);
  EXPECT_FALSE(p.alphaDisplay);
  EXPECT_EQ(p.passes[0][0], "255-r");
  // Display on, alpha unchanged: no alpha pass.
  p = PlanPreview(Codes("255-r", "g", "b", "a"), true);
  EXPECT_EQ(p.passes.size(), 1u);
  EXPECT_FALSE(p.alphaDisplay);
  // Display on, colours and alpha change: two runs.
  p = PlanPreview(Codes("put(r,0),255-r", "g", "b", "get(0)"), true);
  ASSERT_EQ(p.passes.size(), 2u);
  EXPECT_EQ(p.passes[0][0], "put(r,0),255-r");
  // A's get needs R's put: only B takes the alpha code.
  EXPECT_EQ(p.passes[1][0], "put(r,0),255-r");
  EXPECT_EQ(p.passes[1][2], "get(0)");
  EXPECT_TRUE(p.alphaDisplay);
}

TEST(EditorMod, SnippetLines) {
  const auto s = ParseSnipets("# comment\r\n\r\n255-c;Invert\n #not a comment;Blank\nnosemi\na;b;c\n");
  std::string got;
  for (const auto& x : s) got += x.code + "|" + x.name + "\n";
  EXPECT_EQ(got, "255-c|Invert\n #not a comment|Blank\n|nosemi\na|b;c\n");
}

TEST(EditorMod, SaveNamesCutAtTheFirstDot) {
  EXPECT_EQ(SaveTargetName("Warm.Tone.afs", OutputFormat::Plugin8bf) + SaveTargetName("NoDot", OutputFormat::TXT) +
                SaveTargetName("x.afs", OutputFormat::PremierePlugin) + SaveTargetName("x.afs", OutputFormat::PFF) +
                SaveTargetName("y.z", OutputFormat::TransitionPlugin) + SaveTargetName(".afs", OutputFormat::AFS),
            "Warm.8bfNoDot.txtx.prmx.pffy.prm.afs");
}

TEST(EditorMod, ToggleFFUIWritesOneByteBySize) {
  test::TempDir dir;
  const struct {
    size_t size;
    long position;
  } cases[] = {{49152, 24125}, {57344, 31293}, {49688, 26625}, {50000, -1}};
  for (const auto& c : cases) {
    const std::string path = dir.Write("t.dll", std::string(c.size, '\x7f'));
    EXPECT_EQ(ToggleFFUIFile(path, true), c.position > 0) << c.size;
    const std::string bytes = test::ReadFileBytes(path);
    ASSERT_EQ(bytes.size(), c.size);
    if (c.position > 0) {
      EXPECT_EQ(bytes[size_t(c.position - 1)], 1);
      ToggleFFUIFile(path, false);
      EXPECT_EQ(test::ReadFileBytes(path)[size_t(c.position - 1)], 0);
    } else {
      EXPECT_EQ(bytes, std::string(c.size, '\x7f'));
    }
  }
}

}  // namespace
}  // namespace trel
