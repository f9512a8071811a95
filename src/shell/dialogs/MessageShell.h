// The program's message boxes behind the interface the core reports through.
#pragma once

#include <QWidget>

#include "front/UserMessages.h"

namespace trel {

class MessageShell : public UserMessages {
 public:
  explicit MessageShell(QWidget* owner = nullptr) : owner_(owner) {}
  void setOwner(QWidget* owner) { owner_ = owner; }

  MsgResult MsgBox(const std::string& text, MsgButtons buttons, MsgIcon icon,
                   const std::string& title) override;
  void ErrorMessage(const std::string& description) override;
  bool ErrorMessage2(const std::string& description) override;

 private:
  QWidget* owner_;
};

}  // namespace trel
