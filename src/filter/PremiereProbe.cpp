#include "filter/PremiereProbe.h"

#include "filter/ByteHelpers.h"

namespace trel {

std::string MarkerAt(BinFile& file, int64_t position) { return bytes2string2(position, file); }

std::string MarkerAt(const TemplatePatch& file, int64_t position) { return file.CString(position); }

}  // namespace trel
