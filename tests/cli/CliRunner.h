// Runs the built trel-cli in a child process and collects what it printed.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/TempDir.h"

namespace trel::test {

struct CliResult {
  int exitCode = -1;
  std::string out;
  std::string err;
};

// `home` becomes TREL_HOME of the child, so no test touches the user's folders.
CliResult RunCli(const std::vector<std::string>& args, const std::string& home);

class CliTest : public ::testing::Test {
 protected:
  CliResult Run(const std::vector<std::string>& args) { return RunCli(args, home.path()); }
  static std::string Sample(const std::string& name) { return std::string(TREL_SAMPLES_DIR) + "/" + name; }
  // The files below `folder`, relative and sorted.
  std::vector<std::string> Files(const std::string& folder) const;
  static bool Has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }
  TempDir home;
  TempDir work;
};

}  // namespace trel::test
