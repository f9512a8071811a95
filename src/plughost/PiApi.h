/* Our own minimal declarations of the public Photoshop filter plugin
   interface: the filter record, the callback tables a filter commonly uses,
   the selectors and the result codes. Written from the public description of
   the protocol; only what our host and our own plugins touch is named, the
   rest of the record is kept as reserved room of the documented size.

   Layout on Windows: the filter record alone is declared under 4-byte packing,
   on 32 and 64 bits alike (so on 64 bits its pointers sit on 4-byte offsets:
   handleProcs at 0x100). Everything else the host hands out - the callback
   suites, the platform data, the descriptor parameters, the basic suite and
   the about record - has the compiler's natural alignment, so a suite's
   pointers follow its two 16-bit counts at offset 8 on 64 bits, at 4 on 32.
   PlugHost.cpp pins every offset for both architectures, and the layout test
   plugin checks them from a table of its own. Plain C, so that the test
   plugins and the template code can include it too. */
#ifndef TREL_PIAPI_H
#define TREL_PIAPI_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char PIBoolean;
typedef int16_t PIOSErr;
typedef uint32_t PIOSType;
typedef int32_t PIFixed;
typedef char** PIHandle;
typedef void* PIBufferID;

#define PI_CODE(a, b, c, d) \
  ((PIOSType)(((uint32_t)(a) << 24) | ((uint32_t)(b) << 16) | ((uint32_t)(c) << 8) | (uint32_t)(d)))

/* Selectors of the filter entry point. */
enum {
  filterSelectorAbout = 0,
  filterSelectorParameters = 1,
  filterSelectorPrepare = 2,
  filterSelectorStart = 3,
  filterSelectorContinue = 4,
  filterSelectorFinish = 5
};

/* Result codes. */
enum {
  piNoErr = 0,
  piUserCanceledErr = -128,
  piMemFullErr = -108,
  piFilterBadParameters = -30100,
  piFilterBadMode = -30101,
  piErrPlugInHostInsufficient = -30900,
  piErrPlugInPropertyUndefined = -30901,
  piErrReportString = -30904
};

/* What the descriptor parameters say about the plugin's dialog. */
enum { plugInDialogDontDisplay = 0, plugInDialogDisplay = 1, plugInDialogSilent = 2 };
enum { plugInDialogOptional = 0, plugInDialogRequired = 1, plugInDialogNone = 2 };

/* The basic suite's answer for a suite it does not have ('S!Fd'). */
#define PI_SUITE_NOT_FOUND 0x53214664L

enum { piModeRGBColor = 3 };
enum { piFilterCaseFlatImageNoSelection = 1, piFilterCaseEditableTransparencyNoSelection = 4 };

typedef struct PIRect16 {
  int16_t top, left, bottom, right;
} PIRect16;

typedef struct PIPoint16 {
  int16_t v, h;
} PIPoint16;

typedef struct PIRGBColor {
  uint16_t red, green, blue;
} PIRGBColor;

typedef struct PIMonitor {
  PIFixed gamma, redX, redY, greenX, greenY, blueX, blueY, whiteX, whiteY, ambient;
} PIMonitor;

typedef struct PIPlatformData {
  intptr_t hwnd;
} PIPlatformData;

typedef PIBoolean (*PITestAbortProc)(void);
typedef void (*PIProgressProc)(int32_t done, int32_t total);
typedef void (*PIHostProc)(int16_t selector, intptr_t* data);
typedef void (*PIProcessEventProc)(void* event);
typedef PIOSErr (*PIDisplayPixelsProc)(const void* source, const void* srcRect, int32_t dstRow,
                                       int32_t dstCol, void* platformContext);
typedef PIOSErr (*PIAdvanceStateProc)(void);
typedef PIOSErr (*PIColorServicesProc)(void* info);
typedef PIOSErr (*PIGetPropertyProc)(PIOSType signature, PIOSType key, int32_t index,
                                     intptr_t* simpleProperty, PIHandle* complexProperty);
typedef PIOSErr (*PISetPropertyProc)(PIOSType signature, PIOSType key, int32_t index,
                                     intptr_t simpleProperty, PIHandle complexProperty);

typedef struct PIBufferProcs {
  int16_t bufferProcsVersion;
  int16_t numBufferProcs;
  PIOSErr (*allocateProc)(int32_t size, PIBufferID* bufferID);
  char* (*lockProc)(PIBufferID bufferID, PIBoolean moveHigh);
  void (*unlockProc)(PIBufferID bufferID);
  void (*freeProc)(PIBufferID bufferID);
  int32_t (*spaceProc)(void);
} PIBufferProcs;

typedef struct PIHandleProcs {
  int16_t handleProcsVersion;
  int16_t numHandleProcs;
  PIHandle (*newProc)(int32_t size);
  void (*disposeProc)(PIHandle h);
  int32_t (*getSizeProc)(PIHandle h);
  PIOSErr (*setSizeProc)(PIHandle h, int32_t newSize);
  char* (*lockProc)(PIHandle h, PIBoolean moveHigh);
  void (*unlockProc)(PIHandle h);
  void (*recoverSpaceProc)(int32_t size);
  void (*disposeRegularHandleProc)(PIHandle h);
} PIHandleProcs;

typedef struct PIResourceProcs {
  int16_t resourceProcsVersion;
  int16_t numResourceProcs;
  int16_t (*countProc)(PIOSType type);
  PIHandle (*getProc)(PIOSType type, int16_t index);
  void (*deleteProc)(PIOSType type, int16_t index);
  PIOSErr (*addProc)(PIOSType type, PIHandle data);
} PIResourceProcs;

typedef struct PIPropertyProcs {
  int16_t propertyProcsVersion;
  int16_t numPropertyProcs;
  PIGetPropertyProc getPropertyProc;
  PISetPropertyProc setPropertyProc;
} PIPropertyProcs;

typedef struct PIImagePlane {
  void* data;
  PIRect16 bounds;
  int32_t rowBytes;
  int32_t colBytes;
} PIImagePlane;

typedef PIOSErr (*PIResampleProc)(PIImagePlane* source, PIImagePlane* destination, PIRect16* area,
                                  PIFixed* coords, int16_t method);

typedef struct PIImageServicesProcs {
  int16_t imageServicesProcsVersion;
  int16_t numImageServicesProcs;
  PIResampleProc interpolate1DProc;
  PIResampleProc interpolate2DProc;
} PIImageServicesProcs;

typedef struct PIChannelPortProcs {
  int16_t channelPortProcsVersion;
  int16_t numChannelPortProcs;
  PIOSErr (*readPixelsProc)(void* port, const void* scaling, const void* writeRect, const void* destination,
                            void* wroteRect);
  PIOSErr (*writeBasePixelsProc)(void* port, const void* writeRect, const void* source);
  PIOSErr (*readPortForWritePortProc)(void** readPort, void* writePort);
} PIChannelPortProcs;

/* Scripting: the host reads and writes a plugin's settings through these.
   Only opening, closing and walking an empty descriptor are spelled out; the
   rest keep their places. */
typedef void* PIReadDescriptor;
typedef void* PIWriteDescriptor;
typedef PIOSErr (*PIDescriptorAnyProc)(void);

typedef struct PIReadDescriptorProcs {
  int16_t readDescriptorProcsVersion;
  int16_t numReadDescriptorProcs;
  PIReadDescriptor (*openReadDescriptorProc)(PIHandle descriptor, PIOSType* keys);
  PIOSErr (*closeReadDescriptorProc)(PIReadDescriptor token);
  PIBoolean (*getKeyProc)(PIReadDescriptor token, PIOSType* key, PIOSType* type, int32_t* flags);
  PIDescriptorAnyProc getProcs[15]; /* integer, float, unit float, boolean, text, alias, enumerated,
                                       class, simple reference, object, count, string, pinned
                                       integer, pinned float, pinned unit float */
} PIReadDescriptorProcs;

typedef struct PIWriteDescriptorProcs {
  int16_t writeDescriptorProcsVersion;
  int16_t numWriteDescriptorProcs;
  PIWriteDescriptor (*openWriteDescriptorProc)(void);
  PIOSErr (*closeWriteDescriptorProc)(PIWriteDescriptor token, PIHandle* descriptor);
  PIDescriptorAnyProc putProcs[14]; /* integer, float, unit float, boolean, text, alias, enumerated,
                                       class, simple reference, object, count, string, scoped
                                       class, scoped object */
} PIWriteDescriptorProcs;

typedef struct PIDescriptorParameters {
  int16_t descriptorParametersVersion;
  int16_t playInfo;
  int16_t recordInfo;
  PIHandle descriptor;
  PIWriteDescriptorProcs* writeDescriptorProcs;
  PIReadDescriptorProcs* readDescriptorProcs;
} PIDescriptorParameters;

/* The basic suite of the plugin framework: every suite is answered "not found". */
typedef struct PISPBasicSuite {
  int32_t (*AcquireSuite)(const char* name, int32_t version, const void** suite);
  int32_t (*ReleaseSuite)(const char* name, int32_t version);
  PIBoolean (*IsEqual)(const char* token1, const char* token2);
  int32_t (*AllocateBlock)(size_t size, void** block);
  int32_t (*FreeBlock)(void* block);
  int32_t (*ReallocateBlock)(void* block, size_t newSize, void** newblock);
  int32_t (*Undefined)(void);
} PISPBasicSuite;

/* Suites a plugin acquires by name through the basic suite. */
#define PI_HANDLE_SUITE "Photoshop Handle Suite for Plug-ins"
#define PI_BUFFER_SUITE "Photoshop Buffer Suite for Plug-ins"
#define PI_UIHOOKS_SUITE "Photoshop UIHooks Suite for Plug-ins"

typedef struct PIHandleSuite1 {
  PIHandle (*New)(int32_t size);
  void (*Dispose)(PIHandle h);
  void (*SetLock)(PIHandle h, PIBoolean lock, char** address, PIBoolean* oldLock);
  int32_t (*GetSize)(PIHandle h);
  PIOSErr (*SetSize)(PIHandle h, int32_t newSize);
  void (*RecoverSpace)(int32_t size);
} PIHandleSuite1;

typedef struct PIHandleSuite2 {
  PIHandle (*New)(int32_t size);
  void (*Dispose)(PIHandle h);
  void (*DisposeRegularHandle)(PIHandle h);
  void (*SetLock)(PIHandle h, PIBoolean lock, char** address, PIBoolean* oldLock);
  int32_t (*GetSize)(PIHandle h);
  PIOSErr (*SetSize)(PIHandle h, int32_t newSize);
  void (*RecoverSpace)(int32_t size);
} PIHandleSuite2;

typedef struct PIBufferSuite1 {
  char* (*New)(uint32_t* requestedSize, uint32_t minimumSize);
  void (*Dispose)(char** buffer);
  uint32_t (*GetSize)(char* buffer);
  uint32_t (*GetSpace)(void);
} PIBufferSuite1;

typedef struct PIUIHooksSuite1 {
  PIProcessEventProc processEvent;
  PIDisplayPixelsProc displayPixels;
  PIProgressProc progressBar;
  PITestAbortProc testAbort;
  intptr_t (*MainAppWindow)(void);
  int32_t (*SetCursor)(void* cursor);
  uint32_t (*TickCount)(void);
  int32_t (*GetPluginName)(void* plugin, void** name);
} PIUIHooksSuite1;

typedef struct PIAboutRecord {
  void* platformData;
  PISPBasicSuite* sSPBasic;
  void* plugInRef;
  char reserved[244];
} PIAboutRecord;

/* The record alone keeps the 4-byte packing of the Windows headers. */
#pragma pack(push, 4)
typedef struct PIFilterRecord {
  int32_t serialNumber;
  PITestAbortProc abortProc;
  PIProgressProc progressProc;
  PIHandle parameters;
  PIPoint16 imageSize;
  int16_t planes;
  PIRect16 filterRect;
  PIRGBColor background;
  PIRGBColor foreground;
  int32_t maxSpace;
  int32_t bufferSpace;
  PIRect16 inRect;
  int16_t inLoPlane;
  int16_t inHiPlane;
  PIRect16 outRect;
  int16_t outLoPlane;
  int16_t outHiPlane;
  void* inData;
  int32_t inRowBytes;
  void* outData;
  int32_t outRowBytes;
  PIBoolean isFloating;
  PIBoolean haveMask;
  PIBoolean autoMask;
  PIRect16 maskRect;
  void* maskData;
  int32_t maskRowBytes;
  unsigned char backColor[4];
  unsigned char foreColor[4];
  PIOSType hostSig;
  PIHostProc hostProc;
  int16_t imageMode;
  PIFixed imageHRes;
  PIFixed imageVRes;
  PIPoint16 floatCoord;
  PIPoint16 wholeSize;
  PIMonitor monitor;
  void* platformData;
  PIBufferProcs* bufferProcs;
  PIResourceProcs* resourceProcs;
  PIProcessEventProc processEvent;
  PIDisplayPixelsProc displayPixels;
  PIHandleProcs* handleProcs;
  PIBoolean supportsDummyChannels;
  PIBoolean supportsAlternateLayouts;
  int16_t wantLayout;
  int16_t filterCase;
  int16_t dummyPlaneValue;
  void* premiereHook;
  PIAdvanceStateProc advanceState;
  PIBoolean supportsAbsolute;
  PIBoolean wantsAbsolute;
  PIGetPropertyProc getPropertyObsolete;
  PIBoolean cannotUndo;
  PIBoolean supportsPadding;
  int16_t inputPadding;
  int16_t outputPadding;
  int16_t maskPadding;
  char samplingSupport;
  char reservedByte;
  PIFixed inputRate;
  PIFixed maskRate;
  PIColorServicesProc colorServices;
  int16_t inLayerPlanes;
  int16_t inTransparencyMask;
  int16_t inLayerMasks;
  int16_t inInvertedLayerMasks;
  int16_t inNonLayerPlanes;
  int16_t outLayerPlanes;
  int16_t outTransparencyMask;
  int16_t outLayerMasks;
  int16_t outInvertedLayerMasks;
  int16_t outNonLayerPlanes;
  int16_t absLayerPlanes;
  int16_t absTransparencyMask;
  int16_t absLayerMasks;
  int16_t absInvertedLayerMasks;
  int16_t absNonLayerPlanes;
  int16_t inPreDummyPlanes;
  int16_t inPostDummyPlanes;
  int16_t outPreDummyPlanes;
  int16_t outPostDummyPlanes;
  int32_t inColumnBytes;
  int32_t inPlaneBytes;
  int32_t outColumnBytes;
  int32_t outPlaneBytes;
  PIImageServicesProcs* imageServicesProcs;
  PIPropertyProcs* propertyProcs;
  int16_t inTileHeight;
  int16_t inTileWidth;
  PIPoint16 inTileOrigin;
  int16_t absTileHeight;
  int16_t absTileWidth;
  PIPoint16 absTileOrigin;
  int16_t outTileHeight;
  int16_t outTileWidth;
  PIPoint16 outTileOrigin;
  int16_t maskTileHeight;
  int16_t maskTileWidth;
  PIPoint16 maskTileOrigin;
  PIDescriptorParameters* descriptorParameters;
  unsigned char* errorString;
  PIChannelPortProcs* channelPortProcs;
  void* documentInfo;
  PISPBasicSuite* sSPBasic;
  void* plugInRef;
  int32_t depth;
  PIHandle iccProfileData;
  int32_t iccProfileSize;
  int32_t canUseICCProfiles;
  /* Later fields (big documents ...): the host leaves them zero. */
  char reserved[512];
} PIFilterRecord;
#pragma pack(pop)

typedef void (*PIFilterEntry)(int16_t selector, void* record, intptr_t* data, int16_t* result);

#ifdef __cplusplus
}
#endif

#endif
