#include "editor/PreviewRunner.h"

#include <mutex>

#include "filter/PluginCompiler.h"
#include "front/UserMessages.h"
#include "host/PluginHost.h"

namespace trel {

namespace {

// temp.dll is one file in the program folder: one compile-and-run at a time.
std::mutex& TempPluginMutex() {
  static std::mutex m;
  return m;
}

// Keeps the first message of a run instead of showing boxes from a worker.
class RecordingShell : public UserMessages {
 public:
  MsgResult MsgBox(const std::string& text, MsgButtons, MsgIcon, const std::string&) override {
    if (first.empty()) first = text;
    return MsgResult::Ok;
  }
  void ErrorMessage(const std::string& description) override {
    if (first.empty()) first = description;
  }
  bool ErrorMessage2(const std::string& description) override {
    if (first.empty()) first = description;
    return false;
  }
  std::string first;
};

}  // namespace

PreviewOutcome RunPreviewJob(PreviewJob job) {
  PreviewOutcome out;
  const auto cancelled = [&job] { return job.cancel && job.cancel->load(); };
  std::lock_guard<std::mutex> lock(TempPluginMutex());
  QImage picture = std::move(job.picture);
  for (const PassCodes& codes : job.passes) {
    if (cancelled()) {
      out.cancelled = true;
      return out;
    }
    RecordingShell shell;
    FilterEnv env;
    env.options = job.options;
    env.shell = &shell;
    FFFilter f = job.filter;
    f.codeR = codes[0];
    f.codeG = codes[1];
    f.codeB = codes[2];
    f.codeA = codes[3];
    Write8bf(f, job.options.programFolder, true, false, env);
    if (!shell.first.empty()) {
      out.message = shell.first;
      return out;
    }
    ImageLibrary lib(shell);
    lib.setCancel(cancelled);
    HostState state;
    state.PreviewImage = lib.Adopt(picture);
    WindowHandle parent = 0;
    bool result = false;
    PluginInvoke(lib, state, shell, job.options.programFolder, "temp.dll", nullptr, false, parent,
                 result);
    if (cancelled()) {
      out.cancelled = true;
      return out;
    }
    if (!result) {
      out.message = shell.first.empty() ? "The preview could not run." : shell.first;
      if (!lib.lastCompileError().message.empty())
        out.message += "\n" + lib.lastCompileError().message;
      return out;
    }
    if (QImage* done = lib.image(state.PreviewImage)) picture = *done;
  }
  out.picture = picture;
  out.ok = true;
  return out;
}

}  // namespace trel
