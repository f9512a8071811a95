// The messages of work that runs on a thread of its own (a scan, a
// conversion): each question is shown by the window's thread while the work
// waits for the answer, so the boxes come in the order of the work and the
// window's event loop is the only one. Esc is the window's flag.
#pragma once

#include <QObject>
#include <atomic>
#include <functional>
#include <memory>

#include "front/UserMessages.h"

namespace trel {

class WorkerMessages : public UserMessages {
 public:
  // `context` lives on the window's thread; `ui` outlives every job.
  WorkerMessages(QObject* context, UserMessages& ui, std::atomic<bool>& escape);

  MsgResult MsgBox(const std::string& text, MsgButtons buttons, MsgIcon icon, const std::string& title) override;
  void ErrorMessage(const std::string& description) override;
  bool ErrorMessage2(const std::string& description) override;
  void RefreshActivePane() override;
  // Esc of the window, or of this work alone.
  bool EscapePressed() override { return stop_.load() || escape_.load(); }

  // This work's own Esc: the window's flag may be cleared for the next work
  // before this one has seen it.
  void Stop() { stop_.store(true); }
  // On the window's thread, when the work is given up (its window closes):
  // it stops, a question waiting for its answer gets the box's Cancel, and
  // no further box is shown.
  void GiveUp();

 protected:
  // Runs `call` on the window's thread and waits for it, or until the work is
  // abandoned. The call owns what it touches: a box still open when its job
  // is given up writes its answer into nothing that has gone.
  void OnUiThread(std::function<void()> call);

 private:
  struct Channel;
  QObject* context_;
  UserMessages& ui_;
  std::atomic<bool>& escape_;
  std::atomic<bool> stop_{false};
  std::shared_ptr<Channel> channel_;
};

}  // namespace trel
