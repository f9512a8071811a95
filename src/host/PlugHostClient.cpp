#include "host/PlugHostClient.h"

#include <cerrno>
#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include "hostprotocol/HostProtocol.h"

namespace trel {

namespace {

namespace P = hostprotocol;

// The time allowed to a request that shows a dialog: none.
constexpr int kWaitForUser = -1;

QString Q(const std::string& s) { return QString::fromLocal8Bit(s.data(), qsizetype(s.size())); }

std::string EnvPath(const char* name) {
  const QByteArray v = qgetenv(name);
  return v.isEmpty() ? std::string() : v.toStdString();
}

bool IsExecutable(const QString& path) {
  const QFileInfo info(path);
  return info.isFile() && info.isExecutable();
}

uint32_t Le32(const unsigned char* p) { return p[0] | p[1] << 8 | p[2] << 16 | uint32_t(p[3]) << 24; }

void PutLe32(char* p, uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<char>(v >> (8 * i));
}

bool WritePicture(const QString& path, const QImage& img, int planes) {
  QFile f(path);
  if (!f.open(QIODevice::WriteOnly | QIODevice::Truncate)) return false;
  char head[P::kPictureHeader];
  PutLe32(head, P::kPictureMagic);
  PutLe32(head + 4, uint32_t(img.width()));
  PutLe32(head + 8, uint32_t(img.height()));
  PutLe32(head + 12, uint32_t(planes));
  bool ok = f.write(head, sizeof head) == sizeof head;
  const qint64 row = qint64(img.width()) * planes;
  for (int y = 0; ok && y < img.height(); ++y)
    ok = f.write(reinterpret_cast<const char*>(img.constScanLine(y)), row) == row;
  return ok;
}

bool ReadPicture(const QString& path, QImage& img, int planes) {
  QFile f(path);
  if (!f.open(QIODevice::ReadOnly)) return false;
  const QByteArray head = f.read(P::kPictureHeader);
  if (head.size() != P::kPictureHeader) return false;
  const auto* h = reinterpret_cast<const unsigned char*>(head.constData());
  if (Le32(h) != P::kPictureMagic || int(Le32(h + 4)) != img.width() || int(Le32(h + 8)) != img.height() ||
      int(Le32(h + 12)) != planes)
    return false;
  const qint64 row = qint64(img.width()) * planes;
  for (int y = 0; y < img.height(); ++y)
    if (f.read(reinterpret_cast<char*>(img.scanLine(y)), row) != row) return false;
  return true;
}

}  // namespace

PluginMachine PluginMachineOf(const std::string& path) {
  QFile f(Q(path));
  if (!f.open(QIODevice::ReadOnly)) return PluginMachine::NotWindows;
  const QByteArray dos = f.read(64);
  if (dos.size() < 64 || dos[0] != 'M' || dos[1] != 'Z') return PluginMachine::NotWindows;
  const uint32_t peAt = Le32(reinterpret_cast<const unsigned char*>(dos.constData()) + 60);
  if (!f.seek(peAt)) return PluginMachine::NotWindows;
  const QByteArray pe = f.read(6);
  if (pe.size() < 6 || std::memcmp(pe.constData(), "PE\0\0", 4) != 0) return PluginMachine::NotWindows;
  const auto* m = reinterpret_cast<const unsigned char*>(pe.constData()) + 4;
  switch (m[0] | m[1] << 8) {
    case 0x014C: return PluginMachine::X86;
    case 0x8664: return PluginMachine::X64;
    default: return PluginMachine::Other;
  }
}

std::string ToWinePath(const std::string& path) {
  QString abs = QFileInfo(Q(path)).absoluteFilePath();
  abs.replace('/', '\\');
  return ("Z:" + abs).toUtf8().toStdString();
}

std::string FindWine(bool is32bit) {
  const std::string named = EnvPath(is32bit ? "TREL_WINE32" : "TREL_WINE64");
  if (!named.empty()) return IsExecutable(Q(named)) ? named : std::string();
  if (is32bit) {
    // Debian's 32-bit loader comes with wine32 (architecture i386).
    for (const char* p : {"/usr/lib/wine/wine", "/usr/lib/i386-linux-gnu/wine/wine"})
      if (IsExecutable(p)) return p;
    return {};
  }
  const QString inPath = QStandardPaths::findExecutable("wine64");
  if (!inPath.isEmpty()) return inPath.toStdString();
  for (const char* p : {"/usr/lib/wine/wine64", "/usr/lib/x86_64-linux-gnu/wine/wine64"})
    if (IsExecutable(p)) return p;
  return {};
}

std::string FindPlugHost(bool is32bit) {
  const QString exe = is32bit ? "trel-plughost32.exe" : "trel-plughost.exe";
  QStringList folders;
  const std::string named = EnvPath("TREL_PLUGHOST_DIR");
  if (!named.empty()) folders << Q(named);
  if (QCoreApplication::instance()) {
    const QString app = QCoreApplication::applicationDirPath();
    folders << app << app + "/plughost" << app + "/../plughost" << app + "/../../plughost";
  }
#ifdef TREL_PLUGHOST_BUILD_DIR
  folders << TREL_PLUGHOST_BUILD_DIR;
#endif
  for (const QString& folder : folders) {
    const QString candidate = folder + "/" + exe;
    if (QFileInfo(candidate).isFile()) return QFileInfo(candidate).absoluteFilePath().toStdString();
  }
  return {};
}

PlugHostClient::PlugHostClient(bool is32bit) : is32bit_(is32bit) {
  const QByteArray t = qgetenv("TREL_PLUGHOST_TIMEOUT_MS");
  if (t.toInt() > 0) timeoutMs_ = t.toInt();
}

PlugHostClient::~PlugHostClient() { Stop(); }

std::string PlugHostClient::Unavailable() const {
  if (FindWine(is32bit_).empty())
    return is32bit_ ? "32-bit plugins need the 32-bit Wine (Debian package wine32, architecture i386), "
                      "which is not installed."
                    : "Windows plugins need Wine: the program wine64 (Debian package wine64) was not found.";
  if (FindPlugHost(is32bit_).empty())
    return std::string("The Windows plugin host ") + (is32bit_ ? "trel-plughost32.exe" : "trel-plughost.exe") +
           " was not found (it is built with the mingw-w64 cross compilers).";
  return {};
}

bool PlugHostClient::running() const { return process_ && process_->state() != QProcess::NotRunning; }

qint64 PlugHostClient::processId() const { return running() ? process_->processId() : 0; }

void PlugHostClient::Stop() {
  if (!process_) return;
  if (process_->state() != QProcess::NotRunning) {
    P::Request quit;
    quit.id = NextId();
    Send(P::FormatRequest(quit));
    process_->closeWriteChannel();
    if (!process_->waitForFinished(2000)) {
      process_->kill();
      process_->waitForFinished(2000);
    }
  }
  process_.reset();
  CloseChannel();
}

bool PlugHostClient::MakeWorkFolder() {
  if (work_) return true;
  work_ = std::make_unique<QTemporaryDir>();
  if (work_->isValid()) return true;
  work_.reset();
  return false;
}

bool PlugHostClient::OpenChannel(QString& requests, QString& answers) {
  CloseChannel();
  if (!MakeWorkFolder()) return false;
  // Fresh pipes for each host: a pipe whose writer has gone stays at its end.
  const QString n = QString::number(++channels_);
  requests = work_->filePath("requests" + n);
  answers = work_->filePath("answers" + n);
  requestsPath_ = requests.toLocal8Bit().toStdString();
  answersPath_ = answers.toLocal8Bit().toStdString();
  if (::mkfifo(requestsPath_.c_str(), 0600) != 0 || ::mkfifo(answersPath_.c_str(), 0600) != 0) {
    CloseChannel();
    return false;
  }
  // Neither open waits: the answers are read without waiting for a writer,
  // and the host's end of the requests finds a writer there from the start.
  answersFd_ = ::open(answersPath_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  requestsFd_ = ::open(requestsPath_.c_str(), O_RDWR | O_CLOEXEC);
  if (answersFd_ < 0 || requestsFd_ < 0) {
    CloseChannel();
    return false;
  }
  return true;
}

void PlugHostClient::CloseChannel() {
  for (int* fd : {&requestsFd_, &answersFd_}) {
    if (*fd >= 0) ::close(*fd);
    *fd = -1;
  }
  for (std::string* path : {&requestsPath_, &answersPath_}) {
    if (!path->empty()) ::unlink(path->c_str());
    path->clear();
  }
  answers_.Clear();
}

bool PlugHostClient::Send(const std::string& line) {
  if (requestsFd_ < 0) {
    process_->write(line.data(), qint64(line.size()));
    process_->waitForBytesWritten(1000);
    return true;
  }
  for (size_t done = 0; done < line.size();) {
    const ssize_t n = ::write(requestsFd_, line.data() + done, line.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) return false;
    done += size_t(n);
  }
  return true;
}

bool PlugHostClient::ReadAnswers() {
  char chunk[4096];
  ssize_t n;
  while ((n = ::read(answersFd_, chunk, sizeof chunk)) > 0) answers_.Feed(std::string_view(chunk, size_t(n)));
  return n != 0;
}

void PlugHostClient::WaitForAnswer(int ms) {
  if (answersFd_ < 0) {
    if (process_->waitForReadyRead(ms) || process_->bytesAvailable() > 0)
      answers_.Feed(process_->readAllStandardOutput().toStdString());
    return;
  }
  pollfd p{answersFd_, POLLIN, 0};
  // After the host closed its end only its exit is still to come, and the
  // pipe is always ready: then the wait is for the process.
  const bool ended = ::poll(&p, 1, ms) > 0 && !ReadAnswers();
  process_->waitForFinished(ended ? ms : 0);
  // What the host wrote just before it ended (a crash's answer) is still in the pipe.
  if (process_->state() == QProcess::NotRunning) ReadAnswers();
}

bool PlugHostClient::Start(std::string& why) {
  why = Unavailable();
  if (!why.empty()) return false;
  process_ = std::make_unique<QProcess>();
  // The host's own channel; where named pipes cannot be made, its standard
  // input and output serve.
  QString requests, answers;
  QStringList arguments{Q(FindPlugHost(is32bit_))};
  if (OpenChannel(requests, answers)) {
    arguments << "--channel" << Q(ToWinePath(requests.toStdString())) << Q(ToWinePath(answers.toStdString()));
    process_->setStandardInputFile(QProcess::nullDevice());
    process_->setStandardOutputFile(QProcess::nullDevice());
  }
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  if (!env.contains("WINEDEBUG")) env.insert("WINEDEBUG", "-all");
  // A fresh prefix would otherwise offer to download .NET and HTML engines.
  if (!env.contains("WINEDLLOVERRIDES")) env.insert("WINEDLLOVERRIDES", "mscoree,mshtml=");
  process_->setProcessEnvironment(env);
  process_->setStandardErrorFile(QProcess::nullDevice());
  process_->start(Q(FindWine(is32bit_)), arguments);
  if (!process_->waitForStarted(10000)) {
    why = "Wine could not be started: " + process_->errorString().toStdString();
    process_.reset();
    CloseChannel();
    return false;
  }
  answers_.Clear();
  return true;
}

HostAnswer PlugHostClient::Request(P::Request request, int timeoutMs) {
  int allowance = timeoutMs;
  if (process_ && process_->thread() != QThread::currentThread()) {
    // A process object serves only the thread that made it; a request from
    // another thread (a preview worker) gets a host of its own. The old one
    // is ended here and its object deleted by its own thread.
    const qint64 pid = process_->processId();
    if (pid > 0) ::kill(pid_t(pid), SIGKILL);
    QThread* owner = process_->thread();
    if (!owner || owner->isFinished())
      process_.reset();  // nobody else can touch it any more
    else
      process_.release()->deleteLater();
    CloseChannel();
  }
  if (!running()) {
    std::string why;
    if (!Start(why)) return {HostAnswer::Kind::Unavailable, 0, why};
    allowance += startMs_;
  }
  request.id = NextId();
  if (!Send(P::FormatRequest(request))) {
    Stop();
    return {HostAnswer::Kind::Crashed, static_cast<int>(P::HostError::Crashed),
            "the request could not be given to the plugin host"};
  }
  // A plugin's own dialog may stand as long as the user likes; only Esc
  // (the cancel callback) or the end of the process stops such a request.
  const bool waitsForUser = timeoutMs == kWaitForUser;
  const QDeadlineTimer deadline =
      waitsForUser ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(allowance);
  for (;;) {
    // Only the answer to this request counts: anything else on the channel,
    // and a late answer to a request given up on, is passed by.
    if (const auto got = answers_.Take(request.id)) {
      if (got->code == 0) return {};
      HostAnswer answer{HostAnswer::Kind::Failed, got->code, got->text};
      if (answer.code == static_cast<int>(P::HostError::Crashed)) {
        answer.kind = HostAnswer::Kind::Crashed;
        Stop();
      }
      return answer;
    }
    if (process_->state() == QProcess::NotRunning) {
      // A plugin that breaks the host beyond its own crash handler (a ruined
      // stack, a call to exit): the same cause as a crash, in the same words.
      const int exitCode = process_->exitCode();
      Stop();
      return {HostAnswer::Kind::Crashed, static_cast<int>(P::HostError::Crashed),
              "the plugin host ended while running the plugin (exit code " + std::to_string(exitCode) + ")"};
    }
    if (cancel_ && cancel_()) {
      // A plugin cannot be interrupted from outside but by ending its process.
      process_->kill();
      process_->waitForFinished(3000);
      Stop();
      return {HostAnswer::Kind::Cancelled, 0, "stopped by the user"};
    }
    if (deadline.hasExpired()) {
      process_->kill();
      process_->waitForFinished(3000);
      Stop();
      return {HostAnswer::Kind::TimedOut, 0,
              "the plugin did not finish within " + std::to_string(allowance / 1000) +
                  " seconds and was stopped"};
    }
    if (whileWaiting_) whileWaiting_();
    const int step = 50;
    const int wait = waitsForUser ? step : int(std::min<qint64>(deadline.remainingTime(), step));
    WaitForAnswer(wait < 1 ? 1 : wait);
  }
}

HostAnswer PlugHostClient::Probe(const std::string& plugin) {
  P::Request probe;
  probe.verb = P::Verb::Probe;
  probe.plugin = ToWinePath(plugin);
  return Request(std::move(probe), timeoutMs_);
}

HostAnswer PlugHostClient::About(const std::string& plugin) {
  P::Request about;
  about.verb = P::Verb::About;
  about.plugin = ToWinePath(plugin);
  // An about box waits for the user.
  return Request(std::move(about), kWaitForUser);
}

HostAnswer PlugHostClient::Run(const std::string& plugin, QImage& picture, const std::string& paramsFile,
                               bool dialog) {
  const int planes = picture.format() == QImage::Format_RGBA8888 ? 4 : 3;
  if (planes == 3 && picture.format() != QImage::Format_RGB888)
    return {HostAnswer::Kind::Failed, static_cast<int>(P::HostError::BadPicture), "unsupported picture format"};
  if (!MakeWorkFolder())
    return {HostAnswer::Kind::Failed, static_cast<int>(P::HostError::BadPicture),
            "no temporary folder for the pictures"};
  const QString in = work_->filePath("in.trpx"), out = work_->filePath("out.trpx");
  QFile::remove(out);
  if (!WritePicture(in, picture, planes))
    return {HostAnswer::Kind::Failed, static_cast<int>(P::HostError::BadPicture), "the picture could not be written"};
  P::Request run;
  run.verb = P::Verb::Run;
  run.plugin = ToWinePath(plugin);
  run.input = ToWinePath(in.toStdString());
  run.output = ToWinePath(out.toStdString());
  run.params = paramsFile.empty() ? std::string() : ToWinePath(paramsFile);
  run.dialog = dialog;
  HostAnswer a = Request(std::move(run), dialog ? kWaitForUser : timeoutMs_);
  if (!a.ok()) return a;
  QImage result(picture.size(), picture.format());
  if (!ReadPicture(out, result, planes))
    return {HostAnswer::Kind::Failed, static_cast<int>(P::HostError::BadPicture), "the result could not be read"};
  picture = std::move(result);
  return a;
}

}  // namespace trel
