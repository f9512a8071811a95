// Runs the built trel-cli in a child process and collects what it printed.
#pragma once

#include <string>
#include <vector>

namespace trel::test {

struct CliResult {
  int exitCode = -1;
  std::string out;
  std::string err;
};

// `home` becomes TREL_HOME of the child, so no test touches the user's folders.
CliResult RunCli(const std::vector<std::string>& args, const std::string& home);

}  // namespace trel::test
