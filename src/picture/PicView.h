// PicView, the Picture Editor: one picture, its menus, and plugins applied to it.
#pragma once

#include <QImage>
#include <QMainWindow>

namespace trel {

class PicView : public QMainWindow {
  Q_OBJECT
 public:
  explicit PicView(QWidget* parent = nullptr);

  // The picture shown; an "Apply (Filter)" result arrives through SetPicture.
  void SetPicture(const QImage& picture, const QString& caption = {});
  const QImage& Picture() const { return picture_; }

 private:
  QImage picture_;
};

}  // namespace trel
