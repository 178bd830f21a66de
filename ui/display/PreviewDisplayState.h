// What the files of the preview display share, and the tests look at. Dialog's thread; one display at a time.
#pragma once

#include "ui/view/HideTool.h"
#include "ui/view/ViewCursor.h"

#include <cstdint>
#include <windows.h>

struct DisplayMouse {
    int32_t state;                    // a MouseState
    POINT press, current;             // screen
    bool farEnough;                   // no longer a click
    double startX, startY, startZoom; // view at the start of a panning
    DWORD panRequestTime;             // of the last preview request that a panning made
    bool panRequestOwed;              // the view has moved since
};

// Owner of its objects: the record; FreeDisplaySurface gives them back.
struct DisplaySurface {
    HDC dc; // memory context with `bitmap` selected, or null
    HBITMAP bitmap;
    HGDIOBJ oldBitmap;
    int32_t width, height;
    HRGN DisplayRegion, ImageRegion, UpdateRegion, FillRegion; // of the painting in work
};

struct PreviewDisplay {
    HWND window;  // null while none is attached
    bool hasTask; // somebody renders what it shows
    DisplayMouse mouse;
    ViewModifiers modifiers;
    bool spaceHeld;           // Pan as long as it lasts
    bool spaceSeenDown;       // in the keyboard's own state, which tells when it is no longer
    bool comparing;           // the photograph without stars is shown
    DisplayCursor cursor;     // idle
    DisplayCursor dragCursor; // while a button is down
    int32_t wheelRest;        // of turns too small for a step of the zoom
    int32_t restX, restY;     // of turns too small for a pixel of scrolling
    bool painted;             // once, since it was attached
    bool leaveTracked;        // WM_MOUSELEAVE will come
    int32_t antsPhase;        // of the dashes of the drag rectangle
    LightMarks marks;
    DisplaySurface surface;
};

extern PreviewDisplay gPreviewDisplay;

constexpr UINT_PTR kRectangleTimer = 1, kPanTimer = 2;
constexpr UINT kRectangleTimerMs = 100, kPanTimerMs = 15;
