// photo30.dll and photo304.dll carry the compact interpreter as 32-bit code.
// The 32-bit Wine is not always at hand, so the same code built for x86_64
// into a test template runs through the host under wine64.
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

#include <QImage>

#include "HostTestSupport.h"
#include "TemplateProof.h"
#include "filter/TemplateLayout.h"
#include "host/ImageLibrary.h"
#include "host/PlugHostClient.h"

namespace trel {
namespace {

namespace fs = std::filesystem;

std::string Bytes(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
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
  const std::string code = Bytes(TREL_FFMINI32);
  ASSERT_FALSE(code.empty());
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string path = std::string(TREL_TEMPLATE_DIR) + "/" + row.name;
    const std::string f = Bytes(path);
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
  test::ExpectTheEnginesPixels(Template(), dir, shell);
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
