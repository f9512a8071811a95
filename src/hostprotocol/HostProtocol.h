// What Trel and trel-plughost.exe say to each other. Standard C++ only: the
// Windows host (cross-compiled with mingw-w64) and the Linux client both build
// this unit, so the two sides cannot disagree on the framing.
//
// A request is one line, fields separated by tabs, the first field the
// request's id (a decimal number, 1 upwards, chosen by the client):
//   <id> PROBE <plugin>                                 load it, find its entry point
//   <id> RUN <plugin> <in> <out> <params> <dialog 0|1>  filter <in> into <out>
//   <id> ABOUT <plugin>                                 show the plugin's about box
//   <id> QUIT
// Paths are the host's own (Z:\...), in UTF-8. <params> is a file that keeps
// the plugin's parameters between runs ("" for none): read before the run when
// it exists, written after a good one.
//
// Each request gets one answer line that repeats its id:
//   @@TREL <id> OK
//   @@TREL <id> ERR <code> <text>
// An answer starts with a line end of its own, so that a line left open by
// anything else on the channel ends before it.
//
// Fields are escaped rather than refused: a path may hold any byte, and a
// request must not lose it. A control character (below 0x20, and 0x7F) and
// '%' itself are written as '%' and two upper-case hex digits; nothing else
// is changed. So no field ever holds a raw tab or line end, and a line is
// split at its tabs before the fields are decoded. A line that does not
// follow this exactly (raw control characters, a bad escape, a wrong number
// of fields, an id out of range) is not a request or an answer at all.
//
// The channel is the host's own: two named pipes the client makes and names
// on the host's command line (`--channel REQUESTS ANSWERS`), or, without
// them, the host's standard input and output, which it takes for itself
// before it loads any plugin. Either way what a plugin reads or prints goes
// to NUL. The client still takes only a well-formed answer with the id it
// waits for, so output from anywhere else cannot put the two out of step.
//
// A picture file is a 16-byte header (magic, width, height, planes as
// little-endian 32-bit numbers) and the rows, top first, each of width x planes
// bytes, the planes interleaved: R, G, B and, with four planes, transparency.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace trel::hostprotocol {

inline constexpr std::string_view kAnswerPrefix = "@@TREL\t";
inline constexpr uint32_t kPictureMagic = 0x58505254;  // "TRPX"
inline constexpr int kPictureHeader = 16;
// Longest line either side accepts; a path is far shorter.
inline constexpr size_t kMaxLine = 1 << 16;

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

enum class Verb { Probe, Run, About, Quit };

struct Request {
  uint32_t id = 0;
  Verb verb = Verb::Quit;
  std::string plugin;   // PROBE, RUN, ABOUT
  std::string input;    // RUN: the picture to filter
  std::string output;   // RUN: where the result goes
  std::string params;   // RUN: the parameters file, "" for none
  bool dialog = false;  // RUN: the plugin may show its dialog
  bool operator==(const Request&) const = default;
};

struct Answer {
  uint32_t id = 0;
  int code = 0;      // a HostError; 0 is OK. Numbers a newer host adds pass through.
  std::string text;  // why it failed, for the user; empty with OK
  bool operator==(const Answer&) const = default;
};

// A field with its control characters and '%' escaped, and back. Unescape
// gives nothing for a raw control character or a '%' not followed by two hex
// digits.
std::string Escape(std::string_view field);
std::optional<std::string> Unescape(std::string_view field);

// The request or answer as one line, ending in '\n' (an answer also starts
// with one). Ids must be 1 or more; fields may hold any bytes.
std::string FormatRequest(const Request& request);
std::string FormatAnswer(const Answer& answer);

// A line without its line end ('\r' before it is allowed) back into a
// request; nothing unless it is one exactly.
std::optional<Request> ParseRequest(std::string_view line);
// The id a line starts with, 0 if it starts with none: the host answers a
// request it cannot read with this id when there is one.
uint32_t LeadingId(std::string_view line);

// An answer from a line without its line end. The answer may follow other
// text on the same line (a plugin's output without a line end of its own): it
// is read from the last answer prefix on. Nothing unless it is an answer exactly.
std::optional<Answer> ParseAnswer(std::string_view line);

// The client's side of the channel: bytes in as they come, the answer to one
// request out. Lines that are not answers, and answers with another id (to a
// request given up on), are dropped. Text without a line end is kept only up
// to kMaxLine bytes, so a stream without any line end cannot grow it without
// bound.
class AnswerReader {
 public:
  void Feed(std::string_view bytes);
  // The answer with this id once its whole line has come; lines before it
  // are used up.
  std::optional<Answer> Take(uint32_t id);
  void Clear() { pending_.clear(); }
  size_t pending() const { return pending_.size(); }

 private:
  std::string pending_;
};

}  // namespace trel::hostprotocol
