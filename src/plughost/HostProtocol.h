// What Trel and trel-plughost.exe say to each other. Standard C++ only: the
// Windows host and the Linux client both include it.
//
// Requests are single lines on the host's standard input, fields separated by
// tabs, paths in the host's own form (Z:\...) and in UTF-8:
//   PROBE <plugin>                                 load it and find its entry point
//   RUN <plugin> <in> <out> <params> <dialog 0|1>  filter <in> into <out>
//   ABOUT <plugin>                                 show the plugin's about box
//   QUIT
// <params> is a file that keeps the plugin's parameters between runs ("-" for
// none): read before the run when it exists, written after a good one.
// Each request gets one answer line on standard output that starts with
// kAnswerPrefix, so that whatever a plugin prints itself is passed by:
//   @@TREL OK
//   @@TREL ERR <code> <text>
// A picture file is a 16-byte header (magic, width, height, planes as
// little-endian 32-bit numbers) and the rows, top first, each of width x planes
// bytes, the planes interleaved: R, G, B and, with four planes, transparency.
#pragma once

#include <cstdint>

namespace trel::plughost {

inline constexpr const char* kAnswerPrefix = "@@TREL ";
inline constexpr uint32_t kPictureMagic = 0x58505254;  // "TRPX"
inline constexpr int kPictureHeader = 16;

enum class HostError : int {
  None = 0,
  Usage = 1,           // a request the host does not understand
  LoadFailed = 2,      // not a DLL for this architecture, or one that does not load
  NoEntryPoint = 3,    // no PiPL entry point for this architecture, or no such export
  PluginError = 4,     // the plugin returned an error code
  Cancelled = 5,       // the user cancelled the plugin's dialog
  OutsideBuffers = 6,  // the plugin wrote outside the buffers it was given
  Crashed = 7,         // the plugin raised an exception
  BadPicture = 8,      // the picture file could not be read or written
  Unsupported = 9,     // the plugin needs a service the host does not offer
  MissingDll = 10,     // a DLL the plugin imports is not installed; the text names it
  NeedsDialog = 11,    // cancelled in a run without the dialog: it runs only with it
  DialogInPreview = 12,  // opened a dialog in a run without one
};

}  // namespace trel::plughost
