#include "shell/dialogs/CategoryDialog.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "shell/dialogs/Dialogs.h"
#include "settings/Latin1.h"
#include "shell/dialogs/DialogButtons.h"

namespace trel {

namespace {
}  // namespace

CategoryDialog::CategoryDialog(const std::vector<std::string>& choices, QWidget* parent) : QDialog(parent) {
  setObjectName("Form3");
  setWindowTitle("Enter new category name");
  auto* column = new QVBoxLayout(this);
  label1_ = new QLabel("Choose or enter a new category", this);
  label1_->setObjectName("Label1");
  column->addWidget(label1_);
  // The combo box's own line edit is the text box: choosing a row fills it,
  // typing in it names a new category.
  combo1_ = new QComboBox(this);
  combo1_->setObjectName("Combo1");
  combo1_->setEditable(true);
  combo1_->setInsertPolicy(QComboBox::NoInsert);
  combo1_->setAccessibleName("Category");
  for (const std::string& c : choices) combo1_->addItem(Latin1(c));
  combo1_->lineEdit()->setObjectName("Text1");
  combo1_->lineEdit()->setAccessibleName("New category");
  combo1_->setCurrentIndex(-1);
  combo1_->setEditText({});
  label1_->setBuddy(combo1_);
  column->addWidget(combo1_);
  AddDialogButtons(this, column, "OK");
  combo1_->setFocus();
}

std::string CategoryDialog::text() const { return combo1_->currentText().toLatin1().toStdString(); }

void CategoryDialog::setText(const std::string& text) { combo1_->setEditText(Latin1(text)); }

std::optional<std::string> AskCategory(const std::vector<std::string>& choices, QWidget* parent) {
  CategoryDialog dialog(choices, parent);
  if (TheDialogs().Exec(dialog, QDialog::Rejected) != QDialog::Accepted) return std::nullopt;
  return dialog.text();
}

}  // namespace trel
