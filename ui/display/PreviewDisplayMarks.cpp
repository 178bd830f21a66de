#include "ui/display/PreviewDisplayMarks.h"

#include "engine/table/HideEffects.h"
#include "engine/table/LightSourceTable.h"
#include "ui/display/PreviewDisplayState.h"
#include "ui/view/ViewTools.h"

#include <algorithm>

namespace {

LightMarks MarksOfRectangle(int32_t mode, const IntRect &client) {
    return {true, mode, -1, true, DocumentRectFromClient(gViewTools.view, client)};
}

LightMarks MarksAt(int32_t mode, POINT client) {
    const ViewPoint point = DocumentFromClient(gViewTools.view, {client.x, client.y});
    return {true, mode, FindLightSourceAt(point.x, point.y, gViewTools.view.zoom, mode), false, {}};
}

// The mode of the gesture that is being made or would start now.
int32_t PresentHideMode() {
    int32_t state = gPreviewDisplay.mouse.state;
    if (state == kMouseIdle && !MouseStateOfPress(EffectiveViewTool(), gPreviewDisplay.modifiers, &state))
        return kNoHideMode;
    return HideModeOfMouseState(state);
}

LightMarks PresentMarks() {
    const int32_t mode = PresentHideMode();
    if (mode == kNoHideMode || !gViewTools.tableReady)
        return {};
    IntRect rect;
    if (DragRectangle(&rect))
        return MarksOfRectangle(mode, rect);
    const bool pressed = gPreviewDisplay.mouse.state != kMouseIdle;
    if (!pressed && !gPreviewDisplay.leaveTracked)
        return {};
    return MarksAt(mode, ToClient(pressed ? gPreviewDisplay.mouse.press : gPreviewDisplay.mouse.current));
}

void InvalidateMark(ViewPoint client, void *) {
    InvalidateClient({client.x, client.y, client.x + 1, client.y + 1}, kMarkReach);
}

bool SameMarks(const LightMarks &a, const LightMarks &b) {
    return a.active == b.active && a.mode == b.mode && a.single == b.single && a.inRect == b.inRect &&
           a.rect.left == b.rect.left && a.rect.top == b.rect.top && a.rect.right == b.rect.right &&
           a.rect.bottom == b.rect.bottom;
}

} // namespace

POINT ToClient(POINT screen) {
    ScreenToClient(gPreviewDisplay.window, &screen);
    return screen;
}

IntRect RectOfPoints(POINT a, POINT b) {
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x) + 1, std::max(a.y, b.y) + 1};
}

void InvalidateClient(const IntRect &rect, LONG margin) {
    const RECT area = {rect.left - margin, rect.top - margin, rect.right + margin, rect.bottom + margin};
    InvalidateRect(gPreviewDisplay.window, &area, FALSE);
}

uint32_t EffectiveViewTool() {
    return gPreviewDisplay.spaceHeld ? kToolPan : gViewTools.tool;
}

bool DragRectangle(IntRect *rect) {
    const DisplayMouse &mouse = gPreviewDisplay.mouse;
    if (!IsRectangleState(mouse.state) || !mouse.farEnough)
        return false;
    *rect = RectOfPoints(ToClient(mouse.press), ToClient(mouse.current));
    return true;
}

void UpdateLightMarks() {
    const LightMarks marks = PresentMarks();
    if (SameMarks(marks, gPreviewDisplay.marks))
        return;
    VisitMarkedLights(gPreviewDisplay.marks, gViewTools.view, InvalidateMark, nullptr);
    gPreviewDisplay.marks = marks;
    VisitMarkedLights(marks, gViewTools.view, InvalidateMark, nullptr);
}

void RefreshHiddenLights() {
    if (!gPreviewDisplay.window)
        return;
    UpdateLightMarks();
    InvalidateRect(gPreviewDisplay.window, nullptr, FALSE);
}
