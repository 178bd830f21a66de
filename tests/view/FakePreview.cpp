#include "tests/view/FakePreview.h"

#include "engine/LightSourceTable.h"
#include "ui/PreviewImages.h"
#include "ui/ProxyUpdateTask.h"

#include <cmath>

FakePreview gFakePreview;
std::atomic<uint8_t> gViewToolInUse;
std::atomic<uint32_t> gLastHiddenLightSource{kNoLightSource};

COLORREF PatternColor(int32_t x, int32_t y) {
    return RGB(x & 255, y & 255, ((x >> 8) * 16 + (y >> 8) * 64 + 7) & 255);
}

bool PaintPreviewImage(HDC dc, const IntRect &part, const PreviewGeometry &geometry) {
    ++gFakePreview.paintings;
    if (gFakePreview.paintFails)
        return false;
    const IntRect r = IntersectRects(IntersectRects(part, geometry.display), ImageInClient(geometry));
    if (IsEmptyRect(r))
        return true;
    const IntRect visible = VisibleRect(geometry);
    const int32_t width = r.right - r.left, height = r.bottom - r.top;
    std::vector<uint32_t> pixels;
    for (int32_t y = r.top; y < r.bottom; ++y)
        for (int32_t x = r.left; x < r.right; ++x) {
            const double u = (visible.left + x - geometry.display.left + 0.5) * 100.0 / geometry.zoom;
            const double v = (visible.top + y - geometry.display.top + 0.5) * 100.0 / geometry.zoom;
            const COLORREF c =
                PatternColor(static_cast<int32_t>(std::floor(u)), static_cast<int32_t>(std::floor(v)));
            pixels.push_back(GetRValue(c) << 16 | GetGValue(c) << 8 | GetBValue(c));
        }
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    SetDIBitsToDevice(dc, r.left, r.top, static_cast<DWORD>(width), static_cast<DWORD>(height), 0, 0, 0,
                      static_cast<UINT>(height), pixels.data(), &info, DIB_RGB_COLORS);
    return true;
}

bool StartProxyUpdateTask(HWND, const PreviewSource &) {
    ++gFakePreview.starts;
    return !gFakePreview.startFails;
}

void StopProxyUpdateTask() {
    ++gFakePreview.stops;
}

int32_t ChangeEffectAt(int32_t x, int32_t y, double zoomPercent, int32_t mode) {
    gFakePreview.changes.push_back({{x, y, 0, 0}, zoomPercent, mode});
    return SetLightSourceStateAt(x, y, zoomPercent, mode);
}

int32_t ChangeEffectsInRect(const IntRect &rect, int32_t mode) {
    gFakePreview.changes.push_back({rect, 0.0, mode});
    return SetLightSourceStatesInRect(rect, mode);
}
