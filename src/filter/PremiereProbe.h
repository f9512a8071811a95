// How a Premiere Filter Factory or Transition Factory plugin tells which
// version of the template it was made from: a probe byte or two, giving the
// displacement (`shift`) of its fields. Shared by the readers and the writers.
#pragma once

#include "filter/BinFile.h"

namespace trel {

// Premiere Filter Factory: false when the probes fit no known version. The
// file size is the caller's test.
bool PremiereFFShift(BinFile& file, int& shift);
// Transition Factory, with the marker of the versions that have one.
bool TransitionShift(BinFile& file, int& shift);

}  // namespace trel
