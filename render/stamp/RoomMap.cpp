#include "render/stamp/RoomMap.h"

#include "diag/BufferUsage.h"

#include <algorithm>

namespace {

constexpr int64_t kLaidPerByte = 4; // what is laid between two measurements, in pixels
constexpr uint8_t kWhite = 255;

size_t MapBytes(const RoomMap &map) {
    const int32_t rows = (map.band.bottom - map.band.top + kBlockRows - 1) / kBlockRows;
    return static_cast<size_t>(CountColumns(map)) * static_cast<size_t>(rows) *
           static_cast<size_t>(map.output.colorPlanes);
}

// Keeps the lesser of each two; the count is a constant, so that compilers make few steps of it.
template <int32_t count> void KeepDarkest(const uint8_t *bytes, uint8_t *darkest) {
    for (int32_t x = 0; x < count; ++x)
        darkest[x] = bytes[x] < darkest[x] ? bytes[x] : darkest[x];
}

// The darkest byte of a part of a plane, no wider than a block.
uint8_t FindDarkest(const uint8_t *first, int64_t stride, int32_t width, int32_t rows) {
    uint8_t darkest[kBlockWidth];
    std::fill_n(darkest, kBlockWidth, kWhite);
    for (int32_t y = 0; y < rows; ++y, first += stride) {
        if (width == kBlockWidth)
            KeepDarkest<kBlockWidth>(first, darkest);
        else
            for (int32_t x = 0; x < width; ++x)
                KeepDarkest<1>(first + x, darkest + x);
    }
    for (int32_t half = kBlockWidth / 2; half >= 16; half /= 2)
        for (int32_t x = 0; x < half; ++x)
            darkest[x] = std::min(darkest[x], darkest[x + half]);
    return *std::min_element(darkest, darkest + 16);
}

void MeasureBlocks(RoomMap *map) {
    const auto &[output, band, laid, darkest] = *map;
    uint8_t *to = darkest;
    for (int32_t y = band.top; y < band.bottom; y += kBlockRows)
        for (int32_t x = band.left; x < band.right; x += kBlockWidth) {
            const int64_t first = int64_t{y - output.bounds.top} * output.width + (x - output.bounds.left);
            for (int32_t plane = 0; plane < output.colorPlanes; ++plane)
                *to++ =
                    FindDarkest(output.planes[plane] + first, output.width,
                                std::min(band.right - x, kBlockWidth), std::min(band.bottom - y, kBlockRows));
        }
}

} // namespace

int32_t CountColumns(const RoomMap &map) {
    return (map.band.right - map.band.left + kBlockWidth - 1) / kBlockWidth;
}

void RefreshRoomMap(RoomMap *map) {
    const int64_t pixels = int64_t{map->band.right - map->band.left} * (map->band.bottom - map->band.top);
    if (map->laid < pixels * map->output.colorPlanes * kLaidPerByte)
        return;
    map->laid = 0;
    if (!map->darkest)
        map->darkest = static_cast<uint8_t *>(CountedAlloc(MapBytes(*map)));
    if (map->darkest)
        MeasureBlocks(map);
}

void FreeRoomMap(RoomMap *map) {
    if (map->darkest)
        CountedFree(map->darkest, MapBytes(*map));
    map->darkest = nullptr;
}

float LargestWay(const RoomMap &map, const PixelRange &columns, int32_t row, const float *strength) {
    const int32_t planes = map.output.colorPlanes;
    const int64_t first = int64_t{row} * CountColumns(map);
    float largest = 0.0f;
    for (int32_t plane = 0; plane < planes; ++plane) {
        uint8_t darkest = map.darkest ? kWhite : 0;
        for (int32_t column = columns.from; map.darkest && column <= columns.to; ++column)
            darkest = std::min(darkest, map.darkest[(first + column) * planes + plane]);
        largest = std::max(largest, strength[plane] * static_cast<float>(kWhite - darkest));
    }
    return largest;
}
