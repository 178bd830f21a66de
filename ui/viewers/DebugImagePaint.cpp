#include "ui/viewers/DebugImagePaint.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int kStatusLines = 2;
constexpr int kStripMargin = 3;               // pixels around the text
constexpr COLORREF kBeside = RGB(64, 64, 64); // beside the picture

HFONT DisplayFont(HWND display) {
    const auto font = reinterpret_cast<HFONT>(SendMessageA(GetParent(display), WM_GETFONT, 0, 0));
    return font ? font : static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT));
}

int TextHeight(HWND display) {
    int height = 16;
    const HDC dc = GetDC(display);
    if (!dc)
        return height;
    const HGDIOBJ before = SelectObject(dc, DisplayFont(display));
    TEXTMETRICA metrics;
    if (GetTextMetricsA(dc, &metrics))
        height = metrics.tmHeight;
    SelectObject(dc, before);
    ReleaseDC(display, dc);
    return height;
}

void FillColor(HDC dc, const RECT &rect, COLORREF color) {
    SetBkColor(dc, color);
    ExtTextOutA(dc, 0, 0, ETO_OPAQUE, &rect, nullptr, 0, nullptr);
}

// Smooth when it is made smaller, so that no small light drops out; plain squares when it is made larger.
void DrawPicture(HDC dc, const DebugBitmap &bitmap, const DebugView &view) {
    const DebugSpan columns = VisibleColumns(view), rows = VisibleRows(view);
    if (columns.count <= 0 || rows.count <= 0)
        return;
    const bool shrinks = DebugScale(view) < 1.0;
    SetStretchBltMode(dc, shrinks ? HALFTONE : COLORONCOLOR);
    SetBrushOrgEx(dc, 0, 0, nullptr);
    StretchBlt(dc, columns.place, rows.place, columns.drawn, rows.drawn, bitmap.context, columns.first,
               rows.first, columns.count, rows.count, SRCCOPY);
}

void DrawStatus(HDC dc, HFONT font, const RECT &strip, const char *status) {
    FillColor(dc, strip, GetSysColor(COLOR_BTNFACE));
    SetTextColor(dc, GetSysColor(COLOR_BTNTEXT));
    const HGDIOBJ before = SelectObject(dc, font);
    RECT text = strip;
    InflateRect(&text, -kStripMargin, -kStripMargin);
    DrawTextA(dc, status, -1, &text, DT_NOPREFIX | DT_END_ELLIPSIS);
    SelectObject(dc, before);
}

void DrawDisplay(HDC dc, HWND display, const DebugBitmap &bitmap, const DebugView &view, const char *status) {
    const RECT area = DebugPictureArea(display);
    if (RectVisible(dc, &area)) {
        FillColor(dc, area, kBeside);
        const int saved = SaveDC(dc);
        IntersectClipRect(dc, area.left, area.top, area.right, area.bottom);
        if (bitmap.context)
            DrawPicture(dc, bitmap, view);
        RestoreDC(dc, saved);
    }
    DrawStatus(dc, DisplayFont(display), DebugStatusStrip(display), status);
}

} // namespace

RECT DebugStatusStrip(HWND display) {
    RECT rect;
    GetClientRect(display, &rect);
    rect.top = std::max(rect.bottom - kStatusLines * TextHeight(display) - 2 * kStripMargin, rect.top);
    return rect;
}

RECT DebugPictureArea(HWND display) {
    RECT rect;
    GetClientRect(display, &rect);
    rect.bottom = DebugStatusStrip(display).top;
    return rect;
}

// Drawn into a bitmap of the invalid rectangle and copied in one go; directly when there is no room for one.
void PaintDebugDisplay(HWND display, const DebugBitmap &bitmap, const DebugView &view, const char *status) {
    PAINTSTRUCT paint;
    const HDC dc = BeginPaint(display, &paint);
    if (!dc)
        return;
    const RECT &rect = paint.rcPaint;
    const int width = rect.right - rect.left, height = rect.bottom - rect.top;
    const HDC buffer = CreateCompatibleDC(dc);
    const HBITMAP surface = buffer ? CreateCompatibleBitmap(dc, width, height) : nullptr;
    if (surface) {
        const HGDIOBJ before = SelectObject(buffer, surface);
        SetViewportOrgEx(buffer, -rect.left, -rect.top, nullptr);
        DrawDisplay(buffer, display, bitmap, view, status);
        SetViewportOrgEx(buffer, 0, 0, nullptr);
        BitBlt(dc, rect.left, rect.top, width, height, buffer, 0, 0, SRCCOPY);
        SelectObject(buffer, before);
        DeleteObject(surface);
    } else {
        DrawDisplay(dc, display, bitmap, view, status);
    }
    if (buffer)
        DeleteDC(buffer);
    EndPaint(display, &paint);
}
