#include "host/ImageWrappers.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>
#include <QImageWriter>

#include "base/SafeTarget.h"

namespace trel {

bool EncodeImage(const QImage& picture, const QByteArray& format, int quality, QByteArray& bytes) {
  bytes.clear();
  if (picture.isNull() || format.isEmpty()) return false;
  QBuffer buffer(&bytes);
  if (!buffer.open(QIODevice::WriteOnly)) return false;
  QImageWriter writer(&buffer, format);
  if (quality >= 0) writer.setQuality(quality);
  return writer.write(picture);
}

bool SaveImageSafely(const QImage& picture, const std::string& path, const QByteArray& format, int quality) {
  QByteArray bytes;
  return EncodeImage(picture, format, quality, bytes) &&
         WriteWholeFile(path, std::string(bytes.constData(), static_cast<size_t>(bytes.size())));
}

void DrawImageFit(ImageLibrary& lib, ImgHandle& handle, PictureBox& box) {
  if (handle == 0) return;
  ImgInfo info;
  if (lib.ImgGetInfoStruct(handle, info) != IMG_OK) return;
  const ImgRect source{0, 0, info.width - 1, info.height - 1};
  const int32_t boxW = box.width() / TwipsPerPixelX;
  const int32_t boxH = box.height() / TwipsPerPixelY;
  ImgRect target{0, 0, boxW - 1, boxH - 1};
  if (info.width < boxW) {
    const int32_t off = (boxW - (info.width - 1)) / 2;
    target.left = off;
    target.right = boxW - 1 - off;
  }
  if (info.height < boxH) {
    const int32_t off = (boxH - (info.height - 1)) / 2;
    target.top = off;
    target.bottom = boxH - 1 - off;
  }
  lib.ImgDrawImage(handle, box.device(), target, source);
}

void OpenImageDialog(ImageLibrary& lib, ImgHandle& handle, std::string& file) {
  CloseImage(lib, handle);
  std::string chosen;
  ImgHandle h = lib.ImgOpenDialog(chosen, 0x1F);
  if (h == 0) return;
  handle = h;
  // The original's record held the name in a short field.
  file = chosen.substr(0, 64);
}

void SizeBoxToImage(ImageLibrary& lib, const std::string& file, PictureBox& box, ImgHandle& handle) {
  (void)file;
  ImgInfo info;
  if (handle == 0 || lib.ImgGetInfoStruct(handle, info) != IMG_OK) return;
  box.resize((info.width - 1) * TwipsPerPixelX, (info.height - 1) * TwipsPerPixelY);
}

void CloseImage(ImageLibrary& lib, ImgHandle& handle) {
  if (handle != 0) lib.ImgClose(handle);
  handle = 0;
}

bool CopyImageSized(ImageLibrary& lib, int& width, int& height, ImgHandle& source, ImgHandle& target) {
  CloseImage(lib, target);
  if (source == 0) return false;
  ImgInfo info;
  if (lib.ImgGetInfoStruct(source, info) != IMG_OK) return false;
  const int w = width == 0 ? info.width : width;
  const int h = height == 0 ? info.height : height;
  target = lib.ImgCopy(source, 0, 0, info.width - 1, info.height - 1, 0);
  if (target == 0 || lib.ImgGetStatus() != IMG_OK) return false;
  if (w != info.width || h != info.height) {
    QImage* img = lib.image(target);
    if (w <= 0 || h <= 0) return false;
    *img = img->scaled(w, h, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (img->isNull()) return false;
  }
  return true;
}

void OpenImageFile(ImageLibrary& lib, ShellHooks& shell, std::string& path, ImgHandle& handle,
                   bool& quiet) {
  CloseImage(lib, handle);
  handle = lib.ImgOpenSolo(path, "");
  if (handle == 0 && !quiet)
    shell.Report(Error::Warning("Couldn't open " + path, "Trel", path));
}

}  // namespace trel
