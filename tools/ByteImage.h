// A file image under construction: zero-filled bytes of a fixed size with
// little- and big-endian writers. The generators place every structure at an
// explicit offset (0-based here, as the formats themselves count), and refuse
// to write outside the image.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace trel::gen {

class ByteImage {
 public:
  explicit ByteImage(size_t size) : bytes_(size, '\0') {}

  void Bytes(size_t offset, const std::string& data) {
    Check(offset, data.size());
    bytes_.replace(offset, data.size(), data);
  }
  void U8(size_t offset, uint8_t v) { Bytes(offset, std::string(1, static_cast<char>(v))); }
  void U16(size_t offset, uint16_t v) { Bytes(offset, Le(v, 2)); }
  void U32(size_t offset, uint32_t v) { Bytes(offset, Le(v, 4)); }
  void U16BE(size_t offset, uint16_t v) { Bytes(offset, Be(v, 2)); }
  void U32BE(size_t offset, uint32_t v) { Bytes(offset, Be(v, 4)); }

  const std::string& bytes() const { return bytes_; }
  size_t size() const { return bytes_.size(); }

  static std::string Le(uint32_t v, int n) {
    std::string s;
    for (int i = 0; i < n; ++i) s += static_cast<char>((v >> (8 * i)) & 0xFF);
    return s;
  }
  static std::string Be(uint32_t v, int n) {
    std::string s;
    for (int i = n - 1; i >= 0; --i) s += static_cast<char>((v >> (8 * i)) & 0xFF);
    return s;
  }

 private:
  void Check(size_t offset, size_t count) const {
    if (offset > bytes_.size() || count > bytes_.size() - offset)
      throw std::out_of_range("write outside the image at " + std::to_string(offset));
  }
  std::string bytes_;
};

}  // namespace trel::gen
