// Trel's 64-bit template is a real plugin: a filter compiled into it by
// Write8bf and run in the Windows host gives exactly the engine's pixels, and
// the readers read back what the compiler wrote. Skipped where the template
// or Wine is missing.
#include <filesystem>

#include <gtest/gtest.h>

#include <QImage>

#include "HostTestSupport.h"
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
  ASSERT_FALSE(plugin.empty());
  EXPECT_EQ(fs::file_size(plugin), uint64_t(layout::kPhoto64Size));
  FFFilter back;
  std::string folder, name;
  SplitPath(plugin, folder, name);
  FilterEnv env;
  env.shell = &shell;
  ASSERT_TRUE(Read8bf(back, folder, name, false, false, env));
  EXPECT_EQ(back.title, f.title);
  EXPECT_EQ(back.category, f.category);
  EXPECT_EQ(back.author, f.author);
  EXPECT_EQ(back.mapName[1], "Waves");
  EXPECT_EQ(back.ctlName[1], "");  // the map of the pair wins
  EXPECT_EQ(back.codeR, f.codeR);
  EXPECT_EQ(back.ctlValue[8], f.ctlValue[8]);
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
  const struct {
    const char* code;  // for R, G and B
    const char* alpha;
    bool transparent;
  } rows[] = {
      {"255 - c", "a", false},
      {"src(x + ctl(0) % 5, y - 3, z) ^ ctl(1)", "a", false},
      {"rnd(0, c) + sin(x * 8 + y) / 64 + (x * y) % 7", "a", false},
      {"scl(c, 0, 255, ctl(2), ctl(3)) + put(c, 0) * 0 + get(0) / 2", "a", false},
      {"d * M / 1024 + r / 2", "255 - a", true},
  };
  ImageLibrary engine(shell), host(shell);
  host.setOutOfProcess(true);
  ASSERT_EQ(engine.ImgPlugInHostLoad(""), IMG_OK);
  ASSERT_EQ(host.ImgPlugInHostLoad(""), IMG_OK);
  int n = 0;
  for (const auto& row : rows) {
    FFFilter f = test::SampleFilter(row.code);
    f.filename = "proof" + std::to_string(n++) + ".afs";
    f.codeA = row.alpha;
    const std::string plugin = test::CompilePlugin(dir, f, Template64());
    ASSERT_FALSE(plugin.empty());
    // 70 by 45: neither a power of two nor square.
    const QImage picture = test::PatternPicture(70, 45, row.transparent);
    const ImgHandle a = engine.Adopt(picture), b = host.Adopt(picture);
    const ImgRect all{0, 0, 69, 44};
    ASSERT_EQ(engine.ImgPlugInLoad(plugin), IMG_OK) << row.code;
    ASSERT_EQ(engine.ImgPlugInInvoke(a, 0, all), IMG_OK) << row.code;
    ASSERT_EQ(host.ImgPlugInLoad(plugin), IMG_OK) << row.code << ": " << host.ImgErrString();
    ASSERT_EQ(host.ImgPlugInInvoke(b, 0, all), IMG_OK) << row.code << ": " << host.ImgErrString();
    EXPECT_EQ(*engine.image(a), *host.image(b)) << row.code;
    EXPECT_NE(*host.image(b), picture) << row.code;

    // Other control values, the same in both paths.
    const std::array<uint8_t, 8> controls{3, 250, 40, 90, 0, 0, 0, 1};
    engine.setControls(controls);
    host.setControls(controls);
    const ImgHandle c = engine.Adopt(picture), d = host.Adopt(picture);
    ASSERT_EQ(engine.ImgPlugInInvoke(c, 0, all), IMG_OK) << row.code;
    ASSERT_EQ(host.ImgPlugInInvoke(d, 0, all), IMG_OK) << row.code << ": " << host.ImgErrString();
    EXPECT_EQ(*engine.image(c), *host.image(d)) << row.code << " with other controls";
    engine.setControls(std::nullopt);
    host.setControls(std::nullopt);
  }
}

TEST_F(GenuineTemplateTest, AProtectedPluginRunsItsScrambledCode) {
  if (FindWine(false).empty()) GTEST_SKIP() << "wine64 is not installed";
  FFFilter f = test::SampleFilter("src(x + 2, y, z) ^ ctl(1)");
  CompileOptions demo;
  demo.demoPlugin = true;
  const std::string plugin = test::CompilePlugin(dir, f, Template64(), demo);
  ASSERT_FALSE(plugin.empty());
  // Our readers no longer take it for a Filter Factory plugin...
  FFFilter back;
  std::string folder, name;
  SplitPath(plugin, folder, name);
  FilterEnv env;
  env.shell = &shell;
  EXPECT_FALSE(Read8bf(back, folder, name, false, false, env));
  // ...but it filters as its code says.
  const QImage picture = test::PatternPicture(70, 45, false);
  const ImgRect all{0, 0, 69, 44};
  QImage expected = picture;
  ff::Controls controls{};
  for (size_t i = 0; i < 8; ++i) controls[i] = f.ctlValue[i + 1];
  ASSERT_EQ(RunFilterOnPicture(ff::CompileFilter({f.codeR, f.codeG, f.codeB, f.codeA}, nullptr), controls, expected,
                               all, {}),
            IMG_OK);
  ImageLibrary host(shell);
  host.setOutOfProcess(true);
  ASSERT_EQ(host.ImgPlugInHostLoad(""), IMG_OK);
  const ImgHandle h = host.Adopt(picture);
  ASSERT_EQ(host.ImgPlugInLoad(plugin), IMG_OK) << host.ImgErrString();
  ASSERT_EQ(host.ImgPlugInInvoke(h, 0, all), IMG_OK) << host.ImgErrString();
  EXPECT_EQ(*host.image(h), expected);
}

}  // namespace
}  // namespace trel
