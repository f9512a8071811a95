// Protection of compiled plugins: the "Demo Plugin" and "Encrypted" options.
#pragma once

#include <cstdint>

#include "filter/TemplatePatch.h"

namespace trel {

// Works on a plugin image whose parameter block is complete, at the given shift.
// deadOk: the dialog's OK button is disabled, so the filter can be tried but
// not applied. demoCaption: the dialog says it is a demo. scramble: the code
// can no longer be read back by our readers (see DemoPlugin.cpp for how).
void DemoPlugin(TemplatePatch& file, int shift, bool deadOk, bool demoCaption, bool scramble);

// Reverses the scrambling in place, for the plugin's own run-time code; false
// when the file carries no scrambled code.
bool UnscrambleCode(TemplatePatch& file, int shift);

// Grows the file by a random 0..2048 bytes (the last byte is overwritten with
// 0), so that it no longer has one of the sizes the readers recognise.
void RandomFileSize(TemplatePatch& file);
// The same with a given n: n + 1 zero bytes from the file's last byte on.
void RandomFileSize(TemplatePatch& file, int n);

}  // namespace trel
