// One run of Batch Processing: a plugin over a list of pictures, written into
// a folder. The pictures are filtered on a thread of its own with a picture
// library of its own, so the window goes on painting without a nested event
// loop; the Overwrite question and the messages are asked on the window's
// thread in the order of the pictures. Esc stops it between pictures, and so
// does destroying the job.
#pragma once

#include <QObject>
#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "front/UserMessages.h"
#include "host/ContactSheet.h"
#include "host/ImageLibrary.h"
#include "shell/window/WorkerMessages.h"
#include "shell/window/WorkerThread.h"

namespace trel {

struct BatchRequest {
  std::string plugin;
  std::vector<std::string> pictures;
  std::string targetFolder;  // ends with a separator
  std::string hostFolder;    // where the Windows host lives
  WindowHandle owner = 0;    // the window a plugin's messages belong to
};

class BatchJob : public QObject {
  Q_OBJECT
 public:
  // `ui` answers on the window's thread; `escape` is the window's Esc.
  BatchJob(BatchRequest request, UserMessages& ui, std::atomic<bool>& escape, QObject* parent);
  ~BatchJob() override;

  void Start();
  // After `finished`: what was written, and whether the plugin was refused
  // before the first picture (the refusal has been said).
  const BatchResult& result() const { return result_; }
  bool refused() const { return refused_; }

 signals:
  // Before each picture: how many are done of how many.
  void progressed(int done, int total);
  // Once, on the window's thread.
  void finished();

 private:
  void Run();

  BatchRequest request_;
  std::unique_ptr<WorkerMessages> messages_;
  BatchResult result_;
  bool refused_ = false;
  WorkerThread worker_;  // last: joined before the rest goes
};

}  // namespace trel
