// The command groups of trel-cli. Each group adds its sub-commands to the app;
// a command's callback sets `exitCode` (0 success, 1 failure). Usage errors are
// CLI11's and exit with 2.
#pragma once

#include <iosfwd>
#include <string>

#include <CLI/CLI.hpp>

#include "filter/FilterEnv.h"

namespace trel::cli {

struct CliContext {
  FilterEnv env;       // options and the console shell
  int exitCode = 0;
  std::ostream* out;   // stdout
  std::ostream* err;   // stderr
};

void AddFilterCommands(CLI::App& app, CliContext& ctx);  // show, code
void AddConvertCommands(CLI::App& app, CliContext& ctx);  // convert
void AddFflCommands(CLI::App& app, CliContext& ctx);  // ffl list|extract|create|add|delete
void AddApplyCommands(CLI::App& app, CliContext& ctx);  // apply
void AddCatalogueCommands(CLI::App& app, CliContext& ctx);  // scan, info, list, toggle, category

}  // namespace trel::cli
