// A label that answers clicks and lights up under the mouse: the editor's name,
// value, code switch and tool labels. A click is a press and a release on the
// label; both stay with the label, so the window body behind it never sees
// them (a release there closes the code boxes). With the keyboard, Space,
// Return or F2 on a focused label click it.
#pragma once

#include <QLabel>

namespace trel {

class ClickLabel : public QLabel {
  Q_OBJECT
 public:
  explicit ClickLabel(const QString& text, QWidget* parent = nullptr);
  // Tool labels get a border under the mouse; the others white text.
  void SetToolStyle(bool tool) { tool_ = tool; Restyle(); }
  bool hovered() const { return hovered_; }
  // A switch shows its state in bold; screen readers hear it as checked.
  void SetCheckable(bool on) { checkable_ = on; }
  bool checkable() const { return checkable_; }
  // What a screen reader hears as the shown text: the label's text unless set.
  void SetSpokenValue(const QString& value) { spokenValue_ = value; }
  QString spokenValue() const { return spokenValue_.isNull() ? text() : spokenValue_; }

 signals:
  void clicked();
  void rightClicked(QPoint globalPos);

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  void Restyle();
  bool tool_ = false;
  bool hovered_ = false;
  bool pressed_ = false;
  bool checkable_ = false;
  QString spokenValue_;
};

}  // namespace trel
