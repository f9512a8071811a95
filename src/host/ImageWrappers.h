// The thin wrappers every picture-showing window uses around the image
// library: open, close, draw to fit, copy at a size.
#pragma once

#include <string>

#include "filter/ShellHooks.h"
#include "host/ImageLibrary.h"

class QByteArray;
class QImage;
class QPaintDevice;

namespace trel {

// Window units per pixel: the design measured in twips, this platform in pixels.
constexpr int TwipsPerPixelX = 1;
constexpr int TwipsPerPixelY = 1;

// A picture box of a window: its size in window units and where to draw.
class PictureBox {
 public:
  virtual ~PictureBox() = default;
  virtual int width() const = 0;
  virtual int height() const = 0;
  virtual void resize(int width, int height) = 0;
  virtual QPaintDevice* device() = 0;
};

// Larger pictures are squeezed into the box, smaller ones centred at their size.
void DrawImageFit(ImageLibrary& lib, ImgHandle& handle, PictureBox& box);
void OpenImageDialog(ImageLibrary& lib, ImgHandle& handle, std::string& file);
void SizeBoxToImage(ImageLibrary& lib, const std::string& file, PictureBox& box, ImgHandle& handle);
void CloseImage(ImageLibrary& lib, ImgHandle& handle);
// A copy of `source` at width x height (0 keeps the source's) into `target`.
bool CopyImageSized(ImageLibrary& lib, int& width, int& height, ImgHandle& source, ImgHandle& target);
void OpenImageFile(ImageLibrary& lib, ShellHooks& shell, std::string& path, ImgHandle& handle,
                   bool& quiet);

// `picture` in the file format `format` ("jpg", "png"; quality 0..100, or -1
// for the writer's own); false when the format can't be written.
bool EncodeImage(const QImage& picture, const QByteArray& format, int quality, QByteArray& bytes);
// Encodes and writes `picture` through the safe writer: a picture that stood
// at `path` is replaced only by a complete one.
bool SaveImageSafely(const QImage& picture, const std::string& path, const QByteArray& format, int quality = -1);

}  // namespace trel
