#include "host/PluginHost.h"

#include <gtest/gtest.h>

#include <QImage>

#include "HostTestSupport.h"

namespace trel {
namespace {

class PluginHostTest : public ::testing::Test {
 protected:
  test::TempDir dir;
  test::RecordingShell shell;
  ImageLibrary lib{shell};
  HostState state;
  QImage canvas{8, 6, QImage::Format_RGB32};
  WindowHandle parent = 0;
  bool result = true;

  void SetUp() override {
    state.mainWindow = 4242;
    canvas.fill(Qt::black);
  }
  void Invoke(const std::string& hostFolder, const std::string& plugin, bool draw = true) {
    PluginInvoke(lib, state, shell, hostFolder, plugin, &canvas, draw, parent, result);
  }
};

TEST_F(PluginHostTest, FiltersThePreviewAndDrawsIt) {
  const std::string plugin = test::CompilePlugin(dir, test::SampleFilter("255 - c"));
  QImage picture = test::PatternPicture(8, 6, false);
  state.PreviewImage = lib.Adopt(picture);
  parent = 7;
  Invoke(dir.path(), plugin, false);
  EXPECT_TRUE(result);
  EXPECT_EQ(parent, 7u);
  const int before = picture.pixelColor(3, 2).red();
  EXPECT_EQ(lib.image(state.PreviewImage)->pixelColor(3, 2).red(), 255 - before);
  EXPECT_EQ(canvas.pixelColor(3, 2), QColor(Qt::black));  // not drawn
  EXPECT_EQ(lib.ImgPlugInHostIsEnabled(), 0);

  Invoke(dir.path(), plugin);
  EXPECT_TRUE(result);
  EXPECT_EQ(canvas.pixelColor(3, 2).red(), before);  // filtered twice, now on the canvas
  EXPECT_TRUE(shell.boxes.empty());
}

TEST_F(PluginHostTest, FailuresShowTheirMessageAndLeaveThePreview) {
  Invoke(dir.path(), "temp.dll");  // no preview: nothing happens
  EXPECT_FALSE(result);
  EXPECT_EQ(parent, 4242u);  // the main window, written back
  EXPECT_TRUE(shell.boxes.empty());
  EXPECT_EQ(lib.ImgPlugInHostIsEnabled(), 0);

  state.PreviewImage = lib.Adopt(test::PatternPicture(4, 4, false));
  const QImage before = *lib.image(state.PreviewImage);
  Invoke(dir.path(), dir.Write("plain.8bf", "MZ not a filter"));
  EXPECT_FALSE(result);
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_TRUE(test::Has(shell.boxes[0].text, "An error occured while loading the plugin!"));
  EXPECT_EQ(shell.boxes[0].icon, MsgIcon::Critical);
  EXPECT_EQ(lib.ImgPlugInHostIsEnabled(), 0);
  EXPECT_EQ(*lib.image(state.PreviewImage), before);

  // A host that will not load shows the library's own error.
  result = true;
  Invoke(dir.file("gone/"), "temp.dll");
  EXPECT_FALSE(result);
  ASSERT_EQ(shell.boxes.size(), 2u);
  EXPECT_EQ(shell.boxes[1].text, ImgStatusText(IMG_ERR_HOST_FOLDER));
}

TEST_F(PluginHostTest, AboutCheckRefusesOrAsksAndTheCommandRunsWhatItLets) {
  const std::string plugin = test::CompilePlugin(dir, test::SampleFilter("r"));
  const std::string bare = dir.file("sample_8bf"), hidden = dir.file("sample._bf");
  test::WriteFileBytes(bare, test::ReadFileBytes(plugin));
  test::WriteFileBytes(hidden, test::ReadFileBytes(plugin));

  const AboutCheck none = CheckAboutTarget(""), premiere = CheckAboutTarget(dir.file("effect.prm"));
  ASSERT_TRUE(none.refusal && premiere.refusal);
  EXPECT_NE(none.refusal->reason, premiere.refusal->reason);
  cmd_AboutDialog(lib, state, shell, dir.file("effect.prm"));  // refused files are left alone
  EXPECT_TRUE(shell.boxes.empty());
  EXPECT_EQ(lib.ImgPlugInHostIsEnabled(), 0);

  const AboutCheck bareCheck = CheckAboutTarget(bare);
  EXPECT_FALSE(bareCheck.refusal);
  ASSERT_TRUE(bareCheck.question);
  EXPECT_TRUE(test::Has(bareCheck.question->reason, "without a file extension can cause a crash"));

  // Answered Yes, the caller runs it.
  cmd_AboutDialog(lib, state, shell, bare);
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_NE(shell.boxes[0].text.find("Sample Filter"), std::string::npos);
  EXPECT_EQ(lib.ImgPlugInHostIsEnabled(), 0);
  EXPECT_FALSE(CheckAboutTarget(hidden).question);
  EXPECT_FALSE(CheckAboutTarget(hidden).refusal);
  cmd_AboutDialog(lib, state, shell, hidden);
  ASSERT_EQ(shell.boxes.size(), 2u);
  EXPECT_NE(shell.boxes[1].text.find("A. Tester"), std::string::npos);

  // A failed about box leaves the host loaded for the next time; a good one unloads it.
  cmd_AboutDialog(lib, state, shell, dir.Write("other.8bf", "MZ plain plugin"));
  EXPECT_EQ(lib.ImgPlugInHostIsEnabled(), 1);
  cmd_AboutDialog(lib, state, shell, plugin);
  EXPECT_EQ(lib.ImgPlugInHostIsEnabled(), 0);
  EXPECT_EQ(shell.boxes.size(), 3u);
}

TEST_F(PluginHostTest, ApplyFilterSaysWhetherThePictureChanged) {
  const std::string plugin = test::CompilePlugin(dir, test::SampleFilter("0"));
  ImgHandle h = lib.Adopt(test::PatternPicture(3, 3, false));
  EXPECT_TRUE(ApplyFilter(lib, h, plugin, 0));
  EXPECT_EQ(lib.image(h)->pixelColor(1, 1), QColor(0, 0, 0));
  EXPECT_FALSE(ApplyFilter(lib, h, dir.Write("x.8bf", "MZ"), 0));
  EXPECT_FALSE(ApplyFilter(lib, 0, plugin, 0));
  EXPECT_EQ(lib.ImgPlugInHostIsEnabled(), 0);
}

TEST_F(PluginHostTest, ProcessStarters) {
  EXPECT_EQ(ShellAndWait("sh -c \"exit 3\""), 3);
  EXPECT_EQ(ShellAndWait("/no/such/program"), -1);
  EXPECT_EQ(ShellAndWait(""), -1);
  EXPECT_FALSE(RunDLL("user32.dll,Something"));
}

}  // namespace
}  // namespace trel
