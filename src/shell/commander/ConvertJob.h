// One run of the Convert dialog. The conversion runs on a thread of its own
// while the window keeps its one event loop: the Overwrite question and the
// messages are asked on the window's thread in the order of the files, the
// file being converted reaches the status row, and the end comes as a signal.
// Esc stops it between files; so does destroying the job.
#pragma once

#include <QObject>
#include <QString>
#include <atomic>
#include <memory>

#include "filter/BatchConvert.h"
#include "filter/FFFilter.h"
#include "filter/FilterEnv.h"
#include "front/UserMessages.h"
#include "shell/window/WorkerThread.h"

namespace trel {

class ConvertJob : public QObject {
  Q_OBJECT
 public:
  // `filter` is the working record the run reads into and leaves as the last
  // file had it; `ui` and `overwrite` answer on the window's thread.
  ConvertJob(FFFilter filter, ConvertRequest request, FilterOptions options, UserMessages& ui,
             OverwriteChecker& overwrite, std::atomic<bool>& escape, QObject* parent);
  ~ConvertJob() override;

  void Start();
  const ConvertReport& report() const { return report_; }
  FFFilter& filter() { return filter_; }

 signals:
  void statusChanged(const QString& text);
  // Once, on the window's thread.
  void finished();

 private:
  class Messages;

  FFFilter filter_;
  ConvertRequest request_;
  FilterOptions options_;
  std::unique_ptr<Messages> messages_;
  ConvertReport report_;
  WorkerThread worker_;  // last: joined before the rest goes
};

}  // namespace trel
