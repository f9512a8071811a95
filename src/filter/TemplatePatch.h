// A plugin file held in memory while the compiler patches it, with the 1-based
// positions of BinFile. A compile reads its template once, patches here and
// writes the result in one piece: a few dozen small writes straight to a file
// would each cost a seek and a flush.
#pragma once

#include <cstdint>
#include <string>

namespace trel {

class TemplatePatch {
 public:
  explicit TemplatePatch(std::string bytes) : bytes_(std::move(bytes)) {}

  int64_t Length() const { return static_cast<int64_t>(bytes_.size()); }
  int ByteAt(int64_t position) const;                       // -1 outside the file
  std::string Read(int64_t position, int64_t count) const;  // fewer at the end
  // Writes grow the file with zero bytes as needed; Put continues behind the last write.
  void WriteAt(int64_t position, const std::string& bytes);
  void PutAt(int64_t position, uint8_t byte) { WriteAt(position, std::string(1, static_cast<char>(byte))); }
  void Put(uint8_t byte) { PutAt(next_, byte); }
  // The text and a closing 0 byte, as every text field of a plugin is written.
  void Text(int64_t position, const std::string& text) {
    WriteAt(position, text);
    Put(0);
  }
  std::string CString(int64_t position) const;  // up to the next 0 byte

  const std::string& bytes() const { return bytes_; }

 private:
  std::string bytes_;
  int64_t next_ = 1;
};

}  // namespace trel
