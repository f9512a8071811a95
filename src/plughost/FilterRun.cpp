// One filter run in trel-plughost.exe: the picture read from its file, the
// plugin's selectors called over it with windows into guarded buffers, the
// result written back; dialogs a plugin opens in a run without its dialog are
// cancelled; the about box.
#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <string>
#include <vector>

#include "PlugHost.h"

namespace trel::plughost {

// --- pictures ----------------------------------------------------------------------
struct Picture {
  int width = 0, height = 0, planes = 0;
  std::vector<unsigned char> bytes;
  unsigned char* at(int x, int y) { return bytes.data() + (size_t(y) * size_t(width) + size_t(x)) * size_t(planes); }
};

void PutLe32(unsigned char* p, uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>(v >> (8 * i));
}

bool ReadPicture(const std::string& path, Picture& pic) {
  FILE* f = Open(path, L"rb");
  if (!f) return false;
  unsigned char head[hostprotocol::kPictureHeader];
  bool ok = std::fread(head, 1, sizeof head, f) == sizeof head && Le32(head) == hostprotocol::kPictureMagic;
  if (ok) {
    pic.width = int(Le32(head + 4));
    pic.height = int(Le32(head + 8));
    pic.planes = int(Le32(head + 12));
    ok = pic.width > 0 && pic.height > 0 && pic.width <= 30000 && pic.height <= 30000 &&
         (pic.planes == 3 || pic.planes == 4);
  }
  if (ok) {
    pic.bytes.resize(size_t(pic.width) * size_t(pic.height) * size_t(pic.planes));
    ok = std::fread(pic.bytes.data(), 1, pic.bytes.size(), f) == pic.bytes.size();
  }
  std::fclose(f);
  return ok;
}

bool WritePicture(const std::string& path, const Picture& pic) {
  FILE* f = Open(path, L"wb");
  if (!f) return false;
  unsigned char head[hostprotocol::kPictureHeader];
  PutLe32(head, hostprotocol::kPictureMagic);
  PutLe32(head + 4, uint32_t(pic.width));
  PutLe32(head + 8, uint32_t(pic.height));
  PutLe32(head + 12, uint32_t(pic.planes));
  bool ok = std::fwrite(head, 1, sizeof head, f) == sizeof head &&
            std::fwrite(pic.bytes.data(), 1, pic.bytes.size(), f) == pic.bytes.size();
  return std::fclose(f) == 0 && ok;
}

// --- the buffers handed to the plugin ------------------------------------------------
// Each buffer has guard bytes on both sides; a plugin that writes into them
// wrote outside what it was given.
constexpr size_t kGuard = 4096;
constexpr unsigned char kGuardByte = 0xA5;

struct GuardedBuffer {
  std::vector<unsigned char> storage;
  size_t size = 0;
  unsigned char* data() { return storage.data() + kGuard; }
  void Reset(size_t n) {
    size = n;
    storage.assign(n + 2 * kGuard, kGuardByte);
  }
  bool Intact() const {
    for (size_t i = 0; i < kGuard; ++i)
      if (storage[i] != kGuardByte || storage[kGuard + size + i] != kGuardByte) return false;
    return true;
  }
};

struct Area {
  PIRect16 rect{};
  int lo = 0, hi = -1;
  bool active = false;
};

// One filter run: the source, the result and the two windows into them.
struct Run {
  PIFilterRecord* rec = nullptr;
  Picture* source = nullptr;
  Picture* result = nullptr;
  GuardedBuffer in, out;
  Area outArea;
  bool overrun = false;
};
Run* g_run = nullptr;

bool EmptyRect(const PIRect16& r) { return r.right <= r.left || r.bottom <= r.top; }

// Copies the requested rectangle and planes of `pic` into `buf`, rows of
// width x planes bytes; pixels outside the picture repeat its edge.
int32_t FillBuffer(GuardedBuffer& buf, Picture& pic, const PIRect16& r, int lo, int hi) {
  const int w = r.right - r.left, h = r.bottom - r.top, np = hi - lo + 1;
  const int32_t rowBytes = w * np;
  buf.Reset(size_t(rowBytes) * size_t(h));
  for (int y = 0; y < h; ++y) {
    const int sy = std::min(std::max(r.top + y, 0), pic.height - 1);
    unsigned char* row = buf.data() + size_t(y) * size_t(rowBytes);
    for (int x = 0; x < w; ++x) {
      const int sx = std::min(std::max(r.left + x, 0), pic.width - 1);
      std::memcpy(row + size_t(x) * size_t(np), pic.at(sx, sy) + lo, size_t(np));
    }
  }
  return rowBytes;
}

void Commit(Run& run) {
  if (!run.outArea.active) return;
  run.outArea.active = false;
  if (!run.out.Intact() || !run.in.Intact()) run.overrun = true;
  const PIRect16& r = run.outArea.rect;
  const int w = r.right - r.left, np = run.outArea.hi - run.outArea.lo + 1;
  for (int y = r.top; y < r.bottom; ++y) {
    if (y < 0 || y >= run.result->height) continue;
    const unsigned char* row = run.out.data() + size_t(y - r.top) * size_t(w) * size_t(np);
    for (int x = r.left; x < r.right; ++x) {
      if (x < 0 || x >= run.result->width) continue;
      std::memcpy(run.result->at(x, y) + run.outArea.lo, row + size_t(x - r.left) * size_t(np), size_t(np));
    }
  }
}

bool PlanesOk(int lo, int hi, int planes) { return lo >= 0 && lo <= hi && hi < planes; }

// Gives the plugin what its rectangles and planes now ask for, after taking
// back what it wrote into the last output window.
PIOSErr Advance() {
  if (!g_run) return piErrPlugInHostInsufficient;
  Run& run = *g_run;
  PIFilterRecord& rec = *run.rec;
  Commit(run);
  if (run.overrun) return piFilterBadParameters;
  const int planes = run.source->planes;
  if (!EmptyRect(rec.inRect) && PlanesOk(rec.inLoPlane, rec.inHiPlane, planes)) {
    rec.inRowBytes = FillBuffer(run.in, *run.source, rec.inRect, rec.inLoPlane, rec.inHiPlane);
    rec.inData = run.in.data();
    rec.inColumnBytes = rec.inHiPlane - rec.inLoPlane + 1;
    rec.inPlaneBytes = 1;
  } else {
    rec.inData = nullptr;
    run.in.Reset(0);
  }
  if (!EmptyRect(rec.outRect) && PlanesOk(rec.outLoPlane, rec.outHiPlane, planes)) {
    rec.outRowBytes = FillBuffer(run.out, *run.result, rec.outRect, rec.outLoPlane, rec.outHiPlane);
    rec.outData = run.out.data();
    rec.outColumnBytes = rec.outHiPlane - rec.outLoPlane + 1;
    rec.outPlaneBytes = 1;
    run.outArea = {rec.outRect, rec.outLoPlane, rec.outHiPlane, true};
  } else {
    rec.outData = nullptr;
    run.out.Reset(0);
  }
  rec.maskData = nullptr;
  return piNoErr;
}

// --- results ----------------------------------------------------------------------------
// The message of a plugin that cannot run without its dialog.
constexpr const char* kNeedsDialog = "This plugin runs only with its dialog: use Invoke";

// A plugin's own words for its error (errReportString): a Pascal string.
unsigned char g_errorString[256];

Failure FromResult(int16_t result, const char* stage, bool dialog) {
  if (result == piNoErr) return {};
  if (result == piUserCanceledErr) {
    // Without a dialog there is nothing the user could have cancelled: the
    // plugin wants its dialog.
    if (!dialog) return {HostError::NeedsDialog, kNeedsDialog};
    return {HostError::Cancelled, "cancelled"};
  }
  if (result == piErrReportString && g_errorString[0] > 0) {
    std::string text(reinterpret_cast<const char*>(g_errorString + 1), g_errorString[0]);
    for (char& c : text)
      if (c == '\n' || c == '\r' || c == '\t') c = ' ';
    return {HostError::PluginError, "the plugin reports: " + text};
  }
  if (g_askedUnsupported)
    return {HostError::Unsupported, std::string("the plugin needs ") + g_unsupportedWhat +
                                        ", which this host does not offer (error " + std::to_string(result) + ")"};
  return {HostError::PluginError,
          std::string("the plugin returned error ") + std::to_string(result) + " at " + stage};
}

// --- no dialogs in a run without the dialog ---------------------------------------------
// A run without the dialog (a preview, an apply from the command line) must
// not wait for a user: a dialog the plugin opens anyway is cancelled, and
// one that does not go is answered for and the host ends.
std::atomic<bool> g_watching{false};
std::atomic<bool> g_windowSeen{false};

struct WindowSweep {
  bool forceful = false;  // WM_CLOSE rather than Cancel
  bool found = false;
};

BOOL CALLBACK CancelOwnWindow(HWND hwnd, LPARAM param) {
  auto* sweep = reinterpret_cast<WindowSweep*>(param);
  DWORD pid = 0;
  GetWindowThreadProcessId(hwnd, &pid);
  if (pid != GetCurrentProcessId() || !IsWindowVisible(hwnd)) return TRUE;
  // Only dialogs and message boxes wait for the user; a plugin's own
  // progress window is left to it.
  wchar_t cls[16] = L"";
  GetClassNameW(hwnd, cls, 16);
  if (std::wcscmp(cls, L"#32770") != 0) return TRUE;
  sweep->found = true;
  g_windowSeen = true;
  if (sweep->forceful) PostMessageW(hwnd, WM_CLOSE, 0, 0);
  else PostMessageW(hwnd, WM_COMMAND, IDCANCEL, 0);
  return TRUE;
}

DWORD WINAPI WatchWindows(LPVOID) {
  int standing = 0;  // sweeps in a row that found a window
  for (;;) {
    Sleep(50);
    if (!g_watching) {
      standing = 0;
      continue;
    }
    WindowSweep sweep;
    sweep.forceful = standing > 20;
    EnumWindows(CancelOwnWindow, reinterpret_cast<LPARAM>(&sweep));
    standing = sweep.found ? standing + 1 : 0;
    if (standing > 60) {  // about three seconds of cancelling did not close it
      Answer({HostError::DialogInPreview,
              std::string("the plugin opened a window that could not be closed in a run without its dialog. ") +
                  kNeedsDialog});
      ExitProcess(71);
    }
  }
}

struct WatchScope {
  explicit WatchScope(bool on) {
    g_windowSeen = false;
    g_watching = on;
  }
  ~WatchScope() { g_watching = false; }
};

void LoadParameters(LoadedPlugin& p, const std::string& file) {
  if (file.empty()) return;
  FILE* f = Open(file, L"rb");
  if (!f) return;
  std::vector<char> bytes;
  char chunk[4096];
  size_t n;
  while ((n = std::fread(chunk, 1, sizeof chunk, f)) > 0) bytes.insert(bytes.end(), chunk, chunk + n);
  std::fclose(f);
  if (bytes.empty()) return;
  if (!IsOurHandle(p.parameters)) p.parameters = nullptr;
  if (!p.parameters) p.parameters = NewHandle(int32_t(bytes.size()));
  else SetHandleSize(p.parameters, int32_t(bytes.size()));
  if (p.parameters) std::memcpy(*p.parameters, bytes.data(), bytes.size());
}

void SaveParameters(const LoadedPlugin& p, const std::string& file) {
  // Only a handle of ours has a known size; one the plugin made itself stays in memory.
  if (file.empty() || !IsOurHandle(p.parameters)) return;
  FILE* f = Open(file, L"wb");
  if (!f) return;
  std::fwrite(*p.parameters, 1, size_t(GetHandleSize(p.parameters)), f);
  std::fclose(f);
}

PIPlatformData g_platform{0};

void PrepareRecord(PIFilterRecord& rec, const Picture& pic) {
  std::memset(&rec, 0, sizeof rec);
  rec.serialNumber = 0;
  rec.abortProc = TestAbort;
  rec.progressProc = Progress;
  rec.imageSize = {int16_t(pic.height), int16_t(pic.width)};
  rec.planes = int16_t(pic.planes);
  rec.filterRect = {0, 0, int16_t(pic.height), int16_t(pic.width)};
  rec.background = {0xFFFF, 0xFFFF, 0xFFFF};
  rec.foreground = {0, 0, 0};
  rec.backColor[0] = rec.backColor[1] = rec.backColor[2] = 255;
  rec.maxSpace = 256 << 20;
  rec.hostSig = PI_CODE('T', 'R', 'E', 'L');
  rec.hostProc = HostProc;
  rec.imageMode = piModeRGBColor;
  rec.imageHRes = rec.imageVRes = 72 << 16;
  rec.wholeSize = rec.imageSize;
  rec.monitor.gamma = 0x1CCCC;  // 1.8
  rec.platformData = &g_platform;
  rec.bufferProcs = &g_bufferProcs;
  rec.resourceProcs = &g_resourceProcs;
  rec.processEvent = ProcessEvent;
  rec.displayPixels = DisplayPixels;
  rec.handleProcs = &g_handleProcs;
  rec.filterCase = pic.planes == 4 ? piFilterCaseEditableTransparencyNoSelection : piFilterCaseFlatImageNoSelection;
  rec.dummyPlaneValue = -1;
  rec.advanceState = Advance;
  rec.getPropertyObsolete = GetProperty;
  rec.inputRate = rec.maskRate = 1 << 16;
  rec.colorServices = ColorServices;
  const int16_t layer = 3, transparency = pic.planes == 4 ? 1 : 0;
  rec.inLayerPlanes = rec.outLayerPlanes = rec.absLayerPlanes = layer;
  rec.inTransparencyMask = rec.outTransparencyMask = rec.absTransparencyMask = transparency;
  rec.propertyProcs = &g_propertyProcs;
  rec.imageServicesProcs = &g_imageServices;
  g_errorString[0] = 0;
  rec.errorString = g_errorString;
  rec.sSPBasic = &g_basicSuite;
  rec.depth = 8;
  g_planes = int16_t(pic.planes);
}

// One pass of the selectors over `source` into `result`; the parameters
// selector only when `askParameters`.
Failure RunSelectors(LoadedPlugin* p, Picture& source, Picture& result, const std::string& paramsFile, bool dialog,
                     bool askParameters) {
  auto rec = std::make_unique<PIFilterRecord>();
  PrepareRecord(*rec, source);
  LoadParameters(*p, paramsFile);
  rec->parameters = p->parameters;
  g_askedUnsupported = false;
  Run run;
  run.rec = rec.get();
  run.source = &source;
  run.result = &result;
  g_run = &run;
  int16_t r = 0;
  // The scripting signals: with the dialog the plugin shows it; without, it
  // plays what it has and shows nothing.
  PIDescriptorParameters descriptor{};
  descriptor.descriptorParametersVersion = 0;
  descriptor.playInfo = dialog ? plugInDialogDisplay : plugInDialogDontDisplay;
  descriptor.recordInfo = plugInDialogOptional;
  descriptor.descriptor = p->descriptor;
  descriptor.writeDescriptorProcs = &g_writeDescriptor;
  descriptor.readDescriptorProcs = &g_readDescriptor;
  rec->descriptorParameters = &descriptor;
  auto call = [&](int16_t selector) {
    r = 0;
    p->entry(selector, rec.get(), &p->data, &r);
    p->parameters = rec->parameters;
  };
  // What the plugin recorded for scripting, whenever it wrote it, is handed
  // back on its next run.
  struct Reset {
    LoadedPlugin* plugin;
    PIDescriptorParameters* recorded;
    ~Reset() {
      g_run = nullptr;
      if (recorded->descriptor != plugin->descriptor) {
        if (IsOurHandle(plugin->descriptor)) DisposeHandle(plugin->descriptor);
        plugin->descriptor = recorded->descriptor;
      }
    }
  } reset{p, &descriptor};
  const WatchScope watch(!dialog);
  auto windowFailure = [] {
    return Failure{HostError::DialogInPreview,
                   std::string("the plugin opened its dialog in a run without one. ") + kNeedsDialog};
  };
  // As a real host does: the parameters selector on the plugin's first run
  // (many plugins set up their tables there) and whenever the user is asked;
  // the next runs without the dialog go straight to prepare with what the
  // plugin kept.
  if (askParameters) {
    call(filterSelectorParameters);
    if (g_windowSeen) return windowFailure();
    if (r != piNoErr) return FromResult(r, "parameters", dialog);
    p->parametersAsked = true;
  }
  call(filterSelectorPrepare);
  if (g_windowSeen) return windowFailure();
  if (r != piNoErr) return FromResult(r, "prepare", dialog);
  call(filterSelectorStart);
  if (r != piNoErr || run.overrun || g_windowSeen) {
    const int16_t failed = r;
    call(filterSelectorFinish);
    if (g_windowSeen) return windowFailure();
    return run.overrun ? Failure{HostError::OutsideBuffers, "the plugin wrote outside its buffers"}
                       : FromResult(failed, "start", dialog);
  }
  for (int guard = 0; guard < 1 << 24; ++guard) {
    if (Advance() != piNoErr) break;
    if (rec->inData == nullptr && rec->outData == nullptr && EmptyRect(rec->inRect) && EmptyRect(rec->outRect))
      break;
    call(filterSelectorContinue);
    if (r != piNoErr) break;
  }
  Commit(run);
  const int16_t stopped = r;
  call(filterSelectorFinish);
  if (run.overrun) return {HostError::OutsideBuffers, "the plugin wrote outside its buffers"};
  if (g_windowSeen) return windowFailure();
  if (stopped != piNoErr) return FromResult(stopped, "continue", dialog);
  if (r != piNoErr) return FromResult(r, "finish", dialog);
  return {};
}

Failure RunPlugin(const std::string& plugin, const std::string& inPath, const std::string& outPath,
                  const std::string& paramsFile, bool dialog) {
  LoadedPlugin* p = nullptr;
  Failure f = Load(plugin, p);
  if (f.code != HostError::None) return f;
  Picture source, result;
  if (!ReadPicture(inPath, source)) return {HostError::BadPicture, "the picture could not be read"};
  result = source;
  const bool askParameters = dialog || !p->parametersAsked;
  f = RunSelectors(p, source, result, paramsFile, dialog, askParameters);
  if (!dialog && askParameters && p->parametersAsked &&
      (f.code == HostError::NeedsDialog || f.code == HostError::DialogInPreview)) {
    // Plugins older than the scripting signals take the parameters selector
    // as the user's call for their dialog and open it at start. Having set
    // themselves up in that selector, they run without the dialog when the
    // next pass leaves it out, as a host's "last filter" does.
    result = source;
    f = RunSelectors(p, source, result, paramsFile, dialog, false);
  }
  if (f.code != HostError::None) return f;
  if (!WritePicture(outPath, result)) return {HostError::BadPicture, "the result could not be written"};
  SaveParameters(*p, paramsFile);
  return {};
}

Failure About(const std::string& plugin) {
  LoadedPlugin* p = nullptr;
  Failure f = Load(plugin, p);
  if (f.code != HostError::None) return f;
  PIAboutRecord about{};
  about.platformData = &g_platform;
  about.sSPBasic = &g_basicSuite;
  int16_t r = 0;
  p->entry(filterSelectorAbout, &about, &p->data, &r);
  return FromResult(r, "about", true);
}

}  // namespace trel::plughost
