// The editor's preview: the source picture at preview size, the result shown
// over it, and the runs that make results. A run goes to a worker thread, one
// at a time; a new run cancels the one before it, and only the newest result
// is shown. The full-size source and the Picture Editor that shows a filter
// applied to it belong here too.
#pragma once

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QThreadPool>
#include <atomic>
#include <memory>
#include <string>

#include "editor/PreviewRunner.h"
#include "picture/PicView.h"

class QLabel;
class QWidget;

namespace trel {

class SettingsStore;

class LivePreview : public QObject {
  Q_OBJECT
 public:
  explicit LivePreview(QWidget* window);
  ~LivePreview() override;

  void Build();
  // The source at start: the picture last chosen, else Test.bmp of the
  // program folder, else a picture of our own.
  void Prepare(const SettingsStore* store, const std::string& programFolder);
  // A new source, scaled to preview size and shown as it is.
  void SetSource(const QImage& picture);
  // The source read from `path`, kept for the next start.
  void SetSourceFile(const std::string& path, const QImage& picture);
  const std::string& sourcePath() const { return sourcePath_; }
  const QImage& source() const { return source_; }
  QImage result() const { return result_; }
  // The source as the result, as before any run.
  void ShowSource();
  // The source at full size, for "Apply (Filter)".
  QImage FullSource() const;

  // Starts a run of `job` on the source; "Alpha" is printed on the result
  // with `alphaDisplay`. finished() follows unless a newer run replaces it.
  void Start(PreviewJob job, bool alphaDisplay);
  // No run is running or pending: the picture shows the last edit.
  bool idle() const { return jobShown_ == jobCounter_; }
  int runs() const { return runs_; }

  // The Picture Editor with `picture` in it, made on first use.
  void ShowInPicView(const QImage& picture, const QString& title);
  PicView* picView() const { return picView_; }
  // What "Save Picture" writes: the Picture Editor's picture while it shows, else the result.
  QImage Shown() const;

 signals:
  void finished(bool ok, const QString& message);

 private:
  void Done(int job, QImage result, bool ok, const QString& message, bool alpha);

  QWidget* window_;
  QLabel* picture_ = nullptr;
  QImage source_;  // the source at preview size
  QImage result_;  // the last result shown
  std::string sourcePath_;
  QPointer<PicView> picView_;
  QThreadPool pool_;
  std::shared_ptr<std::atomic<bool>> cancel_;
  int jobCounter_ = 0;
  int jobShown_ = 0;
  int runs_ = 0;
};

}  // namespace trel
