#include "editor/FieldEditor.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>

#include "editor/EditorWidgets.h"

namespace trel {

FieldEditor::FieldEditor(QWidget* window) : window_(window) {}

void FieldEditor::Build() {
  box_ = Named(new QLineEdit(window_), "Text10");
  box_->setAccessibleName("Edit box");
  box_->installEventFilter(this);
  box_->hide();
  connect(box_, &QLineEdit::returnPressed, this, &FieldEditor::Commit);
  connect(box_, &QLineEdit::editingFinished, this, &FieldEditor::CommitIfOpen);
}

bool FieldEditor::open() const { return !box_->isHidden(); }

void FieldEditor::Start(QLabel* label, int extraWidth) {
  label_ = label;
  box_->setText(label->text());
  box_->setGeometry(label->x(), label->y(), label->width() + extraWidth, label->height());
  box_->setFont(label->font());
  box_->selectAll();
  box_->show();
  box_->raise();
  box_->setFocus();
}

void FieldEditor::Cancel() {
  QLabel* label = label_;
  label_ = nullptr;
  const bool typing = box_->hasFocus();
  box_->hide();
  if (typing && label) label->setFocus(Qt::OtherFocusReason);
}

void FieldEditor::Drop() {
  label_ = nullptr;
  box_->hide();
}

void FieldEditor::Commit() {
  QLabel* label = label_;
  label_ = nullptr;
  // Ended by Return: the keys go back to the field, never on to a button
  // (ended by a click elsewhere, the focus is already where the user put it).
  const bool typing = box_->hasFocus();
  box_->hide();
  if (!label) return;
  if (typing) label->setFocus(Qt::OtherFocusReason);
  const QString typed = box_->text();
  if (onCommit) onCommit(label, typed);
}

bool FieldEditor::eventFilter(QObject* watched, QEvent* event) {
  if (watched == box_ && event->type() == QEvent::KeyPress &&
      static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
    Cancel();
    return true;
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace trel
