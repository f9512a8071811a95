#include "host/ContactSheet.h"

#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <algorithm>
#include <thread>

#include "base/Paths.h"
#include "host/PreviewPipeline.h"
#include "host/ImageWrappers.h"
#include "host/ff/FFEngine.h"

namespace trel {

namespace {

// The picture in the bytes the engine reads, made once for every tile.
struct TileSource {
  explicit TileSource(const QImage& picture)
      : alpha(picture.hasAlphaChannel()),
        original(picture.format()),
        work(picture.convertToFormat(alpha ? QImage::Format_RGBA8888 : QImage::Format_RGBX8888)) {}
  bool alpha;
  QImage::Format original;
  QImage work;
};

// One tile on the calling thread alone: the tiles are the work shared out
// between the cores, and an engine that split every tile again would start
// and stop its own threads for each of them and make the two kinds of
// workers fight for the same cores.
QImage RenderTile(const PreparedFilter& filter, const TileSource& source, const std::function<bool()>& cancel) {
  if (!filter.ok() || source.work.isNull()) return {};
  QImage result(source.work.size(), source.work.format());
  if (result.isNull()) return {};
  ff::Controls ctl{};
  for (int i = 0; i < 8; ++i) ctl[size_t(i)] = filter.filter.ctlValue[i + 1];
  const ff::ConstImageView src{source.work.constBits(), source.work.width(), source.work.height(),
                               ptrdiff_t(source.work.bytesPerLine()), source.alpha};
  const ff::ImageView dst{result.bits(), result.width(), result.height(), ptrdiff_t(result.bytesPerLine()), source.alpha};
  ff::RenderOptions options;
  options.threads = 1;
  options.cancel = cancel;
  if (ff::RenderFilter(filter.compiled, ctl, src, dst, options) != ff::RenderStatus::Done) return {};
  // The tile comes back in the picture's own format, as a single preview would
  // (a paletted picture becomes a true-colour one).
  const QImage::Format original = source.original;
  const bool paletted = original == QImage::Format_Indexed8 || original == QImage::Format_Mono ||
                        original == QImage::Format_MonoLSB;
  const QImage::Format back = paletted ? (source.alpha ? QImage::Format_ARGB32 : QImage::Format_RGB32) : original;
  return back == result.format() ? result : result.convertToFormat(back);
}

}  // namespace

void RenderContactSheet(const std::vector<std::string>& plugins, const QImage& picture,
                        const ContactSheetOptions& options,
                        const std::function<void(size_t, const QImage&, const std::string&)>& done) {
  const auto cancelled = [&] { return options.cancel && options.cancel->load(); };
  const TileSource source(picture);
  const std::function<bool()> cancel = cancelled;
  std::atomic<size_t> next{0};
  auto work = [&] {
    for (size_t i = next++; i < plugins.size() && !cancelled(); i = next++) {
      const std::string cacheFile = PreviewCacheFile(options.programFolder, plugins[i]);
      if (options.useCache && FileExists(cacheFile)) {
        QImage cached = ReadPreviewCache(cacheFile);
        if (!cached.isNull()) {
          done(i, cached, {});
          continue;
        }
      }
      const PreparedFilter filter = PrepareFilter(plugins[i]);
      QImage result = RenderTile(filter, source, cancel);
      if (result.isNull()) {
        if (!cancelled()) done(i, {}, filter.ok() ? "The filter didn't run." : filter.error);
        continue;
      }
      if (options.useCache) WritePreviewCache(result, cacheFile, options.quality);
      done(i, result, {});
    }
  };
  unsigned n = options.threads > 0 ? unsigned(options.threads) : std::max(1u, std::thread::hardware_concurrency());
  n = std::min<unsigned>(n, unsigned(std::max<size_t>(1, plugins.size())));
  std::vector<std::thread> workers;
  for (unsigned t = 1; t < n; ++t) workers.emplace_back(work);
  work();
  for (std::thread& t : workers) t.join();
}

BatchResult BatchApply(const PictureRunner& run, const std::vector<std::string>& pictures,
                       const std::string& targetFolder,
                       const std::function<OverwriteAnswer(const std::string&)>& askOverwrite,
                       const std::function<void(size_t, size_t)>& progress,
                       const std::function<bool()>& cancelled) {
  BatchResult result;
  for (size_t i = 0; i < pictures.size(); ++i) {
    if (cancelled && cancelled()) {
      result.stopped = true;
      break;
    }
    if (progress) progress(i, pictures.size());
    const std::string& source = pictures[i];
    const QString qsource = QString::fromLocal8Bit(source.c_str());
    const std::string target = targetFolder + QFileInfo(qsource).fileName().toLocal8Bit().toStdString();
    const QString qtarget = QString::fromLocal8Bit(target.c_str());
    QImageReader reader(qsource);
    QImage picture = reader.read();
    if (picture.isNull()) {
      result.errors.push_back("Couldn't open " + source);
      continue;
    }
    if (FileExists(target) && askOverwrite) {
      const OverwriteAnswer answer = askOverwrite(target);
      if (answer == OverwriteAnswer::Stop) {
        result.stopped = true;
        break;
      }
      if (answer == OverwriteAnswer::Skip) {
        ++result.skipped;
        continue;
      }
    }
    const QImage filtered = run(picture);
    if (filtered.isNull()) {
      if (cancelled && cancelled()) {
        result.stopped = true;
        break;
      }
      result.errors.push_back("The filter didn't run on " + source);
      continue;
    }
    // The picture that stood there is only replaced by a complete one.
    const QByteArray format = QFileInfo(qtarget).suffix().toLower().toLatin1();
    if (!SaveImageSafely(filtered, target, format)) {
      result.errors.push_back("Couldn't write " + target);
      continue;
    }
    ++result.written;
  }
  if (progress) progress(pictures.size(), pictures.size());
  return result;
}

}  // namespace trel
