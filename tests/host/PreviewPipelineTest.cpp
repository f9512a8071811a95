#include "host/PreviewPipeline.h"

#include <gtest/gtest.h>

#include <QPainter>
#include <atomic>
#include <filesystem>
#include <mutex>
#include <random>
#include <tuple>

#include "HostTestSupport.h"
#include "host/ContactSheet.h"
#include "host/PreviewRender.h"

namespace trel {
namespace {

namespace fs = std::filesystem;

// A BMP header that claims a picture of w x h, 24 bits, followed by `data`
// bytes of pixels only.
std::string BmpHeader(int32_t w, int32_t h, size_t data) {
  std::string b = "BM";
  // Little-endian words; the planes (1) and the bits (24) share one.
  for (uint32_t v : {54 + uint32_t(data), 0u, 54u, 40u, uint32_t(w), uint32_t(h), 1u | 24u << 16, 0u, 0u, 2835u,
                     2835u, 0u, 0u})
    for (int i = 0; i < 4; ++i) b += char(v >> (8 * i));
  return b + std::string(data, '\x40');
}

class PreviewPipelineTest : public ::testing::Test {
 protected:
  std::string Picture(const std::string& name, const QImage& img) {
    const std::string path = dir.file(name);
    EXPECT_TRUE(img.save(QString::fromStdString(path)));
    return path;
  }
  test::TempDir dir;
  test::RecordingShell shell;
  ImageLibrary lib{shell};
};

TEST_F(PreviewPipelineTest, ThePreviewPictureFallsBackToTestBmpAndCacheEntriesTakeThePluginsName) {
  const std::string chosen = Picture("mine.png", test::PatternPicture(4, 4, false));
  EXPECT_EQ(PreviewPicFor(chosen, "/opt/trel/"), chosen);
  for (const std::string& gone : {std::string(), dir.file("deleted.png"), dir.path()})  // a folder isn't a picture
    EXPECT_EQ(PreviewPicFor(gone, "/opt/trel/"), "/opt/trel/Test.bmp") << gone;
  // Two folders, a disabled plugin and one without extension share an entry.
  for (const char* plugin : {"/a/Foo.8bf", "/b/c/Foo.8bf", "/a/Foo._bf", "/a/Foo_8bf"})
    EXPECT_EQ(PreviewCacheFile("/p/", plugin), "/p/cache/Foo.jpg") << plugin;
  EXPECT_EQ(PreviewCacheFile("/p/", "/a/my.filter.8bf"), "/p/cache/my.filter.jpg");
  EXPECT_EQ(PreviewCacheFile("/p/", "Bare.8bf"), "/p/cache/Bare.jpg");
}

TEST_F(PreviewPipelineTest, ThumbnailsFitTheBoxAndKeepTheirAspect) {
  const struct {
    int w, h, boxW, boxH, tw, th;
  } rows[] = {
      {800, 600, 400, 300, 400, 300},    // landscape by the width
      {600, 800, 400, 300, 225, 300},    // portrait by the height
      {1000, 1000, 400, 300, 300, 300},  // square: by the height
      {900, 600, 400, 100, 150, 100},    // wide box, the height limits
      {200, 100, 400, 300, 200, 100},    // smaller pictures stay their size
      {10000, 1, 400, 300, 400, 1},      // never below a pixel
  };
  for (const auto& r : rows)
    EXPECT_EQ(ThumbSize(r.w, r.h, r.boxW, r.boxH), QSize(r.tw, r.th)) << r.w << "x" << r.h;
  EXPECT_TRUE(ThumbSize(0, 10, 400, 300).isEmpty());  // nothing to fit
  EXPECT_TRUE(ThumbSize(10, 10, 0, 300).isEmpty());
}

TEST_F(PreviewPipelineTest, CreateThumbGives24BitsAndRefusesBadPicturesKeepingTheFormerOne) {
  const std::string path = Picture("pal.bmp", test::PatternPicture(64, 32, false).convertToFormat(QImage::Format_Indexed8));
  ImgHandle thumb = 0;
  float aspect = 0;
  ASSERT_TRUE(CreateThumb(lib, path, 16, 16, thumb, aspect));
  ImgInfo info;
  lib.ImgGetInfoStruct(thumb, info);
  EXPECT_EQ(std::tuple(info.bitCount, info.width, info.height), std::tuple(24, 16, 8));
  EXPECT_FLOAT_EQ(aspect, 2.0f);
  const std::string png = test::ReadFileBytes(Picture("good.png", test::PatternPicture(32, 32, false)));
  const ImgHandle before = thumb;
  for (const std::string& bad : {dir.file("missing.png"), dir.Write("truncated.png", png.substr(0, png.size() / 3)),
                                 dir.Write("empty.bmp", ""), dir.Write("zero.bmp", BmpHeader(0, 0, 0)),
                                 dir.Write("huge.bmp", BmpHeader(20000, 20000, 64)),  // claims 1.2 GB of pixels
                                 dir.Write("words.jpg", "JFIF? no, just words")}) {
    EXPECT_FALSE(CreateThumb(lib, bad, 100, 100, thumb, aspect)) << bad;
    EXPECT_EQ(thumb, before) << bad;
  }
  EXPECT_FLOAT_EQ(aspect, 2.0f);
  EXPECT_EQ(lib.openImages(), 1u);  // nothing leaks on either path
}

TEST_F(PreviewPipelineTest, LoadIntoPictureBoxScalesLargeTakesSmallAndRefusesTheRest) {
  test::ImageBox box(40, 30, Qt::black);
  ImgHandle preview = 0;
  ASSERT_TRUE(LoadIntoPictureBox(lib, shell, box, Picture("big.png", test::PatternPicture(80, 40, false)), false,
                                 preview));
  EXPECT_EQ(lib.image(preview)->size(), QSize(40, 20));
  EXPECT_EQ(box.width(), 40);  // the box stays
  EXPECT_NE(box.img.pixel(5, 5), qRgb(0, 0, 0));  // and shows it

  const QImage small = test::PatternPicture(10, 6, false);
  ASSERT_TRUE(LoadIntoPictureBox(lib, shell, box, Picture("small.png", small), false, preview));
  EXPECT_EQ(lib.image(preview)->width(), 10);
  EXPECT_EQ(QSize(box.width(), box.height()), QSize(10, 6));  // the box takes the picture's size
  EXPECT_EQ(lib.image(preview)->pixel(3, 2), small.pixel(3, 2));
  EXPECT_EQ(lib.openImages(), 1u);  // the former preview was closed

  const ImgHandle kept = preview;
  const std::string text = dir.Write("notes.png", "not a picture at all");
  EXPECT_FALSE(LoadIntoPictureBox(lib, shell, box, text, false, preview));
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "Couldn't open " + text);
  EXPECT_EQ(preview, kept);
  EXPECT_FALSE(LoadIntoPictureBox(lib, shell, box, text, true, preview));
  EXPECT_EQ(shell.boxes.size(), 1u);  // quiet
}

TEST_F(PreviewPipelineTest, HugePicturesThatCanBeScaledOnReadingAreScaled) {
  // A JPEG scales while it decodes; its full size is never held.
  QImage wide(kMaxPreviewSource * 2, 64, QImage::Format_RGB888);
  wide.fill(QColor(200, 30, 60));
  const std::string path = dir.file("wide.jpg");
  ASSERT_TRUE(wide.save(QString::fromStdString(path), "jpg"));
  const ImgHandle h = OpenPreviewSource(lib, path);
  ASSERT_NE(h, 0);
  EXPECT_EQ(lib.image(h)->size(), QSize(kMaxPreviewSource, 32));
}

TEST_F(PreviewPipelineTest, CacheWritesAreWholeAndClearingEmptiesTheFolder) {
  const std::string prog = dir.path();
  const std::string entry = PreviewCacheFile(prog, "/x/Foo.8bf");
  const QImage picture = test::PatternPicture(20, 10, false);
  ASSERT_TRUE(WritePreviewCache(picture, entry, 90));
  const QImage back = ReadPreviewCache(entry);
  ASSERT_EQ(back.size(), picture.size());
  EXPECT_LT(std::abs(qRed(back.pixel(5, 5)) - qRed(picture.pixel(5, 5))), 40);
  EXPECT_TRUE(ReadPreviewCache(prog + "cache/none.jpg").isNull());

  // Lower quality, smaller file.
  const std::string low = prog + "cache/low.jpg";
  ASSERT_TRUE(WritePreviewCache(test::PatternPicture(64, 64, false), low, 5));
  ASSERT_TRUE(WritePreviewCache(test::PatternPicture(64, 64, false), entry, 95));
  EXPECT_LT(fs::file_size(low), fs::file_size(entry));

  ASSERT_TRUE(ClearPreviewCache(prog));
  EXPECT_TRUE(fs::is_directory(prog + "cache"));
  EXPECT_TRUE(fs::is_empty(prog + "cache"));

  // The cache's place taken by a file: no folder can be made there.
  test::TempDir blocked;
  blocked.Write("cache", "a file");
  EXPECT_FALSE(WritePreviewCache(picture, PreviewCacheFile(blocked.path(), "Foo.8bf"), 75));
  EXPECT_EQ(blocked.Read("cache"), "a file");
  EXPECT_FALSE(WritePreviewCache(QImage(), dir.file("cache/x.jpg"), 75));
}

// The memory of recent previews: a plugin written anew or another picture
// misses; the oldest entries leave when the budget is spent; Forget drops one
// plugin on every picture and no other.
TEST_F(PreviewPipelineTest, PreviewsInMemoryAreKeyedByPluginSizeTimeAndPicture) {
  const std::string a = dir.Write("a.8bf", "one"), b = dir.Write("b.8bf", "two");
  EXPECT_EQ(PreviewMemory::KeyOf(dir.file("missing.8bf"), "p"), "");
  QImage red(40, 30, QImage::Format_RGB32), blue(40, 30, QImage::Format_RGB32);
  red.fill(Qt::red);
  blue.fill(Qt::blue);
  const int64_t one = int64_t(red.sizeInBytes());
  PreviewMemory memory(3 * one);
  memory.Put(PreviewMemory::KeyOf(a, "p"), red);
  memory.Put(PreviewMemory::KeyOf(a, "q"), blue);
  EXPECT_EQ(memory.Find(PreviewMemory::KeyOf(a, "p")), red);
  EXPECT_EQ(memory.Find(PreviewMemory::KeyOf(a, "q")), blue);
  EXPECT_TRUE(memory.Find(PreviewMemory::KeyOf(b, "p")).isNull());

  const std::string before = PreviewMemory::KeyOf(a, "p");
  dir.Write("a.8bf", "one, longer");
  EXPECT_NE(PreviewMemory::KeyOf(a, "p"), before);
  EXPECT_TRUE(memory.Find(PreviewMemory::KeyOf(a, "p")).isNull());

  // Three fit; a fourth pushes out the one used least lately ("q" was
  // looked at after "p").
  memory.Put(PreviewMemory::KeyOf(b, "p"), red);
  memory.Put(PreviewMemory::KeyOf(b, "q"), blue);
  EXPECT_EQ(memory.count(), 3u);
  EXPECT_TRUE(memory.Find(before).isNull());
  EXPECT_FALSE(memory.Find(PreviewMemory::KeyOf(b, "p")).isNull());

  memory.Forget(b);
  EXPECT_EQ(memory.count(), 1u);  // a's entry on "q" stays
  memory.Forget(a);
  EXPECT_EQ(memory.count(), 0u);
  memory.Put(PreviewMemory::KeyOf(a, "p"), red);
  memory.Clear();
  EXPECT_TRUE(memory.Find(PreviewMemory::KeyOf(a, "p")).isNull());
}

TEST_F(PreviewPipelineTest, RandomizeReachesBothEndsOfEveryControlAndTheBarDarkens) {
  FFFilter f;
  std::mt19937 gen(1);
  bool low[9] = {}, high[9] = {};
  for (int n = 0; n < 400; ++n) {
    RandomizeControls(f, gen);
    for (int i = 1; i <= 8; ++i) low[i] |= f.ctlValue[i] < 8, high[i] |= f.ctlValue[i] > 247;
  }
  for (int i = 1; i <= 8; ++i) EXPECT_TRUE(low[i] && high[i]) << i;

  EXPECT_EQ(PrintOnImagePosition(100, 50, 20, 10, 0), QPoint(40, 20));
  EXPECT_EQ(PrintOnImagePosition(100, 50, 20, 10, 1), QPoint(74, 34));
  EXPECT_EQ(PrintOnImagePosition(100, 50, 90, 40, 2), QPoint(6, 6));
  EXPECT_EQ(GreyscaleBarLevel(100, 9, 10), 0);  // never below black
  QImage bar(10, 20, QImage::Format_RGB32);
  QPainter painter(&bar);
  GreyscaleBar(painter, 10, 20, 220, 2);
  painter.end();
  EXPECT_EQ(qRed(bar.pixel(0, 0)), 220);
  EXPECT_GT(qRed(bar.pixel(0, 0)), qRed(bar.pixel(0, 10)));
  EXPECT_GT(qRed(bar.pixel(0, 10)), qRed(bar.pixel(0, 19)));
}

TEST_F(PreviewPipelineTest, TheContactSheetRendersEveryPluginOnceWithTheEnginesPixelsAndUsesTheCache) {
  std::vector<std::string> plugins;
  for (const char* code : {"255 - c", "c / 2", "r", "x * 255 / X", "b"}) {
    FFFilter f = test::SampleFilter(code);
    f.filename = "sheet" + std::to_string(plugins.size()) + ".afs";
    plugins.push_back(test::CompilePlugin(dir, f));
  }
  plugins.push_back(dir.Write("broken.8bf", "not a plugin"));
  const QImage picture = test::PatternPicture(16, 12, false);
  test::TempDir prog;
  ContactSheetOptions options;
  options.threads = 3;
  options.useCache = true;
  options.programFolder = prog.path();
  std::mutex m;
  std::vector<int> calls(plugins.size(), 0);
  std::vector<QImage> images(plugins.size());
  std::vector<std::string> errors(plugins.size());
  const auto done = [&](size_t i, const QImage& img, const std::string& e) {
    std::lock_guard<std::mutex> lock(m);
    ++calls[i];
    images[i] = img;
    errors[i] = e;
  };
  RenderContactSheet(plugins, picture, options, done);
  for (size_t i = 0; i < plugins.size(); ++i) EXPECT_EQ(calls[i], 1) << i;
  QImage inverted = picture;
  inverted.invertPixels();
  EXPECT_EQ(images[0].convertToFormat(picture.format()), inverted);
  EXPECT_EQ(images[1].pixelColor(3, 3).red(), picture.pixelColor(3, 3).red() / 2);
  EXPECT_FALSE(PrepareFilter(dir.file("gone.8bf")).ok());
  EXPECT_FALSE(PrepareFilter(dir.Write("other.8bf", "MZ but nothing else")).ok());
  EXPECT_TRUE(images.back().isNull());
  EXPECT_FALSE(errors.back().empty());
  EXPECT_TRUE(fs::exists(PreviewCacheFile(prog.path(), plugins[0])));
  // Each tile is its plugin's single preview, pixel for pixel and in the
  // picture's own format, with alpha or without.
  for (size_t i = 0; i + 1 < plugins.size(); ++i)
    EXPECT_EQ(images[i], RenderWith(PrepareFilter(plugins[i]), picture)) << i;
  const QImage withAlpha = test::PatternPicture(16, 12, true);
  ContactSheetOptions plain;
  plain.threads = 2;
  RenderContactSheet(plugins, withAlpha, plain, done);
  for (size_t i = 0; i + 1 < plugins.size(); ++i)
    EXPECT_EQ(images[i], RenderWith(PrepareFilter(plugins[i]), withAlpha)) << i;

  // The second time the cache answers, even with the plugins gone.
  for (size_t i = 0; i + 1 < plugins.size(); ++i) fs::remove(plugins[i]);
  std::fill(calls.begin(), calls.end(), 0);
  RenderContactSheet(plugins, picture, options, done);
  for (size_t i = 0; i + 1 < plugins.size(); ++i) EXPECT_TRUE(calls[i] == 1 && !images[i].isNull()) << i;

  // Cancelled before it starts: nothing is reported.
  std::atomic<bool> cancel{true};
  options.cancel = &cancel;
  std::fill(calls.begin(), calls.end(), 0);
  RenderContactSheet(plugins, picture, options, done);
  for (int c : calls) EXPECT_EQ(c, 0);
}

TEST_F(PreviewPipelineTest, BatchWritesEachPictureAndAsksBeforeReplacing) {
  const std::string plugin = test::CompilePlugin(dir, test::SampleFilter("255 - c"));
  test::TempDir in, out;
  const QImage a = test::PatternPicture(6, 4, false);
  std::vector<std::string> pictures{in.file("a.png"), in.file("b.bmp"), in.file("c.png")};
  for (const std::string& p : pictures) ASSERT_TRUE(a.save(QString::fromStdString(p)));
  pictures.push_back(in.Write("d.png", "broken"));
  out.Write("b.bmp", "keep me");
  out.Write("c.png", "keep me too");
  std::vector<std::string> asked;
  const PreparedFilter filter = PrepareFilter(plugin);
  const PictureRunner run = [&](const QImage& in) { return RenderWith(filter, in); };
  const BatchResult r = BatchApply(
      run, pictures, out.path(),
      [&](const std::string& target) {
        asked.push_back(target);
        return asked.size() == 1 ? OverwriteAnswer::Skip : OverwriteAnswer::Write;
      },
      {}, nullptr);
  EXPECT_EQ(r.written, 2);
  EXPECT_EQ(r.skipped, 1);
  ASSERT_EQ(r.errors.size(), 1u);
  EXPECT_EQ(r.errors[0], "Couldn't open " + pictures[3]);
  EXPECT_EQ(asked, (std::vector<std::string>{out.file("b.bmp"), out.file("c.png")}));
  EXPECT_EQ(out.Read("b.bmp"), "keep me");
  const QImage written(QString::fromStdString(out.file("a.png")));
  EXPECT_EQ(written.pixelColor(2, 1).green(), 255 - a.pixelColor(2, 1).green());
  EXPECT_FALSE(QImage(QString::fromStdString(out.file("c.png"))).isNull());

  // Stop ends the run and keeps what stands.
  test::TempDir out2;
  out2.Write("a.png", "old");
  const BatchResult stopped =
      BatchApply(run, pictures, out2.path(), [](const std::string&) { return OverwriteAnswer::Stop; }, {}, nullptr);
  EXPECT_TRUE(stopped.stopped);
  EXPECT_EQ(stopped.written, 0);
  EXPECT_EQ(out2.Read("a.png"), "old");
}

}  // namespace
}  // namespace trel
