// The one device-independent bitmap through which every pixel of the preview goes to the screen, with the
// colour space of the image.
#pragma once

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
    HDC screenContext; // holds `screen`, in the display's own format: colours are matched on the way into it
    HBITMAP screen;
    HGDIOBJ screenBefore;
};

// Describes the bitmap. A profile that is too large is reported and left out.
void DescribeTileBitmap(const void *iccProfile, uint32_t iccProfileBytes, TileBitmapHeader *description);

// Makes the bitmap and the contexts, compatible with the display. What fails is reported and stays null.
void CreateTileBitmap(HWND display, const void *iccProfile, uint32_t iccProfileBytes, TileBitmap *bitmap);
void DeleteTileBitmap(TileBitmap *bitmap);

// Copies the bitmap's top left width × height pixels to (x, y), with its colours matched where the system
// can. False when there is no bitmap.
bool DrawTileBitmap(const TileBitmap &bitmap, HDC dc, int32_t x, int32_t y, int32_t width, int32_t height);
