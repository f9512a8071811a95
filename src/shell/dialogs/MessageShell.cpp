#include "shell/dialogs/MessageShell.h"

#include "shell/dialogs/Dialogs.h"

namespace trel {

MsgResult MessageShell::MsgBox(const std::string& text, MsgButtons buttons, MsgIcon icon,
                               const std::string& title) {
  return TheDialogs().Message(owner_, text, buttons, icon, title.empty() ? std::string("Trel") : title);
}

void MessageShell::ErrorMessage(const std::string& description) {
  MsgBox("Just a small problem...\n\n" + description, MsgButtons::Ok, MsgIcon::Exclamation, "Trel Error");
}

bool MessageShell::ErrorMessage2(const std::string& description) {
  return MsgBox("An error occured, but don't panik!\n\n" + description + "\n\nContinue anyway?",
                MsgButtons::YesNo, MsgIcon::Exclamation, "Trel Error") == MsgResult::Yes;
}

}  // namespace trel
