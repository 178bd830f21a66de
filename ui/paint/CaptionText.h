// Texts of controls with their underlined letter, each line of which lies where the letter is at every scale.
#pragma once

#include "ui/window/Palette.h"

#include <windows.h>

constexpr int kMostCaption = 256;

struct Caption {
    wchar_t text[kMostCaption]; // without the marks
    int length;
    int underlined; // which letter, or -1: none, or not to be shown now
};

Caption CaptionOf(HWND control);

// In the control's font.
SIZE MeasureCaption(HDC dc, HWND control, const Caption &caption);
// One line from the left, in the middle of the rectangle's height. Leaves what is behind it.
void DrawCaption(HDC dc, HWND control, const Caption &caption, const RECT &rect, PaletteColor color);
