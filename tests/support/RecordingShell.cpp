#include "support/RecordingShell.h"

namespace trel::test {

MsgResult RecordingShell::MsgBox(const std::string& text, MsgButtons buttons, MsgIcon icon,
                                 const std::string& title) {
  boxes.push_back({text, buttons, icon, title});
  return nextAnswer;
}

bool RecordingShell::ErrorMessage2(const std::string& description) {
  questions.push_back(description);
  return continueAnyway;
}

bool RecordingShell::EscapePressed() {
  ++escapePolls;
  return escapeAfterPolls >= 0 && escapePolls > escapeAfterPolls;
}

}  // namespace trel::test
