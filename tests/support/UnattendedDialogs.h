// Dialogs that answer by themselves, for the tests and for runs of the program
// with nobody at the screen. Each question is reported on stdout as
// "auto-accepted: <title>" and kept, in order, for a test to read.
#pragma once

#include <QString>
#include <QStringList>

#include "shell/dialogs/Dialogs.h"

namespace trel::test {

class UnattendedDialogs : public Dialogs {
 public:
  int Exec(QDialog& dialog, int unattended) override;
  void Open(QDialog& dialog) override;
  MsgResult Message(QWidget* owner, const std::string& text, MsgButtons buttons, MsgIcon icon,
                    const std::string& title) override;
  std::optional<QString> AskText(QWidget* owner, const QString& title, const QString& label) override;
  QStringList PickFiles(QWidget* owner, const QString& caption, const QString& folder,
                        const QString& filter) override;
  QString PickSaveFile(QWidget* owner, const QString& caption, const QString& start,
                       const QString& filter) override;

  QStringList asked;  // the titles, in order

 private:
  void Report(const QString& title);
};

}  // namespace trel::test
