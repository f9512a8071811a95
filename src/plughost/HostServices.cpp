// The services trel-plughost.exe hands to plugins: handles and buffers, the
// few properties and resources a filter asks for, the suites acquired by
// name, and polite refusals of what this host does not offer.
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "PlugHost.h"

namespace trel::plughost {

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
bool IsOurHandle(PIHandle h) { return g_handles.count(h) > 0; }
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

}  // namespace trel::plughost
