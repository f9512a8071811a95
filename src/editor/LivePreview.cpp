#include "editor/LivePreview.h"

#include <QLabel>
#include <QPainter>

#include "editor/EditorLayout.h"
#include "editor/EditorWidgets.h"
#include "host/PreviewPipeline.h"
#include "settings/SettingsStore.h"

namespace trel {

using namespace layout;

namespace {

// A picture to preview on when no picture was chosen and no Test.bmp stands in
// the program folder: colour ramps, a disc and stripes show most filters well.
QImage GeneratedPreviewPicture() {
  QImage img(320, 240, QImage::Format_RGB32);
  for (int y = 0; y < img.height(); ++y)
    for (int x = 0; x < img.width(); ++x)
      img.setPixel(x, y, qRgb(x * 255 / 319, y * 255 / 239, 255 - (x + y) * 255 / 558));
  QPainter p(&img);
  p.setRenderHint(QPainter::Antialiasing);
  p.setBrush(QColor(250, 240, 200));
  p.setPen(QPen(Qt::black, 3));
  p.drawEllipse(QPointF(160, 120), 70, 70);
  for (int i = 0; i < 8; ++i) p.fillRect(20 + i * 12, 180, 6, 40, i % 2 ? Qt::white : Qt::black);
  return img;
}

QImage Thumb(const QImage& source, const QSize& room) {
  if (source.isNull()) return {};
  QImage t = source.scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  return t.convertToFormat(t.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
}

}  // namespace

LivePreview::LivePreview(QWidget* window) : window_(window) { pool_.setMaxThreadCount(1); }

LivePreview::~LivePreview() {
  if (cancel_) cancel_->store(true);
  pool_.waitForDone();
}

void LivePreview::Build() {
  picture_ = Named(new QLabel(window_), "Picture1");
  picture_->setGeometry(kPreview);
  picture_->setAlignment(Qt::AlignCenter);
  picture_->setAccessibleName("Preview");
  picture_->setStyleSheet("QLabel{background:black}");
}

void LivePreview::Prepare(const SettingsStore* store, const std::string& programFolder) {
  std::string path = store ? store->Get("Settings", "PreviewPic") : std::string();
  QImage picture;
  if (!path.empty()) picture = QImage(QString::fromStdString(path));
  if (picture.isNull()) {
    path = programFolder + "Test.bmp";
    picture = QImage(QString::fromStdString(path));
  }
  if (picture.isNull()) {
    path.clear();
    picture = GeneratedPreviewPicture();
  }
  sourcePath_ = path;
  source_ = Thumb(picture, kPreview.size());
}

void LivePreview::SetSource(const QImage& picture) {
  source_ = Thumb(picture, kPreview.size());
  const QSize size = source_.size();
  picture_->setGeometry(kPreview.x() + (kPreview.width() - size.width()) / 2,
                        kPreview.y() + (kPreview.height() - size.height()) / 2, size.width(), size.height());
  ShowSource();
}

void LivePreview::SetSourceFile(const std::string& path, const QImage& picture) {
  sourcePath_ = path;
  SetSource(picture);
}

void LivePreview::ShowSource() {
  result_ = source_;
  picture_->setPixmap(QPixmap::fromImage(source_));
}

QImage LivePreview::FullSource() const {
  QImage full = sourcePath_.empty() ? GeneratedPreviewPicture() : QImage(QString::fromStdString(sourcePath_));
  return full.isNull() ? GeneratedPreviewPicture() : full;
}

void LivePreview::Start(PreviewJob job, bool alphaDisplay) {
  if (cancel_) cancel_->store(true);
  cancel_ = std::make_shared<std::atomic<bool>>(false);
  job.picture = source_;
  job.cancel = cancel_;
  const int id = ++jobCounter_;
  pool_.start([this, job = std::move(job), id, alphaDisplay]() mutable {
    PreviewOutcome out = RunPreviewJob(std::move(job));
    if (out.cancelled) return;
    QMetaObject::invokeMethod(
        this,
        [this, id, alphaDisplay, picture = std::move(out.picture), ok = out.ok,
         message = QString::fromStdString(out.message)]() mutable {
          Done(id, std::move(picture), ok, message, alphaDisplay);
        },
        Qt::QueuedConnection);
  });
}

void LivePreview::Done(int job, QImage result, bool ok, const QString& message, bool alpha) {
  if (job != jobCounter_) return;  // a newer edit is on its way
  jobShown_ = job;
  ++runs_;
  if (ok) {
    if (alpha) PrintOnImage(result, "Alpha", 1);
    result_ = result;
    picture_->setPixmap(QPixmap::fromImage(result));
  }
  emit finished(ok, message);
}


void LivePreview::ShowInPicView(const QImage& picture, const QString& title) {
  if (!picView_) picView_ = new PicView(window_);
  picView_->SetPicture(picture, title);
  picView_->show();
  picView_->raise();
}

QImage LivePreview::Shown() const { return picView_ && picView_->isVisible() ? picView_->Picture() : result_; }

}  // namespace trel
