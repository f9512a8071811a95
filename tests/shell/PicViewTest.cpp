// The Picture Editor: every entry that changes pixels, Undo, saving by
// extension, the caption and the questions it asks.
#include <gtest/gtest.h>

#include <QImageReader>
#include <QImageWriter>
#include <QPrinter>
#include <filesystem>

#include "../host/HostTestSupport.h"
#include "picture/PicView.h"
#include "picture/PictureOps.h"
#include "support/RecordingShell.h"
#include "support/TempDir.h"

namespace trel {
namespace {

// A picture with colours, edges and an uneven histogram, so that every
// operation has something to change.
QImage Sample() {
  QImage img(24, 16, QImage::Format_RGB888);
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 24; ++x)
      img.setPixelColor(x, y, QColor((40 + 9 * x) % 200 + 20, (30 + 13 * y) % 180 + 30,
                                     (x > 12) != (y > 8) ? 200 : 50));
  img.setPixelColor(5, 5, QColor(255, 255, 255));  // a speck
  return img;
}

class PicViewTest : public ::testing::Test {
 protected:
  test::RecordingShell shell;
  test::TempDir dir;
  PicView view{nullptr, &shell};
};

TEST_F(PicViewTest, EveryOperationChangesThePictureAndUndoBringsItBack) {
  const QImage sample = Sample();
  for (const QString& caption : PictureOpCaptions()) {
    view.SetPicture(sample);
    ASSERT_TRUE(view.ApplyOperation(caption, PictureOpDefaultValue(caption))) << caption.toStdString();
    const QImage after = view.Picture();
    const bool changed = after.size() != sample.size() ||
                         after.convertToFormat(QImage::Format_RGB32) != sample.convertToFormat(QImage::Format_RGB32);
    // "16 Million Colors" only changes the depth of a picture with fewer.
    if (caption == "16 Million Colors")
      EXPECT_EQ(PictureBitCount(after), 24);
    else
      EXPECT_TRUE(changed) << caption.toStdString();
    view.mnuUndo_Click();
    EXPECT_EQ(view.Picture(), sample) << caption.toStdString();
  }
  EXPECT_FALSE(view.ApplyOperation("No Such Thing"));
}

TEST_F(PicViewTest, OperationsDoWhatTheirNamesSay) {
  const QImage s = Sample();
  auto px = [](const QImage& i, int x, int y) { return i.pixelColor(x, y); };
  EXPECT_EQ(px(ApplyPictureOp(s, "Invert"), 3, 3).red(), 255 - px(s, 3, 3).red());
  EXPECT_EQ(ApplyPictureOp(s, "Rotate 90").size(), QSize(16, 24));
  EXPECT_EQ(px(ApplyPictureOp(s, "Horizontal Mirror"), 0, 2), px(s, 23, 2));
  EXPECT_EQ(px(ApplyPictureOp(s, "Vertical Mirror"), 2, 0), px(s, 2, 15));
  EXPECT_EQ(px(ApplyPictureOp(s, "Channel Swap"), 4, 4).red(), px(s, 4, 4).green());
  EXPECT_GT(px(ApplyPictureOp(s, "Brightness...", 20), 4, 4).red(), px(s, 4, 4).red());
  EXPECT_NE(px(ApplyPictureOp(s, "Despeckle"), 5, 5), QColor(255, 255, 255));
  EXPECT_EQ(PictureBitCount(ApplyPictureOp(s, "2 Colors")), 1);
  EXPECT_EQ(PictureBitCount(ApplyPictureOp(s, "16 Colors Dithered")), 4);
  EXPECT_EQ(PictureBitCount(ApplyPictureOp(s, "256 Colors")), 8);
  const QColor grey = px(ApplyPictureOp(s, "Greyscale"), 7, 7);
  EXPECT_TRUE(grey.red() == grey.green() && grey.green() == grey.blue());
  const QImage stretched = ApplyPictureOp(s, "Auto Contrast");
  int lo = 255, hi = 0;
  for (int y = 0; y < 16; ++y)
    for (int x = 0; x < 24; ++x) lo = std::min(lo, qRed(stretched.pixel(x, y))), hi = std::max(hi, qRed(stretched.pixel(x, y)));
  EXPECT_EQ(lo, 0);
  EXPECT_EQ(hi, 255);
  EXPECT_TRUE(ResizePicture(s, 0, 5).isNull());
  EXPECT_EQ(ResizePicture(s, 48, 8).size(), QSize(48, 8));
  EXPECT_TRUE(ApplyPictureOp(QImage(), "Invert").isNull());
}

TEST_F(PicViewTest, CaptionTellsNameSizeAndColours) {
  view.SetPicture(Sample());
  EXPECT_EQ(view.windowTitle(), "Picture Editor - Untitled - 24x16, 16 Milion Colors (24bit)");
  view.ApplyOperation("256 Colors");
  EXPECT_EQ(view.windowTitle(), "Picture Editor - Untitled - 24x16, 256 Colors (8bit)");
  const std::string path = dir.file("shot.png");
  ASSERT_TRUE(view.SaveFile(QString::fromStdString(path)));
  EXPECT_EQ(view.windowTitle(), "Picture Editor - shot.png - 24x16, 256 Colors (8bit)");
  EXPECT_FALSE(view.PictureChanged());
}

TEST_F(PicViewTest, SavingGoesByExtensionAndNeverLeavesHalfAFile) {
  view.SetPicture(Sample());
  for (const char* ext : {"png", "bmp", "jpg", "ppm", "tif"}) {
    const QString path = QString::fromStdString(dir.file(std::string("out.") + ext));
    if (!QImageWriter::supportedImageFormats().contains(ext)) continue;
    ASSERT_TRUE(view.SaveFile(path)) << ext;
    QImageReader reader(path);
    EXPECT_EQ(reader.format(), QByteArray(ext == std::string("jpg") ? "jpeg" : ext)) << ext;
    EXPECT_EQ(reader.size(), QSize(24, 16));
  }
  dir.Write("keep.xyz", "precious");
  EXPECT_FALSE(view.SaveFile(QString::fromStdString(dir.file("keep.xyz"))));
  EXPECT_EQ(dir.Read("keep.xyz"), "precious");
  ASSERT_EQ(shell.boxes.size(), 1u);
  EXPECT_FALSE(view.SaveFile(QString::fromStdString(dir.file("no/such/folder/x.png"))));
  EXPECT_EQ(shell.boxes.size(), 2u);
}

TEST_F(PicViewTest, SaveAsksForANameWhenUntitledOrGifAndACancelSaysNothing) {
  std::vector<bool> asked;
  QString answer;
  view.SetFileChooser([&](bool save, const QString&) { return asked.push_back(save), answer; });
  view.SetPicture(Sample());
  view.mnuSaveAs_Click(0);  // untitled: the dialog, cancelled
  EXPECT_EQ(asked, std::vector<bool>{true});
  EXPECT_TRUE(shell.boxes.empty());
  answer = QString::fromStdString(dir.file("a.gif"));
  view.mnuSaveAs_Click(1);
  if (!QImageWriter::supportedImageFormats().contains("gif")) answer = QString::fromStdString(dir.file("a.png"));
  view.mnuSaveAs_Click(0);  // a GIF always goes through the dialog
  const std::string png = dir.file("b.png");
  answer = QString::fromStdString(png);
  view.mnuSaveAs_Click(1);
  const size_t before = asked.size();
  view.ApplyOperation("Invert");
  view.mnuSaveAs_Click(0);  // a known file: no dialog
  EXPECT_EQ(asked.size(), before);
  EXPECT_EQ(QImage(QString::fromStdString(png)).pixelColor(3, 3).red(), 255 - Sample().pixelColor(3, 3).red());
}

TEST_F(PicViewTest, BadFilesAreRefusedWithTheirPath) {
  view.SetPicture(Sample());
  const std::string png = dir.file("good.png");
  ASSERT_TRUE(Sample().save(QString::fromStdString(png)));
  const std::string bytes = test::ReadFileBytes(png);
  // A BMP header that claims 20000 x 20000 pixels, with almost none behind it.
  std::string huge = "BM";
  auto put = [&](uint32_t v, int n) {
    for (int i = 0; i < n; ++i) huge += char(i < 4 ? v >> (8 * i) : 0);
  };
  put(118, 4), put(0, 4), put(54, 4), put(40, 4), put(20000, 4), put(20000, 4), put(1, 2), put(24, 2);
  put(0, 24);
  huge += std::string(64, '\x20');
  // Damaged files name the path; what isn't there, or isn't a picture at all, names the reason too.
  const std::pair<std::string, std::string> bad[] = {
      {dir.Write("cut.png", bytes.substr(0, bytes.size() / 2)), ""},
      {dir.Write("empty.jpg", ""), ""},
      {dir.Write("huge.bmp", huge), ""},
      {dir.Write("letter.png", "Dear reader"), ""},
      {dir.file("gone.png"), "The file doesn't exist."},
      {dir.Write("notes.xyz", "plain words"), "It isn't a picture of a kind this program reads."}};
  for (const auto& [path, reason] : bad) {
    shell.boxes.clear();
    EXPECT_FALSE(view.OpenFile(QString::fromStdString(path))) << path;
    ASSERT_EQ(shell.boxes.size(), 1u) << path;
    const std::string said = shell.boxes[0].text, start = "Couldn't open " + path + "\n";
    EXPECT_TRUE(reason.empty() ? said.rfind(start, 0) == 0 : said == start + reason) << said;
    EXPECT_EQ(view.Picture(), Sample());
  }
  // A good file opens with nothing to undo.
  ASSERT_TRUE(view.OpenFile(QString::fromStdString(png)));
  EXPECT_EQ(view.PictureFile().toStdString(), png);
  EXPECT_TRUE(view.UndoPicture().isNull());
  view.mnuUndo_Click();
  EXPECT_EQ(view.PictureFile().toStdString(), png);
}

TEST_F(PicViewTest, ApplyFilterUsesTheInstalledRun) {
  EXPECT_FALSE(view.mnuApplyFilter_Click());  // no picture
  view.SetPicture(Sample());
  view.SetApplyFilter([](const QImage& in) { return in.mirrored(true, false); });
  ASSERT_TRUE(view.mnuApplyFilter_Click());
  EXPECT_EQ(view.Picture().pixelColor(0, 0), Sample().mirrored(true, false).pixelColor(0, 0));
  view.SetApplyFilter([](const QImage&) { return QImage(); });  // refused: nothing changes
  const QImage before = view.Picture();
  EXPECT_FALSE(view.mnuApplyFilter_Click());
  EXPECT_EQ(view.Picture(), before);
}

TEST_F(PicViewTest, PrintWritesThePicture) {
  view.SetPicture(Sample().scaled(400, 300));
  QPrinter printer(QPrinter::HighResolution);
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(QString::fromStdString(dir.file("page.pdf")));
  view.PrintTo(printer, 1);
  EXPECT_GT(std::filesystem::file_size(dir.file("page.pdf")), 500u);
}

TEST_F(PicViewTest, ClosingAChangedPictureAsksToSave) {
  view.SetPicture(Sample());
  shell.nextAnswer = MsgResult::No;
  view.close();
  EXPECT_EQ(shell.boxes.size(), 1u);
}

}  // namespace
}  // namespace trel
