#include "shell/commander/CopyJob.h"

#include <QElapsedTimer>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <mutex>
#include <thread>

#include "base/SafeCopy.h"

namespace trel {

// Works through the files handed over, in order, on a thread of its own. Esc
// or a failure ends the batch between files (Esc also within a large one);
// `onEnd` runs on the worker's thread when the last file handed over is done
// and no more will come.
class CopyWorker {
 public:
  CopyWorker(FileJob kind, const std::atomic<bool>& escape, std::function<void()> onEnd)
      : kind_(kind), escape_(escape), onEnd_(std::move(onEnd)) {
    thread_ = std::thread([this] { Run(); });
  }
  ~CopyWorker() {
    Close();
    if (thread_.joinable()) thread_.join();
  }
  void Push(CopyItem job) {
    std::lock_guard lock(mutex_);
    // The worker only sleeps on an empty queue: a wake-up for every file of a
    // long batch would cost a switch of threads each.
    const bool idle = queue_.empty();
    queue_.push_back(std::move(job));
    if (idle) wake_.notify_one();
  }
  void Close() {
    std::lock_guard lock(mutex_);
    closed_ = true;
    wake_.notify_one();
  }
  bool failed() const { return failed_.load(); }
  int done() const { return done_.load(std::memory_order_relaxed); }
  int64_t bytesDone() const { return bytesDone_.load(std::memory_order_relaxed); }
  int64_t bytesTotal() const { return bytesTotal_.load(std::memory_order_relaxed); }
  std::string error() {
    std::lock_guard lock(mutex_);
    return error_;
  }

 private:
  void Run() {
    const CopyProgress progress = [this](int64_t done, int64_t total) {
      bytesDone_.store(done, std::memory_order_relaxed);
      bytesTotal_.store(total, std::memory_order_relaxed);
    };
    std::deque<CopyItem> batch;
    for (;;) {
      {
        // Whatever has been handed over is taken at once, so the window's
        // thread and this one meet at the lock once a batch, not once a file.
        std::unique_lock lock(mutex_);
        wake_.wait(lock, [this] { return closed_ || !queue_.empty(); });
        if (queue_.empty()) break;
        batch.swap(queue_);
      }
      for (CopyItem& job : batch) {
        if (escape_.load(std::memory_order_relaxed) || failed_.load()) continue;  // drain without work
        bytesDone_.store(0, std::memory_order_relaxed);
        bytesTotal_.store(0, std::memory_order_relaxed);
        const FileOpResult result = Do(job, progress);
        if (result.ok) {
          done_.fetch_add(1, std::memory_order_relaxed);
        } else if (!result.cancelled) {
          std::lock_guard lock(mutex_);
          if (error_.empty()) error_ = result.error;
          // Erasing goes on past what can't be erased.
          if (kind_ == FileJob::Copy || kind_ == FileJob::Move) failed_ = true;
        }
      }
      batch.clear();
    }
    onEnd_();
  }

  FileOpResult Do(const CopyItem& job, const CopyProgress& progress) {
    switch (kind_) {
      case FileJob::Copy: return copier_.Copy(job.source, job.target, progress, &escape_, job.replace);
      case FileJob::Move: return copier_.Move(job.source, job.target, progress, &escape_, job.replace);
      case FileJob::Erase: {
        FileOpResult result;
        std::error_code ec;
        result.ok = std::filesystem::remove(job.source, ec);
        if (!result.ok) result.error = job.source + " couldn't be erased: " + ec.message();
        return result;
      }
      case FileJob::EraseTree: {
        FileOpResult result;
        const int left = RemoveTree(job.source);
        result.ok = left == 0;
        if (!result.ok) result.error = std::to_string(left) + " files or folders couldn't be deleted.";
        return result;
      }
    }
    return {};
  }

  const FileJob kind_;
  FileCopier copier_;  // used by the worker's thread only
  const std::atomic<bool>& escape_;
  std::function<void()> onEnd_;
  std::thread thread_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<CopyItem> queue_;
  bool closed_ = false;
  std::string error_;
  std::atomic<bool> failed_{false};
  std::atomic<int> done_{0};
  std::atomic<int64_t> bytesDone_{0};
  std::atomic<int64_t> bytesTotal_{0};
};

CopyJob::CopyJob(std::vector<CopyItem> items, FileJob kind, std::atomic<bool>& escape, Ask ask, QObject* parent)
    : QObject(parent), items_(std::move(items)), escape_(escape), ask_(std::move(ask)) {
  worker_ = std::make_unique<CopyWorker>(kind, cancel_, [this] {
    // The worker's last act: the end is announced on the window's thread.
    QMetaObject::invokeMethod(this, &CopyJob::End, Qt::QueuedConnection);
  });
  ticker_.setInterval(100);
  connect(&ticker_, &QTimer::timeout, this, &CopyJob::Report);
}

CopyJob::~CopyJob() {
  // A job dropped while it runs (its window closes) stops at once and leaves
  // nothing half-written: the worker removes the temporary copy it was making.
  cancel_ = true;
  worker_.reset();
}

void CopyJob::Start() {
  if (started_) return;
  started_ = true;
  ticker_.start();
  QTimer::singleShot(0, this, &CopyJob::Feed);
}

void CopyJob::Cancel() { cancel_ = true; }

void CopyJob::Feed() {
  // Thousands of names are asked about in slices, so the window paints and
  // hears Esc in between.
  QElapsedTimer slice;
  slice.start();
  while (next_ < items_.size()) {
    if (escape_.load()) cancel_ = true;
    if (cancel_.load() || worker_->failed()) {
      next_ = items_.size();
      break;
    }
    CopyItem& item = items_[next_++];
    if (item.source.empty()) continue;
    const OverwriteAnswer answer = ask_ ? ask_(item) : OverwriteAnswer::Write;
    if (answer == OverwriteAnswer::Stop) {
      next_ = items_.size();
      break;
    }
    if (answer == OverwriteAnswer::Write) worker_->Push(std::move(item));
    if (slice.elapsed() > 15 && next_ < items_.size()) {
      QTimer::singleShot(0, this, &CopyJob::Feed);
      return;
    }
  }
  worker_->Close();
}

void CopyJob::Report() {
  if (escape_.load()) cancel_ = true;
  emit progress(worker_->done(), total(), worker_->bytesDone(), worker_->bytesTotal());
}

void CopyJob::End() {
  if (ended_) return;
  ended_ = true;
  ticker_.stop();
  emit finished(worker_->done(), QString::fromStdString(worker_->error()));
}

}  // namespace trel
