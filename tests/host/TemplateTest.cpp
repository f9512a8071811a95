// The templates' code is a real Filter Factory plugin: filters compiled into
// it and run through the Windows host give exactly the pixels of our engine,
// with the stored control values and with others, and a protected (scrambled)
// plugin still runs its hidden code; the shipped sample filters are among
// those compiled. This holds for both template codes: Trel's 64-bit template
// (the engine built for Windows) and the compact interpreter of photo30.dll
// and photo304.dll. That one is 32-bit code and the 32-bit Wine is not always
// at hand, so the same code built for x86_64 into a test template runs
// through the host under wine64.
#include <array>
#include <filesystem>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <QImage>

#include "HostTestSupport.h"
#include "filter/CompiledReaders.h"
#include "filter/DemoPlugin.h"
#include "filter/Dispatch.h"
#include "filter/TemplateLayout.h"
#include "host/ImageLibrary.h"
#include "host/PlugHostClient.h"

namespace trel {
namespace {

namespace fs = std::filesystem;

void ExpectTheEnginesPixels(const std::string& templatePath, const test::TempDir& dir, test::RecordingShell& shell) {
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
      {"cnv(1, 2, 1, 2, 4, 2, 1, 2, 1, ctl(7) + 15) + map(0, c) / 4", "a / 2 + i", true},
      {"rad(d + ctl(0), m, z) + tan(x) / 100 + c2d(x - 9, y) - c2m(x, y) / 8", "mix(a, c, x, X)", true},
  };
  // The expressions above, then every shipped sample filter.
  std::vector<std::pair<FFFilter, bool>> filters;  // and whether the picture is transparent
  for (const auto& row : rows) {
    FFFilter f = test::SampleFilter(row.code);
    f.codeA = row.alpha;
    filters.emplace_back(f, row.transparent);
  }
  FilterEnv env;
  env.shell = &shell;
  for (const auto& entry : std::filesystem::directory_iterator(TREL_SAMPLES_DIR)) {
    FFFilter f;
    const std::string name = entry.path().filename().string();
    if (entry.path().extension() != ".ffl" && LoadItFile(f, std::string(TREL_SAMPLES_DIR) + "/", name, env))
      filters.emplace_back(f, true);
  }
  ASSERT_GE(filters.size(), std::size(rows) + 3) << "the shipped samples did not load";
  ImageLibrary engine(shell), host(shell);
  host.setOutOfProcess(true);
  ASSERT_EQ(engine.ImgPlugInHostLoad(""), IMG_OK);
  ASSERT_EQ(host.ImgPlugInHostLoad(""), IMG_OK);
  // 71 by 45: neither a power of two nor square, both odd.
  const ImgRect all{0, 0, 70, 44};
  int n = 0;
  for (auto& [f, transparent] : filters) {
    const std::string code = f.codeR;
    f.filename = "proof" + std::to_string(n++) + ".afs";
    const std::string plugin = test::CompilePlugin(dir, f, templatePath);
    const QImage picture = test::PatternPicture(71, 45, transparent);
    ASSERT_EQ(engine.ImgPlugInLoad(plugin), IMG_OK) << code;
    ASSERT_EQ(host.ImgPlugInLoad(plugin), IMG_OK) << code << ": " << host.ImgErrString();
    for (const auto& controls : {std::optional<std::array<uint8_t, 8>>(),
                                 std::optional<std::array<uint8_t, 8>>({3, 250, 40, 90, 0, 0, 0, 1})}) {
      engine.setControls(controls);
      host.setControls(controls);
      const ImgHandle a = engine.Adopt(picture), b = host.Adopt(picture);
      ASSERT_EQ(engine.ImgPlugInInvoke(a, 0, all), IMG_OK) << code;
      ASSERT_EQ(host.ImgPlugInInvoke(b, 0, all), IMG_OK) << code << ": " << host.ImgErrString();
      EXPECT_EQ(*engine.image(a), *host.image(b)) << code << (controls ? " with other controls" : "");
      EXPECT_NE(*host.image(b), picture) << code;
    }
  }
  engine.setControls(std::nullopt);
  host.setControls(std::nullopt);

  // A demo plugin's code is scrambled: our readers no longer take it for a
  // Filter Factory plugin, but it filters as its code says.
  FFFilter f = test::SampleFilter("src(x + 2, y, z) ^ ctl(1)");
  f.filename = "protected.afs";
  CompileOptions demo;
  demo.demoPlugin = true;
  const std::string plugin = test::CompilePlugin(dir, f, templatePath, demo);
  FFFilter back;
  std::string folder, name;
  SplitPath(plugin, folder, name);
  EXPECT_FALSE(Read8bf(back, folder, name, false, false, env));
  const QImage picture = test::PatternPicture(71, 45, false);
  f.filename = "open.afs";
  const std::string open = test::CompilePlugin(dir, f, templatePath);
  const ImgHandle a = engine.Adopt(picture), b = host.Adopt(picture);
  ASSERT_EQ(engine.ImgPlugInLoad(open), IMG_OK);
  ASSERT_EQ(engine.ImgPlugInInvoke(a, 0, all), IMG_OK);
  ASSERT_EQ(host.ImgPlugInLoad(plugin), IMG_OK) << host.ImgErrString();
  ASSERT_EQ(host.ImgPlugInInvoke(b, 0, all), IMG_OK) << host.ImgErrString();
  EXPECT_EQ(*engine.image(a), *host.image(b)) << "the protected plugin";
}

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
  ExpectTheEnginesPixels(Template64(), dir, shell);
}

uint32_t U(const std::string& b, size_t at, int n) {
  uint32_t v = 0;
  for (int i = n - 1; i >= 0; --i) v = v << 8 | static_cast<uint8_t>(b.at(at + size_t(i)));
  return v;
}

struct Section {
  uint32_t va, size, raw, flags;
};

// The file offset of an RVA, and the flags of the section holding it; -1 when none does.
int64_t FileOffset(const std::vector<Section>& sections, uint32_t rva, uint32_t* flags = nullptr) {
  for (const Section& s : sections)
    if (rva >= s.va && rva < s.va + s.size) {
      if (flags) *flags = s.flags;
      return int64_t(rva - s.va) + s.raw;
    }
  return -1;
}

TEST(MiniTemplates, Are32BitPluginsWithTheirEntryAndEveryResourceInPlace) {
  if (std::string(TREL_FFMINI32).empty())
    GTEST_SKIP() << "no i686-w64-mingw32-gcc: photo30.dll and photo304.dll keep their inactive code";
  const struct {
    const char* name;
    int64_t size, marker, shift;
  } rows[] = {{layout::kPhoto30, layout::kPhoto30Size, layout::kMarker30, layout::kShift30},
              {layout::kPhoto304, layout::kPhoto304Size, layout::kMarker304, layout::kShift304}};
  const std::string code = test::ReadFileBytes(TREL_FFMINI32);
  ASSERT_FALSE(code.empty());
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string path = std::string(TREL_TEMPLATE_DIR) + "/" + row.name;
    const std::string f = test::ReadFileBytes(path);
    ASSERT_EQ(int64_t(f.size()), row.size);
    EXPECT_EQ(PluginMachineOf(path), PluginMachine::X86);
    // The interpreter's code stands in front, unchanged.
    EXPECT_EQ(f.substr(0x400, code.size() - 0x400), code.substr(0x400));

    const uint32_t pe = U(f, 0x3C, 4), opt = pe + 24;
    ASSERT_EQ(U(f, opt, 2), 0x010Bu);  // PE32
    std::vector<Section> sections;
    for (uint32_t i = 0, table = opt + U(f, pe + 20, 2); i < U(f, pe + 6, 2); ++i)
      sections.push_back({U(f, table + 40 * i + 12, 4), std::max(U(f, table + 40 * i + 8, 4), U(f, table + 40 * i + 16, 4)),
                          U(f, table + 40 * i + 20, 4), U(f, table + 40 * i + 36, 4)});
    // PluginMain, undecorated, leads into code.
    const int64_t exports = FileOffset(sections, U(f, opt + 96, 4));
    ASSERT_GE(exports, 0);
    bool found = false;
    for (uint32_t k = 0; k < U(f, size_t(exports) + 24, 4); ++k) {
      const int64_t name = FileOffset(sections, U(f, size_t(FileOffset(sections, U(f, size_t(exports) + 32, 4))) + 4 * k, 4));
      if (name < 0 || f.compare(size_t(name), 11, std::string("PluginMain\0", 11)) != 0) continue;
      const uint32_t ordinal = U(f, size_t(FileOffset(sections, U(f, size_t(exports) + 36, 4))) + 2 * k, 2);
      const uint32_t entry = U(f, size_t(FileOffset(sections, U(f, size_t(exports) + 28, 4))) + 4 * ordinal, 4);
      uint32_t flags = 0;
      EXPECT_GE(FileOffset(sections, entry, &flags), 0);
      EXPECT_NE(flags & 0x20000000u, 0u) << "PluginMain is not in an executable section";
      found = true;
    }
    EXPECT_TRUE(found) << "PluginMain is not exported";
    // The PiPL names it for 32-bit hosts; the resources stand where the readers look.
    const size_t wx86 = f.find("68xw");
    ASSERT_NE(wx86, std::string::npos);
    EXPECT_EQ(f.substr(wx86 + 12, 11), std::string("PluginMain\0", 11));
    EXPECT_EQ(f.substr(size_t(row.marker - 1), 14), layout::kMarkerText);
    EXPECT_EQ(U(f, size_t(row.shift + layout::kParmStart - 1), 4), uint32_t(layout::kParmSize));
    EXPECT_EQ(f.substr(size_t(row.shift + layout::kCodeR - 1), 2), std::string("r\0", 2));
    const Section& rsrc = sections.back();
    EXPECT_EQ(U(f, opt + 96 + 16, 4), rsrc.va);
    EXPECT_EQ(rsrc.raw + rsrc.size, f.size());
  }
}

class MiniPluginTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!fs::exists(Template()))
      GTEST_SKIP() << "the interpreter's 64-bit test template was not built (no x86_64-w64-mingw32-gcc)";
    if (FindWine(false).empty()) GTEST_SKIP() << "wine64 is not installed";
  }
  static std::string Template() { return std::string(TREL_TEST_TEMPLATE_DIR) + "/" + layout::kPhoto64; }
  test::TempDir dir;
  test::RecordingShell shell;
};

TEST_F(MiniPluginTest, CompiledFiltersGiveTheEnginesPixels) {
  ExpectTheEnginesPixels(Template(), dir, shell);
}

TEST_F(MiniPluginTest, FaultyCodeIsAnErrorNotACrash) {
  ImageLibrary host(shell);
  host.setOutOfProcess(true);
  ASSERT_EQ(host.ImgPlugInHostLoad(""), IMG_OK);
  FFFilter f = test::SampleFilter("c + (");
  const std::string plugin = test::CompilePlugin(dir, f, Template());
  const QImage picture = test::PatternPicture(8, 8, false);
  const ImgHandle h = host.Adopt(picture);
  ASSERT_EQ(host.ImgPlugInLoad(plugin), IMG_OK) << host.ImgErrString();
  EXPECT_NE(host.ImgPlugInInvoke(h, 0, {0, 0, 7, 7}), IMG_OK);
  EXPECT_EQ(*host.image(h), picture);
  // The host is still there for the next plugin.
  FFFilter g = test::SampleFilter("255 - c");
  g.filename = "good.afs";
  const std::string good = test::CompilePlugin(dir, g, Template());
  ASSERT_EQ(host.ImgPlugInLoad(good), IMG_OK) << host.ImgErrString();
  EXPECT_EQ(host.ImgPlugInInvoke(h, 0, {0, 0, 7, 7}), IMG_OK) << host.ImgErrString();
}

}  // namespace
}  // namespace trel
