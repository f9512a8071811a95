// Trel's 64-bit template: the readers read back what the compiler wrote, and
// its filters give the engine's pixels in the Windows host.
#include <filesystem>
#include <tuple>

#include <gtest/gtest.h>

#include <QImage>

#include "HostTestSupport.h"
#include "TemplateProof.h"
#include "filter/CompiledReaders.h"
#include "filter/DemoPlugin.h"
#include "filter/TemplateLayout.h"
#include "host/ImageLibrary.h"
#include "host/PlugHostClient.h"

namespace trel {
namespace {

namespace fs = std::filesystem;

std::string Template64() { return std::string(TREL_TEMPLATE_DIR) + "/" + layout::kPhoto64; }

class GenuineTemplateTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!fs::exists(Template64()))
      GTEST_SKIP() << "photo64.dll was not built (no x86_64-w64-mingw32-g++-posix cross compiler)";
  }
  test::TempDir dir;
  test::RecordingShell shell;
};

TEST_F(GenuineTemplateTest, ReadersReadBackWhatTheCompilerWrote) {
  EXPECT_EQ(fs::file_size(Template64()), uint64_t(layout::kPhoto64Size));
  FFFilter f = test::SampleFilter("r ^ ctl(1)");
  f.mapName[1] = "Waves";
  const std::string plugin = test::CompilePlugin(dir, f, Template64());
  EXPECT_EQ(fs::file_size(plugin), uint64_t(layout::kPhoto64Size));
  FFFilter back;
  std::string folder, name;
  SplitPath(plugin, folder, name);
  FilterEnv env;
  env.shell = &shell;
  ASSERT_TRUE(Read8bf(back, folder, name, false, false, env));
  EXPECT_EQ(std::tie(back.title, back.category, back.author, back.codeR, back.ctlValue[8]),
            std::tie(f.title, f.category, f.author, f.codeR, f.ctlValue[8]));
  EXPECT_EQ(back.mapName[1], "Waves");
  EXPECT_EQ(back.ctlName[1], "");  // the map of the pair wins
  EXPECT_EQ(PluginMachineOf(plugin), PluginMachine::X64);

  // Scrambling hides the marker at this template's own place, and undoing it
  // gives the same plugin back.
  const std::string original = test::ReadFileBytes(plugin);
  TemplatePatch image(original);
  DemoPlugin(image, layout::kShift64, false, false, true);
  EXPECT_EQ(image.Read(layout::kMarker64, 14), "Trel Protected");
  test::WriteFileBytes(plugin, image.bytes());
  EXPECT_FALSE(Read8bf(back, folder, name, false, false, env));
  ASSERT_TRUE(UnscrambleCode(image, layout::kShift64));
  EXPECT_EQ(image.bytes(), original);
}

TEST_F(GenuineTemplateTest, CompiledFiltersGiveTheEnginesPixels) {
  if (FindWine(false).empty()) GTEST_SKIP() << "wine64 is not installed";
  test::ExpectTheEnginesPixels(Template64(), dir, shell);
}

}  // namespace
}  // namespace trel
