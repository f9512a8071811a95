#include "support/UnattendedDialogs.h"

#include <QDialog>
#include <cstdio>

namespace trel::test {

void UnattendedDialogs::Report(const QString& title) {
  asked << title;
  std::printf("auto-accepted: %s\n", title.toLocal8Bit().constData());
  std::fflush(stdout);
}

int UnattendedDialogs::Exec(QDialog& dialog, int unattended) {
  Report(dialog.windowTitle());
  return unattended;
}

void UnattendedDialogs::Open(QDialog& dialog) { Report(dialog.windowTitle()); }

MsgResult UnattendedDialogs::Message(QWidget*, const std::string&, MsgButtons buttons, MsgIcon,
                                     const std::string& title) {
  Report(QString::fromStdString(title));
  return DefaultAnswer(buttons);
}

std::optional<QString> UnattendedDialogs::AskText(QWidget*, const QString&, const QString&) { return std::nullopt; }

QStringList UnattendedDialogs::PickFiles(QWidget*, const QString&, const QString&, const QString&) { return {}; }

QString UnattendedDialogs::PickSaveFile(QWidget*, const QString&, const QString&, const QString&) { return {}; }

}  // namespace trel::test
