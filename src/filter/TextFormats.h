// The filter source formats AFS, PFF, FFX and TXT. Readers fill the record they
// are handed and return true on success; a reader that fails half way leaves a
// half-filled record, as the program expects. Writers never fail visibly.
#pragma once

#include <string>

#include "filter/FFFilter.h"
#include "filter/FilterEnv.h"

namespace trel {

bool ReadAFS(FFFilter& f, std::string folder, const std::string& name, const FilterEnv& env);
bool ReadPFF(FFFilter& f, std::string folder, const std::string& name, const FilterEnv& env);
bool ReadFFX(FFFilter& f, std::string folder, const std::string& name, const FilterEnv& env);
// `ignored` has no effect; `acceptPresets` lets `set[n]:` lines fill the presets.
bool ReadTXT(FFFilter& f, std::string folder, const std::string& name, bool ignored,
             bool acceptPresets, const FilterEnv& env);

// kind 0 writes AFS, kind 1 PFF. The target is not truncated (see the .cpp).
void Writeafspff(FFFilter& f, std::string folder, int kind, const FilterEnv& env);
void WriteTXT(FFFilter& f, std::string folder, bool withPresets, const FilterEnv& env);

// The filter as text that ReadTXT reads back: the fields, the four codes, the
// names of the controls and maps, their values; lines end in CR LF. A TXT
// file puts each code on its label's line ("R:code"), the editor's copy to
// the clipboard on the line below it ("R:", then the code).
enum class CodeLines { BesideLabel, BelowLabel };
std::string FilterText(const FFFilter& f, CodeLines codes);

}  // namespace trel
