// The status row: two labels and the colour bar shared by all long work.
#include <QLabel>
#include <QTime>
#include <cmath>

#include "shell/MainWindow.h"

namespace trel {

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
  (void)percent;
  (void)hide;
}

}  // namespace trel
