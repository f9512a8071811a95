// The Filter Factory Editor's rules that need no window: value labels, knob
// places, spot grid, the preview passes, the clipboard and print layouts,
// snippets, save names and the switch of a compiled filter's own dialog.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "filter/FFFilter.h"
#include "filter/OutputFormat.h"

namespace trel {

// A typed slider value: negative values lose their sign, values above 255 are
// taken modulo 256; text that is no number reads as 0.
int NormalizeSliderValue(const std::string& typed);
// The map (0..3) a slider name label belongs to.
int MapOfSlider(int index);

// Picture sliders, in pixels: P is one pixel, W the track width, K the knob's.
int PlaceKnob(int value, int trackLeft, int trackWidth, int knobWidth);
int KnobValue(int knobLeft, int trackLeft, int trackWidth, int knobWidth);
// A press at x on a track (x from the track's left end): the knob's left edge,
// kept between the places of 0 and 255.
int KnobLeftForPress(int x, int trackLeft, int trackWidth, int knobWidth);

// The memory spot under (x, y) in a grid of two rows of five, w by h.
int SpotAt(int x, int y, int w, int h);

// The codes of one compile-and-run of the preview, R G B A.
using PassCodes = std::array<std::string, 4>;
struct PreviewPlan {
  std::vector<PassCodes> passes;  // run one after the other on the same picture
  bool alphaDisplay = false;      // print "Alpha" on the result
};
// Which runs a preview makes for the filter's codes and the "Alpha Channel
// Display" check mark.
PreviewPlan PlanPreview(const FFFilter& f, bool alphaChannelDisplay);

// The filter as text for the clipboard (the TXT source layout), CR LF lines.
std::string FilterClipboardText(const FFFilter& f);
// The printed lines with their margin; codes come as "   R: " + code and are
// wrapped by the printer.
std::vector<std::string> FilterPrintLines(const FFFilter& f);

struct Snippet {
  std::string code;
  std::string name;
};
// "Snipets.db": '#' lines are comments, empty lines are skipped, other lines
// are code, ";", then the name (a line without ";" is its own name, no code).
std::vector<Snippet> ParseSnipets(const std::string& text);

// The target file name of "Save": the file name label up to its first "."
// and the extension of `format` (both Premiere plugins end in ".prm").
std::string SaveTargetName(const std::string& fileLabel, OutputFormat format);

// Switches the built-in dialog of a compiled filter on (1) or off (0) by the
// file's exact length; other files are left alone. True when a byte was written.
bool ToggleFFUIFile(const std::string& path, bool on);

}  // namespace trel
