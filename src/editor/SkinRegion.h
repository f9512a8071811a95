// The editor window's outline from a skin's shapes: the same steps as the
// Windows region calls (CreateRectRgn, CreateEllipticRgn, CreateRoundRectRgn,
// CombineRgn) on QRegion pixel sets, including what a bad word leaves behind.
#pragma once

#include <QRegion>

#include "editor/DesReader.h"

namespace trel {

// The region of one shape; nullopt for an unknown kind (it makes no region).
// Right and bottom edges are outside, as with the Windows calls.
std::optional<QRegion> ShapeRegion(const DesShape& shape);
// Combines a and b by mode; nullopt when the mode is None or an operand is
// missing (the Windows call then fails and leaves its target alone).
std::optional<QRegion> CombineRegions(const std::optional<QRegion>& a,
                                      const std::optional<QRegion>& b, CombineMode mode);
// The outline: shapes 1 and 2 by the first word, then each further shape
// with all before it, left to right.
QRegion BuildSkinRegion(const DesSkin& skin);

}  // namespace trel
