#include "shell/preview/BatchJob.h"

#include "host/PreviewRender.h"
#include "shell/window/WorkerMessages.h"

namespace trel {

BatchJob::BatchJob(BatchRequest request, UserMessages& ui, std::atomic<bool>& escape, QObject* parent)
    : QObject(parent),
      request_(std::move(request)),
      messages_(std::make_unique<WorkerMessages>(this, ui, escape)) {}

BatchJob::~BatchJob() {
  if (!worker_.running()) return;
  messages_->GiveUp();
  worker_.Join();
}

void BatchJob::Start() {
  worker_.Start(this, "Batch", [this] { Run(); }, [this] { emit finished(); });
}

void BatchJob::Run() {
  const auto cancelled = [this] { return messages_->EscapePressed(); };
  // Our own filters run straight on the engine; any other plugin goes
  // through the host, which says first, on a one-pixel picture, what it
  // can't run.
  ImageLibrary library(*messages_);
  library.setCancel(cancelled);
  const PreparedFilter filter = PrepareFilter(request_.plugin);
  PictureRunner run;
  if (filter.ok()) {
    run = [&](const QImage& in) { return RenderWith(filter, in, cancelled); };
  } else {
    run = [&](const QImage& in) {
      return library.RunPlugInOnce(request_.hostFolder, request_.plugin, in, request_.owner);
    };
    QImage probe(1, 1, QImage::Format_RGB888);
    probe.fill(Qt::gray);
    int32_t status = IMG_OK;
    std::string why;
    if (library.RunPlugInOnce(request_.hostFolder, request_.plugin, probe, request_.owner, &status, &why).isNull()) {
      messages_->MsgBox(why.empty() ? ImgStatusText(status) : why, MsgButtons::Ok, MsgIcon::Exclamation,
                        "Image Library");
      refused_ = true;
      return;
    }
  }
  result_ = BatchApply(
      run, request_.pictures, request_.targetFolder,
      [this](const std::string& target) {
        const MsgResult answer = messages_->MsgBox(target + " already exists.\n\nDo you want to replace it?",
                                                   MsgButtons::YesNoCancel, MsgIcon::Question, "Overwrite");
        return answer == MsgResult::Yes  ? OverwriteAnswer::Write
               : answer == MsgResult::No ? OverwriteAnswer::Skip
                                         : OverwriteAnswer::Stop;
      },
      [this](size_t done, size_t total) { emit progressed(int(done), int(total)); }, cancelled);
}

}  // namespace trel
