#include "host/ImageWrappers.h"

#include <gtest/gtest.h>

#include <QImage>

#include "HostTestSupport.h"

namespace trel {
namespace {

class ImageWrappersTest : public ::testing::Test {
 protected:
  test::TempDir dir;
  test::RecordingShell shell;
  ImageLibrary lib{shell};

  ImgHandle Solid(int w, int h, Qt::GlobalColor colour) {
    QImage img(w, h, QImage::Format_RGB32);
    img.fill(colour);
    return lib.Adopt(img);
  }
};

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
  ImgHandle none = 0, small = Solid(4, 4, Qt::red), large = Solid(100, 100, Qt::blue);
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
