// The per-user program folder: where the program keeps its templates, the
// preview plugin copy, scratch files, caches and the lists the user edits.
// $TREL_HOME when set, else $XDG_DATA_HOME/Trel10 (~/.local/share/Trel10).
#pragma once

#include <string>
#include <vector>

namespace trel {

std::string DefaultProgramFolder();  // with a trailing separator

// Creates the folder and copies in every file of the source folders (recursively)
// that it lacks. Files already there are never overwritten: they may be the
// user's. Returns false if the folder could not be created.
bool FillProgramFolder(const std::string& folder, const std::vector<std::string>& sources);

}  // namespace trel
