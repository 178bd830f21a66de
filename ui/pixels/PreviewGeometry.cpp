#include "ui/pixels/PreviewGeometry.h"

#include <algorithm>
#include <cmath>

namespace {

// Less than a whole pixel is added to a far edge before it is cut: a partly covered scaled pixel counts as
// covered, one that is only touched does not.
constexpr double kEdgeTolerance = 0.00000000001;

constexpr double kTilePerZoom = 10.24; // scaled pixels for one percent: 1024 document pixels

int32_t ScaleLow(int32_t edge, double zoom) {
    return static_cast<int32_t>(std::floor(edge * zoom / kFullZoom));
}

int32_t ScaleHigh(int32_t edge, double zoom) {
    return static_cast<int32_t>(std::floor((edge + kFullZoom / zoom - kEdgeTolerance) * zoom / kFullZoom));
}

// Edges that differ from a whole pixel by no more than this lie on it.
constexpr double kTouchTolerance = 0.00000001;

// The loops see to it that scaling leads back, whatever the rounding of the divisions.
int32_t UnscaleLow(int32_t edge, double zoom) {
    auto low = static_cast<int32_t>(std::floor(edge * kFullZoom / zoom + kTouchTolerance));
    while (ScaleLow(low, zoom) > edge)
        --low;
    return low;
}

int32_t UnscaleHigh(int32_t edge, double zoom) {
    auto high = static_cast<int32_t>(std::ceil(edge * kFullZoom / zoom - kTouchTolerance));
    while (ScaleHigh(high, zoom) < edge)
        ++high;
    return high;
}

// To one pixel, of the image whose edge it lies at.
void WidenWhenEmpty(int32_t imageLow, int32_t *low, int32_t *high) {
    if (*low < *high)
        return;
    if (*low > imageLow)
        --*low;
    else
        ++*high;
}

} // namespace

IntRect ScaleRect(const IntRect &rect, double zoom) {
    return {ScaleLow(rect.left, zoom), ScaleLow(rect.top, zoom), ScaleHigh(rect.right, zoom),
            ScaleHigh(rect.bottom, zoom)};
}

IntRect UnscaleRect(const IntRect &scaled, double zoom) {
    return {UnscaleLow(scaled.left, zoom), UnscaleLow(scaled.top, zoom), UnscaleHigh(scaled.right, zoom),
            UnscaleHigh(scaled.bottom, zoom)};
}

IntRect VisibleRect(const PreviewGeometry &geometry) {
    const int32_t width = geometry.display.right - geometry.display.left;
    const int32_t height = geometry.display.bottom - geometry.display.top;
    const int32_t left = geometry.centerX - width / 2, top = geometry.centerY - height / 2;
    return {left, top, left + width, top + height};
}

IntRect ScaledImage(const PreviewGeometry &geometry) {
    return ScaleRect(geometry.filterRect, geometry.zoom);
}

IntRect ImageInClient(const PreviewGeometry &geometry) {
    const IntRect image = ScaledImage(geometry), visible = VisibleRect(geometry);
    const int32_t dx = geometry.display.left - visible.left, dy = geometry.display.top - visible.top;
    return {image.left + dx, image.top + dy, image.right + dx, image.bottom + dy};
}

IntRect WindowAroundView(const PreviewGeometry &geometry, double margin) {
    const IntRect visible = VisibleRect(geometry), image = ScaledImage(geometry);
    const auto growX = static_cast<int32_t>((visible.right - visible.left) * margin);
    const auto growY = static_cast<int32_t>((visible.bottom - visible.top) * margin);
    IntRect window{std::clamp(visible.left - growX, image.left, image.right),
                   std::clamp(visible.top - growY, image.top, image.bottom),
                   std::clamp(visible.right + growX, image.left, image.right),
                   std::clamp(visible.bottom + growY, image.top, image.bottom)};
    WidenWhenEmpty(image.left, &window.left, &window.right);
    WidenWhenEmpty(image.top, &window.top, &window.bottom);
    return window;
}

int32_t PreviewTileSize(double zoom, const IntRect &visible) {
    const auto whole = static_cast<int32_t>(zoom * kTilePerZoom);
    const int32_t side = std::max(whole, kSmallestTile);
    if (IsEmptyRect(visible))
        return side;
    return std::min({side, visible.right - visible.left, visible.bottom - visible.top});
}

int32_t CountTiles(const IntRect &rect, int32_t tileSize) {
    if (IsEmptyRect(rect))
        return 1;
    const int32_t across = (rect.right - rect.left + tileSize - 1) / tileSize;
    const int32_t down = (rect.bottom - rect.top + tileSize - 1) / tileSize;
    return across * down;
}

IntRect TileAt(const IntRect &area, int32_t tileSize, int32_t x, int32_t y) {
    const int32_t column = (std::clamp(x, area.left, area.right - 1) - area.left) / tileSize;
    const int32_t row = (std::clamp(y, area.top, area.bottom - 1) - area.top) / tileSize;
    const int32_t left = area.left + column * tileSize, top = area.top + row * tileSize;
    return {left, top, std::min(left + tileSize, area.right), std::min(top + tileSize, area.bottom)};
}
