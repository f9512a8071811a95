#include "host/ImageLibrary.h"
#include "host/ImageWrappers.h"

#include <gtest/gtest.h>

#include <tuple>

#include "HostTestSupport.h"
#include "host/ff/FFEngine.h"

namespace trel {
namespace {

using test::RecordingShell;
using test::TempDir;

class ImageLibraryTest : public ::testing::Test {
 protected:
  TempDir dir;
  RecordingShell shell;
  ImageLibrary lib{shell};

  // What the engine makes of `img` with the filter's code and control values.
  static QImage RunDirectly(const QImage& img, const FFFilter& f) {
    const bool alpha = img.hasAlphaChannel();
    QImage work = img.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888);
    QImage out(work.size(), work.format());
    ff::CompileError err;
    ff::CompiledFilter cf = ff::CompileFilter({f.codeR, f.codeG, f.codeB, f.codeA}, &err);
    EXPECT_TRUE(cf.valid()) << err.message;
    ff::Controls ctl{};
    for (int i = 0; i < 8; ++i) ctl[size_t(i)] = f.ctlValue[i + 1];
    ff::RenderFilter(cf, ctl, {work.constBits(), work.width(), work.height(), work.bytesPerLine(), alpha},
                     {out.bits(), out.width(), out.height(), out.bytesPerLine(), alpha});
    return out;
  }
};
// The wrappers the windows call, over the same library.
using ImageWrappersTest = ImageLibraryTest;

TEST_F(ImageLibraryTest, OpensDescribesCopiesWidensDrawsAndClosesPictures) {
  const std::string path = dir.file("p.bmp");
  ASSERT_TRUE(test::PatternPicture(7, 5, false).save(QString::fromStdString(path)));
  ImgHandle h = lib.ImgOpenSolo(path, "");
  ASSERT_NE(h, 0);
  ImgInfo info;
  int32_t further = 99;
  EXPECT_EQ(lib.ImgGetInfoStruct(h, info, &further), IMG_OK);
  EXPECT_EQ(QSize(info.width, info.height), QSize(7, 5));
  EXPECT_EQ(info.bitCount, 24);

  ImgHandle part = lib.ImgCopy(h, 1, 2, 3, 4);
  ASSERT_NE(part, 0);
  ASSERT_EQ(lib.ImgGetInfoStruct(part, info), IMG_OK);
  EXPECT_EQ(QSize(info.width, info.height), QSize(3, 3));
  EXPECT_EQ(lib.image(part)->pixel(0, 0), lib.image(h)->pixel(1, 2));
  EXPECT_EQ(lib.ImgCopy(h, 0, 0, 7, 4), 0);  // one column too far
  EXPECT_EQ(lib.ImgGetStatus(), IMG_ERR_BAD_RECT);

  ImgHandle wide = lib.ImgIncreaseColors(lib.Adopt(lib.image(h)->convertToFormat(QImage::Format_Indexed8)), 24);
  ASSERT_EQ(lib.ImgGetInfoStruct(wide, info), IMG_OK);
  EXPECT_EQ(info.bitCount, 24);
  EXPECT_EQ(lib.ImgIncreaseColors(wide, 13), 0);

  QImage canvas(10, 10, QImage::Format_RGB32);
  canvas.fill(Qt::white);
  EXPECT_EQ(lib.ImgDrawImage(part, &canvas, {2, 2, 5, 5}, {0, 0, 0, 0}), IMG_OK);
  EXPECT_EQ(canvas.pixel(3, 3), lib.image(part)->pixel(0, 0));
  EXPECT_EQ(canvas.pixelColor(0, 0), QColor(Qt::white));
  EXPECT_EQ(canvas.pixelColor(7, 7), QColor(Qt::white));
  EXPECT_NE(lib.ImgDrawImage(0, &canvas, {0, 0, 1, 1}, {0, 0, 1, 1}), IMG_OK);

  EXPECT_EQ(lib.ImgClose(h), IMG_OK);
  EXPECT_EQ(lib.ImgClose(h), IMG_ERR_BAD_HANDLE);
  EXPECT_EQ(lib.ImgGetInfoStruct(h, info), IMG_ERR_BAD_HANDLE);
  EXPECT_EQ(lib.ImgClose(0), IMG_ERR_BAD_HANDLE);
  EXPECT_EQ(lib.ImgClose(part), IMG_OK);
  EXPECT_EQ(lib.openImages(), 2u);  // the indexed picture and its widened copy
}

TEST_F(ImageLibraryTest, UnreadableFilesGiveNoHandle) {
  EXPECT_EQ(lib.ImgOpenSolo(dir.file("missing.png"), ""), 0);
  EXPECT_EQ(lib.ImgGetStatus(), IMG_ERR_FILE_OPEN);
  EXPECT_EQ(lib.ImgOpenSolo(dir.Write("junk.bmp", std::string("BM\x10\0\0\0garbage", 13)), ""), 0);
  EXPECT_EQ(lib.ImgOpenSolo(dir.Write("empty.png", ""), ""), 0);
  lib.ImgErrBox(0);
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, ImgStatusText(IMG_ERR_FILE_OPEN));
  EXPECT_EQ(lib.ImgFromClipboard(), 0);  // no clipboard without a window system
}

TEST_F(ImageLibraryTest, WritesByExtensionAndNeverLeavesAHalfFile) {
  ImgHandle h = lib.Adopt(test::PatternPicture(6, 3, false));
  for (const char* name : {"out.bmp", "out.png"}) {
    ASSERT_EQ(lib.ImgXWriteImage(dir.file(name), "", h, 0), IMG_OK) << name;
    QImage back(QString::fromStdString(dir.file(name)));
    EXPECT_EQ(back.size(), QSize(6, 3));
    EXPECT_EQ(back.pixel(5, 2), lib.image(h)->pixel(5, 2));
  }
  const std::string keep = dir.Write("keep.xyz", "precious");
  EXPECT_NE(lib.ImgXWriteImage(keep, "", h, 0), IMG_OK);
  EXPECT_EQ(dir.Read("keep.xyz"), "precious");
  EXPECT_NE(lib.ImgXWriteImage(dir.file("nofolder/out.png"), "", h, 0), IMG_OK);
  EXPECT_NE(lib.ImgXWriteImage(dir.file("x.png"), "", 12345, 0), IMG_OK);
}

TEST_F(ImageLibraryTest, CompiledPluginGivesTheSamePixelsAsItsSource) {
  FFFilter f = test::SampleFilter("src(x+1,y,z) - ctl(0) + x*y");
  f.codeA = "255 - a/2";
  const std::string plugin = test::CompilePlugin(dir, f);
  for (bool alpha : {false, true}) {
    QImage picture = test::PatternPicture(9, 6, alpha);
    ImgHandle h = lib.Adopt(picture);
    ASSERT_EQ(lib.ImgPlugInHostLoad(dir.path()), IMG_OK);
    ASSERT_EQ(lib.ImgPlugInLoad(plugin), IMG_OK) << ImgStatusText(lib.ImgGetStatus());
    EXPECT_EQ(lib.loadedFilter().title, "Sample Filter");
    ASSERT_EQ(lib.ImgPlugInInvoke(h, 0, {0, 0, 8, 5}), IMG_OK);
    QImage expect = RunDirectly(picture, f), got = *lib.image(h);
    EXPECT_EQ(got.format(), picture.format());  // the picture keeps its format
    EXPECT_TRUE(got.convertToFormat(expect.format()) == expect) << "alpha: " << alpha;
    EXPECT_EQ(lib.ImgPlugInHostUnload(), IMG_OK);
    EXPECT_EQ(lib.ImgPlugInHostIsEnabled(), 0);
  }
}

TEST_F(ImageLibraryTest, InvokeRunsOnTheRectangleOfAnyPicture) {
  // A bare name is looked for in the host's folder.
  const std::string plugin = test::CompilePlugin(dir, test::SampleFilter("255 - c"));
  test::WriteFileBytes(dir.file("temp.dll"), test::ReadFileBytes(plugin));
  ASSERT_EQ(lib.ImgPlugInHostLoad(dir.path()), IMG_OK);
  ASSERT_EQ(lib.ImgPlugInLoad("temp.dll"), IMG_OK) << ImgStatusText(lib.ImgGetStatus());
  QImage picture = test::PatternPicture(8, 8, false);
  ImgHandle h = lib.Adopt(picture);
  ASSERT_EQ(lib.ImgPlugInInvoke(h, 0, {2, 3, 4, 5}), IMG_OK);
  for (const auto& [x, y, inside] : {std::tuple{3, 4, true}, {1, 4, false}, {5, 4, false}, {3, 6, false}}) {
    const QColor before = picture.pixelColor(x, y);
    EXPECT_EQ(lib.image(h)->pixelColor(x, y).red(), inside ? 255 - before.red() : before.red()) << x << "," << y;
  }
  EXPECT_EQ(lib.ImgPlugInInvoke(h, 0, {0, 0, 8, 7}), IMG_ERR_BAD_RECT);

  QImage indexed = test::PatternPicture(5, 5, false).convertToFormat(QImage::Format_Indexed8);
  ImgHandle pal = lib.Adopt(indexed);
  ASSERT_EQ(lib.ImgPlugInInvoke(pal, 0, {0, 0, 4, 4}), IMG_OK);
  EXPECT_EQ(lib.image(pal)->pixelColor(2, 3).red(), 255 - indexed.pixelColor(2, 3).red());
  ImgHandle one = lib.Adopt(test::PatternPicture(1, 1, true));
  ASSERT_EQ(lib.ImgPlugInInvoke(one, 0, {0, 0, 0, 0}), IMG_OK);
  EXPECT_EQ(lib.image(one)->pixelColor(0, 0).green(), 255 - 200);
}

TEST_F(ImageLibraryTest, RefusesWhatItCannotRun) {
  ImgHandle h = lib.Adopt(test::PatternPicture(3, 3, false));
  EXPECT_EQ(lib.ImgPlugInLoad(dir.Write("any.8bf", "MZ")), IMG_ERR_NO_HOST);
  EXPECT_EQ(lib.ImgPlugInHostLoad(dir.file("no-such-folder")), IMG_ERR_HOST_FOLDER);
  ASSERT_EQ(lib.ImgPlugInHostLoad(""), IMG_OK);
  EXPECT_EQ(lib.ImgPlugInInvoke(h, 0, {0, 0, 2, 2}), IMG_ERR_NO_PLUGIN);
  EXPECT_EQ(lib.ImgPlugInLoad(dir.file("missing.8bf")), IMG_ERR_PLUGIN_OPEN);
  EXPECT_EQ(lib.ImgPlugInLoad(dir.Write("other.8bf", std::string(57344, 'x'))), IMG_ERR_NOT_SUPPORTED);
  EXPECT_EQ(lib.ImgPlugInLoad(dir.Write("tiny.8bf", "MZ")), IMG_ERR_NOT_SUPPORTED);

  const std::string broken = test::CompilePlugin(dir, test::SampleFilter("r +"));
  EXPECT_EQ(lib.ImgPlugInLoad(broken), IMG_ERR_PLUGIN_CODE);
  EXPECT_EQ(lib.lastCompileError().channel, 0);
  EXPECT_EQ(lib.ImgPlugInInvoke(h, 0, {0, 0, 2, 2}), IMG_ERR_NO_PLUGIN);
}

TEST_F(ImageLibraryTest, AboutBoxOfAFilterFactoryPlugin) {
  const std::string plugin = test::CompilePlugin(dir, test::SampleFilter("r"));
  EXPECT_EQ(lib.ImgPlugInAbout(0, plugin), IMG_ERR_NO_HOST);
  lib.ImgPlugInHostLoad("");
  EXPECT_EQ(lib.ImgPlugInAbout(0, plugin), IMG_OK);
  ASSERT_EQ(shell.boxes.size(), 1u);
  for (const char* part : {"Sample Filter", "(c) 2026 The Tests", "A. Tester"})
    EXPECT_NE(shell.boxes[0].text.find(part), std::string::npos) << part;
  EXPECT_EQ(lib.ImgPlugInAbout(0, dir.Write("plain.8bf", "MZ")), IMG_ERR_NOT_SUPPORTED);
  EXPECT_EQ(shell.boxes.size(), 1u);
}

TEST_F(ImageWrappersTest, CopyAtFullOrGivenSize) {
  ImgHandle source = lib.Adopt(test::PatternPicture(10, 8, false)), target = 0, none = 0;
  int w = 0, h = 0;
  ASSERT_TRUE(CopyImageSized(lib, w, h, source, target));
  ASSERT_NE(target, source);
  EXPECT_EQ(*lib.image(target), *lib.image(source));

  ImgHandle old = target;
  w = 5, h = 4;
  ASSERT_TRUE(CopyImageSized(lib, w, h, source, target));
  EXPECT_EQ(lib.image(old), nullptr);  // the former target was closed
  EXPECT_EQ(lib.image(target)->size(), QSize(5, 4));
  EXPECT_FALSE(CopyImageSized(lib, w, h, none, target));
  EXPECT_EQ(target, 0);
}

TEST_F(ImageWrappersTest, DrawFitCentresSmallPicturesAndSqueezesLargeOnes) {
  test::ImageBox box(20, 10);
  QImage red(4, 4, QImage::Format_RGB32), blue(100, 100, QImage::Format_RGB32);
  red.fill(Qt::red);
  blue.fill(Qt::blue);
  ImgHandle none = 0, small = lib.Adopt(red), large = lib.Adopt(blue);
  DrawImageFit(lib, none, box);
  EXPECT_EQ(box.img.pixelColor(10, 5), QColor(Qt::white));
  DrawImageFit(lib, small, box);
  EXPECT_EQ(box.img.pixelColor(10, 5), QColor(Qt::red));
  EXPECT_EQ(box.img.pixelColor(1, 5), QColor(Qt::white));
  EXPECT_EQ(box.img.pixelColor(10, 0), QColor(Qt::white));
  DrawImageFit(lib, large, box);
  EXPECT_EQ(box.img.pixelColor(0, 0), QColor(Qt::blue));
  EXPECT_EQ(box.img.pixelColor(19, 9), QColor(Qt::blue));
}

TEST_F(ImageWrappersTest, CloseOpenAndSize) {
  ImgHandle h = 0;
  CloseImage(lib, h);
  EXPECT_EQ(h, 0);
  std::string path = dir.file("p.png"), missing = dir.file("missing.png");
  ASSERT_TRUE(test::PatternPicture(6, 5, false).save(QString::fromStdString(path)));
  bool quiet = false;
  OpenImageFile(lib, shell, path, h, quiet);
  ASSERT_NE(h, 0);
  test::ImageBox box(1, 1);
  SizeBoxToImage(lib, path, box, h);
  EXPECT_EQ(QSize(box.width(), box.height()), QSize(5, 4));

  OpenImageFile(lib, shell, missing, h, quiet);
  EXPECT_EQ(h, 0);
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(shell.boxes[0].text, "Couldn't open " + missing);
  EXPECT_EQ(shell.boxes[0].icon, MsgIcon::Exclamation);
  quiet = true;
  OpenImageFile(lib, shell, missing, h, quiet);
  EXPECT_EQ(shell.boxes.size(), 1u);
  EXPECT_EQ(lib.openImages(), 0u);
}

TEST_F(ImageWrappersTest, PicturesReplaceAnOldFileOnlyWhenWhollyWritten) {
  const QImage picture = test::PatternPicture(12, 9, false);
  dir.Write("shot.png", "an older file");
  ASSERT_TRUE(SaveImageSafely(picture, dir.file("shot.png"), "png"));
  QImage back(QString::fromStdString(dir.file("shot.png")));
  ASSERT_FALSE(back.isNull());
  EXPECT_EQ(back.convertToFormat(picture.format()), picture);
  // A format nobody writes, or no picture at all: the old file stands.
  EXPECT_FALSE(SaveImageSafely(picture, dir.file("shot.png"), "no-such-format"));
  EXPECT_FALSE(SaveImageSafely(QImage(), dir.file("shot.png"), "png"));
  EXPECT_EQ(QImage(QString::fromStdString(dir.file("shot.png"))).size(), picture.size());
  // The quality reaches the writer.
  const QImage large = test::PatternPicture(96, 96, false);
  QByteArray bytes, better;
  EXPECT_TRUE(EncodeImage(large, "jpg", 10, bytes));
  EXPECT_TRUE(EncodeImage(large, "jpg", 95, better));
  EXPECT_LT(bytes.size(), better.size());
}

TEST_F(ImageWrappersTest, OpenDialogKeepsTheFirstSixtyFourCharacters) {
  QImage pic = test::PatternPicture(3, 3, false);
  const std::string longName = dir.file(std::string(80, 'n') + ".png");
  ASSERT_TRUE(pic.save(QString::fromStdString(longName)));
  ImgHandle h = lib.Adopt(pic);
  std::string file;
  OpenImageDialog(lib, h, file);  // no dialog installed: nothing chosen
  EXPECT_EQ(h, 0);
  EXPECT_TRUE(file.empty());
  lib.setOpenDialog([&] { return longName; });
  OpenImageDialog(lib, h, file);
  EXPECT_NE(h, 0);
  EXPECT_EQ(file, longName.substr(0, 64));
}

}  // namespace
}  // namespace trel
