// Rewrites of Filter Factory code as text, with no parser: the optimizer and
// the conversions between the Photoshop and Premiere dialects and for the
// Macintosh version.
#pragma once

#include <string>

#include "filter/FFFilter.h"
#include "filter/FilterOptions.h"

namespace trel {

// Normalises the four code strings and replaces common expressions by built-ins.
void OptimizeCode(FFFilter& f, const FilterOptions& options);
// One channel of OptimizeCode; channel 1 red .. 4 alpha.
std::string OptimizeChannel(std::string s, int channel, bool noFFOptimize);

// Premiere dialect to Photoshop dialect. Not idempotent: run it once per load.
std::string Correctprmcode(std::string code);
// Correctprmcode on the four code strings of the record, each stored back.
void CorrectprmcodeAll(FFFilter& f);
// Swaps the first two arguments of every `mix(` (the dialects differ there).
std::string SwapMixArguments(std::string code);
// Photoshop dialect to Premiere dialect, on the four code strings of the record.
void Correctcode(FFFilter& f);
std::string CorrectcodeChannel(std::string code);  // one code string
// Adapts the four code strings for the Macintosh version of Filter Factory.
void CorrectCodeForMac(FFFilter& f);
std::string CorrectCodeForMacChannel(std::string code);

}  // namespace trel
