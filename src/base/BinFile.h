// A file opened for byte access with positions counted from 1, the way every
// binary format of the filter core is described: position 1 is the first byte.
// Reads past the end never fail: they yield -1 (no byte), so a reader walking a
// truncated file stops instead of running away. Writes past the end grow the
// file, filling any gap with zero bytes.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>

namespace trel {

class BinFile {
 public:
  enum class Mode {
    Read,    // existing file, read only
    Binary,  // read and write; created when missing and never truncated
    Output,  // a new, empty file (an existing one is truncated)
  };

  // Null when the file cannot be opened in that mode.
  static std::unique_ptr<BinFile> Open(const std::string& path, Mode mode);
  ~BinFile();
  BinFile(const BinFile&) = delete;
  BinFile& operator=(const BinFile&) = delete;

  int64_t Length() const { return length_; }
  int64_t Loc() const { return pos_ + 1; }  // position of the next byte
  void Seek(int64_t position);              // 1-based; below 1 is taken as 1
  bool AtEnd() const { return pos_ >= length_; }

  int Get();                      // byte at the current position, or -1 past the end; advances
  int ByteAt(int64_t position);   // Seek, then Get
  std::string Read(int64_t position, int64_t count);  // up to count bytes, fewer at the end

  void Put(uint8_t byte);
  void PutAt(int64_t position, uint8_t byte);
  void Write(const std::string& bytes);  // at the current position
  void WriteAt(int64_t position, const std::string& bytes);

  // True once any read or write met an I/O error (not the end of the file).
  bool Failed() const { return failed_; }
  // Flushes and closes; false if anything written could not be stored.
  bool Close();

 private:
  BinFile(std::FILE* file, int64_t length, bool writable);
  bool SyncStream(bool forWrite);

  std::FILE* file_;
  int64_t length_;
  int64_t pos_ = 0;         // 0-based offset of the next byte
  int64_t streamPos_ = 0;   // where the stdio stream stands
  bool writable_;
  bool lastWasWrite_ = false;
  bool failed_ = false;
};

}  // namespace trel
