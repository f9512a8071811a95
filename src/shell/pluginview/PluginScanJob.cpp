#include "shell/pluginview/PluginScanJob.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMutex>
#include <QPointer>

#include "catalogue/ScanCache.h"

namespace trel {

namespace {

// Esc anywhere in the program stops the scan, whichever control has the focus
// (the lists of the pane are disabled meanwhile).
class EscapeWatcher : public QObject {
 public:
  EscapeWatcher(std::atomic<bool>& window, WorkerMessages& job) : window_(window), job_(job) {}

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
      window_.store(true);
      job_.Stop();
    }
    return QObject::eventFilter(watched, event);
  }

 private:
  std::atomic<bool>& window_;
  WorkerMessages& job_;
};

}  // namespace

// What the worker has to say and whether a post to the window is on its way.
struct PluginScanJob::Shared {
  QMutex mutex;
  QString label;
  int percent = 0;
  bool posted = false;
  QElapsedTimer sinceLast;
};

PluginScanJob::PluginScanJob(PluginScanRequest request, UserMessages& ui, std::atomic<bool>& escape,
                             QObject* parent)
    : QObject(parent),
      request_(std::move(request)),
      windowEscape_(escape),
      messages_(std::make_unique<WorkerMessages>(this, ui, escape)),
      shared_(std::make_shared<Shared>()) {}

PluginScanJob::~PluginScanJob() {
  if (escapeWatcher_) qApp->removeEventFilter(escapeWatcher_.get());
  if (!worker_.running()) return;
  messages_->GiveUp();
  worker_.Join();
}

void PluginScanJob::Publish(const std::string* label, const int* percent) {
  bool due = false;
  {
    QMutexLocker lock(&shared_->mutex);
    if (label) shared_->label = QString::fromLocal8Bit(label->c_str());
    if (percent) shared_->percent = *percent;
    if (!shared_->posted && shared_->sinceLast.elapsed() >= 40) {
      shared_->posted = true;
      due = true;
      shared_->sinceLast.restart();
    }
  }
  if (!due) return;
  QMetaObject::invokeMethod(
      this,
      [this] {
        QString text;
        int done = 0;
        {
          QMutexLocker lock(&shared_->mutex);
          text = shared_->label;
          done = shared_->percent;
          shared_->posted = false;
        }
        emit progressed(text, done);
      },
      Qt::QueuedConnection);
}

void PluginScanJob::Start() {
  windowEscape_.store(false);
  escapeWatcher_ = std::make_unique<EscapeWatcher>(windowEscape_, *messages_);
  qApp->installEventFilter(escapeWatcher_.get());
  shared_->sinceLast.start();
  worker_.Start(this, "PluginScan", [this] {
    FilterEnv env;
    env.shell = messages_.get();
    ScanCallbacks callbacks;
    callbacks.scanLabel = [this](const std::string& text) {
      if (request_.pacer && !text.empty()) request_.pacer(text);
      Publish(&text, nullptr);
    };
    callbacks.progress = [this](int percent) { Publish(nullptr, &percent); };
    if (request_.cache) callbacks = request_.cache->Wrap(callbacks, request_.options, request_.table, env);
    entry_ = EnterPluginView(scanned_, request_.folder, request_.options, request_.table, env, callbacks);
  }, [this] {
    qApp->removeEventFilter(escapeWatcher_.get());
    escapeWatcher_.reset();
    emit finished();
  });
}

}  // namespace trel
