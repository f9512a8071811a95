// `trel-cli apply` on Windows plugins, through the out-of-process host under
// Wine. Skipped, with the reason, where Wine or the cross compilers are missing.
#include <filesystem>
#include <iostream>

#include <QColor>
#include <QImage>

#include "CliRunner.h"

namespace trel::test {
namespace {

std::string TestPlugin(const std::string& name) { return std::string(TREL_PLUGHOST_TEST_DIR) + "/" + name; }

bool HaveWine64() {
  for (const char* p : {"/usr/lib/wine/wine64", "/usr/bin/wine64"})
    if (std::filesystem::exists(p)) return true;
  return false;
}

class WindowsApply : public CliTest {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(TestPlugin("invert64.8bf")))
      GTEST_SKIP() << "the test plugins were not built (no x86_64-w64-mingw32 cross compiler)";
    if (!HaveWine64()) GTEST_SKIP() << "wine64 is not installed";
    QImage img(9, 70, QImage::Format_RGB888);
    for (int y = 0; y < img.height(); ++y)
      for (int x = 0; x < img.width(); ++x) img.setPixelColor(x, y, QColor(20 * x, 3 * y, 100));
    picture = work.file("in.png");
    ASSERT_TRUE(img.save(QString::fromStdString(picture)));
  }
  QImage Result(const std::string& name) { return QImage(QString::fromStdString(work.file(name))); }
  std::string picture;
};

TEST_F(WindowsApply, AnOrdinaryPluginRunsInTheHost) {
  const CliResult r = Run({"apply", TestPlugin("invert64.8bf"), picture, "-o", work.file("out.png")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const QImage out = Result("out.png");
  ASSERT_EQ(out.size(), QSize(9, 70));
  EXPECT_EQ(out.pixelColor(2, 65), QColor(255 - 40, 255 - 195, 155));
}

TEST_F(WindowsApply, FailuresKeepThePreviousResultAndSayWhy) {
  work.Write("out.png", "previous");
  const struct {
    std::vector<std::string> extra;
    std::string plugin;
    int exitCode;
    const char* says;
  } rows[] = {
      {{}, TestPlugin("crash64.8bf"), 1, "crashed"},
      {{}, TestPlugin("noentry64.8bf"), 1, "no plugin entry point"},
      {{"--ctl", "0=5"}, TestPlugin("invert64.8bf"), 2, "--ctl"},
      {{"--out-of-process"}, work.Write("f.txt", "Title: T\nR:r\n\nG:g\n\nB:b\n\n"), 2, "compiled plugin"},
  };
  for (const auto& row : rows) {
    std::vector<std::string> args{"apply", row.plugin, picture, "-o", work.file("out.png")};
    args.insert(args.end(), row.extra.begin(), row.extra.end());
    const CliResult r = Run(args);
    EXPECT_EQ(r.exitCode, row.exitCode) << row.plugin;
    EXPECT_TRUE(Has(r.err, row.says)) << r.err;
    EXPECT_EQ(work.Read("out.png"), "previous");
  }
}

// Both kinds of template code: the engine built for Windows (photo64.dll) and
// the compact interpreter of the small 32-bit templates, built for x86_64 into
// a test template of the same layout.
TEST_F(WindowsApply, OutOfProcessCompiledFiltersGiveTheEnginesPicture) {
  namespace fs = std::filesystem;
  const std::string wave =
      work.Write("wave.txt", "Title: Wave\nR:src(x, y + ctl(0) % 9, 0)\n\nG:g ^ ctl(1)\n\nB:rnd(0, b)\n\n"
                             "A:a\n\nval[0]: 4\nval[1]: 60\n");
  std::vector<std::string> sources{wave};
  for (const auto& entry : fs::directory_iterator(TREL_SAMPLES_DIR))
    if (entry.path().extension() != ".ffl") sources.push_back(entry.path().string());
  const struct {
    std::string path, why;
  } templates[] = {{std::string(TREL_TEMPLATE_DIR) + "/photo64.dll", "photo64.dll was not built"},
                   {std::string(TREL_TEST_TEMPLATE_DIR) + "/photo64.dll", "the interpreter's test template was not built"}};
  int checked = 0;
  for (const auto& templ : templates) {
    if (!fs::exists(templ.path)) {
      std::cout << "skipped: " << templ.why << "\n";
      continue;
    }
    const std::string out = work.path() + "t" + std::to_string(checked++) + "/";
    fs::create_directories(out);
    std::vector<std::string> convert{"convert", "--to", "8bf", "-o", out, "--template", templ.path};
    convert.insert(convert.end(), sources.begin(), sources.end());
    ASSERT_EQ(Run(convert).exitCode, 0) << templ.path;
    int plugins = 0;
    for (const auto& entry : fs::directory_iterator(out)) {
      if (entry.path().extension() != ".8bf") continue;
      ++plugins;
      const std::string plugin = entry.path().string();
      for (const std::vector<std::string>& controls :
           {std::vector<std::string>{}, std::vector<std::string>{"--ctl", "0=7", "--ctl", "1=200"}}) {
        std::vector<std::string> engine{"apply", plugin, picture, "-o", work.file("engine.png")};
        std::vector<std::string> host{"apply", "--out-of-process", plugin, picture, "-o", work.file("host.png")};
        engine.insert(engine.end(), controls.begin(), controls.end());
        host.insert(host.end(), controls.begin(), controls.end());
        CliResult r = Run(engine);
        ASSERT_EQ(r.exitCode, 0) << plugin << ": " << r.err;
        r = Run(host);
        ASSERT_EQ(r.exitCode, 0) << plugin << ": " << r.err;
        const QImage a = Result("engine.png"), b = Result("host.png");
        ASSERT_FALSE(a.isNull());
        EXPECT_EQ(a.convertToFormat(QImage::Format_RGB888), b.convertToFormat(QImage::Format_RGB888))
            << plugin << (controls.empty() ? "" : " with other controls");
      }
    }
    EXPECT_EQ(plugins, int(sources.size())) << templ.path;
  }
  if (checked == 0) GTEST_SKIP() << "no 64-bit template was built";
}

}  // namespace
}  // namespace trel::test
