/* A filter that knows the plugin interface only as byte offsets: it does not
   include PiApi.h, so a wrong layout of the host's header cannot hide here as
   it does in the filters that share it. Its table is written from the public
   definitions of the interface: the filter record is 4-byte packed on 32 and
   64 bits, every other structure the host hands out has natural alignment.

   At each selector it reads every field of the record and of each suite at its
   offset, checks what the host must have put there and calls each callback
   with arguments whose answer it knows. Whatever does not match is reported
   through the record's error string (errReportString); a callback through a
   wrong offset usually crashes, which the host reports too. When all is well
   it inverts the picture, again through raw offsets only. */
#include <stddef.h>
#include <stdint.h>
#include <string.h>

#if defined(_WIN64)
#define AT(off32, off64) (off64)
#else
#define AT(off32, off64) (off32)
#endif
#define PTR ((size_t)sizeof(void*))

/* Selectors and result codes. */
enum { kAbout = 0, kParameters = 1, kPrepare = 2, kStart = 3, kContinue = 4, kFinish = 5 };
enum { kReportString = -30904, kBadParameters = -30100, kHostInsufficient = -30900 };

/* The filter record. */
enum {
  R_serialNumber = AT(0, 0),
  R_abortProc = AT(4, 4),
  R_progressProc = AT(8, 12),
  R_parameters = AT(12, 20),
  R_imageSize = AT(16, 28),
  R_planes = AT(20, 32),
  R_filterRect = AT(22, 34),
  R_background = AT(30, 42),
  R_foreground = AT(36, 48),
  R_maxSpace = AT(44, 56),
  R_bufferSpace = AT(48, 60),
  R_inRect = AT(52, 64),
  R_inLoPlane = AT(60, 72),
  R_inHiPlane = AT(62, 74),
  R_outRect = AT(64, 76),
  R_outLoPlane = AT(72, 84),
  R_outHiPlane = AT(74, 86),
  R_inData = AT(76, 88),
  R_inRowBytes = AT(80, 96),
  R_outData = AT(84, 100),
  R_outRowBytes = AT(88, 108),
  R_isFloating = AT(92, 112),
  R_haveMask = AT(93, 113),
  R_autoMask = AT(94, 114),
  R_maskRect = AT(96, 116),
  R_maskData = AT(104, 124),
  R_maskRowBytes = AT(108, 132),
  R_backColor = AT(112, 136),
  R_foreColor = AT(116, 140),
  R_hostSig = AT(120, 144),
  R_hostProc = AT(124, 148),
  R_imageMode = AT(128, 156),
  R_imageHRes = AT(132, 160),
  R_imageVRes = AT(136, 164),
  R_floatCoord = AT(140, 168),
  R_wholeSize = AT(144, 172),
  R_monitor = AT(148, 176),
  R_platformData = AT(188, 216),
  R_bufferProcs = AT(192, 224),
  R_resourceProcs = AT(196, 232),
  R_processEvent = AT(200, 240),
  R_displayPixels = AT(204, 248),
  R_handleProcs = AT(208, 256),
  R_supportsDummyChannels = AT(212, 264),
  R_supportsAlternateLayouts = AT(213, 265),
  R_wantLayout = AT(214, 266),
  R_filterCase = AT(216, 268),
  R_dummyPlaneValue = AT(218, 270),
  R_premiereHook = AT(220, 272),
  R_advanceState = AT(224, 280),
  R_supportsAbsolute = AT(228, 288),
  R_wantsAbsolute = AT(229, 289),
  R_getPropertyObsolete = AT(232, 292),
  R_cannotUndo = AT(236, 300),
  R_supportsPadding = AT(237, 301),
  R_inputPadding = AT(238, 302),
  R_outputPadding = AT(240, 304),
  R_maskPadding = AT(242, 306),
  R_samplingSupport = AT(244, 308),
  R_reservedByte = AT(245, 309),
  R_inputRate = AT(248, 312),
  R_maskRate = AT(252, 316),
  R_colorServices = AT(256, 320),
  R_inLayerPlanes = AT(260, 328), /* then 18 more 16-bit counts */
  R_inColumnBytes = AT(300, 368),
  R_inPlaneBytes = AT(304, 372),
  R_outColumnBytes = AT(308, 376),
  R_outPlaneBytes = AT(312, 380),
  R_imageServicesProcs = AT(316, 384),
  R_propertyProcs = AT(320, 392),
  R_inTileHeight = AT(324, 400), /* then the tile sizes and origins, 32 bytes */
  R_descriptorParameters = AT(356, 432),
  R_errorString = AT(360, 440),
  R_channelPortProcs = AT(364, 448),
  R_documentInfo = AT(368, 456),
  R_sSPBasic = AT(372, 464),
  R_plugInRef = AT(376, 472),
  R_depth = AT(380, 480),
  R_iccProfileData = AT(384, 484),
  R_iccProfileSize = AT(388, 492),
  R_canUseICCProfiles = AT(392, 496)
};

/* A callback suite: two 16-bit numbers, then pointers from offset 4 or 8. */
#define SUITE_PROC(i) (AT(4, 8) + (size_t)(i) * PTR)

/* Handle procs: new, dispose, getSize, setSize, lock, unlock, recoverSpace, disposeRegular. */
/* Buffer procs: allocate, lock, unlock, free, space. */
/* Resource procs: count, get, delete, add. */
/* Property procs: get, set. */
/* Channel ports: readPixels, writeBasePixels, readPortForWritePort. */
/* Image services: interpolate1D, interpolate2D. */
/* Descriptor parameters: version, playInfo, recordInfo (16-bit), then descriptor, write procs, read procs. */
enum { D_playInfo = 2, D_descriptor = 8, D_writeProcs = AT(12, 16), D_readProcs = AT(16, 24) };
/* The basic suite: seven pointers from offset 0. The about record: platform data, basic suite, plugin reference. */

typedef char** Handle;

static int16_t I16(const void* base, size_t at) {
  int16_t v;
  memcpy(&v, (const char*)base + at, sizeof v);
  return v;
}
static int32_t I32(const void* base, size_t at) {
  int32_t v;
  memcpy(&v, (const char*)base + at, sizeof v);
  return v;
}
static uint8_t U8(const void* base, size_t at) { return ((const uint8_t*)base)[at]; }
static void* Ptr(const void* base, size_t at) {
  void* v;
  memcpy(&v, (const char*)base + at, sizeof v);
  return v;
}
static void SetI16(void* base, size_t at, int16_t v) { memcpy((char*)base + at, &v, sizeof v); }
static void SetPtr(void* base, size_t at, void* v) { memcpy((char*)base + at, &v, sizeof v); }
/* A function pointer from `at` in `base`, into a variable of the right type. */
#define PROC(var, base, at) memcpy(&(var), (const char*)(base) + (at), sizeof(var))

/* What did not match, collected for the error string. */
static char g_report[256];
static int g_reportLength;
static int g_failures;

static void Fail(const char* what) {
  ++g_failures;
  const size_t n = strlen(what);
  if (g_reportLength + (int)n + 2 >= (int)sizeof g_report) return;
  if (g_reportLength) {
    g_report[g_reportLength++] = ';';
    g_report[g_reportLength++] = ' ';
  }
  memcpy(g_report + g_reportLength, what, n);
  g_reportLength += (int)n;
}
#define EXPECT(cond, what) \
  do {                     \
    if (!(cond)) Fail(what); \
  } while (0)

static uint32_t Code(char a, char b, char c, char d) {
  return (uint32_t)(uint8_t)a << 24 | (uint32_t)(uint8_t)b << 16 | (uint32_t)(uint8_t)c << 8 | (uint8_t)d;
}

static void CheckHandleProcs(const void* s) {
  EXPECT(I16(s, 2) >= 8, "handleProcs.numHandleProcs");
  Handle (*newProc)(int32_t);
  void (*disposeProc)(Handle);
  int32_t (*getSizeProc)(Handle);
  int16_t (*setSizeProc)(Handle, int32_t);
  char* (*lockProc)(Handle, uint8_t);
  void (*unlockProc)(Handle);
  void (*recoverSpaceProc)(int32_t);
  void (*disposeRegularProc)(Handle);
  PROC(newProc, s, SUITE_PROC(0));
  PROC(disposeProc, s, SUITE_PROC(1));
  PROC(getSizeProc, s, SUITE_PROC(2));
  PROC(setSizeProc, s, SUITE_PROC(3));
  PROC(lockProc, s, SUITE_PROC(4));
  PROC(unlockProc, s, SUITE_PROC(5));
  PROC(recoverSpaceProc, s, SUITE_PROC(6));
  PROC(disposeRegularProc, s, SUITE_PROC(7));
  Handle h = newProc(16);
  EXPECT(h != NULL, "handleProcs.newProc");
  if (!h) return;
  EXPECT(getSizeProc(h) == 16, "handleProcs.getSizeProc");
  EXPECT(setSizeProc(h, 40) == 0 && getSizeProc(h) == 40, "handleProcs.setSizeProc");
  char* p = lockProc(h, 0);
  EXPECT(p != NULL && p == *h, "handleProcs.lockProc");
  if (p) memset(p, 7, 40);
  unlockProc(h);
  disposeProc(h);
  recoverSpaceProc(0);
  Handle other = newProc(4);
  EXPECT(other != NULL, "handleProcs.newProc");
  if (other) disposeRegularProc(other);
}

static void CheckBufferProcs(const void* s) {
  EXPECT(I16(s, 2) >= 5, "bufferProcs.numBufferProcs");
  int16_t (*allocateProc)(int32_t, void**);
  char* (*lockProc)(void*, uint8_t);
  void (*unlockProc)(void*);
  void (*freeProc)(void*);
  int32_t (*spaceProc)(void);
  PROC(allocateProc, s, SUITE_PROC(0));
  PROC(lockProc, s, SUITE_PROC(1));
  PROC(unlockProc, s, SUITE_PROC(2));
  PROC(freeProc, s, SUITE_PROC(3));
  PROC(spaceProc, s, SUITE_PROC(4));
  void* id = NULL;
  EXPECT(allocateProc(100, &id) == 0 && id != NULL, "bufferProcs.allocateProc");
  if (!id) return;
  char* p = lockProc(id, 0);
  EXPECT(p != NULL, "bufferProcs.lockProc");
  if (p) memset(p, 1, 100);
  unlockProc(id);
  freeProc(id);
  EXPECT(spaceProc() > 0, "bufferProcs.spaceProc");
}

static void CheckResourceProcs(const void* s, const void* handles) {
  EXPECT(I16(s, 2) >= 4, "resourceProcs.numResourceProcs");
  int16_t (*countProc)(uint32_t);
  Handle (*getProc)(uint32_t, int16_t);
  void (*deleteProc)(uint32_t, int16_t);
  int16_t (*addProc)(uint32_t, Handle);
  PROC(countProc, s, SUITE_PROC(0));
  PROC(getProc, s, SUITE_PROC(1));
  PROC(deleteProc, s, SUITE_PROC(2));
  PROC(addProc, s, SUITE_PROC(3));
  Handle (*newProc)(int32_t);
  void (*disposeProc)(Handle);
  int32_t (*getSizeProc)(Handle);
  PROC(newProc, handles, SUITE_PROC(0));
  PROC(disposeProc, handles, SUITE_PROC(1));
  PROC(getSizeProc, handles, SUITE_PROC(2));
  const uint32_t type = Code('t', 'L', 'a', 'y');
  const int16_t before = countProc(type);
  Handle h = newProc(6);
  if (!h) return;
  EXPECT(addProc(type, h) == 0, "resourceProcs.addProc");
  EXPECT(countProc(type) == before + 1, "resourceProcs.countProc");
  Handle back = getProc(type, (int16_t)(before + 1));
  EXPECT(back != NULL && getSizeProc(back) == 6, "resourceProcs.getProc");
  if (back) disposeProc(back);
  deleteProc(type, (int16_t)(before + 1));
  EXPECT(countProc(type) == before, "resourceProcs.deleteProc");
  disposeProc(h);
}

static void CheckPropertyProcs(const void* s, int planes) {
  EXPECT(I16(s, 2) >= 2, "propertyProcs.numPropertyProcs");
  int16_t (*getProc)(uint32_t, uint32_t, int32_t, intptr_t*, Handle*);
  int16_t (*setProc)(uint32_t, uint32_t, int32_t, intptr_t, Handle);
  PROC(getProc, s, SUITE_PROC(0));
  PROC(setProc, s, SUITE_PROC(1));
  intptr_t value = -1;
  EXPECT(getProc(Code('8', 'B', 'I', 'M'), Code('n', 'u', 'c', 'h'), 0, &value, NULL) == 0 && value == planes,
         "propertyProcs.getPropertyProc");
  (void)setProc(Code('8', 'B', 'I', 'M'), Code('t', 'L', 'a', 'y'), 0, 0, NULL);
}

static void CheckChannelPorts(const void* s) {
  EXPECT(I16(s, 2) >= 3, "channelPortProcs.numChannelPortProcs");
  int16_t (*readPortForWritePort)(void**, void*);
  PROC(readPortForWritePort, s, SUITE_PROC(2));
  void* port = (void*)&port;
  (void)readPortForWritePort(&port, NULL);
  EXPECT(port == NULL, "channelPortProcs.readPortForWritePortProc");
  EXPECT(Ptr(s, SUITE_PROC(0)) != NULL && Ptr(s, SUITE_PROC(1)) != NULL, "channelPortProcs procs");
}

static void CheckImageServices(const void* s) {
  EXPECT(I16(s, 2) >= 2, "imageServicesProcs.numImageServicesProcs");
  EXPECT(Ptr(s, SUITE_PROC(0)) != NULL && Ptr(s, SUITE_PROC(1)) != NULL, "imageServicesProcs procs");
}

static void CheckBasicSuite(const void* s) {
  int32_t (*acquire)(const char*, int32_t, const void**);
  int32_t (*release)(const char*, int32_t);
  uint8_t (*isEqual)(const char*, const char*);
  int32_t (*allocate)(size_t, void**);
  int32_t (*freeBlock)(void*);
  int32_t (*reallocate)(void*, size_t, void**);
  PROC(acquire, s, 0 * PTR);
  PROC(release, s, 1 * PTR);
  PROC(isEqual, s, 2 * PTR);
  PROC(allocate, s, 3 * PTR);
  PROC(freeBlock, s, 4 * PTR);
  PROC(reallocate, s, 5 * PTR);
  EXPECT(Ptr(s, 6 * PTR) != NULL, "sSPBasic.Undefined");
  const void* suite = &suite;
  EXPECT(acquire("Trel Layout Suite", 1, &suite) == 0x53214664 && suite == NULL, "sSPBasic.AcquireSuite");
  EXPECT(release("Trel Layout Suite", 1) == 0, "sSPBasic.ReleaseSuite");
  EXPECT(isEqual("same", "same") && !isEqual("same", "other"), "sSPBasic.IsEqual");
  void* block = NULL;
  void* grown = NULL;
  EXPECT(allocate(10, &block) == 0 && block != NULL, "sSPBasic.AllocateBlock");
  if (!block) return;
  memset(block, 3, 10);
  EXPECT(reallocate(block, 20, &grown) == 0 && grown != NULL, "sSPBasic.ReallocateBlock");
  EXPECT(freeBlock(grown ? grown : block) == 0, "sSPBasic.FreeBlock");
}

/* The suites acquired by name: pointers from offset 0. Handle suite 1: New,
   Dispose, SetLock, GetSize, SetSize, RecoverSpace; 2 puts DisposeRegularHandle
   after Dispose. Buffer suite 1: New, Dispose, GetSize, GetSpace. UIHooks 1:
   processEvent, displayPixels, progressBar, testAbort, MainAppWindow,
   SetCursor, TickCount, GetPluginName. */
static void CheckNamedSuites(const void* basic) {
  int32_t (*acquire)(const char*, int32_t, const void**);
  int32_t (*release)(const char*, int32_t);
  PROC(acquire, basic, 0 * PTR);
  PROC(release, basic, 1 * PTR);
  for (int version = 1; version <= 2; ++version) {
    const void* hs = NULL;
    EXPECT(acquire("Photoshop Handle Suite for Plug-ins", version, &hs) == 0 && hs, "handle suite");
    if (!hs) continue;
    const size_t shift = version == 2 ? PTR : 0; /* DisposeRegularHandle */
    Handle (*newProc)(int32_t);
    void (*disposeProc)(Handle);
    void (*setLock)(Handle, uint8_t, char**, uint8_t*);
    int32_t (*getSize)(Handle);
    int16_t (*setSize)(Handle, int32_t);
    void (*recoverSpace)(int32_t);
    PROC(newProc, hs, 0 * PTR);
    PROC(disposeProc, hs, 1 * PTR);
    PROC(setLock, hs, 2 * PTR + shift);
    PROC(getSize, hs, 3 * PTR + shift);
    PROC(setSize, hs, 4 * PTR + shift);
    PROC(recoverSpace, hs, 5 * PTR + shift);
    Handle h = newProc(8);
    EXPECT(h != NULL && getSize(h) == 8, "handle suite New, GetSize");
    if (!h) continue;
    char* address = NULL;
    uint8_t old = 1;
    setLock(h, 1, &address, &old);
    EXPECT(address == *h, "handle suite SetLock");
    EXPECT(setSize(h, 20) == 0 && getSize(h) == 20, "handle suite SetSize");
    recoverSpace(0);
    disposeProc(h);
    if (version == 2) {
      void (*disposeRegular)(Handle);
      PROC(disposeRegular, hs, 2 * PTR);
      Handle other = newProc(2);
      if (other) disposeRegular(other);
    }
    release("Photoshop Handle Suite for Plug-ins", version);
  }
  const void* bs = NULL;
  EXPECT(acquire("Photoshop Buffer Suite for Plug-ins", 1, &bs) == 0 && bs, "buffer suite");
  if (bs) {
    char* (*newBuffer)(uint32_t*, uint32_t);
    void (*disposeBuffer)(char**);
    uint32_t (*getSize)(char*);
    uint32_t (*getSpace)(void);
    PROC(newBuffer, bs, 0 * PTR);
    PROC(disposeBuffer, bs, 1 * PTR);
    PROC(getSize, bs, 2 * PTR);
    PROC(getSpace, bs, 3 * PTR);
    uint32_t size = 100;
    char* b = newBuffer(&size, 10);
    EXPECT(b != NULL && size >= 10 && getSize(b) == size, "buffer suite New, GetSize");
    if (b) memset(b, 5, size);
    disposeBuffer(&b);
    EXPECT(b == NULL, "buffer suite Dispose");
    EXPECT(getSpace() > 0, "buffer suite GetSpace");
  }
  const void* ui = NULL;
  EXPECT(acquire("Photoshop UIHooks Suite for Plug-ins", 1, &ui) == 0 && ui, "UIHooks suite");
  if (ui) {
    uint8_t (*testAbort)(void);
    intptr_t (*mainWindow)(void);
    PROC(testAbort, ui, 3 * PTR);
    PROC(mainWindow, ui, 4 * PTR);
    EXPECT(testAbort() == 0, "UIHooks testAbort");
    (void)mainWindow();
    EXPECT(Ptr(ui, 5 * PTR) && Ptr(ui, 6 * PTR) && Ptr(ui, 7 * PTR), "UIHooks procs");
  }
}

static void CheckDescriptor(void* d, int16_t wantPlay) {
  EXPECT(I16(d, 0) == 0, "descriptorParameters.descriptorParametersVersion");
  EXPECT(I16(d, D_playInfo) == wantPlay, "descriptorParameters.playInfo");
  const void* reader = Ptr(d, D_readProcs);
  const void* writer = Ptr(d, D_writeProcs);
  EXPECT(reader && writer, "descriptorParameters procs");
  if (!reader || !writer) return;
  EXPECT(I16(reader, 2) >= 18, "readDescriptorProcs.numReadDescriptorProcs");
  EXPECT(I16(writer, 2) >= 16, "writeDescriptorProcs.numWriteDescriptorProcs");
  void* (*openRead)(Handle, uint32_t*);
  int16_t (*closeRead)(void*);
  uint8_t (*getKey)(void*, uint32_t*, uint32_t*, int32_t*);
  PROC(openRead, reader, SUITE_PROC(0));
  PROC(closeRead, reader, SUITE_PROC(1));
  PROC(getKey, reader, SUITE_PROC(2));
  void* token = openRead((Handle)Ptr(d, D_descriptor), NULL);
  if (token) {
    uint32_t key = 1, type = 1;
    int32_t flags = 1;
    EXPECT(!getKey(token, &key, &type, &flags), "readDescriptorProcs.getKeyProc");
    EXPECT(closeRead(token) == 0, "readDescriptorProcs.closeReadDescriptorProc");
  }
  void* (*openWrite)(void);
  int16_t (*closeWrite)(void*, Handle*);
  int16_t (*putInteger)(void*, uint32_t, int32_t);
  PROC(openWrite, writer, SUITE_PROC(0));
  PROC(closeWrite, writer, SUITE_PROC(1));
  PROC(putInteger, writer, SUITE_PROC(2));
  void* out = openWrite();
  EXPECT(out != NULL, "writeDescriptorProcs.openWriteDescriptorProc");
  if (!out) return;
  EXPECT(putInteger(out, Code('A', 'm', 'n', 't'), 5) == 0, "writeDescriptorProcs.putIntegerProc");
  Handle recorded = NULL;
  EXPECT(closeWrite(out, &recorded) == 0 && recorded != NULL, "writeDescriptorProcs.closeWriteDescriptorProc");
  SetPtr(d, D_descriptor, recorded);
}

/* Every field of the record, as the host fills it before a run. */
static void CheckRecord(void* r, int16_t wantPlay) {
  const int16_t planes = I16(r, R_planes);
  EXPECT(planes == 3 || planes == 4, "planes");
  const int16_t height = I16(r, R_imageSize), width = I16(r, R_imageSize + 2);
  EXPECT(height > 0 && width > 0, "imageSize");
  EXPECT(I16(r, R_filterRect) == 0 && I16(r, R_filterRect + 2) == 0 && I16(r, R_filterRect + 4) == height &&
             I16(r, R_filterRect + 6) == width,
         "filterRect");
  EXPECT(I16(r, R_wholeSize) == height && I16(r, R_wholeSize + 2) == width, "wholeSize");
  EXPECT((uint16_t)I16(r, R_background) == 0xFFFF && (uint16_t)I16(r, R_background + 4) == 0xFFFF,
         "background");
  EXPECT(I16(r, R_foreground) == 0 && I16(r, R_foreground + 4) == 0, "foreground");
  EXPECT(I32(r, R_maxSpace) > 0, "maxSpace");
  (void)I32(r, R_serialNumber);
  (void)I32(r, R_bufferSpace);
  (void)Ptr(r, R_parameters);
  EXPECT(U8(r, R_isFloating) == 0 && U8(r, R_haveMask) == 0 && U8(r, R_autoMask) == 0, "isFloating, haveMask, autoMask");
  EXPECT(Ptr(r, R_maskData) == NULL && I32(r, R_maskRowBytes) == 0 && I16(r, R_maskRect + 4) == 0, "mask");
  EXPECT(U8(r, R_backColor) == 255 && U8(r, R_foreColor) == 0, "backColor, foreColor");
  EXPECT((uint32_t)I32(r, R_hostSig) == Code('T', 'R', 'E', 'L'), "hostSig");
  EXPECT(I16(r, R_imageMode) == 3, "imageMode");
  EXPECT(I32(r, R_imageHRes) == 72 << 16 && I32(r, R_imageVRes) == 72 << 16, "imageHRes, imageVRes");
  EXPECT(I32(r, R_floatCoord) == 0, "floatCoord");
  EXPECT(I32(r, R_monitor) == 0x1CCCC, "monitor.gamma");
  const void* platform = Ptr(r, R_platformData);
  EXPECT(platform != NULL, "platformData");
  if (platform) (void)Ptr(platform, 0);  // the window
  EXPECT(U8(r, R_supportsDummyChannels) == 0 && U8(r, R_supportsAlternateLayouts) == 0 && I16(r, R_wantLayout) == 0,
         "supportsDummyChannels, supportsAlternateLayouts, wantLayout");
  EXPECT(I16(r, R_filterCase) == (planes == 4 ? 4 : 1), "filterCase");
  EXPECT(I16(r, R_dummyPlaneValue) == -1, "dummyPlaneValue");
  EXPECT(Ptr(r, R_premiereHook) == NULL, "premiereHook");
  EXPECT(U8(r, R_supportsAbsolute) == 0 && U8(r, R_wantsAbsolute) == 0 && U8(r, R_cannotUndo) == 0,
         "supportsAbsolute, wantsAbsolute, cannotUndo");
  EXPECT(U8(r, R_supportsPadding) == 0 && I16(r, R_inputPadding) == 0 && I16(r, R_outputPadding) == 0 &&
             I16(r, R_maskPadding) == 0 && U8(r, R_samplingSupport) == 0 && U8(r, R_reservedByte) == 0,
         "padding, samplingSupport");
  EXPECT(I32(r, R_inputRate) == 1 << 16 && I32(r, R_maskRate) == 1 << 16, "inputRate, maskRate");
  EXPECT(I16(r, R_inLayerPlanes) == 3 && I16(r, R_inLayerPlanes + 2) == (planes == 4) &&
             I16(r, R_inLayerPlanes + 10) == 3 && I16(r, R_inLayerPlanes + 20) == 3 &&
             I16(r, R_inLayerPlanes + 30) == 0 && I16(r, R_inLayerPlanes + 36) == 0,
         "layer plane counts");
  EXPECT(I16(r, R_inTileHeight) == 0 && I32(r, R_inTileHeight + 28) == 0, "tiles");
  (void)Ptr(r, R_documentInfo);
  EXPECT(Ptr(r, R_plugInRef) == NULL, "plugInRef");
  EXPECT(I32(r, R_depth) == 8, "depth");
  EXPECT(Ptr(r, R_iccProfileData) == NULL && I32(r, R_iccProfileSize) == 0 && I32(r, R_canUseICCProfiles) == 0,
         "colour profile");
  EXPECT(Ptr(r, R_errorString) != NULL, "errorString");
  EXPECT(Ptr(r, R_hostProc) && Ptr(r, R_processEvent) && Ptr(r, R_displayPixels) && Ptr(r, R_colorServices),
         "hostProc, processEvent, displayPixels, colorServices");

  uint8_t (*abortProc)(void);
  void (*progressProc)(int32_t, int32_t);
  int16_t (*advanceState)(void);
  int16_t (*getPropertyObsolete)(uint32_t, uint32_t, int32_t, intptr_t*, Handle*);
  PROC(abortProc, r, R_abortProc);
  PROC(progressProc, r, R_progressProc);
  PROC(advanceState, r, R_advanceState);
  PROC(getPropertyObsolete, r, R_getPropertyObsolete);
  EXPECT(abortProc && abortProc() == 0, "abortProc");
  if (progressProc) progressProc(0, 1);
  EXPECT(advanceState != NULL, "advanceState");
  intptr_t channels = 0;
  EXPECT(getPropertyObsolete &&
             getPropertyObsolete(Code('8', 'B', 'I', 'M'), Code('n', 'u', 'c', 'h'), 0, &channels, NULL) == 0 &&
             channels == planes,
         "getPropertyObsolete");

  const void* handles = Ptr(r, R_handleProcs);
  EXPECT(handles != NULL, "handleProcs");
  if (handles) CheckHandleProcs(handles);
  const void* buffers = Ptr(r, R_bufferProcs);
  EXPECT(buffers != NULL, "bufferProcs");
  if (buffers) CheckBufferProcs(buffers);
  const void* resources = Ptr(r, R_resourceProcs);
  EXPECT(resources != NULL, "resourceProcs");
  if (resources && handles) CheckResourceProcs(resources, handles);
  const void* properties = Ptr(r, R_propertyProcs);
  EXPECT(properties != NULL, "propertyProcs");
  if (properties) CheckPropertyProcs(properties, planes);
  /* Channel ports come with a document description or not at all. */
  const void* ports = Ptr(r, R_channelPortProcs);
  EXPECT((ports != NULL) == (Ptr(r, R_documentInfo) != NULL), "channelPortProcs without documentInfo");
  if (ports) CheckChannelPorts(ports);
  const void* services = Ptr(r, R_imageServicesProcs);
  EXPECT(services != NULL, "imageServicesProcs");
  if (services) CheckImageServices(services);
  const void* basic = Ptr(r, R_sSPBasic);
  EXPECT(basic != NULL, "sSPBasic");
  if (basic) CheckBasicSuite(basic);
  if (basic) CheckNamedSuites(basic);
  void* descriptor = Ptr(r, R_descriptorParameters);
  EXPECT(descriptor != NULL, "descriptorParameters");
  if (descriptor) CheckDescriptor(descriptor, wantPlay);
}

static int16_t Report(void* r) {
  if (!g_failures) return 0;
  unsigned char* text = (unsigned char*)Ptr(r, R_errorString);
  if (!text) return kBadParameters;
  static const char head[] = "layout mismatch: ";
  size_t n = sizeof head - 1;
  memcpy(text + 1, head, n);
  const size_t room = 255 - n;
  const size_t m = (size_t)g_reportLength < room ? (size_t)g_reportLength : room;
  memcpy(text + 1 + n, g_report, m);
  text[0] = (unsigned char)(n + m);
  return kReportString;
}

static void SetRect(void* r, size_t at, int16_t top, int16_t left, int16_t bottom, int16_t right) {
  SetI16(r, at, top);
  SetI16(r, at + 2, left);
  SetI16(r, at + 4, bottom);
  SetI16(r, at + 6, right);
}

static int g_done;

__declspec(dllexport) void PluginMain(int16_t selector, void* record, intptr_t* data, int16_t* result) {
  void* r = record;
  (void)data;
  *result = 0;
  g_failures = 0;
  g_reportLength = 0;
  if (selector == kAbout) {
    /* The about record: platform data, basic suite, plugin reference. */
    const void* basic = Ptr(r, 1 * PTR);
    EXPECT(Ptr(r, 0) != NULL, "about.platformData");
    EXPECT(basic != NULL, "about.sSPBasic");
    if (basic) CheckBasicSuite(basic);
    (void)Ptr(r, 2 * PTR);
    *result = (int16_t)(g_failures ? kBadParameters : 0);
    return;
  }
  /* The play signal the host gives: dialog (1) or none (0). */
  const void* descriptor = Ptr(r, R_descriptorParameters);
  const int16_t play = descriptor ? I16(descriptor, D_playInfo) : -1;
  switch (selector) {
    case kParameters:
    case kPrepare:
      CheckRecord(r, play == 1 ? 1 : 0);
      *result = Report(r);
      break;
    case kStart: {
      CheckRecord(r, play == 1 ? 1 : 0);
      *result = Report(r);
      if (*result) return;
      /* The whole picture at once, its colour planes. */
      SetRect(r, R_inRect, I16(r, R_filterRect), I16(r, R_filterRect + 2), I16(r, R_filterRect + 4),
              I16(r, R_filterRect + 6));
      SetRect(r, R_outRect, I16(r, R_filterRect), I16(r, R_filterRect + 2), I16(r, R_filterRect + 4),
              I16(r, R_filterRect + 6));
      SetI16(r, R_inLoPlane, 0);
      SetI16(r, R_inHiPlane, 2);
      SetI16(r, R_outLoPlane, 0);
      SetI16(r, R_outHiPlane, 2);
      g_done = 0;
      break;
    }
    case kContinue: {
      if (g_done) {
        SetRect(r, R_inRect, 0, 0, 0, 0);
        SetRect(r, R_outRect, 0, 0, 0, 0);
        break;
      }
      const int h = I16(r, R_outRect + 4) - I16(r, R_outRect), w = I16(r, R_outRect + 6) - I16(r, R_outRect + 2);
      const unsigned char* in = (const unsigned char*)Ptr(r, R_inData);
      unsigned char* out = (unsigned char*)Ptr(r, R_outData);
      const int32_t inRow = I32(r, R_inRowBytes), outRow = I32(r, R_outRowBytes);
      const int32_t inCol = I32(r, R_inColumnBytes), outCol = I32(r, R_outColumnBytes);
      EXPECT(in && out && inCol == 3 && outCol == 3 && I32(r, R_inPlaneBytes) == 1 && I32(r, R_outPlaneBytes) == 1,
             "inData, outData, column and plane bytes");
      if (g_failures) {
        *result = Report(r);
        break;
      }
      for (int y = 0; y < h; ++y)
        for (int x = 0; x < 3 * w; ++x) out[(ptrdiff_t)y * outRow + x] = (unsigned char)(255 - in[(ptrdiff_t)y * inRow + x]);
      g_done = 1;
      SetRect(r, R_inRect, 0, 0, 0, 0);
      SetRect(r, R_outRect, 0, 0, 0, 0);
      break;
    }
    case kFinish:
      break;
    default:
      *result = kBadParameters;
  }
}
