// trel: the window program, asking the user through the real dialogs.
#include "app/Program.h"

int main(int argc, char** argv) { return trel::RunProgram(argc, argv, trel::MakeProgramDialogs()); }
