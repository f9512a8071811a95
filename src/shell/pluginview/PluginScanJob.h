// One scan of a folder for the Plugin View. The walk runs on a thread of its
// own while the window keeps its one event loop: the scan label and the
// percentage reach the window at most every 40 ms (a fast scan doesn't flood
// the queue, a slow one still shows life), its messages are shown on the
// window's thread in the order of the files, and its end comes as a signal.
// Esc anywhere in the program stops it; so does destroying the job.
#pragma once

#include <QObject>
#include <QString>
#include <atomic>
#include <functional>
#include <memory>
#include <string>

#include "catalogue/PluginScanner.h"
#include "shell/window/WorkerMessages.h"
#include "shell/window/WorkerThread.h"

namespace trel {

class ScanCache;

struct PluginScanRequest {
  std::string folder;
  ScanOptions options;
  PluginTypeTable table;              // the job's own copy: the window may edit its table meanwhile
  std::shared_ptr<ScanCache> cache;   // loaded; answers known files, learns the others
  std::function<void(const std::string&)> pacer;  // called on the worker before each file (tests)
};

class PluginScanJob : public QObject {
  Q_OBJECT
 public:
  // `escape` is the window's Esc flag, set when a key press reaches the job's
  // watcher; `ui` shows the scan's messages.
  PluginScanJob(PluginScanRequest request, UserMessages& ui, std::atomic<bool>& escape, QObject* parent);
  // A scan still running is stopped, its open question answered Cancel.
  ~PluginScanJob() override;

  void Start();
  PluginViewEntry entry() const { return entry_; }
  PaneCatalogue& catalogue() { return scanned_; }
  const PluginScanRequest& request() const { return request_; }

 signals:
  void progressed(const QString& label, int percent);
  // Once, on the window's thread, after the walk ended or was stopped.
  void finished();

 private:
  struct Shared;
  void Publish(const std::string* label, const int* percent);

  PluginScanRequest request_;
  std::atomic<bool>& windowEscape_;
  std::unique_ptr<WorkerMessages> messages_;
  std::shared_ptr<Shared> shared_;
  std::unique_ptr<QObject> escapeWatcher_;
  PaneCatalogue scanned_;
  PluginViewEntry entry_ = PluginViewEntry::NothingFound;
  WorkerThread worker_;  // last: joined before the rest goes
};

}  // namespace trel
