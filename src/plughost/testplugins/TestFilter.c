/* The filters the host's tests run, one source built once per behaviour
   (TEST_FILTER) and architecture: a well-behaved invert that works in strips,
   and filters that crash, hang, write outside their buffers, return an error
   code or ask for a service the host does not offer. */
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include "PiApi.h"

#define INVERT 1
#define CRASH 2
#define HANG 3
#define OUTSIDE 4
#define ERRCODE 5
#define UNSUPPORTED 6

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

static void InvertStrip(PIFilterRecord* rec) {
  const int w = rec->outRect.right - rec->outRect.left, h = rec->outRect.bottom - rec->outRect.top;
  for (int y = 0; y < h; ++y) {
    const unsigned char* in = (const unsigned char*)rec->inData + (ptrdiff_t)y * rec->inRowBytes;
    unsigned char* out = (unsigned char*)rec->outData + (ptrdiff_t)y * rec->outRowBytes;
    for (int x = 0; x < 3 * w; ++x) out[x] = (unsigned char)(255 - in[x]);
#if TEST_FILTER == OUTSIDE
    if (y == h - 1) out[3 * w + 200] = 1;
#endif
  }
}

__declspec(dllexport) void PluginMain(int16_t selector, void* record, intptr_t* data, int16_t* result) {
  PIFilterRecord* rec = (PIFilterRecord*)record;
  *result = piNoErr;
  switch (selector) {
    case filterSelectorAbout:
    case filterSelectorParameters:
    case filterSelectorPrepare:
    case filterSelectorFinish:
      break;
    case filterSelectorStart:
#if TEST_FILTER == CRASH
    {
      volatile uintptr_t nowhere = 8;
      *(volatile int*)nowhere = 1;
    }
#elif TEST_FILTER == HANG
      for (volatile int spin = 0;; spin = spin + 1) {
      }
#elif TEST_FILTER == ERRCODE
      *result = piFilterBadParameters;
      return;
#elif TEST_FILTER == UNSUPPORTED
      *result = rec->colorServices(NULL);
      return;
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
