#include "shell/preview/PreviewWindow.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMainWindow>
#include <QMenuBar>
#include <QScreen>
#include <QStyle>
#include <QToolBar>
#include <QPixmap>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "host/PreviewPipeline.h"

namespace trel {

PreviewWindow::PreviewWindow(QWidget* parent) : QWidget(parent, Qt::Tool) {
  setObjectName("frmPreview");
  setWindowTitle("Preview");
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(4, 4, 4, 4);
  picture1_ = new QLabel(this);
  picture1_->setObjectName("Picture1");
  picture1_->setAccessibleName("Preview picture");
  picture1_->setAlignment(Qt::AlignCenter);
  picture1_->setMinimumSize(160, 120);
  column->addWidget(picture1_, 1);
  auto* row = new QHBoxLayout;
  struct Button {
    const char* name;
    const char* caption;
    const char* tip;
    void (PreviewWindow::*signal)();
  };
  const Button buttons[] = {
      {"cmdUpdateCache", "&Update Cache", "Run the plugin again and replace its cached preview",
       &PreviewWindow::updateCacheRequested},
      {"cmdRandomize", "&Randomize", "Random control values for the filter in hand",
       &PreviewWindow::randomizeRequested},
      {"cmdSavePreview", "&Save Preview...", "Save the preview picture to a file",
       &PreviewWindow::savePreviewRequested},
      {"cmdClearCache", "&Clear Cache", "Delete all files from the cache sub folder",
       &PreviewWindow::clearCacheRequested},
  };
  for (const Button& b : buttons) {
    auto* button = new QPushButton(b.caption, this);
    button->setObjectName(b.name);
    button->setToolTip(b.tip);
    button->setAccessibleName(QString(b.caption).remove('&'));
    connect(button, &QPushButton::clicked, this, b.signal);
    row->addWidget(button);
  }
  column->addLayout(row);
}

void PreviewWindow::ShowPicture(const QImage& picture, const QString& name, const QString& note) {
  shown_ = picture;
  setWindowTitle(name.isEmpty() ? QString("Preview") : "Preview - " + name);
  QImage shownWithNote = picture;
  if (!note.isEmpty()) {
    shownWithNote = picture.convertToFormat(QImage::Format_RGB32);
    PrintOnImage(shownWithNote, note.toStdString(), 1);
  }
  picture1_->setPixmap(QPixmap::fromImage(shownWithNote));
  picture1_->setMinimumSize(picture.size().boundedTo(QSize(1024, 768)));
  // The window follows the picture's size, also when a smaller one comes.
  picture1_->resize(picture1_->minimumSize());
  adjustSize();
}

void PreviewWindow::ShowMessage(const QString& text) {
  shown_ = QImage();
  picture1_->setPixmap(QPixmap());
  picture1_->setText(text);
}

void PreviewWindow::showEvent(QShowEvent* event) {
  if (!placed_) {
    placed_ = true;
    PlaceBesideOwner();
  }
  QWidget::showEvent(event);
}

void PreviewWindow::PlaceBesideOwner() {
  QWidget* owner = parentWidget() ? parentWidget()->window() : nullptr;
  if (!owner || !owner->isVisible()) return;
  adjustSize();
  const QRect outer = owner->frameGeometry();
  const QRect inner = owner->geometry();
  const QRect screen = owner->screen() ? owner->screen()->availableGeometry() : QRect();
  const QSize size = frameGeometry().size();
  const int gap = 8;
  if (screen.isValid() && outer.right() + gap + size.width() <= screen.right()) {
    move(outer.right() + gap, outer.top());
    return;
  }
  // Below the menu bar and the tool bar, at the right of the lists.
  int top = inner.top();
  if (auto* main = qobject_cast<QMainWindow*>(owner)) {
    if (main->menuWidget()) top = std::max(top, main->menuWidget()->mapToGlobal(QPoint(0, main->menuWidget()->height())).y());
    for (QToolBar* bar : main->findChildren<QToolBar*>())
      if (bar->isVisible() && main->toolBarArea(bar) == Qt::TopToolBarArea)
        top = std::max(top, bar->mapToGlobal(QPoint(0, bar->height())).y());
  }
  const int x = std::max(inner.left(), inner.right() - size.width() - gap);
  // Before its first showing the window's frame isn't known, and a window
  // manager may hang the title bar above the position given: leave room for it.
  const int titleBar = frameGeometry().height() > height() ? 0 : style()->pixelMetric(QStyle::PM_TitleBarHeight);
  move(x, top + gap + titleBar);
}

void PreviewWindow::closeEvent(QCloseEvent* event) {
  QWidget::closeEvent(event);
  emit closed();
}

}  // namespace trel
