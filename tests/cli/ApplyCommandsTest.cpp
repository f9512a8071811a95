#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "CliRunner.h"
#include "support/TempDir.h"

namespace trel::test {
namespace {

// A 24-bit BMP whose pixel (x, y) is (10x, 20y, 5x + 5y).
std::string MakeBmp(int w, int h) {
  auto le32 = [](uint32_t v) {
    return std::string{char(v & 255), char((v >> 8) & 255), char((v >> 16) & 255), char(v >> 24)};
  };
  const int stride = (w * 3 + 3) / 4 * 4;
  std::string pixels;
  for (int y = h - 1; y >= 0; --y) {
    std::string row;
    for (int x = 0; x < w; ++x) row += {char(5 * x + 5 * y), char(20 * y), char(10 * x)};
    row.resize(size_t(stride), '\0');
    pixels += row;
  }
  std::string info = le32(40) + le32(uint32_t(w)) + le32(uint32_t(h)) + std::string{1, 0, 24, 0} +
                     le32(0) + le32(uint32_t(pixels.size())) + le32(2835) + le32(2835) + le32(0) + le32(0);
  return "BM" + le32(uint32_t(54 + pixels.size())) + le32(0) + le32(54) + info + pixels;
}

struct Rgb {
  int r, g, b;
};

// Pixel (x, y) of a BMP of 24 or 32 bits without compression.
Rgb PixelOf(const std::string& bmp, int x, int y) {
  auto u32 = [&](size_t at) {
    return uint32_t(uint8_t(bmp[at])) | uint32_t(uint8_t(bmp[at + 1])) << 8 |
           uint32_t(uint8_t(bmp[at + 2])) << 16 | uint32_t(uint8_t(bmp[at + 3])) << 24;
  };
  const uint32_t offset = u32(10);
  const int w = int(u32(18)), h = int(u32(22));
  const int bpp = uint8_t(bmp[28]);
  const int bytes = bpp / 8;
  const size_t stride = size_t((w * bytes + 3) / 4 * 4);
  const size_t at = offset + size_t(h - 1 - y) * stride + size_t(x * bytes);
  return {uint8_t(bmp.at(at + 2)), uint8_t(bmp.at(at + 1)), uint8_t(bmp.at(at))};
}

class ApplyCommands : public ::testing::Test {
 protected:
  CliResult Run(const std::vector<std::string>& args) { return RunCli(args, home.path()); }
  TempDir home;
  TempDir work;
};

TEST_F(ApplyCommands, RunsASourceWithItsStoredControls) {
  const std::string picture = work.Write("in.bmp", MakeBmp(5, 4));
  const std::string filter =
      work.Write("f.txt", "Title: T\nR:255-r\n\nG:src(x+1,y,1)\n\nB:b+ctl(0)\n\nA:a\n\nval[0]: 7\n");
  CliResult r = Run({"apply", filter, picture, "-o", work.file("out.bmp")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  const std::string out = work.Read("out.bmp");
  ASSERT_FALSE(out.empty());
  Rgb p = PixelOf(out, 2, 3);
  EXPECT_EQ(p.r, 255 - 20);
  EXPECT_EQ(p.g, 60);
  EXPECT_EQ(p.b, 25 + 7);
  EXPECT_EQ(PixelOf(out, 4, 1).g, 20);  // the right edge repeats

  r = Run({"apply", filter, picture, "-o", work.file("out2.bmp"), "--ctl", "0=100"});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(PixelOf(work.Read("out2.bmp"), 2, 3).b, 125);
  r = Run({"apply", filter, picture, "-o", work.file("out.png")});
  ASSERT_EQ(r.exitCode, 0) << r.err;
  EXPECT_EQ(work.Read("out.png").substr(1, 3), "PNG");
}

TEST_F(ApplyCommands, ACompileErrorNamesChannelAndPosition) {
  const std::string picture = work.Write("in.bmp", MakeBmp(2, 2));
  const std::string filter = work.Write("bad.txt", "Title: T\nR:r\n\nG:g+foo\n\nB:b\n\n");
  work.Write("out.bmp", "previous");
  CliResult r = Run({"apply", filter, picture, "-o", work.file("out.bmp")});
  EXPECT_EQ(r.exitCode, 1);
  EXPECT_NE(r.err.find("channel G, position 2"), std::string::npos) << r.err;
  EXPECT_NE(r.err.find("Unknown name 'foo'"), std::string::npos) << r.err;
  EXPECT_EQ(work.Read("out.bmp"), "previous");
}

TEST_F(ApplyCommands, BadArgumentsAndFiles) {
  const std::string picture = work.Write("in.bmp", MakeBmp(2, 2));
  const std::string filter = work.Write("f.txt", "Title: T\nR:r\n\nG:g\n\nB:b\n\n");
  EXPECT_EQ(Run({"apply", filter, picture, "-o", work.file("o.bmp"), "--ctl", "8=1"}).exitCode, 2);
  EXPECT_EQ(Run({"apply", filter, picture, "-o", work.file("o.bmp"), "--ctl", "0=256"}).exitCode, 2);
  EXPECT_EQ(Run({"apply", filter, picture, "-o", work.file("o.bmp"), "--ctl", "x"}).exitCode, 2);
  EXPECT_EQ(Run({"apply", filter, picture}).exitCode, 2);
  EXPECT_EQ(Run({"apply", work.file("none.txt"), picture, "-o", work.file("o.bmp")}).exitCode, 1);
  EXPECT_EQ(Run({"apply", picture, picture, "-o", work.file("o.bmp")}).exitCode, 1);
  const std::string junk = work.Write("junk.png", "not a picture");
  EXPECT_EQ(Run({"apply", filter, junk, "-o", work.file("o.bmp")}).exitCode, 1);
  EXPECT_EQ(Run({"apply", filter, picture, "-o", work.file("o.unknownformat")}).exitCode, 1);
  EXPECT_FALSE(work.Exists("o.bmp"));
  EXPECT_FALSE(work.Exists("o.unknownformat"));
}

}  // namespace
}  // namespace trel::test
