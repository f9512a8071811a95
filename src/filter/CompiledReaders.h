// Readers of compiled Filter Factory plugins: recognised by exact file size and
// a marker, fields read from fixed positions.
#pragma once

#include <string>

#include "filter/FFFilter.h"
#include "filter/FilterEnv.h"

namespace trel {

bool Read8bf(FFFilter& f, std::string folder, const std::string& name, bool headerOnly,
             bool optimize, const FilterEnv& env);
bool Readprm(FFFilter& f, std::string folder, const std::string& name, bool headerOnly,
             bool optimize, const FilterEnv& env);
bool ReadTF(FFFilter& f, std::string folder, const std::string& name, bool headerOnly,
            const FilterEnv& env);

}  // namespace trel
