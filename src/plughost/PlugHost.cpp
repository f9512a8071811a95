// trel-plughost.exe: runs Photoshop-compatible filter plugins for Trel, one
// process per architecture, under Wine. It reads requests from standard input
// (see HostProtocol.h), keeps the plugins it has loaded, and answers each
// request with one line. A plugin that crashes takes only this process down;
// one that hangs is killed by Trel.
#include <windows.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "HostProtocol.h"
#include "PiApi.h"
#include "PiApiLayout.h"

namespace {

using trel::plughost::HostError;

struct Failure {
  HostError code;
  std::string text;
};

void Answer(const Failure& f) {
  if (f.code == HostError::None)
    std::printf("%sOK\n", trel::plughost::kAnswerPrefix);
  else
    std::printf("%sERR %d %s\n", trel::plughost::kAnswerPrefix, static_cast<int>(f.code), f.text.c_str());
  std::fflush(stdout);
}

// --- handles and buffers ------------------------------------------------------
// A handle is a pointer to the pointer to its bytes, as plugins expect; the
// size lives beside it.
struct HandleBlock {
  char* data;  // must stay first: the handle points here
  int32_t size;
};

std::map<PIHandle, HandleBlock*> g_handles;

PIHandle NewHandle(int32_t size) {
  if (size < 0) return nullptr;
  auto* block = new HandleBlock{static_cast<char*>(std::calloc(size_t(size) + 1, 1)), size};
  if (!block->data) {
    delete block;
    return nullptr;
  }
  PIHandle h = &block->data;
  g_handles[h] = block;
  return h;
}
void DisposeHandle(PIHandle h) {
  auto it = g_handles.find(h);
  if (it == g_handles.end()) return;
  std::free(it->second->data);
  delete it->second;
  g_handles.erase(it);
}
int32_t GetHandleSize(PIHandle h) {
  auto it = g_handles.find(h);
  return it == g_handles.end() ? 0 : it->second->size;
}
PIOSErr SetHandleSize(PIHandle h, int32_t size) {
  auto it = g_handles.find(h);
  if (it == g_handles.end() || size < 0) return piMemFullErr;
  char* grown = static_cast<char*>(std::realloc(it->second->data, size_t(size) + 1));
  if (!grown) return piMemFullErr;
  if (size > it->second->size) std::memset(grown + it->second->size, 0, size_t(size - it->second->size));
  it->second->data = grown;
  it->second->size = size;
  return piNoErr;
}
char* LockHandle(PIHandle h, PIBoolean) { return g_handles.count(h) ? *h : nullptr; }
void UnlockHandle(PIHandle) {}
void RecoverSpace(int32_t) {}

std::map<PIBufferID, std::vector<char>> g_buffers;
PIOSErr AllocateBuffer(int32_t size, PIBufferID* id) {
  if (size < 0 || !id) return piMemFullErr;
  auto* key = reinterpret_cast<PIBufferID>(new char);
  g_buffers[key].assign(size_t(size) + 1, 0);
  *id = key;
  return piNoErr;
}
char* LockBuffer(PIBufferID id, PIBoolean) {
  auto it = g_buffers.find(id);
  return it == g_buffers.end() ? nullptr : it->second.data();
}
void UnlockBuffer(PIBufferID) {}
void FreeBuffer(PIBufferID id) {
  if (g_buffers.erase(id)) delete static_cast<char*>(id);
}
int32_t BufferSpace() { return 256 << 20; }

// --- services we do not offer ----------------------------------------------------
bool g_askedUnsupported = false;
const char* g_unsupportedWhat = "";

PIOSErr NotSupported(const char* what) {
  g_askedUnsupported = true;
  g_unsupportedWhat = what;
  return piErrPlugInHostInsufficient;
}
PIOSErr ColorServices(void*) { return NotSupported("colour services"); }
PIOSErr DisplayPixels(const void*, const void*, int32_t, int32_t, void*) { return NotSupported("display services"); }

// The few properties a filter commonly asks for; the rest are undefined.
int16_t g_planes = 3;
PIOSErr GetProperty(PIOSType signature, PIOSType key, int32_t, intptr_t* simple, PIHandle* complex) {
  if (simple) *simple = 0;
  if (complex) *complex = nullptr;
  if (signature != PI_CODE('8', 'B', 'I', 'M')) return piErrPlugInPropertyUndefined;
  if (key == PI_CODE('n', 'u', 'c', 'h')) {  // number of channels
    if (simple) *simple = g_planes;
    return piNoErr;
  }
  if (key == PI_CODE('m', 'o', 'd', 'e')) {  // image mode
    if (simple) *simple = piModeRGBColor;
    return piNoErr;
  }
  return piErrPlugInPropertyUndefined;
}
PIOSErr SetProperty(PIOSType, PIOSType, int32_t, intptr_t, PIHandle) { return piErrPlugInPropertyUndefined; }

// Resources a plugin keeps with the document: held for the host's lifetime.
std::vector<std::pair<PIOSType, std::vector<char>>> g_resources;
std::vector<std::pair<PIOSType, std::vector<char>>>::iterator FindKept(PIOSType type, int16_t index) {
  int16_t seen = 0;
  for (auto it = g_resources.begin(); it != g_resources.end(); ++it)
    if (it->first == type && ++seen == index) return it;
  return g_resources.end();
}
int16_t CountResources(PIOSType type) {
  int16_t n = 0;
  for (const auto& r : g_resources) n = int16_t(n + (r.first == type));
  return n;
}
PIHandle GetResource(PIOSType type, int16_t index) {
  auto it = FindKept(type, index);
  if (it == g_resources.end()) return nullptr;
  PIHandle h = NewHandle(int32_t(it->second.size()));
  if (h && !it->second.empty()) std::memcpy(*h, it->second.data(), it->second.size());
  return h;
}
void DeleteResource(PIOSType type, int16_t index) {
  auto it = FindKept(type, index);
  if (it != g_resources.end()) g_resources.erase(it);
}
PIOSErr AddResource(PIOSType type, PIHandle data) {
  if (!g_handles.count(data)) return piFilterBadParameters;
  g_resources.emplace_back(type, std::vector<char>(*data, *data + GetHandleSize(data)));
  return piNoErr;
}

PIBoolean TestAbort() { return 0; }
void Progress(int32_t, int32_t) {}
void HostProc(int16_t, intptr_t*) {}
void ProcessEvent(void*) {}
// --- suites acquired by name ---------------------------------------------------------
void SetHandleLock(PIHandle h, PIBoolean lock, char** address, PIBoolean* oldLock) {
  if (address) *address = lock && g_handles.count(h) ? *h : nullptr;
  if (oldLock) *oldLock = 0;
}

// Buffers of the buffer suite are plain pointers; their sizes are kept here.
std::map<char*, uint32_t> g_suiteBuffers;
char* NewSuiteBuffer(uint32_t* requested, uint32_t minimum) {
  uint32_t size = requested && *requested > minimum ? *requested : minimum;
  char* p = static_cast<char*>(std::calloc(size_t(size) + 1, 1));
  if (!p && size > minimum) p = static_cast<char*>(std::calloc(size_t(size = minimum) + 1, 1));
  if (!p) return nullptr;
  if (requested) *requested = size;
  g_suiteBuffers[p] = size;
  return p;
}
void DisposeSuiteBuffer(char** buffer) {
  if (!buffer || !g_suiteBuffers.erase(*buffer)) return;
  std::free(*buffer);
  *buffer = nullptr;
}
uint32_t SuiteBufferSize(char* buffer) {
  auto it = g_suiteBuffers.find(buffer);
  return it == g_suiteBuffers.end() ? 0 : it->second;
}
uint32_t SuiteBufferSpace() { return 256u << 20; }

intptr_t MainAppWindow() { return 0; }
int32_t SetCursor(void*) { return 0; }
uint32_t TickCount() { return GetTickCount() * 60u / 1000u; }
int32_t GetPluginName(void*, void** name) {
  if (name) *name = nullptr;
  return PI_SUITE_NOT_FOUND;
}

PIHandleSuite1 g_handleSuite1{NewHandle, DisposeHandle, SetHandleLock, GetHandleSize, SetHandleSize, RecoverSpace};
PIHandleSuite2 g_handleSuite2{NewHandle,     DisposeHandle, DisposeHandle, SetHandleLock,
                              GetHandleSize, SetHandleSize, RecoverSpace};
PIBufferSuite1 g_bufferSuite1{NewSuiteBuffer, DisposeSuiteBuffer, SuiteBufferSize, SuiteBufferSpace};
PIUIHooksSuite1 g_uiHooks1{ProcessEvent, DisplayPixels, Progress, TestAbort,
                           MainAppWindow, SetCursor,    TickCount, GetPluginName};

// The name of the last suite asked for that this host does not have.
std::string g_missingSuite;

int32_t AcquireSuite(const char* name, int32_t version, const void** suite) {
  if (suite) *suite = nullptr;
  const std::string n = name ? name : "";
  const void* found = nullptr;
  if (n == PI_HANDLE_SUITE) found = version == 1 ? static_cast<const void*>(&g_handleSuite1)
                                   : version == 2 ? static_cast<const void*>(&g_handleSuite2) : nullptr;
  else if (n == PI_BUFFER_SUITE && version == 1) found = &g_bufferSuite1;
  else if (n == PI_UIHOOKS_SUITE && version == 1) found = &g_uiHooks1;
  if (found) {
    if (suite) *suite = found;
    return 0;
  }
  g_askedUnsupported = true;
  g_missingSuite = "the suite \"" + n.substr(0, 100) + "\" version " + std::to_string(version);
  g_unsupportedWhat = g_missingSuite.c_str();
  return PI_SUITE_NOT_FOUND;
}
int32_t ReleaseSuite(const char*, int32_t) { return 0; }
PIBoolean IsEqual(const char* a, const char* b) { return a && b && std::strcmp(a, b) == 0; }
int32_t AllocateBlock(size_t size, void** block) {
  *block = std::malloc(size ? size : 1);
  return *block ? 0 : -108;
}
int32_t FreeBlock(void* block) {
  std::free(block);
  return 0;
}
int32_t ReallocateBlock(void* block, size_t size, void** out) {
  *out = std::realloc(block, size ? size : 1);
  return *out ? 0 : -108;
}
int32_t Undefined() { return -1; }

// Image services: offered so that a plugin finds the suite where it looks,
// answering that the host cannot do the work. Channel ports are not handed
// out: their ports come from the document description (documentInfo), which
// this host does not give, and a plugin that saw the procs alone would read
// through that empty pointer.
PIOSErr Interpolate(PIImagePlane*, PIImagePlane*, PIRect16*, PIFixed*, int16_t) {
  return NotSupported("image services");
}

// Scripting: a plugin reads an empty descriptor (no keys) and may write one;
// what it writes is not kept, only a handle is given back.
int g_descriptorToken = 0;
PIReadDescriptor OpenReadDescriptor(PIHandle, PIOSType*) { return &g_descriptorToken; }
PIOSErr CloseReadDescriptor(PIReadDescriptor) { return piNoErr; }
PIBoolean GetKey(PIReadDescriptor, PIOSType* key, PIOSType* type, int32_t* flags) {
  if (key) *key = 0;
  if (type) *type = 0;
  if (flags) *flags = 0;
  return 0;
}
PIOSErr DescriptorNoValue() { return -30181; }  // nothing to read
PIOSErr DescriptorPut() { return piNoErr; }
PIWriteDescriptor OpenWriteDescriptor() { return &g_descriptorToken; }
PIOSErr CloseWriteDescriptor(PIWriteDescriptor, PIHandle* descriptor) {
  if (descriptor) *descriptor = NewHandle(0);
  return piNoErr;
}

PIBufferProcs g_bufferProcs{2, 5, AllocateBuffer, LockBuffer, UnlockBuffer, FreeBuffer, BufferSpace};
PIHandleProcs g_handleProcs{1,           8,           NewHandle,    DisposeHandle, GetHandleSize,
                            SetHandleSize, LockHandle, UnlockHandle, RecoverSpace,  DisposeHandle};
PIResourceProcs g_resourceProcs{3, 4, CountResources, GetResource, DeleteResource, AddResource};
PIPropertyProcs g_propertyProcs{1, 2, GetProperty, SetProperty};
PIImageServicesProcs g_imageServices{1, 2, Interpolate, Interpolate};
PISPBasicSuite g_basicSuite{AcquireSuite, ReleaseSuite, IsEqual, AllocateBlock, FreeBlock, ReallocateBlock,
                            Undefined};

PIReadDescriptorProcs MakeReadDescriptorProcs() {
  PIReadDescriptorProcs r{};
  r.readDescriptorProcsVersion = 0;
  r.numReadDescriptorProcs = 18;
  r.openReadDescriptorProc = OpenReadDescriptor;
  r.closeReadDescriptorProc = CloseReadDescriptor;
  r.getKeyProc = GetKey;
  for (auto& proc : r.getProcs) proc = DescriptorNoValue;
  return r;
}
PIWriteDescriptorProcs MakeWriteDescriptorProcs() {
  PIWriteDescriptorProcs w{};
  w.writeDescriptorProcsVersion = 0;
  w.numWriteDescriptorProcs = 16;
  w.openWriteDescriptorProc = OpenWriteDescriptor;
  w.closeWriteDescriptorProc = CloseWriteDescriptor;
  for (auto& proc : w.putProcs) proc = DescriptorPut;
  return w;
}
PIReadDescriptorProcs g_readDescriptor = MakeReadDescriptorProcs();
PIWriteDescriptorProcs g_writeDescriptor = MakeWriteDescriptorProcs();

// --- pictures ----------------------------------------------------------------------
struct Picture {
  int width = 0, height = 0, planes = 0;
  std::vector<unsigned char> bytes;
  unsigned char* at(int x, int y) { return bytes.data() + (size_t(y) * size_t(width) + size_t(x)) * size_t(planes); }
};

uint32_t Le32(const unsigned char* p) { return p[0] | p[1] << 8 | p[2] << 16 | uint32_t(p[3]) << 24; }
void PutLe32(unsigned char* p, uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<unsigned char>(v >> (8 * i));
}

// Requests carry paths as UTF-8, whatever Wine's code page.
std::wstring Wide(const std::string& utf8) {
  const int n = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), int(utf8.size()), nullptr, 0);
  std::wstring w(size_t(n > 0 ? n : 0), L'\0');
  if (n > 0) MultiByteToWideChar(CP_UTF8, 0, utf8.data(), int(utf8.size()), &w[0], n);
  return w;
}

FILE* Open(const std::string& utf8, const wchar_t* mode) { return _wfopen(Wide(utf8).c_str(), mode); }

bool ReadPicture(const std::string& path, Picture& pic) {
  FILE* f = Open(path, L"rb");
  if (!f) return false;
  unsigned char head[trel::plughost::kPictureHeader];
  bool ok = std::fread(head, 1, sizeof head, f) == sizeof head && Le32(head) == trel::plughost::kPictureMagic;
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
  unsigned char head[trel::plughost::kPictureHeader];
  PutLe32(head, trel::plughost::kPictureMagic);
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

// --- plugins -------------------------------------------------------------------------
struct LoadedPlugin {
  HMODULE module = nullptr;
  PIFilterEntry entry = nullptr;
  intptr_t data = 0;               // the plugin's own globals between calls
  PIHandle parameters = nullptr;   // kept for the next run without a dialog
  PIHandle descriptor = nullptr;   // what the plugin recorded for scripting
  bool parametersAsked = false;    // the parameters selector has run once
};
std::map<std::string, LoadedPlugin> g_plugins;

#ifdef _WIN64
constexpr uint32_t kEntryKey = PI_CODE('8', '6', '6', '4');
#else
constexpr uint32_t kEntryKey = PI_CODE('w', 'x', '8', '6');
#endif

// The entry point named in the plugin's PiPL for this architecture, "" if none.
BOOL CALLBACK VisitPiPL(HMODULE m, LPCSTR type, LPSTR name, LONG_PTR param) {
  HRSRC res = FindResourceA(m, name, type);
  HGLOBAL loaded = res ? LoadResource(m, res) : nullptr;
  const auto* p = static_cast<const unsigned char*>(loaded ? LockResource(loaded) : nullptr);
  const DWORD size = res ? SizeofResource(m, res) : 0;
  if (!p || size < 10) return TRUE;
  const uint32_t count = Le32(p + 6);
  size_t at = 10;
  for (uint32_t i = 0; i < count && at + 16 <= size; ++i) {
    const uint32_t key = Le32(p + at + 4), length = Le32(p + at + 12);
    const size_t dataAt = at + 16;
    if (length > size - dataAt) break;
    if (key == kEntryKey) {
      const char* text = reinterpret_cast<const char*>(p + dataAt);
      reinterpret_cast<std::string*>(param)->assign(text, strnlen(text, length));
      return FALSE;
    }
    at = dataAt + ((length + 3) & ~3u);
  }
  return TRUE;
}

std::string EntryFromPiPL(HMODULE module) {
  std::string name;
  EnumResourceNamesA(module, "PIPL", VisitPiPL, reinterpret_cast<LONG_PTR>(&name));
  return name;
}

// --- why a DLL does not load ---------------------------------------------------------
// What a PE file imports, read from the file's bytes: each DLL with the
// functions taken from it by name ("#n" for one taken by number). Empty when
// the file is no PE file; whatever lies outside the file is passed over.
struct Import {
  std::string dll;
  std::vector<std::string> functions;
};

std::vector<Import> ImportsOf(const std::string& path) {
  std::vector<Import> imports;
  FILE* f = Open(path, L"rb");
  if (!f) return imports;
  std::vector<unsigned char> b;
  unsigned char chunk[65536];
  size_t n;
  while ((n = std::fread(chunk, 1, sizeof chunk, f)) > 0 && b.size() < (size_t(64) << 20))
    b.insert(b.end(), chunk, chunk + n);
  std::fclose(f);
  auto u16 = [&](size_t at) -> uint32_t { return at + 2 <= b.size() ? uint32_t(b[at] | b[at + 1] << 8) : 0; };
  auto u32 = [&](size_t at) -> uint32_t { return at + 4 <= b.size() ? Le32(&b[at]) : 0; };
  auto text = [&](size_t at) {
    std::string t;
    for (size_t k = at; k < b.size() && b[k] && t.size() < 260; ++k) t += char(b[k]);
    return t;
  };
  if (b.size() < 64 || b[0] != 'M' || b[1] != 'Z') return imports;
  const size_t pe = u32(60);
  if (pe > b.size() || u32(pe) != 0x00004550) return imports;
  const size_t sections = u16(pe + 6), optSize = u16(pe + 20), opt = pe + 24;
  const bool wide = u16(opt) == 0x20B;  // PE32+: 8-byte thunks
  const uint32_t importRva = u32(opt + (wide ? 112 : 96) + 8);  // data directory 1
  // The file offset of a relative virtual address, through the section table.
  auto fileAt = [&](uint32_t rva) -> size_t {
    const size_t table = opt + optSize;
    for (size_t i = 0; i < sections && i < 96; ++i) {
      const size_t sec = table + 40 * i;
      const uint32_t va = u32(sec + 12), vsize = std::max(u32(sec + 8), u32(sec + 16)), raw = u32(sec + 20);
      if (rva >= va && rva - va < vsize) return size_t(raw) + (rva - va);
    }
    return size_t(-1);
  };
  size_t desc = importRva ? fileAt(importRva) : size_t(-1);
  for (int i = 0; i < 256 && desc != size_t(-1) && desc + 20 <= b.size(); ++i, desc += 20) {
    const uint32_t nameRva = u32(desc + 12);
    if (nameRva == 0) break;
    Import imp;
    const size_t at = fileAt(nameRva);
    if (at < b.size()) imp.dll = text(at);
    if (imp.dll.empty()) continue;
    const uint32_t thunkRva = u32(desc) ? u32(desc) : u32(desc + 16);
    size_t thunk = thunkRva ? fileAt(thunkRva) : size_t(-1);
    const size_t step = wide ? 8 : 4;
    for (int k = 0; k < 4096 && thunk != size_t(-1) && thunk + step <= b.size(); ++k, thunk += step) {
      const uint32_t lo = u32(thunk), hi = wide ? u32(thunk + 4) : 0;
      if (lo == 0 && hi == 0) break;
      const bool byNumber = wide ? (hi & 0x80000000u) != 0 : (lo & 0x80000000u) != 0;
      if (byNumber) {
        imp.functions.push_back("#" + std::to_string(lo & 0xFFFF));
      } else {
        const size_t hint = fileAt(lo & 0x7FFFFFFFu);
        if (hint != size_t(-1) && hint + 2 < b.size()) imp.functions.push_back(text(hint + 2));
      }
    }
    imports.push_back(std::move(imp));
  }
  return imports;
}

std::string FolderOf(const std::string& path) {
  const size_t slash = path.find_last_of("\\/");
  return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

// Where the loader would find `dll` for a module in `folder`: that folder,
// then the search path (our stand-ins' folder, the system folders). "" if
// nowhere.
std::string Locate(const std::string& dll, const std::string& folder) {
  const std::wstring inFolder = Wide(folder + dll);
  if (GetFileAttributesW(inFolder.c_str()) != INVALID_FILE_ATTRIBUTES) return folder + dll;
  wchar_t found[MAX_PATH];
  const DWORD n = SearchPathW(nullptr, Wide(dll).c_str(), nullptr, MAX_PATH, found, nullptr);
  if (n == 0 || n >= MAX_PATH) return {};
  const int len = WideCharToMultiByte(CP_UTF8, 0, found, int(n), nullptr, 0, nullptr, nullptr);
  std::string utf8(size_t(len > 0 ? len : 0), '\0');
  if (len > 0) WideCharToMultiByte(CP_UTF8, 0, found, int(n), &utf8[0], len, nullptr, nullptr);
  return utf8;
}

// Why the module at `path` does not load, as the rest of a sentence that
// starts with its name ("needs MSVCRT10.dll, which is not installed"); "" if
// each DLL it imports loads and has each function it takes. A DLL that is
// there but does not load is looked into in turn.
std::string WhyNotLoaded(const std::string& path, int depth) {
  const std::string folder = FolderOf(path);
  for (const Import& imp : ImportsOf(path)) {
    const std::string file = Locate(imp.dll, folder);
    HMODULE m = file.empty() ? nullptr
                             : LoadLibraryExW(Wide(file).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!m) m = LoadLibraryW(Wide(imp.dll).c_str());
    if (!m) {
      if (file.empty()) return "needs " + imp.dll + ", which is not installed";
      if (depth < 4) {
        const std::string deeper = WhyNotLoaded(file, depth + 1);
        if (!deeper.empty()) return "needs " + imp.dll + ", which " + deeper;
      }
      return "needs " + imp.dll + ", which does not load here";
    }
    for (const std::string& fn : imp.functions) {
      const bool byNumber = !fn.empty() && fn[0] == '#';
      FARPROC proc = byNumber ? GetProcAddress(m, MAKEINTRESOURCEA(std::atoi(fn.c_str() + 1)))
                              : GetProcAddress(m, fn.c_str());
      if (!proc) {
        FreeLibrary(m);
        return "needs " + fn + " from " + imp.dll + ", which the installed " + imp.dll + " does not have";
      }
    }
    FreeLibrary(m);
  }
  return {};
}

Failure Load(const std::string& path, LoadedPlugin*& out) {
  auto it = g_plugins.find(path);
  if (it != g_plugins.end()) {
    out = &it->second;
    return {};
  }
  HMODULE module = LoadLibraryExW(Wide(path).c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
  if (!module) {
    const DWORD error = GetLastError();
    if (error == ERROR_MOD_NOT_FOUND || error == ERROR_PROC_NOT_FOUND || error == ERROR_DLL_INIT_FAILED) {
      const std::string why = WhyNotLoaded(path, 0);
      if (!why.empty()) return {HostError::MissingDll, "the plugin " + why};
    }
    if (error == ERROR_BAD_EXE_FORMAT)
      return {HostError::LoadFailed, "the plugin is no Windows DLL for this architecture"};
    return {HostError::LoadFailed, "the plugin could not be loaded (Windows error " + std::to_string(error) + ")"};
  }
  // Wine loads a DLL whose import names a function its DLL lacks, and only
  // the call fails; Windows refuses it at once. Refused here as Windows does,
  // with the name of what is missing.
  if (const std::string why = WhyNotLoaded(path, 0); !why.empty()) {
    FreeLibrary(module);
    return {HostError::MissingDll, "the plugin " + why};
  }
  const std::string entryName = EntryFromPiPL(module);
  if (entryName.empty()) {
    FreeLibrary(module);
    return {HostError::NoEntryPoint, "the plugin names no entry point for this architecture"};
  }
  auto entry = reinterpret_cast<PIFilterEntry>(reinterpret_cast<void*>(GetProcAddress(module, entryName.c_str())));
  if (!entry) {
    FreeLibrary(module);
    return {HostError::NoEntryPoint, "the plugin has no entry point " + entryName};
  }
  LoadedPlugin& p = g_plugins[path];
  p.module = module;
  p.entry = entry;
  out = &p;
  return {};
}

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
  if (file == "-") return;
  FILE* f = Open(file, L"rb");
  if (!f) return;
  std::vector<char> bytes;
  char chunk[4096];
  size_t n;
  while ((n = std::fread(chunk, 1, sizeof chunk, f)) > 0) bytes.insert(bytes.end(), chunk, chunk + n);
  std::fclose(f);
  if (bytes.empty()) return;
  if (!g_handles.count(p.parameters)) p.parameters = nullptr;
  if (!p.parameters) p.parameters = NewHandle(int32_t(bytes.size()));
  else SetHandleSize(p.parameters, int32_t(bytes.size()));
  if (p.parameters) std::memcpy(*p.parameters, bytes.data(), bytes.size());
}

void SaveParameters(const LoadedPlugin& p, const std::string& file) {
  // Only a handle of ours has a known size; one the plugin made itself stays in memory.
  if (file == "-" || !g_handles.count(p.parameters)) return;
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
        if (g_handles.count(plugin->descriptor)) DisposeHandle(plugin->descriptor);
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

std::vector<std::string> Split(const std::string& line) {
  std::vector<std::string> parts;
  size_t start = 0;
  for (;;) {
    const size_t tab = line.find('\t', start);
    parts.push_back(line.substr(start, tab - start));
    if (tab == std::string::npos) break;
    start = tab + 1;
  }
  return parts;
}

}  // namespace

int main() {
  SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
  SetUnhandledExceptionFilter(OnCrash);
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
  std::string line;
  int c;
  for (;;) {
    line.clear();
    while ((c = std::fgetc(stdin)) != EOF && c != '\n')
      if (c != '\r') line += static_cast<char>(c);
    if (c == EOF && line.empty()) break;
    const std::vector<std::string> req = Split(line);
    const std::string& cmd = req[0];
    if (cmd == "QUIT") break;
    if (cmd == "PROBE" && req.size() == 2) {
      LoadedPlugin* p = nullptr;
      Answer(Load(req[1], p));
    } else if (cmd == "RUN" && req.size() == 6) {
      Answer(RunPlugin(req[1], req[2], req[3], req[4], req[5] == "1"));
    } else if (cmd == "ABOUT" && req.size() == 2) {
      Answer(About(req[1]));
    } else {
      Answer({HostError::Usage, "unknown request"});
    }
  }
  return 0;
}
