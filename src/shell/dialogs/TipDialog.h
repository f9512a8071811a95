// frmTip: the tip of the day, with "Next Tip" and the box that decides whether
// it shows at start.
#pragma once

#include <QDialog>

#include "shell/dialogs/TipOfDay.h"

class QCheckBox;
class QLabel;

namespace trel {

class SettingsStore;

class TipDialog : public QDialog {
  Q_OBJECT
 public:
  TipDialog(SettingsStore& store, const std::string& tipFile, QWidget* parent = nullptr);

  void cmdNextTip_Click();
  void chkLoadTipsAtStartup_Click();
  const TipCollection& tips() const { return tips_; }
  QString tipText() const;

  // Shows the dialog modally, or closes it at once in an unattended run.
  int ShowModal();

 private:
  void DisplayCurrentTip();

  SettingsStore& store_;
  TipCollection tips_;
  QCheckBox* check_;
  QLabel* text_;
  QLabel* counter_;
};

}  // namespace trel
