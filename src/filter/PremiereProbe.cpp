#include "filter/PremiereProbe.h"

#include "filter/ByteHelpers.h"
#include "filter/TemplateLayout.h"

namespace trel {

bool PremiereFFShift(BinFile& file, int& shift) {
  const int probe = file.ByteAt(layout::kPrmProbe);
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

bool TransitionShift(BinFile& file, int& shift) {
  const int probe = file.ByteAt(layout::kTfProbe);
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
    case 0: marker = layout::kTfMarker; break;
    case 3076: marker = 25105; break;
    case 9904: marker = 22033; break;
    default: return true;  // this version has no marker
  }
  return bytes2string2(marker, file) == layout::kTfMarkerText;
}

}  // namespace trel
