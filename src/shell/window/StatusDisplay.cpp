// The status row: two labels and the colour bar shared by all long work.
#include <QLabel>
#include <QPainter>
#include <QTime>
#include <cmath>

#include "shell/window/MainWindow.h"
#include "shell/window/StatusArea.h"

namespace trel {

StatusArea::StatusArea(QWidget* parent) : QWidget(parent) { setObjectName("StatusArea"); }

void StatusArea::SetBar(int percent, bool thin) {
  percent_ = percent;
  thin_ = thin;
  repaint();
}

int StatusArea::barLength() const { return static_cast<int>(std::lround(percent_ / 100.0 * width())); }

QColor StatusArea::barColour() const {
  // From blue at 0 to red at 100.
  const int red = static_cast<int>(std::lround(percent_ * 2.5));
  return QColor(std::clamp(red, 0, 255), 0, std::clamp(255 - red, 0, 255));
}

void StatusArea::paintEvent(QPaintEvent* event) {
  QWidget::paintEvent(event);
  if (percent_ <= 0) return;
  QPainter painter(this);
  const int h = thin_ ? height() * 2 / 3 : height();
  painter.fillRect(QRect(0, 0, barLength(), h), barColour());
}

void MainWindow::StatusDisplay(long current, long total, double startSeconds) {
  if (current <= 0 || total <= 0) return;  // the display stays as it was
  Progressbar(static_cast<int>(std::lround(100.0 * static_cast<double>(current) / static_cast<double>(total))));
  label3_->setText(QString("%1 of %2").arg(current).arg(total));
  label3_->repaint();
  const double now = QTime::currentTime().msecsSinceStartOfDay() / 1000.0;
  const double elapsed = now - startSeconds;
  const double whole = elapsed * (static_cast<double>(total) / static_cast<double>(current));
  const int remaining = static_cast<int16_t>(std::lround(whole - elapsed)) + 1;
  label4_->setText(QString("%1 sec.").arg(remaining));
  label4_->repaint();
}

void MainWindow::StatusDisplayClear() {
  label3_->clear();
  label4_->clear();
  Progressbar(0);
}

void MainWindow::Progressbar(int percent, bool hide) {
  if (percent > 100 || percent < 0) return;
  statusArea_->SetBar(percent, hide);
}

}  // namespace trel
