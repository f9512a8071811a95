// Browse: a contact sheet of the selected plugins, each tile the plugin's
// preview on the preview picture. The previews render on worker threads and
// fill in as each finishes; a click on a tile asks for the full preview.
#pragma once

#include <QDialog>
#include <QImage>
#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "host/ContactSheet.h"

class QLabel;
class QListWidget;

namespace trel {

class BrowseDialog : public QDialog {
  Q_OBJECT
 public:
  BrowseDialog(std::vector<std::string> plugins, QImage picture, ContactSheetOptions options,
               QWidget* parent = nullptr);
  ~BrowseDialog() override;

  void Start();
  // Called on the window's thread for a plugin the workers couldn't run.
  // Runs a plugin the engine cannot; on failure it leaves the cause in its second argument.
  void SetFallback(std::function<QImage(const std::string&, std::string&)> fallback) {
    fallback_ = std::move(fallback);
  }
  void Cancel() { cancel_ = true; }
  int finishedCount() const { return finished_; }
  bool allDone() const { return finished_ == int(plugins_.size()); }
  QListWidget* grid() const { return grid_; }
  // The tile of plugin i (null until it has finished).
  QImage tile(int i) const { return tiles_[size_t(i)]; }

 signals:
  void pluginActivated(const QString& path);
  void allFinished();

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  // `small` is `image` scaled to the tile, made on the worker.
  void SetTile(size_t index, const QImage& image, const QImage& small, const QString& error);
  static QImage TileOf(const QImage& image);

  std::vector<std::string> plugins_;
  QImage picture_;
  ContactSheetOptions options_;
  std::vector<QImage> tiles_;
  std::function<QImage(const std::string&, std::string&)> fallback_;
  std::atomic<bool> cancel_{false};
  std::thread worker_;
  int finished_ = 0;
  QListWidget* grid_ = nullptr;
  QLabel* status_ = nullptr;
};

}  // namespace trel
