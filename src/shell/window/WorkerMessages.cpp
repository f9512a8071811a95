#include "shell/window/WorkerMessages.h"

#include <QThread>
#include <condition_variable>
#include <mutex>

namespace trel {

struct WorkerMessages::Channel {
  std::mutex mutex;
  std::condition_variable answered;
  bool answerReady = false;
  bool abandoned = false;
};

WorkerMessages::WorkerMessages(QObject* context, UserMessages& ui, std::atomic<bool>& escape)
    : context_(context), ui_(ui), escape_(escape), channel_(std::make_shared<Channel>()) {}

MsgResult WorkerMessages::MsgBox(const std::string& text, MsgButtons buttons, MsgIcon icon,
                                 const std::string& title) {
  auto result = std::make_shared<MsgResult>(MsgResult::Cancel);
  OnUiThread([result, &ui = ui_, text, buttons, icon, title] { *result = ui.MsgBox(text, buttons, icon, title); });
  return *result;
}

void WorkerMessages::ErrorMessage(const std::string& description) {
  OnUiThread([&ui = ui_, description] { ui.ErrorMessage(description); });
}

bool WorkerMessages::ErrorMessage2(const std::string& description) {
  auto goOn = std::make_shared<bool>(false);  // an abandoned run does not go on
  OnUiThread([goOn, &ui = ui_, description] { *goOn = ui.ErrorMessage2(description); });
  return *goOn;
}

void WorkerMessages::RefreshActivePane() {
  OnUiThread([&ui = ui_] { ui.RefreshActivePane(); });
}

void WorkerMessages::GiveUp() {
  Stop();
  {
    std::lock_guard lock(channel_->mutex);
    channel_->abandoned = true;
  }
  channel_->answered.notify_all();
}

void WorkerMessages::OnUiThread(std::function<void()> call) {
  if (QThread::currentThread() == context_->thread()) {
    call();
    return;
  }
  std::unique_lock lock(channel_->mutex);
  if (channel_->abandoned) return;
  channel_->answerReady = false;
  // Not a blocking queued call: the window's thread may itself be waiting for
  // this worker to end (GiveUp), and must not wait for a box in turn.
  QMetaObject::invokeMethod(
      context_,
      [channel = channel_, call = std::move(call)] {
        if (channel->abandoned) return;
        call();
        {
          std::lock_guard done(channel->mutex);
          channel->answerReady = true;
        }
        channel->answered.notify_all();
      },
      Qt::QueuedConnection);
  channel_->answered.wait(lock, [this] { return channel_->answerReady || channel_->abandoned; });
}

}  // namespace trel
