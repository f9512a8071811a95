#include "host/PreviewRender.h"

#include "filter/CompiledReaders.h"
#include "filter/FilterEnv.h"
#include "base/Paths.h"
#include "host/ImageLibrary.h"

namespace trel {

PreparedFilter PrepareFilter(const FFFilter& filter) {
  PreparedFilter p;
  p.filter = filter;
  ff::CompileError error;
  p.compiled = ff::CompileFilter({filter.codeR, filter.codeG, filter.codeB, filter.codeA}, &error);
  if (!p.compiled.valid()) p.error = "The filter's code doesn't compile.";
  return p;
}

PreparedFilter PrepareFilter(const std::string& path) {
  if (!FileExists(path)) {
    PreparedFilter p;
    p.error = "There is no file " + path;
    return p;
  }
  std::string folder, name;
  SplitPath(path, folder, name);
  FFFilter f;
  FilterEnv env;  // quiet: a worker thread shows no messages
  if (!Read8bf(f, folder, name, false, false, env)) {
    PreparedFilter p;
    p.error = ImgStatusText(IMG_ERR_NOT_SUPPORTED);
    return p;
  }
  return PrepareFilter(f);
}

QImage RenderWith(const PreparedFilter& filter, const QImage& picture, const std::function<bool()>& cancel) {
  if (!filter.ok() || picture.isNull()) return {};
  QImage copy = picture.copy();
  ff::Controls ctl{};
  for (int i = 0; i < 8; ++i) ctl[size_t(i)] = filter.filter.ctlValue[i + 1];
  const ImgRect rect{0, 0, copy.width() - 1, copy.height() - 1};
  if (RunFilterOnPicture(filter.compiled, ctl, copy, rect, cancel) != IMG_OK) return {};
  return copy;
}

}  // namespace trel
