// The program around the core: the window, the command line or a test. The
// core hands it Errors (Report; ContinueAfter where long work may go on after
// a fault, and the answer says whether it does), asks for a refresh of the
// active pane's lists, reads and sets the editor's memory-spot marks, and
// tells progress (the Progress base). How an Error reaches the user is the
// program's affair (front/UserMessages.h): nothing here shows anything. Every
// method has a harmless default so that a caller which has no shell can pass
// NullShell().
#pragma once

#include <string>

#include "base/Error.h"
#include "base/Progress.h"

namespace trel {

class ShellHooks : public Progress {
 public:
  // An Error the core returned or met during long work.
  virtual void Report(const Error& error) { (void)error; }
  // A fault met in the middle of long work that could go on: true means go on.
  virtual bool ContinueAfter(const Error& error) {
    (void)error;
    return true;
  }

  // The folder and file lists of the active pane may be stale: re-read them.
  virtual void RefreshActivePane() {}

  // Memory spots 0..9 of the FF Editor.
  virtual void MarkMemorySpot(int spot) { (void)spot; }
  virtual bool IsMemorySpotMarked(int spot) const { (void)spot; return false; }
};

// A shell that does nothing and answers every question with its default.
ShellHooks& NullShell();

}  // namespace trel
