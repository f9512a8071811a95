#include "shell/commander/ConvertJob.h"

#include "shell/window/WorkerMessages.h"

namespace trel {

// The conversion's messages and Overwrite question go to the window's thread;
// its status line is posted without waiting.
class ConvertJob::Messages : public WorkerMessages, public OverwriteChecker {
 public:
  Messages(ConvertJob* job, UserMessages& ui, OverwriteChecker& overwrite, std::atomic<bool>& escape)
      : WorkerMessages(job, ui, escape), job_(job), overwrite_(overwrite) {}

  void StatusDisplay(const std::string& text) override {
    QMetaObject::invokeMethod(
        job_, [job = job_, line = QString::fromStdString(text)] { emit job->statusChanged(line); },
        Qt::QueuedConnection);
  }
  OverwriteAnswer OverwriteCheck(const std::string& sourcePath, const std::string& targetPath) override {
    auto answer = std::make_shared<OverwriteAnswer>(OverwriteAnswer::Stop);  // a run given up writes nothing more
    OnUiThread([answer, &check = overwrite_, sourcePath, targetPath] {
      *answer = check.OverwriteCheck(sourcePath, targetPath);
    });
    return *answer;
  }

 private:
  ConvertJob* job_;
  OverwriteChecker& overwrite_;
};

ConvertJob::ConvertJob(FFFilter filter, ConvertRequest request, FilterOptions options, UserMessages& ui,
                       OverwriteChecker& overwrite, std::atomic<bool>& escape, QObject* parent)
    : QObject(parent),
      filter_(std::move(filter)),
      request_(std::move(request)),
      options_(std::move(options)),
      messages_(std::make_unique<Messages>(this, ui, overwrite, escape)) {}

ConvertJob::~ConvertJob() {
  if (!worker_.running()) return;
  messages_->GiveUp();
  worker_.Join();
}

void ConvertJob::Start() {
  worker_.Start(this, "Convert", [this] {
    FilterEnv env;
    env.options = options_;
    env.shell = messages_.get();
    report_ = cmd_Convert(filter_, request_, *messages_, env);
  }, [this] { emit finished(); });
}

}  // namespace trel
