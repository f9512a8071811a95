#include "cli/ConsoleShell.h"

namespace trel::cli {

MsgResult ConsoleShell::MsgBox(const std::string& text, MsgButtons buttons, MsgIcon,
                               const std::string& title) {
  err_ << title << ": " << text << '\n';
  switch (buttons) {
    case MsgButtons::YesNo:
    case MsgButtons::YesNoCancel:
      return MsgResult::Yes;
    default:
      return MsgResult::Ok;
  }
}

void ConsoleShell::ErrorMessage(const std::string& description) {
  err_ << "Trel Error: Just a small problem...\n\n" << description << '\n';
}

bool ConsoleShell::ErrorMessage2(const std::string& description) {
  err_ << "Trel Error: An error occured, but don't panik!\n\n" << description << '\n';
  return true;
}

}  // namespace trel::cli
