// Turning a file into a filled filter record by its extension, and a filter
// name into a target name by output format.
#pragma once

#include <string>

#include "filter/FFFilter.h"
#include "filter/FilterEnv.h"
#include "filter/OutputFormat.h"

namespace trel {

// The interactive path (editor, plugin list) for a file: reads by the last four
// characters of the name and brings Premiere code into Photoshop dialect.
bool LoadItFile(FFFilter& f, const std::string& folder, const std::string& name,
                const FilterEnv& env);
// The batch path: no dialect change; an AFS, PFF or FFX whose filename equals its
// title is refused.
bool ReadFFfile(FFFilter& f, const std::string& fullPath, const FilterEnv& env);
// `name` with its extension exchanged for that of `format`.
std::string GetFilname(OutputFormat format, const std::string& name, const FilterOptions& options);

}  // namespace trel
