// The pictures of the shipped skins and the built-in slider tiles, drawn by
// code so that every picture the editor shows comes from this source.
#pragma once

#include <QImage>

namespace trel {

// The background of skin style 4, 5 or 6 (Interfc4/5/6.des), 640 by 480.
QImage PaintSkinBackground(int style);
// Track and knob tiles of the three built-in picture slider looks (0..2).
QImage TrackTile(int set, int width, int height);
QImage KnobTile(int set, int height);
inline constexpr int kKnobWidth = 11;

}  // namespace trel
