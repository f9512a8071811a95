/* The dialog of a compiled Filter Factory plugin: the filter's title, its
   named sliders (a map's pair as one labelled pair), a live preview of the
   picture under the current values, OK and Cancel. With the stand-alone byte
   at 0 the plugin is an "editor plugin" and the dialog also shows the four
   code fields, so that the user can change the filter itself.

   Plain C over the Win32 API, with no C or C++ runtime of its own, so that the
   same unit serves the 64-bit template (beside the full engine) and the small
   32-bit templates (beside their compact interpreter). The dialog does not
   know how a filter is run: it calls back `render` for every preview. */
#ifndef TREL_FFDIALOG_H
#define TREL_FFDIALOG_H

#include <windows.h>

#include "FFBlock.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Runs the filter on `src` (w x h pixels, 4 bytes each: R, G, B, A, rows
   packed) into `dst` (same shape) under the given control values and code.
   Returns 0 on success; anything else leaves the preview grey. */
typedef int (*FFRenderProc)(void* context, const unsigned char ctl[8], const char* const code[4],
                            const unsigned char* src, int w, int h, unsigned char* dst);

typedef struct FFDialogFilter {
  const char* title;        /* window caption */
  const char* ctlName[8];   /* empty or NULL: that slider is hidden */
  const char* mapName[4];   /* not empty: sliders 2m and 2m+1 shown under this name */
  unsigned char ctl[8];     /* in: starting values; out: the values chosen on OK */
  int editor;               /* 1: also show the four code fields (stand-alone byte 0) */
  char code[4][kFFCodeFieldSize + 1]; /* R, G, B, A, each up to a full field and a 0;
                                         in and, when editor, out */
  int previewWidth;         /* preview box in pixels (the template's layout block) */
  int previewHeight;
  /* The picture the preview shows, 4 bytes a pixel as for render; the dialog
     scales it down to the preview box itself. May be NULL: no preview. */
  const unsigned char* source;
  int sourceWidth, sourceHeight;
  FFRenderProc render;
  void* context;
  int okDisabled;           /* 1: a demo plugin, whose OK button is dead */
} FFDialogFilter;

/* Shows the dialog modally. Returns 1 for OK (values, and code when editor,
   written back into `f`), 0 for Cancel, -1 when it could not be shown. */
int FFRunDialog(HINSTANCE module, HWND owner, FFDialogFilter* f);

/* The about box: title, copyright and author from the parameter block. */
void FFShowAbout(HWND owner, const unsigned char* block);

#ifdef __cplusplus
}
#endif

#endif
