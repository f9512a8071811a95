// Trel's 64-bit template: the mingw-built plugin code with a resource section
// of photo30.dll's layout attached at a fixed place.
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

#include "PeImage.h"
#include "Templates.h"
#include "filter/TemplateLayout.h"

namespace trel::gen {
namespace {

namespace L = trel::layout;

uint32_t U(const std::string& b, size_t at, int n) {
  uint32_t v = 0;
  for (int i = n - 1; i >= 0; --i) v = v << 8 | static_cast<uint8_t>(b.at(at + static_cast<size_t>(i)));
  return v;
}

// A small PE32 DLL standing in for compiled code.
std::string SmallDll() {
  PeDescription d;
  d.dllName = "code.dll";
  d.entryName = "PluginMain";
  d.fileSize = 0x1000;
  d.textOffset = 0x400;
  d.rsrcOffset = 0x800;
  return BuildPeImage(d);
}

TEST(Photo64, AttachedSectionIsRegisteredInTheHeaders) {
  const std::string dll = SmallDll();
  const std::string f = AttachResources(dll, 0x2000, 0x3000, {{"PARM", 16, 0x2100, "parameters"}});
  ASSERT_EQ(f.size(), 0x3000u);
  EXPECT_EQ(f.substr(0, dll.size()).substr(0, 0x80), dll.substr(0, 0x80));
  const uint32_t pe = U(f, 0x3C, 4), opt = pe + 24;
  ASSERT_EQ(U(f, pe + 6, 2), 3u);
  const size_t header = opt + 224 + 80;
  EXPECT_EQ(f.substr(header, 5), ".rsrc");
  const uint32_t va = U(f, header + 12, 4);
  EXPECT_EQ(va % kSectionAlignment, 0u);
  EXPECT_GT(va, U(f, opt + 224 + 40 + 12, 4));           // behind the last section
  EXPECT_EQ(U(f, header + 20, 4), 0x2000u);               // raw data at the given place
  EXPECT_EQ(U(f, opt + 96 + 16, 4), va);                  // the resource directory entry
  EXPECT_EQ(U(f, opt + 56, 4), va + 0x1000u);             // size of the image
  EXPECT_EQ(f.substr(0x2100, 10), "parameters");
}

TEST(Photo64, RefusesWhatCannotBeAttached) {
  const std::string dll = SmallDll();
  const struct {
    std::string dll;
    size_t at, size;
    std::vector<PeResource> resources;
    const char* says;
  } rows[] = {
      {"not a dll at all, just text", 0x2000, 0x3000, {}, "no PE file"},
      {dll, 0x800, 0x3000, {}, "does not fit"},
      {dll, 0x2000, 0x3000, {{"PARM", 16, 0x1F00, "x"}}, "outside the resource section"},
      {dll, 0x2000, 0x3000, {{"PARM", 16, 0x2100, "abcd"}, {"PIPL", 1, 0x2102, "x"}}, "overlap"},
  };
  for (const auto& row : rows) {
    try {
      AttachResources(row.dll, row.at, row.size, row.resources);
      ADD_FAILURE() << "accepted: " << row.says;
    } catch (const std::runtime_error& e) {
      EXPECT_NE(std::string(e.what()).find(row.says), std::string::npos) << e.what();
    }
  }
}

TEST(Photo64, TemplateAroundTheBuiltCodeKeepsEveryPosition) {
  const std::string codePath = TREL_FFPLUGIN64;
  std::ifstream in(codePath, std::ios::binary);
  if (codePath.empty() || !in) GTEST_SKIP() << "the 64-bit plugin code was not built (no mingw-w64 posix compiler)";
  const std::string code((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const std::string f = BuildPhoto64(code);
  ASSERT_EQ(f.size(), size_t(L::kPhoto64Size));
  const uint32_t pe = U(f, 0x3C, 4);
  EXPECT_EQ(U(f, pe + 4, 2), 0x8664u);
  EXPECT_EQ(f.substr(size_t(L::kMarker64 - 1), 15), std::string(L::kMarkerText) + '\0');
  const auto at = [&](int64_t base) { return size_t(L::kShift64 + base - 1); };
  EXPECT_EQ(f.substr(at(L::kTitleLength), 9), "\x08Untitled");
  EXPECT_EQ(f.substr(at(L::kCategoryLength), 15), "\x0E" "Filter Factory");
  EXPECT_EQ(U(f, at(L::kParmStart), 4), uint32_t(L::kParmSize));  // the block begins with its size
  EXPECT_EQ(f.at(at(L::kStandAlone)), 1);
  EXPECT_EQ(f.substr(at(L::kCodeR), 2), std::string("r\0", 2));
  EXPECT_EQ(U(f, at(L::kAllModes), 2), 16u);
  // The PiPL names the entry point for 64 bits.
  EXPECT_NE(f.find("4668\0\0\0\0\x18\0\0\0PluginMain", at(L::kTitleLength) - 200), std::string::npos);
  EXPECT_EQ(BuildPhoto64(code), f);  // reproducible
}

}  // namespace
}  // namespace trel::gen
