// The program around the core: the window, the command line or a test. The
// core hands it Errors to show (Report; ContinueAfter where long work may go
// on after a fault), asks for a refresh of the active pane's lists, reads and
// sets the editor's memory-spot marks, and tells progress (the Progress base).
// It never calls the message boxes itself: MsgBox and ErrorMessage are the
// window's and the command line's, and Report maps an Error onto them, so the
// user reads the same box whoever finds the fault. Every method has a harmless
// default so that a caller which has no shell can pass NullShell().
#pragma once

#include <string>

#include "base/Error.h"
#include "base/Progress.h"

namespace trel {

enum class MsgIcon { None, Critical, Question, Exclamation, Information };
enum class MsgButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class MsgResult { Ok, Cancel, Yes, No };

class ShellHooks : public Progress {
 public:

  // A message box with the given text, buttons, icon and title.
  virtual MsgResult MsgBox(const std::string& text, MsgButtons buttons, MsgIcon icon,
                           const std::string& title) {
    (void)text; (void)buttons; (void)icon; (void)title;
    return MsgResult::Ok;
  }
  // The program's general error box (title "Trel Error"); description is the fault.
  virtual void ErrorMessage(const std::string& description) { (void)description; }
  // The general question "Continue anyway?"; true means go on.
  virtual bool ErrorMessage2(const std::string& description) { (void)description; return true; }

  // The folder and file lists of the active pane may be stale: re-read them.
  virtual void RefreshActivePane() {}

  // Memory spots 0..9 of the FF Editor.
  virtual void MarkMemorySpot(int spot) { (void)spot; }
  virtual bool IsMemorySpotMarked(int spot) const { (void)spot; return false; }

  // An Error the core returned or met during long work, shown by its kind:
  // Fault in the general error box (or, with a title, in a critical box of
  // that title), Warning and Information in a box with the error's title,
  // Gone as a refresh of the lists.
  virtual void Report(const Error& error) {
    switch (error.kind) {
      case ErrorKind::Fault:
        if (error.title.empty()) ErrorMessage(error.reason);
        else MsgBox(error.reason, MsgButtons::Ok, MsgIcon::Critical, error.title);
        break;
      case ErrorKind::Warning: MsgBox(error.reason, MsgButtons::Ok, MsgIcon::Exclamation, error.title); break;
      case ErrorKind::Information: MsgBox(error.reason, MsgButtons::Ok, MsgIcon::Information, error.title); break;
      case ErrorKind::Gone: RefreshActivePane(); break;
    }
  }
  // A fault met in the middle of long work that could go on: true means go on.
  virtual bool ContinueAfter(const Error& error) { return ErrorMessage2(error.reason); }
};

// A shell that does nothing and answers every question with its default.
ShellHooks& NullShell();

}  // namespace trel
