// The thread of a job that the window's thread owns (a scan, a conversion):
// it runs one piece of work, and the job hears of its end on its own thread,
// through the window's one event loop.
#pragma once

#include <QObject>
#include <QThread>
#include <functional>

namespace trel {

class WorkerThread {
 public:
  WorkerThread() = default;
  WorkerThread(const WorkerThread&) = delete;
  WorkerThread& operator=(const WorkerThread&) = delete;
  ~WorkerThread() { Join(); }

  // Runs `work` on a new thread named `name`; `ended` runs on `context`'s
  // thread after `work` returned, unless the thread was joined before.
  void Start(QObject* context, const char* name, std::function<void()> work, std::function<void()> ended) {
    thread_ = QThread::create(std::move(work));
    thread_->setObjectName(name);
    QObject::connect(thread_, &QThread::finished, context, [this, ended = std::move(ended)] {
      Join();
      ended();
    });
    thread_->start();
  }
  bool running() const { return thread_ != nullptr; }
  // Waits for the work to return.
  void Join() {
    if (!thread_) return;
    thread_->wait();
    delete thread_;
    thread_ = nullptr;
  }

 private:
  QThread* thread_ = nullptr;
};

}  // namespace trel
