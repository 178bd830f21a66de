#include "tests/view/FakePreview.h"

#include "engine/table/LightSourceTable.h"
#include "tests/support/SystemObjects.h"
#include "ui/preview/PreviewImages.h"
#include "ui/preview/ProxyUpdateTask.h"

#include <cmath>

FakePreview gFakePreview;
static const bool gObjectsAreCounted = CountOwnSystemObjects();

uint32_t PatternPixel(const PreviewGeometry &view, int32_t x, int32_t y) {
    if (!RectContains(ImageInClient(view), x, y))
        return kSurroundPixel;
    const IntRect visible = VisibleRect(view);
    const auto column =
        static_cast<int32_t>(std::floor((visible.left + x - view.display.left + 0.5) * 100.0 / view.zoom));
    const auto row =
        static_cast<int32_t>(std::floor((visible.top + y - view.display.top + 0.5) * 100.0 / view.zoom));
    return static_cast<uint32_t>((column & 255) << 16 | (row & 255) << 8 |
                                 (((column >> 8) * 16 + (row >> 8) * 64 + 7) & 255));
}

bool PaintPreviewImage(HDC dc, const IntRect &part, const PreviewGeometry &geometry) {
    ++gFakePreview.paintings;
    if (gFakePreview.paintFails)
        return false;
    const IntRect r = IntersectRects(IntersectRects(part, geometry.display), ImageInClient(geometry));
    if (IsEmptyRect(r))
        return true;
    const int32_t width = r.right - r.left, height = r.bottom - r.top;
    std::vector<uint32_t> pixels;
    for (int32_t y = r.top; y < r.bottom; ++y)
        for (int32_t x = r.left; x < r.right; ++x)
            pixels.push_back(PatternPixel(geometry, x, y));
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
    gFakePreview.changeModes.push_back(mode);
    return SetLightSourceStateAt(x, y, zoomPercent, mode);
}

int32_t ChangeEffectsInRect(const IntRect &rect, int32_t mode) {
    gFakePreview.changeModes.push_back(mode);
    return SetLightSourceStatesInRect(rect, mode);
}
