// trel_unattended: the window program with dialogs that answer by themselves,
// for the runs under a virtual X server and the demo screenshot.
#include "app/Program.h"
#include "support/UnattendedDialogs.h"

int main(int argc, char** argv) {
  return trel::RunProgram(argc, argv, std::make_unique<trel::test::UnattendedDialogs>());
}
