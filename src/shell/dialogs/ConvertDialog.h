// The Convert dialog: the output format and its options for a batch
// conversion of the selection, a library or the clipboard.
#pragma once

#include <QDialog>

#include "filter/OutputFormat.h"

class QCheckBox;
class QComboBox;
class QPushButton;

namespace trel {

class ConvertDialog : public QDialog {
  Q_OBJECT
 public:
  explicit ConvertDialog(QWidget* parent = nullptr);

  OutputFormat format() const;
  void SetFormat(OutputFormat format);
  bool nameFromTitle() const;
  bool useClipboard() const;
  void SetUseClipboard(bool on);
  bool macAdaption() const;
  QPushButton* outputSettings() const { return command3_; }

 signals:
  void outputSettingsRequested();

 private:
  void Combo1_Click(int index);

  QCheckBox* check1_;
  QCheckBox* check2_;
  QCheckBox* check3_;
  QComboBox* combo1_;
  QPushButton* command1_;
  QPushButton* command2_;
  QPushButton* command3_;
};

}  // namespace trel
