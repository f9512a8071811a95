#include "catalogue/FileWindow.h"

#include <algorithm>
#include <cstdio>

#if defined(_WIN32)
#define TREL_STDIO_WINDOW 1
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace trel {

#if defined(TREL_STDIO_WINDOW)

FileWindow::FileWindow(const std::string& path) {
  std::FILE* f = std::fopen(path.c_str(), "rb");
  if (!f) return;
  if (_fseeki64(f, 0, SEEK_END) != 0 || (length_ = _ftelli64(f)) < 0) {
    std::fclose(f);
    length_ = -1;
    return;
  }
  stream_ = f;
}

FileWindow::~FileWindow() {
  if (stream_) std::fclose(static_cast<std::FILE*>(stream_));
}

bool FileWindow::IsOpen() const { return stream_ != nullptr; }

std::string FileWindow::Read(int64_t offset, int64_t count) const {
  if (!stream_ || offset < 0 || offset >= length_ || count <= 0) return {};
  auto* f = static_cast<std::FILE*>(stream_);
  std::string out(static_cast<size_t>(std::min(count, length_ - offset)), '\0');
  if (_fseeki64(f, offset, SEEK_SET) != 0) return {};
  out.resize(std::fread(out.data(), 1, out.size(), f));
  return out;
}

#else

FileWindow::FileWindow(const std::string& path) {
  fd_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd_ < 0) return;
  struct stat st {};
  if (::fstat(fd_, &st) != 0 || !S_ISREG(st.st_mode)) {
    ::close(fd_);
    fd_ = -1;
    return;
  }
  length_ = static_cast<int64_t>(st.st_size);
  mtime_ = static_cast<int64_t>(st.st_mtim.tv_sec) * 1000000000 + st.st_mtim.tv_nsec;
}

FileWindow::~FileWindow() {
  if (fd_ >= 0) ::close(fd_);
}

bool FileWindow::IsOpen() const { return fd_ >= 0; }

std::string FileWindow::Read(int64_t offset, int64_t count) const {
  if (fd_ < 0 || offset < 0 || offset >= length_ || count <= 0) return {};
  std::string out(static_cast<size_t>(std::min(count, length_ - offset)), '\0');
  size_t got = 0;
  while (got < out.size()) {
    const ssize_t n = ::pread(fd_, out.data() + got, out.size() - got, static_cast<off_t>(offset) + static_cast<off_t>(got));
    if (n <= 0) break;
    got += static_cast<size_t>(n);
  }
  out.resize(got);
  return out;
}

#endif

}  // namespace trel
