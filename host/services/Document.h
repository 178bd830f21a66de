// The image a filter is run on, as the host keeps it: planes of samples in the host's value ranges.
#pragma once

#include <cstdint>
#include <vector>

namespace host {

struct Rectangle { // right and bottom are exclusive
    int32_t left = 0;
    int32_t top = 0;
    int32_t right = 0;
    int32_t bottom = 0;

    bool operator==(const Rectangle &) const = default;
};

constexpr bool IsEmpty(const Rectangle &r) {
    return r.left >= r.right || r.top >= r.bottom;
}
constexpr bool Contains(const Rectangle &outer, const Rectangle &inner) {
    return inner.left >= outer.left && inner.top >= outer.top && inner.right <= outer.right &&
           inner.bottom <= outer.bottom;
}

struct Document {
    int32_t width = 0;
    int32_t height = 0;
    int32_t depth = 8;            // bits per sample: 8 (0..255), 16 (0..32768) or 32 (float, 1.0 = white)
    int32_t colourPlanes = 3;     // 1 = grey, 3 = RGB
    bool hasTransparency = false; // the plane after the colours
    std::vector<std::vector<uint8_t>> planes; // colours, transparency, then extra planes; rows without gaps
    std::vector<uint8_t> mask; // selection, width * height bytes, 255 = selected; empty = everything
    std::vector<uint8_t> iccProfile;

    bool operator==(const Document &) const = default;
};

// A document of zero samples with colourPlanes (+ 1 with transparency) planes.
Document MakeDocument(int32_t width, int32_t height, int32_t depth, int32_t colourPlanes,
                      bool hasTransparency);

constexpr int32_t BytesPerSample(const Document &document) {
    return document.depth / 8;
}

// One sample as a number: 0..255, 0..32768 or the float.
double GetSample(const Document &document, int32_t plane, int32_t x, int32_t y);
void SetSample(Document &document, int32_t plane, int32_t x, int32_t y, double value);

} // namespace host
