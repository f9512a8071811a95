#include "shell/dialogs/BrowseDialog.h"

#include <QFileInfo>
#include <QKeyEvent>
#include <QLabel>
#include <QListWidget>
#include <QPainter>
#include <QVBoxLayout>

namespace trel {

namespace {
constexpr int kTile = 160;
}

BrowseDialog::BrowseDialog(std::vector<std::string> plugins, QImage picture, ContactSheetOptions options,
                           QWidget* parent)
    : QDialog(parent),
      plugins_(std::move(plugins)),
      picture_(std::move(picture)),
      options_(std::move(options)),
      tiles_(plugins_.size()) {
  setObjectName("frmBrowse");
  setWindowTitle("Browse Plugins");
  auto* column = new QVBoxLayout(this);
  grid_ = new QListWidget(this);
  grid_->setObjectName("Grid1");
  grid_->setAccessibleName("Plugin previews");
  grid_->setViewMode(QListView::IconMode);
  grid_->setResizeMode(QListView::Adjust);
  grid_->setMovement(QListView::Static);
  grid_->setIconSize(QSize(kTile, kTile));
  grid_->setGridSize(QSize(kTile + 24, kTile + 40));
  grid_->setUniformItemSizes(true);
  QPixmap waiting(kTile, kTile);
  waiting.fill(Qt::lightGray);
  for (const std::string& p : plugins_) {
    auto* item = new QListWidgetItem(QIcon(waiting), QFileInfo(QString::fromLocal8Bit(p.c_str())).fileName());
    item->setToolTip(QString::fromLocal8Bit(p.c_str()));
    grid_->addItem(item);
  }
  column->addWidget(grid_, 1);
  status_ = new QLabel(this);
  status_->setObjectName("Label1");
  column->addWidget(status_);
  connect(grid_, &QListWidget::itemActivated, this, [this](QListWidgetItem* item) {
    emit pluginActivated(QString::fromLocal8Bit(plugins_[size_t(grid_->row(item))].c_str()));
  });
  connect(grid_, &QListWidget::itemClicked, this, [this](QListWidgetItem* item) {
    emit pluginActivated(QString::fromLocal8Bit(plugins_[size_t(grid_->row(item))].c_str()));
  });
  resize(800, 600);
}

BrowseDialog::~BrowseDialog() {
  cancel_ = true;
  if (worker_.joinable()) worker_.join();
}

void BrowseDialog::Start() {
  status_->setText(QString("0 of %1").arg(plugins_.size()));
  options_.cancel = &cancel_;
  worker_ = std::thread([this] {
    RenderContactSheet(plugins_, picture_, options_,
                       [this](size_t i, const QImage& img, const std::string& error) {
                         // The tile is scaled here, on the worker that made it, so
                         // the window's thread only puts finished tiles on show.
                         QImage small = img.isNull() ? QImage() : TileOf(img);
                         // Back to the window's thread; dropped if the dialog is gone.
                         QMetaObject::invokeMethod(
                             this,
                             [this, i, img, small = std::move(small), e = QString::fromStdString(error)] {
                               SetTile(i, img, small, e);
                             },
                             Qt::QueuedConnection);
                       });
  });
}

QImage BrowseDialog::TileOf(const QImage& image) {
  return image.scaled(kTile, kTile, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

void BrowseDialog::SetTile(size_t index, const QImage& image, const QImage& small, const QString& error) {
  if (index >= tiles_.size()) return;
  QImage shown = image;
  QString said = error;
  QImage scaled = small;
  if (shown.isNull() && fallback_ && !cancel_) {
    std::string why;
    shown = fallback_(plugins_[index], why);
    if (!why.empty()) said = QString::fromStdString(why);
    if (!shown.isNull()) scaled = TileOf(shown);
  }
  tiles_[index] = shown;
  ++finished_;
  QPixmap tile(kTile, kTile);
  tile.fill(Qt::white);
  QPainter painter(&tile);
  if (!shown.isNull()) {
    painter.drawImage((kTile - scaled.width()) / 2, (kTile - scaled.height()) / 2, scaled);
  } else {
    painter.setPen(Qt::red);
    painter.drawText(tile.rect().adjusted(4, 4, -4, -4), Qt::AlignCenter | Qt::TextWordWrap, said);
  }
  painter.end();
  grid_->item(int(index))->setIcon(QIcon(tile));
  status_->setText(QString("%1 of %2").arg(finished_).arg(plugins_.size()));
  if (allDone()) emit allFinished();
}

void BrowseDialog::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape) cancel_ = true;
  QDialog::keyPressEvent(event);
}

}  // namespace trel
