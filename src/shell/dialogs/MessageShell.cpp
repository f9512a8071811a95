#include "shell/dialogs/MessageShell.h"

#include <QMessageBox>

#include "shell/dialogs/TestHooks.h"

namespace trel {

namespace {

MsgResult DefaultAnswer(MsgButtons buttons) {
  switch (buttons) {
    case MsgButtons::YesNo:
    case MsgButtons::YesNoCancel: return MsgResult::Yes;
    default: return MsgResult::Ok;
  }
}

}  // namespace

MsgResult MessageShell::MsgBox(const std::string& text, MsgButtons buttons, MsgIcon icon,
                               const std::string& title) {
  const QString qtitle = QString::fromStdString(title.empty() ? std::string("Trel") : title);
  if (AutoAcceptDialogs()) {
    ReportAutoAccepted(qtitle);
    return DefaultAnswer(buttons);
  }
  QMessageBox box(owner_);
  box.setWindowTitle(qtitle);
  box.setText(QString::fromStdString(text));
  switch (icon) {
    case MsgIcon::Critical: box.setIcon(QMessageBox::Critical); break;
    case MsgIcon::Question: box.setIcon(QMessageBox::Question); break;
    case MsgIcon::Exclamation: box.setIcon(QMessageBox::Warning); break;
    case MsgIcon::Information: box.setIcon(QMessageBox::Information); break;
    case MsgIcon::None: break;
  }
  switch (buttons) {
    case MsgButtons::Ok: box.setStandardButtons(QMessageBox::Ok); break;
    case MsgButtons::OkCancel: box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel); break;
    case MsgButtons::YesNo: box.setStandardButtons(QMessageBox::Yes | QMessageBox::No); break;
    case MsgButtons::YesNoCancel:
      box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
      break;
  }
  switch (box.exec()) {
    case QMessageBox::Cancel: return MsgResult::Cancel;
    case QMessageBox::Yes: return MsgResult::Yes;
    case QMessageBox::No: return MsgResult::No;
    default: return MsgResult::Ok;
  }
}

void MessageShell::ErrorMessage(const std::string& description) {
  MsgBox("Just a small problem...\n\n" + description, MsgButtons::Ok, MsgIcon::Exclamation, "Trel Error");
}

bool MessageShell::ErrorMessage2(const std::string& description) {
  return MsgBox("An error occured, but don't panik!\n\n" + description + "\n\nContinue anyway?",
                MsgButtons::YesNo, MsgIcon::Exclamation, "Trel Error") == MsgResult::Yes;
}

}  // namespace trel
