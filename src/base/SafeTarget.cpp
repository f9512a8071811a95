#include "base/SafeTarget.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace trel {

namespace fs = std::filesystem;

SafeTarget::SafeTarget(std::string targetPath, bool startFromExisting)
    : target_(std::move(targetPath)) {
  const fs::path target(target_);
  const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
  std::string pattern = (folder / (".~" + target.filename().string() + ".XXXXXX")).string();
  const int fd = ::mkstemp(pattern.data());
  if (fd < 0) {
    error_ = target_ + ": " + std::strerror(errno);
    return;
  }
  // mkstemp makes the file private; give it the target's mode, or the usual one.
  struct stat old {};
  mode_t mode = 0666;
  if (::stat(target_.c_str(), &old) == 0) {
    mode = old.st_mode & 07777;
  } else {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    mode &= ~mask;
  }
  ::fchmod(fd, mode);
  ::close(fd);
  temp_ = pattern;

  std::error_code ec;
  if (startFromExisting && fs::is_regular_file(target, ec)) {
    fs::copy_file(target, temp_, fs::copy_options::overwrite_existing, ec);
    if (ec) {
      error_ = target_ + ": " + ec.message();
      return;
    }
  }
  file_ = BinFile::Open(temp_, BinFile::Mode::Binary);
  if (!file_) error_ = target_ + ": cannot write";
}

SafeTarget::~SafeTarget() {
  file_.reset();
  if (!committed_ && !temp_.empty()) std::remove(temp_.c_str());
}

bool SafeTarget::Commit() {
  if (!file_) return false;
  const bool written = file_->Close() && !file_->Failed();
  file_.reset();
  if (!written) {
    error_ = target_ + ": the file could not be written completely";
    return false;
  }
  if (std::rename(temp_.c_str(), target_.c_str()) != 0) {
    error_ = target_ + ": " + std::strerror(errno);
    return false;
  }
  committed_ = true;
  return true;
}

bool WriteWholeFile(const std::string& path, const std::string& bytes) {
  SafeTarget target(path, /*startFromExisting=*/false);
  if (!target.file()) return false;
  target.file()->Write(bytes);
  return target.Commit();
}

}  // namespace trel
