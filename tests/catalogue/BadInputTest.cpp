// Damaged and hostile plugin files: every reader answers false or "[Unknown]",
// never crashes or hangs, and a scan goes on past them.
#include <gtest/gtest.h>

#include <filesystem>

#include "catalogue/PluginIdentification.h"
#include "catalogue/PluginReports.h"
#include "catalogue/PluginScanner.h"
#include "support/PeBuilder.h"
#include "support/TempDir.h"

namespace trel {
namespace {

uint32_t U32(const std::string& b, size_t at) {
  uint32_t v = 0;
  for (int k = 3; k >= 0; --k) v = (v << 8) | static_cast<unsigned char>(b[at + static_cast<size_t>(k)]);
  return v;
}
void SetU32(std::string& b, size_t at, uint32_t v) {
  for (int k = 0; k < 4; ++k) b[at + static_cast<size_t>(k)] = static_cast<char>((v >> (8 * k)) & 0xFF);
}

// A good single-filter plugin and the places of its resource structures.
struct Anatomy {
  std::string bytes = test::BuildPe({test::Pipl({"Good", "Plugin"})});
  size_t header = bytes.find(".rsrc");
  size_t raw = U32(bytes, header + 20);
  size_t rootEntry = raw + 16;
  size_t typeDir = raw + (U32(bytes, rootEntry + 4) & 0x7FFFFFFF);
  size_t langDir = raw + (U32(bytes, typeDir + 16 + 4) & 0x7FFFFFFF);
  size_t dataEntry = raw + U32(bytes, langDir + 16 + 4);
};

struct Damage {
  const char* name;
  std::string bytes;
  bool refused = true;  // false: ReadCom8bf may still find the good filter
};

std::vector<Damage> DamagedPlugins() {
  const Anatomy a;
  const auto patched = [&](const char* name, size_t at, uint32_t value, bool refused = true) {
    std::string b = a.bytes;
    SetU32(b, at, value);
    return Damage{name, b, refused};
  };
  std::vector<Damage> out = {
      {"empty", ""},
      {"truncated headers", a.bytes.substr(0, 400)},
      {"truncated section", a.bytes.substr(0, a.raw + 40)},
      patched("section beyond the file", a.header + 20, 0x00FFFFF0),
      patched("huge section size", a.header + 16, 0x00FFFFFF, false),
      patched("name beyond the file", a.rootEntry, 0x80FFFFF0),
      patched("name at zero", a.rootEntry, 0x80000000),
      patched("type directory beyond", a.rootEntry + 4, 0x80FFFFF0),
      patched("type directory loops to the root", a.rootEntry + 4, 0x80000000),
      patched("language directory beyond", a.typeDir + 16 + 4, 0x80FFFFF0),
      patched("language directory loops to itself", a.typeDir + 16 + 4,
              0x80000000 | static_cast<uint32_t>(a.typeDir - a.raw)),
      patched("data entry beyond", a.langDir + 16 + 4, 0x00FFFFF0),
      patched("data before the section", a.dataEntry, 0x10),
      patched("data size beyond", a.dataEntry + 4, 0x00FFFFFF),
      // Only numbered types at the root: the count is read with swapped bytes.
      {"numbered types only", test::BuildPe({test::Version({{"ProductName", "x"}}), {"", 3, 1, "icon"}})},
  };
  std::string b = a.bytes;
  b[a.typeDir + 14] = static_cast<char>(0xFF);  // 255 filters announced
  out.push_back({"too many filters", b, false});
  b = a.bytes;
  const size_t count = b.find("Good") - 1;
  b[count] = static_cast<char>(0xFF);  // a Pascal count running past the resource
  b.resize(((count + 64) / 4) * 4);
  out.push_back({"pascal count past the end", b, false});
  b.assign(2000, '\0');
  b.replace(400, 5, ".rsrc");  // a section header and nothing behind it
  out.push_back({"header only", b});
  return out;
}

TEST(BadInput, DamagedResourceSectionsAreRefusedWithoutACrash) {
  test::TempDir dir;
  FilterEnv env;
  for (const Damage& d : DamagedPlugins()) {
    SCOPED_TRACE(d.name);
    const std::string path = dir.Write("bad.8bf", d.bytes);
    ResourceProbe probe;
    const bool ok = ReadCom8bf(path, probe, env);
    if (d.refused) { EXPECT_FALSE(ok); }
    if (ok) { EXPECT_EQ(probe[1].category, "Good"); }  // a damage the walk never reaches
    std::string category, title;
    int32_t offset = 0, room = 0;
    ReadComprm(path, category, title, offset, room);
    PlugInInformation(path, {}, env);
  }
}

TEST(BadInput, AScanListsDamagedPluginsAsUnknownAndGoesOn) {
  test::TempDir dir;
  FilterEnv env;
  const std::vector<Damage> damaged = DamagedPlugins();
  for (size_t i = 0; i < damaged.size(); ++i) {
    dir.Write("a" + std::to_string(100 + i) + ".8bf", damaged[i].bytes);
    dir.Write("b" + std::to_string(100 + i) + ".prm", damaged[i].bytes);
  }
  dir.Write("z_good.8bf", Anatomy().bytes);
  PaneCatalogue pane;
  const int found = ScanPluginRecurse(pane, dir.path(), {}, {}, env);
  ASSERT_EQ(found, static_cast<int>(2 * damaged.size() + 1));
  EXPECT_EQ(pane.plugins[found].category, "Good");
  int unknown = 0;
  for (const PluginEntry& e : pane.plugins) unknown += e.category == "[Unknown]";
  EXPECT_GE(unknown, static_cast<int>(damaged.size()));
}

TEST(BadInput, HugeSparseFilesAreReadOnlyInPart) {
  test::TempDir dir;
  FilterEnv env;
  for (const char* name : {"huge.8bf", "huge.prm"}) {
    std::error_code ec;
    std::filesystem::resize_file(dir.Write(name, "MZ"), 8ULL << 30, ec);
    if (ec) GTEST_SKIP() << "no room for a sparse file: " << ec.message();
  }
  PaneCatalogue pane;
  ASSERT_EQ(ScanPluginRecurse(pane, dir.path(), {}, {}, env), 2);
  EXPECT_EQ(pane.plugins[1].category, "[Unknown]");
  EXPECT_EQ(pane.plugins[2].category, "[Unknown]");
}

}  // namespace
}  // namespace trel
