#include "filter/TemplatePatch.h"

namespace trel {

int TemplatePatch::ByteAt(int64_t position) const {
  if (position < 1 || position > Length()) return -1;
  return static_cast<uint8_t>(bytes_[static_cast<size_t>(position - 1)]);
}

std::string TemplatePatch::Read(int64_t position, int64_t count) const {
  if (position < 1 || position > Length() || count <= 0) return {};
  return bytes_.substr(static_cast<size_t>(position - 1), static_cast<size_t>(count));
}

void TemplatePatch::WriteAt(int64_t position, const std::string& bytes) {
  if (position < 1) position = 1;
  const auto start = static_cast<size_t>(position - 1);
  if (start + bytes.size() > bytes_.size()) bytes_.resize(start + bytes.size(), '\0');
  bytes_.replace(start, bytes.size(), bytes);
  next_ = position + static_cast<int64_t>(bytes.size());
}

std::string TemplatePatch::CString(int64_t position) const {
  if (position < 1 || position > Length()) return {};
  const auto start = static_cast<size_t>(position - 1);
  const size_t end = bytes_.find('\0', start);
  return bytes_.substr(start, end == std::string::npos ? std::string::npos : end - start);
}

}  // namespace trel
