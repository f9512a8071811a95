// Placeholder until the compiled-plugin readers land: no file is recognised.
#include "filter/CompiledReaders.h"

namespace trel {

bool Read8bf(FFFilter&, std::string, const std::string&, bool, bool, const FilterEnv&) { return false; }
bool Readprm(FFFilter&, std::string, const std::string&, bool, bool, const FilterEnv&) { return false; }
bool ReadTF(FFFilter&, std::string, const std::string&, bool, const FilterEnv&) { return false; }

}  // namespace trel
