#include <cstdint>

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
  const std::string junk = work.Write("junk.png", "not a picture");
  auto apply = [&](std::vector<std::string> args) {
    args.insert(args.begin(), "apply");
    return Run(args).exitCode;
  };
  EXPECT_EQ(apply({filter, picture, "-o", out, "--ctl", "8=1"}), 2);
  EXPECT_EQ(apply({filter, picture, "-o", out, "--ctl", "0=256"}), 2);
  EXPECT_EQ(apply({filter, picture, "-o", out, "--ctl", "x"}), 2);
  EXPECT_EQ(apply({filter, picture}), 2);
  EXPECT_EQ(apply({work.file("none.txt"), picture, "-o", out}), 1);
  EXPECT_EQ(apply({picture, picture, "-o", out}), 1);
  EXPECT_EQ(apply({filter, junk, "-o", out}), 1);
  EXPECT_EQ(apply({filter, picture, "-o", work.file("o.unknownformat")}), 1);
  EXPECT_FALSE(work.Exists("o.bmp"));
  EXPECT_FALSE(work.Exists("o.unknownformat"));
}

}  // namespace
}  // namespace trel::test
