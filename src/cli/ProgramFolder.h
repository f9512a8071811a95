// The program folder of the command line, prepared as the program prepares it.
#pragma once

#include <string>

namespace trel::cli {

// Creates and fills the per-user program folder when needed; returns it with a
// trailing separator.
std::string PrepareProgramFolder();

}  // namespace trel::cli
