// How the window asks the user: every modal question, message and file choice
// of the window's commands goes through one Dialogs object. The program uses
// the real dialogs (chosen in main); a run with nobody at the screen (the tests,
// a screenshot run) puts in one that answers by itself.
#pragma once

#include <QString>
#include <QStringList>
#include <memory>
#include <optional>
#include <string>

#include "front/UserMessages.h"

class QDialog;
class QWidget;

namespace trel {

class Dialogs {
 public:
  virtual ~Dialogs() = default;
  // Runs a dialog the caller built and filled, modally; its result code.
  // `unattended` is the code a run with nobody to ask answers with.
  virtual int Exec(QDialog& dialog, int unattended) = 0;
  // Opens a dialog that stays while the window goes on.
  virtual void Open(QDialog& dialog) = 0;
  virtual MsgResult Message(QWidget* owner, const std::string& text, MsgButtons buttons, MsgIcon icon,
                            const std::string& title) = 0;
  // One line of text; nullopt for Cancel.
  virtual std::optional<QString> AskText(QWidget* owner, const QString& title, const QString& label) = 0;
  // Files to open, or a file to save to; empty for Cancel.
  virtual QStringList PickFiles(QWidget* owner, const QString& caption, const QString& folder,
                                const QString& filter) = 0;
  virtual QString PickSaveFile(QWidget* owner, const QString& caption, const QString& start,
                               const QString& filter) = 0;
};

// The dialogs in use: the real ones unless UseDialogs chose others.
Dialogs& TheDialogs();
void UseDialogs(std::unique_ptr<Dialogs> dialogs);
std::unique_ptr<Dialogs> MakeProgramDialogs();

// The answer a message box gives when nobody is there: its first button.
MsgResult DefaultAnswer(MsgButtons buttons);

}  // namespace trel
