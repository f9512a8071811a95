// The status row of the main window: Label3 and Label4 over the colour bar
// that long work draws from the left edge.
#pragma once

#include <QColor>
#include <QWidget>

namespace trel {

class StatusArea : public QWidget {
  Q_OBJECT
 public:
  explicit StatusArea(QWidget* parent = nullptr);
  // The bar by percent (0 clears it); `thin` draws it two thirds high.
  void SetBar(int percent, bool thin);
  int percent() const { return percent_; }
  int barLength() const;  // in pixels, from the left edge
  QColor barColour() const;

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  int percent_ = 0;
  bool thin_ = false;
};

}  // namespace trel
