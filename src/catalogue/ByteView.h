// A read-only window on bytes read from an untrusted plugin file. Every access
// checks offset and width against the window and yields nullopt when they don't
// fit, so no reader ever dereferences an offset taken from the file unchecked.
// Offsets are 0-based here; the readers translate the 1-based positions of the
// file formats at the call site, where the translation can be seen.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace trel {

class ByteView {
 public:
  ByteView() = default;
  ByteView(const char* data, size_t size) : data_(data), size_(size) {}
  explicit ByteView(const std::string& bytes) : data_(bytes.data()), size_(bytes.size()) {}

  size_t size() const { return size_; }
  std::string_view chars() const { return std::string_view(data_ ? data_ : "", size_); }

  bool contains(int64_t offset, int64_t width = 1) const {
    return offset >= 0 && width >= 0 && static_cast<uint64_t>(offset) <= size_ &&
           static_cast<uint64_t>(width) <= size_ - static_cast<uint64_t>(offset);
  }

  std::optional<uint8_t> u8(int64_t offset) const {
    if (!contains(offset, 1)) return std::nullopt;
    return static_cast<uint8_t>(data_[offset]);
  }
  std::optional<uint32_t> u16le(int64_t offset) const { return little(offset, 2); }
  std::optional<uint32_t> u24le(int64_t offset) const { return little(offset, 3); }
  std::optional<uint32_t> u32le(int64_t offset) const { return little(offset, 4); }

  // True if the bytes at offset are exactly `text`; false when they don't fit.
  bool matches(int64_t offset, std::string_view text) const {
    if (!contains(offset, static_cast<int64_t>(text.size()))) return false;
    return std::string_view(data_ + offset, text.size()) == text;
  }

  // Bytes from offset up to (not including) the first zero, at most `limit`;
  // nullopt when offset lies outside. Running into the end stops the text.
  std::optional<std::string> zstring(int64_t offset, size_t limit) const {
    if (offset < 0 || static_cast<uint64_t>(offset) > size_) return std::nullopt;
    std::string out;
    for (size_t i = static_cast<size_t>(offset); i < size_ && out.size() < limit; ++i) {
      if (data_[i] == '\0') break;
      out += data_[i];
    }
    return out;
  }

  // A Pascal string whose count byte stands at `countIndex`: the count goes to
  // `count` (0 outside the window), and the text is what of it lies inside.
  std::string pascal(int64_t countIndex, uint32_t& count) const {
    count = u8(countIndex).value_or(0);
    std::string text;
    for (uint32_t k = 0; k < count && contains(countIndex + 1 + k); ++k) text += data_[countIndex + 1 + k];
    return text;
  }

  // Zero bytes from `first` on, counted up to 257: with a text's count, the
  // room a category has before the next data.
  int32_t zerosAfter(int64_t first) const {
    int32_t n = 0;
    while (n <= 256 && u8(first + n) == uint8_t{0}) ++n;
    return n;
  }

  // `count` bytes from offset, or nullopt if they don't all lie inside.
  std::optional<std::string> bytes(int64_t offset, int64_t count) const {
    if (!contains(offset, count)) return std::nullopt;
    return std::string(data_ + offset, static_cast<size_t>(count));
  }

 private:
  std::optional<uint32_t> little(int64_t offset, int width) const {
    if (!contains(offset, width)) return std::nullopt;
    uint32_t v = 0;
    for (int k = width - 1; k >= 0; --k) v = (v << 8) | static_cast<uint8_t>(data_[offset + k]);
    return v;
  }

  const char* data_ = nullptr;
  size_t size_ = 0;
};

}  // namespace trel
