// The shell of the command line: messages go to stderr as text, questions take
// their default answer.
#pragma once

#include <ostream>

#include "front/UserMessages.h"

namespace trel::cli {

class ConsoleShell : public UserMessages {
 public:
  explicit ConsoleShell(std::ostream& err) : err_(err) {}
  MsgResult MsgBox(const std::string& text, MsgButtons buttons, MsgIcon icon,
                   const std::string& title) override;
  void ErrorMessage(const std::string& description) override;
  bool ErrorMessage2(const std::string& description) override;

 private:
  std::ostream& err_;
};

}  // namespace trel::cli
