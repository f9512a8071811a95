#include "base/BinFile.h"

#include <algorithm>

namespace trel {

std::unique_ptr<BinFile> BinFile::Open(const std::string& path, Mode mode) {
  std::FILE* file = nullptr;
  switch (mode) {
    case Mode::Read:
      file = std::fopen(path.c_str(), "rb");
      break;
    case Mode::Binary:
      file = std::fopen(path.c_str(), "r+b");
      if (!file) file = std::fopen(path.c_str(), "w+b");
      break;
    case Mode::Output:
      file = std::fopen(path.c_str(), "w+b");
      break;
  }
  if (!file) return nullptr;
  if (std::fseek(file, 0, SEEK_END) != 0) {
    std::fclose(file);
    return nullptr;
  }
  const long length = std::ftell(file);
  if (length < 0 || std::fseek(file, 0, SEEK_SET) != 0) {  // a folder or a pipe
    std::fclose(file);
    return nullptr;
  }
  return std::unique_ptr<BinFile>(new BinFile(file, length, mode != Mode::Read));
}

BinFile::BinFile(std::FILE* file, int64_t length, bool writable)
    : file_(file), length_(length), writable_(writable) {}

BinFile::~BinFile() { Close(); }

bool BinFile::Close() {
  if (!file_) return !failed_;
  if (std::fclose(file_) != 0) failed_ = true;
  file_ = nullptr;
  return !failed_;
}

void BinFile::Seek(int64_t position) { pos_ = std::max<int64_t>(position, 1) - 1; }

// stdio needs a seek between a read and a write on the same stream; we also seek
// whenever our own position has moved away from the stream's.
bool BinFile::SyncStream(bool forWrite) {
  if (!file_) return false;
  if (streamPos_ != pos_ || lastWasWrite_ != forWrite) {
    if (std::fseek(file_, static_cast<long>(pos_), SEEK_SET) != 0) {
      failed_ = true;
      return false;
    }
    streamPos_ = pos_;
  }
  lastWasWrite_ = forWrite;
  return true;
}

int BinFile::Get() {
  if (pos_ >= length_) {
    ++pos_;
    return -1;
  }
  if (!SyncStream(false)) return -1;
  const int byte = std::fgetc(file_);
  if (byte == EOF) {
    failed_ = true;
    return -1;
  }
  ++pos_;
  ++streamPos_;
  return byte;
}

int BinFile::ByteAt(int64_t position) {
  Seek(position);
  return Get();
}

std::string BinFile::Read(int64_t position, int64_t count) {
  Seek(position);
  std::string out;
  if (count <= 0 || pos_ >= length_) return out;
  const int64_t n = std::min(count, length_ - pos_);
  out.resize(static_cast<size_t>(n));
  if (!SyncStream(false)) return {};
  const size_t got = std::fread(out.data(), 1, out.size(), file_);
  if (got != out.size()) failed_ = true;
  out.resize(got);
  pos_ += static_cast<int64_t>(got);
  streamPos_ = pos_;
  return out;
}

void BinFile::Put(uint8_t byte) {
  if (!writable_ || !SyncStream(true)) {
    failed_ = true;
    return;
  }
  if (std::fputc(byte, file_) == EOF) {
    failed_ = true;
    return;
  }
  ++pos_;
  ++streamPos_;
  length_ = std::max(length_, pos_);
}

void BinFile::PutAt(int64_t position, uint8_t byte) {
  Seek(position);
  Put(byte);
}

void BinFile::Write(const std::string& bytes) {
  if (bytes.empty()) return;
  if (!writable_ || !SyncStream(true)) {
    failed_ = true;
    return;
  }
  const size_t put = std::fwrite(bytes.data(), 1, bytes.size(), file_);
  if (put != bytes.size()) failed_ = true;
  pos_ += static_cast<int64_t>(put);
  streamPos_ = pos_;
  length_ = std::max(length_, pos_);
}

void BinFile::WriteAt(int64_t position, const std::string& bytes) {
  Seek(position);
  Write(bytes);
}

}  // namespace trel
