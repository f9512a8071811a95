// A label that answers clicks and lights up under the mouse: the editor's name,
// value, code switch and tool labels.
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

 signals:
  void clicked();
  void rightClicked(QPoint globalPos);

 protected:
  void mousePressEvent(QMouseEvent* event) override;
  void enterEvent(QEnterEvent* event) override;
  void leaveEvent(QEvent* event) override;

 private:
  void Restyle();
  bool tool_ = false;
  bool hovered_ = false;
};

}  // namespace trel
