// The copy job of the file commands: the files of a batch are copied or moved
// on a thread of their own, so that the window paints and hears Esc while
// bytes move.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <thread>

#include "base/SafeCopy.h"
#include "shell/commander/CopyPlan.h"

namespace trel {

// Works through the jobs on a thread of its own, so that the window paints and
// hears Esc while bytes move. Jobs are handed over one by one as the window
// has asked its questions; Esc or a failure ends the batch between files.
class CopyWorker {
 public:
  CopyWorker(bool move, const std::atomic<bool>& escape) : move_(move), escape_(escape) {
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
  bool finished() const { return finished_.load(); }
  bool failed() const { return failed_.load(); }
  int done() const { return done_.load(); }
  int64_t bytesDone() const { return bytesDone_.load(); }
  int64_t bytesTotal() const { return bytesTotal_.load(); }
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
        if (escape_.load() || failed_.load()) continue;  // drain without work
        bytesDone_.store(0, std::memory_order_relaxed);
        bytesTotal_.store(0, std::memory_order_relaxed);
        const FileOpResult result =
            move_ ? SafeMoveFile(job.source, job.target, progress) : SafeCopyFile(job.source, job.target, progress);
        if (result.ok) {
          done_.fetch_add(1, std::memory_order_relaxed);
        } else {
          std::lock_guard lock(mutex_);
          error_ = result.error;
          failed_ = true;
        }
      }
      batch.clear();
    }
    finished_ = true;
  }

  const bool move_;
  const std::atomic<bool>& escape_;
  std::thread thread_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<CopyItem> queue_;
  bool closed_ = false;
  std::string error_;
  std::atomic<bool> finished_{false};
  std::atomic<bool> failed_{false};
  std::atomic<int> done_{0};
  std::atomic<int64_t> bytesDone_{0};
  std::atomic<int64_t> bytesTotal_{0};
};

}  // namespace trel
