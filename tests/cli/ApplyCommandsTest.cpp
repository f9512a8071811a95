#include <cstdint>
#include <filesystem>

#include <QColor>
#include <QImage>

#include "CliRunner.h"

namespace trel::test {
namespace {

std::string Le32(uint32_t v) { return {char(v & 255), char((v >> 8) & 255), char((v >> 16) & 255), char(v >> 24)}; }
uint32_t U32(const std::string& b, size_t at) {
  return uint32_t(uint8_t(b[at])) | uint32_t(uint8_t(b[at + 1])) << 8 | uint32_t(uint8_t(b[at + 2])) << 16 |
         uint32_t(uint8_t(b[at + 3])) << 24;
}

// A 24-bit BMP whose pixel (x, y) is (10x, 20y, 5x + 5y).
std::string MakeBmp(int w, int h) {
  std::string pixels;
  for (int y = h - 1; y >= 0; --y) {
    std::string row;
    for (int x = 0; x < w; ++x) row += {char(5 * x + 5 * y), char(20 * y), char(10 * x)};
    row.resize(size_t((w * 3 + 3) / 4 * 4), '\0');
    pixels += row;
  }
  return "BM" + Le32(uint32_t(54 + pixels.size())) + Le32(0) + Le32(54) + Le32(40) + Le32(uint32_t(w)) +
         Le32(uint32_t(h)) + std::string{1, 0, 24, 0} + Le32(0) + Le32(uint32_t(pixels.size())) + Le32(2835) +
         Le32(2835) + Le32(0) + Le32(0) + pixels;
}

// Pixel (x, y) of a BMP of 24 or 32 bits without compression, as "r,g,b".
std::string PixelOf(const std::string& bmp, int x, int y) {
  const int w = int(U32(bmp, 18)), h = int(U32(bmp, 22)), bytes = uint8_t(bmp[28]) / 8;
  const size_t at = U32(bmp, 10) + size_t(h - 1 - y) * size_t((w * bytes + 3) / 4 * 4) + size_t(x * bytes);
  return std::to_string(uint8_t(bmp.at(at + 2))) + "," + std::to_string(uint8_t(bmp.at(at + 1))) + "," +
         std::to_string(uint8_t(bmp.at(at)));
}

using ApplyCommands = CliTest;

TEST_F(ApplyCommands, RunsASourceWithItsStoredOrGivenControls) {
  const std::string picture = work.Write("in.bmp", MakeBmp(5, 4));
  const std::string filter =
      work.Write("f.txt", "Title: T\nR:255-r\n\nG:src(x+1,y,1)\n\nB:b+ctl(0)\n\nA:a\n\nval[0]: 7\n");
  CliResult r = Run({"apply", filter, picture, "-o", work.file("out.bmp")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(PixelOf(work.Read("out.bmp"), 2, 3), "235,60,32");
  EXPECT_EQ(PixelOf(work.Read("out.bmp"), 4, 1), "215,20,32");  // the right edge repeats
  r = Run({"apply", filter, picture, "-o", work.file("out2.bmp"), "--ctl", "0=100"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(PixelOf(work.Read("out2.bmp"), 2, 3), "235,60,125");
  r = Run({"apply", filter, picture, "-o", work.file("out.png")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(work.Read("out.png").substr(1, 3), "PNG");
}

TEST_F(ApplyCommands, ACompileErrorNamesChannelAndPosition) {
  const std::string picture = work.Write("in.bmp", MakeBmp(2, 2));
  const std::string filter = work.Write("bad.txt", "Title: T\nR:r\n\nG:g+foo\n\nB:b\n\n");
  work.Write("out.bmp", "previous");
  const CliResult r = Run({"apply", filter, picture, "-o", work.file("out.bmp")});
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_TRUE(Has(r.err, "channel G, position 2")) << r.err;
  EXPECT_TRUE(Has(r.err, "Unknown name 'foo'")) << r.err;
  EXPECT_EQ(work.Read("out.bmp"), "previous");
}

TEST_F(ApplyCommands, BadArgumentsAndFiles) {
  const std::string picture = work.Write("in.bmp", MakeBmp(2, 2)), out = work.file("o.bmp");
  const std::string filter = work.Write("f.txt", "Title: T\nR:r\n\nG:g\n\nB:b\n\n");
  const std::pair<std::vector<std::string>, int> rows[] = {
      {{filter, picture, "-o", out, "--ctl", "8=1"}, 2}, {{filter, picture, "-o", out, "--ctl", "0=256"}, 2},
      {{filter, picture, "-o", out, "--ctl", "x"}, 2}, {{filter, picture}, 2},
      {{work.file("none.txt"), picture, "-o", out}, 1}, {{picture, picture, "-o", out}, 1},
      {{filter, work.Write("junk.png", "not a picture"), "-o", out}, 1},
      {{filter, picture, "-o", work.file("o.unknownformat")}, 1}};
  for (auto [args, exitCode] : rows) {
    args.insert(args.begin(), "apply");
    EXPECT_EQ(Run(args).exitCode, exitCode) << args[1] << " " << args.back();
  }
  EXPECT_FALSE(work.Exists("o.bmp") || work.Exists("o.unknownformat"));
}

// `trel-cli apply` on Windows plugins, through the out-of-process host under
// Wine. Skipped, with the reason, where Wine or the cross compilers are missing.
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
