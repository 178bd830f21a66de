// A debug picture as a bitmap.
#pragma once

#include "render/KeptRun.h"

#include <windows.h>

// Owner of the context and the bitmap: FreeDebugBitmap gives both back.
struct DebugBitmap {
    HDC context; // holds `bitmap`; null: there is no picture
    HBITMAP bitmap;
    HGDIOBJ before;
    int width, height;
    uint8_t *pixels; // of `bitmap`, four bytes each, the bottom row first
    DebugPicturePlace place;
};

// Makes the picture of a choice. False, and *bitmap empty, when nothing is kept or memory ran out; the latter
// is reported.
bool MakeDebugBitmap(int32_t choice, DebugBitmap *bitmap);
void FreeDebugBitmap(DebugBitmap *bitmap);
const uint8_t *DebugBitmapPixel(const DebugBitmap &bitmap, int column, int row);
// As CF_DIB, in the owner's name. Failures are reported.
void CopyDebugBitmap(HWND owner, const DebugBitmap &bitmap);
