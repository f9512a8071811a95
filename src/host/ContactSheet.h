// The work behind the contact sheet and the batch: many filter runs at once on
// worker threads, each result handed over as it finishes.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include <QImage>

#include "base/OverwriteAnswer.h"
#include "host/PreviewRender.h"

namespace trel {

// Renders the preview of every plugin over `picture` with `threads` workers
// (0: one per core). A plugin with an entry in `cacheFolder`'s naming (see
// PreviewCacheFile) is served from it when `useCache`; new results are
// written there with `quality`. `done(index, image, error)` runs on the worker
// that finished, in no particular order; `cancel` stops the rest.
struct ContactSheetOptions {
  int threads = 0;
  bool useCache = false;
  std::string programFolder;  // where the cache lies
  int quality = 75;
  const std::atomic<bool>* cancel = nullptr;
};
void RenderContactSheet(const std::vector<std::string>& plugins, const QImage& picture,
                        const ContactSheetOptions& options,
                        const std::function<void(size_t, const QImage&, const std::string&)>& done);

// Applies one filter to pictures and writes each result under its own name into
// `targetFolder` (ending in a separator), in the format of its extension.
struct BatchResult {
  int written = 0;
  int skipped = 0;
  std::vector<std::string> errors;  // one line per picture that failed
  bool stopped = false;
};
// `run` filters one picture: a null image when it couldn't.
using PictureRunner = std::function<QImage(const QImage&)>;
BatchResult BatchApply(const PictureRunner& run, const std::vector<std::string>& pictures,
                       const std::string& targetFolder,
                       const std::function<OverwriteAnswer(const std::string&)>& askOverwrite,
                       const std::function<void(size_t, size_t)>& progress,
                       const std::function<bool()>& cancelled);

}  // namespace trel
