#include "support/OrdinaryUser.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace trel::test {
namespace {

// The conventional id of "nobody" on Debian; no passwd lookup in the child.
constexpr uid_t kNobody = 65534;
constexpr gid_t kNogroup = 65534;

bool HandOver(const std::string& path) {
  std::error_code ec;
  if (::lchown(path.c_str(), kNobody, kNogroup) != 0) return false;
  if (!std::filesystem::is_directory(std::filesystem::symlink_status(path, ec))) return true;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(path, ec))
    if (::lchown(entry.path().c_str(), kNobody, kNogroup) != 0) return false;
  return !ec;
}

bool DropRoot() {
  return ::setgroups(0, nullptr) == 0 && ::setgid(kNogroup) == 0 && ::setuid(kNobody) == 0 &&
         ::setuid(0) != 0;  // the drop is for good
}

}  // namespace

bool RunAsOrdinaryUser(const std::vector<std::string>& handOver, const std::function<void()>& check) {
  std::fflush(nullptr);
  const pid_t child = ::fork();
  if (child < 0) {
    ADD_FAILURE() << "fork failed";
    return false;
  }
  if (child == 0) {
    if (::geteuid() == 0) {
      for (const std::string& path : handOver)
        if (!HandOver(path)) {
          std::fprintf(stderr, "could not hand %s to the ordinary user\n", path.c_str());
          std::_Exit(3);
        }
      if (!DropRoot()) {
        std::fprintf(stderr, "could not drop root's rights\n");
        std::_Exit(3);
      }
    }
    // The child's results are collected and printed here: the parent learns
    // of them only through the exit status.
    ::testing::TestPartResultArray results;
    {
      ::testing::ScopedFakeTestPartResultReporter collect(
          ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
      check();
    }
    bool failed = false;
    for (int i = 0; i < results.size(); ++i) {
      const ::testing::TestPartResult& result = results.GetTestPartResult(i);
      if (!result.failed()) continue;
      failed = true;
      std::fprintf(stderr, "%s:%d: failure as an ordinary user\n%s\n", result.file_name() ? result.file_name() : "?",
                   result.line_number(), result.message());
    }
    std::fflush(nullptr);
    std::_Exit(failed ? 1 : 0);
  }
  int status = 0;
  pid_t waited;
  do waited = ::waitpid(child, &status, 0);
  while (waited < 0 && errno == EINTR);
  const bool passed = waited == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
  if (!passed) ADD_FAILURE() << "the check as an ordinary user failed (status " << status << ")";
  return passed;
}

}  // namespace trel::test
