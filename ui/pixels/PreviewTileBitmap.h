// The one device-independent bitmap through which every pixel of the preview goes to the screen, with the
// colour space of the image.
#pragma once

#include "ui/pixels/PreviewStore.h"

#include <cstddef>
#include <cstdint>
#include <windows.h>

constexpr int32_t kTileBitmapSide = 1040;
constexpr uint32_t kLargestProfile = 16384; // bytes

// A version-5 header, with room for the profile behind it.
struct TileBitmapHeader {
    BITMAPV5HEADER header;
    uint8_t profile[kLargestProfile];
};
static_assert(sizeof(BITMAPV5HEADER) == 124 && offsetof(TileBitmapHeader, profile) == 124);

struct TileBitmap {
    TileBitmapHeader description;
    HDC tileContext; // holds `tile`
    HBITMAP tile;
    HGDIOBJ tileBefore;
    uint32_t *pixels;  // of `tile`, kTileBitmapSide × kTileBitmapSide, the top row first; null: no bitmap
    HDC screenContext; // holds `screen`, in the display's own format: colours are matched on the way into it,
                       // by the task alone
    HBITMAP screen;
    HGDIOBJ screenBefore;
    HDC matchedContext; // with a profile only: holds `matched`, where the task reads what was matched
    HBITMAP matched;
    HGDIOBJ matchedBefore;
    uint32_t *matchedPixels;
};

// Describes the bitmap. A profile that is too large is reported and left out.
void DescribeTileBitmap(const void *iccProfile, uint32_t iccProfileBytes, TileBitmapHeader *description);

// Makes the bitmap and the contexts, compatible with the display. What fails is reported and stays null.
void CreateTileBitmap(HWND display, const void *iccProfile, uint32_t iccProfileBytes, TileBitmap *bitmap);
void DeleteTileBitmap(TileBitmap *bitmap);

// Brings the pixels of a store from the image's colours to the screen's, where there is a profile and the
// system can; otherwise they stay.
void MatchColors(const TileBitmap &bitmap, PixelStore *store);

// Copies the bitmap's top left width × height pixels, which are in the screen's colours, to (x, y). False
// when there is no bitmap.
bool DrawTileBitmap(const TileBitmap &bitmap, HDC dc, int32_t x, int32_t y, int32_t width, int32_t height);
