#include "host/services/Document.h"

#include <cstring>

namespace host {

Document MakeDocument(int32_t width, int32_t height, int32_t depth, int32_t colourPlanes,
                      bool hasTransparency) {
    Document document;
    document.width = width;
    document.height = height;
    document.depth = depth;
    document.colourPlanes = colourPlanes;
    document.hasTransparency = hasTransparency;
    const size_t planeSize =
        static_cast<size_t>(width) * static_cast<size_t>(height) * static_cast<size_t>(depth / 8);
    document.planes.assign(static_cast<size_t>(colourPlanes) + (hasTransparency ? 1 : 0),
                           std::vector<uint8_t>(planeSize));
    return document;
}

static size_t SampleOffset(const Document &document, int32_t x, int32_t y) {
    const size_t index =
        static_cast<size_t>(y) * static_cast<size_t>(document.width) + static_cast<size_t>(x);
    return index * static_cast<size_t>(BytesPerSample(document));
}

double GetSample(const Document &document, int32_t plane, int32_t x, int32_t y) {
    const uint8_t *sample = document.planes[static_cast<size_t>(plane)].data() + SampleOffset(document, x, y);
    if (document.depth == 8)
        return *sample;
    if (document.depth == 16) {
        uint16_t value;
        std::memcpy(&value, sample, sizeof(value));
        return value;
    }
    float value;
    std::memcpy(&value, sample, sizeof(value));
    return static_cast<double>(value);
}

void SetSample(Document &document, int32_t plane, int32_t x, int32_t y, double value) {
    uint8_t *sample = document.planes[static_cast<size_t>(plane)].data() + SampleOffset(document, x, y);
    if (document.depth == 8) {
        *sample = static_cast<uint8_t>(value);
    } else if (document.depth == 16) {
        const auto word = static_cast<uint16_t>(value);
        std::memcpy(sample, &word, sizeof(word));
    } else {
        const auto real = static_cast<float>(value);
        std::memcpy(sample, &real, sizeof(real));
    }
}

} // namespace host
