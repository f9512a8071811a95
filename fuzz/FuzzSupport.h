// What the fuzz targets share: readers that take a path get the input written
// to a file in a scratch folder of the process (one file per name, rewritten on
// every run, so a long run leaves no litter), and the input's leading bytes
// choose among a target's variants.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace trel::fuzz {

// The process's own folder, made on first use and removed at exit; ends in '/'.
const std::string& ScratchFolder();
// Writes the bytes to `name` in the scratch folder and returns the full path.
std::string WriteScratch(const std::string& name, std::string_view bytes);

// The input as bytes, with a cursor for the variant choices in front.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : text_(reinterpret_cast<const char*>(data), size) {}
  // The next byte, 0 when the input is used up.
  uint8_t Byte() {
    if (text_.empty()) return 0;
    const uint8_t b = static_cast<uint8_t>(text_.front());
    text_.remove_prefix(1);
    return b;
  }
  // Up to the next `separator` (dropped), or the rest.
  std::string_view Part(char separator) {
    const size_t cut = text_.find(separator);
    const std::string_view part = text_.substr(0, cut);
    text_.remove_prefix(cut == std::string_view::npos ? text_.size() : cut + 1);
    return part;
  }
  std::string_view Rest() const { return text_; }

 private:
  std::string_view text_;
};

}  // namespace trel::fuzz
