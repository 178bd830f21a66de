// The colours of our windows: the system's, or dark ones where its apps are dark. Dialog's thread.
#pragma once

#include <windows.h>

enum PaletteColor {
    kFaceColor, // behind the controls
    kTextColor,
    kGreyTextColor,
    kFieldColor, // of fields and lists
    kFieldTextColor,
    kLineColor, // frames
    kHighlightColor,
    kHighlightTextColor,
    kButtonColor,
    kHotButtonColor, // under the pointer
    kPressedButtonColor,
    kAccentColor, // the default button, the thumbs, what has been done
    kLinkColor,
    kPaletteSize
};

COLORREF ColorOf(PaletteColor color);
void FillWith(HDC dc, const RECT &rect, PaletteColor color);
void FrameWith(HDC dc, const RECT &rect, PaletteColor color);
// For the answer to WM_CTLCOLOR...: also sets the colours of text. The system's, not to be deleted.
HBRUSH ControlBrush(HDC dc, PaletteColor back, PaletteColor text);

// A contrast theme is never changed.
bool IsDarkLook();
// Reads what the system wants now: before a window of ours opens and when its settings change. True when it
// is another look.
bool ReadLook();
