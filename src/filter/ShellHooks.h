// What the Filter Factory core asks of the program around it: messages, a
// refresh of the active pane's lists, the editor's memory-spot marks, progress
// and the Esc key. The program implements it with dialogs and its panes; tests
// implement it with a recorder. Every method has a harmless default so that a
// caller which has no shell (the command line) can pass NullShell().
#pragma once

#include <string>

namespace trel {

enum class MsgIcon { None, Critical, Question, Exclamation, Information };
enum class MsgButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class MsgResult { Ok, Cancel, Yes, No };

class ShellHooks {
 public:
  virtual ~ShellHooks() = default;

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

  // Long work: a status line and whether Esc was pressed.
  virtual void StatusDisplay(const std::string& text) { (void)text; }
  virtual bool EscapePressed() { return false; }
};

// A shell that does nothing and answers every question with its default.
ShellHooks& NullShell();

}  // namespace trel
