#include "ui/display/PreviewDisplayCursor.h"

#include "diag/module/ModuleInstance.h"
#include "resources/ResourceIds.h"
#include "ui/display/PreviewComparison.h"
#include "ui/display/PreviewDisplayMarks.h"
#include "ui/display/PreviewDisplayState.h"
#include "ui/view/ViewTools.h"

namespace {

constexpr int kCursorResources[kDisplayCursorCount] = {
    0, // the system's arrow
    kOpenHandCursorId,
    kClosedHandCursorId,
    kZoomInCursorId,
    kZoomOutCursorId,
    kNoZoomCursorId,
    kHideEffectCursorId,
    kShowEffectCursorId,
};

bool IsHeld(int key) {
    return (GetKeyState(key) & 0x8000) != 0;
}

bool IsPointerOnDisplay() {
    POINT pointer = {};
    return GetCursorPos(&pointer) && WindowFromPoint(pointer) == gPreviewDisplay.window;
}

DisplayCursor PresentCursor() {
    return gPreviewDisplay.mouse.state == kMouseIdle ? gPreviewDisplay.cursor : gPreviewDisplay.dragCursor;
}

// The class's cursor is what the system shows by itself; it is changed at once where the pointer is.
void ShowPresentCursor() {
    const HCURSOR cursor = LoadDisplayCursor(PresentCursor());
    SetClassLongPtrA(gPreviewDisplay.window, GCLP_HCURSOR, reinterpret_cast<LONG_PTR>(cursor));
    if (GetCapture() == gPreviewDisplay.window || (!GetCapture() && IsPointerOnDisplay()))
        SetCursor(cursor);
}

} // namespace

HCURSOR LoadDisplayCursor(DisplayCursor cursor) {
    const int resource = kCursorResources[cursor];
    const HCURSOR own = resource ? LoadCursorA(ModuleInstance(), MAKEINTRESOURCEA(resource)) : nullptr;
    return own ? own : LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_ARROW));
}

void RefreshDisplayCursor() {
    if (!gPreviewDisplay.window)
        return;
    gPreviewDisplay.cursor =
        ChooseCursor(EffectiveViewTool(), gPreviewDisplay.modifiers, gViewTools.view.zoom);
    ShowPresentCursor();
}

void ShowDragCursor() {
    gPreviewDisplay.dragCursor = ChooseDragCursor(gPreviewDisplay.mouse.state, gPreviewDisplay.cursor);
    ShowPresentCursor();
}

void SetDisplayCursor() {
    SetCursor(LoadDisplayCursor(PresentCursor()));
}

void ReadViewModifiers() {
    const ViewModifiers held = {IsHeld(VK_MENU), IsHeld(VK_CONTROL)};
    const bool spaceDown = IsHeld(VK_SPACE);
    const bool spaceHeld = gPreviewDisplay.spaceHeld && (spaceDown || !gPreviewDisplay.spaceSeenDown);
    gPreviewDisplay.spaceSeenDown = spaceDown;
    ViewModifiers &known = gPreviewDisplay.modifiers;
    if (held.alt == known.alt && held.ctrl == known.ctrl && spaceHeld == gPreviewDisplay.spaceHeld)
        return;
    known = held;
    gPreviewDisplay.spaceHeld = spaceHeld;
    RefreshDisplayCursor();
    UpdateLightMarks();
}

void OnPreviewModifierKey(WPARAM key, bool down) {
    if (!gPreviewDisplay.window)
        return;
    if (key == VK_SPACE && gPreviewDisplay.spaceHeld != down) {
        gPreviewDisplay.spaceHeld = down;
        RefreshDisplayCursor();
        UpdateLightMarks();
    }
    ReadViewModifiers();
}

void OnPreviewDeactivated() {
    if (!gPreviewDisplay.window)
        return;
    gPreviewDisplay.modifiers = {};
    gPreviewDisplay.spaceHeld = false;
    EndComparison();
    RefreshDisplayCursor();
    UpdateLightMarks();
}
