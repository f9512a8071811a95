// Form4: how the plugin list is exported: the fields of a line, CSV, and a
// file in the pane's folder or the clipboard.
#pragma once

#include <QDialog>
#include <optional>
#include <string>

#include "catalogue/PluginReports.h"

class QCheckBox;
class QLineEdit;

namespace trel {

struct PlugInListChoice {
  PlugInListOptions options;
  bool toClipboard = false;
  std::string fileName = "FFL-List.txt";
};

class PluginListDialog : public QDialog {
  Q_OBJECT
 public:
  explicit PluginListDialog(QWidget* parent = nullptr);
  PlugInListChoice choice() const;

  QLineEdit* fileName() const { return text1_; }
  QCheckBox* box(const QString& objectName) const;

 private:
  QLineEdit* text1_ = nullptr;
};

// Opens the dialog modally; nothing on Cancel.
std::optional<PlugInListChoice> AskPlugInList(QWidget* parent);

}  // namespace trel
