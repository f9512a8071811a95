// The output options that `convert` and `ffl extract` share: the format, the
// target folder, the overwrite rule and the compile options.
#pragma once

#include <memory>
#include <string>

#include <CLI/CLI.hpp>

#include "filter/BatchConvert.h"
#include "filter/FilterEnv.h"

namespace trel::cli {

struct ConvertOptions {
  std::string to;
  std::string outDir;
  bool nameFromTitle = false;
  bool macAdaption = false;
  bool overwrite = false;
  std::string templateChoice;

  OutputFormat Format() const;  // by the name given with --to
  // The environment of the run: the context's, with these options applied.
  FilterEnv Env(const FilterEnv& base) const;
  // The check: every target written with --overwrite, else existing ones kept.
  std::unique_ptr<OverwriteChecker> Check() const;
};

// Adds --to, -o, --name-from-title, --mac-adaption, --overwrite, --template.
void AddConvertOptions(CLI::App& cmd, ConvertOptions& options);

// Prints the written paths on `out` and a summary on `err`; the exit code:
// 1 when nothing could be read or a write failed.
int ReportConversion(const ConvertReport& report, std::ostream& out, std::ostream& err,
                     const std::string& command);

}  // namespace trel::cli
