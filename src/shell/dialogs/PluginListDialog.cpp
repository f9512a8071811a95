#include "shell/dialogs/PluginListDialog.h"

#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "shell/dialogs/Dialogs.h"
#include "shell/dialogs/DialogButtons.h"

namespace trel {

PluginListDialog::PluginListDialog(QWidget* parent) : QDialog(parent) {
  setObjectName("Form4");
  setWindowTitle("Plugin List");
  auto* column = new QVBoxLayout(this);
  auto* form = new QFormLayout;
  text1_ = new QLineEdit("FFL-List.txt", this);
  text1_->setObjectName("Text1");
  text1_->setAccessibleName("Filename:");
  form->addRow("Filename:", text1_);
  column->addLayout(form);

  auto* include = new QGroupBox("Include", this);
  include->setObjectName("Frame1");
  auto* boxes = new QVBoxLayout(include);
  const char* names[5] = {"Category", "Filtername", "Filename", "Author", "Copyright"};
  for (int i = 0; i < 5; ++i) {
    auto* box = new QCheckBox(names[i], include);
    box->setObjectName(QString("Check%1").arg(i + 1));
    box->setAccessibleName(names[i]);
    box->setChecked(true);
    boxes->addWidget(box);
  }
  column->addWidget(include);
  auto* csv = new QCheckBox("CSV Format", this);
  csv->setObjectName("Check6");
  csv->setAccessibleName("CSV Format");
  column->addWidget(csv);
  auto* clip = new QCheckBox("Output to Clipboard", this);
  clip->setObjectName("Check7");
  clip->setAccessibleName("Output to Clipboard");
  clip->setToolTip("Exports the plugin list to the clipboard");
  column->addWidget(clip);
  connect(clip, &QCheckBox::toggled, text1_, [this](bool on) { text1_->setEnabled(!on); });

  AddDialogButtons(this, column, "Start");
}

QCheckBox* PluginListDialog::box(const QString& objectName) const { return findChild<QCheckBox*>(objectName); }

PlugInListChoice PluginListDialog::choice() const {
  PlugInListChoice c;
  c.options.category = box("Check1")->isChecked();
  c.options.filtername = box("Check2")->isChecked();
  c.options.filename = box("Check3")->isChecked();
  c.options.author = box("Check4")->isChecked();
  c.options.copyright = box("Check5")->isChecked();
  c.options.csv = box("Check6")->isChecked();
  c.toClipboard = box("Check7")->isChecked();
  c.fileName = text1_->text().toStdString();
  return c;
}

std::optional<PlugInListChoice> AskPlugInList(QWidget* parent) {
  PluginListDialog dialog(parent);
  if (TheDialogs().Exec(dialog, QDialog::Rejected) != QDialog::Accepted) return std::nullopt;
  return dialog.choice();
}

}  // namespace trel
