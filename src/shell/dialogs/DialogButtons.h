// The accept and Cancel buttons of the program's small dialogs, under the
// design's object names (Command1, Command2), at the bottom of `column`.
#pragma once

#include <QBoxLayout>
#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>

namespace trel {

inline void AddDialogButtons(QDialog* dialog, QBoxLayout* column, const QString& acceptCaption) {
  auto* buttons = new QDialogButtonBox(dialog);
  QPushButton* accept = buttons->addButton(acceptCaption, QDialogButtonBox::AcceptRole);
  accept->setObjectName("Command1");
  accept->setAccessibleName(acceptCaption);
  accept->setDefault(true);
  QPushButton* cancel = buttons->addButton("Cancel", QDialogButtonBox::RejectRole);
  cancel->setObjectName("Command2");
  cancel->setAccessibleName("Cancel");
  QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
  QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
  column->addWidget(buttons);
}

}  // namespace trel
