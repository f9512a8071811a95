#include "cli/Commands.h"

namespace trel::cli {

void AddFilterCommands(CLI::App& app, CliContext& ctx) {
  (void)app;
  (void)ctx;
}

}  // namespace trel::cli
