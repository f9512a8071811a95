// Making plugins from the filter record with no compiler: a template plugin is
// copied and the filter's fields are patched into the copy at the positions the
// compiled-plugin readers read.
#pragma once

#include <string>

#include "base/BinFile.h"
#include "base/Error.h"
#include "filter/FFFilter.h"
#include "filter/FilterEnv.h"

namespace trel {

// A Photoshop plugin (or its Macintosh form) in `folder`. toTemp: the editor's
// preview compile into temp.dll of the program folder. The error says why no
// plugin was written.
Expected<void> Make8bf(FFFilter& f, std::string folder, bool toTemp, bool editorPlugin,
                       const FilterEnv& env);
// Premiere Filter Factory and Transition Factory plugins.
Expected<void> MakePRM(const FFFilter& f, std::string folder, const FilterEnv& env);
Expected<void> MakeTF(const FFFilter& f, std::string folder, const FilterEnv& env);

// The same for callers that show an error as it comes: it goes to the env's shell.
void Write8bf(FFFilter& f, std::string folder, bool toTemp, bool editorPlugin, const FilterEnv& env);
void WritePRM(FFFilter& f, std::string folder, const FilterEnv& env);
void WriteTF(FFFilter& f, std::string folder, const FilterEnv& env);

}  // namespace trel
