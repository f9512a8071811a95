// The copy job of the file commands. The files of a batch are copied or moved
// on a thread of their own while the window keeps running its own event loop:
// the job asks about each file on the window's thread (the Overwrite
// question), in slices, hands the answered files over, and reports progress
// and its end by signals. Erasing files and folder trees runs the same way. Esc cancels through the job: the file being copied
// is dropped with its temporary copy, and no later file starts.
#pragma once

#include <QObject>
#include <QString>
#include <QTimer>
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "shell/commander/CopyPlan.h"

namespace trel {

class CopyWorker;

// What a job does with each file. Copies and moves stop at the first failure;
// erasing goes on and reports the first.
enum class FileJob { Copy, Move, Erase, EraseTree };

class CopyJob : public QObject {
  Q_OBJECT
 public:
  // The question about one file, asked on the window's thread before the
  // file is handed over; it may set whether the file may replace one. None
  // means every file goes.
  using Ask = std::function<OverwriteAnswer(CopyItem&)>;

  // `escape` is the window's Esc flag, read on the window's thread while the
  // job runs; the worker reads the job's own flag, which outlives neither.
  CopyJob(std::vector<CopyItem> items, FileJob kind, std::atomic<bool>& escape, Ask ask = {},
          QObject* parent = nullptr);
  ~CopyJob() override;

  void Start();
  void Cancel();
  bool running() const { return started_ && !ended_; }
  int total() const { return static_cast<int>(items_.size()); }

 signals:
  // Now and then (not once a file): files done, and the bytes of the file
  // being copied.
  void progress(int filesDone, int filesTotal, qint64 bytesDone, qint64 bytesTotal);
  // Once, on the window's thread: how many files were done and the first
  // error (empty when none; a cancel is no error).
  void finished(int done, const QString& error);

 private:
  void Feed();
  void Report();
  void End();

  std::vector<CopyItem> items_;
  size_t next_ = 0;
  std::atomic<bool>& escape_;
  std::atomic<bool> cancel_{false};  // what the worker reads
  Ask ask_;
  std::unique_ptr<CopyWorker> worker_;
  QTimer ticker_;
  bool started_ = false;
  bool ended_ = false;
};

}  // namespace trel
