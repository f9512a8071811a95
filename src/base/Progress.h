// How long work tells where it is and learns that the user wants it to stop.
// The window shows the text in its status line and watches the Esc key; the
// command line and the tests use the defaults (no text, never stopped).
#pragma once

#include <string>

namespace trel {

class Progress {
 public:
  virtual ~Progress() = default;
  // A status line; an empty text clears it when the work is done.
  virtual void StatusDisplay(const std::string& text) { (void)text; }
  // True once the user asked to stop (Esc).
  virtual bool EscapePressed() { return false; }
};

// Progress that shows nothing and is never stopped.
inline Progress& NoProgress() {
  static Progress none;
  return none;
}

}  // namespace trel
