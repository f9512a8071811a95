// How a Premiere Filter Factory or Transition Factory plugin tells which
// version of the template it was made from: a probe byte or two, giving the
// displacement (`shift`) of its fields. Shared by the readers, which probe an
// open file, and the writers, which probe a template in memory.
#pragma once

#include <string>

#include "base/BinFile.h"
#include "filter/TemplatePatch.h"

namespace trel {

std::string MarkerAt(BinFile& file, int64_t position);               // read as a text field
std::string MarkerAt(const TemplatePatch& file, int64_t position);

// Premiere Filter Factory: false when the probes fit no known version. The
// file size is the caller's test.
template <typename File>
bool PremiereFFShift(File& file, int& shift) {
  const int probe = file.ByteAt(29021);
  shift = 0;  // a second probe that finds neither letter leaves it at 0
  if (probe == 'D') {
    const int second = file.ByteAt(28877);
    if (second == 'v') shift = -4;
    if (second == 'r') shift = -8;
  } else if (probe == 'e') {
    shift = 504;
  } else if (probe == 202) {
    const int second = file.ByteAt(32031);
    if (second == 'r') shift = 3064;
    if (second == 'c') shift = 3072;
  } else if (probe != '5') {
    return false;
  }
  return true;
}

// Transition Factory, with the marker of the versions that have one.
template <typename File>
bool TransitionShift(File& file, int& shift) {
  const int probe = file.ByteAt(29081);
  shift = 0;
  if (probe == 'n') {
    const int second = file.ByteAt(22033);
    if (second == 'P') shift = 9904;
    if (second == 139) shift = 520;
  } else if (probe == 'o') {
    shift = 3076;
  } else if (probe != '2') {
    return false;
  }
  int64_t marker = 0;
  switch (shift) {
    case 0: marker = 21521; break;
    case 3076: marker = 25105; break;
    case 9904: marker = 22033; break;
    default: return true;  // this version has no marker
  }
  return MarkerAt(file, marker) == "Premiere Transition Factory";
}

}  // namespace trel
