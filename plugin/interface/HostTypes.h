// Scalars, small records and service tables of the host's filter interface. Vertical comes first in points
// and rectangles, bottom and right are exclusive, and any procedure or table pointer may be null on some
// host.
#pragma once

#include "diag/ResultCodes.h"

#include <cstddef>
#include <cstdint>

// One byte, and only its own register is defined on return: test it against 0, never read it as int or bool.
using HostBoolean = uint8_t;
// A pointer to a master pointer; the data is valid while locked. Null: none.
using HostHandle = char **;
using SuiteResult = int32_t; // 0: done; anything else: failed
using FourCharCode = uint32_t;
using Fixed16 = int32_t;            // 16.16
using HostString255 = uint8_t[256]; // length byte, then the characters, no terminator

constexpr Fixed16 kFixedOne = 0x10000;
constexpr FourCharCode kHostSignature = 0x3842494D; // '8BIM'

struct HostPoint {
    int16_t v, h;
};

struct HostRect {
    int16_t top, left, bottom, right;
};

struct HostPoint32 {
    int32_t v, h;
};

struct HostRect32 {
    int32_t top, left, bottom, right;
};

struct HostRgbColor {
    uint16_t red, green, blue;
};

struct HostFilterColor {
    uint8_t samples[4];
};

struct PlugInMonitor {
    Fixed16 gamma, redX, redY, greenX, greenY, blueX, blueY, whiteX, whiteY, ambient;
};

struct PlatformData {
    void *hwnd; // window to use as parent; may be null
};

struct SPBasicSuite;

// What selector 0 receives instead of a FilterRecord.
struct AboutRecord {
    PlatformData *platformData;
    SPBasicSuite *sSPBasic;
    void *plugInRef;
    uint8_t reserved[244];
};

struct BigDocumentStruct {
    int32_t PluginUsing32BitCoordinates; // set by the filter on every call
    HostPoint32 imageSize32;
    HostRect32 filterRect32;
    HostRect32 inRect32;   // set by the filter
    HostRect32 outRect32;  // set by the filter
    HostRect32 maskRect32; // set by the filter
    HostPoint32 floatCoord32;
    HostPoint32 wholeSize32;
};

struct HandleProcs {
    int16_t handleProcsVersion;
    int16_t numHandleProcs;
    HostHandle (*newProc)(int32_t size); // null on failure; not always zero-filled
    void (*disposeProc)(HostHandle handle);
    int32_t (*getSizeProc)(HostHandle handle);
    HostResult (*setSizeProc)(HostHandle handle, int32_t newSize); // may move the data
    char *(*lockProc)(HostHandle handle, HostBoolean moveHigh);    // null on failure
    void (*unlockProc)(HostHandle handle);
    void (*recoverSpaceProc)(int32_t size);
    void (*disposeRegularHandleProc)(HostHandle handle);
};

// The record's property table, and also what the property suite returns.
struct PropertyProcs {
    int16_t propertyProcsVersion;
    int16_t numPropertyProcs;
    HostResult (*getPropertyProc)(FourCharCode signature, FourCharCode key, int32_t index,
                                  intptr_t *simpleProperty, HostHandle *complexProperty);
    HostResult (*setPropertyProc)(FourCharCode signature, FourCharCode key, int32_t index,
                                  intptr_t simpleProperty, HostHandle complexProperty);
};

// Non-zero stops the host's own cursor animation until the next call into the filter.
constexpr FourCharCode kPropWatchSuspension = 0x77746368; // 'wtch'

static_assert(sizeof(void *) == 8, "the record layouts are those of 64-bit hosts");
static_assert(sizeof(HostPoint) == 4 && sizeof(HostRect) == 8 && sizeof(HostPoint32) == 8 &&
              sizeof(HostRect32) == 16 && sizeof(HostRgbColor) == 6 && sizeof(HostFilterColor) == 4);
static_assert(sizeof(PlugInMonitor) == 40 && sizeof(PlatformData) == 8);
static_assert(offsetof(AboutRecord, sSPBasic) == 8 && offsetof(AboutRecord, plugInRef) == 16 &&
              offsetof(AboutRecord, reserved) == 24);
static_assert(sizeof(BigDocumentStruct) == 92 && offsetof(BigDocumentStruct, imageSize32) == 4 &&
              offsetof(BigDocumentStruct, filterRect32) == 12 &&
              offsetof(BigDocumentStruct, inRect32) == 28 && offsetof(BigDocumentStruct, outRect32) == 44 &&
              offsetof(BigDocumentStruct, maskRect32) == 60 &&
              offsetof(BigDocumentStruct, floatCoord32) == 76 &&
              offsetof(BigDocumentStruct, wholeSize32) == 84);
static_assert(sizeof(HandleProcs) == 72 && offsetof(HandleProcs, newProc) == 8 &&
              offsetof(HandleProcs, disposeProc) == 16 && offsetof(HandleProcs, getSizeProc) == 24 &&
              offsetof(HandleProcs, setSizeProc) == 32 && offsetof(HandleProcs, lockProc) == 40 &&
              offsetof(HandleProcs, unlockProc) == 48 && offsetof(HandleProcs, recoverSpaceProc) == 56 &&
              offsetof(HandleProcs, disposeRegularHandleProc) == 64);
static_assert(sizeof(PropertyProcs) == 24 && offsetof(PropertyProcs, getPropertyProc) == 8 &&
              offsetof(PropertyProcs, setPropertyProc) == 16);
