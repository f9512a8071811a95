// trel-cli: scripts, tests and power users reach the Trel core through it.
#include <iostream>

#include "cli/Commands.h"
#include "cli/ConsoleShell.h"
#include "cli/ProgramFolder.h"

int main(int argc, char** argv) {
  using namespace trel::cli;
  ConsoleShell shell(std::cerr);
  CliContext ctx{{}, 0, &std::cout, &std::cerr};
  ctx.env.shell = &shell;
  ctx.env.options.programFolder = PrepareProgramFolder();

  CLI::App app{"trel-cli: the Trel workbench for image-editor plugins, on the command line"};
  app.require_subcommand(1);
  AddFilterCommands(app, ctx);
  AddConvertCommands(app, ctx);
  AddFflCommands(app, ctx);
  AddApplyCommands(app, ctx);
  AddCatalogueCommands(app, ctx);
  try {
    app.parse(argc, argv);
  } catch (const CLI::Error& e) {
    const int code = app.exit(e);
    return code == 0 ? 0 : 2;
  }
  return ctx.exitCode;
}
