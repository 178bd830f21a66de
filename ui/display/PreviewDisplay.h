// The window that shows the preview: the control of class "ProxyDisplay" in the dialog. Dialog's thread; one
// at a time.
#pragma once

#include "ui/pixels/PreviewGeometry.h"
#include "ui/preview/ProxyUpdateTask.h"
#include "ui/view/HideTool.h"
#include "ui/view/ViewTools.h"

#include <cstdint>
#include <windows.h>

// Before the dialog is made, from its template: the class of the control. Its windows do nothing by
// themselves.
bool RegisterPreviewDisplayClass();
void UnregisterPreviewDisplayClass();

// Gives the dialog's display its behaviour, attaches the view tools and starts the Proxy Update Task. All of
// it ends when the display is destroyed. False, with a display that stays empty, when there is no such
// control or the task does not start.
bool AttachPreviewDisplay(HWND dialog, const PreviewSource &source, ShowToolPicture showPicture);

// Stops a gesture that is being made, as if the mouse had been taken away. False when there was none. The
// dialog calls it when Esc is pressed.
bool CancelPreviewGesture();
// The dialog calls this when a key that changes the cursor (Alt, Ctrl, Space) goes down or up while another
// control has the focus.
void OnPreviewModifierKey(WPARAM key, bool down);
// The application was deactivated: no key counts as held.
void OnPreviewDeactivated();
// A turn of the wheel that came to the dialog or another control. False when the pointer is elsewhere.
bool OnPreviewWheel(WPARAM wheel, LPARAM screenPoint);
// The dialog answers kMsgTableReady with this.
void OnPreviewTableReady();

// What a request or a painting shows now.
PreviewGeometry CurrentPreviewGeometry();

// --- State, for the display's own files and the tests
// ----------------------------------------------------------

struct DisplayMouse {
    int32_t state;                    // a MouseState
    POINT press, current;             // screen
    bool farEnough;                   // no longer a click
    double startX, startY, startZoom; // view at the start of a panning
    DWORD panRequestTime;             // of the last preview request that a panning made
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
    HWND window; // null while none is attached
    DisplayMouse mouse;
    ViewModifiers modifiers;
    bool spaceHeld;           // Pan as long as it lasts
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
