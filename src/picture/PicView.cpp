#include "picture/PicView.h"

namespace trel {

PicView::PicView(QWidget* parent) : QMainWindow(parent) { setObjectName("PicView"); }

void PicView::SetPicture(const QImage& picture, const QString& caption) {
  picture_ = picture;
  if (!caption.isEmpty()) setWindowTitle(caption);
}

}  // namespace trel
