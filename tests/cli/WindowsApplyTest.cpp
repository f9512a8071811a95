// `trel-cli apply` on Windows plugins, through the out-of-process host under
// Wine. Skipped, with the reason, where Wine or the cross compilers are missing.
#include <filesystem>

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

// The pixels of both template codes are proven in the host's tests; here the
// option sends a compiled filter to the host with the controls given.
TEST_F(WindowsApply, OutOfProcessCompiledFilterGivesTheEnginesPicture) {
  const std::string templ = std::string(TREL_TEMPLATE_DIR) + "/photo64.dll";
  if (!std::filesystem::exists(templ)) GTEST_SKIP() << "photo64.dll was not built";
  const std::string wave = work.Write(
      "wave.txt", "Title: Wave\nR:src(x, y + ctl(0) % 9, 0)\n\nG:g ^ ctl(1)\n\nB:rnd(0, b)\n\nA:a\n\nval[0]: 4\n");
  const CliResult made = Run({"convert", "--to", "8bf", "-o", work.file("out"), "--template", templ, wave});
  ASSERT_EQ(made.exitCode, 0) << made.err;
  const std::string plugin = made.out.substr(0, made.out.find('\n'));  // the file it wrote
  for (const bool host : {false, true}) {
    std::vector<std::string> args{"apply", plugin, picture, "-o", work.file(host ? "host.png" : "engine.png"),
                                  "--ctl", "0=7", "--ctl", "1=200"};
    if (host) args.insert(args.begin() + 1, "--out-of-process");
    const CliResult r = Run(args);
    ASSERT_EQ(r.exitCode, 0) << r.err;
  }
  const QImage engine = Result("engine.png");
  ASSERT_FALSE(engine.isNull());
  EXPECT_EQ(engine.convertToFormat(QImage::Format_RGB888), Result("host.png").convertToFormat(QImage::Format_RGB888));
}

}  // namespace
}  // namespace trel::test
