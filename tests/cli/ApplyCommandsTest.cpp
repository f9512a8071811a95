#include <filesystem>

#include <QColor>
#include <QImage>

#include "CliRunner.h"

namespace trel::test {
namespace {

class ApplyCommands : public CliTest {
 protected:
  // A picture of w x h pixels coloured by `colour`, saved in the format its name asks for.
  std::string Picture(const std::string& name, int w, int h, QColor (*colour)(int x, int y)) {
    QImage img(w, h, QImage::Format_RGB888);
    for (int y = 0; y < h; ++y)
      for (int x = 0; x < w; ++x) img.setPixelColor(x, y, colour(x, y));
    EXPECT_TRUE(img.save(QString::fromStdString(work.file(name))));
    return work.file(name);
  }
  QImage Result(const std::string& name) { return QImage(QString::fromStdString(work.file(name))); }
  static QColor Ramp(int x, int y) { return QColor(10 * x, 20 * y, 5 * x + 5 * y); }
};

TEST_F(ApplyCommands, RunsASourceWithItsStoredOrGivenControls) {
  const std::string picture = Picture("in.bmp", 5, 4, Ramp);
  const std::string filter =
      work.Write("f.txt", "Title: T\nR:255-r\n\nG:src(x+1,y,1)\n\nB:b+ctl(0)\n\nA:a\n\nval[0]: 7\n");
  CliResult r = Run({"apply", filter, picture, "-o", work.file("out.bmp")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(Result("out.bmp").pixelColor(2, 3), QColor(235, 60, 32));
  EXPECT_EQ(Result("out.bmp").pixelColor(4, 1), QColor(215, 20, 32));  // the right edge repeats
  r = Run({"apply", filter, picture, "-o", work.file("out2.bmp"), "--ctl", "0=100"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(Result("out2.bmp").pixelColor(2, 3), QColor(235, 60, 125));
  r = Run({"apply", filter, picture, "-o", work.file("out.png")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(work.Read("out.png").substr(1, 3), "PNG");
}

TEST_F(ApplyCommands, ACompileErrorNamesChannelAndPosition) {
  const std::string picture = Picture("in.bmp", 2, 2, Ramp);
  const std::string filter = work.Write("bad.txt", "Title: T\nR:r\n\nG:g+foo\n\nB:b\n\n");
  work.Write("out.bmp", "previous");
  const CliResult r = Run({"apply", filter, picture, "-o", work.file("out.bmp")});
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_TRUE(Has(r.err, "channel G, position 2")) << r.err;
  EXPECT_TRUE(Has(r.err, "Unknown name 'foo'")) << r.err;
  EXPECT_EQ(work.Read("out.bmp"), "previous");
}

TEST_F(ApplyCommands, BadArgumentsAndFiles) {
  const std::string picture = Picture("in.bmp", 2, 2, Ramp), out = work.file("o.bmp");
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

class WindowsApply : public ApplyCommands {
 protected:
  void SetUp() override {
    if (!std::filesystem::exists(TestPlugin("invert64.8bf")))
      GTEST_SKIP() << "the test plugins were not built (no x86_64-w64-mingw32 cross compiler)";
    if (!HaveWine64()) GTEST_SKIP() << "wine64 is not installed";
    picture = Picture("in.png", 9, 70, [](int x, int y) { return QColor(20 * x, 3 * y, 100); });
  }
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
