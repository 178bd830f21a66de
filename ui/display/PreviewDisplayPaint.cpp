#include "ui/display/PreviewDisplayPaint.h"

#include "diag/ErrorReport.h"
#include "engine/table/HideEffects.h"
#include "engine/table/LightSourceTable.h"
#include "ui/display/OriginalView.h"
#include "ui/display/PreviewDisplayMarks.h"
#include "ui/display/PreviewDisplayState.h"
#include "ui/preview/PreviewImages.h"
#include "ui/view/ViewTools.h"
#include "ui/window/Palette.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint32_t kSiteDisplayRegion = 901, kSiteImageRegion = 906, kSiteUpdateRegion = 911,
                   kSiteFillRegion = 916, kSiteGetUpdate = 931, kSiteValidate = 938, kSiteCombineImage = 952,
                   kSiteSubtractImage = 963, kSiteCombineFill = 967;

constexpr COLORREF kSurround = RGB(96, 96, 96); // neutral, so that the picture's colours are judged rightly
constexpr COLORREF kLabelBack = RGB(32, 32, 32), kLabelText = RGB(240, 240, 240);
constexpr COLORREF kHideColor = RGB(255, 96, 64), kRestoreColor = RGB(96, 224, 96);
constexpr COLORREF kHiddenLight = RGB(168, 168, 168), kHiddenDark = RGB(72, 72, 72);
constexpr int kMarkRadius = 8;
constexpr int kDash = 4; // of the drag rectangle: as long as the gap
constexpr int kLabelMargin = 8;
constexpr char kLocatingText[] = "Locating Light Sources In Image...";
constexpr char kNoPreviewText[] = "The preview could not be started. All settings work without it.";

void ReportPaintError(uint32_t site, const char *message) {
    ReportError({site, kDebugMessage, 0}, kStopIcon, kTitleUnexpected, "%s", message);
}

void ReportLastError(uint32_t site, const char *message) {
    ReportError({site, kSystemError, GetLastError()}, kStopIcon, kTitleUnexpected, "%s", message);
}

HRGN MakeRegion(uint32_t site, const char *message) {
    const HRGN region = CreateRectRgn(0, 0, 0, 0);
    if (!region)
        ReportLastError(site, message);
    return region;
}

void DeleteRegion(HRGN *region) {
    if (*region)
        DeleteObject(*region);
    *region = nullptr;
}

RECT ToRect(const IntRect &r) {
    return {r.left, r.top, r.right, r.bottom};
}

RECT ClientRect() {
    RECT client = {};
    GetClientRect(gPreviewDisplay.window, &client);
    return client;
}

void SetRegion(HRGN region, const IntRect &r) {
    SetRectRgn(region, r.left, r.top, std::max(r.left, r.right), std::max(r.top, r.bottom));
}

void FreeBitmap(DisplaySurface *surface) {
    if (surface->dc) {
        SelectObject(surface->dc, surface->oldBitmap);
        DeleteDC(surface->dc);
    }
    if (surface->bitmap)
        DeleteObject(surface->bitmap);
    surface->dc = nullptr;
    surface->bitmap = nullptr;
    surface->oldBitmap = nullptr;
}

// A buffer of the window's size. False when the system gives none; drawing then goes straight to the window.
bool PrepareBitmap(HDC windowDc, const RECT &client, DisplaySurface *surface) {
    const int32_t width = std::max<LONG>(client.right, 1), height = std::max<LONG>(client.bottom, 1);
    if (surface->dc && surface->width == width && surface->height == height)
        return true;
    FreeBitmap(surface);
    const HDC dc = CreateCompatibleDC(windowDc);
    const HBITMAP bitmap = dc ? CreateCompatibleBitmap(windowDc, width, height) : nullptr;
    if (!bitmap) {
        if (dc)
            DeleteDC(dc);
        return false;
    }
    surface->dc = dc;
    surface->bitmap = bitmap;
    surface->oldBitmap = SelectObject(dc, bitmap);
    surface->width = width;
    surface->height = height;
    return true;
}

void FillBox(HDC dc, const RECT &rect, COLORREF color) {
    SetDCBrushColor(dc, color);
    FillRect(dc, &rect, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

bool PaintImage(HDC dc, const IntRect &part, const PreviewGeometry &geometry) {
    return gPreviewDisplay.comparing ? PaintOriginalImage(dc, part, geometry)
                                     : PaintPreviewImage(dc, part, geometry);
}

// Without regions the surround goes under the image.
void DrawPictureSimply(HDC dc, const PreviewGeometry &geometry) {
    FillBox(dc, ToRect(geometry.display), kSurround);
    PaintImage(dc, geometry.display, geometry);
}

void DrawImagePart(HDC dc, const PreviewGeometry &geometry, const DisplaySurface &s) {
    SetRegion(s.ImageRegion, IntersectRects(ImageInClient(geometry), geometry.display));
    const int kind = CombineRgn(s.ImageRegion, s.ImageRegion, s.UpdateRegion, RGN_AND);
    if (kind == ERROR)
        ReportPaintError(kSiteCombineImage, "Could not combine ImageRegion and UpdateRegion.");
    RECT box = {};
    if (kind == ERROR || kind == NULLREGION || GetRgnBox(s.ImageRegion, &box) == ERROR)
        return;
    if (!PaintImage(dc, {box.left, box.top, box.right, box.bottom}, geometry))
        FillBox(dc, box, kSurround);
}

void DrawSurround(HDC dc, const PreviewGeometry &geometry, const DisplaySurface &s) {
    SetRegion(s.DisplayRegion, geometry.display);
    SetRegion(s.ImageRegion, IntersectRects(ImageInClient(geometry), geometry.display));
    if (CombineRgn(s.FillRegion, s.DisplayRegion, s.ImageRegion, RGN_DIFF) == ERROR) {
        ReportPaintError(kSiteSubtractImage, "Could not combine DisplayRegion and ImageRegion.");
        return;
    }
    if (CombineRgn(s.FillRegion, s.FillRegion, s.UpdateRegion, RGN_AND) == ERROR) {
        ReportPaintError(kSiteCombineFill, "Could not combine FillRegion and UpdateRegion.");
        return;
    }
    SetDCBrushColor(dc, kSurround);
    FillRgn(dc, s.FillRegion, static_cast<HBRUSH>(GetStockObject(DC_BRUSH)));
}

void DrawPicture(HDC dc, const PreviewGeometry &geometry, const DisplaySurface &s) {
    if (!s.DisplayRegion || !s.ImageRegion || !s.UpdateRegion || !s.FillRegion) {
        DrawPictureSimply(dc, geometry);
        return;
    }
    DrawImagePart(dc, geometry, s);
    DrawSurround(dc, geometry, s);
}

void DrawRing(HDC dc, ViewPoint center, int radius, COLORREF color) {
    SetDCPenColor(dc, color);
    Ellipse(dc, center.x - radius, center.y - radius, center.x + radius + 1, center.y + radius + 1);
}

// Dark rings on both sides keep the mark visible on any picture.
void DrawMark(ViewPoint client, void *context) {
    const HDC dc = static_cast<HDC>(context);
    const COLORREF color = gPreviewDisplay.marks.mode == kHideEffect ? kHideColor : kRestoreColor;
    DrawRing(dc, client, kMarkRadius + 1, RGB(0, 0, 0));
    DrawRing(dc, client, kMarkRadius, color);
    DrawRing(dc, client, kMarkRadius - 1, color);
    DrawRing(dc, client, kMarkRadius - 2, RGB(0, 0, 0));
}

void DrawHiddenLight(ViewPoint client, void *context) {
    DrawRing(static_cast<HDC>(context), client, kMarkRadius + 1, kHiddenDark);
    DrawRing(static_cast<HDC>(context), client, kMarkRadius, kHiddenLight);
}

// All that the effect tools can bring back.
LightMarks HiddenLights() {
    const bool isShown =
        gViewTools.tableReady && (gViewTools.tool == kToolHide || gViewTools.tool == kToolShow);
    return {isShown, kRestoreHidden, -1, true, gViewTools.view.image};
}

void DrawMarks(HDC dc) {
    if (gPreviewDisplay.comparing)
        return;
    const HGDIOBJ oldPen = SelectObject(dc, GetStockObject(DC_PEN));
    const HGDIOBJ oldBrush = SelectObject(dc, GetStockObject(NULL_BRUSH));
    VisitMarkedLights(HiddenLights(), gViewTools.view, DrawHiddenLight, dc);
    VisitMarkedLights(gPreviewDisplay.marks, gViewTools.view, DrawMark, dc);
    SelectObject(dc, oldBrush);
    SelectObject(dc, oldPen);
}

// White dashes along one edge; the phase moves them.
void DrawDashes(HDC dc, const RECT &edge, bool horizontal, int phase) {
    const LONG from = horizontal ? edge.left : edge.top, to = horizontal ? edge.right : edge.bottom;
    for (LONG at = from - phase; at < to; at += 2 * kDash) {
        const LONG first = std::max(at, from), last = std::min(at + kDash, to);
        if (first >= last)
            continue;
        const RECT dash =
            horizontal ? RECT{first, edge.top, last, edge.bottom} : RECT{edge.left, first, edge.right, last};
        FillRect(dc, &dash, static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH)));
    }
}

void DrawDragRectangle(HDC dc) {
    IntRect drag;
    if (!DragRectangle(&drag))
        return;
    const RECT r = ToRect(drag);
    const int phase = gPreviewDisplay.antsPhase;
    FrameRect(dc, &r, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)));
    DrawDashes(dc, {r.left, r.top, r.right, r.top + 1}, true, 2 * kDash - 1 - phase);
    DrawDashes(dc, {r.right - 1, r.top, r.right, r.bottom}, false, 2 * kDash - 1 - phase);
    DrawDashes(dc, {r.left, r.bottom - 1, r.right, r.bottom}, true, phase);
    DrawDashes(dc, {r.left, r.top, r.left + 1, r.bottom}, false, phase);
}

void DrawLabel(HDC dc, const IntRect &display, const char *text) {
    const HGDIOBJ oldFont = SelectObject(dc, GetStockObject(DEFAULT_GUI_FONT));
    const int length = static_cast<int>(strlen(text));
    SIZE extent = {};
    GetTextExtentPoint32A(dc, text, length, &extent);
    const int left = (display.left + display.right - extent.cx) / 2;
    const int top = (display.top + display.bottom - extent.cy) / 2;
    FillBox(dc,
            {left - kLabelMargin, top - kLabelMargin, left + extent.cx + kLabelMargin,
             top + extent.cy + kLabelMargin},
            kLabelBack);
    SetBkMode(dc, TRANSPARENT);
    SetTextColor(dc, kLabelText);
    TextOutA(dc, left, top, text, length);
    SelectObject(dc, oldFont);
}

// The border of one pixel is the focus mark.
void DrawBorder(HDC dc, const RECT &client) {
    const bool focused = GetFocus() == gPreviewDisplay.window;
    FrameWith(dc, client, focused ? kHighlightColor : kLineColor);
}

void DrawDisplay(HDC dc, const RECT &client) {
    const PreviewGeometry geometry = CurrentPreviewGeometry();
    const int saved = SaveDC(dc);
    const IntRect &d = geometry.display;
    DrawPicture(dc, geometry, gPreviewDisplay.surface);
    IntersectClipRect(dc, d.left, d.top, d.right, d.bottom);
    DrawMarks(dc);
    DrawDragRectangle(dc);
    if (const char *label = PreviewLabel())
        DrawLabel(dc, d, label);
    if (saved)
        RestoreDC(dc, saved);
    DrawBorder(dc, client);
}

// Draws what UpdateRegion holds, off the screen when there is a buffer.
void DrawUpdate(HDC dc, const RECT &client) {
    DisplaySurface &s = gPreviewDisplay.surface;
    RECT box = client;
    if (s.UpdateRegion)
        GetRgnBox(s.UpdateRegion, &box);
    if (!PrepareBitmap(dc, client, &s)) {
        DrawDisplay(dc, client);
        return;
    }
    DrawDisplay(s.dc, client);
    BitBlt(dc, box.left, box.top, box.right - box.left, box.bottom - box.top, s.dc, box.left, box.top,
           SRCCOPY);
}

void TakeUpdateRegion(const RECT &client) {
    const HWND window = gPreviewDisplay.window;
    const HRGN update = gPreviewDisplay.surface.UpdateRegion;
    if (update && GetUpdateRgn(window, update, FALSE) == ERROR) {
        ReportPaintError(kSiteGetUpdate, "Could not get update region for proxy display.");
        SetRegion(update, {client.left, client.top, client.right, client.bottom});
    }
    // What becomes invalid meanwhile is a painting of its own.
    if (!(update ? ValidateRgn(window, update) : ValidateRect(window, nullptr)))
        ReportPaintError(kSiteValidate, "Could not validate entire proxy display.");
}

} // namespace

const char *PreviewLabel() {
    if (!gPreviewDisplay.hasTask)
        return kNoPreviewText;
    return gViewTools.tableReady ? nullptr : kLocatingText;
}

void CreateDisplayRegions(DisplaySurface *surface) {
    surface->DisplayRegion = MakeRegion(kSiteDisplayRegion, "Could not create DisplayRegion.");
    surface->ImageRegion = MakeRegion(kSiteImageRegion, "Could not create ImageRegion.");
    surface->UpdateRegion = MakeRegion(kSiteUpdateRegion, "Could not create UpdateRegion.");
    surface->FillRegion = MakeRegion(kSiteFillRegion, "Could not create FillRegion.");
}

void FreeDisplaySurface(DisplaySurface *surface) {
    FreeBitmap(surface);
    for (HRGN *region :
         {&surface->DisplayRegion, &surface->ImageRegion, &surface->UpdateRegion, &surface->FillRegion})
        DeleteRegion(region);
}

void PaintDisplay() {
    const RECT client = ClientRect();
    TakeUpdateRegion(client);
    const HDC dc = GetDC(gPreviewDisplay.window);
    if (!dc)
        return;
    const HRGN update = gPreviewDisplay.surface.UpdateRegion;
    if (update)
        SelectClipRgn(dc, update);
    DrawUpdate(dc, client);
    if (update)
        SelectClipRgn(dc, nullptr);
    ReleaseDC(gPreviewDisplay.window, dc);
}

void PrintDisplay(HDC dc) {
    const RECT client = ClientRect();
    if (gPreviewDisplay.surface.UpdateRegion)
        SetRegion(gPreviewDisplay.surface.UpdateRegion,
                  {client.left, client.top, client.right, client.bottom});
    DrawUpdate(dc, client);
}
