#include "shell/window/Splash.h"

#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>

namespace trel {

Splash::Splash(const QString& version) : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint) {
  setObjectName("frmSplash");
  setAttribute(Qt::WA_DeleteOnClose, false);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(24, 20, 24, 16);
  auto* title = new QLabel("<span style='font-size:28pt; font-weight:bold; color:#2a5ac8'>Trel</span>", this);
  title->setObjectName("lblTitle");
  auto* subtitle = new QLabel("Plugin workbench and Filter Factory tool chain", this);
  auto* versionLine = new QLabel(version, this);
  versionLine->setObjectName("lblVersion");
  status_ = new QLabel("Initializing ...", this);
  status_->setObjectName("lblStatus");
  layout->addWidget(title);
  layout->addWidget(subtitle);
  layout->addSpacing(12);
  layout->addWidget(versionLine);
  layout->addWidget(status_);
  setFixedSize(sizeHint().expandedTo(QSize(380, 180)));
  setStyleSheet("QWidget#frmSplash { background: #f4f6fb; border: 1px solid #8090b0; }");
  if (const QScreen* screen = QGuiApplication::primaryScreen()) move(screen->geometry().center() - rect().center());
}

void Splash::SetStatus(const QString& text) {
  status_->setText(text);
  status_->repaint();
}

QString Splash::status() const { return status_->text(); }

}  // namespace trel
