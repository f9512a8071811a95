#include "shell/dialogs/Dialogs.h"

#include <QDialog>
#include <QFileDialog>
#include <QInputDialog>
#include <QMessageBox>

namespace trel {

namespace {

class ProgramDialogs : public Dialogs {
 public:
  int Exec(QDialog& dialog, int) override { return dialog.exec(); }
  void Open(QDialog& dialog) override { dialog.open(); }
  MsgResult Message(QWidget* owner, const std::string& text, MsgButtons buttons, MsgIcon icon,
                    const std::string& title) override {
    QMessageBox box(owner);
    box.setWindowTitle(QString::fromStdString(title));
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
  std::optional<QString> AskText(QWidget* owner, const QString& title, const QString& label) override {
    bool ok = false;
    const QString typed = QInputDialog::getText(owner, title, label, QLineEdit::Normal, {}, &ok);
    if (!ok) return std::nullopt;
    return typed;
  }
  QStringList PickFiles(QWidget* owner, const QString& caption, const QString& folder,
                        const QString& filter) override {
    return QFileDialog::getOpenFileNames(owner, caption, folder, filter);
  }
  QString PickSaveFile(QWidget* owner, const QString& caption, const QString& start,
                       const QString& filter) override {
    return QFileDialog::getSaveFileName(owner, caption, start, filter);
  }
};

std::unique_ptr<Dialogs>& Chosen() {
  static std::unique_ptr<Dialogs> chosen;
  return chosen;
}

}  // namespace

Dialogs& TheDialogs() {
  std::unique_ptr<Dialogs>& chosen = Chosen();
  if (!chosen) chosen = MakeProgramDialogs();
  return *chosen;
}

void UseDialogs(std::unique_ptr<Dialogs> dialogs) { Chosen() = std::move(dialogs); }

std::unique_ptr<Dialogs> MakeProgramDialogs() { return std::make_unique<ProgramDialogs>(); }

MsgResult DefaultAnswer(MsgButtons buttons) {
  switch (buttons) {
    case MsgButtons::YesNo:
    case MsgButtons::YesNoCancel: return MsgResult::Yes;
    default: return MsgResult::Ok;
  }
}

}  // namespace trel
