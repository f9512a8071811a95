/* The dialog of a compiled Filter Factory plugin; see FFDialog.h.

   It is a dialog box made from an empty in-memory template, so the dialog
   manager gives it the modal loop, Tab between controls, Enter for OK and
   Esc for Cancel; the controls are made by hand when it opens. No C runtime:
   the small templates link this without one, so memory comes from the process
   heap, copies are loops, and no stack frame is big enough to need a probe. */
#include "FFDialog.h"

#include <commctrl.h>

enum {
  kMargin = 12,
  kRow = 24,        /* one slider row */
  kNameW = 96,      /* slider name column */
  kTrackW = 180,
  kValueW = 28,
  kColumnW = kNameW + 4 + kTrackW + 4 + kValueW,
  kCodeH = 44,      /* one code field, about three lines */
  kButtonW = 75,
  kButtonH = 23,
  kIdPreview = 90,
  kIdSlider = 100,  /* + control number */
  kIdValue = 120,
  kIdCode = 140,    /* + R, G, B, A */
  kTimerCode = 1,
  kCodeDelayMs = 600
};

typedef struct State {
  FFDialogFilter* f;
  HINSTANCE module;
  unsigned char ctl[8];
  int boxW, boxH;       /* the preview box */
  int pw, ph;           /* the picture inside it */
  unsigned char* small; /* the source scaled to pw x ph, R, G, B, A */
  unsigned char* bits;  /* the rendered preview, turned into B, G, R, x for GDI */
  int codeDirty;
  char code[4][kFFCodeFieldSize + 1];
} State;

static HWND Add(State* s, HWND dlg, DWORD exStyle, const char* cls, const char* text, DWORD style, int id, int x,
                int y, int w, int h) {
  HWND c = CreateWindowExA(exStyle, cls, text, WS_CHILD | WS_VISIBLE | style, x, y, w, h, dlg,
                           (HMENU)(INT_PTR)id, s->module, NULL);
  SendMessageA(c, WM_SETFONT, (WPARAM)GetStockObject(DEFAULT_GUI_FONT), 0);
  return c;
}

static int Shown(const char* name) { return name && name[0]; }

static void Render(HWND dlg, State* s) {
  const char* code[4];
  int i, n = s->pw * s->ph * 4;
  if (!s->small) return;
  for (i = 0; i < 4; ++i) code[i] = s->code[i];
  if (!s->f->render || s->f->render(s->f->context, s->ctl, code, s->small, s->pw, s->ph, s->bits) != 0) {
    for (i = 0; i < n; ++i) s->bits[i] = 0xC0;
  } else {
    /* GDI wants B, G, R; transparency shows as white behind the picture. */
    for (i = 0; i < n; i += 4) {
      unsigned char* p = s->bits + i;
      const int a = p[3], r = p[0];
      p[0] = (unsigned char)((p[2] * a + 255 * (255 - a)) / 255);
      p[1] = (unsigned char)((p[1] * a + 255 * (255 - a)) / 255);
      p[2] = (unsigned char)((r * a + 255 * (255 - a)) / 255);
    }
  }
  InvalidateRect(GetDlgItem(dlg, kIdPreview), NULL, FALSE);
}

/* The code as the user left it, without the carriage returns the edit
   control needs for its line breaks, and no longer than a code field. */
static void ReadCode(HWND dlg, State* s) {
  static char raw[2 * kFFCodeFieldSize + 1];
  int c;
  for (c = 0; c < 4; ++c) {
    char* t = s->code[c];
    int from, to = 0;
    GetDlgItemTextA(dlg, kIdCode + c, raw, sizeof raw);
    for (from = 0; raw[from] && to < kFFCodeFieldSize; ++from)
      if (raw[from] != '\r' || raw[from + 1] != '\n') t[to++] = raw[from];
    t[to] = 0;
  }
}

static void PaintPreview(State* s, const DRAWITEMSTRUCT* d) {
  BITMAPINFOHEADER bi;
  FillRect(d->hDC, &d->rcItem, GetSysColorBrush(COLOR_3DSHADOW));
  if (!s->small) return;
  bi.biSize = sizeof bi;
  bi.biWidth = s->pw;
  bi.biHeight = -s->ph; /* rows top first */
  bi.biPlanes = 1;
  bi.biBitCount = 32;
  bi.biCompression = BI_RGB;
  bi.biSizeImage = 0;
  bi.biXPelsPerMeter = bi.biYPelsPerMeter = 0;
  bi.biClrUsed = bi.biClrImportant = 0;
  SetDIBitsToDevice(d->hDC, (s->boxW - s->pw) / 2, (s->boxH - s->ph) / 2, (DWORD)s->pw, (DWORD)s->ph, 0, 0, 0,
                    (UINT)s->ph, s->bits, (const BITMAPINFO*)&bi, DIB_RGB_COLORS);
}

/* Nearest-neighbour copy of the source, shrunk to fit the box, never enlarged. */
static int ScaleSource(State* s) {
  const FFDialogFilter* f = s->f;
  const int sw = f->sourceWidth, sh = f->sourceHeight;
  HANDLE heap = GetProcessHeap();
  int x, y, k;
  if (!f->source || sw <= 0 || sh <= 0) return 1;
  s->pw = sw;
  s->ph = sh;
  if (sw > s->boxW || sh > s->boxH) {
    if (sw * s->boxH > sh * s->boxW) {
      s->pw = s->boxW;
      s->ph = sh * s->boxW / sw;
    } else {
      s->ph = s->boxH;
      s->pw = sw * s->boxH / sh;
    }
    if (s->pw < 1) s->pw = 1;
    if (s->ph < 1) s->ph = 1;
  }
  s->small = (unsigned char*)HeapAlloc(heap, 0, (SIZE_T)s->pw * (SIZE_T)s->ph * 4);
  s->bits = (unsigned char*)HeapAlloc(heap, 0, (SIZE_T)s->pw * (SIZE_T)s->ph * 4);
  if (!s->small || !s->bits) return 0;
  for (y = 0; y < s->ph; ++y)
    for (x = 0; x < s->pw; ++x) {
      const unsigned char* from = f->source + ((SIZE_T)(y * sh / s->ph) * (SIZE_T)sw + (SIZE_T)(x * sw / s->pw)) * 4;
      unsigned char* to = s->small + ((SIZE_T)y * (SIZE_T)s->pw + (SIZE_T)x) * 4;
      for (k = 0; k < 4; ++k) to[k] = from[k];
    }
  return 1;
}

static void Build(HWND dlg, State* s) {
  FFDialogFilter* f = s->f;
  static const char* const kCodeLabel[4] = {"&R:", "&G:", "&B:", "&A:"};
  char text[2 * kFFCodeFieldSize + 1]; /* every line break may become two characters */
  HWND first = NULL;
  RECT r;
  const int x0 = kMargin + s->boxW + 4 + kMargin;
  int i, y = kMargin, w, h;

  SetWindowTextA(dlg, f->title ? f->title : "");
  Add(s, dlg, WS_EX_CLIENTEDGE, "STATIC", "Preview", SS_OWNERDRAW, kIdPreview, kMargin, kMargin, s->boxW + 4,
      s->boxH + 4);
  for (i = 0; i < 8; ++i) {
    const char* map = f->mapName[i / 2];
    const char* name = Shown(map) ? (i % 2 ? "" : map) : f->ctlName[i];
    HWND track;
    if (!Shown(map) && !Shown(name)) continue;
    if (Shown(map) && i % 2 == 0) {
      /* A map heads its pair of sliders. */
      Add(s, dlg, 0, "STATIC", map, SS_LEFT | SS_NOPREFIX, -1, x0, y + 4, kColumnW, 16);
      y += kRow - 4;
    }
    if (!Shown(map)) Add(s, dlg, 0, "STATIC", name, SS_LEFT | SS_NOPREFIX | SS_ENDELLIPSIS, -1, x0, y + 4, kNameW, 16);
    /* A screen reader names a slider by its text: the control's or the map's name. */
    track = Add(s, dlg, 0, TRACKBAR_CLASSA, Shown(map) ? map : name, WS_TABSTOP | TBS_HORZ | TBS_NOTICKS,
                kIdSlider + i, x0 + kNameW + 4, y, kTrackW, 22);
    SendMessageA(track, TBM_SETRANGE, FALSE, MAKELPARAM(0, 255));
    SendMessageA(track, TBM_SETPAGESIZE, 0, 16);
    SendMessageA(track, TBM_SETPOS, TRUE, s->ctl[i]);
    Add(s, dlg, 0, "STATIC", "", SS_RIGHT, kIdValue + i, x0 + kNameW + 4 + kTrackW + 4, y + 4, kValueW, 16);
    SetDlgItemInt(dlg, kIdValue + i, s->ctl[i], FALSE);
    if (!first) first = track;
    y += kRow;
  }
  w = first ? x0 + kColumnW + kMargin : x0;
  if (w < 2 * kMargin + 2 * kButtonW + 6) w = 2 * kMargin + 2 * kButtonW + 6;
  if (y < kMargin + s->boxH + 4) y = kMargin + s->boxH + 4;
  y += kMargin;

  if (f->editor) {
    for (i = 0; i < 4; ++i) {
      /* Line breaks in the edit control are CR LF. */
      const char* from = f->code[i];
      int n = 0, k;
      for (k = 0; k < kFFCodeFieldSize && from[k]; ++k) {
        if (from[k] == '\n' && (k == 0 || from[k - 1] != '\r')) text[n++] = '\r';
        text[n++] = from[k];
      }
      text[n] = 0;
      Add(s, dlg, 0, "STATIC", kCodeLabel[i], SS_LEFT, -1, kMargin, y + 3, 20, 16);
      Add(s, dlg, WS_EX_CLIENTEDGE, "EDIT", text, WS_TABSTOP | ES_MULTILINE | ES_AUTOVSCROLL,
          kIdCode + i, kMargin + 22, y, w - 2 * kMargin - 22, kCodeH);
      /* Room for a full field even when every line break takes two characters here. */
      SendDlgItemMessageA(dlg, kIdCode + i, EM_LIMITTEXT, 2 * kFFCodeFieldSize, 0);
      if (!first) first = GetDlgItem(dlg, kIdCode + i);
      y += kCodeH + 6;
    }
    y += kMargin - 6;
  }

  Add(s, dlg, 0, "BUTTON", "OK", WS_TABSTOP | BS_DEFPUSHBUTTON, IDOK, w - kMargin - 2 * kButtonW - 6, y, kButtonW,
      kButtonH);
  Add(s, dlg, 0, "BUTTON", "Cancel", WS_TABSTOP | BS_PUSHBUTTON, IDCANCEL, w - kMargin - kButtonW, y, kButtonW,
      kButtonH);
  /* Made after the dialog, the OK button is not its default by itself; a
     code field hands Enter to the default button. */
  SendMessageA(dlg, DM_SETDEFID, IDOK, 0);
  if (f->okDisabled) EnableWindow(GetDlgItem(dlg, IDOK), FALSE);
  h = y + kButtonH + kMargin;

  /* The template is empty; now the window takes its size, centred on the screen. */
  r.left = r.top = 0;
  r.right = w;
  r.bottom = h;
  AdjustWindowRectEx(&r, (DWORD)GetWindowLongA(dlg, GWL_STYLE), FALSE, (DWORD)GetWindowLongA(dlg, GWL_EXSTYLE));
  w = r.right - r.left;
  h = r.bottom - r.top;
  SetWindowPos(dlg, NULL, (GetSystemMetrics(SM_CXSCREEN) - w) / 2, (GetSystemMetrics(SM_CYSCREEN) - h) / 2, w, h,
               SWP_NOZORDER);
  SetFocus(first ? first : GetDlgItem(dlg, IDCANCEL));
  SetForegroundWindow(dlg);
}

static INT_PTR CALLBACK DialogProc(HWND dlg, UINT msg, WPARAM wp, LPARAM lp) {
  State* s = (State*)GetWindowLongPtrA(dlg, DWLP_USER);
  if (!s && msg != WM_INITDIALOG) return FALSE;
  switch (msg) {
    case WM_INITDIALOG:
      SetWindowLongPtrA(dlg, DWLP_USER, lp);
      s = (State*)lp;
      Build(dlg, s);
      Render(dlg, s);
      return FALSE; /* the focus is set */
    case WM_HSCROLL: {
      const int i = GetDlgCtrlID((HWND)lp) - kIdSlider;
      if (i >= 0 && i < 8) {
        const int v = (int)SendMessageA((HWND)lp, TBM_GETPOS, 0, 0);
        if (v != s->ctl[i]) {
          s->ctl[i] = (unsigned char)v;
          SetDlgItemInt(dlg, kIdValue + i, (UINT)v, FALSE);
          Render(dlg, s);
        }
      }
      return TRUE;
    }
    case WM_TIMER:
      wp = MAKEWPARAM(kIdCode, EN_KILLFOCUS);
      /* fall through */
    case WM_COMMAND:
      switch (LOWORD(wp)) {
        case IDOK:
          /* Enter reaches here even when the OK button is dead. */
          if (!IsWindowEnabled(GetDlgItem(dlg, IDOK))) return TRUE;
          if (s->f->editor) ReadCode(dlg, s);
          EndDialog(dlg, 1);
          return TRUE;
        case IDCANCEL:
          EndDialog(dlg, 0);
          return TRUE;
      }
      if (LOWORD(wp) >= kIdCode && LOWORD(wp) < kIdCode + 4) {
        if (HIWORD(wp) == EN_CHANGE) {
          s->codeDirty = 1;
          SetTimer(dlg, kTimerCode, kCodeDelayMs, NULL);
        } else if (HIWORD(wp) == EN_KILLFOCUS && s->codeDirty) {
          s->codeDirty = 0;
          KillTimer(dlg, kTimerCode);
          ReadCode(dlg, s);
          Render(dlg, s);
        }
      }
      return TRUE;
    case WM_DRAWITEM:
      if (wp == kIdPreview) PaintPreview(s, (const DRAWITEMSTRUCT*)lp);
      return TRUE;
  }
  return FALSE;
}

int FFRunDialog(HINSTANCE module, HWND owner, FFDialogFilter* f) {
  /* An empty template: style, extended style, no items, position and size 0,
     no menu, the dialog class, no title. */
  static const DWORD kTemplate[6] = {WS_POPUP | WS_CAPTION | WS_SYSMENU | DS_MODALFRAME, 0, 0, 0, 0, 0};
  INITCOMMONCONTROLSEX icc;
  HANDLE heap = GetProcessHeap();
  State* s = (State*)HeapAlloc(heap, HEAP_ZERO_MEMORY, sizeof(State));
  INT_PTR result = -1;
  int i, k;
  if (!s) return -1;
  s->f = f;
  s->module = module;
  s->boxW = f->previewWidth > 0 && f->previewWidth <= 1024 ? f->previewWidth : 180;
  s->boxH = f->previewHeight > 0 && f->previewHeight <= 1024 ? f->previewHeight : 180;
  for (i = 0; i < 8; ++i) s->ctl[i] = f->ctl[i];
  for (i = 0; i < 4; ++i)
    for (k = 0; k < kFFCodeFieldSize && f->code[i][k]; ++k) s->code[i][k] = f->code[i][k];
  icc.dwSize = sizeof icc;
  icc.dwICC = ICC_BAR_CLASSES;
  InitCommonControlsEx(&icc);
  if (ScaleSource(s))
    result = DialogBoxIndirectParamA(module, (LPCDLGTEMPLATEA)kTemplate, owner, DialogProc, (LPARAM)s);
  if (result == 1) {
    for (i = 0; i < 8; ++i) f->ctl[i] = s->ctl[i];
    if (f->editor)
      for (i = 0; i < 4; ++i)
        for (k = 0; k <= kFFCodeFieldSize; ++k) f->code[i][k] = s->code[i][k];
  }
  if (s->small) HeapFree(heap, 0, s->small);
  if (s->bits) HeapFree(heap, 0, s->bits);
  HeapFree(heap, 0, s);
  return result == 1 ? 1 : result == 0 ? 0 : -1;
}

/* Appends at most `room` - 1 bytes of a field that need not end in a 0. */
static char* Append(char* out, const char* end, const unsigned char* field, int room) {
  int n;
  for (n = 0; n < room - 1 && field[n] && out < end; ++n) *out++ = (char)field[n];
  return out;
}

void FFShowAbout(HWND owner, const unsigned char* block) {
  static char text[3 * 256 + 8];
  static char caption[6 + 256];
  const char* end = text + sizeof text - 1;
  char* out = Append(text, end, block + kFFBlockTitle, kFFNameSize);
  *out++ = '\n';
  *out++ = '\n';
  out = Append(out, end, block + kFFBlockCopyright, kFFNameSize);
  *out++ = '\n';
  out = Append(out, end, block + kFFBlockAuthor, kFFNameSize);
  *out = 0;
  out = Append(caption, caption + sizeof caption - 1, (const unsigned char*)"About ", 7);
  out = Append(out, caption + sizeof caption - 1, block + kFFBlockTitle, kFFNameSize);
  *out = 0;
  MessageBoxA(owner, text, caption, MB_OK | MB_ICONINFORMATION);
}
