#include "editor/ClickLabel.h"

#include <QMouseEvent>

namespace trel {

ClickLabel::ClickLabel(const QString& text, QWidget* parent) : QLabel(text, parent) {
  setFocusPolicy(Qt::NoFocus);
  Restyle();
}

void ClickLabel::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) emit clicked();
  else if (event->button() == Qt::RightButton) emit rightClicked(event->globalPosition().toPoint());
  event->accept();
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
                             "border-radius:3px;color:black}");
  } else {
    setStyleSheet(hovered_ ? "QLabel{background:rgba(30,45,80,230);color:white;border-radius:3px;"
                             "padding-left:3px}"
                           : "QLabel{background:rgba(255,255,255,200);color:black;border-radius:3px;"
                             "padding-left:3px}");
  }
}

}  // namespace trel
