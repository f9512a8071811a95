// The code of Trel's own Filter Factory plugin template: the engine of
// src/host/ff, reading its filter from the plugin's parameter block (resource
// PARM 16, where the compiler patches it). The controls come from the
// parameters the host hands in when they are ours ("TRFF" and eight values),
// otherwise from the block; after a run they are handed back, so a repeated
// run without a dialog uses the same values.
#include <windows.h>

#include <array>
#include <cstring>
#include <string>
#include <vector>

#include "PiApi.h"
#include "host/ff/FFEngine.h"

namespace {

// Offsets inside the parameter block, which starts with its own size.
constexpr size_t kBlockSize = 8296;
constexpr size_t kCtlValues = 8;
constexpr size_t kCode[4] = {4200, 5224, 6248, 7272};
constexpr size_t kCodeSize = 1024;
constexpr char kOurParameters[4] = {'T', 'R', 'F', 'F'};

HMODULE g_module = nullptr;

struct Filter {
  std::array<std::string, 4> code;
  trel::ff::Controls controls{};
};

bool ReadBlock(Filter& f) {
  HRSRC res = FindResourceA(g_module, MAKEINTRESOURCEA(16), "PARM");
  HGLOBAL loaded = res ? LoadResource(g_module, res) : nullptr;
  const auto* p = static_cast<const unsigned char*>(loaded ? LockResource(loaded) : nullptr);
  if (!p || SizeofResource(g_module, res) < kBlockSize) return false;
  for (size_t i = 0; i < 8; ++i) f.controls[i] = p[kCtlValues + 4 * i];
  for (size_t c = 0; c < 4; ++c) {
    const char* text = reinterpret_cast<const char*>(p + kCode[c]);
    f.code[c].assign(text, strnlen(text, kCodeSize));
  }
  return true;
}

void ControlsFromHost(PIFilterRecord* rec, Filter& f) {
  if (!rec->parameters || !rec->handleProcs) return;
  const int32_t size = rec->handleProcs->getSizeProc(rec->parameters);
  const char* p = rec->handleProcs->lockProc(rec->parameters, 0);
  if (p && size >= 12 && std::memcmp(p, kOurParameters, 4) == 0)
    for (size_t i = 0; i < 8; ++i) f.controls[i] = static_cast<unsigned char>(p[4 + i]);
  rec->handleProcs->unlockProc(rec->parameters);
}

void ControlsToHost(PIFilterRecord* rec, const Filter& f) {
  if (!rec->handleProcs) return;
  if (!rec->parameters) rec->parameters = rec->handleProcs->newProc(12);
  if (!rec->parameters || rec->handleProcs->getSizeProc(rec->parameters) < 12) return;
  char* p = rec->handleProcs->lockProc(rec->parameters, 0);
  if (!p) return;
  std::memcpy(p, kOurParameters, 4);
  for (size_t i = 0; i < 8; ++i) p[4 + i] = static_cast<char>(f.controls[i]);
  rec->handleProcs->unlockProc(rec->parameters);
}

int16_t Start(PIFilterRecord* rec) {
  if (rec->imageMode != piModeRGBColor || rec->planes < 3) return piFilterBadMode;
  // The whole picture at once, all its planes.
  rec->inRect = rec->outRect = rec->filterRect;
  rec->inLoPlane = rec->outLoPlane = 0;
  rec->inHiPlane = rec->outHiPlane = static_cast<int16_t>(rec->planes > 4 ? 3 : rec->planes - 1);
  return piNoErr;
}

int16_t Continue(PIFilterRecord* rec) {
  Filter f;
  if (!ReadBlock(f)) return piFilterBadParameters;
  ControlsFromHost(rec, f);
  trel::ff::CompileError err;
  const trel::ff::CompiledFilter compiled = trel::ff::CompileFilter(f.code, &err);
  if (!compiled.valid()) return piFilterBadParameters;
  const int w = rec->outRect.right - rec->outRect.left, h = rec->outRect.bottom - rec->outRect.top;
  const int planes = rec->outHiPlane - rec->outLoPlane + 1;
  const bool alpha = planes == 4;
  std::vector<uint8_t> src(size_t(w) * size_t(h) * 4u, 255), dst(src.size(), 255);
  for (int y = 0; y < h; ++y) {
    const auto* in = static_cast<const uint8_t*>(rec->inData) + ptrdiff_t(y) * rec->inRowBytes;
    for (int x = 0; x < w; ++x)
      std::memcpy(&src[(size_t(y) * size_t(w) + size_t(x)) * 4u], in + x * planes, size_t(planes));
  }
  const trel::ff::ConstImageView from{src.data(), w, h, ptrdiff_t(w) * 4, alpha};
  const trel::ff::ImageView to{dst.data(), w, h, ptrdiff_t(w) * 4, alpha};
  trel::ff::RenderOptions options;
  options.threads = 1;
  options.cancel = [rec] { return rec->abortProc && rec->abortProc(); };
  const trel::ff::RenderStatus st = trel::ff::RenderFilter(compiled, f.controls, from, to, options);
  if (st == trel::ff::RenderStatus::Cancelled) return piUserCanceledErr;
  if (st != trel::ff::RenderStatus::Done) return piMemFullErr;
  for (int y = 0; y < h; ++y) {
    auto* out = static_cast<uint8_t*>(rec->outData) + ptrdiff_t(y) * rec->outRowBytes;
    for (int x = 0; x < w; ++x)
      std::memcpy(out + x * planes, &dst[(size_t(y) * size_t(w) + size_t(x)) * 4u], size_t(planes));
  }
  ControlsToHost(rec, f);
  std::memset(&rec->inRect, 0, sizeof rec->inRect);
  std::memset(&rec->outRect, 0, sizeof rec->outRect);
  return piNoErr;
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) g_module = instance;
  return TRUE;
}

extern "C" __declspec(dllexport) void PluginMain(int16_t selector, void* record, intptr_t* data, int16_t* result) {
  (void)data;
  auto* rec = static_cast<PIFilterRecord*>(record);
  *result = piNoErr;
  try {
    switch (selector) {
      case filterSelectorAbout:
      case filterSelectorParameters:
      case filterSelectorPrepare:
      case filterSelectorFinish:
        break;
      case filterSelectorStart:
        *result = Start(rec);
        break;
      case filterSelectorContinue:
        *result = Continue(rec);
        break;
      default:
        *result = piFilterBadParameters;
    }
  } catch (...) {
    *result = piMemFullErr;
  }
}
