// How the programs around the core speak to their user: the window shows
// message boxes, the command line prints. The core never sees this; it hands
// Errors to its ShellHooks, and this is where an Error becomes a box (or a
// line), so the user reads the same text whoever found the fault. Header
// only: the window and trel-cli share it without a library of their own.
#pragma once

#include <string>

#include "filter/ShellHooks.h"

namespace trel {

enum class MsgIcon { None, Critical, Question, Exclamation, Information };
enum class MsgButtons { Ok, OkCancel, YesNo, YesNoCancel };
enum class MsgResult { Ok, Cancel, Yes, No };

class UserMessages : public ShellHooks {
 public:
  // A message box with the given text, buttons, icon and title.
  virtual MsgResult MsgBox(const std::string& text, MsgButtons buttons, MsgIcon icon, const std::string& title) {
    (void)text;
    (void)buttons;
    (void)icon;
    (void)title;
    return MsgResult::Ok;
  }
  // The program's general error box (title "Trel Error"); description is the fault.
  virtual void ErrorMessage(const std::string& description) { (void)description; }
  // The general question "Continue anyway?"; true means go on.
  virtual bool ErrorMessage2(const std::string& description) {
    (void)description;
    return true;
  }

  // An Error shown by its kind: Fault in the general error box (or, with a
  // title, in a critical box of that title), Warning and Information in a box
  // with the error's title, Gone as a refresh of the lists.
  void Report(const Error& error) override {
    switch (error.kind) {
      case ErrorKind::Fault:
        if (error.title.empty())
          ErrorMessage(error.reason);
        else
          MsgBox(error.reason, MsgButtons::Ok, MsgIcon::Critical, error.title);
        break;
      case ErrorKind::Warning: MsgBox(error.reason, MsgButtons::Ok, MsgIcon::Exclamation, error.title); break;
      case ErrorKind::Information: MsgBox(error.reason, MsgButtons::Ok, MsgIcon::Information, error.title); break;
      case ErrorKind::Gone: RefreshActivePane(); break;
    }
  }
  bool ContinueAfter(const Error& error) override { return ErrorMessage2(error.reason); }
};

// Messages that go nowhere; every question gets its default answer.
inline UserMessages& NoMessages() {
  static UserMessages none;
  return none;
}

}  // namespace trel
