#include "base/SafeCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <vector>

#include "base/Paths.h"
#include "base/SafeTarget.h"

namespace trel {

namespace {

std::string Reason(int error) { return std::strerror(error); }

std::string FolderPart(const std::string& path) {
  std::string folder, name;
  SplitPath(path, folder, name);
  return folder;
}

std::string NamePart(const std::string& path) {
  std::string folder, name;
  SplitPath(path, folder, name);
  return name;
}

std::string AppearedMessage(const std::string& target) {
  return target + " was made by another program while the files were copied; it was left as it is.";
}

class Fd {
 public:
  explicit Fd(int fd) : fd_(fd) {}
  ~Fd() {
    if (fd_ >= 0) ::close(fd_);
  }
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
  int get() const { return fd_; }
  int release() {
    const int fd = fd_;
    fd_ = -1;
    return fd;
  }

 private:
  int fd_;
};

// Writes all of `size` bytes from `in` to `out`, in the kernel where it can.
bool CopyBytes(int in, int out, int64_t size, const CopyProgress& progress, const std::atomic<bool>* abort,
               int64_t& done, int& error, bool& cancelled) {
  constexpr int64_t kBlock = 8 << 20;
  done = 0;
  bool kernel = true;
  std::vector<char> buffer;
  while (done < size) {
    if (abort && abort->load()) {
      cancelled = true;
      return false;
    }
    const size_t want = static_cast<size_t>(std::min(kBlock, size - done));
    ssize_t got = -1;
    if (kernel) {
      got = ::copy_file_range(in, nullptr, out, nullptr, want, 0);
      if (got < 0 && (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP)) {
        kernel = false;
        continue;
      }
    } else {
      buffer.resize(1 << 20);
      got = ::read(in, buffer.data(), std::min(want, buffer.size()));
      if (got > 0) {
        ssize_t written = 0;
        while (written < got) {
          const ssize_t w = ::write(out, buffer.data() + written, static_cast<size_t>(got - written));
          if (w < 0) {
            if (errno == EINTR) continue;
            error = errno;
            return false;
          }
          written += w;
        }
      }
    }
    if (got < 0) {
      if (errno == EINTR) continue;
      error = errno;
      return false;
    }
    if (got == 0) break;  // the source shrank under us; the size check below tells
    done += got;
    if (progress) progress(done, size);
  }
  return true;
}

}  // namespace

FileCopier::FileCopier() = default;

FileCopier::~FileCopier() {
  for (const Folder* folder : {&source_, &target_})
    if (folder->fd >= 0) ::close(folder->fd);
}

int FileCopier::Open(Folder& folder, const std::string& path) {
  const std::string part = FolderPart(path);
  if (folder.fd >= 0 && folder.path == part) return folder.fd;
  if (folder.fd >= 0) ::close(folder.fd);
  folder.path = part;
  folder.fd = ::open(part.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  return folder.fd;
}

int RenameNoReplace(int fromFolder, const char* from, int toFolder, const char* to) {
  if (::renameat2(fromFolder, from, toFolder, to, RENAME_NOREPLACE) == 0) return 0;
  if (errno != EINVAL && errno != ENOSYS && errno != EOPNOTSUPP) return -1;
  if (::linkat(fromFolder, from, toFolder, to, 0) == 0) {
    ::unlinkat(fromFolder, from, 0);
    return 0;
  }
  if (errno == EEXIST) return -1;
  if (::faccessat(toFolder, to, F_OK, AT_SYMLINK_NOFOLLOW) == 0) {
    errno = EEXIST;
    return -1;
  }
  return ::renameat(fromFolder, from, toFolder, to);
}

FileOpResult FileCopier::Copy(const std::string& source, const std::string& target, const CopyProgress& progress,
                              const std::atomic<bool>* abort, Replace replace) {
  FileOpResult result;
  const int from = Open(source_, source);
  Fd in(from < 0 ? -1 : ::openat(from, NamePart(source).c_str(), O_RDONLY | O_CLOEXEC));
  if (in.get() < 0) {
    result.error = source + " can't be read: " + Reason(errno);
    return result;
  }
  struct stat info {};
  if (::fstat(in.get(), &info) != 0 || !S_ISREG(info.st_mode)) {
    result.error = source + " is not a file that can be copied.";
    return result;
  }
  // Made with the source's permissions at once, and never over a file that is there.
  const std::string name = NamePart(target);
  const int to = Open(target_, target);
  const TempBeside made = to >= 0 ? CreateTempAt(to, name, info.st_mode & 0777) : TempBeside{{}, -1, errno};
  const std::string& temp = made.path;
  Fd out(made.fd);
  if (out.get() < 0) {
    result.error = FolderPart(target) + " can't be written to: " + Reason(made.error);
    return result;
  }
  auto fail = [&](const std::string& why) {
    ::unlinkat(to, temp.c_str(), 0);
    result.error = why;
    return result;
  };
  int error = 0;
  bool cancelled = false;
  int64_t written = 0;
  if (!CopyBytes(in.get(), out.get(), info.st_size, progress, abort, written, error, cancelled)) {
    result.cancelled = cancelled;
    return fail(cancelled ? std::string() : target + " couldn't be written: " + Reason(error));
  }
  // Every byte written was counted: a source that shrank while it was read
  // leaves fewer than its size, and the copy doesn't take the target's name.
  if (written != info.st_size) return fail(target + " couldn't be written completely.");
  const struct timespec times[2] = {info.st_atim, info.st_mtim};
  ::futimens(out.get(), times);
  if (::close(out.release()) != 0) return fail(target + " couldn't be written: " + Reason(errno));
  const int placed = replace == Replace::Allowed ? ::renameat(to, temp.c_str(), to, name.c_str())
                                                  : RenameNoReplace(to, temp.c_str(), to, name.c_str());
  if (placed != 0 && errno == EEXIST) return fail(AppearedMessage(target));
  if (placed != 0) return fail(target + " couldn't be replaced: " + Reason(errno));
  result.ok = true;
  return result;
}

FileOpResult FileCopier::Move(const std::string& source, const std::string& target, const CopyProgress& progress,
                              const std::atomic<bool>* abort, Replace replace) {
  FileOpResult result;
  const int from = Open(source_, source);
  const int to = Open(target_, target);
  const std::string sourceName = NamePart(source), targetName = NamePart(target);
  const int moved = from < 0 || to < 0                ? -1
                    : replace == Replace::Allowed ? ::renameat(from, sourceName.c_str(), to, targetName.c_str())
                                                  : RenameNoReplace(from, sourceName.c_str(), to, targetName.c_str());
  if (moved == 0) {
    result.ok = true;
    return result;
  }
  if (from >= 0 && to >= 0 && errno == EEXIST) {
    result.error = AppearedMessage(target);
    return result;
  }
  if (from < 0 || to < 0 || errno != EXDEV) {
    result.error = source + " couldn't be moved: " + Reason(errno);
    return result;
  }
  result = Copy(source, target, progress, abort, replace);
  if (!result.ok) return result;
  if (::unlinkat(from, NamePart(source).c_str(), 0) != 0) {
    // The copy stands complete; the source stays too, which loses nothing.
    result.ok = false;
    result.error = source + " was copied but couldn't be removed: " + Reason(errno);
  }
  return result;
}

FileOpResult SafeCopyFile(const std::string& source, const std::string& target, const CopyProgress& progress,
                          const std::atomic<bool>* abort) {
  return FileCopier().Copy(source, target, progress, abort);
}

FileOpResult SafeMoveFile(const std::string& source, const std::string& target, const CopyProgress& progress,
                          const std::atomic<bool>* abort) {
  return FileCopier().Move(source, target, progress, abort);
}

}  // namespace trel
