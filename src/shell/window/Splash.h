// frmSplash: shown while the start-up order runs, with the stage it is in.
#pragma once

#include <QWidget>

class QLabel;

namespace trel {

class Splash : public QWidget {
  Q_OBJECT
 public:
  explicit Splash(const QString& version);
  // Writes the stage and repaints at once, so the word stands while the next,
  // blocking stage runs.
  void SetStatus(const QString& text);
  QString status() const;

 private:
  QLabel* status_;
};

}  // namespace trel
