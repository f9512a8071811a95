// trel-plughost.exe: runs Photoshop-compatible filter plugins for Trel, one
// process per architecture, under Wine. It reads requests and writes an answer
// to each (hostprotocol/HostProtocol.h) on a channel of its own: the two named
// pipes given as `--channel REQUESTS ANSWERS`, or else its standard input and
// output, which it then takes for itself. Either way a plugin's own reading
// and printing goes to NUL. It keeps the plugins it has loaded. A plugin that
// crashes takes only this process down; one that hangs is killed by Trel.
#include "PlugHost.h"

#include <atomic>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <string>

namespace trel::plughost {

namespace {

// The protocol's handles, which no plugin knows of: the named pipes Trel
// made for them, or duplicates of the standard handles taken before any
// plugin is loaded.
HANDLE g_requests = INVALID_HANDLE_VALUE;
HANDLE g_answers = INVALID_HANDLE_VALUE;
CRITICAL_SECTION g_answering;
// The id of the request being served, repeated in its answer.
std::atomic<uint32_t> g_requestId{0};

bool TakeChannel(int argc, wchar_t** argv) {
  if (argc == 4 && std::wcscmp(argv[1], L"--channel") == 0) {
    const DWORD share = FILE_SHARE_READ | FILE_SHARE_WRITE;
    g_requests = CreateFileW(argv[2], GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr);
    g_answers = CreateFileW(argv[3], GENERIC_WRITE, share, nullptr, OPEN_EXISTING, 0, nullptr);
    if (g_requests == INVALID_HANDLE_VALUE || g_answers == INVALID_HANDLE_VALUE) return false;
  } else {
    const HANDLE self = GetCurrentProcess();
    if (!DuplicateHandle(self, GetStdHandle(STD_INPUT_HANDLE), self, &g_requests, 0, FALSE,
                         DUPLICATE_SAME_ACCESS) ||
        !DuplicateHandle(self, GetStdHandle(STD_OUTPUT_HANDLE), self, &g_answers, 0, FALSE,
                         DUPLICATE_SAME_ACCESS))
      return false;
  }
  // The C runtime's streams (shared with plugins that use the same runtime)
  // and the handles a plugin with a runtime of its own starts from.
  if (!std::freopen("NUL", "r", stdin) || !std::freopen("NUL", "w", stdout)) return false;
  const HANDLE nul = CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                 OPEN_EXISTING, 0, nullptr);
  if (nul == INVALID_HANDLE_VALUE) return false;
  SetStdHandle(STD_INPUT_HANDLE, nul);
  SetStdHandle(STD_OUTPUT_HANDLE, nul);
  return true;
}

// The next request line without its line end; false at the end of input. A
// line longer than any request is given as "", which nothing answers.
bool NextLine(std::string& line) {
  static std::string pending;
  static bool overlong = false;
  for (;;) {
    const size_t nl = pending.find('\n');
    if (nl != std::string::npos) {
      line = overlong ? std::string() : pending.substr(0, nl);
      pending.erase(0, nl + 1);
      overlong = false;
      return true;
    }
    if (pending.size() > hostprotocol::kMaxLine) {
      overlong = true;
      pending.clear();
    }
    char chunk[4096];
    DWORD got = 0;
    if (!ReadFile(g_requests, chunk, sizeof chunk, &got, nullptr) || got == 0) {
      line = overlong ? std::string() : pending;
      const bool any = !pending.empty();
      pending.clear();
      return any;
    }
    pending.append(chunk, got);
  }
}

const char* ExceptionName(DWORD code) {
  switch (code) {
    case EXCEPTION_ACCESS_VIOLATION: return "access violation";
    case EXCEPTION_ILLEGAL_INSTRUCTION: return "illegal instruction";
    case EXCEPTION_PRIV_INSTRUCTION: return "privileged instruction";
    case EXCEPTION_INT_DIVIDE_BY_ZERO: return "division by zero";
    case EXCEPTION_STACK_OVERFLOW: return "stack overflow";
    case EXCEPTION_DATATYPE_MISALIGNMENT: return "misaligned data";
    case EXCEPTION_IN_PAGE_ERROR: return "page fault";
    default: return "exception";
  }
}

// Wine's exception for a call into a function it does not implement: the
// DLL's and the function's names come with it.
constexpr DWORD kWineStub = 0x80000100;

LONG WINAPI OnCrash(EXCEPTION_POINTERS* info) {
  const EXCEPTION_RECORD* er = info ? info->ExceptionRecord : nullptr;
  const DWORD code = er ? er->ExceptionCode : 0;
  if (code == kWineStub && er->NumberParameters >= 2 && er->ExceptionInformation[0] > 0xFFFF) {
    const char* dll = reinterpret_cast<const char*>(er->ExceptionInformation[0]);
    const ULONG_PTR fn = er->ExceptionInformation[1];
    const std::string name = fn > 0xFFFF ? std::string(reinterpret_cast<const char*>(fn))
                                         : "function #" + std::to_string(fn);
    Answer({HostError::Crashed, "the plugin called " + name + " of " + dll + ", which Wine does not implement"});
    ExitProcess(70);
  }
  char text[96];
  std::snprintf(text, sizeof text, "%s in the plugin's code (exception 0x%08lX)", ExceptionName(code),
                static_cast<unsigned long>(code));
  Answer({HostError::Crashed, text});
  ExitProcess(70);
  return EXCEPTION_EXECUTE_HANDLER;
}

}  // namespace

void Answer(const Failure& f) {
  const uint32_t id = g_requestId;
  if (id == 0) return;  // a line with no id: nobody waits for its answer
  const std::string line = hostprotocol::FormatAnswer({id, static_cast<int>(f.code), f.text});
  EnterCriticalSection(&g_answering);
  size_t done = 0;
  DWORD wrote = 0;
  while (done < line.size() &&
         WriteFile(g_answers, line.data() + done, DWORD(line.size() - done), &wrote, nullptr) && wrote > 0)
    done += wrote;
  LeaveCriticalSection(&g_answering);
}

std::wstring Wide(const std::string& utf8) {
  const int n = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), int(utf8.size()), nullptr, 0);
  std::wstring w(size_t(n > 0 ? n : 0), L'\0');
  if (n > 0) MultiByteToWideChar(CP_UTF8, 0, utf8.data(), int(utf8.size()), &w[0], n);
  return w;
}

FILE* Open(const std::string& utf8, const wchar_t* mode) { return _wfopen(Wide(utf8).c_str(), mode); }

}  // namespace trel::plughost

int wmain(int argc, wchar_t** argv) {
  using namespace trel::plughost;
  using trel::hostprotocol::Verb;
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
  SetUnhandledExceptionFilter(OnCrash);
  InitializeCriticalSection(&g_answering);
  if (!TakeChannel(argc, argv)) return 2;
  // Our stand-ins for runtime DLLs that Wine lacks (MSVCRT10.dll) lie in a
  // folder beside the host, one per architecture; the loader looks there after
  // the plugin's own folder.
  wchar_t self[MAX_PATH];
  const DWORD len = GetModuleFileNameW(nullptr, self, MAX_PATH);
  if (len > 0 && len < MAX_PATH) {
    std::wstring folder(self, len);
    folder.erase(folder.find_last_of(L"\\/") + 1);
#ifdef _WIN64
    folder += L"runtime64";
#else
    folder += L"runtime32";
#endif
    SetDllDirectoryW(folder.c_str());
  }
  CreateThread(nullptr, 0, WatchWindows, nullptr, 0, nullptr);
  for (std::string line; NextLine(line);) {
    const auto request = trel::hostprotocol::ParseRequest(line);
    if (!request) {
      g_requestId = trel::hostprotocol::LeadingId(line);
      Answer({HostError::Usage, "unknown request"});
      continue;
    }
    g_requestId = request->id;
    switch (request->verb) {
      case Verb::Quit: return 0;
      case Verb::Probe: {
        LoadedPlugin* p = nullptr;
        Answer(Load(request->plugin, p));
        break;
      }
      case Verb::Run:
        Answer(RunPlugin(request->plugin, request->input, request->output, request->params, request->dialog));
        break;
      case Verb::About: Answer(About(request->plugin)); break;
    }
  }
  return 0;
}
