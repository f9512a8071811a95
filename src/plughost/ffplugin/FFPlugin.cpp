// The code of Trel's own Filter Factory plugin template: the engine of
// src/host/ff, reading its filter from the plugin's parameter block (resource
// PARM 16, where the compiler patches it). The controls come from the
// parameters the host hands in when they are ours ("TRFF" and eight values,
// then the four codes when the user edited them in an editor plugin),
// otherwise from the block; after a run they are handed back, so a repeated
// run without a dialog uses the same values. A run from the host's window
// (the parameters call first) shows the dialog of FFDialog.c before it filters.
#include <windows.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "PiApi.h"
#include "ffplugin/FFDialog.h"
#include "host/ff/FFEngine.h"

namespace {

constexpr size_t kCodeSize = kFFCodeFieldSize;
constexpr char kOurParameters[4] = {'T', 'R', 'F', 'F'};
// Our parameters: the tag and eight values, then optionally the four codes
// and a hash of the block's own code they replace.
constexpr int32_t kValuesSize = 12;
constexpr int32_t kWithCodeSize = kValuesSize + 4 * int32_t(kCodeSize) + 4;

HMODULE g_module = nullptr;
// Set by the parameters call: the user runs the filter on purpose and gets
// the dialog at the start, where the picture is at hand.
bool g_wantDialog = false;

struct Filter {
  std::array<std::string, 4> code;
  uint32_t blockCode = 0;  // hash of the code the plugin was compiled with
  trel::ff::Controls controls{};
  bool editor = false;
  bool scrambled = false;
  std::string title;
  std::array<std::string, 8> ctlName;  // empty: not shown
  std::array<std::string, 4> mapName;
};

const unsigned char* Resource(const char* type, int id, DWORD minSize) {
  HRSRC res = FindResourceA(g_module, MAKEINTRESOURCEA(id), type);
  HGLOBAL loaded = res ? LoadResource(g_module, res) : nullptr;
  const auto* p = static_cast<const unsigned char*>(loaded ? LockResource(loaded) : nullptr);
  return p && SizeofResource(g_module, res) >= minSize ? p : nullptr;
}

std::string Text(const unsigned char* p, size_t room) {
  const char* text = reinterpret_cast<const char*>(p);
  return std::string(text, strnlen(text, room));
}

bool Flag(const unsigned char* p, size_t at, int i) { return p[at + 4 * size_t(i)] == 1; }

bool ReadBlock(Filter& f) {
  const unsigned char* p = Resource("PARM", 16, kFFBlockSize);
  if (!p) return false;
  for (size_t i = 0; i < 8; ++i) f.controls[i] = p[kFFCtlValues + 4 * i];
  char code[4 * kCodeSize];
  f.scrambled = FFReadCodeFields(p, code) != 0;
  for (size_t c = 0; c < 4; ++c) f.code[c].assign(code + c * kCodeSize, strnlen(code + c * kCodeSize, kCodeSize));
  f.editor = p[kFFStandAlone] == 0;
  f.blockCode = 2166136261u;  // FNV-1a
  for (const std::string& c : f.code)
    for (unsigned char b : c + '\n') f.blockCode = (f.blockCode ^ b) * 16777619u;
  f.title = Text(p + kFFBlockTitle, kFFNameSize);
  for (int i = 0; i < 4; ++i)
    if (Flag(p, kFFMapFlags, i)) {
      f.mapName[size_t(i)] = Text(p + kFFMapNames + kFFNameSize * size_t(i), kFFNameSize);
      if (f.mapName[size_t(i)].empty()) f.mapName[size_t(i)] = "Map " + std::to_string(i);
    }
  for (int i = 0; i < 8; ++i)
    if (Flag(p, kFFCtlFlags, i)) {
      f.ctlName[size_t(i)] = Text(p + kFFCtlNames + kFFNameSize * size_t(i), kFFNameSize);
      if (f.ctlName[size_t(i)].empty()) f.ctlName[size_t(i)] = "Control " + std::to_string(i);
    }
  return true;
}

uint32_t Le32(const char* p) {
  uint32_t v = 0;
  for (int i = 0; i < 4; ++i) v |= uint32_t(static_cast<unsigned char>(p[i])) << (8 * i);
  return v;
}

void ControlsFromHost(PIFilterRecord* rec, Filter& f) {
  if (!rec->parameters || !rec->handleProcs) return;
  const int32_t size = rec->handleProcs->getSizeProc(rec->parameters);
  const char* p = rec->handleProcs->lockProc(rec->parameters, 0);
  if (p && size >= kValuesSize && std::memcmp(p, kOurParameters, 4) == 0) {
    for (size_t i = 0; i < 8; ++i) f.controls[i] = static_cast<unsigned char>(p[4 + i]);
    // Edited code counts only for the code it was edited from: a plugin
    // compiled again with new code at the same place starts from that.
    if (size >= kWithCodeSize && Le32(p + kWithCodeSize - 4) == f.blockCode)
      for (size_t c = 0; c < 4; ++c) {
        const char* code = p + kValuesSize + c * kCodeSize;
        f.code[c].assign(code, strnlen(code, kCodeSize));
      }
  }
  rec->handleProcs->unlockProc(rec->parameters);
}

// The values, and the code when the user may have changed it (an editor
// plugin after its dialog), so that a repeated run does what the dialog showed.
void ControlsToHost(PIFilterRecord* rec, const Filter& f, bool withCode) {
  if (!rec->handleProcs) return;
  const int32_t size = withCode ? kWithCodeSize : kValuesSize;
  if (!rec->parameters) rec->parameters = rec->handleProcs->newProc(size);
  if (!rec->parameters) return;
  const int32_t had = rec->handleProcs->getSizeProc(rec->parameters);
  // Code handed in before stays with the handle when only the values change.
  if (had < size && rec->handleProcs->setSizeProc(rec->parameters, size) != piNoErr) return;
  char* p = rec->handleProcs->lockProc(rec->parameters, 0);
  if (!p) return;
  std::memcpy(p, kOurParameters, 4);
  for (size_t i = 0; i < 8; ++i) p[4 + i] = static_cast<char>(f.controls[i]);
  if (withCode) {
    for (size_t c = 0; c < 4; ++c) {
      char* code = p + kValuesSize + c * kCodeSize;
      std::memset(code, 0, kCodeSize);
      std::memcpy(code, f.code[c].data(), std::min(f.code[c].size(), kCodeSize));
    }
    for (int32_t i = 0; i < 4; ++i) p[kWithCodeSize - 4 + i] = static_cast<char>(f.blockCode >> (8 * i));
  }
  rec->handleProcs->unlockProc(rec->parameters);
}

// Runs `code` on R, G, B, A pixels; what Continue and the dialog's preview share.
trel::ff::RenderStatus Render(const std::array<std::string, 4>& code, const trel::ff::Controls& controls,
                              const uint8_t* src, int w, int h, bool alpha, uint8_t* dst,
                              std::function<bool()> cancel) {
  trel::ff::CompileError err;
  const trel::ff::CompiledFilter compiled = trel::ff::CompileFilter(code, &err);
  if (!compiled.valid()) return trel::ff::RenderStatus::Invalid;
  const trel::ff::ConstImageView from{src, w, h, ptrdiff_t(w) * 4, alpha};
  const trel::ff::ImageView to{dst, w, h, ptrdiff_t(w) * 4, alpha};
  trel::ff::RenderOptions options;
  options.threads = 1;
  options.cancel = std::move(cancel);
  return trel::ff::RenderFilter(compiled, controls, from, to, options);
}

int RenderPreview(void* context, const unsigned char ctl[8], const char* const code[4], const unsigned char* src,
                  int w, int h, unsigned char* dst) {
  try {
    trel::ff::Controls controls{};
    std::array<std::string, 4> text;
    for (size_t i = 0; i < 8; ++i) controls[i] = ctl[i];
    for (size_t c = 0; c < 4; ++c) text[c] = code[c];
    const bool alpha = *static_cast<const bool*>(context);
    return Render(text, controls, src, w, h, alpha, dst, {}) == trel::ff::RenderStatus::Done ? 0 : 1;
  } catch (...) {
    return 1;
  }
}

void Planes(PIFilterRecord* rec, PIRect16 in, PIRect16 out) {
  rec->inRect = in;
  rec->outRect = out;
  rec->inLoPlane = rec->outLoPlane = 0;
  rec->inHiPlane = rec->outHiPlane = static_cast<int16_t>(rec->planes > 4 ? 3 : rec->planes - 1);
}

// The preview box of the layout block, which "Big Preview" and "Mega Preview"
// replace, and whether the OK button is dead (a demo plugin).
void ReadLayout(FFDialogFilter& d) {
  d.previewWidth = d.previewHeight = 180;
  const unsigned char* p = Resource("LAYOUT", 1, 20);
  if (!p || std::memcmp(p, "TRDL", 4) != 0) return;
  d.previewWidth = p[16] | p[17] << 8;
  d.previewHeight = p[18] | p[19] << 8;
  d.okDisabled = (p[6] & 1) != 0;
}

// The whole picture, shrunk to fit the preview box, as R, G, B, A; empty when
// the host gives none.
std::vector<uint8_t> PreviewPicture(PIFilterRecord* rec, int boxW, int boxH, int& w, int& h) {
  std::vector<uint8_t> pic;
  const int iw = rec->filterRect.right - rec->filterRect.left, ih = rec->filterRect.bottom - rec->filterRect.top;
  if (!rec->advanceState || iw <= 0 || ih <= 0 || boxW <= 0 || boxH <= 0) return pic;
  Planes(rec, rec->filterRect, PIRect16{});
  const bool got = rec->advanceState() == piNoErr && rec->inData;
  if (got) {
    w = iw;
    h = ih;
    if (w > boxW || h > boxH) {
      if (int64_t(w) * boxH > int64_t(h) * boxW) {
        h = std::max(1, int(int64_t(ih) * boxW / iw));
        w = boxW;
      } else {
        w = std::max(1, int(int64_t(iw) * boxH / ih));
        h = boxH;
      }
    }
    const int planes = rec->inHiPlane - rec->inLoPlane + 1;
    pic.assign(size_t(w) * size_t(h) * 4u, 255);
    for (int y = 0; y < h; ++y) {
      const auto* row = static_cast<const uint8_t*>(rec->inData) + ptrdiff_t(int64_t(y) * ih / h) * rec->inRowBytes;
      for (int x = 0; x < w; ++x)
        std::memcpy(&pic[(size_t(y) * size_t(w) + size_t(x)) * 4u], row + int64_t(x) * iw / w * planes,
                    size_t(planes));
    }
  }
  // Nothing more is asked until the start has set the real rectangles.
  Planes(rec, PIRect16{}, PIRect16{});
  if (rec->advanceState) rec->advanceState();
  return pic;
}

// The dialog before the run. Cancel ends the run; OK leaves the chosen values
// (and code) in the parameters, where Continue takes them from. A dialog that
// cannot be shown at all leaves the run to the values it would have had.
int16_t ShowDialog(PIFilterRecord* rec) {
  Filter f;
  if (!ReadBlock(f)) return piFilterBadParameters;
  ControlsFromHost(rec, f);
  auto d = std::make_unique<FFDialogFilter>();
  std::memset(d.get(), 0, sizeof *d);
  d->title = f.title.c_str();
  for (size_t i = 0; i < 8; ++i) {
    d->ctlName[i] = f.ctlName[i].c_str();
    d->ctl[i] = static_cast<unsigned char>(f.controls[i]);
  }
  for (size_t m = 0; m < 4; ++m) d->mapName[m] = f.mapName[m].c_str();
  // The code of a protected plugin is not for showing.
  d->editor = f.editor && !f.scrambled;
  for (size_t c = 0; c < 4; ++c)
    std::memcpy(d->code[c], f.code[c].c_str(), std::min(f.code[c].size() + 1, kCodeSize + 1));
  ReadLayout(*d);
  int w = 0, h = 0;
  const std::vector<uint8_t> picture = PreviewPicture(rec, d->previewWidth, d->previewHeight, w, h);
  bool alpha = rec->planes >= 4;
  if (!picture.empty()) {
    d->source = picture.data();
    d->sourceWidth = w;
    d->sourceHeight = h;
  }
  d->render = RenderPreview;
  d->context = &alpha;
  const auto* platform = static_cast<const PIPlatformData*>(rec->platformData);
  const HWND owner = platform ? reinterpret_cast<HWND>(platform->hwnd) : nullptr;
  const int chosen = FFRunDialog(g_module, owner, d.get());
  if (chosen == 0) return piUserCanceledErr;
  if (chosen < 0) return piNoErr;
  for (size_t i = 0; i < 8; ++i) f.controls[i] = d->ctl[i];
  if (d->editor)
    for (size_t c = 0; c < 4; ++c) f.code[c].assign(d->code[c], strnlen(d->code[c], kCodeSize));
  ControlsToHost(rec, f, d->editor != 0);
  return piNoErr;
}

int16_t Start(PIFilterRecord* rec) {
  const bool dialog = g_wantDialog;
  g_wantDialog = false;
  if (rec->imageMode != piModeRGBColor || rec->planes < 3) return piFilterBadMode;
  if (dialog) {
    const int16_t r = ShowDialog(rec);
    if (r != piNoErr) return r;
  }
  // The whole picture at once, all its planes.
  Planes(rec, rec->filterRect, rec->filterRect);
  return piNoErr;
}

int16_t Continue(PIFilterRecord* rec) {
  Filter f;
  if (!ReadBlock(f)) return piFilterBadParameters;
  ControlsFromHost(rec, f);
  const int w = rec->outRect.right - rec->outRect.left, h = rec->outRect.bottom - rec->outRect.top;
  const int planes = rec->outHiPlane - rec->outLoPlane + 1;
  std::vector<uint8_t> src(size_t(w) * size_t(h) * 4u, 255), dst(src.size(), 255);
  for (int y = 0; y < h; ++y) {
    const auto* in = static_cast<const uint8_t*>(rec->inData) + ptrdiff_t(y) * rec->inRowBytes;
    for (int x = 0; x < w; ++x)
      std::memcpy(&src[(size_t(y) * size_t(w) + size_t(x)) * 4u], in + x * planes, size_t(planes));
  }
  const trel::ff::RenderStatus st = Render(f.code, f.controls, src.data(), w, h, planes == 4, dst.data(),
                                           [rec] { return rec->abortProc && rec->abortProc(); });
  if (st == trel::ff::RenderStatus::Invalid) return piFilterBadParameters;
  if (st == trel::ff::RenderStatus::Cancelled) return piUserCanceledErr;
  for (int y = 0; y < h; ++y) {
    auto* out = static_cast<uint8_t*>(rec->outData) + ptrdiff_t(y) * rec->outRowBytes;
    for (int x = 0; x < w; ++x)
      std::memcpy(out + x * planes, &dst[(size_t(y) * size_t(w) + size_t(x)) * 4u], size_t(planes));
  }
  ControlsToHost(rec, f, false);
  std::memset(&rec->inRect, 0, sizeof rec->inRect);
  std::memset(&rec->outRect, 0, sizeof rec->outRect);
  return piNoErr;
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) g_module = instance;
  return TRUE;
}

namespace {

void About(const PIAboutRecord* about) {
  const unsigned char* block = Resource("PARM", 16, kFFBlockSize);
  const auto* platform = about ? static_cast<const PIPlatformData*>(about->platformData) : nullptr;
  if (block) FFShowAbout(platform ? reinterpret_cast<HWND>(platform->hwnd) : nullptr, block);
}

}  // namespace

extern "C" __declspec(dllexport) void PluginMain(int16_t selector, void* record, intptr_t* data, int16_t* result) {
  (void)data;
  auto* rec = static_cast<PIFilterRecord*>(record);
  *result = piNoErr;
  try {
    switch (selector) {
      case filterSelectorParameters:
        // A host that says not to show the dialog (a preview, a scripted run)
        // gets the run with the values it handed in.
        g_wantDialog = !(rec->descriptorParameters && rec->descriptorParameters->playInfo == plugInDialogDontDisplay);
        break;
      case filterSelectorFinish:
        g_wantDialog = false;
        break;
      case filterSelectorAbout:
        About(static_cast<const PIAboutRecord*>(record));
        break;
      case filterSelectorPrepare:
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
