#include "Templates.h"

#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <stdexcept>

#include "MacBinary.h"
#include "PeImage.h"
#include "catalogue/PluginIdentification.h"
#include "filter/TemplateLayout.h"
#include "support/TempDir.h"

namespace trel::gen {
namespace {

namespace L = trel::layout;

uint32_t U(const std::string& b, size_t at, int n) {
  uint32_t v = 0;
  for (int i = n - 1; i >= 0; --i) v = v << 8 | static_cast<uint8_t>(b.at(at + static_cast<size_t>(i)));
  return v;
}
uint32_t UBE(const std::string& b, size_t at, int n) {
  uint32_t v = 0;
  for (int i = 0; i < n; ++i) v = v << 8 | static_cast<uint8_t>(b.at(at + static_cast<size_t>(i)));
  return v;
}

// What the catalogue's scanner, whose reading rules its own tests pin, finds in a template.
ProbeElement Scanned(const std::string& file) {
  test::TempDir dir;
  ResourceProbe probe;
  EXPECT_TRUE(ReadCom8bf(dir.Write("t.8bf", file), probe, FilterEnv{}));
  return probe.Count() ? probe[1] : ProbeElement{};
}

TEST(Templates, WindowsTemplatesAreDllsWhoseMenuDataAScannerFinds) {
  struct Case {
    TemplateKind kind;
    size_t size;
    int64_t categoryOffset;
  };
  for (const Case& c : {Case{TemplateKind::Photo30, 57344, 31064}, Case{TemplateKind::Photo304, 49152, 23896},
                        Case{TemplateKind::PremiereFF, 50688, 29108}, Case{TemplateKind::PremiereTF, 51200, 29172}}) {
    const std::string f = BuildTemplate(c.kind);
    SCOPED_TRACE(c.size);
    ASSERT_EQ(f.size(), c.size);
    EXPECT_EQ(f.substr(0, 2), "MZ");
    const uint32_t pe = U(f, 0x3C, 4);
    EXPECT_EQ(f.substr(pe, 4), std::string("PE\0\0", 4));
    EXPECT_EQ(U(f, pe + 4, 2), 0x014Cu);
    EXPECT_EQ(U(f, pe + 22, 2) & 0x2000u, 0x2000u);  // a DLL
    EXPECT_EQ(U(f, pe + 24, 2), 0x010Bu);           // PE32
    EXPECT_EQ(f.substr(pe + 24 + 224, 5), ".text");
    const size_t rsrc = pe + 24 + 224 + 40;
    EXPECT_EQ(f.substr(rsrc, 5), ".rsrc");
    EXPECT_EQ(U(f, rsrc + 16, 4) + U(f, rsrc + 20, 4), c.size);  // the section runs to the end
    const ProbeElement m = Scanned(f);
    EXPECT_EQ(m.categoryOffset, c.categoryOffset);
    EXPECT_FALSE(m.title.empty() || m.category.empty());
    EXPECT_NE(f.find(std::string("\4\0P\0A\0R\0M\0", 10)), std::string::npos);  // the PARM resource's name
  }
  const ProbeElement photo = Scanned(BuildTemplate(TemplateKind::Photo30));
  EXPECT_EQ(photo.title + "|" + photo.category, "Untitled|Filter Factory");
  EXPECT_EQ(photo.maximumLength, 35);
  for (const auto& t : AllTemplates()) EXPECT_EQ(BuildTemplate(t.kind), BuildTemplate(t.kind)) << t.name;
}

TEST(Templates, PhotoshopEntryPointIsExported) {
  const std::string f = BuildTemplate(TemplateKind::Photo30);
  const uint32_t pe = U(f, 0x3C, 4), exportRva = U(f, pe + 24 + 96, 4);
  const size_t text = pe + 24 + 224;
  const auto offsetOf = [&](uint32_t rva) { return rva - U(f, text + 12, 4) + U(f, text + 20, 4); };
  const size_t dir = offsetOf(exportRva);
  ASSERT_EQ(U(f, dir + 24, 4), 1u);
  const size_t name = offsetOf(U(f, offsetOf(U(f, dir + 32, 4)), 4));
  EXPECT_EQ(f.substr(name, 11), std::string("PluginMain\0", 11));
  EXPECT_EQ(f.substr(offsetOf(U(f, dir + 12, 4)), 12), std::string("photo30.dll\0", 12));
}

TEST(Templates, MacintoshFormIsAConsistentMacBinaryFile) {
  const std::string f = BuildTemplate(TemplateKind::PhotoMac);
  ASSERT_EQ(f.size(), 99712u);
  EXPECT_EQ(f.substr(65, 8), "8BFM8BIM");
  EXPECT_EQ(MacBinaryCrc("123456789"), 0x31C3);  // the CRC-16/XMODEM check value
  EXPECT_EQ(UBE(f, 124, 2), MacBinaryCrc(f.substr(0, 124)));
  const uint32_t dataLength = UBE(f, 83, 4), forkLength = UBE(f, 87, 4);
  const size_t fork = 128 + (dataLength + 127) / 128 * 128;
  EXPECT_EQ(fork + forkLength, f.size());
  // Walk the resource map to each resource's data and compare with the places
  // the readers use.
  const uint32_t dataArea = UBE(f, fork, 4), map = UBE(f, fork + 4, 4);
  const size_t typeList = fork + map + UBE(f, fork + map + 24, 2);
  std::map<std::string, size_t> found;
  for (uint32_t t = 0; t <= UBE(f, typeList, 2); ++t) {
    const size_t entry = typeList + 2 + 8 * t;
    const size_t ref = typeList + UBE(f, entry + 6, 2);
    found[f.substr(entry, 4)] = fork + dataArea + UBE(f, ref + 5, 3) + 4;
  }
  EXPECT_EQ(found.at("PARM"), static_cast<size_t>(19308 + 31253 - 1));
  EXPECT_EQ(found.at("PiPL") + 8 + 20 + 16, static_cast<size_t>(49853 - 1));  // count byte of `name`
  EXPECT_EQ(f.substr(found.at("STR ") + 8, 8), std::string("Factory\0", 8));
  EXPECT_EQ(UBE(f, found.at("PARM"), 4), 8296u);
}

// A small PE32 DLL standing in for compiled code.
std::string SmallDll() {
  PeDescription d{"code.dll", "PluginMain", 0x1000, 0x400, 0x800, {}};
  return BuildPeImage(d);
}

TEST(Photo64, AttachedSectionIsRegisteredInTheHeaders) {
  const std::string dll = SmallDll();
  const std::string f = AttachResources(dll, 0x2000, 0x3000, {{"PARM", 16, 0x2100, "parameters"}});
  ASSERT_EQ(f.size(), 0x3000u);
  EXPECT_EQ(f.substr(0, 0x80), dll.substr(0, 0x80));
  const uint32_t pe = U(f, 0x3C, 4), opt = pe + 24;
  ASSERT_EQ(U(f, pe + 6, 2), 3u);
  const size_t header = opt + 224 + 80;
  EXPECT_EQ(f.substr(header, 5), ".rsrc");
  const uint32_t va = U(f, header + 12, 4);
  EXPECT_EQ(va % kSectionAlignment, 0u);
  EXPECT_GT(va, U(f, opt + 224 + 40 + 12, 4));  // behind the last section
  EXPECT_EQ(U(f, header + 20, 4), 0x2000u);      // raw data at the given place
  EXPECT_EQ(U(f, opt + 96 + 16, 4), va);         // the resource directory entry
  EXPECT_EQ(U(f, opt + 56, 4), va + 0x1000u);    // size of the image
  EXPECT_EQ(f.substr(0x2100, 10), "parameters");
}

TEST(Photo64, BuildersRefuseWhatCannotBePlaced) {
  const std::string dll = SmallDll();
  const auto attach = [&](std::string d, size_t at, std::vector<PeResource> resources) {
    return [=] { AttachResources(d, at, 0x3000, resources); };
  };
  const auto build = [](std::vector<PeResource> resources) {
    return [=] { BuildPeImage({"x.dll", "Main", 0x2000, 0x400, 0x1000, resources}); };
  };
  const std::pair<std::function<void()>, const char*> rows[] = {
      {attach("not a dll at all, just text", 0x2000, {}), "no PE file"},
      {attach(dll, 0x800, {}), "does not fit"},
      {attach(dll, 0x2000, {{"PARM", 16, 0x1F00, "x"}}), "outside the resource section"},
      {attach(dll, 0x2000, {{"PARM", 16, 0x2100, "abcd"}, {"PIPL", 1, 0x2102, "x"}}), "overlap"},
      {build({{"A", 1, 0x1100, "abcd"}, {"B", 1, 0x1102, "efgh"}}), "overlap"},
      {build({{"A", 1, 0x1004, "abcd"}}), ""},  // on top of the directory
      {build({{"A", 1, 0x1FFE, "abcd"}}), ""},  // past the end
  };
  for (const auto& [call, says] : rows) {
    try {
      call();
      ADD_FAILURE() << "accepted: " << says;
    } catch (const std::runtime_error& e) {
      EXPECT_NE(std::string(e.what()).find(says), std::string::npos) << e.what();
    }
  }
  EXPECT_EQ(BuildPeImage({"x.dll", "Main", 0x2000, 0x400, 0x1000, {{"A", 1, 0x1100, "abcd"}}}).size(), 0x2000u);
}

TEST(Photo64, TemplateAroundTheBuiltCodeKeepsEveryPosition) {
  const std::string codePath = TREL_FFPLUGIN64;
  std::ifstream in(codePath, std::ios::binary);
  if (codePath.empty() || !in) GTEST_SKIP() << "the 64-bit plugin code was not built (no mingw-w64 posix compiler)";
  const std::string code((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  const std::string f = BuildPhoto64(code);
  ASSERT_EQ(f.size(), size_t(L::kPhoto64Size));
  EXPECT_EQ(U(f, U(f, 0x3C, 4) + 4, 2), 0x8664u);
  EXPECT_EQ(f.substr(size_t(L::kMarker64 - 1), 15), std::string(L::kMarkerText) + '\0');
  const auto at = [&](int64_t base) { return size_t(L::kShift64 + base - 1); };
  EXPECT_EQ(f.substr(at(L::kTitleLength), 9), "\x08Untitled");
  EXPECT_EQ(f.substr(at(L::kCategoryLength), 15), "\x0E" "Filter Factory");
  EXPECT_EQ(U(f, at(L::kParmStart), 4), uint32_t(L::kParmSize));  // the block begins with its size
  EXPECT_EQ(f.at(at(L::kStandAlone)), 1);
  EXPECT_EQ(f.substr(at(L::kCodeR), 2), std::string("r\0", 2));
  EXPECT_EQ(U(f, at(L::kAllModes), 2), 16u);
  // The PiPL names the entry point for 64 bits.
  EXPECT_NE(f.find(std::string("4668\0\0\0\0\x18\0\0\0PluginMain", 22), at(L::kTitleLength) - 200), std::string::npos);
  EXPECT_EQ(BuildPhoto64(code), f);  // reproducible
}

}  // namespace
}  // namespace trel::gen
