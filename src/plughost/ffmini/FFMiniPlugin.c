/* The Windows entry of the small 32-bit templates: the compact interpreter
   (FFMini.c) reading its filter from the plugin's parameter block (resource
   PARM 16, where the compiler patches it). It follows the protocol of the
   64-bit template: controls from the host's parameters when they are ours
   ("TRFF" and eight values), otherwise from the block; the whole picture in
   one piece; the controls handed back after a run. Built without any C
   runtime, so only kernel32 and user32 calls and our own loops. */
#include <windows.h>

#include "PiApi.h"
#include "ffmini/FFMini.h"
#include "ffplugin/FFBlock.h"
#ifdef TREL_FFMINI_DIALOG
#include "ffplugin/FFDialog.h"
#endif

static const char kOurParameters[4] = {'T', 'R', 'F', 'F'};

static HMODULE g_module;
static FFMini g_mini;

typedef struct Filter {
  const char* code[4];
  int32_t ctl[8];
} Filter;

/* Set by the dialog at Start for the Continue calls of the same run. */
static int g_dialogWanted, g_chosen;
static int32_t g_chosenCtl[8];

static const unsigned char* Resource(const char* type, int id, DWORD minSize) {
  HRSRC res = FindResourceA(g_module, MAKEINTRESOURCEA(id), type);
  HGLOBAL loaded = res ? LoadResource(g_module, res) : NULL;
  const unsigned char* p = loaded ? (const unsigned char*)LockResource(loaded) : NULL;
  return p && SizeofResource(g_module, res) >= minSize ? p : NULL;
}

static const unsigned char* ReadBlock(Filter* f) {
  const unsigned char* p = Resource("PARM", 16, kFFBlockSize);
  if (!p) return NULL;
  for (int i = 0; i < 8; ++i) f->ctl[i] = p[kFFCtlValues + 4 * i];
  static char code[4 * kFFCodeFieldSize];
  FFReadCodeFields(p, code);
  for (int c = 0; c < 4; ++c) f->code[c] = code + kFFCodeFieldSize * c;
  return p;
}

static void ControlsFromHost(PIFilterRecord* rec, Filter* f) {
  if (!rec->parameters || !rec->handleProcs) return;
  const int32_t size = rec->handleProcs->getSizeProc(rec->parameters);
  const char* p = rec->handleProcs->lockProc(rec->parameters, 0);
  if (p && size >= 12 && p[0] == kOurParameters[0] && p[1] == kOurParameters[1] && p[2] == kOurParameters[2] &&
      p[3] == kOurParameters[3])
    for (int i = 0; i < 8; ++i) f->ctl[i] = (unsigned char)p[4 + i];
  rec->handleProcs->unlockProc(rec->parameters);
}

static void ControlsToHost(PIFilterRecord* rec, const Filter* f) {
  if (!rec->handleProcs) return;
  if (!rec->parameters) rec->parameters = rec->handleProcs->newProc(12);
  if (!rec->parameters || rec->handleProcs->getSizeProc(rec->parameters) < 12) return;
  char* p = rec->handleProcs->lockProc(rec->parameters, 0);
  if (!p) return;
  for (int i = 0; i < 4; ++i) p[i] = kOurParameters[i];
  for (int i = 0; i < 8; ++i) p[4 + i] = (char)f->ctl[i];
  rec->handleProcs->unlockProc(rec->parameters);
}

static int Planes(const PIFilterRecord* rec) { return rec->planes > 4 ? 4 : rec->planes; }

#ifdef TREL_FFMINI_DIALOG

static FFDialogFilter g_dialog;
static char g_names[13][kFFNameSize]; /* title, four maps, eight controls */
static int g_chosenCode;

/* A 0-terminated copy of a block field, or "" where its flag is off. */
static const char* Name(int slot, const unsigned char* field, int shown) {
  char* out = g_names[slot];
  int n = 0;
  while (shown && n < kFFNameSize - 1 && field[n]) {
    out[n] = (char)field[n];
    ++n;
  }
  out[n] = 0;
  return out;
}

static int RenderPreview(void* context, const unsigned char ctl[8], const char* const code[4],
                         const unsigned char* src, int w, int h, unsigned char* dst) {
  int32_t values[8];
  for (int i = 0; i < 8; ++i) values[i] = ctl[i];
  FFMiniPicture from = {(unsigned char*)src, w, h, w * 4, 4}, to = {dst, w, h, w * 4, 4};
  if (!FFMiniCompile(&g_mini, code)) return 1;
  return FFMiniRender(&g_mini, values, &from, *(const int*)context, &to, NULL, NULL) == kFFMiniDone ? 0 : 1;
}

/* The dialog over the picture the host has just handed in. */
static int16_t RunDialog(PIFilterRecord* rec) {
  Filter f;
  const unsigned char* block = ReadBlock(&f);
  if (!block) return piFilterBadParameters;
  ControlsFromHost(rec, &f);
  FFDialogFilter* d = &g_dialog;
  d->title = Name(0, block + kFFBlockTitle, 1);
  for (int i = 0; i < 4; ++i) d->mapName[i] = Name(1 + i, block + kFFMapNames + kFFNameSize * i, block[kFFMapFlags + 4 * i] == 1);
  for (int i = 0; i < 8; ++i) d->ctlName[i] = Name(5 + i, block + kFFCtlNames + kFFNameSize * i, block[kFFCtlFlags + 4 * i] == 1);
  for (int i = 0; i < 8; ++i) d->ctl[i] = (unsigned char)f.ctl[i];
  d->editor = block[kFFStandAlone] == 0;
  for (int c = 0; c < 4; ++c) {
    int n = 0;
    while (n < kFFCodeFieldSize && f.code[c][n]) {
      d->code[c][n] = f.code[c][n];
      ++n;
    }
    d->code[c][n] = 0;
  }
  const unsigned char* layout = Resource("LAYOUT", 1, 20);
  d->previewWidth = layout ? layout[16] | layout[17] << 8 : 200;
  d->previewHeight = layout ? layout[18] | layout[19] << 8 : 150;
  d->okDisabled = layout ? layout[6] & 1 : 0;

  /* The host fills the buffers for the rectangles asked for at once. */
  const int w = rec->inRect.right - rec->inRect.left, h = rec->inRect.bottom - rec->inRect.top;
  const int planes = Planes(rec);
  static int alpha;
  alpha = planes == 4;
  unsigned char* picture = NULL;
  if (rec->advanceState && rec->advanceState() == piNoErr && rec->inData && w > 0 && h > 0)
    picture = (unsigned char*)HeapAlloc(GetProcessHeap(), 0, (SIZE_T)w * (SIZE_T)h * 4u);
  if (picture) {
    for (int y = 0; y < h; ++y) {
      const unsigned char* in = (const unsigned char*)rec->inData + y * rec->inRowBytes;
      unsigned char* out = picture + y * w * 4;
      for (int x = 0; x < w; ++x, in += planes, out += 4)
        for (int z = 0; z < 4; ++z) out[z] = z < planes ? in[z] : 255;
    }
  }
  d->source = picture;
  d->sourceWidth = w;
  d->sourceHeight = h;
  d->render = RenderPreview;
  d->context = &alpha;
  const PIPlatformData* platform = (const PIPlatformData*)rec->platformData;
  const int answer = FFRunDialog(g_module, platform ? (HWND)platform->hwnd : NULL, d);
  if (picture) HeapFree(GetProcessHeap(), 0, picture);
  if (answer == 0) return piUserCanceledErr;
  if (answer > 0) {
    for (int i = 0; i < 8; ++i) g_chosenCtl[i] = d->ctl[i];
    g_chosen = 1;
    g_chosenCode = d->editor;
  }
  return piNoErr;
}

static void About(const PIAboutRecord* about) {
  const unsigned char* block = Resource("PARM", 16, kFFBlockSize);
  const PIPlatformData* platform = about ? (const PIPlatformData*)about->platformData : NULL;
  if (block) FFShowAbout(platform ? (HWND)platform->hwnd : NULL, block);
}

#endif

static int16_t Start(PIFilterRecord* rec) {
  if (rec->imageMode != piModeRGBColor || rec->planes < 3) return piFilterBadMode;
  /* The whole picture at once, all its planes. */
  rec->inRect = rec->outRect = rec->filterRect;
  rec->inLoPlane = rec->outLoPlane = 0;
  rec->inHiPlane = rec->outHiPlane = (int16_t)(Planes(rec) - 1);
#ifdef TREL_FFMINI_DIALOG
  if (g_dialogWanted) return RunDialog(rec);
#endif
  return piNoErr;
}

static int Cancelled(void* context) {
  const PIFilterRecord* rec = (const PIFilterRecord*)context;
  return rec->abortProc && rec->abortProc();
}

static int16_t Continue(PIFilterRecord* rec) {
  Filter f;
  if (!ReadBlock(&f)) return piFilterBadParameters;
  ControlsFromHost(rec, &f);
  if (g_chosen)
    for (int i = 0; i < 8; ++i) f.ctl[i] = g_chosenCtl[i];
#ifdef TREL_FFMINI_DIALOG
  if (g_chosen && g_chosenCode)
    for (int c = 0; c < 4; ++c) f.code[c] = g_dialog.code[c];
#endif
  if (!FFMiniCompile(&g_mini, f.code)) return piFilterBadParameters;
  const int w = rec->outRect.right - rec->outRect.left, h = rec->outRect.bottom - rec->outRect.top;
  const int planes = rec->outHiPlane - rec->outLoPlane + 1;
  if (!rec->inData || !rec->outData || planes < 3 || planes > 4) return piMemFullErr;
  const FFMiniPicture from = {(unsigned char*)rec->inData, w, h, rec->inRowBytes, planes};
  const FFMiniPicture to = {(unsigned char*)rec->outData, w, h, rec->outRowBytes, planes};
  const int status = FFMiniRender(&g_mini, f.ctl, &from, planes == 4, &to, Cancelled, rec);
  if (status == kFFMiniCancelled) return piUserCanceledErr;
  if (status != kFFMiniDone) return piMemFullErr;
  ControlsToHost(rec, &f);
  rec->inRect.top = rec->inRect.left = rec->inRect.bottom = rec->inRect.right = 0;
  rec->outRect = rec->inRect;
  return piNoErr;
}

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved) {
  (void)reserved;
  if (reason == DLL_PROCESS_ATTACH) g_module = instance;
  return TRUE;
}

__declspec(dllexport) void PluginMain(int16_t selector, void* record, intptr_t* data, int16_t* result) {
  (void)data;
  PIFilterRecord* rec = (PIFilterRecord*)record;
  *result = piNoErr;
  switch (selector) {
    case filterSelectorAbout:
#ifdef TREL_FFMINI_DIALOG
      About((const PIAboutRecord*)record);
#endif
      break;
    case filterSelectorPrepare:
      break;
    case filterSelectorParameters:
      /* No dialog when the host says not to show one (a preview). */
      g_dialogWanted = !(rec->descriptorParameters && rec->descriptorParameters->playInfo == plugInDialogDontDisplay);
      break;
    case filterSelectorStart:
      g_chosen = 0;
      *result = Start(rec);
      break;
    case filterSelectorContinue:
      *result = Continue(rec);
      break;
    case filterSelectorFinish:
      g_dialogWanted = g_chosen = 0;
      break;
    default:
      *result = piFilterBadParameters;
  }
}
