#include "editor/ClickLabel.h"

#include <QKeyEvent>
#include <QMouseEvent>

#include "editor/EditorAccessible.h"

namespace trel {

ClickLabel::ClickLabel(const QString& text, QWidget* parent) : QLabel(text, parent) {
  InstallEditorAccessibility();
  // Reached by Tab, never by a click: a click must leave the focus where the
  // user typed (the code box or the open edit box).
  setFocusPolicy(Qt::TabFocus);
  setAttribute(Qt::WA_NoMousePropagation);
  Restyle();
}

void ClickLabel::mousePressEvent(QMouseEvent* event) {
  pressed_ = event->button() == Qt::LeftButton;
  if (event->button() == Qt::RightButton) emit rightClicked(event->globalPosition().toPoint());
  event->accept();
}

void ClickLabel::mouseReleaseEvent(QMouseEvent* event) {
  const bool click = pressed_ && event->button() == Qt::LeftButton && rect().contains(event->position().toPoint());
  pressed_ = false;
  event->accept();
  if (click) emit clicked();
}

// The second press of a double click is no second click: a switch would
// otherwise close the box it just opened.
void ClickLabel::mouseDoubleClickEvent(QMouseEvent* event) { event->accept(); }

void ClickLabel::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Space:
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F2:
      event->accept();
      emit clicked();
      return;
    default:
      QLabel::keyPressEvent(event);
  }
}

void ClickLabel::enterEvent(QEnterEvent* event) {
  hovered_ = true;
  Restyle();
  QLabel::enterEvent(event);
}

void ClickLabel::leaveEvent(QEvent* event) {
  hovered_ = false;
  Restyle();
  QLabel::leaveEvent(event);
}

void ClickLabel::Restyle() {
  if (tool_) {
    setStyleSheet(hovered_ ? "QLabel{background:rgba(255,255,255,210);border:1px solid black;"
                             "border-radius:3px;color:black}"
                           : "QLabel{background:rgba(255,255,255,170);border:1px solid transparent;"
                             "border-radius:3px;color:black}"
                             "QLabel:focus{border:1px dotted black}");
  } else {
    setStyleSheet(hovered_ ? "QLabel{background:rgba(30,45,80,230);color:white;border-radius:3px;"
                             "padding-left:3px}"
                           : "QLabel{background:rgba(255,255,255,200);color:black;border-radius:3px;"
                             "padding-left:3px}"
                             "QLabel:focus{background:rgba(200,215,255,230)}");
  }
}

}  // namespace trel
