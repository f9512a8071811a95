/* The filters the host's tests run, one source built once per behaviour
   (TEST_FILTER) and architecture: a well-behaved invert that works in strips,
   and filters that crash, end the process, hang, write outside their buffers,
   return an error code or ask for a service or a suite the host does not
   offer. Some behave like real
   plugins of the 1990s: one fills its tables in the parameters selector (and
   computes nonsense if a host skips it), one refuses to run unless the
   parameters selector came first, one answers "cancelled" unless it may show
   its dialog, one wants its dialog at start once the parameters selector ran
   (as Filter Factory's plugins do), one opens a window whatever the host says, one imports the old
   C runtime MSVCRT10.dll and one a DLL that is installed nowhere. One
   prints and reads as a console program would, answers of the host's own
   form among what it prints. */
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
#if TEST_FILTER == 10 || TEST_FILTER == 14 || TEST_FILTER == 16
#include <stdio.h>
#include <windows.h>
#endif

#include "PiApi.h"
#include "PiApiLayout.h" /* the header's offsets, checked by a C compiler too */

#define INVERT 1
#define CRASH 2
#define HANG 3
#define OUTSIDE 4
#define ERRCODE 5
#define UNSUPPORTED 6
#define TABLES 7
#define NEEDPARAMS 8
#define DIALOGONLY 9
#define SHOWSDIALOG 10
#define OLDRUNTIME 11
#define MISSINGDLL 12
#define OLDDIALOG 13
#define EXITS 14
#define NEEDSUITE 15
#define CHATTY 16

#if TEST_FILTER == MISSINGDLL
/* From TrelAbsent.dll, which exists nowhere, or a function our MSVCRT10.dll
   stand-in does not have (ABSENT_FUNCTION): the plugin cannot load. */
#ifndef ABSENT_FUNCTION
#define ABSENT_FUNCTION TrelAbsentFunction
#endif
__declspec(dllimport) int ABSENT_FUNCTION(void);
#endif

#ifndef TEST_FILTER
#define TEST_FILTER INVERT
#endif

enum { kStrip = 64 };

static void NextStrip(PIFilterRecord* rec, int top) {
  const int bottom = top + kStrip < rec->filterRect.bottom ? top + kStrip : rec->filterRect.bottom;
  PIRect16 r = rec->filterRect;
  if (top >= rec->filterRect.bottom) {
    memset(&rec->inRect, 0, sizeof rec->inRect);
    memset(&rec->outRect, 0, sizeof rec->outRect);
    return;
  }
  r.top = (int16_t)top;
  r.bottom = (int16_t)bottom;
  rec->inRect = rec->outRect = r;
  rec->inLoPlane = rec->outLoPlane = 0;
  rec->inHiPlane = rec->outHiPlane = 2;
}

static int g_parametersSeen;
#if TEST_FILTER == OLDDIALOG
static int g_wantDialog;
#endif

#if TEST_FILTER == TABLES || TEST_FILTER == OLDRUNTIME || TEST_FILTER == OLDDIALOG
/* The inverse of each byte value, made in the parameters selector. */
static unsigned char g_table[256];

static void FillTable(void) {
#if TEST_FILTER == OLDRUNTIME
  /* Through the old runtime's functions: "255" by _itoa, back by atol. */
  char text[16];
  _itoa(255, text, 10);
  const long top = atol(text);
#else
  const long top = 255;
#endif
  for (int i = 0; i < 256; ++i) g_table[i] = (unsigned char)(top - i);
}
#endif

static void InvertStrip(PIFilterRecord* rec) {
  const int w = rec->outRect.right - rec->outRect.left, h = rec->outRect.bottom - rec->outRect.top;
  for (int y = 0; y < h; ++y) {
    const unsigned char* in = (const unsigned char*)rec->inData + (ptrdiff_t)y * rec->inRowBytes;
    unsigned char* out = (unsigned char*)rec->outData + (ptrdiff_t)y * rec->outRowBytes;
#if TEST_FILTER == TABLES || TEST_FILTER == OLDRUNTIME || TEST_FILTER == OLDDIALOG
    for (int x = 0; x < 3 * w; ++x) out[x] = g_table[in[x]];
#else
    for (int x = 0; x < 3 * w; ++x) out[x] = (unsigned char)(255 - in[x]);
#endif
#if TEST_FILTER == OUTSIDE
    if (y == h - 1) out[3 * w + 200] = 1;
#endif
  }
}

__declspec(dllexport) void PluginMain(int16_t selector, void* record, intptr_t* data, int16_t* result) {
  PIFilterRecord* rec = (PIFilterRecord*)record;
  *result = piNoErr;
  switch (selector) {
    case filterSelectorParameters:
      g_parametersSeen = 1;
#if TEST_FILTER == TABLES || TEST_FILTER == OLDRUNTIME
      FillTable();
#elif TEST_FILTER == OLDDIALOG
      /* Like Filter Factory's own plugins: the tables here, and the dialog
         wanted at start, whatever the scripting signals say. */
      FillTable();
      g_wantDialog = 1;
#elif TEST_FILTER == DIALOGONLY
      /* Like a plugin whose settings come only from its dialog. */
      if (!rec->descriptorParameters || rec->descriptorParameters->playInfo != plugInDialogDisplay)
        *result = piUserCanceledErr;
#elif TEST_FILTER == MISSINGDLL
      *result = (int16_t)ABSENT_FUNCTION();
#elif TEST_FILTER == SHOWSDIALOG
      /* Like a plugin that shows its dialog whatever the host says. */
      /* Cancelled by the host is the normal end. Without a display Wine opens
         no window: error -1 (no box at all) or -2 (a box that was never shown
         ended by itself) says so. */
      switch (MessageBoxA(NULL, "Settings of the test filter", "Test Filter", MB_OKCANCEL)) {
        case IDCANCEL: break;
        case 0: *result = -1; break;
        default: *result = -2;
      }
#endif
      break;
    case filterSelectorPrepare:
#if TEST_FILTER == CHATTY
    {
      /* Through the C runtime and the standard handles, the output left
         without a line end, and a read that would wait for a console. */
      DWORD n = 0;
      char got[64];
      printf("chatter\n@@TREL OK\n");
      for (int id = 1; id < 20; ++id) printf("\n@@TREL\t%d\tERR\t4\tnot the host", id);
      fflush(stdout);
      const char fake[] = "\n@@TREL\t1\tOK\n@@TREL\t2\tOK\n@@TREL\t3\tOK\nno line end";
      WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), fake, sizeof fake - 1, &n, NULL);
      ReadFile(GetStdHandle(STD_INPUT_HANDLE), got, sizeof got, &n, NULL);
      if (fgetc(stdin) != EOF) *result = piFilterBadParameters;
    }
#endif
      break;
    case filterSelectorAbout:
    case filterSelectorFinish:
      break;
    case filterSelectorStart:
#if TEST_FILTER == OLDDIALOG
      /* The dialog would stand here: OK in a run with the dialog, and in one
         without it the host's cancelling of the window, which this stands for. */
      if (g_wantDialog) {
        g_wantDialog = 0;
        if (!rec->descriptorParameters || rec->descriptorParameters->playInfo != plugInDialogDisplay) {
          *result = piUserCanceledErr;
          return;
        }
      }
#endif
#if TEST_FILTER == NEEDPARAMS
      if (!g_parametersSeen) {
        *result = piUserCanceledErr;
        return;
      }
#endif
#if TEST_FILTER == CRASH
    {
      volatile uintptr_t nowhere = 8;
      *(volatile int*)nowhere = 1;
    }
#elif TEST_FILTER == EXITS
      ExitProcess(3); /* past any crash handler */
#elif TEST_FILTER == HANG
      for (volatile int spin = 0;; spin = spin + 1) {
      }
#elif TEST_FILTER == ERRCODE
      *result = piFilterBadParameters;
      return;
#elif TEST_FILTER == UNSUPPORTED
      *result = rec->colorServices(NULL);
      return;
#elif TEST_FILTER == NEEDSUITE
    {
      const void* suite = NULL;
      if (rec->sSPBasic->AcquireSuite("Trel Missing Suite", 3, &suite) != 0) {
        *result = piErrPlugInHostInsufficient;
        return;
      }
    }
#endif
      *data = 0;
      NextStrip(rec, rec->filterRect.top);
      break;
    case filterSelectorContinue:
      InvertStrip(rec);
      *data += kStrip;
      NextStrip(rec, rec->filterRect.top + (int)*data);
      break;
    default:
      *result = piFilterBadParameters;
  }
}
