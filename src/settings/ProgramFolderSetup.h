// The per-user program folder of the window program, prepared at start.
#pragma once

#include <string>

namespace trel {

// Creates the folder when needed and copies in whatever of the shipped data and
// the generated templates it lacks; never overwrites. Returns the folder with a
// trailing separator.
std::string PrepareProgramFolder();

}  // namespace trel
