#include "base/SafeTarget.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace trel {

namespace fs = std::filesystem;

namespace {
constexpr const char* kTempPrefix = ".trel-";
}  // namespace

bool IsTempBesideName(const std::string& name) { return name.rfind(kTempPrefix, 0) == 0; }

namespace {

// Made in `folderFd`, named `prefix` (a folder part, or nothing) + the hidden
// stem + a number of this run.
TempBeside CreateTemp(int folderFd, const std::string& prefix, const std::string& name, unsigned mode) {
  static std::atomic<unsigned> counter{0};
  static const std::string pid = std::to_string(::getpid());
  const std::string stem = prefix + kTempPrefix + name + "." + pid + "-";
  TempBeside temp;
  for (int attempt = 0; attempt < 100; ++attempt) {
    temp.path = stem + std::to_string(counter++);
    temp.fd = ::openat(folderFd, temp.path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC,
                       static_cast<mode_t>(mode));
    if (temp.fd >= 0) return temp;
    temp.error = errno;
    if (temp.error != EEXIST) break;
  }
  temp.path.clear();
  return temp;
}

}  // namespace

TempBeside CreateTempBeside(const std::string& target, unsigned mode) {
  const fs::path path(target);
  const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
  return CreateTemp(AT_FDCWD, (folder / "").string(), path.filename().string(), mode);
}

TempBeside CreateTempAt(int folderFd, const std::string& name, unsigned mode) {
  return CreateTemp(folderFd, "", name, mode);
}

SafeTarget::SafeTarget(std::string targetPath, bool startFromExisting)
    : target_(std::move(targetPath)) {
  // A replaced file keeps its mode; a new one gets the usual one.
  struct stat old {};
  const bool replacing = ::stat(target_.c_str(), &old) == 0;
  TempBeside temp = CreateTempBeside(target_, 0666);
  if (temp.fd < 0) {
    error_ = target_ + ": " + std::strerror(temp.error);
    return;
  }
  if (replacing) ::fchmod(temp.fd, old.st_mode & 07777);
  ::close(temp.fd);
  temp_ = temp.path;
  const fs::path target(target_);

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
