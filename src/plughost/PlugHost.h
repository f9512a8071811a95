// What the units of trel-plughost.exe share: the services the host hands to
// plugins (HostServices.cpp), loading a plugin and saying why it does not load
// (PluginLoader.cpp), a filter run over a picture (FilterRun.cpp), and the
// request loop with the answers (PlugHost.cpp).
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <map>
#include <string>

#include "PiApi.h"
#include "hostprotocol/HostProtocol.h"

namespace trel::plughost {

using hostprotocol::HostError;

struct Failure {
  HostError code = HostError::None;
  std::string text;
};

// Answers the request being served; the window watcher and the crash handler
// answer from where they are, before the host ends.
void Answer(const Failure& f);

inline uint32_t Le32(const unsigned char* p) { return p[0] | p[1] << 8 | p[2] << 16 | uint32_t(p[3]) << 24; }

// Requests carry paths as UTF-8, whatever Wine's code page.
std::wstring Wide(const std::string& utf8);
FILE* Open(const std::string& utf8, const wchar_t* mode);

// --- services (HostServices.cpp) -------------------------------------------------
PIHandle NewHandle(int32_t size);
void DisposeHandle(PIHandle h);
int32_t GetHandleSize(PIHandle h);
PIOSErr SetHandleSize(PIHandle h, int32_t size);
// A handle this host made and has not disposed of; a plugin may hand back its own.
bool IsOurHandle(PIHandle h);

// Set when the plugin asked for a service this host lacks, with what it was.
extern bool g_askedUnsupported;
extern const char* g_unsupportedWhat;
// The planes of the picture being filtered, for the property service.
extern int16_t g_planes;

PIBoolean TestAbort();
void Progress(int32_t done, int32_t total);
void HostProc(int16_t selector, intptr_t* data);
void ProcessEvent(void* event);
PIOSErr DisplayPixels(const void* source, const void* srcRect, int32_t dstRow, int32_t dstCol, void* port);
PIOSErr ColorServices(void* info);
PIOSErr GetProperty(PIOSType signature, PIOSType key, int32_t index, intptr_t* simple, PIHandle* complex);

extern PIBufferProcs g_bufferProcs;
extern PIHandleProcs g_handleProcs;
extern PIResourceProcs g_resourceProcs;
extern PIPropertyProcs g_propertyProcs;
extern PIImageServicesProcs g_imageServices;
extern PISPBasicSuite g_basicSuite;
extern PIReadDescriptorProcs g_readDescriptor;
extern PIWriteDescriptorProcs g_writeDescriptor;

// --- plugins (PluginLoader.cpp) --------------------------------------------------
struct LoadedPlugin {
  HMODULE module = nullptr;
  PIFilterEntry entry = nullptr;
  intptr_t data = 0;               // the plugin's own globals between calls
  PIHandle parameters = nullptr;   // kept for the next run without a dialog
  PIHandle descriptor = nullptr;   // what the plugin recorded for scripting
  bool parametersAsked = false;    // the parameters selector has run once
};

// The plugin at `path`, loaded once and kept; `out` points to it on success.
Failure Load(const std::string& path, LoadedPlugin*& out);

// --- runs (FilterRun.cpp) ---------------------------------------------------------
Failure RunPlugin(const std::string& plugin, const std::string& inPath, const std::string& outPath,
                  const std::string& paramsFile, bool dialog);
Failure About(const std::string& plugin);
// Cancels the dialogs a plugin opens in a run without its dialog; runs on a
// thread of its own for the host's lifetime.
DWORD WINAPI WatchWindows(LPVOID);

}  // namespace trel::plughost
