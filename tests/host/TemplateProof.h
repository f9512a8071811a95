// The proof that a template's code is a real Filter Factory plugin: filters
// compiled into it and run through the Windows host give exactly the pixels
// of our engine, with the stored control values and with others, and a
// protected (scrambled) plugin still runs its hidden code. The shipped sample
// filters are among those compiled. Shared by the tests of both template
// codes: the engine built for Windows and the 32-bit templates' interpreter.
#pragma once

#include <array>
#include <filesystem>
#include <utility>
#include <vector>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "HostTestSupport.h"
#include "filter/CompiledReaders.h"
#include "filter/Dispatch.h"
#include "host/ImageLibrary.h"

namespace trel::test {

inline void ExpectTheEnginesPixels(const std::string& templatePath, const TempDir& dir, RecordingShell& shell) {
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
    FFFilter f = SampleFilter(row.code);
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
    const std::string plugin = CompilePlugin(dir, f, templatePath);
    const QImage picture = PatternPicture(71, 45, transparent);
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
  FFFilter f = SampleFilter("src(x + 2, y, z) ^ ctl(1)");
  f.filename = "protected.afs";
  CompileOptions demo;
  demo.demoPlugin = true;
  const std::string plugin = CompilePlugin(dir, f, templatePath, demo);
  FFFilter back;
  std::string folder, name;
  SplitPath(plugin, folder, name);
  EXPECT_FALSE(Read8bf(back, folder, name, false, false, env));
  const QImage picture = PatternPicture(71, 45, false);
  f.filename = "open.afs";
  const std::string open = CompilePlugin(dir, f, templatePath);
  const ImgHandle a = engine.Adopt(picture), b = host.Adopt(picture);
  ASSERT_EQ(engine.ImgPlugInLoad(open), IMG_OK);
  ASSERT_EQ(engine.ImgPlugInInvoke(a, 0, all), IMG_OK);
  ASSERT_EQ(host.ImgPlugInLoad(plugin), IMG_OK) << host.ImgErrString();
  ASSERT_EQ(host.ImgPlugInInvoke(b, 0, all), IMG_OK) << host.ImgErrString();
  EXPECT_EQ(*engine.image(a), *host.image(b)) << "the protected plugin";
}

}  // namespace trel::test
