// Whole-pixel rectangles in document coordinates (x to the right, y downward), half-open on the right and
// bottom.
#pragma once

#include <algorithm>
#include <cstdint>

struct IntRect {
    int32_t left, top, right, bottom;
};

inline bool IsEmptyRect(const IntRect &r) {
    return r.left >= r.right || r.top >= r.bottom;
}

inline bool RectContains(const IntRect &r, int32_t x, int32_t y) {
    return x >= r.left && x < r.right && y >= r.top && y < r.bottom;
}

// The common part; all zero when there is none.
inline IntRect IntersectRects(const IntRect &a, const IntRect &b) {
    const IntRect r{std::max(a.left, b.left), std::max(a.top, b.top), std::min(a.right, b.right),
                    std::min(a.bottom, b.bottom)};
    return IsEmptyRect(r) ? IntRect{0, 0, 0, 0} : r;
}

// What the renderer knows of the filtered area. Written on the host's thread when the image is read, before
// any other thread starts; read-only until the run ends.
struct ImageGeometry {
    IntRect filterRect;
    int32_t width, height;
    int32_t diagonal; // trunc(sqrt(width² + height²) + 1), in pixels
};

extern ImageGeometry gImageGeometry;

// Sets gImageGeometry for a filter rectangle.
void SetImageGeometry(const IntRect &filterRect);
