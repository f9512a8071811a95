// The picture previews are made from, for every window that shows one: the
// stored "PreviewPic" setting, or Test.bmp in the program folder when that is
// empty or its file is gone.
#pragma once

#include <string>

namespace trel {

class SettingsStore;

// `programFolder` ends in a separator.
std::string PreviewPicturePath(const SettingsStore& store, const std::string& programFolder);

}  // namespace trel
