// The Preview window: a small tool window beside the main window that shows
// what the selected plugin does to the preview picture, with the commands of
// the preview at hand.
#pragma once

#include <QImage>
#include <QWidget>

class QLabel;

namespace trel {

class PreviewWindow : public QWidget {
  Q_OBJECT
 public:
  explicit PreviewWindow(QWidget* parent = nullptr);

  // Shows a picture under a caption ("Preview - name"); a note in red goes
  // over it when set ("cached").
  void ShowPicture(const QImage& picture, const QString& name, const QString& note = {});
  void ShowMessage(const QString& text);
  const QImage& shown() const { return shown_; }
  QLabel* picture1() const { return picture1_; }

 signals:
  void updateCacheRequested();
  void randomizeRequested();
  void savePreviewRequested();
  void clearCacheRequested();
  void closed();  // the user closed the window

 protected:
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  // Where the window first opens: beside the main window when the screen has
  // room, otherwise over its lists, never over its menu bar.
  void PlaceBesideOwner();

  QLabel* picture1_ = nullptr;
  bool placed_ = false;
  QImage shown_;
};

}  // namespace trel
