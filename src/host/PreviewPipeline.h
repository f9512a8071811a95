// The preview pipeline without windows: which picture previews are made from,
// its thumbnail, loading a picture for a picture box, the disk cache of
// finished previews, and the small picture helpers the dialogs use.
#pragma once

#include <cstdint>
#include <list>
#include <mutex>
#include <random>
#include <string>
#include <utility>

#include <QImage>
#include <QSize>

#include "filter/FFFilter.h"
#include "filter/ShellHooks.h"
#include "host/ImageLibrary.h"
#include "host/ImageWrappers.h"

class QPainter;

namespace trel {

// The preview picture: the stored path when it is set and the file is there,
// otherwise Test.bmp in the program folder (which ends in a separator).
std::string PreviewPicFor(const std::string& setting, const std::string& programFolder);

// "cache" below the program folder, with a trailing separator.
std::string PreviewCacheFolder(const std::string& programFolder);
// The cache entry of a plugin: named after the file alone, so two plugins of
// the same name in different folders share one entry.
std::string PreviewCacheFile(const std::string& programFolder, const std::string& pluginPath);

// Pictures larger than this on either side are scaled while they are read,
// so a huge file never costs its full size in memory.
inline constexpr int kMaxPreviewSource = 4096;

// Opens a picture for previewing: small pictures as they are, larger ones
// scaled down on reading to fit kMaxPreviewSource. 0 when it isn't a picture,
// is empty or cannot be read.
ImgHandle OpenPreviewSource(ImageLibrary& lib, const std::string& path);

// The size of a picture of width x height fitted into a box: landscape
// pictures are scaled by the width, the others by the height; never enlarged,
// never below one pixel.
QSize ThumbSize(int width, int height, int boxWidth, int boxHeight);

// Builds `thumb` (24 bits) from `picture`, fitted into the box; `aspect` gets
// width / height of the source. On failure both are left as they were.
bool CreateThumb(ImageLibrary& lib, const std::string& picture, int boxWidth, int boxHeight,
                 ImgHandle& thumb, float& aspect);

// Loads a picture for `box` and makes it the preview image (the former one is
// closed). Larger pictures are scaled into the box keeping their aspect;
// smaller ones are taken as they are and the box takes their size. A file
// that doesn't open leaves everything as it was and, unless quiet, says
// "Couldn't open " and the path.
bool LoadIntoPictureBox(ImageLibrary& lib, ShellHooks& shell, PictureBox& box,
                        const std::string& path, bool quiet, ImgHandle& preview);

// Writes a picture as a JPEG of the given quality (0..100) through a whole-
// file writer: a failed write leaves any former entry in place.
bool WritePreviewCache(const QImage& picture, const std::string& path, int quality);
// Reads a cache entry; a null image when there is none or it is damaged.
QImage ReadPreviewCache(const std::string& path);
// Deletes everything in the cache folder and creates it anew.
bool ClearPreviewCache(const std::string& programFolder);

// Recent previews kept decoded, so that showing one again costs a look-up
// instead of reading and decoding its JPEG. An entry is known by the plugin's
// path, size and modification time and by the picture it was made on: a
// plugin written anew, or another picture, misses and is made (or read from
// the disk cache) again. The oldest entries go when the budget is used up.
// Safe to use from several threads.
class PreviewMemory {
 public:
  explicit PreviewMemory(int64_t budgetBytes = int64_t{48} << 20) : budget_(budgetBytes) {}

  // The key of `plugin`'s preview on `picture`; empty when the plugin isn't
  // there to be asked about its size and time.
  static std::string KeyOf(const std::string& plugin, const std::string& picture);

  // A null image when there is no entry; a hit becomes the most recent.
  QImage Find(const std::string& key);
  void Put(const std::string& key, const QImage& image);
  // Drops every entry of one plugin, on every picture.
  void Forget(const std::string& plugin);
  void Clear();
  size_t count() const;

 private:
  mutable std::mutex mutex_;
  std::list<std::pair<std::string, QImage>> items_;  // the most recent first
  int64_t bytes_ = 0;
  const int64_t budget_;
};

// Sets the eight control values to random bytes.
void RandomizeControls(FFFilter& filter, std::mt19937& random);

// Where PrintOnImage puts a text of size textW x textH on a box of boxW x boxH:
// mode 0 centred, 1 at the lower right, 2 at the upper left (80 units in).
QPoint PrintOnImagePosition(int boxW, int boxH, int textW, int textH, int mode);
// Writes a word on a picture in red, Arial 8 bold.
void PrintOnImage(QImage& target, const std::string& text, int mode);
// Paints the grey title bar of the small dialogs: rows from top to bottom,
// each a step darker, `step` setting a row's height.
void GreyscaleBar(QPainter& painter, int width, int height, int grey, int step);
// The grey of row i of n rows starting from `grey`.
int GreyscaleBarLevel(int grey, int row, int rows);

}  // namespace trel
