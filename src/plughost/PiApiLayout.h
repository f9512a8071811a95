/* The byte offsets of every record and suite the host hands to a plugin, on
   32-bit and 64-bit Windows, pinned against PiApi.h at compile time. A plugin
   built with the vendor's headers reads these offsets; a difference here is a
   plugin that calls through half a pointer. The layout test plugin checks the
   same numbers at run time from its own table. */
#ifndef TREL_PIAPI_LAYOUT_H
#define TREL_PIAPI_LAYOUT_H

#include <stddef.h>

#include "PiApi.h"

#if defined(_WIN64)
#define PI_AT(off32, off64) (off64)
#elif defined(_WIN32)
#define PI_AT(off32, off64) (off32)
#endif

#ifdef PI_AT
#ifdef __cplusplus
#define PI_PIN(type, field, off32, off64) \
  static_assert(offsetof(type, field) == PI_AT(off32, off64), #type "." #field " is not where plugins read it")
#define PI_SIZE(type, size32, size64) \
  static_assert(sizeof(type) == PI_AT(size32, size64), "sizeof(" #type ") is not what plugins expect")
#else
#define PI_PIN(type, field, off32, off64) \
  _Static_assert(offsetof(type, field) == PI_AT(off32, off64), #type "." #field " is not where plugins read it")
#define PI_SIZE(type, size32, size64) \
  _Static_assert(sizeof(type) == PI_AT(size32, size64), "sizeof(" #type ") is not what plugins expect")
#endif

/* The filter record: 4-byte packed on both. */
PI_PIN(PIFilterRecord, serialNumber, 0, 0);
PI_PIN(PIFilterRecord, abortProc, 4, 4);
PI_PIN(PIFilterRecord, progressProc, 8, 12);
PI_PIN(PIFilterRecord, parameters, 12, 20);
PI_PIN(PIFilterRecord, imageSize, 16, 28);
PI_PIN(PIFilterRecord, planes, 20, 32);
PI_PIN(PIFilterRecord, filterRect, 22, 34);
PI_PIN(PIFilterRecord, background, 30, 42);
PI_PIN(PIFilterRecord, foreground, 36, 48);
PI_PIN(PIFilterRecord, maxSpace, 44, 56);
PI_PIN(PIFilterRecord, bufferSpace, 48, 60);
PI_PIN(PIFilterRecord, inRect, 52, 64);
PI_PIN(PIFilterRecord, inLoPlane, 60, 72);
PI_PIN(PIFilterRecord, inHiPlane, 62, 74);
PI_PIN(PIFilterRecord, outRect, 64, 76);
PI_PIN(PIFilterRecord, outLoPlane, 72, 84);
PI_PIN(PIFilterRecord, outHiPlane, 74, 86);
PI_PIN(PIFilterRecord, inData, 76, 88);
PI_PIN(PIFilterRecord, inRowBytes, 80, 96);
PI_PIN(PIFilterRecord, outData, 84, 100);
PI_PIN(PIFilterRecord, outRowBytes, 88, 108);
PI_PIN(PIFilterRecord, isFloating, 92, 112);
PI_PIN(PIFilterRecord, haveMask, 93, 113);
PI_PIN(PIFilterRecord, autoMask, 94, 114);
PI_PIN(PIFilterRecord, maskRect, 96, 116);
PI_PIN(PIFilterRecord, maskData, 104, 124);
PI_PIN(PIFilterRecord, maskRowBytes, 108, 132);
PI_PIN(PIFilterRecord, backColor, 112, 136);
PI_PIN(PIFilterRecord, foreColor, 116, 140);
PI_PIN(PIFilterRecord, hostSig, 120, 144);
PI_PIN(PIFilterRecord, hostProc, 124, 148);
PI_PIN(PIFilterRecord, imageMode, 128, 156);
PI_PIN(PIFilterRecord, imageHRes, 132, 160);
PI_PIN(PIFilterRecord, imageVRes, 136, 164);
PI_PIN(PIFilterRecord, floatCoord, 140, 168);
PI_PIN(PIFilterRecord, wholeSize, 144, 172);
PI_PIN(PIFilterRecord, monitor, 148, 176);
PI_PIN(PIFilterRecord, platformData, 188, 216);
PI_PIN(PIFilterRecord, bufferProcs, 192, 224);
PI_PIN(PIFilterRecord, resourceProcs, 196, 232);
PI_PIN(PIFilterRecord, processEvent, 200, 240);
PI_PIN(PIFilterRecord, displayPixels, 204, 248);
PI_PIN(PIFilterRecord, handleProcs, 208, 256);
PI_PIN(PIFilterRecord, supportsDummyChannels, 212, 264);
PI_PIN(PIFilterRecord, supportsAlternateLayouts, 213, 265);
PI_PIN(PIFilterRecord, wantLayout, 214, 266);
PI_PIN(PIFilterRecord, filterCase, 216, 268);
PI_PIN(PIFilterRecord, dummyPlaneValue, 218, 270);
PI_PIN(PIFilterRecord, premiereHook, 220, 272);
PI_PIN(PIFilterRecord, advanceState, 224, 280);
PI_PIN(PIFilterRecord, supportsAbsolute, 228, 288);
PI_PIN(PIFilterRecord, wantsAbsolute, 229, 289);
PI_PIN(PIFilterRecord, getPropertyObsolete, 232, 292);
PI_PIN(PIFilterRecord, cannotUndo, 236, 300);
PI_PIN(PIFilterRecord, supportsPadding, 237, 301);
PI_PIN(PIFilterRecord, inputPadding, 238, 302);
PI_PIN(PIFilterRecord, outputPadding, 240, 304);
PI_PIN(PIFilterRecord, maskPadding, 242, 306);
PI_PIN(PIFilterRecord, samplingSupport, 244, 308);
PI_PIN(PIFilterRecord, reservedByte, 245, 309);
PI_PIN(PIFilterRecord, inputRate, 248, 312);
PI_PIN(PIFilterRecord, maskRate, 252, 316);
PI_PIN(PIFilterRecord, colorServices, 256, 320);
PI_PIN(PIFilterRecord, inLayerPlanes, 260, 328);
PI_PIN(PIFilterRecord, inTransparencyMask, 262, 330);
PI_PIN(PIFilterRecord, outLayerPlanes, 270, 338);
PI_PIN(PIFilterRecord, absLayerPlanes, 280, 348);
PI_PIN(PIFilterRecord, inPreDummyPlanes, 290, 358);
PI_PIN(PIFilterRecord, outPostDummyPlanes, 296, 364);
PI_PIN(PIFilterRecord, inColumnBytes, 300, 368);
PI_PIN(PIFilterRecord, inPlaneBytes, 304, 372);
PI_PIN(PIFilterRecord, outColumnBytes, 308, 376);
PI_PIN(PIFilterRecord, outPlaneBytes, 312, 380);
PI_PIN(PIFilterRecord, imageServicesProcs, 316, 384);
PI_PIN(PIFilterRecord, propertyProcs, 320, 392);
PI_PIN(PIFilterRecord, inTileHeight, 324, 400);
PI_PIN(PIFilterRecord, inTileOrigin, 328, 404);
PI_PIN(PIFilterRecord, absTileHeight, 332, 408);
PI_PIN(PIFilterRecord, outTileHeight, 340, 416);
PI_PIN(PIFilterRecord, maskTileHeight, 348, 424);
PI_PIN(PIFilterRecord, maskTileOrigin, 352, 428);
PI_PIN(PIFilterRecord, descriptorParameters, 356, 432);
PI_PIN(PIFilterRecord, errorString, 360, 440);
PI_PIN(PIFilterRecord, channelPortProcs, 364, 448);
PI_PIN(PIFilterRecord, documentInfo, 368, 456);
PI_PIN(PIFilterRecord, sSPBasic, 372, 464);
PI_PIN(PIFilterRecord, plugInRef, 376, 472);
PI_PIN(PIFilterRecord, depth, 380, 480);
PI_PIN(PIFilterRecord, iccProfileData, 384, 484);
PI_PIN(PIFilterRecord, iccProfileSize, 388, 492);
PI_PIN(PIFilterRecord, canUseICCProfiles, 392, 496);

/* The suites and the rest: natural alignment, two 16-bit counts and then
   pointers from offset 4 (32-bit) or 8 (64-bit). */
PI_PIN(PIHandleProcs, numHandleProcs, 2, 2);
PI_PIN(PIHandleProcs, newProc, 4, 8);
PI_PIN(PIHandleProcs, disposeProc, 8, 16);
PI_PIN(PIHandleProcs, getSizeProc, 12, 24);
PI_PIN(PIHandleProcs, setSizeProc, 16, 32);
PI_PIN(PIHandleProcs, lockProc, 20, 40);
PI_PIN(PIHandleProcs, unlockProc, 24, 48);
PI_PIN(PIHandleProcs, recoverSpaceProc, 28, 56);
PI_PIN(PIHandleProcs, disposeRegularHandleProc, 32, 64);
PI_SIZE(PIHandleProcs, 36, 72);

PI_PIN(PIBufferProcs, allocateProc, 4, 8);
PI_PIN(PIBufferProcs, lockProc, 8, 16);
PI_PIN(PIBufferProcs, unlockProc, 12, 24);
PI_PIN(PIBufferProcs, freeProc, 16, 32);
PI_PIN(PIBufferProcs, spaceProc, 20, 40);
PI_SIZE(PIBufferProcs, 24, 48);

PI_PIN(PIResourceProcs, countProc, 4, 8);
PI_PIN(PIResourceProcs, getProc, 8, 16);
PI_PIN(PIResourceProcs, deleteProc, 12, 24);
PI_PIN(PIResourceProcs, addProc, 16, 32);
PI_SIZE(PIResourceProcs, 20, 40);

PI_PIN(PIPropertyProcs, getPropertyProc, 4, 8);
PI_PIN(PIPropertyProcs, setPropertyProc, 8, 16);
PI_SIZE(PIPropertyProcs, 12, 24);

PI_PIN(PIChannelPortProcs, readPixelsProc, 4, 8);
PI_PIN(PIChannelPortProcs, writeBasePixelsProc, 8, 16);
PI_PIN(PIChannelPortProcs, readPortForWritePortProc, 12, 24);
PI_SIZE(PIChannelPortProcs, 16, 32);

PI_PIN(PIImageServicesProcs, interpolate1DProc, 4, 8);
PI_PIN(PIImageServicesProcs, interpolate2DProc, 8, 16);
PI_SIZE(PIImageServicesProcs, 12, 24);

PI_PIN(PIDescriptorParameters, playInfo, 2, 2);
PI_PIN(PIDescriptorParameters, recordInfo, 4, 4);
PI_PIN(PIDescriptorParameters, descriptor, 8, 8);
PI_PIN(PIDescriptorParameters, writeDescriptorProcs, 12, 16);
PI_PIN(PIDescriptorParameters, readDescriptorProcs, 16, 24);
PI_SIZE(PIDescriptorParameters, 20, 32);

PI_PIN(PIReadDescriptorProcs, openReadDescriptorProc, 4, 8);
PI_PIN(PIReadDescriptorProcs, closeReadDescriptorProc, 8, 16);
PI_PIN(PIReadDescriptorProcs, getKeyProc, 12, 24);
PI_SIZE(PIReadDescriptorProcs, 76, 152);
PI_PIN(PIWriteDescriptorProcs, openWriteDescriptorProc, 4, 8);
PI_PIN(PIWriteDescriptorProcs, closeWriteDescriptorProc, 8, 16);
PI_SIZE(PIWriteDescriptorProcs, 68, 136);

PI_PIN(PISPBasicSuite, AcquireSuite, 0, 0);
PI_PIN(PISPBasicSuite, ReleaseSuite, 4, 8);
PI_PIN(PISPBasicSuite, IsEqual, 8, 16);
PI_PIN(PISPBasicSuite, AllocateBlock, 12, 24);
PI_PIN(PISPBasicSuite, FreeBlock, 16, 32);
PI_PIN(PISPBasicSuite, ReallocateBlock, 20, 40);
PI_PIN(PISPBasicSuite, Undefined, 24, 48);
PI_SIZE(PISPBasicSuite, 28, 56);

/* The suites acquired by name: pointers only. */
PI_PIN(PIHandleSuite1, SetLock, 8, 16);
PI_SIZE(PIHandleSuite1, 24, 48);
PI_PIN(PIHandleSuite2, DisposeRegularHandle, 8, 16);
PI_PIN(PIHandleSuite2, RecoverSpace, 24, 48);
PI_SIZE(PIHandleSuite2, 28, 56);
PI_PIN(PIBufferSuite1, GetSpace, 12, 24);
PI_SIZE(PIBufferSuite1, 16, 32);
PI_PIN(PIUIHooksSuite1, MainAppWindow, 16, 32);
PI_PIN(PIUIHooksSuite1, GetPluginName, 28, 56);
PI_SIZE(PIUIHooksSuite1, 32, 64);

PI_PIN(PIPlatformData, hwnd, 0, 0);
PI_SIZE(PIPlatformData, 4, 8);

PI_PIN(PIAboutRecord, platformData, 0, 0);
PI_PIN(PIAboutRecord, sSPBasic, 4, 8);
PI_PIN(PIAboutRecord, plugInRef, 8, 16);
PI_SIZE(PIAboutRecord, 256, 272);

#undef PI_PIN
#undef PI_SIZE
#undef PI_AT
#endif

#endif
