// The fixed places of the editor's controls, in pixels of a 640 by 480 window.
// Skins draw their background around these places; only the code boxes and
// the mail link move with the skin.
#pragma once

#include <QRect>

namespace trel::layout {

inline constexpr int kWidth = 640, kHeight = 480;
inline const QRect kTitle{16, 6, 300, 22};
inline QRect WindowButton(int i) { return {572 + 22 * i, 6, 20, 20}; }  // hide, unload, minimise
inline QRect NameField(int i) { return {16, 34 + 24 * i, 188, 20}; }
inline const QRect kPreview{16, 158, 188, 140};
inline const QRect kSpotGrid{16, 306, 188, 36};
inline QRect SpotButton(int s) { return {16 + 19 * s, 346, 18, 18}; }
inline QRect ToolLabel(int i) { return {16 + 24 * i, 370, 22, 22}; }
inline const QRect kDeleteSpot{16 + 24 * 8 - 2, 370, 14, 22};
inline const QRect kAutoPreview{16, 398, 188, 20};
inline const QRect kSaveFormat{16, 422, 122, 22};
inline const QRect kSaveButton{142, 422, 62, 22};
inline const QRect kDefaultMail{16, 452, 188, 18};
inline QRect SliderName(int n) { return {216, 34 + 24 * n, 110, 20}; }
inline QRect SliderTrack(int n) { return {332, 35 + 24 * n, 236, 18}; }
inline QRect SliderValue(int n) { return {574, 34 + 24 * n, 40, 20}; }
inline QRect MapSwitch(int m) { return {216 + 104 * m, 228, 96, 20}; }
inline QRect CodeSwitch(int i) { return {216 + 28 * i, 252, 26, 20}; }
inline const QRect kBoxCount{332, 252, 22, 20};
inline const QRect kFontButton{358, 252, 22, 20};
inline const QRect kFunctionList{384, 252, 120, 20};
inline const QRect kSnippetList{508, 252, 124, 20};
// Where the code boxes stand when a skin does not say.
inline const QRect kDefaultCode{216, 192, 317, 193};

}  // namespace trel::layout
