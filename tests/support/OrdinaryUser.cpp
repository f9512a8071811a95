#include "support/OrdinaryUser.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <grp.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

extern char** environ;

namespace trel::test {
namespace {

// Names the call, counted within the test, that a child is started for.
constexpr const char* kChildVariable = "TREL_ORDINARY_USER_CHILD";

// The conventional id of "nobody" on Debian.
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

// In the child: leave root, run the check, exit with its verdict.
[[noreturn]] void RunInChild(const std::vector<std::string>& handOver, const std::function<void()>& check) {
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
  // The child's results are collected and printed here: the parent learns of
  // them only through the exit status.
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

}  // namespace

bool RunAsOrdinaryUser(const std::vector<std::string>& handOver, const std::function<void()>& check) {
  const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
  static const ::testing::TestInfo* counted = nullptr;
  static int call = 0;
  if (counted != test) counted = test, call = 0;
  const std::string thisCall = std::to_string(++call);

  if (const char* wanted = std::getenv(kChildVariable)) {
    if (thisCall == wanted) RunInChild(handOver, check);
    return true;  // an earlier call of the test: the parent's child ran it
  }

  const std::string filter = std::string("--gtest_filter=") + test->test_suite_name() + "." + test->name();
  const std::string marker = std::string(kChildVariable) + "=" + thisCall;
  std::vector<char*> env;
  for (char** e = environ; *e; ++e) env.push_back(*e);
  env.push_back(const_cast<char*>(marker.c_str()));
  env.push_back(nullptr);
  char exe[] = "/proc/self/exe";
  char* argv[] = {exe, const_cast<char*>(filter.c_str()), nullptr};
  std::fflush(nullptr);
  // Earlier tests may have left the working folder a removed temporary one,
  // in which the child's GoogleTest would not start.
  posix_spawn_file_actions_t actions;
  ::posix_spawn_file_actions_init(&actions);
  ::posix_spawn_file_actions_addchdir_np(&actions, "/");
  pid_t child = 0;
  const int error = ::posix_spawn(&child, exe, &actions, nullptr, argv, env.data());
  ::posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    ADD_FAILURE() << "could not start the check as an ordinary user: " << std::strerror(error);
    return false;
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
