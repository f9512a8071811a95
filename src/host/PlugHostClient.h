// Trel's side of the Windows plugin host: starts `wine64 trel-plughost.exe`
// (or the 32-bit host under the 32-bit Wine), keeps it running between
// requests so that a repeated preview costs no start-up, and kills it when a
// plugin crashes it or takes longer than the time-out. Pictures go to and from
// the host through files in a private temporary folder.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include <QImage>

#include "hostprotocol/HostProtocol.h"

class QProcess;
class QString;
class QTemporaryDir;

namespace trel {

// The machine a plugin file is built for, from its PE header.
enum class PluginMachine { NotWindows, X86, X64, Other };
PluginMachine PluginMachineOf(const std::string& path);

// A path as the Windows host sees it, in UTF-8: Wine's drive Z: is the file
// system root.
std::string ToWinePath(const std::string& path);

struct HostAnswer {
  enum class Kind { Ok, Failed, Crashed, TimedOut, Unavailable, Cancelled };
  Kind kind = Kind::Ok;
  int code = 0;          // the host's error number (hostprotocol::HostError) when Failed
  std::string message;   // for the user: why it did not work
  bool ok() const { return kind == Kind::Ok; }
};

class PlugHostClient {
 public:
  explicit PlugHostClient(bool is32bit);
  ~PlugHostClient();
  PlugHostClient(const PlugHostClient&) = delete;
  PlugHostClient& operator=(const PlugHostClient&) = delete;

  // Why this host cannot run at all (no Wine, no host program); "" if it can.
  std::string Unavailable() const;

  HostAnswer Probe(const std::string& plugin);
  // Filters `picture` (RGB or RGBA bytes: Format_RGB888 or Format_RGBA8888)
  // in place. `paramsFile` keeps the plugin's parameters between runs, "" for
  // none; `dialog` lets the plugin show its dialog.
  HostAnswer Run(const std::string& plugin, QImage& picture, const std::string& paramsFile, bool dialog);
  HostAnswer About(const std::string& plugin);

  // Time a request may take before the host is killed, in milliseconds; the
  // first request also gets the start-up allowance (Wine's first start in a
  // fresh prefix takes many seconds). A run with the dialog and the about box
  // wait for the user without limit; Esc (setCancel) still stops them.
  void setTimeout(int ms) { timeoutMs_ = ms; }
  int timeout() const { return timeoutMs_; }
  void setStartAllowance(int ms) { startMs_ = ms; }
  // Polled while a request runs (Esc in the program); true stops the host.
  void setCancel(std::function<bool()> cancel) { cancel_ = std::move(cancel); }
  // Called between the short waits for an answer, so that a window can paint
  // and hear Esc while a plugin's dialog stands.
  void setWhileWaiting(std::function<void()> hook) { whileWaiting_ = std::move(hook); }

  bool running() const;
  // The host process's id while it runs, 0 otherwise.
  qint64 processId() const;
  // Ends the host process (it is started again by the next request).
  void Stop();

 private:
  HostAnswer Request(hostprotocol::Request request, int timeoutMs);
  bool Start(std::string& why);
  bool MakeWorkFolder();
  // The host's own channel: two named pipes in the work folder, or none (-1),
  // when the host's standard input and output serve.
  bool OpenChannel(QString& requests, QString& answers);
  void CloseChannel();
  bool Send(const std::string& line);
  // Feeds what the answers pipe holds to answers_; false at the pipe's end.
  bool ReadAnswers();
  // Waits up to `ms` for more of the answer and feeds what came to answers_.
  void WaitForAnswer(int ms);
  uint32_t NextId() { return ++lastId_ != 0 ? lastId_ : ++lastId_; }

  bool is32bit_;
  int timeoutMs_ = 30000;
  int startMs_ = 90000;
  std::unique_ptr<QProcess> process_;
  std::unique_ptr<QTemporaryDir> work_;
  hostprotocol::AnswerReader answers_;
  int requestsFd_ = -1, answersFd_ = -1;
  std::string requestsPath_, answersPath_;
  int channels_ = 0;  // pipes made so far, for fresh names
  uint32_t lastId_ = 0;  // of the last request sent
  std::function<bool()> cancel_;
  std::function<void()> whileWaiting_;
};

// Where the programs are found; the environment may name them
// (TREL_WINE64, TREL_WINE32, TREL_PLUGHOST_DIR). "" when missing.
std::string FindWine(bool is32bit);
std::string FindPlugHost(bool is32bit);

}  // namespace trel
