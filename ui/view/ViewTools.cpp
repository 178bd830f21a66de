#include "ui/view/ViewTools.h"

#include "resources/DialogControlIds.h"
#include "storage/UISettings.h"
#include "ui/window/DesktopWindow.h"
#include "ui/window/DialogMessages.h"
#include "ui/window/Tooltips.h"
#include "ui/window/WindowPlacement.h"

#include <algorithm>

ViewTools gViewTools;

namespace {

constexpr size_t kZoomTextCapacity = 32;

struct ToolIcon {
    uint32_t tool;
    int controlId;
    const char *tooltip;
};

constexpr int kToolLabels[] = {kPanLabelId, kZoomLabelId, kHideLabelId, kShowLabelId};

constexpr ToolIcon kToolIcons[] = {
    {kToolPan, kPanIconId, "Pan Tool (P) - use this tool to move the image in the display area"},
    {kToolZoom, kZoomIconId,
     "Zoom Tool (Z) - use this tool to zoom the image in or out, double click to go to 100%"},
    {kToolHide, kHideIconId,
     "Hide Effects Tool (X) - use this tool to turn unwanted effects off, drag to do multiples; hold down "
     "the "
     "Alt key to reveal previously hidden effects"},
    {kToolShow, kShowIconId,
     "Show Hidden Effects Tool (+) - use this tool to toggle previously hidden effects on, drag to do "
     "multiples; hold down the Alt key to hide them"},
};

void ShowPicture(int controlId, ToolPicture picture) {
    if (gViewTools.showPicture)
        gViewTools.showPicture(gViewTools.dialog, controlId, picture);
}

void ShowToolIcon(const ToolIcon &icon) {
    const HWND control = GetDlgItem(gViewTools.dialog, icon.controlId);
    if (control && !IsWindowEnabled(control))
        ShowPicture(icon.controlId, kPictureDisabled);
    else
        ShowPicture(icon.controlId, icon.tool == gViewTools.tool ? kPictureSelected : kPictureNormal);
}

void EnableZoomButton(int controlId, bool enabled) {
    if (const HWND button = GetDlgItem(gViewTools.dialog, controlId))
        EnableWindow(button, enabled);
    ShowPicture(controlId, enabled ? kPictureNormal : kPictureDisabled);
}

// The posted message picks the cursor and the marks for what the display then shows.
void RefreshDisplayTool() {
    if (gViewTools.display)
        PostMessageW(gViewTools.display, kMsgRefreshCursor, 0, 0);
}

void RedrawDisplay() {
    if (gViewTools.display)
        InvalidateRect(gViewTools.display, nullptr, FALSE);
}

// The display paints at once from what there is; the request brings what is missing.
void ShowChangedZoom() {
    gViewTools.isFitted = false;
    UpdateScrollBars();
    AskForPreview();
    RedrawDisplay();
    UpdateZoomControls();
}

void SetBar(int controlId, const ScrollRange &range) {
    const HWND bar = GetDlgItem(gViewTools.dialog, controlId);
    if (!bar)
        return;
    SCROLLINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = SIF_RANGE | SIF_PAGE | SIF_POS | SIF_DISABLENOSCROLL;
    info.nMin = range.minimum;
    info.nMax = range.maximum;
    info.nPage = static_cast<UINT>(range.page);
    info.nPos = range.position;
    SetScrollInfo(bar, SB_CTL, &info, TRUE);
    // A new bar that is set to what it has already would stay enabled.
    EnableScrollBar(bar, SB_CTL, range.maximum > range.minimum ? ESB_ENABLE_BOTH : ESB_DISABLE_BOTH);
}

int32_t ScrolledPosition(const SCROLLINFO &info, int scrollCode) {
    const int32_t page = static_cast<int32_t>(info.nPage);
    switch (scrollCode) {
    case SB_LINELEFT:
        return info.nPos - 1;
    case SB_LINERIGHT:
        return info.nPos + 1;
    case SB_PAGELEFT:
        return info.nPos - page;
    case SB_PAGERIGHT:
        return info.nPos + page;
    case SB_THUMBTRACK:
    case SB_THUMBPOSITION:
        return info.nTrackPos;
    case SB_LEFT:
        return info.nMin;
    case SB_RIGHT:
        return info.nMax;
    }
    return info.nPos;
}

} // namespace

void AttachViewTools(HWND dialog, HWND display, const IntRect &image, ShowToolPicture showPicture) {
    gViewTools = {dialog, display, showPicture, kToolNone, MakeViewState(image), false, false};
    if (GetViewTool() > kToolZoom)
        SetViewTool(kToolZoom);
    for (const int labelId : kToolLabels) // a click on a tool's name is one on the tool
        if (const HWND label = GetDlgItem(dialog, labelId))
            SetWindowLongW(label, GWL_STYLE, GetWindowLongW(label, GWL_STYLE) | SS_NOTIFY);
    UpdateViewLayout();
    UpdateZoomControls();
}

void DetachViewTools() {
    gViewTools = {};
}

void RegisterViewTooltips(HWND dialog, HWND tooltipWindow) {
    for (const ToolIcon &icon : kToolIcons)
        AddTooltip(dialog, tooltipWindow, icon.controlId, icon.tooltip);
}

void SelectViewTool(uint32_t tool) {
    const bool changes = tool != kToolNone && tool != gViewTools.tool;
    if (changes) {
        gViewTools.tool = tool;
        SetViewTool(tool);
    }
    for (const ToolIcon &icon : kToolIcons)
        ShowToolIcon(icon);
    if (!changes)
        return;
    RefreshDisplayTool();
    RedrawDisplay(); // only the effect tools show what is hidden
}

void SelectEffectTool(uint32_t tool) {
    if (gViewTools.tableReady)
        SelectViewTool(tool);
}

void EnableEffectTools() {
    gViewTools.tableReady = true;
    for (const int controlId : {kHideIconId, kHideLabelId, kShowIconId, kShowLabelId})
        if (const HWND control = GetDlgItem(gViewTools.dialog, controlId))
            EnableWindow(control, TRUE);
    SelectViewTool(kToolNone);
    RedrawDisplay();
}

PreviewGeometry CurrentPreviewGeometry() {
    return GeometryOfView(gViewTools.view);
}

void SetZoom(double zoom) {
    SetViewZoom(&gViewTools.view, zoom);
    ShowChangedZoom();
}

void SetZoomAbout(double zoom, ViewPoint client) {
    SetViewZoomAbout(&gViewTools.view, zoom, client);
    ShowChangedZoom();
}

void ZoomToClientRect(const IntRect &client) {
    ZoomViewToRect(&gViewTools.view, client);
    ShowChangedZoom();
}

void ZoomIn() {
    SetZoom(LookUpZoom(kZoomStepIn, gViewTools.view.zoom));
}

void ZoomOut() {
    SetZoom(LookUpZoom(kZoomStepOut, gViewTools.view.zoom));
}

void ShowActualPixels() {
    SetZoom(LookUpZoom(kZoomActualPixels, gViewTools.view.zoom));
}

void FitInView() {
    const IntRect &display = gViewTools.view.display, &image = gViewTools.view.image;
    SetZoom(FitZoom(display.right - display.left, display.bottom - display.top, image.right - image.left,
                    image.bottom - image.top));
    gViewTools.isFitted = true;
}

void FitOnScreen() {
    MONITORINFO monitor = {};
    monitor.cbSize = sizeof monitor;
    if (GetMonitorInfoA(MonitorFromWindow(gViewTools.dialog, MONITOR_DEFAULTTONEAREST), &monitor)) {
        const RECT place = GrownBy(monitor.rcWork, InvisibleFrame(gViewTools.dialog));
        SetWindowPos(gViewTools.dialog, nullptr, place.left, place.top, place.right - place.left,
                     place.bottom - place.top, SWP_NOZORDER | SWP_NOACTIVATE);
    }
    FitInView();
}

bool ScrollPreview(int32_t dx, int32_t dy) {
    return CenterPreview(gViewTools.view.centerX - dx, gViewTools.view.centerY - dy);
}

bool CenterPreview(double x, double y, bool request) {
    if (!SetViewCenter(&gViewTools.view, x, y))
        return false;
    UpdateScrollBars();
    if (request)
        AskForPreview();
    RedrawDisplay();
    RefreshDisplayTool();
    return true;
}

void AskForPreview() {
    if (gViewTools.dialog)
        PostMessageW(gViewTools.dialog, kMsgRequestPreview, 0, 0);
}

void UpdateViewLayout() {
    RECT client = {};
    GetClientRect(gViewTools.display, &client);
    SetViewClientSize(&gViewTools.view, client.right, client.bottom);
    if (gViewTools.isFitted)
        return FitInView();
    UpdateScrollBars();
    RedrawDisplay();
}

void UpdateZoomControls() {
    const double zoom = gViewTools.view.zoom;
    char text[kZoomTextCapacity];
    if (FormatZoomText(zoom, text, sizeof text))
        SetDlgItemTextA(gViewTools.dialog, kZoomTextId, text);
    EnableZoomButton(kZoomInButtonId, zoom < kMaximumZoom);
    EnableZoomButton(kZoomOutButtonId, zoom > kMinimumZoom);
    RefreshDisplayTool();
}

void UpdateScrollBars() {
    SetBar(kHorizontalBarId, HorizontalScroll(gViewTools.view));
    SetBar(kVerticalBarId, VerticalScroll(gViewTools.view));
}

bool OnPreviewScroll(HWND bar, int scrollCode) {
    const int controlId = bar ? GetDlgCtrlID(bar) : 0;
    if (controlId != kHorizontalBarId && controlId != kVerticalBarId)
        return false;
    SCROLLINFO info = {};
    info.cbSize = sizeof info;
    info.fMask = SIF_ALL;
    if (!GetScrollInfo(bar, SB_CTL, &info) || info.nMax <= info.nMin)
        return true;
    const int32_t page = static_cast<int32_t>(info.nPage);
    const int32_t last = std::max(info.nMin, info.nMax - page);
    const int32_t position = std::clamp(ScrolledPosition(info, scrollCode), info.nMin, last);
    if (position == info.nPos)
        return true;
    const double center = CenterOfScroll(position, page);
    const bool horizontal = controlId == kHorizontalBarId;
    CenterPreview(horizontal ? center : gViewTools.view.centerX,
                  horizontal ? gViewTools.view.centerY : center);
    return true;
}
