#include "picture/PreviewPicture.h"

#include "host/PreviewPipeline.h"
#include "settings/SettingsStore.h"

namespace trel {

std::string PreviewPicturePath(const SettingsStore& store, const std::string& programFolder) {
  return PreviewPicFor(store.Get("Settings", "PreviewPic"), programFolder);
}

}  // namespace trel
