#include "host/PreviewPipeline.h"

#include <sys/stat.h>

#include <algorithm>
#include <cmath>

#include <QDir>
#include <QFileInfo>
#include <QFont>
#include <QFontMetrics>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QPainter>

#include "host/ImageWrappers.h"
#include "base/Paths.h"

namespace trel {

namespace {

QString FromLocal(const std::string& path) { return QString::fromLocal8Bit(path.c_str()); }

// The design measured margins in twips at 12 twips a pixel.
constexpr int kPrintMargin = 80 / 12;

}  // namespace

std::string PreviewPicFor(const std::string& setting, const std::string& programFolder) {
  if (!setting.empty() && QFileInfo(FromLocal(setting)).isFile()) return setting;
  return programFolder + "Test.bmp";
}

std::string PreviewCacheFolder(const std::string& programFolder) { return programFolder + "cache/"; }

std::string PreviewCacheFile(const std::string& programFolder, const std::string& pluginPath) {
  std::string name = pluginPath;
  const size_t cut = name.find_last_of("/\\");
  if (cut != std::string::npos) name = name.substr(cut + 1);
  // The last four characters are the extension of a plugin (".8bf", "._bf").
  name = name.size() > 4 ? name.substr(0, name.size() - 4) : std::string();
  return PreviewCacheFolder(programFolder) + name + ".jpg";
}

ImgHandle OpenPreviewSource(ImageLibrary& lib, const std::string& path) {
  QImageReader reader(FromLocal(path));
  const QSize size = reader.size();
  if (size.isValid() && (size.width() > kMaxPreviewSource || size.height() > kMaxPreviewSource)) {
    if (size.width() <= 0 || size.height() <= 0) return 0;
    reader.setScaledSize(ThumbSize(size.width(), size.height(), kMaxPreviewSource, kMaxPreviewSource));
    QImage img = reader.read();
    if (img.isNull()) return 0;
    if (img.format() == QImage::Format_RGB32) img = img.convertToFormat(QImage::Format_RGB888);
    return lib.Adopt(std::move(img));
  }
  return lib.ImgOpenSolo(path, "");
}

QSize ThumbSize(int width, int height, int boxWidth, int boxHeight) {
  if (width <= 0 || height <= 0 || boxWidth <= 0 || boxHeight <= 0) return {};
  double scale = width > height ? double(boxWidth) / width : double(boxHeight) / height;
  // The side that follows must fit the box too.
  scale = std::min({scale, double(boxWidth) / width, double(boxHeight) / height, 1.0});
  return {std::max(1, int(std::lround(width * scale))), std::max(1, int(std::lround(height * scale)))};
}

bool CreateThumb(ImageLibrary& lib, const std::string& picture, int boxWidth, int boxHeight,
                 ImgHandle& thumb, float& aspect) {
  ImgHandle source = OpenPreviewSource(lib, picture);
  if (source == 0) return false;
  ImgInfo info;
  lib.ImgGetInfoStruct(source, info);
  const QSize size = ThumbSize(info.width, info.height, boxWidth, boxHeight);
  if (size.isEmpty()) {
    lib.ImgClose(source);
    return false;
  }
  ImgHandle scaled = lib.ImgCopy(source, 0, 0, info.width - 1, info.height - 1);
  lib.ImgClose(source);
  if (scaled == 0) return false;
  QImage* img = lib.image(scaled);
  if (size != img->size()) *img = img->scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
  ImgInfo thumbInfo;
  lib.ImgGetInfoStruct(scaled, thumbInfo);
  if (thumbInfo.bitCount < 24 || thumbInfo.bitCount == 32) {
    // Plugins see 24-bit pictures.
    ImgHandle wide = lib.ImgIncreaseColors(scaled, 24);
    if (wide != 0) {
      lib.ImgClose(scaled);
      scaled = wide;
    }
  }
  CloseImage(lib, thumb);
  thumb = scaled;
  aspect = float(info.width) / float(info.height);
  return true;
}

bool LoadIntoPictureBox(ImageLibrary& lib, ShellHooks& shell, PictureBox& box,
                        const std::string& path, bool quiet, ImgHandle& preview) {
  ImgHandle h = OpenPreviewSource(lib, path);
  if (h == 0) {
    if (!quiet) shell.Report(Error::Warning("Couldn't open " + path, "Trel", path));
    return false;
  }
  ImgInfo info;
  lib.ImgGetInfoStruct(h, info);
  if (info.bitCount < 24) {
    ImgHandle wide = lib.ImgIncreaseColors(h, 24);
    if (wide != 0) {
      lib.ImgClose(h);
      h = wide;
    }
  }
  const int boxW = box.width() / TwipsPerPixelX, boxH = box.height() / TwipsPerPixelY;
  const bool wmf = LastFour(path) == ".wmf";
  if (!wmf && (info.width > boxW || info.height > boxH)) {
    const QSize size = ThumbSize(info.width, info.height, boxW, boxH);
    if (!size.isEmpty()) {
      QImage* img = lib.image(h);
      ImgHandle scaled = lib.Adopt(img->scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation));
      if (scaled != 0) {
        lib.ImgClose(h);
        h = scaled;
      }
    }
  } else if (!wmf) {
    box.resize(info.width * TwipsPerPixelX, info.height * TwipsPerPixelY);
  }
  CloseImage(lib, preview);
  preview = h;
  ImgInfo shown;
  lib.ImgGetInfoStruct(h, shown);
  lib.ImgDrawImage(h, box.device(), {0, 0, shown.width - 1, shown.height - 1},
                   {0, 0, shown.width - 1, shown.height - 1});
  return true;
}

bool WritePreviewCache(const QImage& picture, const std::string& path, int quality) {
  if (picture.isNull()) return false;
  const QString qpath = FromLocal(path);
  QDir().mkpath(QFileInfo(qpath).absolutePath());
  return SaveImageSafely(picture, path, "jpg", std::clamp(quality, 0, 100));
}

QImage ReadPreviewCache(const std::string& path) {
  QImageReader reader(FromLocal(path), "jpg");
  QImage img = reader.read();
  if (img.format() == QImage::Format_RGB32) img = img.convertToFormat(QImage::Format_RGB888);
  return img;
}

bool ClearPreviewCache(const std::string& programFolder) {
  QDir cache(FromLocal(PreviewCacheFolder(programFolder)));
  bool removed = !cache.exists() || cache.removeRecursively();
  return QDir().mkpath(cache.absolutePath()) && removed;
}

std::string PreviewMemory::KeyOf(const std::string& plugin, const std::string& picture) {
  struct stat st {};
  if (plugin.empty() || ::stat(plugin.c_str(), &st) != 0) return {};
  const int64_t mtime = int64_t(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
  // The plugin's path leads, ended by a NUL no path holds, so that Forget
  // finds its entries by the start of the key.
  std::string key = plugin;
  key += '\0';
  key += std::to_string(int64_t(st.st_size));
  key += ' ';
  key += std::to_string(mtime);
  key += ' ';
  key += picture;
  return key;
}

QImage PreviewMemory::Find(const std::string& key) {
  if (key.empty()) return {};
  std::lock_guard lock(mutex_);
  for (auto it = items_.begin(); it != items_.end(); ++it) {
    if (it->first != key) continue;
    items_.splice(items_.begin(), items_, it);
    return items_.front().second;
  }
  return {};
}

void PreviewMemory::Put(const std::string& key, const QImage& image) {
  if (key.empty() || image.isNull()) return;
  const int64_t size = int64_t(image.sizeInBytes());
  if (size > budget_) return;
  std::lock_guard lock(mutex_);
  for (auto it = items_.begin(); it != items_.end(); ++it) {
    if (it->first != key) continue;
    bytes_ -= int64_t(it->second.sizeInBytes());
    items_.erase(it);
    break;
  }
  items_.emplace_front(key, image);
  bytes_ += size;
  while (bytes_ > budget_ && !items_.empty()) {
    bytes_ -= int64_t(items_.back().second.sizeInBytes());
    items_.pop_back();
  }
}

void PreviewMemory::Forget(const std::string& plugin) {
  const std::string lead = plugin + '\0';
  std::lock_guard lock(mutex_);
  for (auto it = items_.begin(); it != items_.end();) {
    if (it->first.compare(0, lead.size(), lead) == 0) {
      bytes_ -= int64_t(it->second.sizeInBytes());
      it = items_.erase(it);
    } else {
      ++it;
    }
  }
}

void PreviewMemory::Clear() {
  std::lock_guard lock(mutex_);
  items_.clear();
  bytes_ = 0;
}

size_t PreviewMemory::count() const {
  std::lock_guard lock(mutex_);
  return items_.size();
}

void RandomizeControls(FFFilter& filter, std::mt19937& random) {
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int i = 1; i <= 8; ++i) filter.ctlValue[i] = static_cast<uint8_t>(std::lround(unit(random) * 255));
}

QPoint PrintOnImagePosition(int boxW, int boxH, int textW, int textH, int mode) {
  switch (mode) {
    case 1: return {boxW - textW - kPrintMargin, boxH - textH - kPrintMargin};
    case 2: return {kPrintMargin, kPrintMargin};
    default: return {(boxW - textW) / 2, (boxH - textH) / 2};
  }
}

void PrintOnImage(QImage& target, const std::string& text, int mode) {
  if (target.isNull()) return;
  QPainter painter(&target);
  QFont font("Arial", 8);
  font.setBold(true);
  painter.setFont(font);
  painter.setPen(QColor(255, 0, 0));
  const QFontMetrics metrics(font);
  const QString word = QString::fromLatin1(text.c_str());
  const QRect bounds = metrics.boundingRect(word);
  const QPoint at = PrintOnImagePosition(target.width(), target.height(), bounds.width(),
                                         bounds.height(), mode);
  painter.drawText(QRect(at, bounds.size()), Qt::AlignLeft | Qt::AlignTop, word);
}

int GreyscaleBarLevel(int grey, int row, int rows) {
  if (rows <= 0) return std::clamp(grey, 0, 255);
  return std::clamp(grey - 255 * row / rows, 0, 255);
}

void GreyscaleBar(QPainter& painter, int width, int height, int grey, int step) {
  const int rowHeight = std::max(1, step);
  const int rows = (height + rowHeight - 1) / rowHeight;
  painter.setPen(Qt::NoPen);
  for (int i = 0; i < rows; ++i) {
    const int level = GreyscaleBarLevel(grey, i, rows);
    painter.fillRect(0, i * rowHeight, width, rowHeight, QColor(level, level, level));
  }
}

}  // namespace trel
