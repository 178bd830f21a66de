// The host's filter interface: the record that travels with every selector but About, and the selectors.
#pragma once

#include "plugin/interface/HostDescriptors.h"
#include "plugin/interface/HostSuites.h"
#include "plugin/interface/HostTypes.h"

#include <cstddef>
#include <cstdint>

enum Selector : int16_t {
    kSelectorAbout = 0, // receives an AboutRecord
    kSelectorParameters,
    kSelectorPrepare,
    kSelectorStart,
    kSelectorContinue,
    kSelectorFinish,
};

// Packed to 4, so 8-byte pointers start at any multiple of 4: copy such members, never bind a reference to
// them. Hosts' records may end right after bigDocumentData: nothing behind it is declared, so that nothing is
// touched.
#pragma pack(push, 4)
struct FilterRecord {
    int32_t serialNumber;
    HostBoolean (*abortProc)();
    void (*progressProc)(int32_t done, int32_t total);
    HostHandle parameters; // set by the filter
    HostPoint imageSize;
    int16_t planes;
    HostRect filterRect;
    HostRgbColor background;
    HostRgbColor foreground;
    uint8_t padding1[2];
    int32_t maxSpace;    // lowered by the filter in Prepare; some hosts give kilobytes or nothing
    int32_t bufferSpace; // set by the filter in Prepare
    HostRect inRect;     // set by the filter, as the planes
    int16_t inLoPlane, inHiPlane;
    HostRect outRect; // set by the filter, as the planes
    int16_t outLoPlane, outHiPlane;
    void *inData;
    int32_t inRowBytes;
    void *outData;
    int32_t outRowBytes;
    HostBoolean isFloating;
    HostBoolean haveMask;
    HostBoolean autoMask;
    uint8_t padding2;
    HostRect maskRect; // set by the filter
    void *maskData;
    int32_t maskRowBytes;
    HostFilterColor backColor;
    HostFilterColor foreColor;
    FourCharCode hostSig;
    void (*hostProc)(int16_t selector, intptr_t *data);
    int16_t imageMode;
    uint8_t padding3[2];
    Fixed16 imageHRes, imageVRes;
    HostPoint floatCoord;
    HostPoint wholeSize;
    PlugInMonitor monitor;
    PlatformData *platformData;
    void *bufferProcs;
    void *resourceProcs;
    void (*processEvent)(void *event);
    void *displayPixels;
    HandleProcs *handleProcs;
    HostBoolean supportsDummyChannels;
    HostBoolean supportsAlternateLayouts;
    int16_t wantLayout;
    int16_t filterCase;
    int16_t dummyPlaneValue;
    void *premiereHook;
    HostResult (*advanceState)();
    HostBoolean supportsAbsolute;
    HostBoolean wantsAbsolute;
    uint8_t padding4[2];
    void *getPropertyObsolete;
    HostBoolean cannotUndo;
    HostBoolean supportsPadding;
    int16_t inputPadding, outputPadding, maskPadding;
    int8_t samplingSupport;
    int8_t reservedByte;
    uint8_t padding5[2];
    Fixed16 inputRate, maskRate;
    void *colorServices;
    int16_t inLayerPlanes, inTransparencyMask, inLayerMasks, inInvertedLayerMasks, inNonLayerPlanes;
    int16_t outLayerPlanes, outTransparencyMask, outLayerMasks, outInvertedLayerMasks, outNonLayerPlanes;
    int16_t absLayerPlanes, absTransparencyMask, absLayerMasks, absInvertedLayerMasks, absNonLayerPlanes;
    int16_t inPreDummyPlanes, inPostDummyPlanes, outPreDummyPlanes, outPostDummyPlanes;
    uint8_t padding6[2];
    int32_t inColumnBytes, inPlaneBytes, outColumnBytes, outPlaneBytes;
    void *imageServicesProcs;
    PropertyProcs *propertyProcs;
    int16_t inTileHeight, inTileWidth; // advisory; 0 and negative values occur
    HostPoint inTileOrigin;
    int16_t absTileHeight, absTileWidth;
    HostPoint absTileOrigin;
    int16_t outTileHeight, outTileWidth;
    HostPoint outTileOrigin;
    int16_t maskTileHeight, maskTileWidth;
    HostPoint maskTileOrigin;
    PIDescriptorParameters *descriptorParameters;
    uint8_t *errorString; // 256 bytes
    void *channelPortProcs;
    void *documentInfo;
    SPBasicSuite *sSPBasic;
    void *plugInRef;
    int32_t depth; // bits per sample; 0: not set
    HostHandle iCCprofileData;
    int32_t iCCprofileSize;
    int32_t canUseICCProfiles;
    int32_t hasImageScrap;
    BigDocumentStruct *bigDocumentData;
};
#pragma pack(pop)

static_assert(alignof(FilterRecord) == 4 && sizeof(FilterRecord) == 512);
static_assert(offsetof(FilterRecord, abortProc) == 4 && offsetof(FilterRecord, progressProc) == 12 &&
              offsetof(FilterRecord, parameters) == 20 && offsetof(FilterRecord, imageSize) == 28 &&
              offsetof(FilterRecord, planes) == 32 && offsetof(FilterRecord, filterRect) == 34 &&
              offsetof(FilterRecord, maxSpace) == 56 && offsetof(FilterRecord, bufferSpace) == 60);
static_assert(offsetof(FilterRecord, inRect) == 64 && offsetof(FilterRecord, inLoPlane) == 72 &&
              offsetof(FilterRecord, inHiPlane) == 74 && offsetof(FilterRecord, outRect) == 76 &&
              offsetof(FilterRecord, outLoPlane) == 84 && offsetof(FilterRecord, outHiPlane) == 86 &&
              offsetof(FilterRecord, inData) == 88 && offsetof(FilterRecord, inRowBytes) == 96 &&
              offsetof(FilterRecord, outData) == 100 && offsetof(FilterRecord, outRowBytes) == 108);
static_assert(offsetof(FilterRecord, haveMask) == 113 && offsetof(FilterRecord, autoMask) == 114 &&
              offsetof(FilterRecord, maskRect) == 116 && offsetof(FilterRecord, maskData) == 124 &&
              offsetof(FilterRecord, maskRowBytes) == 132 && offsetof(FilterRecord, hostSig) == 144 &&
              offsetof(FilterRecord, hostProc) == 148 && offsetof(FilterRecord, imageMode) == 156 &&
              offsetof(FilterRecord, monitor) == 176 && offsetof(FilterRecord, platformData) == 216);
static_assert(offsetof(FilterRecord, bufferProcs) == 224 && offsetof(FilterRecord, handleProcs) == 256 &&
              offsetof(FilterRecord, supportsDummyChannels) == 264 &&
              offsetof(FilterRecord, wantLayout) == 266 && offsetof(FilterRecord, filterCase) == 268 &&
              offsetof(FilterRecord, advanceState) == 280 && offsetof(FilterRecord, wantsAbsolute) == 289 &&
              offsetof(FilterRecord, supportsPadding) == 301);
static_assert(offsetof(FilterRecord, inputPadding) == 302 && offsetof(FilterRecord, outputPadding) == 304 &&
              offsetof(FilterRecord, maskPadding) == 306 && offsetof(FilterRecord, inputRate) == 312 &&
              offsetof(FilterRecord, maskRate) == 316 && offsetof(FilterRecord, inLayerPlanes) == 328 &&
              offsetof(FilterRecord, inTransparencyMask) == 330 &&
              offsetof(FilterRecord, inLayerMasks) == 332 &&
              offsetof(FilterRecord, inInvertedLayerMasks) == 334 &&
              offsetof(FilterRecord, inNonLayerPlanes) == 336);
static_assert(offsetof(FilterRecord, outLayerPlanes) == 338 &&
              offsetof(FilterRecord, outNonLayerPlanes) == 346 &&
              offsetof(FilterRecord, absLayerPlanes) == 348 && offsetof(FilterRecord, inColumnBytes) == 368 &&
              offsetof(FilterRecord, imageServicesProcs) == 384 &&
              offsetof(FilterRecord, propertyProcs) == 392 && offsetof(FilterRecord, inTileHeight) == 400 &&
              offsetof(FilterRecord, inTileWidth) == 402 && offsetof(FilterRecord, outTileHeight) == 416 &&
              offsetof(FilterRecord, maskTileHeight) == 424);
static_assert(offsetof(FilterRecord, descriptorParameters) == 432 &&
              offsetof(FilterRecord, errorString) == 440 && offsetof(FilterRecord, sSPBasic) == 464 &&
              offsetof(FilterRecord, plugInRef) == 472 && offsetof(FilterRecord, depth) == 480 &&
              offsetof(FilterRecord, iCCprofileData) == 484 &&
              offsetof(FilterRecord, iCCprofileSize) == 492 &&
              offsetof(FilterRecord, canUseICCProfiles) == 496 &&
              offsetof(FilterRecord, hasImageScrap) == 500 && offsetof(FilterRecord, bigDocumentData) == 504);
