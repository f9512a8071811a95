#include "CliRunner.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "support/TempDir.h"

namespace trel::test {

CliResult RunCli(const std::vector<std::string>& args, const std::string& home) {
  TempDir capture;
  const std::string outPath = capture.file("out");
  const std::string errPath = capture.file("err");
  const pid_t pid = ::fork();
  if (pid == 0) {
    ::setenv("TREL_HOME", home.c_str(), 1);
    const int out = ::open(outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int err = ::open(errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int in = ::open("/dev/null", O_RDONLY);
    ::dup2(out, 1);
    ::dup2(err, 2);
    ::dup2(in, 0);
    std::vector<char*> argv;
    argv.push_back(const_cast<char*>(TREL_CLI_PATH));
    for (const auto& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    ::execv(TREL_CLI_PATH, argv.data());
    ::_exit(127);
  }
  int status = 0;
  ::waitpid(pid, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, capture.Read("out"), capture.Read("err")};
}

std::vector<std::string> CliTest::Files(const std::string& folder) const {
  namespace fs = std::filesystem;
  std::vector<std::string> names;
  for (const auto& e : fs::recursive_directory_iterator(folder)) names.push_back(fs::relative(e.path(), folder).string());
  std::sort(names.begin(), names.end());
  return names;
}

}  // namespace trel::test
